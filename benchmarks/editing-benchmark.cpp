// SPDX-License-Identifier: MIT
// editing-benchmark [COUNT]
// What the commands of the Playlists menu cost the GUI thread while the window shows the playlist: the longest time
// between two returns to the event loop, painting included. The reference for appending is the same copy into a
// model that nobody follows.
#include "KelvoGUIMain.h"
#include "KelvoPlaylist.h"
#include "KelvoPlaylistController.h"
#include "Measurement.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLocale>
#include <QStandardItemModel>

namespace {
constexpr int rounds = 5;
constexpr int columns = 6;

void discardMessage(QtMsgType, const QMessageLogContext &, const QString &)
{
    // The debug log is not what is measured here.
}

class Application : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_depth++ > 0) {
            const bool result = QApplication::notify(receiver, event);
            --m_depth;
            return result;
        }
        QElapsedTimer timer;
        timer.start();
        const bool result = QApplication::notify(receiver, event);
        note(timer);
        --m_depth;
        return result;
    }

    /// Milliseconds of the longest stall that the work and the events that follow it bring.
    template <typename Work> double longestOf(Work work)
    {
        return longestOf(
            work, [] { return true; }, nullptr);
    }

    /// The same for work that goes on in the event loop; *whole becomes the milliseconds until it is done.
    template <typename Work, typename Done> double longestOf(Work work, Done done, double *whole)
    {
        settle();
        m_longest = 0;
        QElapsedTimer timer;
        timer.start();
        work();
        note(timer);
        while (!done())
            processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        if (whole)
            *whole = double(timer.nsecsElapsed()) / 1e6;
        settle();
        return m_longest;
    }

private:
    void note(const QElapsedTimer &timer)
    {
        m_longest = std::max(m_longest, double(timer.nsecsElapsed()) / 1e6);
    }

    static void settle()
    {
        // The view lays itself out and paints by timers and posted events.
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 150)
            processEvents(QEventLoop::AllEvents, 20);
    }

    int m_depth = 0;
    double m_longest = 0;
};

void fill(QStandardItemModel &model, int count)
{
    model.setColumnCount(columns);
    for (int i = 0; i < count; ++i) {
        const QString number = QString::number(qint64(i) * 7919 % 1'000'003);
        QList<QStandardItem *> row;
        for (const QString &text : {number, "The title of song " + number,
                 "file:///music/song-" + number + ".ogg", QString::number(i % 600),
                 "Artist " + QString::number(i % 500), "Album " + QString::number(i % 2000)})
            row.append(new QStandardItem(text));
        model.appendRow(row);
    }
}

class Run
{
public:
    Run(Application &application, KelvoPlaylistController &controller, int count)
        : m_application(application)
        , m_controller(controller)
        , m_count(count)
        , m_name(QLocale(QLocale::English).toString(count).toStdString() + " items in view: ")
        , m_goal("at most 8 ms")
    {
        fill(m_results, count);
    }

    void measureAll()
    {
        measureAppending();
        const int half = m_count / 2;
        measure("show again", [this] { m_controller.showCurrentPlaylist(); });
        measure("sort by title", [this] { m_controller.sortPlaylistAtoZ(); });
        measure("sort by duration", [this] { m_controller.sortPlaylistShortToLong(); });
        measure("shuffle", [this] { m_controller.shufflePlaylist(); });
        measure("remove the first half",
            [this, half] { m_controller.currentPlaylist()->removeItems(0, uint(half - 1)); });
        measure("clear", [this] { m_controller.clearPlaylist(); });
    }

private:
    void makeCurrent()
    {
        const QString id = KelvoPlaylist::getNewPlaylistId();
        m_controller.createPlaylist(id, "list", nullptr);
        m_controller.playlistChanged(id);
    }

    void discard() { m_controller.deletePlaylist(); }

    void measureAppending()
    {
        std::vector<double> stalls;
        std::vector<double> times;
        std::vector<double> references;
        for (int round = 0; round < rounds; ++round) {
            makeCurrent();
            times.push_back(0);
            stalls.push_back(
                m_application.longestOf([this] { m_controller.addToPlaylist(m_results, 0, m_count - 1); },
                    [&] { return m_controller.currentPlaylist()->count() == m_count; }, &times.back()));
            discard();
            QStandardItemModel alone;
            references.push_back(m_application.longestOf([&] { fill(alone, m_count); }));
        }
        Measurement::row(m_name + "append", Measurement::median(stalls), "ms", "", 0, m_goal);
        Measurement::row("- in all", Measurement::median(times), "ms", "copy alone",
            Measurement::median(references), "at most 1.5");
    }

    template <typename Work> void measure(const std::string &name, Work work)
    {
        std::vector<double> times;
        for (int round = 0; round < rounds; ++round) {
            makeCurrent();
            m_controller.addToPlaylist(m_results, 0, m_count - 1);
            m_controller.finishAppending();
            times.push_back(m_application.longestOf(work));
            discard();
        }
        Measurement::row(m_name + name, Measurement::median(times), "ms", "", 0, m_goal);
    }

    Application &m_application;
    KelvoPlaylistController &m_controller;
    QStandardItemModel m_results;
    int m_count;
    std::string m_name;
    std::string m_goal;
};
} // namespace

int main(int argc, char *argv[])
{
    qputenv("KELVO_PLUGINS", "");
    qInstallMessageHandler(discardMessage);
    Application application(argc, argv);
    auto *guiMain = new KelvoGUIMain(&application);
    const QList<int> counts
        = argc > 1 ? QList<int>{QByteArray(argv[1]).toInt()} : QList<int>{10'000, 100'000};
    for (const int count : counts)
        Run(application, *guiMain->playlists(), count).measureAll();
    return 0;
}
