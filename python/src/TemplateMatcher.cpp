#include "Arrays.h"
#include "Bindings.h"
#include "Traces.h"

#include <veskkit/evaluation/TemplateMatcher.h>

#include <pybind11/stl.h>

#include <memory>

namespace Vesk::Python {

using Vesk::Kit::TemplateMatcher;
using Vesk::Kit::Trace;

namespace {

using Matcher = std::shared_ptr<const TemplateMatcher>;

struct Holder {
    Matcher matcher;
};

Holder made(py::handle points, const py::object& labels, const py::object& users,
            double falseRejection) {
    if (!(falseRejection >= 0.0 && falseRejection <= 1.0)) {
        throw py::value_error("false_rejection: expected 0 to 1");
    }
    const std::vector<Trace> traces = tracesFrom(points, labels, users);
    std::vector<const Trace*> pointers;
    for (const Trace& trace : traces) {
        requireUsablePoints(trace);
        pointers.push_back(&trace);
    }
    const py::gil_scoped_release unlocked;
    return {std::make_shared<const TemplateMatcher>(pointers, falseRejection)};
}

/// (names, distances)
py::tuple nearest(const Holder& it, py::handle points) {
    const std::vector<Trace> traces = tracesFrom(points, py::none(), py::none());
    for (const Trace& trace : traces) requireUsablePoints(trace);
    const Matcher matcher = it.matcher;
    std::vector<std::string> names;
    std::vector<double> distances;
    {
        const py::gil_scoped_release unlocked;
        for (const Trace& trace : traces) {
            const TemplateMatcher::Match match = matcher->nearest(trace);
            names.push_back(match.gesture);
            distances.push_back(match.distance);
        }
    }
    py::list list;
    for (const std::string& name : names) list.append(textOf(name));
    return py::make_tuple(list, arrayOf(distances));
}

}  // namespace

void addTemplateMatcher(py::module_& module) {
    py::class_<Holder>(module, "TemplateMatcher",
                       "The yardstick: a trace is the gesture of the nearest training trace.")
        .def(py::init(&made), py::arg("X"), py::arg("y"), py::arg("groups") = py::none(),
             py::arg("false_rejection") = 0.02)
        .def("nearest", &nearest, py::arg("X"),
             "(names, distances (n,)) of the nearest training traces; \"\" for a trace without a "
             "direction.")
        .def_property_readonly(
            "threshold", [](const Holder& it) { return it.matcher->threshold(); },
            "The largest distance that is accepted.");
}

}  // namespace Vesk::Python
