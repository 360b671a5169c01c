// The contacts page: list, search, form, and what must not get lost.

import assert from "node:assert/strict";
import { test } from "node:test";

import { PHONE, Server, button, closePage, field, homeWith, openContacts, row, saved, section, varnokctl } from "./browser_support.mjs";

const server = await Server.start(homeWith());

const PHONE_NUMBER = "15";
const EMAIL = "16";
const HOME = "_$!<Home>!$_";
const WORK = "_$!<Work>!$_";

const shownNames = (page) => page.getByRole("option").locator(".row-name").allTextContents();

test("The list shows everybody, people without a name by something else", async () => {
  const id = await server.create({ 9: "Aardvark Pipes" });
  const page = await openContacts(server);
  const people = await server.people();
  assert.equal(await page.locator("#count").textContent(), String(people.length));
  const first = people.map((person) => person.lastName || person.name).filter(Boolean)
    .sort(new Intl.Collator("en", { sensitivity: "base", numeric: true }).compare)[0];
  assert.match((await shownNames(page))[0], new RegExp(first));
  await page.getByLabel("Search").fill("aardvark");
  await row(page, "Aardvark Pipes").click();
  await page.getByRole("heading", { name: "Aardvark Pipes" }).waitFor();
  await server.post("removerecord.json", id);
  await closePage(page);
});

test("Search finds every word, without accents and case", async () => {
  const ids = [await server.create({ 1: "Łukasz İlker", 2: "Strauß-Ødegård" }), await server.create({ 1: "נֹעַם", 2: "לוי" })];
  const page = await openContacts(server);
  for (const [query, expected] of [
    ["lukasz", 1], ["ILKER  strauss", 1], ["odegard luk", 1], ["ødegård", 1], ["lukasz nobody", 0], ["נעם", 1], ["   ", ids.length],
  ]) {
    await page.getByLabel("Search").fill(query);
    const count = await page.locator("#count").textContent();
    if (query.trim() === "") assert.equal(count, String((await server.people()).length));
    else assert.match(count, new RegExp(`^${expected} / `), query);
    assert.equal(await page.locator("#nobody").isVisible(), expected === 0, query);
  }
  for (const id of ids) await server.post("removerecord.json", id);
  await closePage(page);
});

test("The keyboard leads through list and form", async () => {
  const id = await server.create({ 1: "Aaa", 2: "Aaa" });
  const page = await openContacts(server);
  await page.keyboard.press("/");
  await page.keyboard.type("aaa");
  await page.keyboard.press("Enter");
  await page.getByRole("heading", { name: "Aaa Aaa" }).waitFor();
  await page.keyboard.press("Escape");
  await page.locator("#form").waitFor({ state: "hidden" });
  await page.keyboard.press("/");
  await page.keyboard.press("Escape");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("ArrowDown");
  const chosen = await page.locator(".row.active").textContent();
  assert.equal(await page.getByRole("listbox").getAttribute("aria-activedescendant"),
    await page.locator(".row.active").getAttribute("id"));
  await page.keyboard.press("Enter");
  await page.locator("#form[aria-busy=false]").waitFor();
  assert.equal(await page.locator("[aria-selected=true]").textContent(), chosen);
  await page.keyboard.press("Escape");
  await page.keyboard.press("End");
  assert.equal(await page.locator(".row.active").getAttribute("aria-posinset"), String((await server.people()).length));
  await server.post("removerecord.json", id);
  await closePage(page);
});

test("A new person is stored as typed and appears in the list", async () => {
  const page = await openContacts(server);
  await button(page, "New Contact").click();
  await field(page, "First Name").fill("Émile");
  await field(page, "Last Name").fill("Zätopek");
  await button(section(page, "Phone Numbers"), "Mobile").click();
  await page.keyboard.type(" +420 \"1\" \\ 2 ");
  await button(section(page, "Web Addresses"), "Home Page").click();
  await page.keyboard.type("https://example.org/?a=1&b=2");
  await field(page, "Note").fill("One\nTwo\n\n% \u{1F600}");
  await button(page, "Save").click();
  await saved(page);
  const id = await server.idOf("Émile Zätopek");
  assert.deepEqual(await server.valuesOf(id), {
    "First Name": "Émile", "Last Name": "Zätopek", "Phone Numbers/Mobile": " +420 \"1\" \\ 2 ",
    "Web Addresses/Home Page": "https://example.org/?a=1&b=2", "Notes/Note": "One\nTwo\n\n% \u{1F600}",
  });
  await page.waitForURL(`${server.url}/#${id}`);
  assert.equal(await row(page, "Émile Zätopek").getAttribute("aria-selected"), "true");

  // Deleted after a question only.
  await button(page, "Delete").click();
  await button(page.getByRole("dialog"), "Close").click();
  await button(page, "Delete").click();
  await button(page.getByRole("dialog", { name: "Do you want to delete this contact?" }), "Delete").click();
  await page.locator("#form").waitFor({ state: "hidden" });
  await row(page, "Émile Zätopek").waitFor({ state: "detached" });
  assert.ok(!(await server.people()).some((person) => person.id === id));
  await closePage(page);
});

test("A save changes what was changed and nothing else", async () => {
  const id = await server.create({ 1: "Mara", 2: "Onetwo", 11: "First line\nsecond line" }, [
    [EMAIL, HOME, "hidden@example.org"], [EMAIL, "Own label", "own@example.org"], [EMAIL, HOME, "shown@example.org"],
    [PHONE_NUMBER, WORK, "1"], [PHONE_NUMBER, "Boat", "2"], [PHONE_NUMBER, HOME, "3"],
  ]);
  const page = await openContacts(server, { id });
  await field(section(page, "Phone Numbers"), "Work").fill("");
  await field(section(page, "Phone Numbers"), "Home").fill("33");
  await field(section(page, "Email Addresses"), "Home").fill("new@example.org");
  await page.keyboard.press("Control+s");
  await saved(page);
  const stored = JSON.parse(varnokctl(server.home, "contacts", "show", id, "--json"));
  const text = JSON.stringify(stored);
  for (const kept of ["hidden@example.org", "own@example.org", "new@example.org", "\"2\"", "\"33\"", "First line\\nsecond line"])
    assert.ok(text.includes(kept), `${kept} in ${text}`);
  for (const gone of ["shown@example.org", "\"1\"", "\"3\""]) assert.ok(!text.includes(gone), gone);

  // Emptied, the slot shows the earlier address of the same kind.
  await field(section(page, "Email Addresses"), "Home").fill("");
  await button(page, "Save").click();
  await saved(page);
  assert.equal(await field(section(page, "Email Addresses"), "Home").inputValue(), "hidden@example.org");
  assert.equal(await field(page, "Title").inputValue(), "First line\nsecond line");
  await server.post("removerecord.json", id);
  await closePage(page);
});

test("Somebody else's change is not overwritten unseen", async () => {
  const id = await server.create({ 1: "Conrad", 2: "Urrent" }, [[PHONE_NUMBER, WORK, "1"], [PHONE_NUMBER, HOME, "2"]]);
  const page = await openContacts(server, { id });
  const home = field(section(page, "Phone Numbers"), "Home");

  // An entry before it is gone: the change follows its entry.
  await home.fill("22");
  await server.post("saverecord.json", JSON.stringify({ id, records: [
    { name: PHONE_NUMBER, value: "", type: "0", identifier: WORK }, { name: "6", value: "Con" }] }));
  await button(page, "Save").click();
  await saved(page);
  assert.deepEqual(await server.valuesOf(id),
    { "First Name": "Conrad", "Last Name": "Urrent", "Nickname": "Con", "Phone Numbers/Home": "22" });

  // The same entry: the first save says so, the second one is meant.
  await home.fill("mine");
  await server.post("saverecord.json", JSON.stringify({ id, records: [
    { name: PHONE_NUMBER, value: "theirs", type: "0", identifier: HOME }] }));
  await button(page, "Save").click();
  await page.locator("#form").getByRole("alert").getByText("Something went wrong").waitFor();
  await page.getByText("theirs").waitFor();
  assert.equal((await server.valuesOf(id))["Phone Numbers/Home"], "theirs");
  await button(page, "Save").click();
  await saved(page);
  assert.equal((await server.valuesOf(id))["Phone Numbers/Home"], "mine");

  // The whole person: what is in the form becomes a new one.
  await field(page, "First Name").fill("Konrad");
  await server.post("removerecord.json", id);
  await button(page, "Save").click();
  await page.locator("#form").getByRole("alert").getByText("Something went wrong").waitFor();
  await button(page, "Save").click();
  await saved(page);
  const newId = await server.idOf("Konrad Urrent");
  assert.deepEqual(await server.valuesOf(newId),
    { "First Name": "Konrad", "Last Name": "Urrent", "Nickname": "Con", "Phone Numbers/Home": "mine" });
  await server.post("removerecord.json", newId);
  await closePage(page);
});

test("Markup in a contact is text", async () => {
  const texts = ["<script>document.title='hacked'</script>", "<img src=x onerror=\"document.title='hacked'\">",
    "\"'><svg onload=alert(1)>", "javascript:alert(1)", "%%VCF_FILE%% &lt;b&gt; \u202E"];
  const page = await openContacts(server);
  await button(page, "New Contact").click();
  await page.locator("#form[aria-busy=false]").waitFor();
  for (const chip of await page.locator(".chip").all()) await page.locator(".chip").first().click();
  const inputs = await page.locator("#cards").getByRole("textbox").all();
  assert.equal(inputs.length, 24);
  const typed = inputs.map((_, position) => texts[position % texts.length]);
  for (const [position, input] of inputs.entries()) await input.fill(typed[position]);
  await button(page, "Save").click();
  await saved(page);

  const id = new URL(page.url()).hash.slice(1);
  await page.reload();
  await page.locator("#form[aria-busy=false]").waitFor();
  const values = await page.locator("#cards").getByRole("textbox").evaluateAll((all) => all.map((input) => input.value));
  assert.deepEqual(values, typed);
  assert.equal(await page.locator("[aria-selected=true] .row-name").textContent(), `${typed[0]} ${typed[2]}`);
  assert.equal(await page.locator("#form-title").textContent(), `${typed[0]} ${typed[2]}`);
  assert.equal(await page.locator("#cards script, #cards img, #list script, #list img, svg").count(), 0);
  for (const link of await page.locator("#cards a[href]").all()) assert.match(await link.getAttribute("href"), /^(tel|mailto|https?):/);
  await server.post("removerecord.json", id);
  await closePage(page);
});

test("Unsaved changes are asked about", async () => {
  const id = await server.create({ 1: "Ursula", 2: "Unsaved" });
  const page = await openContacts(server);
  await page.getByLabel("Search").fill("unsaved");
  await row(page, "Ursula Unsaved").click();
  await page.locator("#form[aria-busy=false]").waitFor();
  await field(page, "First Name").fill("Ulla");
  const question = page.getByRole("dialog", { name: "Ulla Unsaved" });

  // The question comes for every way out, and the form stays until it is answered.
  for (const leave of [
    () => page.goBack(), () => page.keyboard.press("Escape"), () => button(page, "New Contact").click(),
    () => page.locator("#close").click(),
  ]) {
    await leave();
    await question.getByText("Ulla", { exact: true }).waitFor();
    await button(question, "Edit Contacts").click();
    assert.equal(await field(page, "First Name").inputValue(), "Ulla");
    assert.match(page.url(), new RegExp(`#${id}$`));
  }
  page.removeAllListeners("dialog");
  const asked = page.waitForEvent("dialog");
  const left = page.goto("about:blank").catch(() => {});
  const dialog = await asked;
  assert.equal(dialog.type(), "beforeunload");
  await dialog.dismiss();
  await left;

  await page.goBack();
  await button(question, "Save").click();
  await page.locator("#form").waitFor({ state: "hidden" });
  assert.equal(await server.idOf("Ulla Unsaved"), id);

  await row(page, "Ulla Unsaved").click();
  await page.locator("#form[aria-busy=false]").waitFor();
  await field(page, "First Name").fill("Nobody");
  await page.keyboard.press("Escape");
  await button(page.getByRole("dialog"), "Close").click();
  await page.locator("#form").waitFor({ state: "hidden" });
  assert.equal(await server.idOf("Ulla Unsaved"), id);
  await server.post("removerecord.json", id);
  await closePage(page);
});

test("On a phone the list and the form take turns, and the back button leads back", async () => {
  const page = await openContacts(server, { options: PHONE });
  const scrolled = await page.getByRole("listbox").evaluate((list) => { list.scrollTop = 300; return list.scrollTop; });
  await page.getByRole("option").nth(8).tap();
  await page.locator("#form[aria-busy=false]").waitFor();
  assert.ok(!(await page.getByRole("listbox").isVisible()));
  await page.goBack();
  await page.getByRole("listbox").waitFor();
  assert.ok(!(await page.locator("#form").isVisible()));
  assert.equal(await page.getByRole("listbox").evaluate((list) => list.scrollTop), scrolled);
  await page.getByRole("option").nth(8).tap();
  await page.locator("#form[aria-busy=false]").waitFor();
  await button(page, "Close").tap();
  await page.getByRole("listbox").waitFor();
  assert.equal(await page.evaluate(() => location.hash), "");
  await closePage(page);
});

test("A server that is gone is said in place, and nothing typed is lost", async () => {
  const id = await server.create({ 1: "Greta", 2: "Gone" });
  const page = await openContacts(server, { id });
  await field(page, "First Name").fill("Grete");
  await server.stop();
  await button(page, "Save").click();
  const error = page.locator("#form").getByRole("alert");
  await error.getByText("Something went wrong. Please try again.").waitFor();
  await page.locator("#new").click();
  await button(page.getByRole("dialog"), "Save").click();
  await error.getByText("Something went wrong").waitFor();
  assert.equal(await field(page, "First Name").inputValue(), "Grete");
  await server.start();
  await error.getByRole("button").click();
  await saved(page);
  assert.equal(await server.idOf("Grete Gone"), id);

  // A new person whose save is not confirmed is not made twice.
  await button(page, "New Contact").click();
  await page.getByRole("heading", { name: "New Contact" }).waitFor();
  await field(page, "Last Name").fill("Once");
  await page.route("**/record.json", (route) => route.abort(), { times: 1 });
  await button(page, "Save").click();
  await error.getByRole("button").click();
  await saved(page);
  await server.post("removerecord.json", await server.idOf("Once"));

  // The list, by a server that fails.
  await page.route("**/records.json", (route) => route.fulfill({ status: 503 }));
  await page.reload();
  const listError = page.locator("#list-notice");
  await listError.getByText("503").waitFor();
  await page.unroute("**/records.json");
  await listError.getByRole("button").click();
  await row(page, "Grete Gone").waitFor();
  assert.equal(await listError.textContent(), "");
  await server.post("removerecord.json", id);
  await closePage(page);
});
