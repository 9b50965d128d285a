// SPDX-License-Identifier: MIT
// What the transport makes of devices, with a device that does as it is told.
#include "UpnpTransport.h"
#include "FakeRendererLink.h"
#include "KelvoTestCase.h"
#include "ReportedProgress.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {
using Upnp::Answer;
using enum KelvoRenderer::State;

class UpnpTransportTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void loadsAndPlays();
    void loadsPaused();
    void refusalNamesCodeAndText();
    void refusalOfACommandHasItsReason_data();
    void refusalOfACommandHasItsReason();
    void timeoutNamesActionAndDevice();
    void refusedTransitionIsSuccessWhenTheStateMatches();
    void tellsADeviceNothingThatItDoesAlready();
    void aDeviceAtRestIsNeitherPausedNorStarted();
    void stopsADeviceThatTakesNothingWhilePlaying();
    void stopsADeviceThatPauses();
    void startsAgainWhatWasLost();
    void endIsConfirmed();
    void earlyStopIsSomebodyElses();
    void durationOfTheItemBeforeIsTakenBack();
    void clearedAddressIsNotForeign();
    void foreignItemReplacesOurs();
    void itemPlayingAtFirstIsForeign();
    void somebodyLetsTheItemPlayAgain();
    void seeksAreCoalescedAndHeld();
    void seekPastAnUnknownEndEndsTheItem();
    void volumesAreCoalesced();
    void volumeThatTheDeviceRoundsIsTheOneSet();
    void volumeSurvivesMuting();
    void itemThatDoesNotMoveOnFails();
    void unreadableEventAsks();
    void abilitiesComeFromTheDevice();

private:
    void playItem(quint64 epoch = 1);
    void playToItsEnd();
    Upnp::Report report(const QByteArray &name, const QString &value) { return {.values = {{name, value}}}; }
    QList<KelvoRenderer::State> states() const;

    FakeRendererLink *m_link = nullptr;
    std::unique_ptr<UpnpTransport> m_transport;
    std::unique_ptr<ReportedProgress> m_progress;
    std::unique_ptr<QSignalSpy> m_states;
    std::unique_ptr<QSignalSpy> m_ended;
    std::unique_ptr<QSignalSpy> m_failed;
    std::unique_ptr<QSignalSpy> m_troubled;
    std::unique_ptr<QSignalSpy> m_replaced;
    std::unique_ptr<QSignalSpy> m_volumes;
    std::unique_ptr<QSignalSpy> m_positions;
};

void UpnpTransportTest::init()
{
    KelvoTestCase::init();
    auto link = std::make_unique<FakeRendererLink>();
    m_link = link.get();
    UpnpTransport::Patience patience;
    patience.start = 300;
    patience.retry = 40;
    patience.change = 200;
    patience.progress = 100;
    m_transport = std::make_unique<UpnpTransport>(std::move(link), patience);
    UpnpTransport *transport = m_transport.get();
    m_progress = std::make_unique<ReportedProgress>(transport);
    m_states = std::make_unique<QSignalSpy>(transport, &RemoteTransport::stateReported);
    m_ended = std::make_unique<QSignalSpy>(transport, &RemoteTransport::ended);
    // As the layer above judges it.
    connect(
        transport, &RemoteTransport::stopped, this, [this](quint64 epoch, const RemoteTransport::Stop &stop) {
            if (stop.isEnd())
                m_ended->append(QVariantList{epoch});
            else
                m_states->append(QVariantList{epoch, QVariant::fromValue(Stopped)});
        });
    m_failed = std::make_unique<QSignalSpy>(transport, &RemoteTransport::failed);
    m_troubled = std::make_unique<QSignalSpy>(transport, &RemoteTransport::troubled);
    m_replaced = std::make_unique<QSignalSpy>(transport, &RemoteTransport::replaced);
    m_volumes = std::make_unique<QSignalSpy>(transport, &RemoteTransport::volumeReported);
    m_positions = std::make_unique<QSignalSpy>(transport, &RemoteTransport::positionReported);
}

QList<KelvoRenderer::State> UpnpTransportTest::states() const
{
    QList<KelvoRenderer::State> list;
    for (const QVariantList &arguments : *m_states)
        list.append(arguments.at(1).value<KelvoRenderer::State>());
    return list;
}

void UpnpTransportTest::playItem(quint64 epoch)
{
    m_transport->load({.epoch = epoch, .info = KelvoMediaInfo("i", QUrl("http://h/item.mp3"), "Title", 10)});
    QTRY_VERIFY(states().endsWith(Playing));
    m_link->calls.clear();
}

/// As the device shows whoever asks.
void UpnpTransportTest::playToItsEnd()
{
    m_link->position = QStringLiteral("0:00:09");
    m_transport->askPosition();
    QTRY_VERIFY(!m_positions->isEmpty());
    m_link->calls.clear();
}

void UpnpTransportTest::loadsAndPlays()
{
    m_transport->load({.epoch = 7, .info = KelvoMediaInfo("i", QUrl("http://h/a b.mp3"), "Title")});
    QVERIFY(m_states->isEmpty());
    QTRY_COMPARE(states(), (QList{Transitioning, Playing}));
    QCOMPARE(m_states->at(1).at(0).toULongLong(), 7ull);
    QCOMPARE(m_link->uri, QStringLiteral("http://h/a%20b.mp3"));
    QCOMPARE(m_link->mostUnderWay, 1);
}

void UpnpTransportTest::loadsPaused()
{
    m_transport->load({.epoch = 1, .info = KelvoMediaInfo("i", QUrl("http://h/a")), .paused = true});
    QTRY_VERIFY(states().endsWith(Paused));
    QVERIFY(!states().contains(Playing));
}

void UpnpTransportTest::refusalNamesCodeAndText()
{
    m_link->refuse("SetAVTransportURI", 716, QStringLiteral("Resource not found"));
    m_transport->load({.epoch = 1, .info = KelvoMediaInfo("i", QUrl("http://h/a"))});
    QTRY_COMPARE(m_failed->size(), 1);
    QCOMPARE(m_failed->at(0).at(1).value<KelvoError::Code>(), KelvoError::NotFound);
    QCOMPARE(m_failed->at(0).at(2).toString(),
        QStringLiteral("SetAVTransportURI: Fake refused: 716 Resource not found"));
}

void UpnpTransportTest::refusalOfACommandHasItsReason_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("reason");
    QTest::newRow("its own words") << 710 << "I never seek"
                                   << "710 I never seek";
    QTest::newRow("no words") << 710 << ""
                              << "710 Seek mode not supported";
    QTest::newRow("those of HTTP") << 501 << "Internal Server Error"
                                   << "501 Action Failed";
    QTest::newRow("a maker's own code") << 899 << ""
                                        << "899 it gave no reason";
    QTest::newRow("no code") << 0 << "Invalid Envelope"
                             << "Invalid Envelope";
    QTest::newRow("nothing") << 0 << ""
                             << "it gave no reason";
}

void UpnpTransportTest::refusalOfACommandHasItsReason()
{
    QFETCH(int, code);
    QFETCH(QString, words);
    QFETCH(QString, reason);
    playItem();
    m_link->refuse("Seek", code, words);
    m_transport->seek(3);
    QTRY_COMPARE(m_troubled->size(), 1);
    QCOMPARE(m_troubled->at(0).at(0).value<KelvoError::Code>(), KelvoError::CommandRefused);
    QCOMPARE(m_troubled->at(0).at(1).toString(), "Seek: Fake refused: " + reason);
}

void UpnpTransportTest::timeoutNamesActionAndDevice()
{
    playItem();
    Answer late;
    late.outcome = Answer::TimedOut;
    m_link->answers.insert("Pause", late);
    m_transport->pause();
    QTRY_COMPARE(m_troubled->size(), 1);
    QCOMPARE(m_troubled->at(0).at(0).value<KelvoError::Code>(), KelvoError::Timeout);
    QCOMPARE(m_troubled->at(0).at(1).toString(), QStringLiteral("Pause: Fake did not answer in time"));
}

void UpnpTransportTest::refusedTransitionIsSuccessWhenTheStateMatches()
{
    playItem();
    m_link->refuse("Pause", 701);
    m_link->state = QStringLiteral("PAUSED_PLAYBACK");
    m_transport->pause();
    QTRY_VERIFY(states().endsWith(Paused));
    QVERIFY(m_troubled->isEmpty());
    m_link->answers.clear();
    m_link->refuse("Play", 701);
    m_transport->resume();
    QTRY_COMPARE(m_troubled->size(), 1);
    QCOMPARE(m_troubled->at(0).at(0).value<KelvoError::Code>(), KelvoError::CommandRefused);
}

// Some begin the item anew with a Play, or refuse a second Pause. Whoever asked hears all the same.
void UpnpTransportTest::tellsADeviceNothingThatItDoesAlready()
{
    playItem();
    m_states->clear();
    m_transport->resume();
    QTRY_COMPARE(states(), QList{Playing});
    QCOMPARE(m_link->count("Play"), 0);
    m_transport->pause();
    QTRY_VERIFY(states().endsWith(Paused));
    QTRY_COMPARE(m_link->underWay, 0);
    m_states->clear();
    m_transport->pause();
    QTRY_COMPARE(states(), QList{Paused});
    QCOMPARE(m_link->count("Pause"), 1);
    QVERIFY(m_troubled->isEmpty());
}

// What has been stopped neither begins again nor pauses by a command that was meant for it while it played.
void UpnpTransportTest::aDeviceAtRestIsNeitherPausedNorStarted()
{
    playItem();
    Q_EMIT m_link->reported(report("CurrentTrackDuration", QStringLiteral("0:03:00")));
    m_link->state = QStringLiteral("STOPPED");
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("STOPPED")));
    QTRY_VERIFY(states().endsWith(Stopped));
    QTRY_COMPARE(m_link->underWay, 0);
    m_link->calls.clear();
    m_transport->resume();
    m_transport->pause();
    m_transport->setVolume(10); // Sent after them.
    QTRY_COMPARE(m_link->count("SetVolume"), 1);
    QCOMPARE(m_link->count("Play") + m_link->count("Pause"), 0);
}

void UpnpTransportTest::stopsADeviceThatTakesNothingWhilePlaying()
{
    playItem();
    m_link->refuse("SetAVTransportURI", 705);
    m_link->answerOnce = "SetAVTransportURI";
    m_transport->load({.epoch = 2, .info = KelvoMediaInfo("i", QUrl("http://h/b"))});
    QTRY_COMPARE(m_states->constLast().at(0).toULongLong(), 2ull);
    QCOMPARE(m_link->uri, QStringLiteral("http://h/b"));
    QCOMPARE(m_link->count("Stop"), 1);
    QVERIFY(m_failed->isEmpty());
}

void UpnpTransportTest::stopsADeviceThatPauses()
{
    playItem();
    m_transport->pause();
    QTRY_VERIFY(states().endsWith(Paused));
    m_transport->load({.epoch = 2, .info = KelvoMediaInfo("i", QUrl("http://h/b"))});
    QTRY_COMPARE(m_states->constLast().at(0).toULongLong(), 2ull);
    QTRY_VERIFY(states().endsWith(KelvoRenderer::Playing));
    QCOMPARE(m_link->uri, QStringLiteral("http://h/b"));
    QCOMPARE(m_link->count("Stop"), 1);
    QVERIFY(m_failed->isEmpty());
    QVERIFY(m_troubled->isEmpty());
}

void UpnpTransportTest::startsAgainWhatWasLost()
{
    m_link->answers.insert("Play", Answer());
    m_transport->load({.epoch = 1, .info = KelvoMediaInfo("i", QUrl("http://h/b"))});
    m_link->answerOnce = "Play";
    QTRY_VERIFY(states().endsWith(Playing));
    QCOMPARE(m_link->count("Play"), 2);
    m_link->answerOnce.clear();
    m_link->answers.insert("Play", Answer());
    m_link->state = QStringLiteral("STOPPED");
    m_transport->load({.epoch = 2, .info = KelvoMediaInfo("i", QUrl("http://h/c"))});
    QTRY_COMPARE(m_failed->size(), 1);
    QCOMPARE(m_failed->at(0).at(0).toULongLong(), 2ull);
}

void UpnpTransportTest::endIsConfirmed()
{
    playItem();
    playToItsEnd();
    // An event of before.
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("STOPPED")));
    QTRY_COMPARE(m_link->count("GetTransportInfo"), 1);
    QTRY_COMPARE(m_link->underWay, 0);
    QVERIFY(m_ended->isEmpty());
    m_link->state = QStringLiteral("STOPPED");
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("STOPPED")));
    QTRY_COMPARE(m_ended->size(), 1);
    QCOMPARE(m_ended->at(0).at(0).toULongLong(), 1ull);
}

void UpnpTransportTest::earlyStopIsSomebodyElses()
{
    playItem();
    Q_EMIT m_link->reported(report("CurrentTrackDuration", QStringLiteral("0:03:00")));
    m_link->state = QStringLiteral("STOPPED");
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("STOPPED")));
    QTRY_VERIFY(states().endsWith(Stopped));
    QVERIFY(m_ended->isEmpty());
}

void UpnpTransportTest::durationOfTheItemBeforeIsTakenBack()
{
    playItem();
    Q_EMIT m_link->reported(report("CurrentTrackDuration", QStringLiteral("0:03:00")));
    Q_EMIT m_link->reported(report("CurrentTrackDuration", QStringLiteral("0:00:00")));
    m_link->duration = QStringLiteral("0:00:00");
    m_transport->askPosition();
    QTRY_VERIFY(!m_positions->isEmpty());
    m_link->state = QStringLiteral("STOPPED");
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("STOPPED")));
    QTRY_COMPARE(m_ended->size(), 1);
}

void UpnpTransportTest::clearedAddressIsNotForeign()
{
    playItem();
    playToItsEnd();
    m_link->state = QStringLiteral("STOPPED");
    m_link->uri.clear();
    Q_EMIT m_link->reported({.values = {{"TransportState", "STOPPED"}, {"AVTransportURI", ""}}});
    QTRY_COMPARE(m_ended->size(), 1);
    QVERIFY(m_replaced->isEmpty());
}

void UpnpTransportTest::foreignItemReplacesOurs()
{
    playItem();
    m_link->uri = QStringLiteral("http://other/song");
    Q_EMIT m_link->reported(report("AVTransportURI", m_link->uri));
    QTRY_COMPARE(m_replaced->size(), 1);
    QCOMPARE(m_replaced->at(0).at(0).value<KelvoMediaInfo>().url(), QUrl("http://other/song"));
    QTRY_COMPARE(m_states->constLast().at(0).toULongLong(), 0ull);
    QCOMPARE(m_link->count("SetAVTransportURI"), 0);
    m_link->state = QStringLiteral("STOPPED");
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("STOPPED")));
    QTRY_VERIFY(states().endsWith(Stopped));
    QCOMPARE(m_ended->size(), 0);
}

void UpnpTransportTest::itemPlayingAtFirstIsForeign()
{
    m_link->uri = QStringLiteral("http://other/song");
    m_link->state = QStringLiteral("PLAYING");
    QTRY_COMPARE(m_replaced->size(), 1);
    QTRY_COMPARE(states(), QList{Playing});
}

void UpnpTransportTest::somebodyLetsTheItemPlayAgain()
{
    playItem();
    Q_EMIT m_link->reported(report("CurrentTrackDuration", QStringLiteral("0:03:00")));
    m_link->state = QStringLiteral("STOPPED");
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("STOPPED")));
    QTRY_VERIFY(states().endsWith(Stopped));
    m_link->state = QStringLiteral("PLAYING");
    Q_EMIT m_link->reported(report("TransportState", QStringLiteral("PLAYING")));
    QTRY_VERIFY(states().endsWith(Playing));
    QCOMPARE(m_states->constLast().at(0).toULongLong(), 1ull);
    QVERIFY(m_replaced->isEmpty());
}

void UpnpTransportTest::seeksAreCoalescedAndHeld()
{
    QSignalSpy seeks(m_transport.get(), &RemoteTransport::seeked);
    playItem();
    for (int second = 1; second <= 50; ++second)
        m_transport->seek(second);
    QTRY_VERIFY(!seeks.isEmpty() && seeks.constLast().at(1).toDouble() == 50);
    QCOMPARE(seeks.constLast().at(2).toInt(), UpnpTransport::Patience().seek);
    QCOMPARE(m_link->count("Seek"), 2);
    QCOMPARE(m_link->calls.constLast().in.at(2).second, QStringLiteral("0:00:50"));
    m_link->position = QStringLiteral("0:00:00");
    m_transport->askPosition();
    m_positions->clear();
    QTRY_COMPARE(m_positions->size(), 1);
    QVERIFY(m_progress->item.now() >= 50);
}

void UpnpTransportTest::seekPastAnUnknownEndEndsTheItem()
{
    playItem();
    m_link->refuse("Seek", 711);
    m_transport->seek(5);
    QTRY_COMPARE(m_troubled->size(), 1);
    QVERIFY(m_ended->isEmpty());
    m_transport->seek(11);
    QTRY_COMPARE(m_ended->size(), 1);
    QCOMPARE(m_troubled->size(), 1);
}

void UpnpTransportTest::volumesAreCoalesced()
{
    playItem();
    for (int volume = 0; volume <= 99; ++volume)
        m_transport->setVolume(volume);
    QTRY_VERIFY(!m_volumes->isEmpty() && m_volumes->constLast().at(0).toInt() == 99);
    QCOMPARE(m_link->volume, QStringLiteral("100"));
    QVERIFY(m_link->count("SetVolume") <= 2);
}

void UpnpTransportTest::volumeThatTheDeviceRoundsIsTheOneSet()
{
    playItem();
    // The one that it begins with.
    QTRY_VERIFY(!m_volumes->isEmpty());
    m_transport->setVolume(37);
    QTRY_COMPARE(m_volumes->constLast().at(0).toInt(), 37);
    m_link->volume = QStringLiteral("36");
    Q_EMIT m_link->reported(report("Volume", QStringLiteral("36")));
    QTRY_COMPARE(m_link->count("GetVolume"), 1);
    QTRY_COMPARE(m_link->underWay, 0);
    QCOMPARE(m_volumes->constLast().at(0).toInt(), 37);
    m_link->volume = QStringLiteral("80");
    Q_EMIT m_link->reported(report("Volume", QStringLiteral("80")));
    QTRY_COMPARE(m_volumes->constLast().at(0).toInt(), 79);
}

void UpnpTransportTest::volumeSurvivesMuting()
{
    playItem();
    m_transport->setVolume(60);
    QTRY_COMPARE(m_volumes->constLast().at(0).toInt(), 60);
    const QString before = m_link->volume;
    m_link->volume = QStringLiteral("0");
    Q_EMIT m_link->reported({.values = {{"Mute", "1"}, {"Volume", "0"}}});
    Q_EMIT m_link->reported({.values = {{"Mute", "0"}, {"Volume", "0"}}});
    QTRY_COMPARE(m_link->volume, before);
}

void UpnpTransportTest::itemThatDoesNotMoveOnFails()
{
    m_link->position = QStringLiteral("0:00:00");
    playItem();
    QTRY_COMPARE(m_failed->size(), 1);
    QCOMPARE(m_failed->at(0).at(1).value<KelvoError::Code>(), KelvoError::Stalled);
    QTRY_COMPARE(m_link->count("Stop"), 1);
}

void UpnpTransportTest::unreadableEventAsks()
{
    playItem();
    m_link->state = QStringLiteral("PAUSED_PLAYBACK");
    Q_EMIT m_link->reported({.values = {}, .track = {}, .isUnreadable = true});
    QTRY_VERIFY(states().endsWith(Paused));
}

void UpnpTransportTest::abilitiesComeFromTheDevice()
{
    QVERIFY(m_transport->abilities().seek);
    Upnp::RendererLimits limits;
    limits.actions = {"Play", "SetVolume", "Seek"};
    limits.speeds = {"1", "1/2", "2", "-1"};
    Q_EMIT m_link->limitsKnown(limits);
    QVERIFY(m_transport->abilities().seek);
    QVERIFY(!m_transport->abilities().pause);
    QCOMPARE(m_transport->abilities().slowestRate, -1.0);
    QCOMPARE(m_transport->abilities().fastestRate, 2.0);
    playItem();
    Q_EMIT m_link->reported(report("CurrentTransportActions", QStringLiteral("STOP,PAUSE")));
    QVERIFY(!m_transport->abilities().seek);
    limits.actions = {"Play", "Pause"};
    Q_EMIT m_link->limitsKnown(limits);
    Q_EMIT m_link->reported(report("CurrentTransportActions", QStringLiteral("STOP,PAUSE,SEEK")));
    QVERIFY(!m_transport->abilities().seek);
    QVERIFY(m_transport->abilities().pause);
    QVERIFY(!m_transport->abilities().volume);
}
} // namespace

KELVO_TEST(UpnpTransportTest)
#include "UpnpTransportTest.moc"
