// SPDX-License-Identifier: MIT
#include "UniformForm.h"

#include "RangedDataType.h"

#include <QGenericMatrix>
#include <QMetaType>
#include <QVariant>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Harrow::Vrk
{
namespace
{

constexpr const char* kMatrix3Name = "QMatrix3x3";
constexpr const char* kMatrix4x2Name = "QMatrix4x2";
constexpr const char* kMatrix2Name = "QMatrix2x2";
constexpr const char* kRangedFloatAlias = "Harrow::Vrk::RangedFloat";
constexpr const char* kRangedDoubleAlias = "Harrow::Vrk::RangedDouble";

// At load, so that an application can ask for the types by name before it has made a program.
[[maybe_unused]] const int kRegisteredTypes[] = {
    qRegisterMetaType<RangedFloat>(kRangedFloatAlias), qRegisterMetaType<RangedDouble>(kRangedDoubleAlias),
    qRegisterMetaType<QMatrix2x2>(kMatrix2Name),       qRegisterMetaType<QMatrix3x3>(kMatrix3Name),
    qRegisterMetaType<QMatrix4x2>(kMatrix4x2Name),
};

struct BuiltInRow
{
    int type;
    UniformForm form;
};

// An image holds no number, so its row sets 0: sampler unit 0, which is what is wanted for it.
constexpr BuiltInRow kBuiltIns[] = {
    {QMetaType::Bool, UniformForm::eInt},           {QMetaType::Int, UniformForm::eInt},
    {QMetaType::QImage, UniformForm::eInt},         {QMetaType::UInt, UniformForm::eUInt},
    {QMetaType::Double, UniformForm::eFloat},       {QMetaType::Float, UniformForm::eFloat},
    {QMetaType::QColor, UniformForm::eColor},       {QMetaType::QVector2D, UniformForm::eVector2},
    {QMetaType::QVector3D, UniformForm::eVector3},  {QMetaType::QVector4D, UniformForm::eVector4},
    {QMetaType::QMatrix4x4, UniformForm::eMatrix4},
};

struct NamedRow
{
    const char* name;
    /// The type that counts as well, whatever name it reports; null where the name alone decides.
    QMetaType (*type)();
    UniformForm form;
};

// Qt 6 reports a generic matrix as "QGenericMatrix<3,3,float>" and not by its usual name, so the type itself counts
// too. A ranged number counts by its alias alone: under its meta-type name it is meant to be an unknown type.
constexpr NamedRow kNamed[] = {
    {kMatrix3Name, &QMetaType::fromType<QMatrix3x3>, UniformForm::eMatrix3},
    {kMatrix4x2Name, &QMetaType::fromType<QMatrix4x2>, UniformForm::eMatrix4x2},
    {kMatrix2Name, &QMetaType::fromType<QMatrix2x2>, UniformForm::eMatrix2},
    {kRangedFloatAlias, nullptr, UniformForm::eFloatInRange},
    {kRangedDoubleAlias, nullptr, UniformForm::eDoubleInRange},
};

} // namespace

UniformForm uniformFormOf(const QVariant& value)
{
    const int type = value.typeId();
    const auto* const builtIn = std::find_if(std::begin(kBuiltIns), std::end(kBuiltIns),
                                             [type](const BuiltInRow& row) { return row.type == type; });
    if (builtIn != std::end(kBuiltIns))
        return builtIn->form;

    const QMetaType metaType = value.metaType();
    const char* const name = value.typeName();
    const auto* const named =
        std::find_if(std::begin(kNamed), std::end(kNamed),
                     [metaType, name](const NamedRow& row)
                     { return (row.type && metaType == row.type()) || (name && std::strcmp(name, row.name) == 0); });
    return named != std::end(kNamed) ? named->form : UniformForm::eNone;
}

} // namespace Harrow::Vrk
