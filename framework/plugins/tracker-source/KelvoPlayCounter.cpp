// SPDX-License-Identifier: MIT
#include "KelvoPlayCounter.h"

#include "KelvoRegistry.h"
#include "KelvoRenderer.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QUrl>

#include <algorithm>

namespace {
constexpr qint64 enough = 4 * 60 * 1000; // milliseconds

/// The time for which one renderer has been playing its current item.
class PlayingTime : public QObject
{
public:
    PlayingTime(KelvoRenderer *renderer, KelvoPlayCounter *counter)
        : QObject(counter)
        , m_counter(counter)
    {
        m_reached.setSingleShot(true);
        m_reached.setTimerType(Qt::PreciseTimer); // others may be early
        connect(&m_reached, &QTimer::timeout, this, &PlayingTime::count);
        connect(renderer, &KelvoRenderer::stateChanged, this, &PlayingTime::changeState);
        connect(renderer, &KelvoRenderer::mediaChanged, this,
            [this](int, const KelvoContent &content) { begin(content.url); });
        connect(renderer, &KelvoRenderer::metadataChanged, this, &PlayingTime::takeMetadata);
        connect(renderer, &QObject::destroyed, this, &QObject::deleteLater);
    }

private:
    void begin(const QUrl &url)
    {
        // An item that starts is on its way there: one that plays already is only told again.
        const bool goesOn = m_state == KelvoRenderer::Playing || m_state == KelvoRenderer::Paused;
        if (url == m_url && goesOn)
            return;
        // Played again, an item need not say once more how long it is.
        m_needed = url == m_measured ? m_neededOfMeasured : enough;
        m_url = url;
        m_played = 0;
        m_counted = false;
        m_sinceStart.start();
        schedule();
    }

    void changeState(KelvoRenderer::State state)
    {
        if (m_playing)
            m_played += m_sinceStart.elapsed();
        // The next playing of the same item, without a media change, is another one.
        if (state == KelvoRenderer::Stopped) {
            m_played = 0;
            m_counted = false;
        }
        m_state = state;
        m_playing = state == KelvoRenderer::Playing;
        m_sinceStart.start();
        schedule();
    }

    void takeMetadata(const QString &key, const QList<QVariant> &values)
    {
        if (key != QLatin1String("duration"))
            return;
        const int seconds = values.value(0).toInt();
        m_needed = m_neededOfMeasured = KelvoPlayCounter::neededTime(seconds);
        m_measured = m_url;
        schedule();
        if (seconds > 0 && !m_url.isEmpty())
            Q_EMIT m_counter->lengthTold(m_url, seconds);
    }

    void schedule()
    {
        m_reached.stop();
        if (!m_playing || m_counted || m_url.isEmpty())
            return;
        const qint64 left = m_needed - m_played - m_sinceStart.elapsed();
        m_reached.start(int(std::max<qint64>(0, left)));
    }

    void count()
    {
        m_counted = true;
        Q_EMIT m_counter->played(m_url);
    }

    KelvoPlayCounter *const m_counter;
    QTimer m_reached;
    QElapsedTimer m_sinceStart;
    QUrl m_url;
    qint64 m_played = 0; // milliseconds, up to the last change of state
    qint64 m_needed = enough;
    QUrl m_measured; ///< the item that last said how long it is
    qint64 m_neededOfMeasured = enough;
    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    bool m_playing = false;
    bool m_counted = false;
};
} // namespace

KelvoPlayCounter::KelvoPlayCounter(KelvoRegistry *registry, QObject *parent)
    : QObject(parent)
    , m_registry(registry)
{
    connect(registry, &KelvoRegistry::rendererAdded, this,
        [this](const QString &uuid) { follow(m_registry->findRendererByUuid(uuid)); });
    const QList<KelvoRenderer *> renderers = registry->renderers();
    for (KelvoRenderer *renderer : renderers)
        follow(renderer);
}

KelvoPlayCounter::~KelvoPlayCounter() = default;

qint64 KelvoPlayCounter::neededTime(int duration)
{
    return duration > 0 ? std::min(enough, qint64(duration) * 1000 / 2) : enough;
}

void KelvoPlayCounter::follow(KelvoRenderer *renderer)
{
    if (renderer)
        new PlayingTime(renderer, this);
}
