// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"
#include "KelvoMediaInfo.h"

#include <QObject>
#include <QPointer>

class KelvoPlaylist;

/// A renderer's place in a playlist: which item is current and which one follows.
///
/// For back ends. It follows the playlist live: when items are sorted, shuffled or removed, the current item
/// stays current at its new index. GUI thread.
class KELVO_CORE_EXPORT KelvoPlayQueue : public QObject
{
    Q_OBJECT
public:
    /// Without a playlist.
    explicit KelvoPlayQueue(QObject *parent = nullptr);
    ~KelvoPlayQueue() override;

    /// Not owned. The first item becomes current, if there is one. The same playlist again changes nothing.
    void setPlaylist(KelvoPlaylist *playlist);
    /// Null when there is none, or it was deleted.
    KelvoPlaylist *playlist() const;

    /// Number of items; 0 without a playlist.
    int count() const;
    /// Index of the current item; -1 when there is none (no or an empty playlist).
    int index() const { return m_index; }
    /// The current item; a null record when there is none.
    KelvoMediaInfo current() const;
    /// False and nothing changed when there is no such item.
    bool setIndex(int index);

    /// Index that next() leads to: the following item, the first one after the last with repeat "all"; else -1.
    int nextIndex() const;
    /// Index that previous() leads to: the item before, the last one before the first with repeat "all"; else the
    /// first; -1 in an empty list.
    int previousIndex() const;
    /// Index that follows by itself at the current item's end: as nextIndex(), but the same item with repeat
    /// "one"; -1 at the end of playback.
    int followingIndex() const;

Q_SIGNALS:
    /// The playlist was edited and the current item is now at another index.
    void indexMoved(int index);
    /// The current item was removed. index() is now the item that took its place (the last item when the end of
    /// the list was removed), or -1 when nothing is left or the playlist was deleted.
    void currentRemoved(int index);

private:
    int repeatMode() const;
    void makeCurrent(int index);
    bool isCurrentAt(int index) const;
    int search() const;
    void followContents(uint from, uint removed, uint added);
    void followDestruction();

    QPointer<KelvoPlaylist> m_playlist;
    QString m_currentUuid;
    int m_index = -1;
};
