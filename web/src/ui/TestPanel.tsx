import { useState } from "preact/hooks";
import { countExamples } from "../document/document";
import type { State, Studio } from "../studio";
import { Plot } from "./Plot";
import { Thumbnail } from "./Thumbnail";
import { counted, percent } from "./words";

const mostMistakes = 12;

/** How well unseen examples are recognised: each by a model that was trained without it. */
export function TestPanel({ studio, state }: { studio: Studio; state: State }) {
  const [unknown, setUnknown] = useState(false);
  const { evaluation, job } = state;
  const document = state.history.now;
  const examples = countExamples(document);
  const enough =
    document.gestures.length > 1 && document.gestures.every((it) => it.examples.length > 1);
  if (examples === 0) return null;
  const stale = evaluation !== null && evaluation.of !== document;
  return (
    <section class="test" aria-labelledby="test-heading">
      <h2 id="test-heading">Unseen examples</h2>
      <p class="faint">
        Every example is shown to a model that was trained without it.
      </p>
      <div class="row">
        <button
          type="button"
          disabled={!enough || job !== null}
          onClick={() => void studio.evaluate(unknown)}
        >
          {evaluation ? "Test again" : "Test"}
        </button>
        <label class="check">
          <input
            type="checkbox"
            checked={unknown}
            onInput={(event) => setUnknown(event.currentTarget.checked)}
          />
          strangers too (slower)
        </label>
      </div>
      {!enough && <p class="faint">Needs two gestures with two examples each.</p>}
      {evaluation && <Result state={state} stale={stale} studio={studio} />}
    </section>
  );
}

function Result({ studio, state, stale }: { studio: Studio; state: State; stale: boolean }) {
  const { result, places, of } = state.evaluation!;
  const total = result.correct.total;
  const mistakes = result.mistakes.flatMap((it) => {
    const place = places[it.trace];
    const gesture = of.gestures.find((one) => one.id === place?.gesture);
    const example = gesture?.examples.find((one) => one.id === place?.example);
    return gesture && example ? [{ ...it, gesture, example }] : [];
  });
  return (
    <div class={stale ? "is-stale" : ""}>
      {stale && <p class="faint">Examples have changed since.</p>}
      <p>
        <strong class="figure">{percent(result.correct)}</strong> of {counted(total, "example")}{" "}
        recognised, {result.rejected.count} rejected, {result.wrong.count} mistaken for another.
      </p>
      <figure>
        <div class="scroll" tabIndex={0} role="group" aria-label="Confusion matrix">
          <Plot svg={result.confusion} />
        </div>
        <figcaption>Rows are what was drawn, columns what was answered.</figcaption>
      </figure>
      {mistakes.length > 0 && (
        <>
          <h3>Missed</h3>
          <ul class="mistakes">
            {mistakes.slice(0, mostMistakes).map((it) => (
              <li key={it.trace}>
                <button
                  type="button"
                  onClick={() => studio.select(it.gesture.id)}
                  aria-label={`${it.gesture.name}, ${it.answer ? `taken for ${it.answer}` : it.rejection}: show`}
                >
                  <Thumbnail examples={[it.example]} />
                  <span>{it.gesture.name}</span>
                  <span class="faint">{it.answer ? `→ ${it.answer}` : it.rejection}</span>
                </button>
              </li>
            ))}
          </ul>
        </>
      )}
    </div>
  );
}
