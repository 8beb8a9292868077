// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of carriers at work share: a plan, a collection and a program on the fake driver, and the calls of
/// an upload.

#include "InstanceDataPlanTestTools.h"

#include "BufferObject.h"
#include "InstanceDataCollection.h"
#include "ShaderProgram.h"
#include "TextureManagerTestTools.h"
#include "UniformBufferObject.h"
#include "support/GLTest.h"
#include "support/ObjectAccess.h"

#include <QRegularExpression>

#include <cstdio>
#include <memory>

namespace Harrow::Vrk::Test
{

inline constexpr GLint kFloatLocation = 11;
inline constexpr GLint kIntegerLocation = 12;

/// A plan "Foo" of 96 bytes a record, with a token at 80, and a collection of three zeroed records.
class ParameterMechanismBindTest : public WithPlans<ManagerFixture>
{
protected:
    void SetUp() override
    {
        driver.replace(
            "glGetProgramiv",
            +[](GLuint, GLenum parameter, GLint* value)
            { *value = parameter == GL_LINK_STATUS || (parameter == GL_ACTIVE_UNIFORM_BLOCKS && hasBlock) ? 1 : 0; });
        driver.replace(
            "glGetActiveUniformBlockName", +[](GLuint, GLuint, GLsizei, GLsizei* length, GLchar* name)
                                           { *length = GLsizei(std::snprintf(name, 200, "u_FooUniform")); });
        WithPlans::SetUp();
        makeRecord();
        hasBlock = false;
        UniformBufferObjectTestAccess::forgetContexts();
    }

    void TearDown() override
    {
        collection.reset();
        UniformBufferObjectTestAccess::forgetContexts();
        WithPlans::TearDown();
    }

    void use(Plan::MechanismType mechanism)
    {
        collection.reset();
        clearPlans();
        plan = registeredPlan("Foo", kFooMembers, mechanism);
        collection = std::make_unique<InstanceDataCollection>(plan, size_t(3));
    }

    void useSamplers()
    {
        driver.setUniformLocation("u_fFooSampler", kFloatLocation);
        driver.setUniformLocation("u_iFooSampler", kIntegerLocation);
    }

    std::unique_ptr<ShaderProgram> linked()
    {
        auto program = std::make_unique<ShaderProgram>();
        EXPECT_TRUE(program->link());
        return program;
    }

    bool bind(ShaderProgram* program = nullptr, TextureManager* textureManager = nullptr)
    {
        return plan->bind(program, textureManager, collection.get());
    }

    bool unbind(ShaderProgram* program = nullptr, TextureManager* textureManager = nullptr)
    {
        return plan->unbind(program, textureManager, collection.get());
    }

    const void* bytes() const
    {
        return collection->dataArray().constData();
    }

    /// The calls, without what was generated where.
    static QStringList listed(const CallLog& calls)
    {
        static const QRegularExpression generated(QStringLiteral("^(glGen\\w+)\\(1, .*\\)$"));
        QStringList result = calls.list();
        return result.replaceInStrings(generated, QStringLiteral("\\1"));
    }

    static QString bound(GLenum target, GLuint buffer)
    {
        return CallLog::call("glBindBuffer", target, buffer);
    }

    /// The first upload, which goes through the binding.
    QStringList uploaded(GLenum target, GLenum usage = GL_STATIC_DRAW) const
    {
        return {bound(target, 1), CallLog::call("glBufferData", target, collection->dataArray().size(), bytes(), usage),
                bound(target, 0)};
    }

    /// Later ones.
    QString uploadedByName(GLenum usage = GL_STATIC_DRAW) const
    {
        return CallLog::call("glNamedBufferData", 1, collection->dataArray().size(), bytes(), usage);
    }

    static QStringList onUnit(int unit, GLenum target, GLuint name)
    {
        return {activate(unit), bindName(name, target)};
    }

    static QStringList samplersAsked(const ShaderProgram& program)
    {
        return {CallLog::call("glGetUniformLocation", program.shaderProgramID(), "u_fFooSampler"),
                CallLog::call("glGetUniformLocation", program.shaderProgramID(), "u_iFooSampler")};
    }

    static inline bool hasBlock = false;
    Plan* plan = nullptr;
    std::unique_ptr<InstanceDataCollection> collection;
};

} // namespace Harrow::Vrk::Test
