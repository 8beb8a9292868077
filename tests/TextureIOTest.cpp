// SPDX-License-Identifier: MIT
//
// Texture files without a driver: who is asked about a file, who owns what, and what is said.
#include "TextureIO.h"

#include "GLFunctions.h"
#include "Texture.h"
#include "TextureIOTestTools.h"
#include "support/FakeDriver.h"
#include "support/HeapCount.h"
#include "support/LogCapture.h"

#include <QTemporaryDir>

#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

class TextureRecogniserTest : public testing::Test
{
protected:
    TextureRecogniser* add(const char* id, const char* suffix, const char* magic = "", LoaderPlan plan = {})
    {
        auto* const recogniser = new PlannedRecogniser(trace, text(id), magic, std::move(plan));
        RegisterTextureRecogniser(recogniser, text(suffix));
        return recogniser;
    }

    QString file(const char* name, const QByteArray& contents = "bytes")
    {
        return writeFile(folder.filePath(text(name)), contents);
    }

    /// Who claims the file, or empty.
    QString identify(const QString& path)
    {
        const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(path));
        return loader ? static_cast<PlannedLoader&>(*loader).madeBy : QString();
    }

    QString identifyBytes(QByteArray bytes, const char* name = "bytes.any")
    {
        const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromMemory(
            reinterpret_cast<unsigned char*>(bytes.data()), size_t(bytes.size()), text(name)));
        return loader ? static_cast<PlannedLoader&>(*loader).madeBy : QString();
    }

    Trace trace;
    EmptyRegistry registry; // behind the trace, which its recognisers write to
    QTemporaryDir folder;
};

} // namespace

// ---- who is asked --------------------------------------------------------------------------------------------------

TEST_F(TextureRecogniserTest, RecognisersAreAskedInTheOrderOfTheirRegistration)
{
    add("first", "");
    add("second", "");
    add("third", "");
    EXPECT_EQ(identify(file("a.any")), QString());
    EXPECT_EQ(trace.asked, texts({"first", "second", "third"}));
    trace.asked.clear();
    EXPECT_EQ(identifyBytes("bytes"), QString());
    EXPECT_EQ(trace.asked, texts({"first", "second", "third"}));
}

TEST_F(TextureRecogniserTest, TheWalkStopsAtTheFirstAnswer)
{
    add("first", "");
    add("second", "", "by");
    add("third", "", "byt");
    EXPECT_EQ(identify(file("a.any")), text("second"));
    EXPECT_EQ(trace.asked, texts({"first", "second"}));
    trace.asked.clear();
    EXPECT_EQ(identifyBytes("bytes"), text("second"));
    EXPECT_EQ(trace.asked, texts({"first", "second"}));
}

TEST_F(TextureRecogniserTest, TheRecogniserOfTheSuffixIsAskedFirstAndAloneIfItClaims)
{
    add("general", "", "by");
    add("special", "precedence", "by");
    EXPECT_EQ(identify(file("a.precedence")), text("special"));
    EXPECT_EQ(trace.asked, texts({"special"}));
}

TEST_F(TextureRecogniserTest, TheOneOfTheSuffixIsAskedAgainInTheWalk)
{
    add("first", "");
    add("tried", "again");
    add("last", "");
    EXPECT_EQ(identify(file("a.again")), QString());
    EXPECT_EQ(trace.asked, texts({"tried", "first", "tried", "last"}));
}

TEST_F(TextureRecogniserTest, AWrongSuffixIsFoundByContent)
{
    add("other", "", "magic");
    add("named", "wrongname", "number");
    EXPECT_EQ(identify(file("a.wrongname", "magic and more")), text("other"));
    EXPECT_EQ(trace.asked, texts({"named", "other"}));
}

TEST_F(TextureRecogniserTest, SuffixesKnowNoCaseOfLetters)
{
    add("general", "", "by");
    add("upper", "UPPERcase", "by");
    add("lower", "lowercase", "by");
    EXPECT_EQ(identify(file("a.upperCASE")), text("upper"));
    EXPECT_EQ(identify(file("b.uppercase")), text("upper"));
    EXPECT_EQ(identify(file("c.LowerCase")), text("lower"));
}

TEST_F(TextureRecogniserTest, OnlyTheLastPartOfANameIsItsSuffix)
{
    add("general", "", "by");
    add("special", "inner", "by");
    add("double", "inner.outer", "by");
    EXPECT_EQ(identify(file("a.inner.outer")), text("general"));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("dir.inner")));
    EXPECT_EQ(identify(file("dir.inner/plain")), text("general"));
}

TEST_F(TextureRecogniserTest, AnEmptySuffixGivesNoPrecedenceToFilesWithoutOne)
{
    add("first", "", "by");
    add("second", "", "by");
    EXPECT_EQ(identify(file("plain")), text("first"));
    EXPECT_EQ(trace.asked, texts({"first"}));
}

TEST_F(TextureRecogniserTest, ALaterRegistrationTakesTheSuffix)
{
    add("older", "taken", "by");
    add("newer", "TAKEN", "by");
    EXPECT_EQ(identify(file("a.taken")), text("newer"));
    EXPECT_EQ(trace.asked, texts({"newer"}));
    trace.asked.clear();
    EXPECT_EQ(identifyBytes("bytes"), text("older")) << "the list keeps both in their order";
}

TEST_F(TextureRecogniserTest, OneRegisteredTwiceIsListedOnceAndHoldsBothSuffixes)
{
    TextureRecogniser* const twice = add("twice", "holdsone");
    add("between", "");
    RegisterTextureRecogniser(twice, text("holdstwo"));
    EXPECT_EQ(identify(file("a.any")), QString());
    EXPECT_EQ(trace.asked, texts({"twice", "between"}));
    for (const char* const name : {"a.holdsone", "a.holdstwo"})
    {
        trace.asked.clear();
        identify(file(name));
        EXPECT_EQ(trace.asked, texts({"twice", "twice", "between"})) << name;
    }
    DeleteAllRegisteredTextureRecognisers();
    EXPECT_EQ(trace.recognisersDeleted, 2);
}

TEST_F(TextureRecogniserTest, MemoryIsNotIdentifiedBySuffix)
{
    add("general", "", "by");
    add("special", "notasked", "by");
    EXPECT_EQ(identifyBytes("bytes", "a.notasked"), text("general"));
    EXPECT_EQ(trace.asked, texts({"general"}));
}

TEST_F(TextureRecogniserTest, PathsAndNamesArePassedOn)
{
    add("one", "");
    const QString path = file("gr\xc3\xb6\xc3\x9f"
                              "e.any");
    identify(path);
    identifyBytes("bytes", "a name");
    identifyBytes("bytes", "");
    EXPECT_EQ(trace.names, QStringList({path, text("a name"), QString()}));
}

TEST_F(TextureRecogniserTest, WithoutRecognisersNobodyClaims)
{
    const LogCapture log;
    EXPECT_EQ(identify(file("a.any")), QString());
    EXPECT_EQ(identifyBytes("bytes"), QString());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureRecogniserTest, AMissingFileIsAskedForAsAnEmptyOne)
{
    add("one", "", "by");
    const LogCapture log;
    EXPECT_EQ(identify(folder.filePath(text("missing.any"))), QString());
    EXPECT_EQ(trace.asked, texts({"one"}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureRecogniserTest, NoBytesAtAllAreNotClaimed)
{
    add("one", "", "by");
    EXPECT_EQ(IdentifyTextureFromMemory(nullptr, 100, QString()), nullptr);
    EXPECT_EQ(identifyBytes(QByteArray()), QString());
    EXPECT_EQ(trace.asked, texts({"one", "one"}));
}

// ---- the end of recognisers ----------------------------------------------------------------------------------------

TEST_F(TextureRecogniserTest, DeleteAllDeletesEachOnceAndForgetsThem)
{
    add("one", "deleteone");
    add("two", "");
    EXPECT_EQ(trace.recognisersAlive, 2);
    DeleteAllRegisteredTextureRecognisers();
    EXPECT_EQ(trace.recognisersAlive, 0);
    EXPECT_EQ(trace.recognisersDeleted, 2);
    EXPECT_EQ(identifyBytes("bytes"), QString());
    EXPECT_EQ(trace.asked, QStringList());
    DeleteAllRegisteredTextureRecognisers();
    EXPECT_EQ(trace.recognisersDeleted, 2);
}

TEST_F(TextureRecogniserTest, ASuffixThatOutlivesItsRecogniserIsReportedAndGivesNoPrecedence)
{
    // Made before the other one dies, so that it is not made in its place.
    auto* const next = new PlannedRecogniser(trace, text("next"), "by");
    add("gone", "dangles", "by");
    DeleteAllRegisteredTextureRecognisers();
    RegisterTextureRecogniser(next, QString());
    const QString path = file("a.Dangles");
    const LogCapture log;
    EXPECT_EQ(identify(path), text("next"));
    EXPECT_EQ(trace.asked, texts({"next"}));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(assertionLine(text("registry().recognisers.contains(recogniser)"),
                                        text("Texture recogniser for suffix 'dangles' has been deleted"))));
}

TEST_F(TextureRecogniserTest, ASuffixThatIsRegisteredAgainIsInOrderAgain)
{
    auto* const next = new PlannedRecogniser(trace, text("next"), "by");
    add("gone", "renewed", "by");
    DeleteAllRegisteredTextureRecognisers();
    add("general", "", "by");
    RegisterTextureRecogniser(next, text("renewed"));
    const LogCapture log;
    EXPECT_EQ(identify(file("a.renewed")), text("next"));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureRecogniserTest, NullIsReportedAndNotRegistered)
{
    add("one", "keptsuffix", "by");
    {
        const LogCapture log;
        RegisterTextureRecogniser(nullptr, text("keptsuffix"));
        RegisterTextureRecogniser(nullptr, QString());
        const QString line =
            assertionLine(text("nullptr != recogniser"), text("Texture recogniser is NULL on register"));
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({line, line}));
    }
    EXPECT_EQ(identify(file("a.keptsuffix")), text("one"));
    EXPECT_EQ(identifyBytes("other"), QString());
}

// ---- who owns the bytes --------------------------------------------------------------------------------------------

TEST_F(TextureRecogniserTest, AllRecognisersSeeTheSameMemory)
{
    add("one", "samememory");
    add("two", "", "by");
    const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(file("a.samememory")));
    ASSERT_TRUE(loader);
    ASSERT_EQ(trace.memories.size(), 3);
    EXPECT_EQ(trace.memories[0], trace.memories[1]);
    EXPECT_EQ(trace.memories[0], trace.memories[2]);
    EXPECT_EQ(&static_cast<PlannedLoader&>(*loader).memory(), trace.memories[0]);
}

TEST_F(TextureRecogniserTest, ALoaderReadsTheWholeFile)
{
    add("one", "", "by");
    const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(file("a.any", "bytes of a file")));
    ASSERT_TRUE(loader);
    Memory& memory = static_cast<PlannedLoader&>(*loader).memory();
    ASSERT_EQ(memory.size(), 15u);
    void* const start = memory.get(9, 6);
    ASSERT_NE(start, nullptr);
    EXPECT_EQ(std::memcmp(start, "a file", 6), 0);
    memory.release(start);
}

TEST_F(TextureRecogniserTest, ALoaderReadsAndWritesTheCallersBytes)
{
    add("one", "", "by");
    unsigned char bytes[] = {'b', 'y', 't', 'e', 's'};
    std::unique_ptr<TextureLoader> loader(IdentifyTextureFromMemory(bytes, sizeof(bytes), QString()));
    ASSERT_TRUE(loader);
    Memory& memory = static_cast<PlannedLoader&>(*loader).memory();
    ASSERT_EQ(memory.size(), 5u);
    auto* const start = static_cast<unsigned char*>(memory.get(0, 5));
    ASSERT_EQ(start, bytes);
    start[4] = 'x';
    memory.release(start);
    loader.reset();
    EXPECT_EQ(bytes[4], 'x');
}

#if defined(__linux__)
TEST_F(TextureRecogniserTest, TheMappingEndsWithTheLoader)
{
    add("one", "", "by");
    const QString path = file("a.any");
    std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(path));
    ASSERT_TRUE(loader);
    EXPECT_GT(openUsesOf(path), 0);
    loader.reset();
    EXPECT_EQ(openUsesOf(path), 0);
}

TEST_F(TextureRecogniserTest, TheMappingEndsWhenNobodyClaims)
{
    add("one", "");
    const QString path = file("a.any");
    EXPECT_EQ(identify(path), QString());
    EXPECT_EQ(openUsesOf(path), 0);
}
#endif

TEST_F(TextureRecogniserTest, MemoryThatNobodyClaimsIsDeleted)
{
    if (!bytesInUse())
        GTEST_SKIP() << "this C library does not tell what is in use";
    add("one", "");
    constexpr size_t kCalls = 20000;
    unsigned char bytes[] = {1, 2, 3};
    IdentifyTextureFromMemory(bytes, sizeof(bytes), QString());
    const auto identifyOften = [&]
    {
        for (size_t i = 0; i < kCalls; ++i)
        {
            ASSERT_EQ(IdentifyTextureFromMemory(bytes, sizeof(bytes), QString()), nullptr);
            trace = {};
        }
    };
    const size_t before = *bytesInUse();
    identifyOften();
    const size_t after = *bytesInUse();
    EXPECT_LT(after, before + kCalls) << "less than a byte for each call is left";
    trace.recognisersAlive = 1;
}

// ---- textures from memory ------------------------------------------------------------------------------------------

namespace
{

/// Loads through planned loaders. What a plan makes is a texture on the fake driver.
class TextureLoadTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        aliveBefore = Texture::NumAlive();
    }

    void TearDown() override
    {
        EXPECT_EQ(Texture::NumAlive(), aliveBefore);
        EXPECT_EQ(trace.loadersAlive, 0);
    }

    void add(LoaderPlan plan, const char* suffix = "")
    {
        RegisterTextureRecogniser(new PlannedRecogniser(trace, text("one"), "by", std::move(plan)), text(suffix));
    }

    static LoaderPlan makesTexture(TextureFileInfo* seen = nullptr)
    {
        return {true, [seen](Memory&, const TextureFileInfo& info)
                {
                    if (seen)
                        *seen = info;
                    return new Texture(nullptr);
                }};
    }

    std::unique_ptr<Texture> fromMemory(QByteArray bytes, const QString& name, const TextureFileInfo& info = {})
    {
        return std::unique_ptr<Texture>(
            LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()), size_t(bytes.size()), info, name));
    }

    std::unique_ptr<Texture> fromFile(const QString& path, const TextureFileInfo& info = {})
    {
        return std::unique_ptr<Texture>(LoadTextureFromFile(path, info));
    }

    /// "Texture %s loaded in %lld ms", whatever the time.
    static void expectLoadedLine(const LogCapture& log, const QString& name)
    {
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines()[0].type, QtDebugMsg);
        const QString line = log.messages()[0];
        const QString start = QStringLiteral("Texture ") + name + QStringLiteral(" loaded in ");
        EXPECT_TRUE(line.startsWith(start) && line.endsWith(QStringLiteral(" ms"))) << line.toStdString();
        bool isNumber = false;
        const qlonglong time = line.mid(start.size(), line.size() - start.size() - 3).toLongLong(&isNumber);
        EXPECT_TRUE(isNumber && time >= 0 && time < 60000) << line.toStdString();
    }

    Trace trace;
    EmptyRegistry registry;
    QTemporaryDir folder;
    int aliveBefore = 0;
};

} // namespace

TEST_F(TextureLoadTest, ALoaderIsAskedWhetherItIsValidAndThenToLoad)
{
    add(makesTexture());
    EXPECT_NE(fromMemory("bytes", text("name")), nullptr);
    EXPECT_EQ(trace.loaderCalls, texts({"valid", "load"}));
    EXPECT_EQ(trace.loadersAlive, 0);
}

TEST_F(TextureLoadTest, TheInfoReachesTheLoaderWhole)
{
    TextureFileInfo seen;
    add(makesTexture(&seen));
    const TextureFileInfo info{0.25f, 0.75f, false, true, true, 4, 16};
    EXPECT_NE(fromMemory("bytes", text("name"), info), nullptr);
    EXPECT_EQ(seen.lowValue, 0.25f);
    EXPECT_EQ(seen.highValue, 0.75f);
    EXPECT_FALSE(seen.remapColorRange);
    EXPECT_TRUE(seen.srgb);
    EXPECT_TRUE(seen.preprocessed);
    EXPECT_EQ(seen.anisotropy, 4);
    EXPECT_EQ(seen.bakeDepth, 16);
    seen = {};
    EXPECT_NE(fromFile(writeFile(folder.filePath(text("a.any")), "bytes"), info), nullptr);
    EXPECT_EQ(seen.anisotropy, 4);
}

TEST_F(TextureLoadTest, TheTimeOfATextureFromMemoryIsLoggedWithItsName)
{
    add(makesTexture());
    const LogCapture log;
    EXPECT_NE(fromMemory("bytes", text("a name")), nullptr);
    expectLoadedLine(log, text("a name"));
    EXPECT_EQ(trace.names, texts({"a name"}));
}

TEST_F(TextureLoadTest, TheTimeOfATextureFromAFileIsLoggedWithItsPath)
{
    add(makesTexture());
    const QString path = writeFile(folder.filePath(text("a.any")), "bytes");
    const LogCapture log;
    EXPECT_NE(fromFile(path), nullptr);
    expectLoadedLine(log, path);
    EXPECT_EQ(trace.names, QStringList(path));
    EXPECT_EQ(trace.loaderCalls, texts({"valid", "load"}));
}

TEST_F(TextureLoadTest, NullAndEmptyNamesAreShownAsUnnamedAndPassedOnAsTheyAre)
{
    add(makesTexture());
    for (const QString& name : {QString(), QStringLiteral("")})
    {
        const LogCapture log;
        EXPECT_NE(fromMemory("bytes", name), nullptr);
        expectLoadedLine(log, text("<unnamed>"));
        EXPECT_EQ(trace.names.takeLast(), QString());
    }
}

TEST_F(TextureLoadTest, MemoryThatNobodyClaimsIsNull)
{
    add(makesTexture());
    LogCapture log;
    EXPECT_EQ(fromMemory("other", text("a name")), nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg), texts({"Unable to recognise the file format for texture data 'a name'"}));
    log.clear();
    EXPECT_EQ(fromMemory("other", QString()), nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg), texts({"Unable to recognise the file format for texture data '<unnamed>'"}));
    log.clear();
    EXPECT_EQ(LoadTextureFromMemory(nullptr, 7, {}, text("none")), nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg), texts({"Unable to recognise the file format for texture data 'none'"}));
    EXPECT_EQ(log.texts().size(), 1);
}

TEST_F(TextureLoadTest, AnInvalidLoaderIsNotAskedToLoadMemory)
{
    LoaderPlan plan = makesTexture();
    plan.valid = false;
    add(plan);
    LogCapture log;
    EXPECT_EQ(fromMemory("bytes", text("a name")), nullptr);
    EXPECT_EQ(log.messages(), texts({"Data appears invalid for texture data 'a name'"}));
    EXPECT_EQ(log.messages(QtDebugMsg).size(), 1);
    log.clear();
    EXPECT_EQ(fromMemory("bytes", QStringLiteral("")), nullptr);
    EXPECT_EQ(log.messages(), texts({"Data appears invalid for texture data '<unnamed>'"}));
    EXPECT_EQ(trace.loaderCalls, texts({"valid", "valid"}));
}

TEST_F(TextureLoadTest, AnInvalidLoaderIsNotAskedToLoadAFile)
{
    LoaderPlan plan = makesTexture();
    plan.valid = false;
    add(plan);
    const QString path = writeFile(folder.filePath(text("a.any")), "bytes");
    const LogCapture log;
    EXPECT_EQ(fromFile(path), nullptr);
    EXPECT_EQ(log.messages(), QStringList(text("Data appears invalid for texture file '%1'").arg(path)));
    EXPECT_EQ(log.messages(QtDebugMsg).size(), 1);
    EXPECT_EQ(trace.loaderCalls, texts({"valid"}));
}

TEST_F(TextureLoadTest, ALoaderThatFailsGivesNullAndNothingIsSaidOfItsTime)
{
    add({});
    const QString path = writeFile(folder.filePath(text("a.any")), "bytes");
    const LogCapture log;
    EXPECT_EQ(fromMemory("bytes", text("a name")), nullptr);
    EXPECT_EQ(fromFile(path), nullptr);
    EXPECT_EQ(trace.loaderCalls, texts({"valid", "load", "valid", "load"}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureLoadTest, WhatIsNoFileIsNotFoundAndNobodyIsAsked)
{
    add(makesTexture());
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("directory.png")));
    for (const QString& path :
         {folder.filePath(text("missing.png")), folder.filePath(text("directory.png")), folder.path(), QString()})
    {
        const LogCapture log;
        EXPECT_EQ(fromFile(path), nullptr);
        EXPECT_EQ(log.messages(), QStringList(QStringLiteral("File ") + path + QStringLiteral(" not found")));
        EXPECT_EQ(log.messages(QtWarningMsg).size(), 1);
    }
    EXPECT_EQ(trace.asked, QStringList());
}

TEST_F(TextureLoadTest, ForAFileThatNobodyClaimsQtHasTheLastWord)
{
    add(makesTexture());
    const QString path = writeFile(folder.filePath(text("a.png")), "no picture");
    const LogCapture log;
    EXPECT_EQ(fromFile(path), nullptr);
    EXPECT_EQ(trace.asked, texts({"one"}));
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Failed to load ") + path));
    EXPECT_EQ(log.texts().size(), 1);
}

} // namespace Harrow::Vrk::Test
