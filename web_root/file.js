// SPDX-License-Identifier: GPL-2.0-only
// The settings file: all settings of a recorder, as JSON with passwords in clear. No document, no requests.
//
//   {"format": "webctrl settings", "version": 1, "saved": "2026-03-14T15:09:26.000Z",
//    "groups": {"WifiInfo": {"ucFD_WorkMode": "1", "strFD_SSID": "Depot North", ...}, ...},
//    "unread": ["GNetInfo"]}
//
// Values are texts as the schema's forms show them; numbers are taken as their text. Clocks and facts
// are not in it. A group may be absent; `unread` names those that the recorder did not give.

import { groups } from "./schema.js";
import { canonical, laidOver, lockReason } from "./settings.js";

const FORMAT = "webctrl settings";
const VERSION = 1;

export const stored = ({ fields }) => fields.filter(({ kind }) => kind !== "fact" && kind !== "clock");

/** All groups, those that may cut the connection last: everything else has arrived by then. */
export const writeOrder = [...groups].sort((a, b) => Boolean(a.cutsOff) - Boolean(b.cutsOff));

/** The file of what was read; `all` is a Map of id -> values, without the groups that were not. */
export function fileOf(all, saved = new Date()) {
  const pick = (group) => stored(group).map(({ name }) => [name, all.get(group.id)[name]]);
  const has = ({ id }) => all.has(id);
  const unread = groups.filter((group) => !has(group)).map(({ id }) => id);
  return {
    format: FORMAT,
    version: VERSION,
    saved: saved.toISOString(),
    groups: Object.fromEntries(
      groups.filter(has).map((group) => [group.id, Object.fromEntries(pick(group))]),
    ),
    ...(unread.length && { unread }),
  };
}

const isRecord = (value) => typeof value === "object" && value !== null && !Array.isArray(value);

/**
 * Reads a file's text. {trouble}: "alien" (no settings file) or "newer" (of a later version). Otherwise
 * {wanted, unread, strange}: wanted[id][name] is a text, `strange` has rows [place, "unknown" or "type"]
 * of what is not understood, and `unread` the ids that the file itself lacks.
 */
export function parseFile(text) {
  let file;
  try {
    file = JSON.parse(text);
  } catch {
    return { trouble: "alien" };
  }
  if (file?.format !== FORMAT || !Number.isInteger(file.version) || !isRecord(file.groups))
    return { trouble: "alien" };
  if (file.version > VERSION) return { trouble: "newer" };

  const wanted = {};
  const strange = [];
  for (const [id, values] of Object.entries(file.groups)) {
    const group = groups.find((one) => one.id === id);
    if (!group || !isRecord(values)) strange.push([id, group ? "type" : "unknown"]);
    else wanted[id] = understood(group, values, strange);
  }
  return { wanted, strange, unread: groups.filter(({ id }) => !wanted[id]).map(({ id }) => id) };
}

function understood(group, values, strange) {
  const result = {};
  for (const [name, value] of Object.entries(values)) {
    const field = stored(group).find((one) => one.name === name);
    const isText = typeof value === "string" || Number.isFinite(value);
    if (!field || !isText) strange.push([`${group.id}.${name}`, field ? "type" : "unknown"]);
    else result[name] = canonical(field, String(value));
  }
  return result;
}

/**
 * What a file would change: rows {field, from, to, lock}, `from` undefined where it is not known and
 * `lock` [Chinese, English] for what the recorder would not take in the mode it will be in.
 */
export function difference(group, current, wanted) {
  const before = laidOver(group, current, sidesOf(group, wanted));
  const from = ({ name, decides }) => (decides ? current : before)[name];
  const after = { ...before, ...wanted };
  return stored(group)
    .filter((field) => field.name in wanted && wanted[field.name] !== from(field))
    .map((field) => ({ field, from: from(field), to: wanted[field.name], lock: lockReason(field, after) }));
}

/** The part of the wanted values that decides which of two records the others stand for. */
const sidesOf = (group, wanted) =>
  Object.fromEntries(
    group.fields
      .filter(({ decides, name }) => decides && name in wanted)
      .map(({ name }) => [name, wanted[name]]),
  );
