// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The scene: everything that is drawn, as flat lists. Draw lists with their records, a hierarchy of transforms as
/// parallel arrays, boxes, cameras, lights, and tables of names that lead to instances.

#include "Export.h"

#include <QGenericMatrix>
#include <QHash>
#include <QList>
#include <QMatrix4x4>
#include <QString>
#include <QStringList>

#include <cstddef>

namespace Harrow::Vrk
{

/// \name Members of object records that the scene fills
///@{
extern VRKGL_EXPORT const QString kModelMatrix;         ///< "ModelMatrix": from the geometry's space to the world.
extern VRKGL_EXPORT const QString kPreviousModelMatrix; ///< "PreviousModelMatrix": the same, one frame ago.
extern VRKGL_EXPORT const QString kInverseModelMatrix;  ///< "InverseModelMatrix"
extern VRKGL_EXPORT const QString kModelNormalMatrix;   ///< "ModelNormalMatrix": nine floats, for normals.
///@}
extern VRKGL_EXPORT const QString kPlanar; ///< "[PLANAR]": a mark for applications.

class DrawBuffers;
class InstanceDataCollection;
class ShaderProgram;
class TextureManager;

/// A light as the scene's file or application defines it. Stored and given back; the library reads nothing of it.
struct Light
{
    /// As its source wrote it.
    quint32 payload[15] = {};
    quint64 bits = 0;

    /// The top three bits of `bits`.
    unsigned getLightType() const
    {
        return static_cast<unsigned>(bits >> 61);
    }
};

/// Filled in this order: `addTransform` and `loadBoundingBoxes`; `add`, then `useTransform` and `useBoundingBox` for
/// each of its commands; names. A frame is then
///
///     model.setLocalTransform(…);              // marks only
///     model.updateTransforms();                // world matrices, and the matrices in the object records
///     model.resetCulling();                    // for each view
///     model.visibilityCull();
///     model.frustumCull(clipFromWorld);
///     model.sortDrawablesByFlags();
///     model.draw(program, value, mask, …);     // for each pass
///     model.updatePreviousMatrices();
///
/// **Handles and positions.** `add` gives a handle, which stays; sorting moves drawables to other positions. What a
/// transform moves, and what a material key draws, is kept by position, as it was when it was added; everything else
/// goes by handle.
///
/// **Flags.** A pass draws the drawables with `(flags & mask) == (value & mask)`. Of the 64 bits the library reads:
/// 52 to 54 the number of tangent sets, 55 to 57 that of UV sets, 60 two-sided, 63 hidden; and on the `value` of a
/// draw, 62 for commands sorted by distance. The others are the application's.
///
/// A plain value: a copy shares lists until one is written to, and the same draw lists and records. Of all copies only
/// one may own those (`setDeleteOnClear`). One thread, that of the OpenGL context for drawing. Indices and handles must
/// be valid: one that is not is reported, and nothing is read or written.
class VRKGL_EXPORT GPUModel
{
public:
    /// What stands for none where an index is expected.
    static constexpr int kInvalidTransformRef = -1;
    static constexpr int kInvalidBoundingBoxRef = -1;
    static constexpr int kInvalidCameraIndex = -1;

    /// How a pass treats the two sides of triangles.
    enum WindingType
    {
        WindingUnchanged = 0, ///< As the caller has set it.
        WindingNone = 1,      ///< Both sides are drawn.
        WindingCCW = 2,       ///< Counter-clockwise is the front; mirrored commands are drawn with it turned around.
        WindingCW = 3
    };

    /// A draw list, its records, and what is known of each of its commands.
    struct Drawable
    {
        DrawBuffers* drawBuffers = nullptr;             ///< Vertices, indices and commands.
        InstanceDataCollection* materialData = nullptr; ///< The records of materials.
        InstanceDataCollection* objectData = nullptr;   ///< Gets the matrices.
        quint64 flags = 0;                              ///< See the class.
        qint32 handle = 0;                              ///< What `add` gave.
        QList<int> transformRefs;                       ///< For each command, -1 for none.
        QList<int> boundingBoxRefs;                     ///< For each command, -1 for none.
        QList<bool> culled;                             ///< For each command.
        qint32 culledCount = 0;                         ///< Of the commands.
    };

    /// In the space of the geometry that it bounds.
    struct BoundingBox
    {
        /// The lower and the upper corner.
        float minX = 0.0f, minY = 0.0f, minZ = 0.0f;
        float maxX = 0.0f, maxY = 0.0f, maxZ = 0.0f;
    };

    /// One instance of a drawable, which has the number of a draw command.
    struct InstanceRef
    {
        /// The handle of the drawable, and which of its instances.
        qint32 drawable = 0;
        qint32 instance = 0;

        /// Whether both are equal.
        friend bool operator==(const InstanceRef& a, const InstanceRef& b)
        {
            return a.drawable == b.drawable && a.instance == b.instance;
        }
    };

    /// Lengths in one unit of the application's; the transform's -z looks ahead.
    struct Camera
    {
        qint32 transform = 0;            ///< Its index.
        float horizontalAperture = 0.0f; ///< Width of the film.
        float verticalAperture = 0.0f;   ///< Height of the film.
        float horizontalOffset = 0.0f;   ///< Of the film.
        float verticalOffset = 0.0f;     ///< Of the film, along its height.
        float focalLength = 0.0f;        ///< From the film.
        float projectionDistance = 0.0f; ///< Where an orthographic camera's film is scaled.
        quint32 spare[2] = {};           ///< Not read.
        qint32 projection = 0;           ///< 0 perspective, 1 orthographic.
        float farClip = 0.0f;            ///< 0 for the model's default, as with the next one.
        float nearClip = 0.0f;           ///< 0 for the model's default.
    };

    GPUModel();
    /// Share lists, draw lists and records, as told above.
    GPUModel(const GPUModel& other);
    GPUModel& operator=(const GPUModel& other);
    /// Clears.
    ~GPUModel();

    /// \name Drawables
    ///@{
    /// Adds a draw list with its records, either of which may be null, and returns its handle. `materialKey` files it
    /// for `drawMaterials` and `drawExclude`, and is what a pass with stencil writes. Its commands have neither
    /// transform nor box yet.
    int add(DrawBuffers* buffers, int materialKey, InstanceDataCollection* material, InstanceDataCollection* object,
            const quint64& flags);
    /// The same for a model that is drawn by `drawSimple` alone: filed under key 0, and without anything to cull.
    int addSimple(DrawBuffers* buffers, int, InstanceDataCollection* material, InstanceDataCollection* object,
                  const quint64& flags);
    /// Replaces the contents of a drawable, and the flags within `mask`. With ownership the old ones are deleted: turn
    /// it off before one of them is given again, which is reported otherwise and changes nothing.
    void set(int handle, DrawBuffers* buffers, InstanceDataCollection* material, InstanceDataCollection* object,
             quint64 value, quint64 mask);

    DrawBuffers* drawBuffers(int handle);
    const DrawBuffers* drawBuffers(int handle) const;
    InstanceDataCollection* materialData(int handle);
    const InstanceDataCollection* materialData(int handle) const;
    InstanceDataCollection* objectData(int handle);
    const InstanceDataCollection* objectData(int handle) const;
    quint64 getFlags(int handle) const;
    int numDrawables() const;
    bool isDrawablesEmpty() const;

    /// Flags of one drawable, or of the handles from `first` up to and without `last`; of none if one of them is bad.
    void addFlags(int handle, quint64 bits);
    void addFlags(int first, int last, quint64 bits);
    void removeFlags(int handle, quint64 bits);
    void removeFlags(int first, int last, quint64 bits);
    /// Sets the flags within `mask` to those of `value`.
    void setFlags(int handle, quint64 value, quint64 mask);
    void setFlags(int first, int last, quint64 value, quint64 mask);

    /// Brings the drawables into ascending order of their flags, if that may have been lost; equal ones keep their
    /// order.
    void sortDrawablesByFlags();
    static bool flagsLessThan(const Drawable& a, const Drawable& b);

    /// Whether the model owns draw lists and records: it deletes them on `clear`, on `set` and at its end. On at the
    /// start. Of what it owns nothing may be named by two drawables; `clear` reports it and deletes it once.
    void setDeleteOnClear(bool deleteOnClear);
    /// Removes drawables, transforms and names. Cameras, lights, boxes and settings stay.
    void clear();

    /// The highest numbers in the flags of the drawables, and the sum of the vertices of their draw lists.
    unsigned maxUVSets() const;
    unsigned maxTangentSets() const;
    int getTotalVerts() const;
    /// Bytes.
    quint64 memoryEstimateCPU() const;
    quint64 memoryEstimateGPU() const;
    ///@}

    /// Switches. Bit 0: `drawSimple` looks at flags. Bit 1: `resetCulling` and `isDrawEmpty` look at culling. Bit 4:
    /// every draw is a `drawSimple`. 15 at the start.
    void setFeatureFlags(quint64 flags);
    quint64 getFeatureFlags() const;
    /// Whether all of these are set.
    bool hasFeatureFlags(quint64 flags) const;

    /// \name Transforms
    /// By index, in the order of their adding; a matrix takes points from the transform's space to that of its parent,
    /// or to the world.
    ///@{
    /// `parent` is -1 for none. Returns the index.
    int addTransform(int parent, const QMatrix4x4& local);
    /// Nothing if the matrix is what it was, `keepParentPositionOnly` included. With that the transform takes only
    /// position and size from its parents; the matrix that is stored loses its own position then and takes on the
    /// parents' size, at each update anew.
    void setLocalTransform(int index, const QMatrix4x4& local, bool keepParentPositionOnly);
    /// By the parent's world matrix as it was last updated.
    void setWorldTransform(int index, const QMatrix4x4& world);
    /// Takes effect when the transform is next updated; marks nothing.
    void setTransformParent(int index, int parent);
    int transformParent(int index) const;

    /// 1 visible, 2 hidden, 3 hidden with all its descendants; any other counts as visible.
    void setVisibility(int index, int visibility);
    bool isVisible(int index) const;
    /// Whether this transform or one above it is hidden with its descendants. False for -1.
    bool isParentHidden(int index) const;

    /// A name that another transform has goes over to this one.
    void setTransformName(int index, const QString& name);
    /// -1 for an unknown name.
    int findTransform(const QString& name) const;
    QList<QString> transformNames() const;

    /// As it was last set.
    QMatrix4x4 localTransform(int index) const;
    /// As they were last updated.
    QMatrix4x4 worldTransform(int index) const;
    QGenericMatrix<3, 3, float> normalTransform(int index) const;
    bool isValidTransform(int index) const;
    /// Whether this transform or one above it waits for an update.
    bool isTransformDirty(int index) const;
    /// A transform counts as its own descendant.
    bool isDescendant(int ancestor, int node) const;

    /// Lets a command follow a transform. A command that followed another one goes on to get the matrices of that too.
    void useTransform(int handle, int command, int transform);

    /// Computes the world matrices of what has changed and of all below it, and writes "ModelMatrix",
    /// "PreviousModelMatrix", "InverseModelMatrix" and, if the plan has it, "ModelNormalMatrix" into the object records
    /// that follow them. False when nothing has changed. A parent that there is not, or that leads back to the
    /// transform, is reported and counts as none.
    bool updateTransforms();
    /// Makes the present matrices of what has moved the previous ones. Once a frame, after the passes, and before a
    /// `clear`: what is left then is reported.
    void updatePreviousMatrices();
    ///@}

    /// \name Boxes
    ///@{
    /// Replaces all boxes; none for a count below 1.
    void loadBoundingBoxes(const BoundingBox* boxes, int count);
    BoundingBox getBoundingBox(int index) const;
    bool isValidBoundingBox(int index) const;
    void useBoundingBox(int handle, int command, int box);
    /// Around the boxes of all commands that are not culled, each in its own space. From 1e20 to -1e20 if there are
    /// none.
    BoundingBox sceneBounds();
    ///@}

    /// \name Names
    /// Instances by the name of their material or object. Unknown names have none.
    ///@{
    void addMaterialName(int handle, int instance, const QString& name);
    void addObjectName(int handle, int instance, const QString& name);
    QList<InstanceRef> materialInstances(const QString& name) const;
    QList<InstanceRef> objectInstances(const QString& name) const;
    QList<QString> materialNames() const;
    QList<QString> objectNames() const;
    /// Writes a member of the material record, or of the object record, of each such instance.
    void setMaterialProperty(const QString& name, const QString& property, const void* data, size_t size);
    void setObjectProperty(const QString& name, const QString& property, const void* data, size_t size);
    ///@}

    /// \name Cameras and lights
    ///@{
    /// Return the index.
    int addCamera(const Camera& camera, const QString& name);
    int addLight(const Light& light, const QString& name);
    /// False, with nothing written, at or beyond the number of cameras.
    bool setCamera(int index, const Camera& camera);
    Camera getCamera(int index) const;
    int getCameraCount() const;
    /// The first of that name, or -1.
    int getCameraIndex(const QString& name) const;
    const QList<QString>& getCameraNames() const;
    /// To clip space, for a picture of `aspect` (width by height) that shows the whole film. A negative index stands
    /// for a film of 36 by 24 at a focal length of 50.
    QMatrix4x4 getCameraProjectionMatrix(int index, float aspect) const;
    /// From the world to the camera.
    QMatrix4x4 getCameraWorldSpaceMatrix(int index) const;
    void setClipPlaneDefaults(float nearClip, float farClip);
    void getLight(int index, Light& light) const;
    int lightCount();
    ///@}

    /// Kept for the application.
    bool containsReflectedTransparency() const;
    void setContainsReflectedTransparency(bool contains);

    /// \name Culling
    /// Marks add up until they are reset. The first two return the number of commands that they have marked.
    ///@{
    /// Marks commands outside the frustum. A command without a transform is outside; one without a box, and one whose
    /// matrix is not up to date, is left alone. A box that only touches a plane is outside.
    int frustumCull(const QMatrix4x4& viewProjection);
    /// Marks hidden drawables, commands under hidden transforms, and those that are scaled to nothing.
    int visibilityCull();
    void resetCulling();
    /// Whether any drawable has one of these flags.
    bool isDrawAny(quint64 mask) const;
    /// Whether a pass would draw nothing.
    bool isDrawEmpty(quint64 value, quint64 mask) const;
    ///@}

    /// \name Drawing
    /// One pass. `program` is bound and made for the texture manager (`TextureManager::Instance()` if none is named).
    /// `matrix` serves the sorting by distance, nearest first: around the point that is the negated position of its
    /// inverse, which for a matrix that only moves is where it moves to. Null for no sorting. With `stencil` the
    /// stencil buffer gets each drawable's material key plus 1.
    ///
    /// Leaves face culling off, primitive restart on with index 0xFFFFFFFF (switched on at the first draw of the
    /// process), the front face of the pass, and the stencil's operation, mask and function. Nothing stays bound but
    /// the program.
    ///@{
    /// What the last drawable said that was drawn.
    bool draw(ShaderProgram* program, const quint64& value, const quint64& mask, const WindingType& winding,
              bool stencil);
    bool draw(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask);
    bool draw(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask,
              const WindingType& winding, bool stencil);
    bool draw(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask,
              const WindingType& winding, const QMatrix4x4* matrix, bool stencil);
    /// All but these material keys.
    bool drawExclude(ShaderProgram* program, const quint64& value, const quint64& mask, const WindingType& winding,
                     const QList<int>& exclude);
    bool drawExclude(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask,
                     const WindingType& winding, const QMatrix4x4* matrix, const QList<int>& exclude);
    /// These material keys alone; all for an empty list.
    bool drawMaterials(ShaderProgram* program, TextureManager* textureManager, const quint64& value,
                       const quint64& mask, const WindingType& winding, const QMatrix4x4* matrix,
                       const QList<int>& materials);
    /// Everything, whether culled or not, without any state of faces and stencil. False if any drawable failed.
    bool drawSimple(ShaderProgram* program, TextureManager* textureManager, const quint64& value, const quint64& mask);
    ///@}

private:
    friend struct GPUModelRecordsTestAccess;
    friend struct GPUModelTestAccess;

    /// States of `_transformVisibility`.
    static constexpr int kVisible = 1;
    static constexpr int kHidden = 2;
    static constexpr int kHiddenWithDescendants = 3;

    struct Bound;
    class MatrixWriter;
    struct Pass;
    struct PassState;
    class RecordRun;
    class ShownTransforms;
    class Update;

    /// One command and how far away it is.
    struct SortEntry
    {
        float distance = 0.0f;
        int command = 0;
    };

    bool isHandle(int handle) const;
    const Drawable* find(int handle) const;
    Drawable* find(int handle);
    int addDrawable(DrawBuffers* buffers, InstanceDataCollection* material, InstanceDataCollection* object,
                    quint64 flags);
    void setFlagsOf(Drawable& drawable, quint64 value, quint64 mask);
    void deleteContents();
    void setProperty(const QList<InstanceRef>& instances, InstanceDataCollection* Drawable::*records,
                     const QString& property, const void* data, size_t size);

    template <typename Predicate> bool anyAbove(int index, Predicate predicate) const;
    bool isShown(int index) const;
    const QList<quint8>& dirtyWithAncestors();
    void spreadDirtiness();
    bool spreadDirtinessDownwards();
    void spreadDirtinessFromMarked();
    void knowChildren();
    InstanceDataCollection* recordsAt(int position) const;
    void clearTransforms();
    quint64 transformBytes() const;

    template <typename Test> int cullCommands(Drawable& drawable, Test isCulled);
    void widenSceneBounds(const Drawable& drawable);

    static bool& primitiveRestartFlag(bool simple);
    bool draw(const Pass& pass);
    void drawKey(const Pass& pass, int key, const QList<int>& positions, PassState& state);
    bool drawMesh(const Drawable& drawable, const Pass& pass, WindingType winding, PassState& state);
    bool drawMesh(const Drawable& drawable, const Pass& pass, QList<int>& commands, PassState& state);
    void collectCommands(const Drawable& drawable, WindingType winding);
    void sortByDistance(const Drawable& drawable, const QVector3D& point, QList<int>& commands);
    const QMatrix4x4* knowWorldInverses(const Drawable& drawable, const QList<int>& commands);

    quint64 _featureFlags = 15;
    QList<Drawable> _drawables;
    QList<int> _drawableIndex;
    QHash<int, QList<int>> _materialDrawables;
    QHash<QString, QList<InstanceRef>> _materialInstances;
    QHash<QString, QList<InstanceRef>> _objectInstances;
    bool _deleteOnClear = true;
    bool _drawablesUnsorted = false;
    QList<QMatrix4x4> _localTransforms;
    QList<bool> _keepParentPositionOnly;
    QList<QMatrix4x4> _worldTransforms;
    QList<QGenericMatrix<3, 3, float>> _normalTransforms;
    QList<int> _transformParents;
    QList<bool> _transformNegative;
    QList<bool> _transformDirty;
    QList<int> _transformVisibility;
    bool _anyTransformDirty = false;
    QHash<QString, int> _transformNames;
    QList<QList<InstanceRef>> _transformUsers;
    QList<InstanceRef> _previousMatrixPending;
    QList<Camera> _cameras;
    QStringList _cameraNames;
    QList<Light> _lights;
    QStringList _lightNames;
    QList<BoundingBox> _boundingBoxes;
    BoundingBox _sceneBounds;
    bool _sceneBoundsDirty = true;
    bool _containsReflectedTransparency = false;
    float _defaultNearClip = 0.1f;
    float _defaultFarClip = 200.0f;

    int _hiddenTrees = 0; // transforms that hide all below them; as long as there are none, nobody looks upwards

    QList<int> _marked; // transforms in the order in which they became dirty
    bool _childrenKnown = false;
    QList<int> _firstChild; // -1 for none, as in the next one
    QList<int> _nextSibling;

    // Kept between passes for their room.
    QList<int> _excluded;
    QList<int> _commands;
    QList<int> _flipped;
    QList<SortEntry> _sortEntries;
    QList<QMatrix4x4> _worldInverses; // of those transforms that `_inverseKnown` names: what was sorted by
    QList<bool> _inverseKnown;
    QList<int> _chain;
    QList<quint8> _dirtyWithAncestors;
};

} // namespace Harrow::Vrk
