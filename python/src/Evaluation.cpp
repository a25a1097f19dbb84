#include "Arrays.h"
#include "Bindings.h"
#include "Options.h"
#include "Traces.h"

#include <veskkit/evaluation/Tuning.h>
#include <veskkit/report/ConfusionPlot.h>
#include <veskkit/report/TradeOffPlot.h>

#include <pybind11/stl.h>

#include <cstdint>
#include <string>
#include <utility>

namespace Vesk::Python {

using Vesk::Kit::Answer;
using Vesk::Kit::EvaluationOptions;
using Vesk::Kit::Fold;
using Vesk::Kit::Outcome;
using Vesk::Kit::Rates;
using Vesk::Kit::Rejection;
using Vesk::Kit::Share;
using Vesk::Kit::Trace;
using Vesk::Kit::Verdict;

namespace {

struct Evaluation {
    std::vector<Outcome> outcomes;
};

std::vector<std::size_t> placesFrom(py::handle value, const std::string& what, std::size_t end) {
    std::vector<std::size_t> places;
    for (const int i : symbolsFrom(value, what, static_cast<int>(end))) {
        places.push_back(static_cast<std::size_t>(i));
    }
    return places;
}

/// Pairs of training and test places.
std::vector<Fold> foldsFrom(py::handle values, std::size_t traces) {
    std::vector<Fold> folds;
    for (const py::handle item : values) {
        const std::string name = "fold " + std::to_string(folds.size());
        const auto pair = py::tuple(py::reinterpret_borrow<py::object>(item));
        if (pair.size() != 2) throw py::value_error(name + ": expected (training, test)");
        folds.push_back({name, placesFrom(pair[0], name + " training", traces),
                         placesFrom(pair[1], name + " test", traces)});
    }
    return folds;
}

Evaluation evaluated(py::handle points, const py::object& labels, const py::object& users,
                     py::handle folds, const py::dict& options, bool unknownGestures,
                     bool templates) {
    const std::vector<Trace> traces = tracesFrom(points, labels, users);
    const std::vector<Fold> list = foldsFrom(folds, traces.size());
    const EvaluationOptions settings{optionsFrom(options), unknownGestures, templates};
    const py::gil_scoped_release unlocked;
    return {evaluate(traces, list, settings, [](const Vesk::Kit::EvaluationProgress&) {
        const py::gil_scoped_acquire locked;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    })};
}

/// One evaluation of several, each of folds of its own, in their order.
Evaluation joinedEvaluation(const std::vector<const Evaluation*>& parts) {
    Evaluation all;
    std::size_t folds = 0;
    for (const Evaluation* part : parts) {
        std::size_t here = 0;
        for (Outcome outcome : part->outcomes) {
            here = std::max(here, outcome.fold + 1);
            outcome.fold += folds;
            all.outcomes.push_back(std::move(outcome));
        }
        folds += here;
    }
    return all;
}

Verdict Outcome::*methodFrom(const std::string& name) {
    if (name == "models") return &Outcome::models;
    if (name == "templates") return &Outcome::templates;
    throw py::value_error("method: found '" + name + "', expected 'models' or 'templates'");
}

py::dict dictOfRates(const Evaluation& it, const std::string& method) {
    const Rates rates = ratesOf(it.outcomes, methodFrom(method));
    py::dict values;
    const auto add = [&](const char* name, const Share& share) {
        values[name] = py::make_tuple(share.count, share.total);
    };
    add("arg_max", rates.argMax);
    add("correct", rates.correct);
    add("wrong", rates.wrong);
    add("rejected", rates.rejected);
    add("unknown_accepted", rates.unknownAccepted);
    return values;
}

py::tuple confusion(const Evaluation& it, const std::string& method) {
    const Vesk::Kit::Confusion found = confusionOf(it.outcomes, methodFrom(method));
    py::list names;
    for (const std::string& name : found.gestures) names.append(textOf(name));
    py::list rows;
    for (const auto& row : found.counts) rows.append(row);
    return py::make_tuple(names, py::module_::import("numpy").attr("array")(rows));
}

// As tuples of plain values, for other processes.

py::tuple stateOf(const Verdict& verdict) {
    return py::make_tuple(textOf(verdict.gesture), textOf(verdict.likeliest),
                          verdict.asUnknown ? py::object(textOf(*verdict.asUnknown)) : py::none());
}

Verdict verdictFrom(const py::tuple& state) {
    Verdict verdict{bytesFrom(state[0]), bytesFrom(state[1]), {}};
    if (!state[2].is_none()) verdict.asUnknown = bytesFrom(state[2]);
    return verdict;
}

py::list stateOf(const std::vector<Answer>& answers) {
    py::list state;
    for (const Answer& answer : answers) {
        state.append(py::make_tuple(answer.logRatio, textOf(answer.gesture)));
    }
    return state;
}

std::vector<Answer> answersFrom(const py::handle& state) {
    std::vector<Answer> answers;
    for (const py::handle item : state) {
        const auto pair = item.cast<py::tuple>();
        answers.push_back({pair[0].cast<double>(), bytesFrom(pair[1])});
    }
    return answers;
}

py::list stateOf(const Evaluation& it) {
    py::list state;
    for (const Outcome& o : it.outcomes) {
        state.append(py::make_tuple(o.trace, o.fold, textOf(o.expected), stateOf(o.models),
                                    stateOf(o.templates), static_cast<int>(o.rejection), o.margin,
                                    stateOf(o.answers), stateOf(o.answersAsUnknown),
                                    textOf(o.rival), o.lead));
    }
    return state;
}

Evaluation evaluationFrom(const py::handle& state) {
    Evaluation it;
    for (const py::handle item : state) {
        const auto v = item.cast<py::tuple>();
        const int rejection = v[5].cast<int>();
        if (rejection < 0 || rejection > static_cast<int>(Rejection::LastState)) {
            throw py::value_error("state: expected that of an evaluation");
        }
        it.outcomes.push_back(
            {v[0].cast<std::size_t>(), v[1].cast<std::size_t>(), bytesFrom(v[2]), verdictFrom(v[3]),
             verdictFrom(v[4]), static_cast<Rejection>(rejection), v[6].cast<double>(),
             answersFrom(v[7]), answersFrom(v[8]), bytesFrom(v[9]), v[10].cast<double>()});
    }
    return it;
}

/// (best options, trials, evaluation of the best); `evaluation` is called with options.
py::tuple tuned(const py::object& evaluation, const py::dict& start, double falseAccept,
                int rounds) {
    Vesk::Kit::TuningOptions options;
    options.training = optionsFrom(start);
    options.falseAccept = falseAccept;
    options.rounds = rounds;
    options.evaluation = [&](const EvaluationOptions& settings) {
        const py::gil_scoped_acquire locked;
        return evaluation(dictOf(settings.training)).cast<const Evaluation&>().outcomes;
    };
    const Vesk::Kit::TuningResult result = [&] {
        const py::gil_scoped_release unlocked;
        return tune({}, {}, options);
    }();
    py::list trials;
    for (const Vesk::Kit::Trial& trial : result.trials) {
        trials.append(py::make_tuple(trial.change, trial.result.ratio, trial.result.correct.value(),
                                     trial.result.unknownAccepted.value(), trial.adopted));
    }
    return py::make_tuple(dictOf(result.training), trials, Evaluation{result.outcomes});
}

}  // namespace

void addEvaluation(py::module_& module) {
    py::class_<Evaluation>(module, "Evaluation", "What became of every test trace.")
        .def_property_readonly(
            "verdicts",
            [](const Evaluation& it) {
                py::list list;
                for (const Outcome& outcome : it.outcomes) {
                    list.append(py::make_tuple(outcome.trace, textOf(outcome.expected),
                                               textOf(outcome.models.gesture),
                                               textOf(outcome.templates.gesture)));
                }
                return list;
            },
            "(trace, its gesture, the models' answer, the template matcher's), \"\": rejected.")
        .def("rates", &dictOfRates, py::arg("method") = "models",
             "(count, total) of each kind of answer, of 'models' or 'templates'.")
        .def("confusion", &confusion, py::arg("method") = "models",
             "(names, counts (K, K + 1)): rows the gestures, columns the answers, rejections last.")
        .def(
            "confusion_svg",
            [](const Evaluation& it, const std::string& method) {
                return confusionPlot("Confusion matrix",
                                     confusionOf(it.outcomes, methodFrom(method)));
            },
            py::arg("method") = "models")
        .def("trade_off_svg",
             [](const Evaluation& it) {
                 return tradeOffPlot("Unknown gestures accepted over known ones rejected",
                                     it.outcomes);
             })
        .def("__len__", [](const Evaluation& it) { return it.outcomes.size(); })
        .def("__repr__",
             [](const Evaluation& it) {
                 const Rates rates = ratesOf(it.outcomes, &Outcome::models);
                 return py::str("<Evaluation: {} traces, {:.2f} % correct, {:.2f} % wrong>")
                     .format(it.outcomes.size(), 100.0 * rates.correct.value(),
                             100.0 * rates.wrong.value());
             })
        .def(py::pickle([](const Evaluation& it) { return py::make_tuple(stateOf(it)); },
                        [](const py::tuple& state) { return evaluationFrom(state[0]); }));
    module.def("evaluate", &evaluated, py::arg("X"), py::arg("y"), py::arg("groups"),
               py::arg("folds"), py::arg("options"), py::arg("unknown_gestures"),
               py::arg("templates"));
    module.def("join_evaluations", &joinedEvaluation, py::arg("parts"));
    module.def("tune", &tuned, py::arg("evaluation"), py::arg("start"), py::arg("false_accept"),
               py::arg("rounds"));
}

}  // namespace Vesk::Python
