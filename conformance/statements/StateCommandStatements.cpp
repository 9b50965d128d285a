// SPDX-License-Identifier: MIT
// Every command in every state, and what the status names after it.
#include "StatementGroups.h"
#include "Trial.h"

#include <algorithm>

namespace {
/// One cell of the table "command in state". The playlist has three long items and item 1 is current, so that there is
/// one on either side.
struct Cell
{
    const char *command;
    States states; ///< any of these afterwards
    int index; ///< item in play or current afterwards; -1: none of a playlist
};

/// Commands one after the other, and what is current then.
struct Way
{
    const char *commands;
    int index; ///< -1: none of a playlist
    KelvoRenderer::State state;
};

QList<Cell> cellsOf(KelvoRenderer::State state)
{
    switch (state) {
    case Stopped:
        return {{"play", {Playing}, 1}, {"stop", {Stopped}, 1}, {"pause", {Stopped}, 1},
            {"resume", {Stopped}, 1}, {"next", {Stopped}, 2}, {"previous", {Stopped}, 0},
            {"gotoIndex", {Playing}, 2}, {"gotoIndexPastEnd", {Stopped}, 1}, {"setPosition", {Stopped}, 1},
            {"pauseAt", {Stopped}, 1}, {"playUri", {Playing}, -1}, {"playUriWithType", {Playing}, -1},
            {"assignOther", {Stopped}, 0}};
    case Transitioning:
    case Playing:
        return {{"play", {Playing}, 1}, {"stop", {Stopped}, 1}, {"pause", {Paused}, 1},
            {"resume", {Playing}, 1}, {"next", {Playing}, 2}, {"previous", {Playing}, 0},
            {"gotoIndex", {Playing}, 2}, {"gotoIndexPastEnd", {Playing}, 1}, {"setPosition", {Playing}, 1},
            {"pauseAt", {Playing}, 1}, {"playUri", {Playing}, -1}, {"playUriWithType", {Playing}, -1},
            {"assignOther", {Playing}, 1}};
    case Paused:
        return {{"play", {Playing}, 1}, {"stop", {Stopped}, 1}, {"pause", {Paused}, 1},
            {"resume", {Playing}, 1}, {"next", {Playing, Paused}, 2}, {"previous", {Playing, Paused}, 0},
            {"gotoIndex", {Playing}, 2}, {"gotoIndexPastEnd", {Paused}, 1}, {"setPosition", {Paused}, 1},
            {"pauseAt", {Paused}, 1}, {"playUri", {Playing}, -1}, {"playUriWithType", {Playing}, -1},
            {"assignOther", {Paused}, 1}};
    }
    return {};
}

class StateCommandStatements : public Trial
{
public:
    using Trial::Trial;

    void commandInState(
        KelvoRenderer::State state, const QString &command, const States &expected, int index);
    void doesNothingWhereNothingIsToBeDone(KelvoRenderer::State state, const QString &command);
    void statusNamesTheCurrentItem(
        bool assigned, const QString &commands, int index, KelvoRenderer::State state);

private:
    bool bringInto(KelvoRenderer::State state);
    bool giveAndWait(const QString &command);
    void give(const QString &command);
    void giveToPlaylist(const QString &command);
};

bool StateCommandStatements::bringInto(KelvoRenderer::State state)
{
    renderer()->assignPlaylist(makeLongPlaylist(3));
    if (state == Stopped) {
        renderer()->next();
        return reaches([this] { return status().index == 1; });
    }
    renderer()->gotoIndex(1);
    const auto first = state == Transitioning ? Transitioning : Playing;
    const bool there = reaches([&] { return heard().states.contains(first); });
    if (state != Paused)
        return there;
    renderer()->pause();
    return reaches([this] { return heard().state() == Paused; });
}

void StateCommandStatements::give(const QString &command)
{
    if (command == QLatin1String("play"))
        renderer()->play();
    else if (command == QLatin1String("stop"))
        renderer()->stop();
    else if (command == QLatin1String("pause"))
        renderer()->pause();
    else if (command == QLatin1String("resume"))
        renderer()->resume();
    else if (command == QLatin1String("setPosition"))
        renderer()->setPosition(2, SeekAbsolute);
    else if (command == QLatin1String("pauseAt"))
        renderer()->pauseAt(1000);
    else if (command == QLatin1String("playUri"))
        renderer()->playUri(m_subject.longItem());
    else if (command == QLatin1String("playUriWithType"))
        renderer()->playUriWithType(m_subject.longItem(), QStringLiteral("audio/x-unknown"));
    else
        giveToPlaylist(command);
}

void StateCommandStatements::giveToPlaylist(const QString &command)
{
    if (command == QLatin1String("next"))
        renderer()->next();
    else if (command == QLatin1String("previous"))
        renderer()->previous();
    else if (command == QLatin1String("gotoIndex"))
        renderer()->gotoIndex(2);
    else if (command == QLatin1String("gotoIndexPastEnd"))
        renderer()->gotoIndex(3);
    else if (command == QLatin1String("assignOther"))
        renderer()->assignPlaylist(makeLongPlaylist(2));
    else
        qFatal("No such command: %s", qPrintable(command));
}

/// Gives the command and waits for the state that it leads to, where there is one.
bool StateCommandStatements::giveAndWait(const QString &command)
{
    const bool skips = command == QLatin1String("next") || command == QLatin1String("previous");
    const qsizetype items = heard().media.size();
    give(command);
    if (command == QLatin1String("stop"))
        return reaches([this] { return status().state == Stopped; });
    return skips || reaches([&] { return heard().media.size() > items && status().state == Playing; });
}

void StateCommandStatements::commandInState(
    KelvoRenderer::State state, const QString &command, const States &expected, int index)
{
    HOLDS(bringInto(state));
    give(command);
    settle();
    REACHES(expected.contains(KelvoRenderer::State(status().state)));
    const RendererProbe::Status now = status();
    HOLDS(expected.contains(KelvoRenderer::State(now.state)));
    SAME(now.playlistId.isEmpty(), index < 0);
    if (index >= 0)
        SAME(int(now.index), index);
    SAME(heard().state(), KelvoRenderer::State(now.state));
    SAME(heard().errorsOf(KelvoError::IndexOutOfRange), command == QLatin1String("gotoIndexPastEnd") ? 1 : 0);
}

void StateCommandStatements::doesNothingWhereNothingIsToBeDone(
    KelvoRenderer::State state, const QString &command)
{
    HOLDS(bringInto(state));
    settle();
    heard().clear();
    give(command);
    settle();
    SAME(heard().states, States());
    SAME(heard().media.size(), 0);
    SAME(heard().errors.size(), command == QLatin1String("gotoIndexPastEnd") ? 1 : 0);
}

void StateCommandStatements::statusNamesTheCurrentItem(
    bool assigned, const QString &commands, int index, KelvoRenderer::State state)
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    if (assigned)
        renderer()->assignPlaylist(playlist);
    for (const QString &command : commands.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        HOLDS(giveAndWait(command));
    REACHES(status().state == state);
    settle();
    const RendererProbe::Status now = status();
    SAME(now.playlistId, index < 0 ? QString() : playlist->uuid());
    SAME(now.index, uint(std::max(0, index)));
    SAME(now.state, int(state));
    SAME(now.objectId, index < 0 ? QString() : playlist->mediaInfoAt(uint(index)).uuid());
}

/// The command as it is written in a program.
QString callOf(const QString &command)
{
    if (command == QLatin1String("gotoIndexPastEnd"))
        return QStringLiteral("gotoIndex() past the end");
    if (command == QLatin1String("assignOther"))
        return QStringLiteral("assignPlaylist() of another playlist");
    return command + QLatin1String("()");
}

QString sentenceOf(KelvoRenderer::State state, const Cell &cell)
{
    QStringList states;
    for (KelvoRenderer::State expected : cell.states)
        states.append(valueText(expected));
    return QStringLiteral("After %1 while %2 the renderer is %3, and current is %4.")
        .arg(callOf(cell.command), valueText(state), states.join(QLatin1String(" or ")),
            cell.index < 0 ? QStringLiteral("the URI") : QStringLiteral("item %1").arg(cell.index));
}

QList<Ability> needsOf(KelvoRenderer::State state, const QString &command)
{
    const bool pauses = state == Paused
        || (command == QLatin1String("pause") && (state == Playing || state == Transitioning));
    return pauses ? QList<Ability>{Ability::Pause} : QList<Ability>();
}

QList<Statement> commandStatements()
{
    QList<Statement> all;
    for (auto state : {Stopped, Transitioning, Playing, Paused}) {
        for (const Cell &cell : cellsOf(state)) {
            const QString row = QStringLiteral("%1 while %2").arg(cell.command, valueText(state));
            all.append(statement(rowId(QStringLiteral("state.command"), row), sentenceOf(state, cell),
                needsOf(state, cell.command), &StateCommandStatements::commandInState, state, cell.command,
                cell.states, cell.index));
        }
    }
    return all;
}

Statement nothingStatement(KelvoRenderer::State state, const char *command)
{
    const bool isError = command == QLatin1String("gotoIndexPastEnd");
    return statement(
        rowId(QStringLiteral("state.nothing"), QStringLiteral("%1 while %2").arg(command, valueText(state))),
        QStringLiteral("%1 while %2 changes nothing%3.")
            .arg(callOf(command), valueText(state),
                isError ? QStringLiteral(" and gives one error") : QStringLiteral(" and reports nothing")),
        needsOf(state, command), &StateCommandStatements::doesNothingWhereNothingIsToBeDone, state, command);
}

QList<Statement> nothingStatements()
{
    QList<Statement> all;
    for (const char *command : {"pause", "resume", "stop", "pauseAt"})
        all.append(nothingStatement(Stopped, command));
    all.append(nothingStatement(Playing, "resume"));
    all.append(nothingStatement(Paused, "pause"));
    for (auto state : {Stopped, Playing, Paused})
        all.append(nothingStatement(state, "gotoIndexPastEnd"));
    return all;
}

QList<Statement> statusStatements(bool assigned, const QList<Way> &ways)
{
    QList<Statement> all;
    for (const Way &way : ways) {
        const QString playlist
            = assigned ? QStringLiteral("with a playlist") : QStringLiteral("without a playlist");
        const QString commands = QString::fromLatin1(way.commands);
        const QString given = QString(commands).replace(QLatin1Char(' '), QLatin1String(", "));
        const QString sentence
            = QStringLiteral("After %1, %2, the status is %3 and names %4.")
                  .arg(given.isEmpty() ? QStringLiteral("no command") : given, playlist, valueText(way.state),
                      way.index < 0 ? QStringLiteral("no item") : QStringLiteral("item %1").arg(way.index));
        all.append(statement(rowId(QStringLiteral("state.status"), playlist + QLatin1Char(' ') + commands),
            sentence, {}, &StateCommandStatements::statusNamesTheCurrentItem, assigned, way.commands,
            way.index, way.state));
    }
    return all;
}
} // namespace

QList<Statement> stateCommandStatements()
{
    return commandStatements() + nothingStatements()
        + statusStatements(false,
            {{"playUri", -1, Playing}, {"playUri stop", -1, Stopped}, {"playUri next", -1, Stopped},
                {"playUri stop next", -1, Stopped}, {"playUri stop previous", -1, Stopped}})
        // What was moved to is the current item, also when something else was played last.
        + statusStatements(true,
            {{"", 0, Stopped}, {"stop", 0, Stopped}, {"next", 1, Stopped}, {"next stop", 1, Stopped},
                {"play stop", 0, Stopped}, {"play stop next", 1, Stopped}, {"play next", 1, Playing},
                {"playUri", -1, Playing}, {"playUri stop", -1, Stopped}, {"playUri next", -1, Stopped},
                {"playUri stop next", 1, Stopped}, {"playUri next next", 1, Stopped},
                {"playUri stop next stop", 1, Stopped}, {"playUri stop previous", 0, Stopped},
                {"playUri stop next playUri", -1, Playing}, {"playUri stop play", 0, Playing},
                {"playUri stop next play", 1, Playing}, {"gotoIndex playUri stop", -1, Stopped},
                {"gotoIndex playUri stop previous", 1, Stopped}});
}
