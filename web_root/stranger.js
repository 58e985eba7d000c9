// SPDX-License-Identifier: GPL-2.0-only
// The question that comes up when another recorder answers.

import { h, recorder, stranger, tr } from "./core.js";

const nameOf = ({ number, imei }) => number || imei || "—";

/** `count` unsaved changes; `loadForms` gives the module that carries the decision out. */
export function strangerQuestion(count, loadForms) {
  const identity = stranger;
  const [now, before] = [nameOf(stranger), nameOf(recorder)];
  const imei = now === before ? ` (IMEI ${stranger.imei})` : "";
  const decide = (carry) => () => loadForms().then(({ changeRecorder }) => changeRecorder(identity, carry));
  const work = tr(`改为操作 ${now}`, `Work on ${now}`);
  const changes = count === 1 ? "the change" : `${count} changes`;
  const stay = tr(
    `${work}，为原录像机保留更改（密码除外）`,
    `${work}; keep my changes for the other, but no passwords`,
  );
  const bring = tr(`${work}，带上 ${count} 项更改`, `${work} and bring ${changes} along`);
  const button = (word, carry) => h("button", { type: "button", onclick: decide(carry) }, word);
  const text = tr(
    `现在应答的是另一台录像机：${now}${imei}，之前是 ${before}。在您决定之前不会写入任何内容。`,
    `Another recorder answers now: ${now}${imei} instead of ${before}. Nothing is written until you decide.`,
  );
  const buttons = h(
    "div",
    { class: "buttons" },
    button(count ? stay : work, false),
    count > 0 && button(bring, true),
  );
  return h("div", {}, h("p", {}, text), buttons);
}
