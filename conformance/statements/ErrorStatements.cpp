// SPDX-License-Identifier: MIT
// Items that cannot be played.
#include "StatementGroups.h"
#include "Trial.h"

namespace {
class ErrorStatements : public Trial
{
public:
    using Trial::Trial;

    void uriGivesOneErrorAndStops();
    void emptyUriIsAnError();
    void uriReplacesWhatPlaysAlsoWhenItFails();
    void playsAgainAfterAnError();
    void badItemIsPassedOver();
    void badItemInTheMiddle();
    void badItemAtTheEnd();
    void badItemInEachRound();
    void badItemAfterNext();
    void allBad(int mode, int count);
    void allBadFromTheMiddle();
    void stopsAmongBadItems();

private:
    QList<QUrl> bad(int count) const { return QList<QUrl>(count, m_subject.failingItem()); }
};

void ErrorStatements::uriGivesOneErrorAndStops()
{
    renderer()->playUri(m_subject.failingItem());
    REACHES(!heard().errors.isEmpty() && heard().state() == Stopped);
    settle();
    SAME(heard().errors.size(), 1);
    HOLDS(heard().errors.constFirst().code() != KelvoError::NoError);
    HOLDS(heard().errors.constFirst().code() != KelvoError::NothingPlayable);
    SAME(heard().completed, 0);
    SAME(heard().state(), Stopped);
    HOLDS(!heard().states.contains(Playing));
}

void ErrorStatements::emptyUriIsAnError()
{
    renderer()->playUri(QUrl());
    REACHES(!heard().errors.isEmpty());
    settle();
    SAME(heard().errors.size(), 1);
    SAME(heard().state(), Stopped);
    SAME(heard().completed, 0);
}

void ErrorStatements::uriReplacesWhatPlaysAlsoWhenItFails()
{
    startPlaylist(makeLongPlaylist(2));
    renderer()->playUri(m_subject.failingItem());
    REACHES(heard().errors.size() == 1 && heard().state() == Stopped);
    settle();
    SAME(heard().errors.size(), 1);
    SAME(heard().state(), Stopped);
}

void ErrorStatements::playsAgainAfterAnError()
{
    for (int i = 0; i < 3; ++i) {
        heard().clear();
        renderer()->playUri(m_subject.failingItem());
        REACHES(heard().errors.size() == 1 && heard().state() == Stopped);
        renderer()->playUri(m_subject.longItem());
        REACHES(heard().state() == Playing);
        SAME(heard().errors.size(), 1);
    }
}

void ErrorStatements::badItemIsPassedOver()
{
    renderer()->assignPlaylist(makePlaylist(bad(1) + QList<QUrl>{m_subject.longItem()}));
    renderer()->play();
    REACHES(isPlaying(1));
    settle();
    SAME(heard().errors.size(), 1);
    SAME(heard().completed, 0);
    SAME(heard().media.constLast().index, 1);
}

void ErrorStatements::badItemInTheMiddle()
{
    const QList<QUrl> good = m_subject.shortItems();
    renderer()->assignPlaylist(makePlaylist({good.at(0), m_subject.failingItem(), good.at(1)}));
    renderer()->play();
    REACHES(heard().completed == 1);
    SAME(heard().errors.size(), 1);
    SAME(heard().media.constLast().index, 2);
    SAME(int(heard().states.count(Playing)), 2);
}

void ErrorStatements::badItemAtTheEnd()
{
    renderer()->assignPlaylist(makePlaylist({m_subject.shortItems().at(0), m_subject.failingItem()}));
    renderer()->play();
    REACHES(heard().errors.size() == 1);
    REACHES(heard().state() == Stopped);
    settle();
    // The round has brought something that plays.
    SAME(heard().errorsOf(KelvoError::NothingPlayable), 0);
    SAME(heard().errors.size(), 1);
}

void ErrorStatements::badItemInEachRound()
{
    KelvoPlaylist *playlist = makePlaylist({m_subject.failingItem(), m_subject.shortItems().at(0)});
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    REACHES(int(heard().states.count(Playing)) == 2);
    SAME(heard().errors.size(), 2);
    SAME(heard().errorsOf(KelvoError::NothingPlayable), 0);
    REACHES(isPlaying(1));
}

void ErrorStatements::badItemAfterNext()
{
    startPlaylist(makePlaylist({m_subject.longItem(), m_subject.failingItem(), m_subject.longItem()}));
    renderer()->next();
    REACHES(isPlaying(2));
    SAME(heard().errors.size(), 1);
}

void ErrorStatements::allBad(int mode, int count)
{
    KelvoPlaylist *playlist = makePlaylist(bad(count));
    playlist->setRepeatMode(mode);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    REACHES(heard().errorsOf(KelvoError::NothingPlayable) == 1);
    REACHES(heard().state() == Stopped);
    settle();
    // One for each item and the one for all of them.
    SAME(heard().errors.size(), count + 1);
    SAME(heard().errorsOf(KelvoError::NothingPlayable), 1);
    SAME(heard().errors.constLast().code(), KelvoError::NothingPlayable);
    SAME(heard().completed, 0);
    SAME(heard().state(), Stopped);
}

void ErrorStatements::allBadFromTheMiddle()
{
    KelvoPlaylist *playlist = makePlaylist(bad(3));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    renderer()->assignPlaylist(playlist);
    renderer()->gotoIndex(2);
    REACHES(heard().errorsOf(KelvoError::NothingPlayable) == 1);
    settle();
    SAME(heard().errors.size(), 4);
    SAME(heard().state(), Stopped);
}

void ErrorStatements::stopsAmongBadItems()
{
    renderer()->assignPlaylist(makePlaylist(bad(300)));
    renderer()->play();
    REACHES(heard().errors.size() >= 2);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    settle();
    HOLDS(heard().errors.size() < 300);
    const qsizetype errors = heard().errors.size();
    settle();
    SAME(heard().errors.size(), errors);
    SAME(heard().completed, 0);
}
} // namespace

QList<Statement> errorStatements()
{
    using G = ErrorStatements;
    return QList<Statement>{
        statement("error.uri",
            "A URI that cannot be played gives its one error and stops, without completing.",
            {Ability::FailItems}, &G::uriGivesOneErrorAndStops),
        statement(
            "error.empty-uri", "An empty URI gives one error and stays Stopped.", {}, &G::emptyUriIsAnError),
        statement("error.uri-replaces-what-plays",
            "A URI that cannot be played replaces what plays all the same.", {Ability::FailItems},
            &G::uriReplacesWhatPlaysAlsoWhenItFails),
        statement("error.plays-again", "After an error the next URI plays.", {Ability::FailItems},
            &G::playsAgainAfterAnError),
        statement("error.first-item",
            "An item at the beginning that cannot be played gives one error and is passed over.",
            {Ability::FailItems}, &G::badItemIsPassedOver),
        statement("error.middle-item",
            "An item in the middle that cannot be played gives one error and is passed over.",
            {Ability::FailItems}, &G::badItemInTheMiddle),
        statement("error.last-item", "An item at the end that cannot be played gives one error and stops.",
            {Ability::FailItems}, &G::badItemAtTheEnd),
        statement("error.each-round",
            "With repeat all, an item that cannot be played gives one error in each round.",
            {Ability::FailItems}, &G::badItemInEachRound),
        statement("error.after-next",
            "An item that next() leads to and that cannot be played is passed over.", {Ability::FailItems},
            &G::badItemAfterNext),
        statement("error.all-bad.repeat-off",
            "A playlist of three items that cannot be played gives one error each and NothingPlayable, with "
            "repeat off.",
            {Ability::FailItems}, &G::allBad, KelvoPlaylist::RepeatOff, 3),
        statement("error.all-bad.repeat-all",
            "A playlist of three items that cannot be played gives one error each and NothingPlayable, with "
            "repeat all.",
            {Ability::FailItems}, &G::allBad, KelvoPlaylist::RepeatAll, 3),
        statement("error.all-bad.repeat-one",
            "A playlist of three items that cannot be played gives one error each and NothingPlayable, with "
            "repeat one.",
            {Ability::FailItems}, &G::allBad, KelvoPlaylist::RepeatOne, 3),
        statement("error.all-bad.single-item-repeat-off",
            "A single item that cannot be played gives its error and NothingPlayable, "
            "with repeat off.",
            {Ability::FailItems}, &G::allBad, KelvoPlaylist::RepeatOff, 1),
        statement("error.all-bad.single-item-repeat-all",
            "A single item that cannot be played gives its error and NothingPlayable, "
            "with repeat all.",
            {Ability::FailItems}, &G::allBad, KelvoPlaylist::RepeatAll, 1),
        statement("error.all-bad.single-item-repeat-one",
            "A single item that cannot be played gives its error and NothingPlayable, "
            "with repeat one.",
            {Ability::FailItems}, &G::allBad, KelvoPlaylist::RepeatOne, 1),
        statement("error.all-bad-from-the-middle",
            "A whole round without anything playable stops, also when it began in the middle.",
            {Ability::FailItems}, &G::allBadFromTheMiddle),
        statement("error.stop-among-bad-items",
            "stop() ends the search for something playable among many bad items.", {Ability::FailItems},
            &G::stopsAmongBadItems),
    };
}
