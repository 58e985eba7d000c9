// SPDX-License-Identifier: GPL-2.0-only
// All settings into a file, and a file's settings into this or another recorder.

import { inWords } from "./controls.js";
import { badge, h, setText, tr } from "./core.js";
import { confirmLoss, resultNodes, wayBack } from "./form.js";
import { groups } from "./schema.js";
import { problem, read, write } from "./settings.js";

const FORMAT = "webctrl settings";
const VERSION = 1;

const stored = ({ fields }) => fields.filter(({ kind }) => kind !== "fact" && kind !== "clock");
// What may cut the connection comes last, so that everything else has arrived by then.
const ordered = [...groups].sort((a, b) => Boolean(a.cutsOff) - Boolean(b.cutsOff));

/** Reads every group; `step(done)` after each. Resolves to a Map of id -> values, or to the unread group. */
async function readAll(step) {
  const all = new Map();
  for (const group of ordered) {
    const now = await read(group);
    if (!now.ok) return { unread: group };
    all.set(group.id, now.values);
    step(all.size);
  }
  return { all };
}

function download(name, text) {
  const url = URL.createObjectURL(new Blob([text], { type: "application/json" }));
  h("a", { href: url, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(url), 60000); // phones start the download late
}

function fileOf(all) {
  const pick = (group) => Object.fromEntries(stored(group).map(({ name }) => [name, all.get(group.id)[name]]));
  return { format: FORMAT, version: VERSION, saved: new Date().toISOString(),
    groups: Object.fromEntries(groups.map((group) => [group.id, pick(group)])) };
}

/** The groups of a file's text as {id: {name: value}}, only what the schema knows; null: no such file. */
function parseFile(text) {
  let file;
  try {
    file = JSON.parse(text);
  } catch {
    return null;
  }
  if (file?.format !== FORMAT || file.version !== VERSION) return null;
  return Object.fromEntries(groups.map((group) => {
    const values = stored(group).map(({ name }) => [name, file.groups?.[group.id]?.[name]]);
    return [group.id, Object.fromEntries(values.filter(([, value]) => typeof value === "string"))];
  }));
}

const unreadText = (group) => badge("warn", tr(`录像机没有给出“${group.title[0]}”的设置，请稍后重试。`,
  `The recorder did not give the settings of “${group.title[1]}”; try again.`));

export function backupView() {
  const progress = h("progress", { max: String(groups.length), hidden: true, "aria-label": tr("进度", "Progress") });
  const live = h("div", { class: "result", role: "status" });
  const work = h("div", { class: "cards" });
  const file = h("input", { type: "file", id: "settings-file", accept: ".json,application/json", onchange: () => run(load) });
  const saveButton = h("button", { type: "button", class: "primary wide", onclick: () => run(save) }, tr("保存所有设置到文件", "Save all settings to a file"));
  let busy = false;

  async function run(job) {
    if (busy) return;
    busy = true;
    live.replaceChildren();
    progress.value = 0;
    progress.max = groups.length;
    progress.hidden = false;
    await job();
    progress.hidden = true;
    busy = false;
  }

  const step = (done) => { progress.value = done; };

  async function save() {
    const { all, unread } = await readAll(step);
    if (unread) return live.replaceChildren(unreadText(unread));
    const number = all.get("BaseInfo").strFD_DeviceNo.replace(/[^\w-]/g, "_");
    download(`recorder-${number}-${new Date().toISOString().slice(0, 10)}.json`, JSON.stringify(fileOf(all), null, 2));
    return live.replaceChildren(badge("ok", tr("文件已生成，请查看手机的下载。", "The file is in the downloads of this device.")));
  }

  async function load() {
    work.replaceChildren();
    const wanted = parseFile(await file.files[0].text());
    file.value = "";
    if (!wanted) return live.replaceChildren(badge("warn", tr("这不是设置文件。", "This is no settings file.")));
    const { all, unread } = await readAll(step);
    if (unread) return live.replaceChildren(unreadText(unread));
    const changes = ordered.map((group) => difference(group, all.get(group.id), wanted[group.id])).filter(({ rows }) => rows.length);
    if (!changes.length) return live.replaceChildren(badge("ok", tr("与文件一致，无需更改。", "Nothing differs from the file.")));
    const button = h("button", { type: "button", class: "primary wide", onclick: () => run(() => apply(changes, button)) },
      tr("写入所选设置", "Write what is ticked"));
    work.replaceChildren(...changes.map(({ card }) => card), h("section", { class: "card" }, button));
    return live.replaceChildren(badge("warn", tr(`有 ${changes.length} 组设置不同，请勾选要写入的项目。`,
      `${changes.length} groups differ; tick what to write.`)));
  }

  async function apply(changes, button) {
    const jobs = changes.map((change) => ({ ...change, values: change.picked() })).filter(({ values }) => values);
    const risky = jobs.find(({ group }) => group.id === "WifiInfo") ?? jobs.find(({ group }) => group.cutsOff);
    if (risky && !(await confirmLoss(wayBack(risky.group, risky.values)))) return;
    button.parentNode.remove();
    work.querySelectorAll(".pick input").forEach((box) => { box.disabled = true; });
    progress.max = jobs.length;
    const outcomes = [];
    for (const { group, values, current, result } of jobs) {
      const wrong = group.fields.find((field) => problem(field, values[field.name], values));
      setText(live, tr(`正在写入：${group.title[0]}`, `Writing: ${group.title[1]}`));
      const told = wrong ? { outcome: "invalid", invalid: 1, kept: [[wrong, current[wrong.name]]] } : await write(group, values);
      result.replaceChildren(...resultNodes(told));
      if (!told.values && group.cutsOff && !wrong) result.append(...wayBack(group, values));
      outcomes.push(told.outcome);
      step(outcomes.length);
    }
    const saved = outcomes.filter((outcome) => outcome === "saved").length;
    live.replaceChildren(badge(saved === outcomes.length ? "ok" : "warn",
      tr(`已完成：${outcomes.length} 组中有 ${saved} 组已保存。`, `Done: ${saved} of ${outcomes.length} groups saved.`)));
  }

  return [
    h("div", { class: "cards" },
      h("section", { class: "card" }, h("h2", {}, tr("保存到文件", "Save to a file")),
        h("p", { class: "help" }, tr("文件包含所有设置，密码为明文，请妥善保管。", "The file holds all settings, passwords in clear: keep it safe.")), saveButton),
      h("section", { class: "card" }, h("h2", {}, tr("从文件载入", "Load from a file")),
        h("p", { class: "help" }, tr("先比较再写入：您可以选择要写入的项目。设备专有的编号默认不写入。",
          "First compares, then writes what you tick. What belongs to one device alone is not ticked.")),
        file, h("label", { for: "settings-file", class: "wide" }, tr("选择设置文件", "Choose a settings file")))),
    progress, live, work,
  ];
}

/** What differs in one group: its card with a box to tick for each field, and what was ticked. */
function difference(group, current, wanted) {
  const rows = stored(group).filter(({ name }) => name in wanted && wanted[name] !== current[name]).map((field) => {
    const box = h("input", { type: "checkbox", id: `pick-${group.id}-${field.name}`, checked: !field.own });
    const value = (values) => h("bdi", {}, inWords(field, values[field.name]));
    return { field, box, node: h("label", { class: "pick" }, box, h("span", {}, tr(...field.label),
      h("span", { class: "help" }, value(current), " → ", h("strong", {}, value(wanted))),
      field.own && h("span", { class: "help" }, tr("设备专有", "belongs to one device"))) ) };
  });
  const result = h("div", { class: "result" });
  const card = h("fieldset", { class: "card" }, h("legend", {}, tr(...group.title)), rows.map(({ node }) => node), result);
  const picked = () => {
    const ticked = rows.filter(({ box }) => box.checked).map(({ field }) => [field.name, wanted[field.name]]);
    if (!ticked.length) return null;
    const clock = group.fields.find(({ kind }) => kind === "clock");
    return { ...current, ...(clock && { [clock.name]: undefined }), ...Object.fromEntries(ticked) };
  };
  return { group, current, rows, card, result, picked };
}
