// SPDX-License-Identifier: GPL-2.0-only
// What every view stands on: elements, the two languages, the requests, the link, which recorder it is.

import { identify, requester, sameRecorder, STATUS } from "./api.js";

// ---- elements

const SVG = "http://www.w3.org/2000/svg";

/**
 * Builds an element: h("p", {class: "help", onclick: f, hidden: false}, "text", node, ...).
 * A tag that starts with "svg:" is made in the SVG namespace. Functions become listeners, true an
 * empty attribute, false and undefined nothing. Strings become text nodes, never markup.
 */
export function h(tag, attributes = {}, ...children) {
  const element = tag.startsWith("svg:")
    ? document.createElementNS(SVG, tag.slice(4))
    : document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") element.addEventListener(name.slice(2), value);
    else if (value !== false && value !== undefined) element.setAttribute(name, value === true ? "" : value);
  }
  element.append(...children.flat(2).filter((child) => child !== undefined && child !== false));
  return element;
}

/** Writes a text only when it differs, so that a selection or a screen reader is not disturbed. */
export function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

const ICONS = {
  status: "M3 12h4l3-8 4 16 3-8h4",
  copy: "M9 9h11v11H9zM5 15H4V4h11v1",
  device: "M4 6h16v12H4zM8 18v3m8-3v3M9 12a3 3 0 1 0 6 0 3 3 0 1 0-6 0",
  video: "M3 7h12v10H3zM15 11l6-4v10l-6-4",
  network: "M2 9c6-6 14-6 20 0M5.5 12.500c4-4 9-4 13 0M9 16c2-2 4-2 6 0M12 19.500v.01",
  platform: "M6 4h12v6H6zM6 14h12v6H6zM9 7v.01M9 17v.01M12 10v4",
  backup: "M4 14v6h16v-6M8 8l4-4 4 4M12 4v11",
  about: "M12 3a9 9 0 1 0 0 18 9 9 0 1 0 0-18M12 11v6M12 7.500v.01",
  ok: "M12 3a9 9 0 1 0 0 18 9 9 0 1 0 0-18M8 12l3 3 5-6",
  off: "M12 3a9 9 0 1 0 0 18 9 9 0 1 0 0-18M8 12h8",
  warn: "M12 3 2 20h20zM12 10v5M12 17.500v.01",
  busy: "M7 3h10M7 21h10M8 3c0 5 8 6 8 9s-8 4-8 9M16 3c0 5-8 6-8 9s8 4 8 9",
};

export const icon = (name) =>
  h(
    "svg:svg",
    { class: "icon", viewBox: "0 0 24 24", "aria-hidden": "true" },
    h("svg:path", { d: ICONS[name] }),
  );

/** A state told by shape, word and colour together; kind: ok, off, warn or busy. */
export const badge = (kind, word) => h("span", { class: `badge ${kind}` }, icon(kind), word);

/** Cards in one column, or two on a wide screen: whatever a card grows to, none changes its column. */
export function columns(cards) {
  const half = Math.floor(cards.length / 2);
  const parts = half
    ? [cards.slice(0, half), cards.slice(half)].map((part) => h("div", { class: "column" }, part))
    : cards;
  return h("div", { class: "cards" }, parts);
}

// ---- language

let english = !/^zh\b/.test(navigator.language);
const languageWatchers = new Set();

/** The text of the language in use. Every text of the page is such a pair, at its place of use. */
export const tr = (chinese, inEnglish) => (english ? inEnglish : chinese);
export const language = () => (english ? "EN" : "CN");
export const onLanguage = (watcher) => languageWatchers.add(watcher);

function useLanguage(code) {
  const changed = english !== (code === "EN");
  english = code === "EN";
  document.documentElement.lang = tr("zh-CN", "en");
  if (changed) languageWatchers.forEach((watcher) => watcher());
}

// A browser may forbid storage; what is kept then lasts as long as the page.
const memory = {};

/** A text kept by the browser, for the tab (sessionStorage) or for good (localStorage). */
export function stored(storage, key) {
  try {
    return globalThis[storage].getItem(key);
  } catch {
    return memory[key] ?? null;
  }
}

export function store(storage, key, text) {
  memory[key] = text;
  try {
    if (text === null) globalThis[storage].removeItem(key);
    else globalThis[storage].setItem(key, text);
  } catch {
    // see above
  }
}

/** The recorder's language; a choice made on the page goes before it. */
export function followLanguage(code) {
  store("localStorage", "recorder-language", code);
  useLanguage(stored("localStorage", "language") ?? code);
}

/** A choice made on the page; null gives the lead back to the recorder. */
export function chooseLanguage(code) {
  store("localStorage", "language", code);
  if (code) useLanguage(code);
}

/** What was last in use here, or chosen in another tab or on a page that Back has left. */
export const rememberedLanguage = () =>
  useLanguage(
    stored("localStorage", "language") ?? stored("localStorage", "recorder-language") ?? language(),
  );

// ---- requests

// Another request is said to be waited for after this time; the banner comes when it is surely late.
const WAIT_MS = 700;
const LATE_MS = 7000;
// A failed answer this late was a wait for the recorder; a quick one was its refusal to be read.
const SILENT_MS = 4000;

/**
 * "ok", "silent" (the recorder does not answer the daemon), "gone" (the daemon does not answer),
 * "odd" (it answers something else), "refused" (not to pages opened by this name) or "login".
 */
export let link = "ok";
/** What is being waited for, as [Chinese, English]; null: nothing for long. */
export let awaited = null;
let outage = false; // more than one section has been without an answer
const linkWatchers = new Set();

/** Calls watcher(state, outage) on each change; `outage` with "ok": what was shown may be outdated. */
export const onLink = (watcher) => linkWatchers.add(watcher);

const tellLink = (over = false) => linkWatchers.forEach((watcher) => watcher(link, over));

function setLink(state, certain) {
  const over = state === "ok" && outage;
  outage = state !== "ok" && (outage || certain);
  if (link === state) return;
  link = state;
  tellLink(over);
}

function judge({ path, form }, { answer, trouble }, ms) {
  if (path === STATUS && answer) setLink(answer.result === 1 ? "ok" : "silent", true);
  else if (answer?.result === 0 && ms > SILENT_MS) setLink("silent", false);
  else if (["gone", "login"].includes(trouble)) setLink(trouble, true);
  else if (trouble === "refused" && !form) setLink(trouble, true);
  else if (trouble === "odd" && path === STATUS) setLink(trouble, true);
}

const timers = [];

function showAwaited(what) {
  awaited = what;
  tellLink();
}

const readerWatchers = new Set();

/** Calls watcher() on each answer to a login that may not write. */
export const onReader = (watcher) => readerWatchers.add(watcher);

/** One request to the daemon, in turn; see requester(). A page that nobody sees asks for nothing. */
export const request = requester((path, init) => fetch(path, init), {
  mayRun: ({ urgent }) => urgent || !document.hidden,
  began({ what = null }) {
    timers.push(setTimeout(() => showAwaited(what), WAIT_MS));
    timers.push(setTimeout(() => link === "ok" && setLink("silent", false), LATE_MS));
  },
  ended(job, outcome, ms) {
    if (outcome.reader) readerWatchers.forEach((watcher) => watcher());
    timers.splice(0).forEach(clearTimeout);
    if (awaited) showAwaited(null);
    judge(job, outcome, ms);
  },
});

// ---- which recorder

// A status tells who answers every few seconds; one that is older is asked for anew before a write.
const FRESH_MS = 5000;
const WHO = { urgent: true, number: true, what: ["设备身份", "who answers"] };

/** {number, imei} of the recorder that the page works on, each empty while it is not known. */
export let recorder = { number: "", imei: "" };
/** Another recorder, which answers in its place; nothing is written until workOn() decides. */
export let stranger = null;
/** How far the recorder's clock, read as if it were UTC, is ahead of Date.now(); NaN while unknown. */
export let clockAhead = NaN;
/** Another object after each decision for another recorder: what was read before it is not of this one. */
export let workedOn = {};
let absences = 0; // times that the page was hidden or the link lost: whoever answers may be another
let met = { absences: -1, at: 0 };
const recorderWatchers = new Set();
const returnWatchers = new Set();

/** Calls watcher() when what is known of the recorder changes. */
export const onRecorder = (watcher) => recorderWatchers.add(watcher);
/** Calls watcher(outage) when the same recorder is there again after an absence. */
export const onReturn = (watcher) => returnWatchers.add(watcher);

/** Takes note of who answered; `whole`: as completely as can be known, so what cannot be compared differs. */
export function meet(identity, whole = false) {
  const known = recorder.imei || recorder.number;
  const same = sameRecorder(recorder, identity) ?? (whole && known ? false : undefined);
  const before = JSON.stringify([recorder, stranger]);
  if (same === false) {
    stranger =
      stranger && sameRecorder(stranger, identity) ? { ...stranger, ...withoutGaps(identity) } : identity;
  } else if (same || !known) {
    recorder = { ...recorder, ...withoutGaps(identity) };
    stranger = null;
    met = { absences, at: Date.now() };
  }
  if (JSON.stringify([recorder, stranger]) !== before) recorderWatchers.forEach((watcher) => watcher());
}

const withoutGaps = (identity) =>
  Object.fromEntries(
    ["number", "imei"].filter((mark) => identity[mark]).map((mark) => [mark, identity[mark]]),
  );

/** The user's decision: the page works on `identity` from now on. */
export function workOn(identity) {
  recorder = { number: "", imei: "", ...identity };
  stranger = null;
  workedOn = {};
  absences += 1;
  met = { absences, at: Date.now() };
  recorderWatchers.forEach((watcher) => watcher());
}

/** The recorder has this number now, also one that is known by its number alone. */
export function renamed(number) {
  if (stranger) return;
  recorder = { ...recorder, number };
  recorderWatchers.forEach((watcher) => watcher());
}

/** Asks who answers. Resolves to a trouble, "other" when it is another recorder, or nothing. */
export async function confirmRecorder() {
  const identity = await identify(request, WHO);
  if (identity.clock) clockAhead = Date.parse(`${identity.clock.replace(" ", "T")}Z`) - Date.now();
  if (!identity.trouble) meet(identity, true);
  if (stranger) return "other";
  return recorder.imei || recorder.number ? identity.trouble : undefined;
}

/** Before a write: {trouble}, or {mayWrite} which tells at the moment of sending whether it still may. */
export async function readyToWrite() {
  const fresh = met.absences === absences && Date.now() - met.at < FRESH_MS;
  const trouble = stranger ? "other" : fresh ? undefined : await confirmRecorder();
  const turn = absences;
  return { trouble, mayWrite: () => turn === absences && !stranger };
}

async function returned(over) {
  absences += 1;
  if (!(await confirmRecorder())) returnWatchers.forEach((watcher) => watcher(over));
}

let lastLink = link;
onLink((state, over) => {
  if (state !== lastLink && state === "ok") returned(over);
  else if (state !== lastLink) absences += 1;
  lastLink = state;
});

document.addEventListener("visibilitychange", () => {
  request.resume();
  if (!document.hidden) returned(false);
});

/** True when no request is under way or queued. */
export const { idle } = request;
