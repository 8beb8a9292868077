// SPDX-License-Identifier: MIT
#include "Progress.h"

#include <Terminal.h>

#include <algorithm>
#include <chrono>

namespace envmap
{

Progress::Progress() : _thread([this](const std::stop_token& stop) { run(stop); }) {}

Progress::~Progress() = default;

void Progress::begin(const QString& work, float from, float to)
{
    const std::lock_guard lock(_mutex);
    _work = work;
    _from = from;
    _to = to;
    _fraction = 0.0f;
}

void Progress::advance(float fraction)
{
    const std::lock_guard lock(_mutex);
    _fraction = std::clamp(fraction, 0.0f, 1.0f);
}

void Progress::run(const std::stop_token& stop)
{
    constexpr std::chrono::milliseconds kPause(50);
    vrkview::ProgressLine line;
    for (; !stop.stop_requested(); std::this_thread::sleep_for(kPause))
    {
        const std::lock_guard lock(_mutex);
        line.show(_work, _from + (_to - _from) * _fraction);
    }
}

} // namespace envmap
