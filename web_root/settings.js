// SPDX-License-Identifier: GPL-2.0-only
// What a value of the schema may be: checks, clocks, and what a write makes of it. No document, no requests.
//
// Values are the texts that a form shows, in an object by field name. A name that is absent (or
// undefined) is unknown: never taken for empty or zero.

export const byteLength = (text) => new TextEncoder().encode(text).length;

// ---- the clock, as "YYYY-MM-DD HH:MM:SS" of the recorder's local time

/** The moment in milliseconds as if the clock showed UTC; NaN for any other text. */
export const fromClock = (text) => Date.parse(`${text.trim().replace(" ", "T")}Z`);
export const toClock = (ms) => new Date(ms).toISOString().slice(0, 19).replace("T", " ");
export const ownClock = () => toClock(Date.now() - new Date().getTimezoneOffset() * 60000);
export const ticked = (text, since) =>
  Number.isNaN(fromClock(text)) ? text : toClock(fromClock(text) + Date.now() - since);

/** As a clock's value: this device's own time at the moment of sending. */
export const OWN_TIME = "own time";

// A recorder takes a moment to set its clock, and the answer comes after a pause of two seconds.
const CLOCK_TOLERANCE_MS = 10000;

// ---- groups

export const clockOf = ({ fields }) => fields.find(({ kind }) => kind === "clock");
export const writable = ({ fields }) => fields.filter(({ kind }) => kind !== "fact");

/** Whether a field is shown of another record than `seen` was read from: then its value is unknown. */
const otherSide = (group, field, seen, values) =>
  Boolean(field.sided && seen) && group.side(seen) !== group.side(values);

/** Edits laid over what was seen; what stands for another record now is unknown unless edited. */
export function laidOver(group, seen, edits) {
  const values = { ...seen, ...edits };
  for (const field of group.fields) {
    if (otherSide(group, field, seen, values)) values[field.name] = edits[field.name];
  }
  return values;
}

/** Why a field is not written with these values, as [Chinese, English]. */
export const lockReason = (field, values) => field.locked?.(values);

// ---- checks

const isNumber = (value, max) => /^\d{1,10}$/.test(value) && Number(value) <= max;

/** A number without leading zeros, as the recorder gives it back; any other text as it is. */
export function canonical(field, value) {
  const number = field.kind === "number" || field.kind === "flag" || field.open;
  return number && /^\d{1,10}$/.test(value) ? String(Number(value)) : value;
}

const textProblem = (field, value) => {
  const bytes = byteLength(value);
  // NUL ends a text, and what was not UTF-8 in the recorder cannot be sent back as it was.
  if (/[\0\uFFFD]|\p{Cs}/u.test(value))
    return ["含有无法保存的字符，请重新输入", "Holds a character that cannot be kept; type it anew"];
  if (bytes > field.width)
    return [`过长：${bytes} 字节，最多 ${field.width}`, `Too long: ${bytes} bytes of at most ${field.width}`];
  if (bytes < (field.min ?? 0)) return [`至少 ${field.min} 个字符`, `At least ${field.min} characters`];
  return undefined;
};

const numberProblem = (field, value) =>
  isNumber(value, field.max)
    ? undefined
    : [`请输入 0 至 ${field.max} 的整数`, `Enter a whole number from 0 to ${field.max}`];

const choiceProblem = (field, value) => {
  if (field.codes.some(([code]) => code === value)) return undefined;
  return field.open ? numberProblem(field, value) : ["请选择一项", "Choose one"];
};

const PROBLEMS = {
  text: textProblem,
  password: textProblem,
  number: numberProblem,
  choice: choiceProblem,
  flag: (field, value) => (/^[01]$/.test(value) ? undefined : ["请选择一项", "Choose one"]),
  clock: (field, value) =>
    value === OWN_TIME || !Number.isNaN(fromClock(value))
      ? undefined
      : ["请输入日期和时间", "Enter a date and a time"],
  fact: () => undefined,
};

const UNKNOWN = ["未知，请填写", "Not known: fill it in"];

/** Why `value` would not reach the recorder as it stands, as [Chinese, English]; undefined: it would. */
export function problem(field, value, values) {
  if (field.kind === "fact" || lockReason(field, values)) return undefined;
  if (value === undefined) return UNKNOWN;
  return PROBLEMS[field.kind](field, value) ?? field.check?.(value, values);
}

/** Rows [field, problem] of all values that would not arrive. */
export const problems = (group, values) =>
  group.fields
    .map((field) => [field, problem(field, values[field.name], values)])
    .filter(([, trouble]) => trouble);

/**
 * Rows [field, question] of values that arrive but hardly work; of `edits`, or new since `seen`. They
 * are to be asked about, never forbidden.
 */
export function doubts(group, values, edits, seen) {
  const doubt = (field, all) =>
    all?.[field.name] === undefined || lockReason(field, all)
      ? undefined
      : field.doubt?.(all[field.name], all);
  return group.fields
    .map((field) => [field, doubt(field, values), field.name in edits || !doubt(field, seen)])
    .filter(([, question, fresh]) => question && fresh);
}

// ---- what a write should come to

/** The values that the recorder is to end up with after a write of `values`. */
export function expectation(group, values) {
  const expected = {};
  for (const field of group.fields) {
    const value = values[field.name];
    expected[field.name] = canonical(field, field.kept?.(value, values) ?? value);
  }
  return expected;
}

/** Rows [field, value] of what the recorder holds and was not expected to. */
export function deviations(group, expected, held) {
  const same = ({ kind, name }) => {
    if (kind !== "clock") return held[name] === expected[name];
    return Math.abs(fromClock(held[name]) - fromClock(expected[name])) < CLOCK_TOLERANCE_MS;
  };
  return writable(group)
    .filter((field) => !lockReason(field, expected) && !same(field))
    .map((field) => [field, held[field.name]]);
}
