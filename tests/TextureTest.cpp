// SPDX-License-Identifier: MIT
//
// Texture on the fake driver: its life and its binds.
#include "Texture.h"

#include "AutoBinder.h"
#include "TextureTestTools.h"
#include "support/ProcessEnding.h"

#include <QMetaObject>

#include <type_traits>
#include <vector>

namespace Harrow::Vrk::Test
{

class TextureTest : public TextureFixture
{
};

// ---- life ----------------------------------------------------------------------------------------------------------

static_assert(std::is_base_of_v<QObject, Texture> && std::is_base_of_v<Bindable, Texture>);

TEST_F(TextureTest, MetaObjectHasTheFullNameAndNothingOfItsOwn)
{
    const Texture texture(nullptr);
    const QMetaObject* const meta = texture.metaObject();
    EXPECT_STREQ(meta->className(), "Harrow::Vrk::Texture");
    EXPECT_EQ(meta->methodCount(), QObject::staticMetaObject.methodCount());
    EXPECT_EQ(meta->propertyCount(), QObject::staticMetaObject.propertyCount());
    const QObject* const object = &texture;
    EXPECT_EQ(static_cast<const void*>(object), static_cast<const void*>(&texture)) << "QObject comes first";
}

TEST_F(TextureTest, IsMadeWithANameAndNothingElse)
{
    const CallLog calls;
    const LogCapture log;
    const Texture texture(nullptr);
    EXPECT_EQ(calls.count(QStringLiteral("glGenTextures")), 1);
    EXPECT_EQ(calls.list().size(), 1);
    EXPECT_EQ(texture.textureID(), 1u);
    EXPECT_EQ(texture.target(), 0u);
    EXPECT_TRUE(texture.isManaged());
    EXPECT_FALSE(texture.isReadOnly());
    EXPECT_EQ(Access::recorded(texture), kNothing);
    EXPECT_EQ(Access::maxLevel(texture), 0);
    EXPECT_EQ(texture.parent(), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureTest, FullConstructorRecordsAllAndMakesNoStorage)
{
    const CallLog calls;
    QObject parent;
    auto* const texture = new Texture(GL_TEXTURE_3D, GL_RGBA8, 1024, 768, 5, &parent);
    EXPECT_EQ(calls.list().size(), 1);
    EXPECT_EQ(calls.count(QStringLiteral("glGenTextures")), 1);
    EXPECT_EQ(texture->textureID(), 1u);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_3D));
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGBA8, 1024, 768, 5}));
    EXPECT_EQ(Access::maxLevel(*texture), 10);
    EXPECT_TRUE(texture->isManaged());
    EXPECT_FALSE(texture->isReadOnly());
    EXPECT_EQ(texture->parent(), &parent);
}

TEST_F(TextureTest, AWrapperRefersToTheNameOnly)
{
    const CallLog calls;
    const LogCapture log;
    QObject parent;
    auto* const texture = new Texture(77u, &parent);
    EXPECT_EQ(texture->textureID(), 77u);
    EXPECT_EQ(texture->target(), 0u);
    EXPECT_FALSE(texture->isManaged());
    EXPECT_FALSE(texture->isReadOnly());
    EXPECT_EQ(Access::recorded(*texture), kNothing);
    EXPECT_EQ(Access::maxLevel(*texture), 0);
    EXPECT_EQ(texture->parent(), &parent);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureTest, WrappingNameZeroIsReportedAndBuiltAllTheSame)
{
    const int before = Texture::NumAlive();
    {
        const LogCapture log;
        const auto texture = std::make_unique<Texture>(0u, nullptr);
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  failure("textureID != 0", "Texture ID was zero, can't wrap a non-existent texture"));
        EXPECT_EQ(texture->textureID(), 0u);
        EXPECT_FALSE(texture->isManaged());
        EXPECT_EQ(Texture::NumAlive(), before + 1);
    }
    EXPECT_EQ(Texture::NumAlive(), before);
}

TEST_F(TextureTest, AnOwnedNameIsDeletedAndAWrappedOneIsNot)
{
    auto owned = newTexture();
    auto wrapper = std::make_unique<Texture>(77u, nullptr);
    const CallLog calls;
    wrapper.reset();
    EXPECT_EQ(calls.list(), QStringList());
    owned.reset();
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list().first().startsWith(QStringLiteral("glDeleteTextures(1, ")));
}

TEST_F(TextureTest, TheNameIsDeletedThatWasGenerated)
{
    static GLuint deleted;
    deleted = 0;
    driver.replace(
        "glDeleteTextures", +[](GLsizei, const GLuint* names) { deleted = names[0]; });
    driver.load();
    newTexture();
    auto second = newTexture();
    const unsigned name = second->textureID();
    second.reset();
    EXPECT_EQ(deleted, name);
    EXPECT_EQ(name, 2u);
}

TEST_F(TextureTest, NumAliveCountsObjectsOfAllConstructors)
{
    const int before = Texture::NumAlive();
    {
        const Texture first(nullptr);
        EXPECT_EQ(Texture::NumAlive(), before + 1);
        const Texture second(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 1, nullptr);
        EXPECT_EQ(Texture::NumAlive(), before + 2);
        const Texture third(5u, nullptr);
        EXPECT_EQ(Texture::NumAlive(), before + 3);
    }
    EXPECT_EQ(Texture::NumAlive(), before);
}

TEST_F(TextureTest, AtProcessExitNamesAreLeftToTheDriver)
{
    const int before = Texture::NumAlive();
    auto texture = newTexture();
    const CallLog calls;
    {
        const ProcessEnding ending;
        texture.reset();
    }
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(Texture::NumAlive(), before);
}

TEST_F(TextureTest, CreateGeneratesOnlyWithoutAName)
{
    Texture texture(nullptr);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(Access::create(texture));
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u == this->_textureID", "Texture is not NULL on create"));
    EXPECT_EQ(calls.list(), QStringList());
    Access::setName(texture, 0);
    EXPECT_TRUE(Access::create(texture));
    EXPECT_EQ(texture.textureID(), 2u);
}

TEST_F(TextureTest, CreateOfAReadOnlyTextureGeneratesNothing)
{
    Texture texture(nullptr);
    Access::setName(texture, 0);
    texture.setReadOnly();
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(Access::create(texture));
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(readOnlyLine()));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(texture.textureID(), 0u);
    Access::setName(texture, 1);
}

TEST_F(TextureTest, DestroyKeepsTheName)
{
    Texture texture(nullptr);
    const CallLog calls;
    EXPECT_TRUE(Access::destroy(texture));
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 1);
    EXPECT_EQ(texture.textureID(), 1u);
}

TEST_F(TextureTest, DestroyWithoutANameIsReported)
{
    auto texture = newTexture();
    Access::setName(*texture, 0);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(Access::destroy(*texture));
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_textureID", "Texture is NULL on destroy"));
    texture.reset();
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 2) << "and by the destructor";
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- bind and unbind -----------------------------------------------------------------------------------------------

TEST_F(TextureTest, FirstBindTakesTheHighestUnit)
{
    const auto first = newTexture();
    const auto second = newTexture(GL_TEXTURE_3D);
    makeRecord();
    const CallLog calls;
    EXPECT_TRUE(first->bind());
    EXPECT_TRUE(second->bind());
    EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(1), activate(2), bindName(2, GL_TEXTURE_3D)}));
    EXPECT_EQ(first->unit(), 3);
    EXPECT_EQ(second->unit(), 2);
    EXPECT_TRUE(first->isBound());
}

TEST_F(TextureTest, AFreedUnitIsTakenAgain)
{
    const auto first = newTexture();
    const auto second = newTexture();
    const auto third = newTexture();
    first->bind();
    second->bind();
    first->unbind();
    EXPECT_TRUE(third->bind());
    EXPECT_EQ(third->unit(), 3);
    EXPECT_EQ(second->unit(), 2);
    EXPECT_FALSE(first->isBound());
}

TEST_F(TextureTest, NestedBindsAreCountedAndCostOneCall)
{
    const auto texture = newTexture();
    const auto other = newTexture();
    texture->bind();
    other->bind();
    CallLog calls;
    EXPECT_TRUE(texture->bind());
    EXPECT_EQ(calls.list(), QStringList(activate(3))) << "its unit is active again, and nothing is bound again";
    calls.clear();
    EXPECT_TRUE(texture->unbind());
    EXPECT_EQ(calls.list(), QStringList(activate(3)));
    EXPECT_TRUE(texture->isBound());
    EXPECT_EQ(texture->unit(), 3);
    calls.clear();
    EXPECT_TRUE(texture->unbind());
    EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(0)}));
    EXPECT_FALSE(texture->isBound());
    EXPECT_TRUE(Texture::isTextureUnitFree(3));
}

TEST_F(TextureTest, UnbindEmptiesTheTexturesOwnTarget)
{
    const auto texture = newTexture(GL_TEXTURE_CUBE_MAP);
    texture->bind();
    const CallLog calls;
    texture->unbind();
    EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(0, GL_TEXTURE_CUBE_MAP)}));
}

TEST_F(TextureTest, AutoBinderPairsBindAndUnbind)
{
    const auto texture = newTexture();
    {
        const AutoBinder outer(texture.get());
        const AutoBinder inner(texture.get());
        EXPECT_EQ(texture->unit(), 3);
    }
    EXPECT_FALSE(texture->isBound());
}

TEST_F(TextureTest, MoreTexturesThanUnitsAreRefusedAndTheOthersStay)
{
    std::vector<std::unique_ptr<Texture>> textures;
    for (int i = 0; i < kUnits + 2; ++i)
        textures.push_back(newTexture());
    for (int i = 0; i < kUnits; ++i)
        ASSERT_TRUE(textures[std::size_t(i)]->bind());
    textures[0]->bind();

    const CallLog calls;
    LogCapture log;
    EXPECT_FALSE(textures[kUnits]->bind());
    EXPECT_FALSE(textures[kUnits + 1]->bind());
    EXPECT_EQ(calls.list(), QStringList());
    const QString warning = QStringLiteral("There is no available texture units");
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({warning, warning}));
    EXPECT_EQ(log.lines().size(), 2);
    EXPECT_FALSE(textures[kUnits]->isBound());
    const TextureUnits& units = TextureUnits::ofCurrentContext();
    EXPECT_EQ(units.boundTextureCounts, (QHash<unsigned, int>{{1, 2}, {2, 1}, {3, 1}, {4, 1}}));
    EXPECT_EQ(units.textureToUnitMaps, (QHash<unsigned, unsigned>{{1, 3}, {2, 2}, {3, 1}, {4, 0}}));

    textures[2]->unbind();
    EXPECT_TRUE(textures[kUnits]->bind());
    EXPECT_EQ(textures[kUnits]->unit(), 1);
}

TEST_F(TextureTest, AnAutoBinderWithoutAUnitUnbindsNothing)
{
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 0);
    const auto texture = newTexture();
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    {
        const AutoBinder binder(texture.get());
        EXPECT_FALSE(texture->isBound());
    }
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
}

TEST_F(TextureTest, BindWithoutNameOrTargetDoesNothing)
{
    Texture texture(nullptr);
    Access::setName(texture, 0);
    const CallLog calls;
    LogCapture log;
    EXPECT_FALSE(texture.bind());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_textureID", "Texture is NULL on bind"));
    Access::setName(texture, 1);
    log.clear();
    EXPECT_FALSE(texture.bind());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_target", "Texture Target is not set on bind"));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(TextureUnits::findOfCurrentContext(), nullptr) << "not even the limit is asked for";
}

TEST_F(TextureTest, UnbindWithoutNameOrTargetDoesNothing)
{
    Texture texture(nullptr);
    Access::setName(texture, 0);
    const CallLog calls;
    LogCapture log;
    EXPECT_FALSE(texture.unbind());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_textureID", "Texutre is NULL on unbind"));
    Access::setName(texture, 1);
    log.clear();
    EXPECT_FALSE(texture.unbind());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_target", "Texture Target is not set on unbind"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureTest, UnbindOfAnUnboundTextureIsReported)
{
    const auto texture = newTexture();
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(texture->unbind());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("contextInfo.textureToUnitMaps.contains(this->_textureID)",
                                                   "Texture has not been bound on unbind"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureTest, UnbindWithoutACountIsReported)
{
    const auto texture = newTexture();
    texture->bind();
    TextureUnits::ofCurrentContext().boundTextureCounts.clear();
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(texture->unbind());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("contextInfo.boundTextureCounts.contains(this->_textureID)",
                                                   "Texture has not been bound on unbind"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureTest, UnitWithoutNameTargetOrBindIsMinusOne)
{
    Texture texture(nullptr);
    Access::setName(texture, 0);
    LogCapture log;
    EXPECT_EQ(texture.unit(), -1);
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_textureID", "Texutre is NULL on unit()"));
    Access::setName(texture, 1);
    log.clear();
    EXPECT_EQ(texture.unit(), -1);
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_target", "Texture Target is not set on unit()"));
    texture.setTarget(GL_TEXTURE_2D);
    log.clear();
    EXPECT_EQ(texture.unit(), -1);
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("contextInfo.textureToUnitMaps.contains(this->_textureID)",
                                                   "Texture has not been bound on unit()"));
    texture.bind();
    TextureUnits::ofCurrentContext().boundTextureCounts.clear();
    log.clear();
    EXPECT_EQ(texture.unit(), -1);
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("contextInfo.boundTextureCounts.contains(this->_textureID)",
                                                   "Texture has not been bound on unit()"));
}

TEST_F(TextureTest, IsBoundWithoutNameOrTargetIsFalseInTheWordsOfUnbind)
{
    Texture texture(nullptr);
    Access::setName(texture, 0);
    LogCapture log;
    EXPECT_FALSE(texture.isBound());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_textureID", "Texutre is NULL on unbind"));
    Access::setName(texture, 1);
    log.clear();
    EXPECT_FALSE(texture.isBound());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_target", "Texture Target is not set on unbind"));
    texture.setTarget(GL_TEXTURE_2D);
    log.clear();
    EXPECT_FALSE(texture.isBound());
    EXPECT_EQ(log.texts(), QStringList()) << "unbound is no failure";
}

TEST_F(TextureTest, TwoWrappersOfOneNameShareUnitAndCount)
{
    Texture first(9u, nullptr);
    Texture second(9u, nullptr);
    first.setTarget(GL_TEXTURE_2D);
    second.setTarget(GL_TEXTURE_2D);
    first.bind();
    CallLog calls;
    EXPECT_TRUE(second.isBound());
    EXPECT_TRUE(second.bind());
    EXPECT_EQ(second.unit(), 3);
    EXPECT_TRUE(first.unbind());
    EXPECT_TRUE(first.isBound());
    EXPECT_EQ(calls.list(), QStringList({activate(3), activate(3)}));
    calls.clear();
    EXPECT_TRUE(second.unbind());
    EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(0)}));
    EXPECT_FALSE(first.isBound());
}

TEST_F(TextureTest, OfTwoWrappersTheOneThatUnbindsLastEmptiesItsOwnTarget)
{
    Texture first(9u, nullptr);
    Texture second(9u, nullptr);
    first.setTarget(GL_TEXTURE_2D);
    second.setTarget(GL_TEXTURE_3D);
    makeRecord();
    const CallLog calls;
    EXPECT_TRUE(first.bind());
    EXPECT_TRUE(second.bind());
    EXPECT_TRUE(first.unbind());
    EXPECT_TRUE(second.unbind());
    EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(9), activate(3), activate(3), activate(3),
                                         bindName(0, GL_TEXTURE_3D)}));
}

TEST_F(TextureTest, AWrapperThatGoesWhileBoundLeavesItsBindToTheOthers)
{
    auto first = std::make_unique<Texture>(9u, nullptr);
    Texture second(9u, nullptr);
    first->setTarget(GL_TEXTURE_2D);
    second.setTarget(GL_TEXTURE_2D);
    first->bind();
    first.reset();
    EXPECT_TRUE(second.isBound());
    EXPECT_EQ(second.unit(), 3);
    EXPECT_TRUE(second.unbind());
    EXPECT_TRUE(Texture::isTextureUnitFree(3));
}

TEST_F(TextureTest, AfterAChangeOfTargetUnbindEmptiesTheNewOne)
{
    const auto texture = newTexture(GL_TEXTURE_2D);
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(texture->bind());
    texture->setTarget(GL_TEXTURE_CUBE_MAP);
    EXPECT_TRUE(texture->isBound());
    EXPECT_EQ(texture->unit(), 3);
    EXPECT_TRUE(texture->unbind());
    EXPECT_EQ(calls.list(),
              QStringList({activate(3), bindName(1, GL_TEXTURE_2D), activate(3), bindName(0, GL_TEXTURE_CUBE_MAP)}));
    EXPECT_TRUE(Texture::isTextureUnitFree(3));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureTest, AUnitHeldAtDestructionIsNotGivenBack)
{
    auto texture = newTexture();
    texture->bind();
    const CallLog calls;
    texture.reset();
    EXPECT_EQ(calls.named({QStringLiteral("glActiveTexture"), QStringLiteral("glBindTexture")}), QStringList());
    EXPECT_FALSE(Texture::isTextureUnitFree(3));
    const auto next = newTexture();
    next->bind();
    EXPECT_EQ(next->unit(), 2);
}

TEST_F(TextureTest, ANameDestroyedWhileBoundAndGivenOutAgainCountsAsBound)
{
    driver.replace(
        "glGenTextures", +[](GLsizei, GLuint* names) { names[0] = 5; });
    driver.load();
    auto former = newTexture();
    former->bind();
    former.reset();
    const auto texture = newTexture();
    ASSERT_EQ(texture->textureID(), 5u);
    CallLog calls;
    EXPECT_TRUE(texture->isBound());
    EXPECT_TRUE(texture->bind());
    EXPECT_EQ(calls.list(), QStringList(activate(3))) << "nothing is bound, though OpenGL has emptied the unit";
    EXPECT_EQ(TextureUnits::ofCurrentContext().boundTextureCounts, (QHash<unsigned, int>{{5, 2}}));
    calls.clear();
    EXPECT_TRUE(texture->unbind());
    EXPECT_TRUE(texture->unbind());
    EXPECT_EQ(calls.list(), QStringList({activate(3), activate(3), bindName(0)}));
    EXPECT_TRUE(Texture::isTextureUnitFree(3)) << "and so the unit comes back";
}

// ---- the logging switch --------------------------------------------------------------------------------------------

TEST_F(TextureTest, WithTheSwitchOnlyTheMessagesGoAndNotTheResults)
{
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 1);
    Texture texture(nullptr);
    const LogCapture log;
    {
        const Texture wrapper(0u, nullptr);
    }
    EXPECT_FALSE(texture.bind());
    EXPECT_FALSE(texture.unbind());
    EXPECT_FALSE(texture.isBound());
    EXPECT_EQ(texture.unit(), -1);
    EXPECT_EQ(texture.width(0), -1);
    texture.setTarget(GL_TEXTURE_2D);
    EXPECT_FALSE(texture.unbind());
    EXPECT_EQ(texture.depth(0), -1);
    const auto other = newTexture();
    EXPECT_TRUE(other->bind());
    EXPECT_FALSE(texture.bind());
    EXPECT_TRUE(other->unbind());
    texture.setReadOnly();
    texture.setTarget(GL_TEXTURE_3D);
    EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_3D));
    texture.setSize(1, GL_R8, 4, 4, 1);
    EXPECT_EQ(Access::recorded(texture), kNothing);
    Texture stencil(nullptr);
    stencil.create2D(GL_TEXTURE_3D, GL_DEPTH24_STENCIL8, 8, 4);
    EXPECT_EQ(Access::recorded(stencil), (Recorded{GL_DEPTH24_STENCIL8, 8, 4, 1}));

    const QString always = QStringLiteral("typeFromInternalFormat() does not implement yet : 0x88F0");
    const QStringList all =
        failure("textureID != 0", "Texture ID was zero, can't wrap a non-existent texture") +
        failure("0u != this->_textureID", "Texture is NULL on destroy") +
        failure("0u != this->_target", "Texture Target is not set on bind") +
        failure("0u != this->_target", "Texture Target is not set on unbind") +
        failure("0u != this->_target", "Texture Target is not set on unbind") +
        failure("0u != this->_target", "Texture Target is not set on unit()") +
        failure("0u != this->_target", "Texture target is not set on internalFormat()") +
        failure("contextInfo.textureToUnitMaps.contains(this->_textureID)", "Texture has not been bound on unbind") +
        failure("this->isBound()", "Texture target is not bound") +
        QStringList({QStringLiteral("There is no available texture units"), readOnlyLine(), readOnlyLine()}) +
        failure("level == 0", "Only call setSize() for the base LOD of the texture") +
        failure("target == GL_TEXTURE_2D", "Target 0x806F is not allowed.") + QStringList(always);
    EXPECT_EQ(log.messages(), isLoggingSwitchedOff() ? QStringList(always) : all);
}

TEST_F(TextureTest, WithLoggingOffOnlyWhatDoesNotObeyTheSwitchIsSaid)
{
    EXPECT_TRUE(passesWithLoggingOff("TextureTest.WithTheSwitchOnlyTheMessagesGoAndNotTheResults"));
}

} // namespace Harrow::Vrk::Test
