import load from "studio-engine/studio.mjs";
import type { FromWorker, ToWorker } from "./protocol";

const engine = load().then((module) => new module.Engine());

/** Milliseconds between two shares that are told: the page draws itself anew for each. */
const betweenShares = 50;

function tell(message: FromWorker, owned: Transferable[] = []): void {
  postMessage(message, { transfer: owned });
}

addEventListener("message", async (event: MessageEvent<ToWorker>) => {
  const { id, request, arguments: given, file } = event.data;
  try {
    const it = await engine;
    let last = performance.now();
    const progress = (share: number) => {
      const now = performance.now();
      if (now - last < betweenShares) return;
      last = now;
      tell({ id, share });
    };
    const reply = JSON.parse(it.call(request, JSON.stringify(given), file ?? "", progress));
    if (typeof reply.error === "string") {
      tell({ id, error: reply.error });
    } else {
      const bytes = it.file().slice();
      tell({ id, reply, file: bytes }, [bytes.buffer]);
    }
  } catch (problem) {
    tell({ id, error: `The engine failed: ${String(problem)}` });
  }
});
