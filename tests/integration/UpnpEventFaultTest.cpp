// SPDX-License-Identifier: MIT
// Events of a renderer that are wrong: they change nothing, and the next one counts.
#include "TestGroup.h"
#include "UpnpCase.h"

#include <QElapsedTimer>

namespace {
using States = QList<KelvoRenderer::State>;

QByteArray metadata(const QByteArray &inner)
{
    return "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
           "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
           "xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">"
        + inner + "</DIDL-Lite>";
}

QByteArray item(const QByteArray &inner)
{
    return "<item id=\"1\" parentID=\"0\" restricted=\"1\">" + inner + "</item>";
}

/// An event that names this item.
QByteArray trackChange(const QByteArray &didl)
{
    return FakeUpnpDevice::lastChange(
        "<CurrentTrackMetaData val=\"" + FakeUpnpDevice::escaped(didl) + "\"/>");
}

class UpnpEventFaultTest : public UpnpCase
{
    Q_OBJECT
private Q_SLOTS:
    void badEventChangesNothing_data();
    void badEventChangesNothing();
    void badEnvelopeChangesNothing_data();
    void badEnvelopeChangesNothing();
    void manyErrorsAreFewLines();
    void impossibleDurationIsNone_data();
    void impossibleDurationIsNone();
    void metadataWithoutAnEndIsBounded_data();
    void metadataWithoutAnEndIsBounded();
    void coverIsTold_data();
    void coverIsTold();
    void unfitAddressIsNotHandedOn_data();
    void unfitAddressIsNotHandedOn();
    void stateIsFollowedWithoutEvents();
    void firstEventMayOvertakeItsSubscription();
    void deviceThatSendsNoEventIsAsked();

private:
    bool pauses(FakeUpnpDevice &device)
    {
        device.sendState("PAUSED_PLAYBACK");
        return QTest::qWaitFor([this] { return m_heard->state() == KelvoRenderer::Paused; });
    }
};

void UpnpEventFaultTest::badEventChangesNothing_data()
{
    const auto of = [](const QByteArray &variables) {
        return FakeUpnpDevice::lastChange(variables);
    };
    QTest::addColumn<QByteArray>("event");
    QTest::addColumn<QByteArray>("line"); // what the log says; empty: nothing need be said
    QTest::newRow("no XML") << QByteArray("it <plays>& well <") << QByteArray("event cannot be read");
    QTest::newRow("empty") << QByteArray() << QByteArray("event cannot be read");
    QTest::newRow("cut off") << of("<TransportState val=\"STOPPED\"/>").chopped(20)
                             << QByteArray("XML of a device:");
    QTest::newRow("control characters")
        << of("<TransportState val=\"STO&#1;PPED\"/>") << QByteArray("XML of a device:");
    QTest::newRow("1 MB") << of("<TransportState val=\"STOPPED\"/><X val=\"" + QByteArray(1'000'000, 'x')
        + "\"/>") << QByteArray("event is too long");
    QTest::newRow("1 MB of elements")
        << of(QByteArray("<X val=\"1\"/>").repeated(90'000)) << QByteArray("event is too long");
    QTest::newRow("another instance") << FakeUpnpDevice::lastChange(
        "<TransportState val=\"STOPPED\"/><AVTransportURI val=\"http://x/y\"/>", "1")
                                      << QByteArray();
    QTest::newRow("no instance") << QByteArray("<Event><TransportState val=\"STOPPED\"/></Event>")
                                 << QByteArray();
    QTest::newRow("instance that is no number")
        << FakeUpnpDevice::lastChange("<TransportState val=\"STOPPED\"/>", "none?") << QByteArray();
    QTest::newRow("unknown variables") << of("<X_Mood val=\"good\"/><Y/><Z>text</Z>") << QByteArray();
    QTest::newRow("unknown state") << of("<TransportState val=\"X_BUFFERING\"/>") << QByteArray();
    QTest::newRow("no values") << of("<TransportState/><Volume/><Mute/><CurrentTrackMetaData/>")
                               << QByteArray();
    QTest::newRow("values that are none")
        << of("<Volume val=\"loud\"/><Mute val=\"perhaps\"/><CurrentTrackDuration val=\"soon\"/>")
        << QByteArray();
}

void UpnpEventFaultTest::badEventChangesNothing()
{
    QFETCH(QByteArray, event);
    QFETCH(QByteArray, line);
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    QVERIFY(playing(device));
    LogRecorder log;
    device.sendLastChange(event);
    QVERIFY(pauses(device));
    QCOMPARE(m_heard->states, States{KelvoRenderer::Paused});
    QCOMPARE(m_heard->errors.size(), 0);
    QCOMPARE(m_heard->media.size(), 0);
    QCOMPARE(m_heard->properties.size(), 0);
    QVERIFY(line.isEmpty() || log.lines().join(QLatin1Char('\n')).contains(QString::fromLatin1(line)));
    QVERIFY2(log.lines().size() < 40, qPrintable(QString::number(log.lines().size())));
    QCOMPARE(m_comings, QStringList{"+uuid:fake"});
}

void UpnpEventFaultTest::badEnvelopeChangesNothing_data()
{
    const QByteArray start = "<e:propertyset xmlns:e=\"urn:schemas-upnp-org:event-1-0\"><e:property>";
    const QByteArray end = "</e:property></e:propertyset>";
    QTest::addColumn<QByteArray>("xml");
    QTest::newRow("no XML") << QByteArray("stopped");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("HTML") << QByteArray("<html><body>Stopped</body></html>");
    QTest::newRow("control characters") << start + "<LastChange>\x01\x02\x1b[2J</LastChange>" + end;
    QTest::newRow("another encoding") << start + "<LastChange>\xe9\xff</LastChange>" + end;
    QTest::newRow("unknown variable") << start + "<Mood>good</Mood>" + end;
    QTest::newRow("no variable") << start + end;
}

void UpnpEventFaultTest::badEnvelopeChangesNothing()
{
    QFETCH(QByteArray, xml);
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    QVERIFY(playing(device));
    device.sendProperties(xml);
    QVERIFY(pauses(device));
    QCOMPARE(m_heard->states, States{KelvoRenderer::Paused});
    QCOMPARE(m_heard->errors.size(), 0);
    QCOMPARE(m_comings, QStringList{"+uuid:fake"});
}

void UpnpEventFaultTest::manyErrorsAreFewLines()
{
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    QVERIFY(playing(device));
    LogRecorder log;
    for (int i = 0; i < 5; ++i)
        device.sendLastChange(trackChange(metadata(item(QByteArray("&x;<y>").repeated(2000)))));
    QVERIFY(pauses(device));
    QVERIFY2(log.lines().size() < 200, qPrintable(QString::number(log.lines().size())));
}

void UpnpEventFaultTest::impossibleDurationIsNone_data()
{
    QTest::addColumn<QByteArray>("duration");
    for (const char *duration :
        {"-1:00:00", "-0:00:01", "99999999999:00:00", "596523:14:07", "0:99:00", "NaN"})
        QTest::newRow(duration) << QByteArray(duration);
}

void UpnpEventFaultTest::impossibleDurationIsNone()
{
    QFETCH(QByteArray, duration);
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    QVERIFY(playing(device));
    device.sendLastChange(FakeUpnpDevice::lastChange("<CurrentTrackDuration val=\"" + duration + "\"/>"));
    device.sendLastChange(
        trackChange(metadata(item("<dc:title>Long</dc:title><res protocolInfo=\"*:*:*:*\" duration=\""
            + duration + "\">http://x/y</res>"))));
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("Long"));
    QCOMPARE(m_heard->metadataCount("duration"), 0);
    device.sendLastChange(FakeUpnpDevice::lastChange("<CurrentTrackDuration val=\"0:01:00\"/>"));
    QTRY_COMPARE(m_heard->metadata("duration"), QVariant(60));
}

void UpnpEventFaultTest::metadataWithoutAnEndIsBounded_data()
{
    const QByteArray title = "<dc:title>First</dc:title>";
    QTest::addColumn<QByteArray>("event");
    QTest::newRow("10,000 items") << trackChange(metadata(item(title).repeated(10'000)));
    QTest::newRow("a text of 12 MB") << trackChange(
        metadata(item("<dc:title>" + QByteArray(12'000'000, 'x') + "</dc:title>")));
    QTest::newRow("a thousand levels") << trackChange(metadata(QByteArray("<container>").repeated(1000)));
    QTest::newRow("control characters") << trackChange(metadata(item("<dc:title>\x01\x1b&#2;</dc:title>")));
    QTest::newRow("entities") << trackChange(
        "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaaaaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">"
        "<!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\"><!ENTITY f \"&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;\">]>"
        + metadata(item("<dc:title>&f;</dc:title>")));
}

void UpnpEventFaultTest::metadataWithoutAnEndIsBounded()
{
    QFETCH(QByteArray, event);
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    QVERIFY(playing(device));
    LogRecorder log;
    QElapsedTimer timer;
    timer.start();
    device.sendLastChange(event);
    device.sendLastChange(trackChange(metadata(item("<dc:title>Next</dc:title>"))));
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("Next"));
    QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
    for (const auto &[key, value] : std::as_const(m_heard->metadataHeard))
        QVERIFY2(value.toString().size() < 5000, qPrintable(key));
    QVERIFY2(log.lines().size() < 100, qPrintable(QString::number(log.lines().size())));
    QCOMPARE(m_heard->states, States());
}

void UpnpEventFaultTest::coverIsTold_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("isTold");
    QTest::newRow("http") << QByteArray("http://media/cover.jpg?size=9&x=1") << true;
    QTest::newRow("https") << QByteArray("https://media/cover.jpg") << true;
    QTest::newRow("script") << QByteArray("javascript:alert(1)") << false;
    QTest::newRow("content") << QByteArray("data:image/png;base64,AAAA") << false;
    QTest::newRow("file") << QByteArray("file:///etc/passwd") << false;
    QTest::newRow("relative") << QByteArray("cover.jpg") << false;
    QTest::newRow("no host") << QByteArray("http:///cover.jpg") << false;
}

void UpnpEventFaultTest::coverIsTold()
{
    QFETCH(QByteArray, address);
    QFETCH(bool, isTold);
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    QVERIFY(playing(device));
    const QByteArray cover = "<upnp:albumArtURI>" + FakeUpnpDevice::escaped(address) + "</upnp:albumArtURI>";
    device.sendLastChange(trackChange(metadata(item("<dc:title>First</dc:title>" + cover))));
    device.sendLastChange(trackChange(metadata(item("<dc:title>Second</dc:title>" + cover))));
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("Second"));
    QCOMPARE(m_heard->metadataCount("cover"), isTold ? 1 : 0);
    if (isTold)
        QCOMPARE(m_heard->metadata("cover"), QVariant(QString::fromLatin1(address)));
}

void UpnpEventFaultTest::unfitAddressIsNotHandedOn_data()
{
    QTest::addColumn<QByteArray>("uri");
    QTest::addColumn<bool>("isFit");
    QTest::newRow("script") << QByteArray("javascript:alert(1)") << false;
    QTest::newRow("content") << QByteArray("data:text/html,x") << false;
    QTest::newRow("relative") << QByteArray("songs/one.mp3") << false;
    QTest::newRow("no address") << QByteArray("http://[") << false;
    QTest::newRow("web") << QByteArray("http://elsewhere/song") << true;
    QTest::newRow("the device's own") << QByteArray("x-line-in:1") << true;
}

void UpnpEventFaultTest::unfitAddressIsNotHandedOn()
{
    QFETCH(QByteArray, uri);
    QFETCH(bool, isFit);
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    device.results["CurrentURIMetaData"] = FakeUpnpDevice::escaped(
        metadata(item("<dc:title>Theirs</dc:title><res protocolInfo=\"*:*:*:*\">" + uri + "</res>")));
    device.results["CurrentURI"] = uri;
    device.sendState("PLAYING");
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("Theirs"));
    QTRY_COMPARE(m_heard->state(), KelvoRenderer::Playing);
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().content.url, isFit ? QUrl(QString::fromLatin1(uri)) : QUrl());
}
void UpnpEventFaultTest::stateIsFollowedWithoutEvents()
{
    constexpr int pollTime = 10'000;
    FakeUpnpDevice device;
    device.otherUrls = "/nowhere";
    QVERIFY(appears(device));
    KelvoRenderer *renderer = find(device.udn);
    m_heard = std::make_unique<RendererProbe>(*renderer);
    device.results["CurrentURI"] = "http://elsewhere/song";
    device.sendState("PLAYING");
    QTRY_COMPARE_WITH_TIMEOUT(m_heard->state(), KelvoRenderer::Playing, pollTime);
    const int asked = device.actions("GetTransportInfo");
    QTRY_VERIFY_WITH_TIMEOUT(device.actions("GetTransportInfo") > asked, pollTime);
    // What we do we know before it is looked at again; then somebody else undoes it.
    device.sendState("PAUSED_PLAYBACK");
    renderer->pause();
    QTRY_COMPARE(m_heard->state(), KelvoRenderer::Paused);
    device.sendState("PLAYING");
    QTRY_COMPARE_WITH_TIMEOUT(m_heard->state(), KelvoRenderer::Playing, pollTime);
    QCOMPARE(device.subscriptions(), 0);
}

void UpnpEventFaultTest::firstEventMayOvertakeItsSubscription()
{
    FakeUpnpDevice device;
    device.subscriptionDelay = 100;
    QVERIFY(listen(device));
    QVERIFY(playing(device));
    QVERIFY(pauses(device));
    // Nothing was missed, so there was no need for another one.
    QCOMPARE(device.subscriptions(), 1);
}

void UpnpEventFaultTest::deviceThatSendsNoEventIsAsked()
{
    constexpr int pollTime = 10'000;
    FakeUpnpDevice device;
    device.isMute = true;
    device.hasVolume = true;
    device.results["CurrentVolume"] = "0";
    const auto plays = [&device](const QByteArray &title) {
        device.results["CurrentURI"] = "http://elsewhere/" + title;
        device.results["CurrentURIMetaData"]
            = FakeUpnpDevice::escaped(metadata(item("<dc:title>" + title + "</dc:title>")));
    };
    QVERIFY(listen(device));
    plays("first");
    device.sendState("PLAYING");
    QTRY_COMPARE_WITH_TIMEOUT(m_heard->metadata("title"), QVariant("first"), pollTime);
    // Neither comes with another state.
    plays("second");
    QTRY_COMPARE_WITH_TIMEOUT(m_heard->metadata("title"), QVariant("second"), pollTime);
    device.results["CurrentVolume"] = "100";
    const QPair<QString, QVariant> loudest("volume", 99U);
    QTRY_VERIFY_WITH_TIMEOUT(m_heard->properties.contains(loudest), pollTime);
}
} // namespace

KELVO_TEST(UpnpEventFaultTest)
#include "UpnpEventFaultTest.moc"
