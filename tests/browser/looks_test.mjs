// Widths, colours, directions and accessibility of every page, with pictures to look at.

import assert from "node:assert/strict";
import { createRequire } from "node:module";
import { test } from "node:test";

import {
  DESKTOP, PHONE, Server, button, checkLayout, closePage, homeWith, openContacts, openPage, picture,
} from "./browser_support.mjs";

const AXE = createRequire(import.meta.url).resolve("axe-core/axe.min.js");
const NARROW = { ...PHONE, viewport: { width: 360, height: 740 } };
const LONG_NAME = "Wolfeschlegelsteinhausenbergerdorff von und zu Hohenstaufen-Lichtenfels";

const home = homeWith();

async function longPerson(server) {
  return server.create({ 1: "Maximilian-Alexander Friedrich Wilhelm", 2: LONG_NAME, 9: "W".repeat(300), 12: "x".repeat(2000) },
    [["15", "_$!<Mobile>!$_", "+49 151 23456789 ".repeat(10)], ["17", "_$!<Work>!$_", `https://example.org/${"a".repeat(500)}`]]);
}

// axe cannot come through the page's own security policy, so it runs in a page without one.
async function checkAccessibility(page, what) {
  await page.addScriptTag({ path: AXE });
  const { violations } = await page.evaluate(() => window.axe.run());
  const serious = violations.filter(({ impact }) => ["serious", "critical"].includes(impact))
    .map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(" ")}`);
  assert.deepEqual(serious, [], what);
}

for (const [width, size, language, colorScheme] of [
  [360, NARROW, "en", "light"], [390, PHONE, "de", "dark"], [390, PHONE, "he", "light"],
  [1280, DESKTOP, "en", "light"], [1280, DESKTOP, "de", "light"], [1280, DESKTOP, "he", "dark"],
]) {
  test(`${language}, ${width} px, ${colorScheme}: fits, and axe finds nothing serious`, async () => {
    const server = await Server.start(home, { language });
    const id = await longPerson(server);
    const options = { ...size, colorScheme, bypassCSP: true, reducedMotion: "reduce" };
    const look = async (page, name) => {
      await checkLayout(page, name);
      await checkAccessibility(page, name);
      await picture(page, `${name}-${language}-${width}-${colorScheme}`);
    };
    const page = await openContacts(server, { options });
    await look(page, "list");
    await page.goto(`${server.url}/#${id}`);
    await page.locator("#cards .field").first().waitFor();
    await look(page, "form");
    await page.locator("#cards input").first().fill("X");
    await page.locator("#close").click();
    await page.locator("#unsaved-dialog[open]").waitFor();
    await look(page, "question");
    await page.locator("#unsaved-dialog [value=close]").click();
    await page.locator("#form").waitFor({ state: "hidden" });
    await page.goto(`${server.url}/#-1000`);
    await page.locator("#cards .field").first().waitFor();
    await look(page, "new");
    for (const name of ["download", "upload"]) {
      await page.goto(`${server.url}/${name}.html`);
      await page.waitForLoadState("networkidle");
      if (name === "upload") {
        await page.route("**/upload.html", (route) => route.fulfill({ status: 413 }));
        await page.setInputFiles("input[type=file]", { name: `${LONG_NAME}.vcf`, mimeType: "text/vcard", buffer: Buffer.alloc(9) });
        await page.locator(".upload[data-state=failed]").waitFor();
      }
      await look(page, name);
    }
    await server.post("removerecord.json", id);
    await closePage(page);
    await server.stop();
  });
}

test("An empty book", async () => {
  const server = await Server.start(homeWith(null, { backup: false }));
  const page = await openPage(server.url, { ...DESKTOP, bypassCSP: true });
  await page.locator("#nobody").waitFor();
  await checkAccessibility(page, "empty");
  await picture(page, "empty-en-1280-light");
  await button(page, "New Contact").click();
  await page.locator("#form[aria-busy=false]").waitFor();
  assert.ok(await button(page, "Save").isDisabled());
  await closePage(page);
  await server.stop();
});
