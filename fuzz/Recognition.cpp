// Any bytes as the file of a recognition model: read as the literal reader does or refused; the
// model that comes out, however little its tables agree, is used to the full or refuses that.

#include "LoadedModel.h"
#include "MemoryFile.h"
#include "Target.h"

#include <support/RecognitionModels.h>

#include <algorithm>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace Vesk::Fuzz;

namespace {

/// A model from a damaged file says no in one way.
template <typename Operation>
void attempt(Operation operation) {
    try {
        operation();
    } catch (const std::out_of_range&) {
    }
}

std::size_t cellsOf(const LoadedModel& model) {
    std::size_t cells = model.a.data.size() + model.b.data.size() + model.codebook.size();
    for (const Vesk::ML::HMM* gesture : model.gestures) {
        cells += gesture->a.data.size() + gesture->b.data.size() + gesture->vocab.data.size();
    }
    return cells;
}

bool same(const LoadedModel& model, const std::string& text) {
    Vesk::Test::Reference::Recognition::Recogniser literal;
    std::ostringstream announcements;
    literal.load(text, announcements);
    const auto read = Vesk::Test::recogniserOf(model);
    std::ostringstream expected;
    std::ostringstream found;
    const auto print = [](std::ostream& out, const auto& recogniser) {
        out.precision(17);
        recogniser.headerBlock(out);
        for (const auto& gesture : recogniser.gestures) recogniser.gestureBlock(out, gesture);
    };
    try {
        print(expected, literal);
    } catch (const std::out_of_range&) {
        return literal.gestures.size() == read.gestures.size();
    }
    print(found, read);
    return expected.str() == found.str();
}

void use(LoadedModel& model) {
    // A symbol that every alphabet has; gestures that have none refuse.
    const std::vector<int> symbols(3, 0);
    attempt([&] { model.evaluate(symbols); });
    attempt([&] { model.forwardProb(symbols); });
    attempt([&] { model.check(symbols); });
    if (cellsOf(model) <= 1 << 18) {  // longer texts take their time under sanitizers
        attempt([&] { model.print(); });
        attempt([&] { model.save("/dev/null"); });
        attempt([&] { model.saveNode("/dev/null"); });
    }
    model.own();
    attempt([&] { model.setParameters(); });
    model.own();
    model.fromParameters = false;
    attempt([&] { model.initialize(); });
}

}  // namespace

void Vesk::Fuzz::take(const std::string& text) {
    const MemoryFile file(text);
    LoadedModel model;
    try {
        expect(model.read(file.path()), "a file that can be opened is read");
    } catch (const std::bad_alloc&) {
        return;
    }
    if (cellsOf(model) <= 1 << 14) expect(same(model, text), "read as the literal reader does");
    use(model);
}
