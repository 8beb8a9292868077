// SPDX-License-Identifier: MIT
//
// GLSLMacroProcessor: the cut-off of texts that reach themselves, and of those that grow beyond measure.

#include "GLSLMacroProcessorTestTools.h"

#include <QFileInfo>

namespace Harrow::Vrk::Test
{
namespace
{

using GLSLMacroProcessorLimits = GLSLMacroProcessorFixture;

} // namespace

// ---- Texts that reach themselves -------------------------------------------------------------------------

TEST_F(GLSLMacroProcessorLimits, FileThatIncludesItselfIsCutOffAfter256Levels)
{
    write(QStringLiteral("f"), "x\n#include \"f\"\ny");
    const QString text = Processor::process(QStringLiteral("#include \"f\""), &_processor);
    EXPECT_EQ(text.count(u'x'), 256);
    EXPECT_EQ(text.count(u'y'), 256);
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '#include \"f\"'");
    EXPECT_EQ(_log.lines().size(), 1);
}

TEST_F(GLSLMacroProcessorLimits, FileThatIncludesItselfTwiceEndsAsSoon)
{
    write(QStringLiteral("f"), "#include \"f\"\nx\n#include \"f\"\n#include \"none\"\n#macro M m");
    const QString text = Processor::process(QStringLiteral("#include \"f\"\n#include \"f\""), &_processor);
    EXPECT_EQ(text.count(u'x'), 256);
    EXPECT_EQ(text.count(u'm'), 0);
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '#include \"f\"'");
}

TEST_F(GLSLMacroProcessorLimits, MacroThatNamesItselfIsCutOff)
{
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("x\n  #macro X d\n#macro X d"));
    const QString text = Processor::process(QStringLiteral("#macro X d\n#version 150\n"), &_processor);
    EXPECT_EQ(text.count(u'x'), 256);
    EXPECT_TRUE(text.endsWith(QStringLiteral("\n#version 150\n\n")));
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '  #macro X d'");
}

TEST_F(GLSLMacroProcessorLimits, FilesThatReachEachOtherAreCutOff)
{
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("#include \"b\""));
    write(QStringLiteral("a"), "#macro X d");
    write(QStringLiteral("b"), "x\n#include \"a\"");
    const QString text = Processor::process(QStringLiteral("#include \"a\""), &_processor);
    EXPECT_EQ(text.count(u'x'), 85);
    EXPECT_EQ(_log.lines().size(), 1);
}

TEST_F(GLSLMacroProcessorLimits, TwoHundredAndFiftySixLevelsAreExpandedWhole)
{
    QString source = QStringLiteral("end");
    for (int level = 0; level < 256; ++level)
        source.prepend(QStringLiteral("#macro X "));
    EXPECT_EQ(expand(source), "end" + std::string(256, '\n'));
    EXPECT_EQ(_log.lines().size(), 0);
    EXPECT_EQ(expand(QStringLiteral("#macro Y ") + source), std::string(256, '\n'));
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '#macro X end'");
}

TEST_F(GLSLMacroProcessorLimits, EachCallThatIsCutOffWarnsOnce)
{
    write(QStringLiteral("f"), "#include \"f\"");
    const std::string first = expand(QStringLiteral("#include \"f\""));
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), first);
    EXPECT_EQ(_log.lines().size(), 2);
    _log.clear();
    write(QStringLiteral("f"), "x");
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "x\n");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessorLimits, BehindACutOffNoFileOrPlanIsMissedAndEmptyNamesStillWarn)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    write(QStringLiteral("f"), "#include \"f\"");
    const QString source = QStringLiteral("#include \"f\"\n#include \"none\"\n#include \"\"\n#instancedata \"P\"\n"
                                          "#macro X y\n#version 150\n#define B 2\n");
    EXPECT_EQ(expand(source), std::string(256, '\n') + "\n\n\n\n\n#version 150\n#define A 1\n\n#define B 2\n");
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '#include \"f\"'\n"
                          "Cannot extract include filename from '#include \"\"'");
}

// ---- Texts that grow without reaching themselves ---------------------------------------------------------

namespace
{

/// The output of 60 macros that each name the next one twice: 2^60 lines but for the limit.
QString doubled(qsizetype limit, Processor& processor)
{
    for (int i = 0; i < 60; ++i)
        processor.addMacro(QString::number(i), QStringLiteral("#macro %1 x\n#macro %1 x").arg(i + 1));
    return Access::processWithin(limit, QStringLiteral("#macro 0 d\n#version 150\nend"), &processor);
}

} // namespace

TEST_F(GLSLMacroProcessorLimits, DoublingTextsAreCutOffAtTheSizeLimit)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    const QString text = doubled(100'000, _processor);
    EXPECT_LE(text.size(), 100'000);
    EXPECT_GT(text.size(), 90'000);
    // The text that had no room left enough for the defines.
    EXPECT_TRUE(text.endsWith(QStringLiteral("\n#version 150\n#define A 1\n\nend")));
    ASSERT_EQ(_log.lines().size(), 1);
    EXPECT_TRUE(warnings().starts_with("Expansion size limit of 100000 reached at '#macro ")) << warnings();
}

TEST_F(GLSLMacroProcessorLimits, DoublingFilesAreCutOffAtTheSizeLimit)
{
    for (int i = 0; i < 60; ++i)
        write(QString::number(i), QByteArray("#include \"N\"\n#include \"N\"").replace("N", QByteArray::number(i + 1)));
    const QString text = Access::processWithin(10'000, QStringLiteral("#include \"0\""), &_processor);
    EXPECT_LE(text.size(), 10'000);
    // The last file names one that is not there, which warns as well.
    EXPECT_EQ(_log.texts().filter(QStringLiteral("Expansion size limit of 10000 reached at '#include ")).size(), 1);
}

TEST_F(GLSLMacroProcessorLimits, TextThatFillsTheSizeLimitIsExpandedWhole)
{
    const QString source = QStringLiteral("a\n#macro X bcd\ne");
    EXPECT_EQ(Access::processWithin(8, source, &_processor).toStdString(), "a\nbcd\n\ne");
    EXPECT_EQ(_log.lines().size(), 0);
    EXPECT_EQ(Access::processWithin(7, source, &_processor).toStdString(), "a\n\ne");
    EXPECT_EQ(warnings(), "Expansion size limit of 7 reached at '#macro X bcd'");
}

TEST_F(GLSLMacroProcessorLimits, BehindTheSizeLimitNothingIsNestedAndOneWarningIsGiven)
{
    write(QStringLiteral("long"), QByteArray(30, 'x'));
    write(QStringLiteral("f"), "y");
    const QString source = QStringLiteral("#include \"long\"\n#include \"f\"\n#macro X z\n#include \"none\"\n"
                                          "#include \"long\"\n#version 150\n#endif");
    EXPECT_EQ(Access::processWithin(40, source, &_processor).toStdString(), "\n\n\n\n\n#version 150\n\n#endif");
    EXPECT_EQ(warnings(), "Expansion size limit of 40 reached at '#include \"long\"'");
}

TEST_F(GLSLMacroProcessorLimits, RestsOfOpenTextsCountTowardsTheSizeLimit)
{
    // Each level leaves ten characters to be written when the inner ones are done.
    write(QStringLiteral("f"), "#include \"f\"\n123456789");
    const QString text = Access::processWithin(200, QStringLiteral("#include \"f\""), &_processor);
    EXPECT_LE(text.size(), 200);
    EXPECT_GT(text.count(u'9'), 10);
    EXPECT_EQ(warnings(), "Expansion size limit of 200 reached at '#include \"f\"'");
}

TEST_F(GLSLMacroProcessorLimits, DefinesThatDoNotFitAreLeftOutAndTheVersionStays)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    const QString source = QStringLiteral("#version 150\n#version 330\n#macro X y");
    // With one block 13 + 12 characters, with the second 26 more, but before that the rest of the source counts.
    EXPECT_EQ(Access::processWithin(49, source, &_processor).toStdString(),
              "#version 150\n#define A 1\n\n#version 330\n\n");
    EXPECT_EQ(warnings(), "Expansion size limit of 49 reached at '#version 330'");
}

TEST_F(GLSLMacroProcessorLimits, FilesThatTheLimitHasNoRoomForAreNotReadWhole)
{
    // Three bytes make one character; the file does not fit by its bytes.
    write(QStringLiteral("f"), QByteArray("\xe2\x82\xac").repeated(10));
    EXPECT_EQ(Access::processWithin(30, QStringLiteral("#include \"f\""), &_processor).size(), 11);
    EXPECT_EQ(_log.lines().size(), 0);
    EXPECT_EQ(Access::processWithin(29, QStringLiteral("#include \"f\""), &_processor).size(), 0);
    EXPECT_EQ(warnings(), "Expansion size limit of 29 reached at '#include \"f\"'");
    _log.clear();
    // All files of a call are held together, and what they say may be gone from the output.
    write(QStringLiteral("g"), "#instancedata \"P\"");
    write(QStringLiteral("h"), "#instancedata \"P\"");
    const QString source = QStringLiteral("#include \"g\"\n#include \"h\"");
    EXPECT_EQ(Access::processWithin(34, source, &_processor).toStdString(), "\n\n\n");
    EXPECT_EQ(warnings(), unknownPlan("P"));
    _log.clear();
    EXPECT_EQ(Access::processWithin(33, source, &_processor).toStdString(), "\n\n");
    EXPECT_EQ(warnings(), "Expansion size limit of 33 reached at '#include \"h\"'");
}

TEST_F(GLSLMacroProcessorLimits, SourceBeyondTheSizeLimitComesBackWithoutDirectives)
{
    const QString source = QStringLiteral("0123456789\n#macro X y\n#ifdef A\n#endif\n");
    EXPECT_EQ(Access::processWithin(9, source, &_processor).toStdString(), "0123456789\n\n#ifdef A\n#endif\n");
    EXPECT_EQ(warnings(), "Expansion size limit of 9 reached at '#macro X y'");
}

TEST_F(GLSLMacroProcessorLimits, SizeLimitHoldsForANullProcessorAndForOneCall)
{
    EXPECT_EQ(Access::processWithin(1, QStringLiteral("#macro X y"), nullptr).toStdString(), "");
    EXPECT_EQ(Access::processWithin(2, QStringLiteral("#macro X y"), nullptr).toStdString(), "y\n");
    EXPECT_EQ(warnings(), "Expansion size limit of 1 reached at '#macro X y'");
}

#if defined(__linux__)

TEST_F(GLSLMacroProcessorLimits, FilesThatGiveMoreThanTheySayAreCutOff)
{
    const QString source = QStringLiteral("#include \"/proc/self/maps\"");
    ASSERT_EQ(QFileInfo(QStringLiteral("/proc/self/maps")).size(), 0);
    EXPECT_EQ(Access::processWithin(100, source, &_processor).toStdString(), "");
    EXPECT_EQ(warnings(), "Expansion size limit of 100 reached at '#include \"/proc/self/maps\"'");
    _log.clear();
    EXPECT_GT(Access::processWithin(10'000'000, source, &_processor).count(u'\n'), 10);
    EXPECT_EQ(_log.lines().size(), 0);
}

#endif

// The limit that `process` itself has, reached without as much memory: the file is only a length on the disk.
TEST_F(GLSLMacroProcessorLimits, SizeLimitOfProcessIs268435456)
{
    QFile file(_folder.filePath(QStringLiteral("f")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(268435457));
    EXPECT_EQ(expand(QStringLiteral("a\n#include \"f\"\nb")), "a\n\nb");
    EXPECT_EQ(warnings(), "Expansion size limit of 268435456 reached at '#include \"f\"'");
    _log.clear();
    const QString bareName = QStringLiteral("(?<=\")[^\"]+(?=\")");
    EXPECT_EQ(Access::include(QStringLiteral("#include \"f\""), bareName, &_processor).toStdString(), "#include \"f\"");
    EXPECT_EQ(warnings(), "Expansion size limit of 268435456 reached at '#include \"f\"'");
}

} // namespace Harrow::Vrk::Test
