// SPDX-License-Identifier: MIT
// The library in an application whose contexts are Qt's.
#include <VrkGL/BufferObject.h>
#include <VrkGL/GLContextTracker.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/OpenGLDeviceContext.h>

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>

#include <gtest/gtest.h>

using namespace Harrow::Vrk;

namespace
{

class QtContext : public testing::Test
{
protected:
    void SetUp() override
    {
        QSurfaceFormat format;
        format.setVersion(3, 2);
        format.setProfile(QSurfaceFormat::CoreProfile);
        surface.setFormat(format);
        surface.create();
        for (QOpenGLContext* const context : {&first, &second})
        {
            context->setFormat(format);
            ASSERT_TRUE(context->create());
        }
    }

    QOffscreenSurface surface;
    QOpenGLContext first;
    QOpenGLContext second;
};

} // namespace

TEST_F(QtContext, IsTheIdentityOfTheCurrentContext)
{
    EXPECT_EQ(GLContextTracker::currentContext(), nullptr);
    ASSERT_TRUE(first.makeCurrent(&surface));
    EXPECT_EQ(GLContextTracker::currentContext(), &first);
    GLContextTracker tracker;
    tracker.trackCurrentContext();
    ASSERT_TRUE(second.makeCurrent(&surface));
    EXPECT_EQ(GLContextTracker::currentContext(), &second);
    EXPECT_FALSE(tracker.check());
    ASSERT_TRUE(first.makeCurrent(&surface));
    EXPECT_TRUE(tracker.check());
    first.doneCurrent();
}

TEST_F(QtContext, LoadsTheTableAndServesBuffers)
{
    ASSERT_TRUE(first.makeCurrent(&surface));
    ASSERT_TRUE(initializeGLFunctions());
    EXPECT_TRUE(openGlVersionSupported(3, 2));
    EXPECT_EQ(getGLProcAddress("glFooBar", true), nullptr);
    EXPECT_NE(getGLProcAddress("glDrawArrays", true), nullptr);
    {
        const auto buffer = OpenGLDeviceContext::current()->newBuffer();
        buffer->setTarget(GL_ARRAY_BUFFER);
        ASSERT_TRUE(buffer->bind());
        const float values[3] = {1, 2, 3};
        EXPECT_TRUE(buffer->upload(values, 3, GL_STATIC_DRAW));
        float read[3] = {};
        Harrow::Vrk::glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof read, read);
        EXPECT_EQ(read[2], 3.0f);
        EXPECT_TRUE(buffer->unbind());
    }
    EXPECT_FALSE(hasGLError(__FILE__, __LINE__));
    first.doneCurrent();
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
