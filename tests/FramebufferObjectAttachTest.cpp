// SPDX-License-Identifier: MIT
//
// FramebufferObject on the fake driver: attaching and detaching, with their calls, books, counters and words.
#include "FramebufferObject.h"

#include "AutoBinder.h"
#include "FramebufferObjectTestTools.h"
#include "SamplerTextureManager.h"

namespace Harrow::Vrk::Test
{
namespace
{

class FramebufferObjectAttachTest : public FramebufferObjects
{
};

} // namespace

// ---- the attach family ---------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectAttachTest, AttachTakesEachTargetButTheLayeredOnes)
{
    for (const GLenum target : kFlat)
    {
        BoundFramebuffer framebuffer;
        const TexturePtr texture = textureNamed(9, target);
        const CallLog calls;
        const LogCapture log;
        EXPECT_TRUE(framebuffer.attach(texture.get(), kColor1, 3));
        EXPECT_EQ(calls.list(), QStringList({flatCall(kColor1, target, 9, 3)}));
        EXPECT_EQ(log.texts(), QStringList());
        framebuffer.detachAll();
    }
}

TEST_F(FramebufferObjectAttachTest, AttachOfALayeredTextureFailsWithTheTargetMessage)
{
    const char* const shown[] = {"0x806F", "0x8070", "0x8C1A", "0x8C1B"};
    for (int i = 0; i < 4; ++i)
    {
        BoundFramebuffer framebuffer;
        const TexturePtr texture = textureNamed(9, kLayered[i]);
        const CallLog calls;
        LogCapture log;
        EXPECT_FALSE(framebuffer.attach(texture.get(), kColor0, 0));
        EXPECT_FALSE(framebuffer.attachUpdate(texture.get(), kColor0, 0));
        EXPECT_EQ(log.messages(QtCriticalMsg), wrongForAttach(shown[i]) + wrongForAttach(shown[i]));
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_FALSE(framebuffer.hasAttachment(kColor0));
        EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>());
    }
    EXPECT_EQ(total(), 0);
    EXPECT_EQ(active(), 0);
}

TEST_F(FramebufferObjectAttachTest, Attach3DNamesTheLayerOfAnArrayAndTheSliceOfTheRest)
{
    for (const GLenum target : {GL_TEXTURE_2D_ARRAY, GL_PROXY_TEXTURE_2D_ARRAY, GL_TEXTURE_CUBE_MAP_ARRAY})
    {
        BoundFramebuffer framebuffer;
        const TexturePtr texture = textureNamed(9, GLenum(target));
        const CallLog calls;
        EXPECT_TRUE(framebuffer.attach3D(texture.get(), kColor0, 5, 2));
        EXPECT_EQ(calls.list(), QStringList({layerCall(kColor0, 9, 2, 5)}));
        framebuffer.detachAll();
    }
    for (const GLenum target : {GL_TEXTURE_3D, GL_PROXY_TEXTURE_3D, GL_TEXTURE_2D, GL_TEXTURE_2D_MULTISAMPLE_ARRAY})
    {
        BoundFramebuffer framebuffer;
        const TexturePtr texture = textureNamed(9, GLenum(target));
        const CallLog calls;
        EXPECT_TRUE(framebuffer.attach3D(texture.get(), kColor0, 5, 2));
        EXPECT_EQ(calls.list(),
                  QStringList({CallLog::call("glFramebufferTexture3D", GL_FRAMEBUFFER, kColor0, target, 9, 2, 5)}));
        framebuffer.detachAll();
    }
}

TEST_F(FramebufferObjectAttachTest, AttachLayersTakesTheLayeredTargetsAlone)
{
    for (const GLenum target : kLayered)
    {
        BoundFramebuffer framebuffer;
        const TexturePtr texture = textureNamed(9, target);
        const CallLog calls;
        EXPECT_TRUE(framebuffer.attachLayers(texture.get(), kColor0, 2));
        EXPECT_EQ(calls.list(), QStringList({wholeCall(kColor0, 9, 2)}));
        framebuffer.detachAll();
    }
    FramebufferObject::ResetNumFBOTextures();
    for (const GLenum target : kFlat)
    {
        BoundFramebuffer framebuffer;
        const TexturePtr texture = textureNamed(9, target);
        const CallLog calls;
        const LogCapture log;
        EXPECT_FALSE(framebuffer.attachLayers(texture.get(), kColor0, 2));
        EXPECT_EQ(log.messages(QtCriticalMsg), wrongForAttachLayers(target));
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_FALSE(framebuffer.hasAttachment(kColor0));
    }
    EXPECT_EQ(total(), 0);
    EXPECT_EQ(active(), 0);
}

TEST_F(FramebufferObjectAttachTest, AttachingIsRefusedWithoutANameAndWhileNotBound)
{
    for (const Operation& operation : kOperations)
    {
        FramebufferObject framebuffer(nullptr);
        const TexturePtr texture = textureNamed(9, operation.target);
        const CallLog calls;
        LogCapture log;
        EXPECT_FALSE(operation.attach(framebuffer, texture.get(), kColor0)) << operation.name;
        EXPECT_EQ(log.messages(QtCriticalMsg), notBound("attach")) << operation.name;
        log.clear();
        framebuffer.setFBO(0);
        EXPECT_FALSE(operation.attach(framebuffer, texture.get(), kColor0)) << operation.name;
        EXPECT_EQ(log.messages(QtCriticalMsg), nullName("attach")) << operation.name;
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_FALSE(framebuffer.hasAttachment(kColor0));
    }
    EXPECT_EQ(total(), 0);
    EXPECT_EQ(active(), 0);
}

TEST_F(FramebufferObjectAttachTest, ATakenPointIsReportedBeforeAnythingIsSaidOfTheTexture)
{
    BoundFramebuffer framebuffer;
    const TexturePtr first = textureNamed(8);
    const TexturePtr flat = textureNamed(9);
    const TexturePtr volume = textureNamed(10, GL_TEXTURE_3D);
    framebuffer.attach(first.get(), kColor1, 0);
    const CallLog calls;
    for (Texture* const texture : {flat.get(), volume.get(), static_cast<Texture*>(nullptr)})
    {
        for (const Operation& operation : {kOperations[0], kOperations[1], kOperations[2]})
        {
            const LogCapture log;
            EXPECT_FALSE(operation.attach(framebuffer, texture, kColor1)) << operation.name;
            EXPECT_EQ(log.messages(QtCriticalMsg), taken(36065)) << operation.name;
        }
    }
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(framebuffer.attachment(kColor1), first.get());
    EXPECT_EQ(total(), 1);
    EXPECT_EQ(active(), 1);
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, ANullTextureIsReportedAndChangesNothing)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    framebuffer.attach(texture.get(), kColor1, 0);
    const CallLog calls;
    LogCapture log;
    for (const Operation& operation : kOperations)
    {
        EXPECT_FALSE(operation.attach(framebuffer, nullptr, kColor0)) << operation.name;
        EXPECT_EQ(log.messages(QtCriticalMsg), nullTexture()) << operation.name;
        log.clear();
    }
    EXPECT_FALSE(framebuffer.attachUpdate(nullptr, kColor1, 0)) << "also in the place of another";
    EXPECT_EQ(log.messages(QtCriticalMsg), nullTexture());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>({kColor1}));
    EXPECT_EQ(total(), 1);
    EXPECT_EQ(active(), 1);
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, EveryWayOfAttachingRecordsTextureLevelAndDrawBufferAndCounts)
{
    BoundFramebuffer framebuffer;
    const TexturePtr flat = textureNamed(8);
    const TexturePtr array = textureNamed(9, GL_TEXTURE_2D_ARRAY);
    EXPECT_TRUE(framebuffer.attachUpdate(flat.get(), GL_COLOR_ATTACHMENT0 + 3, 4));
    EXPECT_TRUE(framebuffer.attachLayers(array.get(), kColor2, 3));
    EXPECT_TRUE(framebuffer.attach3D(array.get(), kColor0, 7, 2));
    EXPECT_TRUE(framebuffer.attach(flat.get(), kColor1, 1));
    EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>({kColor0, kColor1, kColor2, GL_COLOR_ATTACHMENT0 + 3}));
    EXPECT_EQ(framebuffer.attachment(kColor0), array.get());
    EXPECT_EQ(framebuffer.attachment(kColor1), flat.get());
    EXPECT_EQ(framebuffer.attachment(kColor2), array.get());
    EXPECT_EQ(framebuffer.attachment(GL_COLOR_ATTACHMENT0 + 3), flat.get());
    EXPECT_EQ(Access::levels(framebuffer),
              (QHash<GLenum, int>({{kColor0, 2}, {kColor1, 1}, {kColor2, 3}, {GL_COLOR_ATTACHMENT0 + 3, 4}})));
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>({GL_COLOR_ATTACHMENT0 + 3, kColor2, kColor0, kColor1}));
    EXPECT_EQ(total(), 4);
    EXPECT_EQ(active(), 4);
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, DepthAndStencilPointsAreNeverDrawBuffers)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    for (const GLenum point : {GL_DEPTH_ATTACHMENT, GL_STENCIL_ATTACHMENT, GL_DEPTH_STENCIL_ATTACHMENT})
    {
        EXPECT_TRUE(framebuffer.attach(texture.get(), GLenum(point), 0));
        EXPECT_TRUE(framebuffer.attachUpdate(texture.get(), GLenum(point), 1));
        EXPECT_TRUE(framebuffer.hasAttachment(GLenum(point)));
    }
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>());
    EXPECT_EQ(active(), 3);
    framebuffer.detachAll();
    EXPECT_EQ(active(), 0);
}

// ---- attachUpdate --------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectAttachTest, AttachUpdateOnAFreePointAttachesAndAppendsTheDrawBuffer)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    const CallLog calls;
    EXPECT_TRUE(framebuffer.attachUpdate(texture.get(), kColor0, 2));
    EXPECT_EQ(calls.list(), QStringList({flatCall(kColor0, GL_TEXTURE_2D, 9, 2)}));
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>({kColor0}));
    EXPECT_EQ(total(), 1);
    EXPECT_EQ(active(), 1);
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, AttachUpdateOfTheSameTextureAndLevelCountsAndCallsNothing)
{
    BoundFramebuffer framebuffer;
    const TexturePtr flat = textureNamed(8);
    const TexturePtr array = textureNamed(9, GL_TEXTURE_2D_ARRAY);
    framebuffer.attach(flat.get(), kColor0, 1);
    framebuffer.attach3D(array.get(), kColor1, 3, 1);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(framebuffer.attachUpdate(flat.get(), kColor0, 1));
    EXPECT_TRUE(framebuffer.attachUpdate(array.get(), kColor1, 1)) << "a layered one is there already";
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(total(), 4);
    EXPECT_EQ(active(), 2);
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>({kColor0, kColor1}));
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, AttachUpdateOnATakenPointReplacesTextureAndLevelOnly)
{
    BoundFramebuffer framebuffer;
    const TexturePtr first = textureNamed(8);
    const TexturePtr second = textureNamed(9, GL_TEXTURE_CUBE_MAP_ARRAY);
    framebuffer.attach(first.get(), kColor1, 0);
    const CallLog calls;
    EXPECT_TRUE(framebuffer.attachUpdate(first.get(), kColor1, 5));
    EXPECT_TRUE(framebuffer.attachUpdate(second.get(), kColor1, 5));
    EXPECT_EQ(calls.list(), QStringList({wholeCall(kColor1, 8, 5), wholeCall(kColor1, 9, 5)}));
    EXPECT_EQ(framebuffer.attachment(kColor1), second.get());
    EXPECT_EQ(Access::levels(framebuffer), (QHash<GLenum, int>({{kColor1, 5}})));
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>({kColor1}));
    EXPECT_EQ(total(), 3);
    EXPECT_EQ(active(), 1);
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, AttachUpdateToALayeredTextureIsRefusedAndStillCounted)
{
    BoundFramebuffer framebuffer;
    const TexturePtr flat = textureNamed(8);
    const TexturePtr volume = textureNamed(9, GL_TEXTURE_3D);
    framebuffer.attach(flat.get(), kColor0, 2);
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(framebuffer.attachUpdate(volume.get(), kColor0, 0));
    EXPECT_EQ(log.messages(QtCriticalMsg), wrongForAttach("0x806F"));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(framebuffer.attachment(kColor0), flat.get());
    EXPECT_EQ(Access::levels(framebuffer).value(kColor0), 2);
    EXPECT_EQ(total(), 2);
    EXPECT_EQ(active(), 1);
    framebuffer.detachAll();
}

// ---- detaching -----------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectAttachTest, DetachEmptiesThePointAtTheStoredLevelAndReturnsTheTexture)
{
    BoundFramebuffer framebuffer;
    const TexturePtr array = textureNamed(9, GL_TEXTURE_2D_ARRAY);
    framebuffer.attach3D(array.get(), kColor0, 6, 2);
    const CallLog calls;
    EXPECT_EQ(framebuffer.detach(kColor0), array.get());
    EXPECT_EQ(calls.list(), QStringList({wholeCall(kColor0, 0, 2)})) << "the level, and nothing of the layer";
    EXPECT_FALSE(framebuffer.hasAttachment(kColor0));
    EXPECT_TRUE(Access::levels(framebuffer).isEmpty());
    EXPECT_TRUE(Access::drawBuffers(framebuffer).isEmpty());
    EXPECT_EQ(active(), 0);
    EXPECT_EQ(total(), 1);
}

TEST_F(FramebufferObjectAttachTest, DetachOfTheMiddleOneLeavesTheOtherDrawBuffersInOrder)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    for (const GLenum point : {kColor0, kColor1, kColor2})
        framebuffer.attach(texture.get(), point, 0);
    framebuffer.detach(kColor1);
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>({kColor0, kColor2}));
    framebuffer.attach(texture.get(), kColor1, 0);
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>({kColor0, kColor2, kColor1}));
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, DetachSaysWhyItCannot)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    framebuffer.attach(texture.get(), kColor0, 0);
    const CallLog calls;
    LogCapture log;
    EXPECT_EQ(framebuffer.detach(kColor1), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), failed("true == this->_attachments.contains(attachmentPoint)",
                                                  "Framebuffer Object has nothing attached to attachment at 36065"));
    log.clear();
    Access::levels(framebuffer).remove(kColor0);
    EXPECT_EQ(framebuffer.detach(kColor0), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), failed("true == this->_attachmentLevels.contains(attachmentPoint)",
                                                  "Framebuffer Object has no level info for attachment at 36064"));
    Access::levels(framebuffer).insert(kColor0, 0);
    EXPECT_EQ(calls.list(), QStringList());
    framebuffer.unbind();
    log.clear();
    EXPECT_EQ(framebuffer.detach(kColor0), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), notBound("detach"));
    framebuffer.setFBO(0);
    log.clear();
    EXPECT_EQ(framebuffer.detach(kColor0), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), nullName("detach"));
    EXPECT_EQ(framebuffer.attachment(kColor0), texture.get());
    EXPECT_EQ(active(), 1);
}

TEST_F(FramebufferObjectAttachTest, DetachAllBringsTheCountBack)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    framebuffer.attach(texture.get(), GL_DEPTH_ATTACHMENT, 0);
    framebuffer.attach(texture.get(), kColor1, 3);
    framebuffer.attach(texture.get(), kColor0, 2);
    EXPECT_EQ(active(), 3);
    CallLog calls;
    framebuffer.detachAll();
    EXPECT_EQ(calls.list(),
              QStringList({wholeCall(kColor0, 0, 2), wholeCall(kColor1, 0, 3), wholeCall(GL_DEPTH_ATTACHMENT, 0, 0)}));
    EXPECT_EQ(active(), 0);
    EXPECT_EQ(total(), 3);
    EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>());
    calls.clear();
    framebuffer.detachAll();
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(FramebufferObjectAttachTest, DetachAllWhileNotBoundReportsEachAndKeepsThem)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    framebuffer.attach(texture.get(), kColor0, 0);
    framebuffer.attach(texture.get(), kColor1, 0);
    framebuffer.unbind();
    const CallLog calls;
    const LogCapture log;
    framebuffer.detachAll();
    EXPECT_EQ(log.messages(QtCriticalMsg), notBound("detach") + notBound("detach"));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>({kColor0, kColor1}));
}

TEST_F(FramebufferObjectAttachTest, DestructionWithoutDetachLeavesTheCountAsItWas)
{
    const TexturePtr texture = textureNamed(9);
    {
        BoundFramebuffer framebuffer;
        framebuffer.attach(texture.get(), kColor0, 0);
        const LogCapture log;
        framebuffer.unbind();
        EXPECT_EQ(log.texts(), QStringList());
    }
    EXPECT_EQ(active(), 1);
    EXPECT_EQ(alive(), 0);
}

TEST_F(FramebufferObjectAttachTest, ResetForgetsTheStatisticAlone)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    framebuffer.attach(texture.get(), kColor0, 0);
    FramebufferObject::ResetNumFBOTextures();
    EXPECT_EQ(total(), 0);
    EXPECT_EQ(active(), 1);
    framebuffer.detachAll();
}

// ---- detaching and giving back -------------------------------------------------------------------------------------

TEST_F(FramebufferObjectAttachTest, DetachAndReleaseGivesOneReferenceBackToThePool)
{
    SamplerTextureManager manager;
    TextureManager::setInstance(&manager);
    Texture* const texture = manager.tempTexture(RGBA, 4, 4, 1, 1);
    manager.addTempTextureRef(texture, 1);
    BoundFramebuffer framebuffer;
    framebuffer.attach(texture, kColor0, 0);
    const CallLog calls;
    EXPECT_EQ(framebuffer.detachAndRelease(kColor0), texture);
    EXPECT_EQ(calls.list(), QStringList({wholeCall(kColor0, 0, 0)}));
    EXPECT_FALSE(framebuffer.hasAttachment(kColor0));
    EXPECT_NE(manager.tempTexture(RGBA, 4, 4, 1, 1), texture) << "one reference is left";
    framebuffer.attach(texture, kColor0, 0);
    EXPECT_EQ(framebuffer.detachAndRelease(kColor0), texture);
    EXPECT_EQ(manager.tempTexture(RGBA, 4, 4, 1, 1), texture);
}

TEST_F(FramebufferObjectAttachTest, DetachAndReleaseOfAFreePointIsSilentNullAndMakesNoManager)
{
    BoundFramebuffer framebuffer;
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(framebuffer.detachAndRelease(kColor0), nullptr);
    EXPECT_EQ(log.texts(), QStringList()) << "a manager that is made says so";
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(FramebufferObjectAttachTest, DetachAndReleaseWhileNotBoundReportsAndReleasesNothing)
{
    SamplerTextureManager manager;
    TextureManager::setInstance(&manager);
    Texture* const texture = manager.tempTexture(RGBA, 4, 4, 1, 1);
    BoundFramebuffer framebuffer;
    framebuffer.attach(texture, kColor0, 0);
    framebuffer.unbind();
    const LogCapture log;
    EXPECT_EQ(framebuffer.detachAndRelease(kColor0), nullptr);
    framebuffer.detachAndReleaseAll();
    EXPECT_EQ(log.messages(QtCriticalMsg), notBound("detach") + notBound("detach"));
    EXPECT_EQ(framebuffer.attachment(kColor0), texture);
    EXPECT_NE(manager.tempTexture(RGBA, 4, 4, 1, 1), texture) << "still in use";
}

TEST_F(FramebufferObjectAttachTest, DetachAndReleaseAllGivesOneReferenceBackForEachPoint)
{
    SamplerTextureManager manager;
    TextureManager::setInstance(&manager);
    Texture* const texture = manager.tempTexture(RGBA, 4, 4, 2, 1);
    manager.addTempTextureRef(texture, 1);
    const TexturePtr foreign = textureNamed(9);
    BoundFramebuffer framebuffer;
    framebuffer.attach(foreign.get(), kColor2, 0);
    framebuffer.attach3D(texture, kColor1, 1, 0);
    framebuffer.attach3D(texture, kColor0, 0, 0);
    const CallLog calls;
    const LogCapture log;
    const int texturesBefore = Texture::NumAlive();
    framebuffer.detachAndReleaseAll();
    EXPECT_EQ(calls.list(),
              QStringList({wholeCall(kColor0, 0, 0), wholeCall(kColor1, 0, 0), wholeCall(kColor2, 0, 0)}));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(active(), 0);
    EXPECT_EQ(Texture::NumAlive(), texturesBefore) << "what the pool does not know stays alive";
    EXPECT_EQ(manager.tempTexture(RGBA, 4, 4, 2, 1), texture);
}

// ---- textures of its own -------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectAttachTest, CreateTexture2DMakesATextureAndAttachesItsLevel0)
{
    BoundFramebuffer framebuffer;
    const CallLog calls;
    framebuffer.createTexture2D(kColor1, GL_TEXTURE_2D, GL_RGBA8, 16, 8);
    EXPECT_EQ(
        calls.list().mid(1),
        QStringList(
            {activate(kUnits - 1), bindName(1), parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
             parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
             CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RGBA8, 16, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr),
             activate(kUnits - 1), bindName(0), flatCall(kColor1, GL_TEXTURE_2D, 1, 0)}));
    EXPECT_EQ(calls.count("glGenTextures"), 1);
    const TexturePtr texture(framebuffer.detach(kColor1));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->parent(), nullptr);
    EXPECT_EQ(TextureTestAccess::recorded(*texture), (Recorded{GL_RGBA8, 16, 8, 1}));
}

TEST_F(FramebufferObjectAttachTest, ATextureThatCreateTexture2DCannotAttachIsDeletedAgain)
{
    const int before = Texture::NumAlive();
    FramebufferObject framebuffer(nullptr);
    LogCapture log;
    framebuffer.createTexture2D(kColor0, GL_TEXTURE_2D, GL_RGBA8, 4, 4);
    EXPECT_EQ(log.messages(QtCriticalMsg), notBound("attach"));
    EXPECT_EQ(Texture::NumAlive(), before);
    const AutoBinder binder(&framebuffer);
    log.clear();
    framebuffer.createTexture2D(kColor0, GL_TEXTURE_3D, GL_RGBA8, 4, 4);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failed("target == GL_TEXTURE_2D", "Target 0x806F is not allowed.") + wrongForAttach("0x806F"));
    EXPECT_EQ(Texture::NumAlive(), before);
    EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>());
}

TEST_F(FramebufferObjectAttachTest, CreateTexture3DPutsEachLayerOnThePointAfter)
{
    BoundFramebuffer framebuffer;
    const CallLog calls;
    framebuffer.createTexture3D(kColor1, GL_TEXTURE_2D_ARRAY, GL_RGBA8, 16, 8, 2);
    EXPECT_EQ(calls.named({"glTexImage3D", "glFramebufferTextureLayer"}),
              QStringList({CallLog::call("glTexImage3D", GL_TEXTURE_2D_ARRAY, 0, GL_RGBA8, 16, 8, 2, 0, GL_RGBA,
                                         GL_UNSIGNED_BYTE, nullptr),
                           layerCall(kColor1, 1, 0, 0), layerCall(kColor2, 1, 0, 1)}));
    EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>({kColor1, kColor2}));
    EXPECT_EQ(Access::drawBuffers(framebuffer), QList<GLenum>({kColor1, kColor2}));
    const TexturePtr texture(framebuffer.attachment(kColor1));
    EXPECT_EQ(framebuffer.attachment(kColor2), texture.get());
    EXPECT_EQ(texture->parent(), nullptr);
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectAttachTest, CreateTexture3DOfDepth0MakesATextureAndAttachesNothing)
{
    const int before = Texture::NumAlive();
    BoundFramebuffer framebuffer;
    const CallLog calls;
    const LogCapture log;
    framebuffer.createTexture3D(kColor0, GL_TEXTURE_2D_ARRAY, GL_RGBA8, 4, 4, 0);
    EXPECT_EQ(calls.count("glTexImage3D"), 1);
    EXPECT_EQ(calls.count("glFramebufferTextureLayer"), 0);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>());
    EXPECT_EQ(total(), 0);
    EXPECT_EQ(Texture::NumAlive(), before) << "nobody could ever delete it";
}

TEST_F(FramebufferObjectAttachTest, CreateTexture3DKeepsTheTextureWhileOneLayerIsAttached)
{
    const int before = Texture::NumAlive();
    BoundFramebuffer framebuffer;
    const TexturePtr other = textureNamed(9);
    framebuffer.attach(other.get(), kColor0, 0);
    LogCapture log;
    framebuffer.createTexture3D(kColor0, GL_TEXTURE_3D, GL_RGBA8, 4, 4, 2);
    EXPECT_EQ(log.messages(QtCriticalMsg), taken(36064));
    EXPECT_EQ(framebuffer.attachment(kColor0), other.get());
    const TexturePtr texture(framebuffer.detach(kColor1));
    ASSERT_TRUE(texture);
    EXPECT_EQ(Texture::NumAlive(), before + 2);
    framebuffer.unbind();
    log.clear();
    framebuffer.createTexture3D(kColor1, GL_TEXTURE_3D, GL_RGBA8, 4, 4, 2);
    EXPECT_EQ(log.messages(QtCriticalMsg), notBound("attach") + notBound("attach"));
    EXPECT_EQ(Texture::NumAlive(), before + 2) << "with none attached it is deleted";
}

} // namespace Harrow::Vrk::Test
