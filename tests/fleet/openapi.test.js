// SPDX-License-Identifier: GPL-2.0-only
// docs/openapi.yaml against the daemon: a validator reads its live answers, and its forms are sent.

import assert from "node:assert/strict";
import { once } from "node:events";
import { readFileSync } from "node:fs";
import net from "node:net";
import { after, before, test } from "node:test";
import { bundle, createConfig, lint } from "@redocly/openapi-core";
import Ajv from "ajv/dist/2020.js";
import { groups } from "../../web_root/schema.js";
import { Depot } from "./depot.js";

const FILE = "docs/openapi.yaml";
const FORM = "application/x-www-form-urlencoded";

const { bundle: description } = await bundle({ ref: FILE, config: await createConfig({}) });
const { paths } = description.parsed;
const writes = Object.keys(paths).filter((path) => paths[path].post);
const reads = Object.keys(paths).filter((path) => paths[path].get);

const ajv = new Ajv({ strict: false, validateFormats: false });
ajv.addSchema(description.parsed, "api");
const at = (pointer) =>
  pointer
    .slice(2)
    .split("/")
    .reduce((node, part) => node[part], description.parsed);
const resolved = (node) => (node.$ref ? at(node.$ref) : node);

/** The schema of a write path's form. */
const formOf = (path) => resolved(paths[path].post.requestBody.content[FORM].schema);

let depot;
// One vehicle for each path, so that the waits of 2 s and 5 s do not add up; the latter ones are silent.
before(async () => {
  depot = await Depot.open([writes.length], [reads.length, "--drop=1"]);
});
after(() => depot?.close());

/** The answer's body, after it was held to the description. */
async function ask(vehicle, path, body, headers) {
  const method = body ? "post" : "get";
  const response = await fetch(`http://${depot.hosts[vehicle]}${path}`, {
    method,
    headers,
    body: body && new URLSearchParams(body),
  });
  const text = await response.text();
  const isJson = response.status === 200;
  const status = Object.keys(paths[path][method].responses).find((key) =>
    RegExp(key.replaceAll("X", ".")).test(response.status),
  );
  const [schema] = Object.values(resolved(paths[path][method].responses[status]).content).map(
    (content) => content.schema,
  );
  const check = ajv.compile(rooted(schema));
  assert.ok(check(isJson ? JSON.parse(text) : text), `${path}: ${text}: ${ajv.errorsText(check.errors)}`);
  return isJson ? JSON.parse(text) : text;
}

/** The schema with its references into the whole description. */
const rooted = (schema) => JSON.parse(JSON.stringify(schema).replaceAll('"#/', '"api#/'));

test("the description is sound OpenAPI, its examples too", async () => {
  const config = await createConfig({
    extends: ["recommended-strict"],
    rules: { "no-server-example.com": "off" },
  });
  const problems = await lint({ ref: FILE, config });
  assert.deepEqual(
    problems.map(({ message, location }) => `${location[0].pointer}: ${message}`),
    [],
  );
});

test("it has the daemon's paths and the page's fields, no others, and a silent recorder's answers too", async () => {
  const routes = readFileSync("CBB/WebCtrl/Handlers/Routes.inc", "utf8").match(/(?<=^ROUTE\()\w+/gm);
  assert.deepEqual(Object.keys(paths).sort(), routes.map((name) => `/${name}`).sort(), FILE);
  const described = writes.flatMap((path) => Object.keys(formOf(path).properties).map((name) => path + name));
  const shown = groups.flatMap(({ id, fields }) => fields.map(({ name }) => `/set_${id}${name}`));
  assert.deepEqual(shown.sort(), described.sort(), "web_root/schema.js");

  for (const path of reads) await ask(0, path);
  const asking = reads.filter((path) => path !== "/get_cpu_usage");
  const silent = await Promise.all(asking.map((path, n) => ask(writes.length + n, path)));
  assert.deepEqual(
    silent.map(({ result }) => result),
    asking.map(() => 0),
  );
});

test("every field of a form arrives, and what is left out is its default", () =>
  Promise.all(
    writes.map(async (path, vehicle) => {
      const { example } = paths[path].post.requestBody.content[FORM];
      const group = path.replace("set_", "get_");
      const { properties } = formOf(path);
      const fields = Object.keys(properties).filter((name) => !properties[name].readOnly);
      const answered = paths[group].get.responses["200"].content["application/json"].schema.required;
      assert.deepEqual(Object.keys(properties).sort(), [...answered].sort(), path);
      assert.deepEqual(Object.keys(example).sort(), fields.sort(), path);

      const defaultOf = (name) => properties[name].default ?? resolved(properties[name]).default;
      const shown = { strFD_UpDown: "1" }; // of a list the first number
      const without = { strFD_Address: "255.255.255.255", strFD_LensId: "**", strLanguage: "CN" };
      await ask(vehicle, path, {});
      const empty = await ask(vehicle, group);
      await ask(vehicle, path, example);
      const now = await ask(vehicle, group);
      for (const name of fields.filter((each) => each !== "strFD_CurTime")) {
        assert.equal(now[name], shown[name] ?? example[name], `${path} ${name}`);
        assert.equal(empty[name], without[name] ?? defaultOf(name), `${path} without ${name}`);
        assert.notEqual(now[name], empty[name], `${path} ${name}: the example shows nothing`);
      }
      if (example.strFD_CurTime)
        assert.ok(depot.state(vehicle).includes(`strFD_CurTime="${example.strFD_CurTime}"`));
    }),
  ));

test("every refusal that can be had is described, with its text", async () => {
  const get = (head) => `GET /get_LangInfo HTTP/1.1\r\nHost: recorder\r\n${head}\r\n\r\n`;
  const requests = {
    400: get("Content-Length: x"),
    403: get("Origin: http://elsewhere.example"),
    405: "HEAD /set_LangInfo HTTP/1.1\r\nHost: recorder\r\n\r\n",
    413: get("Content-Length: 70000"),
    431: get("A: b\r\n".repeat(150) + "A: b"),
    501: get("Transfer-Encoding: gzip"),
    505: "GET /get_LangInfo HTTP/1.7\r\nHost: recorder\r\n\r\n",
  };
  for (const [status, request] of Object.entries(requests)) {
    const socket = net.connect(80, depot.hosts[0]).setEncoding("utf8");
    socket.write(request);
    const [answer] = await once(socket, "data");
    socket.destroy();
    assert.match(answer, RegExp(`^HTTP/1.1 ${status} .*\\r\\n\\r\\n${status === "405" ? "$" : "."}`, "s"));
  }
  const { Refused, Overloaded } = description.parsed.components.responses;
  const described = (Refused.description + Overloaded.description).match(/(?<=^\| )\d+/gm);
  const notHere = ["401", "429", "503"]; // need a login, wrong ones, and a crowd
  assert.deepEqual(described.sort(), [...Object.keys(requests), ...notHere].sort());
});
