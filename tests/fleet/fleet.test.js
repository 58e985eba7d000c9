// SPDX-License-Identifier: GPL-2.0-only
// recorder-fleet as installed from its tarball, against daemons and simulators, and worse.

import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { chmodSync, mkdtempSync, readFileSync, writeFileSync } from "node:fs";
import http from "node:http";
import net from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { Depot } from "./depot.js";

const folder = mkdtempSync(join(tmpdir(), "fleet-"));
const file = (name, text) => {
  writeFileSync(join(folder, name), text);
  return name;
};

/** Runs a shell's line in the folder; resolves to what it printed and its status. `meanwhile` gets the child. */
async function run(line, { meanwhile, ...env } = {}) {
  const child = spawn("bash", ["-c", `exec 2>&1; ${line}`], {
    cwd: folder,
    env: { ...process.env, ...env },
    stdio: ["ignore", "pipe", "inherit"],
  });
  let text = "";
  child.stdout.on("data", (part) => {
    text += part;
  });
  await meanwhile?.(child, () => text);
  const [status] = await once(child, "close");
  return { text, status };
}
const fleet = (line, how) => run(`exec recorder-fleet ${line}`, how);
const report = () => JSON.parse(readFileSync(join(folder, "fleet-report.json"), "utf8"));

// All that tests listen with; a connection that nobody closes would keep the run from ending.
const open = new Set();
async function listen(server) {
  for (const event of ["connection", "secureConnection"]) server.on(event, (socket) => open.add(socket));
  await once(server.listen(0, "127.0.0.1"), "listening");
  open.add(server);
  return `127.0.0.1:${server.address().port}`;
}

let depot;
before(async () => {
  const number = (text) => ["--set", `stBaseInfo.strFD_DeviceNo=${text}`];
  depot = await Depot.open([9, ...number("BUS-30{n}")], [3, ...number("BUS-31{n}")]);
});
after(async () => {
  for (const each of open) each.destroy ? each.destroy() : each.close();
  await depot?.close();
});

test("the documented example prints what it says", async () => {
  const text = readFileSync("docs/fleet.md", "utf8");
  const examples = [...text.matchAll(/^```sh\n(.*?)^```\n```text\n(.*?)^```/gms)];
  assert.equal(examples.length, 5);
  for (const [, commands, expected] of examples) {
    const shown = (await run(commands)).text.replace(/^(status|read|compare|write): .*\n/gm, "");
    assert.equal(shown, expected, commands);
  }
  assert.match(depot.state(11), / strFD_DeviceId="34020000001110000312"/);
  assert.match(depot.state(10), / strFD_DeviceNo="BUS-312"/);
});

test("what is wrong with the command line or a file is told before anything is sent", async () => {
  const good = "backup/127.1.0.1.json";
  const settings = (text) => file("bad.json", text);
  const values = (text) => `apply ${good} 127.1.0.1 --values ${file("bad.csv", text)}`;
  const rows = [
    ["read", /no hosts/],
    ["read 127.0.0.1:0", /no host/],
    ["read 127.1.0", /no host/],
    ["read 127.0.0.0/33", /no host/],
    ["read 127.0.0.0/8", /more than 4096/],
    [`read -f ${file("hosts.txt", "127.1.0.1 # one\n\0\x1b[2J<html>")}`, /hosts.txt, line 2: '\\x00\\x1b/],
    ["read -f nowhere", /ENOENT/],
    ["read 127.1.0.1 --jobs 0", /--jobs/],
    ["status 127.1.0.1 --json --csv", /not both/],
    ["status 127.1.0.1 --user depot", /no password/],
    ["read 127.1.0.1 -o hosts.txt/folder", /ENOTDIR|EEXIST/],
    [() => `diff ${settings("\0rubbish")} 127.1.0.1`, /no settings file/],
    [
      () => `diff ${settings('{"format":"webctrl settings","version":9,"groups":{}}')} 127.1.0.1`,
      /newer version/,
    ],
    [`diff ${good} 127.1.0.1 --only Nothing`, /does not know 'Nothing'/],
    [() => values("host,strFD_Apm\n127.1.0.1,x"), /'strFD_Apm' is neither/],
    [() => values("strFD_Apn\nx"), /one column 'host'/],
    [() => values("host,strFD_Apn\n127.1.0.1,x\n127.1.0.1,y"), /row 3: .* one row/],
    [() => values("host,strFD_Apn\n127.1.0.1"), /row 2: 1 cells/],
    [() => values('host,strFD_Apn\n127.1.0.1,"x'), /[Qq]uote/],
    [() => values("\0\xff,,\n"), /neither/],
  ];
  for (const [line, expected] of rows) {
    const text = typeof line === "string" ? line : line();
    const told = await fleet(text);
    assert.match(told.text, expected, text);
    assert.equal(told.status, 2, text);
    assert.doesNotMatch(told.text, /^(read|compare|write): |\n +at /m, text);
  }
});

test("what belongs to one recorder, what cuts the link, and what would not arrive", async () => {
  const wanted = JSON.parse(readFileSync(join(folder, "new.json"), "utf8"));
  const change = (id, values) => file("wish.json", JSON.stringify({ ...wanted, groups: { [id]: values } }));
  const rows = [
    ["diff new.json 127.1.0.2 --only BaseInfo", 0, /nothing differs/],
    ["diff new.json 127.1.0.2 --only BaseInfo.strFD_DeviceNo", 0, /'BUS-302' -> 'BUS-301'/],
    [
      () => `apply ${change("NetWModeInfo", { usFD_GPSInterval: "77" })} 127.1.0.2`,
      1,
      /network mode left out/,
    ],
    ["apply wish.json 127.1.0.2 --dry-run", 0, /'10' -> '77'/],
    ["apply wish.json 127.1.0.2 --yes", 0, /write: 127.1.0.2: ok/],
    ["apply wish.json 127.1.0.2 127.1.0.2:80", 0, /nothing differs/],
    [
      () => `apply ${change("GNetInfo", { strFD_Apn: "x".repeat(32), strFD_UserPasswd: "hush" })} 127.1.0.2`,
      1,
      /strFD_Apn: Too long/,
    ],
    [
      () => `apply ${change("GNetInfo", { strFD_UserPasswd: "hush" })} 127.1.0.2 127.1.0.2:80`,
      1,
      /the same recorder as 127.1.0.2/,
    ],
  ];
  for (const [line, status, expected] of rows) {
    const told = await fleet(typeof line === "string" ? line : line());
    assert.match(told.text, expected);
    assert.equal(told.status, status, told.text);
    assert.doesNotMatch(told.text + readFileSync(join(folder, "fleet-report.json")), /hush/);
  }
  assert.match(depot.state(1), /strFD_UserPasswd="hush"/);
  assert.match(depot.state(1), /usFD_GPSInterval="77"/);

  const terminal = (answer, host) =>
    run(`printf '${answer}' | script -qec 'recorder-fleet apply mode.json ${host}' /dev/null`);
  file("mode.json", JSON.stringify({ ...wanted, groups: { NetWModeInfo: { usFD_GPSInterval: "88" } } }));
  assert.match((await terminal("n\\n", "127.1.0.3")).text, /at 1 recorder,.*\[y\/N\].*left out/s);
  assert.match((await terminal("y\\n", "127.1.0.4")).text, /write .*1\/1.*1 ok/s);
  assert.deepEqual(
    [2, 3].map((number) => /usFD_GPSInterval="88"/.test(depot.state(number))),
    [false, true],
  );
});

test("Ctrl-C finishes what is being written and tells what was not begun", async () => {
  file(
    "stop.json",
    readFileSync(join(folder, "new.json"), "utf8")
      .replace(/("strFD_Address": ").*?"/, '$1203.0.113.9"')
      .replace(/("strFD_Apn": ").*?"/, '$1late"'),
  );
  const hosts = depot.hosts.slice(4, 8);
  const written = (number) => depot.state(number).includes("203.0.113.9");
  const meanwhile = async (child) => {
    while (!written(4) || !written(5)) await new Promise((go) => setTimeout(go, 20));
    child.kill("SIGINT");
  };
  const { text, status } = await fleet(`apply stop.json --jobs 2 ${hosts.join(" ")}`, { meanwhile });
  assert.equal(status, 1, text);
  const told = Object.fromEntries(
    report().hosts.map(({ host, outcome, groups }) => [host, { outcome, groups }]),
  );
  for (const host of hosts.slice(0, 2))
    assert.deepEqual(told[host], { outcome: "failed", groups: { VCmsInfo: "saved", GNetInfo: "not begun" } });
  for (const host of hosts.slice(2)) assert.equal(told[host].outcome, "not begun");
  assert.deepEqual([4, 5, 6, 7].map(written), [true, true, false, false]);
});

test("recorders that misbehave cost themselves only", async () => {
  const version = { strFD_AppVersion: "A\x1b[31m", result: 1 };
  const says = (answer) => (request, response) => response.end(JSON.stringify(answer));
  const first = (then) => (request, response) =>
    (request.url === "/get_VersionInfo" ? says(version) : then)(request, response);
  const chunk = "x".repeat(16384);
  const pour = (stream) =>
    stream.write(chunk) ? setTimeout(pour, 0, stream) : stream.once("drain", () => pour(stream));
  const rows = [
    [(request, response) => pour(response), /no recorder/],
    [(request, response) => setInterval(() => response.write(" "), 500).unref(), /nobody answers/],
    [
      (request, response) =>
        response
          .writeHead(302, { Location: `http://${depot.hosts[0]}${request.url}` })
          .end(JSON.stringify(version)),
      /no recorder/,
    ],
    [(request, response) => response.writeHead(503, { "Retry-After": "1" }).end(), /too busy/],
    [(request, response) => response.writeHead(403).end(), /403/],
    [(request, response) => response.end("\0".repeat(4096)), /no recorder/],
    [says({ ...version, strFD_AppVersion: ["x"] }), /no recorder/],
    [(request, response) => response.end('{"strFD_AppVersion":"x","result":1e999}'), /no recorder/],
    [
      first(says({ strLanguage: "CN", __proto__: null, result: 1, strFD_DeviceNo: {} })),
      /BaseInfo: what answers is no recorder/,
    ],
    [first((request, response) => response.destroy()), /not read: .*nobody answers/],
  ];
  const servers = rows.map(([handler]) => http.createServer(handler));
  const raw = [(socket) => socket.destroy(), (socket) => pour(socket), () => {}].map((each) =>
    net.createServer((socket) => each(socket.on("error", () => {}))),
  );
  const hosts = await Promise.all([...servers, ...raw].map(listen));
  await depot.add(1, "--drop=1");
  await depot.add(1, "--garbage");
  const good = depot.hosts[8];

  const { text } = await fleet(
    `read -o hostile ${hosts.join(" ")} ${depot.hosts.slice(-2).join(" ")} 127.1.9.9 ${good}`,
  );
  const reasons = new Map(report().hosts.map(({ host, reason }) => [host, reason]));
  rows.forEach(([handler, expected], n) => assert.match(reasons.get(hosts[n]), expected, String(handler)));
  for (const host of hosts.slice(rows.length)) assert.match(reasons.get(host), /nobody answers/);
  for (const host of depot.hosts.slice(-2)) assert.match(reasons.get(host), /is silent/);
  assert.match(reasons.get("127.1.9.9"), /nobody answers/);
  assert.equal(reasons.get(good), undefined, text);

  const forms = { ucFD_AddressType: "0", strFD_Address: "\x1b[2J", usFD_Port: "1e999", result: 1 };
  const liar = await listen(
    http.createServer((request, response) =>
      says(/VCms/.test(request.url) ? forms : version)(request, response),
    ),
  );
  const kept = (await fleet(`apply new.json ${liar.replace("127.0.0.1", "localhost")} --only VCmsInfo`)).text;
  assert.match(kept, /kept strFD_Address at '\\x1b\[2J', usFD_Port at '1e999'/);
  assert.doesNotMatch(text + kept, /\x1b/);
});

test("login and TLS", async () => {
  const address = "127.1.0.16";
  const subject = ["-subj", "/CN=depot", "-addext", `subjectAltName=IP:${address}`];
  const files = ["-keyout", "key.pem", "-out", "cert.pem"];
  const kind = ["-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes"];
  const openssl = (...args) =>
    execFileSync("openssl", args, { cwd: folder, encoding: "utf8", stdio: ["ignore", "pipe", "ignore"] });
  openssl("req", ...kind, ...files, ...subject);
  const hash = openssl("passwd", "-6", "ключ:1").trim();
  file("login", `depot:${hash}\nguest:${hash}:read\n`);
  chmodSync(join(folder, "login"), 0o600);
  const path = (name) => join(folder, name);
  depot.daemonOptions = [
    "--login",
    path("login"),
    "--tls-cert",
    path("cert.pem"),
    "--tls-key",
    path("key.pem"),
  ];
  while (!depot.hosts.includes(address)) await depot.add(1);
  const rows = [
    ["status --cacert cert.pem --user depot", "ключ:1", 0, /BUS-/],
    ["status --cacert cert.pem", "", 1, /login \(401\)/],
    ["status --tls --user depot", "ключ:1", 1, /SELF_SIGNED/],
    ["read -o guest --cacert cert.pem --user guest", "ключ:1", 0, /without passwords/],
    ["diff mode.json --cacert cert.pem --user guest", "ключ:1", 0, /'10' -> '88'/],
    ["apply mode.json --yes --cacert cert.pem --user guest", "ключ:1", 1, /may only read/],
    ["apply mode.json --yes --cacert cert.pem --user depot", "ключ:1", 0, /1 ok/],
    ["status --cacert cert.pem --user depot", "wrong", 1, /login \(401\)/],
  ];
  for (const [line, RECORDER_FLEET_PASSWORD, status, expected] of rows) {
    const told = await fleet(`${line} ${address}`, { RECORDER_FLEET_PASSWORD });
    assert.match(told.text, expected);
    assert.equal(told.status, status, told.text);
  }
  assert.doesNotMatch(readFileSync(join(folder, "guest", `${address}.json`), "utf8"), /Passwd|DevicePass/);
});
