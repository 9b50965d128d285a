// SPDX-License-Identifier: MIT
#include "ItemList.h"

#include <QStandardItemModel>

namespace {
enum Column { Id, Title, Uri, Columns };
} // namespace

void ItemList::append(KelvoGeneralSourcePlaylist &playlist, const QUrl &url)
{
    auto *model = qobject_cast<QStandardItemModel *>(playlist.underlyingModel());
    QList<QStandardItem *> row;
    for (int column = 0; column < Columns; ++column)
        row.append(new QStandardItem);
    row.at(Id)->setText(QString::number(model->rowCount()));
    row.at(Title)->setText(url.fileName());
    row.at(Uri)->setText(url.toString(QUrl::FullyEncoded));
    model->appendRow(row);
}

std::unique_ptr<KelvoGeneralSourcePlaylist> ItemList::make(const QString &name, const QList<QUrl> &urls)
{
    auto playlist
        = std::make_unique<KelvoGeneralSourcePlaylist>(KelvoPlaylist::getNewPlaylistId(), name, QString());
    // Goes with the playlist.
    auto *model = new QStandardItemModel(0, Columns, playlist.get());
    model->setHorizontalHeaderLabels({QStringLiteral("id"), QStringLiteral("title"), QStringLiteral("url")});
    playlist->setUnderlyingModel(model);
    for (const QUrl &url : urls)
        append(*playlist, url);
    return playlist;
}
