// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The stages that use SMAA.glslh, in all forms that the header has.

#include "SMAATestTools.h"

#include <QList>
#include <QString>

namespace Harrow::Vrk::Test
{

/// How a stage includes the header.
struct Form
{
    int glsl = 3; // SMAA_GLSL_3 or SMAA_GLSL_4
    QString preset = QStringLiteral("SMAA_PRESET_HIGH");
    bool predication = false;
    bool reprojection = false;
};

inline QString stage(const Form& form, bool isVertex, const QString& text)
{
    const QString head =
        QStringLiteral("#version %1\n#define SMAA_GLSL_%2\n#define %3\n#define SMAA_PREDICATION %4\n"
                       "#define SMAA_REPROJECTION %5\n#define SMAA_INCLUDE_VS %6\n#define SMAA_INCLUDE_PS %7\n"
                       "uniform vec4 u_Metrics;\n#define SMAA_RT_METRICS u_Metrics\n#include \"SMAA.glslh\"\n")
            .arg(form.glsl == 4 ? 400 : 150)
            .arg(form.glsl)
            .arg(form.preset)
            .arg(int(form.predication))
            .arg(int(form.reprojection))
            .arg(int(isVertex))
            .arg(int(!isVertex));
    return GLSLMacroProcessor::process(head + text, nullptr);
}

/// A vertex stage that covers the picture and calls one of the header's functions for it.
inline QString vertexStage(const Form& form, const QString& outputs, const QString& call)
{
    return stage(
        form, true,
        QStringLiteral("out vec2 vo_TexCoord;\n") + outputs +
            QStringLiteral("\nvoid main()\n{\n    vo_TexCoord = 2.0 * vec2(gl_VertexID & 1, gl_VertexID >> 1);\n"
                           "    gl_Position = vec4(2.0 * vo_TexCoord - 1.0, 0.0, 1.0);\n    ") +
            call + QStringLiteral(";\n}\n"));
}

inline QString fragmentStage(const Form& form, const QString& inputs, const QString& expression)
{
    return stage(form, false,
                 QStringLiteral("in vec2 vo_TexCoord;\n") + inputs +
                     QStringLiteral("\nout vec4 o;\nvoid main()\n{\n    o = ") + expression + QStringLiteral(";\n}\n"));
}

struct Stages
{
    QString vertex;
    QString fragment;
};

inline const char* functionOf(SMAAEdges kind)
{
    return kind == SMAAEdges::Luma    ? "SMAALumaEdgeDetectionPS"
           : kind == SMAAEdges::Color ? "SMAAColorEdgeDetectionPS"
                                      : "SMAADepthEdgeDetectionPS";
}

inline Stages edgeStages(const Form& form, SMAAEdges kind)
{
    const bool isPredicated = form.predication && kind != SMAAEdges::Depth;
    return {vertexStage(form, QStringLiteral("out vec4 vo_Offset[3];"),
                        QStringLiteral("SMAAEdgeDetectionVS(vo_TexCoord, vo_Offset)")),
            fragmentStage(
                form, QStringLiteral("in vec4 vo_Offset[3];\nuniform sampler2D u_Color;\nuniform sampler2D u_Other;"),
                QStringLiteral("vec4(%1(vo_TexCoord, vo_Offset, u_Color%2), 0.0, 0.0)")
                    .arg(QLatin1String(functionOf(kind)), isPredicated ? QStringLiteral(", u_Other") : QString()))};
}

inline Stages weightStages(const Form& form)
{
    return {
        vertexStage(form, QStringLiteral("out vec2 vo_PixCoord;\nout vec4 vo_Offset[3];"),
                    QStringLiteral("SMAABlendingWeightCalculationVS(vo_TexCoord, vo_PixCoord, vo_Offset)")),
        fragmentStage(form,
                      QStringLiteral("in vec2 vo_PixCoord;\nin vec4 vo_Offset[3];\nuniform sampler2D u_Edges;\n"
                                     "uniform sampler2D u_Area;\nuniform sampler2D u_Search;\n"
                                     "uniform vec4 u_Subsample;"),
                      QStringLiteral("SMAABlendingWeightCalculationPS(vo_TexCoord, vo_PixCoord, vo_Offset, u_Edges, "
                                     "u_Area, u_Search, u_Subsample)"))};
}

inline QString velocityArgument(const Form& form)
{
    return form.reprojection ? QStringLiteral(", u_Velocity") : QString();
}

inline Stages blendStages(const Form& form)
{
    return {
        vertexStage(form, QStringLiteral("out vec4 vo_Offset;"),
                    QStringLiteral("SMAANeighborhoodBlendingVS(vo_TexCoord, vo_Offset)")),
        fragmentStage(form,
                      QStringLiteral("in vec4 vo_Offset;\nuniform sampler2D u_Color;\nuniform sampler2D u_Weights;\n"
                                     "uniform sampler2D u_Velocity;"),
                      QStringLiteral("SMAANeighborhoodBlendingPS(vo_TexCoord, vo_Offset, u_Color, u_Weights%1)")
                          .arg(velocityArgument(form)))};
}

inline Stages resolveStages(const Form& form)
{
    return {coveringVertexStage(),
            fragmentStage(
                form,
                QStringLiteral("uniform sampler2D u_Current;\nuniform sampler2D u_Previous;\n"
                               "uniform sampler2D u_Velocity;"),
                QStringLiteral("SMAAResolvePS(vo_TexCoord, u_Current, u_Previous%1)").arg(velocityArgument(form)))};
}

inline Stages separateStages(const Form& form)
{
    return {coveringVertexStage(),
            stage(form, false,
                  QStringLiteral("in vec2 vo_TexCoord;\nuniform sampler2DMS u_Color;\nout vec4 o[2];\nvoid main()\n{\n"
                                 "    SMAASeparatePS(gl_FragCoord, vo_TexCoord, o[0], o[1], u_Color);\n}\n"))};
}

inline QList<Stages> allStages(const Form& form)
{
    return {edgeStages(form, SMAAEdges::Luma),
            edgeStages(form, SMAAEdges::Color),
            edgeStages(form, SMAAEdges::Depth),
            weightStages(form),
            blendStages(form),
            resolveStages(form),
            separateStages(form)};
}

inline QList<Form> allForms()
{
    QList<Form> forms;
    for (const int glsl : {3, 4})
        for (const SMAASettings& settings : kSMAAPresets)
            for (const bool predication : {false, true})
                for (const bool reprojection : {false, true})
                    forms.append({glsl, QLatin1String(settings.preset), predication, reprojection});
    return forms;
}

} // namespace Harrow::Vrk::Test
