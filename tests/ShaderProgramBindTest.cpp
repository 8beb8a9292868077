// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "AutoBinder.h"
#include "Shader.h"
#include "ShaderTestTools.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"

#include <memory>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

class ShaderProgramBind : public ScriptedDriverTest
{
};

} // namespace

// ---- bind ----------------------------------------------------------------------------------------------------------

TEST_F(ShaderProgramBind, BindUsesTheProgramAndRecordsIt)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    const CallLog calls;
    EXPECT_TRUE(program.bind());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &program);
    EXPECT_TRUE(program.bind()); // again: allowed
    EXPECT_TRUE(program.unbind());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUseProgram", 1), CallLog::call("glUseProgram", 1),
                                         CallLog::call("glUseProgram", 0)}));
}

TEST_F(ShaderProgramBind, BindOfAnUnlinkedProgramLeavesThePreviousOne)
{
    ShaderProgram linked(nullptr);
    ASSERT_TRUE(linked.link());
    ASSERT_TRUE(linked.bind());
    ShaderProgram program(nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(program.bind());
    EXPECT_TRUE(calls.list().isEmpty());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &linked);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({"Shader program is not linked"}));
    EXPECT_TRUE(log.texts().value(0).startsWith(QLatin1String("[ShaderProgram.cpp:")));
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(ShaderProgramBind, AutoBinderBindsAndUnbinds)
{
    ShaderProgram program(nullptr);
    ASSERT_TRUE(program.link());
    {
        const AutoBinder binder(&program);
        EXPECT_EQ(ShaderProgram::currentShaderProgram(), &program);
    }
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(ShaderProgramBind, CurrentProgramIsPerContext)
{
    int contexts[2] = {};
    ShaderProgram first(nullptr);
    ShaderProgram second(nullptr);
    ASSERT_TRUE(first.link());
    ASSERT_TRUE(second.link());

    driver.setContext(&contexts[0]);
    EXPECT_TRUE(first.bind());
    driver.setContext(&contexts[1]);
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    EXPECT_TRUE(second.bind());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &second);
    driver.setContext(&contexts[0]);
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &first);
    EXPECT_TRUE(first.unbind());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    driver.setContext(&contexts[1]);
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &second);
    EXPECT_TRUE(second.unbind());
}

TEST_F(ShaderProgramBind, UnbindReleasesTheContextWhicheverProgramWasBound)
{
    ShaderProgram first(nullptr);
    ShaderProgram second(nullptr);
    ASSERT_TRUE(first.link());
    ASSERT_TRUE(first.bind());
    EXPECT_TRUE(second.unbind());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(ShaderProgramBind, DestroyedProgramIsNoContextsCurrentOne)
{
    int contexts[2] = {};
    auto program = std::make_unique<ShaderProgram>(nullptr);
    ShaderProgram other(nullptr);
    ASSERT_TRUE(program->link());
    ASSERT_TRUE(other.link());
    driver.setContext(&contexts[0]);
    ASSERT_TRUE(program->bind());
    driver.setContext(&contexts[1]);
    ASSERT_TRUE(program->bind());
    int third = 0;
    driver.setContext(&third);
    ASSERT_TRUE(other.bind());
    program.reset();
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), &other);
    for (int& context : contexts)
    {
        driver.setContext(&context);
        EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    }
}
