// SPDX-License-Identifier: MIT
// The habits of one widespread renderer (gmediarender, by libupnp), and what a user of the console sees of them: nothing.
// The standard's own texts are asked for by another control point. The tests run in this order; the last two let
// the renderer crash, and meet its twin.
#include "ItemRenderer.h"
#include "LogRecorder.h"
#include "RemotePlayer.h"
#include "RendererRecorder.h"
#include "TestGroup.h"
#include "UpnpNetwork.h"
#include "UpnpPeersCase.h"
#include "UpnpText.h"
#include "UpnpTransport.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>
#include <optional>

namespace {
const QString quirky = QStringLiteral("gmediarender");
// Beyond what the kernel gives to outgoing connections (net.ipv4.ip_local_port_range): a device cannot listen where such
// a connection has, or a minute ago had, its end.
const QString otherPort = QStringLiteral("61700");
const QString thirdPort = QStringLiteral("61600");

/// The same renderer as the plug-in would make it, with other waits.
struct ImpatientConsole
{
    ImpatientConsole()
        : network({qEnvironmentVariable("KELVO_UPNP_INTERFACE")})
    {
        QObject::connect(&network, &UpnpNetwork::appeared, &network, [this](const Upnp::Description &device) {
            if (device.key.kind == Upnp::Kind::Renderer)
                renderer = std::make_unique<ItemRenderer>(
                    std::make_unique<RemotePlayer>(std::make_unique<UpnpTransport>(network.link(device),
                                                       UpnpTransport::Patience{.progress = 1000}),
                        device.name),
                    device.key.udn);
        });
    }

    UpnpNetwork network;
    std::unique_ptr<ItemRenderer> renderer;
};

class UpnpPeerQuirksTest : public UpnpPeersCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void isStoppedBeforeItHasMedia();
    void forgetsWhatEndedAndPlaysItAgain();
    void endsWhatIsSoughtPastItsEnd();
    void echoesTheTargetOfASeek();
    void goesWhereItIsSentAsItBegins();
    void takesFractionalTargets();
    void writesItsActionsInUpperCase();
    void tellsTitleAndDurationOnceItHasLooked();
    void tellsTheDurationOfTheItemBefore();
    void knowsNoAbsoluteTime();
    void toleratesPlayingWhatPlays();
    void offersASpeedThatIsNone();
    void takesAVolumeBeyondItsRange();
    void keepsItsVolumeOverMuting();
    void answersEmptyWhatItDoesNotKnow();
    void refusesAnUnknownAction();
    void claimsToPlayWhatItCannotReach();
    void crashIsAnErrorAndARestartHealsIt();
    void twoThatShareAUdnAreOne();

private:
    using Values = QList<QPair<QByteArray, QString>>;
    Upnp::Answer tell(
        Upnp::Service service, const char *action, const Values &in, const QList<QByteArray> &out = {});
    QString transport(const char *action, const char *result)
    {
        return ask(*m_renderer, Upnp::Service::AVTransport, action, result);
    }
    int deviceVolume()
    {
        return ask(*m_renderer, Upnp::Service::RenderingControl, "GetVolume", "CurrentVolume").toInt();
    }
    void play(const char *file);
    /// The same as a question, for a device that may not be there yet.
    bool playsLong(KelvoRenderer &renderer, RendererRecorder &heard) const;

    KelvoRenderer *m_renderer = nullptr;
    std::unique_ptr<RendererRecorder> m_heard;
};

void UpnpPeerQuirksTest::initTestCase()
{
    if (!isInstalled(quirky))
        QSKIP(qPrintable(missing(quirky)));
    startPeers({quirky});
    loadPlugin();
    QTRY_VERIFY_WITH_TIMEOUT(isComplete(), LongWait);
}

void UpnpPeerQuirksTest::init()
{
    UpnpPeersCase::init();
    m_renderer = rendererNamed("Test gmediarender");
    QVERIFY(m_renderer);
    m_heard = std::make_unique<RendererRecorder>(m_renderer);
}

void UpnpPeerQuirksTest::cleanup()
{
    if (m_heard)
        QVERIFY2(m_heard->errorTexts().isEmpty(), qPrintable(m_heard->errorTexts().join(u'\n')));
    m_heard.reset();
    UpnpPeersCase::cleanup();
}

Upnp::Answer UpnpPeerQuirksTest::tell(
    Upnp::Service service, const char *action, const Values &in, const QList<QByteArray> &out)
{
    Upnp::Call call;
    call.service = service;
    call.action = action;
    call.in = Values{{"InstanceID", "0"}} + in;
    call.out = out;
    return ask(*m_renderer, call);
}

void UpnpPeerQuirksTest::play(const char *file)
{
    m_renderer->playUri(media(file));
    QTRY_COMPARE(m_heard->state(), KelvoRenderer::Playing);
}

bool UpnpPeerQuirksTest::playsLong(KelvoRenderer &renderer, RendererRecorder &heard) const
{
    heard.clear();
    renderer.playUri(media("long.mp3"));
    // It may have been playing before: that is not heard of again.
    return QTest::qWaitFor([&heard] { return heard.states().endsWith(KelvoRenderer::Playing); }, 1000);
}

void UpnpPeerQuirksTest::isStoppedBeforeItHasMedia()
{
    // Others say NO_MEDIA_PRESENT.
    QCOMPARE(transport("GetTransportInfo", "CurrentTransportState"), QStringLiteral("STOPPED"));
    QCOMPARE(m_heard->askStatus().state, int(KelvoRenderer::Stopped));
    QCOMPARE(m_heard->mediaUrls(), QList<QUrl>());
}

void UpnpPeerQuirksTest::forgetsWhatEndedAndPlaysItAgain()
{
    play("blip.mp3");
    QTRY_COMPARE(m_heard->completed(), 1);
    QTRY_COMPARE(transport("GetMediaInfo", "CurrentURI"), QString());
    QVERIFY(tell(Upnp::Service::AVTransport, "Play", {{"Speed", "1"}}).outcome == Upnp::Answer::Refused);
    m_renderer->play();
    QTRY_COMPARE(m_heard->completed(), 2);
    QCOMPARE(m_heard->states().count(KelvoRenderer::Playing), 2);
    QCOMPARE(m_heard->mediaUrls(), (QList<QUrl>{media("blip.mp3"), media("blip.mp3")}));
}

void UpnpPeerQuirksTest::endsWhatIsSoughtPastItsEnd()
{
    play("long.mp3");
    // It loses a seek while it is still starting.
    QTRY_VERIFY(m_heard->askPosition() >= 1);
    // Not by the console, which knows the duration: by the device, which then forgets the item.
    QCOMPARE(tell(Upnp::Service::AVTransport, "Seek", {{"Unit", "REL_TIME"}, {"Target", "0:10:00"}}).outcome,
        Upnp::Answer::Done);
    QTRY_COMPARE(m_heard->state(), KelvoRenderer::Stopped);
    QTRY_COMPARE(transport("GetMediaInfo", "CurrentURI"), QString());
    m_heard->clear();
    play("long.mp3");
    QVERIFY(waitForDuration(*m_heard, 20));
    m_renderer->setPosition(600, KelvoRenderer::SeekAbsolute);
    QTRY_COMPARE(m_heard->completed(), 1);
    QCOMPARE(m_heard->state(), KelvoRenderer::Stopped);
}

void UpnpPeerQuirksTest::echoesTheTargetOfASeek()
{
    play("long.mp3");
    m_renderer->setPosition(7, KelvoRenderer::SeekAbsolute);
    // It is held although nothing has been asked yet, and goes on from there.
    QCOMPARE(m_heard->askPosition(), 7);
    int earliest = 7;
    QTRY_VERIFY((earliest = std::min(earliest, m_heard->askPosition())) < 7 || m_heard->askPosition() >= 9);
    QCOMPARE(earliest, 7);
}

// It may lose what comes right after it has begun.
void UpnpPeerQuirksTest::goesWhereItIsSentAsItBegins()
{
    for (int round = 0; round < 3; ++round) {
        const QMetaObject::Connection sent
            = connect(m_renderer, &KelvoRenderer::stateChanged, this, [this](KelvoRenderer::State state) {
                  if (state == KelvoRenderer::Playing)
                      m_renderer->setPosition(7, KelvoRenderer::SeekAbsolute);
              });
        play("long.mp3");
        disconnect(sent);
        QElapsedTimer timer;
        timer.start();
        const auto place = [this] {
            return UpnpText::parseTime(transport("GetPositionInfo", "RelTime")).value_or(0);
        };
        QTRY_VERIFY(place() >= 7);
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        m_renderer->stop();
        QTRY_COMPARE(m_heard->state(), KelvoRenderer::Stopped);
    }
}

void UpnpPeerQuirksTest::takesFractionalTargets()
{
    play("long.mp3");
    QCOMPARE(
        tell(Upnp::Service::AVTransport, "Seek", {{"Unit", "REL_TIME"}, {"Target", "0:00:05.500"}}).outcome,
        Upnp::Answer::Done);
    QTRY_VERIFY(m_heard->askPosition() >= 5);
    QVERIFY2(m_heard->askPosition() <= 8, qPrintable(QString::number(m_heard->askPosition())));
}

void UpnpPeerQuirksTest::writesItsActionsInUpperCase()
{
    play("long.mp3");
    const QString actions = transport("GetCurrentTransportActions", "Actions");
    QCOMPARE(actions, actions.toUpper());
    QVERIFY2(actions.contains("PAUSE") && actions.contains("SEEK"), qPrintable(actions));
    m_renderer->pause();
    QTRY_COMPARE(m_heard->state(), KelvoRenderer::Paused);
    m_renderer->setPosition(3, KelvoRenderer::SeekAbsolute);
    QTRY_COMPARE(m_heard->askPosition(), 3);
    m_renderer->resume();
    QTRY_COMPARE(m_heard->state(), KelvoRenderer::Playing);
}

void UpnpPeerQuirksTest::tellsTitleAndDurationOnceItHasLooked()
{
    QSignalSpy metadata(m_renderer, &KelvoRenderer::metadataChanged);
    play("tone.mp3");
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("tone"));
    QVERIFY(waitForDuration(*m_heard, 3));
    QTRY_VERIFY(m_heard->askPosition() >= 1);
    // The name that we gave it is sent back at first; and the same again with each event.
    QStringList told;
    for (const QList<QVariant> &arguments : metadata)
        told.append(arguments.at(0).toString() + ' ' + arguments.at(1).toList().constFirst().toString());
    QCOMPARE(told.join(", "), QStringLiteral("title tone.mp3, title tone, duration 3"));
}

void UpnpPeerQuirksTest::tellsTheDurationOfTheItemBefore()
{
    play("long.mp3");
    QVERIFY(waitForDuration(*m_heard, 20));
    m_heard->clear();
    // Taken for an item of 20 s, it would seem to have been stopped by somebody.
    play("blip.mp3");
    m_heard->askPosition();
    QTRY_COMPARE(m_heard->completed(), 1);
}

void UpnpPeerQuirksTest::knowsNoAbsoluteTime()
{
    play("long.mp3");
    QCOMPARE(transport("GetPositionInfo", "AbsTime"), QStringLiteral("NOT_IMPLEMENTED"));
    QTRY_VERIFY(m_heard->askPosition() >= 1);
}

void UpnpPeerQuirksTest::toleratesPlayingWhatPlays()
{
    play("long.mp3");
    const QStringList before = m_heard->events();
    QCOMPARE(tell(Upnp::Service::AVTransport, "Play", {{"Speed", "1"}}).outcome, Upnp::Answer::Done);
    QTRY_VERIFY(m_heard->askPosition() >= 1);
    QCOMPARE(m_heard->events(), before);
}

void UpnpPeerQuirksTest::offersASpeedThatIsNone()
{
    // Beside "1" it lists a word that stands for what vendors may add.
    m_renderer->setKelvoProperty("playback-speed", 2.0);
    QTRY_COMPARE(m_heard->errors(), QList<int>{KelvoError::NotSupported});
    QCOMPARE(m_heard->errorTexts().constFirst(),
        QStringLiteral("playback-speed 2: Test gmediarender plays at 1 to 1"));
    m_heard->clear();
    play("long.mp3");
}

void UpnpPeerQuirksTest::takesAVolumeBeyondItsRange()
{
    m_renderer->setKelvoProperty("volume", 50);
    QTRY_COMPARE(m_heard->property("volume"), QVariant(50U));
    QTRY_COMPARE(deviceVolume(), 51);
    QCOMPARE(
        tell(Upnp::Service::RenderingControl, "SetVolume", {{"Channel", "Master"}, {"DesiredVolume", "150"}})
            .outcome,
        Upnp::Answer::Done);
    QTRY_COMPARE(m_heard->property("volume"), QVariant(99U));
    m_renderer->setKelvoProperty("volume", 50);
    QTRY_COMPARE(deviceVolume(), 51);
}

void UpnpPeerQuirksTest::keepsItsVolumeOverMuting()
{
    m_renderer->setKelvoProperty("volume", 60);
    QTRY_COMPARE(deviceVolume(), 61);
    for (const char *mute : {"1", "0"})
        QCOMPARE(
            tell(Upnp::Service::RenderingControl, "SetMute", {{"Channel", "Master"}, {"DesiredMute", mute}})
                .outcome,
            Upnp::Answer::Done);
    QCOMPARE(deviceVolume(), 61);
    QCOMPARE(m_heard->askProperty("volume"), QVariant(60U));
    // Muted by somebody else, it is heard again by whoever sets a volume.
    tell(Upnp::Service::RenderingControl, "SetMute", {{"Channel", "Master"}, {"DesiredMute", "1"}});
    const auto isMuted = [this] {
        return tell(Upnp::Service::RenderingControl, "GetMute", {{"Channel", "Master"}}, {"CurrentMute"})
                   .values.value("CurrentMute")
            == "1";
    };
    QTRY_VERIFY(isMuted());
    int volume = 30;
    QTRY_VERIFY((m_renderer->setKelvoProperty("volume", ++volume), !isMuted()));
    QTRY_COMPARE(m_heard->property("volume"), QVariant(uint(volume)));
}

void UpnpPeerQuirksTest::answersEmptyWhatItDoesNotKnow()
{
    for (const auto &[action, result] :
        {std::pair("GetTransportSettings", "PlayMode"), std::pair("GetDeviceCapabilities", "PlayMedia")}) {
        const Upnp::Answer answer = tell(Upnp::Service::AVTransport, action, {}, {result});
        QVERIFY2(answer.isFromDevice(), action);
        QCOMPARE(answer.values.value(result), QString());
    }
}

void UpnpPeerQuirksTest::refusesAnUnknownAction()
{
    const Upnp::Answer answer = tell(Upnp::Service::AVTransport, "Rewind", {});
    QCOMPARE(answer.outcome, Upnp::Answer::Refused);
    // The standard has 401 for that.
    QCOMPARE(answer.code, 501);
}

void UpnpPeerQuirksTest::claimsToPlayWhatItCannotReach()
{
    ImpatientConsole console;
    QTRY_VERIFY_WITH_TIMEOUT(console.renderer, LongWait);
    RendererRecorder heard(console.renderer.get());
    console.renderer->playUri(QUrl("http://" + nearAddress() + ":9/missing.mp3"));
    QTRY_COMPARE(heard.errors(), QList<int>{KelvoError::Stalled});
    QVERIFY(heard.states().contains(KelvoRenderer::Playing));
    QCOMPARE(heard.errorTexts().constFirst(),
        QStringLiteral("Test gmediarender says that it plays but does not move on"));
    QTRY_COMPARE(heard.state(), KelvoRenderer::Stopped);
    QTRY_COMPARE(transport("GetTransportInfo", "CurrentTransportState"), QStringLiteral("STOPPED"));
    // What it cannot play is not left in its way.
    play("long.mp3");
}

void UpnpPeerQuirksTest::crashIsAnErrorAndARestartHealsIt()
{
    QSignalSpy removed(&registry(), &KelvoRegistry::rendererRemoved);
    play("long.mp3");
    killPeer(quirky);
    m_renderer->pause();
    QTRY_COMPARE(m_heard->errors(), QList<int>{KelvoError::NetworkFailed});
    QVERIFY2(m_heard->errorTexts().constFirst().startsWith("Pause: Test gmediarender cannot be reached: "),
        qPrintable(m_heard->errorTexts().constFirst()));
    m_heard->clear();
    // It could not tell that it goes. The port that it had is not free at once.
    startPeers({quirky}, {"--port", otherPort});
    QVERIFY(QTest::qWaitFor([this] { return playsLong(*m_renderer, *m_heard); }, LongWait));
    QCOMPARE(removed.size(), 0);
    m_heard->clear();
}

void UpnpPeerQuirksTest::twoThatShareAUdnAreOne()
{
    // Whoever is not given a UDN has the same one everywhere, and begins by taking back what it announced in an earlier
    // life: so the first one goes and either of them comes, or it still answers and stays.
    LogRecorder log;
    qsizetype most = 0;
    int added = 0;
    connect(&registry(), &KelvoRegistry::rendererAdded, m_heard.get(), [&] {
        ++added;
        most = std::max(most, registry().renderers().size());
    });
    QProcess second;
    second.start(startCommand(quirky), {"--port", thirdPort});
    QTRY_VERIFY_WITH_TIMEOUT(
        added > 0 || !log.warnings().filter("Two devices call themselves").isEmpty(), LongWait);
    const auto plays = [this] {
        KelvoRenderer *renderer = rendererNamed("Test gmediarender");
        if (!renderer)
            return false;
        RendererRecorder heard(renderer);
        return playsLong(*renderer, heard);
    };
    QVERIFY(QTest::qWaitFor(plays, LongWait));
    QVERIFY(most <= 1);
    second.kill();
    QVERIFY(second.waitForFinished());
}
} // namespace

KELVO_TEST(UpnpPeerQuirksTest)
#include "UpnpPeerQuirksTest.moc"
