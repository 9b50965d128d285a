// SPDX-License-Identifier: MIT
#pragma once

#include "ItemFileWriter.h"

#include <QPointer>

class ExportedPlaylist;

/// Puts the items of one playlist into a file, in slices of a few milliseconds.
class ItemPacker
{
public:
    enum class State {
        Going,
        Done,
        Changed, ///< the list has, while it was packed
        TooLong, ///< for a file
        Failed ///< the system gives no file
    };

    explicit ItemPacker(const ExportedPlaylist *playlist);

    /// Whether this is about the playlist as it is now; also as long as it is being packed.
    bool isOf(const ExportedPlaylist *playlist) const;

    /// Packs the next slice, unless that has come to an end.
    State goOn();

    /// Once it is done.
    const QDBusUnixFileDescriptor &file() const { return m_file; }
    uint count() const { return m_count; }
    uint revision() const { return m_revision; }

private:
    State packSlice();

    const QPointer<const ExportedPlaylist> m_playlist;
    const uint m_count;
    const uint m_revision;
    State m_state = State::Going;
    uint m_packed = 0;
    qsizetype m_characters = 0;
    ItemFileWriter m_writer;
    QDBusUnixFileDescriptor m_file;
};
