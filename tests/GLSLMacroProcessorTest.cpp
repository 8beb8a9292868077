// SPDX-License-Identifier: MIT
//
// GLSLMacroProcessor: each directive and each message by itself, and the single steps.

#include "GLSLMacroProcessorTestTools.h"

#include <VrkCore/ResourcesPath.h>

#include <QFileInfo>

#include <type_traits>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace Harrow::Vrk::Test
{
namespace
{

const QString kIncludePattern = QStringLiteral("^#include *\"([^\"]*)\"\\s*$");
const QString kInstanceDataPattern = QStringLiteral("^#instancedata *\"([^\"]*)\"\\s*$");
const QString kMacroPattern = QStringLiteral("^\\s*#macro\\s*([^\\s]*)\\s([^\\n\\r]*)\\s*$");

using GLSLMacroProcessor = GLSLMacroProcessorFixture;

} // namespace

// ---- Lines that are no directive -------------------------------------------------------------------------

TEST_F(GLSLMacroProcessor, SourceWithoutHashComesBackUnchanged)
{
    const QString source = QStringLiteral("void main()\r\n{\n\t\f gl_Position = vec4(0);\r}\n\n");
    EXPECT_EQ(expand(source), source.toStdString());
    EXPECT_EQ(expand(QString()), "");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessor, OtherPreprocessorLinesAndHashesPassUnchanged)
{
    const QString source = QStringLiteral(
        "#\n##\n#define A #x\n  # pragma x\r\n#ifdef A\nint a; // # 1 #include \"x\"\n"
        "#includeX \"a\"\n#include\t\"a\"\n#instancedata\t\"a\"\n#include <a>\n#include \"a\" b\n#Version 1\n#endif");
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(source), source.toStdString());
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessor, TenMegabytesOfHashesInOneLinePass)
{
    // Looking for the ends of the line at each '#' would take days.
    const QString source = QString(10'000'000, u'#') + QStringLiteral("\n#version 150");
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_TRUE(Processor::process(source, &_processor) == source + QStringLiteral("\n#define A 1\n"));
}

TEST_F(GLSLMacroProcessor, LongLinesOfDirectivesMatchAsShortOnesDo)
{
    const QString blanks(3'000'000, u' ');
    const QString word(3'000'000, u'x');
    EXPECT_TRUE(Processor::process(QStringLiteral("#macro X ") + word, &_processor) == word + u'\n');
    EXPECT_TRUE(Processor::process(QStringLiteral("#macro") + word, &_processor) == QStringLiteral("#macro") + word);
    EXPECT_TRUE(Processor::process(blanks + QStringLiteral("#macro X y"), &_processor) ==
                blanks + QStringLiteral("y\n"));
    EXPECT_TRUE(Processor::process(QStringLiteral("#macro X") + blanks, &_processor) == blanks.mid(1) + u'\n');
    EXPECT_TRUE(
        Processor::process(QStringLiteral("#instancedata") + blanks + QStringLiteral("\"P\"") + blanks, &_processor)
            .isEmpty());
}

// ---- #version and defines --------------------------------------------------------------------------------

TEST_F(GLSLMacroProcessor, VersionWithoutLineEndYieldsTheLineAndTheDefines)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#version 150")), "#version 150\n#define A 1\n");
}

TEST_F(GLSLMacroProcessor, VersionWithoutDefinesGainsOneLineEnd)
{
    EXPECT_EQ(expand(QStringLiteral("#version 150")), "#version 150\n");
    EXPECT_EQ(expand(QStringLiteral("#version 150\nx")), "#version 150\n\nx");
}

TEST_F(GLSLMacroProcessor, DefinesStandInAscendingOrderOfTheirNames)
{
    _processor.addDefine(QStringLiteral("b"), QStringLiteral("2"));
    _processor.addDefine(QStringLiteral("a"), QString());
    _processor.addDefine(QStringLiteral("Z"), QStringLiteral("x y"));
    EXPECT_EQ(expand(QStringLiteral("#version 150 core\r\nx")),
              "#version 150 core\n#define Z x y\n#define a \n#define b 2\n\r\nx");
}

TEST_F(GLSLMacroProcessor, WithoutVersionNoDefineIsWritten)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#ifdef A\n#endif\n")), "#ifdef A\n#endif\n");
}

TEST_F(GLSLMacroProcessor, TwoVersionLinesGiveTwoBlocksOfDefines)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#version 150\n#version 330\n")),
              "#version 150\n#define A 1\n\n#version 330\n#define A 1\n\n");
}

TEST_F(GLSLMacroProcessor, VersionBehindABlankGetsNoDefines)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral(" #version 150\n")), " #version 150\n");
    EXPECT_EQ(expand(QStringLiteral("/**/#version 150\n")), "/**/#version 150\n");
}

TEST_F(GLSLMacroProcessor, VersionIsAPrefix)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#versions # 3\n")), "#versions # 3\n#define A 1\n\n");
}

TEST_F(GLSLMacroProcessor, PercentSignsInDefinesStayAsTheyAre)
{
    _processor.addDefine(QStringLiteral("MOD(a,b)"), QStringLiteral("a %1 %2 % b"));
    EXPECT_EQ(expand(QStringLiteral("#version 150")), "#version 150\n#define MOD(a,b) a %1 %2 % b\n");
}

TEST_F(GLSLMacroProcessor, DefinesAreReplacedAndRemoved)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("2"));
    EXPECT_EQ(expand(QStringLiteral("#version 150")), "#version 150\n#define A 2\n");
    _processor.removeDefine(QStringLiteral("B"));
    _processor.removeDefine(QStringLiteral("A"));
    EXPECT_EQ(expand(QStringLiteral("#version 150")), "#version 150\n");
    EXPECT_EQ(_log.lines().size(), 0);
}

// ---- #macro ----------------------------------------------------------------------------------------------

TEST_F(GLSLMacroProcessor, MacroNotHeldGivesTheRestOfTheLine)
{
    EXPECT_EQ(expand(QStringLiteral("#macro X a b")), "a b\n");
    EXPECT_EQ(expand(QStringLiteral("#macro\tX\f a b \t\nc")), " a b \t\n\nc");
}

TEST_F(GLSLMacroProcessor, MacroHeldWithAVersionGetsTheDefinesBehindIt)
{
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("#version 400"));
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#macro X a b")), "#version 400\n#define A 1\n\n");
}

TEST_F(GLSLMacroProcessor, DefaultOfAMacroIsExpandedItself)
{
    write(QStringLiteral("f"), "file");
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    _processor.addMacro(QStringLiteral("Y"), QStringLiteral("held"));
    EXPECT_EQ(expand(QStringLiteral("#macro X #version 150\n")), "#version 150\n#define A 1\n\n\n");
    EXPECT_EQ(expand(QStringLiteral("#macro X #include \"f\"\n")), "file\n\n\n");
    EXPECT_EQ(expand(QStringLiteral("#macro X #macro Y z\n")), "held\n\n\n");
}

TEST_F(GLSLMacroProcessor, IndentedMacroKeepsItsIndentation)
{
    EXPECT_EQ(expand(QStringLiteral("a\n \t #macro X y\nb")), "a\n \t y\n\nb");
}

TEST_F(GLSLMacroProcessor, MacroWithoutABlankIsNoDirective)
{
    EXPECT_EQ(expand(QStringLiteral("#macro\n#macroX\n#macro(X)\n")), "#macro\n#macroX\n#macro(X)\n");
}

TEST_F(GLSLMacroProcessor, MacroWithOneWordIsTheNamelessMacro)
{
    // The only whitespace is the one in front of the word, so the name is empty and the word the default.
    EXPECT_EQ(expand(QStringLiteral("#macro X\n")), "X\n\n");
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("named"));
    EXPECT_EQ(expand(QStringLiteral("#macro X\n")), "X\n\n");
    _processor.addMacro(QString(), QStringLiteral("nameless"));
    EXPECT_EQ(expand(QStringLiteral("#macro X\n#macro \n#macro X \n")), "nameless\n\nnameless\n\nnamed\n\n");
}

TEST_F(GLSLMacroProcessor, MacroNameMayTouchTheDirective)
{
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("v"));
    EXPECT_EQ(expand(QStringLiteral("#macroX y\n")), "v\n\n");
}

TEST_F(GLSLMacroProcessor, OnlyAsciiBlanksAreBlanks)
{
    const QString nbsp(QChar(0xa0));
    const QString line = nbsp + QStringLiteral("#macro X y");
    EXPECT_EQ(expand(line), line.toStdString());
    EXPECT_EQ(expand(QStringLiteral("#macro") + nbsp + QStringLiteral("X y")), "y\n");
    EXPECT_EQ(expand(QStringLiteral("\v\f#macro X y")), "\v\fy\n");
}

TEST_F(GLSLMacroProcessor, MacrosAreReplacedAndRemoved)
{
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("1"));
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("2"));
    EXPECT_EQ(expand(QStringLiteral("#macro X d")), "2\n");
    _processor.removeMacro(QStringLiteral("Y"));
    _processor.removeMacro(QStringLiteral("X"));
    EXPECT_EQ(expand(QStringLiteral("#macro X d")), "d\n");
}

// ---- #include and #instancedata --------------------------------------------------------------------------

TEST_F(GLSLMacroProcessor, IncludeGivesTheExpandedFileAndALineEnd)
{
    write(QStringLiteral("outer"), "<\n#include \"inner\"\n>");
    write(QStringLiteral("inner"), "#macro X i");
    EXPECT_EQ(expand(QStringLiteral("a\n#include \"outer\"\r\nb")), "a\n<\ni\n\n\n>\n\r\nb");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessor, IncludeIsExpandedAsOftenAsItIsNamed)
{
    write(QStringLiteral("f"), "x");
    EXPECT_EQ(expand(QStringLiteral("#include\"f\"\n#include    \"f\" \t\n")), "x\n\nx\n\n");
}

TEST_F(GLSLMacroProcessor, IncludeIsReadAnewByEachCall)
{
    write(QStringLiteral("f"), "1");
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "1\n");
    write(QStringLiteral("f"), "2");
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "2\n");
}

TEST_F(GLSLMacroProcessor, IncludeKeepsTheLineEndsOfTheFileAndReadsUtf8)
{
    write(QStringLiteral("f"), "a\r\n\xc3\xa4\r");
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "a\r\n\xc3\xa4\r\n");
}

// The processor knows no conditions: "#if 0" in the next three is text like any other.

TEST_F(GLSLMacroProcessor, IncludeInAnInactiveBranchIsExpanded)
{
    write(QStringLiteral("f"), "x");
    EXPECT_EQ(expand(QStringLiteral("#if 0\n#include \"f\"\n#endif")), "#if 0\nx\n\n#endif");
}

TEST_F(GLSLMacroProcessor, MacroInAnInactiveBranchIsExpanded)
{
    _processor.addMacro(QStringLiteral("M"), QStringLiteral("held"));
    EXPECT_EQ(expand(QStringLiteral("#if 0\n#macro M d\n#macro N d\n#endif")), "#if 0\nheld\n\nd\n\n#endif");
}

TEST_F(GLSLMacroProcessor, VersionInAnInactiveBranchGetsTheDefines)
{
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#if 0\n#version 150\n#endif")), "#if 0\n#version 150\n#define A 1\n\n#endif");
}

TEST_F(GLSLMacroProcessor, DirectivesAwayFromTheFirstColumnStay)
{
    write(QStringLiteral("f"), "x");
    const QString source = QStringLiteral(" #include \"f\"\n//#include \"f\"\n\t#instancedata \"P\"\n// #macro X y\n");
    EXPECT_EQ(expand(source), source.toStdString());
}

TEST_F(GLSLMacroProcessor, IncludeWithEmptyNameWarnsWithTheWholeLine)
{
    EXPECT_EQ(expand(QStringLiteral("a\n#include  \"\" \nb")), "a\n\nb");
    EXPECT_EQ(warnings(), "Cannot extract include filename from '#include  \"\" '");
    EXPECT_EQ(_log.lines().size(), 1);
}

TEST_F(GLSLMacroProcessor, IncludeOfAMissingFileWarnsWithItsNameEachTime)
{
    EXPECT_EQ(expand(QStringLiteral("a\n#include \"none.glslh\"\nb\n#include \"none.glslh\"")), "a\n\nb\n");
    EXPECT_EQ(warnings(), "Failed to open include file 'none.glslh'\nFailed to open include file 'none.glslh'");
    EXPECT_EQ(_log.lines().size(), 2);
}

TEST_F(GLSLMacroProcessor, IncludeGoesOnToTheNextDirectoryWhenTheFirstHitDoesNotOpen)
{
    // A directory exists and does not open.
    QTemporaryDir other;
    ASSERT_TRUE(QDir(_folder.path()).mkdir(QStringLiteral("f")));
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "");
    EXPECT_EQ(warnings(), "Failed to open include file 'f'");
    QFile file(other.filePath(QStringLiteral("f")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("x") == 1 && file.flush());
    _processor.addIncludePath(other.path());
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "x\n");
}

TEST_F(GLSLMacroProcessor, DirectoriesAreNoIncludeFiles)
{
    // One among the embedded files would open, and be empty.
    EXPECT_EQ(expandWithNull(QStringLiteral("#include \".\"\n#include \"..\"\n#include \":/GLSL\"\n")), "\n\n\n");
    EXPECT_EQ(expand(QStringLiteral("#include \"%1\"").arg(_folder.path())), "");
    EXPECT_EQ(warnings(), "Failed to open include file '.'\nFailed to open include file '..'\n"
                          "Failed to open include file ':/GLSL'\nFailed to open include file '" +
                              _folder.path().toStdString() + "'");
}

#if !defined(_WIN32)

TEST_F(GLSLMacroProcessor, DevicesAreNoIncludeFiles)
{
    ASSERT_TRUE(QFileInfo::exists(QStringLiteral("/dev/zero")));
    EXPECT_EQ(expand(QStringLiteral("#include \"/dev/zero\"\n#include \"/dev/null\"")), "\n");
    EXPECT_EQ(warnings(), "Failed to open include file '/dev/zero'\nFailed to open include file '/dev/null'");
}

TEST_F(GLSLMacroProcessor, PipesAreNoIncludeFilesAndTheNextDirectoryIsAsked)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(_folder.filePath(QStringLiteral("f"))).constData(), 0600), 0);
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "");
    EXPECT_EQ(warnings(), "Failed to open include file 'f'");
    _log.clear();
    QTemporaryDir other;
    QFile file(other.filePath(QStringLiteral("f")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("x") == 1 && file.flush());
    _processor.addIncludePath(other.path());
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), "x\n");
    EXPECT_EQ(_log.lines().size(), 0);
}

#endif

TEST_F(GLSLMacroProcessor, IncludeTakesSubdirectoriesAndAbsoluteNames)
{
    ASSERT_TRUE(QDir(_folder.path()).mkdir(QStringLiteral("d")));
    write(QStringLiteral("d/f"), "x");
    EXPECT_EQ(expand(QStringLiteral("#include \"d/f\"")), "x\n");
    EXPECT_EQ(expandWithNull(QStringLiteral("#include \"%1\"").arg(_folder.filePath(QStringLiteral("d/f")))), "x\n");
}

TEST_F(GLSLMacroProcessor, TwoDirectoriesAreThereFromTheStart)
{
    const QList<QDir> directories = Access::includeDirectories(Processor());
    ASSERT_EQ(directories.size(), 2);
    EXPECT_EQ(directories[0].path(), QDir(resourcesPath() + QStringLiteral("/GLSL/include")).path());
    EXPECT_EQ(directories[1].path(), QStringLiteral(":/GLSL/include"));
}

TEST_F(GLSLMacroProcessor, AddedDirectoriesComeLastInTheirOrder)
{
    _processor.addIncludePath(QStringLiteral("relative"));
    const QList<QDir> directories = Access::includeDirectories(_processor);
    ASSERT_EQ(directories.size(), 4);
    EXPECT_EQ(directories[1].path(), QStringLiteral(":/GLSL/include"));
    EXPECT_EQ(directories[2].path(), _folder.path());
    EXPECT_EQ(directories[3].path(), QStringLiteral("relative"));
}

TEST_F(GLSLMacroProcessor, AddedDirectoryDoesNotOverrideTheDefaultOnes)
{
    write(QStringLiteral("VrkUtilities.glslh"), "overridden");
    const std::string text = expand(QStringLiteral("#include \"VrkUtilities.glslh\""));
    EXPECT_NE(text.find("uint getDrawID(void);"), std::string::npos);
    EXPECT_EQ(text.find("overridden"), std::string::npos);
}

TEST_F(GLSLMacroProcessor, UnknownPlanDisappearsAndLeavesAnEmptyLineAndTheRegistryWarnsOnce)
{
    const QString source = QStringLiteral("a\n#instancedata \"unknown\"\nb\n#instancedata\"\"");
    EXPECT_EQ(expand(source), "a\n\nb\n");
    EXPECT_EQ(warnings(), unknownPlan("unknown") + "\n" + unknownPlan(""));
    EXPECT_EQ(_log.lines().size(), 2);
    _log.clear();
    EXPECT_EQ(expand(source), "a\n\nb\n");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessor, NullProcessorFindsTheStandardLibraryAndHoldsNothing)
{
    EXPECT_NE(expandWithNull(QStringLiteral("#include \"VrkUtilities.glslh\"")).find("uint getDrawID(void);"),
              std::string::npos);
    EXPECT_EQ(expandWithNull(QStringLiteral("#macro X y")), "y\n");
    EXPECT_EQ(expandWithNull(QStringLiteral("#version 150")), "#version 150\n");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessor, CopyIsIndependentOfLaterChanges)
{
    static_assert(std::is_copy_constructible_v<Processor> && std::is_copy_assignable_v<Processor>);
    write(QStringLiteral("f"), "x");
    _processor.addMacro(QStringLiteral("M"), QStringLiteral("1"));
    _processor.addDefine(QStringLiteral("D"), QStringLiteral("1"));
    const QString source = QStringLiteral("#version 150\n#macro M 0\n#include \"f\"");
    const std::string before = expand(source);
    Processor copy(_processor);
    _processor.addMacro(QStringLiteral("M"), QStringLiteral("2"));
    _processor.removeDefine(QStringLiteral("D"));
    EXPECT_EQ(Processor::process(source, &copy).toStdString(), before);
    copy = _processor;
    EXPECT_EQ(Processor::process(source, &copy).toStdString(), expand(source));
    EXPECT_NE(expand(source), before);
}

TEST_F(GLSLMacroProcessor, LoneSurrogateKeepsItsLineFromMatchingAndNoOther)
{
    const QString surrogate(QChar(0xd800));
    const QString line = QStringLiteral("#macro X ") + surrogate;
    EXPECT_TRUE(Processor::process(line + QStringLiteral("\n#macro X y\n"), &_processor) ==
                line + QStringLiteral("\ny\n\n"));
    EXPECT_EQ(_log.lines().size(), 0);
}

// ---- Single steps ----------------------------------------------------------------------------------------

TEST_F(GLSLMacroProcessor, ProcessDefinesGivesAllDefines)
{
    EXPECT_EQ(Access::processDefines(&_processor).toStdString(), "");
    EXPECT_EQ(Access::processDefines(nullptr).toStdString(), "");
    _processor.addDefine(QStringLiteral("B"), QStringLiteral("2"));
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(Access::processDefines(&_processor).toStdString(), "#define A 1\n#define B 2\n");
}

TEST_F(GLSLMacroProcessor, ProcessLineIncludeTakesTheWholeMatchForTheName)
{
    write(QStringLiteral("f"), "#macro X y");
    const QString line = QStringLiteral("#include \"f\"");
    EXPECT_EQ(Access::include(line, kIncludePattern, &_processor).toStdString(), line.toStdString());
    EXPECT_EQ(warnings(), "Failed to open include file '#include \"f\"'");
    const QString bareName = QStringLiteral("(?<=\")[^\"]+(?=\")");
    EXPECT_EQ(Access::include(line, bareName, &_processor).toStdString(), "y\n");
    EXPECT_EQ(Access::include(QStringLiteral(" #include \"f\""), bareName, &_processor).toStdString(),
              " #include \"f\"");
    _log.clear();
    EXPECT_EQ(Access::include(QStringLiteral("#include \"\""), bareName, nullptr).toStdString(), "#include \"\"");
    EXPECT_EQ(warnings(), "Cannot extract include filename from '#include \"\"'");
}

TEST_F(GLSLMacroProcessor, ProcessLineIncludeWithoutAProcessorFindsTheStandardLibrary)
{
    const QString bareName = QStringLiteral("(?<=\")[^\"]+(?=\")");
    const std::string text =
        Access::include(QStringLiteral("#include \"VrkUtilities.glslh\""), bareName, nullptr).toStdString();
    EXPECT_NE(text.find("uint getDrawID(void);"), std::string::npos) << text;
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessor, ProcessLineIncludeTakesNoDirectory)
{
    const QString line = QStringLiteral("#include \".\"");
    EXPECT_EQ(Access::include(line, QStringLiteral("(?<=\")[^\"]+(?=\")"), &_processor).toStdString(),
              line.toStdString());
    EXPECT_EQ(warnings(), "Failed to open include file '.'");
}

TEST_F(GLSLMacroProcessor, ProcessLineMacroLeavesTheDefaultUnexpanded)
{
    _processor.addMacro(QStringLiteral("X"), QStringLiteral("#macro Y z"));
    EXPECT_EQ(Access::macro(QStringLiteral("#macro X d"), kMacroPattern, &_processor).toStdString(), "z\n");
    EXPECT_EQ(Access::macro(QStringLiteral("#macro Y #version 150"), kMacroPattern, &_processor).toStdString(),
              "#version 150");
    EXPECT_EQ(Access::macro(QStringLiteral("#macro X d"), kMacroPattern, nullptr).toStdString(), "d");
    EXPECT_EQ(Access::macro(QStringLiteral("#macroX"), kMacroPattern, &_processor).toStdString(), "#macroX");
}

TEST_F(GLSLMacroProcessor, ProcessLineMaterialLeavesTheLineOfAnUnknownPlan)
{
    for (const char* line : {"#instancedata \"unknown\"", "x", " #instancedata \"unknown\""})
        EXPECT_EQ(Access::material(QString::fromLatin1(line), kInstanceDataPattern, &_processor).toStdString(), line);
    // The whole match is the name, as it is for a file.
    EXPECT_EQ(warnings(), unknownPlan("#instancedata \"unknown\""));
    EXPECT_EQ(_log.lines().size(), 1);
}

} // namespace Harrow::Vrk::Test
