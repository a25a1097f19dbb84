#include "LeftRightHmm.h"

#include "Arrays.h"
#include "Bindings.h"
#include "Copies.h"
#include "Hmm.h"
#include "Printed.h"

#include <pybind11/functional.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <utility>

namespace Vesk::Python {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::TrainingStep;

namespace {

using Sequences = std::vector<std::vector<int>>;
using Watcher = std::function<std::optional<bool>(const TrainingStep&)>;

Sequences sequencesFor(const LeftRightHMM& model, py::handle sequences) {
    return sequencesFrom(sequences, "sequences", symbolsOf(model));
}

std::shared_ptr<LeftRightHMM> made(int numStates, int vocabSize, int delta,
                                   const py::object& sequences) {
    requireSizes(numStates, vocabSize, 1);
    if (sequences.is_none()) return std::make_shared<LeftRightHMM>(numStates, vocabSize, delta);
    Sequences training = sequencesFrom(sequences, "training_sequences", vocabSize);
    return std::make_shared<LeftRightHMM>(numStates, vocabSize, training, delta);
}

void setStateSymbols(LeftRightHMM& model, py::handle value) {
    Sequences symbols = sequencesFrom(value, "state_symbols", symbolsOf(model));
    if (!symbols.empty() && symbols.size() != model.numStates) {
        throw py::value_error("state_symbols: found " + std::to_string(symbols.size()) +
                              " lists, expected " + std::to_string(model.numStates));
    }
    model.stateSymbols = std::move(symbols);
}

py::tuple scaledForward(const LeftRightHMM& model, py::handle observation) {
    std::vector<int> symbols = observationFor(model, observation);
    const auto T = static_cast<int>(symbols.size());
    std::vector<double> scale(symbols.size());
    LeftRightHMM snapshot(model);
    MatrixT<double> alpha;
    {
        const py::gil_scoped_release unlocked;
        alpha = snapshot.forwardProcWithScale(std::move(symbols), T, scale);
    }
    return py::make_tuple(arrayOf(alpha), arrayOf(scale));
}

py::array_t<double> scaledBackward(const LeftRightHMM& model, py::handle observation,
                                   py::handle scale) {
    std::vector<int> symbols = observationFor(model, observation);
    const auto T = static_cast<int>(symbols.size());
    std::vector<double> factors = vectorFrom(scale, "scale", T);
    LeftRightHMM snapshot(model);
    MatrixT<double> beta;
    {
        const py::gil_scoped_release unlocked;
        beta = snapshot.backwardProcWithScale(std::move(symbols), T, factors);
    }
    return arrayOf(beta);
}

py::tuple scaledLikelihood(const LeftRightHMM& model, py::handle observation) {
    std::vector<int> symbols = observationFor(model, observation);
    const auto T = static_cast<int>(symbols.size());
    std::vector<double> scale(symbols.size());
    LeftRightHMM snapshot(model);
    double found = 0.0;
    {
        const py::gil_scoped_release unlocked;
        found = snapshot.forwardProbabilityWithScale(std::move(symbols), T, scale);
    }
    return py::make_tuple(found, arrayOf(scale));
}

double logLikelihood(const LeftRightHMM& model, py::handle observation) {
    const std::vector<int> symbols = observationFor(model, observation);
    const LeftRightHMM snapshot(model);
    const py::gil_scoped_release unlocked;
    return snapshot.logLikelihood(symbols);
}

std::vector<TrainingStep> trained(LeftRightHMM& model, py::handle sequences, int maxIterations,
                                  const std::optional<Watcher>& observer) {
    requireIterations(maxIterations);
    const Sequences training = sequencesFor(model, sequences);
    std::vector<TrainingStep> steps;
    const auto watch = [&](const TrainingStep& step) {
        steps.push_back(step);
        const py::gil_scoped_acquire locked;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        return observer ? (*observer)(step).value_or(true) : true;
    };
    changed(model, [&](LeftRightHMM& it) { it.trainMultiple(training, maxIterations, watch); });
    return steps;
}

void trainPrinting(LeftRightHMM& model, py::handle sequences, int maxIterations) {
    requireIterations(maxIterations);
    const Sequences training = sequencesFor(model, sequences);
    LeftRightHMM snapshot(model);
    printing([&] { snapshot.baumWelchMultiple(training, maxIterations); });
    model = std::move(snapshot);
}

void addStep(py::module_& module) {
    py::class_<TrainingStep>(module, "TrainingStep", "What one training iteration came to.")
        .def_readonly("iteration", &TrainingStep::iteration, "From 0.")
        .def_readonly("old_log_likelihood", &TrainingStep::oldLogLikelihood,
                      "Of all sequences before it, natural logarithm.")
        .def_readonly("new_log_likelihood", &TrainingStep::newLogLikelihood, "Under the candidate.")
        .def_readonly("accepted", &TrainingStep::accepted,
                      "Whether the candidate became the model.")
        .def("__repr__", [](const TrainingStep& it) {
            return py::str("<TrainingStep {}: {:.6g} to {:.6g}{}>")
                .format(it.iteration, it.oldLogLikelihood, it.newLogLikelihood,
                        it.accepted ? "" : ", dropped");
        });
}

}  // namespace

py::tuple stateOf(const LeftRightHMM& model) {
    return py::make_tuple(stateOf(static_cast<const HMM&>(model)), packed(model.trainingSequences),
                          packed(model.stateSymbols), model.delta, model.convergenceThreshold);
}

LeftRightHMM leftRightFrom(const py::tuple& state) {
    if (state.size() != 5) throw py::value_error("state: expected that of a left-right model");
    LeftRightHMM model(1, 1, 1);
    restore(model, state[0]);
    model.trainingSequences = unpackedSequences(state[1]);
    model.stateSymbols = unpackedSequences(state[2]);
    for (const std::vector<int>& symbols : model.stateSymbols) {
        for (const int symbol : symbols) {
            if (symbol >= symbolsOf(model)) {
                throw py::value_error("state: found a symbol outside the model's vocabulary");
            }
        }
    }
    model.delta = state[3].cast<int>();
    model.convergenceThreshold = state[4].cast<float>();
    return model;
}

void addLeftRightHmm(py::module_& module) {
    addStep(module);
    py::class_<LeftRightHMM, HMM, std::shared_ptr<LeftRightHMM>> model(
        module, "LeftRightHMM",
        "The model of one gesture: starts in state 0 and moves from state i to i .. i + delta.\n\n"
        "All parameters are 0 until `estimate` or `load`. A sequence is an array of symbols.");
    model.def(py::init(&made), py::arg("num_states"), py::arg("vocab_size"), py::arg("delta"),
              py::arg("training_sequences") = py::none());
    model.def_readwrite("delta", &LeftRightHMM::delta, "The largest forward jump.");
    model.def_readwrite("convergence_threshold", &LeftRightHMM::convergenceThreshold,
                        "Least gain in log likelihood for training to go on.");
    model.def_property_readonly(
        "training_sequences", [](const LeftRightHMM& it) { return listOf(it.trainingSequences); },
        "A copy of those that the model was made with; not used by training.");
    model.def_property(
        "state_symbols", [](const LeftRightHMM& it) { return listOf(it.stateSymbols); },
        &setStateSymbols, "N lists of symbols for SegmentationType.STATE_SYMBOLS, or none.");
    model.def(
        "estimate",
        [](LeftRightHMM& it, HMM::SegmentationType type, py::handle sequences) {
            const Sequences training = sequencesFor(it, sequences);
            changed(it, [&](LeftRightHMM& copy) { copy.estimate(type, training); });
        },
        py::arg("type"), py::arg("sequences"),
        "Sets pi, a and b from sequences, silently; see SegmentationType.");
    model.def(
        "calc_initial_probs",
        [](LeftRightHMM& it, HMM::SegmentationType type, py::handle sequences) {
            const Sequences training = sequencesFor(it, sequences);
            LeftRightHMM copy(it);
            printing([&] { copy.calcInitialProbs(type, training); });
            it = std::move(copy);
        },
        py::arg("type"), py::arg("sequences"), "`estimate` that announces itself.");
    model.def("forward_proc_with_scale", &scaledForward, py::arg("observation"),
              "(alpha, scale): (N, T), each column summing to 1, and (T,), "
              "P(symbol t | those before).");
    model.def("backward_proc_with_scale", &scaledBackward, py::arg("observation"), py::arg("scale"),
              "beta, (N, T), with the forward pass's scale factors (T,).");
    model.def(
        "forward_probability_with_scale", &scaledLikelihood, py::arg("observation"),
        "(ln P(observation), scale (T,)): the sum of the factors' logarithms, and the factors.");
    model.def("log_likelihood", &logLikelihood, py::arg("observation"),
              "ln P(observation); minus infinity where it is impossible, 0 without symbols.");
    model.def("baum_welch", &trainOnOne<LeftRightHMM>, py::arg("observation"),
              py::arg("max_iterations"),
              "Trains on (T,) symbols with unscaled tables while the likelihood grows.");
    model.def("train_multiple", &trained, py::arg("sequences"), py::arg("max_iterations"),
              py::arg("observer") = py::none(),
              "Trains on several sequences, silently, and returns its steps. `observer` is called "
              "with each; False from it ends the training.");
    model.def("baum_welch_multiple", &trainPrinting, py::arg("sequences"),
              py::arg("max_iterations"), "`train_multiple` that prints its log likelihoods.");
    model.def("save", &saveModel<LeftRightHMM>, py::arg("path"),
              "Writes the left-right file, six digits a number. OSError where it cannot.");
    model.def_static(
        "load",
        [](const py::object& path) { return loadedModel<LeftRightHMM>(path, &Vesk::ML::loadLR); },
        py::arg("path"),
        "The model of a file; values that cannot be read are 0. OSError where it "
        "cannot be opened.");
    addCopies(model);
    model.def(py::pickle([](const LeftRightHMM& it) { return stateOf(it); },
                         [](const py::tuple& state) {
                             return std::make_shared<LeftRightHMM>(leftRightFrom(state));
                         }));
}

}  // namespace Vesk::Python
