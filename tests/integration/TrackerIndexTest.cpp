// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "TestGroup.h"
#include "TrackerIndexCase.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

class TrackerIndexTest : public TrackerIndexCase
{
    Q_OBJECT
private Q_SLOTS:
    void readsTheTagsOfEveryFormat_data()
    {
        QTest::addColumn<QString>("original");
        for (const char *name : {"short.mp3", "tone.ogg", "tone.flac", "tone.m4a"})
            QTest::newRow(name) << name;
    }

    void readsTheTagsOfEveryFormat()
    {
        QFETCH(QString, original);
        const QString path
            = addSong(original, {"Täöl \"x\" \\", "Someone", "The Album", 3, "Jazz", 1999}, original);
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QVERIFY(songs);
        QCOMPARE(songs->rowCount(), 1);
        QCOMPARE(songs->index(0, 1).data().toString(), QString("Täöl \"x\" \\"));
        QCOMPARE(value(*songs, 0, "artistName").toString(), "Someone");
        QCOMPARE(value(*songs, 0, "albumName").toString(), "The Album");
        QCOMPARE(value(*songs, 0, "trackNumber").toInt(), 3);
        QCOMPARE(value(*songs, 0, "genre").toString(), "Jazz");
        QCOMPARE(value(*songs, 0, "year").toInt(), 1999);
        QCOMPARE(value(*songs, 0, "songUri").toString(), QString("file://" + path));
        QVERIFY(value(*songs, 0, "songLength").toInt() >= 1);
        QCOMPARE(value(*songs, 0, "usageCounter").toInt(), 0);
        QCOMPARE(value(*songs, 0, "favorited").toBool(), false);
        QVERIFY(value(*songs, 0, "added").toDateTime().secsTo(QDateTime::currentDateTime()) < 60);
    }

    void showsTheFileNameWithoutTags()
    {
        QVERIFY(!addSong("no tags.mp3", {}).isEmpty());
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(songs->index(0, 1).data().toString(), "no tags.mp3");
        QCOMPARE(value(*songs, 0, "artistName").toString(), "No artist");
        QCOMPARE(value(*songs, 0, "albumName").toString(), "No album");
        QCOMPARE(titles(Type::AllArtists), QStringList("No artist"));
        QCOMPARE(titles(Type::AllAlbums), QStringList("No album"));
        QCOMPARE(titles(Type::SongsOfAlbum, value(*songs, 0, "albumId").toInt()), QStringList("no tags.mp3"));
    }

    void takesAnyFileName_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("space") << QByteArray("a b  c.mp3");
        QTest::newRow("percent") << QByteArray("100%20 %41.mp3");
        QTest::newRow("hash") << QByteArray("#1 hit?.mp3");
        QTest::newRow("quotes") << QByteArray("say \"it's\" `now`.mp3");
        QTest::newRow("braces") << QByteArray("{a} <b> \\c^|.mp3");
        QTest::newRow("emoji") << QByteArray("\xf0\x9f\x8e\xb5 song.mp3");
        QTest::newRow("new line") << QByteArray("two\nlines.mp3");
        QTest::newRow("invalid UTF-8") << QByteArray("caf\xe9 \xff.mp3");
        QTest::newRow("255 bytes") << QByteArray(251, 'x') + ".mp3";
    }

    void takesAnyFileName()
    {
        QFETCH(QByteArray, name);
        const QByteArray path = local(mediaFolder()) + '/' + name;
        QCOMPARE(::rename(local(addSong("plain.mp3", {})).constData(), path.constData()), 0);
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(songs->rowCount(), 1);
        const QByteArray uri = songs->index(0, 2).data().toString().toLatin1();
        QVERIFY(uri.startsWith("file:///"));
        // Whatever the bytes, the URI leads back to them.
        QCOMPARE(QByteArray::fromPercentEncoding(uri.mid(7)), path);
        QVERIFY(!songs->index(0, 1).data().toString().isEmpty());
    }

    void followsWhatChanges()
    {
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs), QStringList());
        addSong("one.mp3", {"One"});
        QVERIFY(waitForFiles(1, Soon));
        addSong("deep/er/two.mp3", {"Two"});
        QVERIFY(waitForFiles(2, Soon));
        QCOMPARE(titles(Type::AllSongs), QStringList({"One", "Two"}));
        addSong("one.mp3", {"One again"});
        QTRY_COMPARE_WITH_TIMEOUT(titles(Type::AllSongs), QStringList({"One again", "Two"}), Soon);
        QVERIFY(QFile::remove(place("deep/er/two.mp3")));
        QVERIFY(waitForFiles(1, Soon));
        QVERIFY(QDir(mediaFolder() + "/deep").removeRecursively());
        addSong("deep/three.mp3", {"Three"});
        QVERIFY(waitForFiles(2, Soon));
        QCOMPARE(titles(Type::AllSongs), QStringList({"One again", "Three"}));
    }

    void followsChangesOfAnEarlierTime()
    {
        addSong("stays.mp3", {"Stays"});
        addSong("goes.mp3", {"Goes"});
        addSong("gone/goes too.mp3", {"Goes too"});
        addSong("changes.mp3", {"Before"});
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs).size(), 4);
        const int id = result(Type::AllSongs)->index(3, 0).data().toInt();
        closeStore();
        QVERIFY(QFile::remove(place("goes.mp3")));
        QVERIFY(QDir(mediaFolder() + "/gone").removeRecursively());
        addSong("changes.mp3", {"After"});
        addSong("comes.mp3", {"Comes"});
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs), QStringList({"After", "Comes", "Stays"}));
        QCOMPARE(result(Type::AllSongs)->index(2, 0).data().toInt(), id);
    }

    void keepsTheMarksOfAMovedFile()
    {
        const QString path = addSong("here/song.mp3", {"Song", "Artist"});
        QVERIFY(index());
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        store().countPlay(QUrl::fromLocalFile(path));
        QVERIFY(counted.wait());
        store().setFavorite(QUrl::fromLocalFile(path), true);
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(QDir(mediaFolder()).rename("here", "there"));
        QVERIFY(indexed.wait(Soon));
        const auto report = indexed.first().first().value<KelvoIndexReport>();
        QVERIFY2(report.milliseconds >= 0 && report.milliseconds <= timer.elapsed(),
            qPrintable(QString::number(report.milliseconds)));
        QCOMPARE(report.moved, 1);
        QCOMPARE(report.added + report.removed + report.changed, 0);
        const auto songs = result(Type::AllSongs);
        QCOMPARE(songs->rowCount(), 1);
        QVERIFY(songs->index(0, 2).data().toString().endsWith("/there/song.mp3"));
        QCOMPARE(value(*songs, 0, "usageCounter").toInt(), 1);
        QCOMPARE(value(*songs, 0, "favorited").toBool(), true);
    }

    void keepsTheCountsOfAMediumThatIsTakenOut()
    {
        const QString played = addSong("stick/played.mp3", {"Played", "Artist"});
        addSong("stick/other.mp3", {"Other", "Artist"});
        QVERIFY(index());
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        for (int plays = 1; plays <= 2; ++plays) {
            store().countPlay(QUrl::fromLocalFile(played));
            QTRY_COMPARE(counted.size(), plays);
        }
        const QString elsewhere = mediaFolder() + "-elsewhere";
        QVERIFY(QDir().rename(mediaFolder() + "/stick", elsewhere));
        QVERIFY(waitForFiles(0));
        QCOMPARE(titles(Type::MostPlayedSongs), QStringList());
        QVERIFY(QDir().rename(elsewhere, mediaFolder() + "/stick"));
        QVERIFY(waitForFiles(2));
        QTRY_COMPARE(titles(Type::MostPlayedSongs), QStringList("Played"));
        QCOMPARE(titles(Type::RecentlyPlayedSongs), QStringList("Played"));
        QCOMPARE(value(*result(Type::MostPlayedSongs), 0, "usageCounter").toInt(), 2);
        // Given back once: what is counted from here on is not overwritten.
        store().countPlay(QUrl::fromLocalFile(played));
        QTRY_COMPARE(counted.size(), 3);
        addSong("third.mp3", {"Third"});
        QVERIFY(waitForFiles(3));
        QCOMPARE(value(*result(Type::MostPlayedSongs), 0, "usageCounter").toInt(), 3);
    }

    void survivesTwoFilesThatChangePlaces()
    {
        const QByteArray a = local(addSong("a.mp3", {"Was A", "X"}));
        const QByteArray b = local(addSong("b.mp3", {"Was B"}));
        QVERIFY(index());
        store().countPlay(QUrl::fromEncoded("file://" + a));
        closeStore();
        QCOMPARE(::rename(a.constData(), (a + ".tmp").constData()), 0);
        QCOMPARE(::rename(b.constData(), a.constData()), 0);
        QCOMPARE(::rename((a + ".tmp").constData(), b.constData()), 0);
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(texts(*songs, "songTitle"), QStringList({"Was A", "Was B"}));
        QVERIFY(value(*songs, 0, "songUri").toString().endsWith("b.mp3"));
    }

    void marksDownloads()
    {
        addSong("Downloads/a.mp3", {"A"});
        addSong("b.mp3", {"B"});
        QVERIFY(index());
        QCOMPARE(titles(Type::DownloadedSongs), QStringList("A"));
    }

    // The benchmark of the index does it with 10,000.
    void takesThousandsOfFilesInOneFolder()
    {
        constexpr int count = 3000;
        // Titles of their own would take longer to make than to read.
        addSong("0.mp3", {"Same"});
        const QByteArray first = local(place("0.mp3"));
        for (int i = 1; i < count; ++i)
            QCOMPARE(::link(first.constData(), local(place(QString::number(i) + ".mp3")).constData()), 0);
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        startIndexing();
        QVERIFY(openStore());
        QVERIFY(indexed.count() > 0 || indexed.wait(120'000));
        QCOMPARE(indexed.first().first().value<KelvoIndexReport>().added, count);
        QCOMPARE(result(Type::AllSongs)->rowCount(), count);
    }

    /// Files that come one soon after the other are read together, and not each in a pass of its own.
    void gathersWhatComesInARow()
    {
        QVERIFY(index());
        QSignalSpy passes(&store(), &KelvoTrackerStore::indexed);
        constexpr int count = 20;
        for (int i = 0; i < count; ++i) {
            addFile(QString::number(i) + ".mp3", "short.mp3");
            QTest::qWait(50); // as they do who copy them
        }
        QTRY_VERIFY(!passes.isEmpty() && passes.constLast().at(0).value<KelvoIndexReport>().files == count);
        QVERIFY2(passes.size() <= count / 4, qPrintable(QString::number(passes.size())));
    }

    void saysWhetherItLookedThroughAll()
    {
        QSignalSpy passes(&store(), &KelvoTrackerStore::indexed);
        QVERIFY(index());
        QVERIFY(passes.constLast().at(0).value<KelvoIndexReport>().complete);
        passes.clear();
        addSong("new.mp3", {"New"});
        QTRY_COMPARE(passes.size(), 1);
        QVERIFY(!passes.constLast().at(0).value<KelvoIndexReport>().complete);
    }

    void namesTheFileThatTheStoreRefuses()
    {
        QVERIFY(openStore());
        MediaItem twin = song(1);
        twin.uri = song(0).uri;
        const LogRecorder log;
        QVERIFY(!writeSongs({song(0), twin, song(2)}));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().contains("refuses file:///music/0.mp3"));
        QCOMPARE(titles(Type::AllSongs).size(), 2);
    }

    void waitsForAMissingFolder()
    {
        qputenv(
            "KELVO_MEDIA_DIRS", local(mediaFolder() + "/later") + "::" + local(mediaFolder() + "/other/"));
        addSong("other/a.mp3", {"A"});
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs), QStringList("A"));
        addSong("later/b.mp3", {"B"});
        QVERIFY(waitForFiles(2));
        QVERIFY(QDir(mediaFolder() + "/other").removeRecursively());
        QVERIFY(waitForFiles(1));
        QCOMPARE(titles(Type::AllSongs), QStringList("B"));
    }

    void dropsAlbumsAndArtistsWithoutSongs()
    {
        const QString path = addSong("a.mp3", {"A", "Artist", "Album"});
        addSong("b.mp3", {"B", "Other", "Second"});
        QVERIFY(index());
        QCOMPARE(titles(Type::AllArtists), QStringList({"Artist", "Other"}));
        QVERIFY(QFile::remove(path));
        QVERIFY(waitForFiles(1));
        QCOMPARE(titles(Type::AllArtists), QStringList("Other"));
        QCOMPARE(titles(Type::AllAlbums), QStringList("Second"));
    }
};

KELVO_TEST(TrackerIndexTest)
#include "TrackerIndexTest.moc"
