import type { Score, Verdict } from "../engine/protocol";
import type { State, Studio } from "../studio";
import { Icon } from "./Icon";
import { marginText, rejectionText } from "./words";

const mostBars = 6;

/** The answer for those who see it, and at once for those who hear it. */
export function VerdictPanel({ studio, state }: { studio: Studio; state: State }) {
  const { attempt, model } = state;
  return (
    <section class="verdict" aria-labelledby="verdict-heading">
      <h2 id="verdict-heading">Verdict</h2>
      <div aria-live="polite" aria-atomic="true">
        {attempt ? (
          <Answer verdict={attempt.verdict} />
        ) : (
          <p class="placeholder">
            {model
              ? "Draw something: the answer is here as soon as you lift the pen."
              : "Teach a few gestures and train: then whatever you draw is recognised here."}
          </p>
        )}
      </div>
      {attempt && <Bars verdict={attempt.verdict} />}
      {attempt && attempt.verdict.scores.length > 0 && (
        <p class="faint">
          Answered in {attempt.milliseconds.toFixed(1)} ms. The stroke has the colours of the states
          that it goes through.
        </p>
      )}
      {attempt && attempt.verdict.rejection !== "too short" && <Keep studio={studio} state={state} />}
    </section>
  );
}

function Answer({ verdict }: { verdict: Verdict }) {
  if (verdict.rejection === "") {
    return (
      <div class="answer is-accepted">
        <Icon name="check" />
        <p>
          <strong>{verdict.gesture}</strong>
          <span>{marginText(verdict.margin)}</span>
        </p>
      </div>
    );
  }
  return (
    <div class="answer is-rejected">
      <Icon name="cross" />
      <p>
        <strong>Rejected</strong>
        <span>{rejectionText(verdict)}</span>
      </p>
    </div>
  );
}

/** A stroke that was misunderstood is the best example of what it should have been. */
function Keep({ studio, state }: { studio: Studio; state: State }) {
  const { gestures } = state.history.now;
  if (gestures.length === 0) return null;
  return (
    <div class="field">
      <label for="keep">Keep the stroke as an example of</label>
      <select
        id="keep"
        value=""
        onChange={(event) => {
          studio.keepAttempt(event.currentTarget.value);
          event.currentTarget.value = "";
        }}
      >
        <option value="">choose …</option>
        {gestures.map((it) => (
          <option key={it.id} value={it.id}>
            {it.name}
          </option>
        ))}
      </select>
    </div>
  );
}

/** The likeliest gestures, as far apart as their margins, and the line that they have to reach. */
function Bars({ verdict }: { verdict: Verdict }) {
  const shown = verdict.scores.slice(0, mostBars);
  const margins = shown.map((it) => it.margin).filter((it): it is number => it !== null);
  if (margins.length === 0) return null;
  const low = Math.min(...margins, -5);
  const high = Math.max(...margins, 5);
  const place = (margin: number) => 6 + (94 * (margin - low)) / (high - low);
  const threshold = place(0);
  return (
    <ol class="bars" aria-label="Likeliest gestures">
      {shown.map((score) => (
        <Bar key={score.gesture} score={score} place={place} threshold={threshold} />
      ))}
    </ol>
  );
}

interface BarProps {
  score: Score;
  place(margin: number): number;
  threshold: number;
}

function Bar({ score, place, threshold }: BarProps) {
  const width = score.margin === null ? 0 : place(score.margin);
  return (
    <li>
      <span class="bar-name">{score.gesture}</span>
      <svg class="bar" viewBox="0 0 100 10" preserveAspectRatio="none" aria-hidden="true">
        <rect class="track" width="100" height="10" rx="0" />
        <rect
          class={score.margin !== null && score.margin > 0 ? "fill above" : "fill"}
          width={width}
          height="10"
        />
        <rect class="threshold" x={threshold - 0.4} width="0.8" height="10" />
      </svg>
      <span class="bar-margin">
        {score.margin === null ? "impossible" : marginText(score.margin)}
      </span>
    </li>
  );
}
