#ifndef VESK_BASE_INTERNAL_SIXDIGITS_H
#define VESK_BASE_INTERNAL_SIXDIGITS_H

namespace Vesk::ML::internal {

/// The longest that is put: -1.23457e-05.
inline constexpr int longestSixDigits = 12;

/// Puts a number as a stream in the classic locale writes it with its ordinary six digits: 0.25,
/// 1.23457e-05, -0. Returns the end; null where finding the digits takes more than one product of
/// doubles: for magnitudes below 1e-16 (but zero) or from 1e6 on, infinities and NaN.
char* putSixDigits(char* to, double value);

}  // namespace Vesk::ML::internal

#endif
