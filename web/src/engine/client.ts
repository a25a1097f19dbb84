import type { Answer, Arguments, FromWorker, RequestName, ToWorker } from "./protocol";

/** The engine refused; the text is its own. */
export class EngineError extends Error {}

/** The request was given up by `cancel`. */
export class Cancelled extends Error {}

interface Pending {
  resolve(answer: Answer<RequestName>): void;
  reject(problem: Error): void;
  progress: ((share: number) => void) | undefined;
}

/** An engine in a worker of its own. Requests are answered in their order. */
export class EngineClient {
  private worker: Worker | null = null;
  private readonly pending = new Map<number, Pending>();
  private next = 1;

  constructor(private readonly start: () => Worker) {}

  call<R extends RequestName>(
    request: R,
    given: Arguments<R>,
    options: { file?: Uint8Array; progress?: (share: number) => void } = {},
  ): Promise<Answer<R>> {
    this.worker ??= this.started();
    const id = this.next++;
    const message: ToWorker = { id, request, arguments: given, file: options.file ?? null };
    return new Promise((resolve, reject) => {
      this.pending.set(id, {
        resolve: resolve as Pending["resolve"],
        reject,
        progress: options.progress,
      });
      this.worker!.postMessage(message);
    });
  }

  /** Gives up all that is under way. The next request starts a new worker. */
  cancel(): void {
    this.stop(new Cancelled("cancelled"));
  }

  private stop(reason: Error): void {
    this.worker?.terminate();
    this.worker = null;
    const given = [...this.pending.values()];
    this.pending.clear();
    for (const one of given) one.reject(reason);
  }

  private started(): Worker {
    const worker = this.start();
    worker.addEventListener("message", (event: MessageEvent<FromWorker>) => {
      const message = event.data;
      const one = this.pending.get(message.id);
      if (!one) return;
      if ("share" in message) {
        one.progress?.(message.share);
        return;
      }
      this.pending.delete(message.id);
      if ("error" in message) one.reject(new EngineError(message.error));
      else one.resolve(message as unknown as Answer<RequestName>);
    });
    worker.addEventListener("error", () => {
      this.stop(new EngineError("The engine could not be loaded; try to reload the page."));
    });
    return worker;
  }
}

export function engineWorker(): Worker {
  return new Worker(new URL("./worker.ts", import.meta.url), { type: "module" });
}
