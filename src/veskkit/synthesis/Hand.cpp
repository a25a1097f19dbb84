#include <veskkit/synthesis/internal/Hand.h>

#include <algorithm>

namespace Vesk::Kit::internal {

Hand handOf(std::uint64_t seed, int user) {
    Draws draws{seed, static_cast<std::uint64_t>(user)};
    Hand hand{};
    hand.size = draws.between(60.0, 200.0);
    hand.aspect = draws.between(0.82, 1.22);
    hand.slant = draws.between(-0.12, 0.22);
    // Up to about 8 degrees either way.
    hand.halfTurn = draws.between(-0.07, 0.07);
    hand.pace = draws.between(0.6, 1.6);
    hand.roundness = draws.between(0.0, 5.0);
    hand.tremor = draws.between(0.15, 0.8);
    hand.waver = draws.between(0.012, 0.03);
    hand.sampling = draws.between(60.0, 100.0);
    return hand;
}

Hand onOccasion(const Hand& hand, double unsteadiness, Draws& draws) {
    // A factor of this form stays positive for any unsteadiness.
    const auto factor = [&](double spread) {
        const double change = unsteadiness * spread * draws.normal();
        return change < 0.0 ? 1.0 / (1.0 - change) : 1.0 + change;
    };
    Hand result = hand;
    result.size *= factor(0.12);
    result.aspect *= factor(0.06);
    result.slant += unsteadiness * 0.03 * draws.normal();
    result.halfTurn += unsteadiness * 0.02 * draws.normal();
    result.pace *= factor(0.15);
    result.roundness = std::max(0.0, result.roundness + unsteadiness * draws.normal());
    result.tremor *= unsteadiness;
    result.waver *= unsteadiness;
    return result;
}

}  // namespace Vesk::Kit::internal
