// Trains from points as a device sends them: "down GESTURE", "move X Y" and "up", a line each on
// standard input. Strokes too short to have a direction are left out and reported.
//
//   live_training MODEL < events
//
// c++ -std=c++17 live_training.cpp -o live_training $(pkg-config --cflags --libs vesk-kit)

#include <veskkit/Error.h>
#include <veskkit/io/ModelFile.h>
#include <veskkit/training/GestureTrainer.h>

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

using namespace Vesk::Kit;

namespace {

/// Collects the points between "down" and "up" into traces.
std::vector<Trace> record(std::istream& events) {
    std::vector<Trace> traces;
    bool drawing = false;
    std::size_t number = 0;
    for (std::string line; std::getline(events, line);) {
        ++number;
        std::istringstream words(line);
        std::string event;
        words >> event;
        double x = 0.0;
        double y = 0.0;
        if (event == "down") {
            Trace trace;
            words >> trace.gesture;
            trace.source = "standard input";
            trace.line = number;
            traces.push_back(trace);
            drawing = true;
        } else if (event == "move" && drawing && words >> x >> y) {
            traces.back().points.push_back({x, y});
        } else if (event == "up" && drawing) {
            drawing = false;
        } else {
            throw InputError("standard input:" + std::to_string(number) + ": found \"" + line +
                             "\", expected down GESTURE, then move X Y, then up");
        }
    }
    return traces;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: live_training MODEL < events\n";
        return 2;
    }
    TrainingOptions options;
    options.skipBad = true;
    const TrainingResult result = GestureTrainer(options).train(record(std::cin));
    for (const std::string& line : result.report.skipped) std::cerr << "left out: " << line << '\n';
    for (const std::string& line : result.report.warnings) std::cerr << "warning: " << line << '\n';
    for (const GestureReport& gesture : result.report.gestures) {
        std::cout << gesture.gesture << ": " << gesture.traces
                  << (gesture.traces == 1 ? " trace\n" : " traces\n");
    }
    saveModel(result.model, argv[1]);
} catch (const InputError& problem) {
    std::cerr << problem.what() << '\n';
    return 3;
} catch (const OutputError& problem) {
    std::cerr << problem.what() << '\n';
    return 1;
}
