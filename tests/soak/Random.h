// SPDX-License-Identifier: MIT
// Numbers by chance that are the same for the same seed on every system: the standard's engine, without its
// distributions, which every library has its own of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>

namespace vrksoak
{

class Random
{
public:
    /// `stream` tells apart what goes by the same seed.
    Random(std::uint64_t seed, std::uint64_t stream) : _engine(seed * 0x9E3779B97F4A7C15u + stream) {}

    /// From 0 to below `count`, which is above 0.
    int below(int count)
    {
        return int(_engine() % std::uint64_t(count));
    }

    bool oneIn(int count)
    {
        return below(count) == 0;
    }

    float unit()
    {
        return float(below(1 << 24)) / float(1 << 24);
    }

    template <typename List> auto& of(List& list)
    {
        return list[std::size_t(below(int(std::size(list))))];
    }

private:
    std::mt19937_64 _engine;
};

} // namespace vrksoak
