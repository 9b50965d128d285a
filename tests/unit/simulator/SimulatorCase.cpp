// SPDX-License-Identifier: MIT
#include "SimulatorCase.h"

#include <algorithm>

void SimulatorCase::init()
{
    KelvoTestCase::init();
    qunsetenv("KELVO_SIMULATOR");
    m_registry = std::make_unique<KelvoRegistry>();
    QVERIFY(load());
    watch();
    set("sim-clock", QStringLiteral("manual"));
    advance(0);
}

void SimulatorCase::cleanup()
{
    const QStringList violations = m_probe->violations;
    m_registry.reset();
    m_probe.reset();
    m_playlist.reset();
    QCOMPARE(violations, QStringList());
}

bool SimulatorCase::load()
{
    QSignalSpy loaded(m_registry->pluginLoader(), &KelvoPluginLoader::pluginLoaded);
    m_registry->loadPlugin(Plugin);
    return loaded.wait();
}

void SimulatorCase::set(const char *name, const QVariant &value) const
{
    renderer()->setKelvoProperty(QLatin1String(name), value);
}

/// Returns when the clock has arrived and all that fell due has been done.
void SimulatorCase::advance(int milliseconds) const
{
    KelvoRenderer *mover = renderer() ? renderer() : renderer(RendererB);
    QSignalSpy moved(mover, &KelvoRenderer::kelvoPropertyChanged);
    mover->setKelvoProperty(QStringLiteral("sim-advance"), milliseconds);
    const auto arrived = [&moved] {
        return std::any_of(
            moved.cbegin(), moved.cend(), [](const auto &report) { return report.at(0) == "sim-advance"; });
    };
    while (!arrived())
        QVERIFY(moved.wait());
}

bool SimulatorCase::start(const QUrl &url) const
{
    renderer()->playUri(url);
    advance(20);
    return m_probe->state() == Playing;
}

/// Seconds.
double SimulatorCase::position()
{
    return ask(KelvoRenderer::PropertyPosition).toDouble();
}

QVariant SimulatorCase::ask(const QString &name)
{
    m_probe->propertyAnswers.clear();
    QSignalSpy answered(m_probe.get(), &RendererProbe::answered);
    renderer()->kelvoProperty(name, m_probe.get(), "propertyAnswer(QString,QVariant)");
    return answered.wait() ? m_probe->propertyAnswers.constFirst().second : QStringLiteral("no answer");
}
