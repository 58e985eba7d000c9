// SPDX-License-Identifier: GPL-2.0-only
// The modules without a document, against a recorder in memory: what is sent, in which order, and what is told.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { identify, readStatus, requester, sameRecorder } from "../../web_root/api.js";
import { read, save } from "../../web_root/exchange.js";
import { difference, fileOf, parseFile, writeOrder } from "../../web_root/file.js";
import { checkNames } from "../../web_root/names.js";
import { groups } from "../../web_root/schema.js";
import { doubts, OWN_TIME, problem } from "../../web_root/settings.js";

const group = (name) => groups.find(({ id }) => id === `${name}Info`);
const WIFI = { ucFD_WorkMode: "1", strFD_SSID: "Depot", strFD_Passwd: "gate-seven", ucFD_AuthMode: "3" };
const START = {
  GNet: {
    ucFD_NetType: "6",
    strFD_Apn: "net",
    strFD_PhoneNo: "*99#",
    strFD_UserName: "u",
    strFD_UserPasswd: "p",
  },
  Wifi: { ...WIFI, ucFD_CryptType: "2", ucFD_DhcpEnableFlag: "1" },
  Base: {
    ...{ strFD_DeviceNo: "BUS-1", ucFD_TimeZone: "8", ucFD_GpsSTFlag: "1" },
    strFD_CurTime: "2026-03-14 15:09:26",
  },
  GB28181: {
    ...Object.fromEntries(group("GB28181").fields.map(({ name }) => [name, ""])),
    ...{ ucFD_GB28181Enable: "1", ucFD_StreamType: "1", usFD_ServerPort: "1", usFD_DevicePort: "1" },
    ...{ strFD_LensId: "*L1*", iVideoChnCount: "2" },
  },
};

/** A recorder behind a fetch: `on(path, n)` may answer the nth request of a path otherwise. */
function recorder(on = () => undefined) {
  const state = structuredClone(START);
  const log = [];
  let open = 0;
  const reply = (body, status = 200, headers = {}) => ({
    status,
    headers: new Headers(headers),
    text: async () => ((open -= 1), typeof body === "string" ? body : JSON.stringify(body)),
  });
  const fetchLike = async (path, { body }) => {
    assert.equal((open += 1), 1, "two requests at once");
    log.push(path);
    const [, verb, name] = path.match(/^\/(get|set)_(\w+?)(?:Info)?$/);
    const told = on(path, log.filter((one) => one === path).length, state);
    if (told instanceof Error) throw ((open -= 1), told);
    if (told) return reply(...[told].flat());
    if (verb === "set") Object.assign(state[name], Object.fromEntries(body));
    if (body && state[name].strFD_LensId) state[name].strFD_LensId = "*L1*"; // one comes back, whatever is sent
    return reply({ ...(verb === "get" && state[name]), result: 1 });
  };
  return { state, log, request: requester(fetchLike) };
}

const answers = (places) => (path, n, state) => places[`${path} ${n}`]?.(state) ?? undefined;
const silent = () => ({
  ...group("GNet").fields.reduce((all, { name }) => ({ ...all, [name]: "" }), {}),
  result: 0,
});
const elsewhere = (id, change) =>
  answers({ [`/get_${id}Info 1`]: (state) => void Object.assign(state[id], change) });

const APN = { strFD_Apn: "a" };
const OFF = { ucFD_GB28181Enable: "0" };
const MODE2 = { ucFD_WorkMode: "2" };
const EMPTY = { ...silent(), ucFD_NetType: "0", result: 1 };
const once = (place, answer) => ({ on: answers({ [place]: () => answer }) });
const always = (answer) => ({ on: (path) => /get/.test(path) && answer });
const moved = (id, change) => ({ on: elsewhere(id, change) });
const [GET, SET, GET2] = ["/get_GNetInfo 1", "/set_GNetInfo 1", "/get_GNetInfo 2"];
const BUSY = ["", 503, { "Retry-After": "0" }];

// What a save tells, and what the recorder holds in the end; `seen` is START's unless given.
const SAVES = [
  ["only the edit changes", "GNet", APN, {}, "saved", { ...APN, strFD_UserPasswd: "p" }],
  [
    "another's change stays",
    "GNet",
    APN,
    moved("GNet", { strFD_PhoneNo: "1" }),
    "saved",
    { ...APN, strFD_PhoneNo: "1" },
  ],
  [
    "both changed: a question",
    "GNet",
    APN,
    moved("GNet", { strFD_Apn: "b" }),
    "conflict",
    { strFD_Apn: "b" },
  ],
  ["both changed alike", "GNet", APN, moved("GNet", APN), "same", APN],
  [
    "nothing seen: laid over",
    "GNet",
    APN,
    { seen: null, ...moved("GNet", { strFD_Apn: "b" }) },
    "saved",
    APN,
  ],
  ["the mode was changed", "Wifi", { strFD_SSID: "a" }, moved("Wifi", MODE2), "conflict", MODE2],
  ["a locked name", "Wifi", { ...MODE2, strFD_SSID: "a" }, {}, "invalid", WIFI],
  [
    "to the other network, unseen",
    "Wifi",
    { ucFD_WorkMode: "1" },
    { seen: null, ...moved("Wifi", MODE2) },
    "invalid",
    MODE2,
  ],
  ["too large", "GNet", { ucFD_NetType: "256" }, {}, "invalid", START.GNet],
  ["too short", "Base", { strFD_DeviceNo: "1234" }, {}, "invalid", START.Base],
  ["a damaged answer, once", "GNet", APN, once(GET, { result: 1 }), "saved", APN],
  ["a damaged answer, twice", "GNet", APN, always({ result: 1 }), "unread odd", START.GNet],
  ["suddenly empty", "GNet", APN, always(EMPTY), "unread empty", START.GNet],
  ["silent before", "GNet", APN, once(GET, silent()), "unread silent", START.GNet],
  ["gone at the write", "GNet", APN, once(SET, new Error()), "unsure gone", START.GNet],
  ["silent after", "GNet", APN, once(GET2, silent()), "unsure silent", APN],
  ["refused by the recorder", "GNet", APN, once(SET, { result: 1 }), "kept", START.GNet],
  ["may not write", "GNet", APN, once(SET, ["no", 403]), "denied refused", START.GNet],
  ["login ended", "GNet", APN, once(SET, ["no", 401]), "denied login", START.GNet],
  ["busy, then not", "GNet", APN, once(SET, BUSY), "saved", APN],
  ["away at the moment of sending", "GNet", APN, { mayWrite: () => false }, "held", START.GNet],
  ["the stream needs registration", "GB28181", OFF, {}, "saved", { ucFD_StreamType: "0" }],
  ["a stream without it", "GB28181", { ...OFF, ucFD_StreamType: "1" }, {}, "kept", { ucFD_StreamType: "0" }],
  [
    "channels unknown",
    "GB28181",
    { strFD_ServerIp: "a" },
    moved("GB28181", { iVideoChnCount: "0" }),
    "invalid",
    {},
  ],
];

for (const [name, id, edits, { seen = START[id], on, mayWrite }, told, held] of SAVES) {
  test(`save: ${name}`, async () => {
    const { state, log, request } = recorder(on);
    const shown = seen && { ...seen, ...(seen.strFD_LensId && { strFD_LensId: "L1" }) };
    const result = await save(request, group(id), edits, { seen: shown ?? undefined, mayWrite });
    assert.equal([result.outcome, result.trouble].filter(Boolean).join(" "), told);
    for (const [field, value] of Object.entries(held)) assert.equal(state[id][field], value, field);
    const sent = log.some((path) => path.includes("/set_"));
    assert.equal(sent, !/conflict|same|invalid|unread|held/.test(told));
    if (sent) assert.match(log[0], /get_/);
  });
}

test("a group that cannot be read is written only when every field is chosen; clocks run on", async () => {
  const base = group("Base");
  const { request, log, state } = recorder(
    (path) => path === "/get_BaseInfo" && { ...START.Base, result: 0 },
  );
  const edits = { strFD_DeviceNo: "BUS-2", ucFD_TimeZone: "8", ucFD_GpsSTFlag: "0" };
  assert.equal((await save(request, base, edits)).outcome, "unread");
  assert.ok(!log.includes("/set_BaseInfo"));
  await save(request, base, { ...edits, strFD_CurTime: "2030-01-01 00:00:00" });
  assert.equal(state.Base.strFD_CurTime, "2030-01-01 00:00:00");

  const other = recorder();
  assert.equal(
    (await save(other.request, base, { ucFD_TimeZone: "9" }, { seen: START.Base })).outcome,
    "saved",
  );
  assert.match(other.state.Base.strFD_CurTime, /^2026-03-14 15:09:2[67]$/);
  await save(other.request, base, { strFD_CurTime: OWN_TIME }, { seen: START.Base });
  const own = new Date(Date.now() - new Date().getTimezoneOffset() * 60000).toISOString();
  assert.equal(other.state.Base.strFD_CurTime.slice(0, 13), own.slice(0, 13).replace("T", " "));
});

test("requests: one at a time, urgent ones first, what nobody waits for leaves", async () => {
  let open;
  const gate = new Promise((go) => (open = go));
  const sent = [];
  const request = requester(async (path) => {
    sent.push(path);
    await gate;
    return { status: 200, headers: new Headers(), text: async () => '{"result": 1}' };
  });
  const leave = new AbortController();
  const read3 = ["a", "b", "c"].map((path) =>
    request(path, { signal: path === "b" ? leave.signal : undefined }),
  );
  const write = request("w", { urgent: true, form: () => [] });
  const next = request("x", { urgent: true });
  leave.abort();
  assert.deepEqual(await read3[1], { trouble: "dropped" });
  open();
  await Promise.all([...read3, write, next]);
  assert.deepEqual(sent, ["a", "w", "x", "c"]);
});

const wholeStatus = (imei) => ({
  gps: { ucFD_GpsExist: "1", strFD_GpsPos: "" },
  gnet: {
    ...{
      ucFD_GNetExist: "1",
      strFD_GNetIMEI: imei,
      strFD_GNetRevision: "",
      ucFD_SimExist: "1",
      ucFD_SimIMSI: "",
    },
    ...{ ucFD_SimICCID: "", uiFD_GNetSignal: "1", ucFD_GNetDail: "1" },
  },
  wifi: { ucFD_WifiExist: "1", ucFD_WifiMode: "AP", uiFD_WifiSignal: "1", ucFD_WifiDail: "1" },
  cms: { ucFD_CmsStatus: "1", ucFD_JTT808Status: "1", ucFD_GB28181Status: "1" },
  disk: { list: Array(2).fill({ ucFD_DiskExist: "1", strFD_DiskSize: "" }) },
  io: { strFD_IOStatus: "" },
  version: Object.fromEntries(
    ["Mcu", "Ldr", "Knl", "Rfs", "App", "Dbt"].map((part) => [`strFD_${part}Version`, ""]),
  ),
  acc: { ucFD_AccStatus: "1" },
  result: 1,
});

test("the status is read again when a member is missing; a recorder is its IMEI, else its number", async () => {
  for (const [missing, trouble] of [
    [(s) => delete s.disk.list, "odd"],
    [(s) => delete s.gnet.strFD_GNetIMEI, "odd"],
    [(s) => (s.result = 0), "silent"],
    [() => {}, undefined],
  ]) {
    const status = wholeStatus("1");
    missing(status);
    const { request } = recorder((path) => /System/.test(path) && status);
    assert.equal((await readStatus(request)).trouble, trouble);
  }
  const { request } = recorder((path) => /System/.test(path) && wholeStatus("77"));
  assert.deepEqual(await identify(request, { number: true }), {
    number: "BUS-1",
    imei: "77",
    clock: START.Base.strFD_CurTime,
  });
  const pairs = [
    ["1", "a", "1", "b", true],
    ["1", "a", "2", "a", false],
    ["", "a", "2", "a", true],
    ["", "a", "", "b", false],
    ["1", "", "", "b", undefined],
  ];
  for (const [imei, number, imei2, number2, same] of pairs)
    assert.equal(sameRecorder({ imei, number }, { imei: imei2, number: number2 }), same);
});

test("settings file: what is not understood is told, numbers are text, networks come last", async () => {
  const { request } = recorder();
  const all = new Map([["GNetInfo", (await read(request, group("GNet"))).values]]);
  const file = fileOf(all);
  assert.deepEqual(Object.keys(file.groups), ["GNetInfo"]);
  assert.equal(file.unread.length, groups.length - 1);
  assert.ok(!JSON.stringify(fileOf(new Map([["BaseInfo", START.Base]]))).includes("CurTime"));
  assert.deepEqual(
    writeOrder.slice(-2).map(({ cutsOff }) => cutsOff),
    [true, true],
  );
  const parse = (change) => parseFile(JSON.stringify({ ...file, ...change }));
  assert.equal(parse({ version: 2 }).trouble, "newer");
  for (const change of [{ version: "1" }, { format: "x" }, { groups: null }])
    assert.equal(parse(change).trouble, "alien");
  assert.equal(parseFile("{").trouble, "alien");
  const { wanted, strange } = parse({
    groups: { GNetInfo: { ucFD_NetType: 7, strFD_Apn: [], x: "" }, Y: {}, WifiInfo: 1 },
  });
  assert.deepEqual(strange, [
    ["GNetInfo.strFD_Apn", "type"],
    ["GNetInfo.x", "unknown"],
    ["Y", "unknown"],
    ["WifiInfo", "type"],
  ]);
  assert.deepEqual(
    difference(group("GNet"), START.GNet, wanted.GNetInfo).map(({ from, to }) => [from, to]),
    [["6", "7"]],
  );
  const locks = difference(group("Wifi"), START.Wifi, { ...START.Wifi, ucFD_WorkMode: "2" });
  assert.deepEqual(
    locks.map(({ lock, from }) => [Boolean(lock), from]),
    [[false, "1"], ...Array(5).fill([true, undefined])],
  );
});

test("values that hardly work are asked about; unknown ones are wanted", () => {
  const asked = (id, values) => doubts(group(id), values, values, {}).map(([{ name }]) => name);
  assert.deepEqual(asked("VCms", { ucFD_AddressType: "1", strFD_Address: "", usFD_Port: "0" }), [
    "strFD_Address",
    "usFD_Port",
  ]);
  assert.deepEqual(asked("Wifi", { ...START.Wifi, strFD_SSID: "", strFD_Passwd: "1234567" }), [
    "strFD_SSID",
    "strFD_Passwd",
  ]);
  assert.deepEqual(asked("Wifi", { ...START.Wifi, ucFD_WorkMode: "2", strFD_SSID: "" }), []);
  assert.deepEqual(
    asked("GB28181", {
      ucFD_GB28181Enable: "1",
      strFD_DeviceId: "1".repeat(19),
      strFD_ServerID: "1".repeat(20),
    }),
    ["strFD_DeviceId"],
  );
  assert.equal(asked("GB28181", { ucFD_GB28181Enable: "0", strFD_ServerIp: "" }).length, 0);
  for (const one of groups)
    for (const field of one.fields)
      assert.equal(Boolean(problem(field, undefined, {})), field.kind !== "fact", field.name);
});

test("names.json: the example is right, and a wrong entry is named", () => {
  const example = JSON.parse(
    readFileSync(new URL("../../tools/recorder_sim/names.json", import.meta.url), "utf8"),
  );
  assert.deepEqual(checkNames(example).wrong, []);
  const bad = {
    fields: {
      "GNetInfo.ucFD_NetType": { x: ["中", "e"], 1: ["中"], 2: ["中", "e", "ok"], 3: ["中", "e"] },
      "GNetInfo.strFD_Apn": {},
      "Y.z": {},
    },
    status: { "gnet.x": {} },
    other: {},
  };
  const { wrong, good } = checkNames(bad);
  const places = [
    "fields.GNetInfo.ucFD_NetType.1",
    "fields.GNetInfo.ucFD_NetType.2",
    "fields.GNetInfo.ucFD_NetType.x",
    "fields.GNetInfo.strFD_Apn",
    "fields.Y.z",
    "status.gnet.x",
    "other",
  ];
  assert.deepEqual(
    wrong.map(([place]) => place),
    places,
  );
  assert.deepEqual(good.fields, { "GNetInfo.ucFD_NetType": { 3: ["中", "e"] } });
});

test("a login that may only read is told by its answers", async () => {
  const { request } = recorder(() => [{ result: 1 }, 200, { "Webctrl-Access": "read" }]);
  assert.deepEqual(await request("/get_GNetInfo"), { answer: { result: 1 }, reader: true });
});
