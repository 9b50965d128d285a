// SPDX-License-Identifier: MIT
#include "StoreOpening.h"

#include "KelvoMessageHandler.h"
#include "Sparql.h"

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

std::shared_ptr<StoreConnection> openOwn(const QString &folder, StoreError *error)
{
    auto connection = StoreConnection::open(folder, false, error);
    if (connection && !fillIn(*connection, error)) {
        connection.reset();
        // These updates are right for any sound store, so what refuses them is none. The library's own words for it
        // differ ("SQL logic error" where the file of a graph is missing).
        if (error->kind == StoreError::Other)
            *error = {
                StoreError::Damaged, QStringLiteral("The tracker store is damaged: %1").arg(error->message)};
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
} // namespace

QString discardStore(const QString &folder, const StoreError &why)
{
    QString text = why.message;
    if (why.kind != StoreError::Gone) {
        const QString place = StoreFolder::moveAside(folder);
        text = place.isEmpty()
            ? QStringLiteral("%1. It could not be moved aside.").arg(why.message)
            : QStringLiteral("%1. It was moved to %2 and is being rebuilt.").arg(why.message, place);
    }
    qCWarning(lcKelvo).noquote() << text;
    return text;
}

OpenedStore openStore(const QString &folder, StoreError *error)
{
    OpenedStore store;
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
    if (const StoreError defect = StoreFolder::inspect(folder); defect.needsRebuilding())
        store.notice = discardStore(folder, defect);
    const bool existed = StoreFolder::hasStore(folder);
    store.connection = openOwn(folder, error);
    if (!store.connection && existed && error->needsRebuilding() && trouble.kind != StoreError::NoSpace) {
        store.notice = discardStore(folder, *error);
        *error = {};
        store.connection = openOwn(folder, error);
    }
    if (!store.connection && trouble)
        *error = trouble;
    return store;
}
