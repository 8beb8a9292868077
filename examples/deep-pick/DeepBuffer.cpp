// SPDX-License-Identifier: MIT
#include "DeepBuffer.h"

#include <Terminal.h>

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/VertexArrayObject.h>

#include <QSharedPointer>

#include <algorithm>
#include <cstring>

namespace deeppick
{

using namespace Harrow::Vrk;

namespace
{

constexpr std::size_t kMostNodes = std::size_t(1) << 26; // a gigabyte
constexpr int kMostNodesWidth = 4096;
constexpr std::size_t kGuessedDepth = 3; // fragments of a pixel, where nothing is known yet
constexpr int kMostDrawings = 4;         // more than two are needed only by a driver that counts differently each time
constexpr int kSortedRows = 64;          // between two looks at the clock

// Colour attachments.
constexpr GLenum kColorTarget = GL_COLOR_ATTACHMENT0;
constexpr GLenum kCountTarget = GL_COLOR_ATTACHMENT1;

// Image units, and texture units.
constexpr int kHeadsImage = 0;
constexpr int kNodesImage = 1;
constexpr int kResultImage = 2;
constexpr int kHeadsUnit = 0;
constexpr int kNodesUnit = 1;
constexpr int kCountsUnit = 2;
constexpr int kFirstLookupUnit = 3;

// What the query pass writes of each fragment, as query.frag has it.
struct FragmentRecord
{
    float position[3];
    float depth;
    float normal[3];
    float unused;
    float texCoord[2];
    float unusedToo[2];
    std::uint32_t object;
    std::uint32_t instance;
    std::uint32_t draw;
    std::uint32_t triangle;
};
static_assert(sizeof(FragmentRecord) == 64, "four texels of 16 bytes");
constexpr int kTexelsOfRecord = 4;
constexpr int kRecordsOfQuery = 4096; // a quarter of what every driver's buffer textures hold

struct Requirement
{
    const char* extension;
    int major;
    int minor;
};
constexpr Requirement kRequirements[] = {
    {"GL_ARB_shader_image_load_store", 4, 2},
    {"GL_ARB_shader_atomic_counters", 4, 2},
    {"GL_ARB_shader_bit_encoding", 3, 3},
};

void forgetErrors()
{
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i)
    {
    }
}

GLint limit(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// Fragments that one texture of this driver can hold.
std::size_t mostRoom()
{
    const auto side = std::size_t(limit(GL_MAX_TEXTURE_SIZE));
    return std::min(kMostNodes, std::min(std::size_t(kMostNodesWidth), side) * side);
}

GLuint newTexture(GLenum internalFormat, GLenum format, GLenum type, int width, int height)
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glTexImage2D(GL_TEXTURE_2D, 0, GLint(internalFormat), width, height, 0, format, type, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

void bindTexture(ShaderProgram& program, const char* sampler, int unit, GLuint texture)
{
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    glActiveTexture(GL_TEXTURE0);
    program.setUniform(program.getUniformLocation(QLatin1String(sampler)), unit);
}

void set(ShaderProgram& program, const char* uniform, int value)
{
    program.setUniform(program.getUniformLocation(QLatin1String(uniform)), value);
}

void set(ShaderProgram& program, const char* uniform, const QVariant& value)
{
    program.setUniform(QLatin1String(uniform), value);
}

QString shaderPath(const char* file)
{
    return QStringLiteral(":/vrk-deep-pick/%1").arg(QLatin1String(file));
}

Fragment fragmentOf(const FragmentRecord& record)
{
    Fragment fragment;
    fragment.object = record.object;
    fragment.instance = record.instance;
    fragment.draw = record.draw;
    fragment.triangle = record.triangle;
    fragment.position = {record.position[0], record.position[1], record.position[2]};
    fragment.normal = {record.normal[0], record.normal[1], record.normal[2]};
    fragment.texCoord = {record.texCoord[0], record.texCoord[1]};
    fragment.depth = record.depth;
    return fragment;
}

/// Counts from 0 while it lives, on the binding point of fill.frag.
class AtomicCounter
{
public:
    AtomicCounter() : _buffer(OpenGLDeviceContext::current()->newBuffer())
    {
        const GLuint zero = 0;
        _buffer->setTarget(GL_COPY_WRITE_BUFFER);
        {
            const AutoBinder bound(_buffer);
            _buffer->uploadGLuintData(&zero, 1, GL_DYNAMIC_COPY);
        }
        _buffer->setIndexedTarget(GL_ATOMIC_COUNTER_BUFFER, 0, 0, sizeof(GLuint));
        _buffer->bind();
    }
    ~AtomicCounter()
    {
        _buffer->unbind();
    }
    AtomicCounter(const AtomicCounter&) = delete;
    AtomicCounter& operator=(const AtomicCounter&) = delete;

    GLuint value() const
    {
        GLuint count = 0;
        glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT | GL_ATOMIC_COUNTER_BARRIER_BIT);
        glGetBufferSubData(GL_ATOMIC_COUNTER_BUFFER, 0, sizeof count, &count);
        return count;
    }

private:
    QSharedPointer<BufferObject> _buffer;
};

/// Counts the fragments that are drawn while it lives, up to the largest number that there is: it does not wrap.
class FragmentCounter
{
public:
    FragmentCounter()
    {
        glGenQueries(1, &_query);
        glBeginQuery(GL_SAMPLES_PASSED, _query);
    }
    ~FragmentCounter()
    {
        glDeleteQueries(1, &_query);
    }
    FragmentCounter(const FragmentCounter&) = delete;
    FragmentCounter& operator=(const FragmentCounter&) = delete;

    GLuint end()
    {
        GLuint count = 0;
        glEndQuery(GL_SAMPLES_PASSED);
        glGetQueryObjectuiv(_query, GL_QUERY_RESULT, &count);
        return count;
    }

private:
    GLuint _query = 0;
};

} // namespace

DeepBuffer::DeepBuffer() = default;

DeepBuffer::~DeepBuffer()
{
    if (_framebuffer != 0)
        glDeleteFramebuffers(1, &_framebuffer);
    for (const GLuint texture : {_color, _counts, _heads, _nodes})
        if (texture != 0)
            glDeleteTextures(1, &texture);
}

QString DeepBuffer::driverFault()
{
    for (const Requirement& requirement : kRequirements)
        if (!openGlVersionSupported(requirement.major, requirement.minor) && !hasGLExtension(requirement.extension))
            return QStringLiteral("OpenGL 4.2 or %1 is needed, which this driver lacks")
                .arg(QLatin1String(requirement.extension));
    return {};
}

int DeepBuffer::subpixelBits()
{
    return limit(GL_SUBPIXEL_BITS);
}

// ---- making --------------------------------------------------------------------------------------------------------

bool DeepBuffer::create(const PickScene& scene, const PickView& view, QString& error)
{
    _view = view;
    _worldFromScene = scene.worldFromScene;
    return createTargets(error) && _scene.create(scene, error) && createPrograms(error);
}

bool DeepBuffer::createTargets(QString& error)
{
    const int width = _view.size.width();
    const int height = _view.size.height();
    GLint viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    const int largest = std::min({limit(GL_MAX_TEXTURE_SIZE), viewport[0], viewport[1]});
    if (width > largest || height > largest)
    {
        error = QStringLiteral("a picture of %1x%2 pixels is too large: this driver draws at most %3x%3")
                    .arg(width)
                    .arg(height)
                    .arg(largest);
        return false;
    }
    forgetErrors();
    _color = newTexture(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, width, height);
    _counts = newTexture(GL_R32UI, GL_RED_INTEGER, GL_UNSIGNED_INT, width, height);
    _heads = newTexture(GL_R32UI, GL_RED_INTEGER, GL_UNSIGNED_INT, width, height);
    glGenFramebuffers(1, &_framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, kColorTarget, GL_TEXTURE_2D, _color, 0);
    glFramebufferTexture2D(GL_FRAMEBUFFER, kCountTarget, GL_TEXTURE_2D, _counts, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE && glGetError() == GL_NO_ERROR)
        return true;
    error = QStringLiteral("the driver has no memory for a picture of %1x%2 pixels").arg(width).arg(height);
    return false;
}

bool DeepBuffer::createPrograms(QString& error)
{
    // The draws have to reach the shader by number, which sub-draws do by uniform.
    DrawBuffers::useBaseInstanceDrawing(false);
    DrawBuffers::setup(&_macroProcessor);
    const auto make = [&](const char* vertex, const char* fragment, const char* output)
    {
        auto program = std::make_unique<ShaderProgram>(nullptr);
        program->setMacroProcessor(&_macroProcessor);
        program->addShaderFromFile(GL_VERTEX_SHADER, QLatin1String(vertex));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, shaderPath(fragment));
        if (output)
            program->setFragDataLocations({QLatin1String(output)});
        return program;
    };
    const char* const quad = "passthroughVS.glslc";
    _fill = make(":/vrk-deep-pick/fill.vert", "fill.frag", nullptr);
    _fill->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
    _fill->addShader(GL_VERTEX_SHADER, _scene.recordUnit());
    _sort = make(quad, "sort.frag", "o_Count");
    _query = make(quad, "query.frag", nullptr);
    _picture = make(quad, "picture.frag", "o_Color");
    for (ShaderProgram* const program : {_query.get(), _picture.get()})
    {
        program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("VisibilityBuffer.glslc"));
        program->addShader(GL_FRAGMENT_SHADER, _scene.recordUnit());
    }
    for (ShaderProgram* const program : {_fill.get(), _sort.get(), _query.get(), _picture.get()})
    {
        if (program->link())
            continue;
        error = QStringLiteral("the driver rejects the shaders");
        return false;
    }
    return true;
}

bool DeepBuffer::makeRoom(std::size_t room, QString& error)
{
    const auto width = std::size_t(std::min(kMostNodesWidth, limit(GL_MAX_TEXTURE_SIZE)));
    const std::size_t rows = (room + width - 1) / width;
    if (room > mostRoom())
    {
        error = QStringLiteral("%1 fragments are more than the %2 that can be held; a smaller --size has fewer")
                    .arg(room)
                    .arg(mostRoom());
        return false;
    }
    forgetErrors();
    if (_nodes != 0)
        glDeleteTextures(1, &_nodes);
    _nodes = newTexture(GL_RGBA32UI, GL_RGBA_INTEGER, GL_UNSIGNED_INT, int(width), int(rows));
    _nodesWidth = int(width);
    _room = room;
    if (glGetError() == GL_NO_ERROR)
        return true;
    error = QStringLiteral("the driver has no memory for %1 fragments").arg(room);
    return false;
}

// ---- filling -------------------------------------------------------------------------------------------------------

bool DeepBuffer::fill(std::size_t room, QString& error)
{
    const std::size_t pixels = std::size_t(_view.size.width()) * std::size_t(_view.size.height());
    std::size_t wanted = room > 0 ? room : std::min(mostRoom(), kGuessedDepth * pixels);
    for (_drawings = 0; _drawings < kMostDrawings;)
    {
        if (!makeRoom(wanted, error))
            return false;
        _fragmentCount = drawOnce();
        ++_drawings;
        if (_fragmentCount <= _room)
            return true;
        wanted = _fragmentCount;
    }
    error = QStringLiteral("this driver counts other fragments at each drawing");
    return false;
}

/// The number of fragments that there are, of which those beyond the room are missing in the lists.
std::size_t DeepBuffer::drawOnce()
{
    clearLists();
    beginPass(*_fill, GL_NONE);
    bindLists(*_fill);
    set(*_fill, "u_ClipFromScene", QVariant::fromValue(_view.clipFromView * _view.viewFromScene));
    set(*_fill, "u_Room", QVariant::fromValue(unsigned(_room)));
    const AtomicCounter used;
    FragmentCounter drawn;
    _scene.draw(*_fill);
    // The one wraps where there are more than it can count, the other is the driver's own: believe the larger.
    const std::size_t count = std::max(drawn.end(), used.value());
    glMemoryBarrier(GL_SHADER_IMAGE_ACCESS_BARRIER_BIT);
    unbindLists();
    endPass(*_fill);
    return count;
}

void DeepBuffer::clearLists()
{
    const GLuint none[4] = {0, 0, 0, 0};
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, _heads, 0);
    glClearBufferuiv(GL_COLOR, 0, none);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &framebuffer);
}

void DeepBuffer::bindLists(ShaderProgram& program)
{
    glBindImageTexture(kHeadsImage, _heads, 0, GL_FALSE, 0, GL_READ_WRITE, GL_R32UI);
    glBindImageTexture(kNodesImage, _nodes, 0, GL_FALSE, 0, GL_READ_WRITE, GL_RGBA32UI);
    set(program, "u_Heads", kHeadsImage);
    set(program, "u_Nodes", kNodesImage);
    set(program, "u_NodesWidth", _nodesWidth);
}

void DeepBuffer::unbindLists()
{
    glBindImageTexture(kHeadsImage, 0, 0, GL_FALSE, 0, GL_READ_WRITE, GL_R32UI);
    glBindImageTexture(kNodesImage, 0, 0, GL_FALSE, 0, GL_READ_WRITE, GL_RGBA32UI);
}

void DeepBuffer::sort()
{
    vrkview::ProgressLine progress;
    const int width = _view.size.width();
    const int height = _view.size.height();
    beginPass(*_sort, kCountTarget);
    bindLists(*_sort);
    glEnable(GL_SCISSOR_TEST);
    for (int y = 0; y < height; y += kSortedRows)
    {
        glScissor(0, y, width, kSortedRows);
        drawQuad(*_sort);
        glFinish();
        progress.show(QStringLiteral("sorting the lists"), float(y + kSortedRows) / float(height));
    }
    glDisable(GL_SCISSOR_TEST);
    glMemoryBarrier(GL_TEXTURE_FETCH_BARRIER_BIT | GL_SHADER_IMAGE_ACCESS_BARRIER_BIT);
    unbindLists();

    std::vector<GLuint> row(static_cast<std::size_t>(width));
    glReadBuffer(kCountTarget);
    for (int y = 0; y < height; ++y)
    {
        glReadPixels(0, y, width, 1, GL_RED_INTEGER, GL_UNSIGNED_INT, row.data());
        _deepest = std::max(_deepest, *std::max_element(row.begin(), row.end()));
    }
    endPass(*_sort);
}

// ---- reading -------------------------------------------------------------------------------------------------------

std::vector<Fragment> DeepBuffer::query(const QPoint& pixel)
{
    const int y = _view.size.height() - 1 - pixel.y(); // OpenGL's first row is the lowest
    GLuint count = 0;
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glReadBuffer(kCountTarget);
    glReadPixels(pixel.x(), y, 1, 1, GL_RED_INTEGER, GL_UNSIGNED_INT, &count);
    std::vector<Fragment> fragments;
    while (fragments.size() < count)
    {
        const auto first = int(fragments.size());
        const std::vector<Fragment> more =
            queryFrom(first, std::min(int(count) - first, kRecordsOfQuery), pixel.x(), y);
        fragments.insert(fragments.end(), more.begin(), more.end());
    }
    return fragments;
}

std::vector<Fragment> DeepBuffer::queryFrom(int first, int count, int x, int y)
{
    std::vector<FragmentRecord> records(static_cast<std::size_t>(count));
    const auto bytes = GLsizeiptr(records.size() * sizeof(FragmentRecord));
    GLuint buffer = 0;
    GLuint texture = 0;
    glGenBuffers(1, &buffer);
    glGenTextures(1, &texture);
    glBindBuffer(GL_TEXTURE_BUFFER, buffer);
    glBufferData(GL_TEXTURE_BUFFER, bytes, records.data(), GL_DYNAMIC_READ);
    glBindTexture(GL_TEXTURE_BUFFER, texture);
    glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32UI, buffer);
    glBindTexture(GL_TEXTURE_BUFFER, 0);

    beginPass(*_query, GL_NONE);
    bindQueries(*_query);
    glBindImageTexture(kResultImage, texture, 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA32UI);
    set(*_query, "u_Result", kResultImage);
    set(*_query, "u_First", first);
    set(*_query, "u_MostFragments", count);
    set(*_query, "u_WorldFromScene", QVariant::fromValue(_worldFromScene));
    glEnable(GL_SCISSOR_TEST);
    glScissor(x, y, 1, 1);
    drawQuad(*_query);
    glDisable(GL_SCISSOR_TEST);
    unbindQueries(*_query);
    endPass(*_query);

    glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
    glGetBufferSubData(GL_TEXTURE_BUFFER, 0, bytes, records.data());
    glBindImageTexture(kResultImage, 0, 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA32UI);
    glBindBuffer(GL_TEXTURE_BUFFER, 0);
    glDeleteTextures(1, &texture);
    glDeleteBuffers(1, &buffer);

    std::vector<Fragment> fragments;
    std::transform(records.begin(), records.end(), std::back_inserter(fragments), fragmentOf);
    return fragments;
}

QImage DeepBuffer::picture()
{
    QImage image(_view.size, QImage::Format_RGBX8888);
    if (image.isNull())
        return image;
    beginPass(*_picture, kColorTarget);
    bindQueries(*_picture);
    bindTexture(*_picture, "u_Counts", kCountsUnit, _counts);
    set(*_picture, "u_ViewFromScene", QVariant::fromValue(_view.viewFromScene));
    set(*_picture, "u_Deepest", QVariant::fromValue(unsigned(_deepest)));
    drawQuad(*_picture);
    bindTexture(*_picture, "u_Counts", kCountsUnit, 0);
    unbindQueries(*_picture);
    glReadBuffer(kColorTarget);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, image.width(), image.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    endPass(*_picture);
    return image.mirrored();
}

// ---- passes --------------------------------------------------------------------------------------------------------

void DeepBuffer::beginPass(ShaderProgram& program, GLenum target)
{
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glDrawBuffers(1, &target);
    glViewport(0, 0, _view.size.width(), _view.size.height());
    program.bind();
}

void DeepBuffer::endPass(ShaderProgram& program)
{
    program.unbind();
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

void DeepBuffer::bindQueries(ShaderProgram& program)
{
    bindTexture(program, "u_SamplerHeadPointer", kHeadsUnit, _heads);
    bindTexture(program, "u_SamplerNodeBuffer", kNodesUnit, _nodes);
    set(program, "u_SamplerNodeBufferWidth", _nodesWidth);
    set(program, "u_InvCameraMatrix", QVariant::fromValue(_view.viewFromScene.inverted()));
    set(program, "u_InvProjMatrix", QVariant::fromValue(_view.clipFromView.inverted()));
    _scene.bindForQueries(program, kFirstLookupUnit);
}

void DeepBuffer::unbindQueries(ShaderProgram& program)
{
    _scene.unbindFromQueries(program, kFirstLookupUnit);
    bindTexture(program, "u_SamplerHeadPointer", kHeadsUnit, 0);
    bindTexture(program, "u_SamplerNodeBuffer", kNodesUnit, 0);
}

void DeepBuffer::drawQuad(ShaderProgram& program)
{
    const QSharedPointer<DrawBuffers> quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder bound(quad);
    quad->VAO()->enableShaderProgramArrays(&program);
    quad->draw(&program);
}

} // namespace deeppick
