// SPDX-License-Identifier: MIT
#include "InstanceDataPlan.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "ParameterMechanism.h"
#include "ShaderProgram.h"
#include "TextureMechanism.h"
#include "UniformBufferMechanism.h"
#include "UniformMechanism.h"

#include <QTextStream>

#include <algorithm>
#include <array>
#include <vector>

namespace Harrow::Vrk
{
namespace
{

constexpr size_t kDefaultArraySize = 150;

constexpr size_t roundedUp(size_t size, size_t step)
{
    return (size + step - 1) / step * step;
}

template <typename Mechanism> std::shared_ptr<ParameterMechanism> newMechanism(const QString& planName)
{
    return std::make_shared<Mechanism>(planName);
}

using MechanismFactory = std::shared_ptr<ParameterMechanism> (*)(const QString& planName);

// One for each carrier, in the order of the enumeration.
constexpr MechanismFactory kMechanismFactories[] = {
    newMechanism<UniformBufferMechanism>, newMechanism<UniformMechanism>, newMechanism<BufferTextureMechanism>,
    newMechanism<TextureMechanism>, newMechanism<StorageBufferMechanism>};
static_assert(std::size(kMechanismFactories) == InstanceDataPlan::eStorageBufferMechanism + 1, "one for each carrier");

} // namespace

InstanceDataPlan::InstanceDataPlan(const QString& name)
    : _name(name),
      _arraySize(kDefaultArraySize),
      _arraySizeMax(kDefaultArraySize),
      _samplerIName(QStringLiteral("u_i%1Sampler").arg(name)),
      _samplerFName(QStringLiteral("u_f%1Sampler").arg(name))
{
}

InstanceDataPlan::InstanceDataPlan(const InstanceDataPlan& other) = default;
InstanceDataPlan& InstanceDataPlan::operator=(const InstanceDataPlan& other) = default;
InstanceDataPlan::~InstanceDataPlan() = default;

void InstanceDataPlan::addMember(DataType type, const QString& name)
{
    VRK_ASSERT_RETURN(type <= eMat4, , "Unknown type %u of member '%s' of plan '%s'", static_cast<unsigned>(type),
                      qPrintable(name), qPrintable(_name));
    _members[type].append(name);
    _types.insert(name, type);
    _hasTextures = _hasTextures || type == eTexture;
    _totalDataSize += dataSize(type);
}

// ---- settings ------------------------------------------------------------------------------------------------------

void InstanceDataPlan::setArraySize(size_t arraySize)
{
    VRK_ASSERT(false == _finalised,
               "InstanceDataPlan::setArraySize() can only be called before the plan has been finalised");
    _arraySize = arraySize;
}

void InstanceDataPlan::setMechanism(MechanismType mechanism)
{
    VRK_ASSERT(false == _finalised,
               "InstanceDataPlan::setMechanism() can only be called before the plan has been finalised");
    _mechanism = mechanism;
}

void InstanceDataPlan::setUseVec4Storage(bool useVec4Storage)
{
    VRK_ASSERT(false == _finalised,
               "InstanceDataPlan::setUseVec4Storage() can only be called before the plan has been finalised");
    _useVec4Storage = useVec4Storage;
}

// ---- the carrier ---------------------------------------------------------------------------------------------------

ParameterMechanism* InstanceDataPlan::parameterMechanism(MechanismType type)
{
    if (!_parameterMechanism)
    {
        VRK_ASSERT_RETURN(type < std::size(kMechanismFactories), nullptr, "Unknown mechanism %u for plan '%s'",
                          static_cast<unsigned>(type), qPrintable(_name));
        _parameterMechanism = kMechanismFactories[type](_name);
    }
    return _parameterMechanism.get();
}

bool InstanceDataPlan::bind(ShaderProgram* program, TextureManager* textureManager, InstanceDataCollection* collection)
{
    VRK_ASSERT_RETURN(nullptr != collection, false, "InstanceDataCollection is NULL on bind");
    ParameterMechanism* const carrier = parameterMechanism(_mechanism);
    return carrier && carrier->bind(program, textureManager, collection);
}

bool InstanceDataPlan::unbind(ShaderProgram* program, TextureManager* textureManager,
                              InstanceDataCollection* collection)
{
    VRK_ASSERT_RETURN(nullptr != collection, false, "InstanceDataCollection is NULL on unbind");
    ParameterMechanism* const carrier = parameterMechanism(_mechanism);
    return carrier && carrier->unbind(program, textureManager, collection);
}

// ---- queries -------------------------------------------------------------------------------------------------------

QString InstanceDataPlan::glslh() const
{
    return _glslh;
}

QString InstanceDataPlan::glslc() const
{
    return _glslc;
}

QString InstanceDataPlan::name() const
{
    return _name;
}

InstanceDataPlan::MechanismType InstanceDataPlan::mechanism() const
{
    return _mechanism;
}

size_t InstanceDataPlan::arraySize() const
{
    VRK_ASSERT(true == _finalised,
               "InstanceDataPlan::arraySize() can only be called after the plan has been finalised");
    return _arraySize;
}

size_t InstanceDataPlan::arraySizeMax() const
{
    return _arraySizeMax;
}

size_t InstanceDataPlan::totalDataSize() const
{
    return _totalDataSize;
}

QList<QString> InstanceDataPlan::memberNames() const
{
    return _offsets.keys();
}

bool InstanceDataPlan::contains(const QString& name) const
{
    return _types.contains(name);
}

int InstanceDataPlan::offset(const QString& name) const
{
    return _offsets.value(name, 0);
}

InstanceDataPlan::DataType InstanceDataPlan::dataType(const QString& name) const
{
    return _types.value(name, eTexture);
}

size_t InstanceDataPlan::dataSize(const QString& name) const
{
    return dataSize(dataType(name));
}

size_t InstanceDataPlan::dataSize(DataType type) const
{
    return ParameterMechanism::dataSize(type);
}

const QList<int>& InstanceDataPlan::textureTokenOffsets() const
{
    return _textureTokenOffsets;
}

QString InstanceDataPlan::samplerIName() const
{
    return _samplerIName;
}

QString InstanceDataPlan::samplerFName() const
{
    return _samplerFName;
}

bool InstanceDataPlan::supportsStorageMechanism()
{
    return openGlVersionSupported(4, 3) || hasGLExtension("GL_ARB_shader_storage_buffer_object");
}

// ---- making it final -----------------------------------------------------------------------------------------------

void InstanceDataPlan::finalise()
{
    VRK_ASSERT_RETURN(false == _finalised, , "Plan '%s' has already been finalised", qPrintable(_name));
    if (!parameterMechanism(_mechanism))
        return;
    const QList<DataType> sortedTypes = layOut();
    applyLimits();
    writeTexts(sortedTypes);
    _finalised = true;
}

/// Gives each member its place and the record its size. Returns the types in the order in which they lie.
QList<InstanceDataPlan::DataType> InstanceDataPlan::layOut()
{
    QList<DataType> sortedTypes = _members.keys();
    std::sort(sortedTypes.begin(), sortedTypes.end(), ParameterMechanism::compareByDataType);
    size_t accumlatedOffset = 0;
    for (const DataType type : std::as_const(sortedTypes))
    {
        for (const QString& name : std::as_const(_members[type]))
        {
            _offsets.insert(name, static_cast<int>(accumlatedOffset));
            if (type == eTexture)
                _textureTokenOffsets.append(static_cast<int>(accumlatedOffset));
            accumlatedOffset += dataSize(type);
        }
        if (_useVec4Storage && _parameterMechanism->useVec4Storage(type))
        {
            const size_t padding = roundedUp(accumlatedOffset, ParameterMechanism::_dataSizeVec4) - accumlatedOffset;
            accumlatedOffset += padding;
            _totalDataSize += padding;
        }
    }
    roundUpTotalDataSize();
    VRK_ASSERT(accumlatedOffset <= _totalDataSize, "%d != %d", static_cast<int>(accumlatedOffset),
               static_cast<int>(_totalDataSize));
    return sortedTypes;
}

/// Whole vectors. Booleans may leave a size that no step of 4 brings there.
void InstanceDataPlan::roundUpTotalDataSize()
{
    VRK_ASSERT(0 == (_totalDataSize & 3), "Total data size (%zu) for plan %s is no multiple of 4", _totalDataSize,
               qPrintable(_name));
    _totalDataSize = roundedUp(_totalDataSize, ParameterMechanism::_dataSizeVec4);
}

// ---- texts ---------------------------------------------------------------------------------------------------------

void InstanceDataPlan::writeTexts(const QList<DataType>& sortedTypes)
{
    QString prototypes;
    QString bodies;
    QTextStream prototypeStream(&prototypes);
    QTextStream bodyStream(&bodies);
    for (const DataType type : sortedTypes)
    {
        for (const QString& name : std::as_const(_members[type]))
        {
            const QString indexed = ParameterMechanism::glslFunctionHead(type, name, QStringLiteral("uint Index"));
            const QString current = ParameterMechanism::glslFunctionHead(type, name, QStringLiteral("void"));
            const auto offset = static_cast<size_t>(_offsets.value(name));
            bodyStream << _parameterMechanism->glslFunctionDefinition(type, name, _useVec4Storage, offset,
                                                                      _totalDataSize)
                       << "\n"
                       << current << "       { return " << ParameterMechanism::glslGetter(name)
                       << "( uint(getDrawID())); }\n\n";
            prototypeStream << indexed << ";\n" << current << ";\n";
        }
    }
    prototypeStream.flush();
    bodyStream.flush();
    writeHeader(prototypes);
    writeUnit(sortedTypes, bodies);
}

void InstanceDataPlan::writeHeader(const QString& prototypes)
{
    const QString guard = QStringLiteral("VRK_INSTANCEDATAPLAN_") + _name + QStringLiteral("_GLSLH");
    QString macroName = _name.toUpper();
    macroName.replace(QLatin1Char(' '), QLatin1Char('_'));
    QTextStream stream(&_glslh);
    stream << "#ifndef " << guard << "\n#define " << guard << "\n";
    if (_hasTextures)
        stream << "#include \"TextureManager.glslh\"\n";
    stream << prototypes << "#define " << macroName << "_ARRAY_SIZE " << static_cast<qulonglong>(_arraySize) << "\n"
           << "#endif // " << guard << "\n";
}

void InstanceDataPlan::writeUnit(const QList<DataType>& sortedTypes, const QString& bodies)
{
    QTextStream stream(&_glslc);
    if (_mechanism != eStorageBufferMechanism)
        stream << "#version 150\n";
    else if (openGlVersionSupported(4, 3))
        stream << "#version 430\n";
    else
    {
        stream << "#version 150\n";
        if (hasGLExtension("GL_ARB_shader_storage_buffer_object"))
            stream << "#extension GL_ARB_shader_storage_buffer_object: enable \n";
    }
    stream << "\n";
    if (_hasTextures)
        stream << "#include \"TextureManager.glslh\"\n";
    stream << "#include \"VrkUtilities.glslh\"\n\n"
           << _parameterMechanism->glslUniformDeclaration(sortedTypes, _members, _useVec4Storage, _arraySize) << "\n\n"
           << bodies;
}

// ---- checks against a program --------------------------------------------------------------------------------------

void InstanceDataPlan::assertShaderProgram(const ShaderProgram* program) const
{
    VRK_ASSERT_RETURN(nullptr != program, , "Shader Program is NULL on assertShaderProgram");
    const GLuint name = program->shaderProgramID();
    const QByteArray blockName = (QStringLiteral("u_") + _name + QStringLiteral("Uniform")).toLatin1();
    GLint blocks = 0;
    glGetProgramiv(name, GL_ACTIVE_UNIFORM_BLOCKS, &blocks);
    for (GLint block = 0; block < blocks; ++block)
    {
        std::array<char, 256> activeName = {};
        glGetActiveUniformBlockName(name, static_cast<GLuint>(block), static_cast<GLsizei>(activeName.size()), nullptr,
                                    activeName.data());
        if (blockName == activeName.data())
            assertBlock(name, static_cast<GLuint>(block));
    }
}

void InstanceDataPlan::assertBlock(unsigned int programName, unsigned int block) const
{
    GLint activeUniforms = 0;
    GLint blockSize = 0;
    glGetActiveUniformBlockiv(programName, block, GL_UNIFORM_BLOCK_ACTIVE_UNIFORMS, &activeUniforms);
    glGetActiveUniformBlockiv(programName, block, GL_UNIFORM_BLOCK_DATA_SIZE, &blockSize);

    // For a look in the debugger: nothing depends on the offsets.
    std::vector<GLint> indices(static_cast<size_t>(std::max(activeUniforms, 0)));
    if (!indices.empty())
    {
        glGetActiveUniformBlockiv(programName, block, GL_UNIFORM_BLOCK_ACTIVE_UNIFORM_INDICES, indices.data());
        const auto asked = std::min<size_t>(2 * static_cast<size_t>(_offsets.size()), indices.size());
        std::vector<GLint> offsets(indices.size());
        glGetActiveUniformsiv(programName, static_cast<GLsizei>(asked), reinterpret_cast<const GLuint*>(indices.data()),
                              GL_UNIFORM_OFFSET, offsets.data());
    }
    VRK_ASSERT(int(_arraySize * _totalDataSize) == blockSize,
               "CPP (%d * %d = %d) and GLSL (%d) for plan %s disagree on the size of the instance data buffer. Check "
               "alignment code",
               static_cast<int>(_arraySize), static_cast<int>(_totalDataSize),
               static_cast<int>(_arraySize * _totalDataSize), blockSize, qPrintable(_name));
}

} // namespace Harrow::Vrk
