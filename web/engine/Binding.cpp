#include "Engine.h"

#include <emscripten/bind.h>
#include <emscripten/val.h>

#include <filesystem>
#include <string>

namespace {

using emscripten::val;

/// Files that a request needs for a while lie in a folder of their own.
const bool inFolder = [] {
    std::filesystem::create_directory("/studio");
    std::filesystem::current_path("/studio");
    return true;
}();

/// An engine for JavaScript: `call` returns the JSON, `file` the bytes of the last reply.
class Binding {
public:
    std::string call(const std::string& request, const std::string& arguments,
                     const std::string& file, val progress) {
        Vesk::Studio::Progress tell;
        if (progress.typeOf().as<std::string>() == "function")
            tell = [&progress](double share) { progress(share); };
        last = engine.call(request, arguments, file, tell);
        return last.json;
    }

    /// A view of memory: to be copied before the next call.
    val file() const {
        return val(emscripten::typed_memory_view(
            last.file.size(), reinterpret_cast<const unsigned char*>(last.file.data())));
    }

private:
    Vesk::Studio::Engine engine;
    Vesk::Studio::Reply last;
};

}  // namespace

EMSCRIPTEN_BINDINGS(studio) {
    emscripten::class_<Binding>("Engine")
        .constructor<>()
        .function("call", &Binding::call)
        .function("file", &Binding::file);
}
