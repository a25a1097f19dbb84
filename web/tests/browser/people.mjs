import assert from "node:assert/strict";
import { Page } from "./support.mjs";

/** On a phone, with a finger. */
export async function phone(studio, { byGesture }) {
  const it = await Page.open(studio, {
    viewport: { width: 390, height: 844 },
    deviceScaleFactor: 2,
    isMobile: true,
    hasTouch: true,
  });
  const { page } = it;
  const touch = await it.context.newCDPSession(page);
  const finger = async (points) => {
    const send = (type, place) =>
      touch.send("Input.dispatchTouchEvent", {
        type,
        touchPoints: place ? [{ x: place[0], y: place[1] }] : [],
      });
    const places = await it.placed(points);
    await send("touchStart", places[0]);
    for (const place of places) await send("touchMove", place);
    await send("touchEnd", null);
  };
  it.draw = finger;
  const [first, second] = byGesture.keys();
  for (const name of [first, second]) {
    await it.teach(name, byGesture.get(name).slice(0, 3).map((trace) => trace.points));
    await page.evaluate(() => scrollTo(0, 0));
  }
  await it.screenshot("phone-taught");
  await it.train();
  await page.evaluate(() => scrollTo(0, 0));
  assert.equal(await it.verdictOf(() => finger(byGesture.get(first)[1].points)), first);
  assert.equal(await page.evaluate(() => scrollY), 0, "a stroke does not scroll the page");
  await it.screenshot("phone-verdict");
  const overflow = () =>
    page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);
  assert.equal(await overflow(), 0, "nothing is wider than the phone");
  await it.openMenu();
  await it.screenshot("phone-menu");
  assert.equal(await overflow(), 0, "nor is the menu");
  await it.expectAccessible("phone");
  await it.close();
}

/** In the dark. */
export async function dark(studio) {
  const it = await Page.open(studio, { colorScheme: "dark" });
  await it.screenshot("dark-empty");
  await it.button(/^Start with a dozen/).click();
  await it.page.locator(".card").nth(11).waitFor();
  await it.train();
  await it.page.locator(".card-head").nth(2).click();
  await it.verdictOf(() => it.page.getByRole("button", { name: /^Recognise example 1/ }).click());
  await it.screenshot("dark");
  await it.expectAccessible("dark");
  await it.close();
}

/** Without a pointer: everything from an empty page to a verdict. */
export async function keyboard(studio) {
  const it = await Page.open(studio);
  const { page } = it;
  const press = async (...keys) => {
    for (const key of keys) await page.keyboard.press(key);
  };
  const goTo = async (what) => {
    for (let i = 0; i < 200; ++i) {
      const there = await page.evaluate((text) => {
        const { activeElement: at } = document;
        const name = at?.getAttribute("aria-label") ?? at?.labels?.[0]?.textContent ?? at?.textContent;
        return name?.trim().startsWith(text) ?? false;
      }, what);
      if (there) return;
      await press("Tab");
    }
    assert.fail(`the Tab key never comes to ${what}`);
  };
  const corner = async (first, second) => {
    await goTo("Drawing area");
    await press("Space", ...Array(8).fill(first), ...Array(8).fill(second), "Space");
  };

  await corner("ArrowRight", "ArrowDown");
  await page.locator(".card").waitFor();
  await corner("ArrowRight", "ArrowDown");
  await goTo("Name");
  await press("Control+a");
  await page.keyboard.type("corner");
  await press("Enter");
  await page.getByRole("heading", { name: "Teach “corner”" }).waitFor();
  await goTo("New");
  await it.screenshot("focus");
  await press("Enter");
  await corner("ArrowUp", "ArrowLeft");
  await corner("ArrowUp", "ArrowLeft");
  await it.screenshot("keyboard");
  await goTo("Train");
  await press("Enter");
  await page.getByText("Trained on all of these examples.").waitFor({ timeout: 60_000 });
  assert.equal(await it.verdictOf(() => corner("ArrowRight", "ArrowDown")), "corner");

  // A stroke may be dropped, and the menu closed again.
  await press("Space", "ArrowRight", "Escape");
  assert.equal(await page.locator(".surface.is-drawing").count(), 0);
  await goTo("Files");
  await press("Enter");
  await page.locator(".sheet").waitFor();
  await press("Escape");
  await page.locator(".sheet").waitFor({ state: "hidden" });
  await it.close();
}
