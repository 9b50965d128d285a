// SPDX-License-Identifier: MIT
// States, commands in every state, single URIs, answers.
#include "ContractCase.h"
#include "ContractSuite.h"

#include <QSet>

#include <algorithm>

namespace {
using States = QList<KelvoRenderer::State>;

/// One cell of the table "command in state".
struct Cell
{
    const char *command;
    QSet<int> states; ///< any of these afterwards
    int index; ///< item in play or current afterwards; -1: none of a playlist
};

const QSet<int> playing{Playing};
const QSet<int> paused{Paused};
const QSet<int> stopped{Stopped};
const QSet<int> playingOrPaused{Playing, Paused};

// The playlist has three long items and item 1 is current, so that there is one on either side.
const QHash<QString, QList<Cell>> cells{
    {"Stopped",
        {{"play", playing, 1}, {"stop", stopped, 1}, {"pause", stopped, 1}, {"resume", stopped, 1},
            {"next", stopped, 2}, {"previous", stopped, 0}, {"gotoIndex", playing, 2},
            {"gotoIndexPastEnd", stopped, 1}, {"setPosition", stopped, 1}, {"pauseAt", stopped, 1},
            {"playUri", playing, -1}, {"playUriWithType", playing, -1}, {"assignOther", stopped, 0}}},
    {"Transitioning",
        {{"play", playing, 1}, {"stop", stopped, 1}, {"pause", paused, 1}, {"resume", playing, 1},
            {"next", playing, 2}, {"previous", playing, 0}, {"gotoIndex", playing, 2},
            {"gotoIndexPastEnd", playing, 1}, {"setPosition", playing, 1}, {"pauseAt", playing, 1},
            {"playUri", playing, -1}, {"playUriWithType", playing, -1}, {"assignOther", playing, 1}}},
    {"Playing",
        {{"play", playing, 1}, {"stop", stopped, 1}, {"pause", paused, 1}, {"resume", playing, 1},
            {"next", playing, 2}, {"previous", playing, 0}, {"gotoIndex", playing, 2},
            {"gotoIndexPastEnd", playing, 1}, {"setPosition", playing, 1}, {"pauseAt", playing, 1},
            {"playUri", playing, -1}, {"playUriWithType", playing, -1}, {"assignOther", playing, 1}}},
    {"Paused",
        {{"play", playing, 1}, {"stop", stopped, 1}, {"pause", paused, 1}, {"resume", playing, 1},
            {"next", playingOrPaused, 2}, {"previous", playingOrPaused, 0}, {"gotoIndex", playing, 2},
            {"gotoIndexPastEnd", paused, 1}, {"setPosition", paused, 1}, {"pauseAt", paused, 1},
            {"playUri", playing, -1}, {"playUriWithType", playing, -1}, {"assignOther", paused, 1}}},
};

class StateContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void isStoppedAtFirst();
    void passesThroughTransitioning();
    void pausesAndResumes();
    void passesThroughTransitioningBetweenItems();
    void commandInState_data();
    void commandInState();
    void doesNothingWhereNothingIsToBeDone_data();
    void doesNothingWhereNothingIsToBeDone();
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
    void statusNamesTheCurrentItem_data();
    void statusNamesTheCurrentItem();

private:
    bool bringInto(const QString &state);
    bool carryOut(const QString &command);
    void give(const QString &command);

    KelvoPlaylist *m_other = nullptr;
};

void StateContract::isStoppedAtFirst()
{
    QCOMPARE(status().state, int(Stopped));
    QCOMPARE(status().playlistId, QString());
    QCOMPARE(position(), 0);
    settle();
    QCOMPARE(heard().states, States());
}

void StateContract::passesThroughTransitioning()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->play();
    REACHES(heard().state() == Playing);
    QCOMPARE(heard().states, (States{Transitioning, Playing}));
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    QCOMPARE(heard().states, (States{Transitioning, Playing, Stopped}));
    settle();
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().states.size(), 3);
}

void StateContract::pausesAndResumes()
{
    startPlaylist(makeLongPlaylist(1));
    renderer()->pause();
    REACHES(heard().state() == Paused);
    const int there = position();
    const qint64 since = m_subject.time();
    REACHES(m_subject.time() - since > 1100);
    QCOMPARE(position(), there);
    renderer()->resume();
    REACHES(heard().state() == Playing);
    REACHES(position() > there);
    // Some engines must prepare again before they go on.
    heard().states.removeAll(Transitioning);
    QCOMPARE(heard().states, (States{Paused, Playing}));
}

void StateContract::passesThroughTransitioningBetweenItems()
{
    renderer()->assignPlaylist(makePlaylist(m_subject.shortItems().mid(0, 2)));
    renderer()->play();
    REACHES(heard().completed > 0);
    QCOMPARE(heard().states, (States{Transitioning, Playing, Transitioning, Playing, Stopped}));
}

bool StateContract::bringInto(const QString &state)
{
    renderer()->assignPlaylist(makeLongPlaylist(3));
    if (state == QLatin1String("Stopped")) {
        renderer()->next();
        return reaches([this] { return status().index == 1; });
    }
    renderer()->gotoIndex(1);
    const auto first = state == QLatin1String("Transitioning") ? Transitioning : Playing;
    const bool there = reaches([&] { return heard().states.contains(first); });
    if (state != QLatin1String("Paused"))
        return there;
    renderer()->pause();
    return reaches([this] { return heard().state() == Paused; });
}

void StateContract::give(const QString &command)
{
    const QHash<QString, std::function<void()>> commands{
        {"play",
            [this] {
                renderer()->play();
            }},
        {"stop",
            [this] {
                renderer()->stop();
            }},
        {"pause",
            [this] {
                renderer()->pause();
            }},
        {"resume",
            [this] {
                renderer()->resume();
            }},
        {"next",
            [this] {
                renderer()->next();
            }},
        {"previous",
            [this] {
                renderer()->previous();
            }},
        {"gotoIndex",
            [this] {
                renderer()->gotoIndex(2);
            }},
        {"gotoIndexPastEnd",
            [this] {
                renderer()->gotoIndex(3);
            }},
        {"setPosition",
            [this] {
                renderer()->setPosition(2, KelvoRenderer::SeekAbsolute);
            }},
        {"pauseAt",
            [this] {
                renderer()->pauseAt(1000);
            }},
        {"playUri",
            [this] {
                renderer()->playUri(m_subject.longItem());
            }},
        {"playUriWithType",
            [this] {
                renderer()->playUriWithType(m_subject.longItem(), QStringLiteral("audio/x-unknown"));
            }},
        {"assignOther",
            [this] {
                m_other = makeLongPlaylist(2);
                renderer()->assignPlaylist(m_other);
            }},
    };
    commands.value(command)();
}

void StateContract::commandInState_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QSet<int>>("expected");
    QTest::addColumn<int>("index");
    for (auto state = cells.cbegin(); state != cells.cend(); ++state) {
        for (const Cell &cell : *state) {
            QTest::addRow("%s while %s", cell.command, qPrintable(state.key()))
                << state.key() << QString(cell.command) << cell.states << cell.index;
        }
    }
}

void StateContract::commandInState()
{
    QFETCH(QString, state);
    QFETCH(QString, command);
    QFETCH(QSet<int>, expected);
    QFETCH(int, index);
    HOLDS(bringInto(state));
    give(command);
    settle();
    REACHES(expected.contains(status().state));
    const RendererProbe::Status now = status();
    HOLDS(expected.contains(now.state));
    QCOMPARE(now.playlistId.isEmpty(), index < 0);
    if (index >= 0)
        QCOMPARE(int(now.index), index);
    QCOMPARE(heard().state(), KelvoRenderer::State(now.state));
    QCOMPARE(
        heard().errorsOf(KelvoError::IndexOutOfRange), command == QLatin1String("gotoIndexPastEnd") ? 1 : 0);
}

void StateContract::doesNothingWhereNothingIsToBeDone_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("command");
    for (const char *command : {"pause", "resume", "stop", "pauseAt"})
        QTest::addRow("%s while Stopped", command) << "Stopped" << QString(command);
    QTest::addRow("resume while Playing") << "Playing"
                                          << "resume";
    QTest::addRow("pause while Paused") << "Paused"
                                        << "pause";
    for (const char *state : {"Stopped", "Playing", "Paused"})
        QTest::addRow("gotoIndex past the end while %s", state) << QString(state) << "gotoIndexPastEnd";
}

void StateContract::doesNothingWhereNothingIsToBeDone()
{
    QFETCH(QString, state);
    QFETCH(QString, command);
    HOLDS(bringInto(state));
    settle();
    heard().clear();
    give(command);
    settle();
    QCOMPARE(heard().states, States());
    QCOMPARE(heard().media.size(), 0);
    QCOMPARE(heard().errors.size(), command == QLatin1String("gotoIndexPastEnd") ? 1 : 0);
}

void StateContract::keepsTheCurrentItemWhenStopped()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    QCOMPARE(position(), 0);
    renderer()->play();
    REACHES(isPlaying(1));
    QCOMPARE(heard().media.constLast().index, 1);
    QCOMPARE(heard().media.constLast().content.uuid, playlist->mediaInfoAt(1).uuid());
}

void StateContract::playWithoutAnythingIsAnError()
{
    renderer()->play();
    REACHES(heard().errors.size() == 1);
    settle();
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::NothingToPlay);
    QCOMPARE(heard().state(), Stopped);
    QCOMPARE(heard().completed, 0);
}

void StateContract::playWithAnEmptyPlaylistIsAnError()
{
    renderer()->assignPlaylist(makePlaylist({}));
    renderer()->play();
    REACHES(heard().errors.size() == 1);
    settle();
    HOLDS(heard().errorsOf(KelvoError::NothingToPlay) + heard().errorsOf(KelvoError::EmptyPlaylist) == 1);
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().state(), Stopped);
    QCOMPARE(heard().completed, 0);
}

void StateContract::playFallsBackToTheUri()
{
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Playing);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    heard().clear();
    renderer()->play();
    REACHES(heard().state() == Playing);
    QCOMPARE(heard().media.constLast().content.url, m_subject.longItem());
}

void StateContract::playUriReplacesWhatPlays()
{
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Playing);
    heard().clear();
    const QUrl other = m_subject.shortItems().constFirst();
    renderer()->playUri(other);
    REACHES(heard().media.size() == 1 && heard().state() == Playing);
    QCOMPARE(heard().media.constLast().content.url, other);
    QCOMPARE(heard().states, (States{Transitioning, Playing}));
    QCOMPARE(heard().completed, 0);
}

void StateContract::playUriLeavesThePlaylistAssigned()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 2);
    renderer()->playUri(m_subject.longItem());
    REACHES(!heard().media.isEmpty() && heard().state() == Playing);
    QCOMPARE(status().playlistId, QString());
    QCOMPARE(status().objectId, QString());
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    renderer()->play();
    REACHES(isPlaying(2));
    QCOMPARE(status().playlistId, playlist->uuid());
}

void StateContract::playUriReportsNoPlaylist()
{
    startPlaylist(makeLongPlaylist(1));
    renderer()->playUri(m_subject.longItem());
    REACHES(!heard().media.isEmpty());
    QCOMPARE(heard().media.constFirst().index, -1);
    QCOMPARE(heard().media.constFirst().content.uuid, QString());
    QCOMPARE(heard().playlists.size(), 1);
    HOLDS(!heard().playlists.constFirst());
    HOLDS(heard().events.lastIndexOf("no playlist") < heard().events.lastIndexOf("media -1"));
    // Each time, also from one URI to the next.
    heard().clear();
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(!heard().media.isEmpty());
    QCOMPARE(heard().playlists.size(), 1);
    HOLDS(heard().events.lastIndexOf("no playlist") < heard().events.lastIndexOf("media -1"));
}

void StateContract::uriEndsLikeAListOfOne()
{
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(heard().completed == 1);
    settle();
    QCOMPARE(heard().completed, 1);
    QCOMPARE(heard().states, (States{Transitioning, Playing, Stopped}));
    QCOMPARE(heard().errors.size(), 0);
    QCOMPARE(position(), 0);
}

void StateContract::contentTypeIsOnlyAHint()
{
    renderer()->playUriWithType(m_subject.longItem(), QStringLiteral("audio/x-scpls"));
    REACHES(heard().state() == Playing);
    REACHES(position() >= 1);
    QCOMPARE(heard().errors.size(), 0);
}

void StateContract::answersOnceFromTheEventLoop()
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
    QCOMPARE(heard().statusAnswers.size(), 1);
    QCOMPARE(heard().positionAnswers.size(), 1);
    QCOMPARE(heard().propertyAnswers.size(), 1);
}

void StateContract::answersTolerateTheTextOfTheSlot()
{
    renderer()->getStatus(m_probe.get(), "  statusAnswer( const QString & ,uint , int,const QString& ) ");
    renderer()->getPosition(m_probe.get(), "positionAnswer( uint )");
    renderer()->kelvoProperty("volume", m_probe.get(), "propertyAnswer(QString, QVariant)");
    REACHES(heard().statusAnswers.size() == 1 && heard().positionAnswers.size() == 1
        && heard().propertyAnswers.size() == 1);
}

void StateContract::answersNobodyWhoIsGone()
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
    QCOMPARE(status().state, int(Playing));
}

void StateContract::statusNamesWhatPlays()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 2);
    const RendererProbe::Status now = status();
    QCOMPARE(now.playlistId, playlist->uuid());
    QCOMPARE(now.index, 2U);
    QCOMPARE(now.state, int(Playing));
    QCOMPARE(now.objectId, playlist->mediaInfoAt(2).uuid());
}

void StateContract::statusNamesTheCurrentItem_data()
{
    QTest::addColumn<bool>("assigned");
    QTest::addColumn<QString>("commands");
    QTest::addColumn<int>("index"); // -1: none of a playlist
    QTest::addColumn<int>("state");
    struct Way
    {
        const char *commands;
        int index;
        KelvoRenderer::State state;
    };
    const auto add = [](bool assigned, const QList<Way> &ways) {
        for (const auto &[commands, index, state] : ways) {
            QTest::addRow("%s playlist: %s", assigned ? "a" : "no", commands)
                << assigned << QString(commands) << index << int(state);
        }
    };
    add(false,
        {{"playUri", -1, Playing}, {"playUri stop", -1, Stopped}, {"playUri next", -1, Stopped},
            {"playUri stop next", -1, Stopped}, {"playUri stop previous", -1, Stopped}});
    // What was moved to is the current item, also when something else was played last.
    add(true,
        {{"", 0, Stopped}, {"stop", 0, Stopped}, {"next", 1, Stopped}, {"next stop", 1, Stopped},
            {"play stop", 0, Stopped}, {"play stop next", 1, Stopped}, {"play next", 1, Playing},
            {"playUri", -1, Playing}, {"playUri stop", -1, Stopped}, {"playUri next", -1, Stopped},
            {"playUri stop next", 1, Stopped}, {"playUri next next", 1, Stopped},
            {"playUri stop next stop", 1, Stopped}, {"playUri stop previous", 0, Stopped},
            {"playUri stop next playUri", -1, Playing}, {"playUri stop play", 0, Playing},
            {"playUri stop next play", 1, Playing}, {"gotoIndex playUri stop", -1, Stopped},
            {"gotoIndex playUri stop previous", 1, Stopped}});
}

void StateContract::statusNamesTheCurrentItem()
{
    QFETCH(bool, assigned);
    QFETCH(QString, commands);
    QFETCH(int, index);
    QFETCH(int, state);
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    if (assigned)
        renderer()->assignPlaylist(playlist);
    for (const QString &command : commands.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        HOLDS(carryOut(command));
    REACHES(status().state == state);
    settle();
    const RendererProbe::Status now = status();
    QCOMPARE(now.playlistId, index < 0 ? QString() : playlist->uuid());
    QCOMPARE(now.index, uint(std::max(0, index)));
    QCOMPARE(now.state, state);
    QCOMPARE(now.objectId, index < 0 ? QString() : playlist->mediaInfoAt(uint(index)).uuid());
}

/// Gives the command and waits for the state that it leads to, where there is one.
bool StateContract::carryOut(const QString &command)
{
    const bool skips = command == QLatin1String("next") || command == QLatin1String("previous");
    const qsizetype items = heard().media.size();
    give(command);
    if (command == QLatin1String("stop"))
        return reaches([this] { return status().state == Stopped; });
    return skips || reaches([&] { return heard().media.size() > items && status().state == Playing; });
}
} // namespace

std::unique_ptr<QObject> makeStateContract(RendererSubject &subject)
{
    return std::make_unique<StateContract>(subject);
}

#include "StateContract.moc"
