// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoShared.h"
#include "KelvoTrackerStore.h"

#include <QPointer>
#include <QStandardItemModel>
#include <QTimer>
#include <QUrl>

#include <cstdio>

namespace {
/// A line for the tester: what it reads was said before the program was killed.
void say(const QString &text)
{
    std::printf("kills: %s\n", qUtf8Printable(text));
    std::fflush(stdout);
}

/// The songs to work on, by the variable's URLs, in a circle.
class Songs
{
public:
    explicit Songs(const char *variable)
        : m_urls(qEnvironmentVariable(variable).split(u' ', Qt::SkipEmptyParts))
    {
    }
    bool isEmpty() const { return m_urls.isEmpty(); }
    QString next() { return m_urls.at(m_next++ % m_urls.size()); }

private:
    const QStringList m_urls;
    qsizetype m_next = 0;
};

/// Plays songs of a second on every renderer, each a little longer than what counts as a playing.
class Playing : public QObject
{
public:
    Playing(KelvoRegistry *registry, QObject *parent)
        : QObject(parent)
        , m_songs("KELVO_KILLS_PLAY")
    {
        if (m_songs.isEmpty())
            return;
        const QList<KelvoRenderer *> renderers = registry->renderers();
        for (KelvoRenderer *renderer : renderers)
            play(renderer);
    }

private:
    void play(KelvoRenderer *renderer)
    {
        const QString url = m_songs.next();
        auto *time = new QTimer(renderer);
        time->setSingleShot(true);
        time->setTimerType(Qt::PreciseTimer);
        // What has begun may have been counted; after half of its second it has to be counted next.
        connect(renderer, &KelvoRenderer::stateChanged, time, [time, url](KelvoRenderer::State state) {
            if (state != KelvoRenderer::Playing)
                return;
            say("playing " + url);
            time->start(countedAfter);
        });
        connect(time, &QTimer::timeout, renderer, [this, renderer, time, url] {
            say("played " + url);
            time->deleteLater();
            renderer->stop();
            QTimer::singleShot(pause, this, [this, renderer] { play(renderer); });
        });
        renderer->playUri(QUrl(url));
    }

    static constexpr int countedAfter = 560; // milliseconds
    static constexpr int pause = 30;
    Songs m_songs;
};

/// Sets and takes away marks, one after the other.
class Marking : public QObject
{
public:
    explicit Marking(QObject *parent)
        : QObject(parent)
        , m_songs("KELVO_KILLS_MARK")
    {
        if (m_songs.isEmpty())
            return;
        connect(KelvoTrackerStore::instance(), &KelvoTrackerStore::marked, this, [this](const QUrl &url) {
            say("marked " + url.toString(QUrl::FullyEncoded));
            markNext();
        });
        markNext();
    }

private:
    void markNext()
    {
        const QString url = m_songs.next();
        // Each song comes once more after all others.
        const bool on = !m_on.value(url);
        m_on[url] = on;
        say(QStringLiteral("marking %1 %2").arg(url).arg(int(on)));
        KelvoTrackerStore::instance()->setFavorite(QUrl(url), on);
    }

    Songs m_songs;
    QHash<QString, bool> m_on;
};

/// Publishes playlists, edits them, withdraws one now and then and publishes another one instead.
class Publishing : public QObject
{
public:
    explicit Publishing(QObject *parent)
        : QObject(parent)
    {
        const int count = qEnvironmentVariableIntValue("KELVO_KILLS_PUBLISH");
        for (int number = 0; number < count; ++number)
            publish();
        if (count == 0)
            return;
        connect(&m_time, &QTimer::timeout, this, &Publishing::work);
        m_time.start(pause);
    }

private:
    void publish()
    {
        const QString id = KelvoPlaylist::getNewPlaylistId();
        const QString name = QStringLiteral("Kept %1").arg(++m_names);
        auto *playlist = new KelvoGeneralSourcePlaylist(id, name, QStringLiteral("KelvoTrackerSource"));
        auto *model = new QStandardItemModel(playlist);
        model->setHorizontalHeaderLabels({"id", "title", "url", "duration", "mimeType"});
        playlist->setUnderlyingModel(model);
        append(model);
        say("publishing " + id);
        if (KelvoShared::instance()->publishPlaylist(playlist))
            m_playlists.append(playlist);
    }

    static void append(QStandardItemModel *model)
    {
        for (int row = 0; row < rows; ++row) {
            const QString number = QString::number(model->rowCount());
            model->appendRow({new QStandardItem("urn:song:" + number), new QStandardItem("Song " + number),
                new QStandardItem("file:///music/song" + number + ".mp3"), new QStandardItem(number),
                new QStandardItem("audio/mpeg")});
        }
    }

    void work()
    {
        ++m_turn;
        KelvoGeneralSourcePlaylist *playlist = m_playlists.at(m_turn % m_playlists.size());
        if (m_turn % withdrawEvery == 0) {
            say("withdrawing " + playlist->uuid());
            m_playlists.removeOne(playlist);
            KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
            publish();
        } else if (m_turn % 2 == 0) {
            playlist->sort(KelvoPlaylist::SortKeyDuration,
                m_turn % 4 == 0 ? KelvoPlaylist::DurationDescending : KelvoPlaylist::DurationAscending);
        } else if (playlist->count() > 4 * rows) {
            playlist->removeItems(0, 3 * rows);
        } else {
            append(qobject_cast<QStandardItemModel *>(playlist->underlyingModel()));
        }
    }

    static constexpr int pause = 15; // milliseconds
    static constexpr int rows = 20;
    static constexpr int withdrawEvery = 7;
    QTimer m_time;
    QList<KelvoGeneralSourcePlaylist *> m_playlists;
    int m_names = 0;
    int m_turn = 0;
};
} // namespace

/// A back end that does what a user does, for as long as the program lives: says what it does before, and what the
/// store has confirmed. It begins when everything has been indexed.
///
/// KELVO_KILLS_PLAY and KELVO_KILLS_MARK: URLs of songs, separated by blanks; KELVO_KILLS_PUBLISH: how many playlists.
class KillActor : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "kill-actor.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *registry, QString *) override
    {
        say(QStringLiteral("up"));
        KelvoTrackerStore *store = KelvoTrackerStore::instance();
        connect(store, &KelvoTrackerStore::opened, this,
            [](bool ok) { say(ok ? QStringLiteral("open") : QStringLiteral("not open")); });
        connect(store, &KelvoTrackerStore::rebuilt, this,
            [](const QString &reason) { say("rebuilt " + reason); });
        connect(store, &KelvoTrackerStore::playCounted, this, [](const QUrl &url, int count) {
            say(QStringLiteral("counted %1 %2").arg(url.toString(QUrl::FullyEncoded)).arg(count));
        });
        connect(store, &KelvoTrackerStore::indexed, this, [this, registry](const KelvoIndexReport &report) {
            say(QStringLiteral("indexed %1").arg(report.files));
            if (report.complete && !m_deeds) {
                m_deeds = new QObject(this);
                new Playing(registry, m_deeds);
                new Marking(m_deeds);
                new Publishing(m_deeds);
                say(QStringLiteral("begun"));
            }
        });
        return true;
    }

    void stop() override
    {
        delete m_deeds;
        disconnect();
    }

private:
    QPointer<QObject> m_deeds;
};

#include "KillActor.moc"
