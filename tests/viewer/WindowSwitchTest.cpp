// SPDX-License-Identifier: MIT
// What the window's keys switch: each choice shows the picture that the command line's option of the same name gives,
// and going back shows the first one again. Wants a display.
#include "TextureWall.h"
#include "WindowSwitchTools.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <string>

using namespace vrkview;

// ---- switches ------------------------------------------------------------------------------------------------------

TEST_F(WindowSwitchTest, TheFirstPictureIsThatOfTheCommandLine)
{
    expectAsWith({});
}

TEST_F(WindowSwitchTest, MGoesThroughTheManagers)
{
    const QImage first = picture();
    press(Qt::Key_M);
    EXPECT_EQ(window->settings().manager, ManagerKind::Array2D);
    EXPECT_EQ(told(), "texture manager: array2d");
    expectAsWith({"--manager", "array2d"});
    press(Qt::Key_M, Qt::ShiftModifier);
    EXPECT_EQ(window->settings().manager, ManagerKind::Sampler);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, AManagerThatTheDriverLacksIsToldAndTheOneBeforeStays)
{
    press(Qt::Key_M);
    const QImage arrays = picture();
    const std::vector<int> objects = livingObjects();
    for (const char* word : {"array2d-bindless", "bindless"})
    {
        press(Qt::Key_M);
        EXPECT_EQ(told(), std::string("texture manager: ") + word + ": this driver has no bindless textures");
        EXPECT_EQ(window->settings().manager, ManagerKind::Array2D);
        EXPECT_EQ(picture(), arrays);
        EXPECT_EQ(livingObjects(), objects);
    }
    press(Qt::Key_M);
    EXPECT_EQ(window->settings().manager, ManagerKind::Sampler) << "the key goes on behind what was refused";
    press(Qt::Key_M, Qt::ShiftModifier);
    EXPECT_EQ(window->settings().manager, ManagerKind::Sampler) << "backwards the refused ones come first";
    press(Qt::Key_C);
    press(Qt::Key_M);
    EXPECT_EQ(window->settings().manager, ManagerKind::Array2D) << "another key forgets them";
}

TEST_F(WindowSwitchTest, AManagerWithoutTilesDrawsThemWhiteAndThatIsTold)
{
    closeWindow();
    path = writeTiledSquares(folder);
    RenderSettings settings;
    settings.manager = ManagerKind::Array2D;
    openFile(settings);
    const QImage tiled = picture();
    press(Qt::Key_M, Qt::ShiftModifier);
    EXPECT_EQ(window->settings().manager, ManagerKind::Sampler);
    EXPECT_EQ(told(), "texture manager: sampler (tiles are white: array2d has them)");
    expectAsWith({"--manager", "sampler"});
    press(Qt::Key_G);
    EXPECT_EQ(told(), "gizmos: on") << "it is told with the manager alone";
    pressAll({{Qt::Key_G}, {Qt::Key_M}});
    EXPECT_EQ(told(), "texture manager: array2d");
    EXPECT_EQ(picture(), tiled);
}

TEST_F(WindowSwitchTest, AManagerThatCannotHaveAPictureIsToldAndTheOneBeforeStays)
{
    closeWindow();
    RenderSettings settings;
    settings.manager = ManagerKind::Array2D;
    open(makeTextureWall(16), settings, kSize); // a cube map is among them
    const QImage wall = picture();
    press(Qt::Key_M, Qt::ShiftModifier);
    EXPECT_EQ(told(), "texture manager: sampler: cube maps and textures with layers want array2d");
    EXPECT_EQ(window->settings().manager, ManagerKind::Array2D);
    EXPECT_EQ(picture(), wall);
}

TEST_F(WindowSwitchTest, CGoesThroughTheRecordCarriers)
{
    const QImage first = picture();
    const std::pair<RecordCarrier, const char*> carriers[] = {{RecordCarrier::Uniform, "uniform"},
                                                              {RecordCarrier::BufferTexture, "buffer-texture"},
                                                              {RecordCarrier::Texture, "texture"},
                                                              {RecordCarrier::StorageBuffer, "ssbo"}};
    for (const auto& [carrier, word] : carriers)
    {
        press(Qt::Key_C);
        EXPECT_EQ(window->settings().recordCarrier, carrier) << told();
        expectAsWith({"--carrier", word});
    }
    press(Qt::Key_C);
    EXPECT_EQ(window->settings().recordCarrier, RecordCarrier::UniformBuffer);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, IGoesThroughTheDrawIdCarriers)
{
    const QImage first = picture();
    press(Qt::Key_I);
    EXPECT_EQ(window->settings().drawIdCarrier, DrawIdCarrier::Uniform);
    EXPECT_EQ(picture(), first);
    press(Qt::Key_I);
    EXPECT_EQ(window->settings().drawIdCarrier, DrawIdCarrier::BaseInstance) << told();
    expectAsWith({"--draw-id", "base-instance"});
    press(Qt::Key_I);
    EXPECT_EQ(window->settings().drawIdCarrier, DrawIdCarrier::Automatic);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, AGoesThroughTheWaysToSmoothEdges)
{
    const QImage first = picture();
    press(Qt::Key_A);
    EXPECT_EQ(window->settings().antiAliasing, AntiAliasingKind::FXAA);
    expectAsWith({"--aa", "fxaa"});
    press(Qt::Key_A);
    EXPECT_EQ(window->settings().antiAliasing, AntiAliasingKind::SMAA);
    expectAsWith({"--aa", "smaa"});
    press(Qt::Key_A);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, LAndKSwitchShadowsAndTheirMaps)
{
    const QImage first = picture();
    press(Qt::Key_L);
    EXPECT_TRUE(window->settings().shadows);
    expectAsWith({"--shadows"});
    press(Qt::Key_K);
    EXPECT_EQ(window->settings().shadowMaps, ShadowMapKind::Variance);
    expectAsWith({"--shadow-maps", "variance"});
    pressAll({{Qt::Key_K}, {Qt::Key_L}});
    EXPECT_FALSE(window->settings().shadows);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, GDrawsGizmosAndTakesThemAway)
{
    const QImage first = picture();
    press(Qt::Key_G);
    expectAsWith({"--gizmos"});
    EXPECT_NE(picture(), first);
    press(Qt::Key_G);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, GizmosKnowTheLightsOfAnotherScene)
{
    pressAll({{Qt::Key_G}, {Qt::Key_L}});
    expectAsWith({"--gizmos", "--shadows"});
}

TEST_F(WindowSwitchTest, VShowsWhatThereIsToBeSeen)
{
    const QImage first = picture();
    press(Qt::Key_V);
    EXPECT_EQ(told(), "debug view: slots are those of array2d (M)");
    EXPECT_EQ(window->settings().debugView, DebugView::None);
    press(Qt::Key_V);
    EXPECT_EQ(told(), "debug view: there are no shadows to be seen (L)");
    EXPECT_EQ(picture(), first);
    pressAll({{Qt::Key_L}, {Qt::Key_V}, {Qt::Key_V}});
    EXPECT_EQ(window->settings().debugView, DebugView::Shadows);
    expectAsWith({"--debug", "shadows"});
    press(Qt::Key_L);
    EXPECT_EQ(window->settings().debugView, DebugView::None) << "with the shadows their view goes";
    EXPECT_EQ(picture(), first);
    pressAll({{Qt::Key_M}, {Qt::Key_V}});
    EXPECT_EQ(window->settings().debugView, DebugView::Slots);
    expectAsWith({"--manager", "array2d", "--debug", "slots"});
    press(Qt::Key_M, Qt::ShiftModifier);
    EXPECT_EQ(window->settings().debugView, DebugView::None);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, WithoutAnEnvironmentThereIsNothingToBrighten)
{
    const QImage first = picture();
    press(Qt::Key_Plus);
    EXPECT_EQ(told(), "exposure: there is no environment to brighten (E)");
    press(Qt::Key_B);
    EXPECT_EQ(told(), "specular model: blinn-phong (seen with an environment, E)");
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, TheEnvironmentAndItsModelsAndItsLightAreSwitched)
{
    const QImage first = picture();
    press(Qt::Key_E);
    EXPECT_EQ(told(), "environment: on");
    expectAsWith({"--env", ":/vrkview/sky.hdr"});
    const QImage lit = picture();
    press(Qt::Key_Equal);
    press(Qt::Key_Plus, Qt::ShiftModifier, true);
    EXPECT_EQ(told(), "exposure: 1.0 stops") << "the key repeats";
    expectAsWith({"--env", ":/vrkview/sky.hdr", "--exposure", "1"});
    pressAll({{Qt::Key_Minus}, {Qt::Key_Minus}});
    EXPECT_EQ(picture(), lit);
    pressAll({{Qt::Key_B}, {Qt::Key_D}});
    expectAsWith({"--env", ":/vrkview/sky.hdr", "--specular", "blinn-phong", "--diffuse", "oren-nayar"});
    press(Qt::Key_E);
    EXPECT_EQ(picture(), first);
}

TEST_F(WindowSwitchTest, AnExposureOfTheCommandLineHoldsForTheEnvironmentThatIsSwitchedOn)
{
    closeWindow();
    RenderSettings settings;
    settings.environment.exposure = 1.0f;
    settings.environment.diffuse = DiffuseModel::OrenNayar;
    openFile(settings);
    expectAsWith({});
    press(Qt::Key_E);
    expectAsWith({"--env", ":/vrkview/sky.hdr", "--exposure", "1", "--diffuse", "oren-nayar"});
}

TEST_F(WindowSwitchTest, KeysOfChoicesDoNotRepeatAndWithControlDoNothing)
{
    press(Qt::Key_M, Qt::NoModifier, true);
    press(Qt::Key_M, Qt::ControlModifier);
    press(Qt::Key_Escape, Qt::AltModifier);
    EXPECT_EQ(window->settings().manager, ManagerKind::Sampler);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(told(), "");
}

TEST_F(WindowSwitchTest, ARoundThroughAllChoicesLeavesNoObjectBehind)
{
    constexpr Qt::KeyboardModifier kShift = Qt::ShiftModifier;
    const std::vector<Press> round = {{Qt::Key_M},         {Qt::Key_V},         {Qt::Key_C}, {Qt::Key_I}, {Qt::Key_I},
                                      {Qt::Key_I},         {Qt::Key_A},         {Qt::Key_A}, {Qt::Key_A}, {Qt::Key_L},
                                      {Qt::Key_G},         {Qt::Key_V},         {Qt::Key_K}, {Qt::Key_G}, {Qt::Key_L},
                                      {Qt::Key_C, kShift}, {Qt::Key_M, kShift}, {Qt::Key_K}, {Qt::Key_H}, {Qt::Key_S},
                                      {Qt::Key_H},         {Qt::Key_S}};
    const auto goRound = [this, &round]
    {
        for (const auto& [key, modifiers] : round)
        {
            press(key, modifiers);
            picture();
        }
        settle();
    };
    const QImage first = picture();
    goRound(); // the overlay's texture and the like come once
    const std::vector<int> objects = livingObjects();
    const std::vector<int> names = livingNames();
    goRound();
    EXPECT_EQ(window->settings().manager, ManagerKind::Sampler);
    EXPECT_EQ(picture(), first);
    EXPECT_EQ(livingObjects(), objects);
    EXPECT_EQ(livingNames(), names) << "textures, buffers, framebuffers, renderbuffers, programs, shaders, arrays";
    EXPECT_GT(names[0], 0);
    EXPECT_GT(names[4], 0);
}

// ---- other keys ----------------------------------------------------------------------------------------------------

TEST_F(WindowSwitchTest, PWritesANewPictureAndNeverOverAnother)
{
    const QString former = QDir::currentPath();
    const ModelFolder pictures;
    pictures.write("vrkview-001.png", "older");
    ASSERT_TRUE(QDir::setCurrent(QFileInfo(pictures.path("x")).absolutePath()));
    press(Qt::Key_H);
    press(Qt::Key_P);
    EXPECT_EQ(told(), "picture: vrkview-002.png");
    press(Qt::Key_P, Qt::ShiftModifier);
    QDir::setCurrent(former);
    EXPECT_EQ(pictures.entries(), QStringList({"vrkview-001.png", "vrkview-002.png", "vrkview-003.png"}));
    QFile older(pictures.path("vrkview-001.png"));
    ASSERT_TRUE(older.open(QIODevice::ReadOnly));
    EXPECT_EQ(older.readAll(), QByteArray("older"));
    const QImage plain = QImage(pictures.path("vrkview-002.png")).convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(plain, picture());
    const QImage texts = QImage(pictures.path("vrkview-003.png")).convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(texts.size(), plain.size());
    EXPECT_NE(texts, plain);
}

TEST_F(WindowSwitchTest, APictureThatCannotBeWrittenIsToldAndTheWindowGoesOn)
{
    if (!QFileInfo("/proc").isDir())
        GTEST_SKIP() << "there is no folder that nobody can write into";
    const QString former = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent("/proc"));
    press(Qt::Key_P);
    QDir::setCurrent(former);
    EXPECT_EQ(told().rfind("cannot write a picture into '/proc'", 0), 0u) << told();
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowSwitchTest, F11TakesTheWholeScreenAndGivesItBack)
{
    press(Qt::Key_F11);
    EXPECT_TRUE(window->windowStates() & Qt::WindowFullScreen);
    settle();
    EXPECT_EQ(window->picture().size(), window->size());
    press(Qt::Key_F11);
    EXPECT_FALSE(window->windowStates() & Qt::WindowFullScreen);
    settle();
    EXPECT_EQ(window->picture().size(), window->size());
}

TEST_F(WindowSwitchTest, NLooksThroughTheFilesCamerasAndMouseAndRReturnToOrbiting)
{
    press(Qt::Key_N);
    EXPECT_EQ(told(), "camera: the model's file has none");
    closeWindow();

    const QByteArray cube = gltfFile(boxSoup({-1, -1, -1}, {1, 1, 1}), {QMatrix4x4()}, {0.6f, 0.3f, 0.2f}, 0.5f);
    path = folder.write("camera.gltf", withCamera(cube, "front", {0.4f, 0.2f, 6.0f}));
    openFile();
    const QImage orbiting = picture();
    press(Qt::Key_N);
    EXPECT_EQ(window->fileCamera(), 0);
    EXPECT_EQ(told(), "camera: front");
    expectAsWith({"--camera", "front"});
    press(Qt::Key_N);
    EXPECT_EQ(window->fileCamera(), -1);
    EXPECT_EQ(told(), "camera: orbiting");
    EXPECT_EQ(picture(), orbiting);
    press(Qt::Key_N, Qt::ShiftModifier);
    EXPECT_EQ(window->fileCamera(), 0);
    turnWheel(1);
    EXPECT_EQ(window->fileCamera(), -1);
    press(Qt::Key_N);
    press(Qt::Key_R);
    EXPECT_EQ(window->fileCamera(), -1);
    EXPECT_EQ(picture(), orbiting);
}

TEST_F(WindowSwitchTest, SpaceStopsWhatMovesAndLetsItGoOn)
{
    closeWindow();
    Model model = readModel(path, UpAxis::Y).model.value();
    Motion motion;
    motion.node = 0;
    motion.radius = 0.5f;
    motion.turnsPerSecond = 2.0f;
    if (model.nodes.empty())
    {
        model.nodes.resize(1);
        for (Instance& instance : model.instances)
            instance.node = 0;
    }
    model.motions.push_back(motion);
    open(std::move(model), {}, kSize);
    const QImage moving = picture();
    EXPECT_TRUE(waitUntil([this, &moving] { return picture() != moving; }));
    press(Qt::Key_Space);
    EXPECT_TRUE(window->isPaused());
    EXPECT_EQ(told(), "paused");
    settle();
    const QImage standing = picture();
    for (int i = 0; i < 5; ++i)
        settle();
    EXPECT_EQ(picture(), standing);
    press(Qt::Key_C);
    settle();
    EXPECT_LE(difference(picture(), standing).largest, 2) << "another carrier finds it where it stood";
    press(Qt::Key_Space);
    EXPECT_FALSE(window->isPaused());
    EXPECT_TRUE(waitUntil([this, &standing] { return difference(picture(), standing).largest > 10; }));
}

TEST_F(WindowSwitchTest, TheTimeOfAPauseDoesNotCount)
{
    closeWindow();
    Model model = readModel(path, UpAxis::Y).model.value();
    model.motions.push_back({0, {}, 0.5f, 0.0f, 0.0f});
    model.nodes.resize(std::max<std::size_t>(1, model.nodes.size()));
    open(std::move(model), {}, kSize);
    settle();
    press(Qt::Key_Space);
    const double before = WindowTestAccess::seconds(*window);
    QThread::msleep(1500);
    QElapsedTimer sincePause; // however long a frame takes
    sincePause.start();
    press(Qt::Key_Space);
    settle();
    EXPECT_LE(WindowTestAccess::seconds(*window) - before, double(sincePause.nsecsElapsed()) * 1.0e-9);
}

TEST_F(WindowSwitchTest, ClosingRightAfterASwitchKeepsAPicture)
{
    const QImage before = picture();
    press(Qt::Key_A);
    press(Qt::Key_Escape);
    waitUntil([this] { return !window->isVisible(); });
    const QImage last = window->lastFrame().convertToFormat(before.format());
    ASSERT_EQ(last.size(), before.size());
    EXPECT_LT(difference(before, last).mean, 10.0) << "the same scene with other edges, and not nothing";
}

// In a process of its own, whose driver has OpenGL 3.2 and no more.
TEST_F(WindowSwitchTest, OnTheFloorWhatIsNewerIsToldAndTheChoiceBeforeStays)
{
    if (!qEnvironmentVariableIsSet("VRKVIEW_TEST_FLOOR"))
        GTEST_SKIP() << "run by vrkview.window_floor";
    const QImage first = picture();
    press(Qt::Key_C, Qt::ShiftModifier);
    EXPECT_EQ(told(), "record carrier: ssbo: this driver has no storage blocks");
    press(Qt::Key_I, Qt::ShiftModifier);
    EXPECT_EQ(told(), "draw-id carrier: base-instance: this driver can't carry the draw's number in the base instance");
    EXPECT_EQ(window->settings().recordCarrier, RecordCarrier::UniformBuffer);
    EXPECT_EQ(window->settings().drawIdCarrier, DrawIdCarrier::Automatic);
    EXPECT_EQ(picture(), first);
    press(Qt::Key_M);
    EXPECT_EQ(window->settings().manager, ManagerKind::Array2D) << told();
    settle();
}

// In a process of its own, in which there is no font.
TEST_F(WindowSwitchTest, WithoutFontsTextsAreNotSeenAndNothingBreaks)
{
    if (!qEnvironmentVariableIsSet("VRKVIEW_TEST_NO_FONTS"))
        GTEST_SKIP() << "run by vrkview.window_without_fonts";
    const QImage plain = picture();
    press(Qt::Key_H);
    press(Qt::Key_S);
    settle();
    EXPECT_FALSE(window->panel(Panel::Help).isEmpty());
    EXPECT_TRUE(isSeen(plain));
}
