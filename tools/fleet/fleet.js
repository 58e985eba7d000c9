// SPDX-License-Identifier: GPL-2.0-only
// All recorders of a run, some at a time.

import { note, progress } from "./report.js";
import { Session } from "./session.js";
import { Usage } from "./usage.js";

// Most addresses of a range are nobody's and cost a wait alone.
const PROBES = 64;

export class Fleet {
  started = new Date();
  #stop = new AbortController();

  constructor(hosts, access, jobs) {
    this.sessions = hosts.map((host) => new Session(host, access));
    this.jobs = jobs;
  }

  /** Aborted when nothing more is to be begun. */
  get stopping() {
    return this.#stop.signal;
  }

  get stopped() {
    return this.stopping.aborted;
  }

  /** Lets what is being written be finished, and begins nothing more. */
  stop() {
    this.#stop.abort();
    for (const session of this.sessions) session.stopReading();
  }

  /** Leaves those addresses of ranges out where no recorder answers, and tells how many do. */
  async probe() {
    const ranged = this.sessions.filter(({ host }) => host.range);
    if (!ranged.length) return;
    const there = new Set();
    await this.#spread(ranged, PROBES, async (session) => {
      if (await session.isThere()) there.add(session);
    });
    for (const range of new Set(ranged.map(({ host }) => host.range))) {
      const of = ranged.filter(({ host }) => host.range === range);
      note(`${range}: ${of.filter((session) => there.has(session)).length} of ${of.length} answered`);
    }
    this.sessions = this.sessions.filter((session) => !session.host.range || there.has(session));
  }

  /**
   * Calls work(session) for each, `jobs` at a time, and shows the progress of `what`, if that is named. Resolves to {host, outcome, reason, ...} in the order of
   * the sessions: what work resolves to, whose `outcome` is "ok" unless it has a `reason`.
   */
  async each(what, sessions, work) {
    const bar = what ? progress(what, sessions.length) : undefined;
    const results = new Map(
      sessions.map((session) => [session, { host: session.host.name, outcome: "not begun" }]),
    );
    await this.#spread(sessions, this.jobs, async (session) => {
      const told = await work(session).catch((error) => ({
        reason: error instanceof Usage ? error.message : error.stack,
      }));
      const result = { host: session.host.name, outcome: told.reason ? "failed" : "ok", ...told };
      results.set(session, result);
      bar?.done(result);
    });
    bar?.end();
    return [...results.values()];
  }

  async #spread(items, width, work) {
    const left = items.values();
    const worker = async () => {
      for (const item of left) {
        if (this.stopped) return;
        await work(item);
      }
    };
    await Promise.all(Array.from({ length: Math.min(width, items.length) }, worker));
  }
}
