// The life of host_life.cpp with the kit: traces in, a model file out, traces recognised.
// Resampling, emissions, threshold and checks are its business.
//
// c++ -std=c++17 kit_life.cpp -o kit_life $(pkg-config --cflags --libs vesk-kit)

#include <veskkit/io/ModelFile.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/synthesis/TraceSynthesizer.h>
#include <veskkit/training/GestureTrainer.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Vesk::Kit;

int main() try {
    const TraceSynthesizer people(1);
    const std::vector<std::string> names{"circle", "star", "zigzag"};
    std::vector<Trace> traces;
    for (const std::string& name : names) {
        for (int repetition = 1; repetition <= 6; ++repetition) {
            traces.push_back(people.draw(name, 1, repetition));
            traces.push_back(people.draw(name, 2, repetition));
        }
    }
    const std::string path = "kit_life.model";
    saveModel(GestureTrainer().train(traces).model, path);

    // Another day, and somebody else who draws.
    const GestureRecognizer recognizer(loadModel(path));
    std::remove(path.c_str());
    for (const std::string& name : names) {
        const Result result = recognizer.recognize(people.draw(name, 3, 1));
        std::cout << name << ": " << (result.recognized() ? result.gesture : "rejected") << '\n';
    }
    const Result arrow = recognizer.recognize(people.draw("arrow", 3, 1));
    std::cout << "arrow: " << (arrow.recognized() ? arrow.gesture : "rejected") << '\n';
} catch (const std::runtime_error& problem) {
    std::cerr << problem.what() << '\n';
    return 1;
}
