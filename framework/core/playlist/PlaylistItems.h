// SPDX-License-Identifier: MIT
#pragma once

#include "../KelvoMediaInfo.h"
#include "PlaylistColumns.h"
#include "PlaylistOrder.h"

#include <QHash>
#include <QUuid>

#include <deque>
#include <vector>

/// What a playlist keeps of each item, so that it survives the model it came from. Texts that the model hands
/// out as QString are shared with it.
struct PlaylistItem
{
    QString id;
    QString title;
    QString url;
    quint32 artist = 0; // Texts that repeat from item to item are held once, see PlaylistItems::text().
    quint32 album = 0;
    quint32 mimeType = 0;
    qint32 duration = -1;

    bool operator==(const PlaylistItem &) const = default;
};

/// The items of a playlist and their names; knows no order.
///
/// An item's slot is its place in memory and may be used again after the item is gone; its key never is,
/// until clear() starts a new series of uuids.
class PlaylistItems
{
public:
    using Slot = PlaylistOrder::Slot;
    using Key = quint64;

    PlaylistItems();

    Slot add(PlaylistItem item);
    void remove(Slot slot);
    void clear();

    const PlaylistItem &at(Slot slot) const { return m_entries[slot].item; }
    /// False when nothing changed.
    bool update(Slot slot, PlaylistItem item);
    PlaylistItem readRow(const QAbstractItemModel &model, int row, const PlaylistColumns &columns);

    QString text(quint32 number) const { return m_texts[number]; }
    /// The item's own title, or the file name of its URL.
    QString shownTitle(Slot slot) const;
    KelvoMediaInfo mediaInfo(Slot slot) const;

    Key keyOf(Slot slot) const { return (Key(slot) << 16) | m_entries[slot].generation; }
    /// Changes with clear(): keys of another series mean nothing.
    QUuid series() const { return m_series; }
    /// NoSlot when the item is gone.
    Slot slotOf(Key key) const;
    QString uuidOf(Slot slot) const;
    Slot slotOfUuid(const QString &uuid) const;

private:
    struct Entry
    {
        PlaylistItem item;
        quint16 generation = 0;
        bool used = false;
    };

    quint32 numberOf(const QString &text);

    std::deque<Entry> m_entries; // Grows without moving what is there.
    std::vector<Slot> m_free;
    std::vector<QString> m_texts{QString()};
    QHash<QString, quint32> m_textNumbers;
    QUuid m_series;
};

/// Seconds of a number, of a text with a number, or of "m:ss" and "h:mm:ss"; -1 of anything else.
int playlistDuration(const QVariant &value);
/// "3:07" or "1:02:03"; empty when not known.
QString playlistDurationText(int seconds);
/// A URL, or the file URL of an absolute path.
QUrl playlistUrl(const QString &text);
