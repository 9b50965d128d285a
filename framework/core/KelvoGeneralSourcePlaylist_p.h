// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGeneralSourcePlaylist.h"
#include "playlist/PlaylistItemModel.h"
#include "playlist/PlaylistItems.h"
#include "playlist/PlaylistOrder.h"

#include <QPersistentModelIndex>
#include <QPointer>

/// The playlist's items, their order, and how both follow the underlying model.
///
/// Three orders of slots are kept: that of the underlying model's rows (a removed item's row holds NoSlot, so
/// that it does not come back), the play order (in `view`), and, while shuffled, the order of before.
struct KelvoGeneralSourcePlaylist::Private
{
    using Slot = PlaylistItems::Slot;
    using Key = PlaylistItems::Key;
    using Slots = std::vector<Slot>;

    explicit Private(KelvoGeneralSourcePlaylist *playlist)
        : q(playlist)
    {
    }

    // Editing
    void arrange(Slots order);
    void remove(int from, int count);
    void remove(std::vector<Key> keys);
    void forgetArrangement();
    bool followsModelOrder() const { return !sorted && !shuffled; }
    Slots modelOrder() const;

    // Following the underlying model (KelvoGeneralSourcePlaylist_following.cpp)
    void follow(QAbstractItemModel *newModel);
    void connectRows();
    void connectColumns();
    void reload();
    Slots readRows(int first, int last);
    void rowsInserted(int first, int last);
    void rowsRemoved(int first, int last);
    void rowsMoved(int first, int last, int destination);
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles);
    void headersChanged();
    void columnsChanged();
    void rememberLayout();
    void restoreLayout();
    void modelDestroyed();
    bool inStep(int growth);
    int playIndexFor(int row) const;
    void rereadRows(int first, int last);
    void takeModelOrder();

    KelvoGeneralSourcePlaylist *const q;
    QString id;
    QString name;
    QString sourceUuid;
    int repeatMode = KelvoPlaylist::RepeatOff;

    PlaylistItems items;
    PlaylistOrder rows;
    PlaylistItemModel view{items, rows};
    bool sorted = false; // The play order is one of its own, also after unshuffle().
    bool shuffled = false;
    std::vector<Key> orderBeforeShuffle;

    QPointer<QAbstractItemModel> model;
    std::unique_ptr<QObject> following; // Context of the connections to the model.
    std::vector<QPersistentModelIndex> layoutMarks;
};
