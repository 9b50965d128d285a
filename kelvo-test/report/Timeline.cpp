// SPDX-License-Identifier: MIT
#include "Timeline.h"

#include "KelvoWords.h"

#include <algorithm>

namespace {
constexpr qsizetype mostNotes = 1000;
constexpr qsizetype mostStates = 16;
/// An answer is worth something for so long. Seconds.
constexpr double freshAnswer = 0.25;
constexpr double millisecondsOfASecond = 1000;
/// Height of a sound that is heard and not measured.
constexpr double doubtful = 0.4;

bool isKnown(const QString &kind)
{
    return kind == KelvoWords::command || kind == KelvoWords::report || kind == KelvoWords::answer
        || kind == KelvoWords::appears || kind == KelvoWords::vanishes || kind == KelvoWords::note
        || kind == KelvoWords::heard || kind == KelvoWords::seen;
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
        takePosition(renderer, index, event, *position);
    } else if (event.kind == KelvoWords::heard || event.kind == KelvoWords::seen) {
        takeSensed(renderer, index, event);
    } else if (event.kind == KelvoWords::vanishes) {
        endState(renderer, event.time);
    } else if (!isKnown(event.kind)) {
        renderer->others.add(moment(index, event, event.kind + QLatin1Char(' ') + KelvoWords::call(event)));
    }
}

void Timeline::takePosition(Renderer *renderer, qint64 index, const RecordedEvent &event, double position)
{
    Mark mark = moment(index, event, KelvoWords::seconds(position));
    mark.low = mark.high = position;
    renderer->position.add(mark);
    renderer->answered = {event.time, position};
}

/// What is heard or seen is written down a little later than it was.
void Timeline::takeSensed(Renderer *renderer, qint64 index, const RecordedEvent &event)
{
    const bool isSound = event.kind == KelvoWords::heard;
    Lane &lane = isSound ? renderer->heard : renderer->seen;
    bool &isThere = isSound ? renderer->isHeard : renderer->isSeen;
    const std::optional<KelvoWords::Sensed> what = KelvoWords::sensedBy(event);
    const double at = event.time - what->ago;
    const bool goesOn = event.name == QLatin1String("goes") && isThere;
    if (isThere)
        lane.endLast(at);
    isThere = event.name != QLatin1String("ends") && event.name != QLatin1String("fails");
    // While nothing changes, what goes on needs no mark but where what is answered can be set beside it.
    const bool isAnswered = renderer->answered && at - renderer->answered->first < freshAnswer
        && at >= renderer->answered->first && what->position;
    const bool isNews = !goesOn || isAnswered || !what->doubt.isEmpty() || what->leftOut > 0;
    if (!isThere || !isNews)
        return;
    QString text = isSound ? QStringLiteral("a sound") : QStringLiteral("a picture");
    if (what->item > 0)
        text = QStringLiteral("item %1").arg(what->item);
    if (what->position)
        text += QStringLiteral(" at ") + KelvoWords::seconds(*what->position);
    if (event.name == QLatin1String("rests"))
        text += QStringLiteral(", which rests");
    if (isAnswered) {
        const double told = renderer->answered->second + at - renderer->answered->first;
        text += QStringLiteral(", %1 ms from what it says")
                    .arg((*what->position - told) * millisecondsOfASecond, 0, 'f', 0);
    }
    if (what->leftOut > 0)
        text += QStringLiteral(", %1 pictures left out").arg(what->leftOut);
    if (!what->doubt.isEmpty())
        text += QStringLiteral(" (%1)").arg(what->doubt);
    Mark mark = moment(index, event, text);
    mark.from = mark.to = std::max(at, 0.0);
    mark.low = mark.high = what->doubt.isEmpty() ? 1 : doubtful;
    lane.add(mark);
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
        if (renderer.isHeard)
            renderer.heard.endLast(m_end);
        if (renderer.isSeen)
            renderer.seen.endLast(m_end);
    }
}
