#include "Traces.h"

#include "Arrays.h"
#include "Bindings.h"
#include "Files.h"

#include <veskkit/io/TraceFiles.h>
#include <veskkit/synthesis/TraceSynthesizer.h>
#include <veskkit/traces/Resampler.h>

#include <pybind11/stl.h>

#include <stdexcept>
#include <utility>

namespace Vesk::Python {

using Vesk::Kit::Points;
using Vesk::Kit::Trace;

namespace {

std::vector<std::string> textsFrom(const py::object& values, const char* what,
                                   std::size_t expected) {
    std::vector<std::string> texts;
    if (values.is_none()) return std::vector<std::string>(expected);
    for (const py::handle value : values) texts.push_back(bytesFrom(py::str(value)));
    if (texts.size() == expected) return texts;
    throw py::value_error(std::string(what) + ": found " + std::to_string(texts.size()) +
                          " of them, expected " + std::to_string(expected) + ", one a trace");
}

/// (positions (P, 2), lengths (n,), list of labels, list of users)
py::tuple arraysOf(std::vector<Trace> traces) {
    std::vector<Points> points;
    py::list labels;
    py::list users;
    for (Trace& trace : traces) {
        Vesk::Kit::requireUsablePoints(trace);
        points.push_back(std::move(trace.points));
        labels.append(textOf(trace.gesture));
        users.append(textOf(trace.user));
    }
    const py::tuple arrays = packed(points);
    return py::make_tuple(arrays[0], arrays[1], labels, users);
}

py::tuple read(const py::object& path) {
    const std::string file = pathFrom(path);
    std::vector<Trace> traces;
    {
        const py::gil_scoped_release unlocked;
        traces = Vesk::Kit::readTraces(file);
    }
    return arraysOf(std::move(traces));
}

py::tuple generated(int users, int repetitions, std::uint64_t seed, double unsteadiness) {
    std::vector<Trace> traces;
    {
        const py::gil_scoped_release unlocked;
        const Vesk::Kit::TraceSynthesizer synthesizer(seed, unsteadiness);
        for (int user = 1; user <= users; ++user) {
            for (const std::string& gesture : Vesk::Kit::TraceSynthesizer::gestures()) {
                for (int repetition = 1; repetition <= repetitions; ++repetition) {
                    traces.push_back(synthesizer.draw(gesture, user, repetition));
                }
            }
        }
    }
    return arraysOf(std::move(traces));
}

py::array_t<double> resampled(py::handle trace, int points, bool flipY, int bearings) {
    const std::vector<Trace> one = tracesFrom(py::make_tuple(trace), py::none(), py::none());
    Points result;
    {
        const py::gil_scoped_release unlocked;
        result = Vesk::Kit::Resampler({points, flipY, bearings}).resample(one.front());
    }
    return arrayOf(result);
}

}  // namespace

std::vector<Trace> tracesFrom(py::handle points, const py::object& labels,
                              const py::object& users) {
    std::vector<Points> list = pointListFrom(points, "X");
    std::vector<std::string> gestures = textsFrom(labels, "y", list.size());
    std::vector<std::string> persons = textsFrom(users, "groups", list.size());
    std::vector<Trace> traces;
    traces.reserve(list.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        traces.push_back({std::move(list[i]), std::move(gestures[i]), std::move(persons[i]),
                          "X[" + std::to_string(i) + "]", 0});
    }
    return traces;
}

void addTraces(py::module_& module) {
    module.def("read_traces", &read, py::arg("path"),
               "(positions (P, 2), lengths (n,), labels, users) of a file or folder of traces.");
    module.def(
        "pack_traces", [](py::handle points) { return packed(pointListFrom(points, "X")); },
        py::arg("X"), "(positions (P, 2), lengths (n,)) of traces, arrays (P, 2).");
    module.def("generate_traces", &generated, py::arg("users"), py::arg("repetitions"),
               py::arg("seed"), py::arg("unsteadiness") = 1.0,
               "Synthetic traces of a dozen gestures, as read_traces has them.");
    module.def("resample", &resampled, py::arg("trace"), py::arg("points") = 41,
               py::arg("flip_y") = false, py::arg("bearings") = 8,
               "The trace (P, 2) as recognition sees it: `points` positions at equal distances "
               "along its path and `bearings` steps that tell where these lie, (points + bearings, "
               "2); 0 points leave it as drawn. Empty where it has no direction.");
}

}  // namespace Vesk::Python
