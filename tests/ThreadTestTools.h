// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites with several threads share: contexts of the fake driver that belong to one thread each, and threads
/// that begin together.

#include "GLPlatform.h"
#include "support/RecordingPlatform.h"

#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace Harrow::Vrk::Test
{

/// A driver, the fake one say, with a context of its own on each thread.
class ContextPerThread final : public GLPlatform
{
public:
    explicit ContextPerThread(GLPlatform& driver) : _driver(driver)
    {
        RecordingPlatform::instance().setInner(this);
    }
    ~ContextPerThread() override
    {
        RecordingPlatform::instance().setInner(&_driver);
    }
    void* procAddress(const char* name) override
    {
        const std::lock_guard lock(_mutex); // the fake driver writes down what it is asked for
        return _driver.procAddress(name);
    }
    void* moduleSymbol(const char* name) override
    {
        const std::lock_guard lock(_mutex);
        return _driver.moduleSymbol(name);
    }
    void* currentContext() override
    {
        return context;
    }

    static inline thread_local void* context = nullptr;

private:
    GLPlatform& _driver;
    std::mutex _mutex;
};

/// Calls `work` with 0, 1, … on `count` threads that begin at the same time, and waits for all of them.
template <typename Work> void onThreads(int count, Work work)
{
    std::latch start(count);
    std::vector<std::thread> threads;
    threads.reserve(std::size_t(count));
    for (int number = 0; number < count; ++number)
        threads.emplace_back(
            [&work, &start, number]
            {
                start.arrive_and_wait();
                work(number);
            });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace Harrow::Vrk::Test
