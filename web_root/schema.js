// SPDX-License-Identifier: GPL-2.0-only
// The one description of all settings: forms, checks, both languages and the settings file follow it.
// Data and pure functions only: no document, no requests.
//
// A group is one pair of API paths, /get_ID and /set_ID:
//   section  where its form is shown; `title` [Chinese, English]; `intro` the same, optional
//   cutsOff  writing it may take this device off the recorder's network
//   mendable its own values can make it unreadable, so it may be written without having been read
//   partial  (values) -> whether a part of the answer is missing, so that it is read once more
//   side     (values) -> which of the recorder's records the `sided` fields stand for
// A field is one row:
//   name, kind, label, help   `label` and `help` are [Chinese, English]
//   width    text and password: the most bytes of UTF-8 that reach the recorder; `min` the fewest
//   max      number: the largest value of the recorder's field
//   unit     number: [Chinese, English]
//   codes    choice: [code, word]; `open`: any other code up to `max` can be entered as a number
//   own      belongs to one recorder: not taken over from another one's file unless asked for
//   check    (value, values) -> [Chinese, English] when the value would not arrive as typed
//   doubt    (value, values) -> [Chinese, English] when the value arrives but hardly works
//   locked   (values) -> [Chinese, English] when it is not written at all
//   kept     (value, values) -> the value that the recorder is to end up with, when another
//   sided, decides   its value is another one on the other `side`; it decides the side
//   fromApi, toApi   between the API's text and the value that is shown; toApi(value, values)
// Kinds: text, password, number, choice, flag (0 or 1), clock, fact (read only, never sent).

const BYTE = 255;
const WORD = 65535;
const DOTTED = /^(25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d)(\.(25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d)){3}$/;

// UTC-12 to UTC+14, as the signed byte of the recorder.
const TIME_ZONES = Array.from({ length: 27 }, (_, n) => n - 12).map((hours) => [
  String(hours & BYTE),
  Array(2).fill(`UTC${hours < 0 ? "−" : "+"}${Math.abs(hours)}`),
]);

// Values that arrive, and hardly work. Each makes a `doubt` of a field.
const needed = (value) => (value === "" ? ["为空", "It is empty"] : undefined);
const neededPort = (value) => (Number(value) === 0 ? ["端口为 0", "The port is 0"] : undefined);
const platformId = (value) =>
  /^\d{20}$/.test(value) ? undefined : ["不是 20 位数字", "It is not 20 digits"];
const shortKey = (value) =>
  value.length > 0 && value.length < 8
    ? ["WPA 密码至少 8 个字符", "WPA keys have 8 characters or more"]
    : undefined;
const whenRegistering = (doubt) => (value, values) =>
  values.ucFD_GB28181Enable === "1" ? doubt(value) : undefined;

function lensProblem(value, { iVideoChnCount: channels }) {
  if (value.includes("*")) return ["不能包含 *", "Must not contain *"];
  if (value && channels === "0")
    return ["通道数未知，无法保存", "The number of channels is not known, so it would be lost"];
  if (value.length === 1 && Number(channels) < 2) return ["至少 2 个字符", "At least 2 characters"];
  return undefined;
}

const accessPoint = (values) => values.ucFD_WorkMode === "2";
const keptByRecorder = (values) =>
  accessPoint(values)
    ? [
        "热点模式下录像机使用其已存的设置，不从本页写入。",
        "In access point mode the recorder uses what it has stored; it is not written from here.",
      ]
    : undefined;
const ofNetwork = { sided: true, locked: keptByRecorder };

export const ON_OFF = [
  ["0", ["关", "Off"]],
  ["1", ["开", "On"]],
];

export const groups = [
  {
    id: "LangInfo",
    section: "device",
    title: ["显示语言", "Language"],
    fields: [
      {
        name: "strLanguage",
        kind: "choice",
        codes: [
          ["CN", ["中文", "中文"]],
          ["EN", ["English", "English"]],
        ],
        label: ["录像机界面语言", "Language of the recorder"],
        help: ["保存后本页面也使用该语言。", "After saving, this page follows it too."],
      },
    ],
  },
  {
    id: "BaseInfo",
    section: "device",
    title: ["设备信息", "Identity and time"],
    mendable: true,
    fields: [
      {
        name: "strFD_DeviceNo",
        kind: "text",
        min: 5,
        width: 12,
        own: true,
        label: ["设备号", "Device number"],
        help: ["5 至 12 个字符，每台设备唯一。", "5 to 12 characters, unique to each vehicle."],
      },
      {
        name: "ucFD_TimeZone",
        kind: "choice",
        codes: TIME_ZONES,
        open: true,
        max: BYTE,
        label: ["时区", "Time zone"],
      },
      { name: "ucFD_GpsSTFlag", kind: "flag", label: ["GPS 校时", "Set the clock by GPS"] },
      {
        name: "strFD_CurTime",
        kind: "clock",
        label: ["录像机时钟", "Clock of the recorder"],
        help: ["不修改时，时钟继续运行。", "The clock runs on unless you change it."],
      },
    ],
  },
  {
    id: "MirrorInfo",
    section: "video",
    title: ["画面镜像", "Mirror the picture"],
    intro: ["仅对通道 1 生效。", "For channel 1."],
    picture: true,
    fields: [
      { name: "strFD_LeftRight", kind: "flag", label: ["左右翻转", "Swap left and right"] },
      { name: "strFD_UpDown", kind: "flag", label: ["上下翻转", "Swap top and bottom"] },
    ],
  },
  {
    id: "VCmsInfo",
    section: "network",
    title: ["中心服务器", "Central server"],
    fields: [
      {
        name: "ucFD_AddressType",
        kind: "choice",
        codes: [
          ["0", ["IP 地址", "IP address"]],
          ["1", ["域名", "Domain name"]],
        ],
        open: true,
        max: BYTE,
        label: ["地址类型", "Kind of address"],
        help: ["除 0 以外的代码都表示域名。", "Every code but 0 stands for a domain name."],
      },
      {
        name: "strFD_Address",
        doubt: needed,
        kind: "text",
        width: 63,
        label: ["服务器地址", "Server address"],
        check: (value, values) =>
          values.ucFD_AddressType === "0" && !DOTTED.test(value)
            ? ["请输入 IPv4 地址，例如 192.0.2.10", "Enter an IPv4 address, such as 192.0.2.10"]
            : undefined,
      },
      {
        name: "usFD_Port",
        doubt: neededPort,
        kind: "number",
        max: WORD,
        label: ["服务器端口", "Server port"],
      },
    ],
  },
  {
    id: "GNetInfo",
    section: "network",
    title: ["移动网络", "Mobile network"],
    fields: [
      { name: "ucFD_NetType", kind: "number", max: BYTE, label: ["网络类型代码", "Network type code"] },
      { name: "strFD_Apn", kind: "text", width: 31, label: ["接入点 (APN)", "Access point name (APN)"] },
      {
        name: "strFD_PhoneNo",
        kind: "text",
        width: 23,
        label: ["拨号号码", "Dial number"],
        help: ["例如 *99#", "For example *99#"],
      },
      { name: "strFD_UserName", kind: "text", width: 35, label: ["拨号用户名", "Dial-up user"] },
      { name: "strFD_UserPasswd", kind: "password", width: 35, label: ["拨号密码", "Dial-up password"] },
    ],
  },
  {
    id: "NetWModeInfo",
    section: "network",
    title: ["网络模式", "Network mode"],
    cutsOff: true,
    fields: [
      {
        name: "ucFD_NetWType",
        kind: "number",
        max: BYTE,
        label: ["网络模式代码", "Network mode code"],
        help: [
          "决定录像机使用哪种上行网络，代码见录像机手册。",
          "Which uplink the recorder uses; its manual lists the codes.",
        ],
      },
      {
        name: "usFD_GPSInterval",
        kind: "number",
        max: WORD,
        unit: ["秒", "s"],
        label: ["GPS 上报间隔", "GPS report interval"],
      },
    ],
  },
  {
    id: "WifiInfo",
    section: "network",
    title: ["Wi-Fi", "Wi-Fi"],
    cutsOff: true,
    side: (values) => (accessPoint(values) ? "own" : "joined"),
    fields: [
      {
        name: "ucFD_WorkMode",
        decides: true,
        kind: "choice",
        codes: [
          ["1", ["客户端", "Client"]],
          ["2", ["热点", "Access point"]],
        ],
        open: true,
        max: BYTE,
        label: ["工作模式", "Work mode"],
      },
      {
        name: "strFD_SSID",
        ...ofNetwork,
        doubt: needed,
        kind: "text",
        width: 31,
        label: ["网络名称 (SSID)", "Network name (SSID)"],
      },
      {
        name: "strFD_Passwd",
        ...ofNetwork,
        doubt: shortKey,
        kind: "password",
        width: 31,
        label: ["Wi-Fi 密码", "Network key"],
      },
      {
        name: "ucFD_AuthMode",
        ...ofNetwork,
        kind: "number",
        max: BYTE,
        label: ["认证方式代码", "Authentication code"],
      },
      {
        name: "ucFD_CryptType",
        ...ofNetwork,
        kind: "number",
        max: BYTE,
        label: ["加密方式代码", "Cipher code"],
      },
      {
        name: "ucFD_DhcpEnableFlag",
        ...ofNetwork,
        kind: "choice",
        codes: ON_OFF,
        open: true,
        max: BYTE,
        label: ["自动获取地址 (DHCP)", "Obtain an address by DHCP"],
      },
    ],
  },
  {
    id: "GB28181Info",
    section: "platform",
    title: ["平台注册", "Platform registration"],
    partial: (values) => values.iVideoChnCount === "0",
    fields: [
      {
        name: "ucFD_GB28181Enable",
        kind: "flag",
        label: ["启用 GB28181 注册", "Register with the platform"],
      },
      {
        name: "ucFD_StreamType",
        kind: "choice",
        codes: [
          ["0", ["码流 0", "Stream 0"]],
          ["1", ["码流 1", "Stream 1"]],
        ],
        label: ["码流", "Stream"],
        help: ["仅在启用注册时保存。", "Kept only while registration is on."],
        kept: (value, values) => (values.ucFD_GB28181Enable === "1" ? value : "0"),
      },
      {
        name: "strFD_ServerIp",
        doubt: whenRegistering(needed),
        kind: "text",
        width: 31,
        label: ["SIP 服务器地址", "SIP server address"],
      },
      {
        name: "usFD_ServerPort",
        doubt: whenRegistering(neededPort),
        kind: "number",
        max: WORD,
        label: ["SIP 服务器端口", "SIP server port"],
      },
      {
        name: "strFD_ServerID",
        doubt: whenRegistering(platformId),
        kind: "text",
        width: 31,
        label: ["SIP 服务器编号", "SIP server ID"],
        help: ["通常为 20 位数字。", "Usually 20 digits."],
      },
      {
        name: "strFD_DeviceId",
        doubt: whenRegistering(platformId),
        kind: "text",
        width: 31,
        own: true,
        label: ["设备编号", "Device ID"],
        help: ["通常为 20 位数字，每台设备唯一。", "Usually 20 digits, unique to each vehicle."],
      },
      { name: "usFD_DevicePort", kind: "number", max: WORD, label: ["设备端口", "Device port"] },
      {
        name: "strFD_DeviceUser",
        kind: "text",
        width: 31,
        own: true,
        label: ["注册用户名", "Registration user"],
      },
      { name: "strFD_DevicePass", kind: "password", width: 31, label: ["注册密码", "Registration password"] },
      { name: "strFD_Manufacturer", kind: "text", width: 31, label: ["制造商", "Manufacturer"] },
      { name: "strFD_ModelName", kind: "text", width: 31, label: ["型号", "Model"] },
      // The API lists an ID for every channel, each after a "*", and closes the list with one. Only
      // the first arrives, and only when the others are there too.
      {
        name: "strFD_LensId",
        kind: "text",
        width: 31,
        own: true,
        label: ["通道 1 编号", "Channel 1 ID"],
        fromApi: (text) => text.slice(1, -1),
        toApi: (value, values) => `*${value}${"*".repeat(Math.max(1, Number(values.iVideoChnCount)))}`,
        check: lensProblem,
      },
      { name: "iVideoChnCount", kind: "fact", label: ["视频通道数", "Video channels"] },
    ],
  },
];
