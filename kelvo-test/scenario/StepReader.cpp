// SPDX-License-Identifier: MIT
#include "StepReader.h"

#include "Commands.h"
#include "ConditionReader.h"
#include "MediaReader.h"
#include "Spelling.h"
#include "YamlNode.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {
constexpr int longestPosition = 24 * 60 * 60; // seconds
constexpr int highestIndex = 1'000'000;

QString shortText(const YamlNode &node)
{
    if (node.isNothing())
        return node.name();
    if (node.isList() || node.isMap())
        return node.name() + QStringLiteral(" …");
    return node.name() + u' ' + node.text();
}

/// "random 0..25" as the two bounds; otherwise a number.
QVariant secondsOf(const YamlNode &node)
{
    static const QRegularExpression range(QStringLiteral("^random (-?\\d{1,5})\\.\\.(-?\\d{1,5})$"));
    const QRegularExpressionMatch match
        = node.isMap() || node.isList() ? QRegularExpressionMatch() : range.match(node.text());
    if (!match.hasMatch())
        return node.integer(-longestPosition, longestPosition);
    const int from = match.captured(1).toInt();
    const int to = match.captured(2).toInt();
    if (from > to)
        node.fail(QStringLiteral("\"%1\": the first number is the smaller one").arg(node.text()));
    return QVariantList{from, to};
}
} // namespace

StepReader::StepReader(Scenario &scenario)
    : m_scenario(scenario)
    , m_files{QFileInfo(scenario.file).canonicalFilePath()}
{
}

void StepReader::read(const YamlNode &steps)
{
    for (const YamlNode &step : steps.items())
        readStep(step);
}

void StepReader::readStep(const YamlNode &node)
{
    if (!node.isMap()) {
        // "- play" is short for "- play:".
        const QString name = node.text();
        const Command *known = Command::find(name);
        if (!known)
            node.fail(QStringLiteral("there is no step \"%1\"%2")
                          .arg(name, Spelling::suggestion(name, Command::names())));
        if (!known->parameters.isEmpty())
            node.fail(QStringLiteral("%1 needs \"%1: %2\"").arg(name, known->parameters.constFirst().name));
        add(node, 0, name, CommandStep{known, {}});
        return;
    }
    std::vector<YamlNode> entries = node.entries();
    const int renderer = rendererOf(node);
    std::erase_if(entries, [](const YamlNode &entry) { return entry.name() == QLatin1String("on"); });
    if (entries.size() != 1)
        node.fail(
            QStringLiteral("a step is one thing to do, and perhaps \"on\"; here are %1").arg(entries.size()));
    readNamed(entries.front(), renderer);
}

int StepReader::rendererOf(const YamlNode &node) const
{
    const auto on = node.find(QStringLiteral("on"));
    return on ? int(m_scenario.renderers.indexOf(on->word(m_scenario.renderers))) : 0;
}

void StepReader::readNamed(const YamlNode &step, int renderer)
{
    const QString name = step.name();
    const ConditionReader conditions(m_scenario.media, renderer);
    if (const Command *known = Command::find(name)) {
        add(step, renderer, shortText(step), command(*known, step));
    } else if (name == QLatin1String("wait")) {
        add(step, renderer, shortText(step), WaitStep{step.time()});
    } else if (name == QLatin1String("expect")) {
        add(step, renderer, name, conditions.expectation(step));
    } else if (name == QLatin1String("never")) {
        add(step, renderer, name, conditions.never(step));
    } else if (name == QLatin1String("fault")) {
        add(step, renderer, shortText(step), fault(step));
    } else if (name == QLatin1String("repeat")) {
        repeat(step);
    } else if (name == QLatin1String("include")) {
        include(step);
    } else {
        static const QStringList others{QStringLiteral("wait"), QStringLiteral("expect"),
            QStringLiteral("never"), QStringLiteral("fault"), QStringLiteral("repeat"),
            QStringLiteral("include")};
        step.fail(QStringLiteral("there is no step \"%1\"%2")
                      .arg(name, Spelling::suggestion(name, Command::names() + others)));
    }
}

void StepReader::add(const YamlNode &node, int renderer, const QString &text, decltype(Step::what) what)
{
    if (m_scenario.steps.size() >= Scenario::MaximumSteps)
        node.fail(QStringLiteral("these are more than %1 steps").arg(Scenario::MaximumSteps));
    m_scenario.steps.append({std::move(what), renderer, text, node.place()});
}

void StepReader::repeat(const YamlNode &node)
{
    node.entries({QStringLiteral("times"), QStringLiteral("steps")});
    const auto times = node.find(QStringLiteral("times"));
    const auto steps = node.find(QStringLiteral("steps"));
    if (!times || !steps)
        node.fail(QStringLiteral("repeat takes \"times\" and \"steps\""));
    const int count = times->integer(1, Scenario::MaximumSteps);
    // An empty list would be repeated for nothing; one that is not adds a step each time and so has an end.
    if (steps->items().empty())
        steps->fail(QStringLiteral("steps is empty"));
    for (int i = 0; i < count; ++i)
        read(*steps);
}

void StepReader::include(const YamlNode &node)
{
    const QFileInfo file(QFileInfo(node.place().file).dir(), node.text());
    const QString path = file.canonicalFilePath();
    if (path.isEmpty())
        node.fail(QStringLiteral("there is no file \"%1\"").arg(file.filePath()));
    if (m_files.contains(path))
        node.fail(QStringLiteral("\"%1\" includes itself").arg(node.text()));
    const YamlNode root = YamlNode::load(file.filePath());
    root.entries({QStringLiteral("steps")});
    const auto steps = root.find(QStringLiteral("steps"));
    if (!steps)
        root.fail(QStringLiteral("there are no \"steps\""));
    m_files.append(path);
    read(*steps);
    m_files.removeLast();
}

CommandStep StepReader::command(const Command &command, const YamlNode &node) const
{
    CommandStep step{&command, {}};
    QStringList names;
    for (const Parameter &parameter : command.parameters)
        names.append(parameter.name);
    if (names.isEmpty() && !node.isNothing())
        node.fail(QStringLiteral("%1 takes nothing").arg(command.name));
    if (!names.isEmpty() && command.parameters.constFirst().kind == Parameter::Properties) {
        for (const YamlNode &entry : node.entries())
            step.arguments.insert(entry.name(), entry.value());
        return step;
    }
    if (!node.isMap() && !names.isEmpty())
        step.arguments.insert(names.constFirst(), argument(command.parameters.constFirst(), node));
    for (const Parameter &parameter : command.parameters) {
        const auto given = node.isMap() ? node.find(parameter.name) : std::nullopt;
        if (given)
            step.arguments.insert(parameter.name, argument(parameter, *given));
        else if (!step.arguments.contains(parameter.name) && parameter.otherwise.isEmpty())
            node.fail(QStringLiteral("%1 needs \"%2\"").arg(command.name, parameter.name));
        else if (!step.arguments.contains(parameter.name))
            step.arguments.insert(parameter.name, parameter.otherwise);
    }
    if (node.isMap())
        node.entries(names);
    return step;
}

QVariant StepReader::argument(const Parameter &parameter, const YamlNode &node) const
{
    switch (parameter.kind) {
    case Parameter::MediumName:
        return MediaReader::mediumName(node, m_scenario.media, true);
    case Parameter::PlaylistName:
        return playlistName(node);
    case Parameter::Seconds:
        return secondsOf(node);
    case Parameter::Index:
        return node.integer(0, highestIndex);
    case Parameter::Word:
        return node.word(parameter.words);
    case Parameter::Text:
    case Parameter::Properties:
        break;
    }
    return node.text();
}

QString StepReader::playlistName(const YamlNode &node) const
{
    QStringList names{QStringLiteral("none")};
    for (const NamedPlaylist &playlist : m_scenario.playlists)
        names.append(u'$' + playlist.name);
    const QString text = node.text();
    if (!names.contains(text))
        node.fail(
            QStringLiteral("there is no playlist \"%1\"%2").arg(text, Spelling::suggestion(text, names)));
    return text.startsWith(u'$') ? text.mid(1) : text;
}

FaultStep StepReader::fault(const YamlNode &node) const
{
    const auto medium = node.find(QStringLiteral("of"));
    if (!medium)
        node.fail(QStringLiteral("fault needs \"of\": the medium"));
    return {MediaReader::mediumName(*medium, m_scenario.media, false),
        MediaReader::fault(node, {QStringLiteral("of")})};
}
