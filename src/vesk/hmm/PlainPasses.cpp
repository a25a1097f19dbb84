#include <vesk/hmm/internal/PlainPasses.h>

#include <vesk/hmm/internal/Passes.h>

#include <cstddef>
#include <cstdint>

namespace Vesk::ML::internal {

MatrixT<double> forward(const Parameters& parameters, const int* o, int T) {
    return tableOf(parameters, o, T, [=](Passes& passes, auto alpha, auto finish) {
        return ForwardPass(passes, o, T, alpha, finish);
    });
}

MatrixT<double> backward(const Parameters& parameters, const int* o, int T) {
    return tableOf(parameters, o, T, [=](Passes& passes, auto beta, auto finish) {
        return BackwardPass(passes, o, T, 1.0, beta, finish);
    });
}

namespace {

/// alpha's last column, somewhere in `columns`.
const double* lastColumn(Passes& passes, const int* o, int T, const Columns& columns) {
    if (passes.transitions.isShort()) {
        complete(ShortForwardPass(passes, o, T, columns[0], 0, nullptr));
        return columns[0];
    }
    const auto at = alternating(columns);
    complete(ForwardPass(passes, o, T, at, asItIs));
    return at(T - 1);
}

}  // namespace

std::vector<ForwardResult> forwardResults(const std::vector<Parameters>& models,
                                          const Symbols& symbols, const int* o, int T) {
    Scratch scratch;
    std::vector<Passes> passes;
    std::vector<Columns> columns;
    passes.reserve(models.size());
    for (const Parameters& parameters : models) {
        passes.emplace_back(scratch, parameters, symbols);
        columns.push_back(passes.back().columns(2));
    }
    const auto passOver = [&](std::size_t k) {
        return ForwardPass(passes[k], o, T, alternating(columns[k]), asItIs);
    };
    std::vector<decltype(passOver(0))> together;
    together.reserve(models.size());
    for (std::size_t k = 0; k < models.size(); ++k) together.push_back(passOver(k));
    completeTogether(together);

    std::vector<ForwardResult> results;
    results.reserve(models.size());
    for (std::size_t k = 0; k < models.size(); ++k) {
        if (!passes[k].transitions.exact()) {
            passes[k].transitions.takeAllTerms();
            complete(passOver(k));
        }
        const int N = models[k].N;
        const double* last = alternating(columns[k])(T - 1);
        results.push_back({orderedSum(last, N), N > 0 ? last[N - 1] : 0.0});
    }
    return results;
}

double forwardLikelihood(const Parameters& parameters, const int* o, int T) {
    if (T < 1) return 0.0;
    Scratch scratch;
    return forwardLikelihood(parameters, Symbols(scratch, o, T), o, T);
}

double forwardLikelihood(const Parameters& parameters, const Symbols& symbols, const int* o,
                         int T) {
    Scratch scratch;
    Passes passes(scratch, parameters, symbols);
    const Columns columns = passes.columns(2);
    double sum = 0.0;
    passes.exactly([&] { sum = orderedSum(lastColumn(passes, o, T, columns), parameters.N); });
    return sum;
}

std::vector<double> forwardLikelihoods(const Parameters& parameters,
                                       const std::vector<std::vector<int>>& sequences) {
    std::vector<double> results(sequences.size(), 0.0);
    std::int64_t length = 0;
    for (const std::vector<int>& o : sequences) length += static_cast<std::int64_t>(o.size());
    if (length == 0) return results;
    Scratch scratch;
    Symbols symbols(scratch, parameters.b.cols, length);
    for (const std::vector<int>& o : sequences) symbols.add(o.data(), static_cast<int>(o.size()));
    Passes passes(scratch, parameters, symbols);
    std::vector<Columns> columns;
    for (std::size_t k = 0; k < passesTogether; ++k) columns.push_back(passes.columns(2));

    std::vector<std::size_t> together;
    const auto passOverAll = [&] {
        const auto passOver = [&](std::size_t k) {
            const std::vector<int>& o = sequences[together[k]];
            return ForwardPass(passes, o.data(), static_cast<int>(o.size()),
                               alternating(columns[k]), asItIs);
        };
        std::vector<decltype(passOver(0))> all;
        all.reserve(together.size());
        for (std::size_t k = 0; k < together.size(); ++k) all.push_back(passOver(k));
        completeTogether(all);
    };
    for (std::size_t next = 0; next < sequences.size();) {
        for (together.clear(); next < sequences.size() && together.size() < passesTogether;
             ++next) {
            if (!sequences[next].empty()) together.push_back(next);
        }
        passes.exactly(passOverAll);
        for (std::size_t k = 0; k < together.size(); ++k) {
            const auto T = static_cast<int>(sequences[together[k]].size());
            results[together[k]] = orderedSum(alternating(columns[k])(T - 1), parameters.N);
        }
    }
    return results;
}

double backwardLikelihood(const Parameters& parameters, const int* o, int T) {
    if (T < 1) return 0.0;
    Scratch scratch;
    const Symbols symbols(scratch, o, T);
    Passes passes(scratch, parameters, symbols);
    const Columns columns = passes.columns(2);
    passes.exactly(
        [&] { complete(BackwardPass(passes, o, T, 1.0, alternating(columns), asItIs)); });
    const double* beta = alternating(columns)(0);
    const double* e = passes.emissions[o[0]];
    double sum = 0.0;
    for (int i = 0; i < parameters.N; ++i) sum += parameters.pi[i] * e[i] * beta[i];
    return sum;
}

}  // namespace Vesk::ML::internal
