// SPDX-License-Identifier: MIT
#include "Timeline.h"

#include "KelvoWords.h"

#include <algorithm>

namespace {
constexpr qsizetype mostNotes = 1000;
constexpr qsizetype mostStates = 16;

bool isKnown(const QString &kind)
{
    return kind == KelvoWords::command || kind == KelvoWords::report || kind == KelvoWords::answer
        || kind == KelvoWords::appears || kind == KelvoWords::vanishes || kind == KelvoWords::note;
}

Mark moment(qint64 index, const RecordedEvent &event, const QString &text)
{
    return {event.time, event.time, index, text, 0, 0, 1};
}
} // namespace

void Timeline::add(qint64 index, const RecordedEvent &event)
{
    m_begin = m_hasBegun ? std::min(m_begin, event.time) : event.time;
    m_end = m_hasBegun ? std::max(m_end, event.time) : event.time;
    m_hasBegun = true;
    if (event.kind == KelvoWords::note && m_notes.size() < mostNotes)
        m_notes.append(event);
    Renderer *renderer = rendererOf(event);
    if (!renderer)
        return;
    if (event.kind == KelvoWords::command) {
        // Questions would leave no room: what they tell is in the lane of the position.
        if (!KelvoWords::isQuestion(event.name))
            renderer->commands.add(moment(index, event, KelvoWords::call(event)));
    } else if (event.kind == KelvoWords::report) {
        takeReport(renderer, index, event);
    } else if (const std::optional<double> position = KelvoWords::answeredPosition(event)) {
        Mark mark = moment(index, event, KelvoWords::seconds(*position));
        mark.low = mark.high = *position;
        renderer->position.add(mark);
    } else if (event.kind == KelvoWords::vanishes) {
        endState(renderer, event.time);
    } else if (!isKnown(event.kind)) {
        renderer->others.add(moment(index, event, event.kind + QLatin1Char(' ') + KelvoWords::call(event)));
    }
}

Timeline::Renderer *Timeline::rendererOf(const RecordedEvent &event)
{
    const auto found = std::find_if(m_renderers.begin(), m_renderers.end(),
        [&event](const Renderer &renderer) { return renderer.uuid == event.uuid; });
    const bool appears = event.kind == KelvoWords::appears && event.name == QLatin1String("renderer");
    if (found != m_renderers.end()) {
        if (appears)
            found->name = event.arguments.at(0).toString();
        return &*found;
    }
    if (!KelvoWords::isOfRenderer(event))
        return nullptr;
    if (m_renderers.size() == MostRenderers) {
        ++m_leftOut;
        return nullptr;
    }
    Renderer renderer;
    renderer.uuid = event.uuid;
    if (appears)
        renderer.name = event.arguments.at(0).toString();
    m_renderers.append(renderer);
    return &m_renderers.last();
}

void Timeline::takeReport(Renderer *renderer, qint64 index, const RecordedEvent &event)
{
    if (event.name == QLatin1String("stateChanged"))
        takeState(renderer, index, event);
    else if (event.name == QLatin1String("bufferingInfo"))
        takeBuffering(renderer, index, event);
    else if (event.name == QLatin1String("error"))
        takeError(renderer, index, event);
    else if (event.name == QLatin1String("nameChanged"))
        renderer->name = event.arguments.at(0).toString();
}

void Timeline::takeState(Renderer *renderer, qint64 index, const RecordedEvent &event)
{
    endState(renderer, event.time);
    renderer->state = event.arguments.at(0).toString();
    renderer->stateSince = event.time;
    renderer->states.add(moment(index, event, renderer->state));
}

void Timeline::endState(Renderer *renderer, double time)
{
    if (renderer->state.isEmpty())
        return;
    const bool isKept
        = renderer->stateTimes.contains(renderer->state) || renderer->stateTimes.size() < mostStates;
    auto &[seconds, times] = renderer->stateTimes[isKept ? renderer->state : QStringLiteral("others")];
    seconds += std::max(time - renderer->stateSince, 0.0);
    ++times;
    renderer->states.endLast(time);
    renderer->state.clear();
}

void Timeline::takeBuffering(Renderer *renderer, qint64 index, const RecordedEvent &event)
{
    if (renderer->isBuffering)
        renderer->buffering.endLast(event.time);
    const double fraction = std::clamp(event.arguments.at(0).toDouble(), 0.0, 1.0);
    renderer->isBuffering = fraction < 1;
    if (!renderer->isBuffering)
        return;
    Mark mark = moment(index, event, QStringLiteral("%1 %").arg(qRound(fraction * 100)));
    mark.low = mark.high = fraction;
    renderer->buffering.add(mark);
}

void Timeline::takeError(Renderer *renderer, qint64 index, const RecordedEvent &event)
{
    const QJsonValue error = event.arguments.at(0);
    renderer->errors.add(moment(index, event, KelvoWords::errorText(error)));
    ++renderer->errorCount;
    if (renderer->errorReports.size() < MostErrors) {
        renderer->errorReports.append({event.time, index, error[QLatin1String("code")].toInt(),
            error[QLatin1String("message")].toString()});
    }
}

void Timeline::finish()
{
    for (Renderer &renderer : m_renderers) {
        endState(&renderer, m_end);
        if (renderer.isBuffering)
            renderer.buffering.endLast(m_end);
    }
}
