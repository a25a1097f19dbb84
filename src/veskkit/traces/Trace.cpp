#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/traces/Trace.h>

#include <cmath>

namespace Vesk::Kit {

using internal::joined;
using internal::oneLine;

std::string placeOf(const Trace& trace) {
    if (trace.source.empty()) return trace.line == 0 ? "trace" : joined("line ", trace.line);
    if (trace.line == 0) return oneLine(trace.source);
    return joined(oneLine(trace.source), ':', trace.line);
}

void requireUsablePoints(const Trace& trace) {
    for (std::size_t p = 0; p < trace.points.size(); ++p) {
        const std::vector<double>& position = trace.points[p];
        if (position.size() < 2) {
            throw InputError(joined(placeOf(trace), ": found ", position.size(),
                                    position.size() == 1 ? " number" : " numbers", " in points[", p,
                                    "], expected at least 2"));
        }
        for (std::size_t axis = 0; axis < 2; ++axis) {
            if (std::isfinite(position[axis])) continue;
            throw InputError(joined(placeOf(trace), ": found ", position[axis], " as points[", p,
                                    "][", axis, "], expected a finite number"));
        }
    }
}

}  // namespace Vesk::Kit
