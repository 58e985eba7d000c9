// SPDX-License-Identifier: GPL-2.0-only
// What each recorder should hold: a settings file, cut by --only, with a table of values by vehicle over it.

import Papa from "papaparse";
import { parseFile, stored } from "./page/file.js";
import { groups } from "./page/schema.js";
import { canonical } from "./page/settings.js";
import { parseHost } from "./hosts.js";
import { printable, readText, Usage } from "./usage.js";

const places = groups.flatMap((group) =>
  stored(group).map((field) => ({ group, field, place: `${group.id}.${field.name}` })),
);

/** What stands in a table's head: the field alone where no other group has one of its name. */
export const columns = places.map((one) => ({
  ...one,
  name: places.filter(({ field }) => field.name === one.field.name).length > 1 ? one.place : one.field.name,
}));

export function readSettings(path) {
  const { trouble, wanted, strange } = parseFile(readText(path));
  if (trouble === "newer") throw new Usage(`${path} is of a newer version than this program`);
  if (trouble) throw new Usage(`${path} is no settings file`);
  const notes = strange.map(
    ([place, kind]) =>
      `${path}: ${printable(place)} is ${kind === "unknown" ? "not known" : "no text"} and left out`,
  );
  return { wanted, notes };
}

export function parseOnly(text) {
  if (text === undefined) return undefined;
  const named = new Set(
    text
      .split(",")
      .map((word) => word.trim())
      .filter(Boolean),
  );
  for (const word of named) {
    if (groups.some(({ id }) => id === word) || places.some(({ place }) => place === word)) continue;
    const ids = groups.map(({ id }) => id).join(", ");
    throw new Usage(`--only does not know '${printable(word)}'; there are ${ids}, and each with .FIELD`);
  }
  if (!named.size) throw new Usage("--only names nothing");
  return named;
}

// A spreadsheet takes a cell that begins so for a formula; the mark before it is taken off again.
const FORMULA = /^'*[=+\-@\t\r]/;
export const toCell = (text = "") => (FORMULA.test(text) ? `'${text}` : text);
const fromCell = (cell) => (cell[0] === "'" && FORMULA.test(cell) ? cell.slice(1) : cell);

/** A table as a Map of host -> {place: value}; an empty cell names nothing. */
export function readValues(path) {
  const { data, errors } = Papa.parse(readText(path), { skipEmptyLines: "greedy" });
  const bad = (text, row) => new Usage(`${path}${row === undefined ? "" : `, row ${row + 1}`}: ${text}`);
  const [error] = errors.filter(({ code }) => code !== "UndetectableDelimiter");
  if (error) throw bad(error.message, error.row);
  const [head = [], ...rows] = data;
  const names = head.map((cell) => {
    const name = cell.trim();
    if (name === "host") return name;
    const known = columns.find((column) => column.name === name || column.place === name);
    if (!known) throw bad(`'${printable(name).slice(0, 60)}' is neither 'host' nor a field`);
    return known.place;
  });
  if (!names.includes("host") || new Set(names).size < head.length)
    throw bad("needs one column 'host', and each field once");

  const table = new Map();
  rows.forEach((cells, index) => {
    if (cells.length !== head.length) throw bad(`${cells.length} cells instead of ${head.length}`, index + 1);
    const row = Object.fromEntries(
      cells.map((cell, n) => [names[n], cell]).filter(([, cell]) => cell !== ""),
    );
    const [host, ...more] = parseHost((row.host ?? "").trim());
    if (more.length || table.has(host.name))
      throw bad("a row names one host, and each host has one row", index + 1);
    delete row.host;
    table.set(host.name, row);
  });
  return table;
}

/**
 * Of `file` (id -> {name: value}) and a host's row what is to be written to it. What belongs to one recorder
 * is taken from the row, or from the file when `only` names the very field.
 */
export function wantedOf(file, row = {}, only) {
  const wanted = {};
  for (const { group, field, place } of places) {
    if (only && !only.has(group.id) && !only.has(place)) continue;
    const shared = field.own && !only?.has(place) ? undefined : file[group.id]?.[field.name];
    const value = place in row ? canonical(field, fromCell(row[place])) : shared;
    if (value !== undefined) (wanted[group.id] ??= {})[field.name] = value;
  }
  return wanted;
}
