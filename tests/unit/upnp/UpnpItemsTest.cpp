// SPDX-License-Identifier: MIT
// Which item it is that a device tells of: the one that it was given last, the one before, or one that it cannot play.
#include "FakeRendererLink.h"
#include "KelvoTestCase.h"
#include "ReportedProgress.h"
#include "TestGroup.h"
#include "UpnpTransport.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {
class UpnpItemsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void playingOfTheItemBeforeIsNoStart();
    void stopBetweenTwoItemsIsNoEnd();
    void deviceThatNamesNoTrackStarts();
    void deviceThatStaysAtItsOldAddressStartsInTheEnd();
    void lateEventOfTheItemBeforeIsNotOfThisOne();
    void unplayableItemIsAnError_data();
    void unplayableItemIsAnError();
    void itemOfASecondEnds();
    void itemBelowASecondEndsWithoutAnEvent_data();
    void itemBelowASecondEndsWithoutAnEvent();
    void titleIsKnownWithoutAnEvent();
    void titleOfTheItemBeforeIsNotOfThisOne();
    void durationOfTheItemBeforeIsNotOfThisOne();
    void sameDurationAgainIsToldInTheEnd();
    void refusalToPlayIsTriedAgain();
    void lastingRefusalToPlayIsAnError_data();
    void lastingRefusalToPlayIsAnError();
    void itemWhoseAddressIsForgottenEnds();
    void itemThatMovedEndsWithoutADuration();
    void itemThatPlayedLongEndsWithoutAPosition();
    void endIsFoundWithoutAnEvent();
    void pauseIsFoundWithoutAnEvent();
    void fallenPositionOfWhatPlaysIsTaken();
    void stopIsNotLostWhileTheItemIsAskedFor();
    void whatComesBeforeTheAnswerIsHeard();
    void whatChangesBeforeTheAnswerIsHeard();

private:
    struct Told
    {
        quint64 epoch;
        KelvoRenderer::State state;
        friend bool operator==(const Told &, const Told &) = default;
    };
    void load(quint64 epoch, const char *name);
    bool plays(quint64 epoch) const;
    int ends() const { return int(m_ended->size() + m_failed->size()); }
    void send(const QHash<QByteArray, QString> &values) { Q_EMIT m_link->reported({.values = values}); }
    /// The device says so to whoever asks, and in an event.
    void become(const char *state, const QHash<QByteArray, QString> &values = {});

    FakeRendererLink *m_link = nullptr;
    std::unique_ptr<UpnpTransport> m_transport;
    std::unique_ptr<ReportedProgress> m_progress;
    QList<Told> m_told;
    std::unique_ptr<QSignalSpy> m_ended;
    std::unique_ptr<QSignalSpy> m_failed;
    std::unique_ptr<QSignalSpy> m_durations;
    std::unique_ptr<QSignalSpy> m_positions;
};

void UpnpItemsTest::init()
{
    KelvoTestCase::init();
    auto link = std::make_unique<FakeRendererLink>();
    m_link = link.get();
    UpnpTransport::Patience patience;
    patience.change = 1000;
    patience.doubt = 300;
    patience.proof = 2500;
    m_transport = std::make_unique<UpnpTransport>(std::move(link), patience);
    UpnpTransport *transport = m_transport.get();
    m_progress = std::make_unique<ReportedProgress>(transport);
    m_told.clear();
    connect(transport, &RemoteTransport::stateReported, transport,
        [this](quint64 epoch, KelvoRenderer::State state) {
            m_told.append({epoch, state});
        });
    m_ended = std::make_unique<QSignalSpy>(transport, &RemoteTransport::ended);
    // As the layer above judges it.
    connect(
        transport, &RemoteTransport::stopped, this, [this](quint64 epoch, const RemoteTransport::Stop &stop) {
            if (stop.isEnd())
                m_ended->append(QVariantList{epoch});
            else
                m_told.append({epoch, KelvoRenderer::Stopped});
        });
    m_failed = std::make_unique<QSignalSpy>(transport, &RemoteTransport::failed);
    m_durations = std::make_unique<QSignalSpy>(transport, &RemoteTransport::durationReported);
    m_positions = std::make_unique<QSignalSpy>(transport, &RemoteTransport::positionReported);
}

void UpnpItemsTest::load(quint64 epoch, const char *name)
{
    const QUrl url(QStringLiteral("http://h/") + QLatin1String(name));
    m_transport->load({.epoch = epoch, .info = KelvoMediaInfo("i", url)});
}

bool UpnpItemsTest::plays(quint64 epoch) const
{
    return m_told.endsWith(Told{epoch, KelvoRenderer::Playing});
}

void UpnpItemsTest::become(const char *state, const QHash<QByteArray, QString> &values)
{
    m_link->state = QLatin1String(state);
    QHash<QByteArray, QString> all = values;
    all.insert("TransportState", m_link->state);
    send(all);
}

void UpnpItemsTest::playingOfTheItemBeforeIsNoStart()
{
    load(1, "one");
    QTRY_VERIFY(plays(1));
    m_link->keepsTrack = true;
    m_link->calls.clear();
    load(2, "two");
    QTRY_VERIFY(m_link->count("Play") == 1);
    send({{"TransportState", "PLAYING"}, {"AVTransportURI", "http://h/two"}});
    QTRY_VERIFY(m_link->count("GetTransportInfo") >= 3);
    QVERIFY(!m_told.contains(Told{2, KelvoRenderer::Playing}));
    // Not on its way to an end either.
    become("STOPPED");
    const int asked = m_link->count("GetTransportInfo");
    QTRY_VERIFY(m_link->count("GetTransportInfo") > asked + 1);
    m_link->trackUri = QStringLiteral("http://h/two");
    become("PLAYING", {{"CurrentTrackURI", "http://h/two"}});
    QTRY_VERIFY(plays(2));
    QCOMPARE(ends(), 0);
}

void UpnpItemsTest::stopBetweenTwoItemsIsNoEnd()
{
    load(1, "one");
    QTRY_VERIFY(plays(1));
    m_link->position = m_link->duration = QStringLiteral("00:00:00");
    load(2, "two");
    QTRY_VERIFY(plays(2));
    m_link->calls.clear();
    become("STOPPED", {{"CurrentTrackDuration", "00:00:00"}});
    QTRY_VERIFY(m_link->count("GetTransportInfo") >= 2);
    become("PLAYING");
    QTRY_COMPARE(m_told.count(Told{2, KelvoRenderer::Playing}), 2);
    QCOMPARE(ends(), 0);
    QCOMPARE(m_link->count("Play"), 0);
}

void UpnpItemsTest::deviceThatNamesNoTrackStarts()
{
    m_link->keepsTrack = true;
    for (const char *name : {"", "NOT_IMPLEMENTED"}) {
        m_link->trackUri = QLatin1String(name);
        load(1, "one");
        QTRY_VERIFY(plays(1));
        load(2, "two");
        QTRY_VERIFY(plays(2));
    }
}

void UpnpItemsTest::deviceThatStaysAtItsOldAddressStartsInTheEnd()
{
    load(1, "one");
    QTRY_VERIFY(plays(1));
    m_link->keepsTrack = true;
    load(2, "two");
    QTRY_VERIFY(plays(2));
    QCOMPARE(ends(), 0);
}

void UpnpItemsTest::lateEventOfTheItemBeforeIsNotOfThisOne()
{
    load(1, "one");
    QTRY_VERIFY(plays(1));
    load(2, "two");
    QTRY_VERIFY(plays(2));
    m_link->calls.clear();
    send({{"CurrentTrackURI", "http://h/one"}, {"CurrentTrackDuration", "0:04:00"},
        {"TransportState", "PAUSED_PLAYBACK"}});
    QTRY_COMPARE(m_link->count("GetTransportInfo"), 1);
    QTRY_COMPARE(m_link->underWay, 0);
    QVERIFY(plays(2));
    send({{"CurrentTrackURI", "http://h/two"}, {"CurrentTrackDuration", "0:02:00"}});
    QTRY_VERIFY(!m_durations->isEmpty() && m_durations->constLast().at(1).toDouble() == 120);
    for (const QVariantList &told : *m_durations)
        QVERIFY(told.at(1).toDouble() != 240);
}

void UpnpItemsTest::unplayableItemIsAnError_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::newRow("plays for a moment") << QByteArray("PLAYING");
    QTest::newRow("never plays") << QByteArray("STOPPED");
}

void UpnpItemsTest::unplayableItemIsAnError()
{
    QFETCH(QByteArray, state);
    m_link->position = m_link->duration = QStringLiteral("00:00:00");
    if (state == "STOPPED")
        m_link->answers.insert("Play", Upnp::Answer());
    QElapsedTimer timer;
    load(1, "one");
    timer.start();
    if (state == "PLAYING") {
        QTRY_VERIFY(plays(1));
        become("STOPPED", {{"CurrentTrackDuration", "00:00:00"}});
    }
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_failed->size(), 1);
    QCOMPARE(m_failed->at(0).at(0).toULongLong(), 1ull);
    QCOMPARE(m_failed->at(0).at(1).value<KelvoError::Code>(), KelvoError::ReadFailed);
    QCOMPARE(m_failed->at(0).at(2).toString(), QStringLiteral("Fake does not play it"));
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    if (state == "PLAYING")
        QCOMPARE(m_link->count("Play"), 1);
}

void UpnpItemsTest::itemOfASecondEnds()
{
    m_link->position = m_link->duration = QStringLiteral("00:00:00");
    load(1, "one");
    QTRY_VERIFY(plays(1));
    send({{"CurrentTrackDuration", "00:00:01"}});
    // At its end the device tells of nothing any more, be it asked or not.
    m_link->state = QStringLiteral("STOPPED");
    m_transport->askPosition();
    become("STOPPED", {{"CurrentTrackDuration", "00:00:00"}});
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_ended->size(), 1);
}

void UpnpItemsTest::itemBelowASecondEndsWithoutAnEvent_data()
{
    QTest::addColumn<int>("question");
    QTest::newRow("tells its duration at once") << 1;
    QTest::newRow("tells its duration in a moment") << 2;
}

void UpnpItemsTest::itemBelowASecondEndsWithoutAnEvent()
{
    QFETCH(int, question);
    m_link->position = m_link->duration = QStringLiteral("0:00:00.000");
    const auto end = [this] {
        m_link->position = m_link->duration = QStringLiteral("0:00:00.000");
        become("STOPPED", {{"CurrentTrackDuration", "0:00:00.000"}});
    };
    m_link->asked = [this, end, question](const QByteArray &action) {
        if (action == "Play")
            QTimer::singleShot(700, m_link, end);
        if (action == "GetPositionInfo" && m_link->state == "PLAYING"
            && m_link->count("GetPositionInfo") >= question)
            m_link->duration = QStringLiteral("0:00:00.731");
    };
    load(1, "one");
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_ended->size(), 1);
    QVERIFY(m_told.contains(Told{1, KelvoRenderer::Playing}));
}

void UpnpItemsTest::titleIsKnownWithoutAnEvent()
{
    QSignalSpy facts(m_transport.get(), &RemoteTransport::fact);
    m_link->track.emplace().title = QStringLiteral("Title");
    load(1, "one");
    QTRY_COMPARE(facts.size(), 1);
    QCOMPARE(facts.at(0).at(0).toULongLong(), 1ull);
    QCOMPARE(facts.at(0).at(1).toString(), QStringLiteral("title"));
    QCOMPARE(facts.at(0).at(2).toList().constFirst().toString(), QStringLiteral("Title"));
}

void UpnpItemsTest::titleOfTheItemBeforeIsNotOfThisOne()
{
    QSignalSpy facts(m_transport.get(), &RemoteTransport::fact);
    m_link->track.emplace().title = QStringLiteral("Title");
    load(1, "one");
    QTRY_COMPARE(facts.size(), 1);
    m_link->keepsTrack = true;
    load(2, "two");
    QTRY_VERIFY(plays(2));
    QTRY_VERIFY((m_transport->askPosition(), m_positions->constLast().at(0).toULongLong() == 2));
    QCOMPARE(facts.size(), 1);
}

void UpnpItemsTest::durationOfTheItemBeforeIsNotOfThisOne()
{
    load(1, "one");
    QTRY_VERIFY(m_durations->size() == 1); // 10 s
    m_link->calls.clear();
    load(2, "two");
    QTRY_VERIFY(plays(2));
    // It goes on answering for the item before until it has looked at this one.
    QTRY_VERIFY(m_link->count("GetPositionInfo") >= 2);
    m_link->duration = QStringLiteral("0:00:03");
    send({{"CurrentTrackURI", "http://h/two"}, {"CurrentTrackDuration", m_link->duration}});
    QTRY_COMPARE(m_durations->size(), 2);
    QCOMPARE(m_durations->at(1), QVariantList({2ull, 3.0}));
}

void UpnpItemsTest::sameDurationAgainIsToldInTheEnd()
{
    load(1, "one");
    QTRY_VERIFY(m_durations->size() == 1);
    load(2, "two");
    QTRY_COMPARE(m_durations->size(), 2);
    QCOMPARE(m_durations->at(1), QVariantList({2ull, 10.0}));
}

void UpnpItemsTest::refusalToPlayIsTriedAgain()
{
    // Still busy with the end of the item before.
    m_link->refuse("Play", 501, QStringLiteral("Playing failed"));
    m_link->answerOnce = "Play";
    load(1, "one");
    QTRY_VERIFY(plays(1));
    QCOMPARE(m_link->count("Stop"), 1);
    QCOMPARE(m_link->count("SetAVTransportURI"), 2);
    QCOMPARE(m_link->count("Play"), 2);
    QCOMPARE(m_link->uri, QStringLiteral("http://h/one"));
    QCOMPARE(ends(), 0);
}

void UpnpItemsTest::lastingRefusalToPlayIsAnError_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<KelvoError::Code>("error");
    QTest::addColumn<int>("tries");
    QTest::newRow("without a reason") << 501 << KelvoError::CommandRefused << 2;
    QTest::newRow("for the item's format") << 704 << KelvoError::UnsupportedType << 1;
    QTest::newRow("because it is not there") << 716 << KelvoError::NotFound << 1;
}

void UpnpItemsTest::lastingRefusalToPlayIsAnError()
{
    QFETCH(int, code);
    QFETCH(KelvoError::Code, error);
    QFETCH(int, tries);
    m_link->refuse("Play", code);
    load(1, "one");
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_failed->size(), 1);
    QCOMPARE(m_failed->at(0).at(1).value<KelvoError::Code>(), error);
    QCOMPARE(m_link->count("Play"), tries);
    // The next one has its own chance.
    m_link->calls.clear();
    load(2, "two");
    QTRY_COMPARE(ends(), 2);
    QCOMPARE(m_link->count("Play"), tries);
}

void UpnpItemsTest::itemWhoseAddressIsForgottenEnds()
{
    // It does not tell where it is.
    m_link->position = m_link->duration = QStringLiteral("NOT_IMPLEMENTED");
    load(1, "one");
    QTRY_VERIFY(plays(1));
    QVERIFY(m_positions->isEmpty());
    become("STOPPED", {{"AVTransportURI", ""}, {"CurrentTrackURI", ""}});
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_ended->size(), 1);
    // Who judges the end is told that it has moved.
    QCOMPARE(m_positions->size(), 1);
}

void UpnpItemsTest::itemThatMovedEndsWithoutADuration()
{
    m_link->duration = QStringLiteral("NOT_IMPLEMENTED");
    load(1, "one");
    QTRY_VERIFY(plays(1));
    // Nobody else wants to know where it is.
    QTRY_VERIFY(!m_positions->isEmpty());
    become("STOPPED");
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_ended->size(), 1);
}

void UpnpItemsTest::itemThatPlayedLongEndsWithoutAPosition()
{
    m_link->position = m_link->duration = QStringLiteral("NOT_IMPLEMENTED");
    load(1, "one");
    QTRY_VERIFY(plays(1));
    QElapsedTimer timer;
    timer.start();
    // The transport asks until it has seen enough.
    QTRY_VERIFY(timer.hasExpired(2600));
    become("STOPPED");
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_ended->size(), 1);
}

void UpnpItemsTest::endIsFoundWithoutAnEvent()
{
    m_link->duration = QStringLiteral("0:03:00");
    m_link->position = QStringLiteral("0:02:58");
    load(1, "one");
    QTRY_VERIFY(plays(1));
    m_transport->askPosition();
    QTRY_COMPARE(m_positions->size(), 1);
    // Asked for its position only, it tells of the end by that.
    m_link->state = QStringLiteral("STOPPED");
    m_link->position = QStringLiteral("0:00:00");
    m_transport->askPosition();
    QTRY_COMPARE(ends(), 1);
    QCOMPARE(m_ended->size(), 1);
}

void UpnpItemsTest::pauseIsFoundWithoutAnEvent()
{
    load(1, "one");
    QTRY_VERIFY(plays(1));
    m_link->state = QStringLiteral("PAUSED_PLAYBACK");
    m_link->position = QStringLiteral("0:00:05");
    QTRY_VERIFY((m_transport->askPosition(), m_told.endsWith(Told{1, KelvoRenderer::Paused})));
    QCOMPARE(ends(), 0);
}

void UpnpItemsTest::fallenPositionOfWhatPlaysIsTaken()
{
    m_link->duration = QStringLiteral("0:03:00");
    m_link->position = QStringLiteral("0:01:00");
    load(1, "one");
    QTRY_VERIFY(plays(1));
    m_transport->askPosition();
    QTRY_VERIFY(!m_positions->isEmpty() && m_positions->constLast().at(1).toDouble() >= 60);
    // Somebody has sought.
    m_link->position = QStringLiteral("0:00:10");
    QTRY_VERIFY((m_transport->askPosition(), m_positions->constLast().at(1).toDouble() < 12));
    QVERIFY(plays(1));
    QCOMPARE(ends(), 0);
}
void UpnpItemsTest::stopIsNotLostWhileTheItemIsAskedFor()
{
    // Somebody else plays, as it may be found to do.
    m_link->uri = m_link->trackUri = QStringLiteral("http://other/song");
    become("PLAYING");
    QTRY_VERIFY(plays(0));
    m_link->uri = QStringLiteral("http://other/next");
    send({{"AVTransportURI", m_link->uri}});
    QCOMPARE(m_link->calls.constLast().action, QByteArray("GetMediaInfo"));
    m_transport->unload();
    QTRY_COMPARE(m_link->count("Stop"), 1);
    QTRY_COMPARE(m_link->underWay, 0);
    QCOMPARE(m_link->state, QStringLiteral("STOPPED"));
}

void UpnpItemsTest::whatComesBeforeTheAnswerIsHeard()
{
    QSignalSpy facts(m_transport.get(), &RemoteTransport::fact);
    // Who asks is not told.
    m_link->duration = QStringLiteral("NOT_IMPLEMENTED");
    load(1, "one");
    QTRY_VERIFY(plays(1));
    for (const char *command : {"SetAVTransportURI", "Play"}) {
        facts.clear();
        m_durations->clear();
        const quint64 epoch = m_told.constLast().epoch + 1;
        const QByteArray name = "item" + QByteArray::number(epoch);
        m_link->asked = [&](const QByteArray &action) {
            if (action != command)
                return;
            Upnp::Report report;
            report.track.emplace().title = QStringLiteral("Title");
            report.values = {{"CurrentTrackURI", "http://h/" + name}, {"CurrentTrackDuration", "0:02:00"}};
            Q_EMIT m_link->reported(report);
            // One of the item before as well.
            report.track->title = QStringLiteral("Before");
            report.values = {{"CurrentTrackURI", "http://h/one"}, {"CurrentTrackDuration", "0:04:00"}};
            Q_EMIT m_link->reported(report);
        };
        load(epoch, name);
        QTRY_VERIFY(plays(epoch));
        m_link->asked = nullptr;
        QCOMPARE(facts.size(), 1);
        QCOMPARE(facts.at(0).at(0).toULongLong(), epoch);
        QCOMPARE(facts.at(0).at(2).toList().constFirst().toString(), QStringLiteral("Title"));
        QCOMPARE(m_durations->size(), 1);
        QCOMPARE(m_durations->at(0).at(1).toDouble(), 120.0);
    }
}

/// A change names the track only when that is what changes.
void UpnpItemsTest::whatChangesBeforeTheAnswerIsHeard()
{
    QSignalSpy facts(m_transport.get(), &RemoteTransport::fact);
    load(1, "one");
    QTRY_VERIFY(plays(1));
    send({{"CurrentTrackURI", "http://h/one"}});
    m_link->asked = [&](const QByteArray &action) {
        if (action != "Play")
            return;
        const auto tell = [&](const char *title, const QHash<QByteArray, QString> &values) {
            Upnp::Report report;
            report.track.emplace().title = QLatin1String(title);
            report.values = values;
            Q_EMIT m_link->reported(report);
        };
        tell("Before", {});
        tell("Name of the file", {{"CurrentTrackURI", "http://h/two"}});
        tell("Title", {});
        tell("Nothing", {{"CurrentTrackURI", ""}});
    };
    load(2, "two");
    QTRY_VERIFY(plays(2));
    m_link->asked = nullptr;
    QStringList titles;
    for (const QList<QVariant> &arguments : facts)
        titles.append(arguments.at(2).toList().constFirst().toString());
    QCOMPARE(titles, (QStringList{"Name of the file", "Title"}));
}
} // namespace

KELVO_TEST(UpnpItemsTest)
#include "UpnpItemsTest.moc"
