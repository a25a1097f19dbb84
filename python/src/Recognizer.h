#ifndef VESK_PYTHON_RECOGNIZER_H
#define VESK_PYTHON_RECOGNIZER_H

#include <veskkit/recognition/GestureRecognizer.h>

#include <memory>

namespace Vesk::Python {

/// What Python holds: never changed.
struct Recognizer {
    std::shared_ptr<const Vesk::Kit::GestureRecognizer> engine;
};

}  // namespace Vesk::Python

#endif
