// SPDX-License-Identifier: GPL-2.0-only
// A depot: simulated recorders, and before each a real daemon as on a vehicle, in a network
// namespace of its own with an eth0 whose address is of 127/8. run gives the bridge's namespace.

import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, readFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

export const SIMULATOR = join(process.env.BUILD_DIR, "tools/recorder_sim/recorder_sim");
export const DAEMON = join(process.env.BUILD_DIR, "CBB/WebCtrl/webctrl");
const GATE = "127.1.255.254"; // the bridge; the simulators listen on its ports from 6001 on
const address = (number) => `127.1.${number >> 8}.${number & 255}`;

// Loopback addresses cross a link once the kernel is told so and does not keep them to itself.
const network = (device, type, own) => `set -e
  ip link set lo up
  ip route del local 127.0.0.0/8 dev lo table local
  for each in all default; do echo 1 >/proc/sys/net/ipv4/conf/$each/route_localnet; done
  ip link add ${device} type ${type}
  ip addr add ${own}/16 dev ${device}
  ip link set ${device} up`;
const BRIDGE = network("br0", "bridge", GATE);
const VEHICLE = `${network("eth0", "veth peer name v$1 netns $PPID", "$2")}
  nsenter --net=/proc/$PPID/ns/net ip link set v$1 master br0 up
  shift 2 && exec "$@"`;

/** Starts a program and resolves when it has printed `ready`. */
export async function start(program, args, ready) {
  const child = spawn(program, args, { stdio: ["ignore", "pipe", "ignore"] });
  let text = "";
  for await (const part of child.stdout.iterator({ destroyOnReturn: false })) {
    text += part;
    if (text.includes(ready)) return child.stdout.resume() && child;
  }
  throw new Error(`${program} ended`);
}

export async function end(child) {
  if (child.exitCode === null && child.kill("SIGKILL")) await once(child, "exit");
}

export class Depot {
  folder = mkdtempSync(join(tmpdir(), "depot-"));
  hosts = [];
  children = [];
  daemonOptions = [];

  /** A vehicle for each of the counts; `kinds` has rows [count, ...options of the simulator]. */
  static async open(...kinds) {
    execFileSync("bash", ["-c", BRIDGE]);
    const depot = new Depot();
    for (const kind of kinds) await depot.add(...kind);
    return depot;
  }

  /** More vehicles; {n} in an option is each one's number. `daemonOptions` are those of their daemons. */
  async add(count, ...options) {
    const own = (n) => options.map((option) => option.replace("{n}", n));
    await Promise.all(Array.from({ length: count }, (_, n) => this.drive(own(n + 1))));
  }

  async drive(options) {
    const index = this.hosts.push(address(this.hosts.length + 1)) - 1;
    const recorder = `${GATE}:${6001 + index}`;
    const kept = ["--listen", recorder, "--state", this.file(index)];
    this.children.push(await start(SIMULATOR, [...kept, ...options], "listening"));
    const vehicle = ["--net", "bash", "-c", VEHICLE, "-", index, this.hosts[index]];
    const daemon = [DAEMON, "--web-root", "web_root", "--recorder", recorder, ...this.daemonOptions];
    this.children.push(await start("unshare", [...vehicle, ...daemon], "Starting web server"));
  }

  file = (index) => join(this.folder, `${index}.xml`);
  /** The text of a recorder's state. */
  state = (index) => readFileSync(this.file(index), "utf8");
  close = () => Promise.all(this.children.map(end));
}
