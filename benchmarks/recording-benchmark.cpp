// SPDX-License-Identifier: MIT
// recording-benchmark FOLDER
// What it costs to be recorded: in the caller of a command and in the emitter of a report, with a ring in memory alone
// and with a file in FOLDER beside it; and whether ten thousand events a second are all written.
#include "ItemRenderer.h"
#include "KelvoRegistry.h"
#include "Measurement.h"
#include "Recorder.h"

#include "../tests/support/MinimalObjects.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <functional>
#include <malloc.h>
#include <unistd.h>

namespace {
constexpr int rounds = 21;
constexpr int callsOfRound = 20'000;

/// Plays nothing, as fast as can be.
class SilentEngine : public Engine
{
public:
    QString name() const override { return {}; }
    void load(const Item &) override { }
    void unload() override { }
    void pause() override { }
    void resume() override { }
    void seek(int, KelvoRenderer::SeekMode) override { }
    void setPauseAt(std::optional<uint> seconds) override { pauseAt = seconds; }
    void answerPosition(PositionAnswer) override { }

    std::optional<uint> pauseAt;
};

/// Does with a command what an ItemRenderer does, but for the note.
class RendererWithoutNotes : public MinimalRenderer
{
public:
    RendererWithoutNotes()
        : MinimalRenderer(QStringLiteral("without notes"), {})
    {
    }
    void pauseAt(uint seconds) override
    {
        command([this, seconds] { m_engine->setPauseAt(seconds); });
    }

private:
    void command(std::function<void()> call) { m_engine->command(std::move(call)); }

    const std::unique_ptr<Engine> m_engine = std::make_unique<SilentEngine>();
};

/// Microseconds of one call.
double costOf(const std::function<void(int)> &call)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < callsOfRound; ++i)
        call(i);
    return double(timer.nsecsElapsed()) / 1e3 / callsOfRound;
}

/// Of several rounds, so that what else the machine does is left out.
double medianCostOf(const std::function<void(int)> &call)
{
    std::vector<double> costs;
    for (int round = 0; round < rounds; ++round)
        costs.push_back(costOf(call));
    return Measurement::median(costs);
}

double residentKilobytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1024;
}

class Subject
{
public:
    Subject() { KelvoRegistry::instance()->addRenderer(&renderer); }
    ~Subject() { KelvoRegistry::instance()->removeRenderer(&renderer); }
    Q_DISABLE_COPY_MOVE(Subject)

    ItemRenderer renderer{std::make_unique<SilentEngine>(), QStringLiteral("KelvoSilentRenderer")};
};

std::unique_ptr<Recorder> startRecorder(const QByteArray &file = {})
{
    qputenv("KELVO_RECORD", file);
    return Recorder::start(
        KelvoRegistry::instance(), {QStringLiteral("benchmark"), QStringLiteral("1"), QStringLiteral("1")});
}

void measureOff(KelvoRenderer &renderer)
{
    RendererWithoutNotes other;
    // Called as one of which the compiler knows nothing, like the first.
    KelvoRenderer *volatile hidden = &other;
    KelvoRenderer &without = *hidden;
    // In turn, so that both have the same machine.
    std::vector<double> here;
    std::vector<double> there;
    for (int round = 0; round < rounds; ++round) {
        here.push_back(costOf([&](int i) { renderer.pauseAt(uint(i)); }));
        there.push_back(costOf([&](int i) { without.pauseAt(uint(i)); }));
    }
    const double note = Measurement::median(here) - Measurement::median(there);
    Measurement::row("a command that does nothing, not recorded, median", Measurement::median(here) * 1e3,
        "ns", "without the note", Measurement::median(there) * 1e3);
    const QUrl url(QStringLiteral("file:///song.flac"));
    const double play = medianCostOf([&](int) { renderer.playUri(url); });
    QCoreApplication::removePostedEvents(nullptr);
    Measurement::row("- playUri(), not recorded, median", play * 1e3, "ns", "less the note",
        (play - note) * 1e3, "at most 1.01");
}

void measureOn(KelvoRenderer &renderer, const char *where)
{
    const std::string goal = "at most 2 µs";
    const QUrl url(QStringLiteral("file:///home/user/Music/Some artist/Some album/01 - Some song.flac"));
    Measurement::row(std::string("one event recorded in ") + where + ": stateChanged, median",
        medianCostOf([&](int) { Q_EMIT renderer.stateChanged(KelvoRenderer::Playing); }), "µs", "", 0, goal);
    Measurement::row("- mediaChanged, median", medianCostOf([&](int i) {
        Q_EMIT renderer.mediaChanged(i, {QStringLiteral("item"), url, {}});
    }),
        "µs", "", 0, goal);
    Measurement::row("- metadataChanged, median", medianCostOf([&](int) {
        Q_EMIT renderer.metadataChanged(QStringLiteral("title"), {QStringLiteral("The title of a song")});
    }),
        "µs", "", 0, goal);
    Measurement::row(
        "- pauseAt(), median", medianCostOf([&](int i) { renderer.pauseAt(uint(i)); }), "µs", "", 0, goal);
}

/// Ten thousand a second, for five seconds, a hundred at a time.
void measureFlood(KelvoRenderer &renderer, const QByteArray &path)
{
    constexpr int ticks = 500;
    constexpr int eventsOfTick = 100;
    std::vector<double> stalls;
    {
        const auto recorder = startRecorder(path);
        QTimer timer;
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
            QElapsedTimer stall;
            stall.start();
            for (int i = 0; i < eventsOfTick; ++i)
                Q_EMIT renderer.bufferingInfo(float(i));
            stalls.push_back(double(stall.nsecsElapsed()) / 1e6);
            if (stalls.size() == ticks)
                QCoreApplication::quit();
        });
        timer.start(10);
        QCoreApplication::exec();
    }
    QFile file(QFile::decodeName(path));
    int written = 0;
    if (file.open(QIODevice::ReadOnly))
        written = int(file.readAll().count("\"bufferingInfo\""));
    Measurement::row(
        "10,000 events a second: not in the file", ticks * eventsOfTick - written, "", "", 0, "0");
    Measurement::row(
        "- longest stall of their emitter", Measurement::maximum(stalls), "ms", "", 0, "at most 16 ms");
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: recording-benchmark FOLDER\n");
        return 1;
    }
    const QByteArray path = QByteArray(argv[1]) + "/recording.jsonl";
    QFile::remove(QFile::decodeName(path));
    Subject subject;
    measureOff(subject.renderer);
    startRecorder(); // what is loaded on first use is not the ring's
    const double before = residentKilobytes();
    {
        const auto recorder = startRecorder();
        measureOn(subject.renderer, "memory");
        Measurement::row(
            "- memory of a full ring", residentKilobytes() - before, "kB", "", 0, "at most 10000 kB");
    }
    {
        const auto recorder = startRecorder(path);
        measureOn(subject.renderer, "memory and a file");
    }
    QFile::remove(QFile::decodeName(path));
    measureFlood(subject.renderer, path);
    QFile::remove(QFile::decodeName(path));
    return 0;
}
