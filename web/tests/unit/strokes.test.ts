import { describe, expect, it } from "vitest";
import { boxOf, placement, pointsText, runsOf, stateColour } from "../../src/ui/strokes";

describe("strokes", () => {
  it("fit a box in its middle, both directions alike", () => {
    const points = [[0, 0], [20, 10]];
    const into = { x: 100, y: 100, width: 40, height: 40 };
    expect(points.map(placement(points, into))).toEqual([[100, 110], [140, 130]]);
  });

  it("stay finite where they are a dot", () => {
    const placed = placement([[5, 5]], { x: 0, y: 0, width: 10, height: 10 })([5, 5]);
    expect(placed.every(Number.isFinite)).toBe(true);
  });

  it("have a box, none of which is empty", () => {
    expect(boxOf([])).toEqual({ x: 0, y: 0, width: 0, height: 0 });
    expect(boxOf([[3, 9], [-1, 4]])).toEqual({ x: -1, y: 4, width: 4, height: 5 });
  });

  it("are cut where the state changes, with no gap between", () => {
    const runs = runsOf([[0, 0], [1, 0], [2, 0], [3, 0]], [0, 0, 1]);
    expect(runs).toEqual([
      { state: 0, points: [[0, 0], [1, 0], [2, 0]] },
      { state: 1, points: [[2, 0], [3, 0]] },
    ]);
  });

  it("take the first and the last colour of twelve", () => {
    expect(stateColour(0, 32)).toBe("var(--vesk-s0)");
    expect(stateColour(31, 32)).toBe("var(--vesk-s11)");
    expect(stateColour(0, 1)).toBe("var(--vesk-s0)");
  });

  it("are written to a tenth of a pixel", () => {
    expect(pointsText([[0.123, 4], [5, 6.66]])).toBe("0.1,4 5,6.7");
  });
});
