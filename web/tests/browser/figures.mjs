import { readdirSync, readFileSync, statSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";
import { Page, folder, native } from "./support.mjs";

const dist = fileURLToPath(new URL("../../dist", import.meta.url));

function weight(path) {
  if (statSync(path).isFile()) return gzipSync(readFileSync(path), { level: 9 }).length;
  return readdirSync(path).reduce((sum, name) => sum + weight(join(path, name)), 0);
}

const all = (values) => values.map(Math.round).join(", ");
const median = (values) => [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)];

/** In the page: from the click to the page with the model. */
function timeOfTraining() {
  return new Promise((resolve) => {
    const heading = document.getElementById("stage-heading");
    const button = document.querySelector(".train button");
    const start = performance.now();
    const observer = new MutationObserver(() => {
      if (!heading.textContent.startsWith("Try")) return;
      observer.disconnect();
      resolve(performance.now() - start);
    });
    observer.observe(heading, { childList: true, characterData: true, subtree: true });
    button.click();
  });
}

/** What the page weighs, how fast it answers and trains; nothing is expected of these. */
export async function figures(studio, { byGesture, vesk }) {
  const traces = [...byGesture.values()].flatMap((all) => all.slice(0, 10));
  const text = traces.map((it) => JSON.stringify(it) + "\n").join("");
  const file = join(folder, "figures.jsonl");
  const model = join(folder, "figures.model");
  writeFileSync(file, text);
  const it = await Page.open(studio);
  const { page } = it;
  await it.bringIn("Examples", "figures.jsonl", text);
  await it.message();
  await page.waitForTimeout(1500);

  const now = () => page.evaluate(() => performance.now());
  const idle = () => page.locator(".train .progress").waitFor({ state: "detached" });
  const trained = [];
  for (let i = 0; i < 5; ++i) {
    trained.push(await page.evaluate(timeOfTraining));
    await it.button("Stop").click();
    await idle();
    await it.button("Teach").click();
  }
  await it.button("Try").click();
  const verdicts = [];
  for (const trace of traces.filter((_, i) => i % 10 === 0)) {
    await it.verdictOf(() => it.draw(trace.points));
    verdicts.push(Number(/([\d.]+) ms/.exec(await page.locator(".verdict").textContent())[1]));
  }
  const testing = await now();
  await it.button("Test").click();
  await page.locator(".cost").waitFor({ timeout: 600_000 });
  const tested = (await now()) - testing;
  await it.close();

  const programs = [];
  for (let i = 0; i < 5; ++i) {
    const start = performance.now();
    native(vesk, "train", file, "-o", model, "--threads", "1");
    programs.push(performance.now() - start);
  }
  return (
    `${Math.round(weight(dist) / 1000)} kB compressed; pen-up to verdict ` +
    `${median(verdicts).toFixed(1)} ms (median of ${verdicts.length}, ${byGesture.size} gestures); ` +
    `training ${byGesture.size} x 10 in ${all(trained)} ms, ` +
    `the program on one thread ${all(programs)} ms; ` +
    `${traces.length} examples left out one by one in ${Math.round(tested / 1000)} s`
  );
}
