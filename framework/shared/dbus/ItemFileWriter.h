// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QByteArray>
#include <QDBusUnixFileDescriptor>

/// Writes items into a file in memory, which nobody can change once it is finished. The form of the file is described
/// in data/org.kelvo.Playlist1.xml.
class ItemFileWriter
{
public:
    ItemFileWriter();

    /// False when the system gives no file, or no room for what has been added.
    bool isGood() const { return m_file.isValid(); }

    void add(const SharedItem &item);
    /// Brings what has been added since the last time into the file.
    void flush();
    /// The file, with all of it, sealed; not valid when that failed.
    QDBusUnixFileDescriptor finish();

private:
    void addText(const QString &text);

    QDBusUnixFileDescriptor m_file;
    QByteArray m_bytes; // Not in the file yet.
};
