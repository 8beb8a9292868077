// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the scene's passes share: a fake driver, draw lists and records that are told apart in a list of
/// calls, and managers that write themselves into it.

#include "GPUModelPassTestTools.h"

#include "BufferObject.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "TextureManager.h"
#include "VertexArrayObject.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"

#include <cstring>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{

/// What it is asked stands among the OpenGL calls.
class LoggedManager : public TextureManager
{
public:
    using TextureManager::bind;
    using TextureManager::unbind;

    explicit LoggedManager(const char* name) : _name(QString::fromLatin1(name)) {}
    ~LoggedManager() override = default;

    void bind(ShaderProgram*) override
    {
        say(QStringLiteral("binds program"));
    }
    void unbind(ShaderProgram*) override
    {
        say(QStringLiteral("unbinds program"));
    }
    void bind(const QList<TextureToken>& tokens) override
    {
        say(QStringLiteral("binds ") + text(tokens));
    }
    void unbind(const QList<TextureToken>& tokens) override
    {
        say(QStringLiteral("unbinds ") + text(tokens));
    }
    QString getShaderFile() override
    {
        return QString();
    }

private:
    static QString text(const QList<TextureToken>& tokens)
    {
        QStringList texts;
        for (const TextureToken& token : tokens)
            texts.append(QString::number(token.token));
        return texts.join(QLatin1Char(' '));
    }
    void say(const QString& what) const
    {
        if (CallLog::isRecording())
            CallLog::record(_name + QLatin1Char(' ') + what);
    }

    QString _name;
};

class GPUModelDrawing : public FakeDriverTest
{
protected:
    using Access = GPUModelTestAccess;

    static constexpr int kDrawIDLocation = 3;
    static constexpr quint64 kAll = 0;

    void SetUp() override
    {
        FakeDriverTest::SetUp();
        DrawBuffersTestAccess::resetEntryPoints();
        DrawBuffersTestAccess::resetMode();
        driver.setUniformLocation("u_DrawID", kDrawIDLocation);
        driver.setInteger(GL_MAX_VERTEX_UNIFORM_COMPONENTS, 1024);
        driver.setInteger(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS, 1024);
        Access::setPrimitiveRestartDone(false, true);
        Access::setPrimitiveRestartDone(true, true);
        TextureManager::setInstance(nullptr);
        InstanceDataRegistry::Instance().clear();
        manager = std::make_unique<LoggedManager>("manager");
        program = std::make_unique<ShaderProgram>();
        ASSERT_TRUE(program->link());
        plan = new InstanceDataPlan(QStringLiteral("Records"));
        plan->addMember(InstanceDataPlan::eTexture, QStringLiteral("Map"));
        plan->setMechanism(InstanceDataPlan::eUniformMechanism);
        plan->setArraySize(1);
        {
            const LogCapture limits;
            InstanceDataRegistry::Instance().registerPlan(plan);
        }
        shown = model.addTransform(-1, QMatrix4x4());
        mirrored = model.addTransform(-1, scaling(-1, 1, 1));
        model.updateTransforms();
        model.setDeleteOnClear(false); // records are shared here
    }

    void TearDown() override
    {
        model.clear();
        lists.clear();
        records.clear();
        program.reset();
        manager.reset();
        TextureManager::setInstance(nullptr);
        InstanceDataRegistry::Instance().clear();
        Access::setPrimitiveRestartDone(false, false);
        Access::setPrimitiveRestartDone(true, false);
    }

    /// A draw list with vertex array and index buffer of its own, or with that of another list. The draw identifiers of
    /// list i begin at 100 * i.
    DrawBuffers* newList(int commands, DrawBuffers* shares = nullptr)
    {
        auto list = std::make_unique<DrawBuffers>(nullptr);
        auto vao = shares ? shares->VAO() : OpenGLDeviceContext::current()->newVAO();
        auto buffer = shares ? shares->indexBO() : OpenGLDeviceContext::current()->newBuffer();
        buffer->setTarget(GL_ELEMENT_ARRAY_BUFFER);
        list->setVAO(vao);
        list->setPrimitiveType(GL_TRIANGLES);
        list->setIndexedDraw(buffer, 1000, GL_UNSIGNED_SHORT);
        list->setDrawIDBase(100 * int(lists.size()));
        setCommands(*list, commands);
        EXPECT_TRUE(list->bind() && list->unbind()); // now they have names
        lists.push_back(std::move(list));
        return lists.back().get();
    }

    /// A record whose only member is this token.
    InstanceDataCollection* newRecords(quint64 token)
    {
        char bytes[16] = {};
        std::memcpy(bytes, &token, sizeof token);
        records.push_back(std::make_unique<InstanceDataCollection>(plan, bytes, sizeof bytes));
        return records.back().get();
    }

    /// A drawable under key 0 whose commands all follow `shown`, without records.
    int add(DrawBuffers* list, quint64 flags = 0, int key = 0, InstanceDataCollection* material = nullptr,
            InstanceDataCollection* object = nullptr)
    {
        const int handle = model.add(list, key, material, object, flags);
        for (int command = 0; command < list->numDrawCommands(); ++command)
            model.useTransform(handle, command, shown);
        return handle;
    }

    int add(int commands, quint64 flags = 0, int key = 0)
    {
        return add(newList(commands), flags, key);
    }

    /// What one pass calls, with no name given for what is created in it.
    template <typename Pass> QStringList callsOf(Pass pass)
    {
        CallLog calls;
        pass();
        return calls.list();
    }

    /// A pass of everything with the manager.
    QStringList pass(GPUModel::WindingType winding, bool stencil = false)
    {
        return callsOf([&] { lastResult = model.draw(program.get(), manager.get(), kAll, kAll, winding, stencil); });
    }

    // ---- expected calls --------------------------------------------------------------------------------------------

    template <typename... Arguments> static QString call(const char* name, Arguments... arguments)
    {
        return CallLog::call(name, arguments...);
    }

    static QStringList binding(const DrawBuffers* list)
    {
        return {call("glBindVertexArray", list->VAO()->getVAO()),
                call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, list->indexBO()->getBO())};
    }
    QStringList binding(int list) const
    {
        return binding(lists.at(std::size_t(list)).get());
    }
    static QStringList unbinding()
    {
        return {call("glBindBuffer", GL_ELEMENT_ARRAY_BUFFER, 0), call("glBindVertexArray", 0)};
    }

    /// Of one list.
    static QStringList drawing(int list, const QList<int>& commands)
    {
        QStringList calls;
        for (const int command : commands)
        {
            calls += call("glUniform1ui", kDrawIDLocation, 100 * list + command);
            calls += call("glDrawElementsBaseVertex", GL_TRIANGLES, 3 * (command + 1), GL_UNSIGNED_SHORT, nullptr, 0);
        }
        return calls;
    }

    static QStringList cullNone()
    {
        return {call("glDisable", GL_CULL_FACE)};
    }
    static QStringList frontIs(GLenum face)
    {
        return {call("glFrontFace", face)};
    }
    static QStringList cullBehind(GLenum face)
    {
        return QStringList({call("glEnable", GL_CULL_FACE)}) + frontIs(face);
    }
    static QStringList stencilSetUp()
    {
        return {call("glIsEnabled", GL_STENCIL_TEST), call("glEnable", GL_STENCIL_TEST),
                call("glStencilOp", GL_KEEP, GL_KEEP, GL_REPLACE), call("glStencilMask", 255)};
    }
    static QStringList stencilOff()
    {
        return {call("glDisable", GL_STENCIL_TEST)};
    }
    static QStringList stencilWrites(int value)
    {
        return {call("glStencilFunc", GL_ALWAYS, value, 255)};
    }
    static QStringList said(const char* text)
    {
        return {QString::fromLatin1(text)};
    }
    static QStringList programBound()
    {
        return said("manager binds program");
    }
    static QStringList programUnbound()
    {
        return said("manager unbinds program");
    }

    GPUModel model;
    std::vector<std::unique_ptr<DrawBuffers>> lists;
    std::vector<std::unique_ptr<InstanceDataCollection>> records;
    std::unique_ptr<LoggedManager> manager;
    std::unique_ptr<ShaderProgram> program;
    InstanceDataPlan* plan = nullptr;
    int shown = -1;
    int mirrored = -1;
    bool lastResult = false;
};

} // namespace Harrow::Vrk::Test
