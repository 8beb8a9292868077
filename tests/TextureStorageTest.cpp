// SPDX-License-Identifier: MIT
//
// Texture on the fake driver: what it records, the storage that it makes, and what it asks OpenGL about it.
#include "Texture.h"

#include "TextureTestTools.h"

#include <limits>

namespace Harrow::Vrk::Test
{

class TextureStorageTest : public TextureFixture
{
};

// ---- what is recorded ----------------------------------------------------------------------------------------------

TEST_F(TextureStorageTest, SetSizeRecordsTheBaseLevelAndCallsNothing)
{
    Texture texture(nullptr);
    const CallLog calls;
    const LogCapture log;
    texture.setSize(0, GL_R8, 1, 2, 3);
    EXPECT_EQ(Access::recorded(texture), (Recorded{GL_R8, 1, 2, 3}));
    EXPECT_EQ(Access::maxLevel(texture), 1);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureStorageTest, MaxLevelFollowsTheLargerSide)
{
    struct
    {
        int width, height, last;
    } const rows[] = {{1, 1, 0}, {1, 2, 1}, {1024, 768, 10}};
    for (const auto& row : rows)
    {
        Texture set(nullptr);
        set.setSize(0, GL_R8, row.width, row.height, 500);
        EXPECT_EQ(Access::maxLevel(set), row.last) << "depth plays no part";
        const Texture constructed(GL_TEXTURE_2D, GL_R8, row.width, row.height, 500, nullptr);
        EXPECT_EQ(Access::maxLevel(constructed), row.last);
    }
}

TEST_F(TextureStorageTest, SizesBelowOneHaveNoFurtherLevel)
{
    const Texture none(GL_TEXTURE_2D, GL_R8, 0, 0, 0, nullptr);
    EXPECT_EQ(Access::maxLevel(none), 0);
    const Texture negative(GL_TEXTURE_2D, GL_R8, -3, -4, 1, nullptr);
    EXPECT_EQ(Access::maxLevel(negative), 0);
}

TEST_F(TextureStorageTest, DimensionLevelSizeHalvesWithinTheRecordedChain)
{
    Texture texture(GL_TEXTURE_2D, GL_R8, 640, 480, 1, nullptr);
    EXPECT_EQ(Access::dimensionLevelSize(texture, 640, 0), 640);
    EXPECT_EQ(Access::dimensionLevelSize(texture, 480, 6), 7);
    EXPECT_EQ(Access::dimensionLevelSize(texture, 480, 9), 1);
    EXPECT_EQ(Access::dimensionLevelSize(texture, 480, 10), 0);
}

TEST_F(TextureStorageTest, SetSizeOfAnotherLevelIsReportedAndRecordsNothing)
{
    Texture texture(nullptr);
    for (const int level : {1, -1})
    {
        const LogCapture log;
        texture.setSize(level, GL_R8, 4, 4, 1);
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  failure("level == 0", "Only call setSize() for the base LOD of the texture"));
        EXPECT_EQ(Access::recorded(texture), kNothing);
        EXPECT_EQ(Access::maxLevel(texture), 0);
    }
}

TEST_F(TextureStorageTest, SetSizeOfAnotherLevelIsReportedLastAndKeepsWhatIsRecorded)
{
    Texture texture(GL_TEXTURE_2D, GL_RG8, 8, 16, 2, nullptr);
    QStringList expected = failure("0 == _internalFormat", "Texture internal format has already been set") +
                           failure("0 == _width", "Texture width has already been set") +
                           failure("0 == _height", "Texture height has already been set") +
                           failure("level == 0", "Only call setSize() for the base LOD of the texture");
    LogCapture log;
    texture.setSize(1, GL_R8, 4, 4, 1);
    EXPECT_EQ(log.messages(QtCriticalMsg), expected);
    log.clear();
    texture.setReadOnly();
    texture.setSize(2, GL_R8, 4, 4, 1);
    expected.prepend(readOnlyLine());
    EXPECT_EQ(log.messages(QtCriticalMsg), expected);
    EXPECT_EQ(Access::recorded(texture), (Recorded{GL_RG8, 8, 16, 2}));
    EXPECT_EQ(Access::maxLevel(texture), 4);
}

TEST_F(TextureStorageTest, SetSizeOfAnotherLevelOfAReadOnlyTextureRecordsNothing)
{
    Texture texture(nullptr);
    texture.setReadOnly();
    const LogCapture log;
    texture.setSize(1, GL_R8, 4, 4, 1);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(readOnlyLine()) +
                  failure("level == 0", "Only call setSize() for the base LOD of the texture"));
    EXPECT_EQ(Access::recorded(texture), kNothing);
    EXPECT_EQ(Access::maxLevel(texture), 0);
}

TEST_F(TextureStorageTest, SetSizeAgainIsReportedInOrderAndOverwrites)
{
    Texture texture(nullptr);
    texture.setSize(0, GL_R8, 4, 4, 1);
    texture.setReadOnly();
    const LogCapture log;
    texture.setSize(0, GL_RG8, 8, 16, 2);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({readOnlyLine()}) +
                  failure("0 == _internalFormat", "Texture internal format has already been set") +
                  failure("0 == _width", "Texture width has already been set") +
                  failure("0 == _height", "Texture height has already been set"));
    EXPECT_EQ(Access::recorded(texture), (Recorded{GL_RG8, 8, 16, 2}));
    EXPECT_EQ(Access::maxLevel(texture), 4);
}

TEST_F(TextureStorageTest, SetSizeReportsEachFieldForItself)
{
    const struct
    {
        Recorded before;
        QStringList expected;
    } rows[] = {
        {{GL_R8, 0, 0, 0}, failure("0 == _internalFormat", "Texture internal format has already been set")},
        {{0, 5, 0, 0}, failure("0 == _width", "Texture width has already been set")},
        {{0, 0, 5, 0}, failure("0 == _height", "Texture height has already been set")},
        {{0, 0, 0, 5}, {}},
    };
    for (const auto& row : rows)
    {
        Texture texture(GL_TEXTURE_2D, row.before[0], row.before[1], row.before[2], row.before[3], nullptr);
        const LogCapture log;
        texture.setSize(0, GL_RG8, 8, 16, 2);
        EXPECT_EQ(log.messages(), row.expected);
        EXPECT_EQ(Access::recorded(texture), (Recorded{GL_RG8, 8, 16, 2}));
    }
}

TEST_F(TextureStorageTest, SetTargetOfAReadOnlyTextureIsReportedAndStored)
{
    Texture texture(nullptr);
    texture.setReadOnly();
    EXPECT_TRUE(texture.isReadOnly());
    const LogCapture log;
    texture.setTarget(GL_TEXTURE_3D);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(readOnlyLine()));
    EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_3D));
}

TEST_F(TextureStorageTest, ReadOnlyTexturesBindAsOthersDo)
{
    const auto texture = newTexture();
    texture->setReadOnly();
    const LogCapture log;
    EXPECT_TRUE(texture->bind());
    EXPECT_TRUE(texture->unbind());
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- storage -------------------------------------------------------------------------------------------------------

TEST_F(TextureStorageTest, Create2DMakesStorageAndRecordsItsSize)
{
    Texture texture(nullptr);
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(&texture.create2D(GL_TEXTURE_2D, GL_RGBA16F, 640, 480), &texture);
    EXPECT_EQ(calls.list(),
              QStringList({activate(3), bindName(1), parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                           CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RGBA16F, 640, 480, 0, GL_RGBA,
                                         GL_HALF_FLOAT, nullptr),
                           activate(3), bindName(0)}));
    EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(Access::recorded(texture), (Recorded{GL_RGBA16F, 640, 480, 1}));
    EXPECT_EQ(Access::maxLevel(texture), 9);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureStorageTest, Create3DMakesStorageForArraysAndVolumes)
{
    makeRecord();
    for (const GLenum target : {GLenum(GL_TEXTURE_2D_ARRAY), GLenum(GL_TEXTURE_3D)})
    {
        Texture texture(nullptr);
        const CallLog calls;
        const LogCapture log;
        EXPECT_EQ(&texture.create3D(target, GL_R32I, 64, 32, 16), &texture);
        EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(texture.textureID(), target),
                                             parameter(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                                             parameter(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                                             CallLog::call("glTexImage3D", target, 0, GL_R32I, 64, 32, 16, 0,
                                                           GL_RED_INTEGER, GL_INT, nullptr),
                                             activate(3), bindName(0, target)}));
        EXPECT_EQ(Access::recorded(texture), (Recorded{GL_R32I, 64, 32, 16}));
        EXPECT_EQ(Access::maxLevel(texture), 6);
        EXPECT_EQ(log.texts(), QStringList());
    }
}

TEST_F(TextureStorageTest, Create2DMultisampleRecordsNothingAndSetsNoFilter)
{
    Texture texture(nullptr);
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(&texture.create2DMultisample(GL_TEXTURE_2D_MULTISAMPLE, GL_RGBA8, 64, 32, 4), &texture);
    EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(1, GL_TEXTURE_2D_MULTISAMPLE),
                                         CallLog::call("glTexImage2DMultisample", GL_TEXTURE_2D_MULTISAMPLE, 4,
                                                       GL_RGBA8, 64, 32, GL_TRUE),
                                         activate(3), bindName(0, GL_TEXTURE_2D_MULTISAMPLE)}));
    EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D_MULTISAMPLE));
    EXPECT_EQ(Access::recorded(texture), kNothing);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureStorageTest, Create3DMultisampleRecordsNothingAndSetsNoFilter)
{
    Texture texture(nullptr);
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    constexpr GLenum target = GL_TEXTURE_2D_MULTISAMPLE_ARRAY;
    EXPECT_EQ(&texture.create3DMultisample(target, GL_RGBA8, 64, 32, 3, 4), &texture);
    EXPECT_EQ(calls.list(),
              QStringList({activate(3), bindName(1, target),
                           CallLog::call("glTexImage3DMultisample", target, 4, GL_RGBA8, 64, 32, 3, GL_TRUE),
                           activate(3), bindName(0, target)}));
    EXPECT_EQ(texture.target(), target);
    EXPECT_EQ(Access::recorded(texture), kNothing);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureStorageTest, AnotherTargetIsReportedAndUsed)
{
    makeRecord();
    const auto lineOf = [](const char* condition, GLenum target)
    {
        return QStringList(
            assertionLine(QString::fromLatin1(condition), QString::asprintf("Target 0x%X is not allowed.", target)));
    };
    {
        Texture texture(nullptr);
        const CallLog calls;
        const LogCapture log;
        texture.create2D(GL_TEXTURE_RECTANGLE, GL_R8, 8, 4);
        EXPECT_EQ(log.messages(QtCriticalMsg), lineOf("target == GL_TEXTURE_2D", 0x84F5));
        EXPECT_EQ(calls.named({QStringLiteral("glTexImage2D")}),
                  QStringList(CallLog::call("glTexImage2D", GL_TEXTURE_RECTANGLE, 0, GL_R8, 8, 4, 0, GL_RED,
                                            GL_UNSIGNED_BYTE, nullptr)));
        EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_RECTANGLE));
        EXPECT_EQ(Access::recorded(texture), (Recorded{GL_R8, 8, 4, 1}));
    }
    {
        Texture texture(nullptr);
        const CallLog calls;
        const LogCapture log;
        texture.create3D(GL_TEXTURE_2D, GL_R8, 8, 4, 2);
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  lineOf("target == GL_TEXTURE_2D_ARRAY || target == GL_TEXTURE_3D", 0xDE1));
        EXPECT_EQ(calls.list(), QStringList({activate(3), bindName(texture.textureID()),
                                             parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                                             parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                                             CallLog::call("glTexImage3D", GL_TEXTURE_2D, 0, GL_R8, 8, 4, 2, 0, GL_RED,
                                                           GL_UNSIGNED_BYTE, nullptr),
                                             activate(3), bindName(0)}));
        EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D));
        EXPECT_EQ(Access::recorded(texture), (Recorded{GL_R8, 8, 4, 2}));
    }
    {
        Texture texture(nullptr);
        const CallLog calls;
        const LogCapture log;
        texture.create2DMultisample(GL_TEXTURE_2D, GL_R8, 8, 4, 2);
        EXPECT_EQ(log.messages(QtCriticalMsg), lineOf("target == GL_TEXTURE_2D_MULTISAMPLE", 0xDE1));
        EXPECT_EQ(calls.named({QStringLiteral("glTexParameteri"), QStringLiteral("glTexImage2DMultisample")}),
                  QStringList({parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                               parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                               CallLog::call("glTexImage2DMultisample", GL_TEXTURE_2D, 2, GL_R8, 8, 4, GL_TRUE)}))
            << "only the multisample target goes without filters";
        EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D));
        EXPECT_EQ(Access::recorded(texture), kNothing);
    }
    {
        Texture texture(nullptr);
        const CallLog calls;
        const LogCapture log;
        texture.create3DMultisample(GL_TEXTURE_3D, GL_R8, 8, 4, 2, 2);
        EXPECT_EQ(log.messages(QtCriticalMsg), lineOf("target == GL_TEXTURE_2D_MULTISAMPLE_ARRAY", 0x806F));
        EXPECT_EQ(calls.list(),
                  QStringList({activate(3), bindName(texture.textureID(), GL_TEXTURE_3D),
                               parameter(GL_TEXTURE_3D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                               parameter(GL_TEXTURE_3D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                               CallLog::call("glTexImage3DMultisample", GL_TEXTURE_3D, 2, GL_R8, 8, 4, 2, GL_TRUE),
                               activate(3), bindName(0, GL_TEXTURE_3D)}));
        EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_3D));
        EXPECT_EQ(Access::recorded(texture), kNothing);
    }
}

TEST_F(TextureStorageTest, CreationOfAReadOnlyTextureIsReportedForTargetAndSizeAndDone)
{
    const QStringList expected({readOnlyLine(), readOnlyLine()});
    {
        Texture texture(nullptr);
        texture.setReadOnly();
        const CallLog calls;
        const LogCapture log;
        texture.create2D(GL_TEXTURE_2D, GL_R8, 8, 4);
        EXPECT_EQ(log.messages(QtCriticalMsg), expected);
        EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D));
        EXPECT_EQ(Access::recorded(texture), (Recorded{GL_R8, 8, 4, 1}));
        EXPECT_EQ(calls.count(QStringLiteral("glTexImage2D")), 1);
    }
    {
        Texture texture(nullptr);
        texture.setReadOnly();
        const CallLog calls;
        const LogCapture log;
        texture.create3D(GL_TEXTURE_2D_ARRAY, GL_R8, 8, 4, 2);
        EXPECT_EQ(log.messages(QtCriticalMsg), expected);
        EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D_ARRAY));
        EXPECT_EQ(Access::recorded(texture), (Recorded{GL_R8, 8, 4, 2}));
        EXPECT_EQ(calls.count(QStringLiteral("glTexImage3D")), 1);
    }
}

TEST_F(TextureStorageTest, MultisampleCreationOfAReadOnlyTextureIsReportedForTheTargetAloneAndDone)
{
    Texture texture(nullptr);
    texture.setReadOnly();
    const CallLog calls;
    LogCapture log;
    texture.create2DMultisample(GL_TEXTURE_2D_MULTISAMPLE, GL_R8, 8, 4, 2);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(readOnlyLine()));
    EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D_MULTISAMPLE));
    EXPECT_EQ(calls.count(QStringLiteral("glTexImage2DMultisample")), 1);
    log.clear();
    texture.create3DMultisample(GL_TEXTURE_2D_MULTISAMPLE_ARRAY, GL_R8, 8, 4, 2, 2);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(readOnlyLine()));
    EXPECT_EQ(texture.target(), GLenum(GL_TEXTURE_2D_MULTISAMPLE_ARRAY));
    EXPECT_EQ(calls.count(QStringLiteral("glTexImage3DMultisample")), 1);
    EXPECT_EQ(Access::recorded(texture), kNothing);
}

TEST_F(TextureStorageTest, CreatingAgainReportsWhatWasRecorded)
{
    Texture texture(nullptr);
    texture.create2D(GL_TEXTURE_2D, GL_R8, 8, 4);
    const CallLog calls;
    const LogCapture log;
    texture.create2D(GL_TEXTURE_2D, GL_RG8, 16, 8);
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 3);
    EXPECT_EQ(calls.count(QStringLiteral("glTexImage2D")), 1);
    EXPECT_EQ(Access::recorded(texture), (Recorded{GL_RG8, 16, 8, 1}));
}

TEST_F(TextureStorageTest, AFormatWithoutATransferTypeIsPassedWithTypeZero)
{
    Texture texture(nullptr);
    const CallLog calls;
    const LogCapture log;
    texture.create2D(GL_TEXTURE_2D, GL_DEPTH24_STENCIL8, 8, 4);
    EXPECT_EQ(log.texts(), QStringList(QStringLiteral("typeFromInternalFormat() does not implement yet : 0x88F0")));
    EXPECT_EQ(calls.named({QStringLiteral("glTexImage2D")}),
              QStringList(CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_DEPTH24_STENCIL8, 8, 4, 0,
                                        GL_DEPTH_STENCIL, 0, nullptr)));
}

TEST_F(TextureStorageTest, AnUnknownFormatIsReportedForFormatAndType)
{
    Texture texture(nullptr);
    const CallLog calls;
    const LogCapture log;
    texture.create3D(GL_TEXTURE_3D, 0x1234, 8, 4, 2);
    EXPECT_EQ(log.texts(), QStringList({QStringLiteral("formatFromInternalFormat() does not implement yet : 0x1234"),
                                        QStringLiteral("typeFromInternalFormat() does not implement yet : 0x1234")}));
    EXPECT_EQ(calls.named({QStringLiteral("glTexImage3D")}),
              QStringList(CallLog::call("glTexImage3D", GL_TEXTURE_3D, 0, 0x1234, 8, 4, 2, 0, 0, 0, nullptr)));
}

TEST_F(TextureStorageTest, ThePackedFloatFormatIsPassedAsHalfFloat)
{
    Texture texture(nullptr);
    const CallLog calls;
    texture.create2D(GL_TEXTURE_2D, GL_R11F_G11F_B10F, 8, 4);
    EXPECT_EQ(calls.named({QStringLiteral("glTexImage2D")}),
              QStringList(CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_R11F_G11F_B10F, 8, 4, 0, GL_RGB,
                                        GL_HALF_FLOAT, nullptr)));
}

TEST_F(TextureStorageTest, WithoutAFreeUnitCreationWarnsAndGoesOn)
{
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 0);
    Texture texture(nullptr);
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    texture.create2D(GL_TEXTURE_2D, GL_R8, 8, 4);
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
    EXPECT_EQ(calls.list().size(), 3);
    EXPECT_EQ(calls.count(QStringLiteral("glTexImage2D")), 1);
    EXPECT_EQ(Access::recorded(texture), (Recorded{GL_R8, 8, 4, 1}));
}

// ---- queries of levels ---------------------------------------------------------------------------------------------

TEST_F(TextureStorageTest, LevelQueriesAskOpenGLAndNotTheRecord)
{
    driver.replace(
        "glGetTexLevelParameteriv",
        +[](GLenum target, GLint level, GLenum name, GLint* value)
        { *value = GLint(target == GL_TEXTURE_2D) * 100000 + level * 10000 + GLint(name - GL_TEXTURE_WIDTH); });
    driver.load();
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 5, 6, 7, nullptr);
    texture.bind();
    const CallLog calls;
    EXPECT_EQ(texture.width(0), 100000);
    EXPECT_EQ(texture.height(2), 120000 + 1);
    EXPECT_EQ(texture.depth(3), 130000 + 0x7071) << "GL_TEXTURE_DEPTH is 0x8071, GL_TEXTURE_WIDTH 0x1000";
    EXPECT_EQ(texture.internalFormat(1), 110000 + 3);
    EXPECT_EQ(calls.list().size(), 4);
    EXPECT_EQ(calls.count(QStringLiteral("glGetTexLevelParameteriv")), 4);
}

TEST_F(TextureStorageTest, OfACubeMapThePositiveXFaceIsAsked)
{
    const auto texture = newTexture(GL_TEXTURE_CUBE_MAP);
    texture->bind();
    const CallLog calls;
    texture->width(0);
    texture->internalFormat(2);
    ASSERT_EQ(calls.list().size(), 2);
    EXPECT_TRUE(calls.list()[0].startsWith(QStringLiteral("glGetTexLevelParameteriv(0x8515, 0, 0x1000, ")));
    EXPECT_TRUE(calls.list()[1].startsWith(QStringLiteral("glGetTexLevelParameteriv(0x8515, 2, 0x1003, ")));
}

TEST_F(TextureStorageTest, OtherTargetsAreAskedAsTheyAre)
{
    for (const GLenum target : {GLenum(GL_TEXTURE_2D_ARRAY), GLenum(GL_TEXTURE_3D), GLenum(GL_TEXTURE_CUBE_MAP_ARRAY),
                                GLenum(GL_TEXTURE_2D_MULTISAMPLE)})
    {
        const auto texture = newTexture(target);
        texture->bind();
        const CallLog calls;
        texture->height(1);
        ASSERT_EQ(calls.list().size(), 1);
        EXPECT_TRUE(calls.list()[0].startsWith(QString::asprintf("glGetTexLevelParameteriv(0x%x, ", target)));
        texture->unbind();
    }
}

TEST_F(TextureStorageTest, LevelQueriesOfAnUnboundTextureAreMinusOneAndAskNothing)
{
    const auto texture = newTexture();
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(texture->width(0), -1);
    EXPECT_EQ(texture->height(0), -1);
    EXPECT_EQ(texture->depth(0), -1);
    EXPECT_EQ(texture->internalFormat(0), -1);
    EXPECT_EQ(calls.list(), QStringList());
    const QStringList line = failure("this->isBound()", "Texture target is not bound");
    EXPECT_EQ(log.messages(QtCriticalMsg), line + line + line + line);
}

TEST_F(TextureStorageTest, LevelQueriesWithoutNameOrTargetAreMinusOneInTheSameWords)
{
    Texture texture(nullptr);
    Access::setName(texture, 0);
    const CallLog calls;
    LogCapture log;
    EXPECT_EQ(texture.width(0), -1);
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("0u != this->_textureID", "Texutre is NULL on internalFormat()"));
    Access::setName(texture, 1);
    log.clear();
    EXPECT_EQ(texture.depth(0), -1);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failure("0u != this->_target", "Texture target is not set on internalFormat()"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(TextureStorageTest, AQueryThatTheDriverDoesNotAnswerIsMinusOne)
{
    const auto texture = newTexture();
    texture->bind();
    EXPECT_EQ(texture->width(-1), -1) << "this driver writes nothing";
}

// ---- one colour ----------------------------------------------------------------------------------------------------

namespace
{

/// The bytes that `SolidColorTexture` hands to the driver.
std::array<int, 4> uploadedColor(FakeDriver& driver, float r, float g, float b, float a)
{
    static std::array<int, 4> seen;
    seen = {-1, -1, -1, -1};
    driver.replace(
        "glTexImage2D",
        +[](GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void* pixels)
        {
            const auto* const bytes = static_cast<const unsigned char*>(pixels);
            seen = {bytes[0], bytes[1], bytes[2], bytes[3]};
        });
    driver.load();
    delete SolidColorTexture(r, g, b, a);
    return seen;
}

} // namespace

TEST_F(TextureStorageTest, SolidColorMakesOneTexelAndRestoresTheAlignment)
{
    driver.setInteger(GL_UNPACK_ALIGNMENT, 8);
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    const std::unique_ptr<Texture> texture(SolidColorTexture(1, 0, 0, 1));
    QStringList list = calls.list();
    ASSERT_EQ(list.size(), 15);
    EXPECT_TRUE(list.takeAt(0).startsWith(QStringLiteral("glGenTextures(1, ")));
    EXPECT_TRUE(list.takeAt(2).startsWith(QStringLiteral("glGetIntegerv(0xcf5, ")));
    EXPECT_TRUE(list.takeAt(9).startsWith(QStringLiteral("glTexImage2D(0xde1, 0, 0x1908, 1, 1, 0, 0x1908, 0x1401, ")));
    constexpr GLenum target = GL_TEXTURE_2D;
    EXPECT_EQ(
        list,
        QStringList({activate(3), bindName(1), CallLog::call("glPixelStorei", GL_UNPACK_ALIGNMENT, 1),
                     parameter(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                     parameter(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                     parameter(target, GL_TEXTURE_WRAP_S, GL_REPEAT), parameter(target, GL_TEXTURE_WRAP_T, GL_REPEAT),
                     parameter(target, GL_TEXTURE_BASE_LEVEL, 0), parameter(target, GL_TEXTURE_MAX_LEVEL, 0),
                     CallLog::call("glPixelStorei", GL_UNPACK_ALIGNMENT, 8), activate(3), bindName(0)}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureStorageTest, SolidColorWithoutAFreeUnitWarnsAndGoesOn)
{
    driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 0);
    driver.setInteger(GL_UNPACK_ALIGNMENT, 8);
    makeRecord();
    const CallLog calls;
    const LogCapture log;
    const std::unique_ptr<Texture> texture(SolidColorTexture(1, 0, 0, 1));
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
    EXPECT_EQ(calls.list().size(), 11) << "all but activating and binding";
    EXPECT_EQ(calls.named({QStringLiteral("glActiveTexture"), QStringLiteral("glBindTexture")}), QStringList());
    EXPECT_EQ(calls.count(QStringLiteral("glTexImage2D")), 1);
    EXPECT_EQ(calls.list().last(), CallLog::call("glPixelStorei", GL_UNPACK_ALIGNMENT, 8));
    EXPECT_NE(texture->textureID(), 0u);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_FALSE(texture->isBound());
}

TEST_F(TextureStorageTest, SolidColorRecordsNoSizeAndHasNoParent)
{
    const std::unique_ptr<Texture> texture(SolidColorTexture(1, 1, 1, 1));
    EXPECT_EQ(Access::recorded(*texture), kNothing);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(texture->parent(), nullptr);
    EXPECT_TRUE(texture->isManaged());
    EXPECT_FALSE(texture->isReadOnly());
    EXPECT_FALSE(texture->isBound());
}

TEST_F(TextureStorageTest, SolidColorTruncatesInTheOrderRedGreenBlueAlpha)
{
    using Color = std::array<int, 4>;
    EXPECT_EQ(uploadedColor(driver, 0.999f, 1.0f, 0.0f, 0.5f), (Color{254, 255, 0, 127}));
    EXPECT_EQ(uploadedColor(driver, 0.25f, 0.75f, 1 / 255.0f, 0.9999f), (Color{63, 191, 1, 254}));
}

TEST_F(TextureStorageTest, SolidColorDoesNotClampButWrapsAround)
{
    using Color = std::array<int, 4>;
    EXPECT_EQ(uploadedColor(driver, 2.0f, -1.0f, 1.01f, -0.001f), (Color{254, 1, 1, 0}));
}

TEST_F(TextureStorageTest, SolidColorOfWhatIsNoByteAtAllIsDefined)
{
    constexpr float infinite = std::numeric_limits<float>::infinity();
    using Color = std::array<int, 4>;
    EXPECT_EQ(uploadedColor(driver, infinite, -infinite, std::numeric_limits<float>::quiet_NaN(), 1e30f),
              (Color{0, 0, 0, 0}));
}

} // namespace Harrow::Vrk::Test
