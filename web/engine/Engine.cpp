#include "Engine.h"

#include "Json.h"
#include "Requests.h"

#include <veskkit/Error.h>

#include <exception>
#include <new>
#include <utility>

namespace Vesk::Studio {

namespace {

Reply failure(const std::string& text) { return {textOf({{"error", text}}), {}}; }

}  // namespace

Reply Engine::call(const std::string& request, const std::string& arguments,
                   const std::string& file, const Progress& progress) try {
    const Request* found = requestOf(request);
    if (found == nullptr) return failure("found the request \"" + request + "\", expected another");
    Answer answer = (*found)({*this, Json::parse(arguments), file, progress});
    return {textOf(answer.json), std::move(answer.file)};
} catch (const std::bad_alloc&) {
    return failure("found more than this page has memory for");
} catch (const std::exception& problem) {
    return failure(problem.what());
}

const Kit::GestureRecognizer& Engine::recognizer() const {
    if (!current) throw Kit::InputError("found no model, expected a trained or a loaded one");
    return *current;
}

void Engine::use(Kit::RecognitionModel model, const std::string& source) {
    current.emplace(std::move(model), Kit::Preparation(), source);
}

}  // namespace Vesk::Studio
