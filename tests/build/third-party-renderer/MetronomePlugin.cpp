// SPDX-License-Identifier: MIT
#include "MetronomePlugin.h"

#include <KelvoRegistry.h>

bool MetronomePlugin::start(KelvoRegistry *registry, QString *error)
{
    m_registry = registry;
    if (registry->addRenderer(&m_renderer))
        return true;
    *error = QStringLiteral("there is a metronome already");
    return false;
}

void MetronomePlugin::stop()
{
    m_registry->removeRenderer(&m_renderer);
}
