// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QMap>
#include <QStringList>

/// The media and playlists of a run, as far as it tells of them, named for a scenario.
class RecordedMedia
{
public:
    /// Whether a scenario can have a medium of this address; a renderer may have been told anything.
    static bool isAddress(const QString &url);

    /// The name for an address, "medium1" and so on in the order in which they were asked for.
    QString medium(const QString &url);

    /// The name for a playlist by its uuid, "list1" and so on.
    QString playlist(const QString &uuid);
    /// Notes which address a playlist has at an index.
    void noteItem(const QString &uuid, int index, const QString &url);

    /// The sections "media" and "playlists" of a scenario; a comment tells what the run did not.
    QByteArray yaml() const;

private:
    struct Playlist
    {
        QString name;
        /// Names of media by index.
        QMap<int, QString> items;
    };

    QByteArray playlistLine(const Playlist &playlist) const;

    QHash<QString, QString> m_names;
    QStringList m_urls;
    QHash<QString, qsizetype> m_indexes;
    QList<Playlist> m_playlists;
};
