// SPDX-License-Identifier: MIT
#include "Driver.h"

#include "Terminal.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

QString driverText(GLenum name)
{
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return QString::fromUtf8(text ? text : "unknown");
}

} // namespace

bool startDriver(QString& driver, QString& error)
{
    {
        const QuietScope quiet; // a failure is told by the caller
        if (!initializeGLFunctions())
        {
            error = QStringLiteral("the functions of OpenGL could not be loaded");
            return false;
        }
    }
    if (!openGlVersionSupported(3, 2))
    {
        error = QStringLiteral("OpenGL 3.2 is needed, the driver has %1").arg(driverText(GL_VERSION));
        return false;
    }
    driver = QStringLiteral("%1, OpenGL %2").arg(driverText(GL_RENDERER), driverText(GL_VERSION));
    return true;
}

} // namespace vrkview
