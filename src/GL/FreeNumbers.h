// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The numbers of a pool that nobody holds: texture image units, binding points. One bit for each, so that taking and
/// giving back allocates nothing. Book-keeping only. Not installed.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Harrow::Vrk
{

/// A set of small numbers. It grows to the greatest one that it has held and never shrinks.
class FreeNumbers
{
public:
    /// Adds the numbers from 0 to `count` - 1; none for a count below 1.
    void insertBelow(int count)
    {
        if (count > 0)
            makeRoomFor(static_cast<unsigned>(count) - 1);
        for (int number = 0; number < count; ++number)
            insert(static_cast<unsigned>(number));
    }

    void insert(unsigned number)
    {
        if (contains(number))
            return;
        makeRoomFor(number);
        _words[number / kWordBits] |= bitOf(number);
        ++_size;
    }

    void remove(unsigned number)
    {
        if (!contains(number))
            return;
        _words[number / kWordBits] &= ~bitOf(number);
        --_size;
    }

    bool isEmpty() const
    {
        return _size == 0;
    }

    int size() const
    {
        return _size;
    }

    /// What is negative as an `int` is far above all that is held, and so never contained.
    bool contains(unsigned number) const
    {
        return number / kWordBits < _words.size() && (_words[number / kWordBits] & bitOf(number)) != 0;
    }

    /// The lowest number, or -1.
    int first() const
    {
        for (std::size_t word = 0; word < _words.size(); ++word)
            if (_words[word] != 0)
                return static_cast<int>(word) * kWordBits + std::countr_zero(_words[word]);
        return -1;
    }

    /// The highest number, or -1.
    int last() const
    {
        for (std::size_t word = _words.size(); word-- > 0;)
            if (_words[word] != 0)
                return static_cast<int>(word) * kWordBits + static_cast<int>(std::bit_width(_words[word])) - 1;
        return -1;
    }

private:
    static constexpr int kWordBits = 64;

    static std::uint64_t bitOf(unsigned number)
    {
        return std::uint64_t(1) << number % kWordBits;
    }

    void makeRoomFor(unsigned number)
    {
        if (const std::size_t words = number / kWordBits + 1; _words.size() < words)
            _words.resize(words, 0);
    }

    std::vector<std::uint64_t> _words;
    int _size = 0;
};

} // namespace Harrow::Vrk
