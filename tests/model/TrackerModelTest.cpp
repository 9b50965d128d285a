// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "TestGroup.h"
#include "TrackerModelCase.h"
#include "store/Sparql.h"

#include <QDateTime>
#include <QMetaEnum>
#include <QSignalSpy>
#include <QTest>

class TrackerModelTest : public TrackerModelCase
{
    Q_OBJECT

private Q_SLOTS:
    void hasTheNumbersOfTheQueryKinds()
    {
        QCOMPARE(int(Type::AllSongs), 0);
        QCOMPARE(int(Type::SongsOfAlbum), 1);
        QCOMPARE(int(Type::RecentlyAddedSongs), 3);
        QCOMPARE(int(Type::RecentlyPlayedSongs), 4);
        QCOMPARE(int(Type::MostPlayedSongs), 5);
        QCOMPARE(int(Type::FavoriteSongs), 6);
        QCOMPARE(int(Type::NeverPlayedSongs), 7);
        QCOMPARE(int(Type::DownloadedSongs), 8);
        QCOMPARE(int(Type::SongsOfPlaylist), 9);
        QCOMPARE(int(Type::RelatedSongs), 14);
        QCOMPARE(int(Type::AllAlbums), 100);
        QCOMPARE(int(Type::AlbumsOfArtist), 101);
        QCOMPARE(int(Type::AllArtists), 200);
        QCOMPARE(int(Type::AllPlaylists), 300);
    }

    void namesItsColumns_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("keys");
        const QString songs(
            "songId songTitle songUri songLength trackNumber artistId artistName albumId albumName "
            "genre year favorited usageCounter added");
        for (const Type type : {Type::AllSongs, Type::SongsOfAlbum, Type::RecentlyAddedSongs,
                 Type::RecentlyPlayedSongs, Type::MostPlayedSongs, Type::FavoriteSongs,
                 Type::NeverPlayedSongs, Type::DownloadedSongs, Type::SongsOfPlaylist, Type::RelatedSongs})
            QTest::addRow("%d", int(type)) << int(type) << songs;
        const QString albums(
            "albumId albumName artistId artistName albumTrackCount albumLength albumArtistCount "
            "albumSongs");
        QTest::newRow("albums") << int(Type::AllAlbums) << albums;
        QTest::newRow("albums of artist") << int(Type::AlbumsOfArtist) << albums;
        QTest::newRow("artists") << int(Type::AllArtists)
                                 << "artistId artistName numberOfSongs numberOfAlbums";
        QTest::newRow("playlists") << int(Type::AllPlaylists)
                                   << "playlistId playlistName playlistUri playlistLength playlistTrackCount";
    }

    void namesItsColumns()
    {
        QFETCH(int, type);
        QFETCH(QString, keys);
        QVERIFY(openStore());
        const auto watched = start(Type(type), 0, 0);
        QStringList names;
        for (int column = 0; column < watched->model->columnCount(); ++column)
            names.append(watched->model->headerData(column, Qt::Horizontal).toString());
        QCOMPARE(names.join(' '), keys);
        QVERIFY(watched->completed.wait());
        QCOMPARE(watched->failed.count(), 0);
        QCOMPARE(watched->inserted.count(), 0);
    }

    // What the console relies on: an integer id in column 0, the text that lists show in column 1.
    void hasAnIdAndAShownTextInEachResult()
    {
        QVERIFY(fill(3));
        MediaItem list;
        list.kind = MediaKind::Playlist;
        list.number = 77;
        list.path = "/music/list.m3u";
        list.uri = "file:///music/list.m3u";
        list.title = "A list";
        list.entries = {{song(1).uri, "entry"}};
        QVERIFY(writeSongs({list}));
        const QUrl played(QString::fromLatin1(song(0).uri));
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        store().countPlay(played);
        store().setFavorite(played, true);
        store().setDownloaded(played, true);
        QTRY_COMPARE(counted.count(), 1);
        const auto idIn = [this](Type type) {
            return result(type)->index(0, 0).data().toInt();
        };
        const std::map<Type, int> kinds{{Type::AllSongs, 0}, {Type::SongsOfAlbum, idIn(Type::AllAlbums)},
            {Type::RecentlyAddedSongs, 0}, {Type::RecentlyPlayedSongs, 0}, {Type::MostPlayedSongs, 0},
            {Type::FavoriteSongs, 0}, {Type::NeverPlayedSongs, 0}, {Type::DownloadedSongs, 0},
            {Type::SongsOfPlaylist, idIn(Type::AllPlaylists)}, {Type::RelatedSongs, 0}, {Type::AllAlbums, 0},
            {Type::AlbumsOfArtist, idIn(Type::AllArtists)}, {Type::AllArtists, 0}, {Type::AllPlaylists, 0}};
        QCOMPARE(int(kinds.size()), QMetaEnum::fromType<Type>().keyCount());
        MediaItem alike = song(3);
        alike.tags.artists = song(0).tags.artists; // so that the first song has a related one
        QVERIFY(writeSongs({alike}));
        for (auto [type, id] : kinds) {
            if (type == Type::RelatedSongs)
                id = idIn(Type::AllSongs);
            const auto model = result(type, id);
            QVERIFY2(model && model->rowCount() > 0, QByteArray::number(int(type)));
            QCOMPARE(model->index(0, 0).data().typeId(), int(QMetaType::Int));
            QVERIFY(model->index(0, 0).data().toInt() > 0);
            QCOMPARE(model->index(0, 1).data().typeId(), int(QMetaType::QString));
            QVERIFY(!model->index(0, 1).data().toString().isEmpty());
            const bool ofSongs = type < Type::AllAlbums;
            QCOMPARE(columnOf(*model, "songId"), ofSongs ? 0 : -1);
            QVERIFY(!model->index(0, 0).parent().isValid());
            QCOMPARE(model->rowCount(model->index(0, 0)), 0);
        }
    }

    void comesInBlocks_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("stream");
        QTest::addColumn<QList<int>>("blocks");
        QTest::addColumn<bool>("restNeeded");
        QTest::newRow("usual") << 30 << 40 << QList<int>{30, 40, 30} << true;
        QTest::newRow("exact multiples") << 20 << 40 << QList<int>{20, 40, 40} << true;
        QTest::newRow("first is all") << 100 << 10 << QList<int>{100} << false;
        QTest::newRow("first is more than all") << 5000 << 10 << QList<int>{100} << false;
        QTest::newRow("all but one") << 99 << 10 << QList<int>{99, 1} << true;
        QTest::newRow("one row") << 1 << 50 << QList<int>{1, 50, 49} << true;
        QTest::newRow("streams of one") << 97 << 1 << QList<int>{97, 1, 1, 1} << true;
        QTest::newRow("no limit first") << 0 << 10 << QList<int>{100} << false;
        QTest::newRow("no limit then") << 10 << 0 << QList<int>{10, 90} << true;
        QTest::newRow("no limits") << 0 << 0 << QList<int>{100} << false;
        QTest::newRow("large stream") << 10 << 99999 << QList<int>{10, 90} << true;
        QTest::newRow("below zero") << -5 << -1 << QList<int>{100} << false;
    }

    void comesInBlocks()
    {
        QFETCH(int, first);
        QFETCH(int, stream);
        QFETCH(QList<int>, blocks);
        QFETCH(bool, restNeeded);
        QVERIFY(fill());
        const auto watched = start(Type::AllSongs, first, stream);
        QCOMPARE(watched->model->rowCount(), 0);
        QVERIFY(watched->inserted.wait());
        if (restNeeded) {
            QCOMPARE(watched->blocks(), QList<int>{blocks.first()});
            QCOMPARE(watched->completed.count(), 0);
            watched->model->fetchRest();
        }
        QTRY_COMPARE(watched->completed.count(), 1);
        QCOMPARE(watched->blocks(), blocks);
        QCOMPARE(watched->failed.count(), 0);
        for (int row = 0; row < SongCount; ++row)
            QCOMPARE(watched->model->index(row, 1).data().toString(), song(row).title);
    }

    void saysNothingBeforeTheEventLoopRuns()
    {
        QVERIFY(fill(3));
        const auto watched = start(Type::AllSongs, 0, 0);
        QTest::qSleep(200); // the query ends meanwhile, on its thread
        QCOMPARE(watched->inserted.count() + watched->completed.count(), 0);
        QVERIFY(watched->completed.wait());
    }

    void fetchesTheRestWhenAskedEarlyOrTwice()
    {
        QVERIFY(fill());
        const auto watched = start(Type::AllSongs, 10, 20);
        watched->model->fetchRest();
        watched->model->fetchRest();
        QVERIFY(watched->completed.wait());
        QCOMPARE(watched->blocks(), QList<int>({10, 20, 20, 20, 20, 10}));
        watched->model->fetchRest(); // nothing remains, and that is said
        QVERIFY(watched->completed.wait());
        QCOMPARE(watched->completed.count(), 2);
        QCOMPARE(watched->model->rowCount(), SongCount);
    }

    void isUntouchedByChangesWhileItStreams()
    {
        QVERIFY(fill());
        const auto watched = start(Type::AllSongs, 10, 10);
        QVERIFY(watched->inserted.wait());
        MediaItem changed = song(50);
        changed.isNew = false;
        changed.title = "Zzz";
        QVERIFY(writeSongs({changed}));
        watched->model->fetchRest();
        QVERIFY(watched->completed.wait());
        QCOMPARE(watched->model->index(50, 1).data().toString(), song(50).title);
        QCOMPARE(titles(Type::AllSongs).last(), "Zzz");
    }

    void dropsEverythingWhenDestroyedInMidStream()
    {
        QVERIFY(fill(3000));
        for (int round = 0; round < 20; ++round) {
            auto watched = start(Type::AllSongs, 10, 10);
            if (round % 2) {
                QVERIFY(watched->inserted.wait());
                watched->model->fetchRest();
                QTRY_VERIFY(watched->inserted.count() > round / 2);
            }
            QElapsedTimer timer;
            timer.start();
            watched.reset();
            QVERIFY2(timer.elapsed() < 200, "the GUI thread waited for the query");
        }
    }

    void livesOnWithoutItsFactory()
    {
        QVERIFY(fill());
        auto factory = std::make_unique<KelvoTrackerModelFactory>("A", "B", 10);
        Watched watched(factory->getModel(Type::AllSongs, 10, 0));
        factory.reset();
        watched.model->fetchRest();
        QVERIFY(watched.completed.wait());
        QCOMPARE(watched.model->rowCount(), SongCount);
    }

    void failsWhenTheStoreIsClosedUnderIt()
    {
        QVERIFY(fill());
        const auto watched = start(Type::AllSongs, 10, 10);
        QVERIFY(watched->inserted.wait());
        closeStore();
        QCOMPARE(watched->failed.count(), 0);
        watched->model->fetchRest();
        QVERIFY(watched->failed.wait());
        QVERIFY(watched->failed.first().first().toString().contains("closed"));
        QCOMPARE(watched->completed.count(), 0);
        QCOMPARE(watched->model->rowCount(), 10);
        watched->model->fetchRest(); // once more, once more said
        QVERIFY(watched->failed.wait());
    }

    void failsWithoutAStore()
    {
        const auto watched = start(Type::AllSongs, 10, 10);
        QVERIFY(watched->failed.wait());
        QCOMPARE(watched->failed.first().first().toString(), "The tracker store is not open");
        QCOMPARE(watched->completed.count(), 0);
    }

    void failsForAnUnknownKind()
    {
        QVERIFY(openStore());
        const auto watched = start(Type(2), 10, 10);
        QVERIFY(watched->failed.wait());
        QCOMPARE(watched->failed.first().first().toString(), "There is no tracker query of type 2");
        QCOMPARE(watched->model->columnCount(), 0);
    }

    void hasNothingForIdsThatAreNone_data()
    {
        QTest::addColumn<int>("type");
        for (const Type type :
            {Type::SongsOfAlbum, Type::AlbumsOfArtist, Type::SongsOfPlaylist, Type::RelatedSongs})
            QTest::addRow("%d", int(type)) << int(type);
    }

    void hasNothingForIdsThatAreNone()
    {
        QFETCH(int, type);
        QVERIFY(fill(3));
        for (const int id : {0, -1, INT_MIN, INT_MAX}) {
            const auto watched = start(Type(type), 10, 10, id);
            QVERIFY(watched->completed.wait());
            QCOMPARE(watched->model->rowCount(), 0);
            QCOMPARE(watched->inserted.count(), 0);
            QCOMPARE(watched->failed.count(), 0);
        }
    }

    void extendsFromArtistsToAlbumsToSongs()
    {
        QVERIFY(fill());
        const auto artists = result(Type::AllArtists);
        QCOMPARE(artists->rowCount(), 7);
        const int row = rowOf(*artists, "artistName", "Artist 1");
        QCOMPARE(value(*artists, row, "numberOfSongs").toInt(), 15);
        QCOMPARE(value(*artists, row, "numberOfAlbums").toInt(), 3);
        const auto albums = result(Type::AlbumsOfArtist, artists->index(row, 0).data().toInt());
        QCOMPARE(texts(*albums, "albumName"), QStringList({"Album 0", "Album 1", "Album 2"}));
        QCOMPARE(value(*albums, 0, "artistName").toString(), "Various");
        QCOMPARE(value(*albums, 0, "albumSongs").toInt(), 34);
        QCOMPARE(value(*albums, 0, "albumTrackCount").toInt(), 34);
        QCOMPARE(value(*albums, 0, "albumArtistCount").toInt(), 7);
        QCOMPARE(value(*albums, 0, "albumLength").toInt(), 34 * 100 + 3 * 33 * 34 / 2);
        QCOMPARE(titles(Type::AllAlbums), texts(*albums, "albumName"));
        const auto songs = result(Type::SongsOfAlbum, albums->index(0, 0).data().toInt());
        QCOMPARE(songs->rowCount(), 34);
        QCOMPARE(songs->index(1, 1).data().toString(), song(3).title);
        QCOMPARE(value(*songs, 1, "trackNumber").toInt(), 4);
    }

    void findsTheOtherSongsOfASongsArtists()
    {
        QVERIFY(openStore());
        MediaItem duet = song(0);
        duet.tags.artists = QStringList({"One", "Two"});
        MediaItem solo = song(1);
        solo.tags.artists = QStringList("Two");
        MediaItem both = song(2);
        both.tags.artists = QStringList({"Two", "One"});
        QVERIFY(writeSongs({duet, solo, both, song(3)}));
        const auto songs = result(Type::AllSongs);
        const int id = songs->index(0, columnOf(*songs, "songId")).data().toInt();
        QCOMPARE(titles(Type::RelatedSongs, id), QStringList({solo.title, both.title}));
        QCOMPARE(titles(Type::RelatedSongs, songs->index(3, 0).data().toInt()), QStringList());
    }

    void extendsARowThatWasJustDeleted()
    {
        addSong("a.mp3", {"A", "Artist", "Album"});
        QVERIFY(index());
        const auto albums = result(Type::AllAlbums);
        const int id = albums->index(0, 0).data().toInt();
        QVERIFY(id > 0);
        QVERIFY(QFile::remove(place("a.mp3")));
        QVERIFY(waitForFiles(0));
        QCOMPARE(titles(Type::SongsOfAlbum, id), QStringList());
    }

    void showsPlaceholders()
    {
        QVERIFY(openStore());
        MediaItem bare = song(0);
        bare.tags.artists.clear();
        bare.tags.album.clear();
        QVERIFY(writeSongs({bare}));
        KelvoTrackerModelFactory factory("Tuntematon Albumi", "Tuntematon Artisti", 0);
        for (const auto &[type, key, text] :
            std::initializer_list<std::tuple<Type, const char *, const char *>>{
                {Type::AllSongs, "artistName", "Tuntematon Artisti"},
                {Type::AllSongs, "albumName", "Tuntematon Albumi"},
                {Type::AllAlbums, "albumName", "Tuntematon Albumi"},
                {Type::AllAlbums, "artistName", "Tuntematon Artisti"},
                {Type::AllArtists, "artistName", "Tuntematon Artisti"}}) {
            Watched watched(factory.getModel(type, 0, 0));
            QVERIFY(watched.completed.wait());
            QCOMPARE(value(*watched.model, 0, key).toString(), text);
        }
    }

    void countsAndMarks()
    {
        QVERIFY(fill(4));
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        const QUrl first(QString::fromLatin1(song(0).uri));
        const QUrl second(QString::fromLatin1(song(1).uri));
        store().countPlay(first);
        store().countPlay(second);
        store().countPlay(second);
        store().countPlay(QUrl("http://example.org/none"));
        QTRY_COMPARE(counted.count(), 3);
        QCOMPARE(counted.last().last().toInt(), 2);
        QCOMPARE(titles(Type::MostPlayedSongs), QStringList({song(1).title, song(0).title}));
        QCOMPARE(titles(Type::RecentlyPlayedSongs), QStringList({song(1).title, song(0).title}));
        QCOMPARE(titles(Type::NeverPlayedSongs), QStringList({song(2).title, song(3).title}));
        QSignalSpy marked(&store(), &KelvoTrackerStore::marked);
        store().setFavorite(first, true);
        store().setDownloaded(second, true);
        QTRY_COMPARE(marked.count(), 2);
        QCOMPARE(titles(Type::FavoriteSongs), QStringList(song(0).title));
        QCOMPARE(titles(Type::DownloadedSongs), QStringList(song(1).title));
        QCOMPARE(value(*result(Type::AllSongs), 0, "favorited").toBool(), true);
        store().setFavorite(first, false);
        QTRY_COMPARE(marked.count(), 3);
        QCOMPARE(titles(Type::FavoriteSongs), QStringList());
        store().countPlay(first);
        QTRY_COMPARE(counted.count(), 4);
        QCOMPARE(titles(Type::RecentlyPlayedSongs), QStringList({song(0).title, song(1).title}));
    }

    void ordersWhatHappensInOneMoment()
    {
        QVERIFY(fill(40));
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        QStringList expected;
        for (int i = 0; i < 40; ++i) {
            store().countPlay(QUrl(QString::fromLatin1(song(i).uri)));
            expected.prepend(song(i).title);
        }
        QTRY_COMPARE(counted.count(), 40);
        QCOMPARE(titles(Type::RecentlyPlayedSongs), expected);
        QCOMPARE(titles(Type::RecentlyAddedSongs), expected);
    }

    void neverTakesTwoTimesForTheSame()
    {
        QCOMPARE(Sparql::nextTime(7'500'000, 7'499'999), 7'500'000);
        QCOMPARE(Sparql::nextTime(7'500'000, 7'500'000), 7'500'001);
        QCOMPARE(Sparql::nextTime(7'500'000, 8'500'000), 8'500'001); // a clock that was set back
        QCOMPARE(Sparql::nextTime(8'000'000, 0), 8'000'001);
        QCOMPARE(Sparql::nextTime(0, 7'999'999), 8'000'001);
        QByteArray last;
        for (int i = 0; i < 1000; ++i) {
            const QByteArray time = Sparql::now();
            QVERIFY2(time > last, time + " after " + last);
            last = time;
        }
        const QDateTime shown
            = QDateTime::fromString(QString::fromLatin1(last.mid(1, last.size() - 2)), Qt::ISODate);
        QVERIFY(qAbs(shown.msecsTo(QDateTime::currentDateTimeUtc())) < 60'000);
    }

    void showsTheLastAddedFirst()
    {
        QVERIFY(fill(1));
        QTest::qSleep(5); // another time stamp
        QVERIFY(writeSongs({song(1)}));
        QCOMPARE(titles(Type::RecentlyAddedSongs), QStringList({song(1).title, song(0).title}));
    }

    void initialisesAsOftenAsAsked()
    {
        KelvoTrackerModelFactory factory("A", "B", 10);
        QSignalSpy initialised(&factory, &KelvoTrackerModelFactory::initCompleted);
        factory.init();
        QCOMPARE(initialised.count(), 0);
        QVERIFY(initialised.wait(10000));
        QCOMPARE(initialised.first().first().toBool(), true);
        factory.init();
        QCOMPARE(initialised.count(), 1);
        QVERIFY(initialised.wait(10000));
        QTest::qWait(0);
        QCOMPARE(initialised.count(), 2);
        // Another factory opens and closes without being told of by this one.
        auto other = std::make_unique<KelvoTrackerModelFactory>("A", "B", 10);
        QSignalSpy otherInitialised(other.get(), &KelvoTrackerModelFactory::initCompleted);
        other->init();
        QVERIFY(otherInitialised.wait(10000));
        QCOMPARE(initialised.count(), 2);
        other.reset();
        QCOMPARE(store().state(), KelvoTrackerStore::Open);
    }

    void staysOpenWhenAFactoryIsReplaced()
    {
        QSignalSpy closed(&store(), &KelvoTrackerStore::closed);
        auto factory = std::make_unique<KelvoTrackerModelFactory>("A", "B", 10);
        QSignalSpy first(factory.get(), &KelvoTrackerModelFactory::initCompleted);
        factory->init();
        QVERIFY(first.wait(10000));
        factory.reset();
        factory = std::make_unique<KelvoTrackerModelFactory>("A", "B", 20);
        QSignalSpy second(factory.get(), &KelvoTrackerModelFactory::initCompleted);
        factory->init();
        QVERIFY(second.wait(10000));
        QCOMPARE(closed.count(), 0);
        factory.reset();
        QVERIFY(closed.wait(10000));
    }
};

KELVO_TEST(TrackerModelTest)
#include "TrackerModelTest.moc"
