// SPDX-License-Identifier: MIT
// How far the work is, on a terminal. A step can keep the program's thread for long, so another one writes the line.
#pragma once

#include <QString>

#include <mutex>
#include <stop_token>
#include <thread>

namespace envmap
{

/// One at a time. While it lives nothing else writes to standard error.
class Progress
{
public:
    Progress();
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Goes on to `work`, which is the part of everything from `from` to `to`, of 0 to 1.
    void begin(const QString& work, float from, float to);

    /// The part of that work that is done, 0 to 1.
    void advance(float fraction);

private:
    void run(const std::stop_token& stop);

    std::mutex _mutex;
    QString _work;
    float _from = 0.0f;
    float _to = 0.0f;
    float _fraction = 0.0f;
    std::jthread _thread; // the last member: it uses the others
};

} // namespace envmap
