// SPDX-License-Identifier: MIT
// vrk_soak: draws the crowd for as long as it is told, while textures, lights, streamers and all the rest come and go
// by a seed. Exit code 0 when nothing was at fault, 1 when something was, 2 when it could not begin.
#include "LiveNames.h"
#include "Soak.h"
#include "SoakOptions.h"

#include "Diagnostics.h"
#include "GLUtilities.h"
#include "TextureIO.h"
#include "support/HeadlessContext.h"

#include <QCoreApplication>

#include <cstdio>

namespace vrksoak
{

namespace
{

constexpr int kFailed = 1;
constexpr int kNotBegun = 2;

int refuse(const QString& reason)
{
    std::fprintf(stderr, "vrk_soak: %s\n", qUtf8Printable(reason));
    return kNotBegun;
}

/// Mesa writes its cache of shaders from a thread of the lowest priority. What waits there on a busy machine is memory
/// that comes and goes by no rule of ours.
void forgoShaderCache()
{
    if (!qEnvironmentVariableIsSet("MESA_SHADER_CACHE_DISABLE"))
        qputenv("MESA_SHADER_CACHE_DISABLE", "true");
}

int run(const SoakOptions& options)
{
    if (!isLoggingEnabled())
        return refuse(QStringLiteral("VRK_ENABLE_LOGGING is off, so the library would not say what is wrong"));
    forgoShaderCache();
    static LiveNames names(Harrow::Vrk::GLPlatform::native());
    Harrow::Vrk::GLPlatform::install(&names);
    Harrow::Vrk::Test::HeadlessContext context;
    if (!context.isValid() || !context.makeCurrent())
        return refuse(QStringLiteral("no OpenGL context can be had"));
    if (!initializeGLFunctions())
        return refuse(QStringLiteral("the functions of OpenGL could not be loaded"));
    return Soak(options, context).run() ? 0 : kFailed;
}

} // namespace

} // namespace vrksoak

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QString error;
    const auto options = vrksoak::parseSoakOptions(QCoreApplication::arguments(), error);
    if (!options)
    {
        std::fputs(qUtf8Printable(vrksoak::soakUsage()), stderr);
        return vrksoak::refuse(error);
    }
    const int exitCode = vrksoak::run(*options);
    Harrow::Vrk::DeleteAllRegisteredTextureRecognisers();
    return exitCode;
}
