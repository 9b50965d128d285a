// SPDX-License-Identifier: MIT
// Players say the same again and again: what of it is told on.
#include "RemoteCase.h"
#include "TestGroup.h"

namespace {
class RemoteRepeatsTest : public RemoteCase
{
    Q_OBJECT
private Q_SLOTS:
    void whatIsSaidAgainIsToldOnce();
    void whatIsSaidAgainAsksNothing();
    void stateOfBeforeAPauseDoesNotCallItOff();
    void refusedPauseIsOver();
    void pauseThatIsWaitedForIsHeardAgain();
    void stateCountsAgainAfterAStop();
    void speedOfBeforeIsNoNews();
    void speedThatTheItemTakesIsNoNews();
    void speedThatStaysIsAnAnswer();
};

void RemoteRepeatsTest::whatIsSaidAgainIsToldOnce()
{
    m_renderer->playUri(QUrl("http://media/song"));
    QStringList names;
    connect(m_renderer.get(), &KelvoRenderer::nameChanged, this, [&](const QString &name) { names << name; });
    for (int i = 0; i < 3; ++i) {
        say(Playing);
        const quint64 epoch = m_transport->epoch();
        Q_EMIT m_transport->volumeReported(42);
        Q_EMIT m_transport->rateReported(1.5);
        Q_EMIT m_transport->durationReported(epoch, 60);
        Q_EMIT m_transport->fact(epoch, QStringLiteral("title"), {QStringLiteral("Song")});
        Q_EMIT m_transport->nameReported(QStringLiteral("Kitchen"));
        flush();
    }
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(
        m_heard->properties, (QList<QPair<QString, QVariant>>{{"volume", 42U}, {"playback-speed", 1.5}}));
    QCOMPARE(m_heard->metadataCount("duration"), 1);
    QCOMPARE(m_heard->metadataCount("title"), 1);
    QCOMPARE(names, QStringList{"Kitchen"});
    QCOMPARE(m_heard->errors.size(), 0);
}

void RemoteRepeatsTest::whatIsSaidAgainAsksNothing()
{
    playing();
    for (int i = 0; i < 3; ++i)
        say(Paused);
    QCOMPARE(m_transport->polls, 1); // Where exactly it paused.
    QCOMPARE(m_transport->calls, QStringList());
}

// What it says before it has got to a command is as of before.
void RemoteRepeatsTest::stateOfBeforeAPauseDoesNotCallItOff()
{
    assign(2);
    m_renderer->play();
    say(Playing);
    m_renderer->pause();
    say(Playing);
    m_renderer->next();
    QVERIFY(m_transport->items.constLast().paused);
}

void RemoteRepeatsTest::refusedPauseIsOver()
{
    assign(2);
    m_renderer->play();
    say(Playing);
    m_renderer->pause();
    Q_EMIT m_transport->troubled(KelvoError::CommandRefused, QStringLiteral("no"));
    say(Playing);
    m_renderer->next();
    QVERIFY(!m_transport->items.constLast().paused);
}

void RemoteRepeatsTest::pauseThatIsWaitedForIsHeardAgain()
{
    assign(2);
    m_renderer->play();
    say(Playing);
    m_renderer->pause();
    say(Paused);
    m_renderer->next();
    m_renderer->resume();
    say(Paused);
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("resume"));
    say(Paused); // It has not gone on yet.
    flush();
    QCOMPARE(m_heard->state(), Transitioning);
    // And does not get to it.
    m_renderer->pause();
    say(Paused);
    flush();
    QCOMPARE(m_heard->state(), Paused);
}

void RemoteRepeatsTest::stateCountsAgainAfterAStop()
{
    playing();
    Q_EMIT m_transport->stopped(m_transport->epoch(), {3, 60, 1});
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Stopped, Transitioning, Playing}));
}

// It takes the item's speed a little later than the item.
void RemoteRepeatsTest::speedOfBeforeIsNoNews()
{
    playing();
    Q_EMIT m_transport->rateReported(2.0);
    m_renderer->stop();
    m_renderer->setKelvoProperty("playback-speed", 1.5);
    flush();
    m_heard->clear();
    m_renderer->playUri(QUrl("http://media/other"));
    Q_EMIT m_transport->rateReported(2.0);
    say(Playing);
    Q_EMIT m_transport->rateReported(1.5);
    Q_EMIT m_transport->rateReported(1.5);
    flush();
    QCOMPARE(m_heard->properties.size(), 0);
    QCOMPARE(m_transport->progress().rate(), 1.5);
    // It is news when it goes back to it.
    Q_EMIT m_transport->rateReported(2.0);
    flush();
    QCOMPARE(m_heard->property("playback-speed"), QVariant(2.0));
}

// Also of one that tells of no speed before.
void RemoteRepeatsTest::speedThatTheItemTakesIsNoNews()
{
    m_renderer->setKelvoProperty("playback-speed", 1.5);
    m_renderer->playUri(QUrl("http://media/song"));
    flush();
    m_heard->clear();
    Q_EMIT m_transport->rateReported(1.5);
    flush();
    QCOMPARE(m_heard->properties.size(), 0);
}

void RemoteRepeatsTest::speedThatStaysIsAnAnswer()
{
    playing();
    Q_EMIT m_transport->rateReported(1.0);
    m_renderer->stop();
    m_renderer->setKelvoProperty("playback-speed", 1.5);
    playing();
    // It takes 1.0 for what is asked for: it has no other.
    m_renderer->setKelvoProperty("playback-speed", 0.9);
    Q_EMIT m_transport->rateReported(1.0);
    flush();
    QCOMPARE(m_heard->property("playback-speed"), QVariant(1.0));
}
} // namespace

KELVO_TEST(RemoteRepeatsTest)
#include "RemoteRepeatsTest.moc"
