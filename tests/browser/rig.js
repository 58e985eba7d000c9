// SPDX-License-Identifier: GPL-2.0-only
// The real daemon and the simulator as child processes, a real browser, and the recorder's state.
// run gives this a network namespace of its own, so the ports are fixed.

import assert from "node:assert/strict";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, test } from "node:test";
import puppeteer from "puppeteer-core";
import { DAEMON, end, SIMULATOR, start } from "../fleet/depot.js";

export const ADDRESS = "http://127.0.0.1:8080";
export const BOTH = ["chrome", "firefox"];

export const startDaemon = () =>
  start(DAEMON, ["--port", "8080", "--web-root", process.env.WEB_ROOT], "Starting web server");
export const stopDaemon = ({ daemon }) => end(daemon);

const NAMED = { amp: "&", lt: "<", gt: ">", quot: '"', apos: "'" };
const decode = (text) =>
  text.replace(/&(?:#x(\w+)|(\w+));/g, (_, hex, name) => NAMED[name] ?? String.fromCodePoint(`0x${hex}`));

class Recorder {
  file = join(mkdtempSync(join(tmpdir(), "recorder-")), "state.xml");

  /** Starts it, anew with what it holds; `options` are the simulator's. */
  async start(...options) {
    if (this.child) await end(this.child);
    const own = ["--listen", "127.0.0.1:6000", "--state", this.file];
    this.child = await start(SIMULATOR, [...own, ...options], "listening");
  }
  /** Starts it with the sample's values but these. */
  restart(...options) {
    rmSync(this.file);
    return this.start(...options);
  }
  silence = () => this.child.kill("SIGSTOP");
  wake = () => this.child.kill("SIGCONT");

  /** All attributes by "element.name". */
  get state() {
    const all = {};
    const text = readFileSync(this.file, "utf8").replace(/<[?!].*?>/gs, "");
    for (const [, element, attributes] of text.matchAll(/<(\w+)((?:\s+\w+="[^"]*")*)/g)) {
      for (const [, name, value] of attributes.matchAll(/(\w+)="([^"]*)"/g))
        all[`${element}.${name}`] = decode(value);
    }
    return all;
  }
}

const browsers = new Map();
after(() => Promise.all([...browsers.values()].map((browser) => browser.close())));

/** A browser is started once for each scheme. Nothing moves in it, so that no test sees a thing half way. */
async function browserFor(browser, dark) {
  const key = `${browser} ${dark}`;
  if (browsers.has(key)) return browsers.get(key);
  const userDataDir = mkdtempSync(join(tmpdir(), "browser-"));
  const args = [
    ...[
      "--no-sandbox",
      "--disable-gpu",
      "--disable-quic",
      "--no-first-run",
      "--disable-sync",
      "--lang=en-US",
    ],
    ...["--disable-background-networking", "--disable-component-update", "--force-prefers-reduced-motion"],
    ...["--host-resolver-rules=MAP recorder.example.com 127.0.0.1"],
    `--blink-settings=preferredColorScheme=${dark ? 0 : 1}`,
  ];
  const colours = "layout.css.prefers-color-scheme.content-override";
  const how = {
    chrome: { executablePath: "/usr/bin/chromium", args },
    firefox: {
      executablePath: "/usr/bin/firefox-esr",
      extraPrefsFirefox: { [colours]: dark ? 0 : 1, "ui.prefersReducedMotion": 1 },
    },
  }[browser];
  const env = { ...process.env, TZ: "Asia/Shanghai", HOME: userDataDir };
  browsers.set(key, await puppeteer.launch({ browser, ...how, userDataDir, env }));
  return browsers.get(key);
}

/** What the tests do with a page, in short. Selectors may hold puppeteer's ::-p-text(). */
const tools = (page) => ({
  page,
  click: (selector) => page.locator(selector).click(),
  async fill(selector, text) {
    await page.locator(selector).wait();
    await page.$eval(selector, (input) => (input.focus(), input.select()));
    await page.keyboard.type(text);
  },
  async press(...keys) {
    for (const key of keys) await page.keyboard.press(key);
  },
  value: (selector) => page.$eval(selector, (element) => element.value),
  /** Waits until what the selectors' elements hold or say matches. */
  async says(selector, { source, flags }) {
    const text = (all) => all.map(({ value, innerText }) => value || innerText).join("\n");
    const look = (wanted, pattern, how) => {
      const all = [...document.querySelectorAll(wanted)];
      return new RegExp(pattern, how).test(all.map((each) => each.value || each.innerText).join("\n"));
    };
    await page.waitForFunction(look, {}, selector, source, flags).catch(async () => {
      assert.match(await page.$$eval(selector, text), new RegExp(source, flags), selector);
    });
  },
  async open(place) {
    await page.goto(`${ADDRESS}/#${place}`);
    await page.waitForSelector(`#view[data-section=${place.split("/")[0]}]`);
    await page.waitForFunction(() => !document.querySelector("form .bone, .cards .bone"));
  },
});

/**
 * A test with a recorder, the daemon and a page on a phone, opened `at` a section, in each browser of `names`.
 * It also holds that no script failed and nothing tried to break the policy.
 */
export function inBrowser(title, { names = ["chrome"], options = [], at, language = "EN", dark }, body) {
  const run = async (name) => {
    const recorder = new Recorder();
    await recorder.start(...options);
    const context = await (await browserFor(name, dark)).createBrowserContext();
    const page = await context.newPage();
    const [sent, errors] = [[], []];
    const writes = () => sent.filter((url) => url.includes("/set_"));
    const answer = (dialog) => dialog.accept();
    const rig = { ...tools(page), recorder, daemon: await startDaemon(), context, sent, writes, answer };
    page.on("request", (request) => sent.push(request.url()));
    page.on("dialog", (dialog) => rig.answer(dialog));
    page.on("pageerror", (error) => errors.push(error.stack));
    page.on("console", (message) => {
      if (/Content.Security.Policy/.test(message.text())) errors.push(message.text());
    });
    try {
      await page.setViewport({ width: 360, height: 740 });
      page.setDefaultTimeout(60000);
      if (language)
        await page.evaluateOnNewDocument((code) => location.host && (localStorage.language = code), language);
      if (at) await rig.open(at);
      await body(rig);
      assert.deepEqual(errors, []);
    } finally {
      await context.close();
      await end(rig.daemon);
      await end(recorder.child);
    }
  };
  for (const name of names) test(`${title}, ${name}`, () => run(name));
}
