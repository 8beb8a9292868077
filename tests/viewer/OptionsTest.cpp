// SPDX-License-Identifier: MIT
#include "Options.h"

#include <gtest/gtest.h>

using namespace vrkview;

namespace
{

ParsedOptions parse(const QStringList& arguments)
{
    return parseOptions(QStringList{QStringLiteral("vrkview")} + arguments, QStringLiteral("1.2.3"));
}

void expectError(const QStringList& arguments, const QString& words)
{
    const ParsedOptions parsed = parse(arguments);
    const std::string given = arguments.join(QLatin1Char(' ')).toStdString();
    EXPECT_EQ(parsed.outcome, ParsedOptions::Outcome::Error) << given;
    EXPECT_TRUE(parsed.text.contains(words)) << given << " gave: " << parsed.text.toStdString();
    EXPECT_FALSE(parsed.text.contains(QLatin1Char('\n'))) << given;
}

} // namespace

TEST(OptionsTest, NothingGivenRunsWithDefaults)
{
    const ParsedOptions parsed = parse({});
    ASSERT_EQ(parsed.outcome, ParsedOptions::Outcome::Run);
    EXPECT_TRUE(parsed.options.modelPath.isEmpty());
    EXPECT_TRUE(parsed.options.outputPath.isEmpty());
    EXPECT_EQ(parsed.options.size, QSize(1280, 720));
    EXPECT_FALSE(parsed.options.azimuth.has_value());
    EXPECT_FALSE(parsed.options.elevation.has_value());
    EXPECT_EQ(parsed.options.samples, 0);
    EXPECT_EQ(parsed.options.upAxis, UpAxis::Y);
    EXPECT_EQ(parsed.options.settings.drawIdCarrier, DrawIdCarrier::Automatic);
    EXPECT_EQ(parsed.options.settings.recordCarrier, RecordCarrier::UniformBuffer);
    EXPECT_FALSE(parsed.options.builtIn);
    EXPECT_EQ(parsed.options.crowd, 0);
    EXPECT_TRUE(parsed.options.camera.isEmpty());
    EXPECT_FALSE(parsed.options.stats);
    EXPECT_FALSE(parsed.options.window);
    EXPECT_EQ(parsed.options.frames, 0);
}

TEST(OptionsTest, EveryOptionReachesItsField)
{
    const ParsedOptions parsed =
        parse({"a.obj",     "--output", "b.png",   "--size",   "64x48",     "--azimuth", "-30.5",     "--elevation=12",
               "--samples", "8",        "--up",    "z",        "--draw-id", "uniform",   "--carrier", "texture",
               "--camera",  "front",    "--stats", "--window", "--frames",  "5"});
    ASSERT_EQ(parsed.outcome, ParsedOptions::Outcome::Run) << parsed.text.toStdString();
    EXPECT_EQ(parsed.options.modelPath, QStringLiteral("a.obj"));
    EXPECT_EQ(parsed.options.outputPath, QStringLiteral("b.png"));
    EXPECT_EQ(parsed.options.size, QSize(64, 48));
    EXPECT_EQ(parsed.options.azimuth, -30.5f);
    EXPECT_EQ(parsed.options.elevation, 12.0f);
    EXPECT_EQ(parsed.options.samples, 8);
    EXPECT_EQ(parsed.options.upAxis, UpAxis::Z);
    EXPECT_EQ(parsed.options.settings.drawIdCarrier, DrawIdCarrier::Uniform);
    EXPECT_EQ(parsed.options.settings.recordCarrier, RecordCarrier::Texture);
    EXPECT_EQ(parsed.options.camera, QStringLiteral("front"));
    EXPECT_TRUE(parsed.options.stats);
    EXPECT_TRUE(parsed.options.window);
    EXPECT_EQ(parsed.options.frames, 5);
}

TEST(OptionsTest, ShadowsAreChosenByTheirSwitchesAndByEveryOptionOfThem)
{
    EXPECT_FALSE(parse({}).options.shadows.has_value());
    EXPECT_EQ(parse({"--shadows"}).options.shadows, true);
    EXPECT_EQ(parse({"--no-shadows"}).options.shadows, false);
    for (const QStringList& option : {QStringList{"--csm", "2"}, QStringList{"--shadow-maps", "variance"},
                                      QStringList{"--lights", "sun"}, QStringList{"--debug", "shadows"}})
    {
        EXPECT_EQ(parse(option).options.shadows, true) << option[0].toStdString();
        expectError(option + QStringList{"--no-shadows"}, QStringLiteral("exclude each other"));
    }
}

TEST(OptionsTest, LightsAreAWordOrANumber)
{
    EXPECT_EQ(parse({}).options.settings.lights.set, LightSet::All);
    EXPECT_EQ(parse({"--lights", "sun"}).options.settings.lights.set, LightSet::Sun);
    EXPECT_EQ(parse({"--lights", "spot"}).options.settings.lights.set, LightSet::Spot);
    EXPECT_EQ(parse({"--lights", "point"}).options.settings.lights.set, LightSet::Point);
    EXPECT_EQ(parse({"--lights", "33"}).options.settings.lights.set, LightSet::Ring);
    EXPECT_EQ(parse({"--lights", "33"}).options.settings.lights.ringCount, 33);
    for (const char* wrong : {"", "0", "65", "moon", "1.5"})
        expectError({"--lights", wrong},
                    QStringLiteral("one of all, sun, spot, point, or a whole number from 1 to 64"));
}

TEST(OptionsTest, CascadesAndMapsAreTaken)
{
    EXPECT_EQ(parse({}).options.settings.lights.cascades, 4);
    EXPECT_EQ(parse({"--csm", "8"}).options.settings.lights.cascades, 8);
    EXPECT_EQ(parse({"--shadow-maps", "variance"}).options.settings.shadowMaps, ShadowMapKind::Variance);
    expectError({"--csm", "0"}, QStringLiteral("a whole number from 1 to 8"));
    expectError({"--shadow-maps", "soft"}, QStringLiteral("one of plain, variance"));
}

TEST(OptionsTest, AnEnvironmentAndItsModelsAreTaken)
{
    const EnvironmentSettings plain = parse({"--env", "sky.hdr"}).options.settings.environment;
    EXPECT_EQ(plain.path, QStringLiteral("sky.hdr"));
    EXPECT_EQ(plain.specular, SpecularModel::GGX);
    EXPECT_EQ(plain.diffuse, DiffuseModel::Lambert);
    EXPECT_FALSE(plain.exposure.has_value());
    const EnvironmentSettings other =
        parse({"--env", "sky.hdr", "--specular", "blinn-phong", "--diffuse", "oren-nayar", "--exposure", "-1.5"})
            .options.settings.environment;
    EXPECT_EQ(other.specular, SpecularModel::BlinnPhong);
    EXPECT_EQ(other.diffuse, DiffuseModel::OrenNayar);
    EXPECT_EQ(other.exposure, -1.5f);
    EXPECT_EQ(parse({"--specular", "ashikhmin-shirley"}).options.settings.environment.specular,
              SpecularModel::AshikhminShirley);
    expectError({"--specular", "mirror"}, QStringLiteral("one of blinn-phong, ashikhmin-shirley, ggx"));
    expectError({"--diffuse", "chalk"}, QStringLiteral("one of lambert, oren-nayar"));
    expectError({"--env", ""}, QStringLiteral("a file name"));
    EXPECT_FALSE(parse({}).options.noEnvironment);
    EXPECT_TRUE(parse({"--no-env"}).options.noEnvironment);
    expectError({"--no-env", "--env", "a.hdr"}, QStringLiteral("exclude each other"));
    expectError({"--env", "a.hdr", "--texture", "b.hdr"}, QStringLiteral("exclude each other"));
}

TEST(OptionsTest, SmoothingComesWithOneSampleUnlessToldOtherwise)
{
    EXPECT_EQ(parse({"a.obj"}).options.settings.antiAliasing, AntiAliasingKind::None);
    EXPECT_EQ(parse({"--aa", "fxaa"}).options.settings.antiAliasing, AntiAliasingKind::FXAA);
    EXPECT_EQ(parse({"--aa", "fxaa"}).options.samples, 1);
    EXPECT_EQ(parse({"--aa", "none"}).options.samples, 0);
    EXPECT_EQ(parse({"--aa", "smaa", "--samples", "4"}).options.settings.antiAliasing, AntiAliasingKind::SMAA);
    EXPECT_EQ(parse({"--aa", "smaa", "--samples", "4"}).options.samples, 4);
    expectError({"--aa", "taa"}, QStringLiteral("one of none, fxaa, smaa"));
}

TEST(OptionsTest, CrowdIsTaken)
{
    EXPECT_EQ(parse({"--crowd", "1"}).options.crowd, 1);
    EXPECT_EQ(parse({"--crowd", "100000"}).options.crowd, 100000);
}

TEST(OptionsTest, EveryCarrierWordHasItsValue)
{
    EXPECT_EQ(parse({"--carrier", "ubo"}).options.settings.recordCarrier, RecordCarrier::UniformBuffer);
    EXPECT_EQ(parse({"--carrier", "uniform"}).options.settings.recordCarrier, RecordCarrier::Uniform);
    EXPECT_EQ(parse({"--carrier", "buffer-texture"}).options.settings.recordCarrier, RecordCarrier::BufferTexture);
    EXPECT_EQ(parse({"--carrier", "texture"}).options.settings.recordCarrier, RecordCarrier::Texture);
    EXPECT_EQ(parse({"--carrier", "ssbo"}).options.settings.recordCarrier, RecordCarrier::StorageBuffer);
}

TEST(OptionsTest, EveryManagerWordHasItsValue)
{
    EXPECT_EQ(parse({"a.obj"}).options.settings.manager, ManagerKind::Sampler);
    EXPECT_EQ(parse({"--manager", "sampler"}).options.settings.manager, ManagerKind::Sampler);
    EXPECT_EQ(parse({"--manager", "array2d"}).options.settings.manager, ManagerKind::Array2D);
    EXPECT_EQ(parse({"--manager", "array2d-bindless"}).options.settings.manager, ManagerKind::Array2DBindless);
    EXPECT_EQ(parse({"--manager", "bindless"}).options.settings.manager, ManagerKind::Bindless);
}

TEST(OptionsTest, TheBuiltInSceneTakesAManagerOfTilesAndSmoothEdgesUnlessTold)
{
    for (const QStringList& arguments : {QStringList{}, QStringList{"--builtin"}, QStringList{"--window"}})
    {
        const Options options = parse(arguments).options;
        EXPECT_EQ(options.settings.manager, ManagerKind::Array2D);
        EXPECT_EQ(options.settings.antiAliasing, AntiAliasingKind::SMAA);
        EXPECT_EQ(options.samples, 0) << "as many as it has anyway";
    }
    const Options told = parse({"--manager", "sampler", "--aa", "none"}).options;
    EXPECT_EQ(told.settings.manager, ManagerKind::Sampler);
    EXPECT_EQ(told.settings.antiAliasing, AntiAliasingKind::None);
    for (const QStringList& other : {QStringList{"--crowd", "3"}, QStringList{"--streamers"}, QStringList{"a.obj"}})
    {
        const Options options = parse(other).options;
        EXPECT_EQ(options.settings.manager, ManagerKind::Sampler);
        EXPECT_EQ(options.settings.antiAliasing, AntiAliasingKind::None);
    }
}

TEST(OptionsTest, AWallOfTexturesTakesTheManagerOfArraysUnlessTold)
{
    EXPECT_EQ(parse({}).options.textures, 0);
    EXPECT_EQ(parse({"--textures", "8000"}).options.textures, 8000);
    EXPECT_EQ(parse({"--textures", "1"}).options.settings.manager, ManagerKind::Array2D);
    EXPECT_EQ(parse({"--textures", "1", "--manager", "array2d-bindless"}).options.settings.manager,
              ManagerKind::Array2DBindless);
    for (const char* count : {"", "0", "-1", "8001", "many"})
        expectError({"--textures", count}, QStringLiteral("a whole number from 1 to 8000"));
    for (const char* manager : {"sampler", "bindless"})
        expectError({"--textures", "5", "--manager", manager}, QStringLiteral("wants --manager array2d"));
    expectError({"--textures", "5", "--crowd", "5"}, QStringLiteral("exclude each other"));
    expectError({"--textures", "5", "--builtin"}, QStringLiteral("exclude each other"));
    expectError({"--textures", "5", "a.obj"}, QStringLiteral("exclude each other"));
}

TEST(OptionsTest, TheSlotsOfArraysCanBeShown)
{
    EXPECT_EQ(parse({}).options.settings.debugView, DebugView::None);
    EXPECT_EQ(parse({"--debug", "none"}).options.settings.debugView, DebugView::None);
    EXPECT_EQ(parse({"--debug", "slots", "--manager", "array2d"}).options.settings.debugView, DebugView::Slots);
    EXPECT_EQ(parse({"--debug", "slots", "--textures", "9"}).options.settings.debugView, DebugView::Slots);
    expectError({"a.obj", "--debug", "slots"}, QStringLiteral("wants --manager array2d"));
    expectError({"--debug", "all"}, QStringLiteral("one of none, slots"));
}

TEST(OptionsTest, ATextureIsShownWithItsLevelAndExposure)
{
    const Options plain = parse({"--texture", "a.ktx"}).options;
    EXPECT_EQ(plain.texturePath, QStringLiteral("a.ktx"));
    EXPECT_EQ(plain.textureLevel, std::optional<int>(0));
    EXPECT_FALSE(plain.exposure);
    const Options told = parse({"--texture", "a.hdr", "--level", "3", "--exposure", "-1.5"}).options;
    EXPECT_EQ(told.textureLevel, std::optional<int>(3));
    EXPECT_EQ(told.exposure, std::optional<float>(-1.5f));
    EXPECT_FALSE(parse({"--texture", "a.hdr", "--level", "all"}).options.textureLevel);
    for (const char* level : {"", "-1", "31", "some", "1.5"})
        expectError({"--texture", "a.ktx", "--level", level}, QStringLiteral("a whole number from 0 to 30, or all"));
    for (const char* stops : {"", "25", "-25", "nan", "bright"})
        expectError({"--texture", "a.ktx", "--exposure", stops}, QStringLiteral("a number from -24 to 24"));
    expectError({"--texture", ""}, QStringLiteral("a file name"));
    expectError({"--level", "1"}, QStringLiteral("wants --texture"));
    for (const QStringList& scene : {QStringList{"--builtin"}, QStringList{"--crowd", "3"}, QStringList{"--window"},
                                     QStringList{"a.obj"}, QStringList{"--textures", "4"}})
        expectError(QStringList{"--texture", "a.ktx"} + scene, QStringLiteral("--texture excludes a scene"));
}

TEST(OptionsTest, WhatIsSaidOfAnEnvironmentWantsOne)
{
    const QStringList withoutOne[] = {{"a.obj"},       {"--crowd", "3"}, {"--textures", "3"},
                                      {"--streamers"}, {"--no-env"},     {"--builtin", "--no-env"}};
    const QStringList sayings[] = {{"--exposure", "1"}, {"--specular", "ggx"}, {"--diffuse", "lambert"}};
    for (const QStringList& saying : sayings)
    {
        const QString wants = QStringLiteral("%1 wants --env").arg(saying[0]);
        for (const QStringList& scene : withoutOne)
        {
            expectError(scene + saying, wants);
            EXPECT_EQ(parse(scene + saying + QStringList{"--window"}).outcome, ParsedOptions::Outcome::Run)
                << "a key of the window switches one on";
        }
        EXPECT_EQ(parse(saying).outcome, ParsedOptions::Outcome::Run) << "of the sky of the built-in scene";
        EXPECT_EQ(parse(saying + QStringList{"--crowd", "3", "--env", "a.hdr"}).outcome, ParsedOptions::Outcome::Run);
    }
    for (const QStringList& saying : {QStringList{"--specular", "ggx"}, QStringList{"--diffuse", "lambert"}})
        expectError(QStringList{"--texture", "a.hdr"} + saying,
                    QStringLiteral("--texture and %1 exclude each other").arg(saying[0]));
    EXPECT_EQ(parse({"a.obj", "--window", "--exposure", "-2"}).options.settings.environment.exposure, -2.0f);
}

TEST(OptionsTest, BuiltInIsTaken)
{
    EXPECT_TRUE(parse({"--builtin"}).options.builtIn);
}

TEST(OptionsTest, EveryDrawIdWordHasItsValue)
{
    EXPECT_EQ(parse({"--draw-id", "auto"}).options.settings.drawIdCarrier, DrawIdCarrier::Automatic);
    EXPECT_EQ(parse({"--draw-id", "uniform"}).options.settings.drawIdCarrier, DrawIdCarrier::Uniform);
    EXPECT_EQ(parse({"--draw-id", "base-instance"}).options.settings.drawIdCarrier, DrawIdCarrier::BaseInstance);
}

TEST(OptionsTest, VersionIsShownAsText)
{
    for (const char* option : {"--version", "-v"})
    {
        const ParsedOptions parsed = parse({option});
        EXPECT_EQ(parsed.outcome, ParsedOptions::Outcome::ShowText);
        EXPECT_EQ(parsed.text, QStringLiteral("vrkview 1.2.3\n"));
    }
}

TEST(OptionsTest, HelpNamesEveryOptionButThoseForTests)
{
    const ParsedOptions parsed = parse({"--help"});
    EXPECT_EQ(parsed.outcome, ParsedOptions::Outcome::ShowText);
    for (const char* option :
         {"--output",      "--size",       "--window",  "--builtin",  "--azimuth",  "--elevation", "--up",
          "--samples",     "--draw-id",    "--carrier", "--manager",  "--textures", "--texture",   "--level",
          "--exposure",    "--debug",      "--crowd",   "--camera",   "--stats",    "--help",      "--version",
          "--shadows",     "--no-shadows", "--env",     "--specular", "--diffuse",  "--lights",    "--csm",
          "--shadow-maps", "--aa",         "--no-env",  "--gizmos",   "--streamers"})
        EXPECT_TRUE(parsed.text.contains(QLatin1String(option))) << option;
    EXPECT_FALSE(parsed.text.contains(QStringLiteral("--frames")));
    EXPECT_FALSE(parsed.text.contains(QStringLiteral("--press")));
}

TEST(OptionsTest, SizesThatAreNoSizeAreRejected)
{
    for (const char* size : {"", "x", "0x0", "0x10", "10x0", "-1x5", "10", "10x", "x10", "10x10x10", "10X10", " 10x10",
                             "1e3x10", "10.5x10", "99999999x1", "2000000x1", "+5x5"})
        expectError({"--size", size}, QStringLiteral("WIDTHxHEIGHT"));
}

TEST(OptionsTest, AnglesThatAreNoNumberInRangeAreRejected)
{
    for (const char* angle : {"", "nan", "inf", "-inf", "abc", "1,5", "90.1", "-91", "1e30"})
        expectError({"--elevation", angle}, QStringLiteral("a number from -90 to 90"));
    expectError({"--azimuth", "4000"}, QStringLiteral("a number from -3600 to 3600"));
}

TEST(OptionsTest, CountsThatAreNoWholeNumberInRangeAreRejected)
{
    for (const char* count : {"", "0", "-1", "65", "4.5", "four", "99999999999"})
        expectError({"--samples", count}, QStringLiteral("a whole number from 1 to 64"));
    for (const char* count : {"", "0", "-1", "100001", "many"})
        expectError({"--crowd", count}, QStringLiteral("a whole number from 1 to 100000"));
}

TEST(OptionsTest, UnknownWordsAreRejectedWithTheListOfKnownOnes)
{
    expectError({"--draw-id", "magic"}, QStringLiteral("one of auto, uniform, base-instance"));
    expectError({"--manager", "magic"}, QStringLiteral("one of sampler, array2d, array2d-bindless, bindless"));
    expectError({"--up", "Y"}, QStringLiteral("one of y, z"));
    expectError({"--carrier", "pigeon"}, QStringLiteral("one of ubo, uniform, buffer-texture, texture, ssbo"));
}

TEST(OptionsTest, WhatDoesNotFitTogetherIsRejected)
{
    expectError({"a.obj", "b.obj"}, QStringLiteral("more than one model"));
    expectError({"a.obj", "--builtin"}, QStringLiteral("exclude each other"));
    expectError({"--frames", "3"}, QStringLiteral("--window"));
    expectError({"--press", "S"}, QStringLiteral("--press needs --window"));
    expectError({"--window", "--press", ""}, QStringLiteral("a list of keys"));
    EXPECT_EQ(parse({"--window", "--press", "S, H"}).options.press, QStringLiteral("S, H"));
    expectError({"a.obj", "--crowd", "5"}, QStringLiteral("exclude each other"));
    expectError({"--builtin", "--crowd", "5"}, QStringLiteral("exclude each other"));
    expectError({"--camera", "front"}, QStringLiteral("needs a model"));
    expectError({"a.obj", "--camera", ""}, QStringLiteral("a name"));
    expectError({""}, QStringLiteral("empty"));
    expectError({"--output", ""}, QStringLiteral("a file name"));
}

TEST(OptionsTest, UnknownOptionsAndMissingValuesAreRejected)
{
    expectError({"--frobnicate"}, QStringLiteral("frobnicate"));
    expectError({"--output"}, QStringLiteral("--output"));
    expectError({"--window=yes"}, QStringLiteral("--window"));
}
