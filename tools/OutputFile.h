#ifndef VESK_TOOLS_OUTPUTFILE_H
#define VESK_TOOLS_OUTPUTFILE_H

#include "Interruption.h"

#include <veskkit/io/AtomicFile.h>

#include <optional>
#include <string>
#include <string_view>

namespace Vesk::Tool {

/// The file that a subcommand was told to make: whole or not at all. "-" is standard output.
/// Errors are Kit::OutputError.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);

    /// Adds to the file. Interrupted where a signal waits.
    void write(std::string_view text);

    /// Puts the file in place.
    void commit();

    /// Refuses a path that could not be written, before any work is done for it.
    static void probe(const std::string& path);

private:
    // A signal during the file's life waits until the temporary file is gone: declared first.
    std::optional<DelayedInterruption> delay;
    std::optional<Kit::AtomicFile> file;
};

/// Whether a path stands for standard output, or standard input.
inline bool isStandard(const std::string& path) { return path == "-"; }

}  // namespace Vesk::Tool

#endif
