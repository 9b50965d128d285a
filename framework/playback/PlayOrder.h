// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"
#include "KelvoMediaInfo.h"
#include "KelvoPlayQueue.h"
#include "PlayRun.h"

#include <QObject>
#include <QPointer>

class KelvoPlaylist;

/// Which item is current: the address given last, an item of a playlist, or what another controller put in its place.
///
/// A playlist that is assigned while another one plays waits here until a command chooses an item.
class PlayOrder : public QObject
{
    Q_OBJECT
public:
    /// What plays, or played last.
    enum class InPlay { Address, Playlist, Foreign };

    struct Status
    {
        QString playlistId; ///< empty: the item belongs to none
        uint index = 0;
        QString objectId;
    };

    PlayOrder();

    InPlay inPlay() const { return m_inPlay; }
    bool isInPlaylist() const { return m_inPlay == InPlay::Playlist; }
    /// That of the current item; null when it belongs to none.
    KelvoPlaylist *playlist() const;
    /// The current item's index in it, -1 when it belongs to none.
    int index() const;
    /// A null record when there is none, and of what another controller chose.
    KelvoMediaInfo item() const;
    Status status() const;
    PlayRun::Place place(bool autoAdvance) const;
    /// For a message; empty without a playlist.
    QString playlistName() const;

    /// Null: none. Not owned.
    void assign(KelvoPlaylist *playlist, bool isStopped);
    /// A playlist was assigned while the one in play went on.
    bool isOtherAssigned() const;
    /// The assigned playlist is the one to play from now on; true when that is another than before.
    bool takeUpAssigned();

    void setAddress(const KelvoMediaInfo &item);
    void setForeign() { m_inPlay = InPlay::Foreign; }
    /// Chooses what play() plays: the playlist's current item or, without a playlist, the address given last. The error
    /// of which nothing comes; KelvoError::NoError: chosen.
    KelvoError choose();
    /// An item of the assigned playlist; false and nothing changed when there is no such item.
    bool chooseAssigned(uint index);
    /// An item of the playlist; false and nothing changed when there is no such item.
    bool moveTo(int index);
    int nextIndex() const { return m_queue.nextIndex(); }
    int previousIndex() const { return m_queue.previousIndex(); }
    int count() const { return m_queue.count(); }
    bool hasPlaylist() const { return m_queue.playlist(); }

Q_SIGNALS:
    /// The playlist was edited: the current item has another index, or another item is current. By somebody else's call,
    /// perhaps in several steps.
    void edited();

private:
    KelvoPlayQueue m_queue;
    QPointer<KelvoPlaylist> m_assigned;
    KelvoMediaInfo m_address;
    InPlay m_inPlay = InPlay::Playlist;
};
