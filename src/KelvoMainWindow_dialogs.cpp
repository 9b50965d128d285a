// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

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

void KelvoMainWindow::showHelpDialog()
{
    qDebug() << "KelvoMainWindow::showHelpDialog";
    m_helpDialog->exec();
}

void KelvoMainWindow::showQueryPropertiesDialog()
{
    qDebug() << "void KelvoMainWindow::showQueryPropertiesDialog()";
    const KelvoSourceController *sources = m_guiMain->sources();
    if (!m_queryPropertiesDialog) {
        m_queryPropertiesDialog = new KelvoQueryPropertiesDialog(this);
        connect(m_queryPropertiesDialog, SIGNAL(queryPropertiesChanged(int, int)), sources,
            SLOT(setNewQueryProperties(int, int)));
    }
    m_queryPropertiesDialog->exec();
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
    m_volumeDialog->setVolume(int(volume), renderer); // a negative one is the least, not the greatest
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

bool KelvoMainWindow::showSelectSourcesDialog(const QList<KelvoSource *> &sources, QList<bool> &selected)
{
    qDebug() << "KelvoMainWindow::showSelectSourcesDialog";
    m_sourceDialog->setSources(sources, selected);
    const bool accepted = m_sourceDialog->exec() == QDialog::Accepted;
    selected = m_sourceDialog->selectedSources();
    return accepted;
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
    m_searchDialog->clear();
    return m_searchDialog->exec() == QDialog::Accepted;
}

void KelvoMainWindow::getSearchConditions(QString &term, int &item) const
{
    qDebug() << "KelvoMainWindow::getSearchConditions";
    term = m_searchDialog->searchTerm();
    item = m_searchDialog->searchItem();
}
