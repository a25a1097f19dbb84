import { useLayoutEffect, useState } from "preact/hooks";
import type { Example, Gesture } from "../document/document";
import type { Finding } from "../engine/protocol";
import type { State, Studio } from "../studio";
import { Icon } from "./Icon";
import { Plot } from "./Plot";
import { Thumbnail } from "./Thumbnail";
import { counted } from "./words";

const mostInThumbnail = 5;

interface Props {
  studio: Studio;
  state: State;
}

export function GestureList({ studio, state }: Props) {
  const { gestures } = state.history.now;
  const loose = state.findings.filter(
    (it) => !gestures.some((gesture) => it.gestures.includes(gesture.name)),
  );
  return (
    <section class="gestures" aria-labelledby="gestures-heading">
      <header>
        <h2 id="gestures-heading">Gestures</h2>
        <button
          type="button"
          class="quiet"
          aria-pressed={state.mode === "teach" && state.selected === null}
          onClick={() => studio.select(null)}
        >
          <Icon name="plus" /> New
        </button>
      </header>
      {loose.map((finding) => (
        <FindingLine key={finding.text} finding={finding} />
      ))}
      {gestures.length === 0 && <p class="faint nothing">What you draw is kept here.</p>}
      <ul>
        {gestures.map((gesture) => (
          <GestureCard key={gesture.id} studio={studio} state={state} gesture={gesture} />
        ))}
      </ul>
    </section>
  );
}

function GestureCard({ studio, state, gesture }: Props & { gesture: Gesture }) {
  const selected = state.selected === gesture.id;
  const findings = state.findings.filter((it) => it.gestures[0] === gesture.name);
  const mistakes = findings.filter((it) => it.weight !== "advice");
  const count = gesture.examples.length;
  return (
    <li class={`card${selected ? " is-selected" : ""}`}>
      <button
        type="button"
        class="card-head"
        aria-expanded={selected}
        onClick={() => studio.select(selected ? null : gesture.id)}
      >
        <Thumbnail examples={gesture.examples.slice(-mostInThumbnail)} />
        <span class="card-name">{gesture.name}</span>
        <span class="card-count">{counted(count, "example")}</span>
        {mistakes.length > 0 && (
          <span class="dot">
            <span class="hidden">{counted(mistakes.length, "probable mistake")}</span>
          </span>
        )}
      </button>
      {selected && <GestureDetails {...{ studio, state, gesture, findings }} />}
    </li>
  );
}

function GestureDetails({
  studio,
  state,
  gesture,
  findings,
}: Props & { gesture: Gesture; findings: Finding[] }) {
  const flagged = new Map<string, string>();
  for (const finding of findings) {
    for (const trace of finding.traces) {
      const example = state.places[trace]?.example;
      if (example) flagged.set(example, finding.text);
    }
  }
  const figures = state.figures?.gesture === gesture.name ? state.figures.list : null;
  return (
    <div class="card-body">
      <NameField key={gesture.id} studio={studio} gesture={gesture} />
      {findings.map((finding) => (
        <FindingLine key={finding.text} finding={finding} />
      ))}
      <ul class="examples" aria-label={`Examples of ${gesture.name}`}>
        {gesture.examples.map((example, i) => (
          <ExampleTile
            key={example.id}
            example={example}
            number={i + 1}
            problem={flagged.get(example.id)}
            onTry={state.model ? () => void studio.recognise(example.points) : null}
            onRemove={() => studio.removeExample(gesture.id, example.id)}
          />
        ))}
      </ul>
      <div class="row">
        {state.model && (
          <button
            type="button"
            class="quiet"
            aria-expanded={figures !== null}
            onClick={() =>
              figures ? studio.hideFigures() : void studio.showFigures(gesture.name)
            }
          >
            <Icon name="eye" /> What the model sees
          </button>
        )}
        <button type="button" class="quiet danger" onClick={() => studio.removeGesture(gesture.id)}>
          <Icon name="trash" /> Delete gesture
        </button>
      </div>
      {figures?.length === 0 && <p class="faint">The model does not know this gesture yet.</p>}
      {figures?.map((figure, i) => (
        <figure key={i}>
          <div class="scroll" tabIndex={0} role="group" aria-label={figure.caption}>
            <Plot svg={figure.svg} />
          </div>
          <figcaption>{figure.caption}</figcaption>
        </figure>
      ))}
    </div>
  );
}

function NameField({ studio, gesture }: { studio: Studio; gesture: Gesture }) {
  const [text, setText] = useState(gesture.name);
  const [problem, setProblem] = useState("");
  // At once, so that nothing typed meanwhile is lost.
  useLayoutEffect(() => setText(gesture.name), [gesture.name]);

  // What the field holds: the text of the last rendering may be older.
  function accept(given: string): void {
    if (given.trim() === gesture.name) setProblem("");
    else setProblem(studio.rename(gesture.id, given));
  }

  return (
    <div class="field">
      <label for={`name-${gesture.id}`}>Name</label>
      <input
        id={`name-${gesture.id}`}
        value={text}
        maxLength={60}
        autocomplete="off"
        spellcheck={false}
        aria-invalid={problem !== ""}
        aria-describedby={problem ? `problem-${gesture.id}` : undefined}
        onInput={(event) => setText(event.currentTarget.value)}
        onBlur={(event) => accept(event.currentTarget.value)}
        onKeyDown={(event) => {
          if (event.key === "Enter") accept(event.currentTarget.value);
          if (event.key !== "Escape") return;
          setText(gesture.name);
          setProblem("");
        }}
      />
      {problem && (
        <p id={`problem-${gesture.id}`} class="problem" role="alert">
          {problem}
        </p>
      )}
    </div>
  );
}

interface TileProps {
  example: Example;
  number: number;
  problem: string | undefined;
  onTry: (() => void) | null;
  onRemove(): void;
}

function ExampleTile({ example, number, problem, onTry, onRemove }: TileProps) {
  const name = `example ${number}${problem ? `, ${problem}` : ""}`;
  return (
    <li class={`tile${problem ? " is-flagged" : ""}`} title={problem}>
      <button
        type="button"
        class="tile-try"
        disabled={!onTry}
        aria-label={`Recognise ${name}`}
        onClick={() => onTry?.()}
      >
        <Thumbnail examples={[example]} />
      </button>
      <button type="button" class="tile-remove" aria-label={`Delete ${name}`} onClick={onRemove}>
        <Icon name="close" />
      </button>
    </li>
  );
}

export function FindingLine({ finding }: { finding: Finding }) {
  return (
    <p class={`finding ${finding.weight}`}>
      <Icon name={finding.weight === "advice" ? "spark" : "alert"} />
      <span>
        <strong>{finding.advice}</strong> <span class="faint">{finding.text}</span>
      </span>
    </p>
  );
}
