// SPDX-License-Identifier: GPL-2.0-only
// Every field of every group, by keyboard alone; what a save can come to; hostile texts; settings files.

import assert from "node:assert/strict";
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { after, test } from "node:test";
import { requester } from "../../web_root/api.js";
import { save } from "../../web_root/exchange.js";
import { groups } from "../../web_root/schema.js";
import { ADDRESS, closeBrowsers, stopDaemon, withPage } from "./rig.js";

after(closeBrowsers);

// By group: the recorder's element, and for each field a value unlike the sample's, or [value, what
// arrives, the attribute's own name]. Independent of the page's schema on purpose. A choice's value
// is the start of a word to pick, or a number for "Other code".
const TABLE = {
  LangInfo: ["stDisplay", { strLanguage: ["English", "US"] }],
  BaseInfo: [
    "stBaseInfo",
    {
      strFD_DeviceNo: "VEHICLE-0007",
      ucFD_TimeZone: ["UTC+9", "9"],
      ucFD_GpsSTFlag: "0",
      strFD_CurTime: ["03152031092345PM", "2031-03-15 21:23:45"],
    },
  ],
  MirrorInfo: [
    "VChn_0",
    { strFD_LeftRight: ["0", "0", "ucFD_LeftRight"], strFD_UpDown: ["1", "1", "ucFD_UpDown"] },
  ],
  VCmsInfo: [
    "stCMS",
    {
      ucFD_AddressType: ["Domain", "1"],
      strFD_Address: ["中心.example", "中心.example", "strFD_Domain"],
      usFD_Port: "65535",
    },
  ],
  GNetInfo: [
    "stMobileGNet",
    {
      ucFD_NetType: "255",
      strFD_Apn: "运营商接入点abcdefghijklm",
      strFD_PhoneNo: "*99***1#0123456789 -+,;",
      strFD_UserName: "user name & co. \"of\" <35>bytes 'x'%",
      strFD_UserPasswd: "p+a%20s=s&w;o/r?d#密码🔑",
    },
  ],
  NetWModeInfo: [
    "stNetWorkMode",
    { ucFD_NetWType: ["7", "7", "ucFD_NetType"], usFD_GPSInterval: ["0600", "600"] },
  ],
  WifiInfo: [
    "stWifi",
    {
      ucFD_WorkMode: "5",
      strFD_SSID: ' 车队 Depot "5" ',
      strFD_Passwd: "1234567890123456789012345678901",
      ucFD_AuthMode: "9",
      ucFD_CryptType: "8",
      ucFD_DhcpEnableFlag: ["Off", "0"],
    },
  ],
  GB28181Info: [
    "stGB28181",
    {
      ucFD_GB28181Enable: ["1", "1", "ucFD_Enable"],
      ucFD_StreamType: ["Stream 0", "1", "ucFD_Enable"],
      strFD_ServerIp: "sip.example",
      usFD_ServerPort: "15060",
      strFD_ServerID: "44010000002000000001",
      strFD_DeviceId: "44010000001110000007",
      usFD_DevicePort: "1",
      strFD_DeviceUser: "bus-7",
      strFD_DevicePass: "new secret",
      strFD_Manufacturer: "某某车载设备厂ABC",
      strFD_ModelName: "MR-5",
      strFD_LensId: "44010000001310000007",
    },
  ],
};
// group -> field -> [place in the recorder's state, value, what arrives]
const WIRE = Object.fromEntries(
  Object.entries(TABLE).map(([id, [element, fields]]) => [
    id,
    Object.fromEntries(
      Object.entries(fields).map(([name, row]) => {
        const [value, arrives = value, attribute = name] = [row].flat();
        return [name, [`${name === "strFD_LensId" ? "SUBDEVID_0" : element}.${attribute}`, value, arrives]];
      }),
    ),
  ]),
);
const ROWS = Object.values(WIRE).flatMap(Object.values);

/** Presses Tab until `wanted`, an id or a button's word, has the focus: what cannot be reached cannot be used. */
async function tabTo({ page, press }, wanted) {
  const there = () =>
    page.evaluate(
      (id) => [document.activeElement.id, document.activeElement.textContent].includes(id),
      wanted,
    );
  for (let presses = 0; !(await there()); presses++) {
    assert.ok(presses < 150, `${wanted} is out of the keyboard's reach`);
    await press("Tab");
  }
}

async function fillByKeyboard(rig, id, { kind, open }, value) {
  await tabTo(rig, id);
  const { page, press } = rig;
  if (kind === "flag")
    return (await page.$eval(`#${id}`, ({ checked }) => checked)) === (value === "1") ? null : press("Space");
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
  return says(`#${id} .result`, told);
}

// Texts are made as wide as the page lets them be: one too wide for the daemon would arrive cut.
const wide = ({ kind, width }, text) =>
  /text|password/.test(kind) ? text + "x".repeat(width - Buffer.byteLength(text)) : text;

for (const group of groups) {
  const setUp = { hash: `${group.section}/${group.id}`, recorderArgs: ["--set", "stVersion.VideoCnt=3"] };
  test(`fields of ${group.id}: shown, edited, saved, read back, in the recorder`, () =>
    withPage(setUp, async (rig) => {
      const { page, recorder, value, press } = rig;
      const fields = group.fields.filter(({ kind }) => kind !== "fact");
      const wire = WIRE[group.id];
      assert.deepEqual(
        Object.keys(wire),
        fields.map(({ name }) => name),
      );
      const before = recorder.state;
      for (const field of fields) {
        const id = `${group.id}-${field.name}`;
        const [place, wanted] = wire[field.name];
        if (/text|password|number/.test(field.kind) && place !== "stCMS.strFD_Domain")
          assert.equal(await value(`#${id}`), before[place]);
        await fillByKeyboard(rig, id, field, wide(field, wanted));
      }
      await tabTo(rig, "Save");
      await press("Enter");
      if (group.cutsOff || group.id === "GB28181Info") {
        await page.waitForSelector("dialog");
        await tabTo(rig, "Save anyway");
        await press("Enter");
      }
      // No simulator sets the daemon's clock, so the clock is the one thing that reads back otherwise.
      const clock = /^The recorder kept:\s+Clock of the recorder = \d{4}-.{14}$/;
      await rig.says(
        `#${group.id} .result`,
        { LangInfo: /saved|已保存/i, BaseInfo: clock }[group.id] ?? /^Saved/,
      );
      const { state } = recorder;
      for (const field of fields)
        assert.equal(state[wire[field.name][0]], wide(field, wire[field.name][2]), field.name);
    }));
}

for (const name of ["chrome", "firefox"]) {
  test(`a save in ${name}: once, focus kept, too long, refusal, silence and a lost daemon told apart`, () =>
    withPage({ hash: "platform", name }, async (rig) => {
      const { page, recorder, traffic, fill, click, press, text } = rig;
      const [id, field] = ["GB28181Info", "strFD_ServerIp"];
      const writes = () => traffic.all.filter((request) => request.url().includes("/set_")).length;
      await fill(`#${id}-${field}`, "first.example");
      await page.focus(`#${id}-${field}`);
      await press("Enter", "Enter");
      assert.ok(await page.$eval(`#${id} progress`, (bar) => bar.offsetHeight > 0));
      await rig.says(`#${id} .result`, /^Saved/);
      assert.equal(writes(), 1);
      assert.equal(await page.evaluate(() => document.activeElement.id), `${id}-${field}`);

      await fill(`#${id}-${field}`, "车".repeat(11)); // 11 characters, but 33 bytes of at most 31
      await click(submit(id));
      assert.match(await text(`#${id}-${field}-error`), /33 bytes of at most 31/);
      await click(`#${id} ::-p-text(Revert)`);
      assert.equal(await rig.value(`#${id}-${field}`), "first.example");
      assert.equal(await page.$eval(`#${id} .footer`, ({ hidden }) => hidden), true);

      await recorder.start("--result", "3");
      const kept = /^The recorder kept:\s+SIP server address = first\.example$/;
      await saveText(rig, id, field, "refused.example", kept);
      assert.equal(await rig.value(`#${id}-${field}`), "refused.example");
      recorder.silence();
      await saveText(rig, id, field, "silent.example", /^No answer from the recorder; nothing was sent/);
      recorder.wake();
      await stopDaemon(rig);
      await saveText(rig, id, field, "gone.example", /^No answer: the connection.*nothing was sent/);
      assert.equal(recorder.state["stGB28181.strFD_ServerIp"], "first.example");
    }));
}

test("two writers: other fields stay, the same field is a choice, in the form too", () =>
  withPage({ hash: "network" }, async (rig) => {
    const { recorder, fill, click, says } = rig;
    const request = requester((path, init) => fetch(ADDRESS + path, init));
    const other = (edits) =>
      save(
        request,
        groups.find(({ id }) => id === "GNetInfo"),
        edits,
      );
    const at = (name) => recorder.state[`stMobileGNet.${name}`];
    await fill("#GNetInfo-strFD_UserName", "mine");
    await other({ strFD_Apn: "theirs.apn", strFD_UserPasswd: "theirs" });
    await click(submit("GNetInfo"));
    await says("#GNetInfo .result", /^Saved/);
    assert.deepEqual(["strFD_UserName", "strFD_Apn", "strFD_UserPasswd"].map(at), [
      "mine",
      "theirs.apn",
      "theirs",
    ]);

    for (const [choice, holds] of [
      ["Keep mine", "mine.2"],
      ["Take the recorder's", "theirs.3"],
    ]) {
      const [, round] = holds.split(".");
      await fill("#GNetInfo-strFD_Apn", `mine.${round}`);
      await other({ strFD_Apn: `theirs.${round}` });
      await click(submit("GNetInfo"));
      await says("#GNetInfo .result", /Changed in the recorder meanwhile.*\s+Access.*theirs/);
      assert.equal(at("strFD_Apn"), `theirs.${round}`);
      await click(`#GNetInfo .clash ::-p-text(${choice})`);
      if (holds === "mine.2") {
        await click(submit("GNetInfo"));
        await says("#GNetInfo .result", /^Saved/);
      }
      assert.equal(at("strFD_Apn"), holds);
      assert.equal(await rig.value("#GNetInfo-strFD_Apn"), holds);
    }
  }));

const OTHER = ["--set", "stSystemInfo.IMEI=111111111111111", "--set", "stBaseInfo.strFD_DeviceNo=OTHER-9"];

test("another recorder: told, edits aside, nothing written until decided; drafts survive the tab", () =>
  withPage({ hash: "network" }, async (rig) => {
    const { page, recorder, traffic, fill, click, says, open } = rig;
    const field = "#GNetInfo-strFD_Apn";
    const imei = recorder.state["stSystemInfo.IMEI"];
    await says("#who", /DEMO100234/);
    await fill(field, "edited.apn");
    await fill("#GNetInfo-strFD_UserPasswd", "never kept");
    await recorder.start(...OTHER);
    await says("#banner", /OTHER-9 instead of DEMO100234/);
    await click(submit("GNetInfo"));
    await says("#GNetInfo .result", /Another recorder answers; nothing was sent/);
    assert.ok(!traffic.all.some((request) => request.url().includes("/set_")));
    await click("#banner ::-p-text(keep my changes for the other)");
    await rig.holds(field, "internet.carrier.example");
    assert.match(await page.title(), /^OTHER-9 · Network/);

    await recorder.start(
      "--set",
      `stSystemInfo.IMEI=${imei}`,
      "--set",
      "stBaseInfo.strFD_DeviceNo=DEMO100234",
    );
    await says("#banner", /DEMO100234 instead of OTHER-9/);
    await click("#banner button");
    await rig.holds(field, "edited.apn");
    await page.goto("about:blank");
    await open("network");
    await rig.holds(field, "edited.apn");
    assert.equal(await rig.value("#GNetInfo-strFD_UserPasswd"), "fleet-secret");
    assert.equal(await page.evaluate(() => JSON.stringify(sessionStorage).includes("never kept")), false);
    await recorder.start(...OTHER);
    await click("#banner ::-p-text(bring)");
    await page.waitForSelector("#banner:empty");
    assert.equal(await rig.value(field), "edited.apn");
  }));

test("what could not be read is unset and wanted, never zero", () =>
  withPage({ hash: "device", recorderArgs: ["--set", "stBaseInfo.strFD_DeviceNo=AB"] }, async (rig) => {
    const { page, recorder, traffic, fill, click, says } = rig;
    await click("#BaseInfo ::-p-text(Fill in anyway)");
    await fill("#BaseInfo-strFD_DeviceNo", "FILLED-1");
    await click(submit("BaseInfo"));
    assert.match(await says("#BaseInfo .result", /3 to correct/), /Time zone[\s\S]*GPS[\s\S]*Clock/);
    assert.ok(!traffic.all.some((request) => request.url().includes("/set_")));
    await page.select("#BaseInfo-ucFD_TimeZone", "9");
    await page.select("#BaseInfo-ucFD_GpsSTFlag", "0");
    await click("#BaseInfo ::-p-text(Set the clock from)");
    await click(submit("BaseInfo"));
    await says("#BaseInfo .result", /^(Saved|The recorder kept:\s+Clock)/);
    const { state } = recorder;
    assert.equal(state["stBaseInfo.strFD_DeviceNo"] + state["stBaseInfo.ucFD_TimeZone"], "FILLED-19");
  }));

test("Wi-Fi: Cancel sends nothing, the wait can be stopped, an access point's name is not typed", () =>
  withPage({ hash: "network/WifiInfo" }, async (rig) => {
    const { page, recorder, traffic, fill, click, says, text } = rig;
    await page.exposeFunction("beforeWrite", () => recorder.silence());
    await page.evaluate(() => {
      const real = window.fetch;
      window.fetch = async (path, init) => {
        if (path.includes("/set_Wifi") && !window.awake) await window.beforeWrite();
        return real(path, init);
      };
    });
    await fill("#WifiInfo-strFD_SSID", "New depot");
    await click(submit("WifiInfo"));
    assert.match(await says("dialog", /./), /New depot[\s\S]*http:\/\/127\.0\.0\.1:8080\/[\s\S]*90 s/);
    await click("dialog ::-p-text(Cancel)");
    assert.ok(!traffic.all.some((request) => request.url().includes("/set_")));
    for (const end of ["stop", "wake"]) {
      await fill("#WifiInfo-strFD_SSID", `New depot ${end}`);
      await click(submit("WifiInfo"));
      await click(go);
      await says("#WifiInfo [role=timer]", /\d+ s left/);
      assert.match(await text("#WifiInfo .result"), /not known what was saved[\s\S]*New depot/);
      if (end === "stop") {
        await click("#WifiInfo ::-p-text(Stop waiting)");
        await says("#WifiInfo [role=timer]", /^$/); // while the recorder is silent still
      }
      recorder.wake();
      await says("#WifiInfo .result", end === "stop" ? /not known what was saved/ : /^Saved/);
      await says("#WifiInfo [role=timer]", /^$/);
      await says("#link", /Connected/);
    }
    await page.evaluate(() => (window.awake = true));

    await fill("#WifiInfo-strFD_SSID", "Typed name");
    await page.select("#WifiInfo-ucFD_WorkMode", "2");
    assert.equal(await page.$eval("#WifiInfo-strFD_SSID", ({ readOnly }) => readOnly), true);
    await click(submit("WifiInfo"));
    assert.doesNotMatch(await says("dialog", /own network/), /Typed name/);
    await click(go);
    await says("#WifiInfo .result", /^Saved/);
    assert.equal(await rig.value("#WifiInfo-strFD_SSID"), "Bus 234");
    assert.equal(recorder.state["stWifiAp.strFD_SSID"], "Bus 234");
    await page.select("#WifiInfo-ucFD_WorkMode", "1"); // the client's network is not known now
    assert.equal(await rig.value("#WifiInfo-strFD_SSID"), "");
    await click(submit("WifiInfo"));
    await says("#WifiInfo .result", /5 to correct/);
    await page.select("#WifiInfo-ucFD_WorkMode", "2");
    await click("#WifiInfo [aria-label='Show network key']");
    assert.equal(await page.$eval("#WifiInfo-strFD_Passwd", ({ type }) => type), "text");
  }));

test("the clock: from this device by one press, and untouched it runs on", () =>
  withPage({ hash: "device", recorderArgs: ["--set", "stBaseInfo.ucFD_TimeZone=251"] }, async (rig) => {
    const { page, recorder, fill, click, says } = rig;
    const written = () => Date.parse(`${recorder.state["stBaseInfo.strFD_CurTime"].replace(" ", "T")}Z`);
    assert.match(await says("#BaseInfo-clock-note", /./), /in UTC\+8.*is UTC−5.*GPS sets/);
    await fill("#BaseInfo-strFD_DeviceNo", "EDITED-1");
    await click("::-p-text(Set the clock from this device)");
    await says("#BaseInfo .result", /./);
    assert.ok(Math.abs(Date.now() + 8 * 3600e3 - written()) < 10000); // the browser's zone is UTC+8
    assert.equal(recorder.state["stBaseInfo.strFD_DeviceNo"], "DEMO100234");
    await saveText(rig, "BaseInfo", "strFD_DeviceNo", "EDITED-2", /^Saved/);
    assert.ok(Math.abs(Date.now() - new Date().getTimezoneOffset() * 60e3 - written()) < 10000);
    await says("#who", /EDITED-2/);
    await click("#tab-status");
    await page.waitForSelector("[data-section=status]");
    await click("#tab-device");
    await page.waitForSelector("#BaseInfo .result");
    assert.equal(await rig.text("#BaseInfo .result"), ""); // of the earlier visit
  }));

const HOSTILE = [
  "<img src=x onerror='hacked=1'>",
  "\"'&<>\\`${1}%00&amp;</p>]]>",
  "🚌 \u202Eevil\u202C \u200Fx\u200E",
  " ".repeat(31),
  "</script><script>hacked=1//",
];
const fit = (text, bytes) =>
  [...text].reduce((kept, next) => (Buffer.byteLength(kept + next) <= bytes ? kept + next : kept), "");

test("hostile texts: shown as text, run nothing, and go back as they came", async () => {
  const isText = ({ kind, name }) => /text|password/.test(kind) && name !== "strFD_DeviceNo";
  const hostile = groups.filter(
    ({ fields }) => fields.some(isText) && fields.some(({ kind }) => kind === "number"),
  );
  const evil = hostile.flatMap(({ id, fields }) =>
    fields
      .filter(isText)
      .map(({ name, width }, n) => [WIRE[id][name][0], fit(HOSTILE[n % HOSTILE.length], width)]),
  );
  const places = ["GpsPos", "IMEI", "IMSI", "ICCID", "Disk1Size", "Disk2Size", "IO", "McuVer"];
  const status = places.map((name, n) => [`stSystemInfo.${name}`, fit(HOSTILE[n % HOSTILE.length], 31)]);
  assert.equal(evil.length, 15);
  const sets = [...evil, ...status, ["stVersion.strAppVer", HOSTILE[0]], ["stCMS.ucFD_AddressType", "1"]];
  const path = (place) => place.replace("SUBDEVID_0", "stGB28181.stGB28181SubID.SUBDEVID_0");
  const recorderArgs = sets.flatMap(([place, value]) => ["--set", `${path(place)}=${value}`]);
  await withPage({ recorderArgs, hash: "status" }, async (rig) => {
    const { page, recorder, open, says } = rig;
    const policy = await page.$eval("meta[http-equiv=Content-Security-Policy]", ({ content }) => content);
    assert.match(policy, /^default-src 'none';(?!.*(unsafe|\*|http))/);
    await says("#view", /<img src=x/);
    const given = Object.fromEntries(evil);
    for (const { id, section, fields } of hostile) {
      await open(section);
      for (const { name } of fields.filter(isText))
        assert.equal(await rig.value(`#${id}-${name}`), given[WIRE[id][name][0]], name);
      await saveText(rig, id, fields.find(({ kind }) => kind === "number").name, "77", /^Saved/);
      const ran = () => document.querySelectorAll("main img, main script").length || "hacked" in window;
      assert.equal(await page.evaluate(ran), false);
    }
    await open("about");
    await says("#view", /<img src=x/);
    const { state } = recorder;
    for (const [place, value] of evil) assert.equal(state[place], value, place);
  });
});

test("export from one recorder, import into another: equal states; what is unread is skipped and named", async () => {
  const wanted = ROWS.map(([place]) => place).filter((place) => !/CurTime|strFD_Domain/.test(place));
  let [exported, content] = [];
  const sets = ROWS.filter(([place]) => !/CurTime|VChn|SUBDEV|ucFD_WorkMode|stCMS/.test(place)).flatMap(
    ([place, , arrives]) => ["--set", `${place}=${arrives}`],
  );
  const from = { recorderArgs: [...sets, "--set", "stCMS.uiFD_IP=198.51.100.77"], hash: "backup" };
  await withPage(from, async ({ page, recorder, click, says, context }) => {
    const downloadPath = dirname(recorder.file);
    const protocol = await page.createCDPSession();
    await protocol.send("Browser.setDownloadBehavior", {
      ...{ behavior: "allow", downloadPath, eventsEnabled: true, browserContextId: context.id },
    });
    const done = new Promise((go_) =>
      protocol.on("Browser.downloadProgress", (e) => e.state === "completed" && go_()),
    );
    await click("::-p-text(Save all settings to a file)");
    await done;
    const [name] = readdirSync(downloadPath).filter((one) => one.endsWith(".json"));
    content = JSON.parse(readFileSync(join(downloadPath, name), "utf8"));
    exported = recorder.state;
    assert.match(name, /^recorder-VEHICLE-0007-\d{4}-\d\d-\d\d\.json$/);
    await recorder.start("--silent", "stCMS");
    await click("::-p-text(Save all settings to a file)");
    await says("#view", /skipped: Central server/);
  });
  await withPage({ hash: "backup" }, async ({ page, recorder, click, says }) => {
    const file = join(dirname(recorder.file), "settings.json");
    const load = async (change) => {
      writeFileSync(file, JSON.stringify({ ...content, ...change }));
      await (await page.$("#settings-file")).uploadFile(file);
    };
    for (const [change, told] of [
      [{ version: 2 }, /of a newer version/],
      [{ format: "" }, /no settings file/],
      [{ groups: { ...content.groups, Other: {} } }, /Unknown names, ignored: Other/],
    ]) {
      await load(change);
      await says("#view", told);
    }
    const ticked = () => page.$$eval(".pick input", (boxes) => boxes.filter(({ checked }) => checked).length);
    await load({});
    await page.waitForSelector(".pick input");
    assert.equal(await page.$eval("#pick-BaseInfo-strFD_DeviceNo", ({ checked }) => checked), false);
    await click(".buttons ::-p-text(None)");
    assert.equal(await ticked(), 0);
    await click(".buttons ::-p-text(All)");
    const writes = [];
    page.on("request", (request) => /set_/.test(request.url()) && writes.push(request.url()));
    await click("::-p-text(Write what is ticked)");
    await click(go);
    await says("#view", /Done: (\d+) of \1 groups saved/);
    assert.match(writes.slice(-2).join(), /NetWMode.*Wifi/);
    const { state } = recorder;
    for (const place of [...wanted, "stCMS.uiFD_IP"]) assert.equal(state[place], exported[place], place);
    await load({});
    await says("#view", /Nothing differs/);
  });
});
