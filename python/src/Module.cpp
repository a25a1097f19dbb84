#include "Bindings.h"

#include <vesk/Version.h>

using namespace Vesk::Python;

PYBIND11_MODULE(_vesk, module) {
    module.doc() = "The engine of the package vesk: its hidden Markov models and host side.";
    module.attr("__version__") = VESK_VERSION;
    addErrors(module);
    addHmm(module);
    addLeftRightHmm(module);
    addRecognitionModel(module);
    addQuantizer(module);
    addClusterer(module);
    addTraces(module);
    addTraining(module);
    addRecognizer(module);
    addTemplateMatcher(module);
    addEvaluation(module);
    addPlots(module);
}
