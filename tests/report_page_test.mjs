// Drives report pages as people do: report_page_test.mjs BROWSER PAGE TWO-FILES-PAGE
import assert from "node:assert/strict";
import { chromium } from "playwright-core";

const [, , browserPath, pagePath, bothPath] = process.argv;
const browser = await chromium.launch({ executablePath: browserPath, args: ["--no-sandbox", "--disable-dev-shm-usage"] });

async function open(path, options) {
  const context = await browser.newContext(options);
  const page = await context.newPage();
  page.messages = [];
  page.on("console", (message) => page.messages.push(message.text()));
  page.on("pageerror", (error) => page.messages.push(error.message));
  page.on("request", (request) => {
    if (!/^(file|data):/.test(request.url())) page.messages.push("asked for " + request.url());
  });
  await page.goto("file://" + path);
  return page;
}

const shown = (page, selector) => page.locator(selector).first().isVisible();

for (const width of [1280, 390]) {
  for (const colorScheme of ["light", "dark"]) {
    const page = await open(pagePath, { viewport: { width, height: 900 }, colorScheme });
    // Nothing sticks out, whatever is opened.
    await page.evaluate(() => document.querySelectorAll("details").forEach((details) => (details.open = true)));
    assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), width, "nothing sticks out");
    assert.deepEqual(await page.evaluate(() => [...document.querySelectorAll("body *:not(.skip)")].filter((element) => {
      const box = element.getBoundingClientRect();
      return box.width > 0 && box.right > innerWidth + 1 && !element.closest("svg");
    }).map((element) => element.tagName + ": " + element.textContent.slice(0, 40))), []);
    const byte = page.locator("#f1-fields tbody tr").first().locator("td").last();
    assert.equal(/byte/.test(await byte.innerText()), width < 560, "a number by itself says what it is");
    // Texts have enough contrast to be told from the page.
    const [ink, ground] = await page.evaluate(() => {
      const style = getComputedStyle(document.body);
      return [style.color, style.backgroundColor].map((c) => c.match(/\d+/g).slice(0, 3).reduce((a, b) => a + +b, 0));
    });
    assert.ok(Math.abs(ink - ground) > 400, "contrast");
    assert.deepEqual(page.messages, []);
    await page.context().close();
  }
}

const page = await open(pagePath, { viewport: { width: 1280, height: 900 } });
// The switch, by keyboard alone.
assert.ok(await shown(page, ".standard img"), "the standard's picture");
assert.ok(!(await shown(page, ".module")), "one picture at a time");
assert.ok(await shown(page, ".standard svg.outlines rect"));
await page.locator("input.no-outlines").focus();
await page.keyboard.press("Space");
assert.ok(!(await shown(page, ".standard svg.outlines rect")), "outlines go");
await page.locator("input.by-standard").focus();
await page.keyboard.press("ArrowLeft");
assert.match(await page.locator(".module").innerText(), /No picture: status -78/);
assert.ok(!(await shown(page, ".standard")));
await page.keyboard.press("ArrowRight");
assert.ok(await shown(page, ".standard img"));
// The search.
const rows = page.locator("#f1-fields tbody tr:visible");
const all = await rows.count();
await page.getByLabel("Search the fields").fill("igeolo");
assert.equal(await rows.count(), 1, "one field of that name");
assert.equal(await page.locator("#f1-fields .count").innerText(), "1 field");
await page.getByLabel("Search the fields").fill("Rows of pixels in a block");
assert.equal(await rows.count(), 2, "meanings are searched, of every image");
await page.getByLabel("Search the fields").fill("");
assert.ok((await rows.count()) >= all);
// A finding leads to its row, which is opened.
const finding = page.locator("#f1-check .findings a").last();
const row = page.locator(await finding.getAttribute("href"));
await page.evaluate(() => document.querySelectorAll("details").forEach((details) => (details.open = false)));
await finding.click();
assert.ok(await row.isVisible(), "the row of a finding");
// What is copied.
await page.locator("button.copy").click();
const geojson = JSON.parse(await page.locator("textarea").inputValue());
assert.equal(geojson.features[0].geometry.type, "Polygon");
await page.locator("button.copy", { hasText: "Copied" }).waitFor();
// Every picture has words, every part of the page a name.
assert.equal(await page.locator("img:not([alt])").count(), 0);
assert.equal(await page.locator("section:not([aria-labelledby])").count(), 0);
assert.equal(await page.locator("main, header, footer").count(), 3);
// Hostile texts are texts.
assert.equal(await page.title(), "evil.ntf");
assert.equal(await page.locator("img[src=x]").count(), 0);
assert.equal(await page.locator("script").count(), 1);
assert.match(await page.locator("#f1-texts pre").innerText(), /^<script>document\.title='owned'<\/script>/);
assert.deepEqual(page.messages, []);

// Without a script everything is there, and no tool that would not work.
const still = await open(pagePath, { javaScriptEnabled: false, viewport: { width: 1280, height: 900 } });
assert.ok(await shown(still, "#f1-fields table"));
assert.ok(await shown(still, ".standard img"));
assert.ok(!(await still.getByLabel("Search the fields").isVisible()));
assert.ok(!(await shown(still, "button.copy")));

const both = await open(bothPath, { viewport: { width: 1280, height: 900 } });
assert.equal(await both.locator("article").count(), 2);
await both.locator("nav a").nth(1).click();
assert.match(both.url(), /#f2$/);
assert.equal(await both.evaluate(() => {
  const ids = [...document.querySelectorAll("[id]")].map((e) => e.id);
  return ids.length - new Set(ids).size;
}), 0, "no id twice");
assert.deepEqual(both.messages, []);
await browser.close();
