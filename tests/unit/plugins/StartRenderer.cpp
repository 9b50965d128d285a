// SPDX-License-Identifier: MIT
// A plug-in with the renderer that the console plays its argument on; it only says what it is told to play, and when
// it is stopped. With KELVO_TEST_PLUGIN=quits it then ends the event loop, as the last window does.
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"
#include "MinimalObjects.h"

#include <QCoreApplication>
#include <QDebug>

namespace {
class StartRenderer : public MinimalRenderer
{
public:
    StartRenderer()
        : MinimalRenderer(QStringLiteral("start-renderer"), QStringLiteral("KelvoGstRenderer"))
    {
    }
    void playUriWithType(const QUrl &uri, const QString &contentType) override
    {
        qInfo().noquote() << "start renderer plays" << uri.toString() << "as" << contentType;
        if (qgetenv("KELVO_TEST_PLUGIN") == "quits")
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }
};
} // namespace

class StartRendererPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "metadata.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *registry, QString *) override
    {
        m_registry = registry;
        // Later, as players of networks do: the console knows its argument by then.
        QMetaObject::invokeMethod(
            this, [this] { m_registry->addRenderer(&m_renderer); }, Qt::QueuedConnection);
        return true;
    }
    void stop() override
    {
        qInfo() << "start renderer stops";
        m_registry->removeRenderer(&m_renderer);
    }

private:
    KelvoRegistry *m_registry = nullptr;
    StartRenderer m_renderer;
};

#include "StartRenderer.moc"
