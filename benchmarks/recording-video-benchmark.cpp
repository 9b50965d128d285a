// SPDX-License-Identifier: MIT
// recording-video-benchmark FILM FOLDER
// Whether ten thousand events a second are all written, into a file in FOLDER, while the same process shows a film in a
// window, and whether the loop stalls meanwhile. The film plays for 12 seconds at least.
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "Measurement.h"
#include "Recorder.h"
#include "WatchedApplication.h"

#include "../tests/support/MinimalObjects.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <functional>
#include <stdexcept>

namespace {
constexpr int ticks = 500; // of 10 ms
constexpr int eventsOfTick = 100;
constexpr int width = 474; // pixels
constexpr int height = 284;
constexpr int longestWait = 30'000; // milliseconds

void discardDebugLines(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

void waitUntil(const std::function<bool()> &isTrue, const char *what)
{
    const QDeadlineTimer deadline(longestWait);
    QTimer wake; // so that waiting for more events comes to an end
    wake.start(50);
    while (!isTrue()) {
        if (deadline.hasExpired())
            throw std::runtime_error(what);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

/// A film in a window of the console's size.
class Film : public QObject
{
    Q_OBJECT
public:
    explicit Film(const QUrl &url)
    {
        m_window.resize(width, height);
        m_window.show();
        KelvoRegistry *registry = KelvoRegistry::instance();
        registry->loadPlugin("gst-renderer.so");
        waitUntil([registry] { return !registry->renderers().isEmpty(); }, "there is no renderer");
        m_renderer = registry->renderers().first();
        connect(m_renderer, &KelvoRenderer::stateChanged, this,
            [this](KelvoRenderer::State state) { m_isPlaying = state == KelvoRenderer::Playing; });
        m_renderer->setKelvoProperty(KelvoRenderer::PropertyXid, uint(m_window.winId()));
        m_renderer->setKelvoProperty(KelvoRenderer::PropertyAutopaint, false);
        m_renderer->setKelvoProperty(
            KelvoRenderer::PropertyRenderRectangle, QStringLiteral("0,0,%1,%2").arg(width).arg(height));
        m_renderer->playUri(url);
        waitUntil([this] { return m_isPlaying && position() > 1; }, "the film does not play");
        waitUntil([this] { return isShown(); }, "the film is not seen");
    }

    /// Whether there is more than one colour.
    bool isShown() const
    {
        const QImage image = m_window.screen()->grabWindow(m_window.winId()).toImage();
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, image.height() / 2) != image.pixel(0, image.height() / 2))
                return true;
        }
        return false;
    }

    /// Seconds, with their fraction.
    double position()
    {
        m_position = -1;
        m_renderer->kelvoProperty(KelvoRenderer::PropertyPosition, this, "takePosition(QString,QVariant)");
        waitUntil([this] { return m_position >= 0; }, "the renderer does not answer");
        return m_position;
    }

public Q_SLOTS:
    void takePosition(const QString &, const QVariant &value) { m_position = value.toDouble(); }

private:
    QWindow m_window;
    KelvoRenderer *m_renderer = nullptr;
    bool m_isPlaying = false;
    double m_position = -1;
};

/// Ten thousand a second, for five seconds, a hundred at a time.
void emitEvents(KelvoRenderer &renderer, int number)
{
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QEventLoop loop;
    int tick = 0;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        for (int i = 0; i < number; ++i)
            Q_EMIT renderer.bufferingInfo(float(i));
        if (++tick == ticks)
            loop.quit();
    });
    timer.start(10);
    loop.exec();
}

int writtenIn(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? int(file.readAll().count("\"bufferingInfo\"")) : 0;
}

void measure(WatchedApplication<QGuiApplication> &application, const QUrl &url, const QString &path)
{
    MinimalRenderer source(QStringLiteral("source"), QStringLiteral("KelvoEventSource"));
    Film film(url);
    application.forget();
    emitEvents(source, 0);
    const double longestAlone = application.longestMilliseconds();

    QFile::remove(path);
    qputenv("KELVO_RECORD", QFile::encodeName(path));
    auto recorder = Recorder::start(
        KelvoRegistry::instance(), {QStringLiteral("benchmark"), QStringLiteral("1"), QStringLiteral("1")});
    KelvoRegistry::instance()->addRenderer(&source);
    const double begin = film.position();
    QElapsedTimer timer;
    timer.start();
    application.forget();
    emitEvents(source, eventsOfTick);
    const double longest = application.longestMilliseconds();
    const double busiest = application.busiestMilliseconds();
    const double played = film.position() - begin;
    const double passed = double(timer.nsecsElapsed()) / 1e9;
    KelvoRegistry::instance()->removeRenderer(&source);
    recorder.reset();
    using Measurement::row;
    row("10,000 events a second while a film is shown: not in the file",
        ticks * eventsOfTick - writtenIn(path), "", "", 0, "0");
    row("- longest event of the GUI loop", longest, "ms", "the film alone", longestAlone, "at most 8 ms");
    row("- most processor time of one event", busiest, "ms", "", 0, "at most 16 ms");
    row("- seconds of the film meanwhile", played, "s", "passed", passed, "1");
    QFile::remove(path);
}
} // namespace

int main(int argc, char *argv[])
try {
    WatchedApplication<QGuiApplication> application(argc, argv);
    if (argc != 3)
        throw std::runtime_error("usage: recording-video-benchmark FILM FOLDER");
    qInstallMessageHandler(discardDebugLines);
    const QUrl url = QUrl::fromLocalFile(QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath());
    measure(application, url, QString::fromLocal8Bit(argv[2]) + QStringLiteral("/recording-video.jsonl"));
    KelvoRegistry::instance()->unloadPlugin("gst-renderer.so");
    return 0;
} catch (const std::exception &exception) {
    std::fprintf(stderr, "recording-video-benchmark: %s\n", exception.what());
    return 1;
}

#include "recording-video-benchmark.moc"
