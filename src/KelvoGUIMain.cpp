// SPDX-License-Identifier: MIT
#include "KelvoGUIMain.h"

#include "KelvoMainWindow.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylistController.h"
#include "KelvoPluginController.h"
#include "KelvoRegistry.h"
#include "KelvoRendererController.h"
#include "KelvoShared.h"
#include "KelvoSourceController.h"

#include <QDebug>
#include <QUrl>

namespace {
const auto startRenderer = QStringLiteral("KelvoGstRenderer");

QString browserLauncher()
{
    // Where the browser is elsewhere, the environment names it.
    const QString named = qEnvironmentVariable("KELVO_BROWSER");
    return named.isEmpty() ? QStringLiteral("/usr/lib/fennec/fennec.sh") : named;
}
} // namespace

KelvoGUIMain::KelvoGUIMain(QObject *parent)
    : QObject(parent)
    , m_browserProcess(nullptr)
{
    // Passed on rather than collected: nobody reads what the browser writes.
    m_browserProcess.setProcessChannelMode(QProcess::ForwardedChannels);
    KelvoMessageHandler::initKelvoLogging(true, nullptr);
    KelvoRegistry *registry = KelvoRegistry::instance();
    qDebug() << "KelvoGUIMain::KelvoGUIMain";
    m_mainWindow = new KelvoMainWindow(this, nullptr);
    m_mainWindow->setVisible(true);
    m_shared = KelvoShared::instance();
    qDebug() << "initTracking success was" << m_shared->initTracking(registry);
    m_renderers = new KelvoRendererController(this, m_mainWindow);
    m_playlists = new KelvoPlaylistController(this, m_mainWindow, m_shared);
    m_sources = new KelvoSourceController(this, m_mainWindow);
    m_plugins = new KelvoPluginController(m_mainWindow);
}

KelvoGUIMain::~KelvoGUIMain()
{
    qDebug() << "KelvoGUIMain::~KelvoGUIMain";
    delete m_playlists;
    delete m_renderers;
    delete m_sources;
    delete m_plugins;
}

void KelvoGUIMain::playPlaylist(const QUrl &url, const QString &mimeType)
{
    qDebug() << "void KelvoGUIMain::playPlaylist(const QUrl&, const QString&)";
    m_renderers->setStartUri(url, mimeType, startRenderer);
}

KelvoPlaylistController *KelvoGUIMain::playlists() const
{
    qDebug() << "KelvoGUIMain::playlists";
    return m_playlists;
}

KelvoRendererController *KelvoGUIMain::renderers() const
{
    qDebug() << "KelvoGUIMain::renderers";
    return m_renderers;
}

KelvoSourceController *KelvoGUIMain::sources() const
{
    qDebug() << "KelvoGUIMain::sources";
    return m_sources;
}

void KelvoGUIMain::startBrowser(const QString &argument)
{
    qDebug() << "KelvoGUIMain::startBrowser";
    if (m_browserProcess.processId() != 0)
        m_browserProcess.close();
    m_browserProcess.startCommand(browserLauncher() + QLatin1Char(' ') + argument, QIODevice::ReadWrite);
}
