import type { TradeOffPoint } from "../engine/protocol";
import type { State, Studio } from "../studio";
import { percent, ratioText } from "./words";

const lowest = -3;
const highest = 5;

/** How much likelier than the threshold model a gesture has to be, and what that costs. */
export function Strictness({ studio, state }: { studio: Studio; state: State }) {
  const { model, tested, testing } = state;
  if (!model) return null;
  const ratio = model.description.acceptanceRatio;
  const decades = Math.min(Math.max(Math.log10(Math.max(ratio, 1e-9)), lowest), highest);
  const moved = Math.abs(Math.log(ratio / model.ratio)) > 0.01;
  const cost = tested && nearest(tested.result.tradeOff, ratio);
  return (
    <section class="strictness" aria-labelledby="strictness-heading">
      <header>
        <h2 id="strictness-heading">
          <label for="strictness">Strictness</label>
        </h2>
        {moved && (
          <button type="button" class="quiet" onClick={() => void studio.setRatio(model.ratio)}>
            Reset
          </button>
        )}
      </header>
      <input
        id="strictness"
        type="range"
        min={lowest}
        max={highest}
        step="0.25"
        value={decades}
        aria-valuetext={`${ratioText(ratio)} times as likely as anything else`}
        onInput={(event) => void studio.setRatio(10 ** Number(event.currentTarget.value))}
      />
      <div class="ends" aria-hidden="true">
        <span>takes almost anything</span>
        <span>only the sure ones</span>
      </div>
      <p class="faint">
        A gesture has to be {ratioText(ratio)} times as likely as any other movement.
      </p>
      {cost ? (
        <Cost cost={cost} />
      ) : (
        <p class="faint">
          {testing
            ? "What it costs is known once all examples are tested."
            : "Test on unseen examples to see what it costs."}
        </p>
      )}
    </section>
  );
}

function Cost({ cost }: { cost: TradeOffPoint }) {
  return (
    <dl class="cost" aria-live="polite">
      <div>
        <dt>recognised</dt>
        <dd>{percent(cost.correct)}</dd>
      </div>
      <div>
        <dt>rejected</dt>
        <dd>{percent(cost.rejected)}</dd>
      </div>
      <div>
        <dt>mistaken</dt>
        <dd>{percent(cost.wrong)}</dd>
      </div>
      {cost.unknownAccepted.total > 0 && (
        <div>
          <dt>strangers let in</dt>
          <dd>{percent(cost.unknownAccepted)}</dd>
        </div>
      )}
    </dl>
  );
}

function nearest(points: readonly TradeOffPoint[], ratio: number): TradeOffPoint | null {
  const away = (it: TradeOffPoint) => Math.abs(Math.log(it.ratio / ratio));
  return points.reduce<TradeOffPoint | null>(
    (best, it) => (best === null || away(it) < away(best) ? it : best),
    null,
  );
}
