// SPDX-License-Identifier: MIT
#include "ScenarioStage.h"

#include "ItemList.h"
#include "KelvoRenderer.h"
#include "MediaShelf.h"

ScenarioStage::ScenarioStage(
    const Scenario &scenario, KelvoRegistry *registry, const MediaShelf *shelf, quint32 seed)
    : m_registry(registry)
    , m_shelf(shelf)
    , m_random(seed)
{
    for (const NamedPlaylist &playlist : scenario.playlists) {
        QList<QUrl> urls;
        for (const QString &medium : playlist.media)
            urls.append(shelf->url(medium));
        m_playlists.emplace(playlist.name, ItemList::make(playlist.name, urls));
    }
}

ScenarioStage::~ScenarioStage() = default;

QUrl ScenarioStage::url(const QString &medium)
{
    return m_shelf->url(medium);
}

QVariantMap ScenarioStage::drawn(const QVariantMap &arguments)
{
    QVariantMap drawn = arguments;
    for (QVariant &argument : drawn) {
        const QVariantList bounds = argument.toList();
        if (bounds.size() == 2)
            argument = m_random.bounded(bounds.at(0).toInt(), bounds.at(1).toInt() + 1);
    }
    return drawn;
}

QVariantList ScenarioStage::run(const CommandStep &step, KelvoRenderer *renderer)
{
    m_renderer = renderer;
    m_lastCommand = step.command->name;
    const QVariantMap arguments = drawn(step.arguments);
    step.command->run(*this, arguments);
    QVariantList told;
    for (const Parameter &parameter : step.command->parameters) {
        if (arguments.contains(parameter.name))
            told.append(arguments.value(parameter.name));
    }
    if (told.isEmpty()) {
        for (auto argument = arguments.cbegin(); argument != arguments.cend(); ++argument)
            told.append(argument.key() + u'=' + argument->toString());
    }
    return told;
}
