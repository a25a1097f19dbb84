import { describe, expect, it } from "vitest";
import * as doc from "../../src/document/document";

const stroke: [number, number][] = [[0, 0], [10, 5]];

function documentOf(...names: string[]): doc.StudioDocument {
  return {
    gestures: names.map((name) => ({ id: `id of ${name}`, name, examples: [doc.exampleOf(stroke)] })),
  };
}

describe("document", () => {
  it("is never changed in place", () => {
    const before = documentOf("circle");
    const copy = structuredClone(before);
    doc.addExample(before, "id of circle", doc.exampleOf(stroke));
    doc.renameGesture(before, "id of circle", "ring");
    doc.addTraces(before, [{ gesture: "circle", user: "", points: stroke }], "imported");
    doc.removeGesture(before, "id of circle");
    expect(before).toEqual(copy);
  });

  it("finds a free name", () => {
    expect(doc.freeName(documentOf("gesture-1", "gesture-3"))).toBe("gesture-2");
  });

  it("adds traces to the gestures of their labels", () => {
    const { document: now, added } = doc.addTraces(
      documentOf("circle"),
      [
        { gesture: "circle", user: "u1", points: stroke },
        { gesture: " star ", user: "", points: stroke },
        { gesture: "", user: "", points: stroke },
      ],
      "imported",
    );
    expect(now.gestures.map((it) => [it.name, it.examples.length])).toEqual([
      ["circle", 2],
      ["star", 1],
      ["imported", 1],
    ]);
    expect(now.gestures[0]!.examples[1]!.user).toBe("u1");
    expect(added).toEqual([
      now.gestures[0]!.examples[1]!.id,
      now.gestures[1]!.examples[0]!.id,
      now.gestures[2]!.examples[0]!.id,
    ]);
  });

  it("draws some examples in another way, and no others", () => {
    const before = doc.addExample(documentOf("a", "b"), "id of b", doc.exampleOf(stroke, "u2"));
    const [kept, redrawn] = before.gestures[1]!.examples;
    const other: [number, number][] = [[0, 0], [10, -5]];
    const now = doc.redrawn(before, new Map([[redrawn!.id, other], ["gone", other]]));
    expect(now.gestures[0]).toEqual(before.gestures[0]);
    expect(now.gestures[1]!.examples).toEqual([kept, { ...redrawn, points: other }]);
  });

  it("hands examples to the engine with the places they have", () => {
    const it = doc.addExample(documentOf("a", "b"), "id of b", doc.exampleOf(stroke, "u2"));
    const { traces, places } = doc.tracesOf(it);
    expect(traces.map((one) => one.gesture)).toEqual(["a", "b", "b"]);
    expect(traces[2]!.user).toBe("u2");
    expect(places[2]).toEqual({ gesture: "id of b", example: it.gestures[1]!.examples[1]!.id });
    expect(doc.countExamples(it)).toBe(3);
  });

  it("tells a dot from a stroke", () => {
    expect(doc.isDot([[3, 4]])).toBe(true);
    expect(doc.isDot([[3, 4], [3, 4]])).toBe(true);
    expect(doc.isDot([[3, 4], [3, 5]])).toBe(false);
  });

  it("can be tested where every gesture keeps an example when one is left out", () => {
    const both = doc.addExample(documentOf("a", "b"), "id of a", doc.exampleOf(stroke));
    expect(doc.isTestable(both)).toBe(false);
    const enough = doc.addExample(both, "id of b", doc.exampleOf(stroke));
    expect(doc.isTestable(enough)).toBe(true);
    expect(doc.isTestable(doc.removeGesture(enough, "id of b"))).toBe(false);
  });

  it("says what stands against a name", () => {
    const it = documentOf("circle", "star");
    expect(doc.problemOfName(it, "id of star", "star")).toBe("");
    expect(doc.problemOfName(it, "id of star", "  ")).toContain("needs a name");
    expect(doc.problemOfName(it, "id of star", " circle")).toContain("“circle”");
    expect(doc.problemOfName(it, "id of star", "a\u0007b")).toContain("control");
    expect(doc.problemOfName(it, "id of star", "<img src=x>")).toBe("");
  });

  it("removes the one example that is meant", () => {
    const it = doc.addExample(documentOf("a"), "id of a", doc.exampleOf(stroke));
    const [first, second] = it.gestures[0]!.examples;
    expect(doc.removeExample(it, "id of a", first!.id).gestures[0]!.examples).toEqual([second]);
  });
});
