// SPDX-License-Identifier: MIT
#include "PrefilteredEnvMapPass.h"

#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "FullscreenQuad.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"

#include <QMessageLogger>
#include <QString>

#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

namespace Harrow::Vrk::Prefilter
{
namespace
{

constexpr char kNoise[] = "noise2D.glslc";
constexpr char kImportanceSample[] = "ImportanceSample.glslc";
constexpr char kCubeVertex[] = "prefilteredEnvMapCubeVS.glslc";
constexpr char kCubeFragment[] = "prefilteredEnvMapCubeFS.glslc";
constexpr char kLatLongVertex[] = "prefilteredEnvMapVS.glslc";
constexpr char kLatLongFragment[] = "prefilteredEnvMapFS.glslc";
constexpr char kTableVertex[] = "preintegratedBRDFTableVS.glslc";
constexpr char kTableFragment[] = "preintegratedBRDFTableFS.glslc";

struct ProgramRow
{
    ProgramKind kind;
    const char* words; // in front of a failure's message
    const char* vertexFile;
    const char* fragmentFile;
};

constexpr ProgramRow kPrograms[] = {
    {ProgramKind::eCube, "prefilteredEnvMap", kCubeVertex, kCubeFragment},
    {ProgramKind::eLatLong, "prefilteredEnvMap", kLatLongVertex, kLatLongFragment},
    {ProgramKind::eTable, "preintegratedBRDFTable", kTableVertex, kTableFragment},
};

constexpr bool isIndexedByKind()
{
    for (std::size_t i = 0; i < std::size(kPrograms); ++i)
        if (static_cast<std::size_t>(kPrograms[i].kind) != i)
            return false;
    return true;
}
static_assert(isIndexedByKind(), "one row for each ProgramKind, in its order");

// ---- long loops ----------------------------------------------------------------------------------------------------

// llvmpipe ends the loops of a shader, without a word, when all of them together have had this many turns. More samples
// than that are taken by writing several into a turn, which costs it time to compile: a third of a minute for the 129
// of a map of 4096 by 2048 texels, where each texel of the result then takes half a second.
constexpr unsigned kLlvmpipeTurns = 65535;
constexpr unsigned kSamplesOfATurnMax = 1024;

bool endsLoopsEarly()
{
    const auto* const renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    return renderer != nullptr && std::strstr(renderer, "llvmpipe") != nullptr;
}

unsigned samplesOfATurn(unsigned samples)
{
    if (samples <= kLlvmpipeTurns || !endsLoopsEarly())
        return 1;
    return (samples - 1) / kLlvmpipeTurns + 1;
}

} // namespace

std::unique_ptr<ShaderProgram> buildProgram(ProgramKind kind, ShadingModel model, unsigned samples, bool samplesTexels)
{
    const ProgramRow& row = kPrograms[static_cast<std::size_t>(kind)];
    const unsigned turnSamples = samplesOfATurn(samples);
    if (turnSamples > kSamplesOfATurnMax)
    {
        QMessageLogger().warning("%s can take %u samples on this driver, not %u", row.words,
                                 kLlvmpipeTurns * kSamplesOfATurnMax, samples);
        return nullptr;
    }
    GLSLMacroProcessor processor;
    processor.addDefine(QStringLiteral("VRK_BRDF"), QString::number(int(model)));
    if (samplesTexels)
        processor.addDefine(QStringLiteral("SOLID_SAMPLING"), QStringLiteral("1"));
    if (turnSamples > 1)
        processor.addMacro(QStringLiteral("SAMPLES_OF_A_TURN"),
                           QStringLiteral("TAKE_SAMPLE\n").repeated(static_cast<qsizetype>(turnSamples)));

    auto program = std::make_unique<ShaderProgram>();
    program->setMacroProcessor(&processor);
    program->setFragDataLocations({QStringLiteral("out_FragColor")});
    program->addShaderFromFile(GL_VERTEX_SHADER, QString::fromLatin1(row.vertexFile));
    for (const char* const file : {kNoise, kImportanceSample, row.fragmentFile})
        program->addShaderFromFile(GL_FRAGMENT_SHADER, QString::fromLatin1(file));
    if (!program->compile())
    {
        QMessageLogger().warning("%s shader program failed to compile", row.words);
        return nullptr;
    }
    if (!program->link())
    {
        QMessageLogger().warning("%s shader program failed to link", row.words);
        return nullptr;
    }
    program->setMacroProcessor(nullptr);
    program->bind();
    return program;
}

SavedViewport::SavedViewport()
{
    glGetIntegerv(GL_VIEWPORT, _viewport);
}

void SavedViewport::restore() const
{
    glViewport(_viewport[0], _viewport[1], _viewport[2], _viewport[3]);
}

SavedFramebuffers::SavedFramebuffers()
{
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &_drawing);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &_reading);
}

void SavedFramebuffers::restore() const
{
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(_drawing));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(_reading));
}

Pass::Pass(std::unique_ptr<ShaderProgram> program)
    : _framebuffer(std::make_unique<FramebufferObject>(nullptr)), _program(std::move(program))
{
    _framebuffer->bind();
    _quad = newFullscreenQuadFor(*_program, "prefilter");
    if (_quad)
        _quad->bind();
}

Pass::~Pass() = default;

bool Pass::isReady() const
{
    return !_quad.isNull();
}

ShaderProgram& Pass::program()
{
    return *_program;
}

FramebufferObject& Pass::framebuffer()
{
    return *_framebuffer;
}

void Pass::draw()
{
    _quad->draw(_program.get());
    glFlush();
}

void Pass::unbind()
{
    if (_quad)
        _quad->unbind();
    _framebuffer->unbind();
    _program->unbind();
}

} // namespace Harrow::Vrk::Prefilter
