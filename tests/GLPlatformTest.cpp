// SPDX-License-Identifier: MIT
//
// The platform of this system: what it finds in the OpenGL module, and that it gives no more than the context offers.
#include "GLPlatform.h"

#include "support/GLTest.h"

#include <dlfcn.h>

namespace Harrow::Vrk::Test
{
namespace
{

using GLPlatformGL = GLTest;

TEST_F(GLPlatformGL, SymbolsOfTheModuleAreThoseThatTheContextOffers)
{
    void* const module = dlopen("libOpenGL.so.0", RTLD_LAZY | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    GLPlatform& platform = GLPlatform::native();
    EXPECT_NE(platform.moduleSymbol("glClear"), nullptr);
    EXPECT_EQ(platform.moduleSymbol("glClear"), dlsym(module, "glClear"));
    ASSERT_NE(dlsym(module, "glNamedBufferData"), nullptr) << "the module has it whatever the context is";
    EXPECT_EQ(platform.moduleSymbol("glNamedBufferData") == nullptr, isFloor());
    EXPECT_EQ(platform.moduleSymbol("glFooBar"), nullptr);
    EXPECT_EQ(platform.moduleSymbol("dlopen"), nullptr);
    dlclose(module);
}

TEST_F(GLPlatformGL, WithoutAContextTheModuleGivesNothing)
{
    HeadlessContext::releaseCurrent();
    EXPECT_EQ(GLPlatform::native().currentContext(), nullptr);
    EXPECT_EQ(GLPlatform::native().moduleSymbol("glClear"), nullptr);
    ASSERT_TRUE(context().makeCurrent());
    EXPECT_NE(GLPlatform::native().moduleSymbol("glClear"), nullptr);
}

} // namespace
} // namespace Harrow::Vrk::Test
