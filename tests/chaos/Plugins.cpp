// SPDX-License-Identifier: MIT
#include "Plugins.h"

#include "KelvoPluginLoader.h"

Plugins::Plugins(const Stage &stage, QStringList names)
    : m_stage(stage)
    , m_names(std::move(names))
{
    for (const QString &name : m_names)
        m_stage.registry()->loadPlugin(name);
}

QList<Deed> Plugins::deeds()
{
    return {
        {5, Deed::Elsewhere,
            [this](Dice &dice) {
                const QString name = dice.oneOf(m_names);
                m_stage.say(QStringLiteral("load %1").arg(name));
                m_stage.registry()->loadPlugin(name);
            }},
        {2, Deed::Elsewhere,
            [this](Dice &dice) {
                const QString name = dice.oneOf(m_names);
                m_stage.say(QStringLiteral("unload %1").arg(name));
                m_stage.registry()->unloadPlugin(name);
            }},
    };
}

QStringList Plugins::faults()
{
    QStringList texts;
    for (const QString &name : m_names) {
        const QString reason = m_stage.registry()->pluginLoader()->failure(name);
        if (!reason.isEmpty())
            texts.append(QStringLiteral("%1 cannot be loaded: %2").arg(name, reason));
    }
    return texts;
}
