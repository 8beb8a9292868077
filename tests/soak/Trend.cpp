// SPDX-License-Identifier: MIT
#include "Trend.h"

#include <algorithm>

namespace vrksoak
{

namespace
{

double median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return 0.5 * (*middle + *std::max_element(values.begin(), middle));
}

} // namespace

Trend::Trend(const std::vector<double>& measured)
{
    if (measured.size() < kFewest)
        return;
    isKnown = true;
    const auto third = std::ptrdiff_t(measured.size() / 3);
    const std::vector<double> settled(measured.begin() + third, measured.end());
    count = settled.size();
    std::vector<double> slopes;
    slopes.reserve(count * (count - 1) / 2);
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = i + 1; j < count; ++j)
            slopes.push_back((settled[j] - settled[i]) / double(j - i));
    slope = median(std::move(slopes));
    middleThird = *std::min_element(measured.begin() + third, measured.begin() + 2 * third);
    lastThird = *std::min_element(measured.end() - third, measured.end());
}

} // namespace vrksoak
