// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The ways of getting a plan's records into a shader. Each writes the GLSL that reads the records, and at draw time
/// uploads and binds them: the text is the contract for the data, so both stand in one class.

#include "Export.h"
#include "InstanceDataPlan.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSharedPointer>
#include <QString>

#include <cstddef>

namespace Harrow::Vrk
{

class BufferObject;
class InstanceDataCollection;
class ShaderProgram;
class Texture;
class TextureManager;
class UniformBufferObject;

/// Made by `InstanceDataPlan::parameterMechanism`, one for each plan, and shared by all collections of the plan: what
/// belongs to one collection lies in the collection. Binding needs the current context. The order of the virtual
/// operations is interface.
class VRKGL_EXPORT ParameterMechanism
{
public:
    /// `planName` goes into the names that the GLSL declares.
    explicit ParameterMechanism(const QString& planName);
    virtual ~ParameterMechanism();

    /// Uploads the collection's records if they have changed and makes them and the textures of their tokens reachable
    /// for `program`, which is bound. Program and manager may be null. False when there is no buffer to be had.
    virtual bool bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) = 0;
    virtual bool unbind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection) = 0;

    /// The accessor of one member: a head, and a body that fetches the value. `offset` and `totalDataSize` in bytes.
    virtual QString glslFunctionDefinition(InstanceDataPlan::DataType type, const QString& member, bool useVec4Storage,
                                           size_t offset, size_t totalDataSize) = 0;
    /// What the accessors read. Writes the members of each type in the order of `sortedTypes`.
    virtual QString glslUniformDeclaration(const QList<InstanceDataPlan::DataType>& sortedTypes,
                                           const QHash<InstanceDataPlan::DataType, QList<QString>>& members,
                                           bool useVec4Storage, size_t arraySize) = 0;
    /// Whether members of this type are packed into vectors when the plan asks for vec4 storage.
    virtual bool useVec4Storage(InstanceDataPlan::DataType type) const;

    /// \name The properties of the types
    /// 0, an empty text and false for a value outside the enumeration.
    ///@{
    /// Bytes in a record. Three components take the room of four.
    static size_t dataSize(InstanceDataPlan::DataType type);
    static size_t numberComponents(InstanceDataPlan::DataType type);
    static const char* glslType(InstanceDataPlan::DataType type);
    /// The type that a member is declared with where it stands in an array or a block.
    static const char* glslPaddedType(InstanceDataPlan::DataType type);
    /// The type of the vectors that vec4 storage packs it into.
    static const char* glslVec4StorageType(InstanceDataPlan::DataType type);
    static bool isIntegerType(InstanceDataPlan::DataType type);
    ///@}

    /// The order of members in a record: larger first, at equal size the higher enumerator first.
    static bool compareByDataType(const InstanceDataPlan::DataType& a, const InstanceDataPlan::DataType& b);

    /// The swizzle of `numComponents` components from `component` on, ".xy" and so on. Empty, after an assertion, when
    /// they do not fit into a vector; empty for other counts than 1 to 4.
    static QString glslAccessorString(size_t component, size_t numComponents);

    /// Bytes of one vector.
    static const size_t _dataSizeVec4;

    /// "get" and the member's name, its first letter in upper case.
    static QString glslGetter(const QString& member);
    /// Type, getter and arguments: the head of a member's accessor.
    static QString glslFunctionHead(InstanceDataPlan::DataType type, const QString& member, const QString& arguments);

protected:
    /// `glslFunctionHead` with the index of a record as its argument.
    static QString glslIndexedHead(InstanceDataPlan::DataType type, const QString& member);
    /// Where in a record a member lies, as a comment behind its accessor.
    static QString glslOffsetComment(InstanceDataPlan::DataType type, size_t offset);

    /// What a carrier keeps in a collection.
    struct Carried
    {
        /// All borrowed from the collection but `usage`, OpenGL's hint for uploads.
        const QByteArray& data;
        bool& dirty;
        QSharedPointer<Texture>& integerTexture;
        QSharedPointer<Texture>& floatTexture;
        int usage;
    };
    /// What the collection lends to its carrier.
    static Carried carried(InstanceDataCollection* collection);

    /// Lets the manager reach the textures of the collection's tokens, which are collected first if they are not known;
    /// and undoes it.
    static void bindTokens(TextureManager* textureManager, InstanceDataCollection* collection);
    static void unbindTokens(TextureManager* textureManager, InstanceDataCollection* collection);

    /// As it was given to the constructor.
    QString _planName;
};

} // namespace Harrow::Vrk
