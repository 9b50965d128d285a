// SPDX-License-Identifier: MIT
// A back end that vanishes in the middle of work.
#include "ContractCase.h"
#include "ContractSuite.h"

#include <QSignalSpy>

namespace {
class LifetimeContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void vanishes_data();
    void vanishes();
    void vanishesWithCommandsUnderWay();
    void vanishesWithinASlot_data();
    void vanishesWithinASlot();
    void comesBack();

private:
    void unload() { m_registry->unloadPlugin(m_subject.pluginFile()); }
};

void LifetimeContract::vanishes_data()
{
    QTest::addColumn<int>("state");
    for (auto state :
        {KelvoRenderer::Stopped, KelvoRenderer::Transitioning, KelvoRenderer::Playing, KelvoRenderer::Paused})
        QTest::addRow("state %d", int(state)) << int(state);
}

void LifetimeContract::vanishes()
{
    QFETCH(int, state);
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
    connect(m_registry.get(), &KelvoRegistry::rendererRemoved, this, [&](const QString &removed) {
        if (removed == uuid)
            validWhenRemoved
                = m_renderer && m_renderer->uuid() == uuid && !m_registry->findRendererByUuid(uuid);
    });
    unload();
    HOLDS(validWhenRemoved);
    HOLDS(!m_renderer);
    QCOMPARE(m_registry->renderers().size(), 0);
    QCOMPARE(m_registry->loadedPlugins(), QStringList());
    const qsizetype events = heard().events.size();
    settle();
    QCOMPARE(heard().events.size(), events);
}

void LifetimeContract::vanishesWithCommandsUnderWay()
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
    QCOMPARE(heard().states.size(), 0);
}

void LifetimeContract::vanishesWithinASlot_data()
{
    QTest::addColumn<int>("state");
    for (auto state : {KelvoRenderer::Transitioning, KelvoRenderer::Playing, KelvoRenderer::Stopped})
        QTest::addRow("state %d", int(state)) << int(state);
}

void LifetimeContract::vanishesWithinASlot()
{
    QFETCH(int, state);
    connect(m_renderer, &KelvoRenderer::stateChanged, this, [this, state](KelvoRenderer::State now) {
        if (now == state)
            unload();
    });
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(!m_renderer);
    settle();
    QCOMPARE(m_registry->renderers().size(), 0);
}

void LifetimeContract::comesBack()
{
    const QString uuid = m_renderer->uuid();
    for (int i = 0; i < 5; ++i) {
        m_renderer->playUri(m_subject.longItem());
        REACHES(heard().states.contains(KelvoRenderer::Playing));
        unload();
        QSignalSpy added(m_registry.get(), &KelvoRegistry::rendererAdded);
        m_registry->loadPlugin(m_subject.pluginFile());
        QTRY_VERIFY(m_subject.findIn(*m_registry));
        HOLDS(!added.isEmpty());
        m_renderer = m_subject.findIn(*m_registry);
        QCOMPARE(m_renderer->uuid(), uuid);
        m_subject.prepare(*m_renderer);
        const QStringList violations = m_probe->violations;
        m_probe = std::make_unique<RendererProbe>(*m_renderer);
        m_probe->violations = violations;
    }
    QCOMPARE(status().state, int(KelvoRenderer::Stopped));
}
} // namespace

std::unique_ptr<QObject> makeLifetimeContract(RendererSubject &subject)
{
    return std::make_unique<LifetimeContract>(subject);
}

#include "LifetimeContract.moc"
