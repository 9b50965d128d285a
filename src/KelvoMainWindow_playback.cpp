// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

#include "Announcer.h"
#include "Captions.h"
#include "ListKeys.h"
#include "ListViews.h"
#include "TimeText.h"

#include <QDebug>

namespace {
const auto playCaption = QStringLiteral("Play");
const auto pauseCaption = QStringLiteral("Pause");
const auto resumeCaption = QStringLiteral("Resume");
// What the red captions say to those who see them.
const auto overriddenNote = QStringLiteral("Playback functions are overridden by a policy");
const auto liftedNote = QStringLiteral("Playback functions are no longer overridden");

enum ProgressPage { SliderPage = 0, ProgressBarPage = 1 };
constexpr int rangeOfUnknownDuration = 10; // keeps the sliders usable

int findUuid(const QComboBox *combo, const QString &uuid)
{
    return combo->findData(uuid, Qt::UserRole, Qt::MatchExactly | Qt::MatchCaseSensitive);
}

/// The toolkit would choose a neighbour of the chosen entry that goes, and report a choice when only rows have moved:
/// neither is somebody's picking.
void removeQuietly(QComboBox *combo, int index)
{
    const QSignalBlocker blocker(combo);
    const bool chosen = combo->currentIndex() == index;
    combo->removeItem(index);
    if (chosen)
        combo->setCurrentIndex(-1);
}

/// The caption says what a press would do, and thereby what goes on.
void showPlayCaption(
    std::initializer_list<QToolButton *> buttons, const QString &caption, const QString &state)
{
    if ((*buttons.begin())->text() != caption)
        Announcer::say(*buttons.begin(), state);
    for (QToolButton *button : buttons)
        button->setText(caption);
}

} // namespace

void KelvoMainWindow::setUpPlaybackDisplay()
{
    for (QToolButton *button : {m_music_playButton, m_video_playButton})
        Captions::makeRoom(button, {playCaption, pauseCaption, resumeCaption});
    ListViews::keepCurrentHighlighted(m_music_playlistView);
    ListViews::showElidedAsToolTip(m_music_playlistView);
    ListKeys::doubleClickByReturn(m_music_playlistView);
}

void KelvoMainWindow::showPlaylist(QAbstractItemModel *model)
{
    qDebug() << "KelvoMainWindow::showPlaylist";
    if (model && model != m_music_playlistView->model())
        ListViews::setModel(m_music_playlistView, model);
}

void KelvoMainWindow::clearPlaylist()
{
    qDebug() << "KelvoMainWindow::clearPlaylist";
    if (!m_isPlaylistViewHeld)
        ListViews::setModel(m_music_playlistView, nullptr);
}

void KelvoMainWindow::holdPlaylistView(bool hold)
{
    m_isPlaylistViewHeld = hold;
}

void KelvoMainWindow::showPlaylistName(const QString &uuid, const QString &name, bool add)
{
    qDebug() << "KelvoMainWindow::showPlaylistName";
    if (add) {
        for (QComboBox *combo : {m_music_playlistCombo, m_browse_playlistCombo, m_query_playlistCombo})
            combo->addItem(name, uuid);
        return;
    }
    const int index = findUuid(m_music_playlistCombo, uuid);
    if (index < 0)
        return;
    // The boxes follow each other by index, which must not happen while they hold different entries: the music
    // box goes last and tells the others.
    for (QComboBox *combo : {m_browse_playlistCombo, m_query_playlistCombo}) {
        const QSignalBlocker blocker(combo);
        combo->removeItem(index);
    }
    m_music_playlistCombo->removeItem(index);
}

void KelvoMainWindow::updateCurrentPlaylist(const QString &uuid)
{
    qDebug() << "KelvoMainWindow::updateCurrentPlaylist";
    const int index = findUuid(m_music_playlistCombo, uuid);
    if (index >= 0)
        m_music_playlistCombo->setCurrentIndex(index);
}

void KelvoMainWindow::updateCurrentPlaylistIndex(int index)
{
    qDebug() << "KelvoMainWindow::updateCurrentPlaylistIndex (index=" << index << ")";
    if (index < 0)
        ListViews::clearHighlight(m_music_playlistView);
    else if (const QAbstractItemModel *model = m_music_playlistView->model())
        m_music_playlistView->setCurrentIndex(model->index(index, ListViews::shownColumn));
}

int KelvoMainWindow::getCurrentPlaylistIndex() const
{
    qDebug() << "KelvoMainWindow::int getCurrentPlaylistIndex";
    return ListViews::currentRow(m_music_playlistView);
}

int KelvoMainWindow::firstSelectedPlaylistIndex() const
{
    qDebug() << "KelvoMainWindow::firstSelectedPlaylistIndex";
    return ListViews::selectedRows(m_music_playlistView).first;
}

int KelvoMainWindow::lastSelectedPlaylistIndex() const
{
    qDebug() << "KelvoMainWindow::lastSelectedPlaylistIndex";
    return ListViews::selectedRows(m_music_playlistView).last;
}

void KelvoMainWindow::showRendererName(const QString &name, const QString &uuid, bool add)
{
    qDebug() << "KelvoMainWindow::showRendererName," << name << uuid << add;
    const int index = findUuid(m_music_rendererCombo, uuid);
    if (add && index < 0)
        m_music_rendererCombo->addItem(name, uuid);
    else if (!add && index >= 0)
        removeQuietly(m_music_rendererCombo, index);
}

void KelvoMainWindow::changeRendererName(const QString &uuid, const QString &newName)
{
    qDebug() << "KelvoMainWindow::changeRendererName, uuid =" << uuid << "newName =" << newName;
    const int index = findUuid(m_music_rendererCombo, uuid);
    if (index >= 0)
        m_music_rendererCombo->setItemText(index, newName);
}

void KelvoMainWindow::clearMetadata()
{
    qDebug() << "KelvoMainWindow::clearMetadata";
    m_music_metadataField->clear();
    m_video_metadataField->clear();
}

void KelvoMainWindow::showMetadata(const QString &key, const QString &value)
{
    ListViews::appendLine(m_music_metadataField, key, value);
    ListViews::appendLine(m_video_metadataField, key, value);
}

void KelvoMainWindow::showDuration(int seconds)
{
    qDebug() << "KelvoMainWindow::showDuration" << seconds;
    const QString text = TimeText::duration(seconds);
    m_music_durationLabel->setText(text);
    m_video_durationLabel->setText(text);
    for (QSlider *slider : {m_music_durationSlider, m_video_durationSlider}) {
        slider->setRange(0, seconds > 0 ? seconds : rangeOfUnknownDuration);
        slider->setValue(0);
    }
}

void KelvoMainWindow::showPosition(uint seconds)
{
    m_music_progressStack->setCurrentIndex(SliderPage);
    m_video_progressStack->setCurrentIndex(SliderPage);
    const QString text = TimeText::withPosition(m_music_durationLabel->text(), seconds);
    m_music_durationLabel->setText(text);
    m_video_durationLabel->setText(text);
    m_music_durationSlider->follow(seconds);
    m_video_durationSlider->follow(seconds);
}

void KelvoMainWindow::showBufferingInfo(const QString &text, float fraction)
{
    if (m_music_progressStack->currentIndex() != ProgressBarPage)
        Announcer::say(this, text.isEmpty() ? QStringLiteral("Buffering") : text);
    m_music_progressStack->setCurrentIndex(ProgressBarPage);
    m_video_progressStack->setCurrentIndex(ProgressBarPage);
    const int percent = int(fraction * 100);
    m_music_rendererProgress->setValue(percent);
    m_video_rendererProgress->setValue(percent);
    if (text.isEmpty())
        return;
    m_music_durationLabel->setText(text.left(4) + QStringLiteral("\n..."));
    m_video_durationLabel->setText(text.left(8));
}

void KelvoMainWindow::showPlayButton()
{
    showPlayCaption({m_music_playButton, m_video_playButton}, playCaption, QStringLiteral("Stopped"));
    m_menuPause_At->setEnabled(true);
}

void KelvoMainWindow::showPauseButton()
{
    showPlayCaption({m_music_playButton, m_video_playButton}, pauseCaption, QStringLiteral("Playing"));
    m_menuPause_At->setEnabled(false);
}

void KelvoMainWindow::showResumeButton()
{
    showPlayCaption({m_music_playButton, m_video_playButton}, resumeCaption, QStringLiteral("Paused"));
}

void KelvoMainWindow::showPolicyOverride(bool overridden)
{
    const QColor color = overridden ? Qt::red : Qt::black;
    const QString note = overridden ? overriddenNote : QString();
    if (m_music_playButton->accessibleDescription() != note)
        Announcer::say(this, overridden ? overriddenNote : liftedNote);
    for (QToolButton *button :
        {m_music_playButton, m_music_stopButton, m_music_prevButton, m_music_nextButton,
            m_music_seekBackButton, m_music_seekForwButton, m_video_playButton, m_video_stopButton,
            m_video_prevButton, m_video_nextButton, m_video_seekBackButton, m_video_seekForwButton}) {
        Captions::paint(button, color);
        button->setAccessibleDescription(note);
    }
}

void KelvoMainWindow::showMuted(bool muteOn)
{
    m_actionMute->setChecked(muteOn);
}

void KelvoMainWindow::showShowPauseFrame(bool showPauseFrameOn)
{
    m_actionShowPauseFrame->setChecked(showPauseFrameOn);
}

void KelvoMainWindow::showShuffled(bool shuffleOn)
{
    m_actionShuffle->setChecked(shuffleOn);
}

void KelvoMainWindow::showRepeated(const QString &repeatActionName)
{
    m_actionRepeat->setText(repeatActionName);
}

void KelvoMainWindow::syncPlaylists(int index)
{
    qDebug() << "KelvoMainWindow::syncPlaylists";
    // Each box that moves comes back here through its own change signal, so one choice is reported three times.
    // An emptied box reports -1 again each time it is set to -1 or to an entry that it has not got yet: the boxes
    // would chase each other without an end.
    for (QComboBox *combo : {m_music_playlistCombo, m_browse_playlistCombo, m_query_playlistCombo}) {
        if (combo->currentIndex() != index && index < combo->count())
            combo->setCurrentIndex(index);
    }
    Q_EMIT currentPlaylistChanged(m_music_playlistCombo->itemData(index).toString());
}

void KelvoMainWindow::currentRendererChanged(int index)
{
    qDebug() << "KelvoMainWindow::currentRendererChanged";
    Q_EMIT currentRendererChanged(m_music_rendererCombo->itemData(index).toString());
}

void KelvoMainWindow::emitIndex(const QModelIndex &item)
{
    qDebug() << "KelvoMainWindow::emitIndex";
    Q_EMIT itemDoubleClicked(uint(item.row()));
}

void KelvoMainWindow::emitPosition()
{
    qDebug() << "KelvoMainWindow::emitPosition";
    if (const auto *slider = qobject_cast<QSlider *>(sender()))
        Q_EMIT seek(slider->value());
}

void KelvoMainWindow::immediateSeekRequest()
{
    qDebug() << "KelvoMainWindow::immediateSeekRequest";
    if (const QObject *action = sender())
        Q_EMIT immediateSeek(action->property("pause-at").toUInt());
}
