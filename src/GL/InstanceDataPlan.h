// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The one description, shared by CPU and GPU, of the record that each drawn instance carries: named members of
/// GLSL-like types. It gives the byte layout on the CPU and the GLSL that reads the same bytes on the GPU.

#include "Export.h"

#include <QHash>
#include <QList>
#include <QString>

#include <cstddef>
#include <memory>

namespace Harrow::Vrk
{

class InstanceDataCollection;
class ParameterMechanism;
class ShaderProgram;
class TextureManager;

/// A shader never sees how a record travels: for each member `foo` it has `getFoo(uint Index)` and, for the record of
/// the current draw, `getFoo(void)`. One of five carriers is chosen for each plan; nothing falls back by itself.
///
///     auto* const plan = new InstanceDataPlan("Object");
///     plan->addMember(InstanceDataPlan::eMat4, "ModelMatrix");
///     plan->addMember(InstanceDataPlan::eTexture, "ColorMap");
///     InstanceDataRegistry::Instance().registerPlan(plan); // owns and finalises it
///
/// A shader then says `#instancedata "Object"` and calls `getModelMatrix()`; the program gets `plan->glslc()` as one
/// more stage, "VrkUtilities.glslc" with its stage files, and the texture manager's file if there are textures.
///
/// The layout: larger types first, at equal size the higher enumerator first, names of one type in the order of their
/// adding, without a gap; the record's size is a multiple of 16. So no member needs padding under std140. Three
/// components take the room of four. A boolean takes one byte for each component, where every carrier reads four: it
/// reaches the shader only as the last and only boolean member, an `eBool`, and not under plain uniforms. An `eInt`
/// always does.
///
/// Built, registered once, and immutable afterwards. A copy shares the carrier with its source.
class VRKGL_EXPORT InstanceDataPlan
{
public:
    /// Types of members. `eTexture` is a texture token.
    enum DataType : unsigned int
    {
        eTexture = 0,
        eBool,
        eBVec2,
        eBVec3,
        eBVec4,
        eInt,
        eIVec2,
        eIVec3,
        eIVec4,
        eUInt,
        eUVec2,
        eUVec3,
        eUVec4,
        eFloat,
        eVec2,
        eVec3,
        eVec4,
        eMat4
    };

    /// The carrier: what brings the records of a collection into the shader.
    enum MechanismType : unsigned int
    {
        eUniformBufferMechanism = 0, ///< A uniform block. Few records on every driver.
        eUniformMechanism,       ///< An array of plain uniforms for each member, sent at every bind. Fewest records.
        eBufferTextureMechanism, ///< A buffer texture, seen by an integer and a float sampler.
        eTextureMechanism,       ///< Two 2D textures of one row, an integer and a float one.
        eStorageBufferMechanism  ///< A storage block without a size; see `supportsStorageMechanism`.
    };

    /// Without members. A copy has members and settings of its own.
    explicit InstanceDataPlan(const QString& name);
    InstanceDataPlan(const InstanceDataPlan& other);
    InstanceDataPlan& operator=(const InstanceDataPlan& other);
    ~InstanceDataPlan();

    /// Adds a member. A name that is added twice stands in the record twice, and counts as of the later type. A value
    /// outside the enumeration is reported and adds nothing.
    void addMember(DataType type, const QString& name);

    /// \name Settings
    /// Before the plan is registered; later they are reported, stored, and without effect on the texts.
    ///@{
    /// How many records the GLSL declares: a wish, which the driver's limits bring down. 150 at the start.
    void setArraySize(size_t arraySize);
    void setMechanism(MechanismType mechanism);
    /// Packs the members of each type into whole vectors of 16 bytes, `mat4` apart. For the two kinds of block alone.
    void setUseVec4Storage(bool useVec4Storage);
    ///@}

    /// Bring a collection's records to `program`, and undo it. Program and manager may be null; without a collection
    /// it is reported and false. See `InstanceDataCollection::bind`.
    bool bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection);
    bool unbind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection);

    /// The header that `#instancedata` brings into a shader: the accessors' prototypes and the number of records as
    /// `<NAME>_ARRAY_SIZE`. Empty before the plan is registered, like the next one.
    QString glslh() const;
    /// The unit to be added to the program as a stage of its own, for each stage that calls accessors.
    QString glslc() const;

    /// What the plan was made with, and what was set.
    QString name() const;
    MechanismType mechanism() const;
    /// Number of records that the GLSL declares. Reported before the plan is registered.
    size_t arraySize() const;
    /// What the driver could declare; the texture carrier leaves it at 150.
    size_t arraySizeMax() const;
    /// Bytes of one record.
    size_t totalDataSize() const;
    /// In no particular order; empty before the plan is registered.
    QList<QString> memberNames() const;
    bool contains(const QString& name) const;
    /// Bytes from the start of a record; 0 for an unknown name.
    int offset(const QString& name) const;
    /// `eTexture` for an unknown name.
    DataType dataType(const QString& name) const;
    /// Bytes; those of `eTexture` for an unknown name.
    size_t dataSize(const QString& name) const;
    size_t dataSize(DataType type) const;
    /// Offsets of the members that are tokens.
    const QList<int>& textureTokenOffsets() const;
    /// Names of the samplers of the two texture carriers, for integers and for floats.
    QString samplerIName() const;
    QString samplerFName() const;

    /// The carrier's implementation, made at the first call and for the type of that call. Belongs to the plan.
    ParameterMechanism* parameterMechanism(MechanismType type);

    /// Reports when the plan's uniform block in a linked program has another size than the records that it holds.
    /// Does nothing for a program without such a block.
    void assertShaderProgram(const ShaderProgram* program) const;

    /// Whether the current context has storage blocks: OpenGL 4.3 or GL_ARB_shader_storage_buffer_object.
    static bool supportsStorageMechanism();

private:
    friend class InstanceDataRegistry;
    friend struct InstanceDataPlanTestAccess;

    void finalise();
    QList<DataType> layOut();
    void roundUpTotalDataSize();
    void writeTexts(const QList<DataType>& sortedTypes);
    void writeHeader(const QString& prototypes);
    void writeUnit(const QList<DataType>& sortedTypes, const QString& bodies);
    void applyLimits();
    void limitArraySize(const char* carrier, size_t maximum);
    void logLimits(const char* carrier, int size, int maximum) const;
    void limitToBufferTexture();
    void limitToUniformBlock();
    void limitToUniforms();
    void checkTextureSize() const;
    void limitToStorageBlock();
    void getGLParameter(unsigned int parameter, int* value) const;
    void assertBlock(unsigned int programName, unsigned int block) const;

    bool _finalised = false;
    bool _hasTextures = false;
    QString _name;
    QHash<DataType, QList<QString>> _members;
    QString _glslh;
    QString _glslc;
    QHash<QString, int> _offsets;
    QHash<QString, DataType> _types;
    QList<int> _textureTokenOffsets;
    size_t _totalDataSize = 0;
    size_t _arraySize;
    size_t _arraySizeMax;
    MechanismType _mechanism = eUniformBufferMechanism;
    bool _useVec4Storage = false;
    QString _samplerIName;
    QString _samplerFName;
    std::shared_ptr<ParameterMechanism> _parameterMechanism; // shared, so that a copy can go before or after its source
};

} // namespace Harrow::Vrk
