// SPDX-License-Identifier: GPL-2.0-only
// A depot: many simulated recorders in few processes, and before each a real daemon as on a vehicle, in a
// network namespace of its own with an eth0 whose address is of 127/8. run gives the bridge's namespace.

import { spawn, spawnSync } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, readFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const { BUILD_DIR } = process.env;
const SIMULATOR = join(BUILD_DIR, "tools/recorder_sim/recorder_sim");
const DAEMON = join(BUILD_DIR, "CBB/WebCtrl/webctrl");
const GATE = "127.1.255.254"; // the bridge; the simulators listen on its ports from 6001 on
const address = (index) => `127.1.${(index + 1) >> 8}.${(index + 1) & 255}`;

// Loopback addresses cross a link once the kernel is told so and does not keep them to itself.
const OPEN_LOOPBACK = `
  ip link set lo up
  ip route del local 127.0.0.0/8 dev lo table local
  for each in all default; do echo 1 >/proc/sys/net/ipv4/conf/$each/route_localnet; done`;
const BRIDGE = `set -e; ${OPEN_LOOPBACK}
  ip link add br0 type bridge
  ip addr add ${GATE}/16 dev br0
  ip link set br0 up`;
const VEHICLE = `set -e; ${OPEN_LOOPBACK}
  number=$1 address=$2; shift 2
  ip link add eth0 type veth peer name v$number netns $PPID
  ip addr add $address/16 dev eth0
  ip link set eth0 up
  nsenter --net=/proc/$PPID/ns/net ip link set v$number master br0 up
  exec "$@"`;

/** Starts a program and resolves when it has printed `ready` `times` times. */
async function start(program, args, ready, times = 1) {
  const child = spawn(program, args, { stdio: ["ignore", "pipe", "ignore"] });
  const over = once(child, "exit").then(() => {
    throw new Error(`${program} ended`);
  });
  for (let text = ""; text.split(ready).length <= times;)
    text += (await Promise.race([once(child.stdout, "data"), over]))[0];
  over.catch(() => {}); // from now on it may
  child.stdout.resume();
  return child;
}

export class Depot {
  folder = mkdtempSync(join(tmpdir(), "depot-"));
  hosts = [];
  files = [];
  children = [];
  daemonOptions = [];

  /** A vehicle for each of the counts; `kinds` has rows [count, ...options of the simulator]. */
  static async open(...kinds) {
    const depot = new Depot();
    const made = spawnSync("bash", ["-c", BRIDGE], { encoding: "utf8" });
    if (made.status !== 0) throw new Error(made.stderr);
    for (const kind of kinds) await depot.add(...kind);
    return depot;
  }

  /** More vehicles; `daemonOptions` are those of their daemons. */
  async add(count, ...options) {
    const first = this.hosts.length;
    const numbers = Array.from({ length: count }, (_, n) => first + n);
    this.hosts.push(...numbers.map(address));
    const named = [
      "--state",
      join(this.folder, `${first}-{n}.xml`),
      "--set",
      `stBaseInfo.strFD_DeviceNo=BUS-${first}-{n}`,
    ];
    const endpoint = ["--listen", `${GATE}:${6001 + first}`, "--count", String(count)];
    this.children.push(await start(SIMULATOR, [...endpoint, ...named, ...options], "listening", count));
    for (const number of numbers) this.files.push(join(this.folder, `${first}-${number - first + 1}.xml`));
    await Promise.all(numbers.map((number) => this.drive(number)));
  }

  async drive(number) {
    const vehicle = ["--net", "bash", "-c", VEHICLE, "-", String(number), address(number)];
    const daemon = [
      DAEMON,
      "--web-root",
      "web_root",
      "--recorder",
      `${GATE}:${6001 + number}`,
      ...this.daemonOptions,
    ];
    this.children.push(await start("unshare", [...vehicle, ...daemon], "Starting web server"));
  }

  /** The text of a recorder's state. */
  state(number) {
    return readFileSync(this.files[number], "utf8");
  }

  async close() {
    await Promise.all(
      this.children.map((child) => {
        child.kill("SIGKILL");
        return once(child, "exit");
      }),
    );
  }
}
