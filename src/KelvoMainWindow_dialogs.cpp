// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

#include "Announcer.h"
#include "KelvoGUIMain.h"
#include "KelvoHelpDialog.h"
#include "KelvoPlayUriDialog.h"
#include "KelvoPlaylistDialog.h"
#include "KelvoQueryPropertiesDialog.h"
#include "KelvoRendererErrorLogDialog.h"
#include "KelvoSearchDialog.h"
#include "KelvoSelectItemsDialog.h"
#include "KelvoSourceController.h"
#include "KelvoSourceDialog.h"
#include "KelvoSourcePropertiesDialog.h"
#include "KelvoVolumeDialog.h"

#include <QDebug>
#include <QMessageBox>

namespace {
/// False when it is open already, however it would end.
bool runUnlessOpen(QDialog *dialog)
{
    return !dialog->isVisible() && dialog->exec() == QDialog::Accepted;
}
} // namespace

void KelvoMainWindow::showHelpDialog()
{
    qDebug() << "KelvoMainWindow::showHelpDialog";
    runUnlessOpen(m_helpDialog);
}

void KelvoMainWindow::showQueryPropertiesDialog()
{
    qDebug() << "void KelvoMainWindow::showQueryPropertiesDialog()";
    const KelvoSourceController *sources = m_guiMain->sources();
    auto *dialog = findChild<KelvoQueryPropertiesDialog *>();
    if (!dialog) {
        dialog = new KelvoQueryPropertiesDialog(this);
        connect(
            dialog, SIGNAL(queryPropertiesChanged(int, int)), sources, SLOT(setNewQueryProperties(int, int)));
    }
    runUnlessOpen(dialog);
}

bool KelvoMainWindow::showCreatePlaylistDialog(QString &name)
{
    qDebug() << "KelvoMainWindow::showCreatePlaylistDialog";
    if (m_playlistDialog->isVisible())
        return false;
    m_playlistDialog->setText(name);
    // A dialog goes with its window, which can be closed meanwhile.
    const QPointer<KelvoPlaylistDialog> dialog = m_playlistDialog;
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (dialog)
        name = dialog->text();
    return accepted;
}

void KelvoMainWindow::showPlayUriDialog()
{
    qDebug() << "KelvoMainWindow::showPlayUriDialog";
    if (m_playUriDialog->isVisible())
        return;
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
    Announcer::say(this, box.text());
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
    if (m_volumeDialog->isVisible())
        return;
    m_volumeDialog->setVolume(int(volume), renderer); // a negative one is the least, not the greatest
    m_volumeDialog->exec();
}

QList<QListWidgetItem *> KelvoMainWindow::showSelectItemsDialog(
    const QList<QListWidgetItem *> &available, const QList<QListWidgetItem *> &selected)
{
    qDebug() << "KelvoMainWindow::showSelectItemsDialog";
    return runSelectItemsDialog(m_loadPluginsDialog, available, selected);
}

bool KelvoMainWindow::isSelectItemsDialogOpen() const
{
    return m_loadPluginsDialog->isVisible();
}

QList<QListWidgetItem *> KelvoMainWindow::showSelectPlaylistsDialog(
    const QList<QListWidgetItem *> &available, const QList<QListWidgetItem *> &selected)
{
    qDebug() << "KelvoMainWindow::showSelectPlaylistsDialog";
    return runSelectItemsDialog(m_loadPlaylistsDialog, available, selected);
}

QList<QListWidgetItem *> KelvoMainWindow::runSelectItemsDialog(KelvoSelectItemsDialog *dialog,
    const QList<QListWidgetItem *> &available, const QList<QListWidgetItem *> &selected)
{
    if (dialog->isVisible())
        return selected;
    // The selected ones first: those are then left out of the others.
    dialog->setSelectedItems(selected, true);
    dialog->setAvailableItems(available, true);
    return dialog->exec() == QDialog::Accepted ? dialog->selectedItems() : selected;
}

bool KelvoMainWindow::showSelectSourcesDialog(const QList<KelvoSource *> &sources, QList<bool> &selected)
{
    qDebug() << "KelvoMainWindow::showSelectSourcesDialog";
    if (isSelectSourcesDialogOpen())
        return false;
    m_sourceDialog->setSources(sources, selected);
    const QPointer<KelvoSourceDialog> dialog = m_sourceDialog;
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (dialog)
        selected = dialog->selectedSources();
    return accepted;
}

bool KelvoMainWindow::isSelectSourcesDialogOpen() const
{
    return m_sourceDialog->isVisible();
}

QStringList KelvoMainWindow::getSelectedSources() const
{
    qDebug() << "KelvoMainWindow::getSelectedSources";
    return m_sourceDialog->selectedSourceNames();
}

void KelvoMainWindow::showSourcePropertiesDialog(
    KelvoSourceController *controller, const QList<KelvoSource *> &sources)
{
    qDebug() << "KelvoMainWindow::showSourcePropertiesDialog";
    if (m_sourcePropertiesDialog->isVisible())
        return;
    m_sourcePropertiesDialog->disconnect(SIGNAL(getProperties(QString)), controller);
    m_sourcePropertiesDialog->disconnect(SIGNAL(signIn()), controller);
    m_sourcePropertiesDialog->disconnect(SIGNAL(signOut()), controller);
    connect(m_sourcePropertiesDialog, SIGNAL(getProperties(QString)), controller,
        SLOT(invokeGetProperties(QString)));
    connect(m_sourcePropertiesDialog, SIGNAL(signIn()), controller, SLOT(invokeSignIn()));
    connect(m_sourcePropertiesDialog, SIGNAL(signOut()), controller, SLOT(invokeSignOut()));
    m_sourcePropertiesDialog->setSources(sources);
    m_sourcePropertiesDialog->exec();
}

void KelvoMainWindow::showSourceProperty(const QString &key, const QString &value)
{
    qDebug() << "KelvoMainWindow::showSourceProperty";
    m_sourcePropertiesDialog->addProperty(key, value);
}

bool KelvoMainWindow::showSearchDialog()
{
    qDebug() << "KelvoMainWindow::showSearchDialog";
    if (m_searchDialog->isVisible())
        return false;
    m_searchDialog->clear();
    return m_searchDialog->exec() == QDialog::Accepted;
}

void KelvoMainWindow::getSearchConditions(QString &term, int &item) const
{
    qDebug() << "KelvoMainWindow::getSearchConditions";
    term = m_searchDialog->searchTerm();
    item = m_searchDialog->searchItem();
}
