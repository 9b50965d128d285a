// SPDX-License-Identifier: MIT
#include "ContractCase.h"
#include "ContractSuite.h"

namespace {
class PauseAtContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void pausesAtTheSecond();
    void actsOnce();
    void pausesAtOnceWhenPast();
    void pausesWhenASeekGoesPast();
    void isKeptWhileStopped();
    void isKeptForAUri();
    void zeroPausesAtTheBeginning();
    void isKeptWhileTransitioning();
    void isKeptWhilePaused();
    void newOneReplacesIt();
    void isKeptWhenACommandFails();
    void isDropped_data();
    void isDropped();

private:
    bool startAt(int seconds);
    bool staysPlayingPast(int seconds);
};

bool PauseAtContract::startAt(int seconds)
{
    startPlaylist(makeLongPlaylist(3), 1);
    if (seconds > 0)
        renderer()->setPosition(seconds, SeekAbsolute);
    return reaches([&] { return position() == seconds; });
}

bool PauseAtContract::staysPlayingPast(int seconds)
{
    renderer()->setPosition(seconds, SeekAbsolute);
    if (!reaches([&] { return position() >= seconds; }))
        return false;
    settle();
    return status().state == Playing;
}

void PauseAtContract::pausesAtTheSecond()
{
    NEEDS(PauseAt);
    startPlaylist(makeLongPlaylist(1));
    renderer()->pauseAt(2);
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 2);
    settle();
    QCOMPARE(position(), 2);
    QCOMPARE(heard().states, (QList<KelvoRenderer::State>{Paused}));
}

void PauseAtContract::actsOnce()
{
    NEEDS(PauseAt);
    HOLDS(startAt(0));
    renderer()->pauseAt(1);
    REACHES(heard().state() == Paused);
    renderer()->resume();
    REACHES(heard().state() == Playing);
    HOLDS(staysPlayingPast(3));
    renderer()->setPosition(0, SeekAbsolute);
    REACHES(position() == 2);
    QCOMPARE(status().state, int(Playing));
}

void PauseAtContract::pausesAtOnceWhenPast()
{
    NEEDS(PauseAt);
    HOLDS(startAt(5));
    renderer()->pauseAt(3);
    REACHES(heard().state() == Paused);
    HOLDS(position() == 5 || position() == 6);
    // At the very second counts as past, too.
    renderer()->resume();
    REACHES(heard().state() == Playing);
    const int here = position();
    renderer()->pauseAt(uint(here));
    REACHES(heard().state() == Paused);
    HOLDS(position() <= here + 1);
}

void PauseAtContract::pausesWhenASeekGoesPast()
{
    NEEDS(PauseAt);
    NEEDS(Seek);
    HOLDS(startAt(0));
    renderer()->pauseAt(6);
    settle();
    QCOMPARE(heard().state(), Playing);
    renderer()->setPosition(8, SeekAbsolute);
    REACHES(heard().state() == Paused);
    REACHES(position() == 8);
}

void PauseAtContract::isKeptWhileStopped()
{
    NEEDS(PauseAt);
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->pauseAt(1);
    settle();
    QCOMPARE(heard().states.size(), 0);
    renderer()->play();
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 1);
    // Only for one playing.
    renderer()->stop();
    REACHES(heard().state() == KelvoRenderer::Stopped);
    renderer()->play();
    REACHES(heard().state() == Playing);
    HOLDS(staysPlayingPast(2));
}

void PauseAtContract::isKeptForAUri()
{
    NEEDS(PauseAt);
    renderer()->pauseAt(1);
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 1);
}

void PauseAtContract::zeroPausesAtTheBeginning()
{
    NEEDS(PauseAt);
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->pauseAt(0);
    renderer()->play();
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 0);
    renderer()->resume();
    REACHES(position() == 1);
    QCOMPARE(heard().state(), Playing);
}

void PauseAtContract::isKeptWhileTransitioning()
{
    NEEDS(PauseAt);
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->play();
    renderer()->pauseAt(1);
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 1);
}

void PauseAtContract::isKeptWhilePaused()
{
    NEEDS(PauseAt);
    HOLDS(startAt(0));
    renderer()->pause();
    REACHES(heard().state() == Paused);
    renderer()->pauseAt(1);
    settle();
    QCOMPARE(heard().state(), Paused);
    HOLDS(position() < 1);
    renderer()->resume();
    REACHES(heard().state() == Playing);
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 1);
}

void PauseAtContract::newOneReplacesIt()
{
    NEEDS(PauseAt);
    HOLDS(startAt(0));
    renderer()->pauseAt(1);
    renderer()->pauseAt(1000);
    REACHES(position() == 2);
    QCOMPARE(heard().state(), Playing);
    renderer()->pauseAt(8);
    renderer()->pauseAt(3);
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 3);
}

void PauseAtContract::isKeptWhenACommandFails()
{
    NEEDS(PauseAt);
    HOLDS(startAt(0));
    renderer()->pauseAt(1);
    renderer()->gotoIndex(99);
    REACHES(heard().state() == Paused);
    QCOMPARE(position(), 1);
    QCOMPARE(heard().errorsOf(KelvoError::IndexOutOfRange), 1);
}

void PauseAtContract::isDropped_data()
{
    QTest::addColumn<QString>("by");
    for (const char *command : {"stop", "gotoIndex", "next", "previous"})
        QTest::newRow(command) << QString(command);
}

void PauseAtContract::isDropped()
{
    NEEDS(PauseAt);
    NEEDS(Seek);
    QFETCH(QString, by);
    HOLDS(startAt(0));
    renderer()->pauseAt(6);
    if (by == QLatin1String("gotoIndex")) {
        renderer()->gotoIndex(2);
    } else if (by == QLatin1String("next")) {
        renderer()->next();
    } else if (by == QLatin1String("previous")) {
        renderer()->previous();
    } else {
        renderer()->stop();
        REACHES(heard().state() == KelvoRenderer::Stopped);
        renderer()->play();
    }
    settle();
    REACHES(heard().state() == Playing);
    HOLDS(staysPlayingPast(7));
}
} // namespace

std::unique_ptr<QObject> makePauseAtContract(RendererSubject &subject)
{
    return std::make_unique<PauseAtContract>(subject);
}

#include "PauseAtContract.moc"
