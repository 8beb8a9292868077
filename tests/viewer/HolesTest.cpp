// SPDX-License-Identifier: MIT
// How pixels that are holes leave those beside them alone: what a shader asks of the pixels beside it asks before any
// of them can be gone. Drivers are free in what they answer afterwards, so the text is looked at and not the picture.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QString>

namespace
{

// Functions of the language, and the library's, that compare a pixel with those beside it.
const QSet<QString> kAskers = {"dFdx",
                               "dFdy",
                               "fwidth",
                               "texture",
                               "textureOffset",
                               "textureProj",
                               "textureProjOffset",
                               "textureQueryLod",
                               "managedTexture",
                               "managedTextureCube",
                               "managedTextureQueryLod",
                               "textureGetDebug"};

QString withoutComments(QString text)
{
    static const QRegularExpression comment("//[^\n]*|/\\*.*?\\*/", QRegularExpression::DotMatchesEverythingOption);
    return text.remove(comment);
}

QString read(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return withoutComments(QString::fromUtf8(file.readAll()));
}

/// The bodies of all functions, by name; those of one name together.
QHash<QString, QString> bodiesIn(const QString& text)
{
    static const QRegularExpression head("\\b(\\w+)\\s*\\([^(){};]*\\)\\s*\\{");
    static const QSet<QString> statements = {"if", "for", "while", "switch"};
    QHash<QString, QString> bodies;
    for (QRegularExpressionMatchIterator found = head.globalMatch(text); found.hasNext();)
    {
        const QRegularExpressionMatch match = found.next();
        if (statements.contains(match.captured(1)))
            continue;
        qsizetype end = match.capturedEnd();
        for (int depth = 1; depth > 0 && end < text.size(); ++end)
            depth += text[end] == u'{' ? 1 : text[end] == u'}' ? -1 : 0;
        bodies[match.captured(1)] += text.mid(match.capturedEnd(), end - match.capturedEnd());
    }
    return bodies;
}

QSet<QString> callsIn(const QString& text)
{
    static const QRegularExpression call("\\b(\\w+)\\s*\\(");
    QSet<QString> calls;
    for (QRegularExpressionMatchIterator found = call.globalMatch(text); found.hasNext();)
        calls.insert(found.next().captured(1));
    return calls;
}

/// What is called behind the first hole of `main`, by itself or through others, that asks the pixels beside. `includes`
/// is the text of what the shader may include. No other function may have holes, which would not be found.
QSet<QString> askedBehindHoles(const QString& shader, const QString& includes)
{
    const QHash<QString, QString> bodies = bodiesIn(includes + shader);
    QSet<QString> askers = kAskers;
    for (qsizetype before = 0; before != askers.size();)
    {
        before = askers.size();
        for (auto body = bodies.begin(); body != bodies.end(); ++body)
            if (body.key() != "main" && callsIn(body.value()).intersects(askers))
                askers.insert(body.key());
    }
    for (auto body = bodies.begin(); body != bodies.end(); ++body)
        EXPECT_TRUE(body.key() == "main" || !body.value().contains("discard")) << body.key().toStdString();
    const QString main = bodiesIn(shader).value("main");
    const qsizetype hole = main.indexOf("discard");
    return hole < 0 ? QSet<QString>() : callsIn(main.mid(hole)).intersect(askers);
}

QString everyInclude()
{
    QString text;
    for (const char* const folder : {":/vrkview", ":/GLSL/include", ":/GLSL/src"})
        for (const QFileInfo& file : QDir(folder).entryInfoList({"*.glslh", "*.glslc"}))
            // Those two look at textures of one level, which neighbours don't matter to.
            if (!file.fileName().startsWith("SMAA") && !file.fileName().startsWith("FXAA"))
                text += read(file.filePath());
    return text;
}

} // namespace

TEST(HolesTest, WhatIsAskedBehindAHoleIsFound)
{
    const QString include =
        "vec2 slope(float x) { return vec2(dFdx(x), 0.0); } vec2 steep(float x) { return slope(x); }"
        "vec4 plain(vec2 x) { return textureLod(u_Picture, x, 0.0); }";
    EXPECT_EQ(askedBehindHoles("void main() { if (x < 0.5) discard; y = steep(x) + plain(x).xy; }", include),
              QSet<QString>({"steep"}));
    EXPECT_EQ(askedBehindHoles("void main() { if (x < 0.5) { discard; } y = texture(u_Picture, x); }", include),
              QSet<QString>({"texture"}));
    EXPECT_EQ(askedBehindHoles("void main() { y = steep(x); if (x < 0.5) discard; y += plain(x).xy; }", include),
              QSet<QString>());
    EXPECT_EQ(askedBehindHoles("void main() { y = steep(x); }", include), QSet<QString>());
}

TEST(HolesTest, NoShaderOfTheSceneAsksThePixelsBesideBehindAHole)
{
    const QString includes = everyInclude();
    ASSERT_TRUE(includes.contains("shadowMapGetVisibility"));
    ASSERT_TRUE(includes.contains("lookUpMaps"));
    QStringList withHoles;
    for (const QFileInfo& file : QDir(":/vrkview").entryInfoList({"*.frag"}))
    {
        const QString text = read(file.filePath());
        if (!text.contains("discard"))
            continue;
        withHoles.append(file.fileName());
        for (const QString& asker : askedBehindHoles(text, includes))
            ADD_FAILURE() << file.fileName().toStdString() << " calls " << asker.toStdString() << " behind a hole";
    }
    EXPECT_EQ(withHoles, QStringList({"depth.frag", "scene.frag"}));
}
