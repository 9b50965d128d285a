// SPDX-License-Identifier: MIT
// What says that it ended may never have played: players that tell of no errors just stop.
#include "RemoteCase.h"
#include "TestGroup.h"

namespace {
class RemoteEndsTest : public RemoteCase
{
    Q_OBJECT
private Q_SLOTS:
    void endWithoutASignOfLifeIsAnError_data();
    void endWithoutASignOfLifeIsAnError();
    void endAfterASignOfLifeIsAnEnd_data();
    void endAfterASignOfLifeIsAnEnd();
    void stopIsAnEndByWhereItWas_data();
    void stopIsAnEndByWhereItWas();
    void factThatChangesIsASignOfLife_data();
    void factThatChangesIsASignOfLife();
    void signsOfLifeAreOfTheItem();
    void pictureEndsWithoutASignOfLife();
    void playerWithoutPositionsHasPlayedAfterAWhile();
    void signsOfLifeAreAskedForOnceASecond();
};

void RemoteEndsTest::endWithoutASignOfLifeIsAnError_data()
{
    QTest::addColumn<bool>("isPlaying");
    QTest::addColumn<bool>("tellsPosition");
    QTest::newRow("on its way") << false << false;
    QTest::newRow("playing") << true << false;
    QTest::newRow("playing at the start") << true << true;
}

void RemoteEndsTest::endWithoutASignOfLifeIsAnError()
{
    QFETCH(bool, isPlaying);
    QFETCH(bool, tellsPosition);
    assign(2);
    m_renderer->play();
    if (isPlaying)
        say(Playing);
    if (tellsPosition)
        Q_EMIT m_transport->positionReported(m_transport->epoch(), 0);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::ReadFailed);
    QVERIFY(m_heard->errors.constFirst().message().contains("http://media/0"));
    // The next one has its turn.
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("load http://media/1"));
    say(Playing);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 1);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->completed, 1);
}

void RemoteEndsTest::endAfterASignOfLifeIsAnEnd_data()
{
    QTest::addColumn<double>("position");
    QTest::addColumn<double>("duration");
    QTest::newRow("it moved") << 0.2 << -1.0;
    QTest::newRow("it has a length") << 0.0 << 0.3;
}

void RemoteEndsTest::endAfterASignOfLifeIsAnEnd()
{
    QFETCH(double, position);
    QFETCH(double, duration);
    playing();
    Q_EMIT m_transport->durationReported(m_transport->epoch(), duration);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), position);
    // As it is when the end is told.
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 0);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->completed, 1);
    QCOMPARE(m_heard->errors.size(), 0);
}

void RemoteEndsTest::stopIsAnEndByWhereItWas_data()
{
    QTest::addColumn<double>("position");
    QTest::addColumn<double>("duration");
    QTest::addColumn<int>("ends");
    QTest::newRow("at the end") << 100.0 << 100.0 << 1;
    QTest::newRow("behind the end") << 102.0 << 100.0 << 1;
    QTest::newRow("as close as the margin") << 98.5 << 100.0 << 1;
    QTest::newRow("not so close") << 98.4 << 100.0 << 0;
    QTest::newRow("at the start") << 0.0 << 100.0 << 0;
    QTest::newRow("of what has no known end") << 5.0 << -1.0 << 1;
    QTest::newRow("of what has no length") << 5.0 << 0.0 << 1;
}

void RemoteEndsTest::stopIsAnEndByWhereItWas()
{
    QFETCH(double, position);
    QFETCH(double, duration);
    QFETCH(int, ends);
    assign(1);
    m_renderer->play();
    say(Playing);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 1);
    Q_EMIT m_transport->stopped(m_transport->epoch() + 1, {position, duration, 1.5}); // of another item
    flush();
    QCOMPARE(m_heard->state(), Playing);
    Q_EMIT m_transport->stopped(m_transport->epoch(), {position, duration, 1.5});
    flush();
    QCOMPARE(m_heard->state(), Stopped);
    QCOMPARE(m_heard->completed, ends);
    QCOMPARE(m_heard->errors.size(), 0);
    // What somebody has stopped is still in the player, who may let it go on; what has ended is not.
    say(Playing);
    flush();
    QCOMPARE(m_heard->state(), ends ? Stopped : Playing);
}

// Streams whose player tells neither position nor duration. It may tell of the title as often as it likes.
void RemoteEndsTest::factThatChangesIsASignOfLife_data()
{
    QTest::addColumn<QString>("second");
    QTest::addColumn<int>("ends");
    QTest::newRow("another title") << QStringLiteral("Second") << 1;
    QTest::newRow("the same title") << QStringLiteral("First") << 0;
}

void RemoteEndsTest::factThatChangesIsASignOfLife()
{
    QFETCH(QString, second);
    QFETCH(int, ends);
    playing();
    for (const QString &title : {QStringLiteral("First"), second})
        Q_EMIT m_transport->fact(m_transport->epoch(), QStringLiteral("title"), {title});
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 0);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->completed, ends);
    QCOMPARE(m_heard->errorsOf(KelvoError::ReadFailed), 1 - ends);
}

void RemoteEndsTest::signsOfLifeAreOfTheItem()
{
    playing();
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 5);
    playing(QUrl("http://media/other"));
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->completed, 0);
    QCOMPARE(m_heard->errorsOf(KelvoError::ReadFailed), 1);
    QCOMPARE(m_heard->states, States{Stopped});
}

void RemoteEndsTest::pictureEndsWithoutASignOfLife()
{
    m_renderer->playUriWithType(QUrl("http://media/picture"), QStringLiteral("image/png"));
    say(Playing);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->completed, 1);
    QCOMPARE(m_heard->errors.size(), 0);
}

void RemoteEndsTest::playerWithoutPositionsHasPlayedAfterAWhile()
{
    playing();
    QVERIFY(waitMs(1100));
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->completed, 1);
    QCOMPARE(m_heard->errors.size(), 0);
}

void RemoteEndsTest::signsOfLifeAreAskedForOnceASecond()
{
    playing();
    for (int asked = 1; asked <= 2; ++asked) {
        QTRY_COMPARE(m_transport->polls, asked);
        Q_EMIT m_transport->positionReported(m_transport->epoch(), 0);
    }
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 0.1);
    QVERIFY(waitMs(1200));
    QCOMPARE(m_transport->polls, 2);
}
} // namespace

KELVO_TEST(RemoteEndsTest)
#include "RemoteEndsTest.moc"
