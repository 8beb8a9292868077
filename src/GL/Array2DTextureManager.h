// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The texture manager for thousands of textures on every driver: texels are copied into the layers of a few array
/// textures, and a table tells the shader the array and the layer of each token.

#include "TextureManager.h"

#include <cstdint>

namespace Harrow::Vrk
{

class OrderedTokens;
class TokensOfSlots;
struct BindlessTextureFunctions;

/// A slot is one `GL_TEXTURE_2D_ARRAY` of one size, internal format and sampler state, and one entry of the shader's
/// array of `sampler2DArray`, or of bindless handles. A 2D texture takes one layer of a slot, a cube map six, a 2D
/// array as many as it has; a set of UDIM patches takes a run of tokens, one for each place of its grid. Textures of
/// other targets are reported.
///
/// A texture whose format no slot has takes an unused slot. When all are in use it goes into one of another size and
/// the same sampler state, scaled by the copy, and layers of one slot move into another to free it: into smaller ones
/// or into larger ones, as `setSlotReallocationMethod` says. Both are told by a warning, as is a texture that
/// fits nowhere; that one samples as `VRK_INVALID_TEXEL`, and its next bind tries again.
///
/// `bind(tokens)` gives places, `bind(program)` makes storage, copies what is pending, level by level and on the GPU,
/// and sets the uniforms. Tokens stay placed when they are unbound. A source that has changed is copied again after
/// `dirty`. The copies are blits: an enabled scissor test limits them, and the draw framebuffer is bound for reading as
/// well behind them.
///
/// The slots take `getMaxSlots` texture units during a draw, the table one more. `setMaxSlots` comes before the first
/// bind of tokens; a larger number later is reported and has no effect. Token 0 is opaque white from the start.
///
/// Everything needs the context current in which the manager was made.
class VRKGL_EXPORT Array2DTextureManager : public TextureManager
{
public:
    /// How the shader reaches the slots.
    enum BindMode
    {
        BindSamplers = 0,
        BindBindless = 1 ///< As handles of `GL_ARB_bindless_texture`.
    };

    Array2DTextureManager();
    ~Array2DTextureManager() override;

    /// The other forms, which those below would hide.
    using TextureManager::bind;
    using TextureManager::unbind;

    /// Makes the slots sampled by the tokens ready and sets the uniforms of `program`, or of the program in use if
    /// null, which must be in use either way. Nothing for a program without any of the manager's uniforms.
    void bind(ShaderProgram* program) override;
    /// Gives a place to each token that has none. What it samples is copied by the next `bind(program)`.
    void bind(const QList<TextureToken>& tokens) override;
    void bind(const QSet<TextureToken>& tokens) override;
    /// Undoes `bind(program)`: gives the texture units back. Handles stay resident.
    void unbind(ShaderProgram* program) override;
    /// Nothing: tokens keep their places.
    void unbind(const QList<TextureToken>& tokens) override;

    /// Takes the texture's place away; its next bind gives it one for what it is then, and copies it.
    void dirty(Texture* texture) override;

    /// Also defines what the GLSL of this manager wants, `TEXTURE_MANAGER_ARRAY2D` and its kin: a program is built for
    /// the slots and switches that there are at this moment.
    void setup(GLSLMacroProcessor* processor) override;
    QString getShaderFile() override;

    /// Forgets places and slots. Tokens stay issued, with the textures behind them, but have no entry in the table any
    /// more: binding one is reported. The array textures live as long as the manager.
    void clear() override;

    /// Any other value: the warning "Unsupported slot reallocation method request %d ignored!".
    void setSlotReallocationMethod(SlotReallocationMethod method) override;
    bool supportsUDIMs() const override;
    /// A streamer that has changed is copied again by the next `bind(program)`.
    bool updateTextureStreamers() override;

    /// Whether `BindBindless` can be used.
    static bool isBindlessSupported();

    /// Before the first `setup` and the first bind. `BindBindless` only where it is supported.
    void setBindMode(BindMode mode);

    /// \name Switches of the GLSL
    /// They count from the next `setup`.
    ///@{
    /// Keep the table in a texture. On at the start.
    void setUseSlotMapTexture(bool use);
    /// Keep the front of the table, 64 tokens, in an array of uniforms. Off at the start. Without the texture the other
    /// tokens cannot be reached.
    void setUseSlotMapUniforms(bool use);
    /// Index the array of samplers by constants alone, of 32 slots at most, for drivers that cannot do otherwise. Off
    /// at the start. GLSL before version 400 is always generated so.
    void setUseExplicitlyArrayAccessInGLSL(bool use);
    ///@}

protected:
    /// What all layers of a slot have in common. Sizes in texels of the base level, the rest as OpenGL's parameters.
    struct SlotFormat
    {
        /// The size and the internal format, then what `glTexParameter` takes.
        qint32 width = 0;
        qint32 height = 0;
        qint32 internalFormat = 0;
        qint32 wrapS = 0;
        qint32 wrapT = 0;
        qint32 magFilter = 0;
        qint32 minFilter = 0;
        float anisotropy = 1.0f;
        float lodBias = 0.0f;

        /// Whether all of it is equal.
        bool operator==(const SlotFormat& other) const;
    };

    /// A slot: its array texture and the book of its layers.
    struct SlotData;

    /// Where a token is, as the shader reads it: two `ivec4`.
    struct SlotLayerData
    {
        qint32 slot = -1;           ///< -1 for no place. Of a set of UDIM patches: its first patch token.
        qint32 layer = 0;           ///< The first one of the token.
        quint32 handle[2] = {0, 0}; ///< Bindless handle of the slot, low word first.
        qint32 udimWidth = 0;       ///< Patches in a row; 0 for what is no set.
        qint32 udimMaxPatch = 0;    ///< The highest offset of a patch.
        qint32 unused[2] = {0, 0};  ///< Fills the second `ivec4`.

        /// Splits the handle into its words.
        void setHandle(quint64 value);
    };

    void textureTokenIssued(const TextureToken& token) override;
    void textureTokenRevoked(const TextureToken& token) override;
    /// With `skipLayerRelease` the layers stay taken, since they are another token's.
    virtual void textureTokenRevoked(const TextureToken& token, bool skipLayerRelease);

    /// The format with its size brought into the limits of slots and to their alignment.
    SlotFormat alignedSlotFormat(const SlotFormat& format) const;
    /// Places a texture: `record` becomes its place, or a fresh record.
    void determineSlotLayerDataForTexture(Texture* texture, TextureToken token, SlotLayerData& record);
    /// Takes `layers` layers in a row from the slot that suits the format best.
    SlotLayerData findSlotLayer(const SlotFormat& format, int layers);
    /// The used slot with the sampler state of the format that fits its size best, other than `exclude`.
    bool searchForSimilarSlot(const SlotFormat& format, SlotData*& slot, int& index, SlotData* exclude);
    bool seachForSlotWithLargestXY(SlotData*& slot, int& index);
    QList<int> filterSlotsBySimilar(const SlotFormat& format, const QList<int>& list) const;
    QList<int> sortSlotsByLargest(const QList<int>& list) const;
    /// Gives the tokens of one slot places in another. False when one finds none there; those before it have moved.
    bool moveSlotLayers(int from, int to);

    /// Storage for the slots that have outgrown theirs, and the copies that are pending.
    void updateSlots();
    void setupSlots();
    void deleteSlots();
    /// Copies a token's texels into its layers. True when nothing is left to copy.
    bool blitTokenToTextureSlot(const TextureToken& token);

    /// All slots with their tokens, to the debug log.
    void dumpSlots();

private:
    friend struct Array2DTextureManagerTestAccess;

    struct Locations;

    /// The table is uploaded as it stands.
    static constexpr int kVectorsPerToken = 2;
    /// The least that OpenGL grants.
    static constexpr int kLeastMaxTextureSize = 1024;

    void readLimits();
    void resetTables();
    int slotCount() const;
    bool hasSlot(int slot) const;
    bool haveSlots(const QList<int>& list) const;
    int maxArrayTextureLayers();

    template <typename Tokens> void bindTokens(const Tokens& tokens);
    void bindTextureToken(TextureToken token);
    bool isPlaced(const TextureToken& token) const;
    void checkTarget(const Texture& texture, const TextureToken& token) const;
    void bindUDIMToken(TextureToken token, const UDIMPatches& patches);
    bool hasRecord(const TextureToken& token) const;
    void setRecord(qsizetype token, const SlotLayerData& record);
    void releaseLayers(qsizetype token);

    SlotLayerData allocateIn(int slot, int layers);
    SlotLayerData findInExactSlots(const SlotFormat& aligned, int layers);
    SlotLayerData findInUnusedSlots(const SlotFormat& aligned, int layers);
    SlotLayerData findInSimilarSlots(const SlotFormat& format, const SlotFormat& aligned, int layers);
    SlotLayerData findInMergedSlots(const SlotFormat& aligned, int layers);
    void warnResized(int width, int height, const SlotFormat& into) const;
    void warnNoSlot(const SlotFormat& format) const;

    static std::unique_ptr<Texture> placeholderTexture();
    void updateStorage(int slot);
    int specifyLevels(const SlotFormat& format, int layers) const;
    void setSlotParameters(const SlotFormat& format, int levels) const;
    void takeHandle(int slot);
    void tellHandle(int slot);
    void dropHandle(SlotData& slot);
    bool isResident(quint64 handle) const;
    void blit(Texture& source, const SlotLayerData& record, int layers, int maxLevel);

    Locations uniformLocations(const ShaderProgram* program, bool withUniforms) const;
    void makeHandlesResident();
    const qint32* slotMap() const;
    int slotMapWidth() const;
    void bindSlotMapTexture(int location);
    void setHandles(int location);
    void bindSlots(int location);

    qint32 _minSlotWidth = 1;
    qint32 _minSlotHeight = 1;
    qint32 _maxSlotWidth = 32768;
    qint32 _maxSlotHeight = 32768;
    qint32 _slotAlignmentX = 1;
    qint32 _slotAlignmentY = 1;
    qint32 _bindCount = 0;
    qint32 _maxSlotMapUniforms = 128;
    bool _slotMapDirty = true;
    bool _useExplicitlyArrayAccessInGLSL = false;
    bool _useSlotMapUniforms = false;
    bool _useSlotMapTexture = true;
    bool _anisotropySupported = false;
    float _maxAnisotropy = 1.0f;
    std::unique_ptr<OrderedTokens> _pendingTokens;
    std::unique_ptr<Texture> _slotMapTexture;
    QList<SlotLayerData> _textureTokenToSlotLayerData;
    QList<int> _tokenLayerCounts;
    QList<SlotData*> _slots;
    QList<int> _slotUnits;
    SlotReallocationMethod _slotReallocationMethod = eReallocateSmaller;
    BindMode _bindMode = BindSamplers;
    QList<quint64> _slotHandles;
    std::unique_ptr<BindlessTextureFunctions> _bindless;
    QHash<TextureToken, TextureToken> _patchTokenToSourceToken;
    // The slot map read backwards, so that a change of one slot does not look at all tokens.
    std::unique_ptr<TokensOfSlots> _tokensOfSlots;
    int _maxTextureSize = kLeastMaxTextureSize;
    int _maxArrayTextureLayers = -1; // not asked for yet
    // Of `clear`: still alive, since whoever has them bound or resident may draw.
    QList<SlotData*> _retiredSlots;
};

} // namespace Harrow::Vrk
