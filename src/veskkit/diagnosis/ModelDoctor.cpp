#include <veskkit/diagnosis/ModelDoctor.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>

#include <vesk/leftright/LeftRightHMM.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;
using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

namespace {

/// What six significant digits a value leave of a sum of 1, and some more.
constexpr double sumTolerance = 2e-5;
/// Two directions, in degrees, that six digits do not keep apart.
constexpr double sameDirection = 1e-3;
/// R = p K / (1 - p): a gesture that is likelier than the threshold model has to be able to win,
/// and p / (1 - p) has to keep a digit where p has six.
constexpr double leastRatio = 1.0;
constexpr double largestOdds = 1e5;

constexpr std::size_t never = std::numeric_limits<std::size_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

using States = std::vector<std::size_t>;

/// Per state the fewest transitions to it from those where `start` holds; `never` for none.
template <typename Step>
States distances(std::size_t N, const std::vector<bool>& start, const Step& leads) {
    States result(N, never);
    States reached;
    for (std::size_t i = 0; i < N; ++i) {
        if (!start[i]) continue;
        result[i] = 0;
        reached.push_back(i);
    }
    for (std::size_t next = 0; next < reached.size(); ++next) {
        const std::size_t i = reached[next];
        for (std::size_t j = 0; j < N; ++j) {
            if (result[j] != never || !leads(i, j)) continue;
            result[j] = result[i] + 1;
            reached.push_back(j);
        }
    }
    return result;
}

double a(const HMM& model, std::size_t i, std::size_t j) {
    return model.a.data[i * model.numStates + j];
}

double b(const HMM& model, std::size_t i, std::size_t k) {
    return model.b.data[i * model.vocabSize + k];
}

/// How the states of a model hang together.
struct Reach {
    std::size_t shortest;  ///< symbols of the shortest sequence that ends in the last state
    States idle;           ///< states on no way from a first state to the last one
};

Reach reachOf(const HMM& model) {
    const std::size_t N = model.numStates;
    std::vector<bool> first(N);
    for (std::size_t i = 0; i < N; ++i) first[i] = model.pi[i] > 0.0;
    std::vector<bool> last(N);
    last[N - 1] = true;
    const States there =
        distances(N, first, [&](std::size_t i, std::size_t j) { return a(model, i, j) > 0.0; });
    const States back =
        distances(N, last, [&](std::size_t i, std::size_t j) { return a(model, j, i) > 0.0; });
    Reach reach{there[N - 1] == never ? never : there[N - 1] + 1, {}};
    for (std::size_t i = 0; i < N; ++i) {
        if (there[i] == never || back[i] == never) reach.idle.push_back(i);
    }
    return reach;
}

/// The sums that should be 1, as far as they are not.
struct Rows {
    std::size_t count = 0;  ///< rows in all
    std::size_t wrong = 0;  ///< not 1
    double worst = 1.0;     ///< the one furthest from 1

    void add(double sum) {
        ++count;
        if (std::abs(sum - 1.0) <= sumTolerance) return;
        ++wrong;
        if (std::abs(sum - 1.0) > std::abs(worst - 1.0)) worst = sum;
    }
};

template <typename Value>
double sumOf(std::size_t count, const Value& value) {
    double sum = 0.0;
    for (std::size_t k = 0; k < count; ++k) sum += value(k);
    return sum;
}

Rows emissionRows(const HMM& model, bool fromOdds) {
    Rows rows;
    for (std::size_t i = 0; i < model.numStates; ++i) {
        rows.add(sumOf(model.vocabSize, [&](std::size_t k) {
            const double value = b(model, i, k);
            return fromOdds ? value / (1.0 + value) : value;
        }));
    }
    return rows;
}

/// A single first state of less than 1 is meant: a gesture whose probability counts for less has to
/// be the surer.
bool isPrior(const std::vector<double>& pi) {
    const auto isNone = [](double value) { return value == 0.0; };
    return !pi.empty() && pi.front() > 0.0 && pi.front() < 1.0 &&
           std::all_of(pi.begin() + 1, pi.end(), isNone);
}

Rows transitionRows(const HMM& model) {
    Rows rows;
    const double first = sumOf(model.numStates, [&](std::size_t i) { return model.pi[i]; });
    rows.add(isPrior(model.pi) ? 1.0 : first);
    for (std::size_t i = 0; i < model.numStates; ++i)
        rows.add(sumOf(model.numStates, [&](std::size_t j) { return a(model, i, j); }));
    return rows;
}

std::size_t likeliestSymbol(const HMM& model, std::size_t state) {
    const auto row = model.b.data.begin() + static_cast<std::ptrdiff_t>(state * model.vocabSize);
    return static_cast<std::size_t>(
        std::max_element(row, row + static_cast<std::ptrdiff_t>(model.vocabSize)) - row);
}

VectorT<int> symbolsAlong(const HMM& model, const States& path) {
    VectorT<int> symbols;
    for (const std::size_t state : path)
        symbols.push_back(static_cast<int>(likeliestSymbol(model, state)));
    return symbols;
}

/// Equally long in every state.
States evenPath(const HMM& model, std::size_t T) {
    States path;
    for (std::size_t t = 0; t < T; ++t) path.push_back(t * model.numStates / T);
    return path;
}

/// The path of T states to the last one along which the likeliest symbols are likeliest of all.
States bestPath(const HMM& model, std::size_t T) {
    const std::size_t N = model.numStates;
    std::vector<double> best(N);
    std::vector<double> emission(N);
    for (std::size_t i = 0; i < N; ++i) {
        emission[i] = std::log(b(model, i, likeliestSymbol(model, i)));
        best[i] = std::log(model.pi[i]) + emission[i];
    }
    std::vector<States> from(T, States(N));
    for (std::size_t t = 1; t < T; ++t) {
        std::vector<double> next(N, -infinity);
        for (std::size_t j = 0; j < N; ++j) {
            for (std::size_t i = 0; i < N; ++i) {
                const double value = best[i] + std::log(a(model, i, j)) + emission[j];
                if (!(value > next[j])) continue;
                next[j] = value;
                from[t][j] = i;
            }
        }
        best = std::move(next);
    }
    States path(T, N - 1);
    for (std::size_t t = T - 1; t > 0; --t) path[t - 1] = from[t][path[t]];
    return path;
}

class ModelExamination {
public:
    ModelExamination(const RecognitionModelHMM& examined, std::size_t symbols)
        : model(examined), T(std::max<std::size_t>(symbols, 2)) {}

    std::vector<Finding> examine() {
        examineQuantizer();
        examineWeight();
        examineParameters("threshold model", {}, *model.recognitionHMM);
        std::map<std::string, std::vector<const HMM*>> gestures;
        for (const HMM* gesture : model.gestures) {
            gestures[gesture->name].push_back(gesture);
            examineParameters("gesture " + quoted(gesture->name), {gesture->name}, *gesture);
        }
        for (const auto& [name, models] : gestures) examineGesture(name, models);
        sortFindings(findings);
        return std::move(findings);
    }

private:
    Finding& add(FindingKind kind, Weight weight, std::string text, std::string advice) {
        Finding finding{kind, weight};
        finding.text = std::move(text);
        finding.advice = std::move(advice);
        findings.push_back(std::move(finding));
        return findings.back();
    }

    void examineQuantizer() {
        const std::vector<double>& codebook = model.codebook;
        for (std::size_t k = 0; k < codebook.size(); ++k) {
            for (std::size_t l = 0; l < k; ++l) {
                const double apart = std::abs(std::remainder(codebook[k] - codebook[l], 360.0));
                if (apart > sameDirection) continue;
                add(FindingKind::DoubledDirections, Weight::Warning,
                    joined("codebook: found ", codebook[k], " degrees as directions ", l, " and ",
                           k, ", expected every direction once"),
                    "Train with another codebook: the second symbol never occurs.");
                break;
            }
        }
        if (model.rotationAllowed) {
            add(FindingKind::RotationAllowed, Weight::Advice,
                "quantiser: found rotation allowed, expected it off for upright gestures",
                "Switch it off unless gestures are turned on purpose: it costs much of the "
                "accuracy.");
        }
    }

    void examineWeight() {
        const double p = model.modelTransitionProb;
        const auto K = static_cast<double>(model.gestures.size());
        const double ratio = p * K / (1.0 - p);
        if (p == 1.0) {
            addWeight(p, 1.0,
                      "Use less than 1: exactly 1 is far more lenient than 0.9, since gestures "
                      "then weigh as much as the threshold model.");
        } else if (ratio < leastRatio) {
            addWeight(p, leastRatio / (leastRatio + K),
                      "Raise it: what is less likely than the threshold model would be accepted.");
        } else if (p / (1.0 - p) > largestOdds) {
            addWeight(p, largestOdds / (1.0 + largestOdds),
                      "Lower it: hardly anything will be accepted, and the file's six digits do "
                      "not hold such a value.");
        }
    }

    void addWeight(double found, double expected, std::string advice) {
        Finding& finding =
            add(FindingKind::ThresholdWeight, Weight::Warning,
                joined("threshold model: found the transition probability ", found, ", expected ",
                       found < expected ? "at least " : "less than ", expected),
                std::move(advice));
        finding.found = found;
        finding.expected = expected;
    }

    void examineParameters(const std::string& which, const std::vector<std::string>& gestures,
                           const HMM& one) {
        const auto tell = [&](FindingKind kind, Weight weight, const Rows& rows, const char* what,
                              std::string advice) {
            Finding& finding = add(kind, weight,
                                   joined(which, ": found ", rows.wrong, " of ", rows.count, ' ',
                                          what, " that do not sum to 1, the worst to ", rows.worst),
                                   std::move(advice));
            finding.gestures = gestures;
            finding.found = rows.worst;
            finding.expected = 1.0;
        };
        const Rows transitions = transitionRows(one);
        if (transitions.wrong > 0) {
            tell(FindingKind::ImproperRows, Weight::Warning, transitions, "rows of pi and a",
                 "Normalise them: likelihoods of models with other sums cannot be compared.");
        }
        const Rows emissions = emissionRows(one, false);
        if (emissions.wrong == 0) return;
        const Rows odds = emissionRows(one, true);
        if (odds.wrong * 2 <= odds.count) {
            tell(FindingKind::OddsForProbabilities, Weight::Serious, emissions, "rows of b",
                 "Replace every b by b / (1 + b): these are odds, as the library's training leaves "
                 "them, and with odds nearly everything is rejected.");
        } else {
            tell(FindingKind::ImproperRows, Weight::Warning, emissions, "rows of b",
                 "Normalise them: likelihoods of models with other sums cannot be compared.");
        }
    }

    /// All models that carry one name.
    void examineGesture(const std::string& name, const std::vector<const HMM*>& models) {
        const std::string which = "gesture " + quoted(name);
        std::size_t zeros = 0;
        std::size_t values = 0;
        std::vector<const HMM*> able;
        for (const HMM* one : models) {
            values += one->b.data.size();
            zeros +=
                static_cast<std::size_t>(std::count(one->b.data.begin(), one->b.data.end(), 0.0));
            if (examineReach(which, name, *one)) able.push_back(one);
        }
        if (zeros > 0) {
            Finding& finding =
                add(FindingKind::ZeroEmissions, Weight::Warning,
                    joined(which, ": found ", zeros, " of ", values, " emissions 0, expected none"),
                    "Raise them to 0.001, say, and normalise: a direction not seen in training "
                    "rules the gesture out.");
            finding.gestures = {name};
            finding.found = static_cast<double>(zeros);
            finding.expected = 0.0;
        }
        if (!able.empty()) examineVictory(which, name, able);
    }

    /// Whether T symbols are enough to get to the last state.
    bool examineReach(const std::string& which, const std::string& name, const HMM& one) {
        const Reach reach = reachOf(one);
        if (reach.shortest > T) {
            const bool possible = reach.shortest != never;
            Finding& finding = add(
                FindingKind::UnreachableEnd, Weight::Serious,
                possible
                    ? joined(which, ": found sequences of ", T, " symbols, expected at least ",
                             reach.shortest, ", the fewest that reach the last of ", one.numStates,
                             " states")
                    : joined(which, ": found no way to the last of ", one.numStates, " states"),
                possible ? "Train with fewer states or resample to more points: a gesture whose "
                           "end is not reached never wins."
                         : "Train it again: a gesture whose end is not reached never wins.");
            finding.gestures = {name};
            if (possible) {
                finding.found = static_cast<double>(T);
                finding.expected = static_cast<double>(reach.shortest);
            }
            return false;
        }
        if (!reach.idle.empty()) {
            Finding& finding =
                add(FindingKind::IdleStates, Weight::Warning,
                    joined(which, ": found ", reach.idle.size(), " of ", one.numStates,
                           " states that cannot be reached or do not lead to the last one, the "
                           "first is ",
                           reach.idle.front()),
                    "Train it again with fewer states or a smaller largest jump.");
            finding.gestures = {name};
            finding.found = static_cast<double>(reach.idle.size());
            finding.expected = 0.0;
        }
        return true;
    }

    /// Whether the gesture wins at least one of the sequences that its own models like best.
    void examineVictory(const std::string& which, const std::string& name,
                        const std::vector<const HMM*>& models) {
        std::string instead;
        for (const HMM* one : models) {
            for (const States& path : {evenPath(*one, T), bestPath(*one, T)}) {
                const Vesk::ML::Recognition verdict = model.evaluate(symbolsAlong(*one, path));
                if (verdict.winner < 0) continue;
                const HMM* winner = model.gestures[static_cast<std::size_t>(verdict.winner)];
                if (winner->name == name) return;
                instead = winner->name;
            }
        }
        Finding& finding = add(
            FindingKind::NeverWins, Weight::Serious,
            joined(which, ": found the sequences that its own models like best ",
                   instead.empty() ? "rejected" : "taken for " + internal::quoted(instead)),
            instead.empty()
                ? "Lower the transition probability or train it again: the threshold model beats "
                  "it everywhere."
                : "Train the two again from traces that differ, or drop one: the other is as "
                  "likely everywhere and comes first.");
        finding.gestures = {name};
        if (!instead.empty()) finding.gestures.push_back(instead);
    }

    const RecognitionModelHMM& model;
    std::size_t T;
    std::vector<Finding> findings;
};

}  // namespace

Finding unreadableModel(const std::string& problem) {
    Finding finding{FindingKind::UnsoundModel, Weight::Serious};
    finding.text = problem;
    finding.advice =
        "Train it again: it cannot be relied on, and readers that do not check take a part of it "
        "without a word.";
    return finding;
}

std::vector<Finding> diagnoseModel(const RecognitionModelHMM& model, std::size_t symbols) {
    std::vector<Finding> findings;
    for (const std::string& problem : problemsOf(model))
        findings.push_back(unreadableModel("model: " + problem));
    return findings.empty() ? ModelExamination(model, symbols).examine() : findings;
}

}  // namespace Vesk::Kit
