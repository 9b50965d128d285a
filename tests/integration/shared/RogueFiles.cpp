// SPDX-License-Identifier: MIT
#include "RogueFiles.h"

#include <QDataStream>
#include <QDir>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {
QDBusUnixFileDescriptor owned(int descriptor)
{
    if (descriptor < 0)
        qFatal("There is no such file");
    QDBusUnixFileDescriptor file;
    file.giveFileDescriptor(descriptor);
    return file;
}

int makeMemory()
{
    return memfd_create("rogue", MFD_CLOEXEC | MFD_ALLOW_SEALING);
}
} // namespace

QByteArray RogueFiles::packed(const WireItems &items)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    for (const WireItem &item : items) {
        for (const QString &text : {item.id, item.title, item.url, item.mimeType})
            stream << QString(text.constData(), text.size()); // Null texts would be written in another way.
        stream << item.duration;
    }
    return bytes;
}

QDBusUnixFileDescriptor RogueFiles::inMemory(const QByteArray &bytes, int seals)
{
    const int memory = makeMemory();
    if (write(memory, bytes.constData(), size_t(bytes.size())) != bytes.size()
        || fcntl(memory, F_ADD_SEALS, seals) != 0)
        qFatal("The file cannot be made");
    return owned(memory);
}

QDBusUnixFileDescriptor RogueFiles::hollow(qint64 size)
{
    const int memory = makeMemory();
    if (ftruncate(memory, size) != 0 || fcntl(memory, F_ADD_SEALS, allSeals) != 0)
        qFatal("The file cannot be made");
    return owned(memory);
}

QDBusUnixFileDescriptor RogueFiles::onDisk(const char *path)
{
    return owned(open(path, O_RDONLY | O_CLOEXEC));
}

QDBusUnixFileDescriptor RogueFiles::endOfPipe()
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        qFatal("There are no pipes");
    close(ends[1]);
    return owned(ends[0]);
}

qsizetype RogueFiles::openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}
