// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

#include "KelvoPlayUriDialog.h"
#include "KelvoPlaylistController.h"
#include "KelvoPluginController.h"
#include "KelvoRendererController.h"
#include "KelvoSourceController.h"

#include <QDebug>

// Each connection on two lines, sender above receiver, so that the table can be read down.
// clang-format off

void KelvoMainWindow::connectQueryTimer()
{
    connect(m_query_executeButton, SIGNAL(clicked()),
        this, SLOT(startQueryDebugTimer()));
    connect(this, SIGNAL(queryResultsAvailable()),
        this, SLOT(stopQueryDebugTimer()));
}

void KelvoMainWindow::connectPluginSignals(KelvoPluginController *controller)
{
    connect(m_actionPlugins, SIGNAL(triggered(bool)),
        controller, SLOT(showPluginsDialog()));
}

void KelvoMainWindow::connectPlaylistSignals(KelvoPlaylistController *controller)
{
    qDebug() << "KelvoMainWindow::connectPlaylistSignals";
    connectPlaylistChoice(controller);
    connectPlaylistEditing(controller);
    connectPlaylistModes(controller);
}

void KelvoMainWindow::connectPlaylistChoice(KelvoPlaylistController *controller)
{
    connect(m_music_playlistCombo, SIGNAL(currentIndexChanged(int)),
        this, SLOT(syncPlaylists(int)));
    connect(m_browse_playlistCombo, SIGNAL(currentIndexChanged(int)),
        this, SLOT(syncPlaylists(int)));
    connect(m_query_playlistCombo, SIGNAL(currentIndexChanged(int)),
        this, SLOT(syncPlaylists(int)));
    connect(this, SIGNAL(currentPlaylistChanged(QString)),
        controller, SLOT(playlistChanged(QString)));
}

void KelvoMainWindow::connectPlaylistEditing(KelvoPlaylistController *controller)
{
    connect(m_query_createPlaylistButton, SIGNAL(clicked()),
        controller, SLOT(createNewModelPlaylist()));
    connect(m_actionCreateNew, SIGNAL(triggered(bool)),
        controller, SLOT(createNewEmptyPlaylist()));
    connect(m_actionLoad, SIGNAL(triggered(bool)),
        controller, SLOT(showLoadPlaylistDialog()));
    connect(m_actionDeletePersistent, SIGNAL(triggered(bool)),
        controller, SLOT(deletePersistentPlaylist()));
    connect(m_actionDelete, SIGNAL(triggered(bool)),
        controller, SLOT(deletePlaylist()));
    connect(m_actionClear, SIGNAL(triggered(bool)),
        controller, SLOT(clearPlaylist()));
    connect(m_actionRemoveCurrent, SIGNAL(triggered(bool)),
        controller, SLOT(removeCurrentItem()));
    connect(m_actionRemoveSeveralSelected, SIGNAL(triggered(bool)),
        controller, SLOT(removeSeveralItems()));
}

void KelvoMainWindow::connectPlaylistModes(KelvoPlaylistController *controller)
{
    // The dialog must be on the screen, emptied, before the controller is asked for URIs to fill it with.
    connect(m_actionPlayUri, SIGNAL(triggered(bool)),
        this, SLOT(showPlayUriDialog()));
    connect(m_actionPlayUri, SIGNAL(triggered(bool)),
        controller, SLOT(invokeGetPlaylistUris()));
    connect(m_playUriDialog, SIGNAL(accepted()),
        this, SLOT(playUriDialogAccepted()));
    connect(m_actionShuffle, SIGNAL(triggered(bool)),
        controller, SLOT(shufflePlaylist()));
    connect(m_actionRepeat, SIGNAL(triggered(bool)),
        controller, SLOT(repeatPlaylist()));
    connect(m_actionAtoZ, SIGNAL(triggered(bool)),
        controller, SLOT(sortPlaylistAtoZ()));
    connect(m_actionZtoA, SIGNAL(triggered(bool)),
        controller, SLOT(sortPlaylistZtoA()));
    connect(m_actionShortToLong, SIGNAL(triggered(bool)),
        controller, SLOT(sortPlaylistShortToLong()));
    connect(m_actionLongToShort, SIGNAL(triggered(bool)),
        controller, SLOT(sortPlaylistLongToShort()));
}

void KelvoMainWindow::connectRendererSignals(KelvoRendererController *controller)
{
    qDebug() << "KelvoMainWindow::connectRendererSignals";
    connect(m_music_rendererCombo, SIGNAL(currentIndexChanged(int)),
        this, SLOT(currentRendererChanged(int)));
    connect(this, SIGNAL(currentRendererChanged(QString)),
        controller, SLOT(rendererChanged(QString)));
    connectMusicButtons(controller);
    connectVideoButtons(controller);
    connectPlaybackRequests(controller);
}

void KelvoMainWindow::connectMusicButtons(KelvoRendererController *controller)
{
    connect(m_music_playButton, SIGNAL(clicked()),
        controller, SLOT(handlePlay()));
    connect(m_music_stopButton, SIGNAL(clicked()),
        controller, SLOT(stop()));
    connect(m_music_nextButton, SIGNAL(clicked()),
        controller, SLOT(next()));
    connect(m_music_prevButton, SIGNAL(clicked()),
        controller, SLOT(prev()));
    connect(m_music_seekBackButton, SIGNAL(clicked()),
        controller, SLOT(seekBack()));
    connect(m_music_seekForwButton, SIGNAL(clicked()),
        controller, SLOT(seekForw()));
}

void KelvoMainWindow::connectVideoButtons(KelvoRendererController *controller)
{
    connect(m_video_playButton, SIGNAL(clicked()),
        controller, SLOT(handlePlay()));
    connect(m_video_stopButton, SIGNAL(clicked()),
        controller, SLOT(stop()));
    connect(m_video_nextButton, SIGNAL(clicked()),
        controller, SLOT(next()));
    connect(m_video_prevButton, SIGNAL(clicked()),
        controller, SLOT(prev()));
    connect(m_video_seekBackButton, SIGNAL(clicked()),
        controller, SLOT(seekBack()));
    connect(m_video_seekForwButton, SIGNAL(clicked()),
        controller, SLOT(seekForw()));
}

void KelvoMainWindow::connectPlaybackRequests(KelvoRendererController *controller)
{
    connect(this, SIGNAL(playUri(QUrl,QString)),
        controller, SLOT(playUri(QUrl,QString)));
    connect(m_music_playlistView, SIGNAL(doubleClicked(QModelIndex)),
        this, SLOT(emitIndex(QModelIndex)));
    connect(this, SIGNAL(itemDoubleClicked(uint)),
        controller, SLOT(goToIndex(uint)));
    connect(this, SIGNAL(videoScreenXIDChanged(uint)),
        controller, SLOT(videoScreenXIDChanged(uint)));
    connect(m_actionVolume, SIGNAL(triggered(bool)),
        controller, SLOT(adjustVolume()));
    connect(m_actionShowPauseFrame, SIGNAL(triggered(bool)),
        controller, SLOT(showPauseFrame()));
    connect(m_actionAutoAdvance, SIGNAL(toggled(bool)),
        controller, SLOT(setAutoAdvance(bool)));
    connect(m_music_durationSlider, SIGNAL(sliderReleased()),
        this, SLOT(emitPosition()));
    connect(this, SIGNAL(seek(int)),
        controller, SLOT(seek(int)));
    connect(m_video_durationSlider, SIGNAL(sliderReleased()),
        this, SLOT(emitPosition()));
    // Made a second time on purpose: every seek reaches the renderer twice, and testers rely on seeing both.
    connect(this, SIGNAL(seek(int)),
        controller, SLOT(seek(int)));
    connect(this, SIGNAL(immediateSeek(uint)),
        controller, SLOT(pauseAt(uint)));
}

void KelvoMainWindow::connectSourceSignals(KelvoSourceController *controller)
{
    qDebug() << "KelvoMainWindow::connectSourceSignals";
    connect(m_query_executeButton, SIGNAL(clicked()),
        controller, SLOT(executeQuery()));
    connect(m_query_extendButton, SIGNAL(clicked()),
        controller, SLOT(extendQuery()));
    connect(m_query_addButton, SIGNAL(clicked()),
        controller, SLOT(addQueryToPlaylist()));
    connect(m_browse_addButton, SIGNAL(clicked()),
        controller, SLOT(addBrowseToPlaylist()));
    connect(m_browse_executeButton, SIGNAL(clicked()),
        controller, SLOT(executeBrowse()));
    connect(m_browse_clearButton, SIGNAL(clicked()),
        controller, SLOT(clearBrowseResults()));
    connect(m_actionSelectSources, SIGNAL(triggered(bool)),
        controller, SLOT(selectSources()));
    connect(m_actionSearch, SIGNAL(triggered(bool)),
        controller, SLOT(search()));
    connect(m_actionSourceProperties, SIGNAL(triggered(bool)),
        controller, SLOT(showSourceProperties()));
    connect(m_browse_resultsView, SIGNAL(clicked(QModelIndex)),
        controller, SLOT(browseResultItemActivated(QModelIndex)));
}

// clang-format on
