// What the engine is asked and what it answers (web/engine has the requests).

export type Point = [x: number, y: number];

export interface Trace {
  gesture: string;
  user: string;
  points: Point[];
}

export interface Finding {
  kind: string;
  weight: "serious" | "warning" | "advice";
  gestures: string[];
  text: string;
  advice: string;
  /** Places in the list of traces. */
  traces: number[];
}

export interface Share {
  count: number;
  total: number;
}

export interface Score {
  gesture: string;
  logProbability: number | null;
  /** ln(probability / threshold). */
  margin: number | null;
}

export interface StatePath {
  gesture: string;
  points: Point[];
  states: number[];
  count: number;
}

export interface Verdict {
  gesture: string;
  rejection: "" | "too short" | "zero probability" | "threshold" | "last state";
  margin: number | null;
  scores: Score[];
  symbols: number[];
  answers: BoundedAnswer[];
  path: StatePath | null;
}

export interface Description {
  name: string;
  acceptanceRatio: number;
  codebook: number[];
  gestures: { name: string; models: unknown[] }[];
  version: string;
}

export interface TradeOffPoint {
  ratio: number;
  correct: Share;
  wrong: Share;
  rejected: Share;
  unknownAccepted: Share;
}

interface BoundedAnswer {
  logRatio: number | null;
  gesture: string;
}

/** What models that never saw an example make of it. */
export interface ExampleTest {
  expected: string;
  answer: string;
  rejection: Verdict["rejection"];
  answers: BoundedAnswer[];
  asUnknown: string | null;
  answersAsUnknown: BoundedAnswer[];
}

export interface Evaluation {
  correct: Share;
  wrong: Share;
  rejected: Share;
  unknownAccepted: Share;
  /** An <svg> element. */
  confusion: string;
  tradeOff: TradeOffPoint[];
}

export interface Figure {
  svg: string;
  caption: string;
}

type Nothing = Record<string, never>;

/** Per request: its arguments and its reply. */
export interface Requests {
  starterSet: [
    { users?: number; repetitions?: number; seed?: number; gestures?: string[] },
    { traces: Trace[]; known: string[] },
  ];
  readTraces: [{ name: string; flipY?: boolean }, { traces: Trace[]; problems: string[] }];
  writeTraces: [{ traces: Trace[] }, Nothing];
  diagnoseTraces: [{ traces: Trace[]; thorough: boolean }, { findings: Finding[] }];
  train: [
    { traces: Trace[]; name?: string },
    {
      gestures: { gesture: string; label: string; models: number }[];
      warnings: string[];
      acceptanceRatio: number;
    },
  ];
  loadModel: [{ name: string }, Description];
  describe: [Nothing, Description];
  setStrictness: [{ ratio: number }, Description];
  recognize: [{ points: Point[]; path?: boolean }, Verdict];
  diagnoseModel: [Nothing, { findings: Finding[] }];
  drawGesture: [{ gesture: string; traces: Trace[] }, { figures: Figure[] }];
  writeScene: [Nothing, Nothing];
  writeReport: [{ traces: Trace[] }, Nothing];
  holdTraces: [{ traces: Trace[] }, Nothing];
  testExample: [{ example: number }, ExampleTest];
  summarizeTests: [{ tests: ExampleTest[] }, Evaluation];
  colours: [Nothing, { css: string }];
}

export type RequestName = keyof Requests;
export type Arguments<R extends RequestName> = Requests[R][0];
export interface Answer<R extends RequestName> {
  reply: Requests[R][1];
  file: Uint8Array;
}

export interface ToWorker {
  id: number;
  request: RequestName;
  arguments: unknown;
  file: Uint8Array | null;
}

export type FromWorker =
  | { id: number; share: number }
  | { id: number; reply: unknown; file: Uint8Array }
  | { id: number; error: string };
