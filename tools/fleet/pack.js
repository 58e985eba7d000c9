// SPDX-License-Identifier: GPL-2.0-only
// For `npm pack`, which leaves links out: puts the page's modules in the place of the link to them, and
// with --undo the link in theirs.

import { copyFileSync, mkdirSync, rmSync, symlinkSync } from "node:fs";

const PAGE = new URL("page", import.meta.url);
const SOURCE = "../../web_root";

rmSync(PAGE, { recursive: true, force: true });
if (process.argv.includes("--undo")) {
  symlinkSync(SOURCE, PAGE);
} else {
  mkdirSync(PAGE);
  for (const name of ["api", "exchange", "file", "schema", "settings"])
    copyFileSync(
      new URL(`${SOURCE}/${name}.js`, import.meta.url),
      new URL(`page/${name}.js`, import.meta.url),
    );
}
