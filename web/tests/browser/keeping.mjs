import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { Page } from "./support.mjs";

/** What was made outlives the page, also without a network. */
export async function keeping(studio, { byGesture }) {
  const it = await Page.open(studio);
  const { page, context } = it;
  const names = [...byGesture.keys()].slice(0, 2);
  for (const name of names) {
    await it.teach(name, byGesture.get(name).slice(0, 3).map((trace) => trace.points));
  }
  await it.train();
  await it.kept();
  await page.evaluate(() => navigator.serviceWorker.ready);
  await page.reload();
  await page.locator(".card").nth(1).waitFor();

  await context.setOffline(true);
  await page.reload();
  await page.locator(".card").nth(1).waitFor();
  await page.getByText("Trained on all of these examples.").waitFor();
  const verdict = await it.verdictOf(() => it.draw(byGesture.get(names[0])[1].points));
  assert.equal(verdict, names[0], "recognised without a network");
  await it.screenshot("offline");
  await context.setOffline(false);
  await it.close();
}

/** A browser that keeps nothing says so, and everything else works. */
export async function forgetting(studio, { byGesture }) {
  const [name] = byGesture.keys();
  const refusals = {
    "does not allow it": () => {
      IDBFactory.prototype.open = () => {
        throw new DOMException("denied", "SecurityError");
      };
    },
    "storage is full": () => {
      IDBObjectStore.prototype.put = () => {
        throw new DOMException("full", "QuotaExceededError");
      };
    },
  };
  for (const [words, refuse] of Object.entries(refusals)) {
    const it = await Page.open(studio, {}, (context) => context.addInitScript(refuse));
    await it.teach(name, [byGesture.get(name)[0].points]);
    await it.page.getByRole("alert").filter({ hasText: words }).waitFor();
    assert.equal(await it.page.locator(".card").count(), 1);
    const { length } = readFileSync(await it.takeHome(/^Examples/));
    assert.ok(length > 100, "the examples can be taken home");
    await it.expectAccessible("storage refused");
    await it.screenshot(`not-kept-${words.split(" ")[0]}`);
    await it.close();
  }
}
