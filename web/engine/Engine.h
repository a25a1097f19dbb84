#ifndef VESK_WEB_ENGINE_ENGINE_H
#define VESK_WEB_ENGINE_ENGINE_H

#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/traces/Trace.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Vesk::Studio {

/// What a request is answered with: an object of JSON (UTF-8), and a file's bytes where it makes
/// one. A request that fails has the key "error", one line.
struct Reply {
    std::string json;
    std::string file;
};

/// Told the share of a long request that is done, from 0 to 1.
using Progress = std::function<void(double)>;

/// All that the studio's page asks for: a thin layer of JSON over veskkit, the same in the browser
/// and in a native program. Holds the model at hand, and the examples that are tested. Nothing runs
/// on other threads.
///
/// Traces are lists of objects with the keys gesture, user and points, as in files of traces.
class Engine {
public:
    /// A request by its name (Requests.cpp has the list), its arguments as an object of JSON, and
    /// the bytes of a file where it takes one. Throws nothing.
    Reply call(const std::string& request, const std::string& arguments, const std::string& file,
               const Progress& progress = {});

    /// InputError where there is none.
    const Kit::GestureRecognizer& recognizer() const;

    void use(Kit::RecognitionModel model, const std::string& source);

    std::vector<Kit::Trace> held;  ///< of which each is tested with a model of all others

private:
    std::optional<Kit::GestureRecognizer> current;
};

}  // namespace Vesk::Studio

#endif
