// SPDX-License-Identifier: MIT
#include "PlaylistFileParser.h"

#include "PlaylistEntries.h"
#include "PlaylistParser.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
using PlaylistFile::Contents;
using PlaylistFile::Format;

/// By its bytes: the name of a file need not be valid in any encoding. Opening a pipe could block for ever.
bool openRegular(const QByteArray &path, QFile *file)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return false;
    struct stat status = {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)
        && file->open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return true;
    ::close(descriptor);
    return false;
}
} // namespace

PlaylistFile::Contents PlaylistFileParser::parseFile(const QUrl &uri, PlaylistFile::Formats announced)
{
    QFile file;
    if (!openRegular(PlaylistEntries::pathOf(uri), &file))
        return {};
    const QByteArray head = file.read(PlaylistFile::headSize);
    const Format format = PlaylistFile::recognised(head, announced);
    if (format == Format::None)
        return {};
    if (file.size() > PlaylistFile::maximumSize)
        return Contents::tooLarge(uri);
    return PlaylistParser::parse(head + file.read(PlaylistFile::maximumSize), format, uri);
}
