// SPDX-License-Identifier: GPL-2.0-only
// The form of a group: keeps edits apart from what the recorder holds, saves them and says what became of it.

import { pause } from "./api.js";
import { Card } from "./card.js";
import { readyToWrite, request, stranger } from "./core.js";
import { read, readBack, save } from "./exchange.js";
import { confirmWrite, isDone, RECONNECT_S, wayBack } from "./questions.js";
import { clockOf, doubts, laidOver, lockReason, OWN_TIME, ownClock, problems } from "./settings.js";

const RECONNECT_EVERY_MS = 3000;

export class Form {
  base = null; // the values as last read; {} while they are filled in unread
  edits = new Map(); // name -> value
  origins = new Map(); // name -> the value that was seen when the edit began
  phase = ""; // "", "sending", "checking" or "waiting"
  result = null; // as of exchange.save()
  reading = null; // the last one
  retried = false; // after a reading that failed alone
  unsure = {}; // what a write that was not read back may have left
  stop = () => {}; // ends the wait for the recorder

  card = null; // while it is in view

  /** `hooks`: changed(form) on every edit, saved(form, result), mayNot() the reason why it is read-only. */
  constructor(group, hooks) {
    this.group = group;
    this.id = group.id;
    this.hooks = hooks;
    this.clock = clockOf(group);
  }

  get values() {
    return laidOver(this.group, this.base, Object.fromEntries(this.edits));
  }

  /** The edits that a save would send. */
  get edited() {
    const { values } = this;
    const free = this.group.fields.filter(
      (field) => this.edits.has(field.name) && !lockReason(field, values),
    );
    return Object.fromEntries(free.map(({ name }) => [name, this.edits.get(name)]));
  }

  get seen() {
    return { ...this.base, ...Object.fromEntries(this.origins) };
  }

  get busy() {
    return this.phase !== "";
  }

  // -- reading

  async load(anew = false) {
    if (this.loading || this.busy || stranger) return;
    const abort = new AbortController();
    this.loading = abort;
    this.card?.refresh();
    const known = anew ? undefined : (this.base ?? undefined);
    const now = await read(request, this.group, { known, signal: abort.signal });
    if (this.loading !== abort) return; // left meanwhile, or begun anew
    this.loading = null;
    this.reading = now;
    if (now.ok) this.retried = false;
    if (now.ok && !this.busy && !stranger) {
      this.take(now);
      this.hooks.changed(this);
    } else this.card?.refresh();
  }

  /** Nobody looks at it any more: a reading that has not begun is not worth it. */
  leave() {
    this.loading?.abort();
    this.loading = null;
  }

  /** Takes what was read as the base; an edit that it has caught up with is none any more. */
  take({ values, at }) {
    const { group, base } = this;
    if (base && group.side && group.side(base) !== group.side(values)) this.keepSide(base);
    this.base = values;
    this.at = at;
    for (const [name, value] of this.edits) {
      if (value === values[name]) this.drop(name);
      // One's own write that has arrived late is nobody else's change.
      else if (values[name] === this.unsure[name]) this.origins.set(name, values[name]);
    }
    if (!base || Object.keys(base).length === 0) this.card?.fill();
    else this.card?.refresh();
  }

  /** Edits made on the other side's values mean that side: its choice becomes an edit to decide about. */
  keepSide(base) {
    const decider = this.group.fields.find(({ decides }) => decides);
    if (
      this.edits.has(decider.name) ||
      !this.group.fields.some(({ sided, name }) => sided && this.edits.has(name))
    )
      return;
    this.edits.set(decider.name, base[decider.name]);
    this.origins.set(decider.name, base[decider.name]);
  }

  drop(name) {
    this.edits.delete(name);
    this.origins.delete(name);
  }

  /** What has been typed for a record that is not written now would only look like a change of it. */
  dropLocked(values) {
    for (const field of this.group.fields) if (lockReason(field, values)) this.drop(field.name);
  }

  /** Forgets the recorder's values, for another recorder's; edits stay until they are dropped. */
  forget() {
    this.leave();
    this.stop();
    Object.assign(this, { base: null, result: null, reading: null, unsure: {} });
    this.card?.fill();
    this.card?.tell();
  }

  /** Begins a form whose values are not known: all of them are to be entered. */
  startUnread() {
    this.base = {};
    this.card.fill();
  }

  /** Makes a card of what is held; its element. */
  draw() {
    if (this.result && isDone(this.result)) this.result = null; // of an earlier visit
    this.card = new Card(this);
    this.card.fill();
    this.card.tell();
    return this.card.node;
  }

  // -- editing

  /** Whether an edited field has changed in the recorder since. */
  clashes({ kind, name }) {
    const [origin, theirs] = [this.origins.get(name), this.base[name]];
    return (
      this.edits.has(name) &&
      kind !== "clock" &&
      origin !== undefined &&
      theirs !== undefined &&
      theirs !== origin
    );
  }

  /** Ends a clash for the user's value, or for the recorder's. */
  decide({ name, decides }, mine) {
    if (mine) this.origins.set(name, this.base[name]);
    else {
      this.drop(name);
      if (decides) this.dropLocked(this.values);
      this.card.show(name);
    }
    this.result = null;
    this.changed();
  }

  edit(field, value) {
    const { name } = field;
    const others = Object.fromEntries([...this.edits].filter(([other]) => other !== name));
    if (value === laidOver(this.group, this.base, others)[name] && !this.clashes(field)) this.drop(name);
    else {
      if (!this.edits.has(name)) this.origins.set(name, this.base[name]);
      this.edits.set(name, value);
    }
    this.result = null;
    this.card.inView(name, () => this.changed());
  }

  /** A known clock is sent at once; else it becomes an edit among others. */
  setClock() {
    const { name } = this.clock;
    if (this.base[name] !== undefined) return this.save({ [name]: OWN_TIME });
    this.edit(this.clock, ownClock());
    return this.card.show(name);
  }

  changed() {
    this.card?.tell();
    this.hooks.changed(this);
  }

  revert() {
    if (this.phase === "waiting") {
      this.stop();
      return;
    }
    this.clear();
    this.card.focusFirst();
  }

  /** Drops all edits; what was filled in unread is unread again. */
  clear() {
    this.edits.clear();
    this.origins.clear();
    this.result = null;
    if (this.base && Object.keys(this.base).length === 0) this.base = null;
    this.card?.fill();
    this.changed();
  }

  // -- saving

  /** Saves the form, or only `edits`, whatever else has been edited. */
  async save(only) {
    if (this.busy || this.hooks.mayNot()) return;
    const giveFocusBack = this.card.keepFocus();
    if (Object.keys(this.unsure).length) await this.lookAgain();
    if (!this.base) return;
    const edits = only ?? this.edited;
    const values = laidOver(this.group, this.base, edits);
    const wrong = problems(this.group, values);
    if (wrong.length) this.conclude({ outcome: "invalid", problems: wrong });
    this.card.markAll(wrong);
    if (wrong.length) return;
    const clashing = this.group.fields.filter((field) => field.name in edits && this.clashes(field));
    if (clashing.length) {
      const clashes = clashing.map((field) => ({ field, theirs: this.base[field.name] }));
      this.conclude({ outcome: "conflict", clashes });
      return;
    }
    const way = this.group.cutsOff && wayBack(this.group, values);
    if (!(await confirmWrite(doubts(this.group, values, edits, this.seen), way))) return;
    this.result = null;
    this.enter("sending");
    let result = await this.send(edits);
    if (this.group.cutsOff && result.outcome === "unsure") result = await this.reconnect(result);
    this.phase = "";
    if (this.base) {
      this.settle(result, edits);
      this.conclude(result);
    } else this.load(); // forgotten: another recorder is worked on
    giveFocusBack();
  }

  /** Reads what has become of a write that was not read back. */
  async lookAgain() {
    this.enter("checking");
    const now = await this.ofSame(() => read(request, this.group, { urgent: true, known: this.base }));
    this.phase = "";
    if (!this.base) this.load();
    else if (now?.ok) this.take(now);
    this.card.tell();
  }

  /** What `look` reads when the recorder that is worked on is there, before it and after; else `otherwise`. */
  async ofSame(look, otherwise) {
    const { trouble, mayWrite } = await readyToWrite();
    const now = trouble ? otherwise : await look();
    return mayWrite() ? now : otherwise;
  }

  async send(edits) {
    const { trouble, mayWrite } = await readyToWrite();
    if (trouble) return { outcome: "unread", trouble };
    const onStep = (step) => this.enter(step);
    return save(request, this.group, edits, { seen: this.seen, mayWrite, onStep });
  }

  enter(phase) {
    this.phase = phase;
    this.card.tell();
  }

  conclude(result) {
    this.result = result;
    this.card.tell();
  }

  settle(result, sent) {
    if (isDone(result)) {
      Object.keys(sent).forEach((name) => this.drop(name));
      this.dropLocked(result.values);
    }
    this.unsure = result.outcome === "unsure" ? result.expected : {};
    if (result.outcome === "unread") this.reading = { ok: false, trouble: result.trouble };
    if (result.outcome === "kept") {
      if (this.clock) this.drop(this.clock.name);
      // The user has been told what is held instead, so this is what further edits are made on.
      for (const name of Object.keys(sent))
        if (this.edits.has(name)) this.origins.set(name, result.values[name]);
    }
    for (const { field, seen, mine } of result.clashes ?? []) {
      if (!this.edits.has(field.name)) this.origins.set(field.name, seen);
      this.edits.set(field.name, mine);
    }
    if (result.values) this.take(result);
    this.hooks.changed(this);
    this.hooks.saved(this, result);
  }

  /** Keeps asking until the recorder is back and tells what it holds, or the wait is stopped. */
  async reconnect(result) {
    this.result = result;
    this.enter("waiting");
    const until = Date.now() + RECONNECT_S * 1000;
    const tick = setInterval(() => this.card.countDown(Math.ceil((until - Date.now()) / 1000)), 1000);
    const look = () => readBack(request, this.group, result.expected);
    let last = result;
    let stop = false;
    const stopped = new Promise((go) => {
      this.stop = () => go(result);
    }).finally(() => {
      stop = true;
    });
    while (!stop && !last.values) {
      await Promise.race([stopped, pause(RECONNECT_EVERY_MS)]);
      if (!stop) last = await Promise.race([stopped, this.ofSame(look, result)]);
    }
    clearInterval(tick);
    this.card.countDown(null);
    return last;
  }
}
