#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/traces/internal/Shape.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Vesk::Kit::internal {

TracePlace Examination::place(std::size_t trace) const {
    return {trace, traces[trace].source, traces[trace].line, traces[trace].user};
}

std::string Examination::described(std::size_t trace) const {
    const Trace& it = traces[trace];
    const std::string where =
        it.source.empty() && it.line == 0 ? joined("trace ", trace + 1) : placeOf(it);
    return joined(where, ": ", it.gesture.empty() ? "a trace" : quoted(it.gesture),
                  it.user.empty() ? "" : " by " + oneLine(it.user, 60));
}

Finding& Examination::addAbout(std::size_t trace, FindingKind kind, Weight weight,
                               const std::string& text, std::string advice) {
    Finding finding{kind, weight};
    if (!traces[trace].gesture.empty()) finding.gestures.push_back(traces[trace].gesture);
    finding.traces.push_back(place(trace));
    finding.text = described(trace) + ": " + text;
    finding.advice = std::move(advice);
    marked[trace] = true;
    findings.push_back(std::move(finding));
    return findings.back();
}

std::vector<ShapedTrace> shapedTraces(const Examination& examination) {
    std::vector<ShapedTrace> samples;
    for (std::size_t i = 0; i < examination.traces.size(); ++i) {
        if (examination.marked[i]) continue;
        const Trace& trace = examination.traces[i];
        samples.push_back({i, storedName(trace.gesture), shapeOf(trace.points)});
    }
    return samples;
}

double medianOf(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double rounded(double value) {
    if (value == 0.0 || !std::isfinite(value)) return value;
    const double scale = std::pow(10.0, 2.0 - std::floor(std::log10(std::abs(value))));
    return std::isnormal(scale) ? std::round(value * scale) / scale : value;
}

}  // namespace Vesk::Kit::internal
