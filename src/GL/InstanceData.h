// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One record of a plan, as an application fills it: a small value.

#include "Export.h"
#include "TextureToken.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>

namespace Harrow::Vrk
{

class InstanceDataPlan;
class Texture;
class TextureManager;

/// The forms by name check what they are given and report, and mostly write all the same; those by offset, from
/// `InstanceDataPlan::offset`, are for hot loops. Nothing is ever written or read outside the record: what would be is
/// reported and not done, and so is everything without a plan. The plan is borrowed from the registry and must outlive
/// the record.
class VRKGL_EXPORT InstanceData
{
public:
    /// Without a plan: to be assigned to.
    InstanceData();
    /// A zeroed record of a registered plan. An unknown plan is reported, and there is none then.
    explicit InstanceData(const QString& planName);

    /// Copies `dataSize` bytes to a member. Reported, and written all the same: an unknown name (the start of the
    /// record is written), more bytes than the member has, a token's member.
    void set(const QString& dataName, const void* data, size_t dataSize);
    void set(int offset, const void* data, size_t dataSize);

    /// Copies a member to `out`, as many bytes as the member has; `outSize` is not looked at.
    void get(const QString& dataName, void* out, size_t outSize) const;
    /// Copies `dataSize` bytes; `outSize` is not looked at.
    void get(int offset, size_t dataSize, void* out, size_t outSize) const;

    /// \name Tokens
    /// Write the token of a texture, which a manager gives out: the one in use if none is named. By name, another type
    /// of member is reported, and gets as many bytes of the token as it has itself, or nothing if it is larger.
    ///@{
    /// By the member's name, or by its offset in bytes. A path is that of an image.
    void setTexture(const QString& dataName, const QString& imagePath);
    void setTexture(const QString& dataName, Texture* texture);
    void setTexture(const QString& dataName, Texture* texture, TextureManager* textureManager);
    void setTexture(int offset, Texture* texture);
    void setTexture(int offset, Texture* texture, TextureManager* textureManager);
    void setTextureToken(int offset, TextureToken token);
    ///@}

    /// Zeroes the record and forgets its tokens.
    void clear();
    /// Forgets the tokens; their bytes stay in the record.
    void clearTextures();

    /// The tokens that were written, each once; the list itself.
    QList<TextureToken>& getTextureTokens();
    const QByteArray& dataArray() const;
    /// The plan's name; empty without a plan.
    QString name() const;

    /// Bytes: the record, the object itself, and the tokens.
    size_t memoryEstimateCPU() const;

private:
    bool isWithin(int offset, size_t size) const;
    void write(int offset, const void* data, size_t size);
    void reportNoPlan(const QString& dataName) const;
    void reportMisuse(const QString& dataName, int offset, size_t dataSize) const;
    void setToken(const QString& dataName, TextureToken token);
    void insertToken(int offset, TextureToken token, size_t size);

    InstanceDataPlan* _plan = nullptr;
    QByteArray _data;
    QList<TextureToken> _tokens;
};

} // namespace Harrow::Vrk
