// SPDX-License-Identifier: GPL-2.0-only
// One recorder: requests to it, as the page makes them, over HTTP or TLS, and why they failed. `peer` is the
// address that answered last; a login that `mayOnlyRead` is shown no passwords.

import { once } from "node:events";
import http from "node:http";
import https from "node:https";
import { requester } from "./page/api.js";
import { printable } from "./usage.js";

const CONNECT_MS = 4000;
// A silent recorder is told by the daemon after 5 s; who has not answered yet is given little longer. After
// that the page's patience counts.
const FIRST_MS = 7000;
// The longest answer there is has some 3 KB. What is longer is not read to its end.
const MAX_BYTES = 65536;

const WORDS = {
  silent: "the recorder is silent",
  gone: "nobody answers",
  odd: "what answers is no recorder",
  refused: "it refuses access (403)",
  login: "it asks for a login (401)",
  busy: "it is too busy (503 or 429)",
  dropped: "interrupted",
  empty: "its settings are suddenly empty",
};

export class Session {
  #access;
  #error = "";
  #known = false; // has answered the last time
  #reading;

  /** `access` is {user, password, ca, tls}. */
  constructor(host, access) {
    Object.assign(this, { host, writing: false });
    this.#access = access;
    const request = requester((path, init) => this.#fetch(path, init));
    this.request = (path, how) => {
      if (this.writing) return request(path, how);
      this.#reading = new AbortController();
      return request(path, { signal: this.#reading.signal, ...how });
    };
  }

  /** Gives up what is being read. A write, and the reading back of it, go on to their end. */
  stopReading() {
    if (!this.writing) this.#reading?.abort();
  }

  /** Resolves to undefined when a recorder answers, otherwise to why not. */
  async greet() {
    const { answer, trouble } = await this.#first();
    return answer?.result === 1 ? undefined : this.why(trouble ?? "silent");
  }

  async #first() {
    const { answer, trouble } = await this.request("/get_VersionInfo");
    return answer && typeof answer.strFD_AppVersion !== "string" ? { trouble: "odd" } : { answer, trouble };
  }

  /** Whether a daemon answers, of whatever recorder and whether or not it lets us in. */
  async isThere() {
    const { answer, trouble } = await this.#first();
    return Boolean(answer) || ["login", "refused", "busy"].includes(trouble);
  }

  /** Why there is no answer; `silent` is what to call a recorder's silence. */
  why(trouble, silent = WORDS.silent) {
    if (trouble === "silent") return silent;
    return WORDS[trouble] + (trouble === "gone" && this.#error ? ` (${printable(this.#error)})` : "");
  }

  /** As fetch, of which requester() needs this much. */
  async #fetch(path, { method, body, signal }) {
    const { tls, ca } = this.#access;
    const { host, port } = this.host;
    const form = body?.toString();
    const headers = this.#headers(form);
    const request = (tls ? https : http).request({
      host,
      port,
      path,
      method,
      headers,
      ca,
      signal,
      agent: false,
      family: 4, // a daemon has no other
    });
    let late;
    const limit = (ms, what) =>
      setTimeout(() => {
        late = what;
        request.destroy();
      }, ms);
    const timers = [limit(CONNECT_MS, "no connection"), this.#known ? 0 : limit(FIRST_MS, "no answer")];
    request.on("error", () => {}); // one that comes after the answer has nobody else
    request.on("socket", (socket) => {
      socket.once(tls ? "secureConnect" : "connect", () => {
        clearTimeout(timers[0]);
        this.peer = `${socket.remoteAddress}:${socket.remotePort}`;
      });
    });
    try {
      const [response] = await once(request.end(form), "response");
      const text = await textOf(response);
      this.#known = true;
      if (response.statusCode === 200) this.mayOnlyRead = response.headers["webctrl-access"] === "read";
      const get = (name) => response.headers[name.toLowerCase()] ?? null;
      return { status: response.statusCode, headers: { get }, text: async () => text };
    } catch (error) {
      this.#known = false;
      this.#error = late ?? error.code ?? error.message;
      throw error;
    } finally {
      timers.forEach(clearTimeout);
    }
  }

  #headers(form) {
    const { user, password } = this.#access;
    const login = `Basic ${Buffer.from(`${user}:${password}`).toString("base64")}`;
    return {
      connection: "close",
      ...(user && { authorization: login }),
      ...(form && { "content-type": "application/x-www-form-urlencoded", "content-length": form.length }),
    };
  }
}

/** The text of an answer; empty where it is none, is too long, or leads elsewhere. */
async function textOf(response) {
  const parts = [];
  let size = 0;
  for await (const part of response) {
    size += part.length;
    if (size > MAX_BYTES) return "";
    parts.push(part);
  }
  return response.statusCode === 200 ? Buffer.concat(parts).toString() : "";
}
