// SPDX-License-Identifier: MIT
#include "ItemFileWriter.h"

#include <QtEndian>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {
bool writeAll(int file, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = write(file, bytes.data(), size_t(bytes.size()));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes = bytes.sliced(written);
    }
    return true;
}
} // namespace

ItemFileWriter::ItemFileWriter()
{
    m_file.giveFileDescriptor(memfd_create("kelvo-playlist", MFD_CLOEXEC | MFD_ALLOW_SEALING));
}

void ItemFileWriter::add(const SharedItem &item)
{
    using namespace PlaylistProtocol;
    const qsizetype needed = m_bytes.size() + leastItemBytes + 2 * item.characters();
    if (m_bytes.capacity() < needed)
        m_bytes.reserve(std::max(2 * m_bytes.capacity(), needed));
    addText(item.id);
    addText(item.title);
    addText(item.url);
    addText(item.mimeType);
    const qlonglong duration = qToLittleEndian(item.duration);
    m_bytes.append(reinterpret_cast<const char *>(&duration), sizeof duration);
}

void ItemFileWriter::addText(const QString &text)
{
    const quint32 size = qToLittleEndian(quint32(2 * text.size()));
    m_bytes.append(reinterpret_cast<const char *>(&size), sizeof size);
    const qsizetype start = m_bytes.size();
    m_bytes.resize(start + 2 * text.size());
    qToLittleEndian<quint16>(text.constData(), text.size(), m_bytes.data() + start);
}

void ItemFileWriter::flush()
{
    if (!writeAll(m_file.fileDescriptor(), m_bytes))
        m_file = {};
    m_bytes.resize(0); // Keeps the memory.
}

QDBusUnixFileDescriptor ItemFileWriter::finish()
{
    flush();
    if (fcntl(m_file.fileDescriptor(), F_ADD_SEALS, PlaylistProtocol::fileSeals) != 0)
        m_file = {};
    return m_file;
}
