// The pages in every language, and with a large book.

import assert from "node:assert/strict";
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";

import { PHONE, Server, checkLayout, closePage, homeWith, openContacts, picture, temporaryFolder } from "./browser_support.mjs";

test("Every language, its direction, and the words of every page", async () => {
  const home = homeWith();
  for (const language of ["de", "el", "en", "es", "fr", "he", "it", "tr"]) {
    const server = await Server.start(home, { language });
    const page = await openContacts(server, { id: "1", options: PHONE });
    for (const path of ["", "download.html", "upload.html"]) {
      if (path) {
        await page.goto(`${server.url}/${path}`);
        await page.waitForLoadState("networkidle");
      }
      const root = page.locator("html");
      assert.equal(await root.getAttribute("lang"), language);
      assert.equal(await root.getAttribute("dir"), language === "he" ? "rtl" : "ltr");
      await checkLayout(page, `${language} ${path}`);
      for (const name of await page.getByRole("navigation").getByRole("link").allTextContents()) assert.notEqual(name.trim(), "");
    }
    await closePage(page);
    await server.stop();
  }
});

test("10,000 people: few rows in the page, and a search within 100 ms", async () => {
  const people = 10000;
  const file = join(temporaryFolder(), "many.vcf");
  writeFileSync(file, Array.from({ length: people }, (_, i) =>
    `BEGIN:VCARD\r\nVERSION:3.0\r\nN:Größe ${i};Ülkü ${i % 97};;;\r\nEND:VCARD\r\n`).join(""));
  const server = await Server.start(homeWith(file, { backup: false }));
  const started = performance.now();
  const page = await openContacts(server, { options: PHONE });
  await page.locator("#count", { hasText: "10,000" }).waitFor();
  const loaded = performance.now() - started;
  await picture(page, "many-en-390-light");

  const times = [];
  for (const query of ["g", "gro", "grosse 99", "ulku 12 grosse 7", "nobody", ""]) {
    const { time, rows, last } = await page.evaluate((text) => {
      const input = document.getElementById("search");
      input.value = text;
      const start = performance.now();
      input.dispatchEvent(new Event("input"));
      document.body.getBoundingClientRect();
      return { time: performance.now() - start, rows: document.querySelectorAll("[role=option]").length,
        last: document.getElementById("count").textContent };
    }, query);
    assert.ok(rows < 60, `${rows} rows`);
    if (query === "ulku 12 grosse 7") assert.match(last, /^\d+ \/ 10,000$/);
    times.push(time);
  }
  assert.ok(Math.max(...times) < 100, `search took ${times} ms`);

  // Scrolled to the end, the last person is there, and the row count stays.
  await page.locator("#list").evaluate((list) => { list.scrollTop = list.scrollHeight; });
  await page.locator(`[aria-posinset="${people}"]`).waitFor();
  assert.ok((await page.getByRole("option").count()) < 60);
  console.log(`# 10,000 people: shown after ${loaded.toFixed(0)} ms, slowest search ${Math.max(...times).toFixed(1)} ms`);
  await closePage(page);
  await server.stop();
});
