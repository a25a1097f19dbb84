#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>

#include <vesk/leftright/LeftRightHMM.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;
using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

namespace {

/// Training can leave a self-transition one rounding error above 1, which composition spreads over
/// the other states as something just below 0.
constexpr double leastTransition = -1e-9;

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

std::string problemOfName(const std::string& what, const std::string& name) {
    if (isStorableName(name)) return "";
    return joined("found the name ", quoted(name), " of ", what,
                  ", expected one word without blanks");
}

std::string problemOfVector(const std::string& name, const std::vector<double>& values,
                            std::size_t count) {
    if (values.size() != count) {
        return joined("found ", values.size(), " values in ", name, ", expected ", count);
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (std::isfinite(values[i]) && values[i] >= 0.0) continue;
        return joined("found ", name, '(', i, ") = ", values[i],
                      ", expected a finite number of at least 0");
    }
    return "";
}

/// A table of rows x cols values that are finite and not below `least`.
std::string problemOfTable(const std::string& name, const MatrixT<double>& table, unsigned int rows,
                           unsigned int cols, double least = 0.0) {
    const std::size_t count = static_cast<std::size_t>(rows) * cols;
    if (table.rows < 0 || static_cast<unsigned int>(table.rows) != rows || table.cols < 0 ||
        static_cast<unsigned int>(table.cols) != cols || table.data.size() != count) {
        return joined("found ", table.data.size(), " values in ", name, " of ", table.rows, " x ",
                      table.cols, ", expected ", rows, " x ", cols);
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (std::isfinite(table.data[i]) && table.data[i] >= least) continue;
        return joined("found ", name, '(', i / cols, ", ", i % cols, ") = ", table.data[i],
                      ", expected a finite number of at least 0");
    }
    return "";
}

/// pi, a and b of any model against its own counts.
std::string problemOfParameters(const HMM& model) {
    if (model.numStates < 1) return "found no states, expected at least 1";
    std::string problem = problemOfVector("pi", model.pi, model.numStates);
    if (problem.empty()) {
        problem = problemOfTable("a", model.a, model.numStates, model.numStates, leastTransition);
    }
    if (problem.empty()) problem = problemOfTable("b", model.b, model.numStates, model.vocabSize);
    return problem;
}

std::string problemOfQuantizer(const RecognitionModelHMM& model) {
    if (model.codebook.empty()) return "found no codebook, expected one direction a symbol";
    if (model.codebook.size() != model.vocabSize) {
        return joined("found ", model.codebook.size(), " directions in the codebook, expected ",
                      model.vocabSize, ", one a symbol");
    }
    for (std::size_t k = 0; k < model.codebook.size(); ++k) {
        if (std::isfinite(model.codebook[k])) continue;
        return joined("found ", model.codebook[k], " as direction ", k,
                      " of the codebook, expected a finite number");
    }
    if (!std::isfinite(model.proxFilterThreshold)) {
        return joined("found the proximity threshold ", model.proxFilterThreshold,
                      ", expected a finite number");
    }
    return "";
}

std::string problemOfThresholdModel(const RecognitionModelHMM& model) {
    const HMM* combined = model.recognitionHMM;
    if (combined == nullptr) return "found no threshold model, expected one";
    const double p = model.modelTransitionProb;
    if (!(p >= 0.0 && p <= 1.0)) {
        return joined("found the transition probability ", p, ", expected 0 to 1");
    }
    if (combined->numStates != model.numStates || combined->vocabSize != model.vocabSize) {
        return joined("found a threshold model of ", combined->numStates, " states and ",
                      combined->vocabSize, " symbols, expected ", model.numStates, " and ",
                      model.vocabSize);
    }
    std::string problem = problemOfParameters(*combined);
    if (!problem.empty()) return "threshold model: " + problem;
    problem = problemOfTable("vocab", combined->vocab, model.vocabSize, 1);
    if (!problem.empty()) return "threshold model: " + problem;
    if (combined->pi != model.pi || combined->a.data != model.a.data ||
        combined->b.data != model.b.data || combined->vocab.data != model.vocab.data) {
        return "found a threshold model that differs from the parameters it was built from, "
               "expected the same";
    }
    return "";
}

std::string problemOfGesture(const HMM* gesture, std::size_t index, unsigned int M) {
    const std::string which = joined("gesture ", index);
    if (gesture == nullptr) return joined("found no model for ", which, ", expected one");
    std::string problem = problemOfName(which, gesture->name);
    if (!problem.empty()) return problem;
    const std::string prefix = joined("gesture ", quoted(gesture->name), ": ");
    if (dynamic_cast<const LeftRightHMM*>(gesture) == nullptr) {
        return prefix + "found a general model, expected a left-right model";
    }
    if (gesture->vocabSize != M) {
        return joined(prefix, "found ", gesture->vocabSize, " symbols, expected ", M);
    }
    problem = problemOfParameters(*gesture);
    return problem.empty() ? problem : prefix + problem;
}

}  // namespace

bool isStorableName(const std::string& name) {
    return !name.empty() && std::none_of(name.begin(), name.end(),
                                         [](char c) { return isSpace(c) || isControl(c); });
}

std::string storedName(std::string label) {
    std::replace_if(label.begin(), label.end(), isSpace, '_');
    return label;
}

std::vector<std::string> problemsOf(const RecognitionModelHMM& model) {
    std::vector<std::string> problems;
    const auto add = [&](std::string problem) {
        if (!problem.empty()) problems.push_back(std::move(problem));
    };
    add(problemOfQuantizer(model));
    add(problemOfName("the model", model.name));
    add(problemOfThresholdModel(model));
    if (model.gestures.empty()) add("found no gestures, expected at least 1");
    for (std::size_t i = 0; i < model.gestures.size(); ++i)
        add(problemOfGesture(model.gestures[i], i, model.vocabSize));
    return problems;
}

std::string problemOf(const RecognitionModelHMM& model) {
    const std::vector<std::string> problems = problemsOf(model);
    return problems.empty() ? "" : problems.front();
}

void requireSoundModel(const RecognitionModelHMM& model, const std::string& source) {
    const std::string problem = problemOf(model);
    if (!problem.empty()) throw InputError(internal::oneLine(source) + ": " + problem);
}

}  // namespace Vesk::Kit
