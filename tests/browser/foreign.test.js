// SPDX-License-Identifier: GPL-2.0-only
// Pages of another site, on this machine as well so that the browser itself hinders nothing: whatever
// they make it send, no setting is written. Programs that are no browsers write as ever.

import assert from "node:assert/strict";
import { execFile } from "node:child_process";
import { once } from "node:events";
import { createServer } from "node:http";
import { after, test } from "node:test";
import { setTimeout as pause } from "node:timers/promises";
import { promisify } from "node:util";
import { ADDRESS, closeBrowsers, withPage } from "./rig.js";

after(closeBrowsers);

const TARGET = `${ADDRESS}/set_WifiInfo`;
const SITE = "http://localhost:9090";

// What the foreign page holds, or runs.
const PAGES = [
  `<img src="${TARGET}">`,
  `<script src="${TARGET}"></script>`,
  `<link rel="stylesheet" href="${TARGET}">`,
  `<iframe src="${TARGET}"></iframe>`,
  `<iframe sandbox="allow-forms allow-scripts" srcdoc="<form method=post action=${TARGET}></form>
    <script>document.forms[0].submit()</script>"></iframe>`,
  `<meta http-equiv="refresh" content="0;url=${TARGET}">`,
  `<form action="${TARGET}"></form><script>document.forms[0].submit()</script>`,
  `<form method="post" action="${TARGET}"><input name="ucFD_WorkMode" value="0"></form>
    <script>document.forms[0].submit()</script>`,
  `<form method="post" enctype="text/plain" action="${TARGET}"></form><script>document.forms[0].submit()</script>`,
  `<a rel="noreferrer" href="${TARGET}">x</a><script>document.links[0].click()</script>`,
  `<script>location = "${TARGET}"</script>`,
  `<script>fetch("${TARGET}", { mode: "no-cors" })</script>`,
  `<script>fetch("${TARGET}", { mode: "no-cors", method: "POST", body: "ucFD_WorkMode=0" })</script>`,
  `<script>navigator.sendBeacon("${TARGET}", "ucFD_WorkMode=0")</script>`,
];

const TOOLS = [
  ["curl", "-s", TARGET],
  ["curl", "-s", "-d", "ucFD_WorkMode=0", TARGET],
  ["wget", "-qO-", TARGET],
  ["busybox", "wget", "-qO-", TARGET],
  ["python3", "-c", `import urllib.request as u; print(u.urlopen("${TARGET}").read())`],
];

/** The text that a child prints from now on, by a function. */
function printed(child) {
  let text = "";
  child.stdout.on("data", (piece) => (text += piece));
  return () => text;
}

const count = (text, part) => text.split(part).length - 1;

test("no other site's page writes, and tools do", () =>
  withPage({ recorderArgs: ["--verbose"], language: "" }, async ({ page, recorder, daemon }) => {
    const log = printed(daemon);
    const datagrams = printed(recorder.child);
    let [html, policy] = [];
    const site = createServer((_, response) =>
      response.writeHead(200, { "Content-Type": "text/html", "Referrer-Policy": policy }).end(html),
    ).listen(9090);
    await once(site, "listening");
    try {
      for (policy of ["unsafe-url", "no-referrer"]) {
        for (html of PAGES) {
          const refused = count(log(), "DoHttpRequest, refused");
          await page.goto(SITE).catch(() => {}); // the page may lead on before it is there
          for (let left = 100; count(log(), "DoHttpRequest, refused") === refused; --left) {
            assert.ok(left, `${policy}: not refused, or not sent: ${html}`);
            await pause(50);
          }
        }
      }
      assert.equal(datagrams(), "");
      for (const [sent, [program, ...args]] of TOOLS.entries()) {
        const { stdout } = await promisify(execFile)(program, args);
        assert.match(stdout, /"result": 1 /, program);
        assert.equal(count(datagrams(), 'DEVICE_SET"><stWifi'), sent + 1, program);
      }
    } finally {
      site.close();
      site.closeAllConnections();
    }
  }));
