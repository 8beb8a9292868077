// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A fixture on the real driver that fails a test which leaves objects of the library alive or texture units taken.

#include "BufferObject.h"
#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "GLStateTools.h"
#include "Texture.h"
#include "TextureUnits.h"
#include "VertexArrayObject.h"
#include "support/GLTest.h"

namespace Harrow::Vrk::Test
{

/// The living objects of the library, at the time when it is made.
struct Alive
{
    int textures = Texture::NumAlive();
    int framebuffers = FramebufferObject::NumAlive();
    int attachments = FramebufferObject::NumActiveFBOTextures();
    int buffers = BufferObject::NumAlive();
    int vertexArrays = VertexArrayObject::NumAlive();
    int quads = DrawBuffers::NumAlive();

    bool operator==(const Alive&) const = default;
};

class LeftoversFixture : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (HasFatalFailure())
            return;
        TextureUnits::ofCurrentContext(); // so that the units are known, and free
        _before = Alive();
    }

    void TearDown() override
    {
        EXPECT_TRUE(_before == Alive()) << "something was left alive";
        for (int unit = 0; unit < unitCount(); ++unit)
            EXPECT_TRUE(Texture::isTextureUnitFree(unsigned(unit)));
        // What the functions leave behind is no business of the suites that come after.
        glDisable(GL_DEPTH_TEST);
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        GLTest::TearDown();
    }

private:
    Alive _before;
};

} // namespace Harrow::Vrk::Test
