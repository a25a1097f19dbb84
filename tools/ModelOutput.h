#ifndef VESK_TOOLS_MODELOUTPUT_H
#define VESK_TOOLS_MODELOUTPUT_H

#include "CommandLine.h"

#include <veskkit/recognition/RecognitionModel.h>

#include <string>

namespace Vesk::Tool {

/// The model file that a subcommand makes, as the command line has it.
class ModelOutput {
public:
    /// Adds -o and --name and returns -o; the object has to stay.
    CLI::Option* addTo(CLI::App& line);

    bool wanted() const { return !path.empty(); }
    bool goesToStandardOutput() const;

    /// The model's name: the one given, or else the file's name without its extension. UsageError
    /// for more than a word.
    std::string modelName() const;

    /// Refuses a path that could not be written, before any work is done for it.
    void probe() const;

    /// Writes the file, whole or not at all.
    void write(const Kit::RecognitionModel& model) const;

    /// "model written to <path>\n"; empty where it is a result itself.
    std::string report() const;

private:
    std::string path;
    std::string name;
};

}  // namespace Vesk::Tool

#endif
