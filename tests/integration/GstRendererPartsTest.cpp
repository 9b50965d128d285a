// SPDX-License-Identifier: MIT
#include "ErrorMapping.h"
#include "KelvoTestCase.h"
#include "PlaylistFile.h"
#include "PlaylistFileParser.h"
#include "RendererValues.h"
#include "StallWatch.h"
#include "TestGroup.h"

#include <QTest>

using PlaylistFile::Format;

/// The parts of the GStreamer renderer that need no pipeline.
class GstRendererPartsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void volumeScaleIsCubic()
    {
        QCOMPARE(RendererValues::linearVolume(0), 0.0);
        QCOMPARE(RendererValues::linearVolume(99), 1.0);
        QVERIFY(RendererValues::linearVolume(50) < 0.15);
        for (int volume = 0; volume <= 99; ++volume)
            QCOMPARE(RendererValues::cubicVolume(RendererValues::linearVolume(volume)), volume);
        QCOMPARE(RendererValues::cubicVolume(4.0), 99); // some mixers go beyond full
    }

    void mapsFailures_data()
    {
        QTest::addColumn<QString>("domain");
        QTest::addColumn<int>("number");
        QTest::addColumn<bool>("fromSource");
        QTest::addColumn<int>("status");
        QTest::addColumn<QUrl>("uri");
        QTest::addColumn<int>("code");
        const QUrl remote("http://host/a.mp3");
        const QUrl local("file:///no/such/a.mp3");
        const auto row = [](const char *name, const char *domain, int number, bool fromSource, int status,
                             const QUrl &uri, KelvoError::Code code) {
            QTest::newRow(name) << QStringLiteral("gst-%1-error-quark").arg(QLatin1String(domain)) << number
                                << fromSource << status << uri << int(code);
        };
        row("not found", "resource", 3, true, 0, local, KelvoError::NotFound);
        row("folder", "resource", 5, true, 0, QUrl("file:///"), KelvoError::IsFolder);
        row("unreadable file", "resource", 5, true, 0, local, KelvoError::ReadFailed);
        row("unreadable stream", "resource", 9, true, 0, remote, KelvoError::NetworkFailed);
        row("not authorised", "resource", 15, true, 0, remote, KelvoError::AccessDenied);
        row("404", "resource", 3, true, 404, remote, KelvoError::NotFound);
        row("418", "resource", 5, true, 418, remote, KelvoError::ReadFailed);
        row("500", "resource", 5, true, 500, remote, KelvoError::ServerError);
        row("source without a cause", "stream", 1, true, 0, remote, KelvoError::NetworkFailed);
        row("file source without a cause", "stream", 1, true, 0, local, KelvoError::ReadFailed);
        row("inner failure", "stream", 1, false, 0, remote, KelvoError::CorruptMedia);
        row("wrong type", "stream", 5, false, 0, local, KelvoError::UnsupportedType);
        row("codec", "stream", 6, false, 0, local, KelvoError::CodecMissing);
        row("decoder", "stream", 7, false, 0, local, KelvoError::CorruptMedia);
        row("demuxer", "stream", 9, false, 0, local, KelvoError::CorruptMedia);
        row("encrypted", "stream", 12, false, 0, local, KelvoError::AccessDenied);
        row("missing plug-in", "core", 12, false, 0, local, KelvoError::CodecMissing);
        row("other core error", "core", 4, false, 0, local, KelvoError::EngineFailed);
        row("library", "library", 3, false, 0, local, KelvoError::EngineFailed);
    }

    void mapsFailures()
    {
        QFETCH(QString, domain);
        QFETCH(int, number);
        QFETCH(bool, fromSource);
        QFETCH(int, status);
        QFETCH(QUrl, uri);
        QFETCH(int, code);
        PipelineFailure failure;
        failure.domain = domain;
        failure.code = number;
        failure.uri = uri;
        failure.fromSource = fromSource;
        failure.httpStatus = status;
        QCOMPARE(int(ErrorMapping::codeOf(failure)), code);
    }

    void noticesStalls()
    {
        StallWatch watch;
        watch.restart(1000);
        QVERIFY(!watch.isStalled(1500, 5, 100, 2000));
        QVERIFY(!watch.isStalled(3000, 5, 100, 2000));
        QVERIFY(!watch.isStalled(3400, 6, 100, 2000)); // moved
        QVERIFY(!watch.isStalled(5000, 6, 99, 2000)); // the buffer did
        QVERIFY(!watch.isStalled(6999, 6, 99, 2000));
        QVERIFY(watch.isStalled(7000, 6, 99, 2000));
        watch.restart(7000);
        QVERIFY(!watch.isStalled(8000, 6, 99, 2000));
    }

    void recognisesLists_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("announced");
        QTest::addColumn<int>("format");
        const auto row = [](const char *name, const QByteArray &head, Format announced, Format format) {
            QTest::newRow(name) << head << int(announced) << int(format);
        };
        row("pls", "[playlist]\nFile1=a", Format::None, Format::Pls);
        row("pls in capitals", "\r\n[PLAYLIST]\r\n", Format::None, Format::Pls);
        row("pls with a mark of its encoding", "\xEF\xBB\xBF[playlist]\n", Format::None, Format::Pls);
        row("m3u", "#EXTM3U\na.mp3", Format::None, Format::M3u);
        row("m3u given as pls", "#EXTM3U\na.mp3", Format::Pls, Format::M3u);
        row("plain lines", "a.mp3\nb.mp3\n", Format::M3u, Format::M3u);
        row("plain lines not announced", "a.mp3\nb.mp3\n", Format::None, Format::None);
        row("segments of a stream", "#EXTM3U\n#EXT-X-VERSION:3\n", Format::M3u, Format::None);
        row("xspf", "<?xml version='1.0'?><playlist xmlns='http://xspf.org/ns/0/'>", Format::None,
            Format::Xspf);
        row("page", "<html><body>playlist</body></html>", Format::M3u, Format::None);
        row("sound", QByteArray("ID3\4\0\0", 6), Format::Pls, Format::None);
        row("nothing", "", Format::Pls, Format::Pls);
        row("nothing, not announced", "", Format::None, Format::None);
        row("zeros", QByteArray(100, '\0'), Format::Pls, Format::Pls);
    }

    void recognisesLists()
    {
        QFETCH(QByteArray, head);
        QFETCH(int, announced);
        QFETCH(int, format);
        QCOMPARE(int(PlaylistFile::recognised(head, PlaylistFile::Formats(announced))), format);
    }

    void takesHints()
    {
        using PlaylistFile::Formats;
        QCOMPARE(PlaylistFile::announced(QUrl("http://h/a"), QStringLiteral("audio/x-scpls; charset=x")),
            Formats(Format::Pls));
        QCOMPARE(PlaylistFile::announced(QUrl("http://h/a.M3U?x=y"), {}), Formats(Format::M3u));
        QCOMPARE(PlaylistFile::announced(QUrl("http://h/a.m3u"), QStringLiteral("audio/x-scpls")),
            Format::M3u | Format::Pls);
        QCOMPARE(PlaylistFile::announced(QUrl("file:///a.xspf"), {}), Formats(Format::Xspf));
        QCOMPARE(PlaylistFile::announced(QUrl("file:///a.mp3"), QStringLiteral("audio/mpeg")), Formats());
    }

    void resolvesEntries_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<QUrl>("list");
        QTest::addColumn<QUrl>("expected");
        const QUrl local("file:///music/lists/a.m3u");
        const QUrl remote("http://host/lists/a.m3u?x=1");
        const auto row
            = [](const char *name, const QByteArray &entry, const QUrl &list, const char *expected) {
                  QTest::newRow(name) << entry << list << QUrl(QString::fromUtf8(expected));
              };
        row("name", "b.mp3", local, "file:///music/lists/b.mp3");
        row("name with blanks and signs", "b #1 100%.mp3", local,
            "file:///music/lists/b%20%231%20100%25.mp3");
        row("other folder", "../b.mp3", local, "file:///music/b.mp3");
        row("absolute path", "/b/c.mp3", local, "file:///b/c.mp3");
        row("uri", "http://other/b.mp3", local, "http://other/b.mp3");
        row("letters of other alphabets", "\xC3\xBC.mp3", local, "file:///music/lists/%C3%BC.mp3");
        row("latin-1", "\xFC.mp3", local, "file:///music/lists/%C3%BC.mp3");
        row("remote name", "b.mp3", remote, "http://host/lists/b.mp3");
        row("remote path", "/b.mp3", remote, "http://host/b.mp3");
        row("remote other folder", "../b.mp3", remote, "http://host/b.mp3");
    }

    void resolvesEntries()
    {
        QFETCH(QByteArray, entry);
        QFETCH(QUrl, list);
        QFETCH(QUrl, expected);
        const PlaylistFile::Contents contents
            = PlaylistFileParser::parse("#EXTM3U\n" + entry + '\n', Format::M3u, list);
        QCOMPARE(contents.entries, QList<QUrl>{expected});
    }
};

KELVO_TEST(GstRendererPartsTest)
#include "GstRendererPartsTest.moc"
