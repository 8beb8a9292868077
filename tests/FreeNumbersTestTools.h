// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The numbers of a pool as a list that tests compare and print.

#include "FreeNumbers.h"

#include <QList>

namespace Harrow::Vrk::Test
{

/// Ascending.
inline QList<int> numbersIn(const FreeNumbers& numbers)
{
    QList<int> all;
    for (int number = 0; number <= numbers.last(); ++number)
        if (numbers.contains(unsigned(number)))
            all.append(number);
    return all;
}

} // namespace Harrow::Vrk::Test
