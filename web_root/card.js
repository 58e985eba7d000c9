// SPDX-License-Identifier: GPL-2.0-only
// The card of a form: draws what the form holds, and keeps the focus and the reader's place.

import { CONTROLS, inWords, mirrorPicture } from "./controls.js";
import { badge, h, setText, tr } from "./core.js";
import { resultNodes, TROUBLES, wayBack } from "./questions.js";
import { laidOver, lockReason, problem, ticked } from "./settings.js";

const zoneText = (hours) => `UTC${hours < 0 ? "−" : "+"}${Math.abs(hours)}`;

/** Why a clock set from this device would not stay or look right, in sentences. */
function clockNotes(values) {
  const own = -new Date().getTimezoneOffset() / 60;
  const code = Number(values.ucFD_TimeZone);
  const zone = code > 127 ? code - 256 : code;
  const [here, there] = [zoneText(own), zoneText(zone)];
  return [
    tr(`本设备的时区是 ${here}。`, `This device is in ${here}.`),
    Math.abs(zone) <= 14 &&
      zone !== own &&
      tr(`录像机的时区是 ${there}：请先核对。`, `The recorder's time zone is ${there}: check it first.`),
    values.ucFD_GpsSTFlag === "1" &&
      tr("GPS 校时已开启，会再次改动时钟。", "GPS sets the clock too, and will move it again."),
  ].filter(Boolean);
}

const buttonOf = (word, of, onclick) =>
  h("button", { type: "button", "aria-label": `${word}: ${of}`, onclick }, word);

export class Card {
  rows = new Map(); // name -> its control, with the elements around it
  picture = null;

  constructor(form) {
    this.form = form;
    const { group } = form;
    this.title = tr(...group.title);
    this.body = h("div", { class: "fields" });
    this.note = h("div", { class: "note" });
    this.live = h("div", { class: "result", role: "status", tabindex: "-1" });
    this.timer = h("p", { class: "help", role: "timer" });
    this.count = h("span", { class: "count" });
    this.progress = h("progress", { "aria-label": tr("正在保存", "Saving") });
    this.revertButton = h("button", { type: "button", onclick: () => form.revert() });
    this.saveButton = h("button", { type: "submit", class: "primary" });
    this.footer = h(
      "div",
      { class: "footer" },
      this.progress,
      this.count,
      this.revertButton,
      this.saveButton,
    );
    const onsubmit = (event) => {
      event.preventDefault();
      form.save();
    };
    this.node = h(
      "form",
      {
        class: "card",
        id: form.id,
        novalidate: true,
        autocomplete: "off",
        "aria-label": this.title,
        onsubmit,
      },
      h("h2", {}, this.title),
      group.intro && h("p", { class: "help" }, tr(...group.intro)),
      this.note,
      this.body,
      this.live,
      this.timer,
      this.footer,
    );
  }

  // -- the rows

  /** Makes the rows anew. */
  fill() {
    const { group, base, clock } = this.form;
    this.rows = new Map();
    this.picture = null;
    if (base) {
      const rows = group.fields.map((field) => this.row(field));
      if (group.picture) this.picture = mirrorPicture();
      this.body.replaceChildren(
        ...[this.picture, ...rows, ...(clock ? this.clockButton() : [])].filter(Boolean),
      );
    }
    this.refresh();
  }

  row(field) {
    const { form } = this;
    const id = `${form.id}-${field.name}`;
    const error = h("p", { class: "error", id: `${id}-error` });
    const clash = h("div", { class: "clash", role: "group" });
    const help = h("p", { class: "help", id: `${id}-help` });
    const unknown = form.base[field.name] === undefined;
    // A switch has no way to stand for "not known".
    const kind = field.kind === "flag" && (unknown || field.coded) ? "choice" : field.kind;
    const control = CONTROLS[kind](
      field,
      { id, "aria-describedby": `${id}-help ${id}-error`, "aria-required": unknown && "true" },
      (value) => form.edit(field, value),
    );
    const left = ({ relatedTarget }) => {
      // Saving marks every row; a line that comes up now would move its button away from under the press.
      if (row.contains(relatedTarget) || this.footer.contains(relatedTarget)) return;
      const { values } = form;
      if (form.edits.has(field.name)) this.mark(field.name, problem(field, values[field.name], values));
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
    this.clockNote = h("p", { class: "help", id: `${this.form.id}-clock-note` });
    const name = tr("用本设备的时间设置时钟", "Set the clock from this device");
    const onclick = () => this.form.setClock();
    const attributes = { type: "button", class: "wide", "aria-describedby": this.clockNote.id, onclick };
    return [h("button", attributes, name), this.clockNote];
  }

  shown(field, locked) {
    const { group, base, edits, edited, values, at } = this.form;
    const value = locked ? laidOver(group, base, edited)[field.name] : values[field.name];
    const runs = field.kind === "clock" && value !== undefined && !edits.has(field.name);
    return runs ? ticked(value, at) : value;
  }

  /** Puts the form's value into the field, also where the focus is. */
  show(name) {
    const { field, show } = this.rows.get(name);
    show(this.shown(field));
  }

  mark(name, trouble) {
    const { input, error } = this.rows.get(name);
    if (trouble) input.setAttribute("aria-invalid", "true");
    else input.removeAttribute("aria-invalid");
    setText(error, trouble ? tr(...trouble) : "");
  }

  /** Does what may bring up the footer, and keeps the row in view then. */
  inView(name, change) {
    const first = this.footer.hidden;
    change();
    if (first) this.rows.get(name).row.scrollIntoView({ block: "nearest" });
  }

  focusFirst() {
    this.body.querySelector("input, select")?.focus();
  }

  /** Marks every row by the list of problems, of which the first gets the focus. */
  markAll(problems) {
    for (const name of this.rows.keys())
      this.mark(name, problems.find(([field]) => field.name === name)?.[1]);
    if (problems.length) this.rows.get(problems[0][0].name).input.focus();
  }

  // -- brought up to the form's state

  /** What has the focus is left alone, and so are edits. */
  refresh() {
    const { base, busy, edited, edits, phase, hooks } = this.form;
    this.drawNote();
    if (base) this.refreshRows();
    else this.drawUnread();
    const steps = {
      sending: tr("正在发送…", "Sending…"),
      checking: tr("正在核对…", "Reading back…"),
      waiting: tr("正在重新连接…", "Reconnecting…"),
    };
    const count = base ? Object.keys(edited).length : edits.size;
    const waiting = phase === "waiting";
    const mayNot = Boolean(hooks.mayNot());
    this.node.setAttribute("aria-busy", String(busy));
    this.body.inert = busy || mayNot;
    this.footer.hidden = !busy && (count === 0 || !base);
    this.progress.hidden = !busy;
    setText(this.count, steps[phase] ?? tr(`${count} 项更改`, `${count} changed`));
    setText(this.revertButton, waiting ? tr("停止等待", "Stop waiting") : tr("还原", "Revert"));
    this.revertButton.hidden = busy && !waiting;
    this.saveButton.hidden = waiting || mayNot;
    setText(this.saveButton, busy ? tr("请稍候", "Please wait") : tr("保存", "Save"));
    this.saveButton.setAttribute("aria-disabled", String(busy));
    for (const each of [this.revertButton, this.saveButton])
      each.setAttribute("aria-label", `${each.textContent}: ${this.title}`);
  }

  refreshRows() {
    const { edits, values } = this.form;
    for (const [name, { field, input, help, show, row, error }] of this.rows) {
      const locked = lockReason(field, values);
      const edited = edits.has(name) && !locked;
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

  /** Why the values shown are not the recorder's, when they are not. */
  drawNote() {
    const { base, reading, hooks } = this.form;
    const odd = base && reading && !reading.ok && /^(odd|empty)$/.test(reading.trouble);
    const strange = odd && TROUBLES[reading.trouble]();
    const text = hooks.mayNot() ?? (strange || "");
    if (this.note.dataset.text === text) return;
    this.note.dataset.text = text;
    const again = () => this.form.load(true);
    const button = strange && h("button", { type: "button", onclick: again }, tr("重新读取", "Read again"));
    this.note.replaceChildren(...(text ? [h("p", {}, badge("warn", text)), button || ""] : []));
  }

  drawUnread() {
    const { group, loading, reading } = this.form;
    if (loading || !reading) {
      const bone = () => h("span", { class: "bone" });
      const bones = group.fields.map(({ kind, label, help }) =>
        h(
          "div",
          { class: `row ${kind}` },
          h("label", {}, tr(...label)),
          bone(),
          help && h("p", { class: "help" }, tr(...help)),
        ),
      );
      const word = h("p", { class: "hidden" }, tr("正在读取…", "Reading…"));
      this.body.replaceChildren(word, ...bones);
      return;
    }
    const why =
      reading.trouble === "silent"
        ? tr("录像机没有给出这些设置。", "The recorder did not give these settings.")
        : TROUBLES[reading.trouble]();
    this.body.replaceChildren(
      h("p", {}, badge("warn", why)),
      h(
        "div",
        { class: "buttons" },
        group.mendable &&
          buttonOf(tr("直接填写", "Fill in anyway"), this.title, () => this.form.startUnread()),
        buttonOf(tr("重新读取", "Read again"), this.title, () => this.form.load(true)),
      ),
    );
  }

  /** Both values of an edited field that has changed in the recorder, one of them to be chosen. */
  drawClash(field) {
    const { form } = this;
    const { clash, input } = this.rows.get(field.name);
    const text = form.clashes(field) ? inWords(field, form.base[field.name]) : null;
    if (clash.dataset.text === String(text)) return;
    clash.dataset.text = String(text);
    if (text === null) {
      clash.replaceChildren();
      return;
    }
    const choose = (word, mine) =>
      buttonOf(word, tr(...field.label), () => {
        form.decide(field, mine);
        input.focus();
      });
    const changed = tr("录像机中已改为：", "Changed in the recorder to:");
    clash.replaceChildren(
      h("p", {}, badge("warn", changed), " ", h("bdi", {}, text)),
      choose(tr("采用录像机的值", "Take the recorder's"), false),
      choose(tr("保留我的值", "Keep mine"), true),
    );
  }

  // -- what happened

  /** Tells the result in the live region and takes the focus there when it would be lost. */
  tell() {
    const { group, base, edited, phase, result } = this.form;
    const hadFocus = this.footer.contains(document.activeElement);
    const way = phase === "waiting" ? wayBack(group, laidOver(group, base, edited)) : [];
    this.live.replaceChildren(...(result ? [...resultNodes(result), ...way] : []));
    this.refresh();
    if (hadFocus && this.footer.hidden) this.live.focus({ preventScroll: true });
    else if (hadFocus && this.saveButton.hidden) this.revertButton.focus({ preventScroll: true });
    if (result && result.outcome !== "invalid") this.live.scrollIntoView({ block: "nearest" });
  }

  /** The seconds left of a wait; null when it is over. */
  countDown(seconds) {
    const trying = () =>
      seconds > 0
        ? tr(`继续尝试，剩余 ${seconds} 秒`, `Trying again, ${seconds} s left`)
        : tr("仍未连接，页面会继续尝试。", "Not back yet; the page keeps trying.");
    setText(this.timer, seconds === null ? "" : trying());
  }

  /** Gives a function that gives the focus back to the row that has it now, if it was lost since. */
  keepFocus() {
    const { activeElement } = document;
    const within = [...this.rows.values()].some(({ row }) => row.contains(activeElement));
    return () => {
      if (within && activeElement.isConnected && document.activeElement === document.body)
        activeElement.focus({ preventScroll: true });
    };
  }
}
