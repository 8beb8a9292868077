// SPDX-License-Identifier: MIT
// An OpenGL context without a window, by EGL alone: on Mesa's surfaceless platform, on a GPU device, or on the default
// display, whichever gives a core profile of 3.2 or newer first. There is no default framebuffer.
#pragma once

#include <QString>

namespace vrkview
{

class HeadlessContext
{
public:
    HeadlessContext() = default;
    ~HeadlessContext();
    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

    /// Makes the context and makes it current on this thread. On false `error` says in one line why there is none.
    bool create(QString& error);
    void destroy();

private:
    bool start(void* display, QString& error);
    bool createContext(QString& error);

    // EGLDisplay, EGLContext and EGLSurface, without EGL's header in ours.
    void* _display = nullptr;
    void* _context = nullptr;
    void* _surface = nullptr;
};

} // namespace vrkview
