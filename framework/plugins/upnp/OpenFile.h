// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

/// A file that stays the one that it was when it was opened, whatever its name leads to later.
class OpenFile
{
public:
    /// Null when there is no such file, or when it cannot be read. Folders, pipes and devices are no files; the name may be
    /// a link. Waits for nothing but the disk.
    static std::shared_ptr<const OpenFile> open(const QString &path);
    ~OpenFile();
    Q_DISABLE_COPY_MOVE(OpenFile)

    /// Bytes, now.
    qint64 size() const;
    /// Another one once it has been written to: an entity tag (RFC 9110, 8.8.3).
    QByteArray mark() const;
    /// By its name and beginning, as "audio/mpeg".
    QByteArray type() const { return m_type; }
    /// From there on; less than asked for where it ends.
    QByteArray read(qint64 from, qint64 length) const;

private:
    OpenFile(int descriptor, const QByteArray &name);

    const int m_descriptor;
    const QByteArray m_type;
};
