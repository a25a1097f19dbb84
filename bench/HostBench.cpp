#include "Pair.h"

#include <vesk/quantizer/VectorQuantizer2D.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/synthesis/TraceSynthesizer.h>
#include <veskkit/traces/Resampler.h>
#include <veskkit/training/GestureTrainer.h>

#include <memory>
#include <utility>
#include <vector>

namespace Vesk::Bench {

// What the host's side adds to the library's classification and silent evaluation of a trace.
void registerHost() {
    const Kit::TraceSynthesizer hand(1);
    std::vector<Kit::Trace> traces;
    for (const std::string& gesture : Kit::TraceSynthesizer::gestures()) {
        for (int repetition = 1; repetition <= 5; ++repetition) {
            traces.push_back(hand.draw(gesture, 1, repetition));
        }
    }
    const auto recognizer =
        std::make_shared<Kit::GestureRecognizer>(Kit::GestureTrainer().train(traces).model);
    const auto drawn = std::make_shared<Kit::Trace>(traces.front());
    const auto resampled =
        std::make_shared<Kit::Points>(Kit::Resampler(Kit::Preparation()).resample(*drawn));
    const auto quantizer = std::make_shared<ML::VectorQuantizer2D>();
    quantizer->setCodebook(recognizer->model().get().codebook);

    const std::string row = "recognise a trace of " + std::to_string(drawn->points.size()) +
                            " points, " + std::to_string(recognizer->model().gestures().size()) +
                            " gestures";
    ours(row, [=] { return recognizer->recognize(*drawn).margin; });
    plain(row, [=] {
        const std::vector<int> symbols = quantizer->quantize(*resampled, 0.0f, false);
        return recognizer->model().get().evaluate(symbols).winner;
    });
}

}  // namespace Vesk::Bench
