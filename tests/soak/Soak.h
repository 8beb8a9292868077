// SPDX-License-Identifier: MIT
// The run: episode after episode, each of which takes everything down at its end, and what is judged of them.
#pragma once

#include "Balance.h"
#include "SoakOptions.h"
#include "Watch.h"

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace Harrow::Vrk::Test
{
class HeadlessContext;
}

namespace vrksoak
{

class Random;
class Stage;

class Soak
{
public:
    /// `context` is current, and the functions are loaded.
    Soak(const SoakOptions& options, Harrow::Vrk::Test::HeadlessContext& context);

    /// Plays until the time is over, tells on standard output, and returns whether nothing was at fault.
    bool run();

private:
    struct Checkpoint
    {
        int episode;
        double seconds;
        double heapKiB;
        double residentKiB;
    };

    bool goesOn() const;
    QString playEpisode(Random& random);
    QString playStage(Random& random);
    void playFrames(Stage& stage, Random& random);
    void act(Stage& stage, Random& random, int frame);
    void rest(Stage& stage, std::vector<Balance>& rests, bool copies);
    QString playViewerEpisode(Random& random, const std::function<void(int frame)>& afterFrame);
    void checkpoint(const QString& played);
    void tell(const QString& line) const;
    void tellActions() const;
    void tellMemory() const;
    void judge();
    void judgeMemory(const char* what, double Checkpoint::*member, double limitKiB);

    SoakOptions _options;
    Harrow::Vrk::Test::HeadlessContext& _context;
    Watch _watch;
    QElapsedTimer _timer;
    Balance _base;
    int _episode = 0;
    long long _frames = 0;
    long long _framesOfEpisode = 0;
    int _rests = 0;
    std::vector<long long> _acted;
    std::vector<Checkpoint> _checkpoints;
    QStringList _verdict; ///< empty as long as all is well
};

} // namespace vrksoak
