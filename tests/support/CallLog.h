// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Records OpenGL calls. A recorder stands in front of every entry point that the library reaches, through the table or
/// by look-up, on the real driver and on the fake one, from the start of the test program; a `CallLog` keeps what they
/// see while it is alive, on its own thread.

#include <QString>
#include <QStringList>

#include <string>
#include <type_traits>

namespace Harrow::Vrk::Test
{

class CallLog
{
public:
    CallLog();
    ~CallLog();
    CallLog(const CallLog&) = delete;
    CallLog& operator=(const CallLog&) = delete;

    /// All calls in order, each as `call` renders it.
    const QStringList& list() const
    {
        return _calls;
    }

    /// Only the calls of the given functions, in order.
    QStringList named(const QStringList& functions) const;
    int count(const QString& function) const;
    void clear();

    /// A call as it is recorded: "glBindBuffer(0x8892, 1)". Numbers of any integer type render alike.
    template <typename... Arguments> static QString call(const char* name, Arguments... arguments)
    {
        QStringList texts;
        (texts.append(render(arguments)), ...);
        return QString::fromLatin1(name) + QLatin1Char('(') + texts.join(QStringLiteral(", ")) + QLatin1Char(')');
    }

    /// Used by the recorders.
    static bool isRecording();
    static void record(const QString& call);

private:
    /// Only a text that is passed in is shown; a `char*` is a place to write to, so its address is.
    template <typename T> static QString render(T value)
    {
        using Decayed = std::decay_t<T>;
        if constexpr (std::is_same_v<Decayed, std::nullptr_t>)
            return QStringLiteral("null");
        else if constexpr (std::is_same_v<Decayed, const char*>)
            return value ? QLatin1Char('"') + QString::fromUtf8(value) + QLatin1Char('"') : QStringLiteral("null");
        else if constexpr (std::is_pointer_v<Decayed>)
            return renderAddress(reinterpret_cast<quintptr>(value));
        else if constexpr (std::is_floating_point_v<Decayed>)
            return QString::number(static_cast<double>(value), 'g', 9);
        else
            return renderInteger(static_cast<qint64>(value));
    }

    static QString renderAddress(quintptr address);
    static QString renderInteger(qint64 value);

    QStringList _calls;
    CallLog* _outer;
};

/// An offset into a bound buffer, as OpenGL takes it: as a pointer.
inline const void* bufferOffset(std::size_t bytes)
{
    return reinterpret_cast<const void*>(bytes);
}

} // namespace Harrow::Vrk::Test
