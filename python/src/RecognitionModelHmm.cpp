#include "Arrays.h"
#include "Bindings.h"
#include "Copies.h"
#include "Files.h"
#include "Hmm.h"
#include "LeftRightHmm.h"
#include "Printed.h"

#include <vesk/recognition/RecognitionModelHMM.h>

#include <pybind11/stl.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace Vesk::Python {

using Vesk::ML::GestureScore;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::Recognition;
using Vesk::ML::RecognitionModelHMM;

namespace {

std::unique_ptr<HMM> copyOf(const HMM& model) {
    if (const auto* leftRight = dynamic_cast<const LeftRightHMM*>(&model)) {
        return std::make_unique<LeftRightHMM>(*leftRight);
    }
    return std::make_unique<HMM>(model);
}

/// The library's object with all models that it refers to, which the library would never free.
class OwnedModel {
public:
    OwnedModel() = default;
    OwnedModel(const OwnedModel& other) : model(other.model) {
        model.gestures.clear();
        for (const auto& gesture : other.gestures) add(copyOf(*gesture));
        if (other.combined) {
            combined = std::make_unique<HMM>(*other.combined);
            model.recognitionHMM = combined.get();
        }
    }
    OwnedModel& operator=(const OwnedModel&) = delete;

    void add(std::unique_ptr<HMM> gesture) {
        model.gestures.push_back(gesture.get());
        gestures.push_back(std::move(gesture));
    }

    void combine(HMM combinedModel) {
        combined = std::make_unique<HMM>(std::move(combinedModel));
        model.recognitionHMM = combined.get();
    }

    /// Takes over what an operation of the library made.
    void adopt() {
        while (gestures.size() < model.gestures.size()) {
            gestures.emplace_back(model.gestures[gestures.size()]);
        }
        if (model.recognitionHMM != combined.get()) combined.reset(model.recognitionHMM);
    }

    RecognitionModelHMM model;
    std::vector<std::unique_ptr<HMM>> gestures;
    std::unique_ptr<HMM> combined;
};

/// What Python holds: a state that is never changed, only replaced.
struct Holder {
    std::shared_ptr<const OwnedModel> state = std::make_shared<const OwnedModel>();

    /// Changes a copy without the lock and puts it in place.
    template <typename Change>
    auto changed(Change change) {
        const std::shared_ptr<const OwnedModel> before = state;
        std::shared_ptr<OwnedModel> after;
        const auto result = [&] {
            const py::gil_scoped_release unlocked;
            after = std::make_shared<OwnedModel>(*before);
            const auto found = change(after->model);
            after->adopt();
            return found;
        }();
        state = std::move(after);
        return result;
    }
};

double requireShare(double p) {
    if (p >= 0.0 && p <= 1.0) return p;
    throw py::value_error("model_transition_prob: found " + std::string(py::str(py::float_(p))) +
                          ", expected 0 to 1");
}

/// The symbols that all models of `it` have.
int symbolsOf(const OwnedModel& it) {
    int least =
        it.combined ? Vesk::Python::symbolsOf(*it.combined) : std::numeric_limits<int>::max();
    for (const auto& gesture : it.gestures) {
        least = std::min(least, Vesk::Python::symbolsOf(*gesture));
    }
    return least;
}

Holder made(const std::vector<std::shared_ptr<HMM>>& models, double modelTransitionProb) {
    requireShare(modelTransitionProb);
    auto state = std::make_shared<OwnedModel>();
    for (const auto& model : models) {
        if (!model) throw py::type_error("models: found None, expected a model");
        if (model->vocabSize != models.front()->vocabSize) {
            throw py::value_error("models: found " + std::to_string(model->vocabSize) +
                                  " symbols, expected as many as in the first");
        }
        state->add(copyOf(*model));
    }
    state->model.setModelTransitionProb(modelTransitionProb);
    return {state};
}

Recognition evaluated(const Holder& it, py::handle sequence) {
    const std::shared_ptr<const OwnedModel> state = it.state;
    const Vesk::Math::VectorT<int> symbols = symbolsFrom(sequence, "sequence", symbolsOf(*state));
    const py::gil_scoped_release unlocked;
    return state->model.evaluate(symbols);
}

py::str checked(const Holder& it, py::handle sequence) {
    const std::shared_ptr<const OwnedModel> state = it.state;
    const std::vector<int> symbols = symbolsFrom(sequence, "sequence", symbolsOf(*state));
    RecognitionModelHMM model(state->model);
    std::string name;
    printing([&] { name = model.check(symbols); });
    return textOf(name);
}

double forwardProb(const Holder& it, py::handle sequence) {
    const std::shared_ptr<const OwnedModel> state = it.state;
    if (!state->combined) return 0.0;
    const std::vector<int> symbols = symbolsFrom(sequence, "sequence", symbolsOf(*state));
    HMM combined(*state->combined);
    const py::gil_scoped_release unlocked;
    return combined.forwardProbability(symbols, static_cast<int>(symbols.size()));
}

void stage(Holder& it, py::handle pi, py::handle a, py::handle b, const py::object& vocab) {
    const std::vector<double> first = vectorFrom(pi, "pi");
    const auto N = static_cast<py::ssize_t>(first.size());
    const auto transitions = matrixFrom(a, "a", N, N);
    const auto emissions = matrixFrom(b, "b", N);
    const auto values = vocab.is_none() ? Vesk::Math::MatrixT<double>(emissions.cols, 1)
                                        : matrixFrom(vocab, "vocab", emissions.cols);
    it.changed([&](RecognitionModelHMM& model) {
        model.numStates = static_cast<unsigned int>(N);
        model.vocabSize = static_cast<unsigned int>(emissions.cols);
        model.pi = first;
        model.a = transitions;
        model.b = emissions;
        model.vocab = values;
        return true;
    });
}

/// Every gesture has to be left-right where they are stored.
void requireStorable(const OwnedModel& it) {
    requireStorableName(it.model.name);
    for (const auto& gesture : it.gestures) {
        requireStorableName(gesture->name);
        if (dynamic_cast<const LeftRightHMM*>(gesture.get()) != nullptr) continue;
        throw py::type_error("gestures: found an HMM, expected a LeftRightHMM in a file");
    }
}

void save(const Holder& it, const py::object& path,
          bool (RecognitionModelHMM::*writer)(const std::string&) const) {
    const std::shared_ptr<const OwnedModel> state = it.state;
    requireStorable(*state);
    if (!state->combined) throw py::value_error("found no combined model, expected `initialize`");
    writeFile(path, [&](const std::string& file) { return (state->model.*writer)(file); });
}

std::vector<std::string> read(Holder& it, const py::object& path) {
    const std::string file = pathFrom(path);
    std::vector<std::string> names;
    bool found = false;
    try {
        found = it.changed([&](RecognitionModelHMM& model) {
            return model.read(file, [&](const std::string& name) { names.push_back(name); });
        });
    } catch (const std::bad_alloc&) {
        throwTooLarge(file);
    }
    requireOpened(found, file);
    return names;
}

void loadPrinting(Holder& it, const py::object& path) {
    const std::string file = pathFrom(path);
    const auto after = std::make_shared<OwnedModel>(*it.state);
    bool found = false;
    printing([&] { found = after->model.load(file.c_str()); });
    after->adopt();
    it.state = after;
    requireOpened(found, file);
}

py::object modelObject(const HMM& model) {
    if (const auto* leftRight = dynamic_cast<const LeftRightHMM*>(&model)) {
        return py::cast(std::make_shared<LeftRightHMM>(*leftRight));
    }
    return py::cast(std::make_shared<HMM>(model));
}

py::tuple stateOfHolder(const Holder& it) {
    const OwnedModel& state = *it.state;
    const RecognitionModelHMM& model = state.model;
    py::list gestures;
    for (const auto& gesture : state.gestures) gestures.append(modelObject(*gesture));
    return py::make_tuple(model.fromParameters, model.gestureTransitionProb,
                          model.modelTransitionProb, textOf(model.name), model.numStates,
                          model.vocabSize, arrayOf(model.vocab), arrayOf(model.pi),
                          arrayOf(model.a), arrayOf(model.b), gestures, arrayOf(model.codebook),
                          model.proxFilterThreshold, model.rotationAllowed,
                          state.combined ? py::object(stateOf(*state.combined)) : py::none());
}

Holder restored(const py::tuple& state) {
    if (state.size() != 15) throw py::value_error("state: expected that of a recognition model");
    auto owned = std::make_shared<OwnedModel>();
    RecognitionModelHMM& model = owned->model;
    model.fromParameters = state[0].cast<bool>();
    model.gestureTransitionProb = state[1].cast<double>();
    model.modelTransitionProb = state[2].cast<double>();
    model.name = bytesFrom(state[3]);
    model.numStates = state[4].cast<unsigned int>();
    model.vocabSize = state[5].cast<unsigned int>();
    model.vocab = matrixFrom(state[6], "vocab");
    model.pi = vectorFrom(state[7], "pi");
    model.a = matrixFrom(state[8], "a");
    model.b = matrixFrom(state[9], "b");
    for (const auto& gesture : state[10].cast<std::vector<std::shared_ptr<HMM>>>()) {
        if (gesture) owned->add(copyOf(*gesture));
    }
    model.codebook = vectorFrom(state[11], "codebook");
    model.proxFilterThreshold = state[12].cast<float>();
    model.rotationAllowed = state[13].cast<bool>();
    if (!state[14].is_none()) {
        HMM combined(1, 1);
        restore(combined, state[14]);
        owned->combine(std::move(combined));
    }
    return {owned};
}

void addResults(py::module_& module) {
    py::class_<GestureScore>(module, "GestureScore", "How one gesture model scored.")
        .def_readonly("probability", &GestureScore::probability, "P(sequence | gesture model).")
        .def_readonly("weighted_probability", &GestureScore::weightedProbability,
                      "The same times gesture_transition_prob.")
        .def_readonly("weighted_gamma", &GestureScore::weightedGamma,
                      "P(last state at the last time) times gesture_transition_prob.")
        .def_readonly("accepted", &GestureScore::accepted, "Passed all tests in its turn.")
        .def("__repr__", [](const GestureScore& it) {
            return py::str("<GestureScore {:.6g}{}>")
                .format(it.probability, it.accepted ? ", accepted" : "");
        });
    py::class_<Recognition>(module, "Recognition", "The outcome of a recognition.")
        .def_readonly("long_enough", &Recognition::longEnough, "At least two symbols.")
        .def_readonly("threshold", &Recognition::threshold,
                      "P(sequence | combined model) times model_transition_prob.")
        .def_readonly("gestures", &Recognition::gestures, "A GestureScore a gesture model.")
        .def_readonly("winner", &Recognition::winner, "Index of the gesture model, -1 for none.")
        .def("__repr__", [](const Recognition& it) {
            return py::str("<Recognition: winner {}, threshold {:.6g}>")
                .format(it.winner, it.threshold);
        });
}

template <typename Class>
void addFields(Class& model) {
    const auto field = [&model](const char* name, auto member, const char* text) {
        model.def_property_readonly(
            name, [member](const Holder& it) { return it.state->model.*member; }, text);
    };
    field("gesture_transition_prob", &RecognitionModelHMM::gestureTransitionProb,
          "(1 - model_transition_prob) / K; 1 where that is 1.");
    field("num_states", &RecognitionModelHMM::numStates, "N, of all gestures together.");
    field("vocab_size", &RecognitionModelHMM::vocabSize, "M, of the first gesture; 0 until built.");
    field("from_parameters", &RecognitionModelHMM::fromParameters,
          "Built by create_recognition_hmm_from_parameters.");
    model.def_property(
        "model_transition_prob",
        [](const Holder& it) { return it.state->model.modelTransitionProb; },
        [](Holder& it, double p) {
            requireShare(p);
            it.changed([p](RecognitionModelHMM& m) { return m.setModelTransitionProb(p), true; });
        },
        "The combined model's weight, 0 to 1; exactly 1 gives each gesture 1, too.");
    model.def_property(
        "name", [](const Holder& it) { return textOf(it.state->model.name); },
        [](Holder& it, const py::str& name) {
            const std::string bytes = bytesFrom(name);
            it.changed([&](RecognitionModelHMM& m) { return m.setName(bytes), true; });
        },
        "One word where it is stored.");
    model.def_property(
        "codebook", [](const Holder& it) { return arrayOf(it.state->model.codebook); },
        [](Holder& it, py::handle value) {
            const std::vector<double> codebook = vectorFrom(value, "codebook");
            it.changed([&](RecognitionModelHMM& m) { return m.codebook = codebook, true; });
        },
        "Directions in degrees that travel with the model.");
    model.def_property(
        "prox_filter_threshold",
        [](const Holder& it) { return it.state->model.proxFilterThreshold; },
        [](Holder& it, float value) {
            it.changed(
                [value](RecognitionModelHMM& m) { return m.proxFilterThreshold = value, true; });
        },
        "The quantiser's least distance, which travels with the model.");
    model.def_property(
        "rotation_allowed", [](const Holder& it) { return it.state->model.rotationAllowed; },
        [](Holder& it, bool value) {
            it.changed([value](RecognitionModelHMM& m) { return m.rotationAllowed = value, true; });
        },
        "Whether symbols are relative to the first; travels with the model.");
    const auto table = [&model](const char* name, auto member, const char* text) {
        model.def_property_readonly(
            name, [member](const Holder& it) { return arrayOf(it.state->model.*member); }, text);
    };
    table("pi", &RecognitionModelHMM::pi, "(N,) staged first states; see `stage`.");
    table("a", &RecognitionModelHMM::a, "(N, N) staged transitions.");
    table("b", &RecognitionModelHMM::b, "(N, M) staged emissions.");
    table("vocab", &RecognitionModelHMM::vocab, "(M, D) staged values of the symbols.");
    model.def_property_readonly(
        "gestures",
        [](const Holder& it) {
            py::list gestures;
            for (const auto& gesture : it.state->gestures) gestures.append(modelObject(*gesture));
            return gestures;
        },
        "Copies of the gesture models.");
    model.def_property_readonly(
        "recognition_hmm",
        [](const Holder& it) {
            return it.state->combined ? modelObject(*it.state->combined) : py::none();
        },
        "A copy of the combined model, None until built.");
}

}  // namespace

void addRecognitionModel(py::module_& module) {
    addResults(module);
    py::class_<Holder> model(
        module, "RecognitionModelHMM",
        "Trained gesture models joined by a combined model that is the adaptive threshold.\n\n"
        "Holds copies of the models it is given. Build the combined model with `initialize`, or "
        "with `stage` and `create_recognition_hmm_from_parameters`, or read a file.");
    model.def(py::init(&made), py::arg("models") = std::vector<std::shared_ptr<HMM>>(),
              py::arg("model_transition_prob") = 1.0);
    addFields(model);
    model.def(
        "initialize",
        [](Holder& it) {
            return it.changed([](RecognitionModelHMM& m) { return m.initialize(); });
        },
        "Joins the gestures into a combined model. False without gestures or after "
        "create_recognition_hmm_from_parameters.");
    model.def("stage", &stage, py::arg("pi"), py::arg("a"), py::arg("b"),
              py::arg("vocab") = py::none(),
              "Sets the staging fields: (N,), (N, N), (N, M) and (M, D).");
    model.def(
        "create_recognition_hmm_from_parameters",
        [](Holder& it) {
            return it.changed(
                [](RecognitionModelHMM& m) { return m.createRecognitionHMMfromParameters(); });
        },
        "Makes the combined model from the staging fields as they are.");
    model.def("forward_prob", &forwardProb, py::arg("sequence"),
              "P(sequence | combined model); 0 where there is none.");
    model.def("evaluate", &evaluated, py::arg("sequence"),
              "Recognises (T,) symbols, silently: a Recognition.");
    model.def("check", &checked, py::arg("sequence"),
              "The name of the gesture that (T,) symbols show, or \"\"; prints its reasoning.");
    model.def(
        "print",
        [](const Holder& it) {
            RecognitionModelHMM copy(it.state->model);
            const auto kept = it.state;
            printing([&] { copy.print(); });
        },
        "Prints the combined model, where there is one.");
    model.def(
        "dump",
        [](const Holder& it) {
            RecognitionModelHMM copy(it.state->model);
            const auto kept = it.state;
            return printedBy([&] { copy.print(); });
        },
        "What `print` prints, as text.");
    model.def(
        "save",
        [](const Holder& it, const py::object& path) {
            save(it, path, &RecognitionModelHMM::save);
        },
        py::arg("path"), "Writes the model's file, six digits a number. OSError where it cannot.");
    model.def(
        "save_node",
        [](const Holder& it, const py::object& path) {
            save(it, path, &RecognitionModelHMM::saveNode);
        },
        py::arg("path"), "Writes the scene node's file. OSError where it cannot.");
    model.def("read", &read, py::arg("path"),
              "Adds what a file holds, silently, and returns the names of its gestures. OSError "
              "where it cannot be opened; `vesk.Recognizer.load` is the strict reader.");
    model.def("load", &loadPrinting, py::arg("path"), "`read` that announces every gesture.");
    model.def("__repr__", [](const Holder& it) {
        return py::str("<RecognitionModelHMM {!r}: {} gesture models, {} states{}>")
            .format(textOf(it.state->model.name), it.state->gestures.size(),
                    it.state->model.numStates, it.state->combined ? "" : ", not built");
    });
    addCopies(model);
    model.def(py::pickle(&stateOfHolder, &restored));
}

}  // namespace Vesk::Python
