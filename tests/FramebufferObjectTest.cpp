// SPDX-License-Identifier: MIT
//
// FramebufferObject on the fake driver: its name, its binding, its draw buffers and whether it is complete.
#include "FramebufferObject.h"

#include "AutoBinder.h"
#include "FramebufferObjectTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

class FramebufferObjectTest : public FramebufferObjects
{
};

} // namespace

// ---- the name ------------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectTest, ItIsAQObjectAndABindable)
{
    QObject parent;
    auto* const framebuffer = new FramebufferObject(&parent);
    EXPECT_STREQ(framebuffer->metaObject()->className(), "Harrow::Vrk::FramebufferObject");
    EXPECT_EQ(framebuffer->parent(), &parent);
    {
        const AutoBinder binder(framebuffer);
        EXPECT_TRUE(Access::isBound(*framebuffer));
    }
    EXPECT_FALSE(Access::isBound(*framebuffer));
}

TEST_F(FramebufferObjectTest, TheConstructorGeneratesANameAndTheDestructorDeletesIt)
{
    const CallLog calls;
    {
        const FramebufferObject framebuffer(nullptr);
        EXPECT_EQ(calls.list().size(), 1);
        EXPECT_EQ(calls.count("glGenFramebuffers"), 1);
        EXPECT_EQ(framebuffer.getFBO(), 1u);
        EXPECT_EQ(alive(), 1);
        EXPECT_EQ(framebuffer.attachmentPoints(), QList<GLenum>());
    }
    EXPECT_EQ(calls.list().size(), 2);
    EXPECT_EQ(deleted, QList<GLuint>({1}));
    EXPECT_EQ(alive(), 0);
}

TEST_F(FramebufferObjectTest, AWrappedNameIsCountedAndDeletedToo)
{
    const CallLog calls;
    {
        const FramebufferObject framebuffer(77u, nullptr);
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_EQ(framebuffer.getFBO(), 77u);
        EXPECT_EQ(alive(), 1);
    }
    EXPECT_EQ(deleted, QList<GLuint>({77}));
    EXPECT_EQ(alive(), 0);
}

TEST_F(FramebufferObjectTest, SetFBOZeroFollowedByDestructionDeletesNothing)
{
    const CallLog calls;
    {
        FramebufferObject framebuffer(77u, nullptr);
        framebuffer.setFBO(0);
        EXPECT_EQ(framebuffer.getFBO(), 0u);
        EXPECT_EQ(alive(), 0);
        framebuffer.setFBO(0);
        EXPECT_EQ(alive(), 0) << "there was no name to give up";
    }
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(alive(), 0);
}

TEST_F(FramebufferObjectTest, SetFBOOfAnotherNameForgetsTheOldOne)
{
    const CallLog calls;
    {
        FramebufferObject framebuffer(77u, nullptr);
        framebuffer.setFBO(78);
        EXPECT_EQ(framebuffer.getFBO(), 78u);
        EXPECT_EQ(alive(), 1);
        EXPECT_EQ(calls.list(), QStringList());
    }
    EXPECT_EQ(deleted, QList<GLuint>({78}));
    EXPECT_EQ(alive(), 0);
}

TEST_F(FramebufferObjectTest, CreateIsRefusedWithANameAndWhileBound)
{
    BoundFramebuffer framebuffer;
    const CallLog calls;
    LogCapture log;
    EXPECT_FALSE(Access::create(framebuffer));
    EXPECT_EQ(log.messages(QtCriticalMsg), failed("0u == this->_fbo", "Framebuffer Object is not NULL on create"));
    log.clear();
    framebuffer.setFBO(0);
    EXPECT_FALSE(Access::create(framebuffer));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failed("false == this->_fboBound", "Framebuffer Object is already bound on create"));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(alive(), 0);
    framebuffer.setFBO(1);
}

TEST_F(FramebufferObjectTest, DestroyWhileBoundIsReportedAndLeavesTheNameAlive)
{
    auto framebuffer = std::make_unique<FramebufferObject>(nullptr);
    framebuffer->bind();
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(Access::destroy(*framebuffer));
    framebuffer.reset();
    const QStringList once = failed("false == this->_fboBound", "Framebuffer Object is already bound on destroy");
    EXPECT_EQ(log.messages(QtCriticalMsg), once + once);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(alive(), 1);
}

TEST_F(FramebufferObjectTest, DestroyKeepsTheValueOfTheName)
{
    FramebufferObject framebuffer(nullptr);
    EXPECT_TRUE(Access::destroy(framebuffer));
    EXPECT_EQ(framebuffer.getFBO(), 1u);
    EXPECT_EQ(deleted, QList<GLuint>({1}));
    EXPECT_EQ(alive(), 0);
    framebuffer.setFBO(0);
    EXPECT_TRUE(Access::destroy(framebuffer)) << "nothing to delete is no failure";
    EXPECT_EQ(deleted, QList<GLuint>({1}));
}

// ---- binding -------------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectTest, UnbindBringsTheDefaultFramebufferBackNotTheOneBefore)
{
    FramebufferObject outer(nullptr);
    FramebufferObject inner(nullptr);
    const CallLog calls;
    EXPECT_TRUE(outer.bind());
    EXPECT_TRUE(inner.bind());
    EXPECT_TRUE(inner.unbind());
    EXPECT_EQ(calls.list(), QStringList({bindTo(1), bindTo(2), bindTo(0)}));
    EXPECT_TRUE(outer.unbind()) << "it does not know";
}

TEST_F(FramebufferObjectTest, BindIsRefusedWithoutANameAndWhileBound)
{
    BoundFramebuffer framebuffer;
    const CallLog calls;
    LogCapture log;
    EXPECT_FALSE(framebuffer.bind());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failed("false == this->_fboBound", "Framebuffer Object is already bound on bind"));
    log.clear();
    framebuffer.setFBO(0);
    EXPECT_FALSE(framebuffer.bind());
    EXPECT_EQ(log.messages(QtCriticalMsg), nullName("bind"));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(Access::isBound(framebuffer));
    framebuffer.setFBO(1);
}

TEST_F(FramebufferObjectTest, UnbindIsRefusedWithoutANameAndWhileNotBound)
{
    BoundFramebuffer framebuffer;
    framebuffer.setFBO(0);
    const CallLog calls;
    LogCapture log;
    EXPECT_FALSE(framebuffer.unbind());
    EXPECT_EQ(log.messages(QtCriticalMsg), nullName("unbind"));
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(Access::isBound(framebuffer));
    framebuffer.setFBO(1);
    framebuffer.unbind();
    log.clear();
    EXPECT_FALSE(framebuffer.unbind());
    EXPECT_EQ(log.messages(QtCriticalMsg), notBound("unbind"));
    EXPECT_EQ(calls.list(), QStringList({bindTo(0)}));
}

// ---- drawing and queries -------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectTest, AttachmentOfAFreePointIsReported)
{
    const FramebufferObject framebuffer(nullptr);
    const LogCapture log;
    EXPECT_FALSE(framebuffer.hasAttachment(kColor0));
    EXPECT_EQ(framebuffer.attachment(kColor0), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg), failed("this->_attachments.contains(attachmentPoint)",
                                                  "Framebuffer Object does not have an attachment at 36064"));
}

TEST_F(FramebufferObjectTest, SetDrawBuffersNamesTheColourPointsInTheOrderOfTheirAttaching)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    for (const GLenum point : {kColor2, GLenum(GL_DEPTH_ATTACHMENT), kColor0})
        framebuffer.attach(texture.get(), point, 0);
    const CallLog calls;
    framebuffer.setDrawBuffers();
    EXPECT_EQ(calls.list(),
              QStringList({CallLog::call("glDrawBuffers", 2, Access::drawBuffers(framebuffer).constData())}));
    EXPECT_EQ(drawn, QList<GLenum>({kColor2, kColor0}));
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectTest, SetDrawBuffersOfDepthAloneGivesAnEmptyList)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    framebuffer.attach(texture.get(), GL_DEPTH_ATTACHMENT, 0);
    const CallLog calls;
    framebuffer.setDrawBuffers();
    EXPECT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list().constFirst().startsWith("glDrawBuffers(0, "));
    framebuffer.detachAll();
}

TEST_F(FramebufferObjectTest, SetDrawBuffersReportsAndGoesOn)
{
    BoundFramebuffer framebuffer;
    const TexturePtr texture = textureNamed(9);
    framebuffer.attach(texture.get(), kColor1, 0);
    framebuffer.unbind();
    framebuffer.setFBO(0);
    const LogCapture log;
    framebuffer.setDrawBuffers();
    EXPECT_EQ(log.messages(QtCriticalMsg), nullName("attach") + notBound("attach"));
    EXPECT_EQ(drawn, QList<GLenum>({kColor1}));
}

// ---- completeness --------------------------------------------------------------------------------------------------

TEST_F(FramebufferObjectTest, ACompleteOneIsAskedOnceAndBoundForItIfItIsNot)
{
    FramebufferObject framebuffer(nullptr);
    CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(framebuffer.isComplete());
    EXPECT_EQ(calls.list(), QStringList({bindTo(1), statusCall(), bindTo(0)}));
    const AutoBinder binder(&framebuffer);
    calls.clear();
    EXPECT_TRUE(framebuffer.isComplete());
    EXPECT_EQ(calls.list(), QStringList({statusCall()}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(FramebufferObjectTest, TheWordsFollowTheSecondAnswer)
{
    const struct
    {
        GLenum second;
        const char* words;
    } rows[] = {
        {GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT,
         "Not all framebuffer attachment points are framebuffer attachment complete."},
        {GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT, "No images are attached to the framebuffer."},
        {GL_FRAMEBUFFER_UNSUPPORTED, "The combination of internal formats of the attached images violates an "
                                     "implementation-dependent set of restrictions."},
        {GL_FRAMEBUFFER_UNDEFINED, ""},
        {GL_FRAMEBUFFER_INCOMPLETE_LAYER_TARGETS, ""},
        {GL_FRAMEBUFFER_COMPLETE, ""},
        {0, ""},
    };
    BoundFramebuffer framebuffer;
    for (const auto& row : rows)
    {
        statuses = {GL_FRAMEBUFFER_INCOMPLETE_DRAW_BUFFER, row.second};
        const CallLog calls;
        const LogCapture log;
        EXPECT_FALSE(framebuffer.isComplete());
        EXPECT_EQ(calls.list(), QStringList({statusCall(), statusCall()}));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_EQ(log.messages(QtDebugMsg),
                  QStringList(QStringLiteral("Framebuffer is incomplete: ") + QLatin1String(row.words)));
    }
}

TEST_F(FramebufferObjectTest, AnUnboundIncompleteOneIsUnboundAgainBeforeTheSecondQuestion)
{
    FramebufferObject framebuffer(nullptr);
    statuses = {GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT, GL_FRAMEBUFFER_COMPLETE};
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(framebuffer.isComplete());
    EXPECT_EQ(calls.list(), QStringList({bindTo(1), statusCall(), bindTo(0), statusCall()}));
    EXPECT_EQ(log.messages(), QStringList("Framebuffer is incomplete: "));
}

TEST_F(FramebufferObjectTest, IsCompleteBindsByTheVirtualOperations)
{
    struct Counting : FramebufferObject
    {
        using FramebufferObject::FramebufferObject;
        bool bind() override
        {
            ++binds;
            return FramebufferObject::bind();
        }
        bool unbind() override
        {
            ++unbinds;
            return FramebufferObject::unbind();
        }
        int binds = 0;
        int unbinds = 0;
    } framebuffer(nullptr);
    EXPECT_TRUE(framebuffer.isComplete());
    EXPECT_EQ(framebuffer.binds, 1);
    EXPECT_EQ(framebuffer.unbinds, 1);
}

TEST_F(FramebufferObjectTest, IsCompleteWithoutANameReportsAndAsksOfWhatIsBound)
{
    FramebufferObject framebuffer(nullptr);
    framebuffer.setFBO(0);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(framebuffer.isComplete());
    EXPECT_EQ(log.messages(QtCriticalMsg), nullName("bind") + nullName("unbind"));
    EXPECT_EQ(calls.list(), QStringList({statusCall()}));
}

} // namespace Harrow::Vrk::Test
