// SPDX-License-Identifier: MIT
// playback-benchmark SONG FILM LONG_SONG LARGE_FILM
// gst-renderer as the console uses it, against a bare playbin on the same files, in turn within one run.
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "Measurement.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

#include <gst/gst.h>

#include <ctime>
#include <functional>
#include <stdexcept>

namespace {
constexpr int rounds = 25;
constexpr int startRounds = 75; // of a few milliseconds each, which jitter

void discardDebugLines(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

bool movesOnFrom(int seconds, double position)
{
    return position > seconds + 0.001 && position < seconds + 1;
}

/// The renderer, with commands that return when their effect has been reported.
class Player : public QObject
{
    Q_OBJECT
public:
    Player()
    {
        KelvoRegistry *registry = KelvoRegistry::instance();
        connect(registry, &KelvoRegistry::rendererAdded, &m_loop, &QEventLoop::quit);
        registry->loadPlugin("gst-renderer.so");
        runUntil([registry] { return !registry->renderers().isEmpty(); });
        m_renderer = registry->renderers().first();
        connect(m_renderer, &KelvoRenderer::stateChanged, this, [this](KelvoRenderer::State state) {
            m_state = state;
            m_loop.quit();
        });
        connect(m_renderer, &KelvoRenderer::metadataChanged, this, [this](const QString &key) {
            if (key != QLatin1String("pause-frame"))
                return;
            m_frameReported = true;
            m_loop.quit();
        });
        connect(m_renderer, &KelvoRenderer::error, this, [](const KelvoError &error) {
            std::fprintf(stderr, "error %d: %s\n", int(error.code()), qPrintable(error.message()));
        });
    }

    KelvoRenderer *operator->() const { return m_renderer; }

    void waitFor(KelvoRenderer::State state)
    {
        runUntil([this, state] { return m_state == state; });
    }

    double startMilliseconds(const QUrl &url)
    {
        QElapsedTimer timer;
        timer.start();
        m_renderer->playUri(url);
        waitFor(KelvoRenderer::Playing);
        return milliseconds(timer);
    }

    void stop()
    {
        m_renderer->stop();
        waitFor(KelvoRenderer::Stopped);
    }

    void waitForFrame()
    {
        runUntil([this] { return m_frameReported; });
        m_frameReported = false;
    }

    /// Seconds, with their fraction.
    double position()
    {
        m_position = -1;
        m_renderer->kelvoProperty("position", this, "takePosition(QString,QVariant)");
        runUntil([this] { return m_position >= 0; });
        return m_position;
    }

    /// Until playback moves on from the position sought: on the way there that position itself is answered.
    double seekMilliseconds(int seconds)
    {
        QElapsedTimer timer;
        timer.start();
        m_renderer->setPosition(seconds, KelvoRenderer::SeekAbsolute);
        while (!movesOnFrom(seconds, position()))
            ;
        return milliseconds(timer);
    }

public Q_SLOTS:
    void takePosition(const QString &, const QVariant &value)
    {
        m_position = value.toDouble();
        m_loop.quit();
    }

private:
    void runUntil(const std::function<bool()> &condition)
    {
        QTimer limit;
        limit.setSingleShot(true);
        connect(&limit, &QTimer::timeout, &m_loop, &QEventLoop::quit);
        limit.start(30'000);
        while (!condition()) {
            m_loop.exec();
            if (!limit.isActive())
                throw std::runtime_error("the renderer does not answer");
        }
    }

    QEventLoop m_loop;
    KelvoRenderer *m_renderer = nullptr;
    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    double m_position = -1;
    bool m_frameReported = false;
};

/// A bare playbin, re-used, with nothing around it.
class Playbin
{
public:
    Playbin()
        : m_playbin(gst_element_factory_make("playbin", nullptr))
    {
        g_object_set(m_playbin, "audio-sink",
            gst_parse_bin_from_description("fakesink sync=true", TRUE, nullptr), "video-sink",
            gst_parse_bin_from_description("fakesink sync=true", TRUE, nullptr), nullptr);
    }
    ~Playbin()
    {
        stop();
        gst_object_unref(m_playbin);
    }
    Q_DISABLE_COPY_MOVE(Playbin)

    double startMilliseconds(const QUrl &url)
    {
        QElapsedTimer timer;
        timer.start();
        g_object_set(m_playbin, "uri", url.toEncoded().constData(), nullptr);
        gst_element_set_state(m_playbin, GST_STATE_PLAYING);
        gst_element_get_state(m_playbin, nullptr, nullptr, GST_CLOCK_TIME_NONE);
        return milliseconds(timer);
    }

    double seekMilliseconds(int seconds)
    {
        QElapsedTimer timer;
        timer.start();
        gst_element_seek_simple(m_playbin, GST_FORMAT_TIME,
            GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE), seconds * gint64(GST_SECOND));
        gst_element_get_state(m_playbin, nullptr, nullptr, GST_CLOCK_TIME_NONE);
        while (!movesOnFrom(seconds, position()))
            ;
        return milliseconds(timer);
    }

    double position() const
    {
        gint64 at = 0;
        gst_element_query_position(m_playbin, GST_FORMAT_TIME, &at);
        return double(at) / GST_SECOND;
    }

    void stop() { gst_element_set_state(m_playbin, GST_STATE_NULL); }

private:
    GstElement *m_playbin;
};

void measureStart(Player &player, Playbin &playbin, const QUrl &url)
{
    std::vector<double> ours;
    std::vector<double> bare;
    for (int round = 0; round <= startRounds; ++round) {
        const double here = player.startMilliseconds(url);
        player.stop();
        const double there = playbin.startMilliseconds(url);
        playbin.stop();
        if (round == 0)
            continue; // warms the caches
        ours.push_back(here);
        bare.push_back(there);
    }
    Measurement::row("playUri to Playing, " + QFileInfo(url.path()).suffix().toStdString() + ", median",
        Measurement::median(ours), "ms", "bare playbin", Measurement::median(bare), "at most 1.1");
}

void measureSeek(Player &player, Playbin &playbin, const QUrl &url, const std::string &name, int length)
{
    std::vector<double> ours;
    std::vector<double> bare;
    player.startMilliseconds(url);
    playbin.startMilliseconds(url);
    for (int round = 0; round < rounds; ++round) {
        const int target = (round * 7919) % (length - 2);
        ours.push_back(player.seekMilliseconds(target));
        bare.push_back(playbin.seekMilliseconds(target));
    }
    player.stop();
    playbin.stop();
    Measurement::row("seek to settled position, " + name + ", median", Measurement::median(ours), "ms",
        "bare playbin, same criterion", Measurement::median(bare), "at most 1.1");
    Measurement::row(
        "- longest", Measurement::maximum(ours), "ms", "bare playbin", Measurement::maximum(bare));
}

void measurePauseAt(Player &player, const QUrl &url)
{
    std::vector<double> errors;
    for (int round = 0; round < rounds; ++round) {
        player->pauseAt(1);
        player.startMilliseconds(url);
        player.waitFor(KelvoRenderer::Paused);
        errors.push_back(std::abs(player.position() - 1) * 1000);
        player.stop();
    }
    const std::string kind = QFileInfo(url.path()).suffix().toStdString();
    Measurement::row(
        "pauseAt error, " + kind + ", median", Measurement::median(errors), "ms", "", 0, "at most 2 ms");
    Measurement::row("- largest", Measurement::maximum(errors), "ms", "", 0, "at most 10 ms");
}

void measurePauseFrame(Player &player, const QUrl &url)
{
    std::vector<double> work;
    std::vector<double> delays;
    player->setKelvoProperty(KelvoRenderer::PropertyCurrentFrameOnPause, true);
    for (int round = 0; round < rounds; ++round) {
        player.startMilliseconds(url);
        QElapsedTimer timer;
        timer.start();
        const double before = Measurement::workOfThread();
        player->pause();
        player.waitForFrame();
        work.push_back(Measurement::workOfThread() - before);
        delays.push_back(milliseconds(timer));
        player.stop();
    }
    player->setKelvoProperty(KelvoRenderer::PropertyCurrentFrameOnPause, false);
    Measurement::row("frame on pause, 1920x1080: work of the GUI thread, longest", Measurement::maximum(work),
        "ms", "", 0, "at most 5 ms");
    Measurement::row("- pause to its report, median", Measurement::median(delays), "ms", "", 0, "reported");
}
} // namespace

int main(int argc, char *argv[])
try {
    QCoreApplication application(argc, argv);
    gst_init(&argc, &argv);
    if (argc != 5)
        throw std::runtime_error("usage: playback-benchmark SONG FILM LONG_SONG LARGE_FILM");
    qInstallMessageHandler(discardDebugLines);
    const auto url = [argv](int index) {
        return QUrl::fromLocalFile(QFileInfo(QString::fromLocal8Bit(argv[index])).absoluteFilePath());
    };
    Player player;
    Playbin playbin;
    measureStart(player, playbin, url(1));
    measureStart(player, playbin, url(2));
    measureSeek(player, playbin, url(1), "mp3", 60);
    measureSeek(player, playbin, url(2), "mp4", 60);
    measureSeek(player, playbin, url(3), "mp3 of two hours", 7200);
    measurePauseAt(player, url(1));
    measurePauseAt(player, url(2));
    measurePauseFrame(player, url(4));
    return 0;
} catch (const std::exception &exception) {
    std::fprintf(stderr, "playback-benchmark: %s\n", exception.what());
    return 1;
}

#include "playback-benchmark.moc"
