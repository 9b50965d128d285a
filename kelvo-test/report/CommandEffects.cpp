// SPDX-License-Identifier: MIT
#include "CommandEffects.h"

#include "KelvoWords.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
/// A recording of any content is read in bounded memory: what is beyond this is not looked at.
constexpr qsizetype mostRenderers = 256;
constexpr qsizetype mostWaiting = 256;
constexpr qsizetype mostRows = 1000;

/// A position is told in whole seconds.
constexpr double positionTolerance = 1;

/// The state that a command leads to; empty for a command that leads to none.
QString stateOf(const QString &command)
{
    static const QHash<QString, QString> states{
        {QStringLiteral("play"), KelvoWords::playing},
        {QStringLiteral("playUri"), KelvoWords::playing},
        {QStringLiteral("playUriWithType"), KelvoWords::playing},
        {QStringLiteral("resume"), KelvoWords::playing},
        {QStringLiteral("pause"), KelvoWords::paused},
        {QStringLiteral("stop"), KelvoWords::stopped},
    };
    return states.value(command);
}

bool hasNothingToDo(const QString &command, const QString &state)
{
    if (command == QLatin1String("pause"))
        return state == KelvoWords::paused || state == KelvoWords::stopped;
    if (command == QLatin1String("resume"))
        return !state.isEmpty() && state != KelvoWords::paused;
    return command == QLatin1String("stop") && state == KelvoWords::stopped;
}
} // namespace

void CommandEffects::add(qint64 index, const RecordedEvent &event)
{
    const bool isCommand = event.kind == KelvoWords::command;
    if (!isCommand && event.kind != KelvoWords::report && event.kind != KelvoWords::answer)
        return;
    Renderer *renderer = rendererOf(event.uuid);
    if (!renderer)
        return;
    if (isCommand)
        takeCommand(renderer, index, event);
    else
        takeReport(renderer, event);
}

CommandEffects::Renderer *CommandEffects::rendererOf(const QString &uuid)
{
    const auto found = std::find_if(m_renderers.begin(), m_renderers.end(),
        [&uuid](const Renderer &renderer) { return renderer.uuid == uuid; });
    if (found != m_renderers.end())
        return &*found;
    if (m_renderers.size() == mostRenderers)
        return nullptr;
    m_renderers.append({uuid, {}, {}});
    return &m_renderers.last();
}

void CommandEffects::takeCommand(Renderer *renderer, qint64 index, const RecordedEvent &event)
{
    Waiting waiting;
    waiting.effect = {event.uuid, event.name, {}, event.time, index, {}};
    const QString state = stateOf(event.name);
    if (!state.isEmpty()) {
        endAll(renderer, Awaited::Item, {});
        endAll(renderer, Awaited::State, {});
        if (hasNothingToDo(event.name, renderer->state))
            return;
        waiting.awaited = Awaited::State;
        waiting.name = state;
        waiting.effect.effect = QStringLiteral("stateChanged(%1)").arg(state);
    } else if (event.name == QLatin1String("next") || event.name == QLatin1String("previous")
        || event.name == QLatin1String("gotoIndex")) {
        endAll(renderer, Awaited::Item, {});
        waiting.awaited = Awaited::Item;
        waiting.effect.effect = QStringLiteral("mediaChanged");
    } else if (event.name == QLatin1String("setKelvoProperty")) {
        waiting.awaited = Awaited::Property;
        waiting.name = event.arguments.at(0).toString();
        waiting.effect.command = QStringLiteral("setKelvoProperty(%1)").arg(waiting.name);
        waiting.effect.effect = QStringLiteral("kelvoPropertyChanged");
    } else if (event.name == QLatin1String("setPosition")) {
        endAll(renderer, Awaited::Position, {});
        if (event.arguments.at(1).toInt() != 0)
            return; // from where it was, which is not known well enough
        waiting.awaited = Awaited::Position;
        waiting.position = event.arguments.at(0).toDouble();
        waiting.effect.effect = QStringLiteral("getPosition");
    } else {
        return;
    }
    renderer->waiting.append(waiting);
    if (renderer->waiting.size() > mostWaiting)
        end(renderer->waiting.takeFirst(), {});
}

void CommandEffects::takeReport(Renderer *renderer, const RecordedEvent &event)
{
    const QJsonValue first = event.arguments.at(0);
    if (event.kind == KelvoWords::report && event.name == QLatin1String("stateChanged"))
        renderer->state = first.toString();
    if (event.kind == KelvoWords::report && event.name == QLatin1String("error")) {
        // Which command it is about is not told: of the media's errors those that wait for a state or an item.
        endAll(renderer, Awaited::State, {});
        endAll(renderer, Awaited::Item, {});
        return;
    }
    const std::optional<double> position = KelvoWords::answeredPosition(event);
    const auto isEffect = [&](const Waiting &waiting) {
        switch (waiting.awaited) {
        case Awaited::State:
            return event.name == QLatin1String("stateChanged") && first.toString() == waiting.name;
        case Awaited::Item:
            return event.name == QLatin1String("mediaChanged");
        case Awaited::Property:
            return event.name == QLatin1String("kelvoPropertyChanged") && first.toString() == waiting.name;
        case Awaited::Position:
            return position && std::abs(*position - waiting.position) <= positionTolerance;
        }
        return false;
    };
    const auto found = std::find_if(renderer->waiting.begin(), renderer->waiting.end(), isEffect);
    if (found == renderer->waiting.end())
        return;
    const Waiting waiting = *found;
    renderer->waiting.erase(found);
    end(waiting, event.time);
}

void CommandEffects::endAll(Renderer *renderer, Awaited awaited, std::optional<double> time)
{
    for (qsizetype i = 0; i < renderer->waiting.size();) {
        if (renderer->waiting.at(i).awaited == awaited)
            end(renderer->waiting.takeAt(i), time);
        else
            ++i;
    }
}

void CommandEffects::end(const Waiting &waiting, std::optional<double> time)
{
    Effect effect = waiting.effect;
    effect.effectTime = time;
    const auto renderer = std::find_if(m_renderers.cbegin(), m_renderers.cend(),
        [&effect](const Renderer &other) { return other.uuid == effect.uuid; });
    const std::pair key(qsizetype(renderer - m_renderers.cbegin()), effect.command);
    if (m_found.size() == mostRows && !m_found.contains(key))
        return;
    Found &found = m_found[key];
    found.effect = effect.effect;
    if (time) {
        const double took = std::max(*time - effect.commandTime, 0.0);
        if (found.times.isEmpty() || took > found.longest) {
            found.longest = took;
            found.slowest = effect.commandEvent;
        }
        found.times.append(took);
    } else {
        ++found.without;
    }
    if (m_listener)
        m_listener(effect);
}

void CommandEffects::finish()
{
    for (Renderer &renderer : m_renderers) {
        const QList<Waiting> waiting = std::exchange(renderer.waiting, {});
        for (const Waiting &one : waiting)
            end(one, {});
    }
}

QList<CommandEffects::Row> CommandEffects::rows() const
{
    QList<Row> rows;
    for (auto found = m_found.cbegin(); found != m_found.cend(); ++found) {
        rows.append({m_renderers.at(found.key().first).uuid, found.key().second, found->effect,
            TimeStatistics::of(found->times), found->without, found->slowest});
    }
    return rows;
}
