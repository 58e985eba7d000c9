// SPDX-License-Identifier: GPL-2.0-only
// Pages of another site, on this machine as well so that the browser itself hinders nothing: whatever
// they make it send, no setting is written. Programs that are no browsers write as ever.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { createServer } from "node:http";
import { setTimeout as pause } from "node:timers/promises";
import { ADDRESS, daemon, inBrowser, page, recorder, says } from "./rig.js";

const TARGET = `${ADDRESS}/set_WifiInfo`;
const form = (attributes, fields = "") =>
  `<form action="${TARGET}" ${attributes}>${fields}</form><script>document.forms[0].submit()</script>`;

// What the foreign page holds, or runs.
const PAGES = [
  `<img src="${TARGET}">`,
  `<iframe src="${TARGET}"></iframe>`,
  `<iframe sandbox="allow-forms allow-scripts" srcdoc='${form("method=post")}'></iframe>`,
  `<meta http-equiv="refresh" content="0;url=${TARGET}">`,
  form(""),
  form("method=post", '<input name="ucFD_WorkMode" value="0">'),
  `<script>fetch("${TARGET}", { mode: "no-cors" })</script>`,
  `<script>fetch("${TARGET}", { mode: "no-cors", method: "POST", body: "ucFD_WorkMode=0" })</script>`,
  `<script>navigator.sendBeacon("${TARGET}", "ucFD_WorkMode=0")</script>`,
];

const TOOLS = [
  "curl -s",
  "wget -qO-",
  "busybox wget -qO-",
  'python3 -c "import sys, urllib.request as u; print(u.urlopen(sys.argv[1]).read())"',
];

/** Counts how often a child prints a text from now on. */
function counter({ stdout }, text) {
  let all = "";
  stdout.on("data", (part) => (all += part));
  return () => all.split(text).length - 1;
}

inBrowser("no other site's page writes, and tools do", { options: ["--verbose"] }, async () => {
  const refused = counter(daemon, "DoHttpRequest, refused");
  const written = counter(recorder.child, 'DEVICE_SET"><stWifi');
  let [html, policy] = [];
  const site = createServer((_, response) =>
    response.writeHead(200, { "Content-Type": "text/html", "Referrer-Policy": policy }).end(html),
  ).listen(9090);
  try {
    for (policy of ["unsafe-url", "no-referrer"]) {
      for (html of PAGES) {
        const before = refused();
        await page.goto("http://localhost:9090").catch(() => {}); // the page may lead on before it is there
        while (refused() === before) await pause(20);
      }
    }
    assert.equal(written(), 0);
    for (const [sent, tool] of TOOLS.entries()) {
      assert.match(execFileSync("sh", ["-c", `${tool} ${TARGET}`]).toString(), /"result": 1 /, tool);
      while (written() <= sent) await pause(20);
    }
    assert.equal(written(), TOOLS.length);
    await page.goto("http://recorder.example.com:8080/"); // by such a name the page itself is another site's
    await says("#banner", /use its IP address/);
  } finally {
    site.closeAllConnections(site.close());
  }
});
