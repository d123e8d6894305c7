// Opens pages that `zav report` wrote in Chromium. Environment: ZAV (the command), CHROMIUM, SHOTS (a directory; optional).
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { chromium } from "playwright-core";
import { machine, changedMachine, hostileMachine } from "./machines.mjs";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const work = mkdtempSync(join(tmpdir(), "zav-page-"));
let browser;

function write(name, inventory, earlier) {
  const input = join(work, `${name}.json`);
  const output = join(work, `${name}.html`);
  writeFileSync(input, JSON.stringify(inventory));
  const compare = earlier ? ["--compare", join(work, "earlier.json")] : [];
  if (earlier) writeFileSync(join(work, "earlier.json"), JSON.stringify(earlier));
  execFileSync(process.env.ZAV, ["report", "--from", input, "-o", output, ...compare]);
  return output;
}

// Opens a page. What it complains about or asks the network for is collected.
async function open(file, options = {}) {
  const context = await browser.newContext({ viewport: { width: 1280, height: 800 }, ...options });
  const page = await context.newPage();
  const faults = [];
  page.on("console", (message) => { if (["error", "warning"].includes(message.type())) faults.push(message.text()); });
  page.on("pageerror", (error) => faults.push(String(error)));
  page.on("request", (request) => { if (request.url() !== `file://${file}`) faults.push(`request: ${request.url()}`); });
  await page.goto(`file://${file}`);
  await page.locator("main").waitFor();
  return { page, faults, close: () => context.close() };
}

before(async () => { browser = await chromium.launch({ executablePath: process.env.CHROMIUM, args: ["--no-sandbox"] }); });
after(async () => { await browser?.close(); rmSync(work, { recursive: true }); });

test("a page of 3,000 packages opens without errors and requests", async () => {
  const { page, faults, close } = await open(write("machine", machine(3000)));
  const ready = await page.evaluate(() => performance.getEntriesByName("interactive")[0].startTime);
  console.log(`3,000 packages: interactive after ${Math.round(ready)} ms`);
  assert.deepEqual(faults, []);
  await close();
});

test("20,000 packages open, and the search finds one of them", async () => {
  const { page, faults, close } = await open(write("large", machine(20000)));
  const ready = await page.evaluate(() => performance.getEntriesByName("interactive")[0].startTime);
  console.log(`20,000 packages: interactive after ${Math.round(ready)} ms`);
  await page.fill("#search", "package-19876");
  await page.waitForFunction(() => document.querySelectorAll("#group-SoftwarePackages tbody tr").length === 1);
  assert.match(await page.locator("#group-SoftwarePackages tbody").innerText(), /package-19876/);
  assert.equal(await page.locator("#group-Storage").count(), 0);
  assert.deepEqual(faults, []);
  await close();
});

test("a column sorts up, down and not at all", async () => {
  const { page, close } = await open(write("sort", machine(200)));
  const header = page.locator("#group-SoftwarePackages th", { hasText: "InstalledSize" });
  const cell = () => page.locator("#group-SoftwarePackages tbody tr").first().locator("td.number").first().locator("span").getAttribute("title");
  await header.locator("button").click();
  assert.equal(await header.getAttribute("aria-sort"), "ascending");
  assert.equal(await cell(), "1");
  await header.locator("button").click();
  assert.equal(await header.getAttribute("aria-sort"), "descending");
  assert.equal(await cell(), "200");
  await header.locator("button").click();
  assert.equal(await header.getAttribute("aria-sort"), "none");
  await close();
});

test("the keyboard alone searches and opens the details", async () => {
  const { page, faults, close } = await open(write("keyboard", machine(300)));
  await page.keyboard.press("/");
  await page.keyboard.type("package-00123");
  await page.waitForFunction(() => document.querySelectorAll("#group-SoftwarePackages tbody tr").length === 1);
  for (let i = 0; i < 60; ++i) {
    await page.keyboard.press("Tab");
    if (await page.evaluate(() => document.activeElement?.matches("#group-SoftwarePackages td.more button"))) break;
  }
  await page.keyboard.press("Enter");
  assert.match(await page.locator("#group-SoftwarePackages .detail").innerText(), /tool number 123/);
  assert.deepEqual(faults, []);
  await close();
});

for (const colorScheme of ["light", "dark"]) {
  test(`axe finds nothing serious in ${colorScheme} colours`, async () => {
    const { page, close } = await open(write("axe", changedMachine(60), machine(60)), { colorScheme, bypassCSP: true });
    await page.locator("#group-SoftwarePackages td.more button").first().click();
    await page.evaluate(axe);
    const found = await page.evaluate(() => window.axe.run());
    const serious = found.violations.filter((one) => ["serious", "critical"].includes(one.impact));
    assert.deepEqual(serious.map((one) => `${one.id}: ${one.nodes.slice(0, 3).map((node) => `${node.html} ${node.any[0]?.message ?? ""}`).join(" | ")}`), []);
    await close();
  });
}

test("hostile values are shown and do nothing", async () => {
  const { page, faults, close } = await open(write("hostile", hostileMachine()));
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  await page.locator("#group-SoftwarePackages td.more button").first().click();
  const text = await page.locator("#group-SoftwarePackages").innerText();
  for (const shown of ["</script><script>", "<!--", "\\u{2028}", "\\u{202e}", "\\u{0007}", "100,000 characters"]) assert.ok(text.includes(shown), shown);
  assert.ok(!/[\u202e\u0007\u2028]/.test(text));
  assert.deepEqual(faults, []);
  await close();
});

test("the policy refuses scripts that are not of the page", async () => {
  const { page, close } = await open(write("policy", machine(10)));
  await page.evaluate(() => {
    const script = document.createElement("script");
    script.textContent = "window.hacked = 1";
    document.body.append(script);
  });
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  await close();
});

test("changes are listed and marked", async () => {
  const { page, faults, close } = await open(write("compare", changedMachine(60), machine(60)));
  const changes = await page.locator("#changes").innerText();
  assert.match(changes, /new\s+.*package-new/);
  assert.match(changes, /gone\s+.*package-00003/);
  assert.match(changes, /changed\s+.*nvme0n1.*Model/);
  assert.equal(await page.locator("#group-SoftwarePackages .tag.new").count(), 1);
  assert.equal(await page.locator("#group-Storage .tag.changed").count(), 1);
  assert.deepEqual(faults, []);
  await close();
});

test("paper has all rows", async () => {
  const { page, close } = await open(write("print", machine(300)));
  assert.equal(await page.locator("#group-SoftwarePackages tbody tr").count(), 50);
  await page.evaluate(() => dispatchEvent(new Event("beforeprint")));
  await page.waitForFunction(() => document.querySelectorAll("#group-SoftwarePackages tbody tr").length === 300);
  await page.emulateMedia({ media: "print" });
  assert.equal(await page.locator("nav").isVisible(), false);
  await close();
});

test("a narrow window does not scroll sideways", async () => {
  const { page, close } = await open(write("narrow", machine(60)), { viewport: { width: 380, height: 700 } });
  assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
  await close();
});

test("pictures are taken where they are wanted", { skip: !process.env.SHOTS }, async () => {
  for (const colorScheme of ["light", "dark"]) {
    const { page, close } = await open(write("shot", changedMachine(3000), machine(3000)), { colorScheme, viewport: { width: 1180, height: 860 } });
    await page.screenshot({ path: join(process.env.SHOTS, `report-${colorScheme}.png`) });
    await close();
  }
});
