// SPDX-License-Identifier: MIT

#include "ResourcesPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#if defined(Q_OS_WIN)
#include <qt_windows.h>
#else
#include <dlfcn.h>
#endif

// Given by the build: the way from the directory of the installed library to the installed resources.
#ifndef VRK_RESOURCES_FROM_LIBDIR
#define VRK_RESOURCES_FROM_LIBDIR "../share/vrkgl"
#endif

namespace Harrow::Vrk
{

namespace
{

// An address inside this library. It has internal linkage because the address of an exported function may
// be that of another copy of the library that was loaded earlier.
const char kAnchor = 0;

// The file that holds kAnchor as the system names it, or an empty text when it cannot tell.
QString libraryName()
{
#if defined(Q_OS_WIN)
    HMODULE module = nullptr;
    const DWORD how = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExW(how, reinterpret_cast<LPCWSTR>(&kAnchor), &module))
        return QString();
    // 32767 characters is the longest path that Windows has.
    QString path(32767, Qt::Uninitialized);
    const DWORD length =
        GetModuleFileNameW(module, reinterpret_cast<wchar_t*>(path.data()), static_cast<DWORD>(path.size()));
    path.truncate(static_cast<qsizetype>(length));
    return path;
#else
    Dl_info info = {};
    if (0 == dladdr(&kAnchor, &info) || nullptr == info.dli_fname)
        return QString();
    return QFile::decodeName(info.dli_fname);
#endif
}

// The same as an absolute path. A library that was loaded by a relative name keeps that name, which means a file
// only as long as the current directory is the one that it was loaded in.
QString absoluteLibraryName()
{
    const QString name = libraryName();
    const QFileInfo info(name);
    if (name.isEmpty() || (info.isRelative() && !info.exists()))
        return QString();
    return info.absoluteFilePath();
}

const QString& libraryFile()
{
    static const QString file = absoluteLibraryName();
    return file;
}

// Asks as the library is loaded. Who calls from an initialiser that runs before this one is served as well.
[[maybe_unused]] const QString& kLibraryFileAtLoad = libraryFile();

QString findResources()
{
    const QString& file = libraryFile();
    if (file.isEmpty())
        return QString();
    const QFileInfo info(file);
    // The place of the real file first; the place of a link to it serves when links were put into a prefix
    // of their own.
    for (const QString& directory : {info.canonicalPath(), info.absolutePath()})
    {
        if (directory.isEmpty())
            continue;
        for (const char* way : {VRK_RESOURCES_FROM_LIBDIR, "../share/vrkgl"})
        {
            QString path = QDir::cleanPath(QDir(directory).filePath(QString::fromUtf8(way)));
            if (QFileInfo(path).isDir())
                return path;
        }
    }
    return QString();
}

} // namespace

QString resourcesPath()
{
    static const QString path = findResources();
    return path;
}

} // namespace Harrow::Vrk
