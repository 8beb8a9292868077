// SPDX-License-Identifier: MIT
// The passes: which drawables take part, in which order their commands are drawn, and what is bound for them.
#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "GLFunctions.h"
#include "GPUModel.h"
#include "GPUModelCommands.h"
#include "GPUModelShownTransforms.h"
#include "InstanceDataCollection.h"
#include "TextureManager.h"
#include "VertexArrayObject.h"

#include <QVector3D>

#include <algorithm>

namespace Harrow::Vrk
{
namespace
{

constexpr quint64 kFlagsCountInSimpleDraws = 1 << 0;
constexpr quint64 kOnlySimpleDraws = 1 << 4;
constexpr quint64 kTwoSided = quint64(1) << 60;
constexpr quint64 kSortByDistance = quint64(1) << 62;

constexpr GLuint kRestartIndex = 0xFFFFFFFF;
constexpr float kUnknownDistance = 1.0e30f;

const QList<int> kAllKeys;

/// Once in the process for each flag, and not once in each context: that is interface.
void setUpPrimitiveRestart(bool& isDone)
{
    if (isDone)
        return;
    isDone = true;
    glEnable(GL_PRIMITIVE_RESTART);
    glPrimitiveRestartIndex(kRestartIndex);
}

bool restartIsSetUp = false;
bool simpleRestartIsSetUp = false;

void setWinding(GPUModel::WindingType winding)
{
    switch (winding)
    {
    case GPUModel::WindingUnchanged:
        break;
    case GPUModel::WindingNone:
        glDisable(GL_CULL_FACE);
        break;
    case GPUModel::WindingCCW:
        glEnable(GL_CULL_FACE);
        glFrontFace(GL_CCW);
        break;
    case GPUModel::WindingCW:
        glEnable(GL_CULL_FACE);
        glFrontFace(GL_CW);
        break;
    }
}

/// Stencil writing for the length of a pass; the test is switched off again where it was off.
class StencilScope
{
public:
    explicit StencilScope(bool isWanted) : _isWanted(isWanted)
    {
        if (!_isWanted)
            return;
        _wasEnabled = glIsEnabled(GL_STENCIL_TEST) != GL_FALSE;
        glEnable(GL_STENCIL_TEST);
        glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
        glStencilMask(255);
    }
    void end() const
    {
        if (_isWanted && !_wasEnabled)
            glDisable(GL_STENCIL_TEST);
    }

private:
    bool _isWanted;
    bool _wasEnabled = false;
};

/// Wraps around behind the greatest key.
GLint stencilOf(int key)
{
    return static_cast<GLint>(static_cast<GLuint>(key) + 1);
}

/// From the nearest point of the box.
float distanceTo(const GPUModel::BoundingBox& box, const QVector3D& point)
{
    const QVector3D nearest(std::max(box.minX, std::min(point.x(), box.maxX)),
                            std::max(box.minY, std::min(point.y(), box.maxY)),
                            std::max(box.minZ, std::min(point.z(), box.maxZ)));
    return (point - nearest).length();
}

} // namespace

bool& GPUModel::primitiveRestartFlag(bool simple)
{
    return simple ? simpleRestartIsSetUp : restartIsSetUp;
}

/// What a pass was asked for.
struct GPUModel::Pass
{
    ShaderProgram* program;
    TextureManager* textureManager;
    quint64 value;
    quint64 mask;
    WindingType winding;
    const QMatrix4x4* matrix;
    const QList<int>& exclude;
    const QList<int>& materials;
    bool stencil;

    bool selects(quint64 flags) const
    {
        return (flags & mask) == (value & mask);
    }
};

/// What is bound, from drawable to drawable: what two of them share is not bound again.
struct GPUModel::Bound
{
    InstanceDataCollection* material = nullptr;
    InstanceDataCollection* object = nullptr;
    TextureManager* textureManager = nullptr;
    const VertexArrayObject* vertexArray = nullptr;
    DrawBuffers* drawBuffers = nullptr;

    /// Binds what a drawable wants. False if there is no draw list to draw with then.
    bool change(const Drawable& drawable, ShaderProgram* program, TextureManager* manager)
    {
        const bool newMaterial = changeRecords(material, drawable.materialData, manager);
        const bool newObject = changeRecords(object, drawable.objectData, manager);
        if (newMaterial || newObject || textureManager != manager)
        {
            if (textureManager)
                textureManager->unbind(program);
            textureManager = manager;
            if (textureManager)
                textureManager->bind(program);
        }
        if (drawBuffers != drawable.drawBuffers && drawable.drawBuffers->rebind(drawBuffers))
            drawBuffers = drawable.drawBuffers;
        if (!drawBuffers)
            return false;
        const QSharedPointer<VertexArrayObject> wanted = drawBuffers->VAO();
        if (vertexArray != wanted.data())
        {
            vertexArray = wanted.data();
            wanted->enableShaderProgramArrays(program);
        }
        return true;
    }

    void unbindRecords(ShaderProgram* program, TextureManager* manager) const
    {
        if (textureManager)
            textureManager->unbind(program);
        if (material)
            material->unbind(manager);
        if (object)
            object->unbind(manager);
    }

private:
    /// Whether others were bound than before.
    static bool changeRecords(InstanceDataCollection*& current, InstanceDataCollection* wanted, TextureManager* manager)
    {
        if (current == wanted)
            return false;
        if (current)
            current->unbind(manager);
        current = wanted;
        if (current)
            current->bind(manager);
        return current != nullptr;
    }
};

struct GPUModel::PassState
{
    explicit PassState(const Pass& pass) : sorts((pass.value & kSortByDistance) && pass.matrix)
    {
        if (sorts)
            point = -pass.matrix->inverted().column(3).toVector3D();
    }

    bool sorts; ///< By the distance from `point`.
    QVector3D point;
    Bound bound;
    WindingType lastWinding = WindingUnchanged;
    bool result = true;
};

// ---- passes --------------------------------------------------------------------------------------------------------

bool GPUModel::draw(ShaderProgram* program, const quint64& value, const quint64& mask, const WindingType& winding,
                    bool stencil)
{
    return draw({program, &TextureManager::Instance(), value, mask, winding, nullptr, kAllKeys, kAllKeys, stencil});
}

bool GPUModel::draw(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask)
{
    return draw({program, textureManager, value, mask, WindingUnchanged, nullptr, kAllKeys, kAllKeys, false});
}

bool GPUModel::draw(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask,
                    const WindingType& winding, bool stencil)
{
    return draw({program, textureManager, value, mask, winding, nullptr, kAllKeys, kAllKeys, stencil});
}

bool GPUModel::draw(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask,
                    const WindingType& winding, const QMatrix4x4* matrix, bool stencil)
{
    return draw({program, textureManager, value, mask, winding, matrix, kAllKeys, kAllKeys, stencil});
}

bool GPUModel::drawExclude(ShaderProgram* program, const quint64& value, const quint64& mask,
                           const WindingType& winding, const QList<int>& exclude)
{
    return draw({program, &TextureManager::Instance(), value, mask, winding, nullptr, exclude, kAllKeys, false});
}

bool GPUModel::drawExclude(ShaderProgram* program, TextureManager* textureManager, const quint64& value,
                           const quint64& mask, const WindingType& winding, const QMatrix4x4* matrix,
                           const QList<int>& exclude)
{
    return draw({program, textureManager, value, mask, winding, matrix, exclude, kAllKeys, false});
}

bool GPUModel::drawMaterials(ShaderProgram* program, TextureManager* textureManager, const quint64& value,
                             const quint64& mask, const WindingType& winding, const QMatrix4x4* matrix,
                             const QList<int>& materials)
{
    return draw({program, textureManager, value, mask, winding, matrix, kAllKeys, materials, false});
}

bool GPUModel::draw(const Pass& pass)
{
    if (hasFeatureFlags(kOnlySimpleDraws))
        return drawSimple(pass.program, pass.textureManager, pass.value, pass.mask);
    const StencilScope stencil(pass.stencil);
    setUpPrimitiveRestart(primitiveRestartFlag(false));

    _excluded.resize(pass.exclude.size());
    std::partial_sort_copy(pass.exclude.cbegin(), pass.exclude.cend(), _excluded.begin(), _excluded.end());

    PassState state(pass);
    if (pass.materials.isEmpty())
        for (auto key = _materialDrawables.cbegin(); key != _materialDrawables.cend(); ++key)
            drawKey(pass, key.key(), *key, state);
    else
        for (const int key : pass.materials)
            drawKey(pass, key, _materialDrawables[key], state); // a key that there is not gets an empty entry

    state.bound.unbindRecords(pass.program, pass.textureManager);
    stencil.end();
    if (state.bound.drawBuffers)
        state.bound.drawBuffers->unbind();
    glDisable(GL_CULL_FACE);
    return state.result;
}

/// The drawables of one material key.
void GPUModel::drawKey(const Pass& pass, int key, const QList<int>& positions, PassState& state)
{
    if (std::binary_search(_excluded.cbegin(), _excluded.cend(), key))
        return;
    bool isStencilSet = false;
    for (const int position : positions)
    {
        const Drawable& drawable = _drawables.at(position);
        if (!pass.selects(drawable.flags) || drawable.culledCount >= commandCount(drawable.drawBuffers))
            continue;
        const WindingType winding = (drawable.flags & kTwoSided) ? WindingNone : pass.winding;
        if (winding != state.lastWinding)
        {
            setWinding(winding);
            state.lastWinding = winding;
        }
        if (pass.stencil && !isStencilSet)
        {
            glStencilFunc(GL_ALWAYS, stencilOf(key), 255);
            isStencilSet = true;
        }
        state.result = drawMesh(drawable, pass, winding, state);
    }
}

bool GPUModel::drawSimple(ShaderProgram* program, TextureManager* textureManager, const quint64& value,
                          const quint64& mask)
{
    setUpPrimitiveRestart(primitiveRestartFlag(true));
    const bool flagsCount = hasFeatureFlags(kFlagsCountInSimpleDraws);
    Bound bound;
    bool result = true;
    for (const QList<int>& positions : std::as_const(_materialDrawables))
    {
        for (const int position : positions)
        {
            const Drawable& drawable = _drawables.at(position);
            if (flagsCount && (drawable.flags & mask) != (value & mask))
                continue;
            if (!drawable.drawBuffers || !drawable.drawBuffers->willDraw(program, nullptr))
                continue;
            if (bound.change(drawable, program, textureManager) && !bound.drawBuffers->draw(program, nullptr))
                result = false;
        }
    }
    bound.unbindRecords(program, textureManager);
    if (bound.drawBuffers)
        bound.drawBuffers->unbind();
    return result;
}

// ---- one drawable --------------------------------------------------------------------------------------------------

/// Draws the commands that are to be seen; the mirrored ones after the others, with the front face turned around.
bool GPUModel::drawMesh(const Drawable& drawable, const Pass& pass, WindingType winding, PassState& state)
{
    collectCommands(drawable, winding);
    const bool result = drawMesh(drawable, pass, _commands, state);
    if (!result || _flipped.isEmpty())
        return result;
    const bool isClockwise = winding == WindingCW;
    glFrontFace(isClockwise ? GL_CCW : GL_CW);
    drawMesh(drawable, pass, _flipped, state);
    glFrontFace(isClockwise ? GL_CW : GL_CCW);
    return result;
}

void GPUModel::collectCommands(const Drawable& drawable, WindingType winding)
{
    const bool splits = winding == WindingCCW || winding == WindingCW;
    const bool negativesFirst = winding == WindingCW;
    const qsizetype commands = std::min(
        {qsizetype(commandCount(drawable.drawBuffers)), drawable.transformRefs.size(), drawable.culled.size()});
    const bool* const culled = drawable.culled.constData();
    const int* const transforms = drawable.transformRefs.constData();
    const bool* const negative = _transformNegative.constData();
    const ShownTransforms transformsShown(*this);
    _commands.resize(commands);
    _flipped.resize(splits ? commands : 0);
    // Each command is written behind both lists, and one or none of these grows: what is in view is as good as random,
    // and a branch would be guessed wrong half of the time.
    int* const first = _commands.data();
    int* const second = splits ? _flipped.data() : first;
    qsizetype firstCount = 0;
    qsizetype secondCount = 0;
    for (qsizetype command = 0; command < commands; ++command)
    {
        const int transform = transforms[command];
        if (!transformsShown.contains(transform))
        {
            if (!culled[command])
                VRK_ASSERT(this->isValidTransform(transform), "Command %d of drawable %d has no transform",
                           static_cast<int>(command), drawable.handle);
            continue;
        }
        const bool shown = transformsShown.isShown(transform);
        const bool isDrawn = shown && !culled[command];
        const bool flips = splits && negative[transform] != negativesFirst;
        first[firstCount] = static_cast<int>(command);
        firstCount += isDrawn && !flips ? 1 : 0;
        if (splits)
        {
            second[secondCount] = static_cast<int>(command);
            secondCount += isDrawn && flips ? 1 : 0;
        }
    }
    _commands.resize(firstCount);
    _flipped.resize(secondCount);
}

/// Sorts the commands if the pass wants that, binds what they need, and draws them.
bool GPUModel::drawMesh(const Drawable& drawable, const Pass& pass, QList<int>& commands, PassState& state)
{
    if (state.sorts)
        sortByDistance(drawable, state.point, commands);
    if (!drawable.drawBuffers->willDraw(pass.program, &commands))
        return true;
    if (!state.bound.change(drawable, pass.program, pass.textureManager))
        return true;
    return state.bound.drawBuffers->draw(pass.program, &commands);
}

/// Nearest first, by the distance from the box in its own space. A command without box or transform comes last and is
/// listed as command 0: that is interface.
void GPUModel::sortByDistance(const Drawable& drawable, const QVector3D& point, QList<int>& commands)
{
    const QMatrix4x4* const inverses = knowWorldInverses(drawable, commands);
    const int* const boxRefs = drawable.boundingBoxRefs.constData();
    const int* const transforms = drawable.transformRefs.constData();
    const BoundingBox* const boxes = _boundingBoxes.constData();
    _sortEntries.resize(commands.size());
    SortEntry* entry = _sortEntries.data();
    for (const int command : std::as_const(commands))
    {
        if (!isValidBoundingBox(boxRefs[command]))
        {
            *entry++ = {kUnknownDistance, 0};
            continue;
        }
        const float distance = distanceTo(boxes[boxRefs[command]], inverses[transforms[command]].map(point));
        // What is no number cannot be sorted.
        *entry++ = {distance >= 0.0f ? distance : kUnknownDistance, command};
    }
    std::sort(_sortEntries.begin(), _sortEntries.end(),
              [](const SortEntry& a, const SortEntry& b) { return a.distance < b.distance; });
    std::transform(_sortEntries.cbegin(), _sortEntries.cend(), commands.begin(),
                   [](const SortEntry& sorted) { return sorted.command; });
}

/// The inverses of the world matrices, of which those of the commands are up to date: they are computed when they are
/// first wanted, and again when the transform has moved.
const QMatrix4x4* GPUModel::knowWorldInverses(const Drawable& drawable, const QList<int>& commands)
{
    _worldInverses.resize(_worldTransforms.size());
    _inverseKnown.resize(_worldTransforms.size()); // new ones are not known
    QMatrix4x4* const inverses = _worldInverses.data();
    bool* const known = _inverseKnown.data();
    for (const int command : commands)
    {
        const int transform = drawable.transformRefs.at(command);
        if (known[transform])
            continue;
        inverses[transform] = _worldTransforms.at(transform).inverted();
        known[transform] = true;
    }
    return inverses;
}

} // namespace Harrow::Vrk
