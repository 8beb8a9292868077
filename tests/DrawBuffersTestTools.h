// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of DrawBuffers share: the fixture on the fake driver, with a vertex array and a list of sub-draws,
/// and the statistics as one value.

#include "BufferObject.h"
#include "DrawBuffers.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "VertexArrayObject.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"

#include <ostream>

namespace Harrow::Vrk::Test
{

inline QSharedPointer<BufferObject> newIndexBuffer()
{
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    return buffer;
}

inline QString assertion(const char* condition, const char* message)
{
    return assertionLine(QString::fromLatin1(condition), QString::fromLatin1(message));
}

struct Totals
{
    quint64 calls;
    quint64 batches;
    quint64 indices;

    bool operator==(const Totals& other) const
    {
        return calls == other.calls && batches == other.batches && indices == other.indices;
    }
};

inline std::ostream& operator<<(std::ostream& stream, const Totals& totals)
{
    return stream << totals.calls << " calls, " << totals.batches << " batches, " << totals.indices << " indices";
}

inline Totals takeTotals()
{
    return {DrawBuffers::getAndResetTotalDrawCalls(), DrawBuffers::getAndResetTotalDrawBatches(),
            DrawBuffers::getAndResetTotalDrawIndices()};
}

/// What is said, and asked, where indices are to be drawn and no buffer is known to hold them.
inline QString noIndices()
{
    return assertion("this->hasIndicesBound()", "No index buffer is bound on draw");
}

inline QString indicesQuery()
{
    return CallLog::call("glGetIntegerv", GL_ELEMENT_ARRAY_BUFFER_BINDING);
}

inline constexpr DrawElementsIndirectCommand kCommands[] = {
    // count, instances, first index, base vertex, base instance
    {3, 1, 0, 0, 0},
    {6, 5, 3, 10, 7},
    {9, 1, 9, 0xFFFFFFFF, 0},
};

class DrawBuffersTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        DrawBuffersTestAccess::resetEntryPoints();
        DrawBuffersTestAccess::resetMode();
        vao = OpenGLDeviceContext::current()->newVAO();
        object.setVAO(vao);
        object.setPrimitiveType(GL_TRIANGLES);
    }

    void TearDown() override
    {
        if (vao->getVAO() != 0 && vao->isBound())
            vao->unbind();
        DrawBuffersTestAccess::resetEntryPoints();
        DrawBuffersTestAccess::resetMode();
    }

    /// 12 indices of two bytes, with the object bound.
    void bindIndexed(int indexCount = 12, GLenum indexType = GL_UNSIGNED_SHORT)
    {
        indices = newIndexBuffer();
        object.setIndexedDraw(indices, indexCount, indexType);
        ASSERT_TRUE(object.bind());
    }

    /// The index buffer must not be bound when it goes.
    void unbind()
    {
        EXPECT_TRUE(object.unbind());
    }

    QSharedPointer<ShaderProgram> linkedProgram()
    {
        auto program = QSharedPointer<ShaderProgram>::create();
        EXPECT_TRUE(program->link());
        return program;
    }

    /// Calls, with questions shown without where the answer was to be put.
    static QStringList withoutPlaces(QStringList calls)
    {
        for (QString& call : calls)
            if (call.startsWith(QStringLiteral("glGetIntegerv(")))
                call = call.left(call.indexOf(QLatin1Char(','))) + QLatin1Char(')');
        return calls;
    }

    QSharedPointer<VertexArrayObject> vao;
    QSharedPointer<BufferObject> indices;
    DrawBuffers object{nullptr};
};

} // namespace Harrow::Vrk::Test
