import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { Page } from "./support.mjs";

const markup = '<img src=x onerror="document.title=1"><script>document.title=2</script>';
const line = (gesture, points) => JSON.stringify({ gesture, points }) + "\n";
const stroke = [[0, 0], [30, 5], [60, 40], [80, 90]];
const manyEntities = `<?xml version="1.0"?><!DOCTYPE a [<!ENTITY a "aaaaaaaaaa">
${Array.from({ length: 9 }, (_, i) => `<!ENTITY a${i} "${(i ? `&a${i - 1};` : "&a;").repeat(10)}">`).join("\n")}
]><Gesture Name="&a8;" Subject="1"><Point X="0" Y="0"/><Point X="9" Y="1"/></Gesture>`;

/** Files that cannot be read: their names, contents, and what the engine says of them. */
const refused = [
  ["empty.xml", "", /empty\.xml/],
  ["half.jsonl", '{"gesture":"a","points":[[0,0],[1', /half\.jsonl:1: found/],
  ["huge.jsonl", line("a", [[0, 0], ["1e999", 1]]), /huge\.jsonl:1: found/],
  ["nested.json", "[".repeat(200_000), /nested\.json/],
  ["words.csv", "x,y\none,two\n", /words\.csv:2: found/],
  ["broken.xml", "<Gesture Name='a'><Point X='1'", /broken\.xml:1: found text that is not XML/],
  ["page.xml", "<html><body onload='alert(1)'/></html>", /found no element Gesture/],
  ["..", "x", /\.\./],
  ["bytes.jsonl", Buffer.from([0xff, 0xfe, 0x00, 0x7b, 0x0a]), /bytes\.jsonl:1/],
];

/** Imported files and names are data, whatever they hold; what is at hand stays. */
export async function hostility(studio, { byGesture }) {
  const it = await Page.open(studio);
  const { page } = it;
  const title = await page.title();
  const names = [...byGesture.keys()].slice(0, 2);
  for (const name of names) {
    await it.teach(name, byGesture.get(name).slice(0, 3).map((trace) => trace.points));
  }
  await it.train();
  const model = readFileSync(await it.takeHome(/^Model/), "latin1");

  for (const [name, text, expected] of refused) {
    await it.bringIn("Examples", name === ".." ? "...jsonl" : name, text);
    if (name === "broken.xml") await it.screenshot("refused-file");
    assert.match(await it.message(), expected, name);
    assert.equal(await page.locator(".card").count(), 2, name);
  }
  const damaged = [
    ["short.model", model.slice(0, 5000), /short\.model:\d+: found/],
    ["nan.model", model.replace(/\n0\.[0-9]+ /, "\nnan "), /nan\.model/],
    ["sizes.model", "0\n0\n1\n0\ngestures\n\n4294967295 4294967295 1 0.5\n", /sizes\.model/],
    ["picture.model", Buffer.from([0x89, 0x50, 0x4e, 0x47, 0, 1, 2, 3]), /picture\.model/],
    ["nothing.model", "", /nothing\.model/],
  ];
  for (const [name, text, expected] of damaged) {
    await it.bringIn("Model", name, text);
    assert.match(await it.message(), expected, name);
  }
  const stroked = byGesture.get(names[0])[7].points;
  await it.button("Try").click();
  await it.verdictOf(() => it.draw(stroked));

  // What is readable is kept, what is not is named.
  await it.bringIn("Examples", "mixed.jsonl", line("good", stroke) + "{}\n" + line("good", stroke));
  assert.match(await it.message(), /2 examples from mixed\.jsonl[^]*mixed\.jsonl:2/);
  await it.bringIn("Examples", "entities.xml", manyEntities);
  await it.message();

  // Markup in names stays text, everywhere.
  await it.bringIn("Examples", "markup.jsonl", line(markup, stroke).repeat(4));
  await it.message();
  await it.screenshot("hostile-names");
  const card = page.locator(".card", { hasText: "<img src=x" }).first();
  await card.locator(".card-head").click();
  await it.train();
  await page.locator(".train .progress").waitFor({ state: "detached" });
  await it.button(/What the model sees/).click();
  await page.locator(".card-body .plot svg").nth(1).waitFor();
  await it.button("Try").click();
  await it.verdictOf(() => it.draw(stroke));
  assert.equal(await page.locator("img:not([alt=''])").count(), 0);
  assert.equal(await page.locator("#studio script").count(), 0);
  assert.equal(await page.title(), title);

  // The policy holds: text never becomes code.
  await page.evaluate(() => {
    const script = document.createElement("script");
    script.textContent = "document.title = 3";
    document.body.append(script);
    setTimeout("document.title = 4", 0);
  });
  await page.waitForTimeout(200);
  assert.equal(await page.title(), title);
  const breaches = it.problems.filter((one) => /Content Security Policy/.test(one));
  assert.ok(breaches.length >= 2, `both were noticed: ${it.problems.join("; ")}`);
  it.problems = it.problems.filter((one) => !breaches.includes(one));
  await it.close();
  return `${refused.length} trace files and ${damaged.length} models refused, each by the engine's message`;
}
