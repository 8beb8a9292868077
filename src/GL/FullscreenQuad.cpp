// SPDX-License-Identifier: MIT
#include "FullscreenQuad.h"

#include "AutoBinder.h"
#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "VertexArrayObject.h"

namespace Harrow::Vrk
{

QSharedPointer<DrawBuffers> newFullscreenQuadFor(const ShaderProgram& program, const char* operation)
{
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    VRK_ASSERT_RETURN(!context.isNull(), {}, "Device context is NULL on %s", operation);
    QSharedPointer<DrawBuffers> quad = context->newFullscreenQuad();
    VRK_ASSERT_RETURN(!quad.isNull(), {}, "Fullscreen quad is NULL on %s", operation);
    VRK_ASSERT_RETURN(!quad->VAO().isNull(), {}, "Vertex Array Object is NULL on %s", operation);
    const QSharedPointer<VertexArrayObject> vao = quad->VAO();
    const AutoBinder binder(vao.data());
    vao->enableShaderProgramArrays(&program);
    return quad;
}

} // namespace Harrow::Vrk
