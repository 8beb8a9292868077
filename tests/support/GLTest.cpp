// SPDX-License-Identifier: MIT
#include "support/GLTest.h"

#include "GLFunctions.h"
#include "GLRuntimeTestAccess.h"
#include "GLUtilities.h"
#include "support/FakeDriver.h"
#include "support/FloorProfile.h"
#include "support/RecordingPlatform.h"

namespace Harrow::Vrk::Test
{

bool GLTest::isFloor()
{
    return isFloorProfile();
}

HeadlessContext& GLTest::context()
{
    // Not destroyed: the driver may be unloaded before static objects are.
    static auto* const made = new HeadlessContext;
    return *made;
}

void GLTest::SetUp()
{
    ASSERT_TRUE(context().isValid()) << "no OpenGL core context can be had from EGL's surfaceless platform";
    ASSERT_TRUE(context().makeCurrent());
    RecordingPlatform::instance().setInner(nullptr);
    if (FakeDriver::tableIsStale())
    {
        GLRuntimeTestAccess::resetInitialisedFlag();
        GLRuntimeTestAccess::resetVersionCache();
        resetCachedEntryPoints();
        FakeDriver::markTableFresh();
    }
    ASSERT_TRUE(initializeGLFunctions());
    ASSERT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

void GLTest::TearDown()
{
    if (!context().isValid())
        return;
    ASSERT_TRUE(context().makeCurrent());
    EXPECT_FALSE(hasGLError(__FILE__, __LINE__)) << "the test left an OpenGL error";
}

} // namespace Harrow::Vrk::Test
