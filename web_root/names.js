// SPDX-License-Identifier: GPL-2.0-only
// Words for codes, from the optional names.json of a deployment; docs/page.md shows its form. No document.
//
//   {"fields": {"NetWModeInfo.ucFD_NetWType": {"2": ["移动网络", "Mobile network"]}},
//    "status": {"gnet.ucFD_GNetDail": {"2": ["已拨号", "Dialled", "ok"]}}}
//
// A status code's third text, "ok", "off" or "warn", is how it is shown; without it, neutrally.

import { statusPlaces } from "./api.js";
import { groups } from "./schema.js";

const KINDS = ["number", "choice", "flag"];
const TONES = ["ok", "off", "warn", "plain"];
const isRecord = (value) => typeof value === "object" && value !== null && !Array.isArray(value);

function fieldOf(key) {
  const [id, name] = key.split(".");
  return groups.find((group) => group.id === id)?.fields.find((field) => field.name === name);
}

function placeProblem(part, key) {
  if (part === "status") return statusPlaces.includes(key) ? undefined : "the status has no such member";
  const field = fieldOf(key);
  if (!field) return "no such field; write it as Group.field";
  return KINDS.includes(field.kind) ? undefined : "this field holds no code";
}

function wordProblem(part, key, code, words) {
  const { kind, max = 99999 } = fieldOf(key) ?? {};
  const most = kind === "flag" ? 1 : max;
  if (!/^(0|[1-9]\d{0,4})$/.test(code) || code > most) return `a code is a whole number, here up to ${most}`;
  const isText = (word) => typeof word === "string" && word !== "";
  if (!Array.isArray(words) || !words.slice(0, 2).every(isText) || words.length < 2)
    return 'words are ["中文", "English"]';
  const toned = part === "status" && words.length === 3 && TONES.includes(words[2]);
  return words.length === 2 || toned
    ? undefined
    : `a third text is one of ${TONES.join(", ")}, in "status" alone`;
}

/** Parts a parsed names.json into {good: {fields, status}, wrong}; `wrong` has rows [place, reason]. */
export function checkNames(names) {
  const good = { fields: {}, status: {} };
  const wrong = [];
  if (!isRecord(names)) return { good, wrong: [["names.json", "is no object"]] };
  for (const [part, entries] of Object.entries(names)) {
    if (!good[part] || !isRecord(entries)) wrong.push([part, 'parts are the objects "fields" and "status"']);
    else for (const [key, codes] of Object.entries(entries)) checkCodes(part, key, codes, good, wrong);
  }
  return { good, wrong };
}

function checkCodes(part, key, codes, good, wrong) {
  const reason = placeProblem(part, key) ?? (isRecord(codes) ? undefined : "codes are an object");
  if (reason) return wrong.push([`${part}.${key}`, reason]);
  for (const [code, words] of Object.entries(codes)) {
    const trouble = wordProblem(part, key, code, words);
    if (trouble) wrong.push([`${part}.${key}.${code}`, trouble]);
    else (good[part][key] ??= {})[code] = words;
  }
  return undefined;
}

/** Makes choices of the schema's fields that got words; every other code stays possible. */
export function applyNames({ fields }) {
  for (const [key, words] of Object.entries(fields)) {
    const field = fieldOf(key);
    const others = (field.codes ?? []).filter(([code]) => !words[code]);
    if (field.kind !== "flag")
      Object.assign(field, { kind: "choice", open: field.open ?? field.kind === "number" });
    field.codes = [...Object.entries(words), ...others].sort(([one], [other]) => one - other);
    field.coded = true;
  }
}

let loading = null;

/** Loads names.json once and applies it; resolves to the words of the status, {} without a file. */
export const loadNames = () =>
  (loading ??= fetch("names.json", { cache: "no-cache" })
    .then((response) => (response.ok ? response.json() : {}))
    .then((names) => {
      const { good, wrong } = checkNames(names);
      wrong.forEach(([place, reason]) => console.warn(`names.json: ${place}: ${reason}`));
      applyNames(good);
      return good.status;
    })
    .catch(() => ((loading = null), {})));
