// SPDX-License-Identifier: MIT
// Opens the store with the product's own plug-in, waits until everything has been indexed, and prints as one JSON
// object what the store then holds. Where that does not work it says why and ends with 1.
#include "KelvoRegistry.h"
#include "KelvoTrackerModelFactory.h"
#include "KelvoTrackerStore.h"
#include "QSparqlConnection.h"
#include "QSparqlQueryModel.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {
using Type = KelvoTrackerModel::QueryType;
constexpr int patience = 60'000; // milliseconds

[[noreturn]] void fail(const QString &why)
{
    std::fprintf(stderr, "store-rows: %s\n", qUtf8Printable(why));
    std::_Exit(1);
}

QJsonArray rowsOf(const QAbstractItemModel &model)
{
    QJsonArray rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        QJsonObject values;
        for (int column = 0; column < model.columnCount(); ++column)
            values.insert(model.headerData(column, Qt::Horizontal).toString(),
                model.index(row, column).data().toJsonValue());
        rows.append(values);
    }
    return rows;
}

QJsonArray resultOf(Type type, int id = 0)
{
    KelvoTrackerModelFactory factory(QString(), QString(), 0);
    const std::unique_ptr<KelvoTrackerModel> model(factory.getModel(type, 0, id));
    QEventLoop loop;
    QObject::connect(model.get(), &KelvoTrackerModel::completed, &loop, &QEventLoop::quit);
    QObject::connect(model.get(), &KelvoTrackerModel::error, &loop, fail);
    loop.exec();
    return rowsOf(*model);
}

QJsonArray answerTo(const QString &query)
{
    QSparqlConnection connection(QStringLiteral("QTRACKER"));
    QSparqlQueryModel model;
    QEventLoop loop;
    QObject::connect(&model, &QSparqlQueryModel::finished, &loop, &QEventLoop::quit);
    QObject::connect(&model, &QSparqlQueryModel::error, &loop, fail);
    model.setQuery(QSparqlQuery(query), connection);
    loop.exec();
    return rowsOf(model);
}

QJsonArray playlists()
{
    QJsonArray lists = resultOf(Type::AllPlaylists);
    for (auto &&list : lists) {
        QJsonObject with = list.toObject();
        with.insert(QStringLiteral("entries"),
            resultOf(Type::SongsOfPlaylist, with.value(QStringLiteral("playlistId")).toInt()));
        list = with;
    }
    return lists;
}

/// What has no place in any result, whatever is in the folder.
QJsonObject leftovers()
{
    const auto count = [](const char *pattern) {
        return answerTo(QStringLiteral("SELECT (COUNT(*) AS ?n) { %1 }").arg(QLatin1String(pattern)));
    };
    return {
        {QStringLiteral("songs without a place"),
            count("GRAPH <urn:kelvo:music> { ?x a nmm:MusicPiece . FILTER NOT EXISTS { ?x nie:url ?url } }")},
        {QStringLiteral("songs that miss something"),
            count("GRAPH <urn:kelvo:music> { ?x nie:usageCounter ?n . FILTER NOT EXISTS { ?x nie:title ?t } "
                  "}")},
        {QStringLiteral("videos without a place"),
            count("?x a nmm:Video . FILTER NOT EXISTS { ?x nie:url ?url }")},
        {QStringLiteral("entries of no playlist"),
            count("GRAPH <urn:kelvo:music> { ?x a nfo:MediaFileListEntry . FILTER NOT EXISTS { ?list "
                  "nfo:hasMediaFileListEntry ?x } }")},
        {QStringLiteral("albums without songs"),
            count("GRAPH <urn:kelvo:music> { ?x a nmm:MusicAlbum . FILTER (?x != <urn:kelvo:album:unknown>) "
                  "FILTER NOT "
                  "EXISTS { ?song nmm:musicAlbum ?x } }")},
    };
}

void print()
{
    const QJsonObject all{
        {QStringLiteral("songs"), resultOf(Type::AllSongs)},
        {QStringLiteral("albums"), resultOf(Type::AllAlbums)},
        {QStringLiteral("artists"), resultOf(Type::AllArtists)},
        {QStringLiteral("favorites"), resultOf(Type::FavoriteSongs)},
        {QStringLiteral("playlists"), playlists()},
        {QStringLiteral("videos"),
            answerTo(QStringLiteral(
                "SELECT ?video ?url ?name { ?video a nmm:Video . OPTIONAL { ?video nie:url ?url } "
                "OPTIONAL { ?video nfo:fileName ?name } }"))},
        {QStringLiteral("remembered"),
            answerTo(QStringLiteral(
                "SELECT ?url ?n { GRAPH <urn:kelvo:music> { ?x a nfo:Bookmark ; nie:title ?url ; "
                "nie:usageCounter ?n } }"))},
        {QStringLiteral("leftovers"), leftovers()},
    };
    std::printf("%s\n", QJsonDocument(all).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

/// Loads the plug-in and waits until it has looked through everything.
void index(KelvoRegistry *registry)
{
    KelvoTrackerStore *store = KelvoTrackerStore::instance();
    QEventLoop loop;
    QObject::connect(store, &KelvoTrackerStore::rebuilt, &loop, fail);
    QObject::connect(store, &KelvoTrackerStore::opened, &loop, [store](bool ok) {
        if (!ok || store->isReadOnly())
            fail("the store does not open: " + store->errorText());
    });
    QObject::connect(store, &KelvoTrackerStore::indexed, &loop, [&loop](const KelvoIndexReport &report) {
        if (report.complete)
            loop.quit();
    });
    registry->loadPlugin(QStringLiteral("tracker-source.so"));
    loop.exec();
}

void close(KelvoRegistry *registry)
{
    QEventLoop loop;
    QObject::connect(KelvoTrackerStore::instance(), &KelvoTrackerStore::closed, &loop, &QEventLoop::quit);
    registry->unloadPlugin(QStringLiteral("tracker-source.so"));
    loop.exec();
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QTimer::singleShot(patience, [] { fail(QStringLiteral("not done in a minute")); });
    KelvoRegistry *registry = KelvoRegistry::instance();
    index(registry);
    print();
    close(registry);
    return 0;
}
