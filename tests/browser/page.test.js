// SPDX-License-Identifier: GPL-2.0-only
// The page as a whole: its weight and speed, its fit to small screens, both languages, and outages.

import assert from "node:assert/strict";
import { after, test } from "node:test";
import axe from "axe-core";
import { groups } from "../../web_root/schema.js";
import { ADDRESS, closeBrowsers, startDaemon, stopDaemon, withPage } from "./rig.js";

after(closeBrowsers);

const SECTIONS = ["status", "device", "video", "network", "platform", "backup", "about"];
const BOTH = ["chrome", "firefox"];

test("first load: weight, requests, own host; warm reload: 304 only", (t) =>
  withPage({}, async ({ page, says, traffic }) => {
    const protocol = await page.createCDPSession();
    const [urls, statuses] = [new Map(), []];
    protocol.on("Network.requestWillBeSent", ({ requestId, request }) => urls.set(requestId, request.url));
    protocol.on("Network.responseReceivedExtraInfo", (event) => statuses.push(event));
    await protocol.send("Network.enable");
    await page.evaluateOnNewDocument(() => {
      requestAnimationFrame(function look() {
        if (!document.querySelector(".verdict.ok")) return requestAnimationFrame(look);
        const loads = ["navigation", "resource"].flatMap((type) => performance.getEntriesByType(type));
        window.first = loads.map(({ transferSize }) => transferSize).filter(Boolean);
        return undefined;
      });
    });
    await page.goto(ADDRESS);
    const first = await (await page.waitForFunction(() => window.first)).jsonValue();
    const bytes = first.reduce((sum, size) => sum + size, 0);
    t.diagnostic(`values visible after ${first.length} requests, ${bytes} bytes with headers`);
    assert.ok(first.length <= 8 && bytes <= 24 * 1024);

    await page.waitForNetworkIdle(); // what is loaded while nothing else is to do has come, too
    statuses.length = 0;
    await page.reload();
    await says(".verdict", /All well/);
    const files = statuses.filter(({ requestId }) => !/\/get_/.test(urls.get(requestId)));
    assert.ok(files.length >= 6);
    for (const { requestId, statusCode } of files) assert.equal(statusCode, 304, urls.get(requestId));
    for (const request of traffic.all) assert.match(request.url(), /^(http:\/\/127\.0\.0\.1:8080\/|data:)/);
  }));

test("values visible within 2.6 s at 400 kbps, 400 ms and 6x CPU slowdown; a tab's forms 1 s later", async (t) => {
  const times = [];
  const fast = ([values, forms]) => values < 2600 && forms < 1000;
  // What else the machine does only ever adds: the fastest round is the page's own time.
  while (times.length < 12 && !times.some(fast)) {
    await withPage({}, async ({ page }) => {
      await page.goto(`${ADDRESS}/get_LangInfo`); // the browser's process for this host is up, its cache is empty
      const protocol = await page.createCDPSession();
      const network = { offline: false, latency: 400, downloadThroughput: 50000, uploadThroughput: 50000 };
      await protocol.send("Network.emulateNetworkConditions", network);
      await protocol.send("Emulation.setCPUThrottlingRate", { rate: 6 });
      await page.evaluateOnNewDocument(() => {
        const look = () => {
          if (!window.seen && document.querySelector(".verdict.ok")) window.seen = performance.now();
          if (!window.seen || !document.querySelector("#WifiInfo .row input")) requestAnimationFrame(look);
          else window.forms = performance.now() - window.opened;
        };
        requestAnimationFrame(look);
      });
      await page.goto(ADDRESS, { waitUntil: "domcontentloaded" });
      await page.waitForFunction(() => window.seen);
      await page.waitForFunction(
        (names) =>
          names.every((name) => window.performance.getEntriesByName(`${location.origin}${name}`).length),
        {},
        ["/get_WifiInfo"],
      );
      await page.evaluate(() => {
        window.opened = performance.now();
        document.querySelector("#tab-network").click();
      });
      await page.waitForFunction(() => window.forms);
      times.push((await page.evaluate(() => [window.seen, window.forms])).map(Math.round));
    });
  }
  t.diagnostic(`values, forms after ${times.join(" | ")} ms`);
  assert.ok(times.some(fast));
});

for (const name of BOTH) {
  test(`${name}: no sideways scrolling at 320 px, also with 200 % text; targets of 44 px, zoom allowed`, () =>
    withPage({ name, hash: "status" }, async ({ page, open, click }) => {
      const viewport = await page.$eval("meta[name=viewport]", ({ content }) => content);
      assert.doesNotMatch(viewport, /user-scalable|maximum-scale/);
      await page.setViewport({ width: 320, height: 640 });
      const check = (size) => {
        document.documentElement.style.fontSize = size;
        const elements = [
          ...document.querySelectorAll("a[id], button, select, input, label.wide, label.pick"),
        ];
        const small = elements.filter((element) => {
          const box = element.getBoundingClientRect();
          return element.checkVisibility({ opacityProperty: true }) && (box.width < 44 || box.height < 44);
        });
        const wide = document.documentElement.scrollWidth - innerWidth;
        return [...small.map((element) => element.outerHTML), wide > 0 ? `${wide} px too wide` : ""].join("");
      };
      for (const turn of [1, 2]) {
        for (const section of SECTIONS) {
          await open(section);
          for (const size of ["100%", "200%"])
            assert.equal(await page.evaluate(check, size), "", `${section}, ${size}, ${turn}`);
        }
        await click("#language");
      }
    }));
}

test("forced colours show switches; what has the focus is never under a bar, at 400 % zoom too", () =>
  withPage({ hash: "device" }, async ({ page, open, fill, press }) => {
    const protocol = await page.createCDPSession();
    const still = { name: "prefers-reduced-motion", value: "reduce" }; // a switch half way has colours between
    const features = (value) => ({ features: [{ name: "forced-colors", value }, still] });
    await protocol.send("Emulation.setEmulatedMedia", features("active"));
    await page.waitForFunction(() =>
      ["forced-colors: active", "prefers-reduced-motion: reduce"].every(
        (wanted) => window.matchMedia(`(${wanted})`).matches,
      ),
    );
    const colours = (on) => {
      const input = document.querySelector("#BaseInfo-ucFD_GpsSTFlag");
      input.checked = on;
      return ["::before", "::after"].map((part) => getComputedStyle(input, part).backgroundColor);
    };
    const [[track, thumb], [trackOff, thumbOff]] = [
      await page.evaluate(colours, true),
      await page.evaluate(colours, false),
    ];
    assert.ok(
      track !== thumb && trackOff !== thumbOff && track !== trackOff,
      `${track} ${thumb} ${trackOff} ${thumbOff}`,
    );
    await protocol.send("Emulation.setEmulatedMedia", features("none"));

    const covered = () => {
      const { activeElement: element } = document;
      const box = element.getBoundingClientRect();
      const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
      const top = document.elementFromPoint(x, y);
      if (element === document.body) return "";
      return top === element || element.contains(top) || top?.contains(element)
        ? ""
        : `${element.outerHTML} ${y}`;
    };
    for (const [width, height] of [
      [360, 640],
      [320, 256],
    ]) {
      await page.setViewport({ width, height });
      await open("network");
      await fill("#GNetInfo-strFD_Apn", "an edit brings up the footer");
      await page.focus("#VCmsInfo-ucFD_AddressType");
      for (let presses = 0; presses < 25; presses++) {
        await press("Tab");
        assert.equal(await page.evaluate(covered), "", `${width}x${height}`);
      }
    }
  }));

// In Firefox each scheme is a browser of its own, so it looks once a scheme.
const LOOKS = [
  ["chrome", false, "CN"],
  ["chrome", false, "EN"],
  ["chrome", true, "CN"],
  ["chrome", true, "EN"],
  ["firefox", false, "CN"],
  ["firefox", true, "EN"],
];
for (const [name, dark, language] of LOOKS) {
  test(`axe finds nothing: ${name}, ${dark ? "dark" : "light"}, ${language}`, () =>
    withPage(
      { name, dark, language, hash: "status" },
      async ({ page, recorder, open, fill, click, press, says }) => {
        const check = async (where) => {
          await page.evaluate(axe.source);
          const { violations } = await page.evaluate(() =>
            window.axe.run(document, { resultTypes: ["violations"] }),
          );
          const found = violations.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join()}`);
          assert.deepEqual(found, [], where);
        };
        await says(".age", /\d/);
        for (const [width, height] of [
          [320, 640],
          [1280, 900],
        ]) {
          await page.setViewport({ width, height });
          for (const section of SECTIONS) {
            await open(section);
            await check(`${section} at ${width}`);
          }
        }
        await open("network");
        await fill("#WifiInfo-strFD_SSID", "x".repeat(40));
        await click("#WifiInfo button[type=submit]");
        await check("a fault in a form");
        await fill("#WifiInfo-strFD_SSID", "x");
        await click("#WifiInfo button[type=submit]");
        await page.waitForSelector("dialog");
        await check("the question");
        await press("Escape");
        await recorder.start(
          "--set",
          "stWifi.strFD_SSID=other",
          "--set",
          "stSystemInfo.IMEI=1",
          "--set",
          "stSystemInfo.GNetExist=0",
        );
        await page.waitForSelector("#banner button");
        await check("another recorder");
        await click("#banner .buttons button:last-child");
        await page.waitForSelector(".clash button");
        await check("a changed value");
        recorder.silence();
        await page.waitForSelector("#banner > span");
        await check("the banner");
      },
    ));
}

test("both languages are whole, the page follows the recorder's, a choice of one's own is remembered", () =>
  withPage({ language: "", hash: "status" }, async ({ page, recorder, open, click }) => {
    const HAN = /\p{Script=Han}/u;
    // Names that are the same in Chinese, and what is a value.
    const NAMES = /^(Wi-Fi|GB28181|JT\/T 808|IMEI|IMSI|ICCID|MCU|English|UTC.*|DEMO.*|[\d\s:\-—.]*)$/;
    const texts = () =>
      page.$$eval(
        "h1, h2, dt, label, button, option, a span, .help, .badge, legend, .verdict strong",
        (elements) =>
          elements
            .map(({ childNodes }) => [...childNodes].filter(({ nodeType }) => nodeType === 3))
            .map((nodes) =>
              nodes
                .map(({ data }) => data)
                .join("")
                .trim(),
            )
            .filter(Boolean),
      );
    await page.waitForSelector("html[lang=zh-CN]"); // as the recorder says, though the browser is English
    for (const section of SECTIONS) {
      await open(section);
      for (const text of await texts()) assert.ok(HAN.test(text) || NAMES.test(text), `${section}: ${text}`);
    }
    const ofField = ({ label, help, unit, codes = [] }) => [
      label,
      help,
      unit,
      ...codes.map(([, word]) => word),
    ];
    const pairs = groups.flatMap(({ title, intro, fields }) => [title, intro, ...fields.flatMap(ofField)]);
    for (const pair of pairs.filter(Boolean))
      assert.ok(pair.length === 2 && pair.every(Boolean), String(pair));
    await open("device");
    await page.select("#LangInfo-strLanguage", "EN");
    await click("#LangInfo button[type=submit]");
    await page.waitForSelector("html[lang=en]");
    assert.equal(recorder.state["stDisplay.strLanguage"], "US");
    for (const section of SECTIONS) {
      await open(section);
      for (const text of await texts()) assert.ok(!HAN.test(text) || text === "中文", `${section}: ${text}`);
    }
    await click("#language");
    await page.waitForSelector("html[lang=zh-CN]");
    await page.reload();
    await page.waitForFunction(() => document.querySelector("#view[data-section=about]"));
    assert.equal(await page.evaluate(() => document.documentElement.lang), "zh-CN");
  }));

// What the recorder says, where, and how it reads.
const READS = [
  [[], ".verdict", /^All well$/],
  [[], "#links", /Central server\s+Connected\s+JT\/T 808\s+Connected/],
  [[], "#modem", /SIM card\s+Inserted[\s\S]*Modem version\s+X1\.05\.2/],
  [[], "#gps a[href='geo:22.5308,113.946']", /E113\.9460 N22\.5308/],
  [
    ["CmsStatus=0", "Disk1Exist=0", "Disk2Exist=0"],
    ".verdict",
    /2 things need attention:\s*central server.*\s*no disk/,
  ],
  [["JTT808Status=4"], "#links .badge.plain", /^code 4$/],
  [["GpsPos=E0.0 N0.0"], "#gps", /Module present, no position/],
  [["GpsExist=0"], "#gps", /^GPS\s+Not found\s*$/],
  [["GNetExist=0"], "#modem", /^Mobile network\s+Not found\s*$/],
  [["SimExist=0"], "#modem", /No SIM card[\s\S]*SIM card\s+Missing/],
  [["GNetSignal=99"], "#modem", /unknown \(99\)/],
  [["Disk2Exist=0"], "#storage", /Disk 1\s+Present[\s\S]*Disk 2\s+Not found\s*$/],
  [["ACC=0"], "#vehicle", /Ignition \(ACC\)\s+Off/],
];
const SIGNALS = [
  ["23", 4],
  ["-70", 4],
  ["-110", 1],
  ["0", 0],
  ["31", 5],
];

test("status: every value shown, states in words, refreshed, nothing asked while hidden", () =>
  withPage({ hash: "status" }, async ({ page, recorder, says, text, traffic }) => {
    await says(".age", /\d/);
    const all = await text("#view");
    const isShown =
      /^stSystemInfo\.(GpsPos|IM..|ICCID|GNetSignal|WifiSignal|Disk[12]Size|IO|.*(?<!Wifi)Ver)$/;
    const shown = Object.entries(recorder.state).filter(([place]) => isShown.test(place));
    assert.equal(shown.length, 15);
    for (const [place, value] of shown) assert.ok(all.includes(value), place);
    const natural = Object.keys(recorder.state).filter((place) => place.startsWith("stSystemInfo."));
    const before = Object.fromEntries(natural.map((place) => [place.split(".")[1], recorder.state[place]]));
    const restart = async (changes) => {
      const undone = Object.keys(before)
        .filter((key) => !/ATI|NetStatus/.test(key))
        .map((key) => `${key}=${before[key]}`);
      await recorder.start(
        ...[...undone, ...changes].flatMap((change) => ["--set", `stSystemInfo.${change}`]),
      );
    };
    for (const [changes, where, words] of READS) {
      if (changes.length) await restart(changes);
      await says(where, words);
    }
    for (const [value, level] of SIGNALS) {
      await restart([`GNetSignal=${value}`]);
      await says("#modem", new RegExp(`Signal\\s+${value}`));
      assert.equal(await page.$$eval("#modem .bars .on", (bars) => bars.length), level, value);
    }
    const line = await page.$eval(
      "#modem .trend polyline",
      (node) => node.getAttribute("points").split(" ").length,
    );
    assert.ok(line >= SIGNALS.length);

    recorder.silence();
    await page.evaluate(() => {
      const now = Date.now;
      Date.now = () => now() + 300000;
    });
    await says(".age", /Values from 5 min ago/);
    recorder.wake();
    await says(".age", /Values from \d s ago/);

    const hide = (hidden) =>
      page.evaluate((value) => {
        Object.defineProperty(document, "hidden", { value, configurable: true });
        document.dispatchEvent(new Event("visibilitychange"));
      }, hidden);
    await hide(true);
    await new Promise((go) => setTimeout(go, 1000)); // what was under way
    const { length } = traffic.all;
    await new Promise((go) => setTimeout(go, 5000)); // two refreshes long
    assert.equal(traffic.all.length, length);
    await hide(false);
    await page.waitForRequest((request) => /get_SystemInfo/.test(request.url()));
  }));

test("words for codes: a choice with the code beside, every other code stays possible", () =>
  withPage({ hash: "about" }, async ({ page, recorder, open, click, says }) => {
    const words = {
      fields: { "NetWModeInfo.ucFD_NetWType": { 2: ["移动", "Cellular"], 3: ["有线", "Wired"] } },
      status: { "cms.ucFD_JTT808Status": { 1: ["已注册", "Registered", "ok"] } },
    };
    await page.setRequestInterception(true);
    page.on("request", (request) =>
      /names\.json/.test(request.url())
        ? request.respond({ body: JSON.stringify(words) })
        : request.continue(),
    );
    await open("status");
    await page.reload();
    await says("#links", /JT\/T 808\s+Registered \(1\)/);
    await open("network");
    const field = "#NetWModeInfo-ucFD_NetWType";
    assert.match(
      await page.$eval(field, (select) => select.innerText),
      /Cellular \(2\)\s*Wired \(3\)\s*Other code/,
    );
    await page.select(field, "3");
    await click("#NetWModeInfo button[type=submit]");
    await click("dialog .primary");
    await says("#NetWModeInfo .result", /^Saved/);
    assert.equal(recorder.state["stNetWorkMode.ucFD_NetType"], "3");
  }));

test("Back returns to the place; a deep link goes to its card", () =>
  withPage({ hash: "network/WifiInfo" }, async ({ page, click }) => {
    const top = (id) => page.$eval(id, (card) => Math.round(card.getBoundingClientRect().top));
    await page.waitForFunction(
      () => Math.abs(document.querySelector("#WifiInfo").getBoundingClientRect().top) < 160,
    );
    await page.evaluate(() => scrollTo(0, 777));
    await page.waitForFunction(() => history.state?.y === 777);
    await click("#tab-about");
    await page.waitForFunction(() => scrollY === 0 && document.querySelector("[data-section=about]"));
    await page.goBack();
    await page.waitForFunction(() => scrollY === 777 && document.querySelector("#WifiInfo"));
    assert.ok((await top("#VCmsInfo")) < 0);
  }));

test("outages: banner in time, edits kept, recovery by itself", (t) =>
  withPage({ hash: "device" }, async (rig) => {
    const { page, recorder, fill, click, says } = rig;
    const field = "#BaseInfo-strFD_DeviceNo";
    await fill(field, "KEEP-ME-1");
    const silent = Date.now();
    recorder.silence();
    await says("#banner", /The recorder does not answer.*last values/);
    t.diagnostic(`banner ${Date.now() - silent} ms after the silence`);
    await says("#link", /Waiting for the recorder: status/);
    await click("#tab-status");
    await page.waitForSelector("#view[data-section=status]");
    assert.ok(await page.evaluate(() => document.body.classList.contains("stale")));
    await says(".age", /\d/);
    recorder.wake();
    await page.waitForSelector("#banner:empty");

    await click("#tab-device");
    await page.waitForSelector(field);
    await stopDaemon(rig);
    await says("#banner", /No connection/);
    await recorder.start("--set", "stBaseInfo.ucFD_TimeZone=9");
    rig.daemon = await startDaemon();
    await page.waitForSelector("#banner:empty");
    await rig.holds("#BaseInfo-ucFD_TimeZone", "9");
    assert.equal(await rig.value(field), "KEEP-ME-1");
    rig.stay = true;
    await page.evaluate(() => void setTimeout(() => location.reload()));
    await page.waitForFunction(() => true, { polling: 500 });
    assert.deepEqual(rig.dialogs, ["beforeunload"]);
    rig.stay = false;
    await click("#BaseInfo button[type=submit]");
    await says("#BaseInfo .result", /Saved; read back/);
    assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "KEEP-ME-1");

    // A reading that ended while the recorder was silent is made up for, without a press of anything.
    recorder.silence();
    await page.evaluate(() => location.reload());
    await says("#view", /did not give these settings/);
    assert.doesNotMatch(await rig.text("#banner"), /last values/);
    recorder.wake();
    await page.waitForSelector(field);
    await page.goto("http://recorder.example.com:8080/"); // the daemon serves its API to no public name
    await says("#banner", /use its IP address/);
  }));
