#ifndef VESK_HMM_INTERNAL_PASSES_H
#define VESK_HMM_INTERNAL_PASSES_H

#include <vesk/hmm/internal/Columns.h>
#include <vesk/hmm/internal/Emissions.h>
#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Symbols.h>
#include <vesk/hmm/internal/Transitions.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

namespace Vesk::ML::internal {

/// A model laid out for passes over sequences of its symbols.
class Passes {
public:
    /// Borrows the parameters and the symbols.
    Passes(Scratch& tables, const Parameters& parameters, const Symbols& symbols)
        : N(parameters.N),
          P(padded(parameters.N)),
          transitions(tables, parameters.a),
          emissions(tables, parameters.b, symbols, transitions.margin()),
          pi(parameters.pi),
          scratch(tables) {}

    const int N;
    const int P;
    Transitions transitions;
    Emissions emissions;

    /// Of a table of that many times. std::bad_alloc where its positions do not fit 32 bits.
    Columns columns(int count) const {
        if (std::int64_t{N} * count > std::numeric_limits<std::int32_t>::max()) {
            throw std::bad_alloc();
        }
        return {scratch, static_cast<std::size_t>(count), N, transitions.margin()};
    }

    /// to[i] = pi[i] * e[i].
    void firstColumn(const double* e, double* to) const {
        for (int i = 0; i < N; ++i) to[i] = pi[i] * e[i];
    }

    /// Runs passes that leave terms out, and once more with all terms where those would have
    /// mattered.
    template <typename Run>
    void exactly(Run run) {
        run();
        if (transitions.exact()) return;
        transitions.takeAllTerms();
        run();
    }

    const double* const pi;
    Scratch& scratch;
};

/// A forward pass (Rabiner 1989, eqs. 19, 20), a column of alpha at each step. alpha(t) is where
/// column t goes; finish(t, column) is called on it before the next is made from it.
template <typename At, typename Finish>
class ForwardPass {
public:
    ForwardPass(Passes& model, const int* sequence, int length, At place, Finish whenMade)
        : passes(&model), o(sequence), T(length), alpha(place), finish(whenMade) {}

    bool done() const { return t >= T; }

    void step() {
        double* next = alpha(t);
        const double* e = passes->emissions[o[t]];
        if (t == 0) {
            passes->firstColumn(e, next);
        } else {
            passes->transitions.forward(column, e, next);
        }
        finish(t, next);
        column = next;
        if (++t == T) passes->transitions.noteLast(column);
    }

private:
    Passes* passes;
    const int* o;
    int T;
    At alpha;
    Finish finish;
    int t = 0;
    const double* column = nullptr;
};

/// A backward pass (eq. 25) in the same way, from a last column of one value.
template <typename At, typename Finish>
class BackwardPass {
public:
    BackwardPass(Passes& model, const int* sequence, int length, double value, At place,
                 Finish whenMade)
        : passes(&model), o(sequence), last(value), beta(place), finish(whenMade), t(length - 1) {}

    bool done() const { return t < 0; }

    void step() {
        double* next = beta(t);
        if (column == nullptr) {
            std::fill_n(next, passes->N, last);
        } else {
            passes->transitions.backward(column, passes->emissions[o[t + 1]], next);
        }
        finish(t, next);
        column = next;
        if (--t < 0) passes->transitions.noteLast(column);
    }

private:
    Passes* passes;
    const int* o;
    double last;
    At beta;
    Finish finish;
    int t;
    const double* column = nullptr;
};

template <typename Pass>
void complete(Pass pass) {
    while (!pass.done()) pass.step();
}

/// A forward pass in `isShort` steps, whose columns stay in registers from one step to the next,
/// over T >= 1 times. Column t goes to column + pitch * t, and its sum, by which it is divided, to
/// scale[t] unless `scale` is null.
class ShortForwardPass {
public:
    ShortForwardPass(Passes& model, const int* sequence, int length, double* first,
                     std::ptrdiff_t apart, double* factors)
        : passes(&model), o(sequence), T(length), column(first), pitch(apart), scale(factors) {
        model.firstColumn(model.emissions[o[0]], column);
        if (scale != nullptr) {
            scale[0] = Vesk::Kernels::kernels().normalise(column, model.N, model.P);
        }
    }

    bool done() const { return t >= T; }

    /// Some steps, few, so that what waits for their results can begin while the next ones are
    /// under way. Returns how many.
    int step() {
        constexpr int mostSteps = 4;
        const double* e[mostSteps];
        const int steps = std::min(mostSteps, T - t);
        for (int u = 0; u < steps; ++u) e[u] = passes->emissions[o[t + u]];
        passes->transitions.forwardShort({e, column, pitch, scale == nullptr ? nullptr : scale + t},
                                         steps);
        column += pitch * steps;
        t += steps;
        if (t == T) passes->transitions.noteLast(column);
        return steps;
    }

private:
    Passes* passes;
    const int* o;
    int T;
    double* column;
    std::ptrdiff_t pitch;
    double* scale;
    int t = 1;
};

/// Takes passes to their ends in step. Each step waits for the one before it; the processor goes
/// on with another pass meanwhile.
template <typename Pass>
void completeTogether(std::vector<Pass>& passes) {
    for (bool moved = true; moved;) {
        moved = false;
        for (Pass& pass : passes) {
            if (pass.done()) continue;
            pass.step();
            moved = true;
        }
    }
}

/// How many passes are worth taking together.
inline constexpr std::size_t passesTogether = 4;

/// Where a pass that keeps every column puts column t, and where one that keeps two does.
inline auto all(const Columns& table) {
    return [table](int t) { return table[t]; };
}
inline auto alternating(const Columns& two) {
    return [two](int t) { return two[t & 1]; };
}

/// For passes whose columns need no finish.
inline constexpr auto asItIs = [](int, const double*) {};

/// The columns that a pass makes as an N x T table; N x 0 for T < 1. makePass(passes, at, finish)
/// is the pass.
template <typename MakePass>
MatrixT<double> tableOf(const Parameters& parameters, const int* o, int T, MakePass makePass) {
    MatrixT<double> table = Vesk::Math::internal::zeros(parameters.N, std::max(T, 0));
    if (T < 1) return table;
    Scratch scratch;
    const Symbols symbols(scratch, o, T);
    Passes passes(scratch, parameters, symbols);
    const Columns columns = passes.columns(2);
    const auto storeColumn = [&table](int t, const double* column) {
        double* to = table.data.data() + t;
        for (int i = 0; i < table.rows; ++i, to += table.cols) *to = column[i];
    };
    passes.exactly([&] { complete(makePass(passes, alternating(columns), storeColumn)); });
    return table;
}

}  // namespace Vesk::ML::internal

#endif
