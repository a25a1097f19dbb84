#include "Arrays.h"
#include "Bindings.h"
#include "LeftRightHmm.h"
#include "Options.h"
#include "Recognizer.h"
#include "Traces.h"

#include <veskkit/training/GestureTrainer.h>
#include <veskkit/training/TrainingPlan.h>

#include <pybind11/stl.h>

#include <memory>
#include <utility>

namespace Vesk::Python {

using Vesk::Kit::GestureModels;
using Vesk::Kit::GestureRecognizer;
using Vesk::Kit::GestureReport;
using Vesk::Kit::GestureSequences;
using Vesk::Kit::GestureTask;
using Vesk::Kit::GestureTrainer;
using Vesk::Kit::LogRatios;
using Vesk::Kit::Points;
using Vesk::Kit::SubModelReport;
using Vesk::Kit::TellApartTask;
using Vesk::Kit::ToldApart;
using Vesk::Kit::Trace;
using Vesk::Kit::TrainingOptions;
using Vesk::Kit::TrainingPlan;
using Vesk::Kit::TrainingProgress;
using Vesk::Kit::TrainingReport;
using Vesk::Kit::TrainingResult;

namespace {

using Trained = std::vector<std::optional<GestureModels>>;

// What travels between processes, as tuples of plain values and arrays.

py::tuple stateOf(const GestureReport& report) {
    py::list subModels;
    for (const SubModelReport& it : report.subModels) {
        subModels.append(py::make_tuple(it.traces, it.iterations, it.logLikelihood));
    }
    return py::make_tuple(textOf(report.gesture), textOf(report.label), report.traces, report.users,
                          subModels);
}

GestureReport reportFrom(const py::tuple& state) {
    GestureReport report{bytesFrom(state[0]),
                         bytesFrom(state[1]),
                         state[2].cast<std::size_t>(),
                         state[3].cast<std::size_t>(),
                         {}};
    for (const py::handle item : state[4]) {
        const auto values = item.cast<py::tuple>();
        report.subModels.push_back(
            {values[0].cast<std::size_t>(), values[1].cast<int>(), values[2].cast<double>()});
    }
    return report;
}

py::tuple stateOf(const GestureModels& models) {
    py::list fine;
    for (const auto& model : models.fine) fine.append(Vesk::Python::stateOf(model));
    return py::make_tuple(fine, Vesk::Python::stateOf(models.coarse), stateOf(models.report),
                          models.mayBeTurned);
}

GestureModels modelsFrom(const py::tuple& state) {
    GestureModels models{{}, leftRightFrom(state[1]), reportFrom(state[2]), state[3].cast<bool>()};
    for (const py::handle item : state[0]) {
        models.fine.push_back(leftRightFrom(item.cast<py::tuple>()));
    }
    return models;
}

py::tuple stateOf(const std::vector<GestureSequences>& gestures) {
    py::tuple state(gestures.size());
    for (std::size_t g = 0; g < gestures.size(); ++g) {
        state[g] = py::make_tuple(textOf(gestures[g].gesture), packed(gestures[g].sequences));
    }
    return state;
}

std::vector<GestureSequences> sequencesFromState(const py::tuple& state) {
    std::vector<GestureSequences> gestures;
    for (const py::handle item : state) {
        const auto pair = item.cast<py::tuple>();
        gestures.push_back({bytesFrom(pair[0]), unpackedSequences(pair[1])});
    }
    return gestures;
}

py::list stateOf(const std::vector<LogRatios>& all) {
    py::list state;
    for (const auto& some : all) {
        py::dict byGesture;
        for (const auto& [gesture, values] : some) byGesture[textOf(gesture)] = arrayOf(values);
        state.append(byGesture);
    }
    return state;
}

std::vector<LogRatios> logarithmsFrom(const py::handle& state) {
    std::vector<LogRatios> all;
    for (const py::handle item : state) {
        auto& some = all.emplace_back();
        for (const auto& [gesture, values] : item.cast<py::dict>()) {
            some[bytesFrom(py::str(gesture))] = vectorFrom(values, "logarithms");
        }
    }
    return all;
}

py::tuple stateOf(const GestureTask& task) {
    std::vector<Points> points;
    py::list labels;
    py::list users;
    for (const Trace& trace : task.traces) {
        points.push_back(trace.points);
        labels.append(textOf(trace.gesture));
        users.append(textOf(trace.user));
    }
    return py::make_tuple(dictOf(task.options), arrayOf(task.codebook), textOf(task.gesture),
                          packed(points), labels, users, packed(task.sequences), task.trainings);
}

GestureTask gestureTaskFrom(const py::tuple& state) {
    GestureTask task{
        optionsFrom(state[0]),       vectorFrom(state[1], "codebook"),
        bytesFrom(state[2]),         {},
        unpackedSequences(state[6]), state[7].cast<std::vector<std::vector<std::size_t>>>()};
    const std::vector<Points> points = unpackedPoints(state[3]);
    const py::list labels = state[4];
    const py::list users = state[5];
    for (std::size_t i = 0; i < points.size(); ++i) {
        task.traces.push_back({points[i], bytesFrom(labels[i]), bytesFrom(users[i]), "", 0});
    }
    return task;
}

py::tuple stateOf(const TellApartTask& task) {
    py::list gestures;
    for (const GestureModels& models : task.gestures) gestures.append(stateOf(models));
    return py::make_tuple(dictOf(task.options), arrayOf(task.codebook), gestures,
                          stateOf(task.training), stateOf(task.test), task.turns, task.stride);
}

TellApartTask tellApartTaskFrom(const py::tuple& state) {
    TellApartTask task{optionsFrom(state[0]),
                       vectorFrom(state[1], "codebook"),
                       {},
                       sequencesFromState(state[3]),
                       sequencesFromState(state[4]),
                       state[5].cast<std::vector<int>>(),
                       state[6].cast<std::size_t>()};
    for (const py::handle item : state[2]) {
        task.gestures.push_back(modelsFrom(item.cast<py::tuple>()));
    }
    return task;
}

py::tuple stateOf(const ToldApart& part) {
    py::list gestures;
    for (const GestureModels& models : part.gestures) gestures.append(stateOf(models));
    return py::make_tuple(gestures, stateOf(part.answers.ratios), stateOf(part.answers.leads),
                          part.answers.gained, part.answers.lost);
}

ToldApart toldApartFrom(const py::tuple& state) {
    ToldApart part;
    for (const py::handle item : state[0]) {
        part.gestures.push_back(modelsFrom(item.cast<py::tuple>()));
    }
    part.answers = {logarithmsFrom(state[1]), logarithmsFrom(state[2]),
                    state[3].cast<std::size_t>(), state[4].cast<std::size_t>()};
    return part;
}

py::dict dictOfReport(const TrainingReport& report) {
    py::dict values;
    py::list gestures;
    for (const GestureReport& gesture : report.gestures) {
        py::list subModels;
        for (const SubModelReport& it : gesture.subModels) {
            py::dict entry;
            entry["traces"] = it.traces;
            entry["iterations"] = it.iterations;
            entry["log_likelihood"] = it.logLikelihood;
            subModels.append(entry);
        }
        py::dict entry;
        entry["gesture"] = textOf(gesture.gesture);
        entry["label"] = textOf(gesture.label);
        entry["traces"] = gesture.traces;
        entry["users"] = gesture.users;
        entry["sub_models"] = subModels;
        gestures.append(entry);
    }
    values["gestures"] = gestures;
    values["traces"] = report.traces;
    values["skipped"] = report.skipped;
    values["warnings"] = report.warnings;
    values["acceptance_ratio"] = report.acceptanceRatio;
    values["turns"] = report.turns;
    values["calibration_runs"] = report.calibrationRuns;
    return values;
}

/// (recogniser, report)
py::tuple finished(TrainingResult result, const TrainingOptions& options) {
    const py::dict report = dictOfReport(result.report);
    Recognizer recognizer;
    {
        const py::gil_scoped_release unlocked;
        recognizer.engine =
            std::make_shared<const GestureRecognizer>(std::move(result.model), options.preparation);
    }
    return py::make_tuple(recognizer, report);
}

py::tuple trained(py::handle points, const py::object& labels, const py::object& users,
                  const py::dict& values) {
    const std::vector<Trace> traces = tracesFrom(points, labels, users);
    const TrainingOptions options = optionsFrom(values);
    TrainingResult result = [&] {
        const py::gil_scoped_release unlocked;
        return GestureTrainer(options).train(traces, [](const TrainingProgress&) {
            const py::gil_scoped_acquire locked;
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        });
    }();
    return finished(std::move(result), options);
}

/// A plan and the options that it was made with.
struct Plan {
    std::shared_ptr<const TrainingPlan> plan;
    TrainingOptions options;
};

Plan planned(py::handle points, const py::object& labels, const py::object& users,
             const py::dict& values) {
    std::vector<Trace> traces = tracesFrom(points, labels, users);
    TrainingOptions options = optionsFrom(values);
    const py::gil_scoped_release unlocked;
    auto plan = std::make_shared<const TrainingPlan>(std::move(traces), options);
    return {std::move(plan), std::move(options)};
}

/// Models of one gesture, one entry a training.
struct TrainedGesture {
    Trained models;
};

TellApartTask tellApartTask(const Plan& it, std::size_t training,
                            const std::vector<const TrainedGesture*>& trained) {
    std::vector<Trained> models;
    for (const TrainedGesture* gesture : trained) models.push_back(gesture->models);
    const py::gil_scoped_release unlocked;
    return it.plan->tellApartTask(training, models);
}

py::tuple result(const Plan& it, const std::vector<const ToldApart*>& parts) {
    std::vector<ToldApart> copies;
    for (const ToldApart* part : parts) copies.push_back(*part);
    TrainingResult found = [&] {
        const py::gil_scoped_release unlocked;
        return it.plan->result(copies);
    }();
    return finished(std::move(found), it.options);
}

void addTasks(py::module_& module) {
    py::class_<TrainedGesture>(module, "TrainedGesture",
                               "The models of one gesture, of every training.")
        .def(py::pickle(
            [](const TrainedGesture& it) {
                py::tuple state(it.models.size());
                for (std::size_t t = 0; t < it.models.size(); ++t) {
                    state[t] = it.models[t] ? py::object(stateOf(*it.models[t])) : py::none();
                }
                return state;
            },
            [](const py::tuple& state) {
                TrainedGesture restored;
                for (const py::handle item : state) {
                    if (item.is_none()) {
                        restored.models.emplace_back();
                    } else {
                        restored.models.emplace_back(modelsFrom(item.cast<py::tuple>()));
                    }
                }
                return restored;
            }));
    py::class_<GestureTask>(module, "GestureTask", "Trains the models of one gesture.")
        .def_property_readonly("gesture", [](const GestureTask& it) { return textOf(it.gesture); })
        .def_property_readonly("traces", [](const GestureTask& it) { return it.traces.size(); })
        .def("run",
             [](const GestureTask& it) {
                 const py::gil_scoped_release unlocked;
                 return TrainedGesture{it.run()};
             })
        .def(py::pickle([](const GestureTask& it) { return stateOf(it); }, &gestureTaskFrom));
    py::class_<ToldApart>(module, "ToldApart", "What became of a training's models.")
        .def(py::pickle([](const ToldApart& it) { return stateOf(it); }, &toldApartFrom));
    py::class_<TellApartTask>(module, "TellApartTask",
                              "Teaches the gestures' models to tell each other's traces apart.")
        .def("run",
             [](const TellApartTask& it) {
                 const py::gil_scoped_release unlocked;
                 return it.run();
             })
        .def(py::pickle([](const TellApartTask& it) { return stateOf(it); }, &tellApartTaskFrom));
}

}  // namespace

void addTraining(py::module_& module) {
    addTasks(module);
    py::class_<Plan>(module, "TrainingPlan",
                     "A training in tasks that run anywhere; the same bits as `train`.")
        .def(py::init(&planned), py::arg("X"), py::arg("y"), py::arg("groups"), py::arg("options"))
        .def_property_readonly("gestures", [](const Plan& it) { return it.plan->gestures(); })
        .def_property_readonly("trainings", [](const Plan& it) { return it.plan->trainings(); })
        .def(
            "gesture_task",
            [](const Plan& it, std::size_t gesture) { return it.plan->gestureTask(gesture); },
            py::arg("gesture"))
        .def("tell_apart_task", &tellApartTask, py::arg("training"), py::arg("trained"))
        .def("result", &result, py::arg("parts"), "(Recognizer, report).");
    module.def("train", &trained, py::arg("X"), py::arg("y"), py::arg("groups"), py::arg("options"),
               "(Recognizer, report) of labelled traces.");
    module.def(
        "training_options", [] { return dictOf(TrainingOptions()); },
        "All options of a training and their defaults.");
}

}  // namespace Vesk::Python
