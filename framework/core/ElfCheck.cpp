// SPDX-License-Identifier: MIT
#include "ElfCheck.h"

#include <QFile>

#include <cstring>
#include <link.h>

namespace {
using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);

template <typename Record> bool readRecord(QFile &file, quint64 offset, Record &record)
{
    return file.seek(qint64(offset))
        && file.read(reinterpret_cast<char *>(&record), sizeof record) == qint64(sizeof record);
}

bool fits(quint64 offset, quint64 length, quint64 size)
{
    return offset <= size && length <= size - offset;
}
} // namespace

QString elfDefect(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    const auto size = quint64(file.size());
    Header header;
    if (!readRecord(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0)
        return QStringLiteral("not a library");
    auto truncated = QStringLiteral("the library is truncated");
    if (!fits(header.e_phoff, quint64(header.e_phnum) * sizeof(Segment), size)
        || !fits(header.e_shoff, quint64(header.e_shnum) * header.e_shentsize, size))
        return truncated;
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        Segment segment;
        if (!readRecord(file, header.e_phoff + i * sizeof segment, segment)
            || !fits(segment.p_offset, segment.p_filesz, size))
            return truncated;
    }
    return {};
}
