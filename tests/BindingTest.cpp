// SPDX-License-Identifier: MIT
#include "AutoBinder.h"
#include "AutoEnabler.h"
#include "Bindable.h"
#include "GLContextTracker.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <thread>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

/// Keeps the protocol: one bind at a time.
class Lamp final : public Bindable
{
public:
    bool bind() override
    {
        ++binds;
        if (bound)
            return false;
        bound = true;
        return true;
    }
    bool unbind() override
    {
        ++unbinds;
        const bool was = bound;
        bound = false;
        return was;
    }

    int binds = 0;
    int unbinds = 0;
    bool bound = false;
};

class Capability : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        driver.replace(
            "glIsEnabled", +[](GLenum) -> GLboolean { return enabled; });
        FakeDriverTest::SetUp();
    }
    static inline GLboolean enabled = GL_FALSE;
};

class ContextTracker : public FakeDriverTest
{
};

class ContextTrackerGL : public GLTest
{
};

class CapabilityGL : public GLTest
{
};

} // namespace

TEST(AutoBinder, BindsForTheLengthOfItsScope)
{
    Lamp lamp;
    {
        const AutoBinder guard(&lamp);
        EXPECT_TRUE(lamp.bound);
    }
    EXPECT_FALSE(lamp.bound);
    EXPECT_EQ(lamp.binds, 1);
    EXPECT_EQ(lamp.unbinds, 1);
}

TEST(AutoBinder, OnABoundObjectLeavesItBoundAtScopeEnd)
{
    Lamp lamp;
    const AutoBinder outer(&lamp);
    {
        const AutoBinder inner(&lamp);
    }
    EXPECT_TRUE(lamp.bound);
    EXPECT_EQ(lamp.unbinds, 0);
}

TEST(AutoBinder, NullObjectIsLoggedAndLeftAlone)
{
    const LogCapture log;
    {
        const AutoBinder raw(static_cast<Bindable*>(nullptr));
        const AutoBinder shared{QSharedPointer<Bindable>()};
    }
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList({QStringLiteral("AutoBinder tried to bind NULL object"),
                                                     QStringLiteral("AutoBinder tried to bind NULL object")}));
}

TEST(AutoBinder, SharedFormKeepsNoReference)
{
    // The lamp outlives its shared pointers here, so that the end of the last one can be watched.
    static bool released = false;
    released = false;
    Lamp lamp;
    QSharedPointer<Bindable> shared(&lamp, [](Bindable*) { released = true; });
    {
        const AutoBinder guard(shared);
        EXPECT_TRUE(lamp.bound);
        shared.reset();
        EXPECT_TRUE(released);
    }
    EXPECT_FALSE(lamp.bound);
}

TEST_F(Capability, EnablerOnACapabilityThatWasOffDisablesItAtScopeEnd)
{
    enabled = GL_FALSE;
    const CallLog calls;
    {
        const AutoEnabler guard(GL_BLEND);
    }
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glIsEnabled", GL_BLEND), CallLog::call("glEnable", GL_BLEND),
                                         CallLog::call("glDisable", GL_BLEND)}));
}

TEST_F(Capability, EnablerOnACapabilityThatWasOnEnablesItAgain)
{
    enabled = GL_TRUE;
    const CallLog calls;
    {
        const AutoEnabler guard(GL_BLEND);
    }
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glIsEnabled", GL_BLEND), CallLog::call("glEnable", GL_BLEND),
                                         CallLog::call("glEnable", GL_BLEND)}));
}

TEST_F(Capability, DisablerOnACapabilityThatWasOnEnablesItAtScopeEnd)
{
    enabled = GL_TRUE;
    const CallLog calls;
    {
        const AutoDisabler guard(GL_DEPTH_TEST);
    }
    EXPECT_EQ(calls.list(),
              QStringList({CallLog::call("glIsEnabled", GL_DEPTH_TEST), CallLog::call("glDisable", GL_DEPTH_TEST),
                           CallLog::call("glEnable", GL_DEPTH_TEST)}));
}

TEST_F(Capability, DisablerOnACapabilityThatWasOffDisablesItAgain)
{
    enabled = GL_FALSE;
    const CallLog calls;
    {
        const AutoDisabler guard(GL_DEPTH_TEST);
    }
    EXPECT_EQ(calls.list(),
              QStringList({CallLog::call("glIsEnabled", GL_DEPTH_TEST), CallLog::call("glDisable", GL_DEPTH_TEST),
                           CallLog::call("glDisable", GL_DEPTH_TEST)}));
}

TEST_F(CapabilityGL, GuardsRestoreTheDriversState)
{
    ASSERT_EQ(glIsEnabled(GL_BLEND), GLboolean(GL_FALSE));
    {
        const AutoEnabler on(GL_BLEND);
        EXPECT_EQ(glIsEnabled(GL_BLEND), GLboolean(GL_TRUE));
        {
            const AutoDisabler off(GL_BLEND);
            EXPECT_EQ(glIsEnabled(GL_BLEND), GLboolean(GL_FALSE));
        }
        EXPECT_EQ(glIsEnabled(GL_BLEND), GLboolean(GL_TRUE));
    }
    EXPECT_EQ(glIsEnabled(GL_BLEND), GLboolean(GL_FALSE));
}

TEST_F(ContextTracker, FreshTrackerChecksTrueWithNoContextCurrent)
{
    driver.setContext(nullptr);
    const GLContextTracker tracker;
    EXPECT_EQ(tracker.trackedContext(), nullptr);
    EXPECT_TRUE(tracker.check());
}

TEST_F(ContextTracker, CurrentContextIsThePlatformsWhereQtHasNone)
{
    int first = 0;
    driver.setContext(&first);
    EXPECT_EQ(GLContextTracker::currentContext(), &first);
}

TEST_F(ContextTracker, CheckTurnsFalseWithAnotherContextAndTrueWhenTheTrackedOneReturns)
{
    int first = 0;
    int second = 0;
    GLContextTracker tracker;
    driver.setContext(&first);
    EXPECT_FALSE(tracker.check());
    tracker.trackCurrentContext();
    EXPECT_EQ(tracker.trackedContext(), &first);
    EXPECT_TRUE(tracker.check());
    driver.setContext(&second);
    EXPECT_FALSE(tracker.check());
    driver.setContext(&first);
    EXPECT_TRUE(tracker.check());
}

TEST_F(ContextTrackerGL, BareContextsAreToldApartOnEachThread)
{
    EXPECT_EQ(GLContextTracker::currentContext(), context().handle());
    HeadlessContext second;
    void* seen = nullptr;
    std::thread worker(
        [&second, &seen]
        {
            EXPECT_EQ(GLContextTracker::currentContext(), nullptr);
            ASSERT_TRUE(second.makeCurrent());
            seen = GLContextTracker::currentContext();
            HeadlessContext::releaseCurrent();
        });
    worker.join();
    EXPECT_EQ(seen, second.handle());
    EXPECT_EQ(GLContextTracker::currentContext(), context().handle());
    HeadlessContext::releaseCurrent();
    EXPECT_EQ(GLContextTracker::currentContext(), nullptr);
}
