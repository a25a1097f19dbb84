import type { FromWorker, ToWorker } from "../../src/engine/protocol";

/** A worker that answers when it is told to. */
export class FakeWorker extends EventTarget {
  readonly asked: ToWorker[] = [];
  terminated = false;

  postMessage(message: ToWorker): void {
    this.asked.push(message);
  }

  terminate(): void {
    this.terminated = true;
  }

  say(data: FromWorker): void {
    this.dispatchEvent(Object.assign(new Event("message"), { data }));
  }
}
