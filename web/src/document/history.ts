/** A value with its past and, after an undo, its future. */
export interface History<T> {
  readonly now: T;
  readonly past: readonly T[];
  readonly future: readonly T[];
}

const longestPast = 200;

export function historyOf<T>(now: T): History<T> {
  return { now, past: [], future: [] };
}

export function changed<T>(history: History<T>, now: T): History<T> {
  if (now === history.now) return history;
  return { now, past: [...history.past, history.now].slice(-longestPast), future: [] };
}

export function undone<T>(history: History<T>): History<T> {
  const before = history.past.at(-1);
  if (before === undefined) return history;
  return {
    now: before,
    past: history.past.slice(0, -1),
    future: [history.now, ...history.future],
  };
}

export function redone<T>(history: History<T>): History<T> {
  const after = history.future[0];
  if (after === undefined) return history;
  return { now: after, past: [...history.past, history.now], future: history.future.slice(1) };
}
