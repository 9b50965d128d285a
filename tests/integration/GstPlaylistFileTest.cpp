// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "HttpTestServer.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using R = KelvoRenderer;

namespace {
QByteArray pls(const QList<QByteArray> &entries)
{
    QByteArray text = "[playlist]\n";
    for (int i = 0; i < entries.count(); ++i)
        text += "File" + QByteArray::number(i + 1) + '=' + entries.at(i) + '\n';
    return text + "NumberOfEntries=" + QByteArray::number(entries.count()) + "\nVersion=2\n";
}

QByteArray m3u(const QList<QByteArray> &entries)
{
    return "#EXTM3U\n" + entries.join('\n') + '\n';
}

QByteArray xspf(const QList<QByteArray> &entries)
{
    QByteArray text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\"><trackList>\n";
    for (const QByteArray &entry : entries)
        text += "<track><location>" + entry + "</location></track>\n";
    return text + "</trackList></playlist>\n";
}
} // namespace

/// Playlist files, local and from a server.
class GstPlaylistFileTest : public GstTestCase
{
    Q_OBJECT
private:
    QTemporaryDir m_folder;
    HttpTestServer m_server;

    QUrl write(const QString &name, const QByteArray &text)
    {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write %s", qPrintable(name));
        return QUrl::fromLocalFile(file.fileName());
    }
    QUrl serve(const QString &path, const QByteArray &text, const QByteArray &type)
    {
        HttpTestServer::Resource resource;
        resource.body = text;
        resource.contentType = type;
        m_server.serve(path, resource);
        return m_server.url(path);
    }
    void failsWith(KelvoError::Code code)
    {
        QTRY_COMPARE_WITH_TIMEOUT(heard().errors(), QList<int>{code}, 10000);
        TRY_STATE(Stopped);
        QTRY_COMPARE(heard().askPosition(), 0);
        QCOMPARE(heard().errors().count(), 1);
        QCOMPARE(heard().completed(), 0);
        QCOMPARE(heard().scanning().isEmpty() ? 1.0F : heard().scanning().constLast(), 1.0F);
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Beside the lists, so that names without a folder find them.
        for (const char *name : {"blip.flac", "short.mp3"})
            QVERIFY(QFile::copy(mediaFile(name), m_folder.filePath(QLatin1String(name))));
        m_server.serveFile(
            QStringLiteral("/music/blip.flac"), mediaFile(QStringLiteral("blip.flac")), "audio/flac");
        m_server.serveFile(
            QStringLiteral("/short.mp3"), mediaFile(QStringLiteral("short.mp3")), "audio/mpeg");
    }
    void init() { GstTestCase::init(); }

    void playsEveryFormat_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QList<QUrl>>("entries");
        const QByteArray absolute = media(QStringLiteral("blip.flac")).toEncoded();
        const QList<QByteArray> two{"blip.flac", absolute};
        // What came from the network names what is there.
        const QUrl other = m_server.url(QStringLiteral("/other/blip.flac"));
        m_server.serveFile(other.path(), mediaFile(QStringLiteral("blip.flac")), "audio/flac");
        const QList<QByteArray> twoThere{"blip.flac", other.toEncoded()};
        const QList<QUrl> local{QUrl::fromLocalFile(m_folder.filePath(QStringLiteral("blip.flac"))),
            media(QStringLiteral("blip.flac"))};
        const QList<QUrl> remote{m_server.url(QStringLiteral("/music/blip.flac")), other};
        const QString scpls = QStringLiteral("audio/x-scpls");
        const QString none;
        QTest::newRow("pls") << write(QStringLiteral("a.pls"), pls(two)) << scpls << local;
        QTest::newRow("pls by its name") << write(QStringLiteral("a.pls"), pls(two)) << none << local;
        QTest::newRow("pls by its content") << write(QStringLiteral("pls-list"), pls(two)) << none << local;
        QTest::newRow("m3u") << write(QStringLiteral("a.m3u"), m3u(two)) << none << local;
        QTest::newRow("m3u given as pls") << write(QStringLiteral("a.m3u"), m3u(two)) << scpls << local;
        QTest::newRow("m3u by its content") << write(QStringLiteral("m3u-list"), m3u(two)) << none << local;
        QTest::newRow("m3u of plain lines")
            << write(QStringLiteral("plain.m3u"), "blip.flac\r\n" + absolute + "\r\n") << none << local;
        QTest::newRow("xspf") << write(QStringLiteral("a.xspf"), xspf(two)) << none << local;
        QTest::newRow("xspf by its content")
            << write(QStringLiteral("xspf-list"), xspf(two)) << none << local;
        QVERIFY(QFile::copy(
            mediaFile(QStringLiteral("blip.flac")), m_folder.filePath(QStringLiteral("b c.flac"))));
        QTest::newRow("xspf with an escaped name")
            << write(QStringLiteral("escaped.xspf"), xspf({"b%20c.flac", absolute})) << none
            << QList<QUrl>{QUrl::fromLocalFile(m_folder.filePath(QStringLiteral("b c.flac"))),
                   media(QStringLiteral("blip.flac"))};
        QTest::newRow("http pls") << serve(QStringLiteral("/music/a.pls"), pls(twoThere), "audio/x-scpls")
                                  << scpls << remote;
        QTest::newRow("http pls by its content")
            << serve(QStringLiteral("/music/listen"), pls(twoThere), "audio/x-scpls") << none << remote;
        QTest::newRow("http m3u") << serve(QStringLiteral("/music/a.m3u"), m3u(twoThere), "audio/x-mpegurl")
                                  << none << remote;
        QTest::newRow("http xspf") << serve(
            QStringLiteral("/music/a.xspf"), xspf(twoThere), "application/xspf+xml")
                                   << none << remote;
        QTest::newRow("gaps, order and a wrong count") << write(QStringLiteral("odd.pls"),
            "[playlist]\nFile9=" + absolute + "\nTitle3=x\nFile3=blip.flac\nNumberOfEntries=77\n")
                                                       << none << local;
    }

    void playsEveryFormat()
    {
        QFETCH(QUrl, url);
        QFETCH(QString, type);
        QFETCH(QList<QUrl>, entries);
        if (type.isEmpty())
            renderer()->playUri(url);
        else
            renderer()->playUriWithType(url, type);
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().errors(), QList<int>());
        QCOMPARE(heard().mediaUrls().mid(1), entries);
        QCOMPARE(heard().mediaIndexes().count(-1), heard().mediaIndexes().count());
    }

    void resolvesEntriesInOtherFolders()
    {
        renderer()->playUri(
            serve(QStringLiteral("/lists/far/a.m3u"), m3u({"../../music/blip.flac", "/short.mp3"}), ""));
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().mediaUrls().mid(1),
            (QList<QUrl>{m_server.url(QStringLiteral("/music/blip.flac")),
                m_server.url(QStringLiteral("/short.mp3"))}));
    }

    void playsMediaGivenAsList()
    {
        renderer()->playUriWithType(media(QStringLiteral("short.mp3")), QStringLiteral("audio/x-scpls"));
        QTRY_COMPARE(heard().completed(), 1);
        heard().clear();
        renderer()->playUriWithType(
            m_server.url(QStringLiteral("/short.mp3")), QStringLiteral("audio/x-scpls"));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().errors(), QList<int>());
    }

    void skipsWithinAList()
    {
        const QByteArray entry = media(QStringLiteral("long.mp3")).toEncoded();
        renderer()->playUri(write(QStringLiteral("skip.m3u"), m3u({entry, "short.mp3"})));
        TRY_STATE(Playing);
        renderer()->next();
        QTRY_COMPARE(heard().mediaUrls().constLast().fileName(), QStringLiteral("short.mp3"));
        TRY_STATE(Playing);
        renderer()->previous();
        QTRY_COMPARE(heard().mediaUrls().constLast().fileName(), QStringLiteral("long.mp3"));
        TRY_STATE(Playing);
        renderer()->next();
        renderer()->next();
        TRY_STATE(Stopped);
        QCOMPARE(heard().completed(), 0);
    }

    void searchesForWhatPlays()
    {
        renderer()->playUri(write(
            QStringLiteral("partly.m3u"), m3u({"nowhere.mp3", "neither.mp3", "blip.flac", "gone.mp3"})));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().scanning(), (QList<float>{0.0F, 0.25F, 0.5F, 1.0F}));
        // One for those before the first that plays, and one for each after it.
        QCOMPARE(heard().errors(), (QList<int>{KelvoError::NotFound, KelvoError::NotFound}));
    }

    void listWithinAPlaylistPlaysInPlace()
    {
        const QUrl list = write(QStringLiteral("inner.pls"), pls({"blip.flac", "blip.flac"}));
        const auto playlist
            = makePlaylist({media(QStringLiteral("blip.flac")), list, media(QStringLiteral("short.mp3"))});
        renderer()->assignPlaylist(playlist.get());
        renderer()->play();
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().mediaIndexes(), (QList<int>{0, 1, 1, 1, 2}));
        QCOMPARE(heard().errors(), QList<int>());
        renderer()->assignPlaylist(nullptr);
    }

    void badListWithinAPlaylistIsOneError()
    {
        const QUrl list = write(QStringLiteral("bad.pls"), pls({"nowhere.mp3", "neither.mp3"}));
        const auto playlist = makePlaylist({list, media(QStringLiteral("blip.flac"))});
        renderer()->assignPlaylist(playlist.get());
        renderer()->play();
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().errors(), QList<int>{KelvoError::NothingPlayable});
        renderer()->assignPlaylist(nullptr);
    }

    void unusableLists_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<int>("code");
        const auto row = [](const char *name, const QUrl &url, KelvoError::Code code) {
            QTest::newRow(name) << url << int(code);
        };
        row("missing", QUrl::fromLocalFile(m_folder.filePath(QStringLiteral("missing.pls"))),
            KelvoError::NotFound);
        row("nothing at all", write(QStringLiteral("void.pls"), ""), KelvoError::EmptyPlaylist);
        row("only blanks", write(QStringLiteral("blank.m3u"), "\n\n  \n"), KelvoError::EmptyPlaylist);
        row("no entries pls", write(QStringLiteral("none.pls"), pls({})), KelvoError::EmptyPlaylist);
        row("no entries m3u", write(QStringLiteral("none.m3u"), m3u({})), KelvoError::EmptyPlaylist);
        row("no entries xspf", write(QStringLiteral("none.xspf"), xspf({})), KelvoError::EmptyPlaylist);
        row("broken xspf",
            write(QStringLiteral("broken.xspf"),
                "<playlist xmlns=\"http://xspf.org/ns/0/\"><trackList><track>"),
            KelvoError::InvalidPlaylist);
        row("names itself", write(QStringLiteral("self.pls"), pls({"self.pls"})),
            KelvoError::InvalidPlaylist);
        row("names another that names it", write(QStringLiteral("one.m3u"), m3u({"two.m3u"})),
            KelvoError::NothingPlayable);
        write(QStringLiteral("two.m3u"), m3u({"one.m3u"}));
        row("all bad", write(QStringLiteral("bad.m3u"), m3u({"nowhere.mp3", "nonsense://x/y", "self.pls"})),
            KelvoError::NothingPlayable);
        row("http 404", m_server.url(QStringLiteral("/missing.pls")), KelvoError::NotFound);
        row("http refused", HttpTestServer::refusingUrl().resolved(QUrl(QStringLiteral("a.pls"))),
            KelvoError::NetworkFailed);
        row("http unknown host", QUrl(QStringLiteral("http://no-such-host.invalid/a.pls")),
            KelvoError::NetworkFailed);
        HttpTestServer::Resource silent;
        silent.silent = true;
        m_server.serve(QStringLiteral("/silent.pls"), silent);
        row("http silent", m_server.url(QStringLiteral("/silent.pls")), KelvoError::Stalled);
        row("http names itself", serve(QStringLiteral("/self.pls"), pls({"self.pls"}), "audio/x-scpls"),
            KelvoError::InvalidPlaylist);
    }

    void unusableLists()
    {
        QFETCH(QUrl, url);
        QFETCH(int, code);
        renderer()->playUriWithType(url, QStringLiteral("audio/x-scpls"));
        failsWith(KelvoError::Code(code));
    }

    void tooLargeList_data()
    {
        QTest::addColumn<bool>("remote");
        QTest::addColumn<QByteArray>("head");
        QTest::newRow("file") << false << pls({"blip.flac"});
        QTest::newRow("file of zeros") << false << QByteArray();
        QTest::newRow("http") << true << pls({"blip.flac"});
    }

    void tooLargeList()
    {
        QFETCH(bool, remote);
        QFETCH(QByteArray, head);
        const qint64 size = 200LL * 1024 * 1024;
        const QUrl local = write(QStringLiteral("huge.pls"), head);
        QVERIFY(QFile::resize(local.toLocalFile(), size)); // takes no room on the disk
        HttpTestServer::Resource resource;
        resource.body = head;
        resource.padding = size;
        m_server.serve(QStringLiteral("/huge.pls"), resource);
        QElapsedTimer time;
        time.start();
        renderer()->playUri(remote ? m_server.url(QStringLiteral("/huge.pls")) : local);
        failsWith(KelvoError::PlaylistTooLarge);
        QVERIFY2(time.elapsed() < 5000, qPrintable(QString::number(time.elapsed())));
    }

    void stopWhileReading()
    {
        HttpTestServer::Resource resource;
        resource.silent = true;
        m_server.serve(QStringLiteral("/slow.pls"), resource);
        renderer()->playUri(m_server.url(QStringLiteral("/slow.pls")));
        TRY_STATE(Transitioning);
        renderer()->pause();
        TRY_STATE(Paused);
        renderer()->resume();
        TRY_STATE(Transitioning);
        renderer()->stop();
        TRY_STATE(Stopped);
        QTest::qWait(1500); // the server's silence would have been reported by then
        QCOMPARE(heard().errors(), QList<int>());
        QCOMPARE(heard().scanning(), (QList<float>{0.0F, 1.0F}));
    }
};

KELVO_TEST(GstPlaylistFileTest)
#include "GstPlaylistFileTest.moc"
