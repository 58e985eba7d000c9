// SPDX-License-Identifier: GPL-2.0-only
// How long recorder-fleet takes to read 200 recorders of which 20 are silent, and its peak memory. The silent
// ones are the last, so that they wait with nobody beside them.

import { spawnSync } from "node:child_process";
import { mkdtempSync, readdirSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { Depot } from "../tests/fleet/depot.js";

const depot = await Depot.open([180], [20, "--drop=1"]);
const folder = mkdtempSync(join(tmpdir(), "measure-"));
const tellPeak = "process.on('exit', () => console.error('peak', process.resourceUsage().maxRSS))";
const env = {
  ...process.env,
  NODE_OPTIONS: `--import "data:text/javascript,${encodeURIComponent(tellPeak)}"`,
};
const start = performance.now();
const { stderr } = spawnSync("recorder-fleet", ["read", ...depot.hosts], {
  cwd: folder,
  env,
  encoding: "utf8",
});
const seconds = (performance.now() - start) / 1000;
const mebibytes = Number(/^peak (\d+)$/m.exec(stderr)[1]) / 1024;
const files = readdirSync(folder).filter((name) => name.startsWith("127.")).length;
process.stdout.write(
  `${files} of ${depot.hosts.length} read in ${seconds.toFixed(1)} s, peak memory ${mebibytes.toFixed(0)} MiB\n`,
);
await depot.close();
