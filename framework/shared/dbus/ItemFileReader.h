// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QDBusUnixFileDescriptor>

#include <memory>
#include <optional>
#include <span>

/// Reads the items of a file that another process has handed over (see ItemFileWriter), and trusts nothing in it.
class ItemFileReader
{
public:
    /// Maps the file; its descriptor is not needed any more then.
    /// @param count   number of items that it is said to hold
    /// @param reason  says what is wrong with the file when there is no reader
    static std::unique_ptr<ItemFileReader> open(
        const QDBusUnixFileDescriptor &file, uint count, QString *reason);
    ~ItemFileReader();
    Q_DISABLE_COPY_MOVE(ItemFileReader)

    /// The next items, `most` or as many as there are left; nothing when the bytes are not items, or when some are left
    /// behind the last item.
    std::optional<SharedItems> read(qsizetype most);
    bool atEnd() const { return m_itemsLeft == 0; }

private:
    using Bytes = std::span<const char>;

    ItemFileReader(Bytes mapped, uint count);
    SharedItem readItem();
    QString takeText();
    Bytes take(size_t size);

    const Bytes m_mapped;
    Bytes m_bytes; // Not read yet.
    uint m_itemsLeft;
    bool m_broken = false;
    QString m_type; // Most items are of the type of the one before: they share its text.
};
