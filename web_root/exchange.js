// SPDX-License-Identifier: GPL-2.0-only
// Reading and writing a group of the schema. No document; `request` is what requester() of api.js makes.
//
// A reading is {ok: true, values, at} or {ok: false, trouble}: as of a request, or
//   "silent"  the recorder did not give the group
//   "odd"     the answer lacks a member or is of another shape
//   "empty"   all values are empty where there were some
//
// A write resolves to {outcome, ...}; nothing was sent with the first six:
//   "unread"    {trouble}: the group could not be read first
//   "conflict"  {clashes, values, at}: rows {field, seen, theirs, mine} of edited fields that have another
//               value now; `values` is what to take for seen when the edits are to go over it all the same
//   "invalid"   {problems}: rows [field, [Chinese, English]]
//   "held"      `mayWrite` said no
//   "denied"    {trouble}: "refused", "login" or "busy": the daemon did not carry it out
//   "same"      {values, at}: the recorder holds all of it already
//   "saved"     {values, at}: read back as wanted
//   "kept"      {values, at, kept}: rows [field, value] of what the recorder holds instead
//   "unsure"    {trouble, expected}: sent, but not read back; readBack() with `expected` tells later
// The daemon's own answer cannot tell a refusal from success.

import { hasTexts } from "./api.js";
import {
  canonical,
  clockOf,
  deviations,
  expectation,
  laidOver,
  lockReason,
  ownClock,
  OWN_TIME,
  problems,
  ticked,
  writable,
} from "./settings.js";

async function readOnce(request, group, how) {
  const { answer, trouble, reader } = await request(`/get_${group.id}`, { what: group.title, ...how });
  if (!answer) return { ok: false, trouble };
  if (answer.result !== 1) return { ok: false, trouble: "silent" };
  const names = group.fields.map(({ name }) => name);
  if (!hasTexts(answer, names)) return { ok: false, trouble: "odd" };
  const shown = ({ name, fromApi = String }) => [name, fromApi(answer[name])];
  // A login that may only read is given empty passwords: they are not known.
  const known = group.fields.filter(({ kind }) => !reader || kind !== "password");
  return { ok: true, values: Object.fromEntries(known.map(shown)), at: Date.now() };
}

/** Whether all is empty; zeros alone are ordinary values. */
function hollow(group, values) {
  const texts = writable(group).map(({ kind, name }) => (kind !== "clock" && values[name]) || "");
  return texts.includes("") && texts.every((text) => /^0?$/.test(text));
}

/**
 * Reads a group; what looks damaged is read once more. `known`: values read earlier, so that an answer
 * that is suddenly empty is noticed. `how` as of a request.
 */
export async function read(request, group, { known, ...how } = {}) {
  const emptied = (now) => now.ok && known && hollow(group, now.values) && !hollow(group, known);
  let now = await readOnce(request, group, how);
  if (now.trouble === "odd" || emptied(now) || (now.ok && group.partial?.(now.values)))
    now = await readOnce(request, group, how);
  return emptied(now) ? { ok: false, trouble: "empty" } : now;
}

/** Edited fields whose value in the recorder is neither what was seen nor what is wanted. */
function clashesOf(group, edits, seen, now) {
  const moved = Boolean(group.side) && group.side(seen) !== group.side(now);
  return writable(group)
    .filter(({ name, decides }) => name in edits || (decides && moved))
    .filter(({ kind, name }) => kind !== "clock" && seen[name] !== undefined && now[name] !== seen[name])
    .map((field) => ({ field, seen: seen[field.name], theirs: now[field.name], mine: edits[field.name] }))
    .map((clash) => ({ ...clash, mine: clash.mine ?? clash.seen }))
    .filter(({ theirs, mine }) => theirs !== mine);
}

/**
 * Read, merge, write, read back: reads the group, lays `edits` over it and writes all of it, since a
 * field that is not sent is written as empty.
 *   seen      the values that the edits were made on; without it nothing counts as a conflict
 *   mayWrite  asked at the moment of sending
 *   onStep    called with "sending" and "checking"
 * A clock without an edit runs on: it is part of the message, so what it shows by then is sent. A group
 * that its own values made unreadable (`mendable`) is written when every field of it is edited.
 */
export async function save(request, group, edits, { seen, mayWrite = () => true, onStep = () => {} } = {}) {
  const now = await read(request, group, { urgent: true, known: seen });
  const fields = writable(group);
  const mends = group.mendable && now.trouble === "silent" && fields.every(({ name }) => name in edits);
  if (!now.ok && !mends) return { outcome: "unread", trouble: now.trouble };
  const clashes = clashesOf(group, edits, seen ?? {}, now.values ?? {});
  if (clashes.length) return { ...now, outcome: "conflict", clashes };

  const values = laidOver(group, now.values, edits);
  const locked = fields.map((field) => [field, field.name in edits && lockReason(field, values)]);
  const wrong = [...problems(group, values), ...locked.filter(([, reason]) => reason)];
  if (wrong.length) return { outcome: "invalid", problems: wrong };
  const expected = expectation(group, values);
  const differs = (field) => canonical(field, edits[field.name]) !== now.values?.[field.name];
  if (!fields.some((field) => field.name in edits && differs(field))) return { ...now, outcome: "same" };

  const clock = clockOf(group)?.name;
  const sent = () => {
    if (clock && edits[clock] === OWN_TIME) expected[clock] = ownClock();
    else if (clock && !(clock in edits)) expected[clock] = ticked(now.values[clock], now.at);
    return fields.map((field) => [field.name, sendable(field, expected, now.values)]);
  };
  onStep("sending");
  const { trouble } = await request(`/set_${group.id}`, {
    form: () => (mayWrite() ? sent() : null),
    urgent: true,
    what: group.title,
  });
  if (trouble === "held") return { outcome: "held" };
  if (["refused", "login", "busy"].includes(trouble)) return { outcome: "denied", trouble };
  if (trouble === "gone") return { outcome: "unsure", trouble, expected };
  onStep("checking");
  return readBack(request, group, expected, edits);
}

/** What is not written in this mode goes as it was read: the message has no way to leave it out. */
function sendable(field, expected, held) {
  const value = expected[field.name] ?? held?.[field.name] ?? "";
  return field.toApi?.(value, { ...held, ...expected }) ?? value;
}

/** Compares what the recorder holds with what it should; `expected` as an earlier write gave it. */
export async function readBack(request, group, expected, edits = {}) {
  const now = await read(request, group, { urgent: true });
  if (!now.ok) return { outcome: "unsure", trouble: now.trouble, expected };
  const kept = deviations(group, expected, now.values);
  // What the recorder's rules made of an edit is told as well, though it was foreseen.
  const ruled = writable(group).filter(({ name, kept: rule }) => rule && name in edits);
  for (const field of ruled) {
    const { name } = field;
    const told =
      kept.some(([other]) => other === field) || now.values[name] === canonical(field, edits[name]);
    if (!told) kept.push([field, now.values[name]]);
  }
  return { ...now, outcome: kept.length ? "kept" : "saved", kept };
}
