import load from "studio-engine/studio.mjs";
import type { FromWorker, ToWorker } from "./protocol";

const engine = load().then((module) => new module.Engine());

function tell(message: FromWorker, owned: Transferable[] = []): void {
  postMessage(message, { transfer: owned });
}

addEventListener("message", async (event: MessageEvent<ToWorker>) => {
  const { id, request, arguments: given, file } = event.data;
  try {
    const it = await engine;
    const progress = (share: number) => tell({ id, share });
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
