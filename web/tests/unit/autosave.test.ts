import { describe, expect, it } from "vitest";
import { isSaved, reasonOf } from "../../src/storage/autosave";
import { looksLikeModel } from "../../src/studio";

describe("what was kept", () => {
  const document = { gestures: [{ id: "1", name: "a", examples: [{ id: "2", user: "", points: [] }] }] };

  it("is taken back as it was written", () => {
    expect(isSaved({ document, model: null })).toBe(true);
    expect(isSaved({ document, model: { file: new Uint8Array(3), ratio: 1, source: "" } })).toBe(true);
  });

  it("is left alone where it is anything else", () => {
    const others: unknown[] = [
      null,
      "text",
      {},
      { document: {}, model: null },
      { document: { gestures: [{}] }, model: null },
      { document: { gestures: [{ id: "1", name: 3, examples: [] }] }, model: null },
      { document: { gestures: [{ id: "1", name: "a", examples: [null] }] }, model: null },
      { document, model: { file: "text" } },
      { document },
    ];
    for (const other of others) expect(isSaved(other), JSON.stringify(other)).toBe(false);
  });

  it("says why nothing can be kept", () => {
    expect(reasonOf(new DOMException("", "QuotaExceededError"))).toContain("full");
    expect(reasonOf(new DOMException("", "SecurityError"))).toContain("not allow");
    expect(reasonOf(new Error("disk on fire"))).toBe("disk on fire");
    expect(reasonOf("nothing")).toContain("refused");
  });
});

describe("files", () => {
  it("are models unless their extension is that of traces", () => {
    for (const name of ["a.jsonl", "B.CSV", "c.d.xml", "e.ndjson"]) expect(looksLikeModel(name)).toBe(false);
    for (const name of ["gestures.model", "xml", "a.txt"]) expect(looksLikeModel(name)).toBe(true);
  });
});
