// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "Diagnostics.h"
#include "GLContextTracker.h"
#include "GLFunctions.h"
#include "GLPlatform.h"
#include "GLUtilities.h"
#include "Shader.h"
#include "ShaderFile.h"
#include "ShaderProgramEntryPoints.h"
#include "ShaderReport.h"
#include "ShaderText.h"

#include <QList>
#include <QMessageLogger>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <QTime>

#include <utility>

namespace Harrow::Vrk
{
namespace
{

struct BoundPrograms
{
    QMutex mutex;
    QHash<void*, ShaderProgram*> byContext;
};

/// Never destroyed: programs may be deleted while the process ends.
BoundPrograms& boundPrograms()
{
    static auto* const programs = new BoundPrograms;
    return *programs;
}

void forgetBoundProgram(const ShaderProgram* program)
{
    BoundPrograms& bound = boundPrograms();
    const QMutexLocker lock(&bound.mutex);
    bound.byContext.removeIf([program](const auto& entry) { return entry.value() == program; });
}

/// Milliseconds between two times of day, the second one being the later even if midnight lies between them.
int elapsedMilliseconds(QTime start, QTime now)
{
    constexpr int kDay = 24 * 60 * 60 * 1000;
    const int elapsed = start.msecsTo(now);
    return elapsed < 0 ? elapsed + kDay : elapsed;
}

GLint programParameter(GLuint program, GLenum parameter, GLint preset)
{
    GLint value = preset;
    glGetProgramiv(program, parameter, &value);
    return value;
}

} // namespace

QTime (*ShaderProgram::_clock)() = &QTime::currentTime;

ShaderProgram::ShaderProgram(QObject* parent) : QObject(parent)
{
    shaderProgramEntryPoints().load();
    _parallelCompile = hasGLExtension("GL_ARB_parallel_shader_compile");
}

ShaderProgram::~ShaderProgram()
{
    clear();
    forgetBoundProgram(this);
}

// ---- building ------------------------------------------------------------------------------------------------------

bool ShaderProgram::compile()
{
    // Only the name is dropped, on purpose: whoever compiles anew clears first.
    _programID = kShaderProgramNotLinked;
    preprocess();
    for (Shader* const shader : std::as_const(_shaders))
        if (!shader->compile())
        {
            _log = shader->log();
            return false;
        }
    return true;
}

bool ShaderProgram::linkPre()
{
    if (_programID != kShaderProgramNotLinked)
        return true;

    _programID = glCreateProgram();
    if (!attachShaders())
    {
        deleteProgram();
        return false;
    }
    bindFragDataLocations();
    passTransformFeedbackVaryings();
    glLinkProgram(_programID);
    // The outcome is not asked for here, so that the driver can go on in the background.
    return true;
}

bool ShaderProgram::attachShaders()
{
    for (Shader* const shader : std::as_const(_shaders))
    {
        if (!shader->isCompiled() && !shader->compile())
            return false;
        glAttachShader(_programID, shader->shaderID());
    }
    return true;
}

void ShaderProgram::bindFragDataLocations()
{
    const bool dualSource = !_fragDataIndexs.isEmpty();
    auto& bindIndexed = shaderProgramEntryPoints().bindFragDataLocationIndexed;
    if (dualSource && !bindIndexed)
        bindIndexed = reinterpret_cast<PFN_glBindFragDataLocationIndexed>(
            getGLProcAddress("glBindFragDataLocationIndexed", false));

    for (qsizetype i = 0; i < _fragDataLocations.size(); ++i)
    {
        // Dual-source output exists for colour 0 alone, whose names take the place of the first location.
        if (i == 0 && dualSource && bindIndexed)
        {
            const QStringList& names = _fragDataIndexs.first();
            for (qsizetype j = 0; j < names.size(); ++j)
                bindIndexed(_programID, 0, static_cast<GLuint>(j), names[j].toLatin1().constData());
            continue;
        }
        if (i == 0 && dualSource)
            VRK_LOG_DEBUG("Trying to setup glBindFragDataLocationIndexed( %d, %d, , ). Func pointer is NULL, falling "
                          "back to glBindFragDataLocation()\n",
                          static_cast<int>(_programID), static_cast<int>(i));
        glBindFragDataLocation(_programID, static_cast<GLuint>(i), _fragDataLocations[i].toLatin1().constData());
    }
}

void ShaderProgram::passTransformFeedbackVaryings()
{
    if (_transformFeedbackVaryings.isEmpty())
        return;
    auto& passVaryings = shaderProgramEntryPoints().transformFeedbackVaryings;
    if (!passVaryings)
        passVaryings = reinterpret_cast<decltype(::_ptrc_glTransformFeedbackVaryings)>(
            getGLProcAddress("glTransformFeedbackVaryings", false));
    if (!passVaryings)
        return;

    QList<QByteArray> names;
    QList<const GLchar*> pointers;
    names.reserve(_transformFeedbackVaryings.size());
    pointers.reserve(_transformFeedbackVaryings.size());
    for (const QString& name : _transformFeedbackVaryings)
    {
        names.append(name.toLocal8Bit());
        pointers.append(names.last().constData());
    }
    passVaryings(_programID, toGLsizei(pointers.size()), pointers.constData(), _transformFeedbackBufferMode);
}

bool ShaderProgram::linkPreWait()
{
    if (!_parallelCompile)
        return true;

    constexpr int kTimeoutMilliseconds = 5000;
    constexpr int kReportMilliseconds = 1000;
    const QTime start = _clock();
    QTime lastReport = start;
    // A driver that writes nothing counts as finished.
    GLint status = programParameter(_programID, GL_COMPLETION_STATUS_ARB, 1);
    if (status == 1)
        return true;
    for (;;)
    {
        const QTime now = _clock();
        if (elapsedMilliseconds(start, now) > kTimeoutMilliseconds)
            break;
        if (elapsedMilliseconds(lastReport, now) > kReportMilliseconds)
        {
            lastReport = now;
            VRK_LOG_DEBUG("%p Sleep 0x%02X", static_cast<const void*>(this), static_cast<unsigned>(status));
        }
        QThread::yieldCurrentThread();
        status = programParameter(_programID, GL_COMPLETION_STATUS_ARB, status);
        if (status == 1)
            return true;
    }
    // No failure: linkPost blocks until the driver is done.
    VRK_LOG_DEBUG("%p TIMEOUT 0x%02X", static_cast<const void*>(this), static_cast<unsigned>(status));
    return true;
}

bool ShaderProgram::linkPost()
{
    if (programParameter(_programID, GL_LINK_STATUS, GL_FALSE) != GL_FALSE)
    {
        cacheReflection();
        clearSource();
        return true;
    }
    _log = readProgramLog(_programID);
    warnLineByLine(linkFailureReport(_log));
    dump();
    deleteProgram();
    return false;
}

bool ShaderProgram::link()
{
    return linkPre() && linkPost();
}

bool ShaderProgram::validate()
{
    if (_programID == kShaderProgramNotLinked)
        return false;
    // The link's outcome on purpose: glValidateProgram would judge the state of the moment.
    if (programParameter(_programID, GL_LINK_STATUS, GL_FALSE) != GL_FALSE)
        return true;
    _log = readProgramLog(_programID);
    warnLineByLine(validateFailureReport(_log));
    return false;
}

void ShaderProgram::preprocess()
{
    _preprocessed = true;
}

void ShaderProgram::dump() const
{
    QString report = QStringLiteral("Program %1\n").arg(_programID);
    for (const Shader* const shader : std::as_const(_shaders))
    {
        GLint type = 0;
        glGetShaderiv(shader->shaderID(), GL_SHADER_TYPE, &type);
        report += QStringLiteral("Shader 0x%1 %2\n").arg(type, 0, 16).arg(shader->shaderID());
        report += numberedLines(readShaderSource(shader->shaderID()));
    }
    warnLineByLine(report);
}

void ShaderProgram::cacheReflection()
{
    cacheVertexAttributes();
    cacheUniformLocations();
    cacheUniformBlockIndices();
}

void ShaderProgram::deleteProgram()
{
    glDeleteProgram(_programID);
    _programID = kShaderProgramNotLinked;
}

// ---- binding -------------------------------------------------------------------------------------------------------

bool ShaderProgram::bind()
{
    if (_programID == kShaderProgramNotLinked)
    {
        VRK_LOG_WARNING("Shader program is not linked");
        return false;
    }
    glUseProgram(_programID);
    void* const context = GLContextTracker::currentContext();
    BoundPrograms& bound = boundPrograms();
    const QMutexLocker lock(&bound.mutex);
    bound.byContext.insert(context, this);
    return true;
}

bool ShaderProgram::unbind()
{
    glUseProgram(0);
    void* const context = GLContextTracker::currentContext();
    BoundPrograms& bound = boundPrograms();
    const QMutexLocker lock(&bound.mutex);
    bound.byContext.remove(context);
    return true;
}

ShaderProgram* ShaderProgram::currentShaderProgram()
{
    void* const context = GLContextTracker::currentContext();
    BoundPrograms& bound = boundPrograms();
    const QMutexLocker lock(&bound.mutex);
    return bound.byContext.value(context, nullptr);
}

// ---- stages and settings -------------------------------------------------------------------------------------------

void ShaderProgram::addShader(int type, const QString& source, const QString& dumpPath)
{
    _preprocessed = false;
    auto* const shader = new Shader(static_cast<unsigned int>(type), source, _macroProcessor, nullptr);
    _shaders.insert(type, shader);
    if (!dumpPath.isEmpty())
        shader->dumpSourceCode(dumpPath);
}

void ShaderProgram::addShaderFromFile(int type, const QString& path)
{
    if (const auto source = readShaderFile(shaderFileDirectories(), path))
        addShader(type, *source, QString());
    else
        QMessageLogger().warning("Couldn't find shader source file '%s'", path.toUtf8().constData());
}

void ShaderProgram::clear()
{
    if (_programID != kShaderProgramNotLinked)
    {
        if (!GLPlatform::isProcessEnding())
            glDeleteProgram(_programID);
        _programID = kShaderProgramNotLinked;
    }
    _preprocessed = false;
    qDeleteAll(_shaders);
    _shaders.clear();
    // The caches stay. Whoever builds other sources takes a new object.
}

void ShaderProgram::clearSource()
{
    for (Shader* const shader : std::as_const(_shaders))
        shader->clearSource();
}

void ShaderProgram::setFragDataLocations(const QList<QString>& names)
{
    _fragDataLocations = names;
}

void ShaderProgram::setFragDataIndexs(const QList<QList<QString>>& names)
{
    _fragDataIndexs = names;
}

void ShaderProgram::setTransformFeedbackVaryings(const QList<QString>& names, unsigned int bufferMode)
{
    _transformFeedbackVaryings = names;
    _transformFeedbackBufferMode = bufferMode;
}

void ShaderProgram::setMacroProcessor(GLSLMacroProcessor* macroProcessor)
{
    _macroProcessor = macroProcessor;
}

GLSLMacroProcessor* ShaderProgram::getMacroProcessor()
{
    return _macroProcessor;
}

void ShaderProgram::dumpShaderSources(const QString& pattern) const
{
    QHash<int, int> counts;
    for (const Shader* const shader : std::as_const(_shaders))
    {
        const int type = shader->shaderType();
        const int number = counts[type]++;
        // By number and not by rank, so that a pattern may have one of the two alone.
        QString path = pattern;
        path.replace(QLatin1String("%1"), shaderTypeAbbreviation(static_cast<unsigned int>(type)));
        path.replace(QLatin1String("%2"), QString::number(number));
        shader->dumpSourceCode(path);
    }
}

bool ShaderProgram::isLinked() const
{
    return _programID != kShaderProgramNotLinked;
}

unsigned int ShaderProgram::shaderProgramID() const
{
    return _programID;
}

QString ShaderProgram::log() const
{
    return _log;
}

} // namespace Harrow::Vrk
