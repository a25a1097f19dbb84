import { describe, expect, it } from "vitest";
import type { Verdict } from "../../src/engine/protocol";
import { factorText, marginText, percent, ratioText, rejectionText, remainingText } from "../../src/ui/words";

function rejected(rejection: Verdict["rejection"], margin: number | null): Verdict {
  const scores = [{ gesture: "circle", logProbability: -50, margin }];
  return { gesture: "", rejection, margin, scores, symbols: [], answers: [], path: null };
}

describe("words", () => {
  it("says factors as a person would", () => {
    expect(factorText(Math.log(1.44))).toBe("1.4");
    expect(factorText(-Math.log(2500))).toBe("2,500");
    expect(factorText(Math.LN10 * 12.2)).toBe("10¹²");
  });

  it("says on which side of the threshold a gesture is", () => {
    expect(marginText(Math.log(30))).toBe("30 times what it needs");
    expect(marginText(-Math.log(30))).toBe("30 times too little");
    expect(marginText(null)).toBe("");
  });

  it("gives the reason of every rejection", () => {
    expect(rejectionText(rejected("threshold", -Math.log(7)))).toBe(
      "Most like “circle”, but not enough like it: 7.0 times likelier, and it would be one.",
    );
    expect(rejectionText(rejected("threshold", null))).toContain("ruled out");
    expect(rejectionText(rejected("last state", 3))).toContain("does not come to its end");
    expect(rejectionText(rejected("too short", null))).toContain("longer stroke");
    expect(rejectionText(rejected("zero probability", null))).toContain("No gesture");
    expect(rejectionText(rejected("", 3))).toBe("");
  });

  it("rounds shares without making a few into none", () => {
    expect(percent({ count: 1, total: 300 })).toBe("0.3 %");
    expect(percent({ count: 96, total: 100 })).toBe("96 %");
    expect(percent({ count: 0, total: 100 })).toBe("0 %");
    expect(percent({ count: 0, total: 0 })).toBe("–");
  });

  it("guesses how long it will be", () => {
    expect(remainingText(0, 96, 3000)).toBe("");
    expect(remainingText(96, 96, 3000)).toBe("");
    expect(remainingText(95, 96, 3000)).toBe("a few seconds left");
    expect(remainingText(10, 40, 10_000)).toBe("about 30 s left");
    expect(remainingText(1, 181, 1000)).toBe("about 3 min left");
  });

  it("says ratios", () => {
    expect(ratioText(1000.002)).toBe("1,000");
    expect(ratioText(99_988)).toBe("100,000");
    expect(ratioText(0.02)).toBe("0.02");
    expect(ratioText(3)).toBe("3");
  });
});
