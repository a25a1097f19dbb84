#include "Arrays.h"
#include "Bindings.h"
#include "Copies.h"
#include "Files.h"
#include "Printed.h"

#include <vesk/quantizer/ProximityFilter.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <pybind11/stl.h>

#include <algorithm>
#include <functional>
#include <list>
#include <utility>

namespace Vesk::Python {

using Vesk::Kit::Points;
using Vesk::ML::CodebookTrainingEvent;
using Vesk::ML::VectorQuantizer2D;

namespace {

void requireSize(std::int64_t n) {
    if (n >= 0 && n <= 1'000'000) return;
    throw py::value_error("codebook size: found " + std::to_string(n) + ", expected 0 to 1000000");
}

/// Traces to learn from: each has to have a direction.
std::list<Points> traceList(py::handle traces) {
    std::vector<Points> points = pointListFrom(traces, "traces");
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Points& trace = points[i];
        const auto step = std::adjacent_find(trace.begin(), trace.end(), std::not_equal_to<>());
        if (step != trace.end()) continue;
        throw py::value_error("traces[" + std::to_string(i) +
                              "]: found no step, expected at least 2 different positions");
    }
    return {std::make_move_iterator(points.begin()), std::make_move_iterator(points.end())};
}

py::array_t<int> symbolsOf(const VectorQuantizer2D& it, py::handle trace, float threshold,
                           bool rotation) {
    const Points points = pointsFrom(trace, "trace");
    const VectorQuantizer2D snapshot(it);
    std::vector<int> symbols;
    {
        const py::gil_scoped_release unlocked;
        symbols = snapshot.quantize(points, threshold, rotation);
    }
    return arrayOf(symbols);
}

py::array_t<int> runsOf(const VectorQuantizer2D& it, py::handle trace, float threshold) {
    Points points = pointsFrom(trace, "trace");
    VectorQuantizer2D snapshot(it);
    std::vector<int> symbols;
    {
        const py::gil_scoped_release unlocked;
        symbols = snapshot.classifyAndFilter(points, threshold);
    }
    return arrayOf(symbols);
}

py::array_t<double> directionsOf(const VectorQuantizer2D& it, py::handle trace) {
    Points points = pointsFrom(trace, "trace");
    VectorQuantizer2D snapshot(it);
    std::vector<double> directions;
    {
        const py::gil_scoped_release unlocked;
        directions = snapshot.convertSequence(points);
    }
    return arrayOf(directions);
}

py::array_t<double> learnt(VectorQuantizer2D& it, py::handle traces, float threshold,
                           const py::object& observer) {
    const std::list<Points> points = traceList(traces);
    VectorQuantizer2D snapshot(it);
    const auto tell = [&](CodebookTrainingEvent event, std::size_t count) {
        if (observer.is_none()) return;
        const py::gil_scoped_acquire locked;
        observer(event, count);
    };
    std::vector<double> codebook;
    {
        const py::gil_scoped_release unlocked;
        codebook = snapshot.learnCodebook(points, threshold, tell);
    }
    it = std::move(snapshot);
    return arrayOf(codebook);
}

py::array_t<double> trainedPrinting(VectorQuantizer2D& it, py::handle traces, float threshold) {
    std::list<Points> points = traceList(traces);
    VectorQuantizer2D snapshot(it);
    std::vector<double> codebook;
    printing([&] { codebook = snapshot.trainCodebook(points, threshold); });
    it = std::move(snapshot);
    return arrayOf(codebook);
}

void save(const VectorQuantizer2D& it, const py::object& path) {
    const VectorQuantizer2D snapshot(it);
    writeFile(path, [&](const std::string& file) { return snapshot.save(file); });
}

VectorQuantizer2D loaded(const py::object& path) {
    VectorQuantizer2D quantizer;
    readFile(path, [&](const std::string& file) { return quantizer.loadCodebook(file.c_str()); });
    return quantizer;
}

py::array_t<double> filtered(py::handle trace, double threshold) {
    Points in = pointsFrom(trace, "trace");
    Points out;
    {
        const py::gil_scoped_release unlocked;
        Vesk::ML::ProximityFilter<double>::run(in, out, threshold);
    }
    return arrayOf(out);
}

}  // namespace

void addQuantizer(py::module_& module) {
    py::enum_<CodebookTrainingEvent>(module, "CodebookTrainingEvent",
                                     "What the observer of a codebook training is told of.")
        .value("AFTER_EQ_FILTER", CodebookTrainingEvent::AfterEqFilter,
               "Positions left once repeated ones are dropped.")
        .value("AFTER_PROX_FILTER", CodebookTrainingEvent::AfterProxFilter,
               "Positions left once close ones are dropped.")
        .value("END_OF_TRACE", CodebookTrainingEvent::EndOfTrace);

    py::class_<VectorQuantizer2D> quantizer(
        module, "VectorQuantizer2D",
        "Turns a 2D trace, an array (P, 2), into direction symbols: indices into a codebook of "
        "directions in degrees, counter-clockwise from the positive x axis.");
    quantizer.def(py::init<>());
    quantizer.def(py::init([](py::handle codebook) {
                      VectorQuantizer2D made;
                      made.setCodebook(vectorFrom(codebook, "codebook"));
                      return made;
                  }),
                  py::arg("codebook"));
    quantizer.def_property(
        "codebook", [](const VectorQuantizer2D& it) { return arrayOf(it.codebook); },
        [](VectorQuantizer2D& it, py::handle value) {
            it.setCodebook(vectorFrom(value, "codebook"));
        },
        "Directions in degrees. A copy: assign to change it and its size.");
    quantizer.def_property(
        "codebook_size", [](const VectorQuantizer2D& it) { return it.codebookSize; },
        [](VectorQuantizer2D& it, std::int64_t n) {
            requireSize(n);
            it.codebookSize = static_cast<int>(n);
        },
        "Entries to work with, or to learn where there is no codebook yet.");
    quantizer.def_readonly("codebook_ready", &VectorQuantizer2D::codebookReady,
                           "Whether a codebook was set, generated or loaded.");
    quantizer.def(
        "initialize_codebook",
        [](VectorQuantizer2D& it, std::int64_t n) {
            requireSize(n);
            it.initializeCodebook(static_cast<int>(n));
        },
        py::arg("n"), "Appends n evenly spaced directions from 0.");
    quantizer.def("learn_codebook", &learnt, py::arg("traces"), py::arg("prox_filter_threshold"),
                  py::arg("observer") = py::none(),
                  "Learns the codebook from traces, silently, and returns it. `observer` is "
                  "called with an event and a count.");
    quantizer.def("train_codebook", &trainedPrinting, py::arg("traces"),
                  py::arg("prox_filter_threshold"), "`learn_codebook` that prints its counts.");
    quantizer.def("quantize", &symbolsOf, py::arg("trace"), py::arg("prox_filter_threshold"),
                  py::arg("rotation_allowed"),
                  "The symbols of a trace, at most P - 1. Drops positions nearer to the last "
                  "than the threshold; `rotation_allowed`: relative to the first symbol.");
    quantizer.def("classify", &symbolsOf, py::arg("trace"), py::arg("prox_filter_threshold"),
                  py::arg("rotation_allowed"),
                  "`quantize`, by the library's first name. Leaves nothing allocated either.");
    quantizer.def("classify_and_filter", &runsOf, py::arg("trace"),
                  py::arg("prox_filter_threshold"),
                  "`quantize` without rotation, runs of equal symbols collapsed to one.");
    quantizer.def("convert_sequence", &directionsOf, py::arg("trace"),
                  "The direction of every step in degrees, (P - 1,); one 0 for fewer than two "
                  "positions.");
    quantizer.def(
        "rad_to_deg", [](VectorQuantizer2D& it, double rad) { return it.radToDeg(rad); },
        py::arg("rad"));
    quantizer.def("save", &save, py::arg("path"),
                  "Writes the codebook's file, one entry a line. OSError where it cannot.");
    quantizer.def_static("load", &loaded, py::arg("path"),
                         "A quantiser with a file's codebook. OSError where it cannot be opened.");
    quantizer.def("__repr__", [](const VectorQuantizer2D& it) {
        return py::str("<VectorQuantizer2D: {} directions{}>")
            .format(it.codebookSize, it.codebookReady ? "" : ", not ready");
    });
    addCopies(quantizer);
    quantizer.def(py::pickle(
        [](const VectorQuantizer2D& it) {
            return py::make_tuple(it.codebookReady, it.codebookSize, arrayOf(it.codebook));
        },
        [](const py::tuple& state) {
            if (state.size() != 3) throw py::value_error("state: expected that of a quantiser");
            VectorQuantizer2D restored;
            restored.codebookReady = state[0].cast<bool>();
            restored.codebookSize = state[1].cast<int>();
            restored.codebook = vectorFrom(state[2], "codebook");
            return restored;
        }));
    module.def("proximity_filter", &filtered, py::arg("trace"), py::arg("threshold"),
               "The first position (of at least two) and every later one at least `threshold` "
               "away from the last kept, (Q, 2).");
}

}  // namespace Vesk::Python
