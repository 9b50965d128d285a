// SPDX-License-Identifier: MIT
#include "KelvoPlayUriDialog.h"

#include "ListViews.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringConverter>
#include <QStringListModel>
#include <QTextStream>

namespace {
const QString &uriListPath()
{
    static const QString path = QDir::homePath() + QStringLiteral("/qkelvo-gui-uris.txt");
    return path;
}

QString readText(QFile &file)
{
    const QByteArray bytes = file.readAll();
    return QStringDecoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8))(bytes);
}
} // namespace

KelvoPlayUriDialog::KelvoPlayUriDialog(QWidget *parent)
    : QDialog(parent)
{
    setupUi(this);
    qDebug() << "KelvoPlayUriDialog::KelvoPlayUriDialog";
    // The combo box's own kind of model takes ten times the time and memory for a file of a million lines.
    m_selectUriComboBox->setModel(new QStringListModel(m_selectUriComboBox));
    ListViews::keepCurrentHighlighted(m_playlistView);
    ListViews::showElidedAsToolTip(m_playlistView);
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
    // A pipe or a device may never come to an end.
    if (!QFileInfo(fileName).isFile())
        return false;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    // Read as a whole: from the file itself, the stream would look through a long line again with every block.
    QString text = readText(file);
    QTextStream stream(&text);
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
