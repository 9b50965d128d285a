// SPDX-License-Identifier: MIT
// Positions, seeks and speeds.
#include "StatementGroups.h"
#include "Trial.h"

namespace {
/// Where a seek to the end of the long item goes to.
enum class Aim { Duration, Beyond };

class SeekStatements : public Trial
{
public:
    using Trial::Trial;

    void positionFollowsPlayback();
    void seeks(int from, int seconds, KelvoRenderer::SeekMode mode, int to);
    void seeksWhilePaused();
    void seekWhileStoppedStartsNothing();
    void seekToTheEndEndsTheUri(Aim aim, KelvoRenderer::SeekMode mode);
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
bool SeekStatements::startAt(int seconds)
{
    renderer()->playUri(m_subject.longItem());
    if (!reaches([this] { return heard().state() == KelvoRenderer::Playing; }))
        return false;
    renderer()->setPosition(seconds, SeekAbsolute);
    return reaches([&] { return position() == seconds; });
}

void SeekStatements::positionFollowsPlayback()
{
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == KelvoRenderer::Playing);
    const qint64 since = m_subject.time();
    REACHES(position() == 2);
    const qint64 passed = m_subject.time() - since;
    HOLDS(passed > 1000 && passed < 3500 + m_subject.roundTrip());
    renderer()->stop();
    REACHES(heard().state() == KelvoRenderer::Stopped);
    SAME(position(), 0);
}

void SeekStatements::seeks(int from, int seconds, KelvoRenderer::SeekMode mode, int to)
{
    HOLDS(startAt(from));
    renderer()->setPosition(seconds, mode);
    // By playing alone it would be there later.
    REACHES_WITHIN(2500, position() == to);
    settle();
    HOLDS(position() == to || position() == to + 1);
    SAME(heard().state(), KelvoRenderer::Playing);
    SAME(heard().errors.size(), 0);
    SAME(heard().completed, 0);
}

void SeekStatements::seeksWhilePaused()
{
    HOLDS(startAt(1));
    renderer()->pause();
    REACHES(heard().state() == KelvoRenderer::Paused);
    heard().clear();
    renderer()->setPosition(5, SeekAbsolute);
    REACHES(position() == 5);
    renderer()->setPosition(-2, SeekRelative);
    REACHES(position() == 3);
    settle();
    SAME(position(), 3);
    SAME(status().state, int(KelvoRenderer::Paused));
    HOLDS(!heard().states.contains(KelvoRenderer::Playing));
    renderer()->resume();
    REACHES(position() == 4);
}

void SeekStatements::seekWhileStoppedStartsNothing()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->setPosition(5, SeekAbsolute);
    renderer()->setPosition(-5, SeekRelative);
    settle();
    SAME(heard().states.size(), 0);
    SAME(heard().completed, 0);
    SAME(position(), 0);
    renderer()->play();
    REACHES(heard().state() == KelvoRenderer::Playing);
}

void SeekStatements::seekToTheEndEndsTheUri(Aim aim, KelvoRenderer::SeekMode mode)
{
    const int seconds = aim == Aim::Duration ? m_subject.longSeconds() : 100'000;
    HOLDS(startAt(1));
    heard().clear();
    const qint64 since = m_subject.time();
    renderer()->setPosition(seconds, mode);
    REACHES(heard().completed == 1);
    HOLDS(m_subject.time() - since < 3000 + m_subject.roundTrip());
    SAME(heard().state(), KelvoRenderer::Stopped);
    SAME(heard().errors.size(), 0);
}

void SeekStatements::seekToTheEndEndsTheItem()
{
    startPlaylist(makeLongPlaylist(2));
    renderer()->setPosition(100'000, SeekAbsolute);
    REACHES(isPlaying(1));
    settle();
    HOLDS(position() <= 2);
    SAME(heard().completed, 0);
    SAME(heard().errors.size(), 0);
}

void SeekStatements::relativeSeeksInARowAddUp()
{
    HOLDS(startAt(7));
    renderer()->setPosition(-2, SeekRelative);
    renderer()->setPosition(-2, SeekRelative);
    REACHES_WITHIN(2500, position() == 3);
}

void SeekStatements::lastOfManySeeksCounts()
{
    HOLDS(startAt(1));
    for (int second : {8, 2, 7, 3, 6, 5})
        renderer()->setPosition(second, SeekAbsolute);
    REACHES(position() == 5);
    settle();
    HOLDS(position() == 5 || position() == 6);
}

void SeekStatements::tellsWhatCannotSeek()
{
    renderer()->playUri(m_subject.unseekableItem());
    REACHES(heard().state() == KelvoRenderer::Playing);
    settle();
    renderer()->setPosition(5, SeekAbsolute);
    REACHES(heard().errors.size() == 1);
    SAME(heard().errors.constFirst().code(), KelvoError::NotSeekable);
    settle();
    SAME(heard().state(), KelvoRenderer::Playing);
    HOLDS(position() < 5);
}

void SeekStatements::playsFastForward()
{
    HOLDS(startAt(1));
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, 2.0);
    REACHES(heard().property("playback-speed") == QVariant(2.0));
    const qint64 since = m_subject.time();
    REACHES(position() >= 5);
    HOLDS(m_subject.time() - since < 3000 + m_subject.roundTrip());
    // A seek keeps the speed.
    renderer()->setPosition(1, SeekAbsolute);
    REACHES(position() == 1);
    const qint64 again = m_subject.time();
    REACHES(position() >= 3);
    HOLDS(m_subject.time() - again < 1700 + m_subject.roundTrip());
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, 1.0);
    REACHES(heard().property("playback-speed") == QVariant(1.0));
    SAME(heard().state(), KelvoRenderer::Playing);
}

void SeekStatements::playsBackwards()
{
    HOLDS(startAt(7));
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, -2.0);
    REACHES(position() == 4);
    SAME(heard().state(), KelvoRenderer::Playing);
    renderer()->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, 1.0);
    REACHES(heard().property("playback-speed") == QVariant(1.0));
    REACHES(position() == 5);
    SAME(heard().completed, 0);
}
} // namespace

QList<Statement> seekStatements()
{
    using G = SeekStatements;
    return QList<Statement>{
        statement("seek.position-follows",
            "The position follows playback second by second, and is 0 after stop().", {},
            &G::positionFollowsPlayback),
        statement("seek.absolute-forward", "An absolute seek goes forward.", {Ability::Seek}, &G::seeks, 1, 6,
            SeekAbsolute, 6),
        statement("seek.absolute-back", "An absolute seek goes back.", {Ability::Seek}, &G::seeks, 6, 2,
            SeekAbsolute, 2),
        statement("seek.absolute-beginning", "An absolute seek goes to the beginning.", {Ability::Seek},
            &G::seeks, 6, 0, SeekAbsolute, 0),
        statement("seek.absolute-before-the-beginning",
            "An absolute seek before the beginning goes to the beginning.", {Ability::Seek}, &G::seeks, 6, -5,
            SeekAbsolute, 0),
        statement("seek.relative-forward", "A relative seek goes forward from the position.", {Ability::Seek},
            &G::seeks, 3, 3, SeekRelative, 6),
        statement("seek.relative-back", "A relative seek goes back from the position.", {Ability::Seek},
            &G::seeks, 6, -3, SeekRelative, 3),
        statement("seek.relative-before-the-beginning",
            "A relative seek before the beginning goes to the beginning.", {Ability::Seek}, &G::seeks, 6, -10,
            SeekRelative, 0),
        statement("seek.while-paused",
            "A seek while Paused moves the position and stays Paused; resume() goes on from there.",
            {Ability::Seek, Ability::Pause}, &G::seeksWhilePaused),
        statement("seek.while-stopped", "A seek while Stopped starts nothing and moves nothing.", {},
            &G::seekWhileStoppedStartsNothing),
        statement("seek.end-of-uri.absolute-the-end", "An absolute seek to the end ends a URI.",
            {Ability::Seek}, &G::seekToTheEndEndsTheUri, Aim::Duration, SeekAbsolute),
        statement("seek.end-of-uri.absolute-past-the-end", "An absolute seek past the end ends a URI.",
            {Ability::Seek}, &G::seekToTheEndEndsTheUri, Aim::Beyond, SeekAbsolute),
        statement("seek.end-of-uri.relative-past-the-end", "A relative seek past the end ends a URI.",
            {Ability::Seek}, &G::seekToTheEndEndsTheUri, Aim::Duration, SeekRelative),
        statement("seek.end-of-item",
            "A seek past the end of an item goes on with the next one of the playlist.", {Ability::Seek},
            &G::seekToTheEndEndsTheItem),
        statement("seek.relative-add-up", "Relative seeks in a row add up.", {Ability::Seek},
            &G::relativeSeeksInARowAddUp),
        statement("seek.last-counts", "Of many seeks in a row the last one counts.", {Ability::Seek},
            &G::lastOfManySeeksCounts),
        statement("seek.tells-what-cannot",
            "A seek in what cannot seek gives error NotSeekable, and it goes on playing.",
            {Ability::TellUnseekable}, &G::tellsWhatCannotSeek),
        statement("seek.fast-forward",
            "With playback-speed 2 the position moves twice as fast, also after a seek.",
            {Ability::FastForward}, &G::playsFastForward),
        statement("seek.backwards", "With a negative playback-speed the position moves backwards.",
            {Ability::Rewind}, &G::playsBackwards),
    };
}
