// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "QSparqlConnection.h"
#include "QSparqlQueryModel.h"
#include "TestGroup.h"
#include "TrackerIndexCase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

/// What takes the media engine or the playlist parser: videos, broken files, playlists. Apart from the rest
/// because leaks of those libraries have to be traced, which is slow.
class TrackerMediaTest : public TrackerIndexCase
{
    Q_OBJECT
private Q_SLOTS:
    void findsTheVideosOfTheMediaFolder()
    {
        addFile("b.mp4", "clip.mp4");
        addFile("a.webm", "clip.webm");
        QVERIFY(index());
        QSparqlConnection connection("QTRACKER", QSparqlConnectionOptions());
        QSparqlQueryModel model;
        QSignalSpy finished(&model, &QSparqlQueryModel::finished);
        model.setQuery(QSparqlQuery(VideoQuery, QSparqlQuery::SelectStatement), connection);
        QVERIFY(finished.wait());
        QCOMPARE(texts(model, "fileName"), QStringList({"a.webm", "b.mp4"}));
        QCOMPARE(texts(model, "length"), QStringList({"2", "2"}));
        QCOMPARE(value(model, 1, "url").toString(), "file://" + mediaFolder() + "/b.mp4");
        QCOMPARE(value(model, 1, "fileSize").toLongLong(), QFileInfo(place("b.mp4")).size());
    }

    /// When a video came to the store stays what it was, whatever becomes of the file.
    void remembersWhenAVideoWasAdded()
    {
        addFile("b.mp4", "clip.mp4");
        QVERIFY(index());
        const QStringList added = ofVideos("nie:created");
        QCOMPARE(added.size(), 1);
        const QDateTime time = QDateTime::fromString(added.constFirst(), Qt::ISODate);
        QVERIFY2(time.isValid() && qAbs(time.secsTo(QDateTime::currentDateTime())) < 60,
            qPrintable(added.first()));
        closeStore();
        // The next whole second, so that another time would show.
        QTRY_VERIFY(time.secsTo(QDateTime::currentDateTime()) > 1);
        QVERIFY(QFile::remove(place("b.mp4")));
        addFile("b.mp4", "clip.webm");
        QVERIFY(index());
        QCOMPARE(ofVideos("nfo:fileSize"), QStringList(QString::number(QFileInfo(place("b.mp4")).size())));
        QCOMPARE(ofVideos("nie:created"), added);
    }

    void correctsTheLengthOfAVideo()
    {
        const QUrl video = QUrl::fromLocalFile(addFile("b.mp4", "clip.mp4"));
        QVERIFY(index());
        QSignalSpy corrected(&store(), &KelvoTrackerStore::lengthCorrected);
        store().correctLength(video, 2); // nothing new
        store().correctLength(video, 17);
        QTRY_COMPARE(corrected.count(), 1);
        QCOMPARE(corrected.first(), QVariantList({video, 17}));
        QSparqlConnection connection("QTRACKER", QSparqlConnectionOptions());
        QSparqlQueryModel model;
        QSignalSpy finished(&model, &QSparqlQueryModel::finished);
        model.setQuery(QSparqlQuery(VideoQuery, QSparqlQuery::SelectStatement), connection);
        QVERIFY(finished.wait());
        QCOMPARE(texts(model, "length"), QStringList("17"));
    }

    void looksIntoVideos()
    {
        addFile("clip.mp4", "clip.mp4");
        addFile("sound only.mp4", "tone.m4a");
        addFile("no suffix", "tone.ogg");
        QVERIFY(index());
        const QStringList songs = titles(Type::AllSongs);
        QCOMPARE(songs.size(), 2); // the one without pictures, and what shows by its content
        // Neither says which of an album it is.
        const auto result = this->result(Type::AllSongs);
        for (int row = 0; row < songs.size(); ++row)
            QCOMPARE(value(*result, row, "trackNumber").toInt(), 0);
    }

    void survivesWhatIsNoMedia()
    {
        LogRecorder log;
        QProcess copy; // everything that the generated set has, sound and broken
        copy.start("cp", {"-r", generated("."), mediaFolder() + "/all"});
        QVERIFY(copy.waitForFinished());
        QCOMPARE(::mkfifo(local(place("pipe.mp3")).constData(), 0600), 0);
        const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, local(place("s.mp3")).constData(), sizeof address.sun_path);
        QCOMPARE(::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        QFile::link(mediaFolder(), place("loop"));
        QFile::link(mediaFolder() + "/all", place("all/again"));
        QFile::link("/nonexistent", place("dangling.mp3"));
        addSong("good.mp3", {"Good"});
        QVERIFY(index());
        ::close(listener);
        const auto songs = result(Type::AllSongs);
        QCOMPARE(rowOf(*songs, "songTitle", "pipe.mp3"), -1);
        QCOMPARE(rowOf(*songs, "songTitle", "s.mp3"), -1);
        QCOMPARE(rowOf(*songs, "songTitle", "dangling.mp3"), -1);
        QVERIFY(rowOf(*songs, "songTitle", "Good") >= 0);
        QVERIFY(rowOf(*songs, "songTitle", "random.mp3") >= 0);
        QStringList uris = texts(*songs, "songUri");
        QCOMPARE(uris.removeDuplicates(), 0);
        QCOMPARE(uris.filter("/again/").size(), 0);
        QCOMPARE(log.warnings(), QStringList());
        // Nothing is read again that has not changed.
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        indexAnew();
        QVERIFY(indexed.wait(10000));
        const auto report = indexed.first().first().value<KelvoIndexReport>();
        QCOMPARE(report.added + report.changed + report.moved + report.removed, 0);
    }

    void waitsForAGrowingFile()
    {
        QVERIFY(index());
        QFile whole(generated("tone.mp3"));
        QVERIFY(whole.open(QIODevice::ReadOnly));
        QFile growing(place("growing.mp3"));
        QVERIFY(growing.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray bytes = whole.readAll();
        growing.write(bytes.left(100));
        QVERIFY(waitForFiles(1));
        growing.write(bytes.mid(100));
        growing.close();
        QTRY_COMPARE_WITH_TIMEOUT(value(*result(Type::AllSongs), 0, "songLength").toInt(), 3, Soon);
        QCOMPARE(titles(Type::AllSongs), QStringList("tone"));
    }

    void latin1BytesNameTheFileOfThoseBytesFirst_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("m3u") << "list.m3u" << QByteArray("caf\xE9.mp3\nth\xE9.mp3\nplain.mp3\n");
        QTest::newRow("pls") << "list.pls"
                             << QByteArray("[playlist]\nFile1=caf\xE9.mp3\nTitle1=x\xE9\nFile2=th\xE9.mp3\n"
                                           "File3=plain.mp3\nNumberOfEntries=3\n");
    }

    void latin1BytesNameTheFileOfThoseBytesFirst()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, text);
        // Two files of one name in two encodings, and one that has only the UTF-8 name.
        const QString folder = QString::fromUtf8("Mus\xC3\xADk/");
        const QByteArray made = QFile::encodeName(addSong(folder + "made.mp3", {"Exact"}));
        const QByteArray path = made.left(made.lastIndexOf('/') + 1);
        QCOMPARE(::rename(made.constData(), (path + "caf\xE9.mp3").constData()), 0);
        addSong(folder + QString::fromUtf8("caf\xC3\xA9.mp3"), {"Other"});
        addSong(folder + QString::fromUtf8("th\xC3\xA9.mp3"), {"Decoded"});
        addSong(folder + "plain.mp3", {"Plain"});
        addText(folder + file, text);
        QVERIFY(index());
        const auto lists = result(Type::AllPlaylists);
        QCOMPARE(lists->rowCount(), 1);
        const auto entries = result(Type::SongsOfPlaylist, lists->index(0, 0).data().toInt());
        QCOMPARE(texts(*entries, "songTitle"), QStringList({"Exact", "Decoded", "Plain"}));
    }

    void makesPlaylistsOfPlaylistFiles_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("name");
        QTest::newRow("m3u") << "My list.m3u"
                             << QByteArray("#EXTM3U\n#EXTINF:10,Radio\nhttp://example.org/radio.mp3\n"
                                           "#EXTINF:1,Other words\nb%20.mp3\nsub/a.mp3\n")
                             << "My list";
        QTest::newRow("pls") << "list.pls"
                             << QByteArray(
                                    "[playlist]\nNumberOfEntries=3\nFile1=http://example.org/radio.mp3\n"
                                    "Title1=Radio\nFile2=b%20.mp3\nFile3=sub/a.mp3\n")
                             << "list";
        QTest::newRow("pls with blanks around its signs")
            << "list.pls"
            << QByteArray("[playlist]\nNumberOfEntries = 3\nFile1 = http://example.org/radio.mp3\n"
                          "Title1 = Radio\nFile2 = b%20.mp3\nFile3 = sub/a.mp3\n")
            << "list";
        QTest::newRow("m3u in UTF-8 with its mark, and paths")
            << "list.m3u"
            << QByteArray("\xEF\xBB\xBF#EXTM3U\n#EXTINF:10,Radio\nhttp://example.org/radio.mp3\n"
                          "FOLDER/b%20.mp3\nFOLDER/sub/a.mp3\n")
            << "list";
        QTest::newRow("pls behind a remark")
            << "list.pls"
            << QByteArray(
                   "; mine\n[playlist]\nFile1=http://example.org/radio.mp3\nTitle1=Radio\nFile2=b%20.mp3\n"
                   "File3=sub/a.mp3\n")
            << "list";
        QTest::newRow("m3u that is called pls")
            << "list.pls"
            << QByteArray("#EXTM3U\n#EXTINF:10,Radio\nhttp://example.org/radio.mp3\nb%20.mp3\nsub/a.mp3\n")
            << "list";
        QTest::newRow("xspf")
            << "list.xspf"
            << QByteArray("<?xml version=\"1.0\"?><playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/"
                          "\"><title>Named</title><trackList><track><location>http://example.org/"
                          "radio.mp3</location><title>Radio</title></track><track><location>b%2520."
                          "mp3</location></track><track><location>sub/a.mp3</location></track>"
                          "</trackList></playlist>")
            << "Named";
    }

    void makesPlaylistsOfPlaylistFiles()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, text);
        QFETCH(QString, name);
        addSong("sub/a.mp3", {"Song A", "Artist"});
        addSong("b%20.mp3", {"Song B"});
        const QString path = addText(file, text.replace("FOLDER", local(mediaFolder())));
        QVERIFY(index());
        const auto lists = result(Type::AllPlaylists);
        QCOMPARE(lists->rowCount(), 1);
        QCOMPARE(lists->index(0, 1).data().toString(), name);
        QCOMPARE(
            lists->index(0, 2).data().toString(), QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded()));
        QCOMPARE(value(*lists, 0, "playlistTrackCount").toInt(), 3);
        QVERIFY(value(*lists, 0, "playlistLength").toInt() >= 2);
        const auto entries = result(Type::SongsOfPlaylist, lists->index(0, 0).data().toInt());
        QCOMPARE(texts(*entries, "songTitle"), QStringList({"Radio", "Song B", "Song A"}));
        QCOMPARE(entries->index(0, 0).data().toInt(), 0);
        QCOMPARE(entries->index(0, 2).data().toString(), "http://example.org/radio.mp3");
        QVERIFY(entries->index(2, 0).data().toInt() > 0);
        QCOMPARE(value(*entries, 2, "artistName").toString(), "Artist");
    }

    void marksTheEntriesOfAFavoritesList()
    {
        addSong("a.mp3", {"A"});
        addSong("b.mp3", {"B"});
        addText("Favourites.m3u", "a.mp3\n");
        QVERIFY(index());
        QCOMPARE(titles(Type::FavoriteSongs), QStringList("A"));
        addText("Favourites.m3u", "b.mp3\nb.mp3\n");
        QTRY_COMPARE_WITH_TIMEOUT(titles(Type::FavoriteSongs), QStringList("B"), 5000);
        QVERIFY(QFile::remove(place("Favourites.m3u")));
        QTRY_COMPARE_WITH_TIMEOUT(titles(Type::FavoriteSongs), QStringList(), 5000);
    }

    /// They are found by their names, and listed, but nothing in them is an entry.
    void takesNoEntriesOfWhatIsNoList_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("segments of a stream") << QByteArray("#EXTM3U\n#EXT-X-VERSION:3\n#EXTINF:1,\na.mp3\n");
        QTest::newRow("page") << QByteArray("<html>\na.mp3\n</html>\n");
        QTest::newRow("blanks") << QByteArray(" \n\n");
    }

    void takesNoEntriesOfWhatIsNoList()
    {
        QFETCH(QByteArray, text);
        addText("list.m3u", text);
        QVERIFY(index());
        const auto lists = result(Type::AllPlaylists);
        QCOMPARE(lists->rowCount(), 1);
        QCOMPARE(value(*lists, 0, "playlistTrackCount").toInt(), 0);
    }

    void namesUntitledEntriesByTheirAddresses()
    {
        addText("list.m3u", "http://h/a/b%20c.mp3?d=/e#f\nhttp://h/caf%C3%A9.mp3\nhttp://h/\n");
        QVERIFY(index());
        const auto lists = result(Type::AllPlaylists);
        QCOMPARE(lists->rowCount(), 1);
        const auto entries = result(Type::SongsOfPlaylist, lists->index(0, 0).data().toInt());
        QCOMPARE(texts(*entries, "songTitle"), QStringList({"b c.mp3", "café.mp3", "http://h/"}));
    }

private:
    /// What each video has of this.
    static QStringList ofVideos(const QString &property)
    {
        QSparqlConnection connection("QTRACKER", QSparqlConnectionOptions());
        QSparqlQueryModel model;
        QSignalSpy finished(&model, &QSparqlQueryModel::finished);
        model.setQuery(
            QSparqlQuery(QStringLiteral("SELECT ?wanted { ?video a nmm:Video ; %1 ?wanted }").arg(property),
                QSparqlQuery::SelectStatement),
            connection);
        return finished.wait() ? texts(model, "wanted") : QStringList();
    }
};

KELVO_TEST(TrackerMediaTest)
#include "TrackerMediaTest.moc"
