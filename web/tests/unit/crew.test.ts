import { describe, expect, it } from "vitest";
import { Cancelled } from "../../src/engine/client";
import { Crew, crewSize } from "../../src/engine/crew";
import type { Trace } from "../../src/engine/protocol";
import { FakeWorker } from "./fake-worker";

const traces = Array.from({ length: 5 }, (): Trace => ({ gesture: "a", user: "", points: [] }));

function crew(size: number) {
  const workers: FakeWorker[] = [];
  const it = new Crew(() => {
    workers.push(new FakeWorker());
    return workers.at(-1) as unknown as Worker;
  }, size);
  return { it, workers };
}

/** Has the worker answer what it was asked last, and lets everybody go on. */
async function answer(worker: FakeWorker): Promise<void> {
  const { id, request, arguments: given } = worker.asked.at(-1)!;
  worker.say({ id, reply: { request, given }, file: new Uint8Array() });
  await new Promise((next) => setTimeout(next));
}

const examplesOf = (worker: FakeWorker) =>
  worker.asked.flatMap((it) =>
    it.request === "testExample" ? [(it.arguments as { example: number }).example] : [],
  );

describe("a crew", () => {
  it("tests every example once, whoever is free the next one, and keeps their order", async () => {
    const { it: testers, workers } = crew(2);
    const told: number[] = [];
    const asked = testers.test(traces, (done) => told.push(done));
    const [slow, quick] = workers as [FakeWorker, FakeWorker];
    await answer(slow);
    await answer(quick);
    for (let i = 0; i < 4; ++i) await answer(quick);
    expect(examplesOf(slow)).toEqual([0]);
    expect(examplesOf(quick)).toEqual([1, 2, 3, 4]);
    await answer(slow);
    expect(told).toEqual([1, 2, 3, 4, 5]);
    await answer(slow);
    const { tests } = await asked;
    expect(tests.map((it) => (it as unknown as { given: unknown }).given)).toEqual(
      traces.map((_, example) => ({ example })),
    );
    expect(slow.asked.at(-1)!.arguments).toEqual({ tests });
    expect(workers.map((it) => it.terminated)).toEqual([true, true]);
  });

  it("has no more members than there are examples", () => {
    const { it: testers, workers } = crew(9);
    void testers.test(traces.slice(0, 2), () => {}).catch(() => {});
    expect(workers.length).toBe(2);
    testers.cancel();
  });

  it("can be stopped, and begins again with other workers", async () => {
    const { it: testers, workers } = crew(2);
    const asked = testers.test(traces, () => {});
    testers.cancel();
    await expect(asked).rejects.toBeInstanceOf(Cancelled);
    expect(workers.every((it) => it.terminated)).toBe(true);
    const again = testers.test(traces, () => {});
    expect(workers.length).toBe(4);
    testers.cancel();
    await expect(again).rejects.toBeInstanceOf(Cancelled);
  });

  it("stops everybody where one is refused", async () => {
    const { it: testers, workers } = crew(2);
    const asked = testers.test(traces, () => {});
    workers[0]!.say({ id: workers[0]!.asked[0]!.id, error: "found nothing" });
    await expect(asked).rejects.toThrow("found nothing");
    expect(workers.every((it) => it.terminated)).toBe(true);
  });

  it("leaves a processor to the page", () => {
    expect([1, 2, 4, 64].map(crewSize)).toEqual([1, 1, 3, 4]);
  });
});
