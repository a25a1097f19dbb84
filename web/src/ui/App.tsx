import { useEffect, useState } from "preact/hooks";
import { countExamples } from "../document/document";
import type { Job, State, Studio } from "../studio";
import { FileMenu, importAll } from "./FileMenu";
import { GestureList } from "./GestureList";
import { Icon } from "./Icon";
import { Notices } from "./Notices";
import { Strictness } from "./Strictness";
import { Surface } from "./Surface";
import { TestPanel } from "./TestPanel";
import { VerdictPanel } from "./VerdictPanel";

export function App({ studio }: { studio: Studio }) {
  const [state, setState] = useState(studio.state);
  const [dropping, setDropping] = useState(false);
  useEffect(() => studio.subscribe(() => setState(studio.state)), [studio]);
  useEffect(() => keyboardUndo(studio), [studio]);
  useEffect(() => dropFiles(studio, setDropping), [studio]);

  return (
    <>
      <header class="top">
        <h1>
          <img src="./icon.svg" alt="" width="28" height="28" /> Vesk Studio
        </h1>
        <Storage state={state} />
        <div class="row">
          <Step name="Undo" icon="undo" to={state.history.past} onStep={() => studio.undo()} />
          <Step name="Redo" icon="redo" to={state.history.future} onStep={() => studio.redo()} />
          <FileMenu studio={studio} state={state} />
        </div>
      </header>
      <main class={dropping ? "is-dropping" : ""}>
        <Stage studio={studio} state={state} />
        <aside class="panel" aria-label="Verdict and tests">
          <VerdictPanel studio={studio} state={state} />
          <Strictness studio={studio} state={state} />
          <TestPanel studio={studio} state={state} />
        </aside>
        <GestureList studio={studio} state={state} />
      </main>
    </>
  );
}

interface StepProps {
  name: string;
  icon: "undo" | "redo";
  /** What there is to go to. */
  to: readonly unknown[];
  onStep(): void;
}

function Step({ name, icon, to, onStep }: StepProps) {
  return (
    <button type="button" aria-label={name} title={name} disabled={to.length === 0} onClick={onStep}>
      <Icon name={icon} />
    </button>
  );
}

function Storage({ state }: { state: State }) {
  const { storage } = state;
  if (typeof storage === "object") {
    return (
      <p class="storage problem" role="alert">
        Not kept: {storage.failed}. Take your files home before you close the page.
      </p>
    );
  }
  const texts = { "": "", saving: "keeping …", saved: "kept in this browser" };
  return <p class="storage faint">{texts[storage]}</p>;
}

function Stage({ studio, state }: { studio: Studio; state: State }) {
  const document = state.history.now;
  const selected = document.gestures.find((it) => it.id === state.selected);
  const trying = state.mode === "try";
  const empty = document.gestures.length === 0;
  const known = state.model?.description.gestures.length ?? 0;
  const title = trying
    ? `Try it${state.model?.source ? `: ${state.model.source}` : ""}`
    : selected
      ? `Teach “${selected.name}”`
      : "Teach a new gesture";
  const hint = trying
    ? `Draw any of the ${known} gestures it knows`
    : selected
      ? `Draw “${selected.name}” again: ${selected.examples.length < 5 ? "five or more examples are good" : "slightly different each time"}`
      : "Draw a gesture in one stroke";
  return (
    <section class="stage" aria-labelledby="stage-heading">
      <header>
        <h2 id="stage-heading">{title}</h2>
        <div class="switch" role="group" aria-label="What strokes are for">
          <button type="button" aria-pressed={!trying} onClick={() => studio.setMode("teach")}>
            <Icon name="pen" /> Teach
          </button>
          <button
            type="button"
            aria-pressed={trying}
            disabled={!state.model}
            onClick={() => studio.setMode("try")}
          >
            <Icon name="play" /> Try
          </button>
        </div>
      </header>
      <Surface
        label={trying ? "Drawing area: a stroke is recognised" : "Drawing area: a stroke is an example"}
        hint={hint}
        inviting={empty && !trying && state.ready}
        attempt={state.attempt}
        ghost={trying ? null : (selected?.examples.at(-1)?.points.map(([x, y]) => [x, y]) ?? null)}
        onBegin={() => studio.forgetAttempt()}
        onStroke={(points) => studio.stroke(points)}
      />
      {empty && !state.model && state.ready && (
        <div class="welcome">
          <p>
            Draw a gesture a few times, name it, draw another, train. Then draw again and see what is
            recognised, how surely, and why not. Nothing leaves this page.
          </p>
          <button type="button" class="primary" onClick={() => void studio.addStarterSet()}>
            <Icon name="spark" /> Start with a dozen drawn gestures
          </button>
        </div>
      )}
      <TrainBar studio={studio} state={state} />
      <Notices studio={studio} notices={state.notices} />
    </section>
  );
}

const jobTexts: Record<Job["kind"], string> = {
  training: "Training",
  examining: "Looking for mistakes",
};

function TrainBar({ studio, state }: { studio: Studio; state: State }) {
  const { job, model } = state;
  const document = state.history.now;
  const examples = countExamples(document);
  if (job) {
    const text = jobTexts[job.kind];
    return (
      <div class="train">
        <label class="progress">
          <span>
            {text} … {Math.round(100 * job.share)} %
          </span>
          <progress value={job.share} max={1} aria-label={text} />
        </label>
        <button type="button" onClick={() => studio.cancel()}>
          Cancel
        </button>
      </div>
    );
  }
  if (examples === 0) return null;
  const fresh = model?.trainedOn === document;
  const text = !model
    ? "Not trained yet."
    : fresh
      ? "Trained on all of these examples."
      : model.source
        ? `The model is that of ${model.source}.`
        : "Examples have changed since the training.";
  return (
    <div class="train">
      <p class="faint">{text}</p>
      <button type="button" class={fresh ? "" : "primary"} onClick={() => void studio.train()}>
        {model ? "Train again" : "Train"}
      </button>
    </div>
  );
}

function keyboardUndo(studio: Studio): () => void {
  const listener = (event: KeyboardEvent) => {
    if (event.target instanceof HTMLInputElement && event.target.type === "text") return;
    if (!(event.ctrlKey || event.metaKey) || event.altKey) return;
    const key = event.key.toLowerCase();
    if (key === "y" || (key === "z" && event.shiftKey)) studio.redo();
    else if (key === "z") studio.undo();
    else return;
    event.preventDefault();
  };
  addEventListener("keydown", listener);
  return () => removeEventListener("keydown", listener);
}

function dropFiles(studio: Studio, setDropping: (dropping: boolean) => void): () => void {
  const over = (event: DragEvent) => {
    if (!event.dataTransfer?.types.includes("Files")) return;
    event.preventDefault();
    setDropping(true);
  };
  const leave = (event: DragEvent) => {
    if (event.relatedTarget === null) setDropping(false);
  };
  const drop = (event: DragEvent) => {
    event.preventDefault();
    setDropping(false);
    void importAll(studio, [...(event.dataTransfer?.files ?? [])]);
  };
  addEventListener("dragover", over);
  addEventListener("dragleave", leave);
  addEventListener("drop", drop);
  return () => {
    removeEventListener("dragover", over);
    removeEventListener("dragleave", leave);
    removeEventListener("drop", drop);
  };
}
