// SPDX-License-Identifier: MIT
#include "PlayFirst.h"

#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoTrackerModelFactory.h"

#include <utility>

PlayFirst::PlayFirst(KelvoRegistry *registry)
    : m_registry(registry)
{
    KelvoTrackerModelFactory::holdBack(true);
    connect(m_registry, &KelvoRegistry::rendererAdded, this, &PlayFirst::follow);
}

PlayFirst::~PlayFirst()
{
    end();
}

void PlayFirst::follow(const QString &uuid)
{
    KelvoRenderer *renderer = m_registry->findRendererByUuid(uuid);
    if (m_isOver || !renderer)
        return;
    connect(renderer, &KelvoRenderer::stateChanged, this, [this](KelvoRenderer::State state) {
        if (state == KelvoRenderer::Playing)
            end();
    });
}

void PlayFirst::end()
{
    if (!std::exchange(m_isOver, true))
        KelvoTrackerModelFactory::holdBack(false);
}
