#include <veskkit/internal/Parallel.h>
#include <veskkit/recognition/internal/LogProbability.h>
#include <veskkit/training/internal/Discrimination.h>
#include <veskkit/training/internal/Emissions.h>
#include <veskkit/training/internal/Turns.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace Vesk::Kit::internal {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;

namespace {

constexpr std::size_t roundsBetweenSearches = 8;
constexpr std::size_t rivalsKept = 4;
constexpr std::size_t contestsAtOnce = 1024;  ///< in a search

// Leads are natural logarithms: how much likelier the right model is than any rival.
constexpr double safeLead = 10.0;
constexpr double widthOfLeads = 2.0;  ///< the lead's change that changes its weight by e
constexpr double settledLead = 30.0;  ///< beyond it, nothing is looked at until the next search
constexpr double farLead = 60.0;      ///< beyond it, nothing is looked at any more
constexpr double leastWeight = 0.01;

/// How far the logarithm of an emission moves for a model whose every trace counts in full.
constexpr double step = 1.0;
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
    std::vector<std::size_t> near = {};  ///< contenders that may come into reach
    bool settled = false;
    std::size_t own = 0;                       ///< contenders of its gesture, the first of them,
    std::vector<std::size_t> contenders = {};  ///< and the likeliest others, as last searched
};

/// What to ask some contenders.
struct Question {
    std::vector<int> symbols;
    const std::vector<std::size_t>* contenders;
};

/// How a contest stands: the better ones of both sides with their best paths, and how much it
/// counts.
struct Standing {
    double weight = 0.0;
    std::vector<int> symbols = {};
    std::size_t own = 0;
    std::size_t rival = 0;
    std::vector<int> ownPath = {};
    std::vector<int> rivalPath = {};
};

/// ln P of every sequence.
std::vector<double> logProbabilities(const LeftRightHMM& model,
                                     const std::vector<std::vector<int>>& sequences) {
    std::vector<double> logs = model.likelihoods(sequences);
    for (std::size_t n = 0; n < logs.size(); ++n) {
        logs[n] = logProbability(logs[n], model, sequences[n]);
    }
    return logs;
}

std::vector<int> bestPath(const LeftRightHMM& model, const std::vector<int>& symbols) {
    const int T = static_cast<int>(symbols.size());
    // A copy: what the library does not call const is for one thread at a time.
    const MatrixT<double> found = HMM(static_cast<const HMM&>(model)).viterbi(symbols, T);
    std::vector<int> path(symbols.size());
    for (int t = 0; t < T; ++t) path[static_cast<std::size_t>(t)] = static_cast<int>(found(1, t));
    return path;
}

class Discrimination {
public:
    Discrimination(std::vector<GestureModels>& gestures,
                   const std::vector<const GestureSamples*>& samples,
                   const std::vector<double>& codebook, const TrainingOptions& options)
        : settings(options),
          influence(circularGaussian(codebook, reach)),
          turns{turnedSymbols(codebook, Turn::Forwards), turnedSymbols(codebook, Turn::Backwards)} {
        const int M = static_cast<int>(codebook.size());
        for (std::size_t g = 0; g < gestures.size(); ++g) {
            for (LeftRightHMM& model : gestures[g].fine) {
                const int N = static_cast<int>(model.numStates);
                contenders.push_back({&model, g, MatrixT<double>(N, M)});
            }
            for (const Sample& sample : samples[g]->samples) {
                contests.push_back({g, &sample.symbols});
            }
        }
        std::vector<std::size_t> everyone(contenders.size());
        std::iota(everyone.begin(), everyone.end(), std::size_t{0});
        for (Contest& contest : contests) contest.near = everyone;
        const double share =
            static_cast<double>(contests.size()) / static_cast<double>(contenders.size());
        rate = step / std::max(share, fewestTraces);
    }

    void run(std::size_t rounds, const std::function<void()>& told) {
        for (std::size_t round = 0; round < rounds; ++round) {
            if (round % roundsBetweenSearches == 0) search();
            weigh(round % 3);
            move();
            told();
        }
    }

private:
    /// ln P of every question's symbols under each of its contenders.
    std::vector<std::vector<double>> answers(const std::vector<Question>& questions) const {
        struct Place {
            std::size_t question;
            std::size_t contender;
        };
        std::vector<std::vector<double>> logs(questions.size());
        std::vector<std::vector<Place>> places(contenders.size());
        for (std::size_t q = 0; q < questions.size(); ++q) {
            const std::vector<std::size_t>& asked = *questions[q].contenders;
            logs[q].resize(asked.size());
            for (std::size_t k = 0; k < asked.size(); ++k) places[asked[k]].push_back({q, k});
        }
        parallelFor(contenders.size(), settings.threads, [&](std::size_t c) {
            std::vector<std::vector<int>> sequences;
            sequences.reserve(places[c].size());
            for (const Place& place : places[c]) {
                sequences.push_back(questions[place.question].symbols);
            }
            const std::vector<double> found = logProbabilities(*contenders[c].model, sequences);
            for (std::size_t n = 0; n < found.size(); ++n) {
                logs[places[c][n].question][places[c][n].contender] = found[n];
            }
        });
        return logs;
    }

    /// Finds everybody's rivals, so many contests at a time that the table of all likelihoods
    /// stays small.
    void search() {
        for (std::size_t first = 0; first < contests.size(); first += contestsAtOnce) {
            const std::size_t count = std::min(contestsAtOnce, contests.size() - first);
            std::vector<Question> questions(count);
            for (std::size_t k = 0; k < count; ++k) {
                const Contest& contest = contests[first + k];
                questions[k] = {*contest.symbols, &contest.near};
            }
            const std::vector<std::vector<double>> logs = answers(questions);
            parallelFor(count, settings.threads,
                        [&](std::size_t k) { findRivals(contests[first + k], logs[k]); });
        }
    }

    void findRivals(Contest& contest, const std::vector<double>& logs) const {
        struct Found {
            std::size_t contender;
            double log;
        };
        std::vector<Found> found;
        found.reserve(logs.size());
        for (std::size_t k = 0; k < logs.size(); ++k) found.push_back({contest.near[k], logs[k]});
        const auto likelier = [](const Found& x, const Found& y) { return x.log > y.log; };
        const auto rivals = std::stable_partition(found.begin(), found.end(), [&](const Found& it) {
            return contenders[it.contender].gesture == contest.gesture;
        });
        std::stable_sort(rivals, found.end(), likelier);
        const double best = std::min_element(found.begin(), rivals, likelier)->log;

        contest.near.clear();
        contest.contenders.clear();
        contest.own = 0;
        std::size_t rival = 0;
        for (auto it = found.begin(); it != found.end(); ++it) {
            const double behind = best - it->log;
            if (behind > farLead) continue;
            contest.near.push_back(it->contender);
            if (behind > settledLead || (it >= rivals && ++rival > rivalsKept)) continue;
            contest.contenders.push_back(it->contender);
            if (it < rivals) ++contest.own;
        }
        contest.settled = rival == 0;
    }

    /// The symbols as drawn, or turned a little: models that tell these apart too rely less on
    /// the very traces that they have seen.
    std::vector<int> turned(const std::vector<int>& symbols, std::size_t turn) const {
        return turn == 0 ? symbols : replaced(symbols, turns[turn - 1]);
    }

    /// How every contest stands with its trace as drawn (turn 0) or turned (1, 2).
    void weigh(std::size_t turn) {
        std::vector<const Contest*> open;
        std::vector<Question> questions;
        for (const Contest& contest : contests) {
            if (contest.settled) continue;
            open.push_back(&contest);
            questions.push_back({turned(*contest.symbols, turn), &contest.contenders});
        }
        const std::vector<std::vector<double>> logs = answers(questions);
        standings.assign(open.size(), {});
        parallelFor(open.size(), settings.threads, [&](std::size_t k) {
            standings[k].symbols = std::move(questions[k].symbols);
            weigh(*open[k], logs[k], standings[k]);
        });
    }

    void weigh(const Contest& contest, const std::vector<double>& logs, Standing& standing) const {
        const auto rivals = logs.begin() + static_cast<std::ptrdiff_t>(contest.own);
        const auto own = std::max_element(logs.begin(), rivals);
        const auto rival = std::max_element(rivals, logs.end());
        const double lead = *own - *rival;
        const double weight = 1.0 / (1.0 + std::exp((lead - safeLead) / widthOfLeads));
        // Written so that a lead that is no number counts nothing.
        if (!(weight >= leastWeight)) return;
        standing.weight = weight;
        standing.own = contest.contenders[static_cast<std::size_t>(own - logs.begin())];
        standing.rival = contest.contenders[static_cast<std::size_t>(rival - logs.begin())];
        standing.ownPath = bestPath(*contenders[standing.own].model, standing.symbols);
        standing.rivalPath = bestPath(*contenders[standing.rival].model, standing.symbols);
    }

    void move() {
        for (const Standing& standing : standings) {
            if (standing.weight == 0.0) continue;
            MatrixT<double>& own = contenders[standing.own].evidence;
            MatrixT<double>& rival = contenders[standing.rival].evidence;
            for (std::size_t t = 0; t < standing.symbols.size(); ++t) {
                own(standing.ownPath[t], standing.symbols[t]) += standing.weight;
                rival(standing.rivalPath[t], standing.symbols[t]) -= standing.weight;
            }
        }
        parallelFor(contenders.size(), settings.threads,
                    [&](std::size_t c) { move(contenders[c]); });
    }

    void move(Contender& contender) const {
        MatrixT<double>& b = contender.model->b;
        MatrixT<double>& evidence = contender.evidence;
        const auto isNone = [](double value) { return value == 0.0; };
        if (std::all_of(evidence.data.begin(), evidence.data.end(), isNone)) return;
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
            double sum = 0.0;
            for (int k = 0; k < b.cols; ++k) {
                b(i, k) *= std::exp(std::clamp(rate * total[static_cast<std::size_t>(k)],
                                               -longestMove, longestMove));
                sum += b(i, k);
            }
            for (int k = 0; k < b.cols; ++k) b(i, k) /= sum;
        }
        floorEmissions(b, settings.emissionFloor);
    }

    const TrainingOptions& settings;
    MatrixT<double> influence;
    std::array<std::vector<int>, 2> turns;
    double rate;
    std::vector<Contender> contenders;
    std::vector<Contest> contests;
    std::vector<Standing> standings;
};

}  // namespace

void discriminate(std::vector<GestureModels>& gestures,
                  const std::vector<const GestureSamples*>& samples,
                  const std::vector<double>& codebook, const TrainingOptions& options,
                  const std::function<void()>& told) {
    const std::size_t rounds = discriminationRounds(gestures.size(), options);
    if (rounds == 0) return;
    Discrimination(gestures, samples, codebook, options).run(rounds, told);
}

}  // namespace Vesk::Kit::internal
