#include "Command.h"
#include "ModelInput.h"
#include "OutputFile.h"
#include "StandardStreams.h"
#include "Text.h"

#include <veskkit/io/SceneFile.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace Vesk::Tool {

namespace {

struct Options {
    std::string model;
    std::string output;
    bool withPrototypes = false;
};

void exportModel(const Options& options) {
    OutputFile::probe(options.output);
    const Kit::RecognitionModel model = readModel(options.model);
    OutputFile output(options.output);
    output.write(options.withPrototypes ? Kit::sceneTextWithPrototypes(model.get())
                                        : Kit::sceneText(model.get()));
    output.commit();
    if (isStandard(options.output)) return;
    writeResult(fmt::format("node of {} written to {}\n",
                            counted(model.gestureNames().size(), "gesture"),
                            printable(options.output)));
}

}  // namespace

Command addExport(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line =
        program.add_subcommand("export", "Write a model as a node of a VRML 2.0 scene");
    line->add_option("MODEL", options->model, "Model file; - is standard input")
        ->required()
        ->type_name("");
    line->add_option("-o,--output", options->output, "Scene file to write; - is standard output")
        ->required()
        ->type_name("SCENE");
    line->add_flag("--with-prototypes", options->withPrototypes,
                   "Declare the node types first, for viewers that do not bring them along");
    return {line, [options] { exportModel(*options); }, "vesk export gestures.model -o scene.wrl"};
}

}  // namespace Vesk::Tool
