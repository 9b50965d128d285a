// SPDX-License-Identifier: MIT
#pragma once

#include "ui_MainWindow.h"

#include <QElapsedTimer>
#include <QMainWindow>
#include <QPointer>
#include <QUrl>

class KelvoFullScreenVideoWidget;
class KelvoGUIMain;
class KelvoHelpDialog;
class KelvoPlayUriDialog;
class KelvoPlaylistController;
class KelvoPlaylistDialog;
class KelvoPluginController;
class KelvoRenderer;
class KelvoRendererController;
class KelvoRendererErrorLogDialog;
class KelvoSearchDialog;
class KelvoSelectItemsDialog;
class KelvoSource;
class KelvoSourceController;
class KelvoSourceDialog;
class KelvoSourcePropertiesDialog;
class KelvoVolumeDialog;
class QAbstractItemModel;
class QInputContext;
class QListWidgetItem;

/// The console's one window. It shows what the controllers tell it through its display operations, and turns what
/// the user does into its own signals; it decides nothing and never calls the framework.
///
/// Closing the window deletes it, which ends the program. GUI thread only.
class KelvoMainWindow : public QMainWindow, private Ui::MainWindow
{
    Q_OBJECT

    // Construction: KelvoMainWindow.cpp
public:
    /// The application object is used to reach the source controller and the browser, never during construction.
    KelvoMainWindow(KelvoGUIMain *guiMain, QWidget *parent);
    ~KelvoMainWindow() override;

private:
    void logBuild() const;
    void makeVideoPageNative();
    QInputContext *createInputContext();
    void createDialogs(QInputContext *inputContext);
    void createFullScreenVideo();
    void setUpPlaybackDisplay();
    void setUpResultDisplay();
    void connectWindowActions();
    void connectResultActions();
    void connectPauseAtActions();

    // Wiring to the controllers, each called once by its controller's constructor: KelvoMainWindow_wiring.cpp
public:
    void connectPlaylistSignals(KelvoPlaylistController *controller);
    void connectPluginSignals(KelvoPluginController *controller);
    void connectRendererSignals(KelvoRendererController *controller);
    void connectSourceSignals(KelvoSourceController *controller);

private:
    void connectQueryTimer();
    void connectPlaylistChoice(KelvoPlaylistController *controller);
    void connectPlaylistEditing(KelvoPlaylistController *controller);
    void connectPlaylistModes(KelvoPlaylistController *controller);
    void connectMusicButtons(KelvoRendererController *controller);
    void connectVideoButtons(KelvoRendererController *controller);
    void connectPlaybackRequests(KelvoRendererController *controller);

    // Playback and playlist display: KelvoMainWindow_playback.cpp
public:
    /// Shows column 1 of the playlist's item model; not owned, null is ignored.
    void showPlaylist(QAbstractItemModel *model);
    /// Takes the model out of the playlist view.
    void clearPlaylist();
    /// While held, the view keeps its model when it is cleared to be shown again. Taking a model away and giving it back
    /// costs as much as copying ten rows, and the view follows its model without it.
    void holdPlaylistView(bool hold);
    /// Adds or removes the playlist's entry in all three playlist combo boxes, which hold the same entries.
    void showPlaylistName(const QString &uuid, const QString &name, bool add);
    /// Selects the playlist with this uuid, if it is listed.
    void updateCurrentPlaylist(const QString &uuid);
    /// Makes this row of the playlist current; a negative index clears the selection.
    void updateCurrentPlaylistIndex(int index);
    /// Row of the playlist view's current item, -1 when there is none.
    int getCurrentPlaylistIndex() const;
    /// The lowest and the highest selected row of the playlist view, -1 when nothing is selected.
    int firstSelectedPlaylistIndex() const;
    int lastSelectedPlaylistIndex() const;
    /// Adds the renderer's entry unless its uuid is listed already, or removes it.
    void showRendererName(const QString &name, const QString &uuid, bool add);
    void changeRendererName(const QString &uuid, const QString &newName);
    void clearMetadata();
    void showMetadata(const QString &key, const QString &value);
    /// Seconds; resets the shown position to 0.
    void showDuration(int seconds);
    /// Seconds. A slider that the user holds stays where it is.
    void showPosition(uint seconds);
    /// Shows a progress bar in place of the slider; fraction 0..1, text may be empty.
    void showBufferingInfo(const QString &text, float fraction);
    void showPolicyOverride(bool overridden);

    // Video surface: KelvoMainWindow_video.cpp
public:
    /// Native id of the window that video goes to; 0 while the window is closing.
    uint getVideoXID() const;
    /// Where in that window the video goes, in native pixels.
    QRect getVideoRectangle() const;
    /// The filter sees the events of the widget behind getVideoRectangle(), so it learns when that changes.
    void watchVideoRectangle(QObject *filter);
    /// Paints the video label in 0xRRGGBB; 0 means no colour key.
    void setVideoLabelColorKey(uint key);

protected:
    void mousePressEvent(QMouseEvent *event) override;

    bool m_videoFullScreen = false; // the window itself knows only the way back

    // Query and browse result display: KelvoMainWindow_results.cpp
public:
    /// Models are not owned; column 1 is shown. Null leaves the query results as they are.
    void showQueryResults(QAbstractItemModel *model);
    int selectedQueryResultItemIndex() const;
    /// Null empties the browse results.
    void showBrowseResults(QAbstractItemModel *model);
    int selectedBrowseResultItemIndex() const;
    QModelIndex selectedBrowseResultModelIndex(int column) const;
    int browseResultCount() const;
    void clearBrowseResults();
    void updateQueryErrorLabel(const QString &text);
    void updateBrowseErrorLabel(const QString &text);
    void showBrowseResultThumbnail(const QString &text);
    /// Image data in any format that the image loader detects.
    void showBrowseResultThumbnail(const QByteArray &imageData);
    void addBrowseMetadata(const QString &key, const QString &value);
    void clearBrowseMetadata();
    void showBrowseButton();
    void showBrowseCancelButton();
    void setBrowseButtonsEnabled(bool enabled);
    void showExecuteQueryButton();
    void showQueryCancelButton();
    /// Index of the chosen built-in query.
    int getQuery() const;

private:
    void launchBrowserFor(int selectedRow);

    // Dialogs: KelvoMainWindow_dialogs.cpp. Assistive technology reaches menu entries behind a dialog that is open: asked
    // for once more, it stays as it is, and what is returned is as if it had been cancelled.
public:
    /// Runs the dialog with `name` proposed, puts what it then holds into `name`, returns whether it was accepted.
    bool showCreatePlaylistDialog(QString &name);
    /// Returns at once; errors collect in the open dialog.
    void showRendererErrorLog(uint code, const QString &text);
    /// The renderer may be null.
    void showAdjustVolumeDialog(uint volume, KelvoRenderer *renderer);
    void addUriToPlayUriDialog(const QString &uri);
    /// Runs the dialog for plug-ins, which takes the items over. Returns what is selected when it was accepted,
    /// otherwise `selected`. While it is open already, nothing happens and the items stay the caller's.
    QList<QListWidgetItem *> showSelectItemsDialog(
        const QList<QListWidgetItem *> &available, const QList<QListWidgetItem *> &selected);
    bool isSelectItemsDialogOpen() const;
    /// The same with the dialog for playlists. Nothing calls it: "Load..." only logs.
    QList<QListWidgetItem *> showSelectPlaylistsDialog(
        const QList<QListWidgetItem *> &available, const QList<QListWidgetItem *> &selected);
    /// Runs the dialog with one flag for each source, puts the checks that it then has into `selected`, returns whether
    /// it was accepted. While it is open already, nothing happens.
    bool showSelectSourcesDialog(const QList<KelvoSource *> &sources, QList<bool> &selected);
    bool isSelectSourcesDialogOpen() const;
    /// Names of the sources that are checked in the dialog.
    QStringList getSelectedSources() const;
    /// Runs the dialog, which asks the controller for the properties of the source chosen in it.
    void showSourcePropertiesDialog(KelvoSourceController *controller, const QList<KelvoSource *> &sources);
    void showSourceProperty(const QString &key, const QString &value);
    /// Runs the dialog with its proposals, returns whether it was accepted.
    bool showSearchDialog();
    void getSearchConditions(QString &term, int &item) const;

Q_SIGNALS:
    void play();
    void playUri(const QUrl &, const QString &contentType = QString());
    void pause();
    void resume();
    void seek(int position);
    void videoScreenXIDChanged(uint xid);
    void itemDoubleClicked(uint index);
    void queryResultsAvailable();
    void browseResultsAvailable();
    void currentPlaylistChanged(const QString &uuid);
    void currentRendererChanged(const QString &uuid);
    void immediateSeek(uint position);

public Q_SLOTS:
    void showMuted(bool muteOn);
    void showShowPauseFrame(bool showPauseFrameOn);
    void showShuffled(bool shuffleOn);
    void showRepeated(const QString &repeatActionName);
    void showPlayButton();
    void showPauseButton();
    void showResumeButton();
    void showFetchRestButton();
    void setQueryButtonsEnabled(bool enabled);

private Q_SLOTS:
    void showHelpDialog();
    void showQueryPropertiesDialog();
    void showPlayUriDialog();
    void showPlaybackCompletedDialog();
    void playUriDialogAccepted();
    void syncPlaylists(int index);
    void emitIndex(const QModelIndex &item);
    void emitPosition();
    void hideFullScreenVideo();
    void startQueryDebugTimer();
    void stopQueryDebugTimer();
    void updateQueryResultLabel();
    void updateBrowseResultLabel();
    void currentRendererChanged(int index);
    void immediateSeekRequest();
    void launchBrowser();

private:
    static QList<QListWidgetItem *> runSelectItemsDialog(KelvoSelectItemsDialog *dialog,
        const QList<QListWidgetItem *> &available, const QList<QListWidgetItem *> &selected);

    KelvoHelpDialog *m_helpDialog = nullptr;
    KelvoPlaylistDialog *m_playlistDialog = nullptr;
    KelvoPlayUriDialog *m_playUriDialog = nullptr;
    KelvoRendererErrorLogDialog *m_rendererErrorLogDialog = nullptr;
    KelvoSearchDialog *m_searchDialog = nullptr;
    KelvoSourceDialog *m_sourceDialog = nullptr;
    KelvoSourcePropertiesDialog *m_sourcePropertiesDialog = nullptr;
    KelvoVolumeDialog *m_volumeDialog = nullptr;
    KelvoSelectItemsDialog *m_loadPluginsDialog = nullptr;
    KelvoSelectItemsDialog *m_loadPlaylistsDialog = nullptr; // nothing shows it
    KelvoFullScreenVideoWidget *m_fullScreenVideoWidget = nullptr;
    bool m_isPlaylistViewHeld = false;
    QElapsedTimer m_queryDebugTimer;
    KelvoGUIMain *m_guiMain;
};
