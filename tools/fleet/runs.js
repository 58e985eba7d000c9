// SPDX-License-Identifier: GPL-2.0-only
// A run of each command over all recorders: each resolves to the exit status.

import { mkdirSync } from "node:fs";
import { join } from "node:path";
import { setTimeout as pause } from "node:timers/promises";
import Papa from "papaparse";
import { compare, read, status, STATUS_COLUMNS, write } from "./commands.js";
import { Fleet } from "./fleet.js";
import { hostsOf } from "./hosts.js";
import { confirm, password } from "./prompt.js";
import { conclude, counted, needFolder, note, table, writeWhole } from "./report.js";
import { printable, readText, Usage } from "./usage.js";
import { columns, parseOnly, readSettings, readValues, toCell, wantedOf } from "./wanted.js";

const WATCH_MS = 5000;
export const PASSWORD = "RECORDER_FLEET_PASSWORD";

process.stdout.on("error", () => {}); // a reader that went away stops no write
const out = (text) => process.stdout.write(`${text}\n`);

async function accessOf({ user, cacert, tls }) {
  const access = { tls: tls || Boolean(cacert), ca: cacert && readText(cacert) };
  if (user === undefined) return access;
  if (!user || user.includes(":")) throw new Usage("--user takes a name without a colon");
  const secret = process.env[PASSWORD] ?? (await password(`password of ${user}: `));
  if (secret === undefined) throw new Usage(`no password was given; without a terminal set ${PASSWORD}`);
  if (!access.tls) note("without TLS the password goes in clear to every host that is asked");
  return { ...access, user, password: secret };
}

/** The fleet of a command line; the first Ctrl-C stops it, a second ends the program. */
async function fleetOf(words, options) {
  if (options.report) needFolder(options.report);
  const fleet = new Fleet(hostsOf(words, options.file), await accessOf(options), options.jobs);
  for (const signal of ["SIGINT", "SIGTERM"]) {
    process.on(signal, () => {
      if (fleet.stopped) process.exit(1);
      note("stopping: what is being written is finished first; once more ends at once");
      fleet.stop();
    });
  }
  await fleet.probe();
  return fleet;
}

const fileName = (host) => `${host.replace(":", "@")}.json`;
const cellsOf = (file) => columns.map(({ group, field }) => toCell(file.groups[group.id]?.[field.name]));

export async function runRead(words, { output, ...options }) {
  try {
    mkdirSync(output, { recursive: true, mode: 0o700 });
  } catch (error) {
    throw new Usage(`cannot make ${output}: ${error.code}`);
  }
  needFolder(join(output, "table.csv"));
  const fleet = await fleetOf(words, options);
  const results = await fleet.each("read", fleet.sessions, async (session) => {
    const { file, reason } = await read(session);
    if (file) writeWhole(join(output, fileName(session.host.name)), `${JSON.stringify(file, null, 2)}\n`);
    return { file, reason, hidden: session.mayOnlyRead };
  });
  const head = ["host", ...columns.map(({ name }) => name)];
  const rows = results.filter(({ file }) => file).map(({ host, file }) => [host, ...cellsOf(file)]);
  if (rows.length) writeWhole(join(output, "table.csv"), `${Papa.unparse([head, ...rows])}\n`);
  const line = ({ host, file, outcome, reason, hidden }) => [
    host,
    file?.groups.BaseInfo?.strFD_DeviceNo,
    reason ?? (hidden ? "without passwords" : outcome),
  ];
  out(table([["host", "number", "result"], ...results.map(line)]));
  return conclude("read", fleet, results, options.report);
}

/** What the command line and its files want of each recorder; read before anything is asked. */
function wishes(path, options) {
  const only = parseOnly(options.only);
  const { wanted, notes } = readSettings(path);
  const values = options.values ? readValues(options.values) : new Map();
  notes.forEach(note);
  return { hosts: [...values.keys()], of: (host) => wantedOf(wanted, values.get(host), only) };
}

/** Compares every recorder with what it should hold, and shows what differs. */
async function compareAll(fleet, wish) {
  const names = fleet.sessions.map(({ host }) => host.name);
  const strangers = wish.hosts.filter((host) => !names.includes(host));
  if (strangers.length) note(`values of recorders that are not asked are left out: ${strangers.join(", ")}`);
  const results = await fleet.each("compare", fleet.sessions, (session) =>
    compare(session, wish.of(session.host.name)),
  );
  const lines = results.flatMap((result) => result.lines ?? []);
  if (lines.length) out(table([["host", "field", "change"], ...lines]));
  else if (results.some(({ outcome }) => outcome === "ok")) out("nothing differs");
  return results;
}

export async function runDiff(path, words, options) {
  const wish = wishes(path, options);
  const fleet = await fleetOf(words, options);
  return conclude("diff", fleet, await compareAll(fleet, wish), options.report);
}

export async function runApply(path, words, options) {
  const wish = wishes(path, options);
  const fleet = await fleetOf(words, options);
  const results = await compareAll(fleet, wish);
  if (!options.dryRun) await applyAll(fleet, results, options);
  return conclude("apply", fleet, results, options.report);
}

async function applyAll(fleet, results, { yes }) {
  const seen = new Map();
  const plans = fleet.sessions
    .map((session, n) => ({ session, result: results[n], changes: results[n].changes ?? [] }))
    .filter(({ changes }) => changes.length)
    .filter(({ session, result }) => {
      const other = seen.get(session.peer);
      seen.set(session.peer, result.host);
      if (other) Object.assign(result, { outcome: "failed", reason: `the same recorder as ${other}` });
      return !other;
    });
  const cutsOff = ({ group }) => group.cutsOff;
  const risky = plans.filter(({ changes }) => changes.some(cutsOff));
  const question = `Wi-Fi or network mode would change at ${counted(risky.length)}, which may cut the link to them. Write these too? [y/N] `;
  const allowed = !risky.length || yes || fleet.stopped || (await confirm(question, fleet.stopping));
  if (allowed === undefined) fleet.stop();

  const plan = new Map(plans.map((one) => [one.session, one]));
  const written = await fleet.each("write", [...plan.keys()], (session) => {
    const todo = plan.get(session).changes.filter((change) => allowed || !cutsOff(change));
    return write(session, todo, () => fleet.stopped);
  });
  plans.forEach(({ result, changes }, n) => {
    Object.assign(result, written[n]);
    if (allowed !== false || !changes.some(cutsOff)) return;
    const reason = [result.reason, "Wi-Fi and network mode left out"].filter(Boolean).join("; ");
    Object.assign(result, { outcome: "failed", reason });
  });
}

export async function runStatus(words, options) {
  if (options.json && options.csv) throw new Usage("--json or --csv, not both");
  const fleet = await fleetOf(words, options);
  const head = ["host", ...STATUS_COLUMNS, "trouble"];
  const rowOf = (result) =>
    head.map((name) => ({ ...result.line, host: result.host, trouble: result.reason })[name] ?? "");
  const show = {
    json: (results) =>
      results.map(({ host, line, reason }) => JSON.stringify({ host, ...line, trouble: reason })).join("\n"),
    csv: (results) =>
      Papa.unparse([head, ...results.map((result) => rowOf(result).map(printable).map(toCell))]),
    table: (results) => table([head, ...results.map(rowOf)]),
  }[options.json ? "json" : options.csv ? "csv" : "table"];
  const clear = options.watch && process.stdout.isTTY ? "\x1b[H\x1b[2J" : "";
  for (let round = 0; ; round++) {
    const results = await fleet.each(round ? "" : "status", fleet.sessions, status);
    out(clear + show(results));
    if (options.watch) await pause(WATCH_MS, undefined, { signal: fleet.stopping }).catch(() => {});
    if (!options.watch || fleet.stopped) return conclude("status", fleet, results, options.report);
  }
}
