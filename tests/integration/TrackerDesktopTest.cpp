// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "ProcessLine.h"
#include "TestGroup.h"
#include "TrackerIndexCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

namespace {
QByteArray songText(const QByteArray &name, const QByteArray &title)
{
    return "INSERT DATA { <urn:file:" + name + "> a nfo:FileDataObject ; nie:url \"file:///music/" + name
        + "\" ; nfo:fileSize 1000 ; nfo:fileLastModified \"2026-01-02T03:04:05Z\" . <urn:content:" + name
        + "> a nmm:MusicPiece ; nie:title \"" + title + "\" ; nie:isStoredAs <urn:file:" + name
        + "> ; nfo:duration 61 ; nmm:trackNumber 2 ; nfo:genre \"Pop\" ; nie:contentCreated "
          "\"1985-01-01T00:00:00Z\" ; "
          "nmm:artist <urn:a> ; nmm:musicAlbum <urn:l> . <urn:a> a nmm:Artist ; nmm:artistName \"Desk\" . "
          "<urn:l> a "
          "nmm:MusicAlbum ; nie:title \"Top\" }";
}
} // namespace

class TrackerDesktopTest : public TrackerIndexCase
{
    Q_OBJECT

    QProcess m_desktop;

    bool tell(const QByteArray &update)
    {
        m_desktop.write(update + '\n');
        return nextLine(m_desktop) == "done";
    }

private Q_SLOTS:
    void init()
    {
        TrackerIndexCase::init();
        qputenv("KELVO_TRACKER", "bus");
    }

    void looksIntoFoldersWhereThereIsNone()
    {
        addSong("a.mp3", {"A"});
        LogRecorder log;
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs), QStringList("A"));
        QCOMPARE(log.warnings().filter("desktop's index does not run").size(), 1);
    }

    void takesOverTheDesktopsIndex()
    {
        m_desktop.start(
            QCoreApplication::applicationDirPath() + "/desktop-index-double", {folder() + "/desktop"});
        QCOMPARE(nextLine(m_desktop), "ready");
        QVERIFY(tell(songText("one.mp3", "One")));
        QVERIFY(tell(songText("two.mp3", "Two")));
        QVERIFY(tell(
            "INSERT DATA { <urn:file:v> a nfo:FileDataObject ; nie:url \"file:///v.mp4\" ; nfo:fileSize 9 ; "
            "nfo:fileLastModified \"2026-01-02T03:04:05Z\" . <urn:v> a nmm:Video ; nie:isStoredAs "
            "<urn:file:v> ; nfo:duration 7 }"));
        addSong("not looked at.mp3", {"A"});
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(texts(*songs, "songTitle"), QStringList({"One", "Two"}));
        QCOMPARE(value(*songs, 0, "songUri").toString(), "file:///music/one.mp3");
        QCOMPARE(value(*songs, 0, "songLength").toInt(), 61);
        QCOMPARE(value(*songs, 0, "trackNumber").toInt(), 2);
        QCOMPARE(value(*songs, 0, "artistName").toString(), "Desk");
        QCOMPARE(value(*songs, 0, "albumName").toString(), "Top");
        QCOMPARE(value(*songs, 0, "genre").toString(), "Pop");
        QCOMPARE(value(*songs, 0, "year").toInt(), 1985);

        QVERIFY(tell("DELETE DATA { <urn:content:one.mp3> a rdfs:Resource }"));
        QVERIFY(tell(songText("three.mp3", "Three")));
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        indexAnew();
        QVERIFY(indexed.wait(10000));
        const auto report = indexed.first().first().value<KelvoIndexReport>();
        QCOMPARE(report.added, 1);
        QCOMPARE(report.removed, 1);
        QCOMPARE(report.files, 3);
        QCOMPARE(titles(Type::AllSongs), QStringList({"Three", "Two"}));
        // The desktop knows that there is a playlist, and the file what is in it.
        QFile list(place("list.m3u"));
        QVERIFY(list.open(QIODevice::WriteOnly));
        list.write("file:///music/two.mp3\nfile:///music/three.mp3\n");
        list.close();
        QVERIFY(tell("INSERT DATA { <urn:file:p> a nfo:FileDataObject ; nie:url \"file://"
            + list.fileName().toUtf8()
            + "\" ; nfo:fileSize 9 ; nfo:fileLastModified \"2026-01-02T03:04:05Z\" . <urn:p> a nmm:Playlist "
              "; "
              "nie:isStoredAs <urn:file:p> }"));
        indexAnew();
        QVERIFY(indexed.wait(10000));
        const auto lists = result(Type::AllPlaylists);
        QCOMPARE(lists->rowCount(), 1);
        const auto entries = result(Type::SongsOfPlaylist, lists->index(0, 0).data().toInt());
        QCOMPARE(texts(*entries, "songTitle"), QStringList({"Two", "Three"}));
        closeStore();
        m_desktop.kill();
        m_desktop.waitForFinished();
    }
};

KELVO_TEST(TrackerDesktopTest)
#include "TrackerDesktopTest.moc"
