// SPDX-License-Identifier: MIT
// registry-benchmark [COUNT | --growth COUNT...]
// Renderers come and go by the thousand while the window is shown. Each arrival and departure is an event of its
// own, as from a back end; what is measured is the longest time that one of them keeps the event loop, and the
// memory before and after.
// With --growth: points of how long a renderer, and a playlist, takes that comes or goes while COUNT are there.
#include "KelvoGUIMain.h"
#include "KelvoRegistry.h"
#include "Measurement.h"

#include "../tests/support/MinimalObjects.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <functional>

#include <malloc.h>
#include <unistd.h>

namespace {
void discardMessage(QtMsgType, const QMessageLogContext &, const QString &)
{
    // The debug log is not what is measured here.
}

double residentKilobytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1024;
}

struct Renderers
{
    using Object = MinimalRenderer;
    static void add(Object *renderer) { KelvoRegistry::instance()->addRenderer(renderer); }
    static void remove(Object *renderer) { KelvoRegistry::instance()->removeRenderer(renderer); }
};

struct Playlists
{
    using Object = MinimalPlaylist;
    static void add(Object *playlist) { KelvoRegistry::instance()->addPlaylist(playlist); }
    static void remove(Object *playlist) { KelvoRegistry::instance()->removePlaylist(playlist); }
};

template <typename Kind> class Run : public QObject
{
public:
    Run(int count, std::function<void()> whenDone)
        : m_whenDone(std::move(whenDone))
        , m_count(count)
    {
        m_step.setInterval(0);
        connect(&m_step, &QTimer::timeout, this, &Run::step);
    }

    void start() { m_step.start(); }
    bool isDone() const { return m_round == 2; }
    double longestStall() const { return Measurement::maximum(m_adding.empty() ? m_removing : all()); }
    double medianAdding() const { return Measurement::median(m_adding); }
    double medianRemoving() const { return Measurement::median(m_removing); }
    /// Of those that came while this many were there, or a few more.
    double medianAddingTo(int count) const { return medianOfBetterRound(m_adding, count, windowAt(count)); }
    /// Of those that went while this many were there, or a few more.
    double medianRemovingFrom(int count) const
    {
        const int window = windowAt(count);
        return medianOfBetterRound(m_removing, m_count - count - window, window);
    }
    /// Arrivals that are near enough to this number for one point of a curve.
    static int windowAt(int count) { return std::clamp(count / 10, 3, 100); }
    double memoryAfterFirstRound() const { return m_memoryAfterFirst; }

private:
    /// All of a window are within a second, in which another program may hold the processor or its caches: hardly in
    /// both rounds.
    double medianOfBetterRound(const std::vector<double> &times, int first, int window) const
    {
        std::vector<double> medians;
        for (auto round = times.begin(); round < times.end(); round += m_count)
            medians.push_back(Measurement::median({round + first, round + first + window}));
        return *std::min_element(medians.begin(), medians.end());
    }

    std::vector<double> all() const
    {
        std::vector<double> values = m_adding;
        values.insert(values.end(), m_removing.begin(), m_removing.end());
        return values;
    }

    void step()
    {
        if (m_coming)
            add();
        else
            remove();
    }

    void add()
    {
        const QString number = QString::number(m_objects.size());
        m_objects.push_back(std::make_unique<typename Kind::Object>("uuid-" + number, "Object " + number));
        m_timer.start();
        Kind::add(m_objects.back().get());
        m_adding.push_back(double(m_timer.nsecsElapsed()) / 1e6);
        m_coming = int(m_objects.size()) < m_count;
    }

    void remove()
    {
        m_timer.start();
        Kind::remove(m_objects.back().get());
        m_removing.push_back(double(m_timer.nsecsElapsed()) / 1e6);
        m_objects.pop_back();
        if (!m_objects.empty())
            return;
        m_coming = true;
        if (++m_round == 1)
            m_memoryAfterFirst = residentKilobytes();
        if (isDone()) {
            m_step.stop();
            m_whenDone();
        }
    }

    QTimer m_step;
    QElapsedTimer m_timer;
    std::vector<std::unique_ptr<typename Kind::Object>> m_objects;
    std::vector<double> m_adding;
    std::vector<double> m_removing;
    std::function<void()> m_whenDone;
    double m_memoryAfterFirst = 0;
    int m_count;
    int m_round = 0;
    bool m_coming = true;
};

void showRows(const Run<Renderers> &run)
{
    using Measurement::row;
    row("10,000 renderers come and go: longest event", run.longestStall(), "ms", "", 0, "at most 8 ms");
    row("- one comes, median", run.medianAdding(), "ms");
    row("- one goes, median", run.medianRemoving(), "ms");
    row("- memory after the second round", residentKilobytes(), "kB", "after the first",
        run.memoryAfterFirstRound(), "1");
}

template <typename Kind>
void showGrowth(const std::string &name, const Run<Kind> &run, const std::vector<int> &sizes)
{
    for (int size : sizes) {
        Measurement::growth(name + ": one comes", size, run.medianAddingTo(size));
        Measurement::growth(name + ": one goes", size, run.medianRemovingFrom(size));
    }
}

void measure(int count)
{
    Run<Renderers> run(count, QCoreApplication::quit);
    QTimer::singleShot(500, &run, &Run<Renderers>::start); // the window has been painted
    QApplication::exec();
    showRows(run);
}

void measureGrowth(const std::vector<int> &sizes)
{
    const int count = sizes.back() + Run<Renderers>::windowAt(sizes.back());
    Run<Playlists> playlists(count, QCoreApplication::quit);
    Run<Renderers> renderers(count, [&playlists] { playlists.start(); });
    QTimer::singleShot(500, &renderers, &Run<Renderers>::start);
    QApplication::exec();
    showGrowth("renderers", renderers, sizes);
    showGrowth("playlists", playlists, sizes);
}
} // namespace

int main(int argc, char *argv[])
{
    qputenv("KELVO_PLUGINS", "");
    qInstallMessageHandler(discardMessage);
    QApplication application(argc, argv);
    auto *guiMain = new KelvoGUIMain(&application);
    Q_UNUSED(guiMain)
    const std::vector<int> sizes = Measurement::growthSizes(argc, argv);
    if (sizes.empty())
        measure(argc > 1 ? QByteArray(argv[1]).toInt() : 10'000);
    else
        measureGrowth(sizes);
    return 0;
}
