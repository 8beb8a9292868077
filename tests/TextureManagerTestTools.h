// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of texture managers share: a manager that does nothing but write down what it is asked, a view of
/// the base's tables, and a fixture that leaves no manager behind.

#include "TextureManager.h"

#include "GLFunctions.h"
#include "TextureStreamer.h"
#include "TextureTestTools.h"
#include "TextureTokenTables.h"

#include <QImage>
#include <QPointer>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Harrow::Vrk
{

struct TextureManagerTestAccess
{
    static QList<TextureToken> freeTokens(const TextureManager& manager)
    {
        return manager._freeTokens->inOrder();
    }
    static TextureToken maxToken(const TextureManager& manager)
    {
        return manager._maxToken;
    }
    static QHash<TextureToken, Texture*> tokenToTexture(const TextureManager& manager)
    {
        QHash<TextureToken, Texture*> textures;
        manager._tokenToTexture->forEach([&textures](const TextureToken& token, const TextureOfToken& entry)
                                         { textures.insert(token, entry.texture); });
        return textures;
    }
    static const QHash<Texture*, TextureToken>& textureToToken(const TextureManager& manager)
    {
        return manager._textureToToken;
    }
    static const QHash<QString, TextureToken>& pathToToken(const TextureManager& manager)
    {
        return manager._pathToToken;
    }
    static const QHash<TextureToken, QString>& tokenToPath(const TextureManager& manager)
    {
        return manager._tokenToPath;
    }
    static const QHash<TextureToken, TextureFileInfo>& tokenToFileInfo(const TextureManager& manager)
    {
        return manager._tokenToFileInfo;
    }
    static const QHash<QRgb, TextureToken>& colorToToken(const TextureManager& manager)
    {
        return manager._colorToToken;
    }
    static const QHash<TextureToken, QColor>& tokenToColor(const TextureManager& manager)
    {
        return manager._tokenToColor;
    }
    static const QHash<TextureToken, QHash<QPoint, Texture*>>& udims(const TextureManager& manager)
    {
        return manager._udimTokenToIndexAndToken;
    }
};

/// So that a failed comparison shows numbers.
inline void PrintTo(const TextureToken& token, std::ostream* stream)
{
    *stream << token.token;
}

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

inline QList<TextureToken> tokens(std::initializer_list<quint64> numbers)
{
    QList<TextureToken> result;
    for (const quint64 number : numbers)
        result.append(TextureToken(number));
    return result;
}

class RecordingManager : public TextureManager
{
public:
    using TextureManager::bind;
    using TextureManager::deleteToken;
    using TextureManager::maxToken;
    using TextureManager::reserveToken;
    using TextureManager::reserveTokenBlock;
    using TextureManager::textureTokenMap;
    using TextureManager::unbind;

    ~RecordingManager() override = default;

    void bind(ShaderProgram* program) override
    {
        calls += program ? QStringLiteral("bind(program)") : QStringLiteral("bind(null)");
    }
    void bind(const QList<TextureToken>& list) override
    {
        calls += QStringLiteral("bind(tokens)");
        boundTokens = list;
    }
    void unbind(ShaderProgram* program) override
    {
        calls += program ? QStringLiteral("unbind(program)") : QStringLiteral("unbind(null)");
    }
    void unbind(const QList<TextureToken>&) override
    {
        calls += QStringLiteral("unbind(tokens)");
    }
    QString getShaderFile() override
    {
        return QStringLiteral("Recording.glslc");
    }
    bool supportsUDIMs() const override
    {
        return udims;
    }
    void textureTokenIssued(const TextureToken& token) override
    {
        calls += QStringLiteral("issued %1").arg(token.token);
        if (onIssued)
            onIssued(token);
    }
    void textureTokenRevoked(const TextureToken& token) override
    {
        calls += QStringLiteral("revoked %1").arg(token.token);
        if (onRevoked)
            onRevoked(token);
    }

    QStringList takeCalls()
    {
        return std::exchange(calls, {});
    }

    bool udims = false;
    QStringList calls;
    QList<TextureToken> boundTokens;
    std::function<void(TextureToken)> onIssued;
    std::function<void(TextureToken)> onRevoked;
};

/// A streamer that answers and does what it is told.
class TestStreamer : public TextureStreamer
{
public:
    explicit TestStreamer(bool answer = false) : TextureStreamer(nullptr), changes(answer) {}
    TestStreamer(unsigned name, bool answer) : TextureStreamer(name, nullptr), changes(answer) {}

    bool updateTexture() override
    {
        ++updates;
        if (onUpdate)
            onUpdate();
        return changes;
    }

    bool changes;
    int updates = 0;
    std::function<void()> onUpdate;
};

/// The manager is destroyed while the driver is there, and none stays in use.
class ManagerFixture : public TextureFixture
{
protected:
    using Tables = TextureManagerTestAccess;

    void SetUp() override
    {
        driver.setInteger(GL_MAX_SAMPLES, 4);
        TextureFixture::SetUp();
        TextureManager::setInstance(nullptr);
        manager = std::make_unique<RecordingManager>();
    }

    void TearDown() override
    {
        manager.reset();
        TextureManager::setInstance(nullptr);
        for (const QPointer<Texture>& texture : std::as_const(_wrapped))
            delete texture.data();
        TextureFixture::TearDown();
    }

    /// Textures of the test's own: wrapped, so that `deleteTexture` leaves them alone. What the manager has not deleted
    /// at its end goes behind it.
    std::vector<Texture*> wrapped(int count)
    {
        std::vector<Texture*> textures;
        for (int i = 0; i < count; ++i)
        {
            textures.push_back(new Texture(1000u + unsigned(_wrapped.size()), nullptr));
            textures.back()->setTarget(GL_TEXTURE_2D);
            _wrapped.append(textures.back());
        }
        return textures;
    }

    /// A file of the test in a directory of its own.
    QString pngFile(const QString& name, const QColor& color = Qt::red)
    {
        QImage image(2, 2, QImage::Format_ARGB32);
        image.fill(color);
        const QString path = directory.filePath(name);
        EXPECT_TRUE(image.save(path, "PNG"));
        return path;
    }

    QString corruptFile(const QString& name)
    {
        const QString path = directory.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("\x89PNG\r\n\x1a\n and no more than that");
        return path;
    }

    QTemporaryDir directory;
    std::unique_ptr<RecordingManager> manager;

private:
    QList<QPointer<Texture>> _wrapped;
};

} // namespace Harrow::Vrk::Test
