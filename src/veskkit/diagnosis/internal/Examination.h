#ifndef VESK_VESKKIT_DIAGNOSIS_INTERNAL_EXAMINATION_H
#define VESK_VESKKIT_DIAGNOSIS_INTERNAL_EXAMINATION_H

#include <veskkit/diagnosis/Finding.h>
#include <veskkit/evaluation/Evaluation.h>
#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace Vesk::Kit::internal {

/// What is known of a set of traces so far. The checks add findings and mark the traces that have
/// one, which the checks after them leave out.
struct Examination {
    const std::vector<Trace>& traces;
    std::vector<bool> marked;  ///< per trace: has a finding of its own
    std::vector<Finding> findings = {};

    explicit Examination(const std::vector<Trace>& all) : traces(all), marked(all.size()) {}

    TracePlace place(std::size_t trace) const;

    /// "traces.jsonl:7: \"star\" by s02"
    std::string described(std::size_t trace) const;

    /// Adds a finding about one trace, whose text goes behind its description, and marks it.
    Finding& addAbout(std::size_t trace, FindingKind kind, Weight weight, const std::string& text,
                      std::string advice);
};

/// A trace that is fit to be compared with others.
struct ShapedTrace {
    std::size_t trace;
    std::string gesture;        ///< its name in a model
    std::vector<double> shape;  ///< Shape.h
};

/// The traces nearest to a sample: squared distances of shapes; infinity where there is none.
struct Neighbours {
    double own = std::numeric_limits<double>::infinity();    ///< to another one of its gesture
    double other = std::numeric_limits<double>::infinity();  ///< to one of another gesture,
    std::string otherGesture = {};                           ///< and of which
};

// The checks, in the order in which they are made.
void examineLabels(Examination& examination);
void examineCounts(Examination& examination);
void examinePaths(Examination& examination);
void examineDuplicates(Examination& examination);

/// The traces without a mark, in their order.
std::vector<ShapedTrace> shapedTraces(const Examination& examination);

/// O(n^2).
std::vector<Neighbours> neighboursOf(const std::vector<ShapedTrace>& samples, unsigned threads);

/// By the neighbours alone.
void examineLabelling(Examination& examination, const std::vector<ShapedTrace>& samples,
                      const std::vector<Neighbours>& neighbours);

// Outcomes are of samples: `Outcome::trace` is a place in their list.

/// By the neighbours and by models that agree with them.
void examineLabelling(Examination& examination, const std::vector<ShapedTrace>& samples,
                      const std::vector<Neighbours>& neighbours,
                      const std::vector<Outcome>& outcomes);
void examineOutliers(Examination& examination, const std::vector<ShapedTrace>& samples,
                     const std::vector<Neighbours>& neighbours);
void examinePairs(Examination& examination, const std::vector<ShapedTrace>& samples,
                  const std::vector<Outcome>& outcomes);

/// The mean of shapes of one gesture, each scaled to fit their medoid best. Shapes that fit only
/// mirrored through the centre (a line drawn the other way round) are left out.
Points meanShape(const std::vector<const std::vector<double>*>& shapes);

/// The upper median; the values are reordered. Not for none.
double medianOf(std::vector<double>& values);

/// The number with three significant digits, for texts.
double rounded(double value);

}  // namespace Vesk::Kit::internal

#endif
