// SPDX-License-Identifier: GPL-2.0-only
// The shell (sections, language, banner) and the section that is seen first, the status.

import {
  badge, chooseLanguage, followLanguage, h, icon, idle, language, link, onLanguage, onLink, pause, request,
  setText, STATUS, tr,
} from "./core.js";

// With the 5 s that a silent recorder costs, this keeps the banner within 8 s of the silence.
const REFRESH_MS = 2000;
// While it fails each attempt blocks the daemon; others get their turn in between.
const RETRY_MS = 2500;

const byId = (id) => document.getElementById(id);
const NONE = "—";

// ---- status

let status = null; // the last good answer
let statusAt = 0;

// A state is [kind, word]. Codes beyond 0 and 1 are shown as the number they are.
const flag = (value, on, off) =>
  value === "1" ? ["ok", on] : value === "0" ? ["off", off] : ["warn", tr(`代码 ${value}`, `code ${value}`)];
const connection = (value) => flag(value, tr("已连接", "Connected"), tr("未连接", "Not connected"));
const presence = (value) => flag(value, tr("已检测到", "Present"), tr("未检测到", "Not found"));

/** `scale` is the level of a full signal: 31 for a modem's own measure (where 99 is "unknown"). */
const signal = (value, scale) => ({ level: Math.min(5, Math.ceil((Number(value) * 5) / scale)), text: value });

function modemState({ ucFD_GNetExist: exists, ucFD_SimExist: sim, ucFD_GNetDail: dialled }) {
  if (exists === "0") return presence(exists);
  return sim === "0" ? ["warn", tr("无 SIM 卡", "No SIM card")] : connection(dialled);
}

function modemSignal({ uiFD_GNetSignal: value }) {
  if (value === "99") return { level: 0, text: tr("未知 (99)", "unknown (99)") };
  return signal(value, Number(value) <= 31 ? 31 : 100);
}

const wifiMode = { Client: () => tr("客户端", "Client"), AP: () => tr("热点", "Access point") };

// A card: title, its state (optional), and rows of a label and what it shows: a text, a state or a signal.
const CARDS = () => [
  [tr("车辆", "Vehicle"), null, [
    [tr("点火 (ACC)", "Ignition (ACC)"), (s) => flag(s.acc.ucFD_AccStatus, tr("开", "On"), tr("关", "Off"))],
    [tr("输入 / 输出", "Inputs / outputs"), (s) => s.io.strFD_IOStatus],
  ]],
  [tr("卫星定位", "GPS"), (s) => presence(s.gps.ucFD_GpsExist), [
    [tr("位置", "Position"), (s) => s.gps.strFD_GpsPos],
  ]],
  [tr("平台连接", "Platform links"), null, [
    [tr("中心服务器", "Central server"), (s) => connection(s.cms.ucFD_CmsStatus)],
    ["JT/T 808", (s) => connection(s.cms.ucFD_JTT808Status)],
    ["GB28181", (s) => connection(s.cms.ucFD_GB28181Status)],
  ]],
  [tr("移动网络", "Mobile network"), (s) => modemState(s.gnet), [
    [tr("信号", "Signal"), (s) => modemSignal(s.gnet)],
    [tr("模块", "Modem"), (s) => presence(s.gnet.ucFD_GNetExist)],
    [tr("SIM 卡", "SIM card"), (s) => flag(s.gnet.ucFD_SimExist, tr("已插入", "Inserted"), tr("未插入", "Missing"))],
    ["IMEI", (s) => s.gnet.strFD_GNetIMEI],
    ["IMSI", (s) => s.gnet.ucFD_SimIMSI],
    ["ICCID", (s) => s.gnet.ucFD_SimICCID],
    [tr("模块版本", "Modem version"), (s) => s.gnet.strFD_GNetRevision.trim()],
  ]],
  ["Wi-Fi", (s) => (s.wifi.ucFD_WifiExist === "0" ? presence("0") : connection(s.wifi.ucFD_WifiDail)), [
    [tr("模式", "Mode"), (s) => (wifiMode[s.wifi.ucFD_WifiMode] ?? String)(s.wifi.ucFD_WifiMode)],
    [tr("信号", "Signal"), (s) => signal(s.wifi.uiFD_WifiSignal, 100)],
  ]],
  [tr("存储", "Storage"), null, [0, 1].flatMap((n) => [
    [tr(`磁盘 ${n + 1}`, `Disk ${n + 1}`), (s) => presence(s.disk.list[n].ucFD_DiskExist)],
    [tr("容量", "Size"), (s) => s.disk.list[n].strFD_DiskSize],
  ])],
  [tr("版本", "Versions"), null, versionRows()],
];

const versionRows = () => [
  [tr("应用程序", "Application"), (s) => s.version.strFD_AppVersion],
  ["MCU", (s) => s.version.strFD_McuVersion],
  [tr("引导程序", "Boot loader"), (s) => s.version.strFD_LdrVersion],
  [tr("内核", "Kernel"), (s) => s.version.strFD_KnlVersion],
  [tr("根文件系统", "Root file system"), (s) => s.version.strFD_RfsVersion],
  [tr("数据库", "Database"), (s) => s.version.strFD_DbtVersion],
];

const bars = (level) => h("svg:svg", { class: "bars", viewBox: "0 0 24 20", "aria-hidden": "true" }, [1, 2, 3, 4, 5].map((n) =>
  h("svg:rect", { class: n <= level ? "on" : "", x: n * 5 - 5, y: 20 - n * 4, width: 3.5, height: n * 4, rx: 1 })));

function shown(value) {
  if (Array.isArray(value)) return badge(...value);
  if (typeof value === "object") return h("span", {}, bars(value.level), ` ${value.text}`);
  return h("bdi", {}, value || NONE);
}

/** A node whose content follows the status; only a changed value touches the document. */
function live(tag, attributes, read) {
  const node = h(tag, attributes);
  let old;
  updates.push(() => {
    const value = status ? read(status) : "";
    if (JSON.stringify(value) === old) return;
    old = JSON.stringify(value);
    node.replaceChildren(shown(value));
  });
  return node;
}

let updates = []; // of the nodes that are in view now

const rowsOf = (rows) =>
  h("dl", {}, rows.map(([label, read]) => h("div", {}, h("dt", {}, label), live("dd", {}, read))));

function statusView() {
  const age = h("p", { class: "age" });
  updates.push(() => setText(age, status ? ageText() : tr("正在读取…", "Reading…")));
  return [age, h("div", { class: "cards" }, CARDS().map(([title, state, rows]) =>
    h("section", { class: "card" }, h("h2", {}, title, state ? live("span", {}, state) : ""), rowsOf(rows))))];
}

function ageText() {
  const seconds = Math.max(0, Math.round((Date.now() - statusAt) / 1000));
  if (seconds < 120) return tr(`数据更新于 ${seconds} 秒前`, `Values from ${seconds} s ago`);
  const minutes = Math.round(seconds / 60);
  return tr(`数据更新于 ${minutes} 分钟前`, `Values from ${minutes} min ago`);
}

async function refreshStatus() {
  const answer = await request(STATUS);
  if (answer?.result !== 1) return;
  status = answer;
  statusAt = Date.now();
}

// ---- about

let version = null;

function aboutView() {
  const application = h("dd", {}, version?.strFD_AppVersion || NONE);
  if (!version) {
    request("/get_VersionInfo").then((answer) => {
      if (answer?.result !== 1) return;
      version = answer;
      setText(application, version.strFD_AppVersion || NONE);
    });
  }
  return [
    h("section", { class: "card" }, h("h2", {}, tr("录像机", "Recorder")),
      h("dl", {}, h("div", {}, h("dt", {}, tr("主程序版本", "Main application")), application)), rowsOf(versionRows().slice(1))),
    h("section", { class: "card" }, h("h2", {}, tr("本页面", "This page")),
      h("p", {}, tr("不需要互联网：页面与录像机直接通信，不访问其他主机。",
        "Works without internet: the page talks to the recorder alone and to no other host."))),
  ];
}

// ---- sections

const forms = (section) => async () => (await import("./form.js")).formView(section, markEdits);
const SECTIONS = {
  status: { title: () => tr("状态", "Status"), view: statusView },
  device: { title: () => tr("设备", "Device"), view: forms("device") },
  video: { title: () => tr("视频", "Video"), view: forms("video") },
  network: { title: () => tr("网络", "Network"), view: forms("network") },
  platform: { title: () => tr("GB28181 平台", "GB28181 platform"), tab: () => tr("国标", "GB"), view: forms("platform") },
  backup: {
    title: () => tr("备份与批量设置", "Save and load"),
    tab: () => tr("备份", "Backup"),
    view: async () => (await import("./backup.js")).backupView(),
  },
  about: { title: () => tr("关于", "About"), view: aboutView },
};

const edits = {}; // section -> whether it holds unsaved changes

function markEdits(section, count) {
  edits[section] = count > 0;
  const tab = byId(`tab-${section}`);
  tab.classList.toggle("edited", edits[section]);
  setText(tab.querySelector(".hidden"), edits[section] ? tr("，有未保存的更改", ", unsaved changes") : "");
}

/** Of "#network/WifiInfo" this is "network"; the rest names a card, for the forms to scroll to. */
function route() {
  const [name] = location.hash.slice(1).split("/");
  return Object.hasOwn(SECTIONS, name) ? name : "status";
}

let shows = 0;
let incomplete = false; // what is in view wants a new attempt once the link is back

async function show() {
  const name = route();
  const section = SECTIONS[name];
  const turn = ++shows;
  const view = byId("view");
  document.title = `${section.title()} · ${tr("车载录像机", "Vehicle recorder")}`;
  setText(byId("title"), section.title());
  for (const tab of byId("tabs").children) {
    if (tab.id === `tab-${name}`) tab.setAttribute("aria-current", "page");
    else tab.removeAttribute("aria-current");
  }
  updates = [];
  incomplete = name === "about" && !version;
  let content;
  try {
    const made = section.view();
    if (made instanceof Promise) view.replaceChildren(h("p", { class: "age" }, tr("正在载入…", "Loading…")));
    content = await made;
  } catch {
    incomplete = true;
    content = [h("section", { class: "card" },
      h("p", {}, badge("warn", tr("页面的这一部分没有载入。", "This part of the page could not be loaded."))),
      h("button", { type: "button", onclick: show }, tr("重试", "Try again")))];
  }
  if (turn !== shows) return;
  view.dataset.section = name;
  view.replaceChildren(...content);
  update();
}

const update = () => updates.forEach((apply) => apply());

function drawShell() {
  byId("top").replaceChildren(
    h("h1", { id: "title" }),
    h("button", {
      type: "button",
      id: "language",
      class: "quiet",
      lang: tr("en", "zh-CN"),
      "aria-label": tr("Switch to English", "切换到中文"),
      onclick: () => {
        chooseLanguage(language() === "EN" ? "CN" : "EN");
        byId("language").focus();
      },
    }, tr("English", "中文")));
  byId("tabs").setAttribute("aria-label", tr("栏目", "Sections"));
  byId("tabs").replaceChildren(...Object.entries(SECTIONS).map(([name, { title, tab = title }]) =>
    h("a", { id: `tab-${name}`, href: `#${name}` }, icon(name),
      h("span", { class: "short" }, tab()), h("span", { class: "full" }, title()), h("span", { class: "hidden" }))));
  Object.keys(edits).forEach((name) => markEdits(name, edits[name] ? 1 : 0));
  drawBanner();
}

function drawBanner() {
  document.body.classList.toggle("stale", link !== "ok");
  const text = {
    ok: "",
    silent: tr("录像机没有应答。显示的是最后一次的数据，恢复后自动更新。",
      "The recorder does not answer. The last values are shown; the page recovers by itself."),
    gone: tr("与录像机的连接已断开。请检查手机的 Wi-Fi，页面会自动重连。",
      "No connection to the recorder. Check the Wi-Fi of this phone; the page reconnects by itself."),
    refused: tr("录像机不接受以此名称打开的页面，请改用其 IP 地址。",
      "The recorder does not accept pages opened by this name; use its IP address."),
  }[link];
  byId("banner").replaceChildren(...(text ? [icon("warn"), h("span", {}, text)] : []));
}

async function watchStatus() {
  for (;;) {
    if (idle() || !status) await refreshStatus();
    update();
    await pause(link === "ok" ? REFRESH_MS : RETRY_MS);
  }
}

async function readLanguage() {
  const answer = await request("/get_LangInfo");
  if (answer?.result === 1) followLanguage(answer.strLanguage);
  return answer?.result === 1;
}

function start() {
  followLanguage(language());
  drawShell();
  show();
  addEventListener("hashchange", () => {
    show();
    scrollTo(0, 0);
    byId("view").focus({ preventScroll: true });
  });
  onLanguage(() => {
    drawShell();
    show();
  });
  let languageKnown = readLanguage();
  onLink(async (state) => {
    drawBanner();
    if (state !== "ok") return;
    if (incomplete) show();
    if (!(await languageKnown)) languageKnown = readLanguage();
  });
  setInterval(() => document.hidden || update(), 1000);
  watchStatus();
}

start();
