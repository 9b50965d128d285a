// SPDX-License-Identifier: MIT
// Independent UPnP peers on a network of their own: all that a console finds, drives and loses there. The tests run in
// this order; the last one ends the peers.
#include "FakePlaylist.h"
#include "HungDevice.h"
#include "KelvoSource.h"
#include "RendererRecorder.h"
#include "TestGroup.h"
#include "UpnpPeersCase.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <csignal>

namespace {
const QStringList allPeers = {"gmediarender", "rygel", "minidlna", "gerbera"};

/// Receives the answers of a server.
class PropertyListener : public QObject
{
    Q_OBJECT
public:
    QHash<QString, QVariant> values;

public Q_SLOTS:
    void sourcePropertyCallback(QString &key, QVariant &value) { values.insert(key, value); }
};

/// A list of files of this computer.
class FileList : public FakePlaylist
{
public:
    explicit FileList(const QList<QUrl> &urls)
        : FakePlaylist(getNewPlaylistId(), "files", QStringList(urls.size(), "file"))
        , m_urls(urls)
    {
    }
    KelvoMediaInfo mediaInfoAt(uint index) const override
    {
        return {FakePlaylist::mediaInfoAt(index).uuid(), m_urls.value(index), "file"};
    }

private:
    const QList<QUrl> m_urls;
};

class UpnpPeersTest : public UpnpPeersCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void allAppearWithTheirNames();
    void serverTellsItsProperties_data();
    void serverTellsItsProperties();
    void rendererPlaysAFileOfThisComputer_data();
    void rendererPlaysAFileOfThisComputer();
    void rendererAdvancesThroughAPlaylist_data();
    void rendererAdvancesThroughAPlaylist();
    void twoRenderersPlayAtOnce();
    void hungRendererAndDeadServerAreTakenOutAndComeBack();
    void allVanishWithTheLinkAndComeBackWithIt();
    void endedPeersGoAtOnce();
};

void UpnpPeersTest::initTestCase()
{
    startPeers(allPeers);
    loadPlugin();
    const auto isFound = [this] {
        return isComplete();
    };
    bool areFound = QTest::qWaitFor(isFound, 8000);
    // Now and then rygel finds the port that it has picked taken, and stays without a network.
    if (!areFound && isRunning("rygel") && !rendererNamed("Test renderer") && !sourceNamed("Test server")) {
        killPeer("rygel");
        startPeers({"rygel"});
    }
    // On a busy machine its server takes a while to look through its media.
    areFound = areFound || QTest::qWaitFor(isFound, 2 * LongWait);
    QVERIFY2(areFound, qPrintable((rendererNames() + sourceNames()).join(", ")));
}

void UpnpPeersTest::allAppearWithTheirNames()
{
    QCOMPARE(rendererNames(), expectedRenderers());
    QCOMPARE(sourceNames(), expectedSources());
    for (const QString &peer : allPeers) {
        if (!isInstalled(peer))
            QSKIP(qPrintable(missing(peer)));
    }
    QCOMPARE(rendererNames(), (QStringList{"Test gmediarender", "Test renderer"}));
    QCOMPARE(sourceNames(), (QStringList{"Test gerbera", "Test minidlna", "Test server"}));
}

void UpnpPeersTest::serverTellsItsProperties_data()
{
    QTest::addColumn<QString>("peer");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("manufacturer");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QStringList>("unknown");
    QTest::addColumn<bool>("canSearch");
    QTest::newRow("rygel") << "rygel"
                           << "Test server"
                           << "Rygel Developers."
                           << "Rygel"
                           << QStringList{"modelDescription", "modelURL", "presentationURL",
                                  "universalProductCode"}
                           << true;
    QTest::newRow("minidlna") << "minidlna"
                              << "Test minidlna"
                              << "Justin Maggard"
                              << "Windows Media Connect compatible (MiniDLNA)"
                              << QStringList{"universalProductCode"} << true;
    // It names nothing to search by.
    QTest::newRow("gerbera") << "gerbera"
                             << "Test gerbera"
                             << "Gerbera Contributors"
                             << "gerbera" << QStringList{"modelURL", "universalProductCode"} << false;
}

void UpnpPeersTest::serverTellsItsProperties()
{
    QFETCH(QString, peer);
    QFETCH(QString, name);
    QFETCH(QStringList, unknown);
    if (!isInstalled(peer))
        QSKIP(qPrintable(missing(peer)));
    // Some begin by taking back what they announced in an earlier life, and may have been found by then.
    KelvoSource *source = nullptr;
    QTRY_VERIFY((source = sourceNamed(name)));
    PropertyListener listener;
    QStringList refused;
    const QStringList keys = {"signIn", "signedIn", "deviceType", "manufacturer", "manufacturerURL",
        "modelDescription", "modelName", "modelNumber", "modelURL", "serialNumber", "presentationURL",
        "universalProductCode", "iconURL", "supportQuery"};
    for (const QString &key : keys) {
        if (!source->kelvoProperty(key, &listener, "sourcePropertyCallback(QString&,QVariant&)"))
            refused.append(key);
    }
    QTRY_COMPARE(listener.values.size() + refused.size(), keys.size());
    QCOMPARE(refused, unknown);
    QCOMPARE(listener.values.value("signIn"), QVariant(false));
    QCOMPARE(listener.values.value("signedIn"), QVariant(true));
    QTEST(listener.values.value("supportQuery").toBool(), "canSearch");
    QTEST(listener.values.value("manufacturer").toString(), "manufacturer");
    QTEST(listener.values.value("modelName").toString(), "model");
    static const QRegularExpression serverType("^urn:schemas-upnp-org:device:MediaServer:[1-4]$");
    QVERIFY(serverType.match(listener.values.value("deviceType").toString()).hasMatch());
    // They may be given relative to the description's own address.
    const QString there = "http://" + farAddress() + ':';
    for (const QString &key : {QStringLiteral("iconURL"), QStringLiteral("presentationURL")}) {
        const QString url = listener.values.value(key).toString();
        QVERIFY2(refused.contains(key) || url.startsWith(there), qPrintable(key + ' ' + url));
    }
    for (const QVariant &value : listener.values)
        QVERIFY(!value.toString().isEmpty());
}

void addRenderers()
{
    QTest::addColumn<QString>("peer");
    QTest::addColumn<QString>("name");
    QTest::newRow("gmediarender") << "gmediarender"
                                  << "Test gmediarender";
    QTest::newRow("rygel") << "rygel"
                           << "Test renderer";
}

void UpnpPeersTest::rendererPlaysAFileOfThisComputer_data()
{
    addRenderers();
}

void UpnpPeersTest::rendererPlaysAFileOfThisComputer()
{
    using Upnp::Service;
    QFETCH(QString, peer);
    QFETCH(QString, name);
    if (!isInstalled(peer))
        QSKIP(qPrintable(missing(peer)));
    KelvoRenderer *renderer = rendererNamed(name);
    QVERIFY(renderer);
    RendererRecorder heard(renderer);
    const QUrl file = media("long.mp3");
    renderer->playUri(file);
    QTRY_COMPARE(heard.state(), KelvoRenderer::Playing);
    QCOMPARE(heard.mediaUrls(), QList<QUrl>{file});
    // The file is at the end of the cable that faces the renderer, and nobody can guess where.
    const QUrl address(ask(*renderer, Service::AVTransport, "GetMediaInfo", "CurrentURI"));
    QCOMPARE(address.host(), nearAddress());
    static const QRegularExpression path("^/[0-9a-f]{32}\\.mp3$");
    QVERIFY2(path.match(address.path()).hasMatch(), qPrintable(address.toString()));
    QVERIFY(waitForDuration(heard, 20));

    renderer->setKelvoProperty("volume", 40);
    QTRY_COMPARE(heard.property("volume"), QVariant(40U));
    const int volume = ask(*renderer, Service::RenderingControl, "GetVolume", "CurrentVolume").toInt();
    QVERIFY2(volume >= 39 && volume <= 41, qPrintable(QString::number(volume)));

    renderer->pause();
    QTRY_COMPARE(heard.state(), KelvoRenderer::Paused);
    QCOMPARE(ask(*renderer, Service::AVTransport, "GetTransportInfo", "CurrentTransportState"),
        QStringLiteral("PAUSED_PLAYBACK"));
    renderer->setPosition(10, KelvoRenderer::SeekAbsolute);
    QTRY_COMPARE(heard.askPosition(), 10);
    renderer->resume();
    QTRY_COMPARE(heard.state(), KelvoRenderer::Playing);
    // It has gone there and plays on: it says so itself.
    const QRegularExpression behind("^0?0:00:1[1-9]");
    QTRY_VERIFY(behind.match(ask(*renderer, Service::AVTransport, "GetPositionInfo", "RelTime")).hasMatch());
    QTRY_VERIFY(heard.askPosition() >= 11);

    renderer->stop();
    QTRY_COMPARE(heard.state(), KelvoRenderer::Stopped);
    QTRY_COMPARE(ask(*renderer, Service::AVTransport, "GetTransportInfo", "CurrentTransportState"),
        QStringLiteral("STOPPED"));
    QCOMPARE(heard.errorTexts(), QStringList());
    QCOMPARE(heard.completed(), 0);
}

void UpnpPeersTest::rendererAdvancesThroughAPlaylist_data()
{
    addRenderers();
}

void UpnpPeersTest::rendererAdvancesThroughAPlaylist()
{
    QFETCH(QString, peer);
    QFETCH(QString, name);
    if (!isInstalled(peer))
        QSKIP(qPrintable(missing(peer)));
    KelvoRenderer *renderer = rendererNamed(name);
    QVERIFY(renderer);
    FileList playlist({media("blip.mp3"), media("blip.ogg")});
    RendererRecorder heard(renderer);
    renderer->assignPlaylist(&playlist);
    renderer->play();
    QTRY_VERIFY2_WITH_TIMEOUT(heard.completed() == 1, qPrintable(heard.events().join(", ")), LongWait);
    QVERIFY2(heard.errors().isEmpty(), qPrintable((heard.events() + heard.errorTexts()).join(", ")));
    QCOMPARE(heard.mediaIndexes(), (QList<int>{0, 1}));
    QCOMPARE(heard.mediaUrls(), (QList<QUrl>{media("blip.mp3"), media("blip.ogg")}));
    QVERIFY2(heard.states().count(KelvoRenderer::Playing) == 2, qPrintable(heard.events().join(", ")));
    QCOMPARE(heard.state(), KelvoRenderer::Stopped);
}

void UpnpPeersTest::twoRenderersPlayAtOnce()
{
    for (const char *peer : {"gmediarender", "rygel"}) {
        if (!isInstalled(peer))
            QSKIP(qPrintable(missing(peer)));
    }
    KelvoRenderer *one = rendererNamed("Test gmediarender");
    KelvoRenderer *two = rendererNamed("Test renderer");
    QVERIFY(one && two);
    RendererRecorder heardOne(one);
    RendererRecorder heardTwo(two);
    one->playUri(media("long.mp3"));
    two->playUri(media("long.flac"));
    QTRY_VERIFY(heardOne.state() == KelvoRenderer::Playing && heardTwo.state() == KelvoRenderer::Playing);
    one->pause();
    QTRY_COMPARE(heardOne.state(), KelvoRenderer::Paused);
    QTRY_VERIFY(heardTwo.askPosition() >= 1);
    QCOMPARE(heardTwo.state(), KelvoRenderer::Playing);
    QCOMPARE(heardOne.errorTexts() + heardTwo.errorTexts(), QStringList());
}

void UpnpPeersTest::hungRendererAndDeadServerAreTakenOutAndComeBack()
{
    for (const char *peer : {"gmediarender", "minidlna"}) {
        if (!isInstalled(peer))
            QSKIP(qPrintable(missing(peer)));
    }
    KelvoRenderer *renderer = rendererNamed("Test gmediarender");
    QVERIFY(renderer);
    QSignalSpy errors(renderer, &KelvoRenderer::error);
    QStringList others = expectedRenderers() + expectedSources();
    others.removeOne("Test gmediarender");
    others.removeOne("Test minidlna");
    QElapsedTimer timer;
    timer.start();
    signalPeer("gmediarender", SIGSTOP);
    killPeer("minidlna");
    renderer->setKelvoProperty("volume", 30);
    QVERIFY(failsInTime(errors, timer));
    const auto error = errors.at(0).at(0).value<KelvoError>();
    QCOMPARE(error.code(), KelvoError::Timeout);
    QCOMPARE(error.message(), QStringLiteral("SetVolume: Test gmediarender did not answer in time"));
    // Neither says that it goes.
    QTRY_VERIFY_WITH_TIMEOUT(!rendererNamed("Test gmediarender"), LongWait);
    QVERIFY2(timer.elapsed() >= 9000, qPrintable(QString::number(timer.elapsed())));
    QTRY_VERIFY_WITH_TIMEOUT(!sourceNamed("Test minidlna"), LongWait);
    QCOMPARE(rendererNames() + sourceNames(), others);

    signalPeer("gmediarender", SIGCONT);
    startPeers({"minidlna"});
    QTRY_VERIFY_WITH_TIMEOUT(isComplete(), LongWait);
    renderer = rendererNamed("Test gmediarender");
    RendererRecorder heard(renderer);
    renderer->playUri(media("long.mp3"));
    QTRY_COMPARE(heard.state(), KelvoRenderer::Playing);
}

void UpnpPeersTest::allVanishWithTheLinkAndComeBackWithIt()
{
    QVERIFY(isComplete());
    QVERIFY(setLink("down"));
    QTRY_VERIFY(rendererNames().isEmpty() && sourceNames().isEmpty());
    QVERIFY(setLink("up"));
    QTRY_VERIFY_WITH_TIMEOUT(isComplete(), LongWait);
    for (KelvoRenderer *renderer : registry().renderers()) {
        RendererRecorder heard(renderer);
        renderer->playUri(media("long.mp3"));
        QTRY_COMPARE(heard.state(), KelvoRenderer::Playing);
    }
}

void UpnpPeersTest::endedPeersGoAtOnce()
{
    QVERIFY(isComplete());
    for (const QString &peer : installed(allPeers))
        signalPeer(peer, SIGTERM);
    QTRY_VERIFY(rendererNames().isEmpty() && sourceNames().isEmpty());
}
} // namespace

KELVO_TEST(UpnpPeersTest)
#include "UpnpPeersTest.moc"
