import { describe, expect, it } from "vitest";
import { Cancelled, EngineClient, EngineError } from "../../src/engine/client";
import { FakeWorker } from "./fake-worker";

function client() {
  const workers: FakeWorker[] = [];
  const engine = new EngineClient(() => {
    workers.push(new FakeWorker());
    return workers.at(-1) as unknown as Worker;
  });
  return { engine, workers };
}

describe("the engine's client", () => {
  it("gives every answer to the request that asked", async () => {
    const { engine, workers } = client();
    const first = engine.call("describe", {});
    const second = engine.call("recognize", { points: [] });
    const [one, two] = workers[0]!.asked;
    workers[0]!.say({ id: two!.id, reply: "second", file: new Uint8Array() });
    workers[0]!.say({ id: one!.id, reply: "first", file: new Uint8Array() });
    expect((await first).reply).toBe("first");
    expect((await second).reply).toBe("second");
    expect(workers.length).toBe(1);
  });

  it("passes progress and refusals on", async () => {
    const { engine, workers } = client();
    const shares: number[] = [];
    const asked = engine.call("train", { traces: [] }, { progress: (it) => shares.push(it) });
    const { id } = workers[0]!.asked[0]!;
    workers[0]!.say({ id, share: 0.5 });
    workers[0]!.say({ id, error: "found no traces, expected at least 1" });
    await expect(asked).rejects.toThrow(new EngineError("found no traces, expected at least 1"));
    expect(shares).toEqual([0.5]);
  });

  it("stops the worker to cancel, and starts another one", async () => {
    const { engine, workers } = client();
    const asked = engine.call("train", { traces: [] });
    engine.cancel();
    await expect(asked).rejects.toBeInstanceOf(Cancelled);
    expect(workers[0]!.terminated).toBe(true);
    const again = engine.call("describe", {});
    workers[1]!.say({ id: workers[1]!.asked[0]!.id, reply: "there", file: new Uint8Array() });
    expect((await again).reply).toBe("there");
  });

  it("does not leave a request waiting for a worker that failed", async () => {
    const { engine, workers } = client();
    const asked = engine.call("describe", {});
    workers[0]!.dispatchEvent(new Event("error"));
    await expect(asked).rejects.toBeInstanceOf(EngineError);
  });
});
