// SPDX-License-Identifier: MIT
#include "SimulatedTime.h"

#include "KelvoRenderer.h"

#include <QCoreApplication>
#include <QPointer>

namespace {
constexpr int tick = 20; // milliseconds
} // namespace

void SimulatedTime::takeOver(KelvoRenderer &renderer)
{
    renderer.setKelvoProperty(QStringLiteral("sim-clock"), QStringLiteral("manual"));
    QObject::connect(&renderer, &KelvoRenderer::kelvoPropertyChanged, &renderer, [this](const QString &name) {
        if (name == QLatin1String("sim-advance"))
            m_arrived = true;
    });
}

void SimulatedTime::pass(KelvoRenderer *renderer)
{
    m_time += tick;
    m_arrived = false;
    const QPointer<KelvoRenderer> guarded(renderer);
    if (guarded)
        guarded->setKelvoProperty(QStringLiteral("sim-advance"), tick);
    do {
        QCoreApplication::processEvents();
    } while (guarded && !m_arrived);
}
