#ifndef VESK_MATH_INTERNAL_DIVIDE_H
#define VESK_MATH_INTERNAL_DIVIDE_H

namespace Vesk::Math::internal {

/// x / y, but 0.0 where x is 0.0.
inline double divide(double x, double y) { return x == 0.0 ? 0.0 : x / y; }

}  // namespace Vesk::Math::internal

#endif
