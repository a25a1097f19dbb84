#include "TrainingInput.h"

#include "Checks.h"
#include "Command.h"

#include <veskkit/Error.h>
#include <veskkit/io/CodebookFile.h>
#include <veskkit/training/GestureTrainer.h>

#include <CLI/CLI.hpp>

namespace Vesk::Tool {

void TrainingInput::addTo(CLI::App& line) {
    addSettingsTo(line);
    line.add_option("--codebook", codebook,
                    "File of directions, of vesk codebook, instead of evenly spaced ones")
        ->excludes("--symbols")
        ->type_name("FILE");
    line.add_option("--ratio", training.acceptanceRatio,
                    "How many times as likely as the threshold model a gesture has to be (those of "
                    "many traces may be asked for more); below 1 it may be less likely [calibrated "
                    "on people, or traces, left out]")
        ->transform(numberIn(1e-6, 1e12))
        ->type_name("R");
    line.add_option("--false-rejection", training.falseRejection,
                    "Share of right traces that calibration, and in an evaluation the template "
                    "matcher, gives up for a stricter threshold")
        ->capture_default_str()
        ->excludes("--ratio")
        ->transform(numberIn(0.0, 0.5))
        ->type_name("SHARE");
    line.add_flag("--no-calibration", uncalibrated,
                  "Calibrate nothing: all gestures get the ratio, or the ordinary one (1e3, or 1e4 "
                  "with sub-models)")
        ->excludes("--false-rejection");
}

void TrainingInput::addSettingsTo(CLI::App& line) {
    line.add_option("--symbols", training.symbols, "Directions that are told apart")
        ->capture_default_str()
        ->transform(numberIn(2, 360))
        ->type_name("N");
    line.add_option("--states", training.states, "States of a gesture's model")
        ->capture_default_str()
        ->transform(numberIn(2, 200))
        ->type_name("N");
    line.add_option("--delta", training.delta, "Largest jump between states")
        ->capture_default_str()
        ->transform(numberIn(1, 199))
        ->type_name("N");
    line.add_option("--sub-models", training.subModels,
                    "Most models a gesture, one a way of drawing it [1 below 20 traces, else 6]")
        ->transform(numberIn(1, 16))
        ->type_name("N");
    line.add_option("--iterations", training.iterations, "Most training iterations")
        ->capture_default_str()
        ->transform(numberIn(0, 1000))
        ->type_name("N");
    line.add_option("--smoothing", training.smoothing,
                    "Width in degrees that directions are smoothed over [22; 28 for few traces]")
        ->transform(numberIn(0.0, 180.0))
        ->type_name("DEGREES");
    line.add_option("--discrimination", training.discrimination,
                    "Rounds in which the models learn to tell the gestures apart")
        ->capture_default_str()
        ->transform(numberIn(0, 1000))
        ->type_name("N");
    line.add_option("--turns", training.turns,
                    "Copies of the models of gestures with 20 traces or more, turned by 22.5 "
                    "degrees and more, to either side [2 where users can be left out, unless "
                    "clearly fewer of their traces are told right so; else 0]")
        ->transform(numberIn(0, 4))
        ->type_name("N");
    line.add_flag("--skip-bad", training.skipBad,
                  "Leave out traces that have no direction instead of refusing them");
    line.add_option("--threads", training.threads,
                    "Threads that gestures are trained on [one for each processor]")
        ->transform(numberIn(1U, 1024U))
        ->type_name("N");
}

Kit::TrainingOptions TrainingInput::optionsFor(const Kit::Preparation& preparation) const {
    Kit::TrainingOptions options = training;
    options.preparation = preparation;
    options.calibrate = !uncalibrated;
    if (!codebook.empty()) options.codebook = Kit::loadCodebook(codebook);
    try {
        return Kit::GestureTrainer(options).options();
    } catch (const Kit::InputError& problem) {
        throw UsageError(problem.what());
    }
}

}  // namespace Vesk::Tool
