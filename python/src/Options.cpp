#include "Options.h"

#include "Arrays.h"

#include <pybind11/stl.h>

#include <string>
#include <utility>

namespace Vesk::Python {

using Vesk::Kit::FirstEstimate;
using Vesk::Kit::TrainingOptions;

namespace {

/// The whole of a value that may be anything in Python.
template <typename T>
void take(const char* name, py::handle from, T& to) {
    try {
        to = from.cast<T>();
    } catch (const py::cast_error&) {
        throw py::type_error(std::string(name) + ": found " + std::string(py::repr(from)) +
                             ", expected " + (std::is_same_v<T, bool> ? "a bool" : "a number"));
    }
}

struct Reading {
    const py::dict& values;
    std::size_t taken = 0;

    template <typename T>
    void operator()(const char* name, T& member) {
        if (!values.contains(name)) return;
        ++taken;
        take(name, values[name], member);
    }
    void operator()(const char* name, std::string& member) {
        if (!values.contains(name)) return;
        ++taken;
        member = bytesFrom(py::str(values[name]));
    }
    void operator()(const char* name, std::vector<double>& member) {
        if (!values.contains(name)) return;
        ++taken;
        const py::object value = values[name];
        if (!value.is_none()) member = vectorFrom(value, name);
    }
    void operator()(const char* name, FirstEstimate& member) {
        if (!values.contains(name)) return;
        ++taken;
        const std::string value = py::str(values[name]);
        if (value != "even_cut" && value != "equal_segments") {
            throw py::value_error(std::string(name) + ": found '" + value +
                                  "', expected 'even_cut' or 'equal_segments'");
        }
        member = value == "even_cut" ? FirstEstimate::EvenCut : FirstEstimate::EqualSegments;
    }
};

struct Writing {
    py::dict& values;

    template <typename T>
    void operator()(const char* name, T& member) {
        values[name] = member;
    }
    void operator()(const char* name, std::string& member) { values[name] = textOf(member); }
    void operator()(const char* name, FirstEstimate& member) {
        values[name] = member == FirstEstimate::EvenCut ? "even_cut" : "equal_segments";
    }
};

/// Every option with its name.
template <typename Visitor>
void visit(TrainingOptions& options, Visitor& visitor) {
    visitor("name", options.name);
    visitor("points", options.preparation.points);
    visitor("flip_y", options.preparation.flipY);
    visitor("bearings", options.preparation.bearings);
    visitor("symbols", options.symbols);
    visitor("codebook", options.codebook);
    visitor("states", options.states);
    visitor("delta", options.delta);
    visitor("sub_models", options.subModels);
    visitor("smallest_sub_model", options.smallestSubModel);
    visitor("first_estimate", options.firstEstimate);
    visitor("iterations", options.iterations);
    visitor("emission_floor", options.emissionFloor);
    visitor("smoothing", options.smoothing);
    visitor("discrimination", options.discrimination);
    visitor("turns", options.turns);
    visitor("threshold_states", options.thresholdStates);
    visitor("threshold_smoothing", options.thresholdSmoothing);
    visitor("acceptance_ratio", options.acceptanceRatio);
    visitor("calibrate", options.calibrate);
    visitor("false_rejection", options.falseRejection);
    visitor("threads", options.threads);
    visitor("skip_bad", options.skipBad);
}

}  // namespace

TrainingOptions optionsFrom(const py::dict& values) {
    TrainingOptions options;
    Reading reading{values};
    visit(options, reading);
    if (reading.taken != values.size()) {
        const py::dict known = dictOf(options);
        for (const auto& [name, value] : values) {
            if (known.contains(name)) continue;
            throw py::type_error("found the option " + std::string(py::repr(name)) +
                                 ", expected one of " +
                                 std::string(py::str(", ").attr("join")(known).cast<py::str>()));
        }
    }
    return options;
}

py::dict dictOf(const TrainingOptions& options) {
    py::dict values;
    TrainingOptions copy = options;
    Writing writing{values};
    visit(copy, writing);
    return values;
}

}  // namespace Vesk::Python
