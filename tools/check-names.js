#!/usr/bin/env node
// SPDX-License-Identifier: GPL-2.0-only
// Tells which entries of a names.json the page would leave out:  tools/check-names.js FILE
// Ends with 0 when there are none, 1 when there are, 2 when the file cannot be read.

import { readFileSync } from "node:fs";
import { checkNames } from "../web_root/names.js";

const [file] = process.argv.slice(2);
try {
  const { wrong } = checkNames(JSON.parse(readFileSync(file, "utf8")));
  for (const [place, reason] of wrong) console.log(`${file}: ${place}: ${reason}`);
  process.exitCode = wrong.length > 0 ? 1 : 0;
} catch ({ message }) {
  console.error(file === undefined ? "usage: tools/check-names.js FILE" : `${file}: ${message}`);
  process.exitCode = 2;
}
