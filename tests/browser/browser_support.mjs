// What the tests of the pages share: a home with people and a backup, a server and a browser that go away again.
//
//   node SCRIPT PROGRAM BROWSER SAMPLE PICTURES
//
// PROGRAM is varnokctl, BROWSER Chromium, SAMPLE the vCard file of the sample people, PICTURES a folder for screenshots.

import assert from "node:assert/strict";
import { spawn, spawnSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync } from "node:fs";
import { createServer } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after } from "node:test";

import { chromium } from "playwright-core";

const [program, browserProgram, sample, pictures] = process.argv.slice(2);
mkdirSync(pictures, { recursive: true });

const QUIET_BROWSER = [
  "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
  "--disable-component-update", "--disable-sync",
];

// Milliseconds; only what hangs reaches it.
export const PATIENCE = 10000;

const folders = [];

export function temporaryFolder() {
  const folder = mkdtempSync(join(tmpdir(), "varnok-pages-"));
  folders.push(folder);
  return folder;
}

export function varnokctl(home, ...args) {
  const done = spawnSync(program, ["--home", home, "--language", "en", ...args], { encoding: "utf8", timeout: 120000 });
  assert.equal(done.status, 0, `varnokctl ${args.join(" ")}: ${done.stderr}`);
  return done.stdout;
}

export function homeWith(people = sample, { backup = true } = {}) {
  const home = temporaryFolder();
  if (people) varnokctl(home, "import", people);
  if (backup) varnokctl(home, "backup", "--quiet");
  return home;
}

async function freePort() {
  const probe = createServer().listen(0, "127.0.0.1");
  await new Promise((resolve) => probe.once("listening", resolve));
  const { port } = probe.address();
  await new Promise((resolve) => probe.close(resolve));
  return port;
}

const running = new Set();

// One `varnokctl serve`, which may be stopped and started again on the same port.
export class Server {
  static async start(home, { language = "en", port } = {}) {
    const server = new Server();
    server.home = home;
    server.language = language;
    server.port = port ?? (await freePort());
    server.url = `http://127.0.0.1:${server.port}`;
    await server.start();
    return server;
  }

  async start() {
    this.process = spawn(program, ["--home", this.home, "--language", this.language, "serve", "--bind", "127.0.0.1",
      "--port", String(this.port)], { stdio: ["ignore", "pipe", "inherit"] });
    running.add(this);
    this.ended = new Promise((resolve) => this.process.once("exit", resolve));
    await new Promise((resolve, reject) => {
      this.process.stdout.once("data", resolve);
      this.ended.then((code) => reject(new Error(`varnokctl serve ended with ${code}`)));
    });
  }

  async stop() {
    running.delete(this);
    this.process.kill("SIGINT");
    assert.equal(await this.ended, 130);
  }

  async post(path, body) {
    const answer = await fetch(`${this.url}/${path}`, { method: "POST", body });
    assert.equal(answer.status, 200);
    return answer.json();
  }

  async people() {
    return (await (await fetch(`${this.url}/records.json`)).json()).records;
  }

  async idOf(name) {
    const found = (await this.people()).filter((person) => `${person.name} ${person.lastName}`.trim() === name);
    assert.equal(found.length, 1, name);
    return found[0].id;
  }

  // The non-empty values of a person by section and label: "Phone Numbers/Mobile".
  async valuesOf(id) {
    const { items } = await this.post("record.json", id);
    const values = {};
    let section = "";
    for (const { label, property, value } of items) {
      if (property === undefined) section = `${label}/`;
      else if (value !== "") values[section + label] = value;
    }
    return values;
  }

  // A new person from {property number: text} and [[property number, label, text]].
  async create(fields, slots = []) {
    const records = Object.entries(fields).map(([name, value]) => ({ name, value }));
    for (const [name, identifier, value] of slots) records.push({ name, value, type: "-1", identifier });
    return String((await this.post("saverecord.json", JSON.stringify({ id: "-1000", records }))).recordId);
  }
}

let browser;

export const DESKTOP = { viewport: { width: 1280, height: 800 } };
export const PHONE = { viewport: { width: 390, height: 844 }, hasTouch: true, isMobile: true };

// A page with storage of its own. What goes wrong in its scripts, and what its security policy refuses, fails the test.
export async function openPage(url, options = DESKTOP) {
  browser ??= await chromium.launch({ executablePath: browserProgram, args: QUIET_BROWSER });
  const context = await browser.newContext(options);
  context.setDefaultTimeout(PATIENCE);
  const page = await context.newPage();
  page.faults = [];
  page.on("pageerror", (error) => page.faults.push(String(error)));
  page.on("console", (message) => {
    if (/Content Security Policy/.test(message.text())) page.faults.push(message.text());
  });
  page.on("dialog", (dialog) => page.faults.push(`dialog ${dialog.type()}`) && dialog.dismiss());
  await page.goto(url);
  return page;
}

export async function closePage(page) {
  assert.deepEqual(page.faults, []);
  await page.context().close();
}

// The page of the contacts with its list, and perhaps one person in the form.
export async function openContacts(server, { id, options } = {}) {
  const page = await openPage(id === undefined ? server.url : `${server.url}/#${id}`, options);
  await page.locator("#people[aria-busy=false]").waitFor({ state: "attached" });
  if (id !== undefined) await page.locator("#form[aria-busy=false]").waitFor();
  return page;
}

export const row = (page, name) => page.getByRole("option", { name, exact: true });
export const field = (page, label) => page.getByRole("textbox", { name: label, exact: true });
export const section = (page, heading) => page.getByRole("group", { name: heading, exact: true });
export const button = (page, name) => page.getByRole("button", { name, exact: true });

export async function saved(page) {
  await page.locator("#form-state", { hasText: "✓" }).waitFor();
}

// Nothing to scroll sideways, no marker and no missing word.
export async function checkLayout(page, what) {
  const { width, text } = await page.evaluate(() => ({ width: document.documentElement.scrollWidth - innerWidth,
    text: document.body.innerText }));
  assert.ok(width <= 0, `${what} is ${width} px too wide`);
  assert.ok(!text.includes("%%") && !/undefined|null|NaN/.test(text), `${what}: ${text}`);
}

export function picture(page, name) {
  return page.screenshot({ path: join(pictures, `${name}.png`) });
}

after(async () => {
  await browser?.close();
  for (const server of [...running]) await server.stop();
  for (const folder of folders) rmSync(folder, { recursive: true, force: true });
});
