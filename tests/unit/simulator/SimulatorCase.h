// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "RendererProbe.h"

#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <memory>

/// The simulator in a registry of its own, with its clock at a standstill. Each test ends with a look at whether its
/// first renderer has kept the order of states.
class SimulatorCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    using States = QList<KelvoRenderer::State>;
    using enum KelvoRenderer::State;

    static inline const QString Plugin = QStringLiteral("simulator.so");
    static inline const QString RendererA = QStringLiteral("KelvoSimulatorA");
    static inline const QString RendererB = QStringLiteral("KelvoSimulatorB");
    static inline const QString Unnamed = QStringLiteral("KelvoSimulatorUnnamed");

    bool load();
    KelvoRenderer *renderer(const QString &uuid = RendererA) const
    {
        return m_registry->findRendererByUuid(uuid);
    }
    void set(const char *name, const QVariant &value) const;
    void advance(int milliseconds) const;
    bool start(const QUrl &url) const;
    double position();
    QVariant ask(const QString &name);
    void watch() { m_probe = std::make_unique<RendererProbe>(*renderer()); }
    RendererProbe &heard() { return *m_probe; }

    std::unique_ptr<KelvoRegistry> m_registry;
    std::unique_ptr<RendererProbe> m_probe;
    std::unique_ptr<KelvoGeneralSourcePlaylist> m_playlist;

protected Q_SLOTS:
    void init();
    void cleanup();
};
