#include "Hmm.h"

#include "Arrays.h"
#include "Bindings.h"
#include "Copies.h"
#include "Printed.h"

#include <veskkit/recognition/ModelCheck.h>

#include <pybind11/stl.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

namespace Vesk::Python {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;

int symbolsOf(const HMM& model) {
    constexpr unsigned int most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(model.vocabSize, most));
}

py::tuple stateOf(const HMM& model) {
    return py::make_tuple(textOf(model.name), model.numStates, model.vocabSize, model.dimension,
                          arrayOf(model.vocab), arrayOf(model.pi), arrayOf(model.a),
                          arrayOf(model.b), arrayOf(model.vocabValues), model.needsSeed);
}

void restore(HMM& model, const py::tuple& state) {
    if (state.size() != 10) throw py::value_error("state: expected that of a model");
    model.name = bytesFrom(state[0]);
    model.numStates = state[1].cast<unsigned int>();
    model.vocabSize = state[2].cast<unsigned int>();
    model.dimension = state[3].cast<int>();
    model.vocab = matrixFrom(state[4], "vocab");
    model.pi = vectorFrom(state[5], "pi");
    model.a = matrixFrom(state[6], "a");
    model.b = matrixFrom(state[7], "b");
    model.vocabValues = vectorFrom(state[8], "vocab_values");
    model.needsSeed = state[9].cast<bool>();
}

void requireSizes(int numStates, int vocabSize, int dimension) {
    const auto require = [](const char* what, std::int64_t value) {
        if (value >= 1) return;
        throw py::value_error(std::string(what) + ": found " + std::to_string(value) +
                              ", expected at least 1");
    };
    require("num_states", numStates);
    require("vocab_size", vocabSize);
    require("dimension", dimension);
    const auto N = static_cast<std::int64_t>(numStates);
    const auto M = static_cast<std::int64_t>(vocabSize);
    const std::int64_t largest = std::max({N * N, N * M, M * dimension});
    if (largest <= std::numeric_limits<std::int32_t>::max()) return;
    throw py::value_error("found a table of " + std::to_string(largest) +
                          " values, expected at most 2147483647");
}

void requireStorableName(const std::string& name) {
    if (Kit::isStorableName(name)) return;
    throw py::value_error("name: found " + std::string(py::repr(textOf(name))) +
                          ", expected one word without blanks");
}

void requireIterations(int maxIterations) {
    if (maxIterations >= 0) return;
    throw py::value_error("max_iterations: found " + std::to_string(maxIterations) +
                          ", expected at least 0");
}

std::vector<int> observationFor(const HMM& model, py::handle observation) {
    return symbolsFrom(observation, "observation", symbolsOf(model));
}

namespace {

using Table = MatrixT<double>;
using Symbols = Vesk::Math::VectorT<int>;

/// Calls a member function on a snapshot and a whole observation, without the lock.
template <typename Result>
Result evaluated(const HMM& model, py::handle observation, Result (HMM::*function)(Symbols, int)) {
    Symbols symbols = observationFor(model, observation);
    const auto T = static_cast<int>(symbols.size());
    HMM snapshot(model);
    const py::gil_scoped_release unlocked;
    return (snapshot.*function)(std::move(symbols), T);
}

py::array_t<double> likelihoodsOf(const HMM& model, py::handle sequences) {
    const auto list = sequencesFrom(sequences, "sequences", symbolsOf(model));
    const HMM snapshot(model);
    std::vector<double> found;
    {
        const py::gil_scoped_release unlocked;
        found = snapshot.likelihoods(list);
    }
    return arrayOf(found);
}

py::tuple viterbi(const HMM& model, py::handle observation) {
    const Table found = evaluated(model, observation, &HMM::viterbi);
    std::vector<int> path;
    for (int t = 0; t < found.cols; ++t) path.push_back(static_cast<int>(found(1, t)));
    return py::make_tuple(path.empty() ? 0.0 : found(0, 0), arrayOf(path));
}

void requireBelow(const char* what, std::int64_t value, std::int64_t end) {
    if (value >= 0 && value < end) return;
    throw py::value_error(std::string(what) + ": found " + std::to_string(value) +
                          ", expected at least 0 and less than " + std::to_string(end));
}

double gammaOf(const HMM& model, int i, int t, py::handle alpha, py::handle beta) {
    const auto N = static_cast<py::ssize_t>(model.numStates);
    Table forward = matrixFrom(alpha, "alpha", N);
    Table backward = matrixFrom(beta, "beta", N, forward.cols);
    requireBelow("i", i, N);
    requireBelow("t", t, forward.cols);
    HMM snapshot(model);
    const py::gil_scoped_release unlocked;
    return snapshot.gamma(i, t, std::move(forward), std::move(backward));
}

double xiOf(const HMM& model, int i, int j, int t, py::handle observation, py::handle alpha,
            py::handle beta) {
    const auto N = static_cast<py::ssize_t>(model.numStates);
    Symbols symbols = observationFor(model, observation);
    const auto T = static_cast<py::ssize_t>(symbols.size());
    Table forward = matrixFrom(alpha, "alpha", N, T);
    Table backward = matrixFrom(beta, "beta", N, T);
    requireBelow("i", i, N);
    requireBelow("j", j, N);
    requireBelow("t", t, T - 1);
    HMM snapshot(model);
    const py::gil_scoped_release unlocked;
    return snapshot.xi(i, j, t, std::move(symbols), std::move(forward), std::move(backward));
}

py::array_t<int> sampled(HMM& model, int length) {
    if (length < 0) {
        throw py::value_error("length: found " + std::to_string(length) + ", expected at least 0");
    }
    HMM snapshot(model);
    std::vector<int> sequence;
    {
        const py::gil_scoped_release unlocked;
        sequence = snapshot.genSeq(length);
    }
    model.needsSeed = snapshot.needsSeed;
    return arrayOf(sequence);
}

std::string dumpOf(const HMM& model) {
    HMM snapshot(model);
    return printedBy([&] { snapshot.print(); });
}

std::string reprOf(const py::object& self) {
    const auto& model = self.cast<const HMM&>();
    return py::str("<{} {!r}: {} states, {} symbols>")
        .format(py::type::of(self).attr("__name__"), textOf(model.name), model.numStates,
                model.vocabSize);
}

template <typename Class>
void addFields(Class& model) {
    model.def_property(
        "name", [](const HMM& it) { return textOf(it.name); },
        [](HMM& it, const py::str& name) { it.name = bytesFrom(name); },
        "The model's name; one word where it is stored.");
    model.def_readonly("num_states", &HMM::numStates, "N, the number of hidden states.");
    model.def_readonly("vocab_size", &HMM::vocabSize, "M: symbols are 0 to M - 1.");
    model.def_readonly("dimension", &HMM::dimension, "D, the values that describe one symbol.");
    model.def_readwrite("needs_seed", &HMM::needsSeed,
                        "True until this object's first random number, which seeds the process.");
    model.def_property(
        "pi", [](const HMM& it) { return arrayOf(it.pi); },
        [](HMM& it, py::handle value) { it.pi = vectorFrom(value, "pi", it.numStates); },
        "(N,) probabilities of the first state. A copy: assign to change the model.");
    model.def_property(
        "a", [](const HMM& it) { return arrayOf(it.a); },
        [](HMM& it, py::handle value) {
            it.a = matrixFrom(value, "a", it.numStates, it.numStates);
        },
        "(N, N) transition probabilities from row to column. A copy: assign to change it.");
    model.def_property(
        "b", [](const HMM& it) { return arrayOf(it.b); },
        [](HMM& it, py::handle value) {
            it.b = matrixFrom(value, "b", it.numStates, it.vocabSize);
        },
        "(N, M) probabilities of each symbol in each state. A copy: assign to change it.");
    model.def_property(
        "vocab", [](const HMM& it) { return arrayOf(it.vocab); },
        [](HMM& it, py::handle value) {
            it.vocab = matrixFrom(value, "vocab", it.vocabSize, it.dimension);
        },
        "(M, D) values that each symbol stands for. A copy: assign to change it.");
    model.def_property(
        "vocab_values", [](const HMM& it) { return arrayOf(it.vocabValues); },
        [](HMM& it, py::handle value) { it.vocabValues = vectorFrom(value, "vocab_values"); },
        "Values a symbol that the left-right file carries; M of them or none.");
}

template <typename Class>
void addEvaluation(Class& model) {
    model.def(
        "forward_proc",
        [](const HMM& it, py::handle o) { return arrayOf(evaluated(it, o, &HMM::forwardProc)); },
        py::arg("observation"),
        "alpha, (N, T): P(symbols up to t, state i at t), unscaled. `observation`: (T,) symbols.");
    model.def(
        "backward_proc",
        [](const HMM& it, py::handle o) { return arrayOf(evaluated(it, o, &HMM::backwardProc)); },
        py::arg("observation"),
        "beta, (N, T): P(symbols after t | state i at t), unscaled. `observation`: (T,) symbols.");
    model.def(
        "forward_probability",
        [](const HMM& it, py::handle o) { return evaluated(it, o, &HMM::forwardProbability); },
        py::arg("observation"),
        "P(observation), from the forward pass; 0 without symbols. Underflows for long ones.");
    model.def(
        "likelihoods", &likelihoodsOf, py::arg("sequences"),
        "(n,): P of each of n sequences of symbols, as `forward_probability`; faster than one "
        "by one.");
    model.def(
        "backward_probability",
        [](const HMM& it, py::handle o) { return evaluated(it, o, &HMM::backwardProbability); },
        py::arg("observation"), "P(observation), from the backward pass; 0 without symbols.");
    model.def("viterbi", &viterbi, py::arg("observation"),
              "The likeliest path: (its probability, (T,) states). Ties go to the lowest state.");
    model.def("gamma", &gammaOf, py::arg("i"), py::arg("t"), py::arg("alpha"), py::arg("beta"),
              "P(state i at t | observation) from the tables (N, T) of the two passes.");
    model.def("xi", &xiOf, py::arg("i"), py::arg("j"), py::arg("t"), py::arg("observation"),
              py::arg("alpha"), py::arg("beta"),
              "P(state i at t, j at t + 1 | observation) from the tables (N, T) of the two "
              "passes; t in 0 .. T - 2.");
}

}  // namespace

void addHmm(py::module_& module) {
    py::enum_<HMM::SegmentationType>(module, "SegmentationType",
                                     "Where a left-right model's first estimate comes from.")
        .value("NO_SEGMENTATION", HMM::NoSegmentation, "Nowhere: the model stays as it is.")
        .value("STATE_SYMBOLS", HMM::StateSymbols, "Lists of symbols allowed in each state.")
        .value("EQUAL_SEGMENTS", HMM::EqualSegments, "Equal cuts of the training sequences.");

    py::class_<HMM, std::shared_ptr<HMM>> model(
        module, "HMM",
        "A discrete hidden Markov model: N states, M observation symbols 0 .. M - 1.\n\n"
        "Probabilities are plain numbers; all are 0 at first: assign `pi`, `a` and `b`. Symbols "
        "are checked in every call. May be used by several threads at a time.");
    model.def(py::init([](int numStates, int vocabSize, int dimension) {
                  requireSizes(numStates, vocabSize, dimension);
                  return std::make_shared<HMM>(numStates, vocabSize, dimension);
              }),
              py::arg("num_states"), py::arg("vocab_size"), py::arg("dimension") = 1);
    addFields(model);
    addEvaluation(model);
    model.def("baum_welch", &trainOnOne<HMM>, py::arg("observation"), py::arg("max_iterations"),
              "Re-estimates pi, a and b from (T,) symbols, at most `max_iterations` times. New "
              "emissions are odds, not probabilities.");
    model.def(
        "calc_initial_probs", [](HMM& it) { it.calcInitialProbs(HMM::NoSegmentation, {}); },
        "The general model's first estimate, by integer division: 0 unless N or M is 1.");
    model.def(
        "rand_d", [](HMM& it, double max) { return it.randD(max); }, py::arg("max"),
        "A number in [0, max) from the C library's generator, which the first call seeds with the "
        "time.");
    model.def("gen_seq", &sampled, py::arg("length"),
              "(length,) symbols drawn from the model with `rand_d`.");
    model.def_static("divide", &HMM::divide, py::arg("x"), py::arg("y"),
                     "0 where x is 0, else x / y unguarded.");
    model.def(
        "print", [](HMM& it) { py::print(dumpOf(it), py::arg("end") = ""); },
        "Prints the model for people to read, three digits a number.");
    model.def("dump", &dumpOf, "What `print` prints, as text.");
    model.def("save", &saveModel<HMM>, py::arg("path"),
              "Writes the model's text file, six digits a number. OSError where it cannot.");
    model.def_static(
        "load", [](const py::object& path) { return loadedModel<HMM>(path, &Vesk::ML::load); },
        py::arg("path"),
        "The model of a file; values that cannot be read are 0. OSError where it "
        "cannot be opened.");
    model.def("__repr__", &reprOf);
    addCopies(model);
    model.def(py::pickle([](const HMM& it) { return stateOf(it); },
                         [](const py::tuple& state) {
                             auto restored = std::make_shared<HMM>(1, 1);
                             restore(*restored, state);
                             return restored;
                         }));
}

}  // namespace Vesk::Python
