// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Makes far more textures reachable from a shader than it can have samplers. Above this layer nothing holds a texture
/// for drawing: it holds a token, and the shader turns the token into a texel by `managedTexture` and its kin.

#include "Export.h"
#include "TextureFileInfo.h"
#include "TextureFormat.h"
#include "TextureToken.h"

#include <QColor>
#include <QHash>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace Harrow::Vrk
{

class FreeTextureTokens;
class GLSLMacroProcessor;
class ShaderProgram;
class Texture;
class TexturePool;
class TextureStreamer;
struct TextureOfToken;
template <typename Entry> class TextureTokenTable;

/// The base of all managers, which differ in how a token reaches its texture on the GPU. It issues the tokens, turns
/// files and colours into textures when they are first wanted, keeps sets of UDIM patches and the streamers, and owns
/// the pool of scratch textures.
///
/// A token stands for one texture (`tokenForTexture`), one file (`tokenForImage`), one colour (`tokenForColor`) or one
/// set of UDIM patches (`createUDIMToken`). A missing image never fails: its token is that of opaque white.
///
/// To draw with tokens: when the program is built, `setup` on its macro processor and `getShaderFile` as one more
/// fragment stage; the shader that samples includes "TextureManager.glslh". For a draw
///
///     manager.bind(tokens);   // what will be sampled
///     program.bind();
///     manager.bind(&program); // brings the GPU's tables up to date and sets the program's uniforms
///     buffers.draw(&program);
///     manager.unbind(&program);
///     manager.unbind(tokens);
///
/// and no token is issued or deleted between these. The first bind of a file's token loads it, which changes OpenGL's
/// state where its `TextureFileInfo` asks for another range of colours (`RemapColorRange`): what a draw needs is set
/// behind it, or the files are loaded before by `textureForToken`. All of it happens on the thread of the current
/// context; nothing is locked. The order of the virtual operations is interface.
class VRKGL_EXPORT TextureManager
{
protected:
    /// `clear`, as this class has it, and the pool with all its textures. The context must be current. A manager that
    /// is in use (`Instance`) is so no longer.
    virtual ~TextureManager();

public:
    /// Where a manager of array slots puts a texture when no slot fits it: into a smaller one, which shrinks it, or
    /// into a larger one.
    enum SlotReallocationMethod
    {
        eReallocateSmaller = 0,
        eReallocateLarger = 1
    };

    TextureManager();
    TextureManager(const TextureManager&) = delete;
    TextureManager& operator=(const TextureManager&) = delete;

    /// \name From token to texture
    ///@{
    /// The texture that a token stands for, loaded or made now if this is the first time: it is read-only then, and
    /// belongs to the manager. Null for a token that stands for no texture. For a file that does not load, the texture
    /// of opaque white; the next call tries the file again. Null, and reported, for a texture that was destroyed
    /// without `deleteTexture`.
    virtual Texture* textureForToken(const TextureToken& token);
    virtual Texture* textureForImage(const QString& path, const TextureFileInfo& info);
    virtual Texture* textureForColor(const QColor& color);
    ///@}

    /// \name Tokens
    ///@{
    /// The texture's token, issued now if it has none. `INVALID_TOKEN` for null. The texture is not taken over, but see
    /// `clear`; who destroys it calls `deleteTexture` before.
    virtual TextureToken tokenForTexture(Texture* texture);
    /// The token of an image file, which `resolveTexturePath` finds. Nothing is loaded here, and `info` counts for the
    /// first request alone. For what is no file: the warning "Cannot load %s" (guarded) and the token of opaque white.
    virtual TextureToken tokenForImage(const QString& path, const TextureFileInfo& info);
    /// One token for each `QColor::rgba`.
    virtual TextureToken tokenForColor(const QColor& color);

    /// Gives the texture's token back and deletes the texture if it is a managed one (`Texture::isManaged`). Nothing
    /// for null and for a texture without a token.
    virtual void deleteTexture(Texture* texture);
    /// The same for a token. A file or colour whose texture was never wanted stays in the tables under a token that can
    /// be issued anew, and a translucent colour stays in any case; deleting a texture that is no colour makes the
    /// manager forget the token of opaque black. An unknown token is reported and goes to the free ones.
    virtual void deleteTexture(const TextureToken& token);

    /// The texture's token, or `INVALID_TOKEN`. Issues none.
    virtual TextureToken findToken(Texture* texture);
    ///@}

    /// \name Drawing
    /// `bind()` and `unbind()` serve the program in use, whichever made it.
    ///@{
    /// The forms with tokens announce what will be drawn; those with a program make it reachable for that one. What
    /// each kind of manager does in them, it tells itself.
    virtual void bind(ShaderProgram* program) = 0;
    virtual void bind();
    virtual void bind(const QList<TextureToken>& tokens) = 0;
    virtual void bind(const QSet<TextureToken>& tokens);
    virtual void unbind(ShaderProgram* program) = 0;
    virtual void unbind();
    virtual void unbind(const QList<TextureToken>& tokens) = 0;
    ///@}

    /// Tells a manager that keeps copies that the contents of a texture have changed.
    virtual void dirty(Texture* texture);

    /// Defines in `processor` what the GLSL of this manager wants, `TEXTURE_MANAGER_SUPPORTS_UDIMS` among it where
    /// there are UDIM sets. Null is allowed.
    virtual void setup(GLSLMacroProcessor* processor);
    /// The GLSL file that gives `managedTexture` and its kin their bodies, for `ShaderProgram::addShaderFromFile`.
    virtual QString getShaderFile() = 0;

    /// Deletes all textures that have a token, those of the caller too, and the free ones of the pool, and forgets all
    /// tokens. Sets of UDIM patches, the list of streamers, and what was said of loading files stay.
    virtual void clear();

    /// How many slots a manager may use: texture units or array textures, as it has them.
    virtual void setMaxSlots(int maxSlots);
    virtual void setSlotReallocationMethod(SlotReallocationMethod method);
    virtual bool supportsUDIMs() const;

    /// Lets every streamer that has a token bring itself up to date, and returns whether any has changed. The
    /// application calls this before it draws; the library never does. A streamer that was destroyed without a word to
    /// the manager, or by `clear`, is reported and passed over. An update may issue tokens and delete textures.
    virtual bool updateTextureStreamers();

protected:
    /// Every token passes through the first of these when it is issued, and through the second when it ends, but for
    /// those of `reserveTokenBlock`.
    virtual void textureTokenIssued(const TextureToken& token);
    virtual void textureTokenRevoked(const TextureToken& token);

public:
    /// The manager that is in use. If there is none, makes a `BindlessTextureManager` where the current context
    /// supports it, else a `SamplerTextureManager` of 8 slots, and says which in the debug log.
    static TextureManager& Instance();
    /// Puts `manager` in its place, or none for null. Nothing is deleted, and the manager is not taken over: whoever
    /// takes it away again deletes it. Always true.
    static bool setInstance(TextureManager* manager);

    /// \name Sets of UDIM patches
    /// Textures of one picture in tiles, reached by one token. The patches stay their owner's.
    ///@{
    /// `INVALID_TOKEN`, with nothing issued, where there are none (`supportsUDIMs`).
    TextureToken createUDIMToken();
    /// Puts `texture` at `index`, in place of what was there. A token that is no set is reported.
    void addUDIMPatch(TextureToken token, const QPoint& index, Texture* texture);
    /// Takes `texture` from one of the places where it is. Nothing if it has none.
    void removeUDIMPatch(TextureToken token, Texture* texture);
    /// False, after an assertion, for a token that is no set.
    bool deleteUDIM(TextureToken token);
    ///@}

    /// As `setMaxSlots` has set it.
    int getMaxSlots() const;

    /// Directory that relative paths of images count from; the current one if empty.
    QString getTextureRoot() const;
    void setTextureRoot(const QString& directory);

    /// The path as it is if that exists; else below the texture root; else the file's bare name in the root. When there
    /// is no such file, says so in the debug log and returns the path unchanged. Backslashes separate directories in a
    /// path without slashes.
    QString resolveTexturePath(QString path) const;

    /// The paths of all files that have a token, ascending.
    QStringList textureFiles() const;

    /// In the order of their coming. Not owned.
    const QList<TextureStreamer*>& getTextureStreamers() const;

    /// \name Scratch textures
    /// Recycled by exact description, for passes that draw into textures.
    ///@{
    /// A texture with one reference. What it holds, and the state that its last user has set, is left as it was; a new
    /// one has nearest filtering and level 0 alone. With `depth` other than 1 it is a `GL_TEXTURE_2D_ARRAY`, with
    /// `samples` above 1 a multisample texture. More samples than the driver has are brought down to what it has
    /// ("Warning: TexturePool::take() requested more than GL_MAX_SAMPLES samples.", debug). Sizes or samples below 1
    /// are reported, and asked of OpenGL all the same. Null when no texture unit is free to make it.
    Texture* tempTexture(TextureFormat format, int width, int height, int depth, int samples);
    /// Nothing for a texture that is not in use, or a `count` below 1.
    void addTempTextureRef(Texture* texture, int count);
    /// Without references the texture waits for the next `tempTexture` of its description. Nothing for a texture that
    /// is not in use.
    void releaseTempTextureRef(Texture* texture, int count);
    /// Deletes all that are not in use; nothing else does, but `clear`.
    void deleteUnusedTempTextures();
    /// Counts of textures, in all and by format and size, to the debug log.
    void printTempTextureSummary();
    /// Whether multisample textures made from now on have fixed sample locations. Off at the start.
    void setTempTextureFixedSampleLocations(bool fixed);
    ///@}

protected:
    /// The oldest free token, or the next one above all.
    TextureToken reserveToken();
    /// The first of `count` tokens in a row, above all others. A negative count is reported, and reserves none.
    TextureToken reserveTokenBlock(int count);
    /// Puts a token among the free ones, and gives up the highest ones that are free.
    void deleteToken(const TextureToken& token);
    /// One past the highest token in use.
    TextureToken maxToken() const;
    const QHash<Texture*, TextureToken>& textureTokenMap() const;

    /// \name The tables, for a manager whose tokens come about in another way
    ///@{
    /// Textures of a set, by the index of their patch.
    using UDIMPatches = QHash<QPoint, Texture*>;
    /// Null for a token that is no set.
    const UDIMPatches* udimPatches(const TextureToken& token) const;

    /// The token that a texture, resolved path or colour has in the tables. A texture that was destroyed without
    /// `deleteTexture` is reported, and its token deleted.
    std::optional<TextureToken> knownToken(Texture* texture);
    std::optional<TextureToken> knownToken(const QString& resolvedPath) const;
    std::optional<TextureToken> knownToken(const QColor& color) const;
    /// The texture that stands under the token now, or null; nothing is loaded or made.
    Texture* knownTexture(const TextureToken& token) const;

    /// Put what a token stands for into the tables, both ways; a streamer goes to the list of streamers as well.
    void setTextureOfToken(const TextureToken& token, Texture* texture);
    void setFileOfToken(const TextureToken& token, const QString& resolvedPath, const TextureFileInfo& info);
    void setColorOfToken(const TextureToken& token, const QColor& color);
    /// Takes a token with a texture out of the tables, and deletes a managed texture. False, with nothing changed, for
    /// a token without one.
    bool forgetTextureOfToken(TextureToken token);

    /// `updateTextureStreamers`, with a word for each streamer that has changed.
    bool updateStreamers(const std::function<void(TextureStreamer*)>& changed);
    ///@}

private:
    friend struct TextureManagerTestAccess;

    void seed();
    Texture* realise(const TextureToken& token, Texture* texture);
    static void reportDestroyed(const TextureToken& token, const TextureOfToken& texture);
    void addStreamer(Texture* texture);
    void removeStreamer(const Texture* texture);

    int _maxSlots = 8;
    TextureToken _maxToken = TextureToken(0);
    std::unique_ptr<FreeTextureTokens> _freeTokens;
    std::unique_ptr<TextureTokenTable<TextureOfToken>> _tokenToTexture;
    QHash<Texture*, TextureToken> _textureToToken;
    QHash<QString, TextureToken> _pathToToken;
    QHash<TextureToken, QString> _tokenToPath;
    QHash<TextureToken, TextureFileInfo> _tokenToFileInfo;
    QHash<QRgb, TextureToken> _colorToToken;
    QHash<TextureToken, QColor> _tokenToColor;
    QString _textureRoot;
    std::unique_ptr<TexturePool> _texturePool;
    QHash<TextureToken, UDIMPatches> _udimTokenToIndexAndToken;
    QList<TextureStreamer*> _textureStreamers;
    // Beside `_textureStreamers`, entry by entry: null once the streamer is gone.
    QList<QPointer<TextureStreamer>> _livingStreamers;
};

} // namespace Harrow::Vrk
