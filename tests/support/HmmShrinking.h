#ifndef VESK_TESTS_SUPPORT_HMMSHRINKING_H
#define VESK_TESTS_SUPPORT_HMMSHRINKING_H

#include <support/HmmModels.h>

#include <rapidcheck.h>

#include <cstdlib>
#include <vector>

/// Small models that shrink to smaller ones where a property fails.
namespace Vesk::Test::Shrinking {

/// The same cases in every run, unless the environment says otherwise. The seed is printed with
/// each failure.
inline const bool seedIsFixed = setenv("RC_PARAMS", "seed=20261120", 0) == 0;

/// All parameters are eighths, 0 to 1. For up to four states and five steps every product and sum
/// of the passes has fewer than 53 significant bits, so nothing is ever rounded.
struct Case {
    Reference::Model model;
    std::vector<int> o;
    int T() const { return static_cast<int>(o.size()); }
};

inline Reference::Vector eighths(int count) {
    Reference::Vector values;
    for (int weight : *rc::gen::container<std::vector<int>>(static_cast<std::size_t>(count),
                                                            rc::gen::inRange(0, 9))) {
        values.push_back(weight / 8.0);
    }
    return values;
}

inline Reference::Table eighths(int rows, int cols) {
    Reference::Table table;
    for (int r = 0; r < rows; ++r) table.push_back(eighths(cols));
    return table;
}

/// To be called inside a property.
inline Case anyCase() {
    Case result;
    const int N = *rc::gen::inRange(1, 5);
    const int M = *rc::gen::inRange(1, 5);
    const int T = *rc::gen::inRange(1, 6);
    result.model = Reference::makeModel(N, M);
    result.model.pi = eighths(N);
    result.model.a = eighths(N, N);
    result.model.b = eighths(N, M);
    result.o =
        *rc::gen::container<std::vector<int>>(static_cast<std::size_t>(T), rc::gen::inRange(0, M));
    return result;
}

/// An order of 0 .. count-1.
inline std::vector<int> anyOrder(int count) {
    std::vector<int> order;
    std::vector<int> left;
    for (int i = 0; i < count; ++i) left.push_back(i);
    while (!left.empty()) {
        const int chosen = *rc::gen::inRange(0, static_cast<int>(left.size()));
        order.push_back(left[Reference::at(chosen)]);
        left.erase(left.begin() + chosen);
    }
    return order;
}

}  // namespace Vesk::Test::Shrinking

#endif
