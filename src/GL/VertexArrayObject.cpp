// SPDX-License-Identifier: MIT
#include "VertexArrayObject.h"

#include "BufferObject.h"
#include "BufferOffset.h"
#include "Diagnostics.h"
#include "GLPlatform.h"
#include "ShaderProgram.h"

#include <QHash>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

constexpr GLenum kSupportedTypes[] = {GL_UNSIGNED_BYTE, GL_UNSIGNED_SHORT, GL_INT,
                                      GL_UNSIGNED_INT,  GL_FLOAT,          GL_HALF_FLOAT};

// All types between the two are integers.
constexpr GLenum kFirstIntegerType = GL_BYTE;
constexpr GLenum kLastIntegerType = GL_UNSIGNED_INT;
static_assert(kFirstIntegerType == 0x1400 && kLastIntegerType == 0x1405);

constexpr size_t kBytesPerAttributeRecord = 64;

int numAlive = 0;

// Whether the remainder of the two can be had at all.
constexpr bool canDivide(int valueCount, int valuesPerVertex)
{
    return valuesPerVertex != 0 && !(valuesPerVertex == -1 && valueCount == std::numeric_limits<int>::min());
}

} // namespace

VertexArrayObject::VertexArrayObject(QObject* parent) : QObject(parent)
{
    GLint attributeCount = 0;
    glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &attributeCount);
    _attributeNames.resize(std::max(attributeCount, 0));
    ++numAlive;
}

VertexArrayObject::~VertexArrayObject()
{
    destroy();
    --numAlive;
    VRK_ASSERT(false == this->_vaoBound, "Vertex Array Object is bound during class destructor");
    VRK_ASSERT(0u == this->_vao, "Vertex Array Object needs to be destroied before class destructor");
}

bool VertexArrayObject::create()
{
    VRK_ASSERT_RETURN(0u == this->_vao, false, "Vertex Array Object is not NULL on create");
    VRK_ASSERT_RETURN(false == this->_vaoBound, false, "Vertex Array Object is already bound on create");
    glGenVertexArrays(1, &_vao);
    return true;
}

bool VertexArrayObject::destroy()
{
    VRK_ASSERT_RETURN(false == this->_vaoBound, false, "Vertex Array Object is already bound on destroy");
    if (_vao != 0)
    {
        // At exit the context, or the driver itself, may be gone.
        if (!GLPlatform::isProcessEnding())
            glDeleteVertexArrays(1, &_vao);
        _vao = 0;
    }
    return true;
}

bool VertexArrayObject::bind()
{
    if (_vao == 0)
        create();
    VRK_ASSERT_RETURN(0u != this->_vao, false, "Vertex Array Object is NULL on bind");
    VRK_ASSERT_RETURN(false == this->_vaoBound, false, "Vertex Array Object is already bound on bind");
    glBindVertexArray(_vao);
    _vaoBound = true;
    return true;
}

bool VertexArrayObject::unbind()
{
    VRK_ASSERT_RETURN(0u != this->_vao, false, "Vertex Array Object is NULL on unbind");
    VRK_ASSERT_RETURN(true == this->_vaoBound, false, "Vertex Array Object is not bound on unbind");
    glBindVertexArray(0);
    _vaoBound = false;
    return true;
}

bool VertexArrayObject::rebind(VertexArrayObject* vertexArrayObjectBound, bool& changed)
{
    changed = false;
    if (vertexArrayObjectBound == this)
        return true;
    if (!vertexArrayObjectBound)
    {
        changed = true;
        return bind();
    }
    if (_vao == 0)
        create();
    VRK_ASSERT_RETURN(0u != this->_vao, false, "Vertex Array Object is NULL on rebind");
    VRK_ASSERT_RETURN(false == this->_vaoBound, false, "Vertex Array Object is already bound on rebind");
    VRK_ASSERT_RETURN(0u != vertexArrayObjectBound->_vao, false, "Vertex Array Object is NULL on rebind");
    VRK_ASSERT_RETURN(true == vertexArrayObjectBound->_vaoBound, false,
                      "Vertex Array Object is not already bound on rebind");
    if (_vao != vertexArrayObjectBound->_vao)
    {
        changed = true;
        glBindVertexArray(_vao);
    }
    vertexArrayObjectBound->_vaoBound = false;
    _vaoBound = true;
    return true;
}

void VertexArrayObject::registerBO(const QString& attrName, QSharedPointer<BufferObject> bufferObj, int valuesPerVertex,
                                   GLenum type)
{
    registerBO(attrName, std::move(bufferObj), valuesPerVertex, type, false, 0, 0);
}

void VertexArrayObject::registerBO(const QString& attrName, QSharedPointer<BufferObject> bufferObj, int valuesPerVertex,
                                   GLenum type, bool normalized, GLuint stride, GLuint offset)
{
    VRK_ASSERT(true == isTypeSupported(type), "Unsupported type 0x%X", type);
    _attributesData.insert(attrName, {valuesPerVertex, type, normalized, stride, offset, std::move(bufferObj)});
    dirtyAttributeName(attrName);
}

bool VertexArrayObject::upload(const QString& attrName, QSharedPointer<BufferObject> bufferObj, int valuesPerVertex,
                               GLenum type)
{
    VRK_ASSERT_RETURN(!bufferObj.isNull(), false, "Must Supply a valid BO pointer");
    registerBO(attrName, std::move(bufferObj), valuesPerVertex, type);
    return true;
}

bool VertexArrayObject::upload(const QString& attrName, QSharedPointer<BufferObject> bufferObj, const float* data,
                               int valueCount, int valuesPerVertex, GLenum usage)
{
    VRK_ASSERT_RETURN(NULL != bufferObj, false, "Must Supply a valid BO pointer");
    VRK_ASSERT_RETURN(canDivide(valueCount, valuesPerVertex), false,
                      "Data size (%d) cannot be divided by the values per vertex (%d)", valueCount, valuesPerVertex);
    VRK_ASSERT_RETURN(0 == (valueCount % valuesPerVertex), false,
                      "Data size (%d) must be a multi of the values per vertex (%d)", valueCount, valuesPerVertex);
    if (!bufferObj->bind())
    {
        VRK_LOG_CRITICAL("[ !! ] Failed to bind BO");
        return false;
    }
    bufferObj->upload(data, valueCount, usage);
    bufferObj->unbind();
    registerBO(attrName, std::move(bufferObj), valuesPerVertex, GL_FLOAT);
    return true;
}

bool VertexArrayObject::upload(const QString& attrName, QSharedPointer<BufferObject> bufferObj,
                               const QList<float>& values, int valuesPerVertex, GLenum usage)
{
    return upload(attrName, std::move(bufferObj), values.constData(), static_cast<int>(values.size()), valuesPerVertex,
                  usage);
}

bool VertexArrayObject::subUpload(const QString& attrName, const float* data, int valueCount, int valuesPerVertex,
                                  int offset)
{
    VRK_ASSERT_RETURN(_attributesData.contains(attrName), false, "Must Supply an existing BO attribute name");
    VRK_ASSERT_RETURN(_attributesData[attrName]._valuesPerVertex == valuesPerVertex, false,
                      "Values per vertex must match (Current %d != New %d)", _attributesData[attrName]._valuesPerVertex,
                      valuesPerVertex);
    VRK_ASSERT_RETURN(canDivide(valueCount, valuesPerVertex), false,
                      "Data size (%d) cannot be divided by the values per vertex (%d)", valueCount, valuesPerVertex);
    VRK_ASSERT_RETURN(0 == (valueCount % valuesPerVertex), false,
                      "Data size (%d) must be a multi of the values per vertex (%d)", valueCount, valuesPerVertex);
    const QSharedPointer<BufferObject> bufferObj = bo(attrName);
    VRK_ASSERT_RETURN(!bufferObj.isNull(), false, "Buffer Object of the attribute is NULL on subUpload");
    if (!bufferObj->bind())
    {
        VRK_LOG_CRITICAL("[ !! ] Failed to bind BO");
        return false;
    }
    bufferObj->subUpload(data, valueCount, offset);
    bufferObj->unbind();
    return true;
}

bool VertexArrayObject::subUpload(const QString& attrName, const QList<float>& values, int valuesPerVertex, int offset)
{
    return subUpload(attrName, values.constData(), static_cast<int>(values.size()), valuesPerVertex, offset);
}

void* VertexArrayObject::mapBO(const QString& attrName)
{
    if (!_attributesData.contains(attrName))
        return nullptr;
    const QSharedPointer<BufferObject> bufferObj = bo(attrName);
    VRK_ASSERT_RETURN(!bufferObj.isNull(), nullptr, "Buffer Object of the attribute is NULL on mapBO");
    bufferObj->bind();
    void* const memory = bufferObj->map(GL_WRITE_ONLY);
    bufferObj->unbind();
    return memory;
}

void VertexArrayObject::unmapBO(const QString& attrName)
{
    if (!_attributesData.contains(attrName))
        return;
    const QSharedPointer<BufferObject> bufferObj = bo(attrName);
    VRK_ASSERT_RETURN(!bufferObj.isNull(), void(), "Buffer Object of the attribute is NULL on unmapBO");
    bufferObj->bind();
    glUnmapBuffer(bufferObj->target());
    bufferObj->unbind();
}

bool VertexArrayObject::enableShaderProgramArrays(const ShaderProgram* program)
{
    if (!program)
        return true;
    const QHash<QString, int>& locations = program->getVertexAttributeNameLocationMap();
    for (auto attribute = locations.cbegin(); attribute != locations.cend(); ++attribute)
    {
        if (!enableArray(attribute.key(), attribute.value()))
            return false;
    }
    return true;
}

bool VertexArrayObject::enableArray(const QString& attrName, int attributeIndex)
{
    VRK_ASSERT_RETURN(0 <= attributeIndex, false, "Attribute Index is NULL on enable array");
    VRK_ASSERT_RETURN(0u != this->_vao, false, "Vertex Array Object is NULL on enable array");
    VRK_ASSERT_RETURN(true == this->_vaoBound, false, "Vertex Array Object is not bound on enable array");
    VRK_ASSERT_RETURN(attributeIndex < this->_attributeNames.size(), false,
                      "Attribute Index (%d) is not below the number of vertex attributes (%d) on enable array",
                      attributeIndex, static_cast<int>(this->_attributeNames.size()));
    // Before the record is looked at: what once matched stays as it is.
    if (_attributeNames.at(attributeIndex) == attrName)
        return true;
    const auto data = _attributesData.constFind(attrName);
    if (data == _attributesData.constEnd())
    {
        enableConstant(attributeIndex);
        return true;
    }
    VRK_ASSERT_RETURN(!data->bo.isNull(), false, "Buffer Object of the attribute is NULL on enable array");
    // An index that fails holds nothing any more, also not what it was pointed at before.
    const bool enabled = enablePointer(attributeIndex, *data);
    _attributeNames[attributeIndex] = enabled ? attrName : QString();
    return enabled;
}

void VertexArrayObject::enableConstant(int attributeIndex)
{
    if (!_attributeNames.at(attributeIndex).isEmpty())
        _attributeNames[attributeIndex].clear();
    const auto index = static_cast<GLuint>(attributeIndex);
    glDisableVertexAttribArray(index);
    GLint size = 0;
    glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_SIZE, &size);
    // The cases lie one below the component counts on purpose; an array of four components gets no constant.
    switch (size)
    {
    case 0:
        glVertexAttrib1f(index, 0.0f);
        break;
    case 1:
        glVertexAttrib2f(index, 0.0f, 0.0f);
        break;
    case 2:
        glVertexAttrib3f(index, 0.0f, 0.0f, 0.0f);
        break;
    case 3:
        glVertexAttrib4f(index, 0.0f, 0.0f, 0.0f, 0.0f);
        break;
    default:
        break;
    }
}

bool VertexArrayObject::enablePointer(int attributeIndex, const AttributeData& data)
{
    const auto index = static_cast<GLuint>(attributeIndex);
    const auto stride = static_cast<GLsizei>(data.stride);
    const bool isInteger = data.type >= kFirstIntegerType && data.type <= kLastIntegerType;
    glEnableVertexAttribArray(index);
    // An index buffer is not bound where that cannot help: it would take the place of the array's own indices.
    const bool mayBind = data.bo->target() != GL_ELEMENT_ARRAY_BUFFER || hasVertexBufferBound(*data.bo);
    if (mayBind)
        data.bo->bind();
    if (!hasVertexBufferBound(*data.bo))
    {
        glDisableVertexAttribArray(index);
        if (mayBind)
            data.bo->unbind();
        VRK_ASSERT_RETURN(hasVertexBufferBound(*data.bo), false,
                          "No vertex buffer is bound for attribute index %d on enable array", attributeIndex);
    }
    if (isInteger && !data.normalized)
        glVertexAttribIPointer(index, data._valuesPerVertex, data.type, stride, bufferOffset(data.offset));
    else
        glVertexAttribPointer(index, data._valuesPerVertex, data.type, data.normalized, stride,
                              bufferOffset(data.offset));
    data.bo->unbind();
    return true;
}

// An enabled array without a buffer would have the next draw read the offset as an address. The driver is asked only
// where the buffer's own book-keeping does not vouch for the binding: somebody else may have bound one.
bool VertexArrayObject::hasVertexBufferBound(const BufferObject& bufferObj)
{
    if (bufferObj.isBoundTo(GL_ARRAY_BUFFER))
        return true;
    GLint name = 0;
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &name);
    return name != 0;
}

void VertexArrayObject::dirtyAttributeName(const QString& attrName)
{
    for (QString& name : _attributeNames)
    {
        if (name == attrName)
            name.clear();
    }
}

GLuint VertexArrayObject::getVAO() const
{
    return _vao;
}

bool VertexArrayObject::isBoundWithoutName() const
{
    VRK_ASSERT_RETURN(0u != this->_vao, false, "Vertex Array Object is NULL on isBound");
    return _vaoBound;
}

QSharedPointer<BufferObject> VertexArrayObject::bo(const QString& attrName)
{
    const auto data = _attributesData.constFind(attrName);
    return data != _attributesData.constEnd() ? data->bo : QSharedPointer<BufferObject>();
}

GLContextTracker* VertexArrayObject::getContextTracker()
{
    return _contextTracker;
}

size_t VertexArrayObject::memoryEstimateCPU() const
{
    size_t bytes = sizeof(*this);
    for (auto attribute = _attributesData.cbegin(); attribute != _attributesData.cend(); ++attribute)
    {
        bytes += kBytesPerAttributeRecord + static_cast<size_t>(attribute.key().size());
        if (attribute->bo)
            bytes += attribute->bo->memoryEstimateCPU();
    }
    return bytes;
}

size_t VertexArrayObject::memoryEstimateGPU() const
{
    size_t bytes = 0;
    for (const AttributeData& data : _attributesData)
    {
        if (data.bo)
            bytes += data.bo->memoryEstimateGPU();
    }
    return bytes;
}

bool VertexArrayObject::isTypeSupported(GLenum type)
{
    return std::find(std::begin(kSupportedTypes), std::end(kSupportedTypes), type) != std::end(kSupportedTypes);
}

int VertexArrayObject::NumAlive()
{
    return numAlive;
}

} // namespace Harrow::Vrk
