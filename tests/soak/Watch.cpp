// SPDX-License-Identifier: MIT
#include "Watch.h"

#include "GLFunctions.h"

#include <algorithm>
#include <cstdio>

namespace vrksoak
{

namespace
{

// Told in full; of the others only the number.
constexpr long long kMostTold = 40;

// A context that is lost reports for ever.
constexpr int kMostErrorsAtOnce = 16;

} // namespace

Watch* Watch::_instance = nullptr;

Watch::Watch() : _previous(qInstallMessageHandler(&Watch::handle))
{
    _instance = this;
}

Watch::~Watch()
{
    qInstallMessageHandler(_previous);
    _instance = nullptr;
}

void Watch::now(int episode, int frame, const char* what)
{
    _episode = episode;
    _frame = frame;
    _what = what;
}

void Watch::allow(const QString& text)
{
    _allowed.append(text);
}

void Watch::lookForErrors()
{
    for (int i = 0; i < kMostErrorsAtOnce; ++i)
    {
        const GLenum error = Harrow::Vrk::glGetError();
        if (error == GL_NO_ERROR)
            return;
        fault(QStringLiteral("OpenGL error 0x%1").arg(error, 0, 16));
    }
}

void Watch::fault(const QString& text)
{
    if (++_faultCount <= kMostTold)
    {
        std::printf("fault: episode %d, frame %d, %s: %s\n", _episode, _frame, _what, qUtf8Printable(text));
        std::fflush(stdout);
    }
}

void Watch::handle(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    if (_instance->isAllowed(text))
        ++_instance->_allowedCount;
    else
        _instance->fault(text.trimmed());
}

bool Watch::isAllowed(const QString& text) const
{
    return std::any_of(_allowed.begin(), _allowed.end(), [&](const QString& part) { return text.contains(part); });
}

} // namespace vrksoak
