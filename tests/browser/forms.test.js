// SPDX-License-Identifier: GPL-2.0-only
// Every field of every group, by keyboard alone; what a save can come to; hostile texts; settings files.

import assert from "node:assert/strict";
import { join } from "node:path";
import { after, test } from "node:test";
import { groups } from "../../web_root/schema.js";
import { closeBrowser, stopDaemon, withPage } from "./rig.js";

after(closeBrowser);

// By group: the recorder's element, and for each field a value unlike the sample's, or [value, what
// arrives, the attribute's own name]. Independent of the page's schema on purpose. A choice's value
// is the start of a word to pick, or a number for "Other code".
const TABLE = {
  LangInfo: ["stDisplay", { strLanguage: ["English", "US"] }],
  BaseInfo: ["stBaseInfo", { strFD_DeviceNo: "VEHICLE-0007", ucFD_TimeZone: ["UTC+9", "9"], ucFD_GpsSTFlag: "0",
    strFD_CurTime: ["03152031092345PM", "2031-03-15 21:23:45"] }],
  MirrorInfo: ["VChn_0", { strFD_LeftRight: ["0", "0", "ucFD_LeftRight"], strFD_UpDown: ["1", "1", "ucFD_UpDown"] }],
  VCmsInfo: ["stCMS", { ucFD_AddressType: ["Domain", "1"], strFD_Address: ["中心.example", "中心.example", "strFD_Domain"], usFD_Port: "65535" }],
  GNetInfo: ["stMobileGNet", { ucFD_NetType: "255", strFD_Apn: "运营商接入点abcdefghijklm", strFD_PhoneNo: "*99***1#0123456789 -+,;",
    strFD_UserName: "user name & co. \"of\" <35>bytes 'x'%", strFD_UserPasswd: "p+a%20s=s&w;o/r?d#密码🔑" }],
  NetWModeInfo: ["stNetWorkMode", { ucFD_NetWType: ["7", "7", "ucFD_NetType"], usFD_GPSInterval: ["0600", "600"] }],
  WifiInfo: ["stWifi", { ucFD_WorkMode: "5", strFD_SSID: " 车队 Depot \"5\" ", strFD_Passwd: "1234567890123456789012345678901",
    ucFD_AuthMode: "9", ucFD_CryptType: "8", ucFD_DhcpEnableFlag: ["Off", "0"] }],
  GB28181Info: ["stGB28181", { ucFD_GB28181Enable: ["1", "1", "ucFD_Enable"], ucFD_StreamType: ["Stream 0", "1", "ucFD_Enable"],
    strFD_ServerIp: "sip.example", usFD_ServerPort: "15060", strFD_ServerID: "44010000002000000001", strFD_DeviceId: "44010000001110000007",
    usFD_DevicePort: "1", strFD_DeviceUser: "bus-7", strFD_DevicePass: "new secret", strFD_Manufacturer: "某某车载设备厂ABC", strFD_ModelName: "MR-5",
    strFD_LensId: "44010000001310000007" }],
};
// group -> field -> [place in the recorder's state, value, what arrives]
const WIRE = Object.fromEntries(Object.entries(TABLE).map(([id, [element, fields]]) => [id, Object.fromEntries(Object.entries(fields).map(([name, row]) => {
  const [value, arrives = value, attribute = name] = [row].flat();
  return [name, [`${name === "strFD_LensId" ? "SUBDEVID_0" : element}.${attribute}`, value, arrives]];
}))]));
const ROWS = Object.values(WIRE).flatMap(Object.values);

/** Presses Tab until `id` has the focus: what cannot be reached so cannot be filled in. */
async function tabTo(page, id) {
  const there = () => page.evaluate((wanted) => [document.activeElement.id, document.activeElement.textContent].includes(wanted), id);
  for (let presses = 0; !(await there()); presses++) {
    assert.ok(presses < 150, `${id} is out of the keyboard's reach`);
    await page.keyboard.press("Tab");
  }
}

async function fillByKeyboard(page, id, { kind, open }, value) {
  await tabTo(page, id);
  const { keyboard } = page;
  if (kind === "flag") return (await page.isChecked(`#${id}`)) === (value === "1") ? null : keyboard.press("Space");
  if (kind === "choice" && open && /^\d+$/.test(value)) {
    await keyboard.type("Other");
    await keyboard.press("Tab");
  }
  if (kind !== "clock") await keyboard.press("Control+A");
  return keyboard.type(value);
}

const result = (page, id) => page.locator(`#${id} .result`);
async function outcome(page, id) {
  await result(page, id).locator(".badge").waitFor();
  return result(page, id).innerText();
}

/** Changes one text, saves, and answers the question about the network. */
async function saveText(page, id, name, value) {
  await page.fill(`#${id}-${name}`, value);
  await page.click(`#${id} button[type=submit]`);
  if (await page.locator("dialog").count()) await page.click("dialog .primary");
}

// Texts are made as wide as the page lets them be: one too wide for the daemon would arrive cut.
const wide = ({ kind, width }, text) => (/text|password/.test(kind) ? text + "x".repeat(width - Buffer.byteLength(text)) : text);

for (const group of groups) {
  const setUp = { hash: `${group.section}/${group.id}`, recorderArgs: ["--set", "stVersion.VideoCnt=3"] };
  test(`fields of ${group.id}: shown, edited, saved, read back, in the recorder`, () => withPage(setUp, async ({ page, recorder }) => {
    const fields = group.fields.filter(({ kind }) => kind !== "fact");
    const wire = WIRE[group.id];
    assert.deepEqual(fields.map(({ name }) => name), Object.keys(wire));
    const before = recorder.state;
    for (const field of fields) {
      const id = `${group.id}-${field.name}`;
      const [place, value] = wire[field.name];
      if (/text|password|number/.test(field.kind) && place !== "stCMS.strFD_Domain") assert.equal(await page.inputValue(`#${id}`), before[place]);
      await fillByKeyboard(page, id, field, wide(field, value));
    }
    await tabTo(page, "Save");
    await page.keyboard.press("Enter");
    if (group.cutsOff) {
      await page.waitForSelector("dialog");
      await tabTo(page, "Save anyway");
      await page.keyboard.press("Enter");
    }
    // No simulator sets the daemon's clock, so the clock is the one thing that reads back otherwise.
    const said = { LangInfo: /saved/i, BaseInfo: /^The recorder kept:\s+Clock of the recorder = \d{4}-.{14}$/ }[group.id] ?? /^Saved/;
    assert.match(await outcome(page, group.id), said);
    const { state } = recorder;
    for (const field of fields) assert.equal(state[wire[field.name][0]], wide(field, wire[field.name][2]), field.name);
  }));
}

test("a save: progress at once, one request, refusal, silence and a lost daemon told apart", () => withPage({ hash: "platform" }, async (rig) => {
  const { page, recorder, traffic } = rig;
  const [id, name] = ["GB28181Info", "strFD_ServerIp"];
  const writes = () => traffic.all.filter((request) => request.url().includes("/set_")).length;
  await page.fill(`#${id}-${name}`, "first.example");
  const shownAfter = await page.evaluate((card) => {
    const begin = performance.now();
    const button = document.querySelector(`#${card} button[type=submit]`);
    button.click();
    button.click();
    return document.querySelector(`#${card} progress`).offsetHeight > 0 ? performance.now() - begin : Infinity;
  }, id);
  assert.ok(shownAfter < 100, `progress after ${shownAfter} ms`);
  await outcome(page, id);
  assert.equal(writes(), 1);
  assert.equal(await result(page, id).getAttribute("role"), "status");

  await page.fill(`#${id}-${name}`, "车".repeat(11)); // 11 characters, but 33 bytes of at most 31
  await page.click(`#${id} button[type=submit]`);
  assert.match(await page.innerText(`#${id}-${name}-error`), /33 bytes of at most 31/);
  assert.equal(writes(), 1);
  await page.click(`#${id} >> text=Revert`);

  await recorder.start("--result", "3");
  await saveText(page, id, name, "refused.example");
  assert.match(await outcome(page, id), /^The recorder kept:\s+SIP server address = first\.example$/);
  assert.equal(await page.inputValue(`#${id}-${name}`), "refused.example");

  recorder.silence();
  await saveText(page, id, name, "silent.example");
  assert.match(await outcome(page, id), /^No answer from the recorder/);
  recorder.wake();
  await stopDaemon(rig);
  await saveText(page, id, name, "gone.example");
  assert.match(await outcome(page, id), /^No answer: the connection/);
  assert.equal(recorder.state["stGB28181.strFD_ServerIp"], "first.example");
}));

test("Wi-Fi: the way back is told, and the wait ends in what the recorder holds", () => withPage({ hash: "network/WifiInfo" }, async ({ page, recorder }) => {
  await page.fill("#WifiInfo-strFD_SSID", "New depot");
  recorder.silence();
  await page.click("#WifiInfo button[type=submit]");
  assert.match(await page.innerText("dialog"), /New depot[\s\S]*http:\/\/127\.0\.0\.1:8080\/[\s\S]*90 s/);
  await page.click("dialog .primary");
  await page.locator("#WifiInfo [role=timer]", { hasText: /\d+ s left/ }).waitFor();
  assert.match(await result(page, "WifiInfo").innerText(), /No answer[\s\S]*New depot/);
  recorder.wake();
  await result(page, "WifiInfo").getByText(/Saved|The recorder kept/).waitFor();

  // Accepting the mode, the daemon does not send the access point's settings.
  await page.selectOption("#WifiInfo-ucFD_WorkMode", "2");
  await saveText(page, "WifiInfo", "strFD_SSID", "Typed name");
  assert.match(await outcome(page, "WifiInfo"), /^The recorder kept:\s+Network name \(SSID\) = Bus 234/);
  assert.equal(recorder.state["stWifi.ucFD_WorkMode"], "2");
}));

test("the clock: from this phone by one press, and untouched it runs on", () => withPage({ hash: "device" }, async ({ page, recorder }) => {
  const written = () => Date.parse(`${recorder.state["stBaseInfo.strFD_CurTime"].replace(" ", "T")}Z`);
  await page.fill("#BaseInfo-strFD_DeviceNo", "EDITED-1");
  await page.click("text=Set the clock from this phone");
  await outcome(page, "BaseInfo");
  assert.ok(Math.abs(Date.now() + 8 * 3600e3 - written()) < 10000); // the browser's zone is UTC+8
  assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "DEMO100234");
  await saveText(page, "BaseInfo", "strFD_DeviceNo", "EDITED-2");
  assert.match(await outcome(page, "BaseInfo"), /^Saved/);
  assert.ok(Math.abs(Date.now() - new Date().getTimezoneOffset() * 60e3 - written()) < 10000);
  assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "EDITED-2");
}));

const HOSTILE = ["<img src=x onerror='hacked=1'>", "\"'&<>\\`${1}%00&amp;</p>]]>", "🚌 \u202Eevil\u202C \u200Fx\u200E", " ".repeat(31), "</script><script>hacked=1//"];
const fit = (text, bytes) => [...text].reduce((kept, next) => (Buffer.byteLength(kept + next) <= bytes ? kept + next : kept), "");

test("hostile texts: shown as text, run nothing, and go back as they came", async () => {
  const isText = ({ kind, name }) => /text|password/.test(kind) && name !== "strFD_DeviceNo";
  const hostile = groups.filter(({ fields }) => fields.some(isText) && fields.some(({ kind }) => kind === "number"));
  const evil = hostile.flatMap(({ id, fields }) => fields.filter(isText).map((field, n) => [WIRE[id][field.name][0], fit(HOSTILE[n % HOSTILE.length], field.width)]));
  const status = ["GpsPos", "IMEI", "IMSI", "ICCID", "Disk1Size", "Disk2Size", "IO", "McuVer"].map((name, n) => [`stSystemInfo.${name}`, fit(HOSTILE[n % HOSTILE.length], 31)]);
  assert.equal(evil.length, 15);
  const sets = [...evil, ...status, ["stVersion.strAppVer", HOSTILE[0]], ["stCMS.ucFD_AddressType", "1"]];
  const path = (place) => place.replace("SUBDEVID_0", "stGB28181.stGB28181SubID.SUBDEVID_0");
  await withPage({ recorderArgs: sets.flatMap(([place, value]) => ["--set", `${path(place)}=${value}`]), hash: "status" }, async ({ page, recorder, open }) => {
    assert.match(await page.getAttribute("meta[http-equiv=Content-Security-Policy]", "content"), /^default-src 'none';(?!.*(unsafe|\*|http))/);
    await page.getByText(HOSTILE[0]).first().waitFor();
    const given = Object.fromEntries(evil);
    for (const { id, section, fields } of hostile) {
      await open(section);
      for (const { name } of fields.filter(isText)) assert.equal(await page.inputValue(`#${id}-${name}`), given[WIRE[id][name][0]], name);
      await saveText(page, id, fields.find(({ kind }) => kind === "number").name, "77");
      assert.match(await outcome(page, id), /^Saved/, id);
      assert.equal(await page.evaluate(() => document.querySelectorAll("main img, main script").length + (typeof hacked === "undefined" ? 0 : 1)), 0);
    }
    await open("about");
    await page.getByText(HOSTILE[0]).waitFor();
    const { state } = recorder;
    for (const [place, value] of evil) assert.equal(state[place], value, place);
  });
});

test("export from one recorder, import into another: equal states", async () => {
  const wanted = ROWS.map(([place]) => place).filter((place) => !/CurTime|strFD_Domain/.test(place));
  let [exported, file] = [];
  const sets = ROWS.filter(([place]) => !/CurTime|VChn|SUBDEV|WorkMode|stCMS/.test(place)).flatMap(([place, , arrives]) => ["--set", `${place}=${arrives}`]);
  await withPage({ recorderArgs: [...sets, "--set", "stCMS.uiFD_IP=198.51.100.77"], hash: "backup" }, async ({ page, recorder }) => {
    const [download] = await Promise.all([page.waitForEvent("download"), page.click("text=Save all settings to a file")]);
    file = join(recorder.file, "..", download.suggestedFilename());
    await download.saveAs(file);
    exported = recorder.state;
    assert.match(file, /recorder-VEHICLE-0007-\d{4}-\d\d-\d\d\.json$/);
  });
  await withPage({ hash: "backup" }, async ({ page, recorder }) => {
    await page.setInputFiles("#settings-file", { name: "x.json", mimeType: "application/json", buffer: Buffer.from("{}") });
    await page.getByText("This is no settings file.").waitFor();
    await page.setInputFiles("#settings-file", file);
    const boxes = page.locator(".pick input");
    await boxes.first().waitFor();
    assert.equal(await page.isChecked("#pick-BaseInfo-strFD_DeviceNo"), false);
    for (const box of await boxes.all()) await box.check();
    await page.click("text=Write what is ticked");
    await page.click("dialog .primary");
    await page.getByText(/^Done: (\d+) of \1 groups saved/).waitFor({ timeout: 60000 });
    const { state } = recorder;
    for (const place of [...wanted, "stCMS.uiFD_IP"]) assert.equal(state[place], exported[place], place);
    await page.setInputFiles("#settings-file", file);
    await page.getByText("Nothing differs").waitFor();
  });
});
