// SPDX-License-Identifier: MIT
// Reports through every channel of the diagnostics and prints what came out, so that a test can run it under different
// settings of the logging switch, which a process reads only once.
#include "Diagnostics.h"
#include "GLUtilities.h"
#include "ShaderProgram.h"
#include "support/FakeDriver.h"

#include <QVariant>

#include <cstdio>

using namespace Harrow::Vrk::Test;

namespace
{

int evaluations = 0;

int evaluated()
{
    return ++evaluations;
}

bool returning()
{
    VRK_ASSERT_RETURN(false, false, "returning %d", evaluated());
    return true;
}

/// Reports of the shader pipeline: builds that fail and a file that is missing, which are always said, and what obeys
/// the switch.
void reportShaders(FakeDriver& driver)
{
    driver.refuse("glBindFragDataLocationIndexed");
    driver.replace(
        "glGetShaderiv", +[](GLuint, GLenum, GLint* value) { *value = 0; });
    driver.replace(
        "glGetProgramiv", +[](GLuint, GLenum, GLint* value) { *value = 0; });
    driver.load();
    Harrow::Vrk::ShaderProgram program;
    program.bind();
    program.setUniform(0, QVariant(QString()));
    program.setUniformBlockBinding(3, 0);
    program.setFragDataLocations({QStringLiteral("o_Color")});
    program.setFragDataIndexs({{QStringLiteral("o_Color")}});
    program.link();
    program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("no/such.vert"));
    program.addShader(GL_VERTEX_SHADER, QStringLiteral("text"));
    program.compile();
}

void print(QtMsgType, const QMessageLogContext&, const QString& text)
{
    const bool placed = text.startsWith(u'[');
    std::puts(qPrintable(placed ? text.mid(text.indexOf(u"] ") + 2) : text));
}

} // namespace

int main()
{
    qInstallMessageHandler(&print);
    VRK_LOG_DEBUG("debug %d", evaluated());
    VRK_LOG_CRITICAL("critical %d", evaluated());
    VRK_LOG_WARNING("warning %d", evaluated());
    VRK_ASSERT(false, "continuing %d", evaluated());
    std::printf("returned %d\n", returning() ? 1 : 0);
    FakeDriver driver;
    driver.load();
    driver.pushError(0x0500);
    Harrow::Vrk::checkGLError("Probe.cpp", 1);
    bytesFromInternalFormat(1);
    driver.refuse("glNoSuchFunction");
    getGLProcAddress("glNoSuchFunction", false);
    reportShaders(driver);
    std::printf("evaluated %d\n", evaluations);
    std::printf("switch %d\n", isLoggingEnabled() ? 1 : 0);
    std::fflush(stdout);
    return 0;
}
