// SPDX-License-Identifier: MIT
#include "OpenFile.h"

#include "GlibHandles.h"

#include <QFile>

#include <gio/gio.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr qint64 beginning = 4096; // bytes that tell what it is

QByteArray readFrom(int descriptor, qint64 from, qint64 length)
{
    QByteArray bytes(length, Qt::Uninitialized);
    qint64 count = 0;
    while (count < length) {
        const ssize_t now = ::pread(descriptor, bytes.data() + count, size_t(length - count), from + count);
        if (now < 0 && errno == EINTR)
            continue;
        if (now <= 0)
            break;
        count += now;
    }
    bytes.truncate(count);
    return bytes;
}

QByteArray typeOf(int descriptor, const QByteArray &name)
{
    const QByteArray start = readFrom(descriptor, 0, beginning);
    const GlibHandles::Text content(g_content_type_guess(
        name.constData(), reinterpret_cast<const guchar *>(start.constData()), gsize(start.size()), nullptr));
    const GlibHandles::Text type(g_content_type_get_mime_type(content.get()));
    return type ? QByteArray(type.get()) : QByteArray("application/octet-stream");
}
} // namespace

std::shared_ptr<const OpenFile> OpenFile::open(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat found = {};
    // Looked at first: to open a device may set something off.
    if (::stat(name.constData(), &found) != 0 || !S_ISREG(found.st_mode))
        return nullptr;
    const int descriptor = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return nullptr;
    // Looked at again: what the name leads to may be another by now.
    if (::fstat(descriptor, &found) != 0 || !S_ISREG(found.st_mode)) {
        ::close(descriptor);
        return nullptr;
    }
    return std::shared_ptr<const OpenFile>(new OpenFile(descriptor, name));
}

OpenFile::OpenFile(int descriptor, const QByteArray &name)
    : m_descriptor(descriptor)
    , m_type(typeOf(descriptor, name))
{
}

OpenFile::~OpenFile()
{
    ::close(m_descriptor);
}

qint64 OpenFile::size() const
{
    struct stat now = {};
    return ::fstat(m_descriptor, &now) == 0 ? qint64(now.st_size) : 0;
}

QByteArray OpenFile::mark() const
{
    struct stat now = {};
    if (::fstat(m_descriptor, &now) != 0)
        return {};
    return '"' + QByteArray::number(qint64(now.st_size), 16) + '-'
        + QByteArray::number(qint64(now.st_mtim.tv_sec), 16) + '-'
        + QByteArray::number(qint64(now.st_mtim.tv_nsec), 16) + '"';
}

QByteArray OpenFile::read(qint64 from, qint64 length) const
{
    return readFrom(m_descriptor, from, length);
}
