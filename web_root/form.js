// SPDX-License-Identifier: GPL-2.0-only
// The form of a group: shows what the recorder holds, keeps edits apart from it, saves and tells the result.

import { pause } from "./api.js";
import { CONTROLS, inWords, mirrorPicture } from "./controls.js";
import { badge, h, readyToWrite, request, setText, stranger, tr } from "./core.js";
import { read, readBack, save } from "./exchange.js";
import { confirmWrite, isDone, RECONNECT_S, resultNodes, TROUBLES, wayBack } from "./questions.js";
import {
  clockOf,
  doubts,
  laidOver,
  lockReason,
  OWN_TIME,
  ownClock,
  problem,
  problems,
  ticked,
} from "./settings.js";

const RECONNECT_EVERY_MS = 3000;

const zoneText = (hours) => `UTC${hours < 0 ? "−" : "+"}${Math.abs(hours)}`;

/** Why a clock set from this device would not stay or look right, in sentences. */
function clockNotes(values) {
  const own = -new Date().getTimezoneOffset() / 60;
  const code = Number(values.ucFD_TimeZone);
  const zone = code > 127 ? code - 256 : code;
  const [here, there] = [zoneText(own), zoneText(zone)];
  return [
    tr(`本设备的时区是 ${here}。`, `This device is in ${here}.`),
    zone !== own &&
      tr(`录像机的时区是 ${there}：请先核对。`, `The recorder's time zone is ${there}: check it first.`),
    values.ucFD_GpsSTFlag === "1" &&
      tr("GPS 校时已开启，会再次改动时钟。", "GPS sets the clock too, and will move it again."),
  ].filter(Boolean);
}

export class Form {
  base = null; // the values as last read; {} while they are filled in unread
  edits = new Map(); // name -> value
  origins = new Map(); // name -> the value that was seen when the edit began
  phase = ""; // "", "sending", "checking" or "waiting"
  result = null; // as of exchange.save()
  reading = null; // the last one
  retried = false; // after a reading that failed alone
  unsure = {}; // what a write that was not read back may have left

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
    this.refresh();
    const known = anew ? undefined : (this.base ?? undefined);
    const now = await read(request, this.group, { known, signal: abort.signal });
    if (this.loading !== abort) return; // left meanwhile, or begun anew
    this.loading = null;
    this.reading = now;
    if (now.ok) this.retried = false;
    if (now.ok && !this.busy && !stranger) this.take(now);
    else this.refresh();
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
    if (!base || Object.keys(base).length === 0) this.fill();
    else this.refresh();
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

  /** Forgets the recorder's values, for another recorder's; edits stay until they are dropped. */
  forget() {
    this.leave();
    Object.assign(this, { base: null, result: null, reading: null });
    this.fill();
    this.tell();
  }

  // -- drawing

  draw() {
    this.body = h("div", { class: "fields" });
    this.note = h("div", { class: "note" });
    this.live = h("div", { class: "result", role: "status", tabindex: "-1" });
    this.timer = h("p", { class: "help", role: "timer" });
    this.count = h("span", { class: "count" });
    this.progress = h("progress", { "aria-label": tr("正在保存", "Saving") });
    const title = tr(...this.group.title);
    const of = (word) => `${word}: ${title}`;
    this.revertButton = h("button", { type: "button", onclick: () => this.revert() }, "");
    this.saveButton = h("button", { type: "submit", class: "primary" });
    this.nameButtons = () => {
      for (const button of [this.revertButton, this.saveButton])
        button.setAttribute("aria-label", of(button.textContent));
    };
    this.footer = h(
      "div",
      { class: "footer" },
      this.progress,
      this.count,
      this.revertButton,
      this.saveButton,
    );
    const submit = (event) => {
      event.preventDefault();
      this.save();
    };
    const attributes = { novalidate: true, autocomplete: "off", "aria-label": title, onsubmit: submit };
    this.card = h(
      "form",
      { class: "card", id: this.id, ...attributes },
      h("h2", {}, title),
      this.group.intro && h("p", { class: "help" }, tr(...this.group.intro)),
      this.note,
      this.body,
      this.live,
      this.timer,
      this.footer,
    );
    if (this.result && isDone(this.result)) this.result = null; // of an earlier visit
    this.fill();
    this.tell();
    return this.card;
  }

  fill() {
    this.rows = new Map();
    this.picture = null;
    if (!this.card) return;
    if (this.base) {
      const rows = this.group.fields.map((field) => this.row(field));
      if (this.group.picture) this.picture = mirrorPicture();
      this.body.replaceChildren(
        ...[this.picture, ...rows, ...(this.clock ? this.clockButton() : [])].filter(Boolean),
      );
    }
    this.refresh();
  }

  row(field) {
    const id = `${this.id}-${field.name}`;
    const error = h("p", { class: "error", id: `${id}-error` });
    const clash = h("div", { class: "clash", role: "group" });
    const help = h("p", { class: "help", id: `${id}-help` });
    const unknown = this.base[field.name] === undefined;
    // A switch has no way to stand for "not known".
    const kind = field.kind === "flag" && (unknown || field.coded) ? "choice" : field.kind;
    const control = CONTROLS[kind](
      field,
      { id, "aria-describedby": `${id}-help ${id}-error`, "aria-required": unknown && "true" },
      (value) => this.edit(field, value),
    );
    const left = ({ relatedTarget }) => {
      if (row.contains(relatedTarget)) return;
      if (this.edits.has(field.name))
        this.mark(field.name, problem(field, this.values[field.name], this.values));
      this.refresh();
    };
    const mark = h("span", { class: "mark" }, tr("已更改", "changed"));
    const row = h(
      "div",
      { class: `row ${kind}`, onfocusout: left },
      h("label", { for: id }, tr(...field.label), mark),
      control.node,
      help,
      error,
      clash,
    );
    this.rows.set(field.name, { ...control, field, error, clash, help, row });
    control.show(this.shown(field));
    return row;
  }

  clockButton() {
    const set = () => {
      if (this.base[this.clock.name] !== undefined) return this.save({ [this.clock.name]: OWN_TIME });
      this.edit(this.clock, ownClock());
      return this.rows.get(this.clock.name).show(this.edits.get(this.clock.name));
    };
    this.clockNote = h("p", { class: "help", id: `${this.id}-clock-note` });
    const name = tr("用本设备的时间设置时钟", "Set the clock from this device");
    const attributes = { type: "button", class: "wide", "aria-describedby": this.clockNote.id, onclick: set };
    return [h("button", attributes, name), this.clockNote];
  }

  /** Brings the card up to the state; what has the focus is left alone, and so are edits. */
  refresh() {
    if (!this.card) return;
    this.drawNote();
    if (!this.base) this.drawUnread();
    else this.refreshRows();
    const steps = {
      sending: tr("正在发送…", "Sending…"),
      checking: tr("正在核对…", "Reading back…"),
      waiting: tr("正在重新连接…", "Reconnecting…"),
    };
    const count = this.base ? Object.keys(this.edited).length : this.edits.size;
    const waiting = this.phase === "waiting";
    this.card.setAttribute("aria-busy", String(this.busy));
    this.body.inert = this.busy || Boolean(this.hooks.mayNot());
    this.footer.hidden = !this.busy && (count === 0 || !this.base);
    this.progress.hidden = !this.busy;
    setText(this.count, steps[this.phase] ?? tr(`${count} 项更改`, `${count} changed`));
    setText(this.revertButton, waiting ? tr("停止等待", "Stop waiting") : tr("还原", "Revert"));
    this.revertButton.hidden = this.busy && !waiting;
    this.saveButton.hidden = waiting;
    setText(this.saveButton, this.busy ? tr("请稍候", "Please wait") : tr("保存", "Save"));
    this.saveButton.setAttribute("aria-disabled", String(this.busy));
    this.nameButtons();
  }

  refreshRows() {
    const { values } = this;
    for (const [name, { field, input, help, show, row, error }] of this.rows) {
      const locked = lockReason(field, values);
      const edited = this.edits.has(name) && !locked;
      row.classList.toggle("edited", edited);
      // Both, since a select cannot be read-only and a disabled text cannot be copied.
      if (field.kind !== "fact")
        input[input.tagName === "SELECT" ? "disabled" : "readOnly"] = Boolean(locked);
      const text = locked ?? field.help;
      setText(help, text ? tr(...text) : "");
      if (locked || (!edited && !row.contains(document.activeElement))) show(this.shown(field, locked));
      if (error.textContent) this.mark(name, problem(field, values[name], values));
      this.drawClash(field);
    }
    if (this.clockNote) setText(this.clockNote, clockNotes(values).join(tr("", " ")));
    if (!this.picture) return;
    this.picture.classList.toggle("left-right", values.strFD_LeftRight === "1");
    this.picture.classList.toggle("up-down", values.strFD_UpDown === "1");
  }

  shown(field, locked) {
    const value = locked ? laidOver(this.group, this.base, this.edited)[field.name] : this.values[field.name];
    const runs = field.kind === "clock" && value !== undefined && !this.edits.has(field.name);
    return runs ? ticked(value, this.at) : value;
  }

  /** Why the values shown are not the recorder's, when they are not. */
  drawNote() {
    const { reading } = this;
    const strange =
      this.base &&
      reading &&
      !reading.ok &&
      /^(odd|empty)$/.test(reading.trouble) &&
      TROUBLES[reading.trouble]();
    const text = this.hooks.mayNot() ?? strange ?? "";
    if (this.note.dataset.text === text) return;
    this.note.dataset.text = text;
    const again = () => this.load(true);
    const button = strange && h("button", { type: "button", onclick: again }, tr("重新读取", "Read again"));
    this.note.replaceChildren(...(text ? [h("p", {}, badge("warn", text)), button || ""] : []));
  }

  drawUnread() {
    if (this.loading || !this.reading) {
      const bones = this.group.fields.map(() => h("div", { class: "row" }, h("span", { class: "bone" })));
      const word = h("p", { class: "hidden" }, tr("正在读取…", "Reading…"));
      this.body.replaceChildren(word, ...bones);
      return;
    }
    const title = tr(...this.group.title);
    const button = (word, onclick) =>
      h("button", { type: "button", "aria-label": `${word}: ${title}`, onclick }, word);
    const fillIn = () => {
      this.base = {};
      this.fill();
    };
    const why =
      this.reading.trouble === "silent"
        ? tr("录像机没有给出这些设置。", "The recorder did not give these settings.")
        : TROUBLES[this.reading.trouble]();
    this.body.replaceChildren(
      h("p", {}, badge("warn", why)),
      h(
        "div",
        { class: "buttons" },
        this.group.mendable && button(tr("直接填写", "Fill in anyway"), fillIn),
        button(tr("重新读取", "Read again"), () => this.load(true)),
      ),
    );
  }

  mark(name, trouble) {
    const { input, error } = this.rows.get(name);
    if (trouble) input.setAttribute("aria-invalid", "true");
    else input.removeAttribute("aria-invalid");
    setText(error, trouble ? tr(...trouble) : "");
  }

  // -- an edited field that has changed in the recorder

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

  drawClash(field) {
    const { clash } = this.rows.get(field.name);
    const text = this.clashes(field) ? inWords(field, this.base[field.name]) : null;
    if (clash.dataset.text === String(text)) return;
    clash.dataset.text = String(text);
    if (text === null) {
      clash.replaceChildren();
      return;
    }
    const label = tr(...field.label);
    const choose = (word, decide) => {
      const decided = () => {
        decide();
        this.result = null;
        this.changed();
        this.rows.get(field.name).input.focus();
      };
      return h("button", { type: "button", "aria-label": `${word}: ${label}`, onclick: decided }, word);
    };
    clash.replaceChildren(
      h(
        "p",
        {},
        badge("warn", tr("录像机中已改为：", "Changed in the recorder to:")),
        " ",
        h("bdi", {}, text),
      ),
      choose(tr("采用录像机的值", "Take the recorder's"), () => {
        this.drop(field.name);
        this.rows.get(field.name).show(this.shown(field));
      }),
      choose(tr("保留我的值", "Keep mine"), () => this.origins.set(field.name, this.base[field.name])),
    );
  }

  // -- editing

  edit(field, value) {
    const { name } = field;
    const others = Object.fromEntries([...this.edits].filter(([other]) => other !== name));
    if (value === laidOver(this.group, this.base, others)[name] && !this.clashes(field)) this.drop(name);
    else {
      if (!this.edits.has(name)) this.origins.set(name, this.base[name]);
      this.edits.set(name, value);
    }
    const first = this.footer.hidden;
    this.result = null;
    this.changed();
    if (first) this.rows.get(name).row.scrollIntoView({ block: "nearest" }); // the footer has come up
  }

  changed() {
    this.tell();
    this.hooks.changed(this);
  }

  revert() {
    if (this.phase === "waiting") {
      this.stop();
      return;
    }
    this.clear();
    this.body.querySelector("input, select")?.focus();
  }

  /** Drops all edits; what was filled in unread is unread again. */
  clear() {
    this.edits.clear();
    this.origins.clear();
    this.result = null;
    if (this.base && Object.keys(this.base).length === 0) this.base = null;
    if (this.card) this.fill();
    if (this.card) this.changed();
  }

  /** Tells the result in the live region and takes the focus there when it would be lost. */
  tell() {
    const { result, card } = this;
    if (!card) return;
    const hadFocus = this.footer.contains(document.activeElement);
    const way =
      this.phase === "waiting" ? wayBack(this.group, laidOver(this.group, this.base, this.edited)) : [];
    this.live.replaceChildren(...(result ? [...resultNodes(result), ...way] : []));
    this.refresh();
    if (hadFocus && this.footer.hidden) this.live.focus({ preventScroll: true });
    else if (hadFocus && this.saveButton.hidden) this.revertButton.focus({ preventScroll: true });
    if (result && result.outcome !== "invalid") this.live.scrollIntoView({ block: "nearest" });
  }

  // -- saving

  /** Saves the form, or only `edits`, whatever else has been edited. */
  async save(edits = this.edited) {
    if (this.busy || this.hooks.mayNot()) return;
    if (Object.keys(this.unsure).length) await this.load();
    const values = laidOver(this.group, this.base, edits);
    const wrong = problems(this.group, values);
    this.rows.forEach((row, name) => this.mark(name, wrong.find(([{ name: other }]) => other === name)?.[1]));
    if (wrong.length) {
      this.conclude({ outcome: "invalid", problems: wrong });
      this.rows.get(wrong[0][0].name).input.focus();
      return;
    }
    const clashing = this.group.fields.filter((field) => field.name in edits && this.clashes(field));
    if (clashing.length) {
      const clashes = clashing.map((field) => ({ field, theirs: this.base[field.name] }));
      this.conclude({ outcome: "conflict", clashes });
      return;
    }
    const way = this.group.cutsOff && wayBack(this.group, values);
    if (!(await confirmWrite(doubts(this.group, values, edits, this.seen), way))) return;
    const focus = this.rows.get(
      [...this.rows.keys()].find((name) => this.rows.get(name).row.contains(document.activeElement)),
    );
    const within = focus && document.activeElement;
    this.result = null;
    this.enter("sending");
    let result = await this.send(edits);
    if (this.group.cutsOff && result.outcome === "unsure") result = await this.reconnect(result);
    this.phase = "";
    this.settle(result, edits);
    this.conclude(result);
    if (within?.isConnected && document.activeElement === document.body)
      within.focus({ preventScroll: true });
  }

  async send(edits) {
    const { trouble, mayWrite } = await readyToWrite();
    if (trouble) return { outcome: "unread", trouble };
    const onStep = (step) => this.enter(step);
    return save(request, this.group, edits, { seen: this.seen, mayWrite, onStep });
  }

  enter(phase) {
    this.phase = phase;
    this.tell();
  }

  conclude(result) {
    this.result = result;
    this.tell();
  }

  settle(result, sent) {
    if (isDone(result)) {
      // What has been typed for a record that is not written now would only look like a change of it.
      const locked = this.group.fields.filter((field) => lockReason(field, result.values));
      [...Object.keys(sent), ...locked.map(({ name }) => name)].forEach((name) => this.drop(name));
    }
    this.unsure = result.outcome === "unsure" ? result.expected : {};
    if (result.outcome === "kept") {
      if (this.clock) this.drop(this.clock.name);
      // The user has been told what is held instead, so this is what further edits are made on.
      for (const name of this.edits.keys()) this.origins.set(name, result.values[name]);
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
    const tick = setInterval(() => {
      const left = Math.ceil((until - Date.now()) / 1000);
      setText(
        this.timer,
        left > 0
          ? tr(`继续尝试，剩余 ${left} 秒`, `Trying again, ${left} s left`)
          : tr("仍未连接，页面会继续尝试。", "Not back yet; the page keeps trying."),
      );
    }, 1000);
    let last = result;
    let stop = false;
    const stopped = new Promise((go) => {
      this.stop = () => go(result);
    }).finally(() => {
      stop = true;
    });
    while (!stop && !last.values) {
      await Promise.race([stopped, pause(RECONNECT_EVERY_MS)]);
      if (!stop && !stranger)
        last = await Promise.race([stopped, readBack(request, this.group, result.expected)]);
    }
    clearInterval(tick);
    setText(this.timer, "");
    return last;
  }
}
