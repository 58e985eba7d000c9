// SPDX-License-Identifier: GPL-2.0-only
// The real daemon and the simulator as child processes, a real browser, and the recorder's state.
// run gives this a network namespace of its own, so the ports are fixed.

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, readFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import puppeteer from "puppeteer-core";

const { BUILD_DIR, WEB_ROOT } = process.env;
export const ADDRESS = "http://127.0.0.1:8080";

/** Starts a program and resolves when it has printed `ready`. */
async function start(program, args, ready) {
  const child = spawn(join(BUILD_DIR, program), args, { stdio: ["ignore", "pipe", "ignore"] });
  const over = once(child, "exit").then(() => {
    throw new Error(`${program} ended`);
  });
  for (let text = ""; !text.includes(ready);) text += await Promise.race([once(child.stdout, "data"), over]);
  over.catch(() => {}); // from now on it may
  child.stdout.resume();
  return child;
}

async function end(child) {
  if (child.exitCode !== null || child.signalCode !== null) return;
  child.kill("SIGCONT");
  child.kill("SIGTERM");
  await once(child, "exit");
}

export const startDaemon = () =>
  start("CBB/WebCtrl/webctrl", ["--port", "8080", "--web-root", WEB_ROOT], "Starting web server");

const decode = (text) =>
  text.replace(/&(?:#x([0-9a-f]+)|#(\d+)|(\w+));/gi, (_, hex, decimal, name) =>
    name
      ? { amp: "&", lt: "<", gt: ">", quot: '"', apos: "'" }[name]
      : String.fromCodePoint(parseInt(hex ?? decimal, hex ? 16 : 10)),
  );

export class Recorder {
  file = join(mkdtempSync(join(tmpdir(), "recorder-")), "state.xml");

  async start(...args) {
    if (this.child) await end(this.child);
    this.child = await start(
      "tools/recorder_sim/recorder_sim",
      ["--listen", "127.0.0.1:6000", "--state", this.file, ...args],
      "listening",
    );
  }

  silence() {
    this.child.kill("SIGSTOP");
  }
  wake() {
    this.child.kill("SIGCONT");
  }

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

const chrome = {
  executablePath: "/usr/bin/chromium",
  args: [
    ...["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run"],
    ...["--disable-background-networking", "--disable-component-update", "--disable-sync", "--lang=en-US"],
    "--host-resolver-rules=MAP recorder.example.com 127.0.0.1",
  ],
};
const firefox = { browser: "firefox", executablePath: "/usr/bin/firefox-esr", headless: true };
const DARK = { "layout.css.prefers-color-scheme.content-override": 0 };

const browsers = new Map();

/** A browser is started once for each way it has to be: Firefox takes its scheme at the start. */
async function browserFor(name, dark) {
  const key = `${name} ${name === "firefox" && dark}`;
  const userDataDir = mkdtempSync(join(tmpdir(), "browser-"));
  const options = name === "firefox" ? { ...firefox, extraPrefsFirefox: dark ? DARK : {} } : chrome;
  const env = { ...process.env, TZ: "Asia/Shanghai", HOME: userDataDir };
  if (!browsers.has(key)) browsers.set(key, await puppeteer.launch({ ...options, userDataDir, env }));
  return browsers.get(key);
}

export const closeBrowsers = () => Promise.all([...browsers.values()].map((browser) => browser.close()));

/** What the page sends, and what it should not say: {all, errors}. */
function watch(page) {
  const traffic = { all: [], errors: [] };
  page.on("request", (request) => traffic.all.push(request));
  page.on("pageerror", (error) => traffic.errors.push(error.stack));
  page.on("console", (message) => {
    if (/Content.Security.Policy/.test(message.text())) traffic.errors.push(message.text());
  });
  return traffic;
}

/** What the tests do with a page, in short. Selectors may hold puppeteer's ::-p-text(). */
const tools = (page, name) => ({
  page,
  click: (selector) => page.locator(selector).click(),
  press: (...keys) =>
    keys.reduce((before, key) => before.then(() => page.keyboard.press(key)), Promise.resolve()),
  async fill(selector, value) {
    await page.locator(selector).wait();
    await page.$eval(selector, (input) => (input.focus(), input.select()));
    await page.keyboard[name === "chrome" ? "sendCharacter" : "type"](value);
  },
  value: (selector) => page.$eval(selector, (element) => element.value),
  holds: (selector, value) =>
    page.waitForFunction((id, wanted) => document.querySelector(id)?.value === wanted, {}, selector, value),
  text: (selector = "body") => page.$eval(selector, (element) => element.innerText),
  /** Waits until the selector's text matches, and gives it. */
  async says(selector, pattern) {
    const look = (wanted, source, flags) => {
      const text = [...document.querySelectorAll(wanted)].map((element) => element.innerText).join("\n");
      return new RegExp(source, flags).test(text) && (text || " ");
    };
    try {
      return await (
        await page.waitForFunction(look, {}, selector, pattern.source, pattern.flags)
      ).jsonValue();
    } catch {
      const found = await page.$$eval(selector, (all) => all.map((element) => element.innerText));
      throw new Error(`${selector} says ${JSON.stringify(found)}, not ${pattern}`);
    }
  },
});

/**
 * Runs `body` with a recorder, the daemon and a page on a phone; stops them all afterwards and checks
 * that no script failed and nothing tried to break the policy.
 */
export async function withPage(
  { recorderArgs = [], hash = "", language = "EN", name = "chrome", dark },
  body,
) {
  const recorder = new Recorder();
  await recorder.start(...recorderArgs);
  const browser = await browserFor(name, dark);
  const context = await browser.createBrowserContext();
  const page = await context.newPage();
  const rig = { ...tools(page, name), recorder, daemon: await startDaemon(), context, traffic: watch(page) };
  try {
    await page.setViewport({ width: 360, height: 740 });
    page.setDefaultTimeout(60000);
    rig.dialogs = [];
    page.on("dialog", (dialog) => {
      rig.dialogs.push(dialog.type());
      dialog[rig.stay ? "dismiss" : "accept"]();
    });
    if (name === "chrome") {
      const features = {
        "prefers-color-scheme": dark ? "dark" : "light",
        "prefers-reduced-motion": "reduce",
      };
      await page.emulateMediaFeatures(Object.entries(features).map(([key, value]) => ({ name: key, value })));
    }
    if (language)
      await page.evaluateOnNewDocument((code) => location.host && (localStorage.language = code), language);
    rig.open = async (section) => {
      await page.goto(`${ADDRESS}/#${section}`);
      await page.waitForSelector(`#view[data-section=${section.split("/")[0]}]`);
      const drawn = () =>
        ![...document.querySelectorAll("form, .cards")].some((card) => card.querySelector(".bone"));
      await page.waitForFunction(drawn);
    };
    if (hash) await rig.open(hash);
    await body(rig);
    assert.deepEqual(rig.traffic.errors, []);
  } finally {
    await context.close();
    await end(rig.daemon);
    await end(recorder.child);
  }
}

export const stopDaemon = (rig) => end(rig.daemon);
