// SPDX-License-Identifier: MIT
#include "StatementGroups.h"
#include "Trial.h"

namespace {
class PauseAtStatements : public Trial
{
public:
    using Trial::Trial;

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
    void isDropped(const QString &by);

private:
    bool startAt(int seconds);
    bool staysPlayingPast(int seconds);
};

bool PauseAtStatements::startAt(int seconds)
{
    startPlaylist(makeLongPlaylist(3), 1);
    if (seconds > 0)
        renderer()->setPosition(seconds, SeekAbsolute);
    return reaches([&] { return position() == seconds; });
}

bool PauseAtStatements::staysPlayingPast(int seconds)
{
    renderer()->setPosition(seconds, SeekAbsolute);
    if (!reaches([&] { return position() >= seconds; }))
        return false;
    settle();
    return status().state == Playing;
}

void PauseAtStatements::pausesAtTheSecond()
{
    startPlaylist(makeLongPlaylist(1));
    renderer()->pauseAt(2);
    REACHES(heard().state() == Paused);
    SAME(position(), 2);
    settle();
    SAME(position(), 2);
    SAME(heard().states, (QList<KelvoRenderer::State>{Paused}));
}

void PauseAtStatements::actsOnce()
{
    HOLDS(startAt(0));
    renderer()->pauseAt(1);
    REACHES(heard().state() == Paused);
    renderer()->resume();
    REACHES(heard().state() == Playing);
    HOLDS(staysPlayingPast(3));
    renderer()->setPosition(0, SeekAbsolute);
    REACHES(position() == 2);
    SAME(status().state, int(Playing));
}

void PauseAtStatements::pausesAtOnceWhenPast()
{
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

void PauseAtStatements::pausesWhenASeekGoesPast()
{
    HOLDS(startAt(0));
    renderer()->pauseAt(6);
    settle();
    SAME(heard().state(), Playing);
    renderer()->setPosition(8, SeekAbsolute);
    REACHES(heard().state() == Paused);
    REACHES(position() == 8);
}

void PauseAtStatements::isKeptWhileStopped()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->pauseAt(1);
    settle();
    SAME(heard().states.size(), 0);
    renderer()->play();
    REACHES(heard().state() == Paused);
    SAME(position(), 1);
    // Only for one playing.
    renderer()->stop();
    REACHES(heard().state() == KelvoRenderer::Stopped);
    renderer()->play();
    REACHES(heard().state() == Playing);
    HOLDS(staysPlayingPast(2));
}

void PauseAtStatements::isKeptForAUri()
{
    renderer()->pauseAt(1);
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Paused);
    SAME(position(), 1);
}

void PauseAtStatements::zeroPausesAtTheBeginning()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->pauseAt(0);
    renderer()->play();
    REACHES(heard().state() == Paused);
    SAME(position(), 0);
    renderer()->resume();
    REACHES(position() == 1);
    SAME(heard().state(), Playing);
}

void PauseAtStatements::isKeptWhileTransitioning()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->play();
    renderer()->pauseAt(1);
    REACHES(heard().state() == Paused);
    SAME(position(), 1);
}

void PauseAtStatements::isKeptWhilePaused()
{
    HOLDS(startAt(0));
    renderer()->pause();
    REACHES(heard().state() == Paused);
    renderer()->pauseAt(1);
    settle();
    SAME(heard().state(), Paused);
    HOLDS(position() < 1);
    renderer()->resume();
    REACHES(heard().state() == Playing);
    REACHES(heard().state() == Paused);
    SAME(position(), 1);
}

void PauseAtStatements::newOneReplacesIt()
{
    HOLDS(startAt(0));
    renderer()->pauseAt(1);
    renderer()->pauseAt(1000);
    REACHES(position() == 2);
    SAME(heard().state(), Playing);
    renderer()->pauseAt(8);
    renderer()->pauseAt(3);
    REACHES(heard().state() == Paused);
    SAME(position(), 3);
}

void PauseAtStatements::isKeptWhenACommandFails()
{
    HOLDS(startAt(0));
    renderer()->pauseAt(1);
    renderer()->gotoIndex(99);
    REACHES(heard().state() == Paused);
    SAME(position(), 1);
    SAME(heard().errorsOf(KelvoError::IndexOutOfRange), 1);
}

void PauseAtStatements::isDropped(const QString &by)
{
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

QList<Statement> pauseAtStatements()
{
    using G = PauseAtStatements;
    return QList<Statement>{
        statement("pause-at.second", "pauseAt() pauses at that second, and the position stays there.",
            {Ability::PauseAt}, &G::pausesAtTheSecond),
        statement("pause-at.once", "pauseAt() acts once: after resume() the same second passes.",
            {Ability::PauseAt, Ability::Seek}, &G::actsOnce),
        statement("pause-at.past", "A pauseAt() at or before the position pauses at once.",
            {Ability::PauseAt, Ability::Seek}, &G::pausesAtOnceWhenPast),
        statement("pause-at.seek-past", "A seek past the second of a pauseAt() pauses where it went.",
            {Ability::PauseAt, Ability::Seek}, &G::pausesWhenASeekGoesPast),
        statement("pause-at.kept-while-stopped",
            "A pauseAt() while Stopped is kept for the next playing, and for that alone.",
            {Ability::PauseAt, Ability::Seek}, &G::isKeptWhileStopped),
        statement("pause-at.kept-for-uri", "A pauseAt() is kept for a playUri() after it.",
            {Ability::PauseAt}, &G::isKeptForAUri),
        statement("pause-at.zero", "pauseAt(0) pauses at the beginning, and resume() goes on from there.",
            {Ability::PauseAt}, &G::zeroPausesAtTheBeginning),
        statement("pause-at.kept-while-transitioning",
            "A pauseAt() while Transitioning pauses at its second.", {Ability::PauseAt},
            &G::isKeptWhileTransitioning),
        statement("pause-at.kept-while-paused", "A pauseAt() while Paused acts after resume().",
            {Ability::PauseAt, Ability::Pause}, &G::isKeptWhilePaused),
        statement("pause-at.replaced", "A new pauseAt() replaces the one before.", {Ability::PauseAt},
            &G::newOneReplacesIt),
        statement("pause-at.kept-when-a-command-fails",
            "A gotoIndex() past the end gives an error and leaves pauseAt() in force.", {Ability::PauseAt},
            &G::isKeptWhenACommandFails),
        statement("pause-at.dropped-by.stop", "stop() drops a pauseAt().", {Ability::PauseAt, Ability::Seek},
            &G::isDropped, "stop"),
        statement("pause-at.dropped-by.goto-index", "gotoIndex() drops a pauseAt().",
            {Ability::PauseAt, Ability::Seek}, &G::isDropped, "gotoIndex"),
        statement("pause-at.dropped-by.next", "next() drops a pauseAt().", {Ability::PauseAt, Ability::Seek},
            &G::isDropped, "next"),
        statement("pause-at.dropped-by.previous", "previous() drops a pauseAt().",
            {Ability::PauseAt, Ability::Seek}, &G::isDropped, "previous"),
    };
}
