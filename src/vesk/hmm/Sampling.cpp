#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Parameters.h>

#include <cstdlib>
#include <ctime>
#include <new>

namespace Vesk::ML {
namespace {

/// The first index whose share of the cumulated probabilities p[0], p[1], ... holds r (the share
/// of 0 reaches down to anything below); `fallback` where their sum stays below r.
int choose(const double* p, int count, double r, int fallback) {
    double sum = p[0];
    if (sum >= r) return 0;
    for (int i = 1; i < count; ++i) {
        const double previous = sum;
        sum = sum + p[i];
        if (r > previous && sum >= r) return i;
    }
    return fallback;
}

}  // namespace

double HMM::randD(double max) {
    if (needsSeed) {
        needsSeed = false;
        std::srand(static_cast<unsigned int>(std::time(nullptr)));
    }
    return static_cast<double>(std::rand()) * 0x1p-31 * max;
}

Vesk::Math::VectorT<int> HMM::genSeq(int length) {
    if (length < 0) throw std::bad_alloc();
    Vesk::Math::VectorT<int> sequence(static_cast<std::size_t>(length));
    if (length == 0) return sequence;
    const internal::Parameters p = internal::parametersOf(*this);
    const auto M = static_cast<int>(vocabSize);
    double r = randD(1.0);
    int state = p.N < 2 ? 0 : choose(p.pi, p.N, r, 0);
    for (int& symbol : sequence) {
        r = randD(1.0);
        symbol = choose(p.b.row(state), M, r, 0);
        r = randD(1.0);
        state = choose(p.a.row(state), p.N, r, state);
    }
    return sequence;
}

}  // namespace Vesk::ML
