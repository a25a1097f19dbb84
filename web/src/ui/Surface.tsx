import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Point } from "../engine/protocol";
import type { Attempt } from "../studio";
import { asItIs, boxOf, placement, pointsText, runsOf, stateColour } from "./strokes";

interface Props {
  label: string;
  hint: string;
  attempt: Attempt | null;
  /** The latest example, faintly, so that the next can be like it. */
  ghost: readonly Point[] | null;
  /** Whether a stroke draws itself, as an invitation. */
  inviting: boolean;
  onStroke(points: Point[]): Promise<void>;
  onBegin(): void;
}

const stepOfKey = 14;
const keys: Record<string, Point> = {
  ArrowRight: [1, 0],
  ArrowLeft: [-1, 0],
  ArrowUp: [0, -1],
  ArrowDown: [0, 1],
};

/** Where strokes are drawn: with a pointer, or with the arrow keys and the space bar. */
export function Surface({ label, hint, attempt, ghost, inviting, onStroke, onBegin }: Props) {
  const root = useRef<HTMLDivElement>(null);
  const ink = useRef<SVGPolylineElement>(null);
  const stroke = useRef<Point[]>([]);
  const pointer = useRef<number | null>(null);
  const [size, setSize] = useState({ width: 0, height: 0 });
  const [drawing, setDrawing] = useState(false);
  const [cursor, setCursor] = useState<{ at: Point; down: boolean } | null>(null);

  useLayoutEffect(() => {
    const element = root.current!;
    const measure = () => setSize({ width: element.clientWidth, height: element.clientHeight });
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(element);
    return () => observer.disconnect();
  }, []);

  // What was drawn stays until there is something in its place.
  useEffect(() => show([]), [attempt, ghost]);

  function show(points: readonly Point[]): void {
    ink.current?.setAttribute("points", pointsText(points));
  }

  function begin(at: Point): void {
    stroke.current = [at];
    setDrawing(true);
    onBegin();
    show(stroke.current);
  }

  /** The page is drawn anew once there is an answer: drawing it twice would delay that. */
  async function finish(): Promise<void> {
    const points = stroke.current;
    stroke.current = [];
    if (points.length > 0) await onStroke(points);
    if (stroke.current.length === 0) setDrawing(false);
  }

  function drop(): void {
    pointer.current = null;
    stroke.current = [];
    setDrawing(false);
    show([]);
  }

  function placeOf(event: PointerEvent): Point {
    const box = root.current!.getBoundingClientRect();
    return [event.clientX - box.left, event.clientY - box.top];
  }

  function onPointerDown(event: PointerEvent): void {
    if (!event.isPrimary || event.button !== 0 || pointer.current !== null) return;
    pointer.current = event.pointerId;
    root.current!.setPointerCapture(event.pointerId);
    setCursor(null);
    begin(placeOf(event));
  }

  function onPointerMove(event: PointerEvent): void {
    if (event.pointerId !== pointer.current) return;
    const all = event.getCoalescedEvents?.() ?? [];
    for (const one of all.length > 0 ? all : [event]) stroke.current.push(placeOf(one));
    show(stroke.current);
  }

  function onPointerUp(event: PointerEvent): void {
    if (event.pointerId !== pointer.current) return;
    pointer.current = null;
    void finish();
  }

  function onKeyDown(event: KeyboardEvent): void {
    const step = keys[event.key];
    const at = cursor?.at ?? [size.width / 2, size.height / 2];
    const down = cursor?.down ?? false;
    if (step) {
      const next: Point = [
        Math.min(Math.max(at[0] + step[0] * stepOfKey, 4), size.width - 4),
        Math.min(Math.max(at[1] + step[1] * stepOfKey, 4), size.height - 4),
      ];
      if (down) {
        stroke.current.push(next);
        show(stroke.current);
      }
      setCursor({ at: next, down });
    } else if (event.key === " ") {
      if (down) void finish();
      else begin(at);
      setCursor({ at, down: !down });
    } else if (event.key === "Escape" && down) {
      drop();
      setCursor({ at, down: false });
    } else {
      return;
    }
    event.preventDefault();
  }

  const inset = Math.min(size.width, size.height) * 0.16;
  const middle = {
    x: inset,
    y: inset,
    width: Math.max(size.width - 2 * inset, 1),
    height: Math.max(size.height - 2 * inset, 1),
  };
  const path = attempt?.verdict.path ?? null;
  const place = attempt && !inside(attempt.points, size) ? placement(attempt.points, middle) : asItIs;
  const behind = ghost && placement(ghost, middle);

  return (
    <div
      ref={root}
      class={`surface${drawing ? " is-drawing" : ""}`}
      role="application"
      tabIndex={0}
      aria-label={label}
      aria-describedby="surface-keys"
      onPointerDown={onPointerDown}
      onPointerMove={onPointerMove}
      onPointerUp={onPointerUp}
      onPointerCancel={drop}
      onKeyDown={onKeyDown}
      onBlur={() => {
        if (cursor?.down) drop();
        setCursor(null);
      }}
    >
      <svg class="ink" aria-hidden="true" width={size.width} height={size.height}>
        {behind && !drawing && !attempt && (
          <polyline class="ghost" points={pointsText(ghost!.map(behind))} />
        )}
        {attempt && !drawing && (
          <g class="attempt">
            <polyline class="under" points={pointsText(attempt.points.map(place))} />
            {path &&
              runsOf(path.points, path.states).map((run, i) => (
                <polyline
                  key={i}
                  class="state"
                  points={pointsText(run.points.map(place))}
                  stroke={stateColour(run.state, path.count)}
                />
              ))}
            <Beginning at={place(attempt.points[0]!)} />
          </g>
        )}
        <polyline ref={ink} class="live" />
        {cursor && (
          <circle
            class={cursor.down ? "pen down" : "pen"}
            cx={cursor.at[0]}
            cy={cursor.at[1]}
            r={cursor.down ? 6 : 9}
          />
        )}
      </svg>
      {inviting && !drawing && (
        <svg class="invitation" viewBox="0 0 200 140" aria-hidden="true">
          <path
            pathLength="1"
            d="M22 62C40 22 84 30 82 66s-46 44-40 8 72-66 92-30-24 84-40 62 8-62 40-60 44 34 44 62"
          />
        </svg>
      )}
      {!drawing && !attempt && <p class="hint">{hint}</p>}
      <p id="surface-keys" class="hidden">
        With a keyboard: the space bar puts the pen down and lifts it, arrow keys move it, Escape drops
        the stroke.
      </p>
    </div>
  );
}

function Beginning({ at }: { at: Point }) {
  return <circle class="beginning" cx={at[0]} cy={at[1]} r="7" />;
}

function inside(points: readonly Point[], size: { width: number; height: number }): boolean {
  const box = boxOf(points);
  return (
    box.x >= 0 && box.y >= 0 && box.x + box.width <= size.width &&
    box.y + box.height <= size.height && Math.max(box.width, box.height) >= 24
  );
}
