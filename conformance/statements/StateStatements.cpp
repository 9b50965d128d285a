// SPDX-License-Identifier: MIT
// States, single URIs, answers.
#include "StatementGroups.h"
#include "Trial.h"

namespace {
class StateStatements : public Trial
{
public:
    using Trial::Trial;

    void isStoppedAtFirst();
    void passesThroughTransitioning();
    void pausesAndResumes();
    void passesThroughTransitioningBetweenItems();
    void keepsTheCurrentItemWhenStopped();
    void playWithoutAnythingIsAnError();
    void playWithAnEmptyPlaylistIsAnError();
    void playFallsBackToTheUri();
    void playUriReplacesWhatPlays();
    void playUriLeavesThePlaylistAssigned();
    void playUriReportsNoPlaylist();
    void uriEndsLikeAListOfOne();
    void contentTypeIsOnlyAHint();
    void answersOnceFromTheEventLoop();
    void answersTolerateTheTextOfTheSlot();
    void answersNobodyWhoIsGone();
    void statusNamesWhatPlays();
};

void StateStatements::isStoppedAtFirst()
{
    SAME(status().state, int(Stopped));
    SAME(status().playlistId, QString());
    SAME(position(), 0);
    settle();
    SAME(heard().states, States());
}

void StateStatements::passesThroughTransitioning()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->play();
    REACHES(heard().state() == Playing);
    SAME(heard().states, (States{Transitioning, Playing}));
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    SAME(heard().states, (States{Transitioning, Playing, Stopped}));
    settle();
    SAME(heard().completed, 0);
    SAME(heard().states.size(), 3);
}

void StateStatements::pausesAndResumes()
{
    startPlaylist(makeLongPlaylist(1));
    renderer()->pause();
    REACHES(heard().state() == Paused);
    const int there = position();
    const qint64 since = m_subject.time();
    REACHES(m_subject.time() - since > 1100);
    SAME(position(), there);
    renderer()->resume();
    REACHES(heard().state() == Playing);
    REACHES(position() > there);
    // Some engines must prepare again before they go on.
    heard().states.removeAll(Transitioning);
    SAME(heard().states, (States{Paused, Playing}));
}

void StateStatements::passesThroughTransitioningBetweenItems()
{
    renderer()->assignPlaylist(makePlaylist(m_subject.shortItems().mid(0, 2)));
    renderer()->play();
    REACHES(heard().completed > 0);
    SAME(heard().states, (States{Transitioning, Playing, Transitioning, Playing, Stopped}));
}

void StateStatements::keepsTheCurrentItemWhenStopped()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    SAME(position(), 0);
    renderer()->play();
    REACHES(isPlaying(1));
    SAME(heard().media.constLast().index, 1);
    SAME(heard().media.constLast().content.uuid, playlist->mediaInfoAt(1).uuid());
}

void StateStatements::playWithoutAnythingIsAnError()
{
    renderer()->play();
    REACHES(heard().errors.size() == 1);
    settle();
    SAME(heard().errors.size(), 1);
    SAME(heard().errors.constFirst().code(), KelvoError::NothingToPlay);
    SAME(heard().state(), Stopped);
    SAME(heard().completed, 0);
}

void StateStatements::playWithAnEmptyPlaylistIsAnError()
{
    renderer()->assignPlaylist(makePlaylist({}));
    renderer()->play();
    REACHES(heard().errors.size() == 1);
    settle();
    HOLDS(heard().errorsOf(KelvoError::NothingToPlay) + heard().errorsOf(KelvoError::EmptyPlaylist) == 1);
    SAME(heard().errors.size(), 1);
    SAME(heard().state(), Stopped);
    SAME(heard().completed, 0);
}

void StateStatements::playFallsBackToTheUri()
{
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Playing);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    heard().clear();
    renderer()->play();
    REACHES(heard().state() == Playing);
    SAME(heard().media.constLast().content.url, m_subject.longItem());
}

void StateStatements::playUriReplacesWhatPlays()
{
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Playing);
    heard().clear();
    const QUrl other = m_subject.shortItems().constFirst();
    renderer()->playUri(other);
    REACHES(heard().media.size() == 1 && heard().state() == Playing);
    SAME(heard().media.constLast().content.url, other);
    SAME(heard().states, (States{Transitioning, Playing}));
    SAME(heard().completed, 0);
}

void StateStatements::playUriLeavesThePlaylistAssigned()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 2);
    renderer()->playUri(m_subject.longItem());
    REACHES(!heard().media.isEmpty() && heard().state() == Playing);
    SAME(status().playlistId, QString());
    SAME(status().objectId, QString());
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    renderer()->play();
    REACHES(isPlaying(2));
    SAME(status().playlistId, playlist->uuid());
}

void StateStatements::playUriReportsNoPlaylist()
{
    startPlaylist(makeLongPlaylist(1));
    renderer()->playUri(m_subject.longItem());
    REACHES(!heard().media.isEmpty());
    SAME(heard().media.constFirst().index, -1);
    SAME(heard().media.constFirst().content.uuid, QString());
    SAME(heard().playlists.size(), 1);
    HOLDS(!heard().playlists.constFirst());
    HOLDS(heard().events.lastIndexOf("no playlist") < heard().events.lastIndexOf("media -1"));
    // Each time, also from one URI to the next.
    heard().clear();
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(!heard().media.isEmpty());
    SAME(heard().playlists.size(), 1);
    HOLDS(heard().events.lastIndexOf("no playlist") < heard().events.lastIndexOf("media -1"));
}

void StateStatements::uriEndsLikeAListOfOne()
{
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(heard().completed == 1);
    settle();
    SAME(heard().completed, 1);
    SAME(heard().states, (States{Transitioning, Playing, Stopped}));
    SAME(heard().errors.size(), 0);
    SAME(position(), 0);
}

void StateStatements::contentTypeIsOnlyAHint()
{
    renderer()->playUriWithType(m_subject.longItem(), QStringLiteral("audio/x-scpls"));
    REACHES(heard().state() == Playing);
    REACHES(position() >= 1);
    SAME(heard().errors.size(), 0);
}

void StateStatements::answersOnceFromTheEventLoop()
{
    startPlaylist(makeLongPlaylist(1));
    // The command watches that nothing is answered inside the request.
    renderer()->getStatus(m_probe.get(), "statusAnswer(QString,uint,int,QString)");
    renderer()->getPosition(m_probe.get(), "positionAnswer(uint)");
    renderer()->kelvoProperty("auto-advance", m_probe.get(), "propertyAnswer(QString,QVariant)");
    REACHES(!heard().statusAnswers.isEmpty() && !heard().positionAnswers.isEmpty()
        && !heard().propertyAnswers.isEmpty());
    const qint64 since = m_subject.time();
    REACHES(m_subject.time() - since > m_subject.quietTime());
    SAME(heard().statusAnswers.size(), 1);
    SAME(heard().positionAnswers.size(), 1);
    SAME(heard().propertyAnswers.size(), 1);
}

void StateStatements::answersTolerateTheTextOfTheSlot()
{
    renderer()->getStatus(m_probe.get(), "  statusAnswer( const QString & ,uint , int,const QString& ) ");
    renderer()->getPosition(m_probe.get(), "positionAnswer( uint )");
    renderer()->kelvoProperty("volume", m_probe.get(), "propertyAnswer(QString, QVariant)");
    REACHES(heard().statusAnswers.size() == 1 && heard().positionAnswers.size() == 1
        && heard().propertyAnswers.size() == 1);
}

void StateStatements::answersNobodyWhoIsGone()
{
    startPlaylist(makeLongPlaylist(1));
    {
        RendererProbe gone(*m_renderer);
        renderer()->getStatus(&gone, "statusAnswer(QString,uint,int,QString)");
        renderer()->getPosition(&gone, "positionAnswer(uint)");
        renderer()->kelvoProperty("volume", &gone, "propertyAnswer(QString,QVariant)");
        renderer()->kelvoProperty("no such property", &gone, "propertyAnswer(QString,QVariant)");
    }
    renderer()->getPosition(nullptr, "positionAnswer(uint)");
    // Those who ask later are answered as if nothing had been.
    SAME(status().state, int(Playing));
}

void StateStatements::statusNamesWhatPlays()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 2);
    const RendererProbe::Status now = status();
    SAME(now.playlistId, playlist->uuid());
    SAME(now.index, 2U);
    SAME(now.state, int(Playing));
    SAME(now.objectId, playlist->mediaInfoAt(2).uuid());
}
} // namespace

QList<Statement> stateStatements()
{
    using G = StateStatements;
    return QList<Statement>{
               statement("state.stopped-at-first",
                   "A renderer that has just come is Stopped at position 0, names no playlist and reports no "
                   "state.",
                   {}, &G::isStoppedAtFirst),
               statement("state.transitioning-before-playing",
                   "play() leads through Transitioning to Playing, stop() to Stopped, each reported once.",
                   {}, &G::passesThroughTransitioning),
               statement("state.pause-and-resume",
                   "pause() holds the position and resume() goes on from there.", {Ability::Pause},
                   &G::pausesAndResumes),
               statement("state.transitioning-between-items",
                   "Between two items of a playlist the state passes through Transitioning.", {},
                   &G::passesThroughTransitioningBetweenItems),
               statement("state.stop-keeps-item",
                   "stop() keeps the current item, and play() begins that item again.", {},
                   &G::keepsTheCurrentItemWhenStopped),
               statement("state.play-without-anything",
                   "play() with neither playlist nor URI gives one error NothingToPlay and stays Stopped.",
                   {}, &G::playWithoutAnythingIsAnError),
               statement("state.play-empty-playlist",
                   "play() with an empty playlist gives one error and stays Stopped.", {},
                   &G::playWithAnEmptyPlaylistIsAnError),
               statement("state.play-falls-back-to-uri",
                   "Without a playlist play() plays the URI that was given last.", {},
                   &G::playFallsBackToTheUri),
               statement("state.uri-replaces", "playUri() replaces what plays, by way of Transitioning.", {},
                   &G::playUriReplacesWhatPlays),
               statement("state.uri-keeps-playlist",
                   "After playUri() the playlist stays assigned: play() goes on with its current item.", {},
                   &G::playUriLeavesThePlaylistAssigned),
               statement("state.uri-reports-no-playlist",
                   "Each playUri() reports that no playlist plays, and then the item, without an index.", {},
                   &G::playUriReportsNoPlaylist),
               statement("state.uri-ends",
                   "At the end of a URI playback completes once, Stopped and at position 0.", {},
                   &G::uriEndsLikeAListOfOne),
               statement("state.content-type-is-a-hint",
                   "What plays does so although it was given with the wrong content type.", {},
                   &G::contentTypeIsOnlyAHint),
               statement("state.answers-once", "Each request is answered once, from the event loop.", {},
                   &G::answersOnceFromTheEventLoop),
               statement("state.answers-any-slot-text",
                   "A request is answered however the text of the slot is written.", {},
                   &G::answersTolerateTheTextOfTheSlot),
               statement("state.answers-nobody-gone",
                   "A request of somebody who is gone, or of nobody, does no harm.", {},
                   &G::answersNobodyWhoIsGone),
               statement("state.status-names-what-plays",
                   "The status names the playlist, index and item that play.", {}, &G::statusNamesWhatPlays),
           }
    + stateCommandStatements();
}
