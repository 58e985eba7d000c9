// SPDX-License-Identifier: GPL-2.0-only
// The modules without a document, against a recorder in memory: what is sent, in which order, and what is told.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { identify, readStatus, requester, sameRecorder, statusPlaces } from "../../web_root/api.js";
import { save } from "../../web_root/exchange.js";
import { difference, fileOf, parseFile, writeOrder } from "../../web_root/file.js";
import { checkNames } from "../../web_root/names.js";
import { groups } from "../../web_root/schema.js";
import { doubts, OWN_TIME, problem } from "../../web_root/settings.js";

process.env.TZ = "Asia/Shanghai";
const group = (name) => groups.find(({ id }) => id === `${name}Info`);
const valuesOf = (name, ...values) =>
  Object.fromEntries(group(name).fields.map((field, n) => [field.name, values[n] ?? ""]));
const START = {
  GNet: valuesOf("GNet", "6", "net", "*99#", "u", "p"),
  Wifi: valuesOf("Wifi", "1", "Depot", "gate-seven", "3", "2", "1"),
  Mirror: valuesOf("Mirror", "1", "0"),
  Base: valuesOf("Base", "BUS-1", "8", "1", "2026-03-14 15:09:26"),
  GB28181: valuesOf("GB28181", "1", "1", "", "1", "", "", "1", "", "", "", "", "*L1*", "2"),
};

/** A recorder behind a fetch: `on(path, n, values)` may answer the nth request of a path otherwise. */
function recorder(on = () => undefined) {
  const state = structuredClone(START);
  const log = [];
  let open = 0;
  const fetchLike = async (path, { body }) => {
    assert.equal((open += 1), 1, "two requests at once");
    log.push(path);
    const [, verb, name] = path.match(/^\/(get|set)_(\w+?)(?:Info)?$/);
    const held = state[name];
    const told = on(path, log.filter((one) => one === path).length, held);
    if (told instanceof Error) throw ((open -= 1), told);
    if (!told && verb === "set") Object.assign(held, Object.fromEntries(body));
    if (body && held.strFD_LensId) held.strFD_LensId = "*L1*"; // one comes back, whatever is sent
    const usual = { ...(verb === "get" && held), result: 1 };
    const [answer, status = 200, headers] = [told || usual].flat();
    const text = async () => ((open -= 1), typeof answer === "string" ? answer : JSON.stringify(answer));
    return { status, headers: new Headers(headers), text };
  };
  return { state, log, request: requester(fetchLike) };
}

const [GET, SET, GET2] = ["/get_GNetInfo 1", "/set_GNetInfo 1", "/get_GNetInfo 2"];
const SILENT = { ...valuesOf("GNet"), result: 0 };
const EMPTY = { ...valuesOf("GNet", "0"), result: 1 };
const BUSY = ["", 503, { "Retry-After": "0" }];
const once = (place, answer) => ({ on: (path, n) => place === `${path} ${n}` && answer });
const always = (answer) => ({ on: (path) => /get/.test(path) && answer });
const moved = (to) => ({ on: (path, n, held) => /get.*1$/.test(path + n) && void Object.assign(held, to) });

const [APN, THEIRS, PHONE] = [{ strFD_Apn: "a" }, { strFD_Apn: "b" }, { strFD_PhoneNo: "1" }];
const [SSID, MODE1, MODE2] = [{ strFD_SSID: "a" }, { ucFD_WorkMode: "1" }, { ucFD_WorkMode: "2" }];
const [OFF, STREAM] = [{ ucFD_GB28181Enable: "0" }, { ucFD_StreamType: "0" }];

// What a save tells, and what the recorder holds in the end; START has been seen unless given otherwise.
const SAVES = [
  ["only the edit changes", "GNet", APN, moved(PHONE), "saved", { ...APN, ...PHONE, strFD_UserPasswd: "p" }],
  ["both changed: a question", "GNet", APN, moved(THEIRS), "conflict", THEIRS],
  ["both changed alike", "GNet", APN, moved(APN), "same", APN],
  ["nothing seen: laid over", "GNet", APN, { seen: null, ...moved(THEIRS) }, "saved", APN],
  ["the mode was changed", "Wifi", SSID, moved(MODE2), "conflict", MODE2],
  ["a locked name", "Wifi", { ...MODE2, ...SSID }, {}, "invalid", START.Wifi],
  ["to the other network, unseen", "Wifi", MODE1, { seen: null, ...moved(MODE2) }, "invalid", MODE2],
  ["too large", "GNet", { ucFD_NetType: "256" }, {}, "invalid", START.GNet],
  ["too short", "Base", { strFD_DeviceNo: "1234" }, {}, "invalid", START.Base],
  ["a damaged answer, once", "GNet", APN, once(GET, { result: 1 }), "saved", APN],
  ["a damaged answer, twice", "GNet", APN, always({ result: 1 }), "unread odd", START.GNet],
  ["suddenly empty", "GNet", APN, always(EMPTY), "unread empty", START.GNet],
  ["zeros are values", "Mirror", { strFD_UpDown: "1" }, moved({ strFD_LeftRight: "0" }), "saved", {}],
  ["gone at the write", "GNet", APN, once(SET, new Error()), "unsure gone", START.GNet],
  ["silent after", "GNet", APN, once(GET2, SILENT), "unsure silent", APN],
  ["may not write", "GNet", APN, once(SET, ["no", 403]), "denied refused", START.GNet],
  ["login ended", "GNet", APN, once(SET, ["no", 401]), "denied login", START.GNet],
  ["busy, then not", "GNet", APN, once(SET, BUSY), "saved", APN],
  ["away at the moment of sending", "GNet", APN, { mayWrite: () => false }, "held", START.GNet],
  ["the stream needs registration", "GB28181", OFF, {}, "saved", STREAM],
  ["a stream without it", "GB28181", { ...OFF, ucFD_StreamType: "1" }, {}, "kept", STREAM],
  ["channels unknown", "GB28181", { strFD_ServerIp: "a" }, moved({ iVideoChnCount: "0" }), "invalid", {}],
];

for (const [name, id, edits, { seen = START[id], on, mayWrite }, told, held] of SAVES) {
  test(`save: ${name}`, async () => {
    const { state, log, request } = recorder(on);
    const shown = seen ? { ...seen, ...(seen.strFD_LensId && { strFD_LensId: "L1" }) } : undefined;
    const asked = (path, how) => (assert.ok(how.urgent, path), request(path, how));
    const result = await save(asked, group(id), edits, { seen: shown, mayWrite });
    assert.equal([result.outcome, result.trouble].filter(Boolean).join(" "), told);
    assert.deepEqual({ ...state[id], ...held }, state[id]);
    const sent = log.some((path) => path.includes("/set_"));
    assert.equal(sent, !/conflict|same|invalid|unread|held/.test(told));
    if (sent) assert.match(log[0], /get_/);
  });
}

test("a group that cannot be read is written only when every field is chosen; clocks run on", async (t) => {
  const base = group("Base");
  const { request, log, state } = recorder((path) => /get_B/.test(path) && { ...START.Base, result: 0 });
  const edits = { strFD_DeviceNo: "BUS-2", ucFD_TimeZone: "8", ucFD_GpsSTFlag: "0" };
  assert.equal((await save(request, base, edits)).outcome, "unread");
  assert.ok(!log.includes("/set_BaseInfo"));
  await save(request, base, { ...edits, strFD_CurTime: "2030-01-01 00:00:00" });
  assert.equal(state.Base.strFD_CurTime, "2030-01-01 00:00:00");

  const other = recorder();
  const clock = () => other.state.Base.strFD_CurTime;
  const mayWrite = () => t.mock.method(Date, "now", () => later); // it takes a while to be sent
  const later = Date.now() + 600000;
  const { outcome } = await save(other.request, base, { ucFD_TimeZone: "9" }, { seen: START.Base, mayWrite });
  assert.equal(outcome, "saved");
  assert.match(clock(), /^2026-03-14 15:19:/);
  await save(other.request, base, { strFD_CurTime: OWN_TIME }, { seen: START.Base });
  assert.equal(Date.parse(`${clock()} GMT+8`), later - (later % 1000));
});

test("requests: one at a time, urgent ones first, what nobody waits for leaves; a reading login", async () => {
  let open;
  const gate = new Promise((go) => (open = go));
  const sent = [];
  const headers = new Headers({ "Webctrl-Access": "read" });
  const request = requester(async (path) => {
    sent.push(path);
    await gate;
    return { status: 200, headers, text: async () => '{"result": 1}' };
  });
  const leave = new AbortController();
  const [a, b, c] = [request("a"), request("b", { signal: leave.signal }), request("c")];
  const urgent = [request("w", { urgent: true, form: () => [] }), request("x", { urgent: true })];
  leave.abort();
  assert.deepEqual(await b, { trouble: "dropped" });
  open();
  assert.deepEqual(await a, { answer: { result: 1 }, reader: true });
  await Promise.all([c, ...urgent]);
  assert.deepEqual(sent, ["a", "w", "x", "c"]);

  const late = new AbortController();
  const busy = recorder(() => (late.abort(), BUSY));
  assert.deepEqual(await busy.request("/get_GNetInfo", { signal: late.signal }), { trouble: "dropped" });
});

/** A status whose members hold their own places. */
const STATUS = { result: 1, disk: { list: [] } };
for (const place of statusPlaces)
  place.split(".").reduce((part, name, n, names) => (part[name] ??= names[n + 1] ? {} : place), STATUS);

test("the status is read again when a member is missing; a recorder is its IMEI, else its number", async () => {
  for (const [damage, trouble] of [
    [{ disk: {} }, "odd"],
    [{ gnet: { ...STATUS.gnet, strFD_GNetIMEI: undefined } }, "odd"],
    [{ result: 0 }, "silent"],
    [{}, undefined],
  ]) {
    const { request, log } = recorder(() => ({ ...STATUS, ...damage }));
    assert.equal((await readStatus(request)).trouble, trouble);
    assert.equal(log.length, trouble === "odd" ? 2 : 1);
  }
  const { request } = recorder((path) => /System/.test(path) && STATUS);
  const who = { number: "BUS-1", imei: "gnet.strFD_GNetIMEI", clock: START.Base.strFD_CurTime };
  assert.deepEqual(await identify(request, { number: true }), who);
  for (const [imei, number, imei2, number2, same] of [
    ["1", "a", "1", "b", true],
    ["1", "a", "2", "a", false],
    ["", "a", "2", "a", true],
    ["", "a", "", "b", false],
    ["1", "", "", "b", undefined],
  ])
    assert.equal(sameRecorder({ imei, number }, { imei: imei2, number: number2 }), same);
});

test("settings file: what is not understood is told, numbers are text, networks come last", () => {
  const file = fileOf(new Map([["BaseInfo", START.Base]]));
  assert.deepEqual(Object.keys(file.groups), ["BaseInfo"]);
  assert.equal(file.unread.length, groups.length - 1);
  assert.ok(!("strFD_CurTime" in file.groups.BaseInfo));
  assert.deepEqual(writeOrder.map(({ cutsOff = false }) => cutsOff).slice(-3), [false, true, true]);
  const parse = (change) => parseFile(JSON.stringify({ ...file, ...change }));
  for (const change of [{ version: "1" }, { format: "x" }, { groups: null }])
    assert.equal(parse(change).trouble, "alien");
  const GNetInfo = { ucFD_NetType: 7, strFD_Apn: [], x: "" };
  const { wanted, strange } = parse({ groups: { GNetInfo, Y: {}, WifiInfo: 1 } });
  assert.equal(strange.join(" "), "GNetInfo.strFD_Apn,type GNetInfo.x,unknown Y,unknown WifiInfo,type");
  const [{ from, to }, ...more] = difference(group("GNet"), START.GNet, wanted.GNetInfo);
  assert.deepEqual([from, to, more], ["6", "7", []]);
  const locks = difference(group("Wifi"), START.Wifi, { ...START.Wifi, ...MODE2 });
  assert.equal(locks.filter((row) => row.lock && row.from === undefined).length, 5);
  assert.equal(locks[0].from, "1");
});

test("values that hardly work are asked about, unknown ones are wanted; texts have both languages", () => {
  const registered = valuesOf("GB28181", "1", "1", "ip", "1", "1".repeat(20), "1".repeat(19));
  for (const [id, values, expected] of [
    ["VCms", { ucFD_AddressType: "1", strFD_Address: "", usFD_Port: "0" }, "strFD_Address usFD_Port"],
    ["Wifi", { ...START.Wifi, strFD_SSID: "", strFD_Passwd: "1234567" }, "strFD_SSID strFD_Passwd"],
    ["Wifi", { ...START.Wifi, ...MODE2, strFD_SSID: "" }, ""],
    ["GB28181", registered, "strFD_DeviceId"],
    ["GB28181", { ...OFF, strFD_ServerIp: "" }, ""],
  ]) {
    const asked = doubts(group(id), values, values, {});
    assert.equal(asked.map(([{ name }]) => name).join(" "), expected);
  }
  for (const field of groups.flatMap(({ fields }) => fields))
    assert.equal(Boolean(problem(field, undefined, {})), field.kind !== "fact", field.name);
  for (const pair of JSON.stringify(groups).match(/\[("[^"]*",?)*\]/g))
    assert.match(pair, /^\["[^"]+","[^"]+"\]$/);
});

test("names.json: the example is right, and a wrong entry is named", () => {
  const example = readFileSync(new URL("../../tools/recorder_sim/names.json", import.meta.url), "utf8");
  assert.deepEqual(checkNames(JSON.parse(example)).wrong, []);
  const NetType = { x: ["中", "e"], 1: ["中"], 2: ["中", "e", "ok"], 3: ["中", "e"], 256: ["中", "e"] };
  const fields = { "GNetInfo.ucFD_NetType": NetType, "GNetInfo.strFD_Apn": {}, "Y.z": {} };
  const { wrong, good } = checkNames({ fields, status: { "gnet.x": {} }, other: {} });
  const places = /^\S+Type\.1 \S+Type\.2 \S+Type\.256 \S+Type\.x \S+Apn fields\.Y\.z status\.gnet\.x other$/;
  assert.match(wrong.map(([place]) => place).join(" "), places);
  assert.deepEqual(good.fields, { "GNetInfo.ucFD_NetType": { 3: ["中", "e"] } });
});
