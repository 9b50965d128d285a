// SPDX-License-Identifier: MIT
// Positions, seeks and speeds.
#include "ContractCase.h"
#include "ContractSuite.h"

namespace {
class SeekContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void positionFollowsPlayback();
    void seeks_data();
    void seeks();
    void seeksWhilePaused();
    void seekWhileStoppedStartsNothing();
    void seekToTheEndEndsTheUri_data();
    void seekToTheEndEndsTheUri();
    void seekToTheEndEndsTheItem();
    void relativeSeeksInARowAddUp();
    void lastOfManySeeksCounts();
    void tellsWhatCannotSeek();
    void playsFastForward();
    void playsBackwards();

private:
    bool startAt(int seconds);
};

/// Plays the long item from there.
bool SeekContract::startAt(int seconds)
{
    renderer()->playUri(m_subject.longItem());
    if (!reaches([this] { return heard().state() == KelvoRenderer::Playing; }))
        return false;
    renderer()->setPosition(seconds, SeekAbsolute);
    return reaches([&] { return position() == seconds; });
}

void SeekContract::positionFollowsPlayback()
{
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == KelvoRenderer::Playing);
    const qint64 since = m_subject.time();
    REACHES(position() == 2);
    const qint64 passed = m_subject.time() - since;
    HOLDS(passed > 1000 && passed < 3500);
    renderer()->stop();
    REACHES(heard().state() == KelvoRenderer::Stopped);
    QCOMPARE(position(), 0);
}

void SeekContract::seeks_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("to");
    QTest::newRow("absolute, forward") << 1 << 6 << int(SeekAbsolute) << 6;
    QTest::newRow("absolute, back") << 6 << 2 << int(SeekAbsolute) << 2;
    QTest::newRow("absolute, beginning") << 6 << 0 << int(SeekAbsolute) << 0;
    QTest::newRow("absolute, before the beginning") << 6 << -5 << int(SeekAbsolute) << 0;
    QTest::newRow("relative, forward") << 3 << 3 << int(SeekRelative) << 6;
    QTest::newRow("relative, back") << 6 << -3 << int(SeekRelative) << 3;
    QTest::newRow("relative, before the beginning") << 6 << -10 << int(SeekRelative) << 0;
}

void SeekContract::seeks()
{
    NEEDS(Seek);
    QFETCH(int, from);
    QFETCH(int, seconds);
    QFETCH(int, mode);
    QFETCH(int, to);
    HOLDS(startAt(from));
    renderer()->setPosition(seconds, mode);
    REACHES(position() == to);
    settle();
    HOLDS(position() == to || position() == to + 1);
    QCOMPARE(heard().state(), KelvoRenderer::Playing);
    QCOMPARE(heard().errors.size(), 0);
    QCOMPARE(heard().completed, 0);
}

void SeekContract::seeksWhilePaused()
{
    NEEDS(Seek);
    HOLDS(startAt(1));
    renderer()->pause();
    REACHES(heard().state() == KelvoRenderer::Paused);
    heard().clear();
    renderer()->setPosition(5, SeekAbsolute);
    REACHES(position() == 5);
    renderer()->setPosition(-2, SeekRelative);
    REACHES(position() == 3);
    settle();
    QCOMPARE(position(), 3);
    QCOMPARE(status().state, int(KelvoRenderer::Paused));
    QVERIFY(!heard().states.contains(KelvoRenderer::Playing));
    renderer()->resume();
    REACHES(position() == 4);
}

void SeekContract::seekWhileStoppedStartsNothing()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->setPosition(5, SeekAbsolute);
    renderer()->setPosition(-5, SeekRelative);
    settle();
    QCOMPARE(heard().states.size(), 0);
    QCOMPARE(heard().completed, 0);
    QCOMPARE(position(), 0);
    renderer()->play();
    REACHES(heard().state() == KelvoRenderer::Playing);
}

void SeekContract::seekToTheEndEndsTheUri_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("mode");
    QTest::newRow("absolute, the end") << m_subject.longSeconds() << int(SeekAbsolute);
    QTest::newRow("absolute, past the end") << 100'000 << int(SeekAbsolute);
    QTest::newRow("relative, past the end") << m_subject.longSeconds() << int(SeekRelative);
}

void SeekContract::seekToTheEndEndsTheUri()
{
    NEEDS(Seek);
    QFETCH(int, seconds);
    QFETCH(int, mode);
    HOLDS(startAt(1));
    heard().clear();
    const qint64 since = m_subject.time();
    renderer()->setPosition(seconds, mode);
    REACHES(heard().completed == 1);
    HOLDS(m_subject.time() - since < 3000);
    QCOMPARE(heard().state(), KelvoRenderer::Stopped);
    QCOMPARE(heard().errors.size(), 0);
}

void SeekContract::seekToTheEndEndsTheItem()
{
    NEEDS(Seek);
    startPlaylist(makeLongPlaylist(2));
    renderer()->setPosition(100'000, SeekAbsolute);
    REACHES(isPlaying(1));
    settle();
    HOLDS(position() <= 2);
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().errors.size(), 0);
}

void SeekContract::relativeSeeksInARowAddUp()
{
    NEEDS(Seek);
    HOLDS(startAt(7));
    renderer()->setPosition(-2, SeekRelative);
    renderer()->setPosition(-2, SeekRelative);
    REACHES(position() == 3);
}

void SeekContract::lastOfManySeeksCounts()
{
    NEEDS(Seek);
    HOLDS(startAt(1));
    for (int second : {8, 2, 7, 3, 6, 5})
        renderer()->setPosition(second, SeekAbsolute);
    REACHES(position() == 5);
    settle();
    HOLDS(position() == 5 || position() == 6);
}

void SeekContract::tellsWhatCannotSeek()
{
    NEEDS(TellUnseekable);
    renderer()->playUri(m_subject.unseekableItem());
    REACHES(heard().state() == KelvoRenderer::Playing);
    settle();
    renderer()->setPosition(5, SeekAbsolute);
    REACHES(heard().errors.size() == 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::NotSeekable);
    settle();
    QCOMPARE(heard().state(), KelvoRenderer::Playing);
    HOLDS(position() < 5);
}

void SeekContract::playsFastForward()
{
    NEEDS(FastForward);
    HOLDS(startAt(1));
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, 2.0);
    REACHES(heard().property("playback-speed") == QVariant(2.0));
    const qint64 since = m_subject.time();
    REACHES(position() >= 5);
    HOLDS(m_subject.time() - since < 3000);
    // A seek keeps the speed.
    renderer()->setPosition(1, SeekAbsolute);
    REACHES(position() == 1);
    const qint64 again = m_subject.time();
    REACHES(position() >= 3);
    HOLDS(m_subject.time() - again < 1700);
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, 1.0);
    REACHES(heard().property("playback-speed") == QVariant(1.0));
    QCOMPARE(heard().state(), KelvoRenderer::Playing);
}

void SeekContract::playsBackwards()
{
    NEEDS(Rewind);
    HOLDS(startAt(7));
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, -2.0);
    REACHES(position() == 4);
    QCOMPARE(heard().state(), KelvoRenderer::Playing);
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, 1.0);
    REACHES(heard().property("playback-speed") == QVariant(1.0));
    REACHES(position() == 5);
    QCOMPARE(heard().completed, 0);
}
} // namespace

std::unique_ptr<QObject> makeSeekContract(RendererSubject &subject)
{
    return std::make_unique<SeekContract>(subject);
}

#include "SeekContract.moc"
