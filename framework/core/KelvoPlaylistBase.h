// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlaylist.h"

/// Base of the playlists whose items come from an item model (the "underlying model").
///
/// The playlist keeps its own order over the model's rows: sorting, shuffling and removing never touch the
/// model. Columns are found by header text ("id", "title", "url" or "uri", "duration", "artist", "album",
/// "mimeType", case-insensitive) and, in a model without such headers, by KelvoPlaylist::Column.
class KELVO_CORE_EXPORT KelvoPlaylistBase : public KelvoPlaylist
{
    Q_OBJECT
public:
    /// Without a model: an empty list.
    explicit KelvoPlaylistBase(QObject *parent = nullptr);
    ~KelvoPlaylistBase() override;

    /// Replaces all items by the model's rows, and follows the rows that come and go. Not owned, except that a
    /// model whose QObject parent is the playlist goes with it. When the model is destroyed before the playlist,
    /// the playlist keeps the items it has. Null: an empty list.
    virtual void setUnderlyingModel(QAbstractItemModel *model) = 0;
    /// Null when there is none, or it was destroyed.
    virtual QAbstractItemModel *underlyingModel() const = 0;
};
