// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Geometry written call by call, in the manner of the old `glVertex3f`, into plain lists of floats that are then
/// handed to `BufferObject` or `VertexArrayObject`. Makes no OpenGL call and needs no context.

#include "Export.h"

#include <QHash>
#include <QList>

namespace Harrow::Vrk
{

/// One list, with a fixed number of floats for each vertex, fixed before the first value. A value type; copies share
/// their list until one of them is written to. Every precondition is an assertion that reports and goes on.
class VRKGL_EXPORT VertexArrayBuilderStorage
{
public:
    /// Fixes the number of floats per vertex, once; a second time is reported and takes effect all the same, as does 0.
    /// Makes room for `reserveVertexCount` vertices, so that whoever knows their number allocates once; a number that
    /// there is no memory for is reported, and no room made.
    void setSpec(unsigned int componentCount, unsigned int reserveVertexCount);

    /// Appends one vertex, filled up with zeros to the component count: three values for a colour of four leave its
    /// alpha at 0. More values than components are reported and all appended; the list is no whole number of vertices
    /// then.
    void pushData(float a);
    void pushData(float a, float b);
    void pushData(float a, float b, float c);
    void pushData(float a, float b, float c, float d);

    /// Floats per vertex; 0 until `setSpec`.
    unsigned int getComponentCount() const;
    /// The number of whole vertices. Values left over are reported, and so is a component count of 0, which gives 0.
    int getSize() const;
    const QList<float>& getData() const;

private:
    template <typename... Values> void append(Values... values);

    unsigned int _componentCount = 0;
    QList<float> _data;
};

/// The four classic arrays and generic attributes by index. A value type. Of each array in use the component count
/// comes first:
///
///     VertexArrayBuilder builder;
///     builder.setVertexSpec(3, 2);
///     builder.setColorSpec(4, 2);
///     builder.glColor4f(1.0f, 0.0f, 0.0f, 1.0f);
///     builder.glVertex3f(0.0f, 0.0f, 0.0f);
///     builder.glColor4f(1.0f, 0.0f, 0.0f, 1.0f);
///     builder.glVertex3f(1.0f, 0.0f, 0.0f);
///     buffer->upload(builder.getVertexData(), GL_STATIC_DRAW);
///
/// The calls carry the names of OpenGL's and only append: a colour does not stay in force for later vertices.
class VRKGL_EXPORT VertexArrayBuilder
{
public:
    /// `VertexArrayBuilderStorage::setSpec` on the array of that name.
    void setVertexSpec(unsigned int componentCount, unsigned int reserveVertexCount);
    void setColorSpec(unsigned int componentCount, unsigned int reserveVertexCount);
    void setTexCoordSpec(unsigned int componentCount, unsigned int reserveVertexCount);
    void setNormalSpec(unsigned int componentCount, unsigned int reserveVertexCount);
    /// The same on the attribute of that index, which comes into being if there was none.
    void setVertexAttribSpec(unsigned int index, unsigned int componentCount, unsigned int reserveVertexCount);

    /// `VertexArrayBuilderStorage::pushData` on the array of that name.
    void glVertex2f(float x, float y);
    void glVertex3f(float x, float y, float z);
    void glColor3f(float r, float g, float b);
    void glColor4f(float r, float g, float b, float a);
    void glTexCoord1f(float s);
    void glTexCoord2f(float s, float t);
    void glNormal3f(float x, float y, float z);

    /// \name Generic attributes
    /// The same on the attribute of that index, which comes into being if there was none.
    ///
    /// `_ptrc_…` are the names under which the library exports them, since its function table knows these two as core
    /// functions. The plain names only lead there. They are templates because a template may stand beside a function of
    /// the same name and gives way to it: so the class also compiles, and both names can be called, where a header maps
    /// OpenGL's names to the table's pointers by macros.
    ///@{
    /// `VertexArrayBuilderStorage::pushData` on the attribute.
    void _ptrc_glVertexAttrib2f(unsigned int index, float x, float y);
    void _ptrc_glVertexAttrib3f(unsigned int index, float x, float y, float z);
    template <typename = void> void glVertexAttrib2f(unsigned int index, float x, float y)
    {
        this->_ptrc_glVertexAttrib2f(index, x, y);
    }
    template <typename = void> void glVertexAttrib3f(unsigned int index, float x, float y, float z)
    {
        this->_ptrc_glVertexAttrib3f(index, x, y, z);
    }
    ///@}

    /// The values of the array, vertex after vertex.
    const QList<float>& getVertexData() const;
    const QList<float>& getColorData() const;
    const QList<float>& getNormalData() const;
    const QList<float>& getTexCoordData() const;

    /// The array itself.
    const VertexArrayBuilderStorage& getVertexStorage() const;
    const VertexArrayBuilderStorage& getColorStorage() const;
    const VertexArrayBuilderStorage& getNormalStorage() const;
    const VertexArrayBuilderStorage& getTexCoordStorage() const;

    /// The reference holds until an attribute is added. An index that there is none of is reported and gives an empty
    /// list.
    const QList<float>& getVertexAttribData(unsigned int index) const;
    /// A copy. An index that there is none of is reported and gives a storage without a spec.
    VertexArrayBuilderStorage getVertexAttribStorage(unsigned int index) const;

    /// The size of the vertex array, which wants a spec. Reports each of colours, texture coordinates and normals that
    /// has a spec and another size; attributes are not looked at.
    int getVertexCount() const;

private:
    VertexArrayBuilderStorage _vertex;
    VertexArrayBuilderStorage _color;
    VertexArrayBuilderStorage _texCoord;
    VertexArrayBuilderStorage _normal;
    QHash<unsigned int, VertexArrayBuilderStorage> _vertexAttrib;
};

} // namespace Harrow::Vrk
