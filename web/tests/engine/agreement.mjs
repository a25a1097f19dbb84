// The engine in WebAssembly against the native one and the program: the same verdicts, symbols and
// files, what sums, products and quotients make the same to the bit.
//
// usage: node --no-experimental-fetch agreement.mjs ENGINE-FOLDER NATIVE-ENGINE VESK
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { basename, join } from "node:path";
import { recordedFiles } from "../data.mjs";
import { nativeEngine, wasmEngine } from "./engines.mjs";

const [folder, native, vesk] = process.argv.slice(2);
const examplesOfGesture = 6;
const largestDifference = 1e-12; // of natural logarithms, relative
const everyTable = 25;

const engines = [await wasmEngine(folder), nativeEngine(native)];
const work = mkdtempSync(join(tmpdir(), "vesk-agreement-"));

async function ask(request, given, file) {
  return Promise.all(engines.map((engine) => engine.call(request, given, file)));
}

/** Both answer the same, to the byte; returns the reply. */
async function same(request, given, file) {
  const [ours, theirs] = await ask(request, given, file);
  assert.equal(ours.json, theirs.json, request);
  assert.ok(ours.file.equals(theirs.file), `the file of ${request}`);
  const reply = JSON.parse(ours.json);
  assert.equal(reply.error, undefined, request);
  return { reply, file: ours.file };
}

/** Replies that differ in nothing but the last digits of numbers; counts those. */
function compare(ours, theirs, count, path = "") {
  if (typeof ours === "number" && typeof theirs === "number") {
    ++count.numbers;
    if (Object.is(ours, theirs)) return;
    const difference = Math.abs(ours - theirs) / Math.max(Math.abs(ours), Math.abs(theirs), 1);
    count.different += 1;
    count.largest = Math.max(count.largest, difference);
    assert.ok(difference <= largestDifference, `${path}: ${ours} and ${theirs}`);
  } else if (typeof ours === "object" && ours !== null && theirs !== null) {
    assert.deepEqual(Object.keys(ours), Object.keys(theirs), path);
    for (const key of Object.keys(ours)) compare(ours[key], theirs[key], count, `${path}.${key}`);
  } else {
    assert.equal(ours, theirs, path);
  }
}

/** Some examples of each gesture, of as many users as there are. */
function trainingSet(traces) {
  const byGesture = new Map();
  for (const trace of traces) {
    if (!byGesture.has(trace.gesture)) byGesture.set(trace.gesture, []);
    byGesture.get(trace.gesture).push(trace);
  }
  return [...byGesture.values()].flatMap((all) => {
    const stride = Math.max(1, Math.floor(all.length / examplesOfGesture));
    return all.filter((_, i) => i % stride === 0).slice(0, examplesOfGesture);
  });
}

/** What the program makes of a file of traces. */
function recognizedByProgram(model, text) {
  const [modelFile, traceFile] = [join(work, "gestures.model"), join(work, "traces.jsonl")];
  writeFileSync(modelFile, model);
  writeFileSync(traceFile, text);
  const done = spawnSync(vesk, ["recognize", "-m", modelFile, "--json", traceFile], {
    maxBuffer: 1 << 28,
    encoding: "utf8",
  });
  assert.equal(done.status, 0, done.stderr);
  return done.stdout.trim().split("\n").map((line) => JSON.parse(line).gesture);
}

async function agreeOn(name, bytes) {
  const { reply } = await same("readTraces", { name: "traces.jsonl" }, bytes);
  const traces = reply.traces;
  const training = trainingSet(traces);
  const { file: model } = await same("train", { traces: training });
  await same("loadModel", { name: "gestures.model" }, model);
  await same("describe");
  await same("diagnoseModel");
  const program = recognizedByProgram(model, bytes);
  assert.equal(program.length, traces.length);

  const numbers = { numbers: 0, different: 0, largest: 0 };
  let [recognised, symbols, tables] = [0, 0, 0];
  for (const [i, { points }] of traces.entries()) {
    const [ours, theirs] = (await ask("recognize", { points })).map((it) => JSON.parse(it.json));
    compare(ours, theirs, numbers, `${name} ${i + 1}`);
    assert.equal(ours.gesture, program[i], `${name} ${i + 1}: the program's verdict`);
    recognised += ours.gesture === "" ? 0 : 1;
    symbols += ours.symbols.length;
    if (i % everyTable !== 0) continue;
    const { reply: table } = await same("probabilities", { symbols: ours.symbols });
    tables += table.forward.length + table.backward.length + 3 * table.gestures.length + 1;
  }
  console.log(
    `${name}: model of ${training.length} traces equal (${model.length} bytes); ` +
      `${traces.length} verdicts (${recognised} recognised) and ${symbols} symbols equal, ` +
      `as the program's; ${tables} values of tables equal to the bit; ` +
      `of ${numbers.numbers} numbers in verdicts ${numbers.different} differ, ` +
      `by ${numbers.largest.toExponential(1)} at most`,
  );
  return training;
}

try {
  const { reply } = await same("starterSet", { users: 3, repetitions: 8, seed: 7 });
  const { file } = await same("writeTraces", { traces: reply.traces });
  const training = await agreeOn("generated", file);
  await same("setStrictness", { ratio: 50 });
  await same("writeScene");
  await same("writeReport", { traces: training });
  await same("drawGesture", { gesture: training[0].gesture, traces: training });
  await same("diagnoseTraces", { traces: training, thorough: true });
  const few = training.filter((it) => ["circle", "star", "arrow"].includes(it.gesture));
  await same("holdTraces", { traces: few });
  const tests = [];
  for (let example = 0; example < few.length; ++example) {
    tests.push((await same("testExample", { example })).reply);
  }
  const { reply: tested } = await same("summarizeTests", { tests });
  assert.equal(tested.correct.total, few.length);
  assert.equal(tested.unknownAccepted.total, few.length);
  console.log(`scene node, report, plots, findings and ${tests.length} tests of examples equal`);

  const recorded = recordedFiles();
  if (recorded.length === 0) console.log("no recorded traces here (VESK_DATA_DIR)");
  for (const file of recorded) await agreeOn(basename(file), readFileSync(file));
} finally {
  for (const engine of engines) engine.end();
  rmSync(work, { recursive: true });
}
