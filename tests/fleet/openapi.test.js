// SPDX-License-Identifier: GPL-2.0-only
// docs/openapi.yaml against the daemon: a validator reads its live answers, and its forms are sent.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import net from "node:net";
import { text } from "node:stream/consumers";
import { after, before, test } from "node:test";
import { bundle, createConfig, lint } from "@redocly/openapi-core";
import Ajv from "ajv/dist/2020.js";
import { groups } from "../../web_root/schema.js";
import { Depot } from "./depot.js";

const ref = "docs/openapi.yaml";
const { bundle: description } = await bundle({ ref, config: await createConfig({}), dereference: true });
const { paths, components } = description.parsed;
const writes = Object.keys(paths).filter((path) => paths[path].post);
const reads = Object.keys(paths).filter((path) => paths[path].get);
const formOf = (path) => paths[path].post.requestBody.content["application/x-www-form-urlencoded"];
const fieldsOf = (path) => Object.keys(formOf(path).schema.properties);
const ajv = new Ajv({ strict: false, validateFormats: false });

let depot;
// One vehicle for each path, so that the waits of 2 s and 5 s do not add up; the latter ones are silent.
before(async () => (depot = await Depot.open([writes.length], [reads.length, "--drop=1"])));
after(() => depot?.close());

/** The answer to a reading, or to a form, after it was held to the description. */
async function ask(vehicle, path, form) {
  const sent = form && { method: "POST", body: new URLSearchParams(form) };
  const response = await fetch(`http://${depot.hosts[vehicle]}${path}`, sent);
  const answer = await response.json();
  const { content } = paths[path][form ? "post" : "get"].responses[response.status];
  const sound = ajv.validate(content["application/json"].schema, answer);
  assert.ok(sound, `${path}: ${JSON.stringify(answer)}: ${ajv.errorsText()}`);
  return answer;
}

test("docs/openapi.yaml is sound, its examples too", async () => {
  const rules = { "no-server-example.com": "off" };
  const problems = await lint({
    ref,
    config: await createConfig({ extends: ["recommended-strict"], rules }),
  });
  for (const { message, location } of problems) assert.fail(`${location[0].pointer}: ${message}`);
});

test("docs/openapi.yaml: the paths of Routes.inc, the fields of schema.js, a silent recorder's answers", async () => {
  const routes = readFileSync("CBB/WebCtrl/Handlers/Routes.inc", "utf8").match(/(?<=^ROUTE\()\w+/gm);
  assert.deepEqual(Object.keys(paths).sort(), routes.map((name) => `/${name}`).sort());
  const described = writes.flatMap((path) => fieldsOf(path).map((name) => path + name));
  const shown = groups.flatMap(({ id, fields }) => fields.map(({ name }) => `/set_${id}${name}`));
  assert.deepEqual(shown.sort(), described.sort());

  for (const path of reads) await ask(0, path);
  const asking = reads.filter((path) => path !== "/get_cpu_usage");
  const silent = await Promise.all(asking.map((path, n) => ask(writes.length + n, path)));
  assert.ok(silent.every(({ result }) => result === 0));
});

test("every field of a form arrives, and what is left out is its default", () =>
  Promise.all(
    writes.map(async (path, vehicle) => {
      const { example, schema } = formOf(path);
      const { properties } = schema;
      const group = path.replace("set_", "get_");
      const fields = fieldsOf(path).filter((name) => !properties[name].readOnly);
      const answered = paths[group].get.responses[200].content["application/json"].schema.required;
      assert.deepEqual(new Set(fieldsOf(path)), new Set(answered), path);
      assert.deepEqual(new Set(Object.keys(example)), new Set(fields), path);

      const shown = { ...example, strFD_UpDown: "1" }; // of a list the first number
      const without = { strFD_Address: "255.255.255.255", strFD_LensId: "**", strLanguage: "CN" };
      await ask(vehicle, path, {});
      const empty = await ask(vehicle, group);
      await ask(vehicle, path, example);
      const now = await ask(vehicle, group);
      for (const name of fields.filter((each) => each !== "strFD_CurTime")) {
        assert.equal(now[name], shown[name], `${path} ${name}`);
        assert.equal(empty[name], without[name] ?? properties[name].default, `${path} without ${name}`);
        assert.notEqual(now[name], empty[name], `${path} ${name}: the example shows nothing`);
      }
      assert.ok(depot.state(vehicle).includes(example.strFD_CurTime ?? ""));
    }),
  ));

test("every refusal that can be had is described, with its text", async () => {
  const requests = {
    400: "GET /get_LangInfo HTTP/1.1\r\nContent-Length: x",
    403: "GET /get_LangInfo HTTP/1.1\r\nOrigin: http://elsewhere.example",
    405: "HEAD /set_LangInfo HTTP/1.1",
    413: "GET /get_LangInfo HTTP/1.1\r\nContent-Length: 70000",
    431: `GET /get_LangInfo HTTP/1.1${"\r\nA: b".repeat(150)}`,
    501: "GET /get_LangInfo HTTP/1.1\r\nTransfer-Encoding: gzip",
    505: "GET /get_LangInfo HTTP/1.7",
  };
  for (const [status, request] of Object.entries(requests)) {
    const socket = net.connect(80, depot.hosts[0]);
    socket.write(`${request}\r\nHost: recorder\r\nConnection: close\r\n\r\n`);
    assert.match(
      await text(socket),
      RegExp(`^HTTP/1.1 ${status} .*\r\n\r\n${status === "405" ? "$" : "."}`, "s"),
    );
  }
  const { Refused, Overloaded } = components.responses;
  const described = (Refused.description + Overloaded.description).match(/(?<=^\| )\d+/gm);
  const notHere = ["401", "429", "503"]; // need a login, wrong ones, and a crowd
  assert.deepEqual(described.sort(), [...Object.keys(requests), ...notHere].sort());
});
