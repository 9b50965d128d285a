// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"
#include "KelvoMediaInfo.h"

#include <QLatin1String>
#include <QObject>

class QAbstractItemModel;

/// An ordered list of media items. The order shown is the order played: sorting and shuffling reorder the list
/// itself. Lives on the GUI thread; owned by the framework once published.
class KELVO_CORE_EXPORT KelvoPlaylist : public QObject
{
    Q_OBJECT
public:
    /// What follows the last item: the first one, nothing, or each item itself.
    enum RepeatMode { RepeatAll = 0, RepeatOff = 1, RepeatOne = 2 };
    /// Orders for sort(); the first two go with SortKeyTitle, the others with SortKeyDuration.
    enum SortOrder { TitleAscending = 0, TitleDescending = 1, DurationAscending = 4, DurationDescending = 5 };
    /// Key for sort().
    static constexpr QLatin1String SortKeyTitle{"title"};
    /// Key for sort().
    static constexpr QLatin1String SortKeyDuration{"duration"};

    /// Columns of itemModel(); more may follow.
    enum Column { IdColumn = 0, TitleColumn = 1, UriColumn = 2, DurationColumn = 3 };

    /// The parent, if there is one, owns it.
    explicit KelvoPlaylist(QObject *parent = nullptr);
    ~KelvoPlaylist() override;

    /// A fresh id, used by no playlist before (RFC 4122, without braces).
    static QString getNewPlaylistId();

    /// Identity, unique in the registry and unchanging; not empty.
    virtual QString uuid() const = 0;
    /// What users read; may be empty and need not be unique.
    virtual QString name() const = 0;
    /// The items in playing order, title in column 1; owned by the playlist, lives as long as it.
    virtual QAbstractItemModel *itemModel() = 0;
    /// Number of items.
    virtual int count() const = 0;
    /// A default-constructed record when there is no such item.
    virtual KelvoMediaInfo mediaInfoAt(uint index) const = 0;
    /// Index of the item with this uuid (KelvoMediaInfo::uuid()), -1 when it is not in the list.
    virtual int indexOf(const QString &mediaUuid) const;

    /// False for the playlists of other processes: the editing operations then only warn.
    virtual bool isWritable() const { return true; }

    /// Whether unshuffle() would change the order.
    virtual bool isShuffled() const = 0;
    /// Puts the items into a random order.
    virtual void shuffle() = 0;
    /// Restores the order of before shuffle(), less what was removed.
    virtual void unshuffle() = 0;
    /// A RepeatMode; RepeatOff at start.
    virtual int repeatMode() const = 0;
    /// Unknown modes are refused with a warning.
    virtual void setRepeatMode(int mode) = 0;
    /// Sorts by (SortKeyTitle, TitleAscending) and so on; other combinations are refused with a warning. A
    /// sorted list is not shuffled any more. Titles compare by the locale and without case, items of unknown
    /// duration come last, equal items keep their order.
    virtual void sort(const QString &key, int order) = 0;
    /// An index past the end (also one made from -1) changes nothing and gives a warning.
    virtual void removeItem(uint index) = 0;
    /// Removes from..to, both included; `to` past the end is taken as the last item. A range that starts past
    /// the end or ends before it starts changes nothing and gives a warning.
    virtual void removeItems(uint from, uint to) = 0;
    /// Removes all items.
    virtual void clear() = 0;

Q_SIGNALS:
    /// After the items changed: at `from`, `removed` items went and `added` came. A reordering is all of them.
    void contentsChanged(uint from, uint removed, uint added);
    /// A RepeatMode; after setRepeatMode() with another one.
    void repeatModeChanged(int mode);
};
