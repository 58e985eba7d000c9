// SPDX-License-Identifier: GPL-2.0-only
// The status: a line of verdict, then cards that follow the recorder's values.

import { badge, columns, h, icon, link, recorder, setText, stranger, tr } from "./core.js";

const NONE = "—";
const HISTORY_MS = 5 * 60000;

let status = null; // the last good answer
let statusAt = 0;
let words = {}; // "gnet.ucFD_GNetDail" -> code -> [Chinese, English, kind]
const history = []; // of the last minutes: {at, gnet, wifi}, a signal's share of the full one

export const hasStatus = () => status !== null;

export function showStatus(answer) {
  status = answer;
  statusAt = Date.now();
  const share = (of) => of(answer).share ?? null;
  history.push({ at: statusAt, gnet: share(modemSignal), wifi: share(wifiSignal) });
  while (history[0].at < statusAt - HISTORY_MS) history.shift();
  update();
}

/** Takes words for codes of the status, by the member's place in the answer. */
export function useWords(byPlace) {
  words = byPlace;
  update();
}

// ---- what a value says: a text, a state [kind, word] or a signal {level, share, text}

const at = (place) => place.split(".").reduce((part, key) => part[key], status);

function state(place, on, off) {
  const value = at(place);
  const [chinese, english, kind = "plain"] = words[place]?.[value] ?? [];
  if (chinese) return [kind, `${tr(chinese, english)} (${value})`];
  if (value === "1") return ["ok", on];
  return value === "0" ? ["off", off] : ["plain", tr(`代码 ${value}`, `code ${value}`)];
}
const connection = (place) => state(place, tr("已连接", "Connected"), tr("未连接", "Not connected"));
const presence = (place) => state(place, tr("已检测到", "Present"), tr("未检测到", "Not found"));

/** `least` and `full`: the ends of the scale; a negative value is dBm and has its own. */
function signal(text, full, weakest) {
  const value = Number(text);
  const share = value < 0 ? (value - weakest) / (-50 - weakest) : value / full;
  const bounded = Math.min(1, Math.max(0, share));
  return { level: Math.ceil(bounded * 5), share: bounded, text: value < 0 ? `${text} dBm` : text };
}

// A modem's own measure goes from 0 to 31, with 99 for "unknown"; others go to 100.
function modemSignal({ gnet: { uiFD_GNetSignal: value } }) {
  if (value === "99") return { text: tr("未知 (99)", "unknown (99)") };
  return signal(value, Number(value) <= 31 ? 31 : 100, -115);
}
const wifiSignal = ({ wifi }) => signal(wifi.uiFD_WifiSignal, 100, -95);

/** [latitude, longitude] of "E113.9460 N22.5308", either way round; null for another text or 0, 0. */
function position({ gps }) {
  const part = (letters) => gps.strFD_GpsPos.match(new RegExp(`([${letters}])\\s*(\\d+\\.?\\d*)`, "i"));
  const [north, east] = [part("NS"), part("EW")];
  if (!north || !east) return null;
  const signed = ([, letter, number]) => Number(number) * (/[sw]/i.test(letter) ? -1 : 1);
  const pair = [signed(north), signed(east)];
  return pair.some(Boolean) ? pair : null;
}

function gpsState(s) {
  if (s.gps.ucFD_GpsExist !== "1") return presence("gps.ucFD_GpsExist");
  return position(s)
    ? ["ok", tr("已给出位置", "Gives a position")]
    : ["warn", tr("有模块，无位置", "Module present, no position")];
}

function modemState(s) {
  if (s.gnet.ucFD_GNetExist === "0") return presence("gnet.ucFD_GNetExist");
  return s.gnet.ucFD_SimExist === "0"
    ? ["warn", tr("无 SIM 卡", "No SIM card")]
    : connection("gnet.ucFD_GNetDail");
}

const hasDisk = (n) => (s) => s.disk.list[n].ucFD_DiskExist !== "0";
const hasModem = (s) => s.gnet.ucFD_GNetExist !== "0";
const hasSim = (s) => hasModem(s) && s.gnet.ucFD_SimExist !== "0";
const wifiMode = { Client: () => tr("客户端", "Client"), AP: () => tr("热点", "Access point") };

const geo = (s) => {
  const pair = position(s);
  return pair ? h("a", { href: `geo:${pair}` }, s.gps.strFD_GpsPos) : s.gps.strFD_GpsPos;
};

export const versionRows = () => [
  { label: tr("应用程序", "Application"), value: (s) => s.version.strFD_AppVersion },
  { label: "MCU", value: (s) => s.version.strFD_McuVersion },
  { label: tr("引导程序", "Boot loader"), value: (s) => s.version.strFD_LdrVersion },
  { label: tr("内核", "Kernel"), value: (s) => s.version.strFD_KnlVersion },
  { label: tr("根文件系统", "Root file system"), value: (s) => s.version.strFD_RfsVersion },
  { label: tr("数据库", "Database"), value: (s) => s.version.strFD_DbtVersion },
];

// A card: its `state`, the `trouble` it may be in (a word for the verdict), and rows: `value` gives what
// is shown, `show` a node for it when it is more, `when` whether there is anything to show.
const CARDS = () => [
  {
    id: "links",
    title: tr("平台连接", "Platform links"),
    trouble: (s) => s.cms.ucFD_CmsStatus === "0" && tr("中心服务器未连接", "central server not connected"),
    rows: [
      { label: tr("中心服务器", "Central server"), value: () => connection("cms.ucFD_CmsStatus") },
      { label: "JT/T 808", value: () => connection("cms.ucFD_JTT808Status") },
      { label: "GB28181", value: () => connection("cms.ucFD_GB28181Status") },
    ],
  },
  {
    id: "modem",
    title: tr("移动网络", "Mobile network"),
    state: modemState,
    trouble: (s) =>
      hasModem(s) &&
      (s.gnet.ucFD_SimExist === "0"
        ? tr("无 SIM 卡", "no SIM card")
        : s.gnet.ucFD_GNetDail === "0" && tr("移动网络未连接", "mobile network not connected")),
    rows: [
      { label: tr("信号", "Signal"), value: modemSignal, trend: "gnet", when: hasModem },
      { label: tr("模块", "Modem"), value: () => presence("gnet.ucFD_GNetExist"), when: hasModem },
      {
        label: tr("SIM 卡", "SIM card"),
        value: () => state("gnet.ucFD_SimExist", tr("已插入", "Inserted"), tr("未插入", "Missing")),
        when: hasModem,
      },
      { label: "IMEI", value: (s) => s.gnet.strFD_GNetIMEI, copy: true, when: hasModem },
      { label: "IMSI", value: (s) => s.gnet.ucFD_SimIMSI, when: hasSim },
      { label: "ICCID", value: (s) => s.gnet.ucFD_SimICCID, copy: true, when: hasSim },
      {
        label: tr("模块版本", "Modem version"),
        value: (s) => s.gnet.strFD_GNetRevision.trim(),
        when: hasModem,
      },
    ],
  },
  {
    id: "gps",
    title: tr("卫星定位", "GPS"),
    state: gpsState,
    trouble: (s) => s.gps.ucFD_GpsExist === "1" && !position(s) && tr("无 GPS 位置", "no GPS position"),
    rows: [
      {
        label: tr("位置", "Position"),
        value: (s) => s.gps.strFD_GpsPos,
        show: geo,
        when: (s) => s.gps.ucFD_GpsExist !== "0",
      },
    ],
  },
  {
    id: "storage",
    title: tr("存储", "Storage"),
    trouble: (s) => !hasDisk(0)(s) && !hasDisk(1)(s) && tr("没有磁盘", "no disk"),
    rows: [0, 1].flatMap((n) => [
      { label: tr(`磁盘 ${n + 1}`, `Disk ${n + 1}`), value: () => presence(`disk.list.${n}.ucFD_DiskExist`) },
      {
        label: tr(`磁盘 ${n + 1} 容量`, `Size of disk ${n + 1}`),
        value: (s) => s.disk.list[n].strFD_DiskSize,
        when: hasDisk(n),
      },
    ]),
  },
  {
    id: "wifi",
    title: "Wi-Fi",
    state: (s) =>
      s.wifi.ucFD_WifiExist === "0" ? presence("wifi.ucFD_WifiExist") : connection("wifi.ucFD_WifiDail"),
    rows: [
      {
        label: tr("模式", "Mode"),
        value: ({ wifi }) => (wifiMode[wifi.ucFD_WifiMode] ?? String)(wifi.ucFD_WifiMode),
        when: (s) => s.wifi.ucFD_WifiExist !== "0",
      },
      {
        label: tr("信号", "Signal"),
        value: wifiSignal,
        trend: "wifi",
        when: (s) => s.wifi.ucFD_WifiExist !== "0",
      },
    ],
  },
  {
    id: "vehicle",
    title: tr("车辆", "Vehicle"),
    rows: [
      {
        label: tr("点火 (ACC)", "Ignition (ACC)"),
        value: () => state("acc.ucFD_AccStatus", tr("开", "On"), tr("关", "Off")),
      },
      { label: tr("输入 / 输出", "Inputs / outputs"), value: (s) => s.io.strFD_IOStatus },
    ],
  },
  { id: "versions", title: tr("版本", "Versions"), rows: versionRows() },
];

// ---- nodes that follow the status

let updates = []; // of the nodes that are in view now
export const update = () => updates.forEach((apply) => apply());
export const clearUpdates = () => {
  updates = [];
};

const rects = (level) =>
  [1, 2, 3, 4, 5].map((n) =>
    h("svg:rect", {
      class: n <= level ? "on" : "",
      x: n * 5 - 5,
      y: 20 - n * 4,
      width: 3.5,
      height: n * 4,
      rx: 1,
    }),
  );
const bars = (level = 0) =>
  h("svg:svg", { class: "bars", viewBox: "0 0 24 20", "aria-hidden": "true" }, rects(level));

function shown(value) {
  if (Array.isArray(value)) return badge(...value);
  if (typeof value === "object") return h("span", {}, bars(value.level), ` ${value.text}`);
  return h("bdi", {}, value || NONE);
}

/** A node whose content follows the status; only a changed value touches the document. */
function live(tag, read, show = (s) => shown(read(s))) {
  const node = h(tag, {}, h("span", { class: "bone" }));
  let old;
  updates.push(() => {
    const now = status && JSON.stringify(read(status));
    if (!status || now === old) return;
    old = now;
    node.replaceChildren(show(status));
  });
  return node;
}

const trendLine = (key) => {
  const line = h("svg:polyline", {});
  updates.push(() => {
    const points = history
      .filter((sample) => sample[key] !== null)
      .map(
        (sample) =>
          `${(100 * (1 - (statusAt - sample.at) / HISTORY_MS)).toFixed(1)},${(22 - 20 * sample[key]).toFixed(1)}`,
      );
    line.setAttribute("points", points.join(" "));
  });
  const name = tr("最近 5 分钟的信号", "Signal of the last 5 minutes");
  const box = { viewBox: "0 0 100 24", preserveAspectRatio: "none", role: "img", "aria-label": name };
  return h("dd", { class: "trend" }, h("svg:svg", box, line));
};

// The clipboard's own interface is there on secure pages only, which a recorder's is not.
function copyText(text) {
  const area = h("textarea", { class: "hidden", "aria-hidden": "true" });
  area.value = text;
  document.body.append(area);
  const focused = document.activeElement;
  area.select();
  const copied = document.execCommand("copy");
  area.remove();
  focused?.focus({ preventScroll: true });
  return copied;
}

function copyButton(word, name, text, attributes) {
  const label = h("span", {}, word);
  const button = h("button", { type: "button", "aria-label": name, ...attributes }, icon("copy"), label);
  button.addEventListener("click", () => {
    setText(label, copyText(text()) ? tr("已复制", "Copied") : tr("复制失败", "Not copied"));
    setTimeout(() => setText(label, word), 2000);
  });
  return button;
}

function row({ label, value, show, copy, trend, when = () => true }) {
  const name = tr(`复制 ${label}`, `Copy ${label}`);
  const text = live(copy ? "span" : "dd", value, show);
  const button = copy && copyButton("", name, () => value(status), { class: "quiet" });
  const data = copy ? h("dd", { class: "with" }, text, button) : text;
  const node = h("div", {}, h("dt", {}, label), data, trend && trendLine(trend));
  updates.push(() => {
    node.hidden = Boolean(status && !when(status));
  });
  return node;
}

export const rowsOf = (rows) => h("dl", {}, rows.map(row));

// ---- the view

const troubles = (cards) =>
  cards.map(({ id, trouble }) => [id, trouble?.(status)]).filter(([, word]) => word);

function drawVerdict(verdict, cards) {
  let old;
  updates.push(() => {
    const found = status ? troubles(cards) : [];
    const key = JSON.stringify([found, link, Boolean(status)]);
    if (key === old) return;
    old = key;
    const count = found.length;
    const kind = !status || link !== "ok" ? "busy" : count ? "warn" : "ok";
    verdict.className = `verdict ${kind}`;
    const word = !status
      ? tr("正在读取…", "Reading…")
      : link !== "ok"
        ? tr("显示的是最后一次的数据", "Last values, not current")
        : count
          ? tr(
              `${count} 项需要注意：`,
              count === 1 ? "1 thing needs attention:" : `${count} things need attention:`,
            )
          : tr("一切正常", "All well");
    const jump = ([id, text]) =>
      h("button", { type: "button", class: "quiet", onclick: () => jumpTo(id) }, text);
    verdict.replaceChildren(icon(kind), h("strong", {}, word), ...found.map(jump));
  });
}

function jumpTo(id) {
  const card = document.getElementById(id);
  card.scrollIntoView({ block: "start" });
  card.focus({ preventScroll: true });
}

function statusText(cards) {
  const plain = (value) =>
    Array.isArray(value) ? value[1] : typeof value === "object" ? value.text : value || NONE;
  const line = ({ label, value }) => `  ${label}: ${plain(value(status))}`;
  const card = ({ title, state: of, rows }) => [
    of ? `${title}: ${plain(of(status))}` : title,
    ...rows.filter(({ when = () => true }) => when(status)).map(line),
  ];
  const head = tr("车载录像机", "Vehicle recorder");
  const { number } = stranger ?? recorder;
  return [`${head} ${number} ${new Date(statusAt).toISOString()}`, ...cards.flatMap(card)].join("\n");
}

export function ageText() {
  if (!status) return "";
  const seconds = Math.max(0, Math.round((Date.now() - statusAt) / 1000));
  if (seconds < 120) return tr(`数据更新于 ${seconds} 秒前`, `Values from ${seconds} s ago`);
  const minutes = Math.round(seconds / 60);
  return tr(`数据更新于 ${minutes} 分钟前`, `Values from ${minutes} min ago`);
}

export function statusView() {
  const cards = CARDS();
  const verdict = h("div", { role: "status" });
  const age = h("p", { class: "age" });
  drawVerdict(verdict, cards);
  updates.push(() => setText(age, ageText()));
  const drawn = cards.map(({ id, title, state: of, rows }) =>
    h(
      "section",
      { class: "card", id, tabindex: "-1" },
      h("h2", {}, title, of ? live("span", of) : ""),
      rowsOf(rows),
    ),
  );
  const word = tr("复制状态文本", "Copy status as text");
  const copy = copyButton(word, word, () => (status ? statusText(cards) : ""), { class: "copy-all" });
  return [verdict, age, columns(drawn), copy];
}
