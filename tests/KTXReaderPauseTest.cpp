// SPDX-License-Identifier: MIT
//
// KTX files on the fake driver: the thread that is asked to pause while it loads.
#include "KTXReaderDriverTestTools.h"

#include <QDeadlineTimer>
#include <QScopeGuard>
#include <QThread>

#include <atomic>

namespace Harrow::Vrk::Test
{

// ---- the pause -----------------------------------------------------------------------------------------------------

namespace
{

constexpr char kPauseProperty[] = "threadPauseRequested";
std::atomic<int> uploads;
std::atomic<int> pauseBehind; // the number of uploads behind which the loading thread is asked to pause

/// Loads a texture of three levels; the pause is asked for on its own thread, where the property is read.
class LoadingThread final : public QThread
{
public:
    LoadingThread()
    {
        setProperty(kPauseProperty, false);
    }

    std::unique_ptr<Texture> texture;

protected:
    void run() override
    {
        KTXFile file;
        file.levels = 3;
        file.size(4, 4).level(pattern(64)).level(pattern(16)).level(pattern(4));
        texture.reset(newReader(file)->load(preprocessed()));
    }
};

void replaceCountedUpload(FakeDriver& driver)
{
    uploads = 0;
    driver.replace(
        "glTexImage2D",
        +[](GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*)
        {
            if (++uploads == pauseBehind)
                QThread::currentThread()->setProperty(kPauseProperty, true);
        });
    driver.load();
}

bool waitForUploads(int count)
{
    const QDeadlineTimer deadline(20000);
    while (uploads < count && !deadline.hasExpired())
        QThread::msleep(1);
    return uploads >= count;
}

} // namespace

TEST_F(KTXReaderLoadTest, AThreadThatIsAskedToPauseStopsBetweenLevelsAndGoesOn)
{
    for (const int behind : {1, 2})
    {
        pauseBehind = behind;
        replaceCountedUpload(driver);
        LoadingThread thread;
        thread.start();
        ASSERT_TRUE(waitForUploads(behind));
        EXPECT_FALSE(thread.wait(300)) << "it would have ended long since";
        EXPECT_EQ(uploads, behind);
        thread.setProperty(kPauseProperty, false);
        ASSERT_TRUE(thread.wait(20000));
        EXPECT_EQ(uploads, 3);
        EXPECT_TRUE(thread.texture);
    }
}

TEST_F(KTXReaderLoadTest, APauseThatIsAskedForFromTheStartHoldsTheFirstLevelBack)
{
    pauseBehind = 0;
    replaceCountedUpload(driver);
    LoadingThread thread;
    thread.setProperty(kPauseProperty, true);
    thread.start();
    EXPECT_FALSE(thread.wait(300));
    EXPECT_EQ(uploads, 0);
    thread.setProperty(kPauseProperty, false);
    ASSERT_TRUE(thread.wait(20000));
    EXPECT_EQ(uploads, 3);
}

TEST_F(KTXReaderLoadTest, BehindTheLastLevelNobodyPauses)
{
    pauseBehind = 3;
    replaceCountedUpload(driver);
    LoadingThread thread;
    thread.start();
    EXPECT_TRUE(thread.wait(20000));
    EXPECT_TRUE(thread.texture);
}

namespace
{

/// A request that is no, and counts how often it is looked at.
struct CountedRequest
{
};
int looks;
QList<int> looksAtUploads;

} // namespace

TEST_F(KTXReaderLoadTest, TheRequestIsLookedAtBeforeAndBehindTheSizeOfEachLevel)
{
    QMetaType::registerConverter<CountedRequest, bool>(
        [](const CountedRequest&)
        {
            ++looks;
            return false;
        });
    QThread* const thread = QThread::currentThread();
    thread->setProperty(kPauseProperty, QVariant::fromValue(CountedRequest()));
    const auto restore = qScopeGuard(
        [thread]
        {
            thread->setProperty(kPauseProperty, QVariant());
            QMetaType::unregisterConverterFunction(QMetaType::fromType<CountedRequest>(), QMetaType::fromType<bool>());
        });
    driver.replace(
        "glTexImage2D", +[](GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*)
                        { looksAtUploads.append(looks); });
    driver.load();
    looks = 0;
    looksAtUploads.clear();
    KTXFile file;
    file.levels = 3;
    callsFor(file.size(4, 4).level(pattern(64)).level(pattern(16)).level(pattern(4)));
    EXPECT_EQ(looksAtUploads, QList<int>({2, 4, 6}));
    EXPECT_EQ(looks, 6);
}

TEST_F(KTXReaderLoadTest, TheRequestIsReadAsABool)
{
    QThread* const thread = QThread::currentThread();
    const auto restore = qScopeGuard([thread] { thread->setProperty(kPauseProperty, QVariant()); });
    for (const QVariant& no : {QVariant(), QVariant(false), QVariant(0), QVariant(QStringLiteral("false"))})
    {
        thread->setProperty(kPauseProperty, no);
        callsFor(KTXFile().level(pattern(32)));
        EXPECT_TRUE(texture);
    }
}

} // namespace Harrow::Vrk::Test
