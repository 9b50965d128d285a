// SPDX-License-Identifier: MIT
#include "HttpTestServer.h"
#include "KelvoMainWindow.h"
#include "KelvoTestCase.h"
#include "KelvoThumbnailDownloader.h"
#include "LogRecorder.h"
#include "PeakMemory.h"
#include "TestGroup.h"

#include <QBuffer>
#include <QLabel>
#include <QMetaMethod>
#include <QNetworkReply>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>

using namespace std::chrono_literals;

namespace {
constexpr int longPatience = 20'000;
constexpr qint64 megabyte = 1024 * 1024;

QByteArray png(const QSize &size, QImage::Format format)
{
    QImage image(size, format);
    image.fill(0);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}
} // namespace

class ThumbnailDownloaderTest : public KelvoTestCase
{
    Q_OBJECT

    void start(const ThumbnailLimits &limits = {})
    {
        m_downloader = std::make_unique<KelvoThumbnailDownloader>(nullptr, limits);
        m_finished = std::make_unique<QSignalSpy>(m_downloader.get(), SIGNAL(downloadFinished(QByteArray)));
    }
    QByteArray result(qsizetype index = 0) const { return m_finished->at(index).first().toByteArray(); }
    void fetch(const QString &path) { m_downloader->download(m_server->url(path).toString()); }

private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_server = std::make_unique<HttpTestServer>();
        start();
    }

    void cleanup()
    {
        m_finished.reset();
        m_downloader.reset();
        m_server.reset();
    }

    void bytesAreHandedOn()
    {
        const QByteArray picture = png({8, 8}, QImage::Format_RGB32);
        m_server->serve("/a.png", {.body = picture, .contentType = "image/png"});
        LogRecorder log;
        fetch("/a.png");
        QCOMPARE(log.lines(),
            QStringList(
                "KelvoThumbnailDownloader::download, file \"" + m_server->url("/a.png").toString() + '"'));
        log.clear();
        QTRY_COMPARE(m_finished->count(), 1);
        QCOMPARE(result(), picture);
        QCOMPARE(log.lines(), QStringList("KelvoThumbnailDownloader::requestFinished"));
    }

    void downloadsFinishInTheirOwnOrder()
    {
        m_server->serve("/slow", {.body = QByteArray(300, 's'), .bytesPerSecond = 1000});
        m_server->serve("/fast", HttpTestServer::Resource{.body = "fast"});
        fetch("/slow");
        fetch("/fast");
        QTRY_COMPARE_WITH_TIMEOUT(m_finished->count(), 2, longPatience);
        QCOMPARE(result(0), QByteArray("fast"));
        QCOMPARE(result(1), QByteArray(300, 's'));
    }

    void unreachableAddressesGiveNothing_data()
    {
        QTest::addColumn<QString>("url");
        QTest::newRow("refused") << HttpTestServer::refusingUrl().toString();
        QTest::newRow("empty") << QString();
        QTest::newRow("unknown scheme") << "gopher://127.0.0.1/x";
        QTest::newRow("no URL") << "http://[broken";
        QTest::newRow("missing file") << "file:///nonexistent/picture.png";
    }

    void unreachableAddressesGiveNothing()
    {
        QFETCH(QString, url);
        m_downloader->download(url);
        QTRY_COMPARE(m_finished->count(), 1);
        QCOMPARE(result(), QByteArray());
    }

    void secureAddressWithoutCertificateGivesNothing()
    {
        QUrl url = m_server->url("/a.png"); // answers, but not securely
        url.setScheme("https");
        start({megabyte, 5s});
        m_downloader->download(url.toString());
        QTRY_COMPARE_WITH_TIMEOUT(m_finished->count(), 1, longPatience);
        QCOMPARE(result(), QByteArray());
    }

    void errorPagesAreHandedOnAsTheyAre()
    {
        m_server->serve("/gone", {.body = "<html>404</html>", .contentType = "text/html", .status = 404});
        m_server->serve("/page", {.body = "<html>hello</html>", .contentType = "text/html"});
        fetch("/gone");
        QTRY_COMPARE(m_finished->count(), 1);
        QCOMPARE(result(0), QByteArray("<html>404</html>"));
        fetch("/page");
        QTRY_COMPARE(m_finished->count(), 2);
        QCOMPARE(result(1), QByteArray("<html>hello</html>"));
    }

    void hugeBodiesEndAtTheLimit()
    {
        m_server->serve("/huge", {.body = "start", .padding = 100 * megabyte});
        fetch("/huge");
        QTRY_COMPARE_WITH_TIMEOUT(m_finished->count(), 1, longPatience);
        const QByteArray expected = "start" + QByteArray(16 * megabyte - 5, '\0');
        QVERIFY(result() == expected);
        // Beyond the limit only what lies in the buffers of the two systems between.
        QVERIFY2(m_server->bytesSent() < 32 * megabyte, QByteArray::number(m_server->bytesSent()));
    }

    void whatHasComeUpToTheLimitIsHandedOn_data()
    {
        QTest::addColumn<int>("limit");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("below") << 7 << QByteArray("0123456");
        QTest::newRow("equal") << 10 << QByteArray("0123456789");
        QTest::newRow("above") << 11 << QByteArray("0123456789");
    }

    void whatHasComeUpToTheLimitIsHandedOn()
    {
        QFETCH(int, limit);
        QFETCH(QByteArray, expected);
        m_server->serve("/ten", HttpTestServer::Resource{.body = "0123456789"});
        start({limit, 20s});
        fetch("/ten");
        QTRY_COMPARE(m_finished->count(), 1);
        QCOMPARE(result(), expected);
    }

    void theLimitHoldsForFilesToo()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("0123456789");
        file.flush();
        start({7, 20s});
        m_downloader->download(QUrl::fromLocalFile(file.fileName()).toString());
        QTRY_COMPARE(m_finished->count(), 1);
        QCOMPARE(result(), QByteArray("0123456"));
    }

    void bodiesWithinTheLimitArrive()
    {
        start({megabyte, 20s});
        m_server->serve("/large", {.body = QByteArray(megabyte, 'x')});
        fetch("/large");
        QTRY_COMPARE(m_finished->count(), 1);
        QCOMPARE(result().size(), megabyte);
    }

    void bodiesThatNeverEndAreGivenUp_data()
    {
        QTest::addColumn<bool>("silent");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("no answer") << true << QByteArray();
        QTest::newRow("stalled body") << false << QByteArray(1000, 'x');
    }

    void bodiesThatNeverEndAreGivenUp()
    {
        QFETCH(bool, silent);
        QFETCH(QByteArray, expected);
        m_server->serve("/stall", {.body = QByteArray(5000, 'x'), .stallAfter = 1000, .silent = silent});
        start({megabyte, 300ms});
        fetch("/stall");
        QTRY_COMPARE(m_finished->count(), 1);
        QCOMPARE(result(), expected);
    }

    void aNewDownloadDeletesTheLastReply()
    {
        m_server->serve("/a", HttpTestServer::Resource{.body = "a"});
        fetch("/a");
        QTRY_COMPARE(m_finished->count(), 1);
        const QPointer<QNetworkReply> reply = m_downloader->findChild<QNetworkReply *>();
        QVERIFY(reply);
        fetch("/a");
        QTRY_COMPARE(m_finished->count(), 2);
        QVERIFY(!reply);
    }

    void theReplyIsDeletedWithTheDownloader()
    {
        m_server->serve("/a", HttpTestServer::Resource{.body = "a"});
        fetch("/a");
        QTRY_COMPARE(m_finished->count(), 1);
        const QPointer<QNetworkReply> reply = m_downloader->findChild<QNetworkReply *>();
        QVERIFY(reply);
        m_downloader.reset();
        QVERIFY(!reply);
    }

    void theDownloaderMayGoInMidDownload()
    {
        m_server->serve("/stall", {.body = "abc", .stallAfter = 1});
        fetch("/stall");
        QTRY_COMPARE(m_server->requests().size(), 1);
        m_downloader.reset();
        QCOMPARE(m_finished->count(), 0);
    }

    void theDownloaderMayGoInTheThirdDownloadAfterTwoBesideEachOther()
    {
        m_server->serve("/a", HttpTestServer::Resource{.body = "a"});
        m_server->serve("/stall", {.body = "abc", .stallAfter = 1});
        fetch("/a");
        fetch("/a");
        QTRY_COMPARE(m_finished->count(), 2);
        const QList<QNetworkReply *> replies = m_downloader->findChildren<QNetworkReply *>();
        QCOMPARE(replies.size(), 2);
        const QPointer<QNetworkReply> one = replies.first();
        const QPointer<QNetworkReply> other = replies.last();
        fetch("/stall");
        m_downloader.reset();
        QVERIFY(!one);
        QVERIFY(!other);
    }

    void aNewDownloadDeletesAllThatHaveFinished()
    {
        m_server->serve("/a", HttpTestServer::Resource{.body = "a"});
        fetch("/a");
        fetch("/a");
        QTRY_COMPARE(m_finished->count(), 2);
        fetch("/a");
        QTRY_COMPARE(m_finished->count(), 3);
        QCOMPARE(m_downloader->findChildren<QNetworkReply *>().size(), 1);
    }

    void theNextDownloadMayStartFromTheLastOnesEnd()
    {
        m_server->serve("/a", HttpTestServer::Resource{.body = "a"});
        connect(m_downloader.get(), &KelvoThumbnailDownloader::downloadFinished, this, [this] {
            if (m_finished->count() < 3)
                fetch("/a");
        });
        fetch("/a");
        QTRY_COMPARE(m_finished->count(), 3);
    }

    void hasOneSignalAndOneSlot()
    {
        const QMetaObject *meta = m_downloader->metaObject();
        QStringList names;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            names.append(QString::fromLatin1(meta->method(i).methodSignature()));
        QCOMPARE(names, QStringList({"downloadFinished(QByteArray)", "requestFinished(QNetworkReply*)"}));
    }

    // What the window makes of what comes.
    void picturesOfTooManyPixelsAreRefused_data()
    {
        QTest::addColumn<int>("side");
        QTest::addColumn<int>("format");
        QTest::newRow("one bit each") << 20'000 << int(QImage::Format_Mono);
        QTest::newRow("a byte each") << 9'000 << int(QImage::Format_Grayscale8);
    }

    void picturesOfTooManyPixelsAreRefused()
    {
        QFETCH(int, side);
        QFETCH(int, format);
        const QByteArray picture = png({side, side}, QImage::Format(format));
        QVERIFY(!picture.isEmpty());
        KelvoMainWindow window(nullptr, nullptr);
        window.setAttribute(Qt::WA_DeleteOnClose, false);
        const qint64 before = peakMemory();
        LogRecorder log;
        window.showBrowseResultThumbnail(picture);
        QVERIFY(log.contains("LOADING SUCCESS WAS false"));
        QCOMPARE(window.findChild<QLabel *>("m_browse_pictureField")->text(),
            QStringLiteral("error showing thumbnail"));
        QVERIFY(peakMemory() - before < 50 * megabyte);
    }

private:
    std::unique_ptr<HttpTestServer> m_server;
    std::unique_ptr<KelvoThumbnailDownloader> m_downloader;
    std::unique_ptr<QSignalSpy> m_finished;
};

KELVO_WIDGET_TEST(ThumbnailDownloaderTest)
#include "ThumbnailDownloaderTest.moc"
