#include "Checks.h"
#include "Command.h"
#include "OutputFile.h"
#include "StandardStreams.h"
#include "Text.h"

#include <veskkit/synthesis/TraceSynthesizer.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace Vesk::Tool {

namespace {

struct Options {
    std::string output;
    int users = 6;
    int repetitions = 10;
    std::uint64_t seed = 1;
    double unsteadiness = 1.0;
    std::vector<std::string> gestures;
};

std::string lineOf(const Kit::Trace& trace, int repetition) {
    nlohmann::ordered_json json;
    json["set"] = "synthetic";
    json["gesture"] = trace.gesture;
    json["user"] = trace.user;
    json["rep"] = repetition;
    json["points"] = trace.points;
    return json.dump() + "\n";
}

void generate(const Options& options) {
    const auto& gestures =
        options.gestures.empty() ? Kit::TraceSynthesizer::gestures() : options.gestures;
    const Kit::TraceSynthesizer synthesizer(options.seed, options.unsteadiness);
    OutputFile output(options.output);
    for (int user = 1; user <= options.users; ++user) {
        for (const std::string& gesture : gestures) {
            for (int repetition = 1; repetition <= options.repetitions; ++repetition) {
                output.write(lineOf(synthesizer.draw(gesture, user, repetition), repetition));
            }
        }
    }
    output.commit();
    if (isStandard(options.output)) return;
    const std::size_t traces = gestures.size() * static_cast<std::size_t>(options.users) *
                               static_cast<std::size_t>(options.repetitions);
    writeResult(fmt::format("{} of {} by {} written to {}\n", counted(traces, "trace"),
                            counted(gestures.size(), "gesture"),
                            counted(static_cast<std::size_t>(options.users), "user"),
                            printable(options.output)));
}

}  // namespace

Command addGenerate(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line =
        program.add_subcommand("generate", "Draw synthetic traces of a dozen gestures");
    line->add_option("-o,--output", options->output, "File to write; - is standard output")
        ->required()
        ->type_name("TRACES");
    line->add_option("--users", options->users, "How many users draw")
        ->capture_default_str()
        ->transform(numberIn(1, 10000))
        ->type_name("N");
    line->add_option("--repetitions", options->repetitions, "Traces per user and gesture")
        ->capture_default_str()
        ->transform(numberIn(1, 100000))
        ->type_name("N");
    line->add_option("--seed", options->seed, "The same seed draws the same traces")
        ->capture_default_str()
        ->transform(numberIn(std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max()))
        ->type_name("S");
    line->add_option("--gesture", options->gestures, "Only this gesture; repeatable")
        ->check(oneOf(Kit::TraceSynthesizer::gestures()))
        ->type_name("NAME")
        ->allow_extra_args(false);
    line->add_option("--unsteadiness", options->unsteadiness,
                     "Tremor and differences between repetitions; 0 is none, 1 an ordinary hand")
        ->capture_default_str()
        ->transform(numberIn(0.0, Kit::TraceSynthesizer::mostUnsteadiness))
        ->type_name("X");
    return {line, [options] { generate(*options); },
            "vesk generate -o traces.jsonl --users 4 --repetitions 5"};
}

}  // namespace Vesk::Tool
