// SPDX-License-Identifier: MIT
// An application outside the tree: it knows the installed headers and libraries only.
#include <VrkCore/ResourcesPath.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/GLVersions.h>
#include <VrkGL/OpenGLDeviceContext.h>

#include <QFile>

#include <cstdio>

int main()
{
    // The installed GLSL tree is found beside the library, and the embedded one within it.
    const QString resources = Harrow::Vrk::resourcesPath();
    const bool installed = QFile::exists(resources + QStringLiteral("/GLSL/src/VrkUtilities.glslc"));
    const bool embedded = QFile::exists(QStringLiteral(":/GLSL/src/VrkUtilities.glslc"));
    const QString expanded =
        Harrow::Vrk::GLSLMacroProcessor::process(QStringLiteral("#include \"VrkUtilities.glslh\"\n"), nullptr);
    const bool expands = expanded.contains(QStringLiteral("uint getDrawID(void)"));
    // No context is current, so nothing can be loaded; that is reported and nothing crashes.
    const bool refused = !initializeGLFunctions();
    const bool factory = !Harrow::Vrk::OpenGLDeviceContext::current().isNull();
    std::printf("version %s installed %d embedded %d expands %d refused %d factory %d\n",
                qPrintable(Harrow::Vrk::GLVersions::getVersion()), installed, embedded, expands, refused, factory);
    return installed && embedded && expands && refused && factory ? 0 : 1;
}
