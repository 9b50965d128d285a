// SPDX-License-Identifier: MIT
#pragma once

#include "FakeUpnpDevice.h"
#include "KelvoRegistry.h"
#include "KelvoSource.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RendererProbe.h"

#include <QLoggingCategory>
#include <QTest>

#include <algorithm>
#include <memory>

/// The plug-in, loaded anew for each test, on the loopback interface.
class UpnpCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    KelvoRenderer *find(const QByteArray &udn) const
    {
        return m_registry->findRendererByUuid(QString::fromLatin1(udn));
    }
    KelvoSource *findSource(const QByteArray &udn) const
    {
        const auto sources = m_registry->sources();
        const auto source = std::find_if(sources.cbegin(), sources.cend(),
            [&](const KelvoSource *known) { return known->uuid() == QString::fromLatin1(udn); });
        return source != sources.cend() ? *source : nullptr;
    }
    /// Announced again and again, as the search may not have begun.
    bool appears(FakeUpnpDevice &device)
    {
        device.keepAnnouncing();
        const bool isThere
            = QTest::qWaitFor([&] { return find(device.udn) != nullptr || findSource(device.udn); });
        device.stopAnnouncing();
        return isThere;
    }
    /// The same for a renderer that is listened to and whose events come.
    bool listen(FakeUpnpDevice &device)
    {
        if (!appears(device))
            return false;
        m_heard = std::make_unique<RendererProbe>(*find(device.udn));
        return QTest::qWaitFor([&] { return device.subscriptions() > 0 && device.areEventsSent(); });
    }
    /// Somebody else lets it play.
    bool playing(FakeUpnpDevice &device, const QByteArray &uri = "http://elsewhere/song")
    {
        device.results["CurrentURI"] = uri;
        device.sendState("PLAYING");
        const bool plays = QTest::qWaitFor([this] { return m_heard->state() == KelvoRenderer::Playing; });
        m_heard->clear();
        return plays;
    }

    std::unique_ptr<KelvoRegistry> m_registry;
    std::unique_ptr<RendererProbe> m_heard;
    /// UDNs behind "+" or "-", in order.
    QStringList m_comings;

protected Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        // What devices do wrong is told on the lowest level.
        QLoggingCategory::setFilterRules(QStringLiteral("kelvo.debug=true"));
        m_comings.clear();
        m_registry = std::make_unique<KelvoRegistry>();
        const auto came = [this](const QString &uuid) {
            m_comings.append('+' + uuid);
        };
        const auto went = [this](const QString &uuid) {
            m_comings.append('-' + uuid);
        };
        connect(m_registry.get(), &KelvoRegistry::rendererAdded, this, came);
        connect(m_registry.get(), &KelvoRegistry::rendererRemoved, this, went);
        connect(m_registry.get(), &KelvoRegistry::sourceAdded, this, came);
        connect(m_registry.get(), &KelvoRegistry::sourceRemoved, this, went);
        m_registry->loadPlugin(QStringLiteral("upnp.so"));
        QTRY_COMPARE(m_registry->loadedPlugins(), QStringList{"upnp.so"});
    }
    void cleanup()
    {
        m_registry.reset();
        const QStringList violations = m_heard ? m_heard->violations : QStringList();
        m_heard.reset();
        QCOMPARE(violations, QStringList());
    }
};
