// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "HttpTestServer.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using R = KelvoRenderer;

/// What cannot be played, or not properly: one clear error each, and playback goes on with the next item.
class GstErrorTest : public GstTestCase
{
    Q_OBJECT
private:
    HttpTestServer m_server;

    QUrl serve(const QString &path, HttpTestServer::Resource resource)
    {
        m_server.serve(path, resource);
        return m_server.url(path);
    }
    static QByteArray contents(const QString &name)
    {
        QFile file(mediaFile(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QUrl status(int code)
    {
        HttpTestServer::Resource resource;
        resource.status = code;
        resource.body = "sorry";
        return serve(QStringLiteral("/status%1.mp3").arg(code), resource);
    }
    QUrl silent()
    {
        HttpTestServer::Resource resource;
        resource.silent = true;
        return serve(QStringLiteral("/silent.mp3"), resource);
    }
    QUrl stalling()
    {
        HttpTestServer::Resource resource;
        resource.body = contents(QStringLiteral("long.mp3"));
        resource.stallAfter = 60000;
        return serve(QStringLiteral("/stalling.mp3"), resource);
    }
    QUrl stallingAtOnce()
    {
        HttpTestServer::Resource resource;
        resource.body = contents(QStringLiteral("long.mp3"));
        resource.stallAfter = 0;
        return serve(QStringLiteral("/stalling-at-once.mp3"), resource);
    }
    QUrl served(const QString &name)
    {
        HttpTestServer::Resource resource;
        resource.body = contents(name);
        return serve(QLatin1Char('/') + name, resource);
    }
    QUrl redirectionInCircles()
    {
        HttpTestServer::Resource resource;
        resource.status = 302;
        resource.location = m_server.url(QStringLiteral("/circle.mp3")).toEncoded();
        return serve(QStringLiteral("/circle.mp3"), resource);
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }

    void unplayable_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<int>("code");
        const auto row = [](const char *name, const QUrl &url, KelvoError::Code code) {
            QTest::newRow(name) << url << int(code);
        };
        row("missing file", media(QStringLiteral("no-such-file.mp3")), KelvoError::NotFound);
        row("file in a missing folder", QUrl("file:///no/such/folder/a.mp3"), KelvoError::NotFound);
        row("file without a path", QUrl("file://"), KelvoError::NotFound);
        row("words", QUrl("just some words"), KelvoError::InvalidUrl);
        row("empty", QUrl(), KelvoError::InvalidUrl);
        row("relative", QUrl("music/a.mp3"), KelvoError::InvalidUrl);
        row("invalid", QUrl("http://[broken/a.mp3"), KelvoError::InvalidUrl);
        row("unknown scheme", QUrl("nonsense://host/a.mp3"), KelvoError::InvalidUrl);
        row("folder", media(QStringLiteral("folder.mp3")), KelvoError::IsFolder);
        row("empty file", media(QStringLiteral("empty.mp3")), KelvoError::EmptyMedia);
        row("random bytes", media(QStringLiteral("random.mp3")), KelvoError::UnsupportedType);
        row("page", media(QStringLiteral("page.html")), KelvoError::UnsupportedType);
        row("text", media(QStringLiteral("words.txt")), KelvoError::UnsupportedType);
        row("mp4 without index", media(QStringLiteral("no-index.mp4")), KelvoError::CorruptMedia);
        row("mp4 with an endless index", media(QStringLiteral("huge-atom.mp4")), KelvoError::CorruptMedia);
        row("mp4 with endless data", media(QStringLiteral("huge-mdat.mp4")), KelvoError::CorruptMedia);
        row("mp3 with an endless tag", media(QStringLiteral("endless-tag.mp3")), KelvoError::CorruptMedia);
        row("unknown codec", media(QStringLiteral("unknown-codec.mka")), KelvoError::CodecMissing);
        row("401", status(401), KelvoError::AccessDenied);
        row("403", status(403), KelvoError::AccessDenied);
        row("404", status(404), KelvoError::NotFound);
        row("410", status(410), KelvoError::NotFound);
        row("500", status(500), KelvoError::ServerError);
        row("503", status(503), KelvoError::ServerError);
        row("empty body", served(QStringLiteral("empty.mp3")), KelvoError::EmptyMedia);
        row("random body", served(QStringLiteral("random.mp3")), KelvoError::UnsupportedType);
        row("redirection in circles", redirectionInCircles(), KelvoError::NetworkFailed);
        row("refused", HttpTestServer::refusingUrl(), KelvoError::NetworkFailed);
        row("unknown host", QUrl("http://no-such-host.invalid/a.mp3"), KelvoError::NetworkFailed);
        row("silent server", silent(), KelvoError::NetworkFailed);
        row("stalls before the first byte", stallingAtOnce(), KelvoError::Stalled);
        row("stalls in mid-stream", stalling(), KelvoError::Stalled);
    }

    void unplayable()
    {
        QFETCH(QUrl, url);
        QFETCH(int, code);
        renderer()->playUri(url);
        QTRY_COMPARE_WITH_TIMEOUT(heard().errors().value(0), code, 10000);
        TRY_STATE(Stopped);
        QTRY_COMPARE(heard().askPosition(), 0);
        QCOMPARE(heard().errors(), QList<int>{code});
        QCOMPARE(heard().completed(), 0);

        heard().clear();
        const auto playlist = makePlaylist({url, media(QStringLiteral("blip.flac"))});
        renderer()->assignPlaylist(playlist.get());
        renderer()->play();
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 60'000);
        QCOMPARE(heard().errors(), QList<int>{code});
        QCOMPARE(heard().mediaIndexes(), (QList<int>{0, 1}));
    }

    void damaged_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QList<int>>("codes");
        QTest::addColumn<double>("speed");
        const auto row = [](const char *file, const QList<int> &codes, double speed) {
            QTest::newRow(file) << QString::fromLatin1(file) << codes << speed;
        };
        row("partly-known.mkv", {KelvoError::PartlyPlayable}, 4.0);
        row("truncated.mp4", {KelvoError::PrematureEnd}, 8.0);
        row("garbage.mp3", {KelvoError::PrematureEnd}, 16.0);
        row("garbage.mp4", {}, 8.0);
        row("garbage.flac", {}, 8.0);
        row("truncated.mp3", {}, 16.0);
        row("truncated.ogg", {}, 4.0);
        row("truncated.flac", {}, 4.0);
        row("truncated.webm", {}, 4.0);
        row("picture.png", {}, 1.0);
        row("large-tag.mp3", {}, 1.0);
    }

    void damaged()
    {
        QFETCH(QString, file);
        QFETCH(QList<int>, codes);
        QFETCH(double, speed);
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, speed);
        renderer()->playUri(media(file));
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 60'000);
        QCOMPARE(heard().errors(), codes);
        QVERIFY(heard().states().contains(R::Playing));
    }

    void seekBehindTheCut()
    {
        renderer()->playUri(media(QStringLiteral("truncated.mp4")));
        TRY_STATE(Playing);
        renderer()->setPosition(9, R::SeekAbsolute);
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 60'000);
        QCOMPARE(heard().errors(), QList<int>{KelvoError::PrematureEnd});
    }

    void connectionClosedEarlyIsMended()
    {
        HttpTestServer::Resource resource;
        resource.body = contents(QStringLiteral("tone.mp3"));
        resource.contentType = "audio/mpeg";
        resource.closeAfter = 20000;
        renderer()->playUri(serve(QStringLiteral("/closing.mp3"), resource));
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().errors(), QList<int>());
        QVERIFY(m_server.requests().constLast().from > 0);
    }
};

KELVO_TEST(GstErrorTest)
#include "GstErrorTest.moc"
