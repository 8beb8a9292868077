// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A real OpenGL core context without a window system: EGL's surfaceless platform. There is no default framebuffer.
/// With VRK_TEST_GPU set, and where there is no such platform, the first GPU that EGL names.

#include <QtGlobal>

namespace Harrow::Vrk::Test
{

class HeadlessContext
{
public:
    enum class Api
    {
        OpenGL, ///< 3.2 core profile or newer
        OpenGLES
    };

    /// A context of its own, sharing objects with `shareWith` unless that is null. Not made current.
    explicit HeadlessContext(HeadlessContext* shareWith = nullptr, Api api = Api::OpenGL);
    /// Releases the context; if it is current on this thread, none is afterwards.
    ~HeadlessContext();
    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

    bool isValid() const;
    bool makeCurrent();
    /// Leaves this thread without a context.
    static void releaseCurrent();
    /// What the platform gives as its identity.
    void* handle() const;

private:
    void* _context = nullptr;
    Api _api;
};

} // namespace Harrow::Vrk::Test
