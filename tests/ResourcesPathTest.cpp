// SPDX-License-Identifier: MIT
//
// Where the library looks for its installed resources. Copies of the library are put into folders that look
// like installations, since the answer depends on where the library file lies.

#include <VrkCore/ResourcesPath.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

namespace Harrow::Vrk::Test
{

TEST(ResourcesPath, IsADirectoryOrEmpty)
{
    const QString path = resourcesPath();
    EXPECT_TRUE(path.isEmpty() || (QFileInfo(path).isAbsolute() && QFileInfo(path).isDir())) << path.toStdString();
    EXPECT_EQ(resourcesPath(), path);
}

#if !defined(_WIN32)

namespace
{

/// The file of the library that this program runs with, and the name under which it has resourcesPath.
struct Loaded
{
    QString file;
    std::string symbol;
};

Loaded loadedLibrary()
{
    Dl_info info = {};
    if (0 == dladdr(reinterpret_cast<void*>(&resourcesPath), &info) || nullptr == info.dli_sname)
        return {};
    return {QFileInfo(QFile::decodeName(info.dli_fname)).canonicalFilePath(), info.dli_sname};
}

/// A folder in the place of an installation prefix.
class ResourcesPathOfACopy : public testing::Test
{
protected:
    void SetUp() override
    {
        _loaded = loadedLibrary();
        ASSERT_FALSE(_loaded.file.isEmpty());
        // Temporary folders may lie behind a link.
        _prefix = QFileInfo(_folder.path()).canonicalFilePath();
    }

    void makeFolder(const QString& name)
    {
        ASSERT_TRUE(QDir(_prefix).mkpath(name));
    }

    /// Puts a copy of the library into the folder and gives its path.
    QString copyInto(const QString& name)
    {
        makeFolder(name);
        const QString copy = QDir(_prefix).filePath(name + QStringLiteral("/libCopy.so"));
        EXPECT_TRUE(QFile::copy(_loaded.file, copy));
        return copy;
    }

    /// What the library at that path answers, without the prefix.
    std::string answerOf(const QString& library)
    {
        void* const handle = dlopen(QFile::encodeName(library).constData(), RTLD_NOW | RTLD_LOCAL);
        if (nullptr == handle)
            return std::string("not loaded: ") + dlerror();
        const auto function = reinterpret_cast<QString (*)()>(dlsym(handle, _loaded.symbol.c_str()));
        QString answer = nullptr == function ? QStringLiteral("no function") : function();
        // Its data may live in the library.
        answer.detach();
        dlclose(handle);
        return answer.replace(_prefix, QStringLiteral("PREFIX")).toStdString();
    }

    QTemporaryDir _folder;
    QString _prefix;
    Loaded _loaded;
};

} // namespace

TEST_F(ResourcesPathOfACopy, IsShareBesideTheLibraryDirectory)
{
    const QString copy = copyInto(QStringLiteral("lib"));
    makeFolder(QStringLiteral("share/vrkgl"));
    EXPECT_EQ(answerOf(copy), "PREFIX/share/vrkgl");
}

TEST_F(ResourcesPathOfACopy, IsEmptyWithoutTheDirectory)
{
    const QString copy = copyInto(QStringLiteral("lib"));
    makeFolder(QStringLiteral("share/vrk"));
    EXPECT_EQ(answerOf(copy), "");
}

TEST_F(ResourcesPathOfACopy, IsEmptyWhenAFileHasThatName)
{
    const QString copy = copyInto(QStringLiteral("lib"));
    makeFolder(QStringLiteral("share"));
    QFile file(_prefix + QStringLiteral("/share/vrkgl"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(answerOf(copy), "");
}

TEST_F(ResourcesPathOfACopy, FollowsALinkToTheLibrary)
{
    const QString copy = copyInto(QStringLiteral("package/lib"));
    makeFolder(QStringLiteral("package/share/vrkgl"));
    makeFolder(QStringLiteral("links/lib"));
    const QString link = _prefix + QStringLiteral("/links/lib/libLink.so");
    ASSERT_TRUE(QFile::link(copy, link));
    EXPECT_EQ(answerOf(link), "PREFIX/package/share/vrkgl");
}

TEST_F(ResourcesPathOfACopy, FallsBackToTheFolderOfALink)
{
    const QString copy = copyInto(QStringLiteral("package/lib"));
    makeFolder(QStringLiteral("links/lib"));
    makeFolder(QStringLiteral("links/share/vrkgl"));
    const QString link = _prefix + QStringLiteral("/links/lib/libLink.so");
    ASSERT_TRUE(QFile::link(copy, link));
    EXPECT_EQ(answerOf(link), "PREFIX/links/share/vrkgl");
}

TEST_F(ResourcesPathOfACopy, IsKeptFromTheFirstCallOn)
{
    const QString copy = copyInto(QStringLiteral("lib"));
    void* const handle = dlopen(QFile::encodeName(copy).constData(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr);
    const auto function = reinterpret_cast<QString (*)()>(dlsym(handle, _loaded.symbol.c_str()));
    ASSERT_NE(function, nullptr);
    EXPECT_TRUE(function().isEmpty());
    makeFolder(QStringLiteral("share/vrkgl"));
    EXPECT_TRUE(function().isEmpty());
    dlclose(handle);
}

namespace
{

/// Enters a folder, and leaves it again at the end.
class InFolder
{
public:
    explicit InFolder(const QString& folder) : _before(QDir::currentPath())
    {
        EXPECT_TRUE(QDir::setCurrent(folder));
    }
    ~InFolder()
    {
        EXPECT_TRUE(QDir::setCurrent(_before));
    }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;

private:
    const QString _before;
};

} // namespace

TEST_F(ResourcesPathOfACopy, IgnoresTheCurrentDirectory)
{
    const QString copy = copyInto(QStringLiteral("lib"));
    makeFolder(QStringLiteral("elsewhere/lib"));
    makeFolder(QStringLiteral("elsewhere/share/vrkgl"));
    const InFolder elsewhere(_prefix + QStringLiteral("/elsewhere/lib"));
    EXPECT_EQ(answerOf(copy), "");
}

TEST_F(ResourcesPathOfACopy, BelongsToTheFolderInWhichARelativeNameWasLoaded)
{
    copyInto(QStringLiteral("lib"));
    makeFolder(QStringLiteral("share/vrkgl"));
    const InFolder lib(_prefix + QStringLiteral("/lib"));
    EXPECT_EQ(answerOf(QStringLiteral("./libCopy.so")), "PREFIX/share/vrkgl");
}

TEST_F(ResourcesPathOfACopy, StaysWhenTheCurrentDirectoryChangesBehindARelativeLoad)
{
    copyInto(QStringLiteral("lib"));
    makeFolder(QStringLiteral("share/vrkgl"));
    // A trap: the same relative name means another library here.
    copyInto(QStringLiteral("elsewhere/lib"));
    makeFolder(QStringLiteral("elsewhere/share/vrkgl"));
    void* handle = nullptr;
    {
        const InFolder lib(_prefix + QStringLiteral("/lib"));
        handle = dlopen("./libCopy.so", RTLD_NOW | RTLD_LOCAL);
    }
    ASSERT_NE(handle, nullptr) << dlerror();
    const auto function = reinterpret_cast<QString (*)()>(dlsym(handle, _loaded.symbol.c_str()));
    ASSERT_NE(function, nullptr);
    // The system's own answer is the relative name still, so that the question arises.
    Dl_info info = {};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(function), &info), 0);
    EXPECT_STREQ(info.dli_fname, "./libCopy.so");
    {
        const InFolder elsewhere(_prefix + QStringLiteral("/elsewhere/lib"));
        EXPECT_EQ(function().toStdString(), (_prefix + QStringLiteral("/share/vrkgl")).toStdString());
    }
    dlclose(handle);
}

#endif

} // namespace Harrow::Vrk::Test
