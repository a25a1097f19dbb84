#ifndef VESK_WEB_ENGINE_REQUESTS_H
#define VESK_WEB_ENGINE_REQUESTS_H

#include "Engine.h"
#include "Json.h"

#include <string>

namespace Vesk::Studio {

struct Call {
    Engine& engine;
    const Json& arguments;
    const std::string& file;
    const Progress& progress;

    void tell(double share) const {
        if (progress) progress(share);
    }
};

struct Answer {
    Json json = Json::object();
    std::string file = {};
};

using Request = Answer (*)(const Call&);

/// Null for a name that is none.
const Request* requestOf(const std::string& name);

// Traces: their files, their making, what is wrong with them.
Answer starterSet(const Call& call);
Answer readTraces(const Call& call);
Answer writeTraces(const Call& call);
Answer diagnoseTraces(const Call& call);

// The model at hand.
Answer train(const Call& call);
Answer loadModel(const Call& call);
Answer describe(const Call& call);
Answer setStrictness(const Call& call);
Answer recognize(const Call& call);
Answer diagnoseModel(const Call& call);
Answer drawGesture(const Call& call);
Answer writeScene(const Call& call);
Answer writeReport(const Call& call);
Answer probabilities(const Call& call);
Answer colours(const Call& call);

// How well it would do on what it has not seen.
Answer holdTraces(const Call& call);
Answer testExample(const Call& call);
Answer summarizeTests(const Call& call);

}  // namespace Vesk::Studio

#endif
