#ifndef VESK_VESKKIT_EVALUATION_SHARE_H
#define VESK_VESKKIT_EVALUATION_SHARE_H

#include <cstddef>

namespace Vesk::Kit {

/// Bounds in [0, 1].
struct Interval {
    double low;   ///< lower bound, not below 0
    double high;  ///< upper bound
};

/// How many of some trials came out in a certain way.
struct Share {
    std::size_t count = 0;  ///< trials that came out so
    std::size_t total = 0;  ///< trials in all

    /// Adds a trial.
    void add(bool counted) {
        count += counted ? 1 : 0;
        ++total;
    }

    /// count / total; 0 of none.
    double value() const;

    /// Where the share of all possible trials lies with a probability of 95 % (E. B. Wilson,
    /// "Probable inference, the law of succession, and statistical inference", J. Am. Stat. Assoc.
    /// 22, 1927): sensible for small numbers and shares near 0 and 1 too. All of [0, 1] for no
    /// trials. Takes trials for independent, which traces of one user are not; those of `draws`
    /// draws, at least 1, on the same traces count as the trials of one.
    Interval interval(std::size_t draws = 1) const;
};

}  // namespace Vesk::Kit

#endif
