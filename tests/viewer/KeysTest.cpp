// SPDX-License-Identifier: MIT
// The table of the window's keys, what they make of settings, the texts of the panels, and numbered files.
#include "Keys.h"
#include "Choices.h"
#include "ModelFiles.h"
#include "NumberedFile.h"
#include "StatsText.h"
#include "Switches.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSet>

using namespace vrkview;

namespace
{

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

Switched go(const RenderSettings& settings, Action action, int step = 1)
{
    return switched(settings, action, step, QStringLiteral("sky.hdr"));
}

} // namespace

// ---- keys ----------------------------------------------------------------------------------------------------------

TEST(KeysTest, EachActionHasOneRowAndEachKeyOneAction)
{
    QSet<int> actions;
    QSet<int> keys;
    for (const KeyRow& row : kKeys)
    {
        EXPECT_FALSE(actions.contains(int(row.action))) << row.names;
        actions.insert(int(row.action));
        EXPECT_NE(row.keys[0], kNoKey) << row.names;
        for (const Qt::Key key : row.keys)
        {
            if (key == kNoKey)
                continue;
            EXPECT_FALSE(keys.contains(key)) << row.names;
            keys.insert(key);
            ASSERT_NE(rowOf(key), nullptr);
            EXPECT_EQ(rowOf(key)->action, row.action) << row.names;
        }
    }
    EXPECT_EQ(actions.size(), kActions);
}

TEST(KeysTest, OtherKeysHaveNoRow)
{
    EXPECT_EQ(rowOf(Qt::Key_Z), nullptr);
    EXPECT_EQ(rowOf(Qt::Key_unknown), nullptr) << "which fills the table's unused places";
}

TEST(KeysTest, TheManualHasTheTable)
{
    const QString manual = QString::fromUtf8(contentsOf(QStringLiteral(VRKVIEW_MANUAL)));
    EXPECT_TRUE(manual.contains(controlsAsMarkdown())) << "docs/vrkview.md must hold this:\n"
                                                       << controlsAsMarkdown().toStdString();
}

TEST(KeysTest, HelpHasARowForEachKeyAndForTheMouse)
{
    const TextRows rows = helpRows();
    ASSERT_EQ(rows.size(), qsizetype(std::size(kKeys) + std::size(kMouse) + 1));
    EXPECT_EQ(rows.constFirst().left.toStdString(), kMouse[0].names);
    EXPECT_EQ(rows[qsizetype(std::size(kMouse))].right.toStdString(), kKeys[0].text);
    EXPECT_EQ(rows.constLast().left.toStdString(), kShiftHint);
}

// ---- switches ------------------------------------------------------------------------------------------------------

TEST(SwitchesTest, ChoicesGoRoundBothWays)
{
    EXPECT_EQ(following(kManagers, ManagerKind::Sampler, 1), ManagerKind::Array2D);
    EXPECT_EQ(following(kManagers, ManagerKind::Bindless, 1), ManagerKind::Sampler);
    EXPECT_EQ(following(kManagers, ManagerKind::Sampler, -1), ManagerKind::Bindless);
    EXPECT_EQ(following(kDiffuseModels, DiffuseModel::OrenNayar, 1), DiffuseModel::Lambert);
    EXPECT_EQ(wordOf(kManagers, ManagerKind::Array2DBindless).toStdString(), "array2d-bindless");
}

TEST(SwitchesTest, KeysOfTheViewSwitchNothing)
{
    for (const Action action : {Action::Help, Action::Stats, Action::NextCamera, Action::ResetView, Action::Pause,
                                Action::Picture, Action::Fullscreen, Action::Close})
        EXPECT_FALSE(isSwitch(action)) << int(action);
    EXPECT_TRUE(isSwitch(Action::Manager));
    EXPECT_TRUE(go({}, Action::Help).text.isEmpty());
}

TEST(SwitchesTest, EachSwitchSaysWhatItChose)
{
    const std::pair<Action, const char*> rows[] = {
        {Action::Manager, "texture manager: array2d"},
        {Action::RecordCarrier, "record carrier: uniform"},
        {Action::DrawIdCarrier, "draw-id carrier: uniform"},
        {Action::Specular, "specular model: blinn-phong (seen with an environment, E)"},
        {Action::Diffuse, "diffuse model: oren-nayar (seen with an environment, E)"},
        {Action::AntiAliasing, "anti-aliasing: fxaa"},
        {Action::DebugView, "debug view: slots are those of array2d (M)"},
        {Action::Shadows, "shadows: on"},
        {Action::ShadowMaps, "shadow maps: variance (seen with shadows, L)"},
        {Action::Environment, "environment: on"},
        {Action::Brighter, "exposure: there is no environment to brighten (E)"},
        {Action::Darker, "exposure: there is no environment to brighten (E)"},
        {Action::Gizmos, "gizmos: on"}};
    for (const auto& [action, text] : rows)
        EXPECT_EQ(go({}, action).text.toStdString(), text);
}

TEST(SwitchesTest, ASwitchChangesNothingElse)
{
    RenderSettings settings;
    settings.shadows = true;
    settings.gizmos = true;
    const RenderSettings next = go(settings, Action::RecordCarrier).settings;
    EXPECT_EQ(next.recordCarrier, RecordCarrier::Uniform);
    EXPECT_TRUE(next.shadows);
    EXPECT_TRUE(next.gizmos);
    EXPECT_EQ(next.manager, settings.manager);
}

TEST(SwitchesTest, TheEnvironmentComesBackWhereItWasOrAsTheBuiltInOne)
{
    RenderSettings settings;
    settings.environment.path = QStringLiteral("sky.hdr");
    const RenderSettings off = go(settings, Action::Environment).settings;
    EXPECT_TRUE(off.environment.path.isEmpty());
    EXPECT_EQ(go(off, Action::Environment).settings.environment.path.toStdString(), "sky.hdr");
}

TEST(SwitchesTest, ExposureGoesByHalfStopsAndStopsAtItsLimits)
{
    RenderSettings settings;
    settings.environment.path = QStringLiteral("sky.hdr");
    EXPECT_EQ(go(settings, Action::Brighter).settings.environment.exposure, 0.5f);
    EXPECT_EQ(go(settings, Action::Darker).settings.environment.exposure, -0.5f);
    settings.environment.exposure = kMostStops;
    EXPECT_EQ(go(settings, Action::Brighter).settings.environment.exposure, kMostStops);
}

TEST(SwitchesTest, WhatIsRefusedStaysThePlaceToGoOnFrom)
{
    const Switched refused = go({}, Action::DebugView);
    EXPECT_TRUE(refused.refused);
    EXPECT_EQ(refused.settings.debugView, DebugView::Slots);
    EXPECT_EQ(go(refused.settings, Action::DebugView).settings.debugView, DebugView::Shadows);
}

TEST(SwitchesTest, DebugViewsGoWithWhatTheyShow)
{
    RenderSettings settings;
    settings.manager = ManagerKind::Array2D;
    settings.debugView = DebugView::Slots;
    EXPECT_EQ(go(settings, Action::Manager).settings.debugView, DebugView::Slots) << "array2d-bindless has slots too";
    EXPECT_EQ(go(settings, Action::Manager, -1).settings.debugView, DebugView::None);
    settings.shadows = true;
    settings.debugView = DebugView::Shadows;
    EXPECT_EQ(go(settings, Action::Shadows).settings.debugView, DebugView::None);
}

// ---- texts ---------------------------------------------------------------------------------------------------------

TEST(StatsTextTest, FramesThatFollowEachOtherHaveARate)
{
    FrameStats frame;
    EXPECT_EQ(meanFrameTime({frame}), 0.0) << "the first one follows nothing";
    frame.sinceLast = 10.0;
    FrameStats longer = frame;
    longer.sinceLast = 30.0;
    EXPECT_EQ(meanFrameTime({FrameStats(), frame, longer}), 20.0);
    const TextRows rows = statsRows({FrameStats(), frame, longer}, {}, {QStringLiteral("a driver"), {}, 0});
    EXPECT_EQ(rows[0].left.toStdString(), "a driver");
    EXPECT_EQ(rows[1].right.toStdString(), "20.00 ms, 50.0 fps");
}

TEST(StatsTextTest, PhasesHaveMedians)
{
    QList<FrameStats> frames(3);
    frames[0].draw = 1.0;
    frames[1].draw = 50.0;
    frames[2].draw = 2.0;
    for (const auto& [name, time] : phaseTimes(frames))
        EXPECT_EQ(time, name == QLatin1String("draw") ? 2.0 : 0.0) << name.toStdString();
    EXPECT_TRUE(phaseTimes({}).isEmpty());
}

TEST(StatsTextTest, ErrorsAndCamerasAreToldWhereThereAreAny)
{
    const TextRows rows = statsRows({FrameStats()}, {}, {QStringLiteral("a"), QStringLiteral("front"), 3});
    EXPECT_TRUE(rows.contains({QStringLiteral("camera"), QStringLiteral("front")}));
    EXPECT_TRUE(rows.contains({QStringLiteral("OpenGL errors"), QStringLiteral("3")}));
    EXPECT_EQ(statsRows({}, {}, {QStringLiteral("a"), {}, 0}).size(), 1) << "before the first frame: the driver";
    const TextRows driver = statsRows({}, {}, {QStringLiteral("a (b, c), OpenGL 4.5"), {}, 0});
    ASSERT_EQ(driver.size(), 2);
    EXPECT_EQ(driver[0].left.toStdString(), "a (b, c)");
    EXPECT_EQ(driver[1].left.toStdString(), "OpenGL 4.5");
}

// ---- numbered files ------------------------------------------------------------------------------------------------

TEST(NumberedFileTest, TakesTheFirstFreeNumber)
{
    const ModelFolder folder;
    folder.write("vrkview-001.png", "older");
    folder.write("vrkview-003.png", "older");
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    QString path;
    QString error;
    for (const char* name : {"vrkview-002.png", "vrkview-004.png"})
    {
        ASSERT_TRUE(writeNumberedPicture(image, folder.path(""), path, error)) << qPrintable(error);
        EXPECT_TRUE(path.endsWith(QLatin1String(name))) << qPrintable(path);
        EXPECT_EQ(QImage(path).size(), image.size());
    }
    EXPECT_EQ(contentsOf(folder.path("vrkview-001.png")), QByteArray("older"));
    EXPECT_EQ(contentsOf(folder.path("vrkview-003.png")), QByteArray("older"));
}

TEST(NumberedFileTest, PassesOverALinkThatLeadsNowhere)
{
    const ModelFolder folder;
    ASSERT_TRUE(QFile::link(folder.path("gone.png"), folder.path("vrkview-001.png")));
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    QString path;
    QString error;
    ASSERT_TRUE(writeNumberedPicture(image, folder.path(""), path, error)) << qPrintable(error);
    EXPECT_TRUE(path.endsWith("vrkview-002.png")) << qPrintable(path);
    EXPECT_FALSE(QFile::exists(folder.path("gone.png")));
}

TEST(NumberedFileTest, WhereNothingCanBeMadeItSaysSoAndLeavesNothing)
{
    const ModelFolder folder;
    QImage image(2, 2, QImage::Format_RGB32);
    QString path;
    QString error;
    EXPECT_FALSE(writeNumberedPicture(image, folder.path("none"), path, error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(writeNumberedPicture(QImage(), folder.path(""), path, error));
    EXPECT_EQ(error.toStdString(), "there is no memory for the picture");
    EXPECT_TRUE(folder.entries().isEmpty());
}
