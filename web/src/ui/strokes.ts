import type { Point } from "../engine/protocol";

// How strokes are put on the screen; what they mean is the engine's business.

/** The points attribute of a polyline. */
export function pointsText(points: readonly (readonly number[])[]): string {
  return points.map((it) => `${round(it[0]!)},${round(it[1]!)}`).join(" ");
}

function round(value: number): number {
  return Math.round(value * 10) / 10;
}

/** The box around strokes. */
export interface Box {
  x: number;
  y: number;
  width: number;
  height: number;
}

export function boxOf(points: readonly (readonly number[])[]): Box {
  let [left, top, right, bottom] = [Infinity, Infinity, -Infinity, -Infinity];
  for (const [x, y] of points as readonly Point[]) {
    left = Math.min(left, x);
    right = Math.max(right, x);
    top = Math.min(top, y);
    bottom = Math.max(bottom, y);
  }
  if (left > right) return { x: 0, y: 0, width: 0, height: 0 };
  return { x: left, y: top, width: right - left, height: bottom - top };
}

export type Placement = (point: readonly number[]) => Point;

/** Moves and scales points alike in both directions into a box, in its middle. */
export function placement(points: readonly (readonly number[])[], into: Box): Placement {
  const from = boxOf(points);
  const scale = Math.min(
    into.width / Math.max(from.width, 1e-9),
    into.height / Math.max(from.height, 1e-9),
  );
  const dx = into.x + (into.width - from.width * scale) / 2;
  const dy = into.y + (into.height - from.height * scale) / 2;
  return ([x, y]) => [(x! - from.x) * scale + dx, (y! - from.y) * scale + dy];
}

export const asItIs: Placement = ([x, y]) => [x!, y!];

/** One run of steps in the same state. */
export interface Run {
  state: number;
  points: readonly (readonly number[])[];
}

export function runsOf(points: readonly (readonly number[])[], states: readonly number[]): Run[] {
  const runs: Run[] = [];
  for (let from = 0; from < states.length; ) {
    let to = from + 1;
    while (to < states.length && states[to] === states[from]) ++to;
    runs.push({ state: states[from]!, points: points.slice(from, to + 1) });
    from = to;
  }
  return runs;
}

const stateColours = 12;

/** The plots' colour of a state of `count`. */
export function stateColour(state: number, count: number): string {
  const place = count > 1 ? state / (count - 1) : 0;
  return `var(--vesk-s${Math.round(place * (stateColours - 1))})`;
}
