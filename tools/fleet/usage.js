// SPDX-License-Identifier: GPL-2.0-only

import { readFileSync } from "node:fs";

/** What the one who called the program has to put right; ends it with `status`, 2 before anything is sent. */
export class Usage extends Error {
  constructor(message, status = 2) {
    super(message);
    this.status = status;
  }
}

export function readText(path) {
  try {
    return readFileSync(path, "utf8").replace(/^\uFEFF/, "");
  } catch (error) {
    throw new Usage(`cannot read ${path}: ${error.code ?? error.message}`);
  }
}

/** Foreign text for a terminal or a line: control characters and the like are shown as \xNN. */
export const printable = (text) =>
  String(text).replace(
    /[\p{C}\u2028\u2029]/gu,
    (c) => `\\x${c.codePointAt(0).toString(16).padStart(2, "0")}`,
  );
