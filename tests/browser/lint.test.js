// SPDX-License-Identifier: GPL-2.0-only
import assert from "node:assert/strict";
import { test } from "node:test";
import { ESLint } from "eslint";

test("lint: nothing becomes markup, both languages at every text", async () => {
  const eslint = new ESLint({ cwd: new URL("../..", import.meta.url).pathname });
  const results = await eslint.lintFiles(["web_root/*.js", "tests/browser/*.js"]);
  assert.ok(results.length > 7);
  const found = results.flatMap(({ filePath, messages }) => messages.map(({ line, message }) => `${filePath}:${line} ${message}`));
  assert.deepEqual(found, []);

  const [{ messages }] = await eslint.lintText("export const f = (e, t) => { e.innerHTML = t; tr('x'); };", { filePath: "web_root/probe.js" });
  assert.equal(messages.filter(({ ruleId }) => ruleId === "no-restricted-syntax").length, 2);
});
