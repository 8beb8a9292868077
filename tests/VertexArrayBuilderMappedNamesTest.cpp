// SPDX-License-Identifier: MIT
//
// VertexArrayBuilder where a header maps OpenGL's names to the function table's pointers, before the class is seen:
// it compiles, and the plain names still reach the right members.
#define glVertexAttrib2f _ptrc_glVertexAttrib2f
#define glVertexAttrib3f _ptrc_glVertexAttrib3f

#include "VertexArrayBuilder.h"

#include "GLFunctions.h"

#include <gtest/gtest.h>

namespace Harrow::Vrk::Test
{

TEST(VertexArrayBuilderMappedNamesTest, TheAttributeCallsWorkBehindMacros)
{
    VertexArrayBuilder builder;
    builder.setVertexAttribSpec(2, 3, 0);
    builder.glVertexAttrib2f(2, 1, 2);
    builder.glVertexAttrib3f(2, 3, 4, 5);
    EXPECT_EQ(builder.getVertexAttribData(2), QList<float>({1, 2, 0, 3, 4, 5}));
}

// A member pointer can only be had of a member that is no template.
TEST(VertexArrayBuilderMappedNamesTest, TheyAreTheExportedMembers)
{
    void (VertexArrayBuilder::*const two)(unsigned int, float, float) = &VertexArrayBuilder::glVertexAttrib2f;
    void (VertexArrayBuilder::*const three)(unsigned int, float, float, float) = &VertexArrayBuilder::glVertexAttrib3f;
    VertexArrayBuilder builder;
    builder.setVertexAttribSpec(0, 3, 0);
    (builder.*two)(0, 1, 2);
    (builder.*three)(0, 3, 4, 5);
    EXPECT_EQ(builder.getVertexAttribData(0), QList<float>({1, 2, 0, 3, 4, 5}));
}

} // namespace Harrow::Vrk::Test
