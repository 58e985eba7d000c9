// SPDX-License-Identifier: GPL-2.0-only
// The control of each kind of field, a value in words, and the picture of the mirror.

import { h, setText, tr } from "./core.js";
import { ON_OFF } from "./schema.js";

function textInput(field, attributes, changed) {
  const input = h("input", {
    type: "text",
    dir: "auto",
    autocomplete: "off",
    autocapitalize: "none",
    autocorrect: "off",
    spellcheck: "false",
    ...attributes,
    oninput: () => changed(input.value),
  });
  return {
    node: input,
    input,
    show: (value) => {
      input.value = value ?? "";
      input.placeholder = value === undefined ? inWords(field) : "";
    },
  };
}

const numberInput = (field, attributes, changed) => {
  const control = textInput(field, { ...attributes, inputmode: "numeric", dir: "ltr" }, changed);
  const unit = field.unit && h("span", { class: "unit" }, tr(...field.unit));
  return { ...control, node: h("div", { class: "joined" }, control.input, unit) };
};

function passwordInput(field, attributes, changed) {
  // "new-password" is what keeps browsers from filling in a password of their own.
  const control = textInput(
    field,
    { ...attributes, type: "password", autocomplete: "new-password" },
    changed,
  );
  const reveal = h("button", {
    type: "button",
    class: "quiet",
    onclick: () => turn(control.input.type === "password"),
  });
  const turn = (visible) => {
    control.input.type = visible ? "text" : "password";
    const [chinese, english] = visible ? ["隐藏", "Hide"] : ["显示", "Show"];
    setText(reveal, tr(chinese, english));
    reveal.setAttribute(
      "aria-label",
      tr(chinese + field.label[0], `${english} ${field.label[1].toLowerCase()}`),
    );
  };
  turn(false);
  return { ...control, node: h("div", { class: "joined" }, control.input, reveal) };
}

function choice(field, attributes, changed) {
  const OTHER = "other";
  const codes = codesOf(field);
  const chosen = () => {
    if (select.value !== OTHER) changed(select.value);
    number.hidden = select.value !== OTHER; // the focus stays: arrow keys may only be passing by
  };
  const select = h(
    "select",
    { ...attributes, onchange: chosen },
    h("option", { value: "", hidden: true }, tr("请选择…", "Choose…")),
    codes.map(([code]) => h("option", { value: code }, inWords(field, code))),
    field.open && h("option", { value: OTHER }, tr("其他代码…", "Other code…")),
  );
  const number = h("input", {
    type: "text",
    inputmode: "numeric",
    autocomplete: "off",
    "aria-label": tr(`${field.label[0]}：代码`, `${field.label[1]}: code`),
    oninput: () => changed(number.value),
  });
  return {
    node: h("div", { class: "joined" }, select, field.open && number),
    input: select,
    show(value) {
      const known = value === undefined || codes.some(([code]) => code === value);
      select.value = known ? (value ?? "") : field.open ? OTHER : "";
      number.hidden = known;
      number.value = value ?? "";
      number.readOnly = select.disabled;
    },
  };
}

function flag(field, attributes, changed) {
  const input = h("input", {
    type: "checkbox",
    role: "switch",
    ...attributes,
    onchange: () => changed(input.checked ? "1" : "0"),
  });
  return {
    node: input,
    input,
    show: (value) => {
      input.checked = value === "1";
    },
  };
}

function clock(field, attributes, changed) {
  const input = h("input", {
    type: "datetime-local",
    step: "1",
    min: "2000-01-01T00:00:00",
    max: "2099-12-31T23:59:59",
    ...attributes,
    oninput: () => changed(input.value.replace("T", " ")),
  });
  return {
    node: input,
    input,
    show: (value) => {
      input.value = (value ?? "").replace(" ", "T");
    },
  };
}

function fact(field, attributes) {
  const output = h("output", attributes);
  return { node: output, input: output, show: (value) => setText(output, value) };
}

/** By kind: (field, attributes, changed) gives {node, input, show(value)} and calls changed(value) on an edit. */
export const CONTROLS = {
  text: textInput,
  password: passwordInput,
  number: numberInput,
  choice,
  flag,
  clock,
  fact,
};

const codesOf = ({ kind, codes }) => codes ?? (kind === "flag" ? ON_OFF : []);

/** What a person reads for a value: a code's word, dots for a password. */
export function inWords(field, value) {
  if (value === undefined) return tr("（未知）", "(not known)");
  const known = codesOf(field).find(([code]) => code === value);
  if (known) return field.coded ? `${tr(...known[1])} (${value})` : tr(...known[1]);
  if (field.kind === "password" && value) return "••••••";
  return value === "" ? tr("（空）", "(empty)") : value;
}

// A road scene: the picture's own top and left can be told at a glance.
export function mirrorPicture() {
  const shape = (tag, attributes) => h(`svg:${tag}`, attributes);
  return h(
    "svg:svg",
    {
      class: "mirror",
      viewBox: "0 0 160 90",
      role: "img",
      "aria-label": tr("镜像效果示意", "How the picture is mirrored"),
    },
    h(
      "svg:g",
      {},
      shape("rect", { class: "sky", width: 160, height: 90 }),
      shape("circle", { class: "sun", cx: 28, cy: 22, r: 10 }),
      shape("path", { class: "hill", d: "M0 52l40-18 34 18 30-10 56 12v36H0z" }),
      shape("path", { class: "road", d: "M66 50h14l50 40H20z" }),
      shape("path", { class: "car", d: "M96 66h8l5-9h22l6 9h7v12H96z" }),
      shape("circle", { class: "wheel", cx: 106, cy: 79, r: 5 }),
      shape("circle", { class: "wheel", cx: 134, cy: 79, r: 5 }),
    ),
  );
}
