// SPDX-License-Identifier: GPL-2.0-only
// The form of a group: shows what the recorder holds, keeps edits apart from it, saves and tells the result.

import { CONTROLS, inWords, mirrorPicture } from "./controls.js";
import { badge, chooseLanguage, followLanguage, h, icon, onLink, pause, setText, tr } from "./core.js";
import { groups } from "./schema.js";
import { PHONE, problem, read, readBack, ticked, write } from "./settings.js";

const RECONNECT_S = 90;
const RECONNECT_EVERY_MS = 3000;

// ---- before and after a change that may take the phone off the network

/** What happens next and how to come back, in sentences; for the question before and the wait after. */
export function wayBack(group, values) {
  const network = group.id === "WifiInfo" ? values.strFD_SSID : "";
  const accessPoint = values.ucFD_WorkMode === "2";
  return [
    !network && tr("录像机的网络可能中断片刻。", "The recorder's network may be away for a moment."),
    network && h("span", {}, accessPoint ? tr("请让手机连接录像机的热点：", "Connect this phone to the recorder's own network: ")
      : tr("录像机将加入此网络，请让手机也连接：", "The recorder joins this network; connect this phone to it too: "),
    h("strong", {}, h("bdi", {}, network))),
    network && accessPoint && tr("如果列表中是另一个名称，说明录像机保留了已存的热点设置，请连接那一个。",
      "If the list shows another name, the recorder kept its stored one: connect to that."),
    h("span", {}, tr("然后打开地址：", "Then open: "), h("strong", {}, `${location.origin}/`)),
    network && !accessPoint && tr("若该网络分配了新地址，请在其路由器中查看。",
      "If that network gives it a new address, its router shows which."),
  ].filter(Boolean).map((sentence) => h("p", {}, sentence));
}

/** Asks in a modal dialog; resolves to whether to go on. */
export function confirmLoss(sentences) {
  return new Promise((answer) => {
    const dialog = h("dialog", { "aria-labelledby": "loss-title", onclose: () => {
      dialog.remove();
      answer(dialog.returnValue === "go");
    } },
    h("h2", { id: "loss-title" }, icon("warn"), tr("手机可能与录像机断开", "This phone may lose the recorder")),
    sentences,
    h("p", {}, tr(`保存后页面会持续尝试重新连接（先倒计时 ${RECONNECT_S} 秒）。`,
      `After saving, the page keeps trying to reach it, with a countdown of ${RECONNECT_S} s.`)),
    h("div", { class: "buttons" },
      h("button", { type: "button", onclick: () => dialog.close() }, tr("取消", "Cancel")),
      h("button", { type: "button", class: "primary", onclick: () => dialog.close("go") }, tr("仍然保存", "Save anyway"))));
    document.body.append(dialog);
    dialog.showModal();
  });
}

// ---- the result, in words

export const OUTCOMES = {
  saved: () => ["ok", tr("已保存，录像机已确认。", "Saved; read back from the recorder.")],
  kept: () => ["warn", tr("录像机保留的是：", "The recorder kept:")],
  silent: () => ["warn", tr("录像机没有应答，不确定是否已保存。", "No answer from the recorder; it is not known what was saved.")],
  gone: () => ["warn", tr("没有应答：与录像机的连接已断开，不确定是否已保存。",
    "No answer: the connection to the recorder is lost; it is not known what was saved.")],
  invalid: (count) => ["warn", tr(`有 ${count} 项需要改正，未发送任何内容。`, `${count} to correct; nothing was sent.`)],
};

/** The nodes that tell a result of settings.write(). */
export const resultNodes = ({ outcome, kept = [], invalid }) => [
  badge(...OUTCOMES[outcome](invalid)),
  kept.length ? h("ul", {}, kept.map(([field, value]) =>
    h("li", {}, `${tr(...field.label)} = `, h("bdi", {}, inWords(field, value))))) : "",
];

// ---- one group

class Form {
  base = null; // the values as last read
  edits = new Map();
  phase = ""; // "", "sending", "checking" or "waiting"
  result = null; // as of settings.write(), or {outcome: "invalid"}
  retried = false; // after a reading that failed alone

  constructor(group) {
    this.group = group;
    this.id = group.id;
    this.clock = group.fields.find(({ kind }) => kind === "clock");
  }

  get values() {
    return { ...this.base, ...(this.clock && { [this.clock.name]: undefined }), ...Object.fromEntries(this.edits) };
  }

  get busy() {
    return this.phase !== "";
  }

  // -- reading

  async load() {
    if (this.loading || this.busy) return;
    this.loading = true;
    this.refresh();
    const now = await read(this.group);
    this.loading = false;
    this.last = now;
    if (now.ok) this.retried = false;
    if (now.ok && !this.busy) this.take(now);
    else this.refresh();
  }

  /** Takes what was read as the base; an edit that it has caught up with is none any more. */
  take({ values, at }) {
    const first = !this.base;
    this.base = values;
    this.at = at;
    for (const [name, value] of this.edits) if (value === values[name]) this.edits.delete(name);
    if (!first) {
      this.refresh();
      return;
    }
    this.fill();
    if (location.hash.endsWith(`/${this.id}`)) this.card.scrollIntoView();
  }

  // -- drawing

  draw() {
    this.body = h("div", { class: "fields" });
    this.live = h("div", { class: "result", role: "status", tabindex: "-1" });
    this.timer = h("p", { class: "help", role: "timer" });
    this.count = h("span", { class: "count" });
    this.progress = h("progress", { "aria-label": tr("正在保存", "Saving") });
    this.revertButton = h("button", { type: "button", onclick: () => this.revert() }, tr("还原", "Revert"));
    this.saveButton = h("button", { type: "submit", class: "primary" });
    this.footer = h("div", { class: "footer" }, this.progress, this.count, this.revertButton, this.saveButton);
    const title = tr(...this.group.title);
    this.card = h("form", { class: "card", id: this.id, novalidate: true, autocomplete: "off", "aria-label": title,
      onsubmit: (event) => {
        event.preventDefault();
        this.save();
      } },
    h("h2", {}, title), this.group.intro && h("p", { class: "help" }, tr(...this.group.intro)),
    this.body, this.live, this.timer, this.footer);
    this.fill();
    this.tell();
    return this.card;
  }

  fill() {
    this.rows = new Map();
    this.picture = null;
    if (this.base) {
      const rows = this.group.fields.map((field) => this.row(field));
      if (this.group.picture) this.picture = mirrorPicture();
      this.body.replaceChildren(...[this.picture, ...rows, this.clock && this.clockButton()].filter(Boolean));
    }
    this.refresh();
  }

  row(field) {
    const id = `${this.id}-${field.name}`;
    const error = h("p", { class: "error", id: `${id}-error` });
    const control = CONTROLS[field.kind](field, { id, "aria-describedby": `${id}-help ${id}-error` }, (value) => this.edit(field, value));
    const left = ({ relatedTarget }) => {
      if (row.contains(relatedTarget)) return;
      if (this.edits.has(field.name)) this.mark(field.name, problem(field, this.values[field.name], this.values));
      this.refresh();
    };
    const row = h("div", { class: `row ${field.kind}`, onfocusout: left },
      h("label", { for: id }, tr(...field.label), h("span", { class: "mark" }, tr("已更改", "changed"))), control.node,
      h("p", { class: "help", id: `${id}-help` }, field.help ? tr(...field.help) : ""), error);
    this.rows.set(field.name, { ...control, field, error, row });
    control.show(this.shown(field));
    return row;
  }

  clockButton() {
    return h("button", { type: "button", class: "wide", onclick: () => this.save(true) },
      tr("用本手机的时间设置时钟", "Set the clock from this phone"));
  }

  /** Brings the card up to the state; what has the focus is left alone, and so are edits. */
  refresh() {
    if (!this.card) return;
    if (!this.base) this.drawUnread();
    const { values } = this;
    for (const [name, { field, show, row, error }] of this.rows) {
      const edited = this.edits.has(name);
      row.classList.toggle("edited", edited);
      if (!edited && !row.contains(document.activeElement)) show(this.shown(field));
      if (error.textContent) this.mark(name, problem(field, values[name], values));
    }
    if (this.picture) {
      this.picture.classList.toggle("left-right", values.strFD_LeftRight === "1");
      this.picture.classList.toggle("up-down", values.strFD_UpDown === "1");
    }
    const steps = { sending: tr("正在发送…", "Sending…"), checking: tr("正在核对…", "Reading back…"), waiting: tr("正在重新连接…", "Reconnecting…") };
    this.card.setAttribute("aria-busy", String(this.busy));
    this.body.inert = this.busy;
    this.footer.hidden = !this.busy && this.edits.size === 0;
    this.progress.hidden = !this.busy;
    setText(this.count, steps[this.phase] ?? tr(`${this.edits.size} 项更改`, `${this.edits.size} changed`));
    setText(this.revertButton, this.phase === "waiting" ? tr("停止等待", "Stop waiting") : tr("还原", "Revert"));
    this.revertButton.hidden = this.busy && this.phase !== "waiting";
    this.saveButton.hidden = this.phase === "waiting";
    setText(this.saveButton, this.busy ? tr("请稍候", "Please wait") : tr("保存", "Save"));
    this.saveButton.setAttribute("aria-disabled", String(this.busy));
    countEdits(this.group.section);
  }

  shown(field) {
    const value = this.edits.get(field.name) ?? this.base[field.name];
    return field.kind === "clock" && !this.edits.has(field.name) ? ticked(value, this.at) : value;
  }

  drawUnread() {
    if (this.loading || !this.last) {
      this.body.replaceChildren(h("p", { class: "help" }, tr("正在读取…", "Reading…")));
      return;
    }
    this.body.replaceChildren(
      h("p", {}, badge("warn", tr("录像机没有给出这些设置。", "The recorder did not give these settings."))),
      h("div", { class: "buttons" },
        this.group.mendable && h("button", { type: "button", onclick: () => this.take(this.last) }, tr("直接填写", "Fill in anyway")),
        h("button", { type: "button", onclick: () => this.load() }, tr("重新读取", "Read again"))));
  }

  mark(name, trouble) {
    const { input, error } = this.rows.get(name);
    if (trouble) input.setAttribute("aria-invalid", "true");
    else input.removeAttribute("aria-invalid");
    setText(error, trouble ? tr(...trouble) : "");
  }

  /** Tells the result in the live region and takes the focus there when it would be lost. */
  tell() {
    const { result } = this;
    const hadFocus = this.footer.contains(document.activeElement);
    this.live.replaceChildren(...(result ? [...resultNodes(result), ...(this.phase === "waiting" ? wayBack(this.group, this.values) : [])] : []));
    this.refresh();
    if (hadFocus && this.footer.hidden) this.live.focus({ preventScroll: true });
    else if (hadFocus && this.saveButton.hidden) this.revertButton.focus({ preventScroll: true });
    if (result && result.outcome !== "invalid") this.live.scrollIntoView({ block: "nearest" });
  }

  // -- editing and saving

  edit(field, value) {
    if (value === this.base[field.name]) this.edits.delete(field.name);
    else this.edits.set(field.name, value);
    const first = this.footer.hidden;
    this.result = null;
    this.tell();
    if (first) this.rows.get(field.name).row.scrollIntoView({ block: "nearest" }); // the footer has come up
  }

  revert() {
    if (this.phase === "waiting") {
      this.stop();
      return;
    }
    this.edits.clear();
    this.result = null;
    this.body.querySelector("input, select")?.focus();
    this.rows.forEach(({ show, field }, name) => {
      show(this.shown(field));
      this.mark(name);
    });
    this.tell();
  }

  invalid(values) {
    const troubles = this.group.fields.map((field) => [field.name, problem(field, values[field.name], values)]);
    troubles.forEach(([name, trouble]) => this.mark(name, trouble));
    return troubles.filter(([, trouble]) => trouble).map(([name]) => name);
  }

  /** Saves the form; `clockOnly`: what was read, with this phone's time, whatever has been edited. */
  async save(clockOnly = false) {
    if (this.busy) return;
    const values = clockOnly ? { ...this.base, [this.clock.name]: PHONE } : this.values;
    const invalid = this.invalid(values);
    if (invalid.length) {
      this.result = { outcome: "invalid", invalid: invalid.length };
      this.tell();
      this.rows.get(invalid[0]).input.focus();
      return;
    }
    if (this.group.cutsOff && !(await confirmLoss(wayBack(this.group, values)))) return;
    this.result = null;
    this.enter("sending");
    let result = await write(this.group, values, () => this.enter("checking"));
    if (this.group.cutsOff && result.expected && !result.values) result = await this.reconnect(result);
    this.phase = "";
    this.result = result;
    if (result.values) this.settle(result, clockOnly);
    this.tell();
  }

  enter(phase) {
    this.phase = phase;
    this.tell();
  }

  settle(result, clockOnly) {
    if (this.clock) this.edits.delete(this.clock.name);
    if (result.outcome === "saved" && !clockOnly) this.edits.clear();
    this.take(result);
    if (this.id === "LangInfo" && result.outcome === "saved") {
      chooseLanguage(null);
      followLanguage(result.values.strLanguage);
    }
  }

  /** Keeps asking until the recorder is back and tells what it holds, or the wait is stopped. */
  async reconnect(result) {
    this.result = result;
    this.enter("waiting");
    const until = Date.now() + RECONNECT_S * 1000;
    const tick = setInterval(() => {
      const left = Math.ceil((until - Date.now()) / 1000);
      setText(this.timer, left > 0 ? tr(`继续尝试，剩余 ${left} 秒`, `Trying again, ${left} s left`)
        : tr("仍未连接，页面会继续尝试。", "Not back yet; the page keeps trying."));
    }, 1000);
    let last = result;
    let stop = false;
    const stopped = new Promise((go) => {
      this.stop = () => go(result);
    }).finally(() => { stop = true; });
    while (!stop && !last.values) {
      await Promise.race([stopped, pause(RECONNECT_EVERY_MS)]);
      if (!stop) last = await Promise.race([stopped, readBack(this.group, result.expected)]);
    }
    clearInterval(tick);
    setText(this.timer, "");
    return last;
  }
}

// ---- all forms

const forms = groups.map((group) => new Form(group));
let inSight = [];
let onCount = () => {};

const countEdits = (section) =>
  onCount(section, forms.filter(({ group }) => group.section === section).reduce((sum, { edits }) => sum + edits.size, 0));

/** The cards of a section; `counted(section, count)` hears of unsaved edits, also of other sections'. */
export function formView(section, counted) {
  onCount = counted;
  inSight = forms.filter(({ group }) => group.section === section);
  const cards = inSight.map((form) => form.draw());
  inSight.forEach((form) => form.load());
  return [h("div", { class: "cards" }, cards)];
}

const connected = () => inSight.filter(({ card }) => card.isConnected);

onLink((state, outage) => {
  if (state !== "ok") return;
  for (const form of connected()) {
    // A section that alone stays unanswered gets one more attempt: each costs the daemon 5 s.
    const again = form.last && !form.last.ok && !form.retried;
    form.retried ||= again && !outage;
    if (again || outage) form.load();
  }
});
document.addEventListener("visibilitychange", () => document.hidden || connected().forEach((form) => form.load()));
addEventListener("beforeunload", (event) => {
  if (!forms.some(({ edits }) => edits.size)) return;
  event.preventDefault();
  event.returnValue = true; // for browsers of before 2023
});
setInterval(() => document.hidden || inSight.forEach((form) => form.clock && form.base && form.refresh()), 1000);
