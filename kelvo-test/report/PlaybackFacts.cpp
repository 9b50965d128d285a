// SPDX-License-Identifier: MIT
#include "PlaybackFacts.h"

#include "KelvoWords.h"

#include <algorithm>
#include <utility>

namespace {
bool isOneOf(const QString &name, std::initializer_list<QLatin1String> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

PlaybackFacts::Found only(bool holds, const PlaybackFacts::Moment &moment)
{
    return holds ? PlaybackFacts::Found(moment) : std::nullopt;
}
} // namespace

void PlaybackFacts::add(qint64 index, const RecordedEvent &event)
{
    const Moment moment{event.time, index, KelvoWords::call(event)};
    if (event.kind == KelvoWords::appears) {
        name = event.arguments.at(0).toString();
        appeared = moment;
        vanished.reset();
    } else if (event.kind == KelvoWords::vanishes) {
        vanished = moment;
    } else if (event.kind == KelvoWords::command) {
        takeCommand(moment, event);
    } else if (event.kind == KelvoWords::report || event.kind == KelvoWords::answer) {
        if (commands.play && !heard)
            heard = moment;
        takeReport(moment, event);
    }
}

void PlaybackFacts::takeCommand(const Moment &moment, const RecordedEvent &event)
{
    const QString &command = event.name;
    if (KelvoWords::isQuestion(command)) {
        if (!commands.question)
            commands.question = moment;
        return;
    }
    const bool choosesItem
        = isOneOf(command, {QLatin1String("next"), QLatin1String("previous"), QLatin1String("gotoIndex")});
    const bool plays = isOneOf(command,
        {QLatin1String("play"), QLatin1String("playUri"), QLatin1String("playUriWithType"),
            QLatin1String("resume")});
    if (plays || command == QLatin1String("gotoIndex")) {
        commands.play = moment;
        commands.stop.reset();
        commands.pause.reset();
        state.error.reset();
        state.completed.reset();
        heard.reset();
    } else if (command == QLatin1String("stop")) {
        commands.stop = moment;
    } else if (command == QLatin1String("pause")) {
        commands.pause = moment;
    } else if (command == QLatin1String("pauseAt")) {
        commands.pauseAt = moment;
    } else if (command == QLatin1String("setPosition")) {
        clock = {};
    }
    if (choosesItem)
        commands.pause.reset();
    if (choosesItem || command == QLatin1String("stop"))
        commands.pauseAt.reset();
}

void PlaybackFacts::takeReport(const Moment &moment, const RecordedEvent &event)
{
    if (event.kind == KelvoWords::answer) {
        commands.question.reset();
        if (const std::optional<double> position = KelvoWords::answeredPosition(event))
            takePosition(moment, *position);
        else if (event.name == QLatin1String("kelvoProperty"))
            takeProperty(moment, event);
    } else if (event.name == QLatin1String("stateChanged")) {
        state.name = event.arguments.at(0).toString();
        state.since = moment;
        clock = {};
        if (state.name == KelvoWords::paused && commands.pauseAt && !commands.pause)
            commands.pausedBy = std::exchange(commands.pauseAt, {}); // it acts once
        else
            commands.pausedBy = state.name == KelvoWords::paused ? commands.pause : Found();
    } else if (event.name == QLatin1String("mediaChanged")) {
        state.error.reset();
        clock = {};
    } else if (event.name == QLatin1String("error")) {
        state.error = moment;
        state.error->text = KelvoWords::errorText(event.arguments.at(0));
        state.errorCode = event.arguments.at(0).toObject().value(QLatin1String("code")).toInt();
    } else if (event.name == QLatin1String("playbackCompleted")) {
        state.completed = moment;
    } else if (event.name == QLatin1String("bufferingInfo")) {
        levels.fraction = event.arguments.at(0).toDouble();
        levels.buffering = only(levels.fraction < 1, moment);
    } else if (event.name == QLatin1String("kelvoPropertyChanged")) {
        takeProperty(moment, event);
    } else if (event.name == QLatin1String("nameChanged")) {
        name = event.arguments.at(0).toString();
    }
}

void PlaybackFacts::takeProperty(const Moment &moment, const RecordedEvent &event)
{
    const QString property = event.arguments.at(0).toString();
    const QJsonValue value = event.arguments.at(1);
    const auto note = [&moment](Found *found, bool holds) {
        // Told again is no news: what counts is since when.
        if (!holds || !*found)
            *found = only(holds, moment);
    };
    if (property == QLatin1String("volume"))
        note(&levels.volume0, value.isDouble() && value.toDouble() <= 0);
    else if (property == QLatin1String("mute") || property == QLatin1String("muted"))
        note(&levels.muted, value.toBool());
    else if (property == QLatin1String("policy-override"))
        note(&levels.policy, value.toBool());
}

void PlaybackFacts::takePosition(const Moment &moment, double position)
{
    if (state.name != KelvoWords::playing)
        return;
    if (!clock.since || clock.position != position)
        clock = {position, moment, moment, 0};
    clock.last = moment;
    ++clock.answers;
}
