#ifndef VESK_WEB_ENGINE_JSON_H
#define VESK_WEB_ENGINE_JSON_H

#include <veskkit/diagnosis/Finding.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/traces/Trace.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace Vesk::Studio {

using Json = nlohmann::json;

/// On one line; what is not UTF-8 gets replacement characters.
std::string textOf(const Json& json);

/// Null for what is not finite.
Json numberJson(double number);

/// Without a source: the page tells traces apart by their places.
std::vector<Kit::Trace> tracesOf(const Json& json);
Json traceJson(const Kit::Trace& trace);

/// No bound is null.
Json answersJson(const std::vector<Kit::Answer>& answers);

Json findingsJson(const std::vector<Kit::Finding>& findings);

}  // namespace Vesk::Studio

#endif
