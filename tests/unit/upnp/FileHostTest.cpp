// SPDX-License-Identifier: MIT
// Files of this computer, as a renderer fetches them.
#include "FileHost.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {
struct Fetched
{
    int status = 0;
    QByteArray body;
    QByteArray range;
    QByteArray type;
};
} // namespace

class FileHostTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        GlibHandles::Error error;
        m_context.reset(gupnp_context_new_full("lo", nullptr, 0, GSSDP_UDA_VERSION_1_0, error.out()));
        if (!m_context)
            QSKIP("GUPnP finds no loopback interface");
        for (const char *name : {"song.mp3", "other.ogg"}) {
            QFile file(pathOf(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray("0123456789") + name);
        }
        // The server runs in this thread's GLib context, whatever loop Qt runs on.
        m_turn.callOnTimeout([] {
            while (g_main_context_iteration(nullptr, FALSE)) { }
        });
        m_turn.start(1);
    }

    void cleanup() { m_context.reset(); }

    void servesTheFile()
    {
        FileHost host;
        const Fetched got = fetch(offer(host, "song.mp3"));
        QCOMPARE(got.status, 200);
        QCOMPARE(got.body, "0123456789song.mp3");
        QCOMPARE(got.type, "audio/mpeg");
    }

    void servesPartsOfIt_data()
    {
        QTest::addColumn<QByteArray>("asked");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("middle") << QByteArray("bytes=3-5") << QByteArray("345");
        QTest::newRow("from there on") << QByteArray("bytes=14-") << QByteArray(".mp3");
        QTest::newRow("the last") << QByteArray("bytes=-2") << QByteArray("p3");
    }

    void servesPartsOfIt()
    {
        QFETCH(QByteArray, asked);
        QFETCH(QByteArray, body);
        FileHost host;
        const Fetched got = fetch(offer(host, "song.mp3"), asked);
        QCOMPARE(got.status, 206);
        QCOMPARE(got.body, body);
        QVERIFY(got.range.startsWith("bytes ") && got.range.endsWith("/18"));
    }

    void refusesPartsThatAreNotThere()
    {
        FileHost host;
        QCOMPARE(fetch(offer(host, "song.mp3"), "bytes=100-200").status, 416);
    }

    void listensOnTheOneAddress()
    {
        FileHost host;
        const QUrl url = offer(host, "song.mp3");
        QCOMPARE(url.host(), QStringLiteral("127.0.0.1"));
        // Everything in 127.0.0.0/8 is this computer, so a server for all addresses would answer here as well.
        QUrl elsewhere = url;
        elsewhere.setHost(QStringLiteral("127.0.0.2"));
        QCOMPARE(fetch(elsewhere).status, 0);
    }

    void cannotBeGuessed()
    {
        FileHost host;
        const QUrl first = offer(host, "song.mp3");
        static const QRegularExpression path(QStringLiteral("^/[0-9a-f]{32}\\.mp3$"));
        QVERIFY2(path.match(first.path()).hasMatch(), qPrintable(first.path()));
        offer(host, "other.ogg");
        QVERIFY(offer(host, "song.mp3") != first);
        for (const char *guess : {"/", "/song.mp3", "/..", "/00000000000000000000000000000000.mp3"})
            QCOMPARE(fetch(first.resolved(QUrl(QString::fromLatin1(guess)))).status, 404);
    }

    void givesNothingBesideTheFile()
    {
        FileHost host;
        const QString url = offer(host, "song.mp3").toString();
        for (const char *beside : {"/", "/other.ogg", "/../other.ogg", "/%2e%2e/other.ogg", "x", "%00"}) {
            const Fetched got = fetch(QUrl(url + QString::fromLatin1(beside)));
            QVERIFY2(got.status != 200 || got.body == "0123456789song.mp3", beside);
        }
    }

    void takesTheEarlierFileBack()
    {
        FileHost host;
        const QUrl first = offer(host, "song.mp3");
        const QUrl second = offer(host, "other.ogg");
        QCOMPARE(fetch(first).status, 404);
        QCOMPARE(fetch(second).body, "0123456789other.ogg");
        QCOMPARE(host.offer(m_context.get(), "http://example.org/a.mp3"), "http://example.org/a.mp3");
        QCOMPARE(fetch(second).status, 404);
    }

    void keepsTheAddressOfTheSameFile()
    {
        FileHost host;
        QCOMPARE(offer(host, "song.mp3"), offer(host, "song.mp3"));
    }

    void takesAllBackAtTheEnd()
    {
        QUrl url;
        {
            FileHost host;
            url = offer(host, "song.mp3");
        }
        QCOMPARE(fetch(url).status, 404);
    }

    void saysThatAFileIsMissing()
    {
        FileHost host;
        QCOMPARE(fetch(offer(host, "missing.mp3")).status, 404);
        QCOMPARE(fetch(offer(host, "")).status, 404); // the folder
    }

    void servesFilesOfAnyName()
    {
        for (const char *name : {"with space.mp3", "percent%41.mp3", "hash#.mp3", "quote\".mp3",
                 "\xf0\x9f\x8e\xb5.m p3", "none"}) {
            QFile file(pathOf(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("x");
            file.close();
            FileHost host;
            QCOMPARE(fetch(offer(host, name)).body, "x");
        }
    }

    void leavesOtherAddressesAlone()
    {
        FileHost host;
        for (const char *url : {"http://h/a.mp3", "https://h/a", "rtsp://h/", "", "words"})
            QCOMPARE(host.offer(m_context.get(), url), url);
    }

private:
    QString pathOf(const char *name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    QUrl offer(FileHost &host, const char *name) const
    {
        return QUrl(
            host.offer(m_context.get(), QUrl::fromLocalFile(pathOf(name)).toString(QUrl::FullyEncoded)));
    }
    Fetched fetch(const QUrl &url, const QByteArray &range = {})
    {
        QNetworkRequest request(url);
        if (!range.isEmpty())
            request.setRawHeader("Range", range);
        const std::unique_ptr<QNetworkReply> reply(m_network.get(request));
        QSignalSpy finished(reply.get(), &QNetworkReply::finished);
        if (!reply->isFinished() && !finished.wait())
            return {};
        return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply->readAll(),
            reply->rawHeader("Content-Range"), reply->rawHeader("Content-Type")};
    }

    QTemporaryDir m_folder;
    QNetworkAccessManager m_network;
    GlibHandles::Object<GUPnPContext> m_context;
    QTimer m_turn;
};

KELVO_TEST(FileHostTest)
#include "FileHostTest.moc"
