// SPDX-License-Identifier: MIT
// The harness itself: a recorder that drops calls or a fake that answers wrongly would make other tests hollow.
#include "GLFunctions.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/HeapCount.h"
#include "support/LogCapture.h"
#include "support/Picture.h"

#include <QList>
#include <QMessageLogger>
#include <QVector3D>

#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <thread>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

class Harness : public FakeDriverTest
{
};

class HarnessGL : public GLTest
{
};

} // namespace

TEST_F(Harness, CallsAreRecordedInOrderWithTheirArguments)
{
    CallLog calls;
    glBindBuffer(GL_ARRAY_BUFFER, 7);
    glUniform4f(3, 0.5f, 1.0f, -2.0f, 0.0f);
    glBufferData(GL_ARRAY_BUFFER, 16, nullptr, GL_STATIC_DRAW);
    glBindAttribLocation(1, 2, "va_Vertex");
    EXPECT_EQ(calls.list(),
              QStringList({QStringLiteral("glBindBuffer(0x8892, 7)"), QStringLiteral("glUniform4f(3, 0.5, 1, -2, 0)"),
                           QStringLiteral("glBufferData(0x8892, 16, null, 0x88e4)"),
                           QStringLiteral("glBindAttribLocation(1, 2, \"va_Vertex\")")}));
    EXPECT_EQ(calls.count(QStringLiteral("glBindBuffer")), 1);
    calls.clear();
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(Harness, CallsGoToTheInnermostLog)
{
    CallLog outer;
    {
        const CallLog inner;
        glClear(GL_COLOR_BUFFER_BIT);
        EXPECT_EQ(inner.list().size(), 1);
    }
    EXPECT_TRUE(outer.list().isEmpty()) << "the innermost log takes the calls";
    EXPECT_TRUE(CallLog::isRecording());
}

TEST_F(Harness, FakeHandsOutNamesPerKind)
{
    GLuint buffers[2] = {};
    GLuint array = 0;
    glGenBuffers(2, buffers);
    glGenVertexArrays(1, &array);
    EXPECT_EQ(buffers[0], 1u);
    EXPECT_EQ(buffers[1], 2u);
    EXPECT_EQ(array, 1u);
}

TEST_F(HarnessGL, RealCallsAreRecordedAndReachTheDriver)
{
    const OffscreenTarget target(2, 2);
    const CallLog calls;
    glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(calls.list(),
              QStringList({QStringLiteral("glClearColor(1, 0, 0, 1)"), QStringLiteral("glClear(0x4000)")}));
    EXPECT_EQ(target.read().pixelColor(0, 0), QColor(Qt::red));
}

TEST(PictureComparison, TellsPicturesThatDifferFromThoseThatAgree)
{
    QImage red(3, 2, QImage::Format_RGBA8888);
    red.fill(Qt::red);
    QImage other = red;
    EXPECT_EQ(comparePictures(red, other).maximum, 0);
    other.setPixelColor(2, 1, QColor(245, 0, 0));
    EXPECT_EQ(comparePictures(red, other).maximum, 10);
    EXPECT_NEAR(comparePictures(red, other).mean, 10.0 / 24.0, 1e-9);
    EXPECT_TRUE(picturesAgree(red, other, 10, 1.0));
    EXPECT_FALSE(picturesAgree(red, other, 10, 0.1));
    EXPECT_FALSE(picturesAgree(red, QImage(2, 2, QImage::Format_RGBA8888), 255, 255.0));
}

TEST(LogCapturing, NestsAndKeepsTypes)
{
    LogCapture outer;
    QMessageLogger().warning("one");
    {
        const LogCapture inner;
        QMessageLogger().critical("[F.cpp:3] two");
        EXPECT_EQ(inner.messages(), QStringList({QStringLiteral("two")}));
    }
    QMessageLogger().debug("three");
    EXPECT_EQ(outer.texts(), QStringList({QStringLiteral("one"), QStringLiteral("three")}));
    EXPECT_EQ(outer.texts(QtWarningMsg), QStringList({QStringLiteral("one")}));
}

TEST(Printing, ShowsValuesOfQtAsTheyAre)
{
    EXPECT_EQ(testing::PrintToString(QStringLiteral("a \"b\"")), R"("a \"b\"")");
    EXPECT_EQ(testing::PrintToString(QByteArray("x\0y", 3)), R"("x\x00y")");
    EXPECT_EQ(testing::PrintToString(QStringList{QStringLiteral("a"), QString()}), R"(QList("a", ""))");
    EXPECT_EQ(testing::PrintToString(QVector3D(1, 2.5f, -3)), "QVector3D(1, 2.5, -3)");
    EXPECT_EQ(testing::PrintToString(std::optional(QStringLiteral("a"))), R"(("a"))");
    EXPECT_EQ(testing::PrintToString(std::string("a")), R"("a")") << "and others as before";
}

// Else a test that counts no allocation would say nothing.
TEST(HeapCounting, CountsTheAllocationsOfThisThreadByWhicheverRoad)
{
    const HeapCount count;
    EXPECT_EQ(count.soFar(), 0);
    void* volatile memory = ::operator new(7);
    EXPECT_EQ(count.soFar(), 1) << "of C++";
    ::operator delete(memory);
    memory = std::malloc(7);
    EXPECT_EQ(count.soFar(), 2) << "of C";
    std::free(memory);
    const QList<int> list(7);
    EXPECT_EQ(count.soFar(), 3) << list.size() << " numbers in a container of Qt";
}

TEST(HeapCounting, LeavesOtherThreadsOut)
{
    constexpr int kLists = 1000;
    long long elsewhere = 0;
    const HeapCount here;
    std::thread(
        [&]
        {
            const HeapCount count;
            for (int i = 0; i < kLists; ++i)
                const QList<int> list(7);
            elsewhere = count.soFar();
        })
        .join();
    EXPECT_EQ(elsewhere, kLists);
    EXPECT_LT(here.soFar(), kLists) << "no more than it takes to start a thread";
}
