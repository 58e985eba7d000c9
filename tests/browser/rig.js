// SPDX-License-Identifier: GPL-2.0-only
// The real daemon and the simulator as child processes, a real browser, and the recorder's state.
// run gives this a network namespace of its own, so the ports are fixed.

import assert from "node:assert/strict";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { after, test } from "node:test";
import puppeteer from "puppeteer-core";
import { DAEMON, end, SIMULATOR, start } from "../fleet/depot.js";

export const ADDRESS = "http://127.0.0.1:8080";
const FIREFOX_SCHEME = "layout.css.prefers-color-scheme.content-override";
export const BOTH = ["chrome", "firefox"];

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

const browsers = {};
after(() => Promise.all(Object.values(browsers).map((browser) => browser.close())));

/** A browser is started once for each scheme. Nothing moves in it, so that no test sees a thing half way. */
async function browserFor(browser, dark) {
  const scheme = dark ? 0 : 1;
  const chrome = ["--no-sandbox", "--disable-gpu", "--lang=en-US", "--force-prefers-reduced-motion"];
  const names = "--host-resolver-rules=MAP recorder.example.com 127.0.0.1";
  const how = {
    args: browser === "chrome" ? [...chrome, names, `--blink-settings=preferredColorScheme=${scheme}`] : [],
    extraPrefsFirefox: { [FIREFOX_SCHEME]: scheme, "ui.prefersReducedMotion": 1 },
    executablePath: { chrome: "/usr/bin/chromium", firefox: "/usr/bin/firefox-esr" }[browser],
    env: { ...process.env, TZ: "Asia/Shanghai", HOME: tmpdir() },
  };
  return (browsers[`${browser} ${dark}`] ??= await puppeteer.launch({ browser, ...how }));
}

// What the running test has; the tests of a file run one after the other.
export let page, recorder, daemon;
/** The addresses of all that the page has asked for; those of writes. */
export let sent;
export const writes = () => sent.filter((url) => url.includes("/set_"));
export async function startDaemon() {
  daemon = await start(DAEMON, ["--port", "8080", "--web-root", process.env.WEB_ROOT], "Starting web server");
}
export const stopDaemon = () => end(daemon);

// Selectors may hold puppeteer's ::-p-text().
export const click = (selector) => page.locator(selector).click();
export const held = (selector) => page.$eval(selector, (element) => element.value);
export const press = (key) => page.keyboard.press(key);

export async function fill(selector, text) {
  await page.locator(selector).wait();
  await page.$eval(selector, (input) => (input.focus(), input.select()));
  await page.keyboard.type(text);
}

/** Waits until what the selectors' elements hold or say matches. */
export async function says(selector, pattern) {
  const text = (wanted) =>
    [...document.querySelectorAll(wanted)].map((each) => each.value || each.innerText).join("\n");
  await page
    .waitForFunction(`${pattern}.test((${text})(${JSON.stringify(selector)}))`)
    .catch(async () => assert.match(await page.evaluate(text, selector), pattern, selector));
}

export const [submit, go] = [(id) => `#${id} button[type=submit]`, "dialog .primary"];

/** Saves a form, answers a question if there is one, and waits for what is told. */
export async function saveForm(id, told) {
  await click(submit(id));
  await page.waitForSelector(`dialog, #${id} .result:not(:empty)`);
  if (await page.$("dialog")) await click(go);
  await says(`#${id} .result`, told);
}

export async function open(place) {
  await page.goto(`${ADDRESS}/#${place}`);
  await page.waitForSelector(`#view[data-section=${place.split("/")[0]}]`);
  await page.waitForFunction(() => !document.querySelector("form .bone, .cards .bone"));
}

/**
 * A test with a recorder, the daemon and a page on a phone, opened `at` a section, in each browser of `names`.
 * It also holds that no script failed and nothing tried to break the policy.
 */
export function inBrowser(title, { names = ["chrome"], options = [], at, language = "EN", dark }, body) {
  const run = async (name) => {
    recorder = new Recorder();
    await recorder.start(...options);
    await startDaemon();
    const downloadBehavior = { policy: "allow", downloadPath: dirname(recorder.file) };
    const context = await (await browserFor(name, dark)).createBrowserContext({ downloadBehavior });
    page = await context.newPage();
    sent = [];
    const errors = [];
    page.on("request", (request) => sent.push(request.url()));
    page.on("dialog", (dialog) => dialog.accept());
    page.on("pageerror", (error) => errors.push(error.stack));
    page.on("console", (said) => /Content.Security.Policy/.test(said.text()) && errors.push(said.text()));
    try {
      await page.setViewport({ width: 360, height: 740 });
      page.setDefaultTimeout(60000);
      if (language)
        await page.evaluateOnNewDocument((code) => location.host && (localStorage.language = code), language);
      if (at) await open(at);
      await body();
      assert.deepEqual(errors, []);
    } finally {
      await Promise.all([context.close(), end(daemon), end(recorder.child)]);
    }
  };
  // What nobody else ends after a minute of waiting.
  for (const name of names) test(`${title}, ${name}`, { timeout: 600000 }, () => run(name));
}
