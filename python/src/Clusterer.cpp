#include "Arrays.h"
#include "Bindings.h"
#include "Hmm.h"

#include <vesk/quantizer/KMeansMotionVec.h>

#include <pybind11/stl.h>

#include <utility>

namespace Vesk::Python {

using Vesk::ML::KMeansMotionVec;

namespace {

/// The library's clusterer refers to its data; this one has them.
struct Clusterer {
    std::vector<double> centres;
    std::vector<std::vector<double>> data;
};

Clusterer made(py::handle centres, const py::iterable& data) {
    Clusterer clusterer{vectorFrom(centres, "centres"), {}};
    for (const py::handle row : data) {
        clusterer.data.push_back(
            vectorFrom(row, "data[" + std::to_string(clusterer.data.size()) + "]"));
    }
    return clusterer;
}

void learn(Clusterer& it, int maxIterations, double threshold) {
    Clusterer snapshot(it);
    {
        const py::gil_scoped_release unlocked;
        KMeansMotionVec work(std::move(snapshot.centres), snapshot.data);
        work.learn(maxIterations, threshold);
        snapshot.centres = std::move(work.centres);
    }
    it.centres = std::move(snapshot.centres);
}

py::list classify(const Clusterer& it) {
    Clusterer snapshot(it);
    std::vector<std::vector<int>> nearest;
    {
        const py::gil_scoped_release unlocked;
        nearest = KMeansMotionVec(std::move(snapshot.centres), snapshot.data).classify();
    }
    return listOf(nearest);
}

}  // namespace

void addClusterer(py::module_& module) {
    py::class_<Clusterer> clusterer(
        module, "KMeansMotionVec",
        "K-means clustering of directions: angles in degrees on the circle. `data` is a list of "
        "arrays of angles.");
    clusterer.def(py::init(&made), py::arg("centres"), py::arg("data"));
    clusterer.def_property(
        "centres", [](const Clusterer& it) { return arrayOf(it.centres); },
        [](Clusterer& it, py::handle value) { it.centres = vectorFrom(value, "centres"); },
        "(k,) directions in degrees. A copy: assign to change them.");
    clusterer.def("learn", &learn, py::arg("max_iterations"), py::arg("threshold"),
                  "Moves the centres to the means of the angles nearest to them until none moves "
                  "by `threshold` degrees; a negative `max_iterations` sets no bound, and it "
                  "ends.");
    clusterer.def("classify", &classify,
                  "Per row of the data an array of the indices of its angles' nearest centres.");
    clusterer.def("__repr__", [](const Clusterer& it) {
        return py::str("<KMeansMotionVec: {} centres, {} rows>")
            .format(it.centres.size(), it.data.size());
    });
    clusterer.def(
        py::pickle([](const Clusterer& it) { return py::make_tuple(arrayOf(it.centres), it.data); },
                   [](const py::tuple& state) {
                       if (state.size() != 2)
                           throw py::value_error("state: expected that of a clusterer");
                       return Clusterer{vectorFrom(state[0], "centres"),
                                        state[1].cast<std::vector<std::vector<double>>>()};
                   }));
}

}  // namespace Vesk::Python
