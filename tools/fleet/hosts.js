// SPDX-License-Identifier: GPL-2.0-only
// Which recorders: names, addresses, with :PORT or without, and ranges of addresses.
//
// A host is {name, host, port, range}: `name` is what was written, `port` undefined where it is the
// scheme's own, `range` the range that it came from.

import { printable, readText, Usage } from "./usage.js";

const OCTET = "(?:25[0-5]|2[0-4]\\d|1\\d\\d|[1-9]?\\d)";
const ADDRESS = new RegExp(`^${OCTET}(?:\\.${OCTET}){3}$`);
const NAME = /^(?=.{1,253}$)(?!-)[a-z\d_-]{1,63}(\.[a-z\d_-]{1,63})*\.?$/i;
// A range of more addresses than this is a slip of the pen.
const MOST = 4096;

const toNumber = (address) => address.split(".").reduce((sum, octet) => sum * 256 + Number(octet), 0);
const toAddress = (number) => [24, 16, 8, 0].map((shift) => (number >>> shift) & 255).join(".");

/** All addresses of a range but its first and last, which stand for the network and for everybody. */
function addressesOf(base, bits) {
  const size = 2 ** (32 - bits);
  if (size > MOST) throw new Usage(`the range ${base}/${bits} has more than ${MOST} addresses`);
  const first = Math.floor(toNumber(base) / size) * size;
  const all = Array.from({ length: size }, (_, n) => toAddress(first + n));
  return size > 2 ? all.slice(1, -1) : all;
}

/** The hosts that one word stands for. */
export function parseHost(word) {
  const [, base, bits, port] = /^([^/:]+)(?:\/(\d{1,2}))?(?::(\d{1,5}))?$/.exec(word) ?? [];
  const isAddress = ADDRESS.test(base);
  const isHost = isAddress || (NAME.test(base) && !/^[\d.]+$/.test(base) && !bits);
  if (!base || !isHost || bits > 32 || (port && !(port > 0 && port < 65536)))
    throw new Usage(
      `'${printable(word).slice(0, 60)}' is no host; there are NAME, ADDRESS, either with :PORT, and ADDRESS/BITS`,
    );
  const tail = port ? `:${Number(port)}` : "";
  const hosts = bits ? addressesOf(base, Number(bits)) : [base.toLowerCase()];
  return hosts.map((host) => ({ name: host + tail, host, port: port && Number(port), range: bits && word }));
}

/** The hosts of the command line and of a file, each once. */
export function hostsOf(words, file) {
  const all = words.flatMap(parseHost);
  const lines = file ? readText(file).split(/\r?\n/) : [];
  lines.forEach((line, number) => {
    for (const word of line
      .replace(/#.*/, "")
      .split(/[\s,]+/)
      .filter(Boolean)) {
      try {
        all.push(...parseHost(word));
      } catch (error) {
        throw new Usage(`${file}, line ${number + 1}: ${error.message}`);
      }
    }
  });
  const named = all.filter(({ range }) => !range); // whoever was named is missed, also when a range has it
  const unique = [...new Map([...all, ...named].map((host) => [host.name, host])).values()];
  if (!unique.length) throw new Usage("no hosts; name some, or a file of them with -f");
  if (unique.length > MOST) throw new Usage(`more than ${MOST} hosts`);
  return unique;
}
