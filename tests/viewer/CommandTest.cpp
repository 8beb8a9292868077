// SPDX-License-Identifier: MIT
// What a person meets who gives vrkview something that it can't use: one clear line, exit code 1, and no file.
#include "ModelFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QFile>

namespace
{

const Environment kNoDisplay = {{"DISPLAY", QString()}, {"WAYLAND_DISPLAY", QString()}, {"QT_QPA_PLATFORM", QString()}};

// The run says `words` in one line, fails, and leaves `folder` as it was.
void expectRefused(const ModelFolder& folder, const QStringList& arguments, const QString& words,
                   const Environment& environment = {})
{
    const QStringList before = folder.entries();
    const ViewerRun run = runViewer(arguments, environment);
    const std::string command = arguments.join(QLatin1Char(' ')).toStdString();
    EXPECT_TRUE(run.ended) << command;
    EXPECT_EQ(run.exitCode, 1) << command;
    EXPECT_EQ(run.output, QByteArray()) << command;
    EXPECT_EQ(run.errors.count('\n'), 1) << command << " said: " << run.errors.constData();
    EXPECT_TRUE(run.errors.startsWith("vrkview: ") && run.errors.endsWith('\n')) << run.errors.constData();
    EXPECT_TRUE(QString::fromUtf8(run.errors).contains(words)) << command << " said: " << run.errors.constData();
    EXPECT_EQ(folder.entries(), before) << command;
}

} // namespace

TEST(ViewerCommandTest, UnknownOptionIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--frobnicate", "-o", folder.path("a.png")}, QStringLiteral("frobnicate"));
}

TEST(ViewerCommandTest, BadSizeIsRefused)
{
    const ModelFolder folder;
    for (const char* size : {"0x0", "12", "axb", "-5x5"})
        expectRefused(folder, {"--size", size, "-o", folder.path("a.png")}, QStringLiteral("WIDTHxHEIGHT"));
}

TEST(ViewerCommandTest, SizeBeyondTheDriverIsRefusedWithItsLimit)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "--size", "1000000x10", "-o", folder.path("a.png")}, QStringLiteral("at most"));
}

TEST(ViewerCommandTest, MissingModelIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {folder.path("none.obj"), "-o", folder.path("a.png")}, QStringLiteral("no such file"));
}

TEST(ViewerCommandTest, DirectoryInPlaceOfAModelIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {folder.path(""), "-o", folder.path("a.png")}, QStringLiteral("it is a directory"));
}

TEST(ViewerCommandTest, UnreadableModelIsRefused)
{
    const ModelFolder folder;
    const QString text = folder.write("a.txt", "no model\n");
    const QString broken = folder.write("a.gltf", "{\n\"asset\": \n");
    expectRefused(folder, {text, "-o", folder.path("a.png")}, QStringLiteral("not a model"));
    expectRefused(folder, {broken, "-o", folder.path("a.png")}, QStringLiteral("a.gltf"));
}

TEST(ViewerCommandTest, ModelWithoutTrianglesIsRefused)
{
    const ModelFolder folder;
    const QString empty = folder.write(
        "a.ply", "ply\nformat ascii 1.0\nelement vertex 0\nproperty float x\nproperty float y\nproperty float z\n"
                 "element face 0\nproperty list uchar int vertex_indices\nend_header\n");
    const QString points = folder.write("a.obj", "v 0 0 0\nv 1 0 0\np 1 2\n");
    expectRefused(folder, {empty, "-o", folder.path("a.png")}, QStringLiteral("a.ply"));
    expectRefused(folder, {points, "-o", folder.path("a.png")}, QStringLiteral("no triangles"));
}

TEST(ViewerCommandTest, ModelWithHugeCoordinatesIsRefused)
{
    const ModelFolder folder;
    const QString huge = folder.write("a.obj", "v 0 0 0\nv 1e30 0 0\nv 0 1e30 0\nf 1 2 3\n");
    expectRefused(folder, {huge, "-o", folder.path("a.png")}, QStringLiteral("too large"));
}

TEST(ViewerCommandTest, LineBreaksInANameStayInTheLine)
{
    const ModelFolder folder;
    expectRefused(folder, {folder.path("a\nb.obj"), "-o", folder.path("a.png")}, QStringLiteral("no such file"));
}

TEST(ViewerCommandTest, OutputThatIsADirectoryIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "-o", folder.path("")}, QStringLiteral("it is a directory"));
}

TEST(ViewerCommandTest, OutputInAMissingFolderIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "-o", folder.path("none/a.png")}, QStringLiteral("there is no folder"));
}

TEST(ViewerCommandTest, OutputThatIsNoPngIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "-o", folder.path("a.jpg")}, QStringLiteral(".png"));
}

#ifdef Q_OS_LINUX
TEST(ViewerCommandTest, OutputWhereNoFileCanBeMadeIsRefused)
{
    // Nobody can make a file there, not even root, who may write to any ordinary folder.
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "-o", "/proc/a.png"}, QStringLiteral("cannot write '/proc/a.png'"));
}

TEST(ViewerCommandTest, OutputThatIsADeviceIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "-o", "/dev/full"}, QStringLiteral("not a regular file"));
}
#endif

TEST(ViewerCommandTest, OutputIsCheckedBeforeTheModelIsRead)
{
    const ModelFolder folder;
    expectRefused(folder, {folder.path("none.obj"), "-o", folder.path("none/a.png")}, QStringLiteral("no folder"));
}

TEST(ViewerCommandTest, AFailureLeavesAnOlderPictureAlone)
{
    const ModelFolder folder;
    const QString picture = folder.write("a.png", "older");
    const QString broken = folder.write("a.obj", "v 0 0 0\np 1\n");
    expectRefused(folder, {broken, "-o", picture}, QStringLiteral("a.obj"));
    QFile file(picture);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("older"));
}

TEST(ViewerCommandTest, NoEglDriverIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "-o", folder.path("a.png")}, QStringLiteral("EGL"),
                  {{"__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent"}});
    expectRefused(folder, {"--builtin", "-o", folder.path("a.png")}, QStringLiteral("EGL"),
                  {{"LIBGL_DRIVERS_PATH", "/nonexistent"}});
}

TEST(ViewerCommandTest, DriverBelowTheNeededVersionIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "-o", folder.path("a.png")}, QStringLiteral("OpenGL 3.2"),
                  {{"MESA_GL_VERSION_OVERRIDE", "3.1"}});
}

TEST(ViewerCommandTest, BaseInstanceOnADriverWithoutItIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "--draw-id", "base-instance", "-o", folder.path("a.png")},
                  QStringLiteral("base instance"),
                  {{"MESA_EXTENSION_OVERRIDE", "-GL_ARB_shader_draw_parameters -GL_ARB_base_instance"},
                   {"MESA_GL_VERSION_OVERRIDE", "3.2"}});
}

TEST(ViewerCommandTest, HandlesOnADriverWithoutBindlessTexturesAreRefused)
{
    const ModelFolder folder;
    for (const char* manager : {"array2d-bindless", "bindless"})
        expectRefused(folder, {"--builtin", "--manager", manager, "-o", folder.path("a.png")},
                      QStringLiteral("this driver has no bindless textures"),
                      {{"MESA_EXTENSION_OVERRIDE", "-GL_ARB_bindless_texture"}});
}

TEST(ViewerCommandTest, ATextureThatIsNotThereIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--texture", folder.path("a.ktx"), "-o", folder.path("a.png")},
                  QStringLiteral("there is no file"));
}

TEST(ViewerCommandTest, WindowWithoutADisplayIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "--window", "-o", folder.path("a.png")}, QStringLiteral("DISPLAY"), kNoDisplay);
}

TEST(ViewerCommandTest, WindowOnADisplayThatDoesNotAnswerIsRefused)
{
    const ModelFolder folder;
    Environment environment = kNoDisplay;
    environment.emplaceBack("DISPLAY", ":4242");
    expectRefused(folder, {"--builtin", "--window"}, QStringLiteral("':4242', which does not answer"), environment);
}

TEST(ViewerCommandTest, WindowOnAPlatformThatQtDoesNotHaveIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "--window"}, QStringLiteral("nonesuch"), {{"QT_QPA_PLATFORM", "nonesuch"}});
}

TEST(ViewerCommandTest, WindowOnAPlatformWithoutOpenGLIsRefused)
{
    const ModelFolder folder;
    expectRefused(folder, {"--builtin", "--window"}, QStringLiteral("no OpenGL context"),
                  {{"QT_QPA_PLATFORM", "minimal"}});
}

TEST(ViewerCommandTest, TheLocaleAddsNothingToTheLine)
{
    const ModelFolder folder;
    expectRefused(folder, {folder.path("none.obj"), "-o", folder.path("a.png")}, QStringLiteral("no such file"),
                  {{"LC_ALL", "C"}});
}

TEST(ViewerCommandTest, HelpAndVersionGoToStandardOutput)
{
    const ViewerRun help = runViewer({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.contains("--output")) << help.output.constData();
    EXPECT_EQ(help.errors, QByteArray());

    const ViewerRun version = runViewer({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.output.startsWith("vrkview ")) << version.output.constData();
    EXPECT_EQ(version.output.count('\n'), 1);
}
