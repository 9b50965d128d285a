// SPDX-License-Identifier: MIT
#include "KelvoPlayUriDialog.h"

#include "CheckFrames.h"
#include "ComboLabels.h"
#include "FocusKeys.h"
#include "ListKeys.h"
#include "ListViews.h"
#include "UriListFile.h"

#include <QDebug>
#include <QDir>
#include <QStringListModel>

namespace {
const QString &uriListPath()
{
    static const QString path = QDir::homePath() + QStringLiteral("/qkelvo-gui-uris.txt");
    return path;
}
} // namespace

KelvoPlayUriDialog::KelvoPlayUriDialog(QWidget *parent)
    : QDialog(parent)
{
    setupUi(this);
    ComboLabels::add(this);
    qDebug() << "KelvoPlayUriDialog::KelvoPlayUriDialog";
    // The combo box's own kind of model takes ten times the time and memory for a file of a million lines.
    m_selectUriComboBox->setModel(new QStringListModel(m_selectUriComboBox));
    CheckFrames::makeVisible(m_isPlaylistCheckBox);
    ListViews::keepCurrentHighlighted(m_playlistView);
    ListViews::showElidedAsToolTip(m_playlistView);
    ListKeys::clickByMoving(m_playlistView);
    FocusKeys::startAt(m_selectUriComboBox);
    m_selectUriComboBox->clear();
    loadFile(uriListPath());
    connect(m_playButton, SIGNAL(clicked()), this, SLOT(checkIfItemSelected()));
    connect(m_cancelButton, SIGNAL(clicked()), this, SLOT(reject()));
    connect(m_enterUriButton, SIGNAL(clicked()), this, SLOT(addNewUriFromComboBox()));
    connect(
        m_playlistView, SIGNAL(itemClicked(QListWidgetItem *)), this, SLOT(updateItemUri(QListWidgetItem *)));
}

bool KelvoPlayUriDialog::loadFile(const QString &fileName)
{
    qDebug() << "bool KelvoPlayUriDialog::loadFile(const QString&)";
    m_selectUriComboBox->setMaximumSize(700, 30);
    const std::optional<QStringList> uris = UriListFile::read(fileName);
    if (!uris)
        return false;
    m_selectUriComboBox->addItems(*uris);
    return true;
}

QString KelvoPlayUriDialog::uri() const
{
    qDebug() << "KelvoPlayUriDialog::uri";
    return m_uri;
}

bool KelvoPlayUriDialog::isPlaylist() const
{
    qDebug() << "KelvoPlayUriDialog::isPlaylist";
    return m_isPlaylistCheckBox->isChecked();
}

void KelvoPlayUriDialog::addUri(const QString &uri)
{
    qDebug() << "KelvoPlayUriDialog::addUri";
    m_playlistView->addItem(uri);
}

void KelvoPlayUriDialog::clearUris()
{
    qDebug() << "KelvoPlayUriDialog::clearUris";
    m_playlistView->clear();
}

void KelvoPlayUriDialog::checkIfItemSelected()
{
    qDebug() << "KelvoPlayUriDialog::checkIfItemSelected " << m_uri;
    if (!m_uri.isEmpty())
        accept();
}

void KelvoPlayUriDialog::addNewUriFromComboBox()
{
    qDebug() << "KelvoPlayUriDialog::addNewUriFromComboBox";
    const QString uri = m_selectUriComboBox->currentText();
    if (!uri.isEmpty())
        m_playlistView->addItem(uri);
}

void KelvoPlayUriDialog::updateItemUri(QListWidgetItem *item)
{
    qDebug() << "KelvoPlayUriDialog::updateItemUri";
    m_uri = item->text();
}
