// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGeneralSourcePlaylist.h"

#include <QStandardItemModel>

/// Playlists of numbered items for both ends of a test.
namespace SharedLists {

inline void appendRows(QStandardItemModel *model, int count)
{
    const int first = model->rowCount();
    for (int row = first; row < first + count; ++row) {
        const QString number = QString::number(row);
        model->appendRow({new QStandardItem("urn:song:" + number), new QStandardItem("Song " + number),
            new QStandardItem("file:///music/song%20" + number + ".mp3"),
            new QStandardItem(QString::number(100 + row)), new QStandardItem("audio/mpeg")});
    }
}

inline KelvoGeneralSourcePlaylist *make(const QString &id, const QString &name, int count)
{
    auto *playlist = new KelvoGeneralSourcePlaylist(id, name, "KelvoTrackerSource");
    auto *model = new QStandardItemModel(playlist);
    model->setHorizontalHeaderLabels({"id", "title", "url", "duration", "mimeType"});
    appendRows(model, count);
    playlist->setUnderlyingModel(model);
    return playlist;
}

inline QStandardItemModel *modelOf(KelvoPlaylist *playlist)
{
    return qobject_cast<QStandardItemModel *>(qobject_cast<KelvoPlaylistBase *>(playlist)->underlyingModel());
}

} // namespace SharedLists
