import type { Point, Trace } from "../engine/protocol";

// What the user has made: gestures with their examples. Never changed, only replaced, so that undo is
// a list of these.

export interface Example {
  readonly id: string;
  readonly user: string;
  readonly points: readonly Point[];
}

export interface Gesture {
  readonly id: string;
  readonly name: string;
  readonly examples: readonly Example[];
}

export interface StudioDocument {
  readonly gestures: readonly Gesture[];
}

export const emptyDocument: StudioDocument = { gestures: [] };

let last = 0;

/** Unlike any other of this page, and of pages before it. */
export function newId(): string {
  return `${Date.now().toString(36)}-${(++last).toString(36)}`;
}

export function exampleOf(points: readonly Point[], user = ""): Example {
  return { id: newId(), user, points };
}

/** Nothing can be learnt from a stroke that goes nowhere. */
export function isDot(points: readonly Point[]): boolean {
  return points.every(([x, y]) => x === points[0]![0] && y === points[0]![1]);
}

export function countExamples(document: StudioDocument): number {
  return document.gestures.reduce((sum, gesture) => sum + gesture.examples.length, 0);
}

/** Whether something is left to train on of every gesture when an example is left out. */
export function isTestable(document: StudioDocument): boolean {
  return document.gestures.length > 1 && document.gestures.every((it) => it.examples.length > 1);
}

/** "gesture-1", "gesture-2", ...: the first that is free. Names in a model have no blanks. */
export function freeName(document: StudioDocument): string {
  const taken = new Set(document.gestures.map((gesture) => gesture.name));
  let number = 1;
  while (taken.has(`gesture-${number}`)) ++number;
  return `gesture-${number}`;
}

export function addGesture(document: StudioDocument, gesture: Gesture): StudioDocument {
  return { gestures: [...document.gestures, gesture] };
}

function replaced(
  document: StudioDocument,
  id: string,
  change: (gesture: Gesture) => Gesture,
): StudioDocument {
  return { gestures: document.gestures.map((it) => (it.id === id ? change(it) : it)) };
}

export function addExample(
  document: StudioDocument,
  gesture: string,
  example: Example,
): StudioDocument {
  return replaced(document, gesture, (it) => ({ ...it, examples: [...it.examples, example] }));
}

export function removeExample(
  document: StudioDocument,
  gesture: string,
  example: string,
): StudioDocument {
  return replaced(document, gesture, (it) => ({
    ...it,
    examples: it.examples.filter((one) => one.id !== example),
  }));
}

export function removeGesture(document: StudioDocument, id: string): StudioDocument {
  return { gestures: document.gestures.filter((it) => it.id !== id) };
}

/** What stands against a name, in words; "" where nothing does. */
export function problemOfName(document: StudioDocument, id: string, name: string): string {
  if (name.trim() === "") return "A gesture needs a name.";
  if (/\p{Cc}/u.test(name)) return "A name may not hold control characters.";
  const other = document.gestures.find((it) => it.id !== id && it.name === name.trim());
  return other ? `There is a gesture named “${other.name}” already.` : "";
}

export function renameGesture(document: StudioDocument, id: string, name: string): StudioDocument {
  return replaced(document, id, (it) => ({ ...it, name: name.trim() }));
}

/** Adds traces to the gestures of their labels; those without go to one named `unlabelled`. `added` has
 * the examples that they have become, in their order. */
export function addTraces(
  document: StudioDocument,
  traces: readonly Trace[],
  unlabelled: string,
): { document: StudioDocument; added: string[] } {
  const byName = new Map(document.gestures.map((it) => [it.name, { ...it, examples: [...it.examples] }]));
  const added = traces.map((trace) => {
    const name = trace.gesture.trim() || unlabelled;
    const gesture = byName.get(name) ?? { id: newId(), name, examples: [] };
    const example = exampleOf(trace.points.map(([x, y]) => [x, y]), trace.user);
    gesture.examples.push(example);
    byName.set(name, gesture);
    return example.id;
  });
  return { document: { gestures: [...byName.values()] }, added };
}

/** The examples of these names drawn in another way; those that are gone stay gone. */
export function redrawn(
  document: StudioDocument,
  points: ReadonlyMap<string, readonly Point[]>,
): StudioDocument {
  const gestures = document.gestures.map((gesture) => ({
    ...gesture,
    examples: gesture.examples.map((it) => ({ ...it, points: points.get(it.id) ?? it.points })),
  }));
  return { gestures };
}

export interface Place {
  gesture: string;
  example: string;
}

/** The examples as the engine takes them, and where each of them stands. */
export function tracesOf(document: StudioDocument): { traces: Trace[]; places: Place[] } {
  const traces: Trace[] = [];
  const places: Place[] = [];
  for (const gesture of document.gestures) {
    for (const example of gesture.examples) {
      traces.push({
        gesture: gesture.name,
        user: example.user,
        points: example.points as Point[],
      });
      places.push({ gesture: gesture.id, example: example.id });
    }
  }
  return { traces, places };
}
