// SPDX-License-Identifier: MIT
// Counts the names that OpenGL has given out and not got back. It stands between the library and the driver, in the
// functions that make and delete names, so it sees the library's, the viewer's and this program's own alike.
#pragma once

#include "GLPlatform.h"

#include <array>

namespace vrksoak
{

enum class NameKind
{
    Texture,
    Buffer,
    VertexArray,
    Framebuffer,
    Renderbuffer,
    Query,
    Shader,
    Program,
    Sync,
    Count
};

using NameCounts = std::array<int, std::size_t(NameKind::Count)>;

constexpr const char* kNameKinds[] = {"texture", "buffer", "vertex array", "framebuffer", "renderbuffer",
                                      "query",   "shader", "program",      "sync"};
static_assert(std::size(kNameKinds) == std::size_t(NameKind::Count), "one word for each kind");

class LiveNames final : public Harrow::Vrk::GLPlatform
{
public:
    /// `inner` is what is asked in the end, and outlives this. To be put in force before the functions are loaded.
    explicit LiveNames(Harrow::Vrk::GLPlatform& inner) : _inner(inner) {}

    static NameCounts counts();
    /// How many were ever made.
    static long long madeInAll();

    void* procAddress(const char* name) override;
    void* moduleSymbol(const char* name) override;
    void* currentContext() override;

private:
    Harrow::Vrk::GLPlatform& _inner;
};

} // namespace vrksoak
