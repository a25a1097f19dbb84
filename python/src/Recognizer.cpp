#include "Recognizer.h"

#include "Arrays.h"
#include "Bindings.h"
#include "Files.h"
#include "Traces.h"

#include <veskkit/io/ModelFile.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/recognition/Posterior.h>
#include <veskkit/recognition/StatePath.h>

#include <pybind11/stl.h>

#include <sstream>
#include <utility>

namespace Vesk::Python {

using Vesk::Kit::GestureRecognizer;
using Vesk::Kit::Preparation;
using Vesk::Kit::Rejection;
using Vesk::Kit::Result;
using Vesk::Kit::Trace;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;

namespace {

Recognizer loaded(const py::object& path, int points, bool flipY, int bearings) {
    const std::string file = pathFrom(path);
    const py::gil_scoped_release unlocked;
    return {std::make_shared<const GestureRecognizer>(Vesk::Kit::loadModel(file),
                                                      Preparation{points, flipY, bearings}, file)};
}

Recognizer parsed(const std::string& text, Preparation preparation) {
    const py::gil_scoped_release unlocked;
    std::istringstream in(text);
    return {
        std::make_shared<const GestureRecognizer>(Vesk::Kit::parseModel(in, "model"), preparation)};
}

std::string textOfModel(const Recognizer& it) {
    const auto engine = it.engine;
    const py::gil_scoped_release unlocked;
    return Vesk::Kit::modelText(engine->model().get());
}

void save(const Recognizer& it, const py::object& path) {
    const std::string file = pathFrom(path);
    const auto engine = it.engine;
    const py::gil_scoped_release unlocked;
    Vesk::Kit::saveModel(engine->model(), file);
}

/// What each trace comes to, without the lock.
template <typename Take>
void recognizeAll(const Recognizer& it, py::handle points, Take take) {
    const std::vector<Trace> traces = tracesFrom(points, py::none(), py::none());
    const auto engine = it.engine;
    const py::gil_scoped_release unlocked;
    for (const Trace& trace : traces) take(engine->recognize(trace));
}

std::vector<Result> recognized(const Recognizer& it, py::handle points) {
    std::vector<Result> results;
    recognizeAll(it, points, [&](Result result) { results.push_back(std::move(result)); });
    return results;
}

py::list verdicts(const Recognizer& it, py::handle points) {
    std::vector<std::string> names;
    recognizeAll(it, points, [&](const Result& result) { names.push_back(result.gesture); });
    py::list list;
    for (const std::string& name : names) list.append(textOf(name));
    return list;
}

py::tuple posteriors(const Recognizer& it, py::handle points,
                     const std::vector<std::string>& gestures) {
    const auto K = static_cast<int>(gestures.size());
    std::vector<double> probabilities;
    std::vector<double> margins;
    int rows = 0;
    recognizeAll(it, points, [&](const Result& result) {
        const Vesk::Kit::Posterior found = Vesk::Kit::posteriorOf(result, gestures);
        probabilities.insert(probabilities.end(), found.gestures.begin(), found.gestures.end());
        probabilities.push_back(found.threshold);
        margins.insert(margins.end(), found.margins.begin(), found.margins.end());
        ++rows;
    });
    const auto shaped = [rows](std::vector<double> values, int cols) {
        Vesk::Math::MatrixT<double> table;
        table.rows = rows;
        table.cols = cols;
        table.data = std::move(values);
        return arrayOf(table);
    };
    return py::make_tuple(shaped(std::move(probabilities), K + 1), shaped(std::move(margins), K));
}

py::array_t<int> symbolsOf(const Recognizer& it, py::handle trace) {
    const std::vector<Trace> one = tracesFrom(py::make_tuple(trace), py::none(), py::none());
    const auto engine = it.engine;
    std::vector<int> symbols;
    {
        const py::gil_scoped_release unlocked;
        symbols = engine->symbols(one.front());
    }
    return arrayOf(symbols);
}

py::object statePath(const Recognizer& it, std::size_t gesture, py::handle trace) {
    const std::vector<Trace> one = tracesFrom(py::make_tuple(trace), py::none(), py::none());
    const auto engine = it.engine;
    std::optional<Vesk::Kit::StatePath> path;
    {
        const py::gil_scoped_release unlocked;
        path = Vesk::Kit::statePathOf(*engine, gesture, one.front());
    }
    if (!path) return py::none();
    return py::make_tuple(arrayOf(path->points), arrayOf(path->states), path->meanLogLikelihood);
}

void addResult(py::module_& module) {
    py::class_<Result>(module, "Result", "What a recogniser makes of one trace.")
        .def_property_readonly(
            "gesture", [](const Result& it) { return textOf(it.gesture); },
            "The recognised gesture's name; \"\" where rejected.")
        .def_property_readonly(
            "rejection", [](const Result& it) { return toString(it.rejection); },
            "Why it was rejected: \"too short\", \"zero probability\", \"threshold\", \"last "
            "state\"; \"\" where it was not.")
        .def_property_readonly(
            "scores",
            [](const Result& it) {
                py::list scores;
                for (const auto& score : it.scores) {
                    scores.append(py::make_tuple(textOf(score.gesture), score.logProbability));
                }
                return scores;
            },
            "(gesture, ln P(trace | its best model)), best first.")
        .def_readonly("margin", &Result::margin,
                      "ln(weighted probability / threshold) of the winner or likeliest gesture.")
        .def("__repr__", [](const Result& it) {
            return py::str("<Result: {}, margin {:.4g}>")
                .format(it.recognized()
                            ? textOf(it.gesture)
                            : py::str("rejected (" + std::string(toString(it.rejection)) + ")"),
                        it.margin);
        });
}

}  // namespace

void addRecognizer(py::module_& module) {
    addResult(module);
    py::class_<Recognizer> recognizer(
        module, "Recognizer",
        "A recognition model that recognises traces, arrays (P, 2). Never changes; may be used by "
        "several threads at once.");
    recognizer.def_static("load", &loaded, py::arg("path"), py::arg("points") = 41,
                          py::arg("flip_y") = false, py::arg("bearings") = 8,
                          "Reads a model file, strictly. InputError, naming file and line, for one "
                          "that is not sound. `points`, `flip_y`, `bearings`: as in training; 0 "
                          "points leave traces as drawn.");
    recognizer.def("save", &save, py::arg("path"),
                   "Writes the model file, whole or not at all; OutputError where it cannot.");
    recognizer.def("text", &textOfModel, "The model file's text.");
    recognizer.def("recognize", &recognized, py::arg("X"), "A Result a trace.");
    recognizer.def("verdicts", &verdicts, py::arg("X"),
                   "The gesture's name a trace, \"\" where rejected.");
    recognizer.def("posteriors", &posteriors, py::arg("X"), py::arg("gestures"),
                   "(probabilities (n, K + 1), the last the threshold model's; margins (n, K)): "
                   "ln(weighted probability / threshold).");
    recognizer.def("symbols", &symbolsOf, py::arg("trace"), "The symbols of a trace.");
    recognizer.def("state_path", &statePath, py::arg("gesture"), py::arg("trace"),
                   "(points (T + 1, 2), states (T,), mean log likelihood) of the trace's likeliest "
                   "path through the gesture model of that index; None where there is none.");
    recognizer.def_property_readonly(
        "gestures",
        [](const Recognizer& it) {
            py::list names;
            for (const std::string& name : it.engine->model().gestureNames()) {
                names.append(textOf(name));
            }
            return names;
        },
        "Each gesture's name once, in the model's order.");
    recognizer.def_property_readonly(
        "models",
        [](const Recognizer& it) {
            py::list models;
            for (const auto& model : it.engine->model().gestures()) {
                models.append(py::cast(std::make_shared<LeftRightHMM>(*model)));
            }
            return models;
        },
        "Copies of the gesture models; several may bear one name, turned ones (the `turns` of "
        "`GestureClassifier`) among them.");
    recognizer.def_property_readonly(
        "threshold_model",
        [](const Recognizer& it) {
            return std::make_shared<HMM>(*it.engine->model().get().recognitionHMM);
        },
        "A copy of the combined model.");
    recognizer.def_property_readonly(
        "codebook", [](const Recognizer& it) { return arrayOf(it.engine->model().get().codebook); },
        "Directions in degrees.");
    recognizer.def_property_readonly(
        "name", [](const Recognizer& it) { return textOf(it.engine->model().get().name); });
    recognizer.def_property_readonly("model_transition_prob", [](const Recognizer& it) {
        return it.engine->model().get().modelTransitionProb;
    });
    recognizer.def_property_readonly(
        "points", [](const Recognizer& it) { return it.engine->preparation().points; });
    recognizer.def_property_readonly(
        "bearings", [](const Recognizer& it) { return it.engine->preparation().bearings; });
    recognizer.def_property_readonly(
        "flip_y", [](const Recognizer& it) { return it.engine->preparation().flipY; });
    recognizer.def("__repr__", [](const Recognizer& it) {
        return py::str("<Recognizer {!r}: {} gestures, {} models, {} directions>")
            .format(textOf(it.engine->model().get().name), it.engine->model().gestureNames().size(),
                    it.engine->model().gestures().size(), it.engine->model().get().codebook.size());
    });
    // A recogniser's parameters are as a file holds them, so its text has every bit.
    recognizer.def(py::pickle(
        [](const Recognizer& it) {
            const Preparation& preparation = it.engine->preparation();
            return py::make_tuple(py::bytes(textOfModel(it)), preparation.points, preparation.flipY,
                                  preparation.bearings);
        },
        [](const py::tuple& state) {
            if (state.size() != 4) throw py::value_error("state: expected that of a recogniser");
            return parsed(state[0].cast<std::string>(),
                          {state[1].cast<int>(), state[2].cast<bool>(), state[3].cast<int>()});
        }));
}

}  // namespace Vesk::Python
