// SPDX-License-Identifier: GPL-2.0-only
// docs/openapi.yaml against the daemon: a validator reads its live answers, and its forms are sent.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
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
  const config = await createConfig({ extends: ["recommended-strict"], rules });
  for (const { message, location } of await lint({ ref, config }))
    assert.fail(`${location[0].pointer}: ${message}`);
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
      const group = path.replace("set_", "get_");
      const fields = fieldsOf(path).filter((name) => !schema.properties[name].readOnly);
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
        const expected = [shown[name], without[name] ?? schema.properties[name].default];
        assert.deepEqual([now[name], empty[name]], expected, `${path} ${name}, and without it`);
        assert.notEqual(...expected, `${path} ${name}: the example shows nothing`);
      }
      assert.ok(depot.state(vehicle).includes(example.strFD_CurTime ?? ""));
    }),
  ));

test("docs/api.md and it tell the same statuses of a refusal", () => {
  const { Refused, Overloaded } = components.responses;
  const codes = (text) => text.match(/(?<=^\| )[45]\d\d/gm).sort();
  const told = readFileSync("docs/api.md", "utf8").replace(/^\| 404/gm, ""); // a file's alone
  assert.deepEqual(codes(Refused.description + Overloaded.description), codes(told));
});
