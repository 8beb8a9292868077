// SPDX-License-Identifier: MIT
//
// TextureStreamer on the fake driver: what it is, and what a manager does with it.
#include "TextureStreamer.h"

#include "TextureManagerTestTools.h"

#include <QMetaObject>
#include <QPointer>

#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

class TextureStreamerTest : public ManagerFixture
{
protected:
    /// A managed streamer that has a token; the manager deletes it.
    QPointer<TestStreamer> streamer(bool changes)
    {
        auto* const made = new TestStreamer(changes);
        manager->tokenForTexture(made);
        return made;
    }

    static QString destroyedLine()
    {
        return assertionLine(QStringLiteral("!_textureStreamers.contains(streamers[i])"),
                             QStringLiteral("Texture streamer was destroyed without deleteTexture()"));
    }
};

} // namespace

static_assert(std::is_abstract_v<TextureStreamer>);
static_assert(std::is_base_of_v<Texture, TextureStreamer>);
static_assert(sizeof(TextureStreamer) == sizeof(Texture), "no field of its own");
static_assert(std::is_same_v<decltype(&TextureStreamer::updateTexture), bool (TextureStreamer::*)()>);

// ---- the object ----------------------------------------------------------------------------------------------------

TEST_F(TextureStreamerTest, TheMetaObjectNamesItInFull)
{
    EXPECT_STREQ(TextureStreamer::staticMetaObject.className(), "Harrow::Vrk::TextureStreamer");
    EXPECT_STREQ(TextureStreamer::staticMetaObject.superClass()->className(), "Harrow::Vrk::Texture");
    TestStreamer object;
    EXPECT_NE(qobject_cast<TextureStreamer*>(static_cast<QObject*>(&object)), nullptr);
}

TEST_F(TextureStreamerTest, ANewOneOwnsAName)
{
    CallLog calls;
    {
        const TestStreamer object;
        EXPECT_TRUE(object.isManaged());
        EXPECT_NE(object.textureID(), 0u);
        EXPECT_FALSE(object.isReadOnly());
    }
    EXPECT_EQ(calls.count(QStringLiteral("glGenTextures")), 1);
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 1);
    EXPECT_EQ(calls.list().size(), 2);
}

TEST_F(TextureStreamerTest, AWrapperLeavesItsNameAlone)
{
    CallLog calls;
    {
        const TestStreamer object(77u, false);
        EXPECT_FALSE(object.isManaged());
        EXPECT_EQ(object.textureID(), 77u);
    }
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureStreamerTest, BothFormsTakeAParent)
{
    struct Child : TextureStreamer
    {
        using TextureStreamer::TextureStreamer;
        bool updateTexture() override
        {
            return false;
        }
    };
    QObject parent;
    QPointer<TextureStreamer> made = new Child(&parent);
    QPointer<TextureStreamer> wrapping = new Child(5u, &parent);
    EXPECT_EQ(parent.children(), (QObjectList{made, wrapping}));
}

// ---- the manager's list --------------------------------------------------------------------------------------------

TEST_F(TextureStreamerTest, StreamersAreListedInTheOrderOfTheirTokens)
{
    const auto plain = wrapped(1);
    TestStreamer* const first = streamer(false);
    manager->tokenForTexture(plain[0]);
    TestStreamer* const second = streamer(false);
    manager->tokenForTexture(first);
    EXPECT_EQ(manager->getTextureStreamers(), (QList<TextureStreamer*>{first, second})) << "each once";
    EXPECT_FALSE(first->isReadOnly());
}

TEST_F(TextureStreamerTest, AStreamerWithoutATokenIsNeverUpdated)
{
    TestStreamer object(true);
    EXPECT_EQ(manager->findToken(&object), INVALID_TOKEN);
    EXPECT_FALSE(manager->updateTextureStreamers());
    EXPECT_EQ(object.updates, 0);
}

TEST_F(TextureStreamerTest, WithoutStreamersNothingChanges)
{
    EXPECT_FALSE(manager->updateTextureStreamers());
    const auto plain = wrapped(1);
    manager->tokenForTexture(plain[0]);
    EXPECT_FALSE(manager->updateTextureStreamers());
}

TEST_F(TextureStreamerTest, AllAreUpdatedWhateverTheFirstAnswers)
{
    for (const bool first : {true, false})
        for (const bool second : {true, false})
        {
            const QPointer<TestStreamer> a = streamer(first);
            const QPointer<TestStreamer> b = streamer(second);
            EXPECT_EQ(manager->updateTextureStreamers(), first || second);
            EXPECT_EQ(a->updates, 1);
            EXPECT_EQ(b->updates, 1);
            manager->deleteTexture(a.data());
            manager->deleteTexture(b.data());
        }
}

TEST_F(TextureStreamerTest, TheyAreUpdatedInTheOrderOfTheList)
{
    QStringList order;
    for (const char* name : {"a", "b", "c"})
        streamer(false)->onUpdate = [&order, name] { order += QString::fromUtf8(name); };
    manager->updateTextureStreamers();
    EXPECT_EQ(order, QStringList({"a", "b", "c"}));
}

TEST_F(TextureStreamerTest, DeleteTextureTakesItFromTheList)
{
    const QPointer<TestStreamer> managed = streamer(true);
    TestStreamer wrapping(5u, true);
    manager->tokenForTexture(&wrapping);
    manager->deleteTexture(managed.data());
    EXPECT_TRUE(managed.isNull());
    EXPECT_EQ(manager->getTextureStreamers(), QList<TextureStreamer*>{&wrapping});
    manager->deleteTexture(&wrapping);
    EXPECT_TRUE(manager->getTextureStreamers().isEmpty());
    EXPECT_FALSE(manager->updateTextureStreamers());
    EXPECT_EQ(wrapping.updates, 0);
}

TEST_F(TextureStreamerTest, OneThatComesBackIsLastInTheList)
{
    TestStreamer a(5u, false);
    TestStreamer b(6u, false);
    manager->tokenForTexture(&a);
    manager->tokenForTexture(&b);
    manager->deleteTexture(&a);
    manager->tokenForTexture(&a);
    EXPECT_EQ(manager->getTextureStreamers(), (QList<TextureStreamer*>{&b, &a}));
    manager->deleteTexture(&a);
    manager->deleteTexture(&b);
}

// ---- streamers that are gone ---------------------------------------------------------------------------------------

TEST_F(TextureStreamerTest, OneThatWasDestroyedWithoutAWordIsReportedAndPassedOver)
{
    const QPointer<TestStreamer> gone = streamer(true);
    const QPointer<TestStreamer> there = streamer(false);
    delete gone;
    for (int i = 1; i <= 2; ++i)
    {
        const LogCapture log;
        EXPECT_FALSE(manager->updateTextureStreamers());
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({destroyedLine()}));
        EXPECT_EQ(there->updates, i);
    }
    manager->deleteTexture(TextureToken(0));
    const LogCapture log;
    EXPECT_FALSE(manager->updateTextureStreamers());
    EXPECT_EQ(log.texts(), QStringList()) << "its token has ended";
    EXPECT_EQ(manager->getTextureStreamers(), QList<TextureStreamer*>{there});
}

TEST_F(TextureStreamerTest, ThoseThatClearHasDeletedStayInTheListAndAreReported)
{
    const QPointer<TestStreamer> object = streamer(true);
    manager->clear();
    EXPECT_TRUE(object.isNull());
    EXPECT_EQ(manager->getTextureStreamers().size(), 1);
    const LogCapture log;
    EXPECT_FALSE(manager->updateTextureStreamers());
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({destroyedLine()}));
}

TEST_F(TextureStreamerTest, AStreamerMayDeleteALaterOneInItsUpdate)
{
    const QPointer<TestStreamer> first = streamer(false);
    const QPointer<TestStreamer> second = streamer(true);
    const QPointer<TestStreamer> third = streamer(false);
    first->onUpdate = [this, second] { manager->deleteTexture(second.data()); };
    const LogCapture log;
    EXPECT_FALSE(manager->updateTextureStreamers());
    EXPECT_TRUE(second.isNull());
    EXPECT_EQ(third->updates, 1);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureStreamerTest, OneThatOnlyLosesItsTokenMeanwhileIsStillUpdated)
{
    TestStreamer ofCaller(5u, true);
    const QPointer<TestStreamer> first = streamer(false);
    manager->tokenForTexture(&ofCaller);
    first->onUpdate = [&] { manager->deleteTexture(&ofCaller); };
    EXPECT_TRUE(manager->updateTextureStreamers()) << "the list of the start counts";
    EXPECT_EQ(ofCaller.updates, 1);
    first->onUpdate = {};
    EXPECT_FALSE(manager->updateTextureStreamers());
    EXPECT_EQ(ofCaller.updates, 1);
}

TEST_F(TextureStreamerTest, OneThatIsAddedMeanwhileHasItsTurnTheNextTime)
{
    const QPointer<TestStreamer> first = streamer(false);
    QPointer<TestStreamer> added;
    first->onUpdate = [&]
    {
        if (!added)
            added = streamer(true);
    };
    EXPECT_FALSE(manager->updateTextureStreamers());
    EXPECT_EQ(added->updates, 0);
    EXPECT_TRUE(manager->updateTextureStreamers());
    EXPECT_EQ(added->updates, 1);
}

} // namespace Harrow::Vrk::Test
