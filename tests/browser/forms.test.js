// SPDX-License-Identifier: GPL-2.0-only
// Every field of every group, by keyboard alone; what a save can come to; hostile texts; settings files.

import assert from "node:assert/strict";
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { requester } from "../../web_root/api.js";
import { save } from "../../web_root/exchange.js";
import { groups } from "../../web_root/schema.js";
import { ADDRESS, BOTH, inBrowser } from "./rig.js";

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
async function tabTo({ page, press }, wanted) {
  const there = (id) => [document.activeElement.id, document.activeElement.textContent].includes(id);
  for (let presses = 0; !(await page.evaluate(there, wanted)); presses++) {
    assert.ok(presses < 150, `${wanted} is out of the keyboard's reach`);
    await press("Tab");
  }
}

async function fillByKeyboard(rig, id, { kind, open }, value) {
  await tabTo(rig, id);
  const { page, press } = rig;
  if (kind === "flag") return value === ((await page.$(`#${id}:checked`)) ? "1" : "0") || press("Space");
  if (kind === "choice" && open && /^\d+$/.test(value)) {
    await page.keyboard.type("Other");
    await press("Tab");
  }
  if (kind !== "choice" && kind !== "clock") await page.evaluate(() => document.activeElement.select());
  return page.keyboard.type(value);
}

const submit = (id) => `#${id} button[type=submit]`;
const go = "dialog .primary";

/** Changes one text, saves, answers a question if there is one, and waits for what is told. */
async function saveText({ fill, click, page, says }, id, name, value, told) {
  await fill(`#${id}-${name}`, value);
  await click(submit(id));
  if (await page.$("dialog")) await click(go);
  await says(`#${id} .result`, told);
}

for (const { id, section, fields, cutsOff } of groups) {
  const setUp = { at: `${section}/${id}`, options: ["--set=stVersion.VideoCnt=3"] };
  inBrowser(`fields of ${id}: shown, edited, saved, read back, in the recorder`, setUp, async (rig) => {
    const { recorder, value, press, says } = rig;
    const before = recorder.state;
    const filled = [];
    const rows = FIELDS.filter(([place]) => place.startsWith(`${id}.`));
    const shown = fields.filter(({ kind }) => kind !== "fact").map(({ name }) => `${id}.${name}`);
    assert.deepEqual(
      rows.map(([place]) => place),
      shown,
    );
    for (const [place, at, text, arrives = text] of rows) {
      const field = fields.find(({ name }) => place.endsWith(name));
      const isText = /text|password/.test(field.kind);
      const input = `${id}-${field.name}`;
      if ((isText || field.kind === "number") && at !== "stCMS.strFD_Domain")
        assert.equal(await value(`#${input}`), before[at]);
      // Texts are made as wide as the page lets them be: one too wide for the daemon would arrive cut.
      const rest = isText ? "x".repeat(field.width - Buffer.byteLength(text)) : "";
      await fillByKeyboard(rig, input, field, text + rest);
      filled.push([at, arrives + rest]);
    }
    await tabTo(rig, "Save");
    await press("Enter");
    if (cutsOff || id === "GB28181Info") {
      await says(go, /Save anyway/);
      await tabTo(rig, "Save anyway");
      await press("Enter");
    }
    // No simulator sets the daemon's clock, so the clock is the one thing that reads back otherwise.
    const clock = /^The recorder kept:\s+Clock of the recorder = \d{4}-.{14}$/;
    await says(`#${id} .result`, { LangInfo: /saved|已保存/i, BaseInfo: clock }[id] ?? /^Saved/);
    for (const [at, text] of filled) assert.equal(recorder.state[at], text, at);
  });
}

const platform = { at: "platform", names: BOTH };
inBrowser("a save: once, focus kept, too long, refusal and silence told apart", platform, async (rig) => {
  const { page, recorder, writes, fill, click, press, says } = rig;
  const [id, name] = ["GB28181Info", "strFD_ServerIp"];
  const field = `#${id}-${name}`;
  await fill(field, "first.example");
  await press("Enter", "Enter");
  assert.ok(await page.$eval(`#${id} progress`, (bar) => bar.offsetHeight > 0));
  await says(`#${id} .result`, /^Saved/);
  assert.equal(writes().length, 1);
  assert.equal(await page.evaluate(() => `#${document.activeElement.id}`), field);

  await fill(field, "车".repeat(11)); // 11 characters, but 33 bytes of at most 31
  await click(submit(id));
  await says(`${field}-error`, /33 bytes of at most 31/);
  await click(`#${id} ::-p-text(Revert)`);
  await says(field, /^first.example$/);
  await page.waitForSelector(`#${id} .footer`, { hidden: true });

  await recorder.start("--result=3");
  await saveText(
    rig,
    id,
    name,
    "refused.example",
    /^The recorder kept:\s+SIP server address = first\.example$/,
  );
  await says(field, /^refused.example$/);
  recorder.silence();
  await saveText(rig, id, name, "silent.example", /^No answer from the recorder; nothing was sent/);
  assert.equal(recorder.state["stGB28181.strFD_ServerIp"], "first.example");
});

inBrowser(
  "two writers: other fields stay, the same field is a choice",
  { at: "network", names: BOTH },
  async (rig) => {
    const { recorder, click, says } = rig;
    const request = requester((path, init) => fetch(ADDRESS + path, init));
    const group = groups.find(({ id }) => id === "GNetInfo");
    const at = (name) => recorder.state[`stMobileGNet.${name}`];
    await rig.fill("#GNetInfo-strFD_UserName", "mine");
    await save(request, group, { strFD_Apn: "theirs", strFD_UserPasswd: "theirs" });
    await click(submit("GNetInfo"));
    await says("#GNetInfo .result", /^Saved/);
    const held = ["strFD_UserName", "strFD_Apn", "strFD_UserPasswd"].map(at);
    assert.deepEqual(held, ["mine", "theirs", "theirs"]);

    const choices = { "Keep mine": "mine.2", "Take the recorder's": "theirs.3" };
    for (const [choice, holds] of Object.entries(choices)) {
      const theirs = holds.replace("mine", "theirs");
      await save(request, group, { strFD_Apn: theirs });
      const clash = /Changed in the recorder meanwhile.*\s+Access.*theirs/;
      await saveText(rig, "GNetInfo", "strFD_Apn", theirs.replace("theirs", "mine"), clash);
      assert.equal(at("strFD_Apn"), theirs);
      await click(`#GNetInfo .clash ::-p-text(${choice})`);
      if (choice === "Keep mine") {
        await click(submit("GNetInfo"));
        await says("#GNetInfo .result", /^Saved/);
      }
      await says("#GNetInfo-strFD_Apn", RegExp(`^${holds}$`));
      assert.equal(at("strFD_Apn"), holds);
    }
  },
);

const OTHER = [set("stSystemInfo.IMEI", "111111111111111"), set("stBaseInfo.strFD_DeviceNo", "OTHER-9")];

inBrowser(
  "another recorder: told, edits aside, nothing written until decided; drafts",
  { at: "network" },
  async (rig) => {
    const { page, recorder, writes, fill, click, says, open } = rig;
    const [field, secret] = ["#GNetInfo-strFD_Apn", "#GNetInfo-strFD_UserPasswd"];
    await says("#who", /DEMO100234/);
    await fill(field, "edited.apn");
    await fill(secret, "never kept");
    await recorder.start(...OTHER);
    await says("#banner", /OTHER-9 instead of DEMO100234/);
    await click(submit("GNetInfo"));
    await says("#GNetInfo .result", /Another recorder answers; nothing was sent/);
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
  },
);

const unread = { at: "device", options: ["--set=stBaseInfo.strFD_DeviceNo=AB"] };
inBrowser("what could not be read is unset and wanted, never zero", unread, async (rig) => {
  const { page, recorder, writes, fill, click, says } = rig;
  await click("#BaseInfo ::-p-text(Fill in anyway)");
  await fill("#BaseInfo-strFD_DeviceNo", "FILLED-1");
  await click(submit("BaseInfo"));
  await says("#BaseInfo .result", /3 to correct[^]*Time zone[^]*GPS[^]*Clock/);
  assert.deepEqual(writes(), []);
  await page.select("#BaseInfo-ucFD_TimeZone", "9");
  await page.select("#BaseInfo-ucFD_GpsSTFlag", "0");
  await click("#BaseInfo ::-p-text(Set the clock from)");
  await click(submit("BaseInfo"));
  await says("#BaseInfo .result", /^(Saved|The recorder kept:\s+Clock)/);
  const { state } = recorder;
  assert.equal(state["stBaseInfo.strFD_DeviceNo"] + state["stBaseInfo.ucFD_TimeZone"], "FILLED-19");
});

inBrowser(
  "Wi-Fi: Cancel sends nothing, the wait can be stopped, an access point's name is not typed",
  { at: "network/WifiInfo" },
  async (rig) => {
    const { page, recorder, writes, fill, click, says } = rig;
    const [name, mode, result] = ["#WifiInfo-strFD_SSID", "#WifiInfo-ucFD_WorkMode", "#WifiInfo .result"];
    await page.exposeFunction("beforeWrite", recorder.silence);
    await page.evaluate(() => {
      const real = window.fetch;
      window.fetch = async (path, init) => {
        if (path.includes("/set_Wifi") && !window.awake) await window.beforeWrite();
        return real(path, init);
      };
    });
    await fill(name, "New depot");
    await click(submit("WifiInfo"));
    await says("dialog", /New depot[^]*http:\/\/127\.0\.0\.1:8080\/[^]*90 s/);
    await click("dialog ::-p-text(Cancel)");
    await page.waitForFunction(() => !document.querySelector("dialog"));
    for (const end of ["stop", "wake"]) {
      assert.equal(writes().length, end === "stop" ? 0 : 1);
      await fill(name, `New depot ${end}`);
      await click(submit("WifiInfo"));
      await click(go);
      await says("#WifiInfo [role=timer]", /\d+ s left/);
      await says(result, /not known what was saved[^]*New depot/);
      if (end === "stop") {
        await click("#WifiInfo ::-p-text(Stop waiting)");
        await says("#WifiInfo [role=timer]", /^$/); // while the recorder is silent still
      }
      recorder.wake();
      await says(result, end === "stop" ? /not known what was saved/ : /^Saved/);
      await says("#link", /Connected/);
    }
    await page.evaluate(() => (window.awake = true));

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
    await click(submit("WifiInfo"));
    await says(result, /5 to correct/);
    await click("#WifiInfo [aria-label='Show network key']");
    await page.waitForSelector("#WifiInfo-strFD_Passwd[type=text]");
  },
);

const west = { at: "device", options: ["--set=stBaseInfo.ucFD_TimeZone=251"] };
inBrowser("the clock: from this device by one press, and untouched it runs on", west, async (rig) => {
  const { recorder, fill, click, says } = rig;
  const isWritten = (now) => {
    const written = Date.parse(`${recorder.state["stBaseInfo.strFD_CurTime"].replace(" ", "T")}Z`);
    assert.ok(Math.abs(now - written) < 60000, new Date(written));
  };
  await says("#BaseInfo-clock-note", /in UTC\+8.*is UTC−5.*GPS sets/);
  await fill("#BaseInfo-strFD_DeviceNo", "EDITED-1");
  await click("::-p-text(Set the clock from this device)");
  await says("#BaseInfo .result", /./);
  isWritten(Date.now() + 8 * 3600e3); // the browser's zone is UTC+8
  assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "DEMO100234");
  await saveText(rig, "BaseInfo", "strFD_DeviceNo", "EDITED-2", /^Saved/);
  isWritten(Date.now() - new Date().getTimezoneOffset() * 60e3);
  await says("#who", /EDITED-2/);
  await rig.open("status");
  await rig.open("device");
  await says("#BaseInfo .result", /^$/); // of the earlier visit
});

const HOSTILE = [
  "<img src=x onerror='hacked=1'>",
  "\"'&<>\\`${1}%00&amp;</p>]]>",
  "🚌 \u202Eevil\u202C \u200Fx\u200E",
  " ".repeat(31),
  "</script><script>hacked=1//",
];
const fit = (bytes, n) =>
  [...HOSTILE[n % HOSTILE.length]].reduce(
    (kept, next) => (Buffer.byteLength(kept + next) <= bytes ? kept + next : kept),
    "",
  );
const isText = ({ kind, name }) => /text|password/.test(kind) && name !== "strFD_DeviceNo";
const hostile = groups.filter(
  ({ fields }) => fields.some(isText) && fields.some(({ kind }) => kind === "number"),
);
const evil = hostile
  .flatMap(({ id, fields }) =>
    fields
      .filter(isText)
      .map(({ name, width }, n) => [...FIELDS.find(([place]) => place === `${id}.${name}`), fit(width, n)]),
  )
  .map((row) => [...row.slice(0, 2), row.at(-1)]);
const STATUS = ["GpsPos", "IMEI", "IMSI", "ICCID", "Disk1Size", "Disk2Size", "IO", "McuVer"];
const hostileRecorder = {
  at: "status",
  options: [
    ...evil.map(([, place, text]) => set(place, text)),
    ...STATUS.map((name, n) => set(`stSystemInfo.${name}`, fit(31, n))),
    ...[set("stVersion.strAppVer", HOSTILE[0]), set("stCMS.ucFD_AddressType", "1")],
  ],
};

inBrowser(
  "hostile texts: shown as text, run nothing, and go back as they came",
  hostileRecorder,
  async (rig) => {
    const { page, recorder, open, says } = rig;
    const policy = await page.$eval("meta[http-equiv=Content-Security-Policy]", ({ content }) => content);
    assert.match(policy, /^default-src 'none';(?!.*(unsafe|\*|http))/);
    await says("#view", /<img src=x/);
    assert.equal(evil.length, 15);
    for (const { id, section, fields } of hostile) {
      await open(section);
      for (const [place, , text] of evil.filter(([field]) => field.startsWith(id)))
        assert.equal(await rig.value(`#${place.replace(".", "-")}`), text, place);
      await saveText(rig, id, fields.find(({ kind }) => kind === "number").name, "77", /^Saved/);
      const ran = () => document.querySelectorAll("main img, main script").length || "hacked" in window;
      assert.equal(await page.evaluate(ran), false);
    }
    await open("about");
    await says("#view", /<img src=x/);
    for (const [, place, text] of evil) assert.equal(recorder.state[place], text, place);
  },
);

// What is not of one recorder alone, with a group that neither recorder gives.
const shared = FIELDS.filter(([, place]) => !/CurTime|VChn|SUBDEV|ucFD_WorkMode|stCMS/.test(place));
const from = {
  at: "backup",
  options: [...shared.map(([, place, text, arrives = text]) => set(place, arrives)), "--silent=stCMS"],
};

inBrowser(
  "export from one recorder, import into another: equal states; what is unread is skipped and named",
  from,
  async (rig) => {
    const { page, recorder, click, says, context } = rig;
    const downloadPath = dirname(recorder.file);
    const protocol = await page.createCDPSession();
    const downloads = { behavior: "allow", downloadPath, eventsEnabled: true, browserContextId: context.id };
    await protocol.send("Browser.setDownloadBehavior", downloads);
    const done = new Promise((over) =>
      protocol.on("Browser.downloadProgress", (e) => e.state === "completed" && over()),
    );
    await click("::-p-text(Save all settings to a file)");
    await done;
    const [name] = readdirSync(downloadPath).filter((one) => one.endsWith(".json"));
    assert.match(name, /^recorder-VEHICLE-0007-\d{4}-\d\d-\d\d\.json$/);
    await says("#view", /skipped: Central server/);
    const exported = recorder.state;
    await recorder.restart("--silent=stCMS");

    const content = JSON.parse(readFileSync(join(downloadPath, name), "utf8"));
    const load = async (change, told) => {
      writeFileSync(join(downloadPath, "settings.json"), JSON.stringify({ ...content, ...change }));
      await (await page.$("#settings-file")).uploadFile(join(downloadPath, "settings.json"));
      await says("#view", told);
    };
    await load({ version: 2 }, /of a newer version/);
    await load({ format: "" }, /no settings file/);
    await load(
      { groups: { ...content.groups, Other: {} } },
      /groups differ[^]*Unknown names, ignored: Other/,
    );
    const ticked = () => page.$$eval(".pick input", (boxes) => boxes.filter(({ checked }) => checked).length);
    assert.equal(await page.$eval("#pick-BaseInfo-strFD_DeviceNo", ({ checked }) => checked), false);
    await click(".buttons ::-p-text(None)");
    assert.equal(await ticked(), 0);
    await click(".buttons ::-p-text(All)");
    await click("::-p-text(Write what is ticked)");
    await click(go);
    await says("#view", /Done: (\d+) of \1 groups saved/);
    assert.match(rig.writes().slice(-2).join(), /NetWMode.*Wifi/);
    for (const [, place] of shared) assert.equal(recorder.state[place], exported[place], place);
    await load({}, /could be compared does not differ/);
  },
);
