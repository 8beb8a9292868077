// SPDX-License-Identifier: MIT
// What the command lines of all programs here are read with: words that stand for values, and values that are checked
// as they are taken out of a parser.
#pragma once

#include <QLatin1String>
#include <QSize>
#include <QString>

#include <cstddef>
#include <optional>

class QCommandLineParser;

namespace vrkview
{

/// A word of the command line and what it stands for.
template <typename Value> struct Choice
{
    const char* word;
    Value value;
};

/// The words with commas between them, and `lastSeparator` before the last one.
template <typename Value, std::size_t count>
QString words(const Choice<Value> (&choices)[count], const QString& lastSeparator = QStringLiteral(", "))
{
    QString list;
    for (std::size_t i = 0; i < count; ++i)
    {
        if (i > 0)
            list += i + 1 < count ? QStringLiteral(", ") : lastSeparator;
        list += QLatin1String(choices[i].word);
    }
    return list;
}

/// What `word` stands for, or nothing.
template <typename Value, std::size_t count>
std::optional<Value> chosen(const Choice<Value> (&choices)[count], const QString& word)
{
    for (const Choice<Value>& choice : choices)
        if (word == QLatin1String(choice.word))
            return choice.value;
    return {};
}

/// Reads values out of a parser, which must live as long. A value whose option is not given stays as it is, and so does
/// one that is wrong; the first one that is wrong leaves its message in `error`.
class ValueReader
{
public:
    explicit ValueReader(const QCommandLineParser& parser) : _parser(parser) {}

    bool isSet(const char* name) const;

    /// As it was given; of an option that was given more than once, the last one.
    QString text(const char* name) const;

    /// Whole numbers, and numbers, from `lowest` to `highest`.
    void read(const char* name, int lowest, int highest, int& value);
    void read(const char* name, float lowest, float highest, float& value);
    void read(const char* name, float lowest, float highest, std::optional<float>& value);

    /// A width and a height from 1 to `largestSide`, such as `example`.
    void read(const char* name, int largestSide, const char* example, QSize& value);

    /// A text that is not empty. `wanted` says what it is, as in "a file name".
    void read(const char* name, const char* wanted, QString& value);

    template <typename Value, std::size_t count, typename Target>
    void read(const char* name, const Choice<Value> (&choices)[count], Target& value)
    {
        if (!isSet(name))
            return;
        if (const std::optional<Value> given = chosen(choices, text(name)))
            value = *given;
        else
            reject(name, QStringLiteral("one of ") + words(choices));
    }

    /// The option's value is wrong. `wanted` says what it should be.
    void reject(const char* name, const QString& wanted);

    /// Something else is wrong.
    void reject(const QString& error);

    /// Of what was rejected first; empty as long as nothing was.
    const QString& error() const
    {
        return _error;
    }

private:
    const QCommandLineParser& _parser;
    QString _error;
};

} // namespace vrkview
