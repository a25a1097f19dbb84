#include "Json.h"

#include <cmath>

namespace Vesk::Studio {

std::string textOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json numberJson(double number) { return std::isfinite(number) ? Json(number) : Json(); }

std::vector<Kit::Trace> tracesOf(const Json& json) {
    std::vector<Kit::Trace> traces;
    traces.reserve(json.size());
    for (const Json& entry : json) {
        Kit::Trace trace;
        trace.points = entry.at("points").get<Kit::Points>();
        trace.gesture = entry.value("gesture", "");
        trace.user = entry.value("user", "");
        trace.line = traces.size() + 1;
        traces.push_back(std::move(trace));
    }
    return traces;
}

Json traceJson(const Kit::Trace& trace) {
    return {{"gesture", trace.gesture}, {"user", trace.user}, {"points", trace.points}};
}

Json answersJson(const std::vector<Kit::Answer>& answers) {
    Json json = Json::array();
    for (const Kit::Answer& answer : answers)
        json.push_back({{"logRatio", numberJson(answer.logRatio)}, {"gesture", answer.gesture}});
    return json;
}

Json findingsJson(const std::vector<Kit::Finding>& findings) {
    Json list = Json::array();
    for (const Kit::Finding& finding : findings) {
        Json json{{"kind", Kit::toString(finding.kind)},
                  {"weight", Kit::toString(finding.weight)},
                  {"gestures", finding.gestures},
                  {"text", finding.text},
                  {"advice", finding.advice},
                  {"traces", Json::array()}};
        for (const Kit::TracePlace& place : finding.traces) json["traces"].push_back(place.trace);
        list.push_back(std::move(json));
    }
    return list;
}

}  // namespace Vesk::Studio
