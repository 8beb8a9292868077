// SPDX-License-Identifier: MIT
#include "GLVersions.h"

#include "GLBuildInfo.h" // written by the build

namespace Harrow::Vrk
{

QString GLVersions::getVersion()
{
    return QStringLiteral(VRKGL_BUILD_VERSION);
}

QString GLVersions::getGitHash()
{
    return QStringLiteral(VRKGL_BUILD_GIT_HASH);
}

QString GLVersions::getMd5Sum()
{
    return QStringLiteral("1");
}

} // namespace Harrow::Vrk
