// The studio in a real browser, as people use it. Ends with 77 where there is no browser.
//
// usage: node run.mjs VESK [SCENARIO...]
//
// Without scenarios all but `figures`, which measures and expects nothing.
// VESK_SCREENSHOTS=FOLDER keeps a picture of every state.
import { rmSync } from "node:fs";
import { figures } from "./figures.mjs";
import { hostility } from "./hostility.mjs";
import { forgetting, keeping } from "./keeping.mjs";
import { dark, keyboard, phone } from "./people.mjs";
import { browserPath, folder, started, tracesByGesture } from "./support.mjs";
import { teaching, tools, upsideDown } from "./teaching.mjs";

const [vesk, ...wanted] = process.argv.slice(2);
if (!browserPath()) {
  console.log("skipped: no chromium is installed (scripts/setup --test does it)");
  process.exit(77);
}
const scenarios = { teaching, tools, upsideDown, hostility, keeping, forgetting, phone, dark, keyboard, figures };
const studio = await started();
const given = { vesk, byGesture: tracesByGesture(vesk) };
let failed = 0;
for (const [name, scenario] of Object.entries(scenarios)) {
  if (wanted.length > 0 ? !wanted.includes(name) : name === "figures") continue;
  const start = performance.now();
  try {
    const told = await scenario(studio, given);
    const seconds = ((performance.now() - start) / 1000).toFixed(1);
    console.log(`ok ${name} (${seconds} s)${told ? `: ${told}` : ""}`);
  } catch (problem) {
    ++failed;
    console.log(`failed ${name}: ${problem.stack}`);
  }
}
await studio.end();
rmSync(folder, { recursive: true });
process.exit(failed > 0 ? 1 : 0);
