import type { Example } from "../document/document";
import { placement, pointsText } from "./strokes";

const box = { x: 9, y: 9, width: 46, height: 46 };

/** Examples of a gesture over one another, the last one in front. */
export function Thumbnail({ examples }: { examples: readonly Example[] }) {
  return (
    <svg class="thumbnail" viewBox="0 0 64 64" aria-hidden="true">
      {examples.map((example, i) => {
        const points = example.points.map(placement(example.points, box));
        const front = i === examples.length - 1;
        return (
          <g key={example.id} class={front ? "front" : "back"}>
            <polyline points={pointsText(points)} />
            {front && points[0] && <circle cx={points[0][0]} cy={points[0][1]} r="3.4" />}
          </g>
        );
      })}
    </svg>
  );
}
