#ifndef VESK_FUZZ_TRACES_H
#define VESK_FUZZ_TRACES_H

#include "Target.h"

#include <veskkit/Error.h>
#include <veskkit/io/TraceReader.h>

#include <cmath>
#include <string>
#include <vector>

namespace Vesk::Fuzz {

/// Reads to the end, going on behind what is refused. Every refusal is one line of text, and a
/// reader of `bytes` bytes comes to its end.
inline std::vector<Vesk::Kit::Trace> readAll(Vesk::Kit::TraceReader& reader, std::size_t bytes) {
    std::vector<Vesk::Kit::Trace> traces;
    for (std::size_t calls = 0;; ++calls) {
        expect(calls <= bytes + 2, "a reader comes to its end");
        try {
            Vesk::Kit::Trace trace;
            if (!reader.next(trace)) return traces;
            for (const std::vector<double>& point : trace.points) {
                expect(point.size() >= 2 && std::isfinite(point[0]) && std::isfinite(point[1]),
                       "positions are finite");
            }
            traces.push_back(trace);
        } catch (const Vesk::Kit::InputError& error) {
            const std::string message = error.what();
            expect(!message.empty() && message.find('\n') == std::string::npos, "one line");
        }
    }
}

/// The same labels, users and positions to the bit (x and y, where only these are `planar`).
inline bool same(const Vesk::Kit::Trace& one, const Vesk::Kit::Trace& other, bool planar) {
    if (one.gesture != other.gesture || one.user != other.user) return false;
    if (!planar) return one.points == other.points;
    if (one.points.size() != other.points.size()) return false;
    for (std::size_t i = 0; i < one.points.size(); ++i) {
        if (one.points[i][0] != other.points[i][0]) return false;
        if (one.points[i][1] != other.points[i][1]) return false;
    }
    return true;
}

}  // namespace Vesk::Fuzz

#endif
