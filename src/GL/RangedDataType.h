// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A number with the range it may take, carried in a `QVariant` as a value for a uniform. Only the value reaches a
/// shader; the bounds are for whoever shows or edits it.

#include <QMetaType>

namespace Harrow::Vrk
{

/// Nothing here keeps `value` inside its bounds.
///
/// To set a uniform from one, pass its number: `program.setUniform("u_Gain", QVariant(gain.value))`. What
/// `QVariant::fromValue(gain)` makes reports the meta-type name and not the alias, and only a variant that reports the
/// alias counts as a ranged number there; any other is an unknown type, which sets nothing.
template <typename T> struct RangedDataType
{
    /// The bounds are told to whoever edits the value; nothing here keeps it within them.
    T value = T();
    T minimum = T();
    T maximum = T();
};

/// The meta-type names are "Harrow::Vrk::RangedDataType<float>" and "Harrow::Vrk::RangedDataType<double>". The library
/// registers these two names as their aliases when it is loaded.
using RangedFloat = RangedDataType<float>;
using RangedDouble = RangedDataType<double>;

} // namespace Harrow::Vrk

Q_DECLARE_METATYPE(Harrow::Vrk::RangedDataType<float>)
Q_DECLARE_METATYPE(Harrow::Vrk::RangedDataType<double>)
