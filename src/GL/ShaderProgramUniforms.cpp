// SPDX-License-Identifier: MIT
// Setting the uniforms of the bound program.
#include "ShaderProgram.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "RangedDataType.h"
#include "ShaderText.h"
#include "UniformForm.h"

#include <QColor>
#include <QGenericMatrix>
#include <QMatrix4x4>
#include <QVariant>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include <algorithm>
#include <iterator>
#include <vector>

namespace Harrow::Vrk
{
namespace
{

template <typename T> using SetArray = void (*)(GLint location, GLsizei count, const T* values);

// By tuple size, from 1.
constexpr SetArray<float> kSetFloats[] = {&glUniform1fv, &glUniform2fv, &glUniform3fv, &glUniform4fv};
constexpr SetArray<int> kSetInts[] = {&glUniform1iv, &glUniform2iv, &glUniform3iv, &glUniform4iv};
constexpr SetArray<unsigned int> kSetUInts[] = {&glUniform1uiv, &glUniform2uiv, &glUniform3uiv, &glUniform4uiv};

/// The list's numbers with zeros behind, as many as OpenGL may read for a count that is the list's length. Valid until
/// the next call on the same thread; memory is kept, so that a frame loop doesn't allocate.
template <typename T> const T* paddedValues(const QList<T>& values, int tupleSize)
{
    thread_local std::vector<T> padded;
    padded.assign(static_cast<std::size_t>(values.size()) * static_cast<std::size_t>(tupleSize), T());
    std::copy(values.cbegin(), values.cend(), padded.begin());
    return padded.data();
}

template <typename T, std::size_t MaxTuple>
bool setArray(int location, const QList<T>& values, int tupleSize, const SetArray<T> (&setters)[MaxTuple])
{
    if (location < 0)
        return false;
    if (tupleSize < 1 || tupleSize > static_cast<int>(MaxTuple))
        return true;
    // The count is not divided by the tuple size: one element of the list stands for one vector of the array.
    const T* const data = tupleSize == 1 ? values.constData() : paddedValues(values, tupleSize);
    setters[tupleSize - 1](location, toGLsizei(values.size()), data);
    return true;
}

struct ValueRow
{
    UniformForm form;
    void (*set)(GLint location, const QVariant& value);
};

// `value<T>()` reads a T as it is stored and converts anything else into a default-constructed T.
constexpr ValueRow kSetValue[] = {
    {UniformForm::eNone,
     [](GLint, const QVariant& value)
     {
         VRK_LOG_CRITICAL("VrkShaderProgram::setUniform is not implemented for type : %s",
                          value.isValid() ? value.typeName() : "");
     }},
    {UniformForm::eInt, [](GLint location, const QVariant& value) { glUniform1i(location, value.toInt()); }},
    {UniformForm::eUInt, [](GLint location, const QVariant& value) { glUniform1ui(location, value.toUInt()); }},
    {UniformForm::eFloat, [](GLint location, const QVariant& value) { glUniform1f(location, value.toFloat()); }},
    {UniformForm::eColor,
     [](GLint location, const QVariant& value)
     {
         const auto color = value.value<QColor>();
         glUniform4f(location, color.redF(), color.greenF(), color.blueF(), color.alphaF());
     }},
    {UniformForm::eVector2,
     [](GLint location, const QVariant& value)
     {
         const auto vector = value.value<QVector2D>();
         glUniform2f(location, vector.x(), vector.y());
     }},
    {UniformForm::eVector3,
     [](GLint location, const QVariant& value)
     {
         const auto vector = value.value<QVector3D>();
         glUniform3f(location, vector.x(), vector.y(), vector.z());
     }},
    {UniformForm::eVector4,
     [](GLint location, const QVariant& value)
     {
         const auto vector = value.value<QVector4D>();
         glUniform4f(location, vector.x(), vector.y(), vector.z(), vector.w());
     }},
    {UniformForm::eMatrix4, [](GLint location, const QVariant& value)
     { glUniformMatrix4fv(location, 1, GL_FALSE, value.value<QMatrix4x4>().constData()); }},
    {UniformForm::eMatrix3, [](GLint location, const QVariant& value)
     { glUniformMatrix3fv(location, 1, GL_FALSE, value.value<QMatrix3x3>().constData()); }},
    {UniformForm::eMatrix4x2, [](GLint location, const QVariant& value)
     { glUniformMatrix4x2fv(location, 1, GL_FALSE, value.value<QMatrix4x2>().constData()); }},
    {UniformForm::eMatrix2, [](GLint location, const QVariant& value)
     { glUniformMatrix2fv(location, 1, GL_FALSE, value.value<QMatrix2x2>().constData()); }},
    {UniformForm::eFloatInRange,
     [](GLint location, const QVariant& value) { glUniform1f(location, value.value<RangedFloat>().value); }},
    {UniformForm::eDoubleInRange, [](GLint location, const QVariant& value)
     { glUniform1f(location, static_cast<float>(value.value<RangedDouble>().value)); }},
};

constexpr bool isIndexedByForm()
{
    for (std::size_t i = 0; i < std::size(kSetValue); ++i)
        if (static_cast<std::size_t>(kSetValue[i].form) != i)
            return false;
    return true;
}
static_assert(isIndexedByForm(), "one row for each UniformForm, in its order");
static_assert(std::size(kSetValue) == static_cast<std::size_t>(UniformForm::eDoubleInRange) + 1);

} // namespace

bool ShaderProgram::setUniform(int location, int value)
{
    glUniform1i(location, value);
    return true;
}

bool ShaderProgram::setUniform(int location, unsigned int value)
{
    glUniform1ui(location, value);
    return true;
}

bool ShaderProgram::setUniform(int location, const QList<float>& values)
{
    return setArray(location, values, 1, kSetFloats);
}

bool ShaderProgram::setUniform(int location, const QList<float>& values, int tupleSize)
{
    return setArray(location, values, tupleSize, kSetFloats);
}

bool ShaderProgram::setUniform(int location, const QList<int>& values, int tupleSize)
{
    return setArray(location, values, tupleSize, kSetInts);
}

bool ShaderProgram::setUniform(int location, const QList<unsigned int>& values, int tupleSize)
{
    return setArray(location, values, tupleSize, kSetUInts);
}

bool ShaderProgram::setUniform(int location, const QVariant& value)
{
    kSetValue[static_cast<std::size_t>(uniformFormOf(value))].set(location, value);
    return true;
}

bool ShaderProgram::setUniform(const QString& name, const QList<float>& values)
{
    return setUniform(getUniformLocation(name), values);
}

bool ShaderProgram::setUniform(const QString& name, const QList<float>& values, int tupleSize)
{
    return setUniform(getUniformLocation(name), values, tupleSize);
}

bool ShaderProgram::setUniform(const QString& name, const QList<int>& values, int tupleSize)
{
    return setUniform(getUniformLocation(name), values, tupleSize);
}

bool ShaderProgram::setUniform(const QString& name, const QList<unsigned int>& values, int tupleSize)
{
    return setUniform(getUniformLocation(name), values, tupleSize);
}

bool ShaderProgram::setUniform(const QString& name, const QVariant& value)
{
    const int location = getUniformLocation(name);
    return location >= 0 && setUniform(location, value);
}

} // namespace Harrow::Vrk
