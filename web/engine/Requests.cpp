#include "Requests.h"

#include <map>

namespace Vesk::Studio {

const Request* requestOf(const std::string& name) {
    static const std::map<std::string, Request> requests{
        {"starterSet", starterSet},
        {"readTraces", readTraces},
        {"writeTraces", writeTraces},
        {"diagnoseTraces", diagnoseTraces},
        {"train", train},
        {"loadModel", loadModel},
        {"describe", describe},
        {"setStrictness", setStrictness},
        {"recognize", recognize},
        {"diagnoseModel", diagnoseModel},
        {"drawGesture", drawGesture},
        {"writeScene", writeScene},
        {"writeReport", writeReport},
        {"holdTraces", holdTraces},
        {"testExample", testExample},
        {"summarizeTests", summarizeTests},
        {"colours", colours},
        {"probabilities", probabilities},
    };
    const auto found = requests.find(name);
    return found == requests.end() ? nullptr : &found->second;
}

}  // namespace Vesk::Studio
