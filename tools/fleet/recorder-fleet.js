#!/usr/bin/env node
// SPDX-License-Identifier: GPL-2.0-only
// The command line.

import { readFileSync } from "node:fs";
import { Command, InvalidArgumentError } from "commander";
import { note } from "./report.js";
import { PASSWORD, runApply, runDiff, runRead, runStatus } from "./runs.js";
import { Usage } from "./usage.js";

const { version } = JSON.parse(readFileSync(new URL("package.json", import.meta.url), "utf8"));

const count = (text) => {
  if (!/^[1-9]\d{0,2}$/.test(text)) throw new InvalidArgumentError("It takes a number from 1 to 999.");
  return Number(text);
};

const program = new Command("recorder-fleet")
  .description("Reads, compares and changes the settings of many in-vehicle recorders.")
  .version(version)
  .exitOverride()
  .addHelpText(
    "after",
    `
HOST is a name or an address, with :PORT where that is not 80 (443 with TLS), or a range of addresses
such as 192.0.2.0/24, of which those that answer are taken.

Exit status: 0 all went well; 1 some recorders failed or were not begun; 2 the command line or a file is
wrong, and nothing was begun. Ctrl-C finishes what is being written and begins nothing more.

  recorder-fleet read -o backup 192.0.2.0/24
  recorder-fleet diff backup/192.0.2.7.json -f hosts.txt
  recorder-fleet apply backup/192.0.2.7.json -f hosts.txt --only VCmsInfo --dry-run
  recorder-fleet status -f hosts.txt --watch`,
  );

let exitStatus = 0;

function command(text, summary, run) {
  return program
    .command(text)
    .description(summary)
    .argument("[HOST...]", "recorders to ask")
    .option("-f, --file <FILE>", "take hosts from a file too: words, with # before remarks")
    .option("--jobs <N>", "recorders to work with at a time", count, 16)
    .option("--user <NAME>", `log in by this name; the password is asked for, or in ${PASSWORD}`)
    .option("--cacert <FILE>", "use TLS, and trust this authority (PEM) to name recorders")
    .option("--tls", "use TLS, and trust the authorities that Node.js knows")
    .action(async (...all) => {
      exitStatus = await run(...all);
    });
}

const REPORT = ["--report <FILE>", "the report file, JSON", "fleet-report.json"];
const writing = (text, summary, run) =>
  command(text, summary, run)
    .option("--only <GROUP,...>", "look at these groups alone; GROUP.FIELD names one field")
    .option("--values <TABLE>", "values by recorder: CSV, a row a host, columns 'host' and fields")
    .option(...REPORT);

command("read", "Read all settings: a settings file a recorder, and a table.csv of all of them.", runRead)
  .option("-o, --output <DIR>", "folder to write to; the files hold passwords in clear", ".")
  .option(...REPORT);
writing("diff <SETTINGS>", "Show what a settings file would change where.", runDiff);
writing(
  "apply <SETTINGS>",
  "Write a settings file. What belongs to one recorder alone is written only when --values has it or " +
    "--only names the very field. Wi-Fi and network mode go last, after a question.",
  runApply,
)
  .option("--dry-run", "compare only")
  .option("--yes", "write Wi-Fi and network mode without a question");
command("status", "Show number, version, signals, disks and platforms, a line a recorder.", runStatus)
  .option("--watch", "go on until Ctrl-C")
  .option("--json", "a JSON object a line")
  .option("--csv", "CSV")
  .option("--report <FILE>", "write a report file, JSON");

try {
  await program.parseAsync();
} catch (error) {
  if (error instanceof Usage) note(`recorder-fleet: ${error.message}`);
  else if (!error.code?.startsWith("commander.")) throw error;
  exitStatus = error.exitCode === 0 ? 0 : (error.status ?? 2);
}
process.exitCode = exitStatus;
