// A served studio, a browser, and what a person does in it.
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { accessSync, constants, mkdtempSync, readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { delimiter, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { chromium } from "playwright-core";
import { preview } from "vite";
import { recordedFiles } from "../data.mjs";

const root = fileURLToPath(new URL("../..", import.meta.url));
const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
export const folder = mkdtempSync(join(tmpdir(), "vesk-browser-"));
export const screenshots = process.env.VESK_SCREENSHOTS ?? "";

export function browserPath() {
  for (const name of ["chromium", "chromium-browser", "google-chrome"]) {
    for (const path of (process.env.PATH ?? "").split(delimiter)) {
      try {
        accessSync(join(path, name), constants.X_OK);
        return join(path, name);
      } catch {
        // The next one.
      }
    }
  }
  return null;
}

export function native(program, ...given) {
  const done = spawnSync(program, given, { encoding: "utf8", maxBuffer: 1 << 28 });
  assert.equal(done.status, 0, `${given.join(" ")}: ${done.stderr}`);
  return done.stdout;
}

/** Traces by gesture: recorded ones, else generated ones. */
export function tracesByGesture(vesk) {
  let file = recordedFiles().find((it) => it.endsWith("unistroke16.jsonl"));
  if (!file) {
    file = join(folder, "generated.jsonl");
    native(vesk, "generate", "-o", file, "--users", "2", "--repetitions", "15");
  }
  const byGesture = new Map();
  for (const line of readFileSync(file, "utf8").trim().split("\n")) {
    const trace = JSON.parse(line);
    if (trace.user !== "s04" && trace.user !== "u01") continue;
    if (!byGesture.has(trace.gesture)) byGesture.set(trace.gesture, []);
    byGesture.get(trace.gesture).push(trace);
  }
  return byGesture;
}

export async function started() {
  const server = await preview({ root, logLevel: "error", preview: { host: "127.0.0.1", port: 0 } });
  const browser = await chromium.launch({
    executablePath: browserPath(),
    args: [
      "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
      "--disable-background-networking", "--disable-component-update", "--disable-sync",
    ],
  });
  return {
    url: server.resolvedUrls.local[0],
    browser,
    async end() {
      await browser.close();
      await new Promise((done) => server.httpServer.close(done));
    },
  };
}

/** A page of the studio; every message on the console and every request elsewhere is a problem. */
export class Page {
  problems = [];

  static async open(studio, options = {}, prepare = async () => {}) {
    const it = new Page();
    it.context = await studio.browser.newContext({
      viewport: { width: 1280, height: 860 },
      ...options,
    });
    await prepare(it.context);
    it.page = await it.context.newPage();
    it.page.on("console", (message) => {
      if (message.type() === "error" || message.type() === "warning")
        it.problems.push(`console: ${message.text()}`);
    });
    it.page.on("pageerror", (problem) => it.problems.push(`error: ${problem.message}`));
    it.page.on("dialog", (dialog) => {
      it.problems.push(`dialog: ${dialog.message()}`);
      void dialog.dismiss();
    });
    it.context.on("request", (request) => {
      if (!/^(blob|data):/.test(request.url()) && !request.url().startsWith(studio.url))
        it.problems.push(`request: ${request.url()}`);
    });
    it.page.setDefaultTimeout(60_000);
    await it.page.goto(studio.url);
    await it.page.getByRole("heading", { name: "Gestures" }).waitFor();
    return it;
  }

  async close() {
    await this.context.close();
    assert.deepEqual(this.problems, []);
  }

  /** Of a stroke in any coordinates: where it is drawn, as large as there is room. */
  async placed(points) {
    const box = await this.page.locator(".surface").boundingBox();
    const range = (axis) => {
      const values = points.map((it) => it[axis]);
      return [Math.min(...values), Math.max(...values)];
    };
    const [left, right] = range(0);
    const [top, bottom] = range(1);
    const scale = Math.min((box.width * 0.6) / (right - left), (box.height * 0.6) / (bottom - top));
    return points.map(([x, y]) => [
      box.x + box.width / 2 + (x - (left + right) / 2) * scale,
      box.y + box.height / 2 + (y - (top + bottom) / 2) * scale,
    ]);
  }

  /** With the mouse, a quick hand's: the browser takes a frame for every place it comes to. */
  async draw(points) {
    const places = (await this.placed(points)).filter((_, i, all) => i % 3 === 0 || i === all.length - 1);
    const { mouse } = this.page;
    await mouse.move(...places[0]);
    await mouse.down();
    for (const place of places) await mouse.move(...place);
    await mouse.up();
  }

  button(name) {
    return this.page.getByRole("button", { name, exact: typeof name === "string" });
  }

  /** Teaches a gesture from nothing and names it. */
  async teach(name, strokes) {
    await this.button("New").click();
    await this.draw(strokes[0]);
    const field = this.page.getByLabel("Name");
    await field.fill(name);
    await field.press("Enter");
    for (const stroke of strokes.slice(1)) await this.draw(stroke);
    await this.page.locator(".card.is-selected", { hasText: `${strokes.length} example` }).waitFor();
  }

  async train() {
    await this.button(/^Train/).click();
    await this.page.getByText("Trained on all of these examples.").waitFor();
  }

  /** The answer, or "" where it is rejected, of a stroke that `act` shows. */
  async verdictOf(act) {
    await act();
    const answer = this.page.locator(".answer");
    await answer.waitFor();
    const text = await answer.locator("strong").textContent();
    return (await answer.getAttribute("class")).includes("is-accepted") ? text : "";
  }

  async openMenu() {
    await this.page.locator(".menu summary").click();
  }

  /** The bytes of a file of the menu's lower part. */
  async takeHome(item) {
    await this.openMenu();
    const download = this.page.waitForEvent("download");
    await this.page.locator(".sheet ul").nth(1).getByRole("button", { name: item }).click();
    const path = join(folder, `${Math.random().toString(36).slice(2)}-${(await download).suggestedFilename()}`);
    await (await download).saveAs(path);
    return path;
  }

  async bringIn(kind, name, text) {
    await this.page
      .getByLabel(`${kind} to bring in`)
      .setInputFiles({ name, mimeType: "", buffer: Buffer.from(text) });
  }

  /** The text of the message that comes. */
  async message() {
    const notice = this.page.locator(".notice").last();
    await notice.waitFor();
    const text = await notice.innerText();
    await notice.getByRole("button", { name: "Dismiss" }).click();
    return text;
  }

  async kept() {
    await this.page.locator(".storage", { hasText: "kept in this browser" }).waitFor();
  }

  /** Serious findings of axe. */
  async expectAccessible(state) {
    await this.page.evaluate(() => document.getAnimations().forEach((it) => it.finish()));
    await this.page.evaluate(axe);
    const found = await this.page.evaluate(async () => {
      const { violations } = await globalThis.axe.run(document, { resultTypes: ["violations"] });
      return violations.map((it) => ({
        id: it.id,
        impact: it.impact,
        places: it.nodes.map((node) => node.target.join(" ")),
      }));
    });
    const serious = found.filter((it) => it.impact === "serious" || it.impact === "critical");
    assert.deepEqual(serious, [], state);
    return found.length;
  }

  async screenshot(name, { fullPage = true, delay = 300 } = {}) {
    if (!screenshots) return;
    await this.page.waitForTimeout(delay);
    await this.page.screenshot({ path: resolve(screenshots, `${name}.png`), fullPage });
  }
}
