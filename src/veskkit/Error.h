#ifndef VESK_VESKKIT_ERROR_H
#define VESK_VESKKIT_ERROR_H

#include <stdexcept>

namespace Vesk::Kit {

/// Something that was given is not what it has to be: a file, a line, a trace, a model, an option.
///
/// The text is one line that names the place (file and line, or trace), what was found and what
/// was expected: "traces.jsonl:12: found no key \"points\", expected a list of positions".
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file could not be written. The text is one line: the path and the reason.
class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace Vesk::Kit

#endif
