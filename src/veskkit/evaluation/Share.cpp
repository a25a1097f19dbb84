#include <veskkit/evaluation/Share.h>

#include <algorithm>
#include <cmath>

namespace Vesk::Kit {

namespace {

/// Of the standard normal distribution, what 97.5 % stay below.
constexpr double z = 1.959963984540054;

}  // namespace

double Share::value() const {
    return total > 0 ? static_cast<double>(count) / static_cast<double>(total) : 0.0;
}

Interval Share::interval(std::size_t draws) const {
    if (total == 0) return {0.0, 1.0};
    const double n = static_cast<double>(total) / static_cast<double>(draws);
    const double p = value();
    const double centre = p + z * z / (2.0 * n);
    const double spread = z * std::sqrt(p * (1.0 - p) / n + z * z / (4.0 * n * n));
    const double scale = 1.0 + z * z / n;
    return {count == 0 ? 0.0 : std::max(0.0, (centre - spread) / scale),
            count == total ? 1.0 : std::min(1.0, (centre + spread) / scale)};
}

}  // namespace Vesk::Kit
