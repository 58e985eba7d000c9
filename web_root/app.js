// SPDX-License-Identifier: GPL-2.0-only
// The shell: who the recorder is and how it is reached, the sections, the banner.

import { pause, readStatus, identityOf } from "./api.js";
import {
  awaited,
  badge,
  chooseLanguage,
  clockAhead,
  confirmRecorder,
  followLanguage,
  h,
  icon,
  idle,
  language,
  link,
  meet,
  onLanguage,
  onLink,
  onRecorder,
  recorder,
  rememberedLanguage,
  request,
  setText,
  stranger,
  tr,
} from "./core.js";
import { clearUpdates, hasStatus, showStatus, statusView, update, useWords } from "./status.js";

// With the 5 s that a silent recorder costs, this keeps the banner within 8 s of the silence.
const REFRESH_MS = 2000;
// While it fails each attempt blocks the daemon; others get their turn in between.
const RETRY_MS = 2500;
// A clock that is off by more than this is shown with its date.
const CLOCK_OFF_MS = 120000;

const byId = (id) => document.getElementById(id);
const product = () => tr("车载录像机", "Vehicle recorder");

// ---- sections

// All at once: one after the other finding the next would cost a slow link a round trip each.
const FORM_MODULES = [
  "forms",
  "form",
  "card",
  "names",
  "schema",
  "settings",
  "exchange",
  "controls",
  "questions",
  "file",
];
async function loadForms() {
  if (!byId("forms-style"))
    document.head.append(h("link", { id: "forms-style", rel: "stylesheet", href: "forms.css" }));
  const [forms] = await Promise.all(FORM_MODULES.map((name) => import(`./${name}.js`)));
  return forms;
}

const formsOf = (section) => async () => (await loadForms()).formView(section, markEdits, arrived);
const SECTIONS = {
  status: { title: () => tr("状态", "Status"), view: statusView },
  device: { title: () => tr("设备", "Device"), view: formsOf("device") },
  video: { title: () => tr("视频", "Video"), view: formsOf("video") },
  network: { title: () => tr("网络", "Network"), view: formsOf("network") },
  platform: {
    title: () => tr("GB28181 平台", "GB28181 platform"),
    tab: () => tr("国标", "GB"),
    view: formsOf("platform"),
  },
  backup: {
    title: () => tr("保存与载入", "Save and load"),
    tab: () => tr("备份", "Backup"),
    view: async () => (await Promise.all([import("./backup.js"), loadForms()]))[0].backupView(),
  },
  about: { title: () => tr("关于", "About"), view: async () => (await import("./about.js")).aboutView() },
};

const edits = {}; // section -> number of unsaved changes

function markEdits(section, count) {
  edits[section] = count;
  const tab = byId(`tab-${section}`);
  tab.classList.toggle("edited", count > 0);
  setText(tab.querySelector(".hidden"), count ? tr("，有未保存的更改", ", unsaved changes") : "");
}

/** Of "#network/WifiInfo": ["network", "WifiInfo"], the section and the card to scroll to. */
function route() {
  const [name, card] = location.hash.slice(1).split("/");
  return Object.hasOwn(SECTIONS, name) ? [name, card] : ["status"];
}

let shows = 0;
let incomplete = false; // what is in view wants a new attempt once the link is back

function drawTitle() {
  const title = SECTIONS[route()[0]].title();
  document.title = [recorder.number, title, product()].filter(Boolean).join(" · ");
  return title;
}

const failedView = () => [
  h(
    "section",
    { class: "card" },
    h("p", {}, badge("warn", tr("页面的这一部分没有载入。", "This part of the page could not be loaded."))),
    h("div", { class: "buttons" }, h("button", { type: "button", onclick: show }, tr("重试", "Try again"))),
  ),
];

async function show() {
  const [name] = route();
  const turn = ++shows;
  const view = byId("view");
  const title = h("h1", { id: "title" }, drawTitle());
  for (const tab of byId("tabs").children) {
    if (tab.id === `tab-${name}`) tab.setAttribute("aria-current", "page");
    else tab.removeAttribute("aria-current");
  }
  clearUpdates();
  incomplete = false;
  let content;
  try {
    const made = SECTIONS[name].view();
    if (made instanceof Promise)
      view.replaceChildren(title, h("p", { class: "age" }, tr("正在载入…", "Loading…")));
    content = await made;
  } catch {
    incomplete = true;
    content = failedView();
  }
  if (turn !== shows) return;
  view.dataset.section = name;
  view.replaceChildren(title, ...content);
  update();
  if (view.querySelector("form")) settle();
  else arrived();
}

// ---- where the reader is: Back returns to the same place, a deep link goes to its card

history.scrollRestoration = "manual";
let placed = true; // nothing left to scroll to; a move of the reader's own ends it as well

function settle() {
  if (placed) return;
  const card = byId(route()[1]);
  if (history.state) scrollTo(0, history.state.y);
  else if (card) card.scrollIntoView();
  else scrollTo(0, 0);
}

/** The cards have their height: from here on the place is the reader's. */
function arrived() {
  settle();
  placed = true;
}

function arrive() {
  placed = false;
  show();
  byId("view").focus({ preventScroll: true });
}

function watchPlace() {
  addEventListener("popstate", arrive);
  for (const own of ["wheel", "touchmove", "keydown", "pointerdown"])
    addEventListener(own, () => (placed = true), { passive: true });
  const keep = () => placed && history.replaceState({ y: scrollY }, "");
  let due;
  addEventListener("scroll", () => {
    clearTimeout(due);
    due = setTimeout(keep, 150);
  });
}

// ---- the shell

function drawShell() {
  const other = () => {
    chooseLanguage(language() === "EN" ? "CN" : "EN");
    byId("language").focus();
  };
  const to = { lang: tr("en", "zh-CN"), "aria-label": tr("Switch to English", "切换到中文") };
  byId("top").replaceChildren(
    h("span", { class: "mark-of" }, icon("device")),
    h("strong", { id: "who" }),
    h(
      "button",
      { type: "button", id: "language", class: "quiet", ...to, onclick: other },
      tr("English", "中文"),
    ),
    h("div", { class: "meta" }, h("span", { id: "clock" }, "--:--"), h("span", { id: "link" })),
  );
  byId("tabs").setAttribute("aria-label", tr("栏目", "Sections"));
  byId("tabs").replaceChildren(
    ...Object.entries(SECTIONS).map(([name, { title, tab = title }]) => {
      const words = [h("span", { class: "short" }, tab()), h("span", { class: "full" }, title())];
      return h(
        "a",
        { id: `tab-${name}`, href: `#${name}` },
        icon(name),
        words,
        h("span", { class: "hidden" }),
      );
    }),
  );
  Object.keys(edits).forEach((name) => markEdits(name, edits[name]));
  drawHead();
  drawBanner();
}

const LINK_WORDS = {
  ok: () => ["ok", tr("已连接", "Connected")],
  silent: () => ["warn", tr("录像机无应答", "Recorder silent")],
  odd: () => ["warn", tr("应答异常", "Strange answers")],
  gone: () => ["warn", tr("已断开", "No connection")],
  refused: () => ["warn", tr("被拒绝", "Refused")],
  login: () => ["warn", tr("需要登录", "Login needed")],
};

function drawHead() {
  setText(byId("who"), (stranger ?? recorder).number || product());
  const words = awaited
    ? ["busy", tr(`正在等待录像机：${awaited[0]}`, `Waiting for the recorder: ${awaited[1]}`)]
    : link === "ok" && !hasStatus()
      ? ["busy", tr("正在连接…", "Connecting…")]
      : LINK_WORDS[link]();
  if (byId("link").dataset.state !== String(words)) byId("link").replaceChildren(badge(...words));
  byId("link").dataset.state = String(words);
  drawClock();
  drawTitle();
}

function drawClock() {
  if (Number.isNaN(clockAhead)) return;
  const own = -new Date().getTimezoneOffset() * 60000;
  const text = new Date(Date.now() + clockAhead).toISOString().replace("T", " ");
  const off = Math.abs(clockAhead - own) > CLOCK_OFF_MS;
  setText(byId("clock"), off ? text.slice(0, 16) : text.slice(11, 16));
  byId("clock").classList.toggle("off", off);
  byId("clock").title = tr("录像机的时钟", "Clock of the recorder");
}

const BANNERS = {
  ok: () => "",
  silent: () => [
    tr("录像机没有应答。", "The recorder does not answer."),
    tr("恢复后自动更新。", "The page recovers by itself."),
  ],
  odd: () => [
    tr("录像机的应答不完整。", "The recorder's answers are incomplete."),
    tr("页面会继续读取。", "The page keeps reading."),
  ],
  gone: () => [
    tr("与录像机的连接已断开。", "No connection to the recorder."),
    tr(
      "请检查本设备的网络，页面会自动重连。",
      "Check the Wi-Fi of this device; the page reconnects by itself.",
    ),
  ],
  refused: () => [
    tr("录像机不接受以此名称打开的页面，", "The recorder does not accept pages opened by this name;"),
    tr("请改用其 IP 地址。", "use its IP address."),
  ],
  login: () => [
    tr("登录已失效，更改仍保留在本页。", "The login has ended; your changes are still here."),
    tr("请在新标签页中打开本页并登录。", "Open this page in another tab and log in there."),
  ],
};

async function askAboutStranger(banner, count) {
  const { strangerQuestion } = await import("./stranger.js");
  if (stranger) banner.replaceChildren(icon("warn"), strangerQuestion(count, loadForms));
}

let bannerKey = "";

function drawBanner() {
  document.body.classList.toggle("stale", link !== "ok" || stranger !== null);
  document.documentElement.classList.toggle("bannered", link !== "ok" || stranger !== null);
  const texts = BANNERS[link]();
  if (texts && hasStatus() && link !== "refused")
    texts.splice(1, 0, tr("显示的是最后一次的数据。", "The last values are shown."));
  const count = Object.values(edits).reduce((sum, next) => sum + next, 0);
  const key = JSON.stringify([texts, stranger, count, language()]);
  if (key === bannerKey) return;
  bannerKey = key;
  const banner = byId("banner");
  if (stranger) askAboutStranger(banner, count).catch(() => (bannerKey = ""));
  else banner.replaceChildren(...(texts ? [icon("warn"), h("span", {}, texts.join(tr("", " ")))] : []));
}

// ---- what goes on while the page is open

async function refreshStatus() {
  const { answer } = await readStatus(request);
  if (!answer) return;
  showStatus(answer);
  const identity = identityOf(answer);
  if (recorder.imei) meet(identity);
  // The number too: of one whose IMEI is not compared yet, and of another one.
  if (stranger ? !stranger.number : identity.imei && !recorder.imei) await confirmRecorder();
  drawHead();
  // What fails for want of a link is tried again behind the next values.
  prepared ??= prepare().catch(() => (prepared = null));
}

async function watchStatus() {
  for (;;) {
    if (idle() || !hasStatus()) await refreshStatus();
    update();
    await pause(link === "ok" ? REFRESH_MS : RETRY_MS);
  }
}

let prepared = null;

/** After the first values: who it is, the words for codes, and the forms, before they are asked for. */
async function prepare() {
  const [, { preload }] = await Promise.all([confirmRecorder(), loadForms()]);
  const { loadNames } = await import("./names.js");
  useWords(await loadNames());
  await preload(markEdits);
  await import("./backup.js");
}

let languageKnown;
async function readLanguage() {
  const { answer } = await request("/get_LangInfo", { what: ["显示语言", "language"] });
  if (answer?.result === 1) followLanguage(answer.strLanguage);
  return answer?.result === 1;
}

function start() {
  rememberedLanguage();
  drawShell();
  placed = false;
  watchPlace();
  show();
  onLanguage(() => {
    drawShell();
    show();
  });
  onRecorder(() => {
    drawHead();
    drawBanner();
  });
  let last = link;
  onLink(async (state) => {
    drawHead();
    drawBanner();
    const back = state === "ok" && last !== "ok";
    last = state;
    if (!back) return;
    if (incomplete) show();
    if (!(await languageKnown)) languageKnown = readLanguage();
  });
  addEventListener("pageshow", ({ persisted }) => persisted && rememberedLanguage());
  setInterval(() => document.hidden || (update(), drawClock()), 1000);
  watchStatus();
  languageKnown = readLanguage();
}

start();
