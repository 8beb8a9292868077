// SPDX-License-Identifier: MIT
#include "Soak.h"

#include "Actions.h"
#include "BareEpisode.h"
#include "Chances.h"
#include "Choices.h"
#include "ProcessMemory.h"
#include "Random.h"
#include "Stage.h"
#include "Trend.h"
#include "ViewerEpisode.h"

#include "Texture.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

// Every so many episodes one is the viewer's, which has fewer frames, since they are dear.
constexpr int kViewerEvery = 4;
constexpr int kViewerShare = 8;

// Of the others by chance one in so many is long, with rests in between.
constexpr int kLongEvery = 5;
constexpr int kRestsOfLong = 5;

// Frames from one planted fault to the next.
constexpr int kPlantEvery = 5;

// What both statements of a trend may say at most: of the heap, to the byte what is allocated, and of the pages, which
// come in pools of the driver's. For each checkpoint a little more: a software driver keeps some of each shader that it
// has compiled, in bare OpenGL too (--bare).
struct Limit
{
    double leastKiB;
    double perCheckpointKiB;
};
constexpr Limit kHeapLimit = {768.0, 4.0};
constexpr Limit kResidentLimit = {8192.0, 16.0};

double limitFor(const Limit& limit, std::size_t checkpoints)
{
    return std::max(limit.leastKiB, limit.perCheckpointKiB * double(checkpoints));
}

constexpr std::size_t kTableRows = 24;

StageSettings chooseSettings(Random& random, const SoakOptions& options)
{
    StageSettings settings;
    settings.manager = chooseManager(random, options.manager);
    settings.carrier = chooseCarrier(random);
    settings.byBaseInstance = chooseBaseInstance(random);
    settings.crowd = chooseCrowd(random);
    return settings;
}

/// Without the textures that a manager of layers keeps for the next ones.
Balance withoutTextures(Balance balance)
{
    balance.textures = 0;
    balance.names[std::size_t(NameKind::Texture)] = 0;
    return balance;
}

} // namespace

Soak::Soak(const SoakOptions& options, Test::HeadlessContext& context)
    : _options(options), _context(context), _acted(actionCount())
{
    // Told where a manager of layers runs out of slots, which is what it is for.
    _watch.allow(QStringLiteral("Textures were resized to fit into texture slots"));
}

bool Soak::run()
{
    delete SolidColorTexture(1.0f, 1.0f, 1.0f, 1.0f); // the first bind opens the context's books of units
    _base = Balance::now();
    tell(QStringLiteral("at the start: %1").arg(_base.text()));
    _timer.start();
    for (_episode = _options.firstEpisode; goesOn(); ++_episode)
    {
        Random random(std::uint64_t(_options.seed), std::uint64_t(_episode));
        _framesOfEpisode = 0;
        checkpoint(playEpisode(random));
    }
    judge();
    tellActions();
    tellMemory();
    for (const QString& line : _verdict)
        tell(QStringLiteral("verdict: FAILED: %1").arg(line));
    if (_verdict.isEmpty())
        tell(QStringLiteral("verdict: passed"));
    return _verdict.isEmpty();
}

/// On a slow machine for longer than was asked, until there is something to judge.
bool Soak::goesOn() const
{
    return _timer.elapsed() < qint64(_options.seconds) * 1000 ||
           (_options.judgesMemory && _checkpoints.size() < Trend::kFewest);
}

// ---- an episode ----------------------------------------------------------------------------------------------------

QString Soak::playEpisode(Random& random)
{
    const auto afterFrame = [this](int frame)
    {
        ++_framesOfEpisode;
        ++_frames;
        _watch.now(_episode, frame, "frame");
        _watch.lookForErrors();
    };
    if (_options.bare)
        return playBare(random, _context, _options.frames, afterFrame);
    if (_episode % kViewerEvery == kViewerEvery - 1)
        return playViewerEpisode(random, afterFrame);
    return playStage(random);
}

QString Soak::playStage(Random& random)
{
    const StageSettings settings = chooseSettings(random, _options);
    const int rests = random.oneIn(kLongEvery) ? kRestsOfLong : 1;
    QString error;
    _watch.now(_episode, 0, "stage built");
    Stage stage;
    if (!stage.create(settings, error))
    {
        _watch.fault(error);
        return settings.text();
    }
    std::vector<Balance> atRests;
    for (int i = 0; i < rests; ++i)
    {
        playFrames(stage, random);
        rest(stage, atRests, vrkview::usesArrays(settings.manager));
    }
    return settings.text();
}

void Soak::playFrames(Stage& stage, Random& random)
{
    for (int i = 0; i < _options.frames; ++i)
    {
        const int frame = int(_framesOfEpisode++);
        act(stage, random, frame);
        _watch.now(_episode, frame, "planted");
        if (frame % kPlantEvery == 0)
            makeFault(_options.plant, stage.manager());
        _watch.now(_episode, frame, "frame");
        QString error;
        if (!stage.draw(frame, error))
            _watch.fault(error);
        _watch.lookForErrors();
        ++_frames;
    }
}

void Soak::act(Stage& stage, Random& random, int frame)
{
    const std::size_t chosen = chooseAction(random);
    _watch.now(_episode, frame, action(chosen).name);
    ActionScope scope{stage, random, _context, {}};
    action(chosen).perform(scope);
    if (!scope.error.isEmpty())
        _watch.fault(scope.error);
    _watch.lookForErrors();
    ++_acted[chosen];
}

/// What is on the stage is then what was there at its first rest.
void Soak::rest(Stage& stage, std::vector<Balance>& rests, bool copies)
{
    _watch.now(_episode, int(_framesOfEpisode), "rest");
    QString error;
    if (!stage.rest(error))
        _watch.fault(error);
    Balance balance = Balance::now();
    if (copies)
        balance = withoutTextures(balance);
    if (!rests.empty() && balance != rests.front())
        _watch.fault(QStringLiteral("since the first rest: %1").arg(balance.differenceTo(rests.front())));
    rests.push_back(balance);
    ++_rests;
}

QString Soak::playViewerEpisode(Random& random, const std::function<void(int frame)>& afterFrame)
{
    QString error;
    _watch.now(_episode, 0, "viewer built");
    const int frames = std::max(1, _options.frames / kViewerShare);
    const QString played = playViewer(random, _options.manager, frames, afterFrame, error);
    if (!error.isEmpty())
        _watch.fault(error);
    return QStringLiteral("viewer, %1").arg(played);
}

// ---- between episodes ----------------------------------------------------------------------------------------------

void Soak::checkpoint(const QString& played)
{
    _watch.now(_episode, int(_framesOfEpisode), "everything taken down");
    _watch.lookForErrors();
    const Balance balance = Balance::now();
    if (balance != _base)
    {
        _watch.fault(QStringLiteral("left behind: %1").arg(balance.differenceTo(_base)));
        _base = balance; // so that the next ones are told apart
    }
    settleDriver();
    const ProcessMemory memory = ProcessMemory::now();
    _checkpoints.push_back({_episode, double(_timer.elapsed()) / 1000.0, memory.heapKiB, memory.residentKiB});
    if (_checkpoints.size() % std::size_t(_options.reportEvery) == 0)
        tell(QStringLiteral("%1 s: episode %2 (%3), %4 frames: heap %5 KiB, resident %6 KiB")
                 .arg(_checkpoints.back().seconds, 0, 'f', 1)
                 .arg(_episode)
                 .arg(played)
                 .arg(_framesOfEpisode)
                 .arg(memory.heapKiB, 0, 'f', 1)
                 .arg(memory.residentKiB, 0, 'f', 0));
}

// ---- the verdict ---------------------------------------------------------------------------------------------------

void Soak::judge()
{
    if (_watch.faultCount() > 0)
        _verdict.append(QStringLiteral("%1 faults, told above").arg(_watch.faultCount()));
    if (!_options.judgesMemory)
        return;
    judgeMemory("heap", &Checkpoint::heapKiB, limitFor(kHeapLimit, _checkpoints.size()));
    judgeMemory("resident memory", &Checkpoint::residentKiB, limitFor(kResidentLimit, _checkpoints.size()));
}

void Soak::judgeMemory(const char* what, double Checkpoint::*member, double limitKiB)
{
    std::vector<double> measured;
    for (const Checkpoint& one : _checkpoints)
        measured.push_back(one.*member);
    const Trend trend(measured);
    if (!trend.isKnown)
    {
        _verdict.append(
            QStringLiteral("%1 checkpoints are too few to judge the %2").arg(measured.size()).arg(QLatin1String(what)));
        return;
    }
    const QString text = QStringLiteral("%1: %2 KiB by the slope over %3 checkpoints, %4 KiB by the least of the "
                                        "middle and the last third; both above %5 KiB is growth")
                             .arg(QLatin1String(what))
                             .arg(trend.rise(), 0, 'f', 1)
                             .arg(trend.count)
                             .arg(trend.riseByThirds(), 0, 'f', 1)
                             .arg(limitKiB, 0, 'f', 0);
    tell(text);
    if (!trend.isFlat(limitKiB))
        _verdict.append(QStringLiteral("the %1 grows").arg(QLatin1String(what)));
}

void Soak::tell(const QString& line) const
{
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

void Soak::tellActions() const
{
    long long all = 0;
    for (const long long count : _acted)
        all += count;
    tell(QStringLiteral("%1 frames, %2 actions, %3 episodes, %4 rests, %5 OpenGL names made, %6 expected warnings")
             .arg(_frames)
             .arg(all)
             .arg(_checkpoints.size())
             .arg(_rests)
             .arg(LiveNames::madeInAll())
             .arg(_watch.allowedCount()));
    for (std::size_t i = 0; i < _acted.size(); ++i)
        tell(QStringLiteral("%1 x %2").arg(_acted[i], 8).arg(QLatin1String(action(i).name)));
}

void Soak::tellMemory() const
{
    const std::size_t step = std::max<std::size_t>(1, _checkpoints.size() / kTableRows);
    tell(QStringLiteral("  seconds  episode    heap KiB  resident KiB"));
    for (std::size_t i = 0; i < _checkpoints.size(); i += step)
        tell(QStringLiteral("%1 %2 %3 %4")
                 .arg(_checkpoints[i].seconds, 9, 'f', 1)
                 .arg(_checkpoints[i].episode, 8)
                 .arg(_checkpoints[i].heapKiB, 11, 'f', 1)
                 .arg(_checkpoints[i].residentKiB, 13, 'f', 0));
    tell(QStringLiteral("at the end: %1").arg(Balance::now().text()));
}

} // namespace vrksoak
