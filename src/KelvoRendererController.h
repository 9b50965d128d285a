// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoContent.h"
#include "KelvoError.h"
#include "KelvoRenderer.h"

#include <QObject>
#include <QPointer>
#include <QUrl>
#include <QVariant>

class KelvoGUIMain;
class KelvoMainWindow;
class KelvoPlaylist;
class KelvoRegistry;
class QTimer;

/// The one object that talks to renderers: lists them, follows the current one and carries out what the user
/// asks of it. Without a current renderer a command does nothing. GUI thread only.
class KelvoRendererController : public QObject
{
    Q_OBJECT
public:
    /// Nothing is owned. The first renderer of the registry becomes current.
    KelvoRendererController(KelvoGUIMain *application, KelvoMainWindow *mainWindow);
    ~KelvoRendererController() override;

    /// Null when there is none.
    KelvoRenderer *currentRenderer() const;
    /// A URI to play on the renderer of that name each time such a renderer is added. It does not become current
    /// by that. An empty URI asks for nothing.
    void setStartUri(const QUrl &uri, const QString &contentType, const QString &rendererName);

    bool eventFilter(QObject *watched, QEvent *event) override;

public Q_SLOTS:
    // The slots are addressed by name and by their order; both stay as they are.
    void rendererAdded(const QString &uuid, const QString &name);
    void rendererRemoved(const QString &uuid, const QString &name);
    void rendererChanged(const QString &uuid);
    void rendererMediaChanged(int index, const KelvoContent &content);
    void rendererPlaylistChanged(KelvoPlaylist *playlist);
    void rendererMediaMetadataChanged(const QString &key, const QList<QVariant> &values);
    void rendererMediaPositionChanged(uint position);
    void rendererStateChanged(KelvoRenderer::State state);
    void rendererPropertyChanged(const QString &name, const QVariant &value);
    void rendererNameChanged(const QString &name);
    void rendererStatusChanged(
        const QString &playlistId, uint index, int playbackState, const QString &objectId);
    void rendererBuffering(float status);
    void rendererScanning(float status);
    void rendederOperationFailed(const KelvoError &error); // misspelled in the connection that is made to it
    void videoScreenXIDChanged(uint xid);
    void handlePlay();
    void play();
    void playUri(const QUrl &item, const QString &contentType);
    void pause();
    void pauseAt(uint);
    void resume();
    void stop();
    void next();
    void prev();
    void goToIndex(uint index);
    void seekBack();
    void seekForw();
    void seek(int);
    void startFastRewind();
    void startFastForward();
    void stopFastPlayback();
    void adjustVolume();
    void showPauseFrame();
    void setAutoAdvance(bool enabled);
    void invokeGetPosition();

private:
    // KelvoRendererController.cpp
    void initRenderers();
    void listRenderer(KelvoRenderer *renderer, const QString &name);
    void connectRendererSignals(KelvoRenderer *renderer);
    void getRendererProperties(KelvoRenderer *renderer);
    void setUpVideoOutput(KelvoRenderer *renderer);
    void retire();
    KelvoPlaylist *currentPlaylist() const;

    // KelvoRendererController_reports.cpp
    void showStopped();
    void showPlaying();
    void showPaused();
    void handleVideoPlayback();
    void sendVideoRectangle();

    // KelvoRendererController_commands.cpp
    bool swallowSeekClick();
    void seekBy(int seconds);
    bool armFastPlayback(const char *slot);
    void startFastPlayback(double speed);
    void setPlaybackSpeed(double speed);

    /// What holding a seek button down has come to.
    struct FastPlayback
    {
        bool seekClickSwallowed = false; ///< letting go of it is no click
        bool armed = false; ///< pressed, perhaps only for a click
        bool active = false;
    };
    /// What setStartUri() asked for.
    struct Start
    {
        QUrl uri;
        QString contentType;
        QString rendererName;
    };

    KelvoGUIMain *m_application;
    KelvoRegistry *m_registry;
    QPointer<KelvoMainWindow> m_mainWindow;
    QPointer<KelvoRenderer> m_currentRenderer;
    KelvoRenderer::State m_currentState = KelvoRenderer::Stopped;
    bool m_videoActive = false; // never set: the colour key is always cleared before it is shown
    uint m_volume = 0;
    int m_pendingPosition = 0;
    bool m_showPauseFrameOn = false;
    uint m_colorKey = 0;
    static constexpr int PositionInterval = 1000; ///< milliseconds
    QTimer *m_positionTimer;
    FastPlayback m_fastPlayback;
    QString m_currentMediaUuid;
    Start m_start;
};
