// SPDX-License-Identifier: GPL-2.0-only
// Every field of every group, by keyboard alone; what a save can come to; hostile texts; settings files.

import assert from "node:assert/strict";
import { join } from "node:path";
import { after, test } from "node:test";
import { groups } from "../../web_root/schema.js";
import { closeBrowser, startDaemon, stopDaemon, withPage } from "./rig.js";

after(closeBrowser);

// What the recorder calls each field, in its own order, and a value unlike the sample's with what it
// is to arrive as. Independent of the page's schema on purpose. A choice's value is the start of a
// word to pick, or the number for "Other code".
const WIRE = {
  LangInfo: { strLanguage: ["stDisplay.strLanguage", "English", "US"] },
  BaseInfo: {
    strFD_DeviceNo: ["stBaseInfo.strFD_DeviceNo", "VEHICLE-0007"],
    ucFD_TimeZone: ["stBaseInfo.ucFD_TimeZone", "UTC+9", "9"],
    ucFD_GpsSTFlag: ["stBaseInfo.ucFD_GpsSTFlag", "0"],
    strFD_CurTime: ["stBaseInfo.strFD_CurTime", "03152031092345PM", "2031-03-15 21:23:45"],
  },
  MirrorInfo: { strFD_LeftRight: ["VChn_0.ucFD_LeftRight", "0"], strFD_UpDown: ["VChn_0.ucFD_UpDown", "1"] },
  VCmsInfo: {
    ucFD_AddressType: ["stCMS.ucFD_AddressType", "Domain", "1"],
    strFD_Address: ["stCMS.strFD_Domain", "中心.example"],
    usFD_Port: ["stCMS.usFD_Port", "65535"],
  },
  GNetInfo: {
    ucFD_NetType: ["stMobileGNet.ucFD_NetType", "255"],
    strFD_Apn: ["stMobileGNet.strFD_Apn", "运营商接入点abcdefghijklm"],
    strFD_PhoneNo: ["stMobileGNet.strFD_PhoneNo", "*99***1#0123456789 -+,;"],
    strFD_UserName: ["stMobileGNet.strFD_UserName", "user name & co. \"of\" <35>bytes 'x'%"],
    strFD_UserPasswd: ["stMobileGNet.strFD_UserPasswd", "p+a%20s=s&w;o/r?d#密码🔑"],
  },
  NetWModeInfo: { ucFD_NetWType: ["stNetWorkMode.ucFD_NetType", "7"], usFD_GPSInterval: ["stNetWorkMode.usFD_GPSInterval", "0600", "600"] },
  WifiInfo: {
    ucFD_WorkMode: ["stWifi.ucFD_WorkMode", "5"],
    strFD_SSID: ["stWifi.strFD_SSID", " 车队 Depot \"5\" "],
    strFD_Passwd: ["stWifi.strFD_Passwd", "1234567890123456789012345678901"],
    ucFD_AuthMode: ["stWifi.ucFD_AuthMode", "9"],
    ucFD_CryptType: ["stWifi.ucFD_CryptType", "8"],
    ucFD_DhcpEnableFlag: ["stWifi.ucFD_DhcpEnableFlag", "Off", "0"],
  },
  GB28181Info: {
    ucFD_GB28181Enable: ["stGB28181.ucFD_Enable", "1", "1"],
    ucFD_StreamType: ["stGB28181.ucFD_Enable", "Stream 0", "1"],
    strFD_ServerIp: ["stGB28181.strFD_ServerIp", "sip.example"],
    usFD_ServerPort: ["stGB28181.usFD_ServerPort", "15060"],
    strFD_ServerID: ["stGB28181.strFD_ServerID", "44010000002000000001"],
    strFD_DeviceId: ["stGB28181.strFD_DeviceId", "44010000001110000007"],
    usFD_DevicePort: ["stGB28181.usFD_DevicePort", "1"],
    strFD_DeviceUser: ["stGB28181.strFD_DeviceUser", "bus-7"],
    strFD_DevicePass: ["stGB28181.strFD_DevicePass", "new secret"],
    strFD_Manufacturer: ["stGB28181.strFD_Manufacturer", "某某车载设备厂ABC"],
    strFD_ModelName: ["stGB28181.strFD_ModelName", "MR-5"],
    strFD_LensId: ["SUBDEVID_0.strFD_LensId", "44010000001310000007"],
  },
};

/** Presses Tab until `id` has the focus: what cannot be reached so cannot be filled in. */
async function tabTo(page, id) {
  for (let presses = 0; presses < 150; presses++) {
    if (await page.evaluate((wanted) => document.activeElement.id === wanted || document.activeElement.textContent === wanted, id)) return;
    await page.keyboard.press("Tab");
  }
  assert.fail(`${id} is out of the keyboard's reach`);
}

async function fillByKeyboard(page, id, { kind, open }, value) {
  await tabTo(page, id);
  const { keyboard } = page;
  if (kind === "flag") {
    if ((await page.isChecked(`[id="${id}"]`)) !== (value === "1")) await keyboard.press("Space");
  } else if (kind === "choice" && open && /^\d+$/.test(value)) {
    await keyboard.type("Other");
    await keyboard.press("Tab");
    await keyboard.press("Control+A");
    await keyboard.type(value);
  } else {
    if (kind !== "clock" && kind !== "choice") await keyboard.press("Control+A");
    await keyboard.type(value);
  }
}

const result = (page, id) => page.locator(`#${id} .result`);
const saved = (page, id) => page.waitForFunction((card) => document.querySelector(`#${card} .result .badge`), id);

/** Changes one text, saves, answers the question about the network, and gives what the page says. */
async function saveText(page, id, name, value) {
  await page.fill(`#${id}-${name}`, value);
  await page.click(`#${id} button[type=submit]`);
  if (await page.locator("dialog").count()) await page.click("dialog .primary");
}

for (const group of groups) {
  test(`fields of ${group.id}: shown, edited, saved, read back, in the recorder`, () => withPage({ hash: `${group.section}/${group.id}` }, async ({ page, recorder }) => {
    const fields = group.fields.filter(({ kind }) => kind !== "fact");
    const wire = WIRE[group.id];
    assert.deepEqual(fields.map(({ name }) => name), Object.keys(wire));
    const before = recorder.state;
    for (const field of fields) {
      const id = `${group.id}-${field.name}`;
      const [place, value] = wire[field.name];
      if (["text", "password", "number"].includes(field.kind) && place !== "stCMS.strFD_Domain") assert.equal(await page.inputValue(`[id="${id}"]`), before[place].toString());
      await fillByKeyboard(page, id, field, value);
    }
    await tabTo(page, "Save");
    await page.keyboard.press("Enter");
    if (group.cutsOff) {
      await page.waitForSelector("dialog");
      await tabTo(page, "Save anyway");
      await page.keyboard.press("Enter");
    }
    await saved(page, group.id);
    const said = await result(page, group.id).innerText();
    // No simulator sets the daemon's clock, so the clock is the one thing that reads back otherwise.
    if (group.id === "BaseInfo") assert.match(said, /^The recorder kept:\s+Clock of the recorder = \d{4}-.{14}$/);
    else assert.match(said, group.id === "LangInfo" ? /saved/i : /^Saved/);
    const { state } = recorder;
    for (const [place, value, expected = value] of Object.values(wire)) assert.equal(state[place], expected, place);
  }));
}

test("a save: progress at once, one request, refusal, silence and a lost daemon told apart", () => withPage({ hash: "platform" }, async (rig) => {
  const { page, recorder, traffic, open } = rig;
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
  await saved(page, id);
  assert.equal(writes(), 1);
  assert.equal(await result(page, id).getAttribute("role"), "status");

  await page.fill(`#${id}-${name}`, "车".repeat(11)); // 11 characters, but 33 bytes of at most 31
  await page.click(`#${id} button[type=submit]`);
  assert.match(await page.innerText(`#${id}-${name}-error`), /33 bytes of at most 31/);
  assert.equal(writes(), 1);
  await page.click(`#${id} >> text=Revert`);

  await recorder.start("--result", "3");
  await saveText(page, id, name, "refused.example");
  await result(page, id).getByText("The recorder kept:").waitFor();
  assert.match(await result(page, id).innerText(), /SIP server address = first\.example/);
  assert.equal(await page.inputValue(`#${id}-${name}`), "refused.example");

  recorder.silence();
  await saveText(page, id, name, "silent.example");
  await result(page, id).getByText("No answer from the recorder").waitFor();
  recorder.wake();
  await stopDaemon(rig);
  await saveText(page, id, name, "gone.example");
  await result(page, id).getByText("No answer: the connection").waitFor();
  rig.daemon = await startDaemon();
  assert.equal(recorder.state["stGB28181.strFD_ServerIp"], "first.example");
  await open("platform");
}));

test("Wi-Fi: the way back is told, and the wait ends in what the recorder holds", () => withPage({ hash: "network/WifiInfo" }, async ({ page, recorder }) => {
  await page.fill("#WifiInfo-strFD_SSID", "New depot");
  recorder.silence();
  await page.click("#WifiInfo button[type=submit]");
  const question = await page.innerText("dialog");
  assert.match(question, /New depot[\s\S]*http:\/\/127\.0\.0\.1:8080\/[\s\S]*90 s/);
  await page.click("dialog .primary");
  await page.locator("#WifiInfo [role=timer]", { hasText: /\d+ s left/ }).waitFor();
  assert.match(await result(page, "WifiInfo").innerText(), /No answer[\s\S]*New depot/);
  recorder.wake();
  await result(page, "WifiInfo").getByText(/Saved|The recorder kept/).waitFor();

  // Accepting the mode, the daemon does not send the access point's settings.
  await page.selectOption("#WifiInfo-ucFD_WorkMode", "2");
  await saveText(page, "WifiInfo", "strFD_SSID", "Typed name");
  await result(page, "WifiInfo").getByText("The recorder kept:").waitFor();
  assert.match(await result(page, "WifiInfo").innerText(), /Network name \(SSID\) = Bus 234/);
  assert.equal(recorder.state["stWifi.ucFD_WorkMode"], "2");
}));

test("the clock: from this phone by one press, and untouched it runs on", () => withPage({ hash: "device" }, async ({ page, recorder }) => {
  const written = () => Date.parse(`${recorder.state["stBaseInfo.strFD_CurTime"].replace(" ", "T")}Z`);
  await page.fill("#BaseInfo-strFD_DeviceNo", "EDITED-1");
  await page.click("text=Set the clock from this phone");
  await saved(page, "BaseInfo");
  const phone = Date.now() + 8 * 3600e3; // the browser's zone is UTC+8
  assert.ok(Math.abs(phone - written()) < 10000);
  assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "DEMO100234");
  await saveText(page, "BaseInfo", "strFD_DeviceNo", "EDITED-2");
  await result(page, "BaseInfo").getByText("Saved").waitFor();
  const local = Date.now() - new Date().getTimezoneOffset() * 60e3;
  assert.ok(Math.abs(local - written()) < 10000);
  assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "EDITED-2");
}));

const HOSTILE = ["<img src=x onerror='hacked=1'>", "\"'&<>\\`${1}%00&amp;</p>]]>", "🚌 \u202Eevil\u202C \u200Fx\u200E", " ".repeat(31), "</script><script>hacked=1//"];
const fit = (text, bytes) => [...text].reduce((kept, next) => (Buffer.byteLength(kept + next) <= bytes ? kept + next : kept), "");

test("hostile texts: shown as text, run nothing, and go back as they came", async () => {
  const texts = groups.flatMap((group) => group.fields.filter(({ kind, name }) => /^(text|password)$/.test(kind) && name !== "strFD_DeviceNo")
    .map((field) => ({ group, field, place: WIRE[group.id][field.name][0] })));
  const evil = texts.map(({ field, place }, n) => [place, fit(HOSTILE[n % HOSTILE.length], field.width)]);
  const status = ["GpsPos", "IMEI", "IMSI", "ICCID", "Disk1Size", "Disk2Size", "IO", "McuVer", "AppVer"].map((name, n) => [`stSystemInfo.${name}`, fit(HOSTILE[n % HOSTILE.length], 31)]);
  const sets = [...evil, ...status, ["stVersion.strAppVer", HOSTILE[0]], ["stCMS.ucFD_AddressType", "1"]];
  const path = (place) => place.replace("SUBDEVID_0", "stGB28181.stGB28181SubID.SUBDEVID_0");
  await withPage({ recorderArgs: sets.flatMap(([place, value]) => ["--set", `${path(place)}=${value}`]), hash: "status" }, async ({ page, recorder, open }) => {
    await page.getByText(HOSTILE[0]).first().waitFor();
    for (const { group, field, place } of texts) {
      if (!(await page.locator(`#${group.id}`).count())) await open(group.section);
      const value = Object.fromEntries(evil)[place];
      assert.equal(await page.inputValue(`#${group.id}-${field.name}`), value, place);
      assert.equal(await page.evaluate(() => document.querySelectorAll("main img, main script").length + (typeof hacked === "undefined" ? 0 : 1)), 0);
    }
    for (const [section, id, name] of [["network", "WifiInfo", "ucFD_AuthMode"], ["network", "GNetInfo", "ucFD_NetType"], ["platform", "GB28181Info", "usFD_ServerPort"], ["network", "VCmsInfo", "usFD_Port"]]) {
      await open(section);
      await saveText(page, id, name, "77");
      await saved(page, id);
      assert.match(await result(page, id).innerText(), /^Saved/, id);
    }
    await open("about");
    await page.getByText(HOSTILE[0]).waitFor();
    const { state } = recorder;
    for (const [place, value] of evil) assert.equal(state[place], value, place);
    assert.equal(state["stWifi.ucFD_AuthMode"], "77");
  });
});

test("export from one recorder, import into another: equal states", async () => {
  const wanted = Object.values(WIRE).flatMap(Object.values).map(([place]) => place).filter((place) => !/CurTime|strFD_Domain/.test(place));
  let exported;
  let file;
  const sets = Object.values(WIRE).flatMap(Object.values).filter(([place]) => !/CurTime|VChn|SUBDEV|WorkMode|stCMS/.test(place))
    .flatMap(([place, value, expected = value]) => ["--set", `${place}=${expected}`]);
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
