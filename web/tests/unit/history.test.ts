import { describe, expect, it } from "vitest";
import { changed, historyOf, redone, undone } from "../../src/document/history";

describe("history", () => {
  it("goes back and forth", () => {
    const there = changed(changed(historyOf("a"), "b"), "c");
    expect(undone(there).now).toBe("b");
    expect(undone(undone(there)).now).toBe("a");
    expect(redone(undone(there))).toEqual(there);
  });

  it("stays where there is nothing to go to", () => {
    const start = historyOf("a");
    expect(undone(start)).toBe(start);
    expect(redone(start)).toBe(start);
  });

  it("forgets the future once something changes", () => {
    const branched = changed(undone(changed(historyOf("a"), "b")), "c");
    expect(redone(branched)).toBe(branched);
    expect(undone(branched).now).toBe("a");
  });

  it("takes no step for what stays the same", () => {
    const start = changed(historyOf("a"), "b");
    expect(changed(start, "b")).toBe(start);
  });

  it("remembers two hundred steps", () => {
    let long = historyOf(0);
    for (let i = 1; i <= 300; ++i) long = changed(long, i);
    for (let i = 0; i < 400; ++i) long = undone(long);
    expect(long.now).toBe(100);
  });
});
