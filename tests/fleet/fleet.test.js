// SPDX-License-Identifier: GPL-2.0-only
// recorder-fleet as installed from its tarball, against daemons and simulators, and worse.

import assert from "node:assert/strict";
import { execFile } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, readFileSync, writeFileSync } from "node:fs";
import http from "node:http";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { promisify } from "node:util";
import { Depot } from "./depot.js";

const folder = mkdtempSync(join(tmpdir(), "fleet-"));
const path = (name) => join(folder, name);
const content = (name) => readFileSync(path(name), "utf8");
let files = 0;
/** Writes a file and gives its name. */
const file = (text) => (writeFileSync(path(`file-${++files}`), text), `file-${files}`);
/** A settings file with some values of one group alone. */
const change = (id, values) =>
  file(JSON.stringify({ ...JSON.parse(content("new.json")), groups: { [id]: values } }));

/** Runs a shell's line in the folder; resolves to {stdout}, with a `code` if it failed. `meanwhile` gets the child. */
function run(line, meanwhile) {
  const running = promisify(execFile)("bash", ["-c", `exec 2>&1; ${line}`], { cwd: folder });
  meanwhile?.(running.child);
  return running.catch((failed) => failed);
}
const report = () => JSON.parse(content("fleet-report.json")).hosts;

/** Runs the program, which never shows a password, an escape or its own stack. */
async function fleet(line, status, expected, meanwhile) {
  const { stdout, code = 0 } = await run(`exec recorder-fleet ${line}`, meanwhile);
  assert.match(stdout, expected, line);
  assert.equal(code, status, stdout);
  assert.doesNotMatch(stdout + content("fleet-report.json"), /hush|\x1b|\n +at /);
  return stdout;
}

/** Serves what `handler` does, for as long as the tests run. */
async function listen(handler) {
  const server = http.createServer(handler).listen(0, "127.0.0.1").unref();
  await once(server, "listening");
  return `127.0.0.1:${server.address().port}`;
}

let depot;
const NUMBER = "--set=stBaseInfo.strFD_DeviceNo=BUS-";
before(async () => (depot = await Depot.open([9, `${NUMBER}30{n}`], [3, `${NUMBER}31{n}`])));
after(() => depot?.close());

test("the documented example prints what it says", async () => {
  const text = readFileSync("docs/fleet.md", "utf8");
  const examples = [...text.matchAll(/^```sh\n(.*?)^```\n```text\n(.*?)^```/gms)];
  assert.equal(examples.length, 5);
  for (const [, commands, expected] of examples) {
    const shown = (await run(commands)).stdout.replace(/^(status|read|compare|write): .*\n/gm, "");
    assert.equal(shown, expected, commands);
  }
  assert.match(depot.state(11), / strFD_DeviceId="34020000001110000312"/);
  assert.match(depot.state(10), / strFD_DeviceNo="BUS-312"/);
});

test("what is wrong with the command line or a file is told before anything is sent", async () => {
  const good = "backup/127.1.0.1.json";
  const values = (text) => `apply ${good} 127.1.0.1 --values ${file(text)}`;
  const hosts = file("127.1.0.1 # one\n\0\x1b[2J<html>");
  const rows = [
    ["read", /no hosts/],
    ["read 127.0.0.1:0", /no host/],
    ["read 127.0.0.0/8", /more than 4096/],
    [`read -f ${hosts}`, /, line 2: '\\x00\\x1b/],
    ["read -f nowhere", /ENOENT/],
    ["read 127.1.0.1 --jobs 0", /--jobs/],
    ["status 127.1.0.1 --json --csv", /not both/],
    ["status 127.1.0.1 --user depot", /no password/],
    [`read 127.1.0.1 -o ${hosts}/folder`, /ENOTDIR|EEXIST/],
    ["read 127.1.0.1 --report missing/report.json", /missing.*ENOENT/],
    [`diff ${file("\0rubbish")} 127.1.0.1`, /no settings file/],
    [`diff ${file('{"format":"webctrl settings","version":9,"groups":{}}')} 127.1.0.1`, /newer version/],
    [`diff ${good} 127.1.0.1 --only Nothing`, /does not know 'Nothing'/],
    [values("host,strFD_Apm\n127.1.0.1,x"), /'strFD_Apm' is neither/],
    [values("host,strFD_Apn\n127.1.0.1,x\n127.1.0.1,y"), /row 3: .* one row/],
    [values("host,strFD_Apn\n127.1.0.1"), /row 2: 1 cells/],
    [values('host,strFD_Apn\n127.1.0.1,"x'), /[Qq]uote/],
  ];
  for (const [line, expected] of rows)
    assert.doesNotMatch(await fleet(line, 2, expected), /^(read|compare|write): /m, line);
});

test("what belongs to one recorder, what cuts the link, and what would not arrive", async () => {
  const mode = change("NetWModeInfo", { usFD_GPSInterval: "77" });
  const secret = change("GNetInfo", { strFD_UserPasswd: "hush" });
  const wide = change("GNetInfo", { strFD_Apn: "x".repeat(32), strFD_UserPasswd: "hush" });
  const rows = [
    ["diff new.json 127.1.0.2 --only BaseInfo", 0, /nothing differs/],
    ["diff new.json 127.1.0.2 --only BaseInfo.strFD_DeviceNo", 0, /'BUS-302' -> 'BUS-301'/],
    [`apply ${mode} 127.1.0.2`, 1, /network mode left out/],
    [`apply ${mode} 127.1.0.2 --dry-run`, 0, /'10' -> '77'/],
    [`apply ${mode} 127.1.0.2 --yes`, 0, /write: 127.1.0.2: ok/],
    [`apply ${mode} 127.1.0.2 127.1.0.2:80`, 0, /nothing differs/],
    [`apply ${wide} 127.1.0.2`, 1, /-> 'x{32}'[^]*strFD_Apn: Too long/],
    ["read -o backup 127.1.9.8/30", 1, /0 of 2 answered[^]*^0 recorders/m],
    ["read -o backup 127.1.9.9 127.1.9.8/30", 1, /^1 recorder: 0 ok, 1 failed/m],
    [`apply ${secret} 127.1.0.2 127.1.0.2:80`, 1, /the same recorder as 127.1.0.2/],
  ];
  for (const row of rows) await fleet(...row);
  assert.match(content("backup/table.csv"), /BUS-30/);
  assert.match(depot.state(1), /usFD_GPSInterval="77"[^]*strFD_UserPasswd="hush"/);

  const terminal = (answer, host) =>
    run(`printf '${answer}' | script -qec 'recorder-fleet apply ${mode} ${host}' /dev/null`);
  assert.match((await terminal("n\\n", "127.1.0.3")).stdout, /at 1 recorder,.*\[y\/N\].*left out/s);
  assert.match((await terminal("y\\n", "127.1.0.4")).stdout, /write .*1\/1.*1 ok/s);
  assert.doesNotMatch(depot.state(2), /usFD_GPSInterval="77"/);
  assert.match(depot.state(3), /usFD_GPSInterval="77"/);
});

test("Ctrl-C finishes what is being written and tells what was not begun", async () => {
  const late = content("new.json").replace(/("strFD_A(ddress|pn)": ").*?"/g, '$1203.0.113.9"');
  const written = (number) => depot.state(number).includes("203.0.113.9");
  const meanwhile = async (child) => {
    while (child.exitCode === null && !(written(4) && written(5)))
      await new Promise((go) => setTimeout(go, 20));
    child.kill("SIGINT");
  };
  const hosts = depot.hosts.slice(4, 8);
  await fleet(`apply ${file(late)} --jobs 2 ${hosts.join(" ")}`, 1, /2 failed, 2 not begun/, meanwhile);
  const groups = { VCmsInfo: "saved", GNetInfo: "not begun" };
  const told = report().map((host) => host.groups);
  assert.deepEqual(told, [groups, groups, undefined, undefined]);
  assert.deepEqual([4, 5, 6, 7].map(written), [true, true, false, false]);

  let [reading, asked] = [null, 0];
  const version = '{"strFD_AppVersion": "", "result": 1}';
  const host = await listen((_, response) => (asked++ ? reading.kill("SIGINT") : response.end(version)));
  await fleet(`read -o backup ${host}`, 1, /failed, interrupted/, (child) => (reading = child));
  assert.equal(asked, 2);
});

test("recorders that misbehave cost themselves only", async () => {
  const version = { strFD_AppVersion: "A\x1b[31m", result: 1 };
  const says = (answer) => (_, response) => response.end(JSON.stringify(answer));
  const pour = (stream) =>
    stream.write("x".repeat(16384)) ? setTimeout(pour, 0, stream) : stream.once("drain", () => pour(stream));
  const on = (url, one, other) => (asked, answer) => (asked.url === url ? one : other)(asked, answer);
  const known = (then) => on("/get_VersionInfo", says(version), then);
  const away = { Location: `http://${depot.hosts[0]}/get_VersionInfo` };
  const rows = [
    [(_, response) => pour(response), /no recorder/],
    [({ socket }) => pour(socket), /nobody answers/],
    [(_, response) => setInterval(() => response.write(" "), 500).unref(), /nobody answers/],
    [() => {}, /nobody answers/],
    [(_, response) => response.writeHead(302, away).end(JSON.stringify(version)), /no recorder/],
    [(_, response) => response.writeHead(503, { "Retry-After": "1" }).end(), /too busy/],
    [(_, response) => response.writeHead(403).end(), /403/],
    [says({ ...version, strFD_AppVersion: ["x"] }), /^what answers is no recorder/],
    [known(says({ result: 1, strFD_DeviceNo: {} })), /BaseInfo: what answers is no recorder/],
    [known((_, response) => response.destroy()), /not read: .*nobody answers/],
  ];
  const hosts = await Promise.all(rows.map(([handler]) => listen(handler)));
  await depot.add(1, "--drop=1");
  await depot.add(1, "--garbage");
  const [good, , , , silent] = depot.hosts.slice(8);
  rows.push(["silent", /is silent/], ["garbage", /is silent/], ["absent", /nobody answers/]);
  hosts.push(...depot.hosts.slice(-2), "127.1.9.9", good);
  const text = await fleet(`read -o hostile ${hosts.join(" ")} --jobs 20`, 1, /1 ok, 13 failed/);
  rows.forEach(([what, expected], n) => assert.match(report()[n].reason, expected, String(what)));
  // The good one was asked last and waited for none of them.
  assert.ok(text.indexOf(`read: ${good}: ok`) < text.indexOf(`read: ${silent}: failed`), text);

  const forms = { ucFD_AddressType: "0", strFD_Address: "\x1b[2J", usFD_Port: "1e999", result: 1 };
  const liar = await listen(on("/get_VCmsInfo", says(forms), says(version)));
  const kept = /kept strFD_Address at '\\x1b\[2J', usFD_Port at '1e999'/;
  await fleet(`apply new.json ${liar.replace("127.0.0.1", "localhost")} --only VCmsInfo`, 1, kept);
});

test("login and TLS", async () => {
  const address = "127.1.0.16";
  process.env.RECORDER_FLEET_PASSWORD = "ключ:1";
  await run(`openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=depot \
      -addext subjectAltName=IP:${address} -keyout key.pem -out cert.pem
    hash=$(openssl passwd -6 "$RECORDER_FLEET_PASSWORD")
    umask 77; printf "depot:$hash\\nguest:$hash:read\\n" >login`);
  const given = { login: "login", "tls-cert": "cert.pem", "tls-key": "key.pem" };
  depot.daemonOptions = Object.entries(given).flatMap(([option, name]) => [`--${option}`, path(name)]);
  while (!depot.hosts.includes(address)) await depot.add(1);
  const mode = change("NetWModeInfo", { usFD_GPSInterval: "88" });
  const secret = change("GNetInfo", { strFD_UserPasswd: "hush" });
  const rows = [
    [`status --cacert cert.pem --user depot ${address}`, 0, /DEMO/],
    [`status --cacert cert.pem --user depot ${depot.hosts.at(-2)}`, 1, /ALTNAME_INVALID/],
    [`status --cacert cert.pem ${address}`, 1, /login \(401\)/],
    [`status --tls --user depot ${address}`, 1, /SELF_SIGNED/],
    [`read -o guest --cacert cert.pem --user guest ${address}`, 0, /without passwords/],
    [`diff ${mode} --cacert cert.pem --user guest ${address}`, 0, /'10' -> '88'/],
    [`apply ${secret} --cacert cert.pem --user guest ${address}`, 1, /nothing differs[^]*may only read/],
    [`apply ${mode} --yes --cacert cert.pem --user depot ${address}`, 0, /1 ok/],
  ];
  for (const row of rows) await fleet(...row);
  assert.doesNotMatch(content(`guest/${address}.json`), /Passwd|DevicePass/);
});
