// SPDX-License-Identifier: MIT
//
// The two texture carriers at work on the fake driver: the exact OpenGL calls of bind and unbind, and what they do when
// there is no unit or no buffer to be had.
#include "ParameterMechanismTestTools.h"

#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

// ---- texture -------------------------------------------------------------------------------------------------------

QStringList madeStorage(int unit, GLuint name, GLenum internalFormat, GLenum format, GLenum type, int width)
{
    return {activate(unit),
            bindName(name),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
            CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, internalFormat, width, 1, 0, format, type, nullptr),
            activate(unit),
            bindName(0)};
}

QStringList copied(int unit, GLuint name, GLenum format, GLenum type, int width)
{
    return {activate(unit),
            bindName(name),
            CallLog::call("glBindBuffer", GL_PIXEL_UNPACK_BUFFER, 1),
            CallLog::call("glTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, width, 1, format, type, nullptr),
            CallLog::call("glBindBuffer", GL_PIXEL_UNPACK_BUFFER, 0),
            activate(unit),
            bindName(0)};
}

QStringList madeStorages(int width)
{
    return madeStorage(3, 1, GL_RGBA32I, GL_RGBA_INTEGER, GL_INT, width) +
           madeStorage(3, 2, GL_RGBA32F, GL_RGBA, GL_FLOAT, width);
}

QStringList copiedBoth(int width)
{
    return copied(3, 1, GL_RGBA_INTEGER, GL_INT, width) + copied(3, 2, GL_RGBA, GL_FLOAT, width);
}

class TextureBindTest : public ParameterMechanismBindTest
{
protected:
    void SetUp() override
    {
        ParameterMechanismBindTest::SetUp();
        use(Plan::eTextureMechanism);
    }
};

TEST_F(TextureBindTest, TheFirstBindMakesBothTexturesAndCopiesTheStagingBufferIntoThem)
{
    CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(listed(calls), QStringList({QStringLiteral("glGenBuffers"), QStringLiteral("glGenTextures"),
                                          QStringLiteral("glGenTextures")}) +
                                 madeStorages(18) + uploaded(GL_PIXEL_UNPACK_BUFFER) + copiedBoth(18));
    calls.clear();
    EXPECT_TRUE(unbind());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureBindTest, ACleanBindMakesNoCall)
{
    bind();
    const CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureBindTest, ADirtyBindUploadsAndCopiesIntoTheStorageThatThereIs)
{
    bind();
    const float one = 1.0f;
    collection->set(0, QStringLiteral("alpha"), &one, sizeof one);
    CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList({uploadedByName()}) + copiedBoth(18));
    calls.clear();
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureBindTest, AGrownCollectionGetsNewStorageForBothTextures)
{
    bind();
    collection->update(QByteArray(5 * 96, '\1').constData(), 5 * 96);
    CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), madeStorages(30) + QStringList({uploadedByName()}) + copiedBoth(30));
    calls.clear();
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureBindTest, AGrownCollectionThatWasDeclaredCleanIsUploadedAllTheSame)
{
    bind();
    collection->update(QByteArray(96, '\1').constData(), 96);
    collection->clearDirtyStatus();
    const CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), madeStorages(6) + QStringList({uploadedByName()}) + copiedBoth(6));
}

TEST_F(TextureBindTest, TheSamplersOfAProgramGetTheFloatTextureAndThenTheIntegerTexture)
{
    useSamplers();
    bind();
    const auto program = linked();
    CallLog calls;
    EXPECT_TRUE(bind(program.get()));
    const QStringList asked = samplersAsked(*program);
    EXPECT_EQ(calls.list(), QStringList({asked[0]}) + onUnit(3, GL_TEXTURE_2D, 2) +
                                QStringList({CallLog::call("glUniform1i", kFloatLocation, 3), asked[1]}) +
                                onUnit(2, GL_TEXTURE_2D, 1) +
                                QStringList({CallLog::call("glUniform1i", kIntegerLocation, 2)}));
    calls.clear();
    EXPECT_TRUE(unbind(program.get()));
    EXPECT_EQ(calls.list(), onUnit(3, GL_TEXTURE_2D, 0) + onUnit(2, GL_TEXTURE_2D, 0));
}

TEST_F(TextureBindTest, OnlyTheSamplerThatAProgramHasIsBound)
{
    driver.setUniformLocation("u_iFooSampler", kIntegerLocation);
    bind();
    const auto program = linked();
    CallLog calls;
    EXPECT_TRUE(bind(program.get()));
    EXPECT_EQ(calls.list(), samplersAsked(*program) + onUnit(3, GL_TEXTURE_2D, 1) +
                                QStringList({CallLog::call("glUniform1i", kIntegerLocation, 3)}));
    calls.clear();
    EXPECT_TRUE(unbind(program.get()));
    EXPECT_EQ(calls.list(), onUnit(3, GL_TEXTURE_2D, 0));
}

TEST_F(TextureBindTest, AProgramWithoutSamplersGetsNone)
{
    for (const Plan::MechanismType mechanism : {Plan::eTextureMechanism, Plan::eBufferTextureMechanism})
    {
        use(mechanism);
        bind();
        const auto program = linked();
        CallLog calls;
        EXPECT_TRUE(bind(program.get()));
        EXPECT_EQ(calls.list(), samplersAsked(*program));
        calls.clear();
        EXPECT_TRUE(bind(program.get()));
        EXPECT_TRUE(unbind(program.get()));
        EXPECT_EQ(calls.list(), QStringList());
    }
}

TEST_F(TextureBindTest, UnbindWithoutBindFindsNoTextures)
{
    useSamplers();
    const auto program = linked();
    const CallLog calls;
    EXPECT_TRUE(unbind(program.get()));
    EXPECT_EQ(calls.named({QStringLiteral("glActiveTexture"), QStringLiteral("glBindTexture")}), QStringList());
}

// ---- buffer texture ------------------------------------------------------------------------------------------------

QStringList madeView(GLuint name, GLenum internalFormat)
{
    return {QStringLiteral("glGenTextures"),
            activate(3),
            bindName(name, GL_TEXTURE_BUFFER),
            CallLog::call("glBindBuffer", GL_TEXTURE_BUFFER, 1),
            CallLog::call("glTexBuffer", GL_TEXTURE_BUFFER, internalFormat, 1),
            CallLog::call("glBindBuffer", GL_TEXTURE_BUFFER, 0),
            activate(3),
            bindName(0, GL_TEXTURE_BUFFER)};
}

class BufferTextureBindTest : public ParameterMechanismBindTest
{
protected:
    void SetUp() override
    {
        ParameterMechanismBindTest::SetUp();
        use(Plan::eBufferTextureMechanism);
    }
};

TEST_F(BufferTextureBindTest, TheFirstBindMakesBothViewsOfOneBufferAndFillsIt)
{
    CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(listed(calls), QStringList({QStringLiteral("glGenBuffers")}) + madeView(1, GL_RGBA32I) +
                                 madeView(2, GL_RGBA32F) + uploaded(GL_TEXTURE_BUFFER));
    calls.clear();
    EXPECT_TRUE(bind());
    EXPECT_TRUE(unbind());
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(BufferTextureBindTest, ADirtyOrGrownCollectionIsUploadedOnceForBothViews)
{
    bind();
    const float one = 1.0f;
    collection->set(0, QStringLiteral("alpha"), &one, sizeof one);
    CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList({uploadedByName()}));
    collection->update(QByteArray(7 * 96, '\1').constData(), 7 * 96);
    calls.clear();
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.list(), QStringList({uploadedByName()}));
}

TEST_F(BufferTextureBindTest, TheSamplersOfAProgramGetTheFloatViewAndThenTheIntegerView)
{
    useSamplers();
    bind();
    const auto program = linked();
    CallLog calls;
    EXPECT_TRUE(bind(program.get()));
    const QStringList asked = samplersAsked(*program);
    EXPECT_EQ(calls.list(), QStringList({asked[0]}) + onUnit(3, GL_TEXTURE_BUFFER, 2) +
                                QStringList({CallLog::call("glUniform1i", kFloatLocation, 3), asked[1]}) +
                                onUnit(2, GL_TEXTURE_BUFFER, 1) +
                                QStringList({CallLog::call("glUniform1i", kIntegerLocation, 2)}));
    calls.clear();
    EXPECT_TRUE(unbind(program.get()));
    EXPECT_EQ(calls.list(), onUnit(3, GL_TEXTURE_BUFFER, 0) + onUnit(2, GL_TEXTURE_BUFFER, 0));
}

// ---- what cannot be done -------------------------------------------------------------------------------------------

const QString kNoUnit = QStringLiteral("There is no available texture units");
const QStringList kWriting = {QStringLiteral("glTexImage2D"), QStringLiteral("glTexSubImage2D"),
                              QStringLiteral("glTexBuffer"), QStringLiteral("glTexParameteri"),
                              QStringLiteral("glUniform1i")};

class TextureGuardTest : public TextureBindTest
{
protected:
    void TearDown() override
    {
        freeUnits();
        TextureBindTest::TearDown();
    }

    void takeUnits()
    {
        for (int unit = 0; unit < kUnits; ++unit)
        {
            _others.push_back(newTexture());
            EXPECT_TRUE(_others.back()->bind());
        }
    }

    void freeUnits()
    {
        for (const auto& texture : _others)
            texture->unbind();
        _others.clear();
    }

    static QString notASource()
    {
        return assertionLine(QStringLiteral("true == isSource"),
                             QStringLiteral("Buffer Object is no pixel unpack buffer on copy to a texture"));
    }

private:
    std::vector<std::unique_ptr<Texture>> _others;
};

TEST_F(TextureGuardTest, WithoutATextureUnitNoTextureOfOthersIsChanged)
{
    useSamplers();
    const auto program = linked();
    for (const Plan::MechanismType mechanism : {Plan::eTextureMechanism, Plan::eBufferTextureMechanism})
    {
        use(mechanism);
        takeUnits();
        LogCapture log;
        CallLog calls;
        EXPECT_TRUE(bind(program.get()));
        EXPECT_EQ(calls.named(kWriting), QStringList()) << kCarrierNames[mechanism];
        EXPECT_FALSE(log.messages().isEmpty());
        EXPECT_EQ(log.messages().filter(kNoUnit).size(), log.messages().size());
        EXPECT_TRUE(unbind());

        freeUnits();
        calls.clear();
        log.clear();
        EXPECT_TRUE(bind(program.get()));
        EXPECT_EQ(log.messages(), QStringList());
        EXPECT_EQ(calls.count(QStringLiteral("glTexImage2D")), mechanism == Plan::eTextureMechanism ? 2 : 0);
        EXPECT_EQ(calls.count(QStringLiteral("glTexSubImage2D")), mechanism == Plan::eTextureMechanism ? 2 : 0);
        EXPECT_EQ(calls.count(QStringLiteral("glTexBuffer")), mechanism == Plan::eTextureMechanism ? 0 : 2);
        EXPECT_EQ(calls.count(QStringLiteral("glUniform1i")), 2) << "it is made up for";
        EXPECT_TRUE(unbind(program.get()));
    }
}

TEST_F(TextureGuardTest, ACopyWithoutAUnitIsMadeUpFor)
{
    bind();
    const float one = 1.0f;
    collection->set(0, QStringLiteral("alpha"), &one, sizeof one);
    takeUnits();
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_TRUE(bind());
        EXPECT_EQ(calls.named(kWriting), QStringList());
        EXPECT_EQ(log.messages(), QStringList({kNoUnit, kNoUnit}));
    }
    freeUnits();
    const CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.count(QStringLiteral("glTexSubImage2D")), 2);
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.count(QStringLiteral("glTexSubImage2D")), 2);
}

TEST_F(TextureGuardTest, ABufferOfAnotherTargetIsNoSourceOfTexels)
{
    collection->getUniformBufferObject(GL_UNIFORM_BUFFER); // whoever comes first says the target
    LogCapture log;
    CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.count(QStringLiteral("glTexSubImage2D")), 0) << "it would be read from address 0";
    EXPECT_EQ(log.messages(), QStringList({notASource(), notASource()}));
    EXPECT_EQ(calls.named({QStringLiteral("glBindBuffer")}).last(), CallLog::call("glBindBuffer", GL_UNIFORM_BUFFER, 0))
        << "what is bound is unbound";
    log.clear();
    driver.setInteger(GL_PIXEL_UNPACK_BUFFER_BINDING, 5);
    EXPECT_TRUE(bind());
    EXPECT_EQ(calls.count(QStringLiteral("glTexSubImage2D")), 2) << "there is a buffer to read from";
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(TextureGuardTest, ABufferThatIsBoundAlreadyIsTakenIfTheDriverHasIt)
{
    bind();
    const auto buffer = collection->getUniformBufferObject()->bufferObject();
    const float one = 1.0f;
    const QString busy = assertionLine(
        QStringLiteral("0u == this->_boBountTarget"),
        QStringLiteral("Buffer Object is already bound on bind to target %1").arg(GL_PIXEL_UNPACK_BUFFER));
    ASSERT_TRUE(buffer->bind());
    for (const bool isThere : {false, true})
    {
        driver.setInteger(GL_PIXEL_UNPACK_BUFFER_BINDING, isThere ? 1 : 0);
        collection->set(0, QStringLiteral("alpha"), &one, sizeof one);
        const LogCapture log;
        const CallLog calls;
        EXPECT_TRUE(bind());
        EXPECT_EQ(calls.count(QStringLiteral("glTexSubImage2D")), isThere ? 2 : 0);
        EXPECT_EQ(log.messages(),
                  isThere ? QStringList({busy, busy}) : QStringList({busy, notASource(), busy, notASource()}));
    }
    EXPECT_TRUE(buffer->unbind());
}

TEST_F(TextureGuardTest, ACollectionWithoutRecordsIsReportedOnceAndHasNothingToSample)
{
    useSamplers();
    const auto program = linked();
    collection = std::make_unique<InstanceDataCollection>(plan, size_t(0));
    const QString noTarget =
        assertionLine(QStringLiteral("0u != this->_target"), QStringLiteral("Texture Target is not set on bind"));
    LogCapture log;
    const CallLog calls;
    EXPECT_TRUE(bind());
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("0 != valueCount"),
                                         QStringLiteral("Buffer Object needs more and 0 values during upload")),
                           noTarget, noTarget}));
    log.clear();
    EXPECT_TRUE(bind());
    EXPECT_EQ(log.messages(), QStringList());
    EXPECT_TRUE(bind(program.get()));
    EXPECT_EQ(calls.named(kWriting), QStringList());
}

} // namespace
} // namespace Harrow::Vrk::Test
