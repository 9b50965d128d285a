// SPDX-License-Identifier: MIT
#include "ScenarioFile.h"

#include "MediaReader.h"
#include "StepReader.h"
#include "YamlNode.h"

namespace {
QStringList texts(const YamlNode &node)
{
    QStringList texts;
    for (const YamlNode &item : node.items())
        texts.append(item.text());
    return texts;
}

QStringList rendererNames(const YamlNode &node)
{
    QStringList names = texts(node);
    constexpr int most = 16;
    if (names.isEmpty() || names.size() > most)
        node.fail(QStringLiteral("renderers takes 1 to %1 names").arg(most));
    return names;
}

void readHead(Scenario &scenario, const YamlNode &root)
{
    if (const auto title = root.find(QStringLiteral("title")))
        scenario.title = title->text();
    if (const auto needs = root.find(QStringLiteral("needs")))
        scenario.needs = texts(*needs);
    const auto renderers = root.find(QStringLiteral("renderers"));
    scenario.renderers = renderers ? rendererNames(*renderers) : QStringList{QStringLiteral("renderer")};
    if (const auto media = root.find(QStringLiteral("media")))
        scenario.media = MediaReader::media(*media);
    if (const auto playlists = root.find(QStringLiteral("playlists")))
        scenario.playlists = MediaReader::playlists(*playlists, scenario.media);
}

Scenario readScenario(const QString &path)
{
    const YamlNode root = YamlNode::load(path);
    root.entries({QStringLiteral("title"), QStringLiteral("needs"), QStringLiteral("renderers"),
        QStringLiteral("media"), QStringLiteral("playlists"), QStringLiteral("steps")});
    Scenario scenario;
    scenario.file = path;
    scenario.title = path.section(u'/', -1).section(u'.', 0, 0);
    readHead(scenario, root);
    const auto steps = root.find(QStringLiteral("steps"));
    if (!steps)
        root.fail(QStringLiteral("there are no \"steps\""));
    StepReader(scenario).read(*steps);
    if (scenario.steps.isEmpty())
        steps->fail(QStringLiteral("steps is empty"));
    return scenario;
}
} // namespace

std::optional<Scenario> ScenarioFile::read(const QString &path, QString *error)
{
    try {
        return readScenario(path);
    } catch (const ScenarioFault &fault) {
        *error = fault.text;
        return std::nullopt;
    }
}
