// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

#include "KelvoHelpDialog.h"
#include "KelvoPlayUriDialog.h"
#include "KelvoPlaylistDialog.h"
#include "KelvoRendererErrorLogDialog.h"
#include "KelvoSelectItemsDialog.h"
#include "KelvoVolumeDialog.h"

#include <QDebug>
#include <QMessageBox>

#include <limits>

void KelvoMainWindow::showHelpDialog()
{
    qDebug() << "KelvoMainWindow::showHelpDialog";
    m_helpDialog->exec();
}

void KelvoMainWindow::showQueryPropertiesDialog()
{
    qDebug() << "void KelvoMainWindow::showQueryPropertiesDialog()";
}

bool KelvoMainWindow::showCreatePlaylistDialog(QString &name)
{
    qDebug() << "KelvoMainWindow::showCreatePlaylistDialog";
    m_playlistDialog->setText(name);
    const bool accepted = m_playlistDialog->exec() == QDialog::Accepted;
    name = m_playlistDialog->text();
    return accepted;
}

void KelvoMainWindow::showPlayUriDialog()
{
    qDebug() << "KelvoMainWindow::showPlayUriDialog";
    m_playUriDialog->clearUris();
    m_playUriDialog->show();
}

void KelvoMainWindow::playUriDialogAccepted()
{
    qDebug() << "KelvoMainWindow::playUriDialogAccepted";
    const QString uri = m_playUriDialog->uri();
    if (uri.isEmpty())
        return;
    const auto contentType = m_playUriDialog->isPlaylist() ? QStringLiteral("audio/x-scpls") : QString();
    Q_EMIT playUri(QUrl::fromEncoded(uri.toUtf8()), contentType);
}

void KelvoMainWindow::addUriToPlayUriDialog(const QString &uri)
{
    qDebug() << "KelvoMainWindow::addUriToPlayUriDialog";
    m_playUriDialog->addUri(uri);
}

void KelvoMainWindow::showPlaybackCompletedDialog()
{
    QMessageBox box;
    box.setIcon(QMessageBox::Information);
    box.setText(QStringLiteral("Playback completed!"));
    box.exec();
}

void KelvoMainWindow::showRendererErrorLog(uint code, const QString &text)
{
    qDebug() << "KelvoMainWindow::showRendererErrorLog";
    if (!m_rendererErrorLogDialog->isVisible())
        m_rendererErrorLogDialog->show();
    m_rendererErrorLogDialog->appendError(code, text);
}

void KelvoMainWindow::showAdjustVolumeDialog(uint volume, KelvoRenderer *renderer)
{
    qDebug() << "KelvoMainWindow::showAdjustVolumeDialog";
    m_volumeDialog->setVolume(int(qMin(volume, uint(std::numeric_limits<int>::max()))), renderer);
    m_volumeDialog->exec();
}

QList<QListWidgetItem *> KelvoMainWindow::showSelectItemsDialog(
    const QList<QListWidgetItem *> &available, const QList<QListWidgetItem *> &selected)
{
    qDebug() << "KelvoMainWindow::showSelectItemsDialog";
    // The selected ones first: those are then left out of the others.
    m_loadPluginsDialog->setSelectedItems(selected, true);
    m_loadPluginsDialog->setAvailableItems(available, true);
    return m_loadPluginsDialog->exec() == QDialog::Accepted ? m_loadPluginsDialog->selectedItems() : selected;
}
