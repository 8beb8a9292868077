// SPDX-License-Identifier: MIT
#include "VertexArrayBuilder.h"

#include "Diagnostics.h"

#include <algorithm>
#include <limits>

namespace Harrow::Vrk
{
namespace
{

/// False, with nothing changed, when there is no memory for as many.
bool reserve(QList<float>& list, quint64 count)
{
    if (count > quint64(std::numeric_limits<qsizetype>::max()) / sizeof(float))
        return false;
    const auto wanted = static_cast<qsizetype>(count);
    if (wanted <= list.capacity())
        return true;
    // In a list of its own: where there is no memory an empty list stays as it is, and a filled one crashes.
    QList<float> roomy;
    roomy.reserve(wanted);
    if (roomy.capacity() < wanted)
        return false;
    roomy.append(list);
    list.swap(roomy);
    return true;
}

} // namespace

// ---- one array -----------------------------------------------------------------------------------------------------

void VertexArrayBuilderStorage::setSpec(unsigned int componentCount, unsigned int reserveVertexCount)
{
    VRK_ASSERT(0 == this->_componentCount, "Component Count already set to %d. Try to reset to %d",
               static_cast<int>(this->_componentCount), static_cast<int>(componentCount));
    VRK_ASSERT(0 != componentCount, "Component Count may not be 0.");
    _componentCount = componentCount;
    const bool reserved = reserve(_data, quint64(componentCount) * reserveVertexCount);
    VRK_ASSERT(reserved, "There is no memory to reserve %u vertices of %u components", reserveVertexCount,
               componentCount);
}

template <typename... Values> void VertexArrayBuilderStorage::append(Values... values)
{
    // Once for the whole vertex: the list grows by zeros, and the values go over the first of them. Growing has taken
    // the list out of any sharing, so that it need not be asked once more.
    const qsizetype size = _data.size();
    _data.resize(size + std::max(qsizetype(sizeof...(values)), qsizetype(_componentCount)));
    float* vertex = const_cast<float*>(_data.constData()) + size;
    ((*vertex++ = values), ...);
}

void VertexArrayBuilderStorage::pushData(float a)
{
    VRK_ASSERT(0 != this->_componentCount, "Component Count must be setup before data is pushed");
    // The spelling is interface.
    VRK_ASSERT(1 <= this->_componentCount, "Component Count is not large enough for the sdata being pushed");
    append(a);
}

void VertexArrayBuilderStorage::pushData(float a, float b)
{
    VRK_ASSERT(0 != this->_componentCount, "Component Count must be setup before data is pushed");
    VRK_ASSERT(2 <= this->_componentCount, "Component Count is not large enough for the data being pushed");
    append(a, b);
}

void VertexArrayBuilderStorage::pushData(float a, float b, float c)
{
    VRK_ASSERT(0 != this->_componentCount, "Component Count must be setup before data is pushed");
    VRK_ASSERT(3 <= this->_componentCount, "Component Count is not large enough for the data being pushed");
    append(a, b, c);
}

void VertexArrayBuilderStorage::pushData(float a, float b, float c, float d)
{
    VRK_ASSERT(0 != this->_componentCount, "Component Count must be setup before data is pushed");
    VRK_ASSERT(4 <= this->_componentCount, "Component Count is not large enough for the data being pushed");
    append(a, b, c, d);
}

unsigned int VertexArrayBuilderStorage::getComponentCount() const
{
    return _componentCount;
}

int VertexArrayBuilderStorage::getSize() const
{
    VRK_ASSERT_RETURN(0 != this->_componentCount, 0, "Component Count must be setup before size is obtained");
    VRK_ASSERT(0 == (this->_data.size() % this->_componentCount), "Component Count and array Size do not match.");
    return static_cast<int>(_data.size() / _componentCount);
}

const QList<float>& VertexArrayBuilderStorage::getData() const
{
    return _data;
}

// ---- specs ---------------------------------------------------------------------------------------------------------

void VertexArrayBuilder::setVertexSpec(unsigned int componentCount, unsigned int reserveVertexCount)
{
    _vertex.setSpec(componentCount, reserveVertexCount);
}

void VertexArrayBuilder::setColorSpec(unsigned int componentCount, unsigned int reserveVertexCount)
{
    _color.setSpec(componentCount, reserveVertexCount);
}

void VertexArrayBuilder::setTexCoordSpec(unsigned int componentCount, unsigned int reserveVertexCount)
{
    _texCoord.setSpec(componentCount, reserveVertexCount);
}

void VertexArrayBuilder::setNormalSpec(unsigned int componentCount, unsigned int reserveVertexCount)
{
    _normal.setSpec(componentCount, reserveVertexCount);
}

void VertexArrayBuilder::setVertexAttribSpec(unsigned int index, unsigned int componentCount,
                                             unsigned int reserveVertexCount)
{
    _vertexAttrib[index].setSpec(componentCount, reserveVertexCount);
}

// ---- values --------------------------------------------------------------------------------------------------------

void VertexArrayBuilder::glVertex2f(float x, float y)
{
    _vertex.pushData(x, y);
}

void VertexArrayBuilder::glVertex3f(float x, float y, float z)
{
    _vertex.pushData(x, y, z);
}

void VertexArrayBuilder::glColor3f(float r, float g, float b)
{
    _color.pushData(r, g, b);
}

void VertexArrayBuilder::glColor4f(float r, float g, float b, float a)
{
    _color.pushData(r, g, b, a);
}

void VertexArrayBuilder::glTexCoord1f(float s)
{
    _texCoord.pushData(s);
}

void VertexArrayBuilder::glTexCoord2f(float s, float t)
{
    _texCoord.pushData(s, t);
}

void VertexArrayBuilder::glNormal3f(float x, float y, float z)
{
    _normal.pushData(x, y, z);
}

void VertexArrayBuilder::_ptrc_glVertexAttrib2f(unsigned int index, float x, float y)
{
    _vertexAttrib[index].pushData(x, y);
}

void VertexArrayBuilder::_ptrc_glVertexAttrib3f(unsigned int index, float x, float y, float z)
{
    _vertexAttrib[index].pushData(x, y, z);
}

// ---- results -------------------------------------------------------------------------------------------------------

const QList<float>& VertexArrayBuilder::getVertexData() const
{
    return _vertex.getData();
}

const QList<float>& VertexArrayBuilder::getColorData() const
{
    return _color.getData();
}

const QList<float>& VertexArrayBuilder::getNormalData() const
{
    return _normal.getData();
}

const QList<float>& VertexArrayBuilder::getTexCoordData() const
{
    return _texCoord.getData();
}

const VertexArrayBuilderStorage& VertexArrayBuilder::getVertexStorage() const
{
    return _vertex;
}

const VertexArrayBuilderStorage& VertexArrayBuilder::getColorStorage() const
{
    return _color;
}

const VertexArrayBuilderStorage& VertexArrayBuilder::getNormalStorage() const
{
    return _normal;
}

const VertexArrayBuilderStorage& VertexArrayBuilder::getTexCoordStorage() const
{
    return _texCoord;
}

const QList<float>& VertexArrayBuilder::getVertexAttribData(unsigned int index) const
{
    static const QList<float> kNone;
    const auto attribute = _vertexAttrib.constFind(index);
    VRK_ASSERT_RETURN(attribute != _vertexAttrib.constEnd(), kNone, "There is no vertex attribute %u", index);
    return attribute->getData();
}

VertexArrayBuilderStorage VertexArrayBuilder::getVertexAttribStorage(unsigned int index) const
{
    const auto attribute = _vertexAttrib.constFind(index);
    VRK_ASSERT_RETURN(attribute != _vertexAttrib.constEnd(), {}, "There is no vertex attribute %u", index);
    return *attribute;
}

int VertexArrayBuilder::getVertexCount() const
{
    const int count = _vertex.getSize();
    VRK_ASSERT(this->_color.getComponentCount() == 0 || count == this->_color.getSize(),
               "Color count must match vertex count");
    VRK_ASSERT(this->_texCoord.getComponentCount() == 0 || count == this->_texCoord.getSize(),
               "TexCoord count must match vertex count");
    VRK_ASSERT(this->_normal.getComponentCount() == 0 || count == this->_normal.getSize(),
               "Normal count must match vertex count");
    return count;
}

} // namespace Harrow::Vrk
