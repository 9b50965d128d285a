// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QProcess>

class KelvoMainWindow;
class KelvoPlaylistController;
class KelvoPluginController;
class KelvoRendererController;
class KelvoShared;
class KelvoSourceController;
class QUrl;

/// The application object: connects the process to the framework, makes the window and the controllers in the
/// order in which they depend on each other, and lets the controllers find one another. GUI thread only.
///
/// It has neither signals nor slots. It owns the controllers; the window deletes itself when it is closed.
class KelvoGUIMain : public QObject
{
public:
    explicit KelvoGUIMain(QObject *parent);
    ~KelvoGUIMain() override;

    /// Keeps the URL as the one to play on each "KelvoGstRenderer" that appears.
    void playPlaylist(const QUrl &url, const QString &mimeType);

    /// Null until it was made, in the order renderers, playlists, sources.
    KelvoPlaylistController *playlists() const;
    KelvoRendererController *renderers() const;
    KelvoSourceController *sources() const;

    /// Starts the web browser with this argument; one started earlier is ended first. Returns at once, failures
    /// are not reported.
    void startBrowser(const QString &argument);

private:
    KelvoMainWindow *m_mainWindow = nullptr;
    KelvoShared *m_shared = nullptr;
    KelvoPlaylistController *m_playlists = nullptr;
    KelvoRendererController *m_renderers = nullptr;
    KelvoSourceController *m_sources = nullptr;
    KelvoPluginController *m_plugins = nullptr;
    QProcess m_browserProcess;
};
