import type { Share, Verdict } from "../engine/protocol";

/** What the user reads, made of what the engine says. */

export function counted(count: number, noun: string): string {
  return `${count} ${noun}${count === 1 ? "" : "s"}`;
}

const superscripts = "⁰¹²³⁴⁵⁶⁷⁸⁹";

/** A factor given as a natural logarithm: "1.4", "250", "10⁶". */
export function factorText(logFactor: number): string {
  const decades = Math.abs(logFactor) / Math.LN10;
  if (decades >= 5) {
    return `10${[...String(Math.round(decades))].map((digit) => superscripts[Number(digit)]).join("")}`;
  }
  const factor = Math.exp(Math.abs(logFactor));
  return factor < 10 ? factor.toFixed(1) : Math.round(factor).toLocaleString("en");
}

export function marginText(margin: number | null): string {
  if (margin === null) return "";
  return margin >= 0
    ? `${factorText(margin)} times what it needs`
    : `${factorText(margin)} times too little`;
}

/** Why there is no answer. */
export function rejectionText(verdict: Verdict): string {
  const likeliest = verdict.scores[0]?.gesture;
  switch (verdict.rejection) {
    case "too short":
      return "Too short to have a direction. Draw a longer stroke.";
    case "zero probability":
      return "No gesture of this model can look like that.";
    case "threshold":
      return (
        `Most like “${likeliest}”, but not enough like it: ` +
        (verdict.margin === null
          ? "it is ruled out."
          : `${factorText(verdict.margin)} times likelier, and it would be one.`)
      );
    case "last state":
      return `It begins like “${likeliest}”, but does not come to its end.`;
    default:
      return "";
  }
}

export function percent(share: Share): string {
  if (share.total === 0) return "–";
  const value = (100 * share.count) / share.total;
  return `${value > 0 && value < 10 ? value.toFixed(1) : Math.round(value)} %`;
}

/** "1,000", "0.02": a ratio as it is said. */
export function ratioText(ratio: number): string {
  if (ratio >= 100) return Number(ratio.toPrecision(3)).toLocaleString("en");
  return ratio.toPrecision(2).replace(/\.?0+$/, "");
}

/** How long it will be, once that can be guessed: "about 20 s left". */
export function remainingText(done: number, total: number, milliseconds: number): string {
  if (done === 0 || done === total) return "";
  const seconds = ((total - done) * milliseconds) / done / 1000;
  if (seconds < 10) return "a few seconds left";
  if (seconds < 90) return `about ${10 * Math.round(seconds / 10)} s left`;
  return `about ${Math.round(seconds / 60)} min left`;
}
