// SPDX-License-Identifier: GPL-2.0-only
// The real daemon and the simulator as child processes, a real browser, and the recorder's state.
// run gives this a network namespace of its own, so the ports are fixed.

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, readFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { chromium } from "playwright-core";

const { BUILD_DIR, WEB_ROOT } = process.env;
export const ADDRESS = "http://127.0.0.1:8080";

/** Starts a program and resolves when it has printed `ready`. */
async function start(program, args, ready) {
  const child = spawn(join(BUILD_DIR, program), args, { stdio: ["ignore", "pipe", "ignore"] });
  const over = once(child, "exit").then(() => { throw new Error(`${program} ended`); });
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

export const startDaemon = () => start("CBB/WebCtrl/webctrl", ["--port", "8080", "--web-root", WEB_ROOT], "Starting web server");

const decode = (text) => text.replace(/&(?:#x([0-9a-f]+)|#(\d+)|(\w+));/gi, (_, hex, decimal, name) =>
  name ? { amp: "&", lt: "<", gt: ">", quot: '"', apos: "'" }[name] : String.fromCodePoint(parseInt(hex ?? decimal, hex ? 16 : 10)));

export class Recorder {
  file = join(mkdtempSync(join(tmpdir(), "recorder-")), "state.xml");

  async start(...args) {
    if (this.child) await end(this.child);
    this.child = await start("tools/recorder_sim/recorder_sim", ["--listen", "127.0.0.1:6000", "--state", this.file, ...args], "listening");
  }

  silence() { this.child.kill("SIGSTOP"); }
  wake() { this.child.kill("SIGCONT"); }

  /** All attributes by "element.name". */
  get state() {
    const all = {};
    const text = readFileSync(this.file, "utf8").replace(/<[?!].*?>/gs, "");
    for (const [, element, attributes] of text.matchAll(/<(\w+)((?:\s+\w+="[^"]*")*)/g)) {
      for (const [, name, value] of attributes.matchAll(/(\w+)="([^"]*)"/g)) all[`${element}.${name}`] = decode(value);
    }
    return all;
  }
}

let browser;
const browserArgs = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
  "--disable-background-networking", "--disable-component-update", "--disable-sync",
  "--host-resolver-rules=MAP recorder.example.com 127.0.0.1"];

export const closeBrowser = () => browser?.close();

/** Counts what the page sends: {all, open, most} with `most` the API requests that were ever open at once. */
function watch(page) {
  const traffic = { all: [], open: new Set(), most: 0, errors: [] };
  const isApi = (request) => /\/[gs]et_/.test(request.url());
  page.on("request", (request) => {
    traffic.all.push(request);
    if (request.isNavigationRequest()) traffic.open.clear(); // what the former page asked for is given up
    if (isApi(request)) traffic.open.add(request);
    traffic.most = Math.max(traffic.most, traffic.open.size);
  });
  for (const event of ["requestfinished", "requestfailed"]) page.on(event, (request) => traffic.open.delete(request));
  page.on("pageerror", (error) => traffic.errors.push(error.stack));
  page.on("console", (message) => /Content Security Policy/.test(message.text()) && traffic.errors.push(message.text()));
  return traffic;
}

/**
 * Runs `body` with a recorder, the daemon and a page on a phone; stops them all afterwards and checks
 * that no script failed, nothing tried to break the policy and no two requests were open at once.
 */
export async function withPage({ recorderArgs = [], hash = "", language = "EN", ...context }, body) {
  const recorder = new Recorder();
  await recorder.start(...recorderArgs);
  const rig = { recorder, daemon: await startDaemon() };
  browser ??= await chromium.launch({ executablePath: "/usr/bin/chromium", args: browserArgs });
  const tab = await browser.newContext({ viewport: { width: 360, height: 740 }, locale: "en-US", timezoneId: "Asia/Shanghai", ...context });
  try {
    if (language) await tab.addInitScript((code) => localStorage.setItem("language", code), language);
    rig.page = await tab.newPage();
    rig.page.setDefaultTimeout(15000);
    rig.traffic = watch(rig.page);
    rig.open = async (section) => {
      await rig.page.goto(`${ADDRESS}/#${section}`);
      await rig.page.waitForSelector(`#view[data-section=${section.split("/")[0]}]`);
      await rig.page.waitForFunction(() => [...document.querySelectorAll("form")].every((form) => form.querySelector(".row")));
    };
    if (hash) await rig.open(hash);
    await body(rig);
    assert.deepEqual(rig.traffic.errors, []);
    assert.ok(rig.traffic.most <= 1, `${rig.traffic.most} API requests at once`);
  } finally {
    await tab.close();
    await end(rig.daemon);
    await end(recorder.child);
  }
}

export const stopDaemon = (rig) => end(rig.daemon);
