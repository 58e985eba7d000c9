// SPDX-License-Identifier: GPL-2.0-only
// What is asked before a write, and what is told after it.

import { inWords } from "./controls.js";
import { badge, h, icon, tr } from "./core.js";

export const RECONNECT_S = 90;

/** How to come back after a change of the network, in sentences; for the question and for the wait. */
export function wayBack(group, values) {
  const accessPoint = values.ucFD_WorkMode === "2";
  // Of an access point this is the name that was read; without one it is not known.
  const network = group.id === "WifiInfo" ? values.strFD_SSID : "";
  const own = tr("请让本设备连接录像机的热点", "Connect this device to the recorder's own network");
  return [
    !network && tr("录像机的网络可能中断片刻。", "The recorder's network may be away for a moment."),
    accessPoint &&
      !network &&
      tr(
        `${own}（使用其已存的名称；若录像机没有立即接受此模式，则使用现在所连网络的名称和密码）。`,
        `${own}; it has the name that is stored there, or, should the recorder not accept the mode at once, the name and key of the network that it is in now.`,
      ),
    network &&
      h(
        "span",
        {},
        accessPoint
          ? `${own}: `
          : tr(
              "录像机将加入此网络，请让本设备也连接：",
              "The recorder joins this network; connect this device to it too: ",
            ),
        h("strong", {}, h("bdi", {}, network)),
      ),
    h("span", {}, tr("然后打开地址：", "Then open: "), h("strong", {}, `${location.origin}/`)),
    network &&
      !accessPoint &&
      tr(
        "若该网络分配了新地址，请在其路由器中查看。",
        "If that network gives it a new address, its router shows which.",
      ),
  ]
    .filter(Boolean)
    .map((sentence) => h("p", {}, sentence));
}

/** Asks in a modal dialog; resolves to whether to go on. */
function ask(title, content) {
  return new Promise((answer) => {
    const closed = () => {
      dialog.remove();
      answer(dialog.returnValue === "go");
    };
    const dialog = h(
      "dialog",
      { "aria-labelledby": "question", onclose: closed },
      h("h2", { id: "question" }, icon("warn"), title),
      content,
      h(
        "div",
        { class: "buttons" },
        h("button", { type: "button", onclick: () => dialog.close() }, tr("取消", "Cancel")),
        h(
          "button",
          { type: "button", class: "primary", onclick: () => dialog.close("go") },
          tr("仍然保存", "Save anyway"),
        ),
      ),
    );
    document.body.append(dialog);
    dialog.showModal();
  });
}

const doubtList = (doubts) =>
  h(
    "ul",
    {},
    doubts.map(([field, question]) =>
      h("li", {}, h("strong", {}, tr(...field.label)), ": ", tr(...question)),
    ),
  );

/**
 * Asks about values that hardly work (rows of settings.doubts()) and about a network that may be lost
 * (`way`: sentences of wayBack()). Resolves to whether to go on, at once when there is nothing to ask.
 */
export async function confirmWrite(doubts, way) {
  if (!doubts.length && !way) return true;
  const content = [
    doubts.length > 0 && [
      h("p", {}, tr("这些值可能无法工作：", "These values may not work:")),
      doubtList(doubts),
    ],
    way,
    way &&
      h(
        "p",
        {},
        tr(
          `保存后页面会持续尝试重新连接（先倒计时 ${RECONNECT_S} 秒）。`,
          `After saving, the page keeps trying to reach it, with a countdown of ${RECONNECT_S} s.`,
        ),
      ),
  ];
  const title = way
    ? tr("本设备可能与录像机断开", "This device may lose the recorder")
    : tr("请核对", "Please check");
  return ask(title, content);
}

// ---- the result, in words

export const TROUBLES = {
  silent: () => tr("录像机没有应答", "No answer from the recorder"),
  gone: () => tr("没有应答：与录像机的连接已断开", "No answer: the connection to the recorder is lost"),
  odd: () => tr("录像机的应答不完整", "The recorder's answer is incomplete"),
  empty: () => tr("录像机给出的值突然全部为空", "All values from the recorder are suddenly empty"),
  refused: () =>
    tr("录像机不接受此登录或页面的更改", "The recorder takes no changes from this login or page"),
  login: () => tr("登录已失效", "The login has ended"),
  busy: () => tr("录像机正忙，请稍后再试", "The recorder is busy; try again later"),
  other: () => tr("应答的是另一台录像机", "Another recorder answers"),
  dropped: () => tr("已停止等待", "The wait was ended"),
};

const nothingSent = ({ trouble }) => [
  "warn",
  tr(`${TROUBLES[trouble]()}，未发送任何内容。`, `${TROUBLES[trouble]()}; nothing was sent.`),
];

const OUTCOMES = {
  saved: () => ["ok", tr("已保存，录像机已确认。", "Saved; read back from the recorder.")],
  same: () => ["ok", tr("录像机已是这些值。", "The recorder holds this already.")],
  kept: () => ["warn", tr("录像机保留的是：", "The recorder kept:")],
  unread: nothingSent,
  denied: nothingSent,
  held: () => [
    "warn",
    tr("页面曾离开，未发送任何内容，请再保存一次。", "The page was away; nothing was sent. Save again."),
  ],
  conflict: () => [
    "warn",
    tr(
      "录像机中的值已被更改，未发送任何内容，请选择：",
      "Changed in the recorder meanwhile; nothing was sent. Choose:",
    ),
  ],
  unsure: ({ trouble }) => [
    "warn",
    tr(
      `${TROUBLES[trouble]()}，不确定是否已保存。`,
      `${TROUBLES[trouble]()}; it is not known what was saved.`,
    ),
  ],
  invalid: ({ problems }) => [
    "warn",
    tr(
      `有 ${problems.length} 项需要改正，未发送任何内容。`,
      `${problems.length} to correct; nothing was sent.`,
    ),
  ],
};

const named =
  (link) =>
  ([field, content]) =>
    h("li", {}, tr(...field.label) + link, h("bdi", {}, content));

/** The nodes that tell a result of exchange.save(). */
export function resultNodes(result) {
  const rows = {
    kept: () => result.kept.map(([field, value]) => [field, inWords(field, value)]),
    conflict: () => result.clashes.map(({ field, theirs }) => [field, inWords(field, theirs)]),
    invalid: () => result.problems.map(([field, problem]) => [field, tr(...problem)]),
  }[result.outcome]?.();
  const link = result.outcome === "invalid" ? tr("：", ": ") : " = ";
  return [badge(...OUTCOMES[result.outcome](result)), rows ? h("ul", {}, rows.map(named(link))) : ""];
}

export const isDone = ({ outcome }) => outcome === "saved" || outcome === "same";
