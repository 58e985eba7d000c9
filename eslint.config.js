// SPDX-License-Identifier: GPL-2.0-only

const browser = [
  "document",
  "window",
  "navigator",
  "location",
  "localStorage",
  "sessionStorage",
  "getComputedStyle",
  "fetch",
  "performance",
  "setTimeout",
  "clearTimeout",
  "setInterval",
  "clearInterval",
  "AbortController",
  "URL",
  "URLSearchParams",
  "Blob",
  "TextEncoder",
  "addEventListener",
  "scrollTo",
  "scrollY",
  "console",
  "print",
  "history",
];
const node = [
  "process",
  "URL",
  "performance",
  "setTimeout",
  "Buffer",
  "hacked",
  "Event",
  "requestAnimationFrame",
  "innerWidth",
  "matchMedia",
  "structuredClone",
  "Headers",
];
const globals = (names) => Object.fromEntries(names.map((name) => [name, "readonly"]));

const rules = {
  "no-undef": "error",
  "no-unused-vars": "error",
  "no-var": "error",
  "prefer-const": "error",
  eqeqeq: "error",
  "no-shadow": "error",
  "no-throw-literal": "error",
  "consistent-return": "error",
  "array-callback-return": "error",
};

// Nothing may become markup, code or a style but what the files themselves hold.
const markup = [
  "innerHTML",
  "outerHTML",
  "insertAdjacentHTML",
  "srcdoc",
  "createContextualFragment",
  "setHTMLUnsafe",
  "parseFromString",
  "cssText",
];
const forbidden = [
  ...markup.map((name) => ({
    selector: `MemberExpression[property.name='${name}'], MemberExpression[property.value='${name}']`,
    message: `${name} makes markup of a text`,
  })),
  { selector: "MemberExpression[object.name='document'][property.name=/^write/]", message: "writes markup" },
  {
    selector: "CallExpression[callee.property.name='setAttribute'][arguments.0.value=/^(style|on)/]",
    message: "no inline style or script",
  },
  {
    selector: "CallExpression[callee.name='h'] > ObjectExpression > Property[key.name='style']",
    message: "no inline style",
  },
  { selector: "MemberExpression[property.name='style']", message: "no inline style" },
  {
    selector:
      "CallExpression[callee.name='tr']:not([arguments.length=2]):not([arguments.0.type='SpreadElement'])",
    message: "a text needs both languages",
  },
];

export default [
  { ignores: ["**/node_modules/"] },
  {
    files: ["**/web_root/*.js"],
    languageOptions: { globals: globals(browser) },
    rules: {
      ...rules,
      "no-eval": "error",
      "no-implied-eval": "error",
      "no-new-func": "error",
      "no-script-url": "error",
      "no-restricted-syntax": ["error", ...forbidden],
    },
  },
  {
    files: ["**/tests/browser/*.js", "**/tests/fleet/*.js", "**/tools/**/*.js", "**/bench/*.js"],
    languageOptions: { globals: globals([...node, ...browser]) },
    rules,
  },
];
