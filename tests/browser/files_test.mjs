// The pages that upload and download files.

import assert from "node:assert/strict";
import { randomBytes } from "node:crypto";
import { existsSync, readFileSync, readdirSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";

import { Server, closePage, homeWith, openPage, temporaryFolder } from "./browser_support.mjs";

const server = await Server.start(homeWith());
const documents = join(server.home, "Documents");

const done = (page, count) => page.locator(".upload[data-state=done]").nth(count - 1).waitFor();

test("Files arrive byte for byte under their names, one after another", async () => {
  const page = await openPage(`${server.url}/upload.html`);
  const files = [
    ["plain.vcf", randomBytes(300000)],
    ["100% \"sure\"; filename=\"x\".vcf", randomBytes(17)],
    ["%41 גיבוי – é.vcf", Buffer.from("\r\n--\r\n\r\n------WebKitFormBoundary\r\n\r\n")],
    ["back\\slash.bin", Buffer.concat([Buffer.from("\r\n"), randomBytes(70000), Buffer.from("\r\n")])],
    ["one byte", Buffer.from("\n")],
  ];
  const sent = [];
  page.on("request", (request) => request.method() === "POST" && sent.push(request));
  // A chooser takes the files from paths of these names.
  const folder = temporaryFolder();
  for (const [name, bytes] of files) writeFileSync(join(folder, name), bytes);
  const choosing = page.waitForEvent("filechooser");
  await page.locator("#choose").click();
  await (await choosing).setFiles(files.map(([name]) => join(folder, name)));
  await done(page, files.length);
  assert.deepEqual(await page.locator(".upload .file-name").allTextContents(), files.map(([name]) => name));
  for (const [name, bytes] of files) assert.deepEqual(readFileSync(join(documents, name)), bytes, name);
  assert.equal(sent.length, files.length);
  const ends = sent.map((request) => request.timing().startTime);
  assert.deepEqual(ends, [...ends].sort((a, b) => a - b));
  await closePage(page);
});

test("A dropped file is uploaded", async () => {
  const page = await openPage(`${server.url}/upload.html`);
  await page.evaluate(() => {
    const dataTransfer = new DataTransfer();
    dataTransfer.items.add(new File(["dropped"], "dropped.vcf"));
    document.body.dispatchEvent(new DragEvent("drop", { dataTransfer, bubbles: true, cancelable: true }));
  });
  await done(page, 1);
  assert.equal(readFileSync(join(documents, "dropped.vcf"), "utf8"), "dropped");
  await closePage(page);
});

test("Without scripts the form uploads one file", async () => {
  const page = await openPage(`${server.url}/upload.html`, { javaScriptEnabled: false });
  const bytes = randomBytes(50000);
  await page.setInputFiles("input[type=file]", { name: "by form.vcf", mimeType: "text/vcard", buffer: bytes });
  await Promise.all([page.waitForNavigation(), page.locator("#choose").click()]);
  assert.equal(await page.getByRole("heading").textContent(), "Upload Files");
  assert.deepEqual(readFileSync(join(documents, "by form.vcf")), bytes);
  await closePage(page);
});

test("A failed upload is said at its file, and can be tried again", async () => {
  const page = await openPage(`${server.url}/upload.html`);
  const answers = [(route) => route.fulfill({ status: 413 }), (route) => route.abort("connectionreset")];
  await page.route("**/upload.html", (route) =>
    route.request().method() === "POST" && answers.length > 0 ? answers.shift()(route) : route.continue());
  await page.setInputFiles("input[type=file]", ["a.vcf", "b.vcf"].map((name) =>
    ({ name, mimeType: "text/vcard", buffer: Buffer.from(name) })));
  const failed = page.locator(".upload[data-state=failed]");
  await failed.nth(1).waitFor();
  assert.match(await failed.nth(0).locator(".upload-message").textContent(), /^Something went wrong.* 413$/);
  assert.match(await failed.nth(1).locator(".upload-message").textContent(), /^Something went wrong[^\d]*$/);
  assert.ok(!existsSync(join(documents, "a.vcf")));
  await failed.nth(1).getByRole("button").click();
  await failed.nth(0).getByRole("button").click();
  await done(page, 2);
  assert.equal(readFileSync(join(documents, "a.vcf"), "utf8"), "a.vcf");
  await closePage(page);
});

test("The last backup is named with its size and date, and downloaded", async () => {
  const page = await openPage(server.url);
  await page.getByRole("link", { name: "Download Backup" }).click();
  const [name] = readdirSync(documents).filter((file) => /^Varnok-.*\.vcf$/.test(file));
  assert.equal(await page.locator("#file-name").textContent(), name);
  const facts = page.locator("#file-facts");
  await facts.getByText(String(new Date().getFullYear())).waitFor();
  assert.match(await facts.textContent(), /\d kB|\d MB/);
  const downloading = page.waitForEvent("download");
  await page.getByRole("link", { name: "Save File" }).click();
  const download = await downloading;
  assert.equal(download.suggestedFilename(), name);
  assert.deepEqual(readFileSync(await download.path()), readFileSync(join(documents, name)));
  await closePage(page);
});

test("Before the first backup there is nothing to download or upload", async () => {
  const fresh = await Server.start(homeWith(null, { backup: false }));
  const page = await openPage(fresh.url);
  await page.locator("#nobody").waitFor();
  await page.waitForLoadState("networkidle");
  assert.deepEqual(await page.getByRole("navigation").getByRole("link").allTextContents(), ["Edit Contacts"]);
  await closePage(page);
  await fresh.stop();
});
