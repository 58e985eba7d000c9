// SPDX-License-Identifier: GPL-2.0-only
// Every field of every group, by keyboard alone; what a save can come to; hostile texts; settings files.

import assert from "node:assert/strict";
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { setTimeout as pause } from "node:timers/promises";
import { requester } from "../../web_root/api.js";
import { save } from "../../web_root/exchange.js";
import { groups } from "../../web_root/schema.js";
import { ADDRESS, BOTH, inBrowser, page, recorder, writes } from "./rig.js";
import { click, fill, go, held, open, press, saveForm, says, submit } from "./rig.js";

// A field, its place in the recorder's state, a value unlike the sample's, and what arrives of it if that is
// another text. Independent of the page's schema on purpose. A choice's value is the start of a word to
// pick, or a number for "Other code".
const FIELDS = [
  ["LangInfo.strLanguage", "stDisplay.strLanguage", "English", "US"],
  ["BaseInfo.strFD_DeviceNo", "stBaseInfo.strFD_DeviceNo", "VEHICLE-0007"],
  ["BaseInfo.ucFD_TimeZone", "stBaseInfo.ucFD_TimeZone", "UTC+9", "9"],
  ["BaseInfo.ucFD_GpsSTFlag", "stBaseInfo.ucFD_GpsSTFlag", "0"],
  ["BaseInfo.strFD_CurTime", "stBaseInfo.strFD_CurTime", "03152031092345PM", "2031-03-15 21:23:45"],
  ["MirrorInfo.strFD_LeftRight", "VChn_0.ucFD_LeftRight", "0"],
  ["MirrorInfo.strFD_UpDown", "VChn_0.ucFD_UpDown", "1"],
  ["VCmsInfo.ucFD_AddressType", "stCMS.ucFD_AddressType", "Domain", "1"],
  ["VCmsInfo.strFD_Address", "stCMS.strFD_Domain", "中心.example"],
  ["VCmsInfo.usFD_Port", "stCMS.usFD_Port", "65535"],
  ["GNetInfo.ucFD_NetType", "stMobileGNet.ucFD_NetType", "255"],
  ["GNetInfo.strFD_Apn", "stMobileGNet.strFD_Apn", "运营商接入点abcdefghijklm"],
  ["GNetInfo.strFD_PhoneNo", "stMobileGNet.strFD_PhoneNo", "*99***1#0123456789 -+,;"],
  ["GNetInfo.strFD_UserName", "stMobileGNet.strFD_UserName", "user name & co. \"of\" <35>bytes 'x'%"],
  ["GNetInfo.strFD_UserPasswd", "stMobileGNet.strFD_UserPasswd", "p+a%20s=s&w;o/r?d#密码🔑"],
  ["NetWModeInfo.ucFD_NetWType", "stNetWorkMode.ucFD_NetType", "7"],
  ["NetWModeInfo.usFD_GPSInterval", "stNetWorkMode.usFD_GPSInterval", "0600", "600"],
  ["WifiInfo.ucFD_WorkMode", "stWifi.ucFD_WorkMode", "5"],
  ["WifiInfo.strFD_SSID", "stWifi.strFD_SSID", ' 车队 Depot "5" '],
  ["WifiInfo.strFD_Passwd", "stWifi.strFD_Passwd", "1234567890123456789012345678901"],
  ["WifiInfo.ucFD_AuthMode", "stWifi.ucFD_AuthMode", "9"],
  ["WifiInfo.ucFD_CryptType", "stWifi.ucFD_CryptType", "8"],
  ["WifiInfo.ucFD_DhcpEnableFlag", "stWifi.ucFD_DhcpEnableFlag", "Off", "0"],
  ["GB28181Info.ucFD_GB28181Enable", "stGB28181.ucFD_Enable", "1"],
  ["GB28181Info.ucFD_StreamType", "stGB28181.ucFD_Enable", "Stream 0", "1"],
  ["GB28181Info.strFD_ServerIp", "stGB28181.strFD_ServerIp", "sip.example"],
  ["GB28181Info.usFD_ServerPort", "stGB28181.usFD_ServerPort", "15060"],
  ["GB28181Info.strFD_ServerID", "stGB28181.strFD_ServerID", "44010000002000000001"],
  ["GB28181Info.strFD_DeviceId", "stGB28181.strFD_DeviceId", "44010000001110000007"],
  ["GB28181Info.usFD_DevicePort", "stGB28181.usFD_DevicePort", "1"],
  ["GB28181Info.strFD_DeviceUser", "stGB28181.strFD_DeviceUser", "bus-7"],
  ["GB28181Info.strFD_DevicePass", "stGB28181.strFD_DevicePass", "new secret"],
  ["GB28181Info.strFD_Manufacturer", "stGB28181.strFD_Manufacturer", "某某车载设备厂ABC"],
  ["GB28181Info.strFD_ModelName", "stGB28181.strFD_ModelName", "MR-5"],
  ["GB28181Info.strFD_LensId", "SUBDEVID_0.strFD_LensId", "44010000001310000007"],
];
// The same in the words of an option of the simulator.
const set = (place, value) =>
  `--set=${place.replace("SUBDEVID_0", "stGB28181.stGB28181SubID.SUBDEVID_0")}=${value}`;

/** Presses Tab until `wanted`, an id or a button's word, has the focus: what cannot be reached cannot be used. */
async function tabTo(wanted) {
  const there = (id) => [document.activeElement.id, document.activeElement.textContent].includes(id);
  for (let presses = 0; !(await page.evaluate(there, wanted)); presses++) {
    assert.ok(presses < 150, `${wanted} is out of the keyboard's reach`);
    await press("Tab");
  }
}

async function fillByKeyboard(id, { kind }, value) {
  await tabTo(id);
  if (kind === "flag") return value === ((await page.$(`#${id}:checked`)) ? "1" : "0") || press("Space");
  if (kind === "choice" && /^\d+$/.test(value)) {
    await page.keyboard.type("Other");
    await press("Tab");
  }
  if (kind !== "choice" && kind !== "clock") await page.evaluate(() => document.activeElement.select());
  return page.keyboard.type(value);
}

/** Changes one text and saves. */
const saveText = async (id, name, value, told) => (await fill(`#${id}-${name}`, value), saveForm(id, told));

for (const { id, section, fields, cutsOff } of groups) {
  const options = [set("stVersion.VideoCnt", 3), set("stSystemInfo.IMEI", "")];
  inBrowser(`${id}: shown, edited, saved, in the recorder`, { at: `${section}/${id}`, options }, async () => {
    const before = recorder.state;
    const filled = [];
    const rows = FIELDS.filter(([place]) => place.startsWith(`${id}.`));
    const shown = fields.filter(({ kind }) => kind !== "fact").map(({ name }) => `${id}.${name}`);
    assert.equal(rows.map(([place]) => place).join(), shown.join());
    for (const [place, at, text, arrives = text] of rows) {
      const field = fields.find(({ name }) => place.endsWith(name));
      const isText = /text|password/.test(field.kind);
      const input = `${id}-${field.name}`;
      if ((isText || field.kind === "number") && at !== "stCMS.strFD_Domain")
        assert.equal(await held(`#${input}`), before[at]);
      // Texts are made as wide as the page lets them be: one too wide for the daemon would arrive cut.
      const rest = isText ? "x".repeat(field.width - Buffer.byteLength(text)) : "";
      await fillByKeyboard(input, field, text + rest);
      filled.push([at, arrives + rest]);
    }
    await tabTo("Save");
    await press("Enter");
    if (cutsOff || id === "GB28181Info") {
      await says(go, /Save anyway/);
      await tabTo("Save anyway");
      await press("Enter");
    }
    // No simulator sets the daemon's clock, so the clock is the one thing that reads back otherwise.
    const clock = /^The recorder kept:\s+Clock of the recorder = \d{4}-.{14}$/;
    await says(`#${id} .result`, { LangInfo: /saved|已保存/i, BaseInfo: clock }[id] ?? /^Saved/);
    for (const [at, text] of filled) assert.equal(recorder.state[at], text, at);
    assert.equal(await page.$("body.stale"), null); // by another number the recorder is the same
  });
}

inBrowser("a save: once, too long, clashing, refused, silent", { at: "platform", names: BOTH }, async () => {
  const [id, name] = ["GB28181Info", "strFD_ServerIp"];
  const field = `#${id}-${name}`;
  await fill(field, "first.example");
  await press("Enter");
  await press("Enter");
  await page.waitForSelector(`#${id} progress`, { visible: true });
  await says(`#${id} .result`, /^Saved/);
  assert.equal(writes().length, 1);
  assert.equal(await page.evaluate(() => `#${document.activeElement.id}`), field);

  await fill(field, "车".repeat(11)); // 11 characters, but 33 bytes of at most 31
  await click(submit(id));
  await says(`${field}-error`, /33 bytes of at most 31/);
  await click(`#${id} ::-p-text(Revert)`);
  await says(field, /^first.example$/);
  await page.waitForSelector(`#${id} .footer`, { hidden: true });

  await save(ask, groups.at(-1), { [name]: "theirs.example" });
  await saveText(id, name, "mine.example", /Changed in the recorder meanwhile.*\s+SIP server.*theirs/);
  await click(`#${id} .clash ::-p-text(Take the recorder's)`);
  await says(`#${id} .result`, /^$/);
  await says(field, /^theirs.example$/);

  await recorder.start("--result=3");
  const kept = /^The recorder kept:\s+SIP server address = theirs\.example$/;
  await saveText(id, name, "refused.example", kept);
  await says(field, /^refused.example$/);
  recorder.silence();
  await saveText(id, name, "silent.example", /^No answer from the recorder; nothing was sent/);
  assert.equal(recorder.state["stGB28181.strFD_ServerIp"], "theirs.example");
});

const ask = requester((path, init) => fetch(ADDRESS + path, init));
const OTHER = [set("stSystemInfo.IMEI", "111111111111111"), set("stBaseInfo.strFD_DeviceNo", "OTHER-9")];

inBrowser("another recorder: nothing is written until decided; drafts", { at: "network" }, async () => {
  const [field, secret] = ["#GNetInfo-strFD_Apn", "#GNetInfo-strFD_UserPasswd"];
  await says("#who", /DEMO100234/);
  await fill(field, "edited.apn");
  await fill(secret, "never kept");
  await recorder.start(...OTHER);
  await says("#banner", /OTHER-9 instead of DEMO100234/);
  await saveForm("GNetInfo", /Another recorder answers; nothing was sent/);
  assert.deepEqual(writes(), []);
  await click("#banner ::-p-text(keep my changes for the other)");
  await says(field, /^internet.carrier.example$/);
  assert.match(await page.title(), /^OTHER-9 · Network/);

  await recorder.restart();
  await says("#banner", /DEMO100234 instead of OTHER-9/);
  await click("#banner button");
  await says(field, /^edited.apn$/);
  await page.goto("about:blank");
  await open("network");
  await says(field, /^edited.apn$/);
  await says(secret, /^fleet-secret$/);
  assert.doesNotMatch(await page.evaluate(() => JSON.stringify(sessionStorage)), /never kept/);
  await recorder.start(...OTHER);
  await click("#banner ::-p-text(bring)");
  await page.waitForSelector("#banner:empty");
  await says(field, /^edited.apn$/);
});

inBrowser("Wi-Fi: Cancel, a wait that is stopped, whose name it is", { at: "network/WifiInfo" }, async () => {
  const [name, mode, result] = ["#WifiInfo-strFD_SSID", "#WifiInfo-ucFD_WorkMode", "#WifiInfo .result"];
  let [losing, blind] = [true, false];
  await page.setRequestInterception(true);
  page.on("request", (request) => {
    if (losing && request.url().includes("/set_")) recorder.silence();
    if (blind && request.url().includes("/get_System")) request.abort();
    else request.continue();
  });
  await fill(name, "New depot");
  await click(submit("WifiInfo"));
  await says("dialog", /New depot[^]*http:\/\/127\.0\.0\.1:8080\/[^]*90 s/);
  await click("dialog ::-p-text(Cancel)");
  await page.waitForFunction(() => !document.querySelector("dialog"));
  await says("#WifiInfo .result, #WifiInfo .count", /^\n1 changed$/); // neither sent nor being sent
  const ends = { stop: /not known what was saved/, wake: /^Saved/, other: /^$/ };
  for (const [n, end] of Object.keys(ends).entries()) {
    await saveText("WifiInfo", "strFD_SSID", `New depot ${end}`, /not known what was saved[^]*New depot/);
    assert.equal(writes().length, n + 1);
    await says("#WifiInfo [role=timer]", /\d+ s left/);
    if (end === "stop") await click("#WifiInfo ::-p-text(Stop waiting)");
    else if (end === "wake") recorder.wake();
    else {
      blind = true; // only the wait itself can tell
      await recorder.start(...OTHER);
      await click("#banner ::-p-text(keep my changes for the other)");
      blind = false;
    }
    await says("#WifiInfo [role=timer]", /^$/);
    await says(result, ends[end]);
    if (end === "stop") {
      await click(submit("WifiInfo"));
      await page.waitForSelector("#WifiInfo .fields[inert]"); // what has become of it is read first
      await click("dialog ::-p-text(Cancel)");
    }
    recorder.wake();
    await says("#link", /Connected/);
  }
  losing = false;

  await fill(name, "Typed name");
  await page.select(mode, "2");
  await page.waitForSelector(`${name}:read-only`);
  await click(submit("WifiInfo"));
  await says("dialog", /^(?![^]*Typed name)[^]*own network/);
  await click(go);
  await says(result, /^Saved/);
  await says(name, /^Bus 234$/);
  assert.equal(recorder.state["stWifiAp.strFD_SSID"], "Bus 234");
  await page.select(mode, "1"); // the client's network is not known now
  await says(name, /^$/);
  await saveForm("WifiInfo", /5 to correct/);
  await click("#WifiInfo [aria-label='Show network key']");
  await page.waitForSelector("#WifiInfo-strFD_Passwd[type=text]");
});

const short = { at: "device", options: ["--set=stBaseInfo.strFD_DeviceNo=AB"] };
inBrowser("what could not be read is wanted, never zero; the clock runs on, or is set", short, async () => {
  await click("#BaseInfo ::-p-text(Fill in anyway)");
  await fill("#BaseInfo-strFD_DeviceNo", "FILLED-1");
  await saveForm("BaseInfo", /3 to correct[^]*Time zone[^]*GPS[^]*Clock/);
  assert.deepEqual(writes(), []);
  await page.select("#BaseInfo-ucFD_TimeZone", "251");
  await page.select("#BaseInfo-ucFD_GpsSTFlag", "1");
  await says("#BaseInfo-clock-note", /in UTC\+8.*is UTC−5.*GPS sets/);
  await click("#BaseInfo ::-p-text(Set the clock from)");
  const kept = /^(Saved|The recorder kept:\s+Clock)/;
  await saveForm("BaseInfo", kept);
  const number = () => recorder.state["stBaseInfo.strFD_DeviceNo"];
  assert.equal(number() + recorder.state["stBaseInfo.ucFD_TimeZone"], "FILLED-1251");

  await fill("#BaseInfo-strFD_DeviceNo", "EDITED-1");
  await save(ask, groups[1], { strFD_DeviceNo: "THEIRS-1" });
  await click("#BaseInfo ::-p-text(Set the clock from)");
  await says("#BaseInfo .result", kept);
  assert.equal(number(), "THEIRS-1");
  await click("#BaseInfo .clash ::-p-text(Keep mine)");
  await saveForm("BaseInfo", /^Saved/);
  await says("#who", /EDITED-1/);
  await open("status");
  await open("device");
  await says("#BaseInfo .result", /^$/); // of the earlier visit
});

// None is longer than the narrowest field.
const MARKUP = ["<img src=x onerror=h=1>", "\"'&<>\\`${1}%00&amp;</p>", "</script><script>h=1//"];
const HOSTILE = [...MARKUP, "🚌 \u202Eevil\u202C \u200Fx", " ".repeat(23)];
const STATUS = ["GpsPos", "IMEI", "IMSI", "ICCID", "Disk1Size", "Disk2Size", "IO", "McuVer"];
const evil = [
  ["", "stVersion.strAppVer"],
  ...STATUS.map((name) => ["", `stSystemInfo.${name}`]),
  ...FIELDS.filter(([place]) => /^(VCms|GNet|Wifi|GB28181)Info.strFD_/.test(place)),
].map(([place, at], n) => [place, at, HOSTILE[n % HOSTILE.length]]);
const options = [set("stCMS.ucFD_AddressType", "1"), ...evil.map(([, place, text]) => set(place, text))];
inBrowser("hostile texts: shown, run nothing, go back as they came", { at: "status", options }, async () => {
  const policy = await page.$eval("meta[http-equiv=Content-Security-Policy]", ({ content }) => content);
  assert.match(policy, /^default-src 'none';(?!.*(unsafe|\*|http))/);
  await says("#view", /<img src=x/);
  for (const { id, section, fields } of groups) {
    const own = evil.filter(([place]) => place.startsWith(id));
    if (!own.length) continue;
    await open(section);
    for (const [place, , text] of own) assert.equal(await held(`#${place.replace(".", "-")}`), text, place);
    await saveText(id, fields.find(({ kind }) => kind === "number").name, "77", /^Saved/);
    const ran = () => document.querySelectorAll("main img, main script").length || "h" in window;
    assert.equal(await page.evaluate(ran), false);
  }
  await open("about");
  await says("#view", /<img src=x/);
  assert.equal(evil.length, 24);
  for (const [, place, text] of evil) assert.equal(recorder.state[place], text, place);
});

// What is not of one recorder alone, but for a group that neither recorder gives.
const shared = FIELDS.filter(([, place]) => !/CurTime|VChn|SUBDEV|ucFD_WorkMode|stCMS/.test(place));
const sets = [...shared.map(([, place, text, arrives = text]) => set(place, arrives)), "--silent=stCMS"];
inBrowser("export, import: equal states, the unread skipped", { at: "backup", options: sets }, async () => {
  const folder = dirname(recorder.file); // of the downloads too
  const find = () => readdirSync(folder).find((name) => /^recorder-VEHICLE-0007-[\d-]{10}\.json$/.test(name));
  await click("::-p-text(Save all settings to a file)");
  await says("#view", /skipped: Central server/);
  while (!find()) await pause(50);
  const exported = recorder.state;
  await recorder.restart("--silent=stCMS");

  const content = JSON.parse(readFileSync(join(folder, find()), "utf8"));
  const file = join(folder, "settings.json");
  writeFileSync(file, JSON.stringify({ ...content, groups: { ...content.groups, Other: {} } }));
  for (const done of [/Done: 0 of/, /Done: (\d+) of \1 groups saved/]) {
    await (await page.$("#settings-file")).uploadFile(file);
    await says("#view", /groups differ[^]*Unknown names, ignored: Other[^]*skipped: Central server/);
    await page.waitForSelector("#pick-BaseInfo-strFD_DeviceNo:not(:checked)");
    await click(".buttons ::-p-text(None)");
    assert.equal((await page.$$(".pick input:checked")).length, 0);
    await click(".buttons ::-p-text(All)");
    if (/0/.test(done.source)) {
      await recorder.start("--silent=stCMS", ...OTHER);
      await click("#banner button");
    }
    await click("::-p-text(Write what is ticked)");
    await click(go);
    await says("#view", done);
  }
  assert.match(writes().slice(-2).join(), /NetWMode.*Wifi/);
  for (const [, place] of shared) assert.equal(recorder.state[place], exported[place], place);
});
