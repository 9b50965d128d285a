// SPDX-License-Identifier: MIT
#include "ExportedPlaylist.h"

#include "KelvoPlaylist.h"

#include <algorithm>

namespace {
constexpr int changesTogether = 50; // milliseconds; also the least time between two signals

SharedItem sharedItem(const KelvoMediaInfo &info)
{
    using namespace PlaylistProtocol;
    const QString url = QString::fromLatin1(info.url().toEncoded());
    // A shortened title is still of use, a shortened URL is not.
    return {info.uuid().left(maxTextCharacters), info.title().left(maxTextCharacters),
        url.size() <= maxUrlCharacters ? url : QString(), info.mimeType().left(maxTextCharacters),
        info.duration()};
}
} // namespace

ExportedPlaylist::ExportedPlaylist(KelvoPlaylist *playlist, const QString &path, QObject *parent)
    : QObject(parent)
    , m_playlist(playlist)
    , m_path(path)
    , m_id(playlist->uuid())
{
    m_announcing.setSingleShot(true);
    m_announcing.setInterval(changesTogether);
    connect(&m_announcing, &QTimer::timeout, this, [this] { Q_EMIT Changed(m_revision); });
    connect(playlist, &KelvoPlaylist::contentsChanged, this, &ExportedPlaylist::noteChange);
}

QString ExportedPlaylist::name() const
{
    return m_playlist ? m_playlist->name().left(PlaylistProtocol::maxTextCharacters) : QString();
}

uint ExportedPlaylist::itemCount() const
{
    return m_playlist ? uint(std::max(m_playlist->count(), 0)) : 0;
}

SharedInterfaces ExportedPlaylist::interfaces() const
{
    QVariantMap properties;
    for (const char *property : {"Id", "Name", "ItemCount", "Revision", "Writable"})
        properties.insert(QString::fromLatin1(property), QObject::property(property));
    return {{PlaylistProtocol::interface, properties}};
}

SharedItem ExportedPlaylist::itemAt(uint index) const
{
    return m_playlist ? sharedItem(m_playlist->mediaInfoAt(index)) : SharedItem();
}

SharedItems ExportedPlaylist::page(uint start, uint count) const
{
    using namespace PlaylistProtocol;
    SharedItems items;
    const auto end = std::min<quint64>(itemCount(), quint64(start) + std::min(count, maxPageItems));
    qsizetype characters = 0;
    for (quint64 index = start; index < end && characters < maxPageCharacters; ++index) {
        items.append(itemAt(uint(index)));
        characters += items.constLast().characters();
    }
    return items;
}

void ExportedPlaylist::noteChange()
{
    ++m_revision;
    if (!m_announcing.isActive())
        m_announcing.start();
}
