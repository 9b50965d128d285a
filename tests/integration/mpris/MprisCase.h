// SPDX-License-Identifier: MIT
#pragma once

#include "FakeMprisPlayer.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "RendererProbe.h"

#include <QPointer>
#include <QTest>

#include <memory>

constexpr auto Stopped = KelvoRenderer::Stopped;
constexpr auto Playing = KelvoRenderer::Playing;
constexpr auto Paused = KelvoRenderer::Paused;
constexpr auto Transitioning = KelvoRenderer::Transitioning;

/// The plug-in, loaded anew for each test, on a session bus that has only the players of the test.
class MprisCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    KelvoRenderer *find(const QString &label) const
    {
        return m_registry->findRendererByUuid(QStringLiteral("mpris:") + label);
    }
    QStringList names() const
    {
        QStringList list;
        for (const KelvoRenderer *renderer : m_registry->renderers())
            list.append(renderer->name());
        list.sort();
        return list;
    }
    /// Listens to the renderer of that player once it is there.
    bool listen(const QString &label = QStringLiteral("fake"))
    {
        if (!QTest::qWaitFor([&] { return find(label) != nullptr; }))
            return false;
        m_renderer = find(label);
        m_heard = std::make_unique<RendererProbe>(*m_renderer);
        return true;
    }
    bool playing(const QString &url = QStringLiteral("http://media/song"))
    {
        m_renderer->playUri(QUrl(url));
        const bool plays = QTest::qWaitFor([this] { return m_heard->state() == KelvoRenderer::Playing; });
        m_heard->clear();
        return plays;
    }

    std::unique_ptr<KelvoRegistry> m_registry;
    QPointer<KelvoRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_heard;

protected Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_registry = std::make_unique<KelvoRegistry>();
        m_registry->loadPlugin(QStringLiteral("mpris.so"));
        QTRY_COMPARE(m_registry->loadedPlugins(), QStringList{"mpris.so"});
    }
    void cleanup()
    {
        m_registry.reset();
        QVERIFY(!m_renderer);
        const QStringList violations = m_heard ? m_heard->violations : QStringList();
        m_heard.reset();
        QCOMPARE(violations, QStringList());
    }
};
