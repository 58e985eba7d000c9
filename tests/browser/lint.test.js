// SPDX-License-Identifier: GPL-2.0-only
import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import { test } from "node:test";
import { ESLint } from "eslint";
import { check, resolveConfig } from "prettier";

const root = new URL("../..", import.meta.url).pathname;
const files = ["web_root", "tests/browser", "tests/fleet", "tools/fleet"].flatMap((folder) =>
  readdirSync(root + folder, { withFileTypes: true })
    .filter((entry) => entry.isFile())
    .map(({ name }) => `${root}${folder}/${name}`),
);

test("lint: nothing becomes markup, both languages at every text", async () => {
  const eslint = new ESLint({ cwd: root });
  const results = await eslint.lintFiles([
    "web_root/*.js",
    "tests/browser/*.js",
    "tests/fleet/*.js",
    "tools/fleet/*.js",
  ]);
  assert.ok(results.length > 7);
  const found = results.flatMap(({ filePath, messages }) =>
    messages.map(({ line, message }) => `${filePath}:${line} ${message}`),
  );
  assert.deepEqual(found, []);

  const probe = "export const f = (e, t) => { e.innerHTML = t; tr('x'); };";
  const [{ messages }] = await eslint.lintText(probe, { filePath: "web_root/probe.js" });
  assert.equal(messages.filter(({ ruleId }) => ruleId === "no-restricted-syntax").length, 2);
});

test("every file names its licence, and `npm run format` would change none", async () => {
  const wrong = [];
  for (const path of [...files, `${root}eslint.config.js`]) {
    const text = readFileSync(path, "utf8");
    if (
      /\.(js|css|html)$|run$/.test(path) &&
      !text.slice(0, 120).includes("SPDX-License-Identifier: GPL-2.0-only")
    )
      wrong.push(`${path}: no licence`);
    if (path.endsWith(".js") && !(await check(text, { ...(await resolveConfig(path)), filepath: path })))
      wrong.push(`${path}: format`);
  }
  assert.deepEqual(wrong, []);
});
