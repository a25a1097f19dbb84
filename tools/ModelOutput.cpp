#include "ModelOutput.h"

#include "Command.h"
#include "OutputFile.h"
#include "Text.h"

#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/training/TrainingOptions.h>

#include <CLI/CLI.hpp>

#include <filesystem>

namespace Vesk::Tool {

CLI::Option* ModelOutput::addTo(CLI::App& line) {
    CLI::Option* output =
        line.add_option("-o,--output", path, "Model file to write; - is standard output")
            ->type_name("MODEL");
    line.add_option("--name", name, "The model's name, one word [from the file's name]")
        ->type_name("NAME");
    return output;
}

bool ModelOutput::goesToStandardOutput() const { return isStandard(path); }

std::string ModelOutput::modelName() const {
    if (!name.empty()) {
        if (Kit::isStorableName(name)) return name;
        throw UsageError("--name: expected one word without blanks");
    }
    const std::string stem = Kit::storedName(std::filesystem::path(path).stem().string());
    const bool usable = !isStandard(path) && Kit::isStorableName(stem);
    return usable ? stem : Kit::TrainingOptions{}.name;
}

void ModelOutput::probe() const { OutputFile::probe(path); }

void ModelOutput::write(const Kit::RecognitionModel& model) const {
    OutputFile output(path);
    output.write(Kit::modelText(model.get()));
    output.commit();
}

std::string ModelOutput::report() const {
    return isStandard(path) ? "" : "model written to " + printable(path) + "\n";
}

}  // namespace Vesk::Tool
