// SPDX-License-Identifier: MIT
#include "MediaTypes.h"

#include "PlaylistFile.h"

#include <QHash>
#include <QMimeDatabase>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace {
struct Suffix
{
    MediaKind kind;
    const char *mimeType;
};

// Names of media files, looked up before the MIME database: it takes most of these for something more general
// ("application/ogg"), and 10,000 look-ups there take longer than a whole scan.
const QHash<QByteArray, Suffix> &suffixes()
{
    constexpr MediaKind song = MediaKind::Song;
    constexpr MediaKind video = MediaKind::Video;
    static const QHash<QByteArray, Suffix> table{
        {"mp3", {song, "audio/mpeg"}},
        {"mp2", {song, "audio/mpeg"}},
        {"mpga", {song, "audio/mpeg"}},
        {"ogg", {song, "audio/ogg"}},
        {"oga", {song, "audio/ogg"}},
        {"opus", {song, "audio/ogg"}},
        {"spx", {song, "audio/ogg"}},
        {"flac", {song, "audio/flac"}},
        {"m4a", {song, "audio/mp4"}},
        {"m4b", {song, "audio/mp4"}},
        {"m4r", {song, "audio/mp4"}},
        {"aac", {song, "audio/aac"}},
        {"wma", {song, "audio/x-ms-wma"}},
        {"wav", {song, "audio/vnd.wave"}},
        {"wave", {song, "audio/vnd.wave"}},
        {"aif", {song, "audio/aiff"}},
        {"aiff", {song, "audio/aiff"}},
        {"aifc", {song, "audio/aiff"}},
        {"ape", {song, "audio/x-ape"}},
        {"mpc", {song, "audio/x-musepack"}},
        {"wv", {song, "audio/x-wavpack"}},
        {"tta", {song, "audio/x-tta"}},
        {"mka", {song, "audio/x-matroska"}},
        {"ac3", {song, "audio/ac3"}},
        {"dts", {song, "audio/vnd.dts"}},
        {"amr", {song, "audio/AMR"}},
        {"au", {song, "audio/basic"}},
        {"caf", {song, "audio/x-caf"}},
        {"mid", {song, "audio/midi"}},
        {"mp4", {video, "video/mp4"}},
        {"m4v", {video, "video/mp4"}},
        {"mkv", {video, "video/x-matroska"}},
        {"webm", {video, "video/webm"}},
        {"avi", {video, "video/x-msvideo"}},
        {"mov", {video, "video/quicktime"}},
        {"mpg", {video, "video/mpeg"}},
        {"mpeg", {video, "video/mpeg"}},
        {"m2v", {video, "video/mpeg"}},
        {"m2ts", {video, "video/mp2t"}},
        {"mts", {video, "video/mp2t"}},
        {"wmv", {video, "video/x-ms-wmv"}},
        {"asf", {video, "video/x-ms-asf"}},
        {"flv", {video, "video/x-flv"}},
        {"ogv", {video, "video/ogg"}},
        {"ogm", {video, "video/ogg"}},
        {"3gp", {video, "video/3gpp"}},
        {"3g2", {video, "video/3gpp2"}},
        {"vob", {video, "video/mpeg"}},
        {"mxf", {video, "application/mxf"}},
    };
    return table;
}

QByteArray suffixOf(const QByteArray &fileName)
{
    const qsizetype dot = fileName.lastIndexOf('.');
    return dot > 0 ? fileName.mid(dot + 1).toLower() : QByteArray();
}

MediaKind kindOfMimeType(const QMimeType &type)
{
    const QString name = type.name();
    const QStringList lists = PlaylistFile::contentTypes();
    if (std::any_of(
            lists.cbegin(), lists.cend(), [&type](const QString &list) { return type.inherits(list); }))
        return MediaKind::Playlist;
    if (name.startsWith(QLatin1String("audio/")))
        return MediaKind::Song;
    if (name.startsWith(QLatin1String("video/")) || name == QLatin1String("application/ogg"))
        return MediaKind::Video;
    return MediaKind::Ignored;
}
} // namespace

MediaTypes::Verdict MediaTypes::fromName(const QByteArray &fileName)
{
    const QByteArray suffix = suffixOf(fileName);
    if (!PlaylistFile::contentTypeOfSuffix(suffix).isEmpty())
        return {MediaKind::Playlist, false};
    const auto known = suffixes().constFind(suffix);
    if (known != suffixes().constEnd())
        return {known->kind, false};
    // ".ts" is a text in some language more often than a video.
    if (suffix.isEmpty() || suffix == "ts")
        return {MediaKind::Ignored, true};
    const QList<QMimeType> types
        = QMimeDatabase().mimeTypesForFileName(QLatin1String("file.") + QString::fromLatin1(suffix));
    return {MediaKind::Ignored, types.isEmpty()};
}

MediaKind MediaTypes::sniff(const QByteArray &path)
{
    // Not blocking, in case the file became a pipe in the meantime.
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0)
        return MediaKind::Ignored;
    QByteArray beginning(PlaylistFile::headSize, Qt::Uninitialized);
    const ssize_t count = ::read(fd, beginning.data(), size_t(beginning.size()));
    ::close(fd);
    if (count <= 0)
        return MediaKind::Ignored;
    beginning.truncate(count);
    if (PlaylistFile::recognised(beginning, {}) != PlaylistFile::Format::None)
        return MediaKind::Playlist;
    return kindOfMimeType(QMimeDatabase().mimeTypeForData(beginning));
}

QByteArray MediaTypes::mimeType(const QByteArray &fileName)
{
    const QByteArray suffix = suffixOf(fileName);
    const auto known = suffixes().constFind(suffix);
    return known != suffixes().constEnd() ? QByteArray(known->mimeType)
                                          : PlaylistFile::contentTypeOfSuffix(suffix);
}
