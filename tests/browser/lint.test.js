// SPDX-License-Identifier: GPL-2.0-only
import assert from "node:assert/strict";
import { execFile } from "node:child_process";
import { test } from "node:test";
import { promisify } from "node:util";
import { ESLint } from "eslint";

test("`npm run lint` finds nothing: no markup from texts, both languages at each, the layout", async () => {
  await promisify(execFile)("npm", ["run", "--silent", "lint"]);
  const probe = "export const f = (e, t) => { e.innerHTML = t; tr('x'); };";
  const [{ messages }] = await new ESLint().lintText(probe, { filePath: "web_root/probe.js" });
  assert.equal(messages.filter(({ ruleId }) => ruleId === "no-restricted-syntax").length, 2);
});
