#include "Arrays.h"
#include "Bindings.h"

#include <veskkit/report/Colours.h>
#include <veskkit/report/ModelPlots.h>
#include <veskkit/report/StrokePlot.h>

#include <pybind11/stl.h>

namespace Vesk::Python {

using Vesk::Kit::codebookRose;
using Vesk::Kit::emissionHeatMap;
using Vesk::Kit::stateStrokePlot;
using Vesk::Kit::strokesPlot;
using Vesk::Kit::StrokeStyle;
using Vesk::Kit::transitionGraph;
using Vesk::Kit::YAxis;

namespace {

YAxis axisFrom(bool yUp) { return yUp ? YAxis::Up : YAxis::Down; }

std::string strokes(const std::string& title, py::handle traces,
                    const std::vector<std::string>& names, bool yUp) {
    const auto points = pointListFrom(traces, "traces");
    if (points.size() != names.size()) {
        throw py::value_error("names: found " + std::to_string(names.size()) + ", expected " +
                              std::to_string(points.size()) + ", one a trace");
    }
    std::vector<Vesk::Kit::NamedStroke> named;
    for (std::size_t i = 0; i < points.size(); ++i) named.push_back({names[i], points[i]});
    return strokesPlot(title, named, StrokeStyle{axisFrom(yUp)});
}

}  // namespace

void addPlots(py::module_& module) {
    module.def("strokes_svg", &strokes, py::arg("title"), py::arg("traces"), py::arg("names"),
               py::arg("y_up"));
    module.def(
        "state_stroke_svg",
        [](const std::string& title, py::handle points, py::handle states, int N, bool yUp) {
            if (N < 1) throw py::value_error("num_states: expected at least 1");
            return stateStrokePlot(title, pointsFrom(points, "points"),
                                   symbolsFrom(states, "states", N), N, StrokeStyle{axisFrom(yUp)});
        },
        py::arg("title"), py::arg("points"), py::arg("states"), py::arg("num_states"),
        py::arg("y_up"));
    module.def(
        "codebook_svg",
        [](const std::string& title, py::handle directions, bool yUp) {
            return codebookRose(title, vectorFrom(directions, "directions"), axisFrom(yUp));
        },
        py::arg("title"), py::arg("directions"), py::arg("y_up"));
    module.def(
        "transitions_svg",
        [](const std::string& title, py::handle a) {
            const auto table = matrixFrom(a, "a");
            if (table.rows != table.cols) throw py::value_error("a: expected shape (N, N)");
            return transitionGraph(title, table);
        },
        py::arg("title"), py::arg("a"));
    module.def(
        "emissions_svg",
        [](const std::string& title, py::handle b, const py::object& directions, bool yUp) {
            const auto table = matrixFrom(b, "b");
            const auto marks = directions.is_none()
                                   ? std::vector<double>()
                                   : vectorFrom(directions, "directions", table.cols);
            return emissionHeatMap(title, table, marks, axisFrom(yUp));
        },
        py::arg("title"), py::arg("b"), py::arg("directions"), py::arg("y_up"));
    module.def("plot_colours", &Vesk::Kit::plotColours,
               "The style sheet that gives plots their light and dark colours.");
}

}  // namespace Vesk::Python
