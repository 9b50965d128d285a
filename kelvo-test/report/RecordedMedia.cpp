// SPDX-License-Identifier: MIT
#include "RecordedMedia.h"

#include "YamlText.h"

#include <QUrl>

namespace {
/// Of a longer list the rest is left out.
constexpr int mostItems = 1000;
} // namespace

bool RecordedMedia::isAddress(const QString &url)
{
    const QUrl address(url, QUrl::StrictMode);
    return address.isValid() && !address.scheme().isEmpty();
}

QString RecordedMedia::medium(const QString &url)
{
    const auto known = m_names.constFind(url);
    if (known != m_names.constEnd())
        return *known;
    m_urls.append(url);
    return *m_names.insert(url, QStringLiteral("medium%1").arg(m_urls.size()));
}

QString RecordedMedia::playlist(const QString &uuid)
{
    if (!m_indexes.contains(uuid)) {
        m_indexes.insert(uuid, m_playlists.size());
        m_playlists.append({QStringLiteral("list%1").arg(m_playlists.size() + 1), {}});
    }
    return m_playlists.at(m_indexes.value(uuid)).name;
}

void RecordedMedia::noteItem(const QString &uuid, int index, const QString &url)
{
    if (index < 0 || index >= mostItems || !isAddress(url))
        return;
    playlist(uuid);
    m_playlists[m_indexes.value(uuid)].items.insert(index, medium(url));
}

QByteArray RecordedMedia::yaml() const
{
    QByteArray yaml;
    if (!m_urls.isEmpty())
        yaml += "media:\n";
    for (const QString &url : m_urls)
        yaml += "  " + m_names.value(url).toUtf8() + ": {url: " + YamlText::quoted(url) + "}\n";
    if (!m_playlists.isEmpty())
        yaml += "playlists:\n";
    for (const Playlist &playlist : m_playlists)
        yaml += playlistLine(playlist);
    return yaml;
}

/// Items that were not told are filled up, so that the others are where they were.
QByteArray RecordedMedia::playlistLine(const Playlist &playlist) const
{
    QStringList items;
    QStringList unknown;
    const int count = playlist.items.isEmpty() ? 0 : playlist.items.lastKey() + 1;
    for (int i = 0; i < count; ++i) {
        if (!playlist.items.contains(i))
            unknown.append(QString::number(i));
        items.append(u'$' + playlist.items.value(i, playlist.items.first()));
    }
    QByteArray comment;
    if (items.isEmpty())
        comment = "  # What is in it was not recorded.\n";
    else if (!unknown.isEmpty())
        comment = "  # Not recorded, so filled up: " + unknown.join(QLatin1String(", ")).toUtf8() + ".\n";
    return comment + "  " + playlist.name.toUtf8() + ": [" + items.join(QLatin1String(", ")).toUtf8() + "]\n";
}
