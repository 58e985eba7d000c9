// SPDX-License-Identifier: GPL-2.0-only
// All settings into a file or onto paper, and a file's settings into this or another recorder.

import { CONTROLS, inWords } from "./controls.js";
import { badge, columns, h, readyToWrite, recorder, request, setText, tr, workedOn } from "./core.js";
import { read, save as write } from "./exchange.js";
import { difference, fileOf, parseFile, writeOrder } from "./file.js";
import { saved } from "./forms.js";
import { confirmWrite, isDone, resultNodes, wayBack } from "./questions.js";
import { groups } from "./schema.js";
import { doubts, laidOver, problem } from "./settings.js";

/** Reads every group; `step(done)` after each. Resolves to {all, unread}: id -> values, and the others. */
async function readAll(step) {
  const all = new Map();
  const unread = [];
  for (const group of writeOrder) {
    const now = await read(request, group);
    if (now.ok) all.set(group.id, now.values);
    else unread.push(group);
    step(all.size + unread.length);
    if (now.trouble === "gone") return { all: new Map(), unread: groups };
  }
  return { all, unread };
}

function download(name, text) {
  const url = URL.createObjectURL(new Blob([text], { type: "application/json" }));
  h("a", { href: url, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(url), 60000); // phones start the download late
}

const titlesOf = (ids) =>
  ids.map((id) => tr(...groups.find((group) => group.id === id).title)).join(tr("、", ", "));

const note = (kind, text) => h("p", {}, badge(kind, text));

const unreadNotes = (unread) => {
  const names = titlesOf(unread.map(({ id }) => id));
  const text = tr(`录像机没有给出，已跳过：${names}。`, `The recorder did not give, so skipped: ${names}.`);
  return unread.length ? [note("warn", text)] : [];
};

const FILE_TROUBLES = {
  alien: () => tr("这不是设置文件。", "This is no settings file."),
  newer: () => tr("此文件来自更新的版本，无法读取。", "This file is of a newer version and cannot be read."),
};

function strangeNotes({ strange, unread }) {
  const places = (kind) => strange.filter(([, other]) => other === kind).map(([place]) => place);
  const list = (kind, text) => (places(kind).length ? [note("warn", text(places(kind).join(", ")))] : []);
  const absent = tr(`文件中没有：${titlesOf(unread)}。`, `Not in the file: ${titlesOf(unread)}.`);
  return [
    ...list("unknown", (names) => tr(`未知名称，已忽略：${names}。`, `Unknown names, ignored: ${names}.`)),
    ...list("type", (names) =>
      tr(`类型错误，已忽略：${names}。`, `Neither text nor number, ignored: ${names}.`),
    ),
    ...(unread.length ? [note("off", absent)] : []),
  ];
}

let busy = false;
let kept = null; // the view whose job goes on, or has ended while another section or language was shown

addEventListener("beforeunload", (event) => {
  if (busy) event.returnValue = true;
});

export function backupView() {
  const before = kept;
  if (!busy) kept = null;
  if (before) return before;
  const progress = h("progress", { hidden: true, "aria-label": tr("进度", "Progress") });
  const live = h("div", { class: "result", role: "status" });
  const notes = h("div", { class: "result" });
  const work = h("div");
  const wide = { type: "button", class: "wide" };
  const file = h("input", {
    type: "file",
    id: "settings-file",
    accept: ".json,application/json",
    onchange() {
      const [chosen] = file.files;
      file.value = "";
      run(() => load(chosen));
    },
  });

  async function run(job) {
    if (busy) return;
    busy = true;
    kept = view;
    notes.replaceChildren();
    live.replaceChildren();
    progress.value = 0;
    progress.max = groups.length;
    progress.hidden = false;
    live.scrollIntoView({ block: "center" });
    try {
      await job();
    } finally {
      progress.hidden = true;
      busy = false;
      if (live.isConnected) kept = null;
    }
    live.scrollIntoView({ block: "center" });
  }

  const step = (done) => {
    progress.value = done;
  };
  const tell = (kind, text) => live.replaceChildren(badge(kind, text));

  async function save() {
    const { all, unread } = await readAll(step);
    notes.replaceChildren(...unreadNotes(unread));
    if (!all.size) return tell("warn", tr("没有可保存的设置。", "There are no settings to save."));
    const number = (all.get("BaseInfo")?.strFD_DeviceNo || recorder.number).replace(/[^\w-]/g, "_");
    const day = new Date().toISOString().slice(0, 10);
    download(`recorder-${number}-${day}.json`, JSON.stringify(fileOf(all), null, 2));
    return tell(
      unread.length ? "warn" : "ok",
      tr("文件已生成，请查看本设备的下载。", "The file is in the downloads of this device."),
    );
  }

  async function sheet() {
    const { all, unread } = await readAll(step);
    notes.replaceChildren(...unreadNotes(unread));
    work.replaceChildren(columns(sheetOf(all)));
    tell("ok", tr("设置单已列在下方。", "The sheet is below."));
    if (all.size) setTimeout(print);
  }

  async function load(chosen) {
    work.replaceChildren();
    const from = workedOn;
    const parsed = parseFile(await chosen.text().catch(() => "")); // a file of a cloud may be out of reach
    if (parsed.trouble) return tell("warn", FILE_TROUBLES[parsed.trouble]());
    const { all, unread } = await readAll(step);
    notes.replaceChildren(...strangeNotes(parsed), ...unreadNotes(unread));
    const changes = writeOrder
      .filter(({ id }) => all.has(id) && parsed.wanted[id])
      .map((group) => comparison(group, all.get(group.id), parsed.wanted[group.id]))
      .filter(({ rows }) => rows.length);
    const compared = groups.filter(({ id }) => all.has(id) && parsed.wanted[id]).length;
    if (!compared) return tell("warn", tr("没有可比较的设置。", "There is nothing to compare."));
    if (!changes.length && notes.children.length)
      return tell("warn", tr("可比较的设置没有不同。", "What could be compared does not differ."));
    if (!changes.length) return tell("ok", tr("与文件一致，无需更改。", "Nothing differs from the file."));
    offer(changes, from);
    return tell(
      "warn",
      tr(
        `有 ${changes.length} 组设置不同，请勾选要写入的项目。`,
        changes.length === 1
          ? "1 group differs; tick what to write."
          : `${changes.length} groups differ; tick what to write.`,
      ),
    );
  }

  function offer(changes, from) {
    const tick = (on) => () => changes.forEach((change) => change.tick(on));
    const button = h(
      "button",
      { ...wide, class: "primary wide", onclick: () => run(() => apply(changes, from, [ticks, writing])) },
      tr("写入所选设置", "Write what is ticked"),
    );
    const all = h("button", { type: "button", onclick: tick(true) }, tr("全选", "All"));
    const none = h("button", { type: "button", onclick: tick(false) }, tr("全不选", "None"));
    const ticks = h("div", { class: "buttons" }, all, none);
    const writing = h("section", { class: "card" }, button);
    work.replaceChildren(ticks, columns(changes.map(({ card }) => card)), writing);
  }

  /** `from`: as workedOn was when they were compared. */
  async function apply(changes, from, buttons) {
    const jobs = changes
      .map((change) => ({ ...change, edits: change.picked() }))
      .filter(({ edits }) => edits);
    if (!jobs.length) return tell("warn", tr("没有勾选任何项目。", "Nothing is ticked."));
    if (changes.some((change) => change.faults()))
      return tell("warn", tr("有值需要改正。", "Some values need correcting."));
    if (!(await confirmed(jobs))) return undefined;
    buttons.forEach((each) => each.remove());
    changes.forEach((change) => change.freeze());
    progress.max = jobs.length;
    const outcomes = [];
    for (const { group, edits, current, result } of jobs) {
      setText(live, tr(`正在写入：${group.title[0]}`, `Writing: ${group.title[1]}`));
      const { trouble = from === workedOn ? undefined : "other", mayWrite } = await readyToWrite();
      const told = trouble
        ? { outcome: "unread", trouble }
        : await write(request, group, edits, { seen: current, mayWrite });
      if (from === workedOn) saved(group, told);
      result.replaceChildren(...resultNodes(told));
      if (told.outcome === "unsure" && group.cutsOff)
        result.append(...wayBack(group, laidOver(group, current, edits)));
      outcomes.push(told);
      step(outcomes.length);
    }
    const done = outcomes.filter(isDone).length;
    return tell(
      done === outcomes.length ? "ok" : "warn",
      tr(
        `已完成：${outcomes.length} 组中有 ${done} 组已保存。`,
        `Done: ${done} of ${outcomes.length} groups saved.`,
      ),
    );
  }

  function confirmed(jobs) {
    const after = ({ group, current, edits }) => laidOver(group, current, edits);
    const risky =
      jobs.find(({ group }) => group.id === "WifiInfo") ?? jobs.find(({ group }) => group.cutsOff);
    const questions = jobs.flatMap((job) => doubts(job.group, after(job), job.edits, job.current));
    return confirmWrite(questions, risky && wayBack(risky.group, after(risky)));
  }

  const card = (title, help, ...content) =>
    h("section", { class: "card" }, h("h2", {}, title), h("p", { class: "help" }, help), content);
  const saving = { type: "button", class: "primary wide", onclick: () => run(save) };
  const view = [
    h(
      "div",
      { class: "no-print" },
      columns([
        card(
          tr("保存到文件", "Save to a file"),
          tr(
            "文件包含所有设置，密码为明文，请妥善保管。",
            "The file holds all settings, passwords in clear: keep it safe.",
          ),
          h("button", saving, tr("保存所有设置到文件", "Save all settings to a file")),
        ),
        card(
          tr("从文件载入", "Load from a file"),
          tr(
            "先比较再写入：您可以选择要写入的项目。设备专有的编号默认不写入。",
            "First compares, then writes what you tick. What belongs to one device alone is not ticked.",
          ),
          file,
          h("label", { for: "settings-file", class: "wide" }, tr("选择设置文件", "Choose a settings file")),
        ),
        card(
          tr("设置单", "Sheet of the settings"),
          tr("打印所有设置，不含密码。", "All settings to print, without passwords and keys."),
          h("button", { ...wide, onclick: () => run(sheet) }, tr("打印设置单", "Print a sheet")),
        ),
      ]),
    ),
    h("div", { class: "progress no-print" }, progress, live),
    notes,
    work,
  ];
  return view;
}

/** The settings as cards to be printed; passwords and keys are left out. */
function sheetOf(all) {
  const rows = (group, values) =>
    group.fields
      .filter(({ kind }) => kind !== "password")
      .map((field) =>
        h(
          "div",
          {},
          h("dt", {}, tr(...field.label)),
          h(
            "dd",
            {},
            h("bdi", {}, inWords(field, values[field.name])),
            field.unit && ` ${tr(...field.unit)}`,
          ),
        ),
      );
  return groups
    .filter(({ id }) => all.has(id))
    .map((group) =>
      h(
        "section",
        { class: "card" },
        h("h2", {}, tr(...group.title)),
        h("dl", {}, rows(group, all.get(group.id))),
      ),
    );
}

/** What differs in one group: a card with a row for each field, whose value can be corrected in place. */
function comparison(group, current, wanted) {
  const values = { ...wanted };
  const found = difference(group, current, wanted);
  const rows = found.map((row) =>
    comparedRow(group, row, values, () => laidOver(group, current, picked() ?? {})),
  );
  const result = h("div", { class: "result" });
  const title = h("legend", {}, tr(...group.title));
  const card = h(
    "fieldset",
    { class: "card" },
    title,
    rows.map(({ node }) => node),
    result,
  );
  const free = rows.filter(({ box }) => !box.disabled);

  function picked() {
    const ticked = rows.filter(({ box }) => box.checked).map(({ field }) => [field.name, values[field.name]]);
    return ticked.length ? Object.fromEntries(ticked) : null;
  }
  return {
    group,
    current,
    rows,
    card,
    result,
    picked,
    tick: (on) => free.forEach(({ box }) => (box.checked = on)),
    faults: () => rows.filter((row) => row.fault()).length > 0,
    freeze: () => (card.disabled = true),
  };
}

function comparedRow(group, { field, from, to, lock }, values, after) {
  const id = `pick-${group.id}-${field.name}`;
  const box = h("input", { type: "checkbox", id, checked: !field.own && !lock, disabled: Boolean(lock) });
  const error = h("p", { class: "error", id: `${id}-error` });
  const shown = h("strong", {}, h("bdi", {}, inWords(field, to)));
  const fault = () => {
    const trouble = box.checked ? problem(field, values[field.name], { ...values, ...after() }) : undefined;
    setText(error, trouble ? tr(...trouble) : "");
    if (trouble) correct();
    return trouble;
  };
  const changed = (value) => {
    values[field.name] = value;
    setText(shown.firstChild, inWords(field, value));
    if (error.textContent) fault();
  };
  let editor = null;
  const correct = () => {
    if (editor) return;
    const name = tr(`文件中的值：${field.label[0]}`, `Value from the file: ${field.label[1]}`);
    editor = CONTROLS[field.kind](field, { "aria-label": name, "aria-describedby": error.id }, changed);
    editor.show(values[field.name]);
    change.replaceWith(editor.node);
  };
  const word = field.kind === "password" ? tr("查看或改正", "Show or correct") : tr("改正", "Correct");
  const change = h(
    "button",
    {
      type: "button",
      class: "quiet",
      "aria-label": `${word}: ${tr(...field.label)}`,
      onclick: correct,
      hidden: Boolean(lock),
    },
    word,
  );
  const node = h(
    "div",
    { class: "pick-row" },
    h(
      "label",
      { class: "pick" },
      box,
      h(
        "span",
        {},
        tr(...field.label),
        h("span", { class: "help" }, h("bdi", {}, inWords(field, from)), " → ", shown),
        field.own && h("span", { class: "help" }, tr("设备专有", "belongs to one device")),
        lock && h("span", { class: "help" }, tr(...lock)),
      ),
    ),
    change,
    error,
  );
  return { field, box, node, fault };
}
