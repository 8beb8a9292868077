// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The one assertion and logging discipline of the library. Assertions are always compiled in and never fatal; what
/// they print, and all guarded logs, obey one process-wide switch that the environment sets.

#include "Export.h"

#if defined(__GNUC__)
/// Lets the compiler check the arguments against the format, where it can.
#define VRK_PRINTF_LIKE(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define VRK_PRINTF_LIKE(formatIndex, firstArgument)
#endif

/// Whether assertions and guarded logs print. Read once per process from `VRK_ENABLE_LOGGING`: on unless the variable
/// is set to an empty string, 0 or false in any case of letters. Any thread.
VRKGL_EXPORT bool isLoggingEnabled();

namespace Harrow::Vrk::Detail
{
/// Each writes one line "[file:line] message" at its level, unconditionally; `file` is shortened to what follows its
/// last "/". The message is formatted as by `QString::asprintf`. Used through the macros below.
VRKGL_EXPORT void logDebug(const char* file, int line, const char* format, ...) VRK_PRINTF_LIKE(3, 4);
VRKGL_EXPORT void logWarning(const char* file, int line, const char* format, ...) VRK_PRINTF_LIKE(3, 4);
VRKGL_EXPORT void logCritical(const char* file, int line, const char* format, ...) VRK_PRINTF_LIKE(3, 4);

/// Reports a failed assertion: "[ !! ] Assertion '<condition>' failed: <message>" at critical level, unconditionally.
/// Every "%" of the condition is shown as "\%".
VRKGL_EXPORT void assertionFailed(const char* file, int line, const char* condition, const char* format, ...)
    VRK_PRINTF_LIKE(4, 5);
} // namespace Harrow::Vrk::Detail

/// Guarded log lines: nothing is formatted, and no argument evaluated, while the switch is off.
#define VRK_LOG_DEBUG(...)                                                                                             \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::isLoggingEnabled())                                                                                      \
            ::Harrow::Vrk::Detail::logDebug(__FILE__, __LINE__, __VA_ARGS__);                                          \
    } while (false)

/// The same at warning level.
#define VRK_LOG_WARNING(...)                                                                                           \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::isLoggingEnabled())                                                                                      \
            ::Harrow::Vrk::Detail::logWarning(__FILE__, __LINE__, __VA_ARGS__);                                        \
    } while (false)

/// The same at critical level.
#define VRK_LOG_CRITICAL(...)                                                                                          \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::isLoggingEnabled())                                                                                      \
            ::Harrow::Vrk::Detail::logCritical(__FILE__, __LINE__, __VA_ARGS__);                                       \
    } while (false)

/// Reports when `condition` does not hold, and goes on. The condition is printed as written in the source, so its
/// wording is part of the message. The message's arguments are evaluated only to be printed; the condition always is.
#define VRK_ASSERT(condition, ...)                                                                                     \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(condition) && ::isLoggingEnabled())                                                                      \
            ::Harrow::Vrk::Detail::assertionFailed(__FILE__, __LINE__, #condition, __VA_ARGS__);                       \
    } while (false)

/// Reports when `condition` does not hold, and returns `result` from the enclosing function, with logging off too.
#define VRK_ASSERT_RETURN(condition, result, ...)                                                                      \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(condition))                                                                                              \
        {                                                                                                              \
            if (::isLoggingEnabled())                                                                                  \
                ::Harrow::Vrk::Detail::assertionFailed(__FILE__, __LINE__, #condition, __VA_ARGS__);                   \
            return result;                                                                                             \
        }                                                                                                              \
    } while (false)
