// SPDX-License-Identifier: MIT
#include "Diagnostics.h"
#include "GLEnumWords.h"
#include "GLFunctions.h"
#include "GLOptionalFunctions.h"
#include "GLUtilities.h"

#include <span>

using namespace Harrow::Vrk;

namespace
{

constexpr GLEnumWord kSources[] = {
    {GL_DEBUG_SOURCE_API, "api"},
    {GL_DEBUG_SOURCE_WINDOW_SYSTEM, "window system"},
    {GL_DEBUG_SOURCE_SHADER_COMPILER, "shader compiler"},
    {GL_DEBUG_SOURCE_THIRD_PARTY, "thirdparty"},
    {GL_DEBUG_SOURCE_APPLICATION, "application"},
    {GL_DEBUG_SOURCE_OTHER, "other"},
};

constexpr GLEnumWord kTypes[] = {
    {GL_DEBUG_TYPE_ERROR, "error"},
    {GL_DEBUG_TYPE_DEPRECATED_BEHAVIOR, "deprecated behaviour"},
    {GL_DEBUG_TYPE_UNDEFINED_BEHAVIOR, "undefined behaviour"},
    {GL_DEBUG_TYPE_PORTABILITY, "portability"},
    {GL_DEBUG_TYPE_PERFORMANCE, "performance"},
    {GL_DEBUG_TYPE_OTHER, "other"},
    {GL_DEBUG_TYPE_MARKER, "marker"},
    {GL_DEBUG_TYPE_PUSH_GROUP, "push group"},
    {GL_DEBUG_TYPE_POP_GROUP, "pop group"},
};

constexpr GLEnumWord kSeverities[] = {
    {GL_DEBUG_SEVERITY_NOTIFICATION, "notification"},
    {GL_DEBUG_SEVERITY_HIGH, "high"},
    {GL_DEBUG_SEVERITY_MEDIUM, "medium"},
    {GL_DEBUG_SEVERITY_LOW, "low"},
};

const char* known(std::span<const GLEnumWord> words, GLenum value)
{
    return wordFor(words, value, "<unknown>");
}

void VRK_GLAPIENTRY logDebugMessage(GLenum source, GLenum type, GLuint id, GLenum severity, GLsizei,
                                    const GLchar* message, const void*)
{
    VRK_LOG_DEBUG("OpenGL message [id=0x%x, source=%s, type=%s, severity=%s]: %s", id, known(kSources, source),
                  known(kTypes, type), known(kSeverities, severity), message);
}

/// With the message of a wanted function, which these two are here.
template <typename Function> Function obtain(const char* name)
{
    return reinterpret_cast<Function>(getGLProcAddress(name, false));
}

/// A driver's note, at every draw, on which kind of memory a buffer uses.
constexpr GLuint kBufferPlacementMessage = 131185;

} // namespace

bool initializeGLDebugging(void)
{
    const auto control = obtain<PFN_glDebugMessageControlARB>("glDebugMessageControlARB");
    if (!control)
        return false;
    const auto setCallback = obtain<PFN_glDebugMessageCallbackARB>("glDebugMessageCallbackARB");
    if (!setCallback)
        return false;

    control(GL_DONT_CARE, GL_DONT_CARE, GL_DONT_CARE, 0, nullptr, GL_TRUE);
    control(GL_DONT_CARE, GL_DEBUG_TYPE_PUSH_GROUP, GL_DEBUG_SEVERITY_NOTIFICATION, 0, nullptr, GL_FALSE);
    control(GL_DONT_CARE, GL_DEBUG_TYPE_POP_GROUP, GL_DEBUG_SEVERITY_NOTIFICATION, 0, nullptr, GL_FALSE);
    control(GL_DEBUG_SOURCE_API, GL_DEBUG_TYPE_OTHER, GL_DONT_CARE, 1, &kBufferPlacementMessage, GL_FALSE);
    setCallback(&logDebugMessage, nullptr);
    Harrow::Vrk::glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS_ARB);
    return true;
}
