// SPDX-License-Identifier: MIT
#include "ScenarioWriter.h"

#include "KelvoWords.h"
#include "YamlText.h"

#include <algorithm>
#include <cmath>

namespace {
/// A scenario names no more.
constexpr qsizetype mostRenderersOfScenario = 16;
/// A recording of any content is read in bounded memory.
constexpr qsizetype mostOthers = 10'000;

/// A command that comes sooner than this after what was before is meant to come at once.
constexpr double shortestWait = 0.5;

/// A report may take half as long again as it did, and two seconds more: machines have other things to do.
QByteArray within(double measured)
{
    return "within: " + QByteArray::number(int(std::ceil(std::min(measured, 40000.0) * 1.5 + 2))) + " s";
}

QByteArray tenths(double seconds)
{
    return QByteArray::number(std::round(std::min(seconds, 86400.0) * 10) / 10) + " s";
}

/// Where a window is on the screen is not the renderer's business.
bool isOfScreen(const QString &property)
{
    return property == QLatin1String("xid") || property == QLatin1String("autopaint")
        || property == QLatin1String("render-rectangle");
}

/// A value of a property as YAML; empty for what has no plain form.
QByteArray plainValue(const QJsonValue &value)
{
    if (value.isString())
        return YamlText::quoted(value.toString());
    if (value.isBool())
        return value.toBool() ? "true" : "false";
    return value.isDouble() ? QByteArray::number(value.toDouble(), 'g', 12) : QByteArray();
}

bool takesNothing(const QString &command)
{
    static const QStringList commands{QStringLiteral("play"), QStringLiteral("stop"), QStringLiteral("pause"),
        QStringLiteral("resume"), QStringLiteral("next"), QStringLiteral("previous")};
    return commands.contains(command);
}
} // namespace

void ScenarioWriter::add(qint64, const RecordedEvent &event)
{
    if (m_steps.size() >= MostSteps) {
        m_isCut = true;
        return;
    }
    if (event.kind == KelvoWords::command && !KelvoWords::isQuestion(event.name)) {
        if (isForRenderer(event) && hasRoomFor(event.uuid))
            takeCommand(event);
        return;
    }
    if (event.kind == KelvoWords::appears && event.name != QLatin1String("renderer")
        && m_others.size() < mostOthers)
        m_others.insert(event.uuid);
    if (KelvoWords::isReport(event, QLatin1String("repeatModeChanged"))) {
        takeRepeatMode(event);
        return;
    }
    // Of what was never told anything nothing is expected.
    const qsizetype renderer = m_indexes.value(event.uuid, -1);
    if (renderer < 0)
        return;
    if (const std::optional<double> position = KelvoWords::answeredPosition(event))
        takePosition(renderer, event, *position);
    else
        takeReport(renderer, event);
}

/// What a playlist is told is seen by what comes of it, and what a source is told is no business of a renderer.
bool ScenarioWriter::isForRenderer(const RecordedEvent &command) const
{
    return KelvoWords::isOfRenderer(command)
        || (command.name == QLatin1String("setKelvoProperty") && !m_others.contains(command.uuid));
}

bool ScenarioWriter::hasRoomFor(const QString &uuid) const
{
    return m_renderers.size() < mostRenderersOfScenario || m_indexes.contains(uuid);
}

qsizetype ScenarioWriter::rendererOf(const QString &uuid)
{
    const auto known = m_indexes.constFind(uuid);
    if (known != m_indexes.constEnd())
        return *known;
    m_renderers.append(Renderer());
    return *m_indexes.insert(uuid, m_renderers.size() - 1);
}

void ScenarioWriter::takeCommand(const RecordedEvent &event)
{
    const QByteArray step = commandStep(event);
    if (step.isEmpty())
        return;
    const qsizetype renderer = rendererOf(event.uuid);
    noteCommand(&m_renderers[renderer], event);
    // The first command begins the scenario, whenever it came.
    const double waited = m_steps.isEmpty() ? 0 : event.time - m_time;
    if (waited >= shortestWait)
        append(0, "wait: " + tenths(waited), event.time);
    append(renderer, step, event.time);
}

/// What reports that come later are seen against.
void ScenarioWriter::noteCommand(Renderer *renderer, const RecordedEvent &event)
{
    renderer->pausedStep = -1;
    const QString first = event.arguments.at(0).toString();
    if (event.name == QLatin1String("assignPlaylist"))
        renderer->playlist = first;
    else if (event.name == QLatin1String("setKelvoProperty"))
        renderer->properties.append(first);
}

/// The step for a command; empty for one that a scenario has no use for.
QByteArray ScenarioWriter::commandStep(const RecordedEvent &event)
{
    const QJsonValue first = event.arguments.at(0);
    const QByteArray name = event.name.toUtf8();
    if (takesNothing(event.name)) {
        if (event.name == QLatin1String("pause"))
            need(event.name);
        return name + ':';
    }
    if (event.name.startsWith(QLatin1String("playUri")) && !RecordedMedia::isAddress(first.toString()))
        return {};
    if (event.name == QLatin1String("playUri"))
        return name + ": $" + m_media.medium(first.toString()).toUtf8();
    if (event.name == QLatin1String("playUriWithType")) {
        return name + ": {uri: $" + m_media.medium(first.toString()).toUtf8()
            + ", type: " + YamlText::quoted(event.arguments.at(1).toString()) + '}';
    }
    if (event.name == QLatin1String("pauseAt") || event.name == QLatin1String("gotoIndex")) {
        if (event.name == QLatin1String("pauseAt"))
            need(event.name);
        return name + ": " + QByteArray::number(first.toInt());
    }
    if (event.name == QLatin1String("setPosition")) {
        need(event.name);
        const QByteArray seconds = QByteArray::number(first.toInt());
        return event.arguments.at(1).toInt() == 0 ? name + ": " + seconds
                                                  : name + ": {seconds: " + seconds + ", mode: relative}";
    }
    if (event.name == QLatin1String("assignPlaylist"))
        return name + ": "
            + (first.isString() ? '$' + m_media.playlist(first.toString()).toUtf8() : QByteArray("none"));
    if (event.name == QLatin1String("setKelvoProperty"))
        return propertyStep(event);
    return {};
}

QByteArray ScenarioWriter::propertyStep(const RecordedEvent &event)
{
    const QString property = event.arguments.at(0).toString();
    const QByteArray value = plainValue(event.arguments.at(1));
    if (isOfScreen(property) || value.isEmpty())
        return {};
    return "setKelvoProperty: {" + YamlText::quoted(property) + ": " + value + '}';
}

void ScenarioWriter::takeReport(qsizetype renderer, const RecordedEvent &event)
{
    m_hasError = m_hasError || KelvoWords::isReport(event, QLatin1String("error"));
    const QByteArray expected = expectation(renderer, event);
    if (expected.isEmpty())
        return;
    append(renderer, "expect: {" + expected + ", " + within(std::max(event.time - m_time, 0.0)) + '}',
        event.time);
    if (m_renderers.at(renderer).state == KelvoWords::paused
        && KelvoWords::isReport(event, QLatin1String("stateChanged")))
        m_renderers[renderer].pausedStep = m_steps.size() - 1;
}

/// What is expected in the place of a report; empty for one that need not come.
QByteArray ScenarioWriter::expectation(qsizetype renderer, const RecordedEvent &event)
{
    const bool comesOrGoes = event.name == QLatin1String("renderer");
    if (event.kind == KelvoWords::vanishes && comesOrGoes)
        return "there: false";
    if (event.kind == KelvoWords::appears && comesOrGoes)
        return "there: true";
    if (event.kind != KelvoWords::report)
        return {};
    const QJsonValue first = event.arguments.at(0);
    if (event.name == QLatin1String("stateChanged"))
        return stateExpectation(&m_renderers[renderer], first.toString());
    if (event.name == QLatin1String("mediaChanged"))
        return itemExpectation(&m_renderers[renderer], event);
    if (event.name == QLatin1String("kelvoPropertyChanged"))
        return propertyExpectation(&m_renderers[renderer], event);
    if (event.name == QLatin1String("playbackCompleted"))
        return "completed: true";
    if (event.name == QLatin1String("error") && first[QLatin1String("code")].toInt() > 0)
        return "error: " + QByteArray::number(first[QLatin1String("code")].toInt());
    return {};
}

/// Transitioning is on the way to something else, and another renderer may be too quick for it to be seen.
QByteArray ScenarioWriter::stateExpectation(Renderer *renderer, const QString &state)
{
    const bool isNews = state != renderer->state;
    renderer->state = state;
    const bool isFinal
        = state == KelvoWords::playing || state == KelvoWords::paused || state == KelvoWords::stopped;
    return isNews && isFinal ? "state: " + state.toUtf8() : QByteArray();
}

QByteArray ScenarioWriter::itemExpectation(Renderer *renderer, const RecordedEvent &event)
{
    const int index = event.arguments.at(0).toInt(-1);
    const QString url = event.arguments.at(1)[QLatin1String("url")].toString();
    if (index >= 0) {
        if (!renderer->playlist.isEmpty())
            m_media.noteItem(renderer->playlist, index, url);
        return "index: " + QByteArray::number(index);
    }
    return RecordedMedia::isAddress(url) ? "item: $" + m_media.medium(url).toUtf8() : QByteArray();
}

/// What nobody set comes from outside, and a scenario cannot bring it about.
QByteArray ScenarioWriter::propertyExpectation(Renderer *renderer, const RecordedEvent &event)
{
    const QString property = event.arguments.at(0).toString();
    const QByteArray value = plainValue(event.arguments.at(1));
    if (value.isEmpty() || !renderer->properties.removeOne(property))
        return {};
    return "property: {" + YamlText::quoted(property) + ": " + value + '}';
}

/// Where a renderer paused is known from the first answer after that.
void ScenarioWriter::takePosition(qsizetype renderer, const RecordedEvent &event, double position)
{
    const qsizetype step = std::exchange(m_renderers[renderer].pausedStep, -1);
    if (step < 0)
        return;
    // Whole seconds tell no more than that.
    const QByteArray tolerance = event.name == QLatin1String("getPosition") ? "1 s" : "250 ms";
    QByteArray &text = m_steps[step].text;
    text.chop(1);
    text += ", position: " + tenths(std::max(position, 0.0)) + " \u00b1 " + tolerance + '}';
}

void ScenarioWriter::takeRepeatMode(const RecordedEvent &event)
{
    static const char *const modes[] = {"all", "off", "one"};
    const int mode = event.arguments.at(0).toInt(-1);
    if (mode < 0 || mode > 2 || m_steps.isEmpty())
        return;
    append(0,
        "setRepeatMode: {list: $" + m_media.playlist(event.uuid).toUtf8() + ", mode: " + modes[mode] + '}',
        event.time);
}

void ScenarioWriter::append(qsizetype renderer, const QByteArray &step, double time)
{
    m_steps.append({step, renderer});
    m_time = time;
}

void ScenarioWriter::need(const QString &what)
{
    if (!m_needs.contains(what))
        m_needs.append(what);
}

QByteArray ScenarioWriter::head(const QString &title) const
{
    QByteArray yaml = "title: " + YamlText::quoted(title) + '\n';
    if (!m_needs.isEmpty())
        yaml += "needs: [" + m_needs.join(QLatin1String(", ")).toUtf8() + "]\n";
    if (m_renderers.size() > 1) {
        yaml += "renderers: [";
        for (qsizetype i = 0; i < m_renderers.size(); ++i)
            yaml += (i ? ", renderer" : "renderer") + QByteArray::number(i + 1);
        yaml += "]\n";
    }
    return yaml + m_media.yaml();
}

QByteArray ScenarioWriter::yaml(const QString &title) const
{
    QByteArray yaml = head(title);
    yaml += "steps:\n";
    for (const Step &step : m_steps) {
        yaml += "  - " + step.text + '\n';
        if (step.renderer > 0)
            yaml += "    on: renderer" + QByteArray::number(step.renderer + 1) + '\n';
    }
    if (!m_hasError) {
        for (qsizetype i = 0; i < m_renderers.size(); ++i) {
            yaml += "  - never: {error: any}\n";
            if (i > 0)
                yaml += "    on: renderer" + QByteArray::number(i + 1) + '\n';
        }
    }
    if (m_isCut)
        yaml += "  # The recording goes on: this is as long as a scenario may be.\n";
    return yaml;
}
