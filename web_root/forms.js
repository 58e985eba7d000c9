// SPDX-License-Identifier: GPL-2.0-only
// All forms: which are in view, what becomes of their edits when the tab, the link or the recorder goes.

import { sameRecorder } from "./api.js";
import {
  chooseLanguage,
  columns,
  confirmRecorder,
  followLanguage,
  onLink,
  onReader,
  onRecorder,
  onReturn,
  recorder,
  renamed,
  store,
  stored,
  tr,
  workOn,
} from "./core.js";
import { Form } from "./form.js";
import { loadNames } from "./names.js";
import { groups } from "./schema.js";

let onCount = () => {};
let denied = false; // a write was, or would be: this login reads only

const countEdits = (section) =>
  onCount(
    section,
    forms.filter(({ group }) => group.section === section).reduce((sum, { edits }) => sum + edits.size, 0),
  );

function deny() {
  if (denied) return;
  denied = true;
  forms.forEach(({ card }) => card?.refresh());
}

/** What else follows a write that was read back. */
export function saved({ id }, result) {
  if (result.outcome === "denied" && result.trouble === "refused") deny();
  if (!result.values || result.outcome === "conflict") return;
  if (id === "BaseInfo") {
    renamed(result.values.strFD_DeviceNo);
    confirmRecorder(); // its clock
  }
  if (id === "LangInfo" && result.outcome === "saved") {
    chooseLanguage(null);
    followLanguage(result.values.strLanguage);
  }
}

const hooks = {
  saved,
  changed({ group }) {
    countEdits(group.section);
    keepDrafts();
  },
  mayNot: () =>
    denied
      ? tr("此登录只能查看，不能更改设置。", "This login may look at the settings, not change them.")
      : undefined,
};

const forms = groups.map((group) => new Form(group, hooks));
let inSight = [];

// ---- unsaved edits, kept for the tab by recorder: a phone discards tabs. Never passwords.

const readDrafts = () => JSON.parse(stored("sessionStorage", "drafts") ?? "[]");
const isKnown = ({ imei, number }) => Boolean(imei || number);
const others = (drafts) => drafts.filter(({ who }) => !sameRecorder(who, recorder));

function keepDrafts() {
  if (!isKnown(recorder)) return;
  const kept = {};
  for (const { id, group, edits, origins } of forms) {
    const open = group.fields.filter(({ kind, name }) => kind !== "password" && edits.has(name));
    if (open.length) kept[id] = open.map(({ name }) => [name, edits.get(name), origins.get(name)]);
  }
  const own = Object.keys(kept).length ? [{ who: recorder, kept }] : [];
  const drafts = [...others(readDrafts()), ...own];
  store("sessionStorage", "drafts", drafts.length ? JSON.stringify(drafts) : null);
}

let restoredFor = null;

/** Brings back what was edited on this recorder before the tab was discarded or another came between. */
function restoreDrafts() {
  if (!isKnown(recorder) || (restoredFor && sameRecorder(restoredFor, recorder) !== false)) return;
  restoredFor = recorder;
  const draft = readDrafts().find(({ who }) => sameRecorder(who, recorder));
  for (const form of forms) {
    for (const [name, value, seen] of draft?.kept[form.id] ?? []) {
      if (form.edits.has(name)) continue;
      form.edits.set(name, value);
      form.origins.set(name, seen ?? undefined);
    }
    if (draft?.kept[form.id] && form.base) form.card?.fill();
    countEdits(form.group.section);
  }
}

/** The user's decision for another recorder: with `carry` the edits go along, else they stay behind. */
export function changeRecorder(identity, carry) {
  keepDrafts();
  if (carry) store("sessionStorage", "drafts", JSON.stringify(others(readDrafts())));
  else forms.forEach((form) => (form.edits.clear(), form.origins.clear()));
  workOn(identity);
  restoreDrafts();
  forms.forEach((form) => form.forget());
  forms.forEach(({ group }) => countEdits(group.section));
  keepDrafts();
  connected().forEach((form) => form.load());
}

// ---- views

/** Drafts may have come back before anybody heard of their count. */
function listen(counted) {
  onCount = counted;
  restoreDrafts();
  forms.forEach(({ group }) => countEdits(group.section));
}

/**
 * The cards of a section; `counted(section, count)` hears of unsaved edits, also of other sections', and
 * `settled()` when the cards have their height.
 */
export async function formView(section, counted, settled) {
  await loadNames();
  listen(counted);
  const before = inSight;
  inSight = forms.filter(({ group }) => group.section === section);
  before.filter((form) => !inSight.includes(form)).forEach((form) => form.leave());
  const cards = inSight.map((form) => form.draw());
  Promise.all(inSight.map((form) => form.load())).then(settled);
  return [columns(cards)];
}

/** Reads every group that nobody has opened yet, so that its form stands at once. */
export async function preload(counted) {
  listen(counted);
  for (const form of forms) if (!form.base) await form.load();
}

const connected = () => inSight.filter(({ card }) => card.node.isConnected);

// ---- absences

onRecorder(restoreDrafts);
onReturn((outage) => {
  for (const form of connected()) {
    // A section that alone stays unanswered gets one more attempt: each costs the daemon 5 s.
    const again = form.reading && !form.reading.ok && !form.retried;
    form.retried ||= again && !outage;
    if (again || outage || form.base) form.load();
  }
});
onReader(deny);
onLink((state) => {
  if (state !== "login") return;
  denied = false; // another login may write
  forms.forEach(({ card }) => card?.refresh());
});
addEventListener("beforeunload", (event) => {
  if (!forms.some(({ edits }) => edits.size)) return;
  event.preventDefault();
  event.returnValue = true; // for browsers of before 2023
});
setInterval(
  () => document.hidden || inSight.forEach((form) => form.clock && form.base && form.card.refresh()),
  1000,
);
