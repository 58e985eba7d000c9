// SPDX-License-Identifier: GPL-2.0-only
// Questions on the terminal; where there is none nobody is asked.

import { createInterface } from "node:readline/promises";
import { Writable } from "node:stream";

/** Resolves to undefined at Ctrl-C or Ctrl-D, or when `signal` is aborted. */
async function ask(question, output, signal) {
  const lines = createInterface({ input: process.stdin, output, terminal: true });
  const none = new Promise((resolve) => lines.once("close", resolve).once("SIGINT", () => lines.close()));
  const answer = await Promise.race([lines.question(question, { signal }).catch(() => undefined), none]);
  lines.close();
  return answer;
}

/** Resolves to undefined without a terminal. What is typed is not shown. */
export async function password(question) {
  if (!process.stdin.isTTY) return undefined;
  process.stderr.write(question);
  const answer = await ask("", new Writable({ write: (part, encoding, done) => done() }));
  process.stderr.write("\n");
  return answer;
}

/** Resolves to false without a terminal, to undefined when there was no answer. */
export async function confirm(question, signal) {
  if (!process.stdin.isTTY) return false;
  const answer = await ask(question, process.stderr, signal);
  if (answer !== undefined) return /^y(es)?$/i.test(answer);
  process.stderr.write("\n");
  return undefined;
}
