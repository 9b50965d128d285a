// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

enum class MediaKind : quint8 {
    Ignored, ///< no media
    Song,
    Video,
    Playlist,
};

/// Tells whether a file changed or was moved, without reading it.
struct FileStamp
{
    quint64 inode = 0;
    qint64 size = 0;
    qint64 modified = 0; ///< nanoseconds since 1970

    /// The inode does not count: some file systems make them up at each mount.
    bool sameContent(const FileStamp &other) const
    {
        return size == other.size && modified == other.modified;
    }
    bool operator==(const FileStamp &) const = default;

    QByteArray toText() const;
    static FileStamp fromText(const QByteArray &text);
};

/// A file as the index knows it.
struct KnownFile
{
    QByteArray name; ///< within its folder
    FileStamp stamp;
    quint64 number = 0; ///< its resource, see resourceIri()
    MediaKind kind = MediaKind::Ignored;
    bool isCurrent = true; ///< what the store says of it was read at this place
};

/// What a song says of itself besides its title; empty or 0 where it says nothing.
struct SongTags
{
    QStringList artists;
    QString album;
    QString albumArtist;
    bool isCompilation = false;
    QString genre;
    int year = 0;
    int track = 0;
    int disc = 0;
};

/// What was read of one media file or playlist.
struct MediaItem
{
    MediaKind kind = MediaKind::Ignored;
    quint64 number = 0;
    QByteArray path;
    QByteArray uri;
    FileStamp stamp;
    bool isNew = true;
    bool isReadable = false; ///< the file is what its name says

    QString title; ///< never empty: the file name where there is no other
    SongTags tags;
    int seconds = 0; ///< 0: not known
    qint64 milliseconds = 0; ///< the same, as read from a file
    bool isLengthCounted = false; ///< by going through the file, because its headers only let guess
    QByteArray mimeType;
    bool isDownloaded = false;

    struct Entry
    {
        QByteArray uri;
        QString title;
    };
    std::vector<Entry> entries; ///< of a playlist

    /// 0 or less: not known.
    void setLength(qint64 length);
};

/// "urn:kelvo:<kind>:<number>"
QByteArray resourceIri(MediaKind kind, quint64 number);
/// The number in such an IRI; 0 when it is none.
quint64 resourceNumber(const QByteArray &iri);
