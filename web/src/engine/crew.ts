import { EngineClient } from "./client";
import type { Evaluation, ExampleTest, Trace } from "./protocol";

/** Engines that test examples side by side: each with a model that was trained on all others. */
export class Crew {
  private members: readonly EngineClient[] = [];

  constructor(
    private readonly start: () => Worker,
    private readonly size: number,
  ) {}

  /** `told` how many are done. Gives up a test that is under way. */
  async test(
    traces: Trace[],
    told: (done: number) => void,
  ): Promise<{ tests: ExampleTest[]; evaluation: Evaluation }> {
    this.cancel();
    const count = Math.min(this.size, traces.length);
    const members = Array.from({ length: count }, () => new EngineClient(this.start));
    this.members = members;
    const tests: ExampleTest[] = Array(traces.length);
    let next = 0;
    let done = 0;
    const work = async (member: EngineClient) => {
      await member.call("holdTraces", { traces });
      while (next < traces.length) {
        const example = next++;
        tests[example] = (await member.call("testExample", { example })).reply;
        told(++done);
      }
    };
    try {
      await Promise.all(members.map(work));
      const { reply } = await members[0]!.call("summarizeTests", { tests });
      return { tests, evaluation: reply };
    } finally {
      for (const member of members) member.cancel();
    }
  }

  cancel(): void {
    for (const member of this.members) member.cancel();
    this.members = [];
  }
}

/** One processor is left to the page; more workers than these would take more memory than they are worth. */
export function crewSize(processors: number): number {
  return Math.min(Math.max(processors - 1, 1), 4);
}
