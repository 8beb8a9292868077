// SPDX-License-Identifier: MIT
// Whether a row of measurements is flat: plain arithmetic.
#pragma once

#include <cstddef>
#include <vector>

namespace vrksoak
{

/// Two robust statements about a row of measurements, of which the first third counts as warming up. What a driver
/// keeps for a while raises a measurement and never lowers one, so a third is stood for by its least.
struct Trend
{
    /// Below this many measurements nothing is said.
    static constexpr std::size_t kFewest = 9;

    explicit Trend(const std::vector<double>& measured);

    bool isKnown = false;
    std::size_t count = 0;  ///< of the measurements behind the first third
    double slope = 0.0;     ///< the median of the slopes between all pairs, per measurement
    double lastThird = 0.0; ///< its least
    double middleThird = 0.0;

    /// By how much the row rose over the two thirds, by the slope.
    double rise() const
    {
        return slope * double(count);
    }
    /// The same by the thirds. From a place in one to the same place in the next is half of the way.
    double riseByThirds() const
    {
        return 2.0 * (lastThird - middleThird);
    }

    /// Flat unless both say that it rose by more than `limit`: one alone may be an outlier or a single step.
    bool isFlat(double limit) const
    {
        return isKnown && (rise() <= limit || riseByThirds() <= limit);
    }
};

} // namespace vrksoak
