// SPDX-License-Identifier: MIT
// changes-benchmark ITEM
// A list of 10,000 times the item ITEM is played from end to end, as fast as the item can be read (with the output
// "fakesink sync=false"): how long one takes with the change to the next, and whether a change hangs. The reference is a bare
// playbin that is given the same item again at its end.
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "Measurement.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QStandardItemModel>
#include <QTimer>

#include <gst/gst.h>

namespace {
constexpr int changes = 10'000;
constexpr int referenceChanges = 1'000;
constexpr int hung = 5'000; // milliseconds

void discardDebugLines(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

/// Plays the list to its end, or until a change hangs; notes what each item took.
class Listener : public QObject
{
public:
    explicit Listener(KelvoRenderer *renderer)
    {
        m_patience.setSingleShot(true);
        m_patience.setInterval(hung);
        connect(&m_patience, &QTimer::timeout, this, [this] {
            m_isHung = true;
            QCoreApplication::quit();
        });
        connect(renderer, &KelvoRenderer::mediaChanged, this, &Listener::noteChange);
        connect(renderer, &KelvoRenderer::playbackCompleted, qApp, [] { QCoreApplication::quit(); });
        connect(renderer, &KelvoRenderer::error, this, [](const KelvoError &error) {
            std::fprintf(stderr, "error %d: %s\n", int(error.code()), qPrintable(error.message()));
        });
    }
    bool isHung() const { return m_isHung; }
    const std::vector<double> &times() const { return m_times; }

private:
    void noteChange()
    {
        if (m_time.isValid())
            m_times.push_back(milliseconds(m_time));
        m_time.start();
        m_patience.start();
    }

    QTimer m_patience;
    QElapsedTimer m_time;
    std::vector<double> m_times;
    bool m_isHung = false;
};

void fill(QStandardItemModel &model, const QUrl &url)
{
    model.setHorizontalHeaderLabels({"id", "title", "url", "duration", "mimeType"});
    for (int row = 0; row < changes; ++row) {
        const QString number = QString::number(row);
        model.appendRow({new QStandardItem(number), new QStandardItem("Item " + number),
            new QStandardItem(url.toString()), new QStandardItem("1"), new QStandardItem("audio/x-wav")});
    }
}

KelvoRenderer *loadRenderer()
{
    KelvoRegistry *registry = KelvoRegistry::instance();
    QObject::connect(registry, &KelvoRegistry::rendererAdded, qApp, &QCoreApplication::quit);
    registry->loadPlugin("gst-renderer.so");
    QTimer::singleShot(30'000, qApp, [] { QCoreApplication::quit(); });
    if (registry->renderers().isEmpty())
        QCoreApplication::exec();
    return registry->renderers().value(0);
}

/// What an item takes with the change to the next, of a playbin with nothing around it.
double referenceMilliseconds(const QUrl &url)
{
    GstElement *playbin = gst_element_factory_make("playbin", nullptr);
    g_object_set(playbin, "audio-sink", gst_element_factory_make("fakesink", nullptr), "video-sink",
        gst_element_factory_make("fakesink", nullptr), nullptr);
    GstBus *bus = gst_element_get_bus(playbin);
    std::vector<double> times;
    for (int round = 0; round < referenceChanges; ++round) {
        QElapsedTimer timer;
        timer.start();
        gst_element_set_state(playbin, GST_STATE_READY);
        g_object_set(playbin, "uri", url.toEncoded().constData(), nullptr);
        gst_element_set_state(playbin, GST_STATE_PLAYING);
        gst_message_unref(gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE, GST_MESSAGE_EOS));
        times.push_back(milliseconds(timer));
    }
    gst_element_set_state(playbin, GST_STATE_NULL);
    gst_object_unref(bus);
    gst_object_unref(playbin);
    return Measurement::median(times);
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    gst_init(&argc, &argv);
    qInstallMessageHandler(discardDebugLines);
    KelvoRenderer *renderer = argc == 2 ? loadRenderer() : nullptr;
    if (!renderer)
        return 1;
    const QUrl url = QUrl::fromLocalFile(QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath());
    KelvoGeneralSourcePlaylist playlist("changes", "Changes", "KelvoTrackerSource");
    QStandardItemModel model;
    fill(model, url);
    playlist.setUnderlyingModel(&model);
    Listener listener(renderer);
    renderer->assignPlaylist(&playlist);
    renderer->play();
    QCoreApplication::exec();
    using Measurement::row;
    row("10,000 items one after the other: changes that hang", listener.isHung(), "", "", 0, "0");
    row("- items played to their end", double(listener.times().size()) + 1, "");
    row("- an item with its change, median", Measurement::median(listener.times()), "ms", "bare playbin",
        referenceMilliseconds(url), "reported");
    row("- longest", Measurement::maximum(listener.times()), "ms", "", 0, "reported");
    return 0;
}
