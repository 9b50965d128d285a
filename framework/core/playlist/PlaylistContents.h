// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistItemModel.h"
#include "PlaylistItems.h"
#include "PlaylistOrder.h"

#include <QObject>

/// A playlist's items and their order, and what edits do to both.
///
/// Three orders of slots are kept: that of the underlying model's rows (a removed item's row holds NoSlot, so
/// that it does not come back), the play order (in the item model), and, while shuffled, the order of before.
class PlaylistContents : public QObject
{
    Q_OBJECT
public:
    using Slot = PlaylistItems::Slot;
    using Slots = std::vector<Slot>;

    PlaylistItemModel &itemModel() { return m_view; }
    int count() const { return m_view.order().size(); }
    KelvoMediaInfo mediaInfoAt(int index) const { return m_items.mediaInfo(m_view.order().at(index)); }
    int indexOf(const QString &mediaUuid) const;

    // Edits of the playlist, which the underlying model does not hear of
    bool isShuffled() const { return m_shuffled; }
    void shuffle();
    void unshuffle();
    void sortByTitle(bool descending);
    void sortByDuration(bool descending);
    void remove(int from, int count);

    // Edits of the underlying model
    /// The slot of each row.
    const Slots &rows() const { return m_rows.slots(); }
    const PlaylistColumns &columns() const { return m_view.columns(); }
    /// All rows of the model take the place of what there is. Null: an empty list.
    void load(const QAbstractItemModel *model);
    void insertRows(const QAbstractItemModel &model, int first, int last);
    void removeRows(int first, int last);
    /// @param rows  the same slots in another order
    void reorderRows(Slots rows);
    void rereadRows(const QAbstractItemModel &model, int first, int last);
    void setColumns(const PlaylistColumns &columns) { m_view.setColumns(columns); }
    /// The model is being destroyed, too late to read anything from it: what is kept was read before.
    void detach();

Q_SIGNALS:
    /// As KelvoPlaylist::contentsChanged().
    void changed(uint from, uint removed, uint added);

private:
    using Key = PlaylistItems::Key;

    bool followsModelOrder() const { return !m_sorted && !m_shuffled; }
    Slots modelOrder() const;
    Slots readRows(const QAbstractItemModel &model, int first, int last);
    int playIndexFor(int row) const;
    void arrange(Slots order);
    void arrangeForGood(Slots order);
    void forgetArrangement();
    void remove(std::vector<Key> keys);

    PlaylistItems m_items;
    PlaylistOrder m_rows;
    PlaylistItemModel m_view{m_items, m_rows};
    bool m_sorted = false; // The play order is one of its own, also after unshuffle().
    bool m_shuffled = false;
    std::vector<Key> m_orderBeforeShuffle;
};
