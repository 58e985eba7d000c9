// SPDX-License-Identifier: GPL-2.0-only
// Requests to the daemon and who answers them. No document, no browser: `fetch` is handed in.
//
// `answer` is the parsed object; `result` 1 in it: it worked, 0: it did not (a write's 1 may stand for
// the recorder's refusal); `reader` beside it: this login may not write. Otherwise `trouble` says why
// there is none; a request never rejects:
//   "gone"     nobody answers                 "odd"      what came is no answer
//   "refused"  this page, name or login may not (403)    "login"    no longer logged in (401)
//   "busy"     too many requests wait, also after asking again (503, 429)
//   "dropped"  nobody waits for it any more   "held"     `form` gave nothing to send

// The daemon waits 5 s for a silent recorder and serves nobody meanwhile; one request of ours may
// stand behind two such waits.
const GIVE_UP_MS = 20000;
const BUSY_TRIES = 4;
const BUSY_WAIT_S = { least: 1, most: 10 };

const STATUS_TROUBLE = { 401: "login", 403: "refused", 429: "busy", 503: "busy" };

export const pause = (ms) => new Promise((go) => setTimeout(go, ms));

async function ask(fetchLike, { path, form, signal }) {
  if (signal?.aborted) return { trouble: "dropped" };
  const fields = form?.();
  if (form && !fields) return { trouble: "held" };
  const abort = new AbortController();
  const stop = () => abort.abort();
  const giveUp = setTimeout(stop, GIVE_UP_MS);
  signal?.addEventListener("abort", stop);
  try {
    const init = { method: form ? "POST" : "GET", cache: "no-store", signal: abort.signal };
    const response = await fetchLike(path, form ? { ...init, body: new URLSearchParams(fields) } : init);
    const text = await response.text();
    const trouble = STATUS_TROUBLE[response.status];
    if (trouble) return { trouble, after: Number(response.headers.get("Retry-After")) };
    const reader = response.headers.get("Webctrl-Access") === "read" && { reader: true };
    return { ...parsed(text), ...reader };
  } catch {
    return { trouble: signal?.aborted ? "dropped" : "gone" };
  } finally {
    clearTimeout(giveUp);
    signal?.removeEventListener("abort", stop);
  }
}

function parsed(text) {
  try {
    const answer = JSON.parse(text);
    if (answer?.result === 0 || answer?.result === 1) return { answer };
  } catch {
    // told below
  }
  return { trouble: "odd" };
}

/** Who is told to wait has had nothing carried out, so asking again is safe for a write too. */
async function askPatiently(fetchLike, job) {
  for (let tries = 1; ; tries++) {
    const outcome = await ask(fetchLike, job);
    if (outcome.trouble !== "busy" || tries === BUSY_TRIES) return outcome;
    const { least, most } = BUSY_WAIT_S;
    await pause(1000 * Math.min(most, Math.max(least, outcome.after || 0)));
  }
}

/**
 * Makes the function that sends requests one at a time, as the daemon serves them:
 * request(path, {form, urgent, signal, what}) resolves to {answer} or {trouble}.
 *   form    for a write: gives its fields as pairs at the moment of sending, or nothing to send none
 *   urgent  goes before all that is not
 *   signal  aborts a request that nobody waits for any more; a queued one leaves the queue
 *   what    [Chinese, English] name of what is being waited for
 * Of the hooks, mayRun(job) holds back what should not be sent now, until resume() is called;
 * began(job) and ended(job, outcome, ms) frame each request.
 */
export function requester(fetchLike, { mayRun = () => true, began = () => {}, ended = () => {} } = {}) {
  const jobs = [];
  let running = null;

  async function run() {
    while (!running && jobs.length && mayRun(jobs[0])) {
      running = jobs.shift();
      const start = Date.now();
      began(running);
      const outcome = await askPatiently(fetchLike, running);
      const job = running;
      running = null;
      ended(job, outcome, Date.now() - start);
      job.done(outcome);
    }
  }

  function request(path, how = {}) {
    return new Promise((done) => {
      const job = { path, urgent: false, ...how, done };
      if (job.signal?.aborted) return done({ trouble: "dropped" });
      job.signal?.addEventListener("abort", () => {
        if (!jobs.includes(job)) return;
        jobs.splice(jobs.indexOf(job), 1);
        done({ trouble: "dropped" });
      });
      const first = job.urgent ? jobs.findIndex(({ urgent }) => !urgent) : -1;
      jobs.splice(first < 0 ? jobs.length : first, 0, job);
      return run();
    });
  }
  return Object.assign(request, { resume: run, idle: () => !running && jobs.length === 0 });
}

// ---- the status and who the recorder is

// What every recorder gives: the link is judged by it, as one section alone may stay unanswered.
export const STATUS = "/get_SystemInfo";

const disk = ["ucFD_DiskExist", "strFD_DiskSize"];
const STATUS_MEMBERS = {
  gps: ["ucFD_GpsExist", "strFD_GpsPos"],
  gnet: [
    ..."ucFD_GNetExist strFD_GNetIMEI strFD_GNetRevision ucFD_SimExist ucFD_SimIMSI".split(" "),
    ..."ucFD_SimICCID uiFD_GNetSignal ucFD_GNetDail".split(" "),
  ],
  wifi: ["ucFD_WifiExist", "ucFD_WifiMode", "uiFD_WifiSignal", "ucFD_WifiDail"],
  cms: ["ucFD_CmsStatus", "ucFD_JTT808Status", "ucFD_GB28181Status"],
  io: ["strFD_IOStatus"],
  version: ["Mcu", "Ldr", "Knl", "Rfs", "App", "Dbt"].map((part) => `strFD_${part}Version`),
  acc: ["ucFD_AccStatus"],
};

/** Every member of a status, as "gnet.ucFD_GNetDail" or "disk.list.0.ucFD_DiskExist". */
export const statusPlaces = [
  ...Object.entries(STATUS_MEMBERS).flatMap(([group, names]) => names.map((name) => `${group}.${name}`)),
  ...[0, 1].flatMap((n) => disk.map((name) => `disk.list.${n}.${name}`)),
];

export const hasTexts = (object, names) => names.every((name) => typeof object?.[name] === "string");

const wholeStatus = (answer) =>
  Object.entries(STATUS_MEMBERS).every(([group, names]) => hasTexts(answer[group], names)) &&
  answer.disk?.list?.length >= 2 &&
  answer.disk.list.every((entry) => hasTexts(entry, disk));

/** The status as {answer} of the right shape, or {trouble}; "silent": the recorder does not answer. */
export async function readStatus(request, how = { what: ["状态", "status"] }) {
  let outcome;
  for (let tries = 0; tries < 2; tries++) {
    outcome = await request(STATUS, how);
    if (outcome.answer?.result === 0) return { trouble: "silent" };
    if (outcome.answer && !wholeStatus(outcome.answer)) outcome = { trouble: "odd" };
    if (outcome.trouble !== "odd") return outcome;
  }
  return outcome;
}

/** A recorder is {number, imei}, each empty when unknown. */
export const identityOf = (status, base) => ({
  number: base?.result === 1 ? String(base.strFD_DeviceNo ?? "") : "",
  imei: status?.gnet?.strFD_GNetIMEI ?? "",
});

/** Whether two identities are of one recorder; undefined when they cannot be compared. */
export function sameRecorder(one, other) {
  for (const mark of ["imei", "number"]) if (one[mark] && other[mark]) return one[mark] === other[mark];
  return undefined;
}

/** Who answers now, with its clock; {trouble} when nobody does. The number is read when wanted or needed. */
export async function identify(request, how) {
  const { answer, trouble } = await readStatus(request, how);
  if (answer?.gnet.strFD_GNetIMEI && !how?.number) return identityOf(answer);
  const base = await request("/get_BaseInfo", how);
  const identity = { ...identityOf(answer, base.answer), clock: base.answer?.strFD_CurTime };
  return identity.imei || identity.number ? identity : { ...identity, trouble: trouble ?? base.trouble };
}
