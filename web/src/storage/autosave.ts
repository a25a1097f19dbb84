import type { Example, StudioDocument } from "../document/document";

/** What outlives the page. */
export interface Saved {
  document: StudioDocument;
  model: { file: Uint8Array; ratio: number; source: string } | null;
}

const database = "vesk-studio";
const store = "work";
const key = "current";

function done<T>(request: IDBRequest<T>): Promise<T> {
  return new Promise((resolve, reject) => {
    request.onsuccess = () => resolve(request.result);
    request.onerror = () => reject(request.error ?? new Error("no reason given"));
  });
}

async function opened(): Promise<IDBDatabase> {
  const request = indexedDB.open(database, 1);
  request.onupgradeneeded = () => request.result.createObjectStore(store);
  return done(request);
}

export async function restore(): Promise<Saved | null> {
  const db = await opened();
  try {
    const found: unknown = await done(db.transaction(store).objectStore(store).get(key));
    return isSaved(found) ? found : null;
  } finally {
    db.close();
  }
}

/** Rejects where nothing can be kept: the disk is full, or the browser refuses. */
export async function save(saved: Saved): Promise<void> {
  const db = await opened();
  try {
    const transaction = db.transaction(store, "readwrite");
    transaction.objectStore(store).put(saved, key);
    await new Promise<void>((resolve, reject) => {
      transaction.oncomplete = () => resolve();
      transaction.onabort = () => reject(transaction.error ?? new Error("no reason given"));
    });
  } finally {
    db.close();
  }
}

/** Of an older page, or another one of this origin, anything may be there. */
export function isSaved(found: unknown): found is Saved {
  if (typeof found !== "object" || found === null) return false;
  const { document, model } = found as Partial<Saved>;
  if (!Array.isArray(document?.gestures)) return false;
  const sound = document.gestures.every(
    (gesture) =>
      typeof gesture?.id === "string" &&
      typeof gesture.name === "string" &&
      Array.isArray(gesture.examples) &&
      (gesture.examples as unknown[]).every(
        (example) =>
          typeof (example as Example | null)?.id === "string" &&
          Array.isArray((example as Example).points),
      ),
  );
  return sound && (model === null || model?.file instanceof Uint8Array);
}

/** Why nothing could be kept, for the user. */
export function reasonOf(problem: unknown): string {
  const name = problem instanceof DOMException ? problem.name : "";
  if (name === "QuotaExceededError") return "the browser's storage is full";
  if (name === "SecurityError" || name === "InvalidStateError") return "the browser does not allow it";
  return problem instanceof Error && problem.message ? problem.message : "the browser refused";
}
