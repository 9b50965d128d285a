// SPDX-License-Identifier: MIT
#include "ChaosRun.h"
#include "Controls.h"
#include "Dialogs.h"
#include "Follower.h"
#include "Liars.h"
#include "Players.h"
#include "Playlists.h"
#include "Plugins.h"
#include "Queries.h"
#include "SecondConsole.h"
#include "Simulators.h"
#include "Warnings.h"
#ifdef KELVO_CHAOS_UPNP
#include "Devices.h"
#endif

#include <QCommandLineParser>

#include <cstdio>

namespace {
struct Wishes
{
    quint64 seed = 1;
    int steps = 600;
    bool follow = false;
};

Wishes wishesOf(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Does to the console what nobody would, and looks at what it makes of it"));
    const QCommandLineOption seed(
        QStringLiteral("seed"), QStringLiteral("What chance begins with."), "number", "1");
    const QCommandLineOption steps(QStringLiteral("steps"), QStringLiteral("How many."), "number", "600");
    const QCommandLineOption until(QStringLiteral("until"), QStringLiteral("The last step."), "number");
    const QCommandLineOption follow(
        QStringLiteral("follow"), QStringLiteral("Makes steps as told on standard input."));
    parser.addOptions({seed, steps, until, follow});
    parser.addHelpOption();
    parser.process(arguments);
    Wishes wishes{parser.value(seed).toULongLong(), parser.value(steps).toInt(), parser.isSet(follow)};
    if (parser.isSet(until))
        wishes.steps = parser.value(until).toInt();
    return wishes;
}

/// What a console has without the surroundings that only the first one is given.
void addFamilies(ChaosRun &run, const Stage &stage)
{
    run.add(std::make_unique<Controls>(stage));
    run.add(std::make_unique<Playlists>(stage));
    run.add(std::make_unique<Dialogs>(stage));
    run.add(std::make_unique<Simulators>(stage));
    run.add(std::make_unique<Liars>(stage));
    run.add(std::make_unique<Queries>(stage));
}

void addSurroundings(ChaosRun &run, const Stage &stage, quint64 seed)
{
    QStringList plugins{"simulator.so", "gst-renderer.so", "tracker-source.so", "mpris.so"};
#ifdef KELVO_CHAOS_UPNP
    plugins.append("upnp.so");
    run.add(std::make_unique<Devices>(stage));
#endif
    run.add(std::make_unique<Players>(stage));
    run.add(std::make_unique<Plugins>(stage, plugins));
    run.add(std::make_unique<SecondConsole>(stage, seed));
}

int tell(const Wishes &wishes, const Journal &journal, const StallMeter &meter)
{
    if (journal.hasFailed()) {
        std::printf("\nchaos: seed %llu fails in step %d. The last steps were:\n%s\nWrong:\n%s\n"
                    "Again with: --seed %llu --steps %d\n",
            wishes.seed, journal.step(), qPrintable(journal.lastLines().join(u'\n')),
            qPrintable(journal.failures().join(u'\n')), wishes.seed, journal.step());
        return 1;
    }
    const StallMeter::Stall &longest = meter.longest();
    std::printf(
        "chaos: seed %llu, %d steps, longest stall %.0f ms (%s), with waiting %.0f ms (%s), %d expected "
        "warnings\n",
        wishes.seed, wishes.steps, longest.busy, qPrintable(longest.busyWith), longest.stopped,
        qPrintable(longest.stoppedBy), Warnings::expectedCount());
    return 0;
}

void play(const Wishes &wishes, Journal &journal, StallMeter &meter)
{
    ConsoleFixture console;
    meter.reset(); // nobody can be kept from a window that is not there yet
    DialogHand hand;
    Stage stage{journal, meter, console, hand, {}};
    ChaosRun run(stage, wishes.seed);
    stage.meanwhile = [&run](Dice &dice) {
        run.meanwhile(dice);
    };
    addFamilies(run, stage);
    if (wishes.follow) {
        run.add(std::make_unique<Plugins>(stage, QStringList{"simulator.so"}));
        Follower follower(&run, &journal);
        while (follower.goOn()) { }
    } else {
        addSurroundings(run, stage, wishes.seed);
        run.run(wishes.steps);
    }
    run.finish();
}
} // namespace

int main(int argc, char **argv)
{
    Warnings::install();
    StallMeter meter;
    MeteredApplication application(argc, argv, &meter);
    meter.watchEventLoop();
    const Wishes wishes = wishesOf(QCoreApplication::arguments());
    Journal journal(wishes.follow ? QStringLiteral("second console, ") : QString());
    play(wishes, journal, meter);
    if (wishes.follow)
        return journal.hasFailed() ? 1 : 0;
    return tell(wishes, journal, meter);
}
