// SPDX-License-Identifier: MIT
#include "LiveNames.h"

#include "GLFunctions.h"

#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace vrksoak
{

namespace
{

// A name is known by its context as well where contexts don't share it. Names that share are one namespace here, which
// suits contexts that all share.
using Name = std::pair<void*, std::uintptr_t>;

// One name counts more than once where it was left behind in a context that went, and a new one has come to its
// address.
std::array<std::multiset<Name>, std::size_t(NameKind::Count)> living;
long long made = 0;
Harrow::Vrk::GLPlatform* platform = nullptr;

constexpr bool isOfOneContext(NameKind kind)
{
    return kind == NameKind::VertexArray || kind == NameKind::Framebuffer || kind == NameKind::Query;
}

Name nameOf(NameKind kind, std::uintptr_t name)
{
    return {isOfOneContext(kind) ? platform->currentContext() : nullptr, name};
}

void added(NameKind kind, std::uintptr_t name)
{
    if (name == 0)
        return;
    living[std::size_t(kind)].insert(nameOf(kind, name));
    ++made;
}

void removed(NameKind kind, std::uintptr_t name)
{
    auto& ofKind = living[std::size_t(kind)];
    if (const auto found = ofKind.find(nameOf(kind, name)); found != ofKind.end())
        ofKind.erase(found);
}

template <NameKind Kind> struct Generate
{
    static inline void(VRK_GLAPIENTRY* target)(GLsizei, GLuint*) = nullptr;
    static void VRK_GLAPIENTRY call(GLsizei count, GLuint* names)
    {
        target(count, names);
        for (GLsizei i = 0; i < count; ++i)
            added(Kind, names[i]);
    }
};

template <NameKind Kind> struct Delete
{
    static inline void(VRK_GLAPIENTRY* target)(GLsizei, const GLuint*) = nullptr;
    static void VRK_GLAPIENTRY call(GLsizei count, const GLuint* names)
    {
        for (GLsizei i = 0; i < count; ++i)
            removed(Kind, names[i]);
        target(count, names);
    }
};

template <NameKind Kind> struct DeleteOne
{
    static inline void(VRK_GLAPIENTRY* target)(GLuint) = nullptr;
    static void VRK_GLAPIENTRY call(GLuint name)
    {
        removed(Kind, name);
        target(name);
    }
};

struct CreateShader
{
    static inline GLuint(VRK_GLAPIENTRY* target)(GLenum) = nullptr;
    static GLuint VRK_GLAPIENTRY call(GLenum type)
    {
        const GLuint name = target(type);
        added(NameKind::Shader, name);
        return name;
    }
};

struct CreateProgram
{
    static inline GLuint(VRK_GLAPIENTRY* target)() = nullptr;
    static GLuint VRK_GLAPIENTRY call()
    {
        const GLuint name = target();
        added(NameKind::Program, name);
        return name;
    }
};

struct MakeSync
{
    static inline GLsync(VRK_GLAPIENTRY* target)(GLenum, GLbitfield) = nullptr;
    static GLsync VRK_GLAPIENTRY call(GLenum condition, GLbitfield flags)
    {
        const GLsync sync = target(condition, flags);
        added(NameKind::Sync, std::uintptr_t(sync));
        return sync;
    }
};

struct DeleteSync
{
    static inline void(VRK_GLAPIENTRY* target)(GLsync) = nullptr;
    static void VRK_GLAPIENTRY call(GLsync sync)
    {
        removed(NameKind::Sync, std::uintptr_t(sync));
        target(sync);
    }
};

template <typename Function> void* wrap(void* target)
{
    Function::target = reinterpret_cast<decltype(Function::target)>(target);
    return reinterpret_cast<void*>(&Function::call);
}

using Wrap = void* (*)(void* target);

const std::map<std::string_view, Wrap>& wraps()
{
    static const std::map<std::string_view, Wrap> table = {
        {"glGenTextures", &wrap<Generate<NameKind::Texture>>},
        {"glGenBuffers", &wrap<Generate<NameKind::Buffer>>},
        {"glGenVertexArrays", &wrap<Generate<NameKind::VertexArray>>},
        {"glGenFramebuffers", &wrap<Generate<NameKind::Framebuffer>>},
        {"glGenRenderbuffers", &wrap<Generate<NameKind::Renderbuffer>>},
        {"glGenQueries", &wrap<Generate<NameKind::Query>>},
        {"glDeleteTextures", &wrap<Delete<NameKind::Texture>>},
        {"glDeleteBuffers", &wrap<Delete<NameKind::Buffer>>},
        {"glDeleteVertexArrays", &wrap<Delete<NameKind::VertexArray>>},
        {"glDeleteFramebuffers", &wrap<Delete<NameKind::Framebuffer>>},
        {"glDeleteRenderbuffers", &wrap<Delete<NameKind::Renderbuffer>>},
        {"glDeleteQueries", &wrap<Delete<NameKind::Query>>},
        {"glCreateShader", &wrap<CreateShader>},
        {"glDeleteShader", &wrap<DeleteOne<NameKind::Shader>>},
        {"glCreateProgram", &wrap<CreateProgram>},
        {"glDeleteProgram", &wrap<DeleteOne<NameKind::Program>>},
        {"glFenceSync", &wrap<MakeSync>},
        {"glDeleteSync", &wrap<DeleteSync>},
    };
    return table;
}

/// What the library is to call for `name`, which is found at `address`.
void* counted(const char* name, void* address)
{
    const auto found = wraps().find(name);
    return found == wraps().end() || LiveNames::isMissing(address) ? address : found->second(address);
}

} // namespace

NameCounts LiveNames::counts()
{
    NameCounts result = {};
    for (std::size_t kind = 0; kind < result.size(); ++kind)
        result[kind] = int(living[kind].size());
    return result;
}

long long LiveNames::madeInAll()
{
    return made;
}

void* LiveNames::procAddress(const char* name)
{
    platform = this;
    return counted(name, _inner.procAddress(name));
}

void* LiveNames::moduleSymbol(const char* name)
{
    platform = this;
    return counted(name, _inner.moduleSymbol(name));
}

void* LiveNames::currentContext()
{
    return _inner.currentContext();
}

} // namespace vrksoak
