// SPDX-License-Identifier: MIT
#include "StoreOpening.h"

#include "KelvoMessageHandler.h"
#include "Sparql.h"
#include "SparqlLibrary.h"

#include <QThread>

namespace {
// A process that has just begun to make the store needs about this long until it can be read.
constexpr int makingTries = 50;
constexpr int makingTryMilliseconds = 100;

// What every store begins with. Songs always have an artist and an album, if need be these without a name, so that
// the queries need no optional parts.
bool fillIn(StoreConnection &connection, StoreError *error)
{
    const QByteArray text = QByteArray("INSERT DATA { GRAPH <") + Sparql::musicGraph + "> { <"
        + Sparql::unknownArtist + "> a nmm:Artist ; nmm:artistName \"\" . <" + Sparql::unknownAlbum
        + "> a nmm:MusicAlbum ; nie:title \"\" ; nmm:albumArtist <" + Sparql::unknownArtist + "> . <"
        + Sparql::downloadedTag + "> a nao:Tag ; nao:prefLabel \"downloaded\" } }";
    return connection.update({QByteArray("CREATE SILENT GRAPH <") + Sparql::musicGraph + '>'}, error)
        && connection.update({text}, error);
}

std::shared_ptr<StoreConnection> openOwn(const QString &folder, bool existed, StoreError *error)
{
    const bool isNoted = !StoreFolder::hasStore(folder) && StoreFolder::setUnfinished(folder, true);
    auto connection = StoreConnection::open(folder, false, error);
    if (connection && !fillIn(*connection, error)) {
        // It can be read all the same, and has what it began with.
        if (existed && error->mayPass()) {
            qCWarning(lcKelvo).noquote() << "The tracker store can only be read:" << error->message;
            *error = {};
            return connection;
        }
        connection.reset();
        // These updates are right for any sound store, so what refuses them is none. The library's own words for it
        // differ ("SQL logic error" where the file of a graph is missing).
        if (error->kind == StoreError::Other)
            *error = {
                StoreError::Damaged, QStringLiteral("The tracker store is damaged: %1").arg(error->message)};
    }
    // A store that stays noted would be taken away by the next opening.
    if (connection && isNoted && !StoreFolder::setUnfinished(folder, false)) {
        connection.reset();
        *error = {StoreError::NoAccess,
            QStringLiteral("The tracker store cannot be completed: nothing can be removed from %1")
                .arg(folder)};
    }
    return connection;
}

std::shared_ptr<StoreConnection> openForeign(const QString &folder, StoreError *error)
{
    for (int tries = 0; tries < makingTries; ++tries) {
        *error = {};
        if (auto connection = StoreConnection::open(folder, true, error))
            return connection;
        QThread::msleep(makingTryMilliseconds);
    }
    return nullptr;
}

QString moveAside(const QString &folder, const StoreError &why)
{
    const QString place = StoreFolder::moveAside(folder);
    QString text = place.isEmpty()
        ? QStringLiteral("%1. It could not be moved aside.").arg(why.message)
        : QStringLiteral("%1. It was moved to %2 and is being rebuilt.").arg(why.message, place);
    qCWarning(lcKelvo).noquote() << text;
    return text;
}

/// `trouble` is what is known to be wrong with the disk.
void openOrRebuild(const QString &folder, const StoreError &trouble, OpenedStore &store, StoreError *error)
{
    const bool existed = StoreFolder::hasStore(folder);
    const auto open = [&] {
        StoreError defect = StoreFolder::inspect(folder);
        const bool isFound = bool(defect);
        if (!isFound)
            store.connection = openOwn(folder, existed, &defect);
        // There is nothing to be rebuilt.
        if (!isFound && !existed && defect.needsRebuilding())
            defect.kind = StoreError::Other;
        return defect;
    };
    *error = open();
    if (!error->needsRebuilding())
        return;
    if (const StoreError disk = trouble ? trouble : StoreFolder::probe(folder)) {
        *error = disk;
        return;
    }
    // The disk may have failed for a moment only.
    *error = open();
    if (!error->needsRebuilding())
        return;
    store.notice = moveAside(folder, *error);
    *error = {};
    store.connection = openOwn(folder, false, error);
}
} // namespace

QString discardStore(const QString &folder, const StoreError &why)
{
    if (why.kind != StoreError::Gone) {
        const StoreError disk = StoreFolder::probe(folder);
        if (!disk)
            return moveAside(folder, why);
        qCWarning(lcKelvo).noquote() << why.message + u':' << "it stays where it is." << disk.message;
        return disk.message;
    }
    qCWarning(lcKelvo).noquote() << why.message;
    return why.message;
}

OpenedStore openStore(const QString &folder, StoreError *error)
{
    OpenedStore store;
    // Without it nothing can be said of the folder, and nothing done to it.
    if (!SparqlLibrary::load(error))
        return store;
    const StoreError trouble = StoreFolder::prepare(folder);
    // A full disk does not keep a store that is there from being read.
    if (trouble && (trouble.kind != StoreError::NoSpace || !StoreFolder::hasStore(folder))) {
        *error = trouble;
        return store;
    }
    store.lock = StoreFolder::Lock::acquire(folder, error);
    if (*error)
        return store;
    if (!store.lock) {
        qCWarning(lcKelvo) << "The tracker store is in use by another process: it is read, but not updated";
        store.connection = openForeign(folder, error);
        return store;
    }
    StoreFolder::removeUnfinished(folder);
    openOrRebuild(folder, trouble, store, error);
    if (!store.connection && trouble)
        *error = trouble;
    return store;
}
