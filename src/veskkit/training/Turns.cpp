#include <veskkit/training/internal/Turns.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace Vesk::Kit::internal {

namespace {

constexpr double farthestTurn = 22.0;  // degrees

/// How far two directions are apart, both within a few turns.
double between(double x, double y) { return std::abs(std::remainder(x - y, 360.0)); }

}  // namespace

std::vector<int> turnedSymbols(const std::vector<double>& codebook, Turn turn) {
    std::vector<std::size_t> order(codebook.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t x, std::size_t y) { return codebook[x] < codebook[y]; });
    const std::size_t step = turn == Turn::Forwards ? 1 : order.size() - 1;
    std::vector<int> turned(codebook.size());
    for (std::size_t n = 0; n < order.size(); ++n) {
        const std::size_t from = order[n];
        const std::size_t to = order[(n + step) % order.size()];
        const bool isNear = between(codebook[from], codebook[to]) <= farthestTurn;
        turned[from] = static_cast<int>(isNear ? to : from);
    }
    return turned;
}

std::vector<int> replaced(std::vector<int> symbols, const std::vector<int>& table) {
    for (int& symbol : symbols) symbol = table[static_cast<std::size_t>(symbol)];
    return symbols;
}

}  // namespace Vesk::Kit::internal
