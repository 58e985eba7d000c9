// SPDX-License-Identifier: GPL-2.0-only
// Versions, and what this page is.

import { columns, h, onRecorder, onReturn, request, setText, tr } from "./core.js";
import { rowsOf, versionRows } from "./status.js";

const NONE = "—";
let application = null;

async function readVersion() {
  const { answer } = await request("/get_VersionInfo", { what: ["版本", "version"] });
  if (answer?.result === 1) setText(application, answer.strFD_AppVersion || NONE);
}

export function aboutView() {
  application = h("dd", {}, NONE);
  readVersion();
  const versions = rowsOf(versionRows().slice(1));
  versions.prepend(h("div", {}, h("dt", {}, tr("主程序版本", "Main application")), application));
  const card = (title, ...content) => h("section", { class: "card" }, h("h2", {}, title), content);
  const text = tr(
    "不需要互联网：页面与录像机直接通信，不访问其他主机。",
    "Works without internet: the page talks to the recorder alone and to no other host.",
  );
  return [
    columns([card(tr("录像机", "Recorder"), versions), card(tr("本页面", "This page"), h("p", {}, text))]),
  ];
}

for (const on of [onReturn, onRecorder]) on(() => application?.isConnected && readVersion());
