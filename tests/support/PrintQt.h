// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// GoogleTest shows values of Qt as QDebug does, not as bytes. Comes first in each file, or a program would not agree.

#include <QDebug>
#include <QString>

#include <iterator>
#include <ostream>
#include <type_traits>

template <typename Value>
concept ShownByQt = std::is_class_v<Value> && !std::input_or_output_iterator<Value> &&
                    QTypeTraits::has_ostream_operator_v<QDebug, Value>;

template <ShownByQt Value> void PrintTo(const Value& value, std::ostream* stream)
{
    QString text;
    QDebug(&text).nospace() << value;
    *stream << text.toStdString();
}
