// SPDX-License-Identifier: MIT
#include "KelvoTrackerModel.h"
#include "LogRecorder.h"
#include "TestGroup.h"
#include "TrackerIndexCase.h"
#include "index/StoreWriter.h"
#include "query/QueryCatalog.h"
#include "store/KeptRows.h"
#include "store/Sparql.h"
#include "store/StoreSession.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <functional>

/// What is kept with songs, albums and artists for queries is what those queries find without it, whatever has changed.
class TrackerKeptTest : public TrackerIndexCase
{
    Q_OBJECT

    using Row = QList<QVariant>;
    /// How much is kept.
    enum State { Unkept, Untidy, Tidy };

    static constexpr Type PlainTypes[] = {Type::AllSongs, Type::RecentlyAddedSongs, Type::RecentlyPlayedSongs,
        Type::MostPlayedSongs, Type::FavoriteSongs, Type::NeverPlayedSongs, Type::DownloadedSongs,
        Type::AllAlbums, Type::AllArtists, Type::AllPlaylists};

    bool inStore(const std::function<bool(StoreConnection &, StoreError *)> &steps)
    {
        StoreError error;
        const StoreSession::Entry entry = store().session()->enter([] {}, &error);
        const bool done = entry && steps(entry.connection(), &error) && !error;
        if (!done)
            qWarning() << error.message;
        return done;
    }

    bool write(const std::function<bool(StoreWriter &, StoreError *)> &steps)
    {
        return inStore([&](StoreConnection &connection, StoreError *error) {
            StoreWriter writer(connection);
            return steps(writer, error);
        });
    }

    bool add(const std::vector<MediaItem> &items)
    {
        return write([&](StoreWriter &writer, StoreError *error) {
            std::vector<bool> written;
            return writer.write(items, &written, error);
        });
    }

    bool tidyUp()
    {
        return write([](StoreWriter &writer, StoreError *error) { return writer.tidyUp(error); });
    }

    bool isTidy()
    {
        QByteArray state;
        return inStore([&](StoreConnection &connection, StoreError *error) {
            state = connection.selectOne(KeptRows::tidyState(), error);
            return true;
        }) && !state.isEmpty();
    }

    QList<Row> rows(const QByteArray &text, const CatalogQuery &query, const std::vector<CellSource> &sources,
        const QByteArray &subject)
    {
        RowBlock block(query.types());
        inStore([&](StoreConnection &connection, StoreError *error) {
            StoreConnection::Bindings bindings;
            if (query.hasSubject)
                bindings.emplace_back("uri", subject);
            StoreCursor cursor = connection.select(text, bindings, nullptr, error);
            RowReader reader(cursor, sources);
            while (cursor && cursor.next(error)) {
                reader.readRow();
                block.append(reader);
            }
            return true;
        });
        QList<Row> all;
        for (int row = 0; row < block.rowCount(); ++row) {
            all.append(Row());
            for (int column = 0; column < int(query.columns.size()); ++column)
                all.last().append(block.value(row, column));
        }
        return all;
    }

    QList<Row> plain(Type type, const QByteArray &subject = {})
    {
        const CatalogQuery query = CatalogQuery::find(type);
        return rows(query.text, query, {}, subject);
    }
    QList<Row> kept(Type type, const QByteArray &subject = {})
    {
        const CatalogQuery query = CatalogQuery::find(type);
        return rows(query.shortcut, query, query.sources(), subject);
    }
    /// As the console gets them. What has no name gets one there.
    QList<Row> shown(Type type)
    {
        const auto model = result(type);
        QList<Row> all;
        for (int row = 0; model && row < model->rowCount(); ++row) {
            all.append(Row());
            for (int column = 0; column < model->columnCount(); ++column) {
                const QString text = model->index(row, column).data().toString();
                all.last().append(text == "No album" || text == "No artist"
                        ? QVariant(QString())
                        : model->index(row, column).data());
            }
        }
        return all;
    }

    QList<QByteArray> resources(const QByteArray &type)
    {
        QList<QByteArray> all;
        inStore([&](StoreConnection &connection, StoreError *error) {
            StoreCursor cursor = connection.select(
                "SELECT ?x { GRAPH <urn:kelvo:music> { ?x a " + type + " } }", {}, nullptr, error);
            while (cursor && cursor.next(error))
                all.append(cursor.text(0));
            return true;
        });
        return all;
    }

    static QByteArray differenceOf(const QList<Row> &rows, const QList<Row> &expected)
    {
        if (rows == expected)
            return {};
        for (qsizetype row = 0; row < std::min(rows.size(), expected.size()); ++row) {
            if (rows[row] == expected[row])
                continue;
            QString text;
            for (qsizetype column = 0; column < rows[row].size(); ++column) {
                if (rows[row][column] != expected[row][column])
                    QDebug(&text) << "row" << row << "column" << column << rows[row][column] << "not"
                                  << expected[row][column];
            }
            return text.toUtf8();
        }
        return QByteArray::number(rows.size()) + " rows instead of " + QByteArray::number(expected.size());
    }

    /// The first query whose rows differ; empty when none does.
    QByteArray difference(State state)
    {
        for (const Type type : PlainTypes) {
            const QList<Row> expected = plain(type);
            if (const QByteArray rows = differenceOf(shown(type), expected); !rows.isEmpty())
                return "shown " + QByteArray::number(type) + ": " + rows;
            // These need no sums.
            const bool isSong = type == Type::AllSongs || type == Type::NeverPlayedSongs
                || type == Type::FavoriteSongs || type == Type::DownloadedSongs;
            if (state == Unkept || (state == Untidy && !isSong))
                continue;
            if (const QByteArray rows = differenceOf(kept(type), expected); !rows.isEmpty())
                return "kept " + QByteArray::number(type) + ": " + rows;
        }
        if (state != Tidy)
            return {};
        const std::pair<Type, QByteArray> extensions[]
            = {{Type::SongsOfAlbum, "nmm:MusicAlbum"}, {Type::AlbumsOfArtist, "nmm:Artist"},
                {Type::SongsOfPlaylist, "nmm:Playlist"}, {Type::RelatedSongs, "nmm:MusicPiece"}};
        for (const auto &[type, subjects] : extensions) {
            for (const QByteArray &subject : resources(subjects).mid(0, 12)) {
                if (const QByteArray rows = differenceOf(kept(type, subject), plain(type, subject));
                    !rows.isEmpty())
                    return "kept " + QByteArray::number(type) + " of " + subject + ": " + rows;
            }
        }
        return {};
    }

    static MediaItem playlist(const std::vector<MediaItem> &songs)
    {
        MediaItem item;
        item.kind = MediaKind::Playlist;
        item.number = 1;
        item.path = "/music/list.m3u";
        item.uri = "file:///music/list.m3u";
        item.title = "A list";
        for (const MediaItem &song : songs)
            item.entries.push_back({song.uri, "entry of " + song.title});
        item.entries.push_back({item.uri, "the list itself"});
        item.entries.push_back({"http://host/stream", "a stream"});
        return item;
    }

    static std::vector<MediaItem> variedSongs(int count)
    {
        std::vector<MediaItem> songs;
        for (int i = 0; i < count; ++i) {
            MediaItem item = song(i);
            item.tags.albumArtist = i % 2 ? "Various" : ""; // two albums of one name
            item.tags.disc = i % 4;
            item.tags.year = i % 5 ? 1990 + i : 0;
            item.isDownloaded = i % 6 == 0;
            if (i % 7 == 0)
                item.tags = {};
            if (i % 3 == 0)
                item.tags.artists.append("Guest \"\\ " + QString::number(i % 2));
            songs.push_back(item);
        }
        return songs;
    }

    bool play(int number, int times = 1)
    {
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        for (int i = 0; i < times; ++i)
            store().countPlay(QUrl(QStringLiteral("file:///music/%1.mp3").arg(number)));
        return QTest::qWaitFor([&] { return counted.size() == times; }, Patience);
    }

    bool favor(int number, bool on = true)
    {
        QSignalSpy marked(&store(), &KelvoTrackerStore::marked);
        store().setFavorite(QUrl(QStringLiteral("file:///music/%1.mp3").arg(number)), on);
        return marked.wait(Patience);
    }

    bool lengthen(int number, int seconds)
    {
        QSignalSpy corrected(&store(), &KelvoTrackerStore::lengthCorrected);
        store().correctLength(QUrl(QStringLiteral("file:///music/%1.mp3").arg(number)), seconds);
        return corrected.wait(Patience);
    }

    /// A store as an earlier program has left it: nothing is kept for queries.
    bool makeOld(int count = 60)
    {
        std::vector<MediaItem> items = variedSongs(count);
        items.push_back(playlist(items));
        return openStore() && add(items) && tidyUp() && play(5, 3) && play(8) && favor(8) && favor(9)
            && inStore([](StoreConnection &connection, StoreError *error) {
                   return connection.update(
                       {"WITH <urn:kelvo:music> DELETE { ?x nie:generator ?row } WHERE { ?x nie:generator "
                        "?row }",
                           "WITH <urn:kelvo:music> DELETE { ?x nie:hasLogicalPart ?y } WHERE { ?x "
                           "nie:hasLogicalPart "
                           "?y }",
                           "DELETE DATA { GRAPH <urn:kelvo:music> { <urn:kelvo:untidy> a rdfs:Resource } }"},
                       error);
               })
            && !isTidy();
    }

    static MediaItem anyItem(QRandomGenerator &random, int number, bool isNew)
    {
        MediaItem item = song(number);
        item.isNew = isNew;
        item.title = QStringLiteral("Title %1 %2").arg(random.bounded(5)).arg(number);
        item.tags.artists = {QStringLiteral("Artist %1").arg(random.bounded(4))};
        if (random.bounded(3) == 0)
            item.tags.artists.append(QStringLiteral("Artist %1").arg(random.bounded(6)));
        item.tags.album = random.bounded(5) ? QStringLiteral("Album %1").arg(random.bounded(4)) : QString();
        item.tags.albumArtist
            = random.bounded(2) ? QString() : QStringLiteral("Artist %1").arg(random.bounded(6));
        item.tags.genre = random.bounded(2) ? QStringLiteral("Jazz") : QString();
        item.tags.year = random.bounded(2) ? 1900 + random.bounded(100) : 0;
        item.tags.disc = random.bounded(3);
        item.seconds = random.bounded(400);
        return item;
    }

private Q_SLOTS:
    void everyQueryFindsTheSame()
    {
        LogRecorder log;
        std::vector<MediaItem> items = variedSongs(60);
        items.push_back(playlist(items));
        QVERIFY(openStore());
        QVERIFY(add(items));
        // Nothing took a longer way.
        QVERIFY(log.warnings().isEmpty());
        QCOMPARE(difference(Unkept), QByteArray());
        QVERIFY(kept(Type::AllAlbums).isEmpty()); // nothing is summed up yet
        QVERIFY(tidyUp());
        QVERIFY(isTidy());
        QVERIFY(play(3, 2));
        QVERIFY(favor(4));
        QCOMPARE(difference(Tidy), QByteArray());
        QCOMPARE(kept(Type::AllSongs).size(), 60);
        QCOMPARE(kept(Type::MostPlayedSongs).size(), 1);
        QVERIFY(kept(Type::AllAlbums).size() > 3);
        QCOMPARE(kept(Type::SongsOfPlaylist, "urn:kelvo:playlist:1").size(), 62);
    }

    void chartsKeepWhatIsShown()
    {
        std::vector<MediaItem> items;
        items.reserve(620);
        for (int i = 0; i < 620; ++i)
            items.push_back(song(i));
        QVERIFY(openStore());
        QVERIFY(add(items));
        QVERIFY(inStore([](StoreConnection &connection, StoreError *error) {
            std::vector<QByteArray> plays;
            plays.reserve(600);
            for (int i = 0; i < 600; ++i)
                plays.push_back("INSERT OR REPLACE { GRAPH <urn:kelvo:music> { <"
                    + resourceIri(MediaKind::Song, quint64(i) + 1) + "> nie:usageCounter "
                    + QByteArray::number(i % 11) + " ; nie:contentAccessed " + Sparql::now() + " } }");
            return connection.update(plays, error);
        }));
        QVERIFY(tidyUp());
        QCOMPARE(kept(Type::RecentlyAddedSongs).size(), 500);
        QCOMPARE(kept(Type::MostPlayedSongs).size(), 500);
        // One that was on none of them.
        QVERIFY(play(0));
        QVERIFY(play(611, 12));
        QCOMPARE(kept(Type::MostPlayedSongs).first().at(1).toString(), QString("Song 000611"));
        QCOMPARE(difference(Tidy), QByteArray());
    }

    void chartsDoNotGrowForEver()
    {
        QVERIFY(openStore());
        QVERIFY(add({song(0), song(1)}));
        QVERIFY(play(1));
        const QByteArray entries("<urn:kelvo:chart:played> nie:hasLogicalPart ");
        QByteArray gone;
        for (int i = 0; i < 2100; ++i)
            gone += entries + "<urn:gone:" + QByteArray::number(i) + "> . ";
        QByteArray count;
        QVERIFY(inStore([&](StoreConnection &connection, StoreError *error) {
            return connection.update({"INSERT DATA { GRAPH <urn:kelvo:music> { " + gone + " } }"}, error);
        }));
        QVERIFY(tidyUp());
        QVERIFY(inStore([&](StoreConnection &connection, StoreError *error) {
            count = connection.selectOne(
                "SELECT (COUNT(?x) AS ?n) { GRAPH <urn:kelvo:music> { " + entries + "?x } }", error);
            return true;
        }));
        QCOMPARE(count, QByteArray("1"));
        QCOMPARE(kept(Type::MostPlayedSongs).size(), 1);
    }

    void anOlderStoreIsBroughtUpToDate()
    {
        QVERIFY(makeOld());
        const QList<Row> songs = plain(Type::AllSongs);
        const QList<Row> albums = plain(Type::AllAlbums);
        QCOMPARE(songs.size(), 60);
        QVERIFY(kept(Type::AllSongs).isEmpty());
        QCOMPARE(shown(Type::AllSongs), songs);
        QCOMPARE(shown(Type::AllAlbums), albums);
        QVERIFY(tidyUp());
        QVERIFY(isTidy());
        // Ids, counts and marks are those from before.
        QCOMPARE(kept(Type::AllSongs), songs);
        QCOMPARE(kept(Type::AllAlbums), albums);
        QCOMPARE(difference(Tidy), QByteArray());
    }

    void theIndexerBringsItUpToDateByItself()
    {
        const QString path = addSong("a.mp3", {"A", "Artist", "Album", 3, "Jazz", 1999});
        QVERIFY(index());
        QVERIFY(isTidy());
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        store().countPlay(QUrl::fromLocalFile(path));
        QVERIFY(counted.wait());
        const QList<Row> songs = plain(Type::AllSongs);
        closeStore();
        QVERIFY(openStore());
        QVERIFY(inStore([](StoreConnection &connection, StoreError *error) {
            return connection.update(
                {"WITH <urn:kelvo:music> DELETE { ?x nie:generator ?row } WHERE { ?x nie:generator ?row }",
                    "DELETE DATA { GRAPH <urn:kelvo:music> { <urn:kelvo:untidy> a rdfs:Resource } }"},
                error);
        }));
        closeStore();
        QVERIFY(index()); // finds no file that has changed
        QVERIFY(isTidy());
        QCOMPARE(kept(Type::AllSongs), songs);
        QCOMPARE(difference(Tidy), QByteArray());
    }

    void whoIsKilledMeanwhileHarmsNothing()
    {
        QVERIFY(makeOld());
        const QList<Row> songs = plain(Type::AllSongs);
        QVERIFY(inStore([](StoreConnection &connection, StoreError *error) {
            const qint64 last = connection.selectOne(KeptRows::lastSong(), error).toLongLong();
            return connection.update({KeptRows::renewSongs(0, last - 30)}, error);
        }));
        closeStore();
        QVERIFY(openStore());
        QVERIFY(!isTidy());
        QCOMPARE(shown(Type::AllSongs), songs);
        QVERIFY(tidyUp());
        QCOMPARE(kept(Type::AllSongs), songs);
        QCOMPARE(difference(Tidy), QByteArray());
    }

    void whoIsStoppedMeanwhileGoesOnLater()
    {
        QVERIFY(makeOld());
        QVERIFY(inStore([](StoreConnection &connection, StoreError *error) {
            return StoreWriter(connection, [] { return true; }).tidyUp(error);
        }));
        QVERIFY(!isTidy());
        QCOMPARE(difference(Unkept), QByteArray());
        QVERIFY(tidyUp());
        QCOMPARE(difference(Tidy), QByteArray());
    }

    void anOlderProgramMayHaveWorkedOnIt_data()
    {
        QTest::addColumn<bool>("isKilled");
        QTest::newRow("to the end") << false;
        QTest::newRow("until it was killed") << true;
    }

    void anOlderProgramMayHaveWorkedOnIt()
    {
        QFETCH(bool, isKilled);
        QVERIFY(openStore());
        QVERIFY(add(variedSongs(30)));
        QVERIFY(tidyUp());
        // It knows nothing of what is kept.
        std::vector<QByteArray> steps{
            "INSERT DATA { GRAPH <urn:kelvo:music> { <urn:kelvo:untidy> a nie:InformationElement } }",
            "INSERT OR REPLACE { GRAPH <urn:kelvo:music> { <" + resourceIri(MediaKind::Song, 3)
                + "> nie:title \"Other\" ; nie:url \"file:///other.mp3\" ; nfo:duration 1234 } }"};
        if (!isKilled)
            steps.emplace_back(
                "DELETE DATA { GRAPH <urn:kelvo:music> { <urn:kelvo:untidy> a rdfs:Resource } }");
        QVERIFY(inStore([&steps](StoreConnection &connection, StoreError *error) {
            return connection.update(steps, error);
        }));
        QCOMPARE(shown(Type::AllAlbums), plain(Type::AllAlbums));
        QVERIFY(write([](StoreWriter &writer, StoreError *error) {
            return writer.isUntidy(error) && writer.tidyUp(error);
        }));
        QCOMPARE(difference(Tidy), QByteArray());
    }

    void sumsFollowAllChanges()
    {
        QRandomGenerator random(20);
        QVERIFY(openStore());
        QSet<int> present;
        int next = 0;
        for (int round = 0; round < 14; ++round) {
            QVERIFY(write([&](StoreWriter &writer, StoreError *error) {
                std::vector<MediaItem> items;
                std::vector<KnownFile> gone;
                std::vector<StoreWriter::Move> moves;
                QSet<int> touched;
                for (const int number : std::as_const(present)) {
                    const MediaItem item = anyItem(random, number, false);
                    const KnownFile file{{}, item.stamp, item.number, item.kind};
                    switch (random.bounded(10)) {
                    case 0:
                        items.push_back(item);
                        break;
                    case 1:
                        gone.push_back(file);
                        touched.insert(number);
                        break;
                    case 2:
                        moves.push_back({file, "/moved/" + QByteArray::number(round) + '/' + item.path});
                        touched.insert(number); // has another URI
                        break;
                    default:
                        break;
                    }
                }
                present.subtract(touched);
                for (int more = random.bounded(6); more > 0; --more) {
                    items.push_back(anyItem(random, next, true));
                    present.insert(next++);
                }
                std::vector<bool> written;
                return writer.remove(gone, error) && writer.move(moves, error)
                    && writer.write(items, &written, error);
            }));
            if (round % 3 == 0)
                QCOMPARE(difference(round == 0 ? Unkept : Untidy), QByteArray());
            // Some while the pass is under way, some after it.
            for (int step = 0; step < 2; ++step) {
                const QList<int> songs = present.values();
                if (songs.isEmpty())
                    continue;
                const int number = songs.at(random.bounded(int(songs.size())));
                QVERIFY(play(number, 1 + random.bounded(3)));
                QVERIFY(lengthen(number, 1000 + round * 10 + step));
                QVERIFY(favor(number, random.bounded(2)));
                if (step == 0)
                    QVERIFY(tidyUp());
            }
            QCOMPARE(difference(isTidy() ? Tidy : Untidy), QByteArray());
        }
    }
};

KELVO_TEST(TrackerKeptTest)
#include "TrackerKeptTest.moc"
