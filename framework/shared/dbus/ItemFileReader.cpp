// SPDX-License-Identifier: MIT
#include "ItemFileReader.h"

#include <QtEndian>

#include <algorithm>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

using namespace PlaylistProtocol;

std::unique_ptr<ItemFileReader> ItemFileReader::open(
    const QDBusUnixFileDescriptor &file, uint count, QString *reason)
{
    // Only files in memory have seals. Without them the file could shrink or change while it is read.
    const int seals = file.isValid() ? fcntl(file.fileDescriptor(), F_GET_SEALS) : -1;
    struct stat status = {};
    if (seals < 0 || fstat(file.fileDescriptor(), &status) != 0) {
        *reason = QStringLiteral("its items are in no file in memory");
        return {};
    }
    if ((seals & fileSeals) != fileSeals) {
        *reason = QStringLiteral("the file of its items can still be changed");
        return {};
    }
    const qint64 size = status.st_size;
    if (size < qint64(count) * leastItemBytes || size > maxFileBytes) {
        *reason = QStringLiteral("the file of its %1 items has %2 bytes").arg(count).arg(size);
        return {};
    }
    if (size == 0)
        return std::unique_ptr<ItemFileReader>(new ItemFileReader({}, count));
    void *mapped = mmap(nullptr, size_t(size), PROT_READ, MAP_SHARED, file.fileDescriptor(), 0);
    if (mapped == MAP_FAILED) {
        *reason = QStringLiteral("the file of its items cannot be mapped");
        return {};
    }
    const Bytes bytes(static_cast<const char *>(mapped), size_t(size));
    return std::unique_ptr<ItemFileReader>(new ItemFileReader(bytes, count));
}

ItemFileReader::ItemFileReader(Bytes mapped, uint count)
    : m_mapped(mapped)
    , m_bytes(mapped)
    , m_itemsLeft(count)
{
}

ItemFileReader::~ItemFileReader()
{
    if (!m_mapped.empty())
        munmap(const_cast<char *>(m_mapped.data()), m_mapped.size());
}

std::optional<SharedItems> ItemFileReader::read(qsizetype most)
{
    SharedItems items;
    items.reserve(std::min(most, qsizetype(m_itemsLeft)));
    while (!m_broken && m_itemsLeft > 0 && items.size() < most) {
        items.append(readItem());
        --m_itemsLeft;
    }
    if (m_broken || (atEnd() && !m_bytes.empty()))
        return {};
    return items;
}

SharedItem ItemFileReader::readItem()
{
    SharedItem item;
    item.id = takeText();
    item.title = takeText();
    item.url = takeText();
    const QString type = takeText();
    if (type != m_type)
        m_type = type;
    item.mimeType = m_type;
    const Bytes duration = take(sizeof item.duration);
    if (!m_broken)
        item.duration = qFromLittleEndian<qlonglong>(duration.data());
    return item;
}

QString ItemFileReader::takeText()
{
    const Bytes size = take(sizeof(quint32));
    const Bytes bytes = m_broken ? size : take(qFromLittleEndian<quint32>(size.data()));
    if (m_broken || bytes.size() % sizeof(QChar) != 0) {
        m_broken = true;
        return {};
    }
    QString text(qsizetype(bytes.size() / sizeof(QChar)), Qt::Uninitialized);
    qFromLittleEndian<quint16>(bytes.data(), text.size(), text.data());
    return text;
}

/// An empty one when there are not so many.
ItemFileReader::Bytes ItemFileReader::take(size_t size)
{
    if (size > m_bytes.size()) {
        m_broken = true;
        return {};
    }
    const Bytes taken = m_bytes.first(size);
    m_bytes = m_bytes.subspan(size);
    return taken;
}
