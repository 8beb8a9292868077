// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Records in plain uniforms: for each member an array over all records, sent at every bind, since uniforms belong to a
/// program. For small plans. Not installed.

#include "ParameterMechanism.h"

#include <QMap>

namespace Harrow::Vrk
{

class UniformMechanism : public ParameterMechanism
{
public:
    explicit UniformMechanism(const QString& planName);

    bool bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) override;
    bool unbind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) override;
    QString glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member, bool useVec4Storage,
                                   size_t offset, size_t totalDataSize) override;
    QString glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& sortedTypes,
                                   const QHash<InstanceDataPlan::DataType, QList<QString>>& members,
                                   bool useVec4Storage, size_t arraySize) override;
    bool useVec4Storage(InstanceDataPlan::DataType type) const override;

private:
    struct Member
    {
        QString uniformName;
        InstanceDataPlan::DataType type;
    };

    void sendMember(int location, const QString& name, InstanceDataPlan::DataType type,
                    const InstanceDataCollection& collection);

    QMap<QString, Member> _memberTypes; // by name
    QByteArray _packed;                 // kept between binds for its room
};

} // namespace Harrow::Vrk
