import { changed, historyOf, redone, undone, type History } from "./document/history";
import * as doc from "./document/document";
import { Cancelled, EngineClient, engineWorker } from "./engine/client";
import { Crew, crewSize } from "./engine/crew";
import type {
  Description,
  Evaluation,
  ExampleTest,
  Figure,
  Finding,
  Point,
  Trace,
  Verdict,
} from "./engine/protocol";
import { reasonOf, restore, save } from "./storage/autosave";
import { counted } from "./ui/words";

export type JobKind = "training" | "examining";

export interface Job {
  kind: JobKind;
  share: number;
}

/** Every example shown to a model of all others. */
export interface Testing {
  done: number;
  total: number;
  /** When it began, as performance.now() tells. */
  since: number;
}

/** What came of it; refers to the examples of the document that was tested. */
export interface Tested {
  result: Evaluation;
  tests: readonly ExampleTest[];
  places: readonly doc.Place[];
  of: doc.StudioDocument;
}

/** The model that recognises, wherever it comes from. */
export interface Model {
  file: Uint8Array;
  description: Description;
  /** The ratio that its training found, or its file held. */
  ratio: number;
  /** The document that it was trained on; null for one from a file. */
  trainedOn: doc.StudioDocument | null;
  source: string;
}

export interface Attempt {
  points: readonly Point[];
  verdict: Verdict;
  milliseconds: number;
}

export interface Notice {
  id: string;
  kind: "info" | "problem";
  text: string;
  details: readonly string[];
  undo: boolean;
  /** What else may be done about it. */
  action?: { text: string; act(): void };
}

export interface State {
  history: History<doc.StudioDocument>;
  selected: string | null;
  mode: "teach" | "try";
  model: Model | null;
  attempt: Attempt | null;
  findings: readonly Finding[];
  places: readonly doc.Place[];
  job: Job | null;
  testing: Testing | null;
  tested: Tested | null;
  figures: { gesture: string; list: readonly Figure[] } | null;
  notices: readonly Notice[];
  storage: "" | "saving" | "saved" | { failed: string };
  ready: boolean;
}

const initial: State = {
  history: historyOf(doc.emptyDocument),
  selected: null,
  mode: "teach",
  model: null,
  attempt: null,
  findings: [],
  places: [],
  job: null,
  testing: null,
  tested: null,
  figures: null,
  notices: [],
  storage: "",
  ready: false,
};

const saveDelay = 400;
const examineDelay = 700;
/** More take minutes: those are tested when it is asked for. */
export const testedUnasked = 200;
const warmUps = 8;

export const nameOfImported = "imported";

/** The page's state and all that can be done to it. */
export class Studio {
  state: State = initial;
  private readonly listeners = new Set<() => void>();
  /** Answers at once; long requests have engines of their own, which may be stopped. */
  private readonly live = new EngineClient(engineWorker);
  private readonly engines: Record<JobKind, EngineClient> = {
    training: new EngineClient(engineWorker),
    examining: new EngineClient(engineWorker),
  };
  private readonly crew = new Crew(engineWorker, crewSize(navigator.hardwareConcurrency));
  private saveTimer = 0;
  private examineTimer = 0;
  private recognising = 0;
  private wantedRatio: number | null = null;

  subscribe(listener: () => void): () => void {
    this.listeners.add(listener);
    return () => this.listeners.delete(listener);
  }

  get document(): doc.StudioDocument {
    return this.state.history.now;
  }

  private set(change: Partial<State>): void {
    this.state = { ...this.state, ...change };
    for (const listener of this.listeners) listener();
  }

  // The life of the page

  async begin(): Promise<void> {
    void this.adoptColours();
    try {
      const saved = await restore();
      if (saved) {
        this.set({
          history: historyOf(saved.document),
          selected: saved.document.gestures[0]?.id ?? null,
          storage: "saved",
        });
        if (saved.model) {
          const { file, ratio, source } = saved.model;
          await this.useFile(file, source, ratio, source === "" ? saved.document : null);
          this.set({ mode: "try" });
        }
        this.examineSoon();
      }
    } catch (problem) {
      this.set({ storage: { failed: reasonOf(problem) } });
    }
    this.set({ ready: true });
    void this.prepareTraining();
  }

  private async adoptColours(): Promise<void> {
    const { reply } = await this.live.call("colours", {});
    const sheet = new CSSStyleSheet();
    sheet.replaceSync(reply.css);
    document.adoptedStyleSheets = [...document.adoptedStyleSheets, sheet];
  }

  private saveSoon(): void {
    this.set({ storage: "saving" });
    clearTimeout(this.saveTimer);
    this.saveTimer = window.setTimeout(() => void this.saveNow(), saveDelay);
  }

  async saveNow(): Promise<void> {
    clearTimeout(this.saveTimer);
    const { model } = this.state;
    try {
      await save({
        document: this.document,
        model: model && { file: model.file, ratio: model.ratio, source: model.source },
      });
      this.set({ storage: "saved" });
    } catch (problem) {
      this.set({ storage: { failed: reasonOf(problem) } });
    }
  }

  // Notices

  notify(
    text: string,
    details: readonly string[] = [],
    undo = false,
    action?: Notice["action"],
  ): void {
    const notice: Notice = { id: doc.newId(), kind: "info", text, details, undo };
    this.addNotice(action ? { ...notice, action } : notice);
  }

  private complain(problem: unknown): void {
    if (problem instanceof Cancelled) return;
    const text = problem instanceof Error ? problem.message : String(problem);
    this.addNotice({ id: doc.newId(), kind: "problem", text, details: [], undo: false });
  }

  private addNotice(notice: Notice): void {
    const others = this.state.notices.filter((it) => it.text !== notice.text);
    this.set({ notices: [...others.slice(-1), notice] });
  }

  dismiss(id: string): void {
    this.set({ notices: this.state.notices.filter((it) => it.id !== id) });
  }

  // The document

  private change(now: doc.StudioDocument, selected = this.state.selected): void {
    this.moved(changed(this.state.history, now), selected);
  }

  private moved(history: History<doc.StudioDocument>, selected = this.state.selected): void {
    const there = history.now.gestures.some((it) => it.id === selected);
    const gone = new Set(this.document.gestures.map((it) => it.name));
    for (const { name } of history.now.gestures) gone.delete(name);
    // The others are examined again before long.
    const findings = this.state.findings.filter((it) => !it.gestures.some((name) => gone.has(name)));
    this.set({ history, selected: there ? selected : null, figures: null, findings });
    this.saveSoon();
    this.examineSoon();
  }

  undo(): void {
    this.moved(undone(this.state.history));
  }

  redo(): void {
    this.moved(redone(this.state.history));
  }

  select(id: string | null): void {
    this.set({ selected: id, mode: "teach", attempt: null });
  }

  setMode(mode: State["mode"]): void {
    this.set({ mode, attempt: null });
  }

  /** A stroke has been drawn: an example where gestures are taught, else one to be recognised. */
  async stroke(points: readonly Point[]): Promise<void> {
    if (this.state.mode === "try") return this.recognise(points);
    if (doc.isDot(points)) return this.notify("That was a dot. A gesture is a stroke.");
    const example = doc.exampleOf(points);
    const { selected } = this.state;
    if (selected === null) {
      const gesture = { id: doc.newId(), name: doc.freeName(this.document), examples: [example] };
      this.change(doc.addGesture(this.document, gesture), gesture.id);
    } else {
      this.change(doc.addExample(this.document, selected, example));
    }
  }

  /** What stands against the name, "" where it has been taken. */
  rename(id: string, name: string): string {
    const problem = doc.problemOfName(this.document, id, name);
    if (problem === "") this.change(doc.renameGesture(this.document, id, name));
    return problem;
  }

  removeExample(gesture: string, example: string): void {
    this.change(doc.removeExample(this.document, gesture, example));
  }

  removeGesture(id: string): void {
    const name = this.document.gestures.find((it) => it.id === id)?.name ?? "";
    this.change(doc.removeGesture(this.document, id));
    this.notify(`“${name}” is gone.`, [], true);
  }

  clear(): void {
    this.cancel();
    this.stopTesting();
    this.set({ model: null, attempt: null, tested: null, findings: [], mode: "teach" });
    this.change(doc.emptyDocument, null);
    this.notify("A clean sheet.", [], true);
  }

  async addStarterSet(): Promise<void> {
    try {
      const { reply } = await this.live.call("starterSet", { users: 2, repetitions: 4 });
      this.addTraces(reply.traces, "");
      const gestures = new Set(reply.traces.map((it) => it.gesture)).size;
      this.notify(
        `${reply.traces.length} drawn examples of ${gestures} gestures. Train, then try them.`,
        [],
        true,
      );
    } catch (problem) {
      this.complain(problem);
    }
  }

  /** The examples that they have become. */
  private addTraces(traces: readonly Trace[], unlabelled: string): string[] {
    const { document: now, added } = doc.addTraces(this.document, traces, unlabelled);
    this.change(now, this.state.selected ?? now.gestures[0]?.id ?? null);
    return added;
  }

  // The model

  private async useFile(
    file: Uint8Array,
    source: string,
    ratio: number | null,
    trainedOn: doc.StudioDocument | null,
  ): Promise<void> {
    const { reply } = await this.live.call("loadModel", { name: source || "model" }, { file });
    const model: Model = {
      file,
      description: reply,
      ratio: ratio ?? reply.acceptanceRatio,
      trainedOn,
      source,
    };
    this.set({ model, attempt: null, figures: null });
    void this.warmUp();
  }

  /** The first verdicts of an engine take longer than all others: nobody waits for these. */
  private async warmUp(): Promise<void> {
    const points: Point[] = [[0, 0], [40, 10], [60, 50]];
    for (let i = 0; i < warmUps; ++i) {
      await this.live.call("recognize", { points }).catch(() => null);
    }
  }

  /** Follows a long request; only one at a time. Null where it was cancelled or refused. */
  private async run<T>(kind: JobKind, work: (progress: (share: number) => void) => Promise<T>) {
    if (this.state.job) this.stopJob(this.state.job.kind);
    const job: Job = { kind, share: 0 };
    let mine = job;
    this.set({ job });
    try {
      return await work((share) => {
        if (this.state.job !== mine) return;
        mine = { kind, share };
        this.set({ job: mine });
      });
    } catch (problem) {
      this.complain(problem);
      return null;
    } finally {
      if (this.state.job === mine) this.set({ job: null });
    }
  }

  private stopJob(kind: JobKind): void {
    this.engines[kind].cancel();
    if (kind === "training") void this.prepareTraining();
  }

  /** The first training of an engine takes longer than all others: nobody waits for this one. */
  private async prepareTraining(): Promise<void> {
    try {
      const few = { gestures: ["caret", "check", "circle"], repetitions: 2 };
      const { reply } = await this.live.call("starterSet", few);
      await this.engines.training.call("train", { traces: reply.traces });
    } catch {
      // Whoever trains is told.
    }
  }

  async train(): Promise<void> {
    this.stopTesting();
    const trainedOn = this.document;
    const { traces } = doc.tracesOf(trainedOn);
    const answer = await this.run("training", (progress) =>
      this.engines.training.call("train", { traces }, { progress }),
    );
    if (!answer) return;
    try {
      await this.useFile(answer.file, "", null, trainedOn);
    } catch (problem) {
      return this.complain(problem);
    }
    this.set({ mode: "try", tested: null });
    this.saveSoon();
    void this.examine(true);
    if (doc.isTestable(trainedOn) && traces.length <= testedUnasked) void this.test();
  }

  cancel(): void {
    const kind = this.state.job?.kind;
    if (kind) this.stopJob(kind);
    this.set({ job: null });
    if (kind === "training") this.notify("Training stopped. Nothing has changed.");
  }

  async recognise(points: readonly Point[]): Promise<void> {
    if (!this.state.model) return;
    const mine = ++this.recognising;
    const start = performance.now();
    try {
      const { reply } = await this.live.call("recognize", { points: points as Point[] });
      if (mine !== this.recognising) return;
      const milliseconds = performance.now() - start;
      this.set({ mode: "try", attempt: { points, verdict: reply, milliseconds } });
    } catch (problem) {
      this.complain(problem);
    }
  }

  /** The stroke that was just recognised becomes an example. */
  keepAttempt(gesture: string): void {
    const { attempt } = this.state;
    const name = this.document.gestures.find((it) => it.id === gesture)?.name;
    if (!attempt || name === undefined) return;
    this.change(doc.addExample(this.document, gesture, doc.exampleOf(attempt.points)));
    this.notify(`Kept as an example of “${name}”. Train again to use it.`, [], true);
  }

  forgetAttempt(): void {
    ++this.recognising;
    if (this.state.attempt) this.set({ attempt: null });
  }

  /** Of several wishes in quick succession the last one counts. */
  async setRatio(ratio: number): Promise<void> {
    const waiting = this.wantedRatio !== null;
    this.wantedRatio = ratio;
    if (waiting) return;
    try {
      while (this.wantedRatio !== null && this.state.model) {
        const wanted: number = this.wantedRatio;
        const { reply, file } = await this.live.call("setStrictness", { ratio: wanted });
        if (this.state.model) {
          this.set({ model: { ...this.state.model, file, description: reply } });
        }
        if (this.wantedRatio === wanted) this.wantedRatio = null;
      }
      const { attempt } = this.state;
      if (attempt) await this.recognise(attempt.points);
      this.saveSoon();
    } catch (problem) {
      this.complain(problem);
    } finally {
      this.wantedRatio = null;
    }
  }

  // What may be wrong, and how good it is

  private examineSoon(): void {
    clearTimeout(this.examineTimer);
    this.examineTimer = window.setTimeout(() => {
      if (!this.state.job) void this.examine(false);
      else this.examineSoon();
    }, examineDelay);
  }

  async examine(thorough: boolean): Promise<void> {
    const of = this.document;
    const { traces, places } = doc.tracesOf(of);
    if (traces.length === 0) return this.set({ findings: [], places: [] });
    const ask = (progress?: (share: number) => void) =>
      this.engines.examining.call("diagnoseTraces", { traces, thorough }, progress ? { progress } : {});
    // The quick examination goes unnoticed.
    const answer = thorough
      ? await this.run("examining", ask)
      : await ask().catch(() => null);
    if (answer && this.document === of) this.set({ findings: answer.reply.findings, places });
  }

  /** Tests every example on a model of all others, beside whatever else is done. */
  async test(): Promise<void> {
    const of = this.document;
    const { traces, places } = doc.tracesOf(of);
    const since = performance.now();
    let mine: Testing = { done: 0, total: traces.length, since };
    this.set({ testing: mine });
    try {
      const { tests, evaluation } = await this.crew.test(traces, (done) => {
        if (this.state.testing !== mine) return;
        mine = { ...mine, done };
        this.set({ testing: mine });
      });
      this.set({ tested: { result: evaluation, tests, places, of } });
    } catch (problem) {
      this.complain(problem);
    } finally {
      if (this.state.testing === mine) this.set({ testing: null });
    }
  }

  stopTesting(): void {
    this.crew.cancel();
    this.set({ testing: null });
  }

  async showFigures(gesture: string): Promise<void> {
    try {
      const stored = gesture.replace(/\s/g, "_");
      const traces = doc.tracesOf(this.document).traces.filter((it) => it.gesture === gesture);
      const { reply } = await this.live.call("drawGesture", { gesture: stored, traces });
      this.set({ figures: { gesture, list: reply.figures } });
    } catch (problem) {
      this.complain(problem);
    }
  }

  hideFigures(): void {
    this.set({ figures: null });
  }

  // Files

  async importFile(name: string, file: Uint8Array): Promise<void> {
    if (looksLikeModel(name)) return this.importModel(name, file);
    try {
      const { reply } = await this.live.call("readTraces", { name }, { file });
      const added = this.addTraces(reply.traces, nameOfImported);
      let flipY = false;
      const turnOver = () => void this.redraw(added, name, file, (flipY = !flipY));
      this.notify(`${counted(added.length, "example")} from ${name}.`, reply.problems, true, {
        text: "Turn upside down",
        act: turnOver,
      });
    } catch (problem) {
      this.complain(problem);
    }
  }

  /** Examples of a file, whose y axis may point upwards: here it points down. */
  private async redraw(
    examples: readonly string[],
    name: string,
    file: Uint8Array,
    flipY: boolean,
  ): Promise<void> {
    try {
      const { reply } = await this.live.call("readTraces", { name, flipY }, { file });
      const points = new Map(examples.map((id, i) => [id, reply.traces[i]!.points]));
      this.change(doc.redrawn(this.document, points));
    } catch (problem) {
      this.complain(problem);
    }
  }

  async importModel(name: string, file: Uint8Array): Promise<void> {
    try {
      await this.useFile(file, name, null, null);
      this.stopTesting();
      this.set({ mode: "try", tested: null });
      this.saveSoon();
      const { reply } = await this.live.call("diagnoseModel", {});
      const details = reply.findings.map((it) => `${it.text} ${it.advice}`);
      this.notify(`The model of ${name} is at hand.`, details);
    } catch (problem) {
      this.complain(problem);
    }
  }

  async exportFile(what: "model" | "traces" | "scene" | "report"): Promise<void> {
    const { model } = this.state;
    const { traces } = doc.tracesOf(this.document);
    try {
      if (what === "model") {
        if (model) download("gestures.model", model.file, "text/plain");
      } else if (what === "traces") {
        const { file } = await this.live.call("writeTraces", { traces });
        download("gestures.jsonl", file, "application/x-ndjson");
      } else if (what === "scene") {
        const { file } = await this.live.call("writeScene", {});
        download("gestures.wrl", file, "model/vrml");
      } else {
        const { file } = await this.live.call("writeReport", { traces });
        download("gestures.html", file, "text/html");
      }
    } catch (problem) {
      this.complain(problem);
    }
  }
}

/** Traces have extensions of their own; everything else may be a model. */
export function looksLikeModel(name: string): boolean {
  return !/\.(jsonl|ndjson|json|csv|tsv|xml)$/i.test(name);
}

function download(name: string, bytes: Uint8Array, type: string): void {
  const link = document.createElement("a");
  const url = URL.createObjectURL(new Blob([bytes as Uint8Array<ArrayBuffer>], { type }));
  link.href = url;
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(url), 10_000);
}
