// SPDX-License-Identifier: GPL-2.0-only
// What the program does with each recorder. Reading, merging, checking and writing are the page's own.

import { readStatus } from "./page/api.js";
import { read as readValues, save } from "./page/exchange.js";
import { difference, fileOf, writeOrder } from "./page/file.js";
import { groups } from "./page/schema.js";
import { doubts, laidOver, problems } from "./page/settings.js";
import { printable } from "./usage.js";

const isSecret = ({ kind }) => kind === "password";
const notRead = (session, id, trouble) =>
  `not read: ${id}: ${session.why(trouble, "the recorder does not give it")}`;
const english = ([, text]) => text;
const placeOf = (group, field) => `${group.id}.${field.name}`;
const shown = (field, value) =>
  isSecret(field) ? "***" : value === undefined ? "(not known)" : `'${printable(value)}'`;

/** All settings, as {values, file}; {reason} with what could be read when some could not. */
export async function read(session) {
  const values = new Map();
  let reason = await session.greet();
  if (reason) return { reason };
  const unread = [];
  for (const group of writeOrder) {
    const now = await readValues(session.request, group);
    if (now.trouble === "dropped") return { reason: session.why(now.trouble) };
    if (now.ok) values.set(group.id, now.values);
    else unread.push(notRead(session, group.id, now.trouble));
    if (unread.length > 1) break; // each may have cost its longest wait
  }
  if (unread.length) reason = unread.join("; ");
  return { reason, values, file: values.size ? fileOf(values) : undefined };
}

/**
 * What would change in a recorder that is to hold `wanted`: {changes, lines}, a change being {group, edits,
 * seen}; {reason, lines} when it cannot be told, or when something of it would not arrive.
 */
export async function compare(session, wanted) {
  const reason = await session.greet();
  if (reason) return { reason };
  const hidden = (field) => session.mayOnlyRead && isSecret(field);
  const changes = [];
  const lines = [];
  const wrong = [];
  for (const group of writeOrder.filter(({ id }) => wanted[id])) {
    const now = await readValues(session.request, group);
    if (!now.ok) return { reason: notRead(session, group.id, now.trouble) };
    const edits = {};
    for (const { field, from, to, lock } of difference(group, now.values, wanted[group.id])) {
      if (!lock) edits[field.name] = to;
      if (hidden(field)) continue;
      const change = lock ? `left out: ${english(lock)}` : `${shown(field, from)} -> ${shown(field, to)}`;
      lines.push([session.host.name, placeOf(group, field), change]);
    }
    if (!Object.keys(edits).length) continue;
    const values = laidOver(group, now.values, edits);
    for (const [field, doubt] of doubts(group, values, edits, now.values))
      lines.push([session.host.name, placeOf(group, field), `doubtful: ${english(doubt)}`]);
    wrong.push(
      ...problems(group, values)
        .filter(([field]) => !hidden(field))
        .map(([field, problem]) => `${placeOf(group, field)}: ${english(problem)}`),
    );
    changes.push({ group, edits, seen: now.values });
  }
  return wrong.length ? { reason: `would not arrive: ${wrong.join(", ")}`, lines } : { changes, lines };
}

const TOLD = {
  saved: () => undefined,
  same: () => undefined,
  kept: ({ kept }) =>
    `kept ${kept.map(([field, value]) => `${field.name} at ${shown(field, value)}`).join(", ")}`,
  conflict: ({ clashes }) => `changed meanwhile: ${clashes.map(({ field }) => field.name).join(", ")}`,
  invalid: ({ problems: rows }) => rows.map(([field, text]) => `${field.name}: ${english(text)}`).join(", "),
  held: () => "not begun",
  unread: ({ trouble }, session) =>
    trouble === "dropped" ? "not begun" : `not read: ${session.why(trouble)}`,
  denied: ({ trouble }, session) => session.why(trouble),
  unsure: ({ trouble }, session) => `written, but not read back: ${session.why(trouble)}`,
};

/** Writes the changes, each group read before and read back after it. `stopped` tells when to begin no more. */
export async function write(session, changes, stopped) {
  if (session.mayOnlyRead) return { reason: "this login may only read" };
  const done = {};
  for (const { group, edits, seen } of changes) {
    const lost = Object.values(done).some((word) => word.startsWith("written"));
    if (lost || stopped()) {
      done[group.id] = "not begun";
      continue;
    }
    const onStep = () => {
      session.writing = true;
    };
    const told = await save(session.request, group, edits, { seen, onStep, mayWrite: () => !stopped() });
    session.writing = false;
    done[group.id] = TOLD[told.outcome](told, session) ?? "saved";
  }
  const short = Object.entries(done)
    .filter(([, word]) => word !== "saved")
    .map(([id, word]) => `${id}: ${word}`);
  return { groups: done, reason: short.length ? short.join("; ") : undefined };
}

const BASE = groups.find(({ id }) => id === "BaseInfo");
const state = (code) => ({ 0: "no", 1: "yes" })[code] ?? `code ${code}`;
const disk = ({ ucFD_DiskExist: there, strFD_DiskSize: size }) => (there === "0" ? "none" : size);

/** One line about a recorder, by column. */
export async function status(session) {
  const { answer, trouble } = await readStatus(session.request);
  if (!answer) return { reason: session.why(trouble) };
  const base = await readValues(session.request, BASE);
  const { gnet, wifi, cms } = answer;
  const line = {
    number: base.ok ? base.values.strFD_DeviceNo : "",
    version: answer.version.strFD_AppVersion,
    mobile: gnet.ucFD_GNetExist === "0" ? "none" : gnet.uiFD_GNetSignal,
    wifi: wifi.ucFD_WifiExist === "0" ? "none" : wifi.uiFD_WifiSignal,
    disk1: disk(answer.disk.list[0]),
    disk2: disk(answer.disk.list[1]),
    central: state(cms.ucFD_CmsStatus),
    jtt808: state(cms.ucFD_JTT808Status),
    gb28181: state(cms.ucFD_GB28181Status),
  };
  return base.ok ? { line } : { line, reason: notRead(session, BASE.id, base.trouble) };
}
export const STATUS_COLUMNS = [
  "number",
  "version",
  "mobile",
  "wifi",
  "disk1",
  "disk2",
  "central",
  "jtt808",
  "gb28181",
];
