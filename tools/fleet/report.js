// SPDX-License-Identifier: GPL-2.0-only
// What is seen of a run: its progress, tables, the summary and the report file.

import { accessSync, constants, renameSync, writeFileSync } from "node:fs";
import { dirname } from "node:path";
import { SingleBar } from "cli-progress";
import { printable, Usage } from "./usage.js";

export const note = (text) => process.stderr.write(`${text}\n`);

/** Tells that a file cannot be written before there is anything to be written. */
export function needFolder(path) {
  try {
    accessSync(dirname(path), constants.W_OK);
  } catch (error) {
    throw new Usage(`cannot write ${path}: ${error.code}`);
  }
}

/** Files hold passwords in clear. They are replaced as a whole, so that no reader finds half of one. */
export function writeWhole(path, text) {
  try {
    writeFileSync(`${path}.new`, text, { mode: 0o600 });
    renameSync(`${path}.new`, path);
  } catch (error) {
    throw new Usage(`cannot write ${path}: ${error.code ?? error.message}`, 1);
  }
}

/** Shows how far a run is: a bar on a terminal, otherwise a line for each host. */
export function progress(what, total) {
  const line = ({ host, outcome, reason }) => `${host}: ${outcome}${reason ? `, ${reason}` : ""}`;
  if (!process.stderr.isTTY) return { done: (result) => note(`${what}: ${line(result)}`), end() {} };
  const format = `${what} [{bar}] {value}/{total}, {failed} failed`;
  const bar = new SingleBar({ format, stream: process.stderr, gracefulExit: false, hideCursor: false });
  let failed = 0;
  bar.start(total, 0, { failed });
  return {
    done: ({ outcome }) => bar.increment(1, { failed: (failed += outcome === "failed") }),
    end: () => bar.stop(),
  };
}

const CELL = 48;

/** Rows of foreign texts under each other; the first row is the head. The last column is never cut. */
export function table(rows) {
  const last = rows[0].length - 1;
  const cut = (text, n) => (text.length > CELL && n < last ? `${text.slice(0, CELL - 1)}…` : text);
  const cells = rows.map((row) => row.map((cell, n) => cut(printable(cell ?? ""), n)));
  const widths = cells[0].map((_, n) => Math.max(...cells.map((row) => row[n].length)));
  return cells
    .map((row) =>
      row
        .map((cell, n) => cell.padEnd(widths[n]))
        .join("  ")
        .trimEnd(),
    )
    .join("\n");
}

const changesOf = (lines) => lines?.map(([, place, change]) => `${place}: ${change}`);

export const counted = (number) => `${number} recorder${number === 1 ? "" : "s"}`;

/** Writes the report file, tells the summary and gives the exit status. */
export function conclude(command, { started }, results, path) {
  const of = (outcome) => results.filter((result) => result.outcome === outcome);
  const summary = { ok: of("ok").length, failed: of("failed").length, notBegun: of("not begun").length };
  for (const { host, reason } of of("failed")) note(`${host}: ${reason}`);
  for (const { host } of of("not begun")) note(`${host}: not begun`);
  const { ok, failed, notBegun } = summary;
  const told = `${ok} ok, ${failed} failed${notBegun ? `, ${notBegun} not begun` : ""}`;
  note(`${counted(results.length)}: ${told}${path ? `; report in ${path}` : ""}`);
  if (path) {
    const hosts = results.map(({ host, outcome, reason, lines, groups, line }) => ({
      host,
      outcome,
      reason,
      changes: changesOf(lines),
      groups,
      status: line,
    }));
    const report = { command, started, ended: new Date(), summary, hosts };
    writeWhole(path, `${JSON.stringify(report, null, 2)}\n`);
  }
  return results.length && ok === results.length ? 0 : 1;
}
