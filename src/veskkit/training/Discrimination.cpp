#include <veskkit/training/internal/Discrimination.h>

#include <veskkit/internal/Parallel.h>
#include <veskkit/training/internal/Emissions.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace Vesk::Kit::internal {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;

namespace {

constexpr int roundsBetweenSearches = 8;
constexpr std::size_t rivalsKept = 4;
constexpr double safeLead = 10.0;     ///< natural logarithm: 20,000 times likelier than any rival
constexpr double widthOfLeads = 2.0;  ///< the lead's change that changes its weight by e
constexpr double leastWeight = 0.01;
/// How far the logarithm of an emission moves for a model whose every trace counts in full.
constexpr double step = 2.0;
constexpr double fewestTraces = 50.0;  ///< a model of fewer moves as one of so many
constexpr double longestMove = 1.0;    ///< of a logarithm in one round
constexpr double reach = 22.0;         ///< degrees, of the Gaussian around an observed direction

/// A model, and what this round says of its emissions.
struct Contender {
    LeftRightHMM* model;
    std::size_t gesture;
    MatrixT<double> evidence;
};

/// A trace, and who may win it.
struct Contest {
    std::size_t gesture;
    const std::vector<int>* symbols;
    std::vector<std::size_t> own = {};     ///< contenders of its gesture
    std::vector<std::size_t> rivals = {};  ///< the likeliest others, as last searched
};

/// How a contest stands: the better ones of both sides with their best paths, and how much it
/// counts.
struct Standing {
    std::size_t own = 0;
    std::size_t rival = 0;
    double weight = 0.0;
    std::vector<int> ownPath = {};
    std::vector<int> rivalPath = {};
};

std::vector<int> bestPath(const LeftRightHMM& model, const std::vector<int>& symbols) {
    const int T = static_cast<int>(symbols.size());
    const MatrixT<double> found = HMM(model).viterbi(symbols, T);
    std::vector<int> path(symbols.size());
    for (int t = 0; t < T; ++t) path[static_cast<std::size_t>(t)] = static_cast<int>(found(1, t));
    return path;
}

/// The influence of an observed direction on every other one, 1 on itself.
MatrixT<double> influences(const std::vector<double>& codebook) {
    const int M = static_cast<int>(codebook.size());
    MatrixT<double> weights(M, M);
    for (int l = 0; l < M; ++l) {
        for (int k = 0; k < M; ++k) {
            double angle = std::abs(codebook[static_cast<std::size_t>(k)] -
                                    codebook[static_cast<std::size_t>(l)]);
            angle = std::min(angle, 360.0 - angle) / reach;
            weights(l, k) = std::exp(-0.5 * angle * angle);
        }
    }
    return weights;
}

class Discrimination {
public:
    Discrimination(std::vector<GestureModels>& gestures,
                   const std::vector<const GestureSamples*>& samples,
                   const std::vector<double>& codebook, const TrainingOptions& options)
        : settings(options), influence(influences(codebook)) {
        const int M = static_cast<int>(codebook.size());
        for (std::size_t g = 0; g < gestures.size(); ++g) {
            const std::size_t first = contenders.size();
            for (LeftRightHMM& model : gestures[g].fine) {
                contenders.push_back(
                    {&model, g, MatrixT<double>(static_cast<int>(model.numStates), M)});
            }
            for (const Sample& sample : samples[g]->samples) {
                Contest contest{g, &sample.symbols};
                for (std::size_t c = first; c < contenders.size(); ++c) contest.own.push_back(c);
                contests.push_back(std::move(contest));
            }
        }
        const auto share =
            static_cast<double>(contests.size()) / static_cast<double>(contenders.size());
        rate = step / std::max(share, fewestTraces);
    }

    void run() {
        for (int round = 0; round < settings.discrimination; ++round) {
            if (round % roundsBetweenSearches == 0) search();
            weigh();
            move();
        }
    }

private:
    /// The likeliest of some contenders, the first of equals; minus infinity where none is
    /// possible.
    std::pair<std::size_t, double> best(const std::vector<std::size_t>& among,
                                        const std::vector<int>& symbols) const {
        std::pair<std::size_t, double> found{among.front(),
                                             -std::numeric_limits<double>::infinity()};
        for (const std::size_t c : among) {
            const double likelihood = contenders[c].model->logLikelihood(symbols);
            if (likelihood > found.second) found = {c, likelihood};
        }
        return found;
    }

    void search() {
        parallelFor(contests.size(), settings.threads, [&](std::size_t i) {
            Contest& contest = contests[i];
            std::vector<std::pair<double, std::size_t>> all;
            for (std::size_t c = 0; c < contenders.size(); ++c) {
                if (contenders[c].gesture == contest.gesture) continue;
                // Sorted by falling likelihood, then by place.
                all.emplace_back(-contenders[c].model->logLikelihood(*contest.symbols), c);
            }
            const std::size_t kept = std::min(rivalsKept, all.size());
            std::partial_sort(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(kept),
                              all.end());
            contest.rivals.clear();
            for (std::size_t k = 0; k < kept; ++k) contest.rivals.push_back(all[k].second);
        });
    }

    void weigh() {
        standings.assign(contests.size(), {});
        parallelFor(contests.size(), settings.threads, [&](std::size_t i) {
            const Contest& contest = contests[i];
            const std::vector<int>& symbols = *contest.symbols;
            const auto [own, likelihood] = best(contest.own, symbols);
            const auto [rival, other] = best(contest.rivals, symbols);
            const double lead = likelihood - other;
            const double weight = 1.0 / (1.0 + std::exp((lead - safeLead) / widthOfLeads));
            // Written so that a lead that is no number counts nothing.
            if (!(weight >= leastWeight)) return;
            standings[i] = {own, rival, weight, bestPath(*contenders[own].model, symbols),
                            bestPath(*contenders[rival].model, symbols)};
        });
    }

    void note(std::size_t contender, const std::vector<int>& path, const std::vector<int>& symbols,
              double weight) {
        MatrixT<double>& evidence = contenders[contender].evidence;
        for (std::size_t t = 0; t < symbols.size(); ++t) evidence(path[t], symbols[t]) += weight;
    }

    void move() {
        for (std::size_t i = 0; i < contests.size(); ++i) {
            const Standing& standing = standings[i];
            if (standing.weight == 0.0) continue;
            const std::vector<int>& symbols = *contests[i].symbols;
            note(standing.own, standing.ownPath, symbols, standing.weight);
            note(standing.rival, standing.rivalPath, symbols, -standing.weight);
        }
        parallelFor(contenders.size(), settings.threads,
                    [&](std::size_t c) { move(contenders[c]); });
    }

    void move(Contender& contender) const {
        MatrixT<double>& b = contender.model->b;
        MatrixT<double>& evidence = contender.evidence;
        std::vector<double> total(static_cast<std::size_t>(b.cols));
        for (int i = 0; i < b.rows; ++i) {
            std::fill(total.begin(), total.end(), 0.0);
            for (int l = 0; l < b.cols; ++l) {
                if (evidence(i, l) == 0.0) continue;
                for (int k = 0; k < b.cols; ++k) {
                    total[static_cast<std::size_t>(k)] += evidence(i, l) * influence(l, k);
                }
                evidence(i, l) = 0.0;
            }
            for (int k = 0; k < b.cols; ++k) {
                b(i, k) *= std::exp(std::clamp(rate * total[static_cast<std::size_t>(k)],
                                               -longestMove, longestMove));
            }
        }
        floorEmissions(b, settings.emissionFloor);
    }

    const TrainingOptions& settings;
    MatrixT<double> influence;
    double rate;
    std::vector<Contender> contenders;
    std::vector<Contest> contests;
    std::vector<Standing> standings;
};

}  // namespace

void discriminate(std::vector<GestureModels>& gestures,
                  const std::vector<const GestureSamples*>& samples,
                  const std::vector<double>& codebook, const TrainingOptions& options) {
    if (gestures.size() < 2 || options.discrimination == 0) return;
    Discrimination(gestures, samples, codebook, options).run();
}

}  // namespace Vesk::Kit::internal
