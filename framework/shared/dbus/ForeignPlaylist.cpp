// SPDX-License-Identifier: MIT
#include "ForeignPlaylist.h"

#include "KelvoMessageHandler.h"

#include <algorithm>

namespace {
constexpr qsizetype longestShownName = 100;

/// One line without control characters, of a length that a combo box can show.
QString shownName(const QString &name, const QString &origin)
{
    QString plain = name.left(4 * longestShownName);
    std::replace_if(
        plain.begin(), plain.end(), [](QChar c) { return !c.isPrint() && !c.isSurrogate(); }, u' ');
    plain = plain.simplified();
    if (plain.size() > longestShownName)
        plain = plain.left(longestShownName - 1) + QChar(0x2026);
    if (plain.isEmpty())
        plain = QStringLiteral("(no name)");
    return plain + QStringLiteral(" [") + origin + u']';
}
} // namespace

ForeignPlaylist::ForeignPlaylist(PeerCalls *calls, const QString &path,
    const PlaylistDescription &description, const QString &origin, QObject *parent)
    : KelvoPlaylist(parent)
    , m_description(description)
    , m_origin(origin)
    , m_name(shownName(description.name, origin))
    , m_loader(new ItemLoader(calls, path, description.revision, this))
{
    connect(m_loader, &ItemLoader::itemsArrived, this,
        [this](const SharedItems &items) { announce(m_model.append(items)); });
    connect(m_loader, &ItemLoader::itemsReplaced, this,
        [this](const SharedItems &items) { announce(m_model.replace(items)); });
    connect(m_loader, &ItemLoader::completed, this, &ForeignPlaylist::checkCount);
    connect(m_loader, &ItemLoader::complaint, this, &ForeignPlaylist::complaint);
    connect(m_loader, &ItemLoader::broken, this, &ForeignPlaylist::broken);
}

QAbstractItemModel *ForeignPlaylist::itemModel()
{
    m_loader->use();
    return &m_model;
}

int ForeignPlaylist::count() const
{
    m_loader->use();
    return m_model.rowCount();
}

KelvoMediaInfo ForeignPlaylist::mediaInfoAt(uint index) const
{
    if (index >= uint(count()))
        return {};
    const SharedItem &item = m_model.items().at(qsizetype(index));
    KelvoMediaInfo info(item.id, QUrl(item.url), item.title, int(item.duration));
    info.setMimeType(item.mimeType);
    return info;
}

int ForeignPlaylist::indexOf(const QString &mediaUuid) const
{
    const SharedItems &items = m_model.items();
    const auto found = std::find_if(
        items.begin(), items.end(), [&mediaUuid](const SharedItem &item) { return item.id == mediaUuid; });
    return found == items.end() ? -1 : int(found - items.begin());
}

void ForeignPlaylist::setRepeatMode(int mode)
{
    refuse("setRepeatMode", mode);
}

void ForeignPlaylist::sort(const QString &key, int order)
{
    refuse("sort", key, order);
}

void ForeignPlaylist::removeItem(uint index)
{
    refuse("removeItem", index);
}

void ForeignPlaylist::removeItems(uint from, uint to)
{
    refuse("removeItems", from, to);
}

void ForeignPlaylist::rename(const QString &name)
{
    m_description.name = name;
    m_name = shownName(name, m_origin);
}

void ForeignPlaylist::warnOf(const char *operation) const
{
    qCWarning(lcKelvo) << operation << "changes nothing: the playlist" << m_name
                       << "is owned by another process and can only be read";
}

void ForeignPlaylist::announce(const ForeignItemModel::Change &change)
{
    if (change.removed > 0 || change.added > 0)
        Q_EMIT contentsChanged(uint(change.from), uint(change.removed), uint(change.added));
}

void ForeignPlaylist::checkCount(uint revision, qsizetype items)
{
    if (revision == m_description.revision && items != qsizetype(m_description.itemCount))
        Q_EMIT complaint(QStringLiteral("its process announced %1 items and gave %2")
                             .arg(m_description.itemCount)
                             .arg(items));
}
