// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QString>
#include <QUrl>

/// One item of a playlist, by value.
///
/// The uuid names the item within its playlist: it stays with the item when the playlist is sorted, shuffled or
/// shortened, and two entries with the same URL have different uuids. A default-constructed record is "no item".
class KelvoMediaInfo
{
public:
    KelvoMediaInfo() = default;
    /// @param uuid  unique within the playlist; an item with an empty one is "no item"
    /// @param duration  seconds; -1: not known
    KelvoMediaInfo(QString uuid, QUrl url, QString title = {}, int duration = -1)
        : m_uuid(std::move(uuid))
        , m_url(std::move(url))
        , m_title(std::move(title))
        , m_duration(duration)
    {
    }

    /// "No item".
    bool isNull() const { return m_uuid.isEmpty(); }

    /// Names the item within its playlist.
    QString uuid() const { return m_uuid; }
    /// What is to be played.
    QUrl url() const { return m_url; }
    /// As the playlist or the store has it; empty when not known.
    QString title() const { return m_title; }
    /// Empty when not known.
    QString artist() const { return m_artist; }
    /// Empty when not known.
    QString album() const { return m_album; }
    /// Seconds; -1 when not known.
    int duration() const { return m_duration; }
    /// IANA media type; empty when not known.
    QString mimeType() const { return m_mimeType; }

    /// See artist().
    void setArtist(const QString &artist) { m_artist = artist; }
    /// See album().
    void setAlbum(const QString &album) { m_album = album; }
    /// See mimeType().
    void setMimeType(const QString &mimeType) { m_mimeType = mimeType; }

private:
    QString m_uuid;
    QUrl m_url;
    QString m_title;
    QString m_artist;
    QString m_album;
    QString m_mimeType;
    int m_duration = -1;
};

Q_DECLARE_METATYPE(KelvoMediaInfo)
