#ifndef VESK_TOOLS_TRAININGINPUT_H
#define VESK_TOOLS_TRAININGINPUT_H

#include "CommandLine.h"

#include <veskkit/training/TrainingOptions.h>

#include <string>

namespace Vesk::Tool {

/// How a subcommand trains, as the command line has it.
class TrainingInput {
public:
    /// Adds the training options; the object has to stay.
    void addTo(CLI::App& line);

    /// The same without --codebook and those for the acceptance ratio.
    void addSettingsTo(CLI::App& line);

    /// UsageError, naming the option, for settings that do not go together; InputError for a
    /// codebook that cannot be used.
    Kit::TrainingOptions optionsFor(const Kit::Preparation& preparation) const;

private:
    Kit::TrainingOptions training;
    std::string codebook;
    bool uncalibrated = false;
};

}  // namespace Vesk::Tool

#endif
