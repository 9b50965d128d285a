// SPDX-License-Identifier: MIT
#include "KelvoPlayUriDialog.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QTextStream>

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
    qDebug() << "KelvoPlayUriDialog::KelvoPlayUriDialog";
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
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    QTextStream stream(&file);
    QStringList uris;
    for (QString line = stream.readLine(); !line.isNull(); line = stream.readLine())
        uris.append(line);
    m_selectUriComboBox->addItems(uris);
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
