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

const median = (values) => values.sort((a, b) => a - b)[Math.floor(values.length / 2)];

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

  const trained = [];
  const started = () => page.evaluate(() => performance.now());
  for (let i = 0; i < 3; ++i) {
    const start = await started();
    await it.button(/^Train/).click();
    await page.getByRole("heading", { name: /^Try/ }).waitFor();
    trained.push((await started()) - start);
    await page.locator(".train .progress").waitFor({ state: "detached" });
    // A training that breaks into the examination that follows begins with a new worker.
    await page.waitForTimeout(3000);
    await it.button("Teach").click();
  }
  await it.button("Try").click();
  const verdicts = [];
  for (const trace of traces.filter((_, i) => i % 10 === 0)) {
    await it.verdictOf(() => it.draw(trace.points));
    verdicts.push(Number(/([\d.]+) ms/.exec(await page.locator(".verdict").textContent())[1]));
  }
  await it.close();

  const programs = [];
  for (let i = 0; i < 3; ++i) {
    const start = performance.now();
    native(vesk, "train", file, "-o", model, "--threads", "1");
    programs.push(performance.now() - start);
  }
  return (
    `${Math.round(weight(dist) / 1000)} kB compressed; pen-up to verdict ` +
    `${median(verdicts).toFixed(1)} ms (median of ${verdicts.length}, ${byGesture.size} gestures); ` +
    `training ${byGesture.size} x 10 in ${Math.round(median(trained))} ms, ` +
    `the program on one thread ${Math.round(median(programs))} ms`
  );
}
