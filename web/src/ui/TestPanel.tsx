import type { ComponentChildren } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { countExamples, isTestable } from "../document/document";
import type { State, Studio, Tested, Testing } from "../studio";
import { Icon } from "./Icon";
import { Plot } from "./Plot";
import { Thumbnail } from "./Thumbnail";
import { counted, percent, remainingText } from "./words";

const mostMistakes = 12;

/** How well unseen examples are recognised: each by a model that was trained on all others. */
export function TestPanel({ studio, state }: { studio: Studio; state: State }) {
  const { tested, testing } = state;
  const document = state.history.now;
  if (countExamples(document) === 0) return null;
  const possible = isTestable(document);
  return (
    <section class="test" aria-labelledby="test-heading">
      <h2 id="test-heading">Unseen examples</h2>
      <p class="faint">Every example is shown to a model that was trained on all the others.</p>
      {testing ? (
        <Progress testing={testing} onStop={() => studio.stopTesting()} />
      ) : (
        <div class="row">
          <button type="button" disabled={!possible} onClick={() => void studio.test()}>
            {tested ? "Test again" : "Test"}
          </button>
        </div>
      )}
      {!possible && <p class="faint">Needs two gestures, and two examples of each.</p>}
      {tested && <Result tested={tested} studio={studio} stale={tested.of !== document} />}
    </section>
  );
}

function Progress({ testing, onStop }: { testing: Testing; onStop(): void }) {
  const { done, total, since } = testing;
  const left = remainingText(done, total, performance.now() - since);
  return (
    <div class="row testing">
      <label class="progress">
        <span>
          {done} of {total} tested{left && ` · ${left}`}
        </span>
        <progress value={done} max={total} aria-label="Testing unseen examples" />
      </label>
      <button type="button" onClick={onStop}>
        Stop
      </button>
    </div>
  );
}

/** As wide as the panel, and at its own size on request: many gestures are small print. */
function Matrix({ svg }: { svg: string }) {
  const [large, setLarge] = useState(false);
  const caption = "Rows are what was drawn, columns what was answered.";
  return (
    <figure>
      <div class="scroll" tabIndex={0} role="group" aria-label="Confusion matrix">
        <Plot svg={svg} />
      </div>
      <figcaption>{caption}</figcaption>
      <div class="row">
        <button type="button" class="quiet" onClick={() => setLarge(true)}>
          <Icon name="eye" /> Enlarge
        </button>
      </div>
      {large && (
        <Enlarged name="Confusion matrix" onClose={() => setLarge(false)}>
          <Plot svg={svg} natural />
          <p class="faint">{caption}</p>
        </Enlarged>
      )}
    </figure>
  );
}

interface EnlargedProps {
  name: string;
  children: ComponentChildren;
  onClose(): void;
}

/** Something over the page, until it is closed. */
function Enlarged({ name, children, onClose }: EnlargedProps) {
  const dialog = useRef<HTMLDialogElement>(null);
  useLayoutEffect(() => dialog.current!.showModal(), []);
  return (
    <dialog ref={dialog} aria-label={name} onClose={onClose}>
      <div class="scroll" tabIndex={0} role="group" aria-label={name}>
        {children}
      </div>
      <button type="button" onClick={() => dialog.current!.close()}>
        Close
      </button>
    </dialog>
  );
}

function Result({ studio, tested, stale }: { studio: Studio; tested: Tested; stale: boolean }) {
  const { result, tests, places, of } = tested;
  const mistakes = tests.flatMap((test, i) => {
    const gesture = of.gestures.find((it) => it.id === places[i]?.gesture);
    const example = gesture?.examples.find((it) => it.id === places[i]?.example);
    const missed = test.answer !== test.expected;
    return missed && gesture && example ? [{ ...test, gesture, example }] : [];
  });
  return (
    <div class={stale ? "is-stale" : ""}>
      {stale && <p class="faint">Examples have changed since.</p>}
      <p>
        <strong class="figure">{percent(result.correct)}</strong> of{" "}
        {counted(result.correct.total, "example")} recognised, {result.rejected.count} rejected,{" "}
        {result.wrong.count} mistaken for another.
      </p>
      <Matrix svg={result.confusion} />
      {mistakes.length > 0 && (
        <>
          <h3>
            Missed{mistakes.length > mostMistakes && `: the first ${mostMistakes} of ${mistakes.length}`}
          </h3>
          <ul class="mistakes">
            {mistakes.slice(0, mostMistakes).map((it) => (
              <li key={it.example.id}>
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
