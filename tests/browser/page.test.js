// SPDX-License-Identifier: GPL-2.0-only
// The page as a whole: its weight and speed, its fit to small screens, both languages, and outages.

import assert from "node:assert/strict";
import axe from "axe-core";
import { ADDRESS, BOTH, inBrowser, page, recorder, sent, startDaemon, stopDaemon } from "./rig.js";
import { click, fill, open, press, saveForm, says, submit } from "./rig.js";

const SECTIONS = ["status", "device", "video", "network", "platform", "backup", "about"];

inBrowser("first load: weight, waits, own host; warm: 304; forms stand at once", {}, async () => {
  await page.emulateNetworkConditions({ latency: 400, download: 50000, upload: 50000 });
  await page.evaluateOnNewDocument(() => {
    requestAnimationFrame(function look() {
      if (document.querySelector(".verdict.ok")) performance.mark("shown");
      else requestAnimationFrame(look);
    });
  });
  await page.goto(ADDRESS);
  const ready = () => page.waitForFunction(() => performance.getEntriesByName(`${location}backup.js`).length);
  await ready(); // what is loaded while nothing else is to do has come, too
  const entries = await page.evaluate(() => performance.getEntries().map((entry) => entry.toJSON()));
  const shown = entries.find(({ name }) => name === "shown").startTime;
  const endedBy = (time) => entries.filter((one) => one.transferSize && one.responseEnd <= time);
  const first = endedBy(shown);
  const bytes = first.reduce((sum, { transferSize }) => sum + transferSize, 0);
  assert.ok(first.length <= 8 && bytes <= 24 * 1024, `${first.length} requests, ${bytes} bytes with headers`);
  // Each answer that the next request waits for costs a slow link a round trip: page, modules, values.
  const waits = (time) => Math.max(0, ...endedBy(time).map(({ startTime }) => 1 + waits(startTime)));
  assert.equal(waits(shown), 3);

  const answers = [];
  page.on("response", (answer) => answers.push(answer));
  await page.reload();
  await says(".verdict", /All well/);
  const files = answers.filter((answer) => !/\/get_|^data:/.test(answer.url()));
  assert.ok(files.length >= 6);
  for (const answer of files) assert.equal(answer.status(), 304, answer.url());
  await ready();
  for (const url of sent) assert.match(url, /^(http:\/\/127\.0\.0\.1:8080\/|data:)/);
  await page.setOfflineMode(true);
  await click("#tab-network");
  await page.waitForSelector("#WifiInfo .row input");
});

const colours = (on) => {
  const input = document.querySelector("#BaseInfo-ucFD_GpsSTFlag");
  input.checked = on;
  const parts = ["::before", "::after"].map((part) => getComputedStyle(input, part).backgroundColor);
  return [...parts, document.getAnimations().length];
};
/** What has the focus and is not to be seen. */
function covered() {
  const { activeElement: element } = document;
  const box = element.getBoundingClientRect();
  const top = document.elementFromPoint(box.x + box.width / 2, box.y + box.height / 2);
  const seen = element === document.body || element.contains(top) || top?.contains(element);
  return seen ? "" : element.outerHTML;
}

inBrowser("forced colours show switches; no focus under a bar, at 400 % too", { at: "device" }, async () => {
  const forced = { features: [{ name: "forced-colors", value: "active" }] };
  await (await page.createCDPSession()).send("Emulation.setEmulatedMedia", forced);
  await page.waitForFunction(() => matchMedia("(forced-colors) and (prefers-reduced-motion)").matches);
  const [track, thumb, moving] = await page.evaluate(colours, true);
  const [trackOff, thumbOff, movingOff] = await page.evaluate(colours, false);
  assert.equal(moving + movingOff, 0); // who wants no motion, and this test, see no switch half way
  const told = `${track} ${thumb} ${trackOff} ${thumbOff}`;
  assert.ok(track !== thumb && trackOff !== thumbOff && track !== trackOff, told);
  for (const height of [640, 256]) {
    await page.setViewport({ width: 320, height });
    await open("network");
    await fill("#GNetInfo-strFD_Apn", "an edit brings up the footer");
    await page.focus("#VCmsInfo-ucFD_AddressType");
    for (let presses = 0; presses < 25; presses++) {
      await press("Tab");
      assert.equal(await page.evaluate(covered), "", String(height));
    }
  }
});

/** What is too small to touch, or too wide, with texts of this size. */
function unfit(size) {
  document.documentElement.style.fontSize = size;
  const elements = [...document.querySelectorAll("a[id], button, select, input, label.wide, label.pick")];
  const small = elements.filter((element) => {
    const { width, height } = element.getBoundingClientRect();
    return element.checkVisibility({ opacityProperty: true }) && Math.min(width, height) < 44;
  });
  const wide = document.documentElement.scrollWidth - innerWidth;
  document.documentElement.style.fontSize = "";
  return small.map(({ outerHTML }) => outerHTML).join() + (wide > 0 ? `${wide} px too wide` : "");
}

for (const look of ["chrome light CN", "chrome dark EN", "firefox light EN", "firefox dark CN"]) {
  const [name, scheme, language] = look.split(" ");
  const how = { names: [name], dark: scheme === "dark", language, at: "status" };
  inBrowser(`axe finds nothing, all fits: ${scheme}, ${language}`, how, async () => {
    const check = async (where, shown = "main") => {
      await page.waitForSelector(shown);
      await page.evaluate(axe.source);
      const { violations } = await page.evaluate(() => window.axe.run({ resultTypes: ["violations"] }));
      const found = violations.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join()}`);
      assert.deepEqual(found, [], where);
    };
    await says(".age", /\d/);
    for (const width of [1280, 320]) {
      await page.setViewport({ width, height: 640 });
      for (const section of SECTIONS) {
        await open(section);
        await check(`${section} at ${width}`);
        for (const size of width === 320 ? ["100%", "200%"] : [])
          assert.equal(await page.evaluate(unfit, size), "", `${section}, ${size}`);
      }
    }
    await open("network");
    await fill("#WifiInfo-strFD_SSID", "x".repeat(40));
    await click(submit("WifiInfo"));
    await check("a fault in a form");
    await fill("#WifiInfo-strFD_SSID", "x");
    await click(submit("WifiInfo"));
    await check("the question", "dialog");
    await press("Escape");
    const changes = ["stWifi.strFD_SSID=other", "stSystemInfo.IMEI=1", "stSystemInfo.GNetExist=0"];
    await recorder.start(...changes.map((change) => `--set=${change}`));
    await check("another recorder", "#banner button");
    await click("#banner .buttons button:last-child");
    await check("a changed value", ".clash button");
    recorder.silence();
    await check("the banner", "#banner > span");
  });
}

// Names that are the same in Chinese, and what is a value.
const NAMES = /^(Wi-Fi|GB28181|JT\/T 808|IMEI|IMSI|ICCID|MCU|English|UTC.*|DEMO.*|[\d\s:\-—.]*)$/;
const TEXTS = "h1, h2, dt, label, button, option, a span, .help, .badge, legend, .verdict strong";
const ownTexts = (elements) =>
  elements.flatMap(({ childNodes }) => [...childNodes].map(({ data = "" }) => data.trim()));

inBrowser("both languages are whole; one's own choice stays", { language: "", at: "status" }, async () => {
  const whole = async (isWhole) => {
    for (const section of SECTIONS) {
      await open(section);
      for (const text of await page.$$eval(TEXTS, ownTexts)) assert.ok(isWhole(text), `${section}: ${text}`);
    }
  };
  await page.waitForSelector("html[lang=zh-CN]"); // as the recorder says, though the browser is English
  await whole((text) => /\p{Script=Han}/u.test(text) || NAMES.test(text));
  await open("device");
  await page.select("#LangInfo-strLanguage", "EN");
  await click(submit("LangInfo"));
  await page.waitForSelector("html[lang=en]");
  assert.equal(recorder.state["stDisplay.strLanguage"], "US");
  await whole((text) => !/\p{Script=Han}/u.test(text) || text === "中文");
  await click("#language");
  await page.waitForSelector("html[lang=zh-CN]");
  await page.reload();
  await open("device"); // behind the recorder's language
  await page.waitForSelector("html[lang=zh-CN]");
});

// What the recorder says ("": as above), where, how it reads, and how many bars the signal has.
const READS = [
  ["", ".verdict", /^All well$/],
  ["", "#links, #modem", /Central server\s+Connected\s+JT\/T 808\s+Connected[^]*Inserted[^]*X1\.05\.2/],
  ["", "#gps a[href='geo:22.5308,113.946']", /E113\.9460 N22\.5308/],
  ["CmsStatus=0 Disk1Exist=0 Disk2Exist=0", ".verdict", /2 things need.*\s*central server.*\s*no disk/],
  ["JTT808Status=4 GpsPos=E0.0", "#links .badge.plain, #gps", /^code 4\n[^]*Module present, no position/],
  ["GpsExist=0 GNetExist=0", "#modem, #gps", /^Mobile network\s+Not found\s+GPS\s+Not found\s*$/],
  ["SimExist=0 ACC=0", "#modem, #vehicle", /No SIM card[^]*SIM card\s+Missing[^]*Ignition \(ACC\)\s+Off/],
  ["Disk2Exist=0", "#storage", /Disk 1\s+Present[^]*Disk 2\s+Not found\s*$/],
  ["GNetSignal=99", "#modem", /unknown \(99\)/, 0],
  ["GNetSignal=-70", "#modem", /Signal\s+-70 dBm/, 4],
  ["GNetSignal=-110", "#modem", /Signal\s+-110/, 1],
  ["GNetSignal=0", "#modem", /Signal\s+0/, 0],
  ["GNetSignal=31", "#modem", /Signal\s+31/, 5],
];

function hide(value) {
  Object.defineProperty(document, "hidden", { value, configurable: true });
  document.dispatchEvent(new Event("visibilitychange"));
}

inBrowser("status: every value, refreshed; nothing asked while hidden", { at: "status" }, async () => {
  await says(".age", /\d/);
  const all = await page.$eval("#view", ({ innerText }) => innerText);
  const isShown = /^stSystemInfo\.(GpsPos|IM..|ICCID|GNetSignal|WifiSignal|Disk[12]Size|IO|.*(?<!Wifi)Ver)$/;
  const shown = Object.entries(recorder.state).filter(([place]) => isShown.test(place));
  assert.equal(shown.length, 15);
  for (const [place, value] of shown) assert.ok(all.includes(value), place);
  for (const [changes, where, words, level] of READS) {
    if (changes)
      await recorder.restart(...changes.split(" ").map((change) => `--set=stSystemInfo.${change}`));
    await says(where, words);
    if (level !== undefined) assert.equal((await page.$$("#modem .bars .on")).length, level, changes);
  }
  const points = await page.$eval("#modem .trend polyline", (line) => line.getAttribute("points"));
  assert.ok(points.split(" ").length >= 6);

  recorder.silence();
  await page.evaluate(() => void (Date.now = () => new Date().getTime() + 300000));
  await says(".age", /Values from 5 min ago/);
  recorder.wake();
  await says(".age", /Values from \d s ago/);

  await page.evaluate(hide, true);
  await page.waitForNetworkIdle({ idleTime: 5000 }); // two refreshes long
  const refreshed = page.waitForRequest((request) => request.url().endsWith("/get_SystemInfo"));
  await page.evaluate(hide, false);
  await refreshed;
});

inBrowser("words for codes: the code beside, every other code stays possible", {}, async () => {
  const words = {
    fields: { "NetWModeInfo.ucFD_NetWType": { 2: ["移动", "Cellular"], 3: ["有线", "Wired"] } },
    status: { "cms.ucFD_JTT808Status": { 1: ["已注册", "Registered", "ok"] } },
  };
  await page.setRequestInterception(true);
  page.on("request", (request) => {
    if (/names\.json/.test(request.url())) request.respond({ body: JSON.stringify(words) });
    else request.continue();
  });
  await open("status");
  await says("#links", /JT\/T 808\s+Registered \(1\)/);
  await open("network");
  await says("#NetWModeInfo .fields", /Cellular \(2\)\s*Wired \(3\)\s*Other code/);
  await page.select("#NetWModeInfo-ucFD_NetWType", "3");
  await saveForm("NetWModeInfo", /^Saved/);
  assert.equal(recorder.state["stNetWorkMode.ucFD_NetType"], "3");
});

inBrowser("Back returns to the place, a deep link to its card", { at: "network/WifiInfo" }, async () => {
  await page.waitForFunction(() => Math.abs(document.forms.WifiInfo.getBoundingClientRect().top) < 160);
  await press("Shift"); // the place is the reader's from here on
  await page.evaluate(() => scrollTo(0, 777));
  await page.waitForFunction(() => history.state?.y === 777);
  await click("#tab-about");
  await page.waitForFunction(() => scrollY === 0 && document.querySelector("[data-section=about]"));
  await page.goBack();
  await page.waitForFunction(() => scrollY === 777 && document.querySelector("#WifiInfo"));
});

inBrowser("outages: told, edits kept, recovery by itself", { names: BOTH }, async () => {
  const field = "#BaseInfo-strFD_DeviceNo";
  // A reading that ended while the recorder was silent is made up for, without a press of anything.
  recorder.silence();
  await page.goto(`${ADDRESS}/#device`);
  await says("#link", /Waiting for the recorder: status/);
  await says("#banner", /^The recorder does not answer\. The page recovers/); // there are no last values
  await says("#view", /did not give these settings/);
  recorder.wake();
  await page.waitForSelector(field);
  await page.waitForSelector("#banner:empty");

  await fill(field, "KEEP-ME-1");
  await stopDaemon();
  await says("#banner", /No connection.*last values/);
  await page.waitForSelector("body.stale");
  await recorder.start("--set=stBaseInfo.ucFD_TimeZone=9");
  await startDaemon();
  await page.waitForSelector("#banner:empty");
  await says("#BaseInfo-ucFD_TimeZone", /^9$/);
  await says(field, /^KEEP-ME-1$/);
  page.removeAllListeners("dialog");
  const asked = new Promise((go) => page.once("dialog", go));
  await page.evaluate(() => void setTimeout(() => location.reload()));
  assert.equal((await asked).type(), "beforeunload");
  await (await asked).dismiss();
  await saveForm("BaseInfo", /Saved; read back/);
  assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "KEEP-ME-1");
});
