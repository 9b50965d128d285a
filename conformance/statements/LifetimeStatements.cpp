// SPDX-License-Identifier: MIT
// A back end that vanishes in the middle of work.
#include "StatementGroups.h"
#include "Trial.h"

namespace {
class LifetimeStatements : public Trial
{
public:
    using Trial::Trial;

    void vanishes(KelvoRenderer::State state);
    void vanishesWithCommandsUnderWay();
    void vanishesWithinASlot(KelvoRenderer::State state);
    void comesBack();

private:
    void unload() { m_registry->unloadPlugin(m_subject.pluginFile()); }
};

void LifetimeStatements::vanishes(KelvoRenderer::State state)
{
    if (state != KelvoRenderer::Stopped) {
        renderer()->assignPlaylist(makeLongPlaylist(3));
        renderer()->play();
        REACHES(state == KelvoRenderer::Transitioning ? !heard().states.isEmpty()
                                                      : heard().state() == KelvoRenderer::Playing);
    }
    if (state == KelvoRenderer::Paused) {
        renderer()->pause();
        REACHES(heard().state() == KelvoRenderer::Paused);
    }
    bool validWhenRemoved = false;
    const QString uuid = m_renderer->uuid();
    const QObject context;
    QObject::connect(
        m_registry.get(), &KelvoRegistry::rendererRemoved, &context, [&](const QString &removed) {
            if (removed == uuid)
                validWhenRemoved
                    = m_renderer && m_renderer->uuid() == uuid && !m_registry->findRendererByUuid(uuid);
        });
    unload();
    HOLDS(validWhenRemoved);
    HOLDS(!m_renderer);
    SAME(m_registry->renderers().size(), 0);
    SAME(m_registry->loadedPlugins(), QStringList());
    const qsizetype events = heard().events.size();
    settle();
    SAME(heard().events.size(), events);
}

void LifetimeStatements::vanishesWithCommandsUnderWay()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    renderer()->setPosition(5, KelvoRenderer::SeekAbsolute);
    renderer()->pauseAt(6);
    renderer()->setKelvoProperty("volume", 10);
    renderer()->getStatus(m_probe.get(), "statusAnswer(QString,uint,int,QString)");
    renderer()->getPosition(m_probe.get(), "positionAnswer(uint)");
    renderer()->kelvoProperty("volume", m_probe.get(), "propertyAnswer(QString,QVariant)");
    unload();
    HOLDS(!m_renderer);
    playlist->clear();
    settle();
    HOLDS(heard().statusAnswers.size() <= 1 && heard().positionAnswers.size() <= 1
        && heard().propertyAnswers.size() <= 1);
    SAME(heard().states.size(), 0);
}

void LifetimeStatements::vanishesWithinASlot(KelvoRenderer::State state)
{
    const QObject context;
    QObject::connect(
        m_renderer, &KelvoRenderer::stateChanged, &context, [this, state](KelvoRenderer::State now) {
            if (now == state)
                unload();
        });
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(!m_renderer);
    settle();
    SAME(m_registry->renderers().size(), 0);
}

void LifetimeStatements::comesBack()
{
    const QString uuid = m_renderer->uuid();
    for (int i = 0; i < 5; ++i) {
        m_renderer->playUri(m_subject.longItem());
        REACHES(heard().states.contains(KelvoRenderer::Playing));
        unload();
        int added = 0;
        const QObject context;
        QObject::connect(m_registry.get(), &KelvoRegistry::rendererAdded, &context, [&added] { ++added; });
        loadPlugin();
        HOLDS(appears(5000));
        HOLDS(added > 0);
        SAME(m_renderer->uuid(), uuid);
        const QStringList violations = m_probe->violations;
        m_probe = makeProbe();
        m_probe->violations = violations;
    }
    SAME(status().state, int(KelvoRenderer::Stopped));
}
} // namespace

QList<Statement> lifetimeStatements()
{
    using G = LifetimeStatements;
    return QList<Statement>{
        statement("lifetime.vanishes.stopped",
            "Its back end may be unloaded while Stopped: the renderer leaves the registry and reports "
            "nothing more.",
            {}, &G::vanishes, Stopped),
        statement("lifetime.vanishes.transitioning",
            "Its back end may be unloaded while Transitioning: the renderer leaves the registry and reports "
            "nothing more.",
            {}, &G::vanishes, Transitioning),
        statement("lifetime.vanishes.playing",
            "Its back end may be unloaded while Playing: the renderer leaves the registry and reports "
            "nothing more.",
            {}, &G::vanishes, Playing),
        statement("lifetime.vanishes.paused",
            "Its back end may be unloaded while Paused: the renderer leaves the registry and reports nothing "
            "more.",
            {Ability::Pause}, &G::vanishes, Paused),
        statement("lifetime.vanishes-with-commands-under-way",
            "Its back end may be unloaded while commands and requests are under way.", {},
            &G::vanishesWithCommandsUnderWay),
        statement("lifetime.vanishes-within-a-slot.transitioning",
            "Its back end may be unloaded by who hears that it is Transitioning.", {},
            &G::vanishesWithinASlot, Transitioning),
        statement("lifetime.vanishes-within-a-slot.playing",
            "Its back end may be unloaded by who hears that it is Playing.", {}, &G::vanishesWithinASlot,
            Playing),
        statement("lifetime.vanishes-within-a-slot.stopped",
            "Its back end may be unloaded by who hears that it is Stopped.", {}, &G::vanishesWithinASlot,
            Stopped),
        statement("lifetime.comes-back", "Loaded again, the renderer has the same id and is Stopped.", {},
            &G::comesBack),
    };
}
