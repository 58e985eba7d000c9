// SPDX-License-Identifier: GPL-2.0-only
// What every view stands on: elements, the two languages, the queue of requests, the link's state.

// ---- elements

const SVG = "http://www.w3.org/2000/svg";

/**
 * Builds an element: h("p", {class: "help", onclick: f, hidden: false}, "text", node, ...).
 * A tag that starts with "svg:" is made in the SVG namespace. Functions become listeners, true an
 * empty attribute, false and undefined none. Strings become text nodes, never markup.
 */
export function h(tag, attributes = {}, ...children) {
  const element = tag.startsWith("svg:") ? document.createElementNS(SVG, tag.slice(4)) : document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") element.addEventListener(name.slice(2), value);
    else if (value !== false && value !== undefined) element.setAttribute(name, value === true ? "" : value);
  }
  element.append(...children.flat().filter((child) => child !== undefined));
  return element;
}

/** Writes a text only when it differs, so that a selection or a screen reader is not disturbed. */
export function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

const ICONS = {
  status: "M3 12h4l3-8 4 16 3-8h4",
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
  h("svg:svg", { class: "icon", viewBox: "0 0 24 24", "aria-hidden": "true" }, h("svg:path", { d: ICONS[name] }));

/** A state told by shape, word and colour together; kind: ok, off, warn or busy. */
export const badge = (kind, word) => h("span", { class: `badge ${kind}` }, icon(kind), word);

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

// A browser may forbid storage; the choice then lasts as long as the page.
let chosen = null;
try {
  chosen = localStorage.getItem("language");
} catch { /* see above */ }

/** The recorder's language; a choice made on the page goes before it. */
export const followLanguage = (code) => useLanguage(chosen ?? code);

/** A choice made on the page; null gives the lead back to the recorder. */
export function chooseLanguage(code) {
  chosen = code;
  try {
    if (code) localStorage.setItem("language", code);
    else localStorage.removeItem("language");
  } catch { /* see above */ }
  if (code) useLanguage(code);
}

// ---- requests

// The daemon waits 5 s for a silent recorder and serves nobody meanwhile; one request of ours may
// stand behind two such waits. The banner does not wait that long.
const GIVE_UP_MS = 20000;
const LATE_MS = 7000;
// A failed answer this late was a wait for the recorder; a quick one was its refusal to be read.
const SILENT_MS = 4000;
// What every recorder gives: the link is judged by it, as one section alone may stay unanswered.
export const STATUS = "/get_SystemInfo";

/**
 * "ok", "silent" (the recorder does not answer the daemon), "gone" (the daemon does not answer) or
 * "refused" (it does not serve pages opened by this name).
 */
export let link = "ok";
let outage = false; // more than one section has been without an answer
const linkWatchers = new Set();

/** Calls watcher(state, outage) on each change; `outage` with "ok": what was shown may be outdated. */
export const onLink = (watcher) => linkWatchers.add(watcher);

function setLink(state, certain) {
  const over = state === "ok" && outage;
  outage = state !== "ok" && (outage || certain);
  if (link === state) return;
  link = state;
  linkWatchers.forEach((watcher) => watcher(state, over));
}

/** Resolves while the page is in view: a page that nobody sees asks for nothing. */
async function inView() {
  while (document.hidden) {
    await new Promise((go) => document.addEventListener("visibilitychange", go, { once: true }));
  }
}

export const pause = (ms) => new Promise((go) => setTimeout(go, ms));

async function exchange(path, form) {
  await inView();
  const abort = new AbortController();
  const giveUp = setTimeout(() => abort.abort(), GIVE_UP_MS);
  const late = setTimeout(() => link === "ok" && setLink("silent", false), LATE_MS);
  const start = performance.now();
  try {
    const response = await fetch(path, {
      method: form ? "POST" : "GET",
      body: form && new URLSearchParams(form()),
      cache: "no-store",
      signal: abort.signal,
    });
    const text = await response.text();
    if (response.status === 403) {
      setLink("refused", true);
      return null;
    }
    const answer = JSON.parse(text);
    if (path === STATUS) setLink(answer.result === 1 ? "ok" : "silent", true);
    else if (answer.result !== 1 && performance.now() - start > SILENT_MS) setLink("silent", false);
    return answer;
  } catch {
    setLink("gone", true);
    return null;
  } finally {
    clearTimeout(giveUp);
    clearTimeout(late);
  }
}

let waiting = 0;
let last = Promise.resolve();

/** True when no request is under way or queued. */
export const idle = () => waiting === 0;

/**
 * One request to the daemon, after all that were asked for before it: the daemon serves one at a
 * time, and so do we. `form`, for a write, gives the fields at the moment of sending. Resolves to the parsed answer (`result` 1: it worked, 0: it did not), or to
 * null when there was none.
 */
export function request(path, form) {
  waiting += 1;
  last = last.then(() => exchange(path, form)).finally(() => { waiting -= 1; });
  return last;
}
