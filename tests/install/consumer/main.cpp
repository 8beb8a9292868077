// SPDX-License-Identifier: MIT
// An application outside the tree: it knows the installed headers and libraries only. With an argument it expects that
// word in the expanded header: an installed file stands before the embedded one.
#include <VrkCore/ResourcesPath.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/GLVersions.h>
#include <VrkGL/OpenGLDeviceContext.h>

#include <QFile>

#include <cstdio>

int main(int argc, char** argv)
{
    const QString resources = Harrow::Vrk::resourcesPath();
    const bool installed = QFile::exists(resources + QStringLiteral("/GLSL/src/VrkUtilities.glslc"));
    const bool embedded = QFile::exists(QStringLiteral(":/GLSL/src/VrkUtilities.glslc"));
    const QString expanded =
        Harrow::Vrk::GLSLMacroProcessor::process(QStringLiteral("#include \"VrkUtilities.glslh\"\n"), nullptr);
    const bool expands = expanded.contains(QStringLiteral("uint getDrawID(void)"));
    const bool overridden = argc < 2 || expanded.contains(QString::fromLocal8Bit(argv[1]));
    // No context is current, so nothing can be loaded; that is reported and nothing crashes.
    const bool refused = !initializeGLFunctions();
    const bool factory = !Harrow::Vrk::OpenGLDeviceContext::current().isNull();
    std::printf("version %s installed %d embedded %d expands %d overridden %d refused %d factory %d\n",
                qPrintable(Harrow::Vrk::GLVersions::getVersion()), installed, embedded, expands, overridden, refused,
                factory);
    return installed && embedded && expands && overridden && refused && factory ? 0 : 1;
}
