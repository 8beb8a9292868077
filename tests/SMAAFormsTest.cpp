// SPDX-License-Identifier: MIT
//
// That the header of SMAA compiles in all its forms: languages, presets, kinds of edge detection, predication and
// reprojection, for both stages; and that it says what is missing.

#include "SMAAStages.h"

#include "GLUtilities.h"

#include <gtest/gtest.h>

namespace Harrow::Vrk::Test
{

// ---- by the validator ----------------------------------------------------------------------------------------------

TEST(SMAAForms, AllFormsCompileForAllStages)
{
    QList<std::pair<QString, QString>> texts;
    for (const Form& form : allForms())
    {
        // All vertex functions in one text and all fragment functions in another, as they stand in the header.
        const QString vertex = stage(form, true,
                                     QStringLiteral("void main()\n{\n    vec4 three[3];\n    vec4 one;\n    vec2 two;\n"
                                                    "    SMAAEdgeDetectionVS(vec2(0.5), three);\n"
                                                    "    SMAABlendingWeightCalculationVS(vec2(0.5), two, three);\n"
                                                    "    SMAANeighborhoodBlendingVS(vec2(0.5), one);\n"
                                                    "    gl_Position = one + three[0] + two.xyxy;\n}\n"));
        const QString other = form.predication ? QStringLiteral(", t") : QString();
        const QString velocity = form.reprojection ? QStringLiteral(", t") : QString();
        const QString fragment =
            stage(form, false,
                  QStringLiteral("uniform sampler2D t;\nuniform sampler2DMS m;\nout vec4 o[2];\nvoid main()\n{\n"
                                 "    vec4 f[3] = vec4[3](vec4(0.0), vec4(0.1), vec4(0.2));\n    vec2 c = vec2(0.5);\n"
                                 "    SMAASeparatePS(gl_FragCoord, c, o[0], o[1], m);\n"
                                 "    o[0].rg += SMAALumaEdgeDetectionPS(c, f, t%1);\n"
                                 "    o[0].rg += SMAAColorEdgeDetectionPS(c, f, t%1);\n"
                                 "    o[0].rg += SMAADepthEdgeDetectionPS(c, f, t);\n"
                                 "    o[0] += SMAABlendingWeightCalculationPS(c, c, f, t, t, t, vec4(0.0));\n"
                                 "    o[0] += SMAANeighborhoodBlendingPS(c, f[0], t, t%2);\n"
                                 "    o[0] += SMAAResolvePS(c, t, t%2);\n}\n")
                      .arg(other, velocity));
        texts.append({QStringLiteral("vert"), vertex});
        texts.append({QStringLiteral("frag"), fragment});
    }
    // All in one run of the validator, which says which of them fails by its place in the list.
    const Verdict verdict = validate({}, texts);
    EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
    EXPECT_EQ(texts.size(), 80);
}

TEST(SMAAForms, TheSwitchesLeaveStagesOut)
{
    const auto text = [](bool hasVertex, bool hasFragment, const QString& call)
    {
        return GLSLMacroProcessor::process(
            QStringLiteral(
                "#version 150\n#define SMAA_GLSL_3\n#define SMAA_RT_METRICS vec4(1.0)\n"
                "#define SMAA_INCLUDE_VS %1\n#define SMAA_INCLUDE_PS %2\n#include \"SMAA.glslh\"\n"
                "uniform sampler2D t;\nout vec4 o;\nvoid main()\n{\n    o = vec4(0.0);\n    vec4 f[3];\n    %3;\n}\n")
                .arg(int(hasVertex))
                .arg(int(hasFragment))
                .arg(call),
            nullptr);
    };
    const QString vertexCall = QStringLiteral("SMAAEdgeDetectionVS(vec2(0.5), f)");
    const QString fragmentCall = QStringLiteral("o.rg = SMAADepthEdgeDetectionPS(vec2(0.5), f, t)");
    const QString frag = QStringLiteral("frag");
    EXPECT_VALID({}, {frag, text(true, true, vertexCall)});
    EXPECT_VALID({}, {frag, text(true, true, fragmentCall)});
    EXPECT_VALID({}, {frag, text(true, false, vertexCall)});
    EXPECT_VALID({}, {frag, text(false, true, fragmentCall)});
    EXPECT_FALSE(validate({}, {{frag, text(false, true, vertexCall)}}).good());
    EXPECT_FALSE(validate({}, {{frag, text(true, false, fragmentCall)}}).good());
}

TEST(SMAAForms, WhatTheIncluderHasToSetIsAskedFor)
{
    const auto verdict = [](const char* defines)
    {
        return validate(
            {}, {{QStringLiteral("frag"),
                  GLSLMacroProcessor::process(QStringLiteral("#version 150\n") + QLatin1String(defines) +
                                                  QStringLiteral("#include \"SMAA.glslh\"\nvoid main()\n{\n}\n"),
                                              nullptr)}});
    };
    EXPECT_TRUE(verdict("#define SMAA_GLSL_3\n#define SMAA_RT_METRICS vec4(1.0)\n").good());
    EXPECT_TRUE(verdict("#define SMAA_GLSL_3\n").output.contains(QStringLiteral("SMAA wants SMAA_RT_METRICS")));
    EXPECT_TRUE(
        verdict("#define SMAA_RT_METRICS vec4(1.0)\n").output.contains(QStringLiteral("SMAA wants SMAA_GLSL_3")));
}

TEST(SMAAForms, SettingsOfTheIncluderGoBeforeTheDefaults)
{
    const QString text = GLSLMacroProcessor::process(
        QStringLiteral(
            "#version 150\n#define SMAA_GLSL_3\n#define SMAA_RT_METRICS vec4(1.0)\n"
            "#define SMAA_THRESHOLD 0.25\n#define SMAA_MAX_SEARCH_STEPS 5\n#define SMAA_MAX_SEARCH_STEPS_DIAG 6\n"
            "#define SMAA_CORNER_ROUNDING 50\n#include \"SMAA.glslh\"\n"
            "#if SMAA_MAX_SEARCH_STEPS != 5 || SMAA_MAX_SEARCH_STEPS_DIAG != 6 || SMAA_CORNER_ROUNDING != 50\n"
            "#error changed\n#endif\nconst float t = SMAA_THRESHOLD;\nvoid main()\n{\n}\n"),
        nullptr);
    const Verdict verdict = validate({QStringLiteral("-E")}, {{QStringLiteral("frag"), text}});
    EXPECT_TRUE(verdict.good()) << verdict.output.toStdString();
    EXPECT_TRUE(verdict.output.contains(QStringLiteral("const float t = 0.25")));
}

// ---- by a driver ---------------------------------------------------------------------------------------------------

namespace
{

class SMAAFormsGL : public GLSLPassTest
{
};

} // namespace

TEST_F(SMAAFormsGL, AllFormsLink)
{
    int linkedForms = 0;
    for (const Form& form : allForms())
    {
        if (form.glsl == 4 && !openGlVersionSupported(4, 0))
            continue;
        for (const Stages& stages : allStages(form))
            EXPECT_TRUE(linked(stages.vertex, {stages.fragment})) << form.preset.toStdString() << " " << form.glsl;
        ++linkedForms;
    }
    EXPECT_EQ(linkedForms, openGlVersionSupported(4, 0) ? 40 : 20);
}

} // namespace Harrow::Vrk::Test
