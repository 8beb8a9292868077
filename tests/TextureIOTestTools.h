// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of texture files share: a recogniser and a loader that do what a test tells them and keep a record
/// of it, a registry that is empty at the start and at the end of each test, and a look at what the process has open.

#include "TextureIO.h"

#include "TextureFileInfo.h"
#include "TextureLoader.h"
#include "TextureRecogniser.h"

#include <VrkCore/Memory.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

namespace Harrow::Vrk::Test
{

/// What recognisers and loaders of a test were asked, and how many of them live.
struct Trace
{
    QStringList asked;
    QStringList names;
    QList<Memory*> memories;
    int recognisersAlive = 0;
    int recognisersDeleted = 0;
    int loadersAlive = 0;
    QStringList loaderCalls;
};

/// What a loader answers.
struct LoaderPlan
{
    bool valid = true;
    std::function<Texture*(Memory& memory, const TextureFileInfo& info)> load = [](Memory&, const TextureFileInfo&)
    { return static_cast<Texture*>(nullptr); };
};

class PlannedLoader final : public TextureLoader2DHelper
{
public:
    PlannedLoader(Trace& trace, LoaderPlan plan, Memory* memory, QString maker)
        : madeBy(std::move(maker)), _trace(trace), _plan(std::move(plan)), _memory(memory)
    {
        ++_trace.loadersAlive;
    }
    ~PlannedLoader() override
    {
        --_trace.loadersAlive;
    }
    bool valid() const override
    {
        _trace.loaderCalls.append(QStringLiteral("valid"));
        return _plan.valid;
    }
    quint32 width() const override
    {
        return 0;
    }
    quint32 height() const override
    {
        return 0;
    }
    Texture* load(const TextureFileInfo& info) override
    {
        _trace.loaderCalls.append(QStringLiteral("load"));
        return _plan.load(*_memory, info);
    }
    Memory& memory() const
    {
        return *_memory;
    }

    const QString madeBy;

private:
    Trace& _trace;
    LoaderPlan _plan;
    std::unique_ptr<Memory> _memory;
};

/// Claims what begins with `magic`; with an empty one nothing.
class PlannedRecogniser final : public TextureRecogniser
{
public:
    PlannedRecogniser(Trace& trace, QString id, QByteArray magic = {}, LoaderPlan plan = {})
        : _trace(trace), _id(std::move(id)), _magic(std::move(magic)), _plan(std::move(plan))
    {
        ++_trace.recognisersAlive;
    }
    ~PlannedRecogniser() override
    {
        --_trace.recognisersAlive;
        ++_trace.recognisersDeleted;
    }
    TextureLoader* recognise(Memory* memory, const QString& name) const override
    {
        _trace.asked.append(_id);
        _trace.names.append(name);
        _trace.memories.append(memory);
        if (_magic.isEmpty())
        {
            memory->release(memory->get(0, 1));
            return nullptr;
        }
        void* const start = memory->get(0, quint64(_magic.size()));
        const bool claimed = start && std::memcmp(start, _magic.constData(), size_t(_magic.size())) == 0;
        memory->release(start);
        return claimed ? new PlannedLoader(_trace, _plan, memory, _id) : nullptr;
    }

private:
    Trace& _trace;
    QString _id;
    QByteArray _magic;
    LoaderPlan _plan;
};

/// Empties the list of recognisers. Suffixes stay in their table, so each test uses suffixes of its own.
class EmptyRegistry
{
public:
    EmptyRegistry()
    {
        DeleteAllRegisteredTextureRecognisers();
    }
    ~EmptyRegistry()
    {
        DeleteAllRegisteredTextureRecognisers();
    }
    EmptyRegistry(const EmptyRegistry&) = delete;
    EmptyRegistry& operator=(const EmptyRegistry&) = delete;
};

inline QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

inline QStringList texts(std::initializer_list<const char*> list)
{
    QStringList all;
    for (const char* const one : list)
        all.append(text(one));
    return all;
}

inline QString writeFile(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    EXPECT_EQ(file.write(contents), contents.size());
    return path;
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// A folder of the collection of files that nobody here has written, by default beside the source tree.
inline QString realFilesFolder(const char* kind)
{
    const QString data = qEnvironmentVariable("VRK_TEST_DATA");
    const QString beside = QFileInfo(QString::fromUtf8(__FILE__)).absolutePath() + QStringLiteral("/../../shared/data");
    return QDir::cleanPath((data.isEmpty() ? beside : data) + QLatin1Char('/') + QLatin1String(kind));
}

/// At the start of a test about them.
#define VRK_NEEDS_REAL_FILES(kind)                                                                                     \
    if (QDir(realFilesFolder(kind)).entryList(QDir::Files).isEmpty())                                                  \
    GTEST_SKIP() << "There are no real files in " << realFilesFolder(kind).toStdString()                               \
                 << ": set VRK_TEST_DATA to the folder that has them in its folder " kind

#if defined(__linux__)
/// Mappings of a file in this process, and descriptors open on it.
inline int openUsesOf(const QString& path)
{
    const QString real = QFileInfo(path).canonicalFilePath();
    EXPECT_FALSE(real.isEmpty());
    const QByteArray end = ' ' + QFile::encodeName(real);
    int uses = 0;
    for (const QByteArray& line : readFile(QStringLiteral("/proc/self/maps")).split('\n'))
        uses += line.endsWith(end);
    for (const QFileInfo& link : QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::Files | QDir::System))
        uses += link.symLinkTarget() == real;
    return uses;
}
#endif

} // namespace Harrow::Vrk::Test
