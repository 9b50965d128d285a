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
    KelvoMediaInfo(QString uuid, QUrl url, QString title = {}, int duration = -1)
        : m_uuid(std::move(uuid))
        , m_url(std::move(url))
        , m_title(std::move(title))
        , m_duration(duration)
    {
    }

    bool isNull() const { return m_uuid.isEmpty(); }

    QString uuid() const { return m_uuid; }
    QUrl url() const { return m_url; }
    QString title() const { return m_title; }
    QString artist() const { return m_artist; }
    QString album() const { return m_album; }
    /// Seconds; -1 when not known.
    int duration() const { return m_duration; }
    /// IANA media type; empty when not known.
    QString mimeType() const { return m_mimeType; }

    void setArtist(const QString &artist) { m_artist = artist; }
    void setAlbum(const QString &album) { m_album = album; }
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
