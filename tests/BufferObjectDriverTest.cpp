// SPDX-License-Identifier: MIT
// BufferObject on the real driver: what arrives in the buffer.
#include "BufferObject.h"

#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <array>
#include <memory>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

using Buffer = std::unique_ptr<BufferObject>;

constexpr std::array<float, 6> kSix = {1, 2, 3, 4, 5, 6};

Buffer newBuffer()
{
    Buffer buffer(BufferObjectTestAccess::make());
    buffer->setTarget(GL_ARRAY_BUFFER);
    return buffer;
}

class BufferObjectsGL : public GLTest
{
};

std::array<float, 6> contentsOf(BufferObject& buffer)
{
    std::array<float, 6> values = {};
    EXPECT_TRUE(buffer.bind());
    glGetBufferSubData(buffer.target(), 0, sizeof values, values.data());
    EXPECT_TRUE(buffer.unbind());
    return values;
}

/// Uploads as the library's own callers do: with a bind only where it is needed.
void uploadSix(BufferObject& buffer, const std::array<float, 6>& values)
{
    const bool bindNeeded = buffer.isBindNeededForUpload();
    if (bindNeeded)
    {
        ASSERT_TRUE(buffer.bind());
    }
    EXPECT_TRUE(buffer.upload(values.data(), 6, GL_STATIC_DRAW));
    if (bindNeeded)
    {
        ASSERT_TRUE(buffer.unbind());
    }
}

} // namespace

TEST_F(BufferObjectsGL, UploadedValuesAreReadBack)
{
    const Buffer buffer = newBuffer();
    uploadSix(*buffer, kSix);
    EXPECT_EQ(contentsOf(*buffer), kSix);
    constexpr std::array<float, 6> other = {6, 5, 4, 3, 2, 1};
    EXPECT_EQ(buffer->isBindNeededForUpload(), isFloor());
    uploadSix(*buffer, other);
    EXPECT_EQ(contentsOf(*buffer), other);
}

TEST_F(BufferObjectsGL, SubUploadReplacesItsValuesOnly)
{
    const Buffer buffer = newBuffer();
    uploadSix(*buffer, kSix);
    ASSERT_TRUE(buffer->bind());
    const float values[2] = {50, 60};
    EXPECT_TRUE(buffer->subUpload(values, 2, 4));
    buffer->unbind();
    EXPECT_EQ(contentsOf(*buffer), (std::array<float, 6>{1, 2, 3, 4, 50, 60}));
}

TEST_F(BufferObjectsGL, MappedMemoryReachesTheBuffer)
{
    const Buffer buffer = newBuffer();
    uploadSix(*buffer, kSix);
    ASSERT_TRUE(buffer->bind());
    auto* const mapped = static_cast<float*>(buffer->map(GL_WRITE_ONLY));
    ASSERT_NE(mapped, nullptr);
    for (int i = 0; i < 6; ++i)
        mapped[i] = float(i) * 10;
    buffer->unmap();
    buffer->unbind();
    EXPECT_EQ(contentsOf(*buffer), (std::array<float, 6>{0, 10, 20, 30, 40, 50}));
}

TEST_F(BufferObjectsGL, ImmutableStorageIsUsedOnlyWhereTheDriverHasIt)
{
    const Buffer buffer = newBuffer();
    buffer->useStorageBuffer(24, GL_DYNAMIC_STORAGE_BIT);
    EXPECT_EQ(buffer->isBindNeededForUpload(), isFloor());
    const bool bindNeeded = buffer->isBindNeededForUpload();
    if (bindNeeded)
    {
        ASSERT_TRUE(buffer->bind());
    }
    EXPECT_TRUE(buffer->uploadArbitraryData(kSix.data(), 6, GL_STATIC_DRAW, 4));
    if (bindNeeded)
    {
        ASSERT_TRUE(buffer->unbind());
    }
    EXPECT_EQ(contentsOf(*buffer), kSix);
    GLint immutable = 0;
    if (!isFloor())
    {
        ASSERT_TRUE(buffer->bind());
        glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_IMMUTABLE_STORAGE, &immutable);
        buffer->unbind();
        EXPECT_EQ(immutable, 1);
    }
}

TEST_F(BufferObjectsGL, IndexedTargetBindsItsRange)
{
    const Buffer buffer = newBuffer();
    uploadSix(*buffer, kSix);
    {
        const LogCapture complaint;
        buffer->setIndexedTarget(GL_UNIFORM_BUFFER, 1, 0, 16);
    }
    ASSERT_TRUE(buffer->bind());
    GLint name = 0;
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 1, &name);
    EXPECT_EQ(GLuint(name), buffer->getBO());
    ASSERT_TRUE(buffer->unbind());
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 1, &name);
    EXPECT_EQ(GLuint(name), buffer->getBO()) << "unbind names index 0: the buffer stays on its own";
    glBindBufferBase(GL_UNIFORM_BUFFER, 1, 0);
}

TEST_F(BufferObjectsGL, OwnedBufferIsGoneWithItsObjectAndAWrappedOneIsNot)
{
    GLuint foreign = 0;
    glGenBuffers(1, &foreign);
    glBindBuffer(GL_ARRAY_BUFFER, foreign);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    {
        const Buffer wrapped(BufferObjectTestAccess::wrap(foreign));
    }
    EXPECT_EQ(glIsBuffer(foreign), GLboolean(GL_TRUE));
    glDeleteBuffers(1, &foreign);

    Buffer owned = newBuffer();
    const GLuint name = owned->getBO();
    uploadSix(*owned, kSix);
    EXPECT_EQ(glIsBuffer(name), GLboolean(GL_TRUE));
    owned.reset();
    EXPECT_EQ(glIsBuffer(name), GLboolean(GL_FALSE));
}
