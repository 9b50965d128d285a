// SPDX-License-Identifier: MIT
#include "KelvoTrackerStore.h"

#include "KelvoMessageHandler.h"
#include "Mailbox.h"
#include "WorkerPool.h"
#include "remote/RemoteAnswers.h"
#include "store/FileUri.h"
#include "store/KeptRows.h"
#include "store/OpeningGate.h"
#include "store/Sparql.h"
#include "store/StoreIndexing.h"
#include "store/StoreOpening.h"
#include "store/StoreSession.h"
#include "store/TrackerThreads.h"
#include "store/UpdateQueue.h"

#include <QCoreApplication>
#include <QSet>
#include <QTimer>

#include <atomic>
#include <chrono>

using namespace std::chrono_literals;

struct KelvoTrackerStore::Private
{
    explicit Private(KelvoTrackerStore *store)
        : mailbox(std::make_shared<Mailbox>(store))
    {
    }

    std::shared_ptr<Mailbox> mailbox;
    /// One thread: openings, closings and small updates, in the order asked for.
    WorkerPool operations{QStringLiteral("kelvo-tracker-store"), 1};
    UpdateQueue updates; ///< of that thread
    bool willTryAgain = false;
    bool wasDoubted = false; ///< opened again because it seemed damaged
    QSet<QObject *> users;
    State state = Closed;
    QString error;
    bool readOnly = false;
    /// Counts openings, so that what comes late from an earlier one is told from news. Read on any thread.
    std::atomic<quint64> attempt = 0;
    std::shared_ptr<StoreSession> session;
    std::shared_ptr<const StoreIndexing> indexing; ///< null: nothing is to be indexed
    std::shared_ptr<StoreIndexer> indexer;
    std::shared_ptr<StoreSession> indexed; ///< what the indexer works on
};

namespace {
constexpr auto untilNextTry = 5s;

// Operations thread: opens the store for the session and says how that ended.
struct OpeningEnd
{
    int state = KelvoTrackerStore::Failed;
    QString text; // the notice of a rebuilt store, or the error
    bool readOnly = false;
    bool mayPass = false; // what it failed by
};

OpeningEnd openFor(StoreSession &session, const QString &folder, const QString &notice)
{
    StoreError error;
    OpenedStore store = openStore(folder, &error);
    if (!store.connection) {
        session.failed(error);
        return {KelvoTrackerStore::Failed, error.message, false, error.mayPass()};
    }
    const QString text = notice.isEmpty() ? store.notice : notice;
    const bool readOnly = !store.lock;
    session.setNotice(text);
    session.opened(folder, std::move(store.connection), std::move(store.lock));
    return {KelvoTrackerStore::Open, text, readOnly, false};
}

// The song with the URL; empty when there is none.
QByteArray songAt(const StoreConnection &connection, const QByteArray &url, StoreError *error)
{
    return connection.selectOne(QByteArray("SELECT ?song { GRAPH <") + Sparql::musicGraph
            + "> { ?song nie:url " + Sparql::literal(url) + " ; a nmm:MusicPiece } }",
        error);
}

// Counts one more; the new count, 0 when there is no such song.
int addPlay(StoreConnection &connection, const QByteArray &url, const QByteArray &time, StoreError *error)
{
    const QByteArray song = songAt(connection, url, error);
    if (song.isEmpty())
        return 0;
    const QByteArray graph = QByteArray("{ GRAPH <") + Sparql::musicGraph + "> { " + Sparql::iri(song);
    const int count
        = connection.selectOne("SELECT ?n " + graph + " nie:usageCounter ?n } }", error).toInt() + 1;
    const QByteArray text = "INSERT OR REPLACE " + graph + " nie:usageCounter " + QByteArray::number(count)
        + " ; nie:contentAccessed " + time + " } }";
    return connection.update({text, KeptRows::noteAsPlayed(Sparql::iri(song))}, error) ? count : 0;
}

// False when nothing with the URL has another length, or a surer one.
bool setLength(StoreConnection &connection, const StoreIndexing *indexing, const QUrl &url, int seconds,
    StoreError *error)
{
    const QByteArray isOther = " ; nie:url " + Sparql::literal(FileUri::canonical(url.toEncoded()))
        + " OPTIONAL { ?x nfo:duration ?length } FILTER (!BOUND(?length) || ?length != "
        + QByteArray::number(seconds) + ") ";
    const QByteArray inMusic = QByteArray("{ GRAPH <") + Sparql::musicGraph + "> { ";
    const QByteArray song
        = connection.selectOne("SELECT ?x " + inMusic + "?x a nmm:MusicPiece" + isOther + "} }", error);
    const QByteArray video = song.isEmpty()
        ? connection.selectOne("SELECT ?x { ?x a nmm:Video" + isOther + "}", error)
        : QByteArray();
    if (song.isEmpty() && video.isEmpty())
        return false;
    if (indexing && indexing->isLengthCounted(url))
        return false;
    const QByteArray length = " nfo:duration " + QByteArray::number(seconds);
    if (song.isEmpty())
        return connection.update({"INSERT OR REPLACE { " + Sparql::iri(video) + length + " }"}, error);
    const QByteArray name = Sparql::iri(song);
    const QByteArray album
        = connection.selectOne("SELECT ?x " + inMusic + name + " nmm:musicAlbum ?x } }", error);
    return !*error
        && connection.update({"INSERT OR REPLACE " + inMusic + name + length + " } }",
                                 KeptRows::renewSong(name), KeptRows::renewAlbum(Sparql::iri(album))},
            error);
}

bool setMark(StoreConnection &connection, const QByteArray &url, const char *tag, bool on, StoreError *error)
{
    const QByteArray song = songAt(connection, url, error);
    if (song.isEmpty())
        return false;
    return connection.update(
        {QByteArray(on ? "INSERT DATA" : "DELETE DATA") + " { GRAPH <" + Sparql::musicGraph + "> { "
            + Sparql::iri(song) + " nao:hasTag <" + tag + "> } }"},
        error);
}

} // namespace

KelvoTrackerStore *KelvoTrackerStore::instance()
{
    static KelvoTrackerStore store;
    return &store;
}

KelvoTrackerStore::KelvoTrackerStore()
    : d(std::make_unique<Private>(this))
{
    qRegisterMetaType<KelvoIndexReport>();
    // Makes them, so that they are destroyed after this object.
    TrackerThreads::waitForAll();
    OpeningGate::instance();
    // The threads end while the application object still stands.
    qAddPostRoutine([] { instance()->shutDown(); });
}

KelvoTrackerStore::~KelvoTrackerStore()
{
    d->mailbox->close();
    shutDown();
}

void KelvoTrackerStore::shutDown()
{
    OpeningGate::instance().open();
    d->users.clear();
    d->indexing.reset();
    updateIndexer();
    close();
    RemoteAnswers::cancelAll();
    if (d->operations.waitForDone())
        d->updates.discard();
    TrackerThreads::waitForAll();
    d->indexer.reset();
    d->indexed.reset();
}

void KelvoTrackerStore::hold(QObject *user)
{
    if (!d->users.contains(user)) {
        d->users.insert(user);
        connect(user, &QObject::destroyed, this, &KelvoTrackerStore::release);
    }
    if (d->state == Closed || d->state == Failed)
        open();
    else if (d->state == Open)
        d->mailbox->post([this] { Q_EMIT opened(d->state == Open); });
}

void KelvoTrackerStore::release(QObject *user)
{
    if (!d->users.remove(user))
        return;
    disconnect(user, &QObject::destroyed, this, &KelvoTrackerStore::release);
    // Later, so that a user that replaces another one finds the store open.
    d->mailbox->post([this] {
        if (d->users.isEmpty())
            close();
    });
}

KelvoTrackerStore::State KelvoTrackerStore::state() const
{
    return d->state;
}

QString KelvoTrackerStore::errorText() const
{
    return d->error;
}

bool KelvoTrackerStore::isReadOnly() const
{
    return d->state == Open && d->readOnly;
}

QString KelvoTrackerStore::folder() const
{
    return StoreFolder::defaultPath();
}

std::shared_ptr<StoreSession> KelvoTrackerStore::session() const
{
    if (d->session)
        return d->session;
    auto none = std::make_shared<StoreSession>();
    none->failed({StoreError::Closed, QStringLiteral("The tracker store is not open")});
    return none;
}

void KelvoTrackerStore::open()
{
    d->state = Opening;
    d->session = std::make_shared<StoreSession>();
    const quint64 attempt = ++d->attempt;
    d->session->setDamageHandler([this, attempt, mailbox = d->mailbox](const StoreError &why) {
        mailbox->post([this, attempt, why] { rebuild(attempt, why); });
    });
    d->operations.start(
        [this, attempt, session = d->session, mailbox = d->mailbox, path = StoreFolder::defaultPath()] {
            OpeningGate::instance().wait();
            // Closed again before its turn came: those asked for later, and the end of the program, wait for it.
            if (attempt != d->attempt) {
                session->failed({StoreError::Closed, QStringLiteral("The tracker store is closed")});
                return;
            }
            const OpeningEnd end = openFor(*session, path, {});
            mailbox->post([=, this] {
                finishOpening(attempt, end.state, end.text, end.readOnly);
                if (end.mayPass)
                    planNextTry();
            });
        });
}

void KelvoTrackerStore::finishOpening(quint64 attempt, int state, const QString &text, bool readOnly)
{
    if (attempt != d->attempt || d->state != Opening)
        return;
    d->state = State(state);
    d->readOnly = readOnly;
    if (state == Failed) {
        if (text != d->error) // not each time that it is tried again
            qCWarning(lcKelvo).noquote() << "The tracker store cannot be used:" << text;
        d->error = text;
    } else {
        d->error.clear();
        qCDebug(lcKelvo).noquote() << "The tracker store is open:" << StoreFolder::defaultPath();
        updateIndexer();
    }
    Q_EMIT opened(state == Open);
    if (state == Open && !text.isEmpty())
        Q_EMIT rebuilt(text);
}

// The store's damage showed while it was in use: everything in it ends, and a new one takes its place.
void KelvoTrackerStore::rebuild(quint64 attempt, const StoreError &why)
{
    if (attempt != d->attempt || d->state != Open)
        return;
    const std::shared_ptr<StoreSession> old = d->session;
    if (d->indexer)
        d->indexer->stop();
    const bool own = !isReadOnly();
    // One reading that went wrong, of a disk that works again by now, is no damage yet.
    const bool isSure = why.kind != StoreError::Damaged || std::exchange(d->wasDoubted, true);
    d->state = Opening;
    d->session = std::make_shared<StoreSession>();
    const quint64 next = ++d->attempt;
    d->session->setDamageHandler([this, next, mailbox = d->mailbox](const StoreError &again) {
        mailbox->post([this, next, again] { rebuild(next, again); });
    });
    d->operations.start(
        [=, this, session = d->session, mailbox = d->mailbox, path = StoreFolder::defaultPath()] {
            old->close();
            const QString notice = !own ? why.message : isSure ? discardStore(path, why) : QString();
            const OpeningEnd end = openFor(*session, path, notice);
            mailbox->post([=, this] {
                finishOpening(next, end.state, end.text, end.readOnly);
                if (end.mayPass)
                    planNextTry();
            });
        });
}

void KelvoTrackerStore::close()
{
    if (!d->session)
        return;
    if (d->indexer)
        d->indexer->stop();
    d->operations.start([this, session = std::exchange(d->session, nullptr), mailbox = d->mailbox] {
        d->updates.runWaiting(session);
        session->close();
        mailbox->post([this] {
            if (d->state == Closed)
                Q_EMIT closed();
        });
    });
    ++d->attempt;
    d->state = Closed;
}

void KelvoTrackerStore::startIndexing(std::shared_ptr<const StoreIndexing> indexing)
{
    d->indexing = std::move(indexing);
    updateIndexer();
}

void KelvoTrackerStore::stopIndexing()
{
    d->indexing.reset();
    updateIndexer();
}

void KelvoTrackerStore::updateIndexer()
{
    if (d->indexer && (!d->indexing || d->indexed != d->session))
        d->indexer->stop();
    const bool wanted = d->indexing && d->state == Open && !isReadOnly();
    if (!wanted || (d->indexer && d->indexer->isRunning()))
        return;
    const auto report = [this, mailbox = d->mailbox](const KelvoIndexReport &pass) {
        mailbox->post([this, pass] { Q_EMIT indexed(pass); });
    };
    d->indexer = d->indexing->start(d->session, report, d->indexer);
    d->indexed = d->session;
}

void KelvoTrackerStore::countPlay(const QUrl &url)
{
    update([this, url, time = Sparql::now(), mailbox = d->mailbox](
               StoreConnection &connection, StoreError *error) {
        if (const int count = addPlay(connection, FileUri::canonical(url.toEncoded()), time, error))
            mailbox->post([this, url, count] { Q_EMIT playCounted(url, count); });
    });
}

void KelvoTrackerStore::correctLength(const QUrl &url, int seconds)
{
    update([this, url, seconds, indexing = d->indexing, mailbox = d->mailbox](
               StoreConnection &connection, StoreError *error) {
        if (setLength(connection, indexing.get(), url, seconds, error))
            mailbox->post([this, url, seconds] { Q_EMIT lengthCorrected(url, seconds); });
    });
}

void KelvoTrackerStore::setFavorite(const QUrl &url, bool favorite)
{
    mark(url, Sparql::favoriteTag, favorite);
}

void KelvoTrackerStore::setDownloaded(const QUrl &url, bool downloaded)
{
    mark(url, Sparql::downloadedTag, downloaded);
}

void KelvoTrackerStore::mark(const QUrl &url, const char *tag, bool on)
{
    update([this, url, tag, on, mailbox = d->mailbox](StoreConnection &connection, StoreError *error) {
        if (setMark(connection, FileUri::canonical(url.toEncoded()), tag, on, error))
            mailbox->post([this, url] { Q_EMIT marked(url); });
    });
}

void KelvoTrackerStore::update(std::function<void(StoreConnection &, StoreError *)> change)
{
    d->operations.start(
        [this, session = session(), mailbox = d->mailbox, change = std::move(change)]() mutable {
            d->updates.run(session, std::move(change));
            if (!d->updates.isEmpty())
                mailbox->post([this] { planNextTry(); });
        });
}

// What waits is tried again even when nothing else is to be written.
void KelvoTrackerStore::planNextTry()
{
    if (std::exchange(d->willTryAgain, true))
        return;
    QTimer::singleShot(untilNextTry, this, [this] {
        d->willTryAgain = false;
        if (d->state == Failed && !d->users.isEmpty())
            open();
        d->operations.start([this, session = session(), mailbox = d->mailbox] {
            d->updates.runWaiting(session);
            if (!d->updates.isEmpty())
                mailbox->post([this] { planNextTry(); });
        });
    });
}
