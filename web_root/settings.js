// SPDX-License-Identifier: GPL-2.0-only
// Reading, checking and writing a group of the schema; no document, no words of the form.

import { request } from "./core.js";

export const byteLength = (text) => new TextEncoder().encode(text).length;

// ---- the clock, as "YYYY-MM-DD HH:MM:SS" of the recorder's local time

/** The moment in milliseconds as if the clock showed UTC; NaN for any other text. */
export const fromClock = (text) => Date.parse(`${text.trim().replace(" ", "T")}Z`);
export const toClock = (ms) => new Date(ms).toISOString().slice(0, 19).replace("T", " ");
export const phoneClock = () => toClock(Date.now() - new Date().getTimezoneOffset() * 60000);
export const ticked = (text, since) =>
  Number.isNaN(fromClock(text)) ? text : toClock(fromClock(text) + Date.now() - since);

/** As a clock's value: the phone's own time at the moment of sending. */
export const PHONE = "phone";

// A recorder takes a moment to set its clock, and the answer comes after a pause of two seconds.
const CLOCK_TOLERANCE_MS = 10000;

// ---- checks

const isNumber = (value, max) => /^\d{1,10}$/.test(value) && Number(value) <= max;

const textProblem = (field, value) => {
  const bytes = byteLength(value);
  // NUL ends a text, and what was not UTF-8 in the recorder cannot be sent back as it was.
  if (/[\0\uFFFD]|\p{Cs}/u.test(value)) return ["含有无法保存的字符，请重新输入", "Holds a character that cannot be kept; type it anew"];
  if (bytes > field.width) return [`过长：${bytes} 字节，最多 ${field.width}`, `Too long: ${bytes} bytes of at most ${field.width}`];
  if (bytes < (field.min ?? 0)) return [`至少 ${field.min} 个字符`, `At least ${field.min} characters`];
  return undefined;
};

const numberProblem = (field, value) =>
  isNumber(value, field.max) ? undefined : [`请输入 0 至 ${field.max} 的整数`, `Enter a whole number from 0 to ${field.max}`];

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
    value === undefined || value === PHONE || !Number.isNaN(fromClock(value)) ? undefined : ["请输入日期和时间", "Enter a date and a time"],
  fact: () => undefined,
};

/** Why `value` would not reach the recorder as it stands, as [Chinese, English]; undefined: it would. */
export const problem = (field, value, values) => PROBLEMS[field.kind](field, value) ?? field.check?.(value, values);

// ---- exchange

/** Resolves to {ok, lost, values, at}: the shown values by name; `ok` false: they are not the recorder's. */
export async function read(group) {
  const answer = await request(`/get_${group.id}`);
  const shown = (field) => (field.fromApi ?? String)(String(answer?.[field.name] ?? ""));
  return {
    ok: answer?.result === 1,
    lost: answer === null,
    values: Object.fromEntries(group.fields.map((field) => [field.name, shown(field)])),
    at: Date.now(),
  };
}

function expectation(group, values) {
  const expected = {};
  for (const field of group.fields) {
    const value = values[field.name];
    const number = field.kind === "number" || (field.open && /^\d+$/.test(value));
    expected[field.name] = field.kept?.(value, values) ?? (number ? String(Number(value)) : value);
  }
  return expected;
}

/**
 * Writes all fields of a group, since one that is not sent is written as empty, and reads them back.
 * A clock that is undefined runs on: it is always part of the message, so what it shows is sent.
 * Resolves to {outcome, kept, values, at}: "saved"; "kept" with rows [field, value] of what the
 * recorder holds instead; "silent" and "gone" as of the link, when it is not known what was kept.
 * The daemon's own answer cannot tell a refusal from success.
 */
export async function write(group, values, onStep = () => {}) {
  const expected = expectation(group, values);
  const clock = group.fields.find(({ kind }) => kind === "clock")?.name;
  let clockText = () => expected[clock];
  if (clock && values[clock] === undefined) {
    const now = await read(group);
    if (now.lost) return { outcome: "gone" };
    clockText = () => ticked(now.values[clock], now.at);
  } else if (values[clock] === PHONE) {
    clockText = phoneClock;
  }
  const answer = await request(`/set_${group.id}`, () => {
    if (clock) expected[clock] = clockText();
    return group.fields.filter(({ kind }) => kind !== "fact")
      .map((field) => [field.name, field.toApi?.(expected[field.name], values) ?? expected[field.name]]);
  });
  if (!answer) return { outcome: "gone", expected };
  if (answer.result !== 1) return { outcome: "silent", expected };
  onStep();
  return readBack(group, expected);
}

/** Compares what the recorder holds with what it should; `expected` as an earlier write gave it. */
export async function readBack(group, expected) {
  const now = await read(group);
  if (!now.ok) return { outcome: now.lost ? "gone" : "silent", expected };
  const same = ({ kind, name }) => {
    if (kind === "fact") return true;
    if (kind !== "clock") return now.values[name] === expected[name];
    return Math.abs(fromClock(now.values[name]) - fromClock(expected[name])) < CLOCK_TOLERANCE_MS;
  };
  const kept = group.fields.filter((field) => !same(field)).map((field) => [field, now.values[field.name]]);
  return { outcome: kept.length ? "kept" : "saved", kept, expected, ...now };
}
