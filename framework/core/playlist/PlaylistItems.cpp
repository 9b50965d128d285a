// SPDX-License-Identifier: MIT
#include "PlaylistItems.h"

#include <QAbstractItemModel>
#include <QtEndian>

#include <cmath>
#include <cstring>
#include <limits>

namespace {
// The last six bytes of an item's uuid are its key, the others are the same for all items of a series.
constexpr int keyBytes = 6;

QString textOf(const QVariant &value)
{
    if (value.userType() == QMetaType::QUrl)
        return value.toUrl().toString(QUrl::FullyEncoded);
    return value.toString();
}

int clampedSeconds(double seconds)
{
    const bool fits = std::isfinite(seconds) && seconds >= 0 && seconds <= std::numeric_limits<int>::max();
    return fits ? int(seconds) : -1;
}
} // namespace

PlaylistItems::PlaylistItems()
    : m_series(QUuid::createUuid())
{
}

PlaylistItems::Slot PlaylistItems::add(PlaylistItem item)
{
    Slot slot;
    if (m_free.empty()) {
        slot = Slot(m_entries.size());
        m_entries.emplace_back();
    } else {
        slot = m_free.back();
        m_free.pop_back();
    }
    m_entries[slot].item = std::move(item);
    m_entries[slot].used = true;
    return slot;
}

void PlaylistItems::remove(Slot slot)
{
    Entry &entry = m_entries[slot];
    entry.item = {};
    entry.used = false;
    // A slot whose generations are used up stays empty: its keys would come again.
    if (++entry.generation != 0)
        m_free.push_back(slot);
}

void PlaylistItems::clear()
{
    *this = PlaylistItems();
}

bool PlaylistItems::update(Slot slot, PlaylistItem item)
{
    if (m_entries[slot].item == item)
        return false;
    m_entries[slot].item = std::move(item);
    return true;
}

PlaylistItem PlaylistItems::readRow(const QAbstractItemModel &model, int row, const PlaylistColumns &columns)
{
    const auto value = [&](PlaylistColumns::Role role) {
        const int column = columns.byRole[role];
        return column < 0 ? QVariant() : model.data(model.index(row, column), Qt::DisplayRole);
    };
    PlaylistItem item;
    item.id = textOf(value(PlaylistColumns::Id));
    item.title = textOf(value(PlaylistColumns::Title));
    item.url = textOf(value(PlaylistColumns::Url));
    item.artist = numberOf(textOf(value(PlaylistColumns::Artist)));
    item.album = numberOf(textOf(value(PlaylistColumns::Album)));
    item.mimeType = numberOf(textOf(value(PlaylistColumns::MimeType)));
    item.duration = playlistDuration(value(PlaylistColumns::Duration));
    return item;
}

quint32 PlaylistItems::numberOf(const QString &text)
{
    if (text.isEmpty())
        return 0;
    const auto known = m_textNumbers.constFind(text);
    if (known != m_textNumbers.constEnd())
        return *known;
    const auto number = quint32(m_texts.size());
    m_texts.push_back(text);
    m_textNumbers.insert(text, number);
    return number;
}

QString PlaylistItems::shownTitle(Slot slot) const
{
    const PlaylistItem &item = at(slot);
    if (!item.title.trimmed().isEmpty())
        return item.title;
    const QString fileName = playlistUrl(item.url).fileName();
    return fileName.isEmpty() ? item.url : fileName;
}

KelvoMediaInfo PlaylistItems::mediaInfo(Slot slot) const
{
    const PlaylistItem &item = at(slot);
    KelvoMediaInfo info(uuidOf(slot), playlistUrl(item.url), shownTitle(slot), item.duration);
    info.setArtist(text(item.artist));
    info.setAlbum(text(item.album));
    info.setMimeType(text(item.mimeType));
    return info;
}

PlaylistItems::Slot PlaylistItems::slotOf(Key key) const
{
    const Key slot = key >> 16;
    const bool alive = slot < m_entries.size() && m_entries[slot].used && keyOf(Slot(slot)) == key;
    return alive ? Slot(slot) : PlaylistOrder::NoSlot;
}

QString PlaylistItems::uuidOf(Slot slot) const
{
    QUuid uuid = m_series;
    const quint64 key = qToBigEndian(keyOf(slot));
    memcpy(uuid.data4 + 2, reinterpret_cast<const char *>(&key) + 2, keyBytes);
    return uuid.toString(QUuid::WithoutBraces);
}

PlaylistItems::Slot PlaylistItems::slotOfUuid(const QString &text) const
{
    QUuid uuid(text);
    quint64 key = 0;
    memcpy(reinterpret_cast<char *>(&key) + 2, uuid.data4 + 2, keyBytes);
    memcpy(uuid.data4 + 2, m_series.data4 + 2, keyBytes);
    return uuid == m_series ? slotOf(qFromBigEndian(key)) : PlaylistOrder::NoSlot;
}

int playlistDuration(const QVariant &value)
{
    bool ok = false;
    if (const double seconds = value.toDouble(&ok); ok)
        return clampedSeconds(seconds);
    const QStringList parts = value.toString().trimmed().split(QLatin1Char(':'));
    if (parts.size() < 2 || parts.size() > 3)
        return -1;
    double seconds = 0;
    for (const QString &part : parts) {
        const uint number = part.toUInt(&ok);
        if (!ok)
            return -1;
        seconds = seconds * 60 + number;
    }
    return clampedSeconds(seconds);
}

QString playlistDurationText(int seconds)
{
    if (seconds < 0)
        return {};
    const auto twoDigits = [](int number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    const int minutes = seconds / 60;
    if (minutes < 60)
        return QStringLiteral("%1:%2").arg(QString::number(minutes), twoDigits(seconds % 60));
    return QStringLiteral("%1:%2:%3")
        .arg(QString::number(minutes / 60), twoDigits(minutes % 60), twoDigits(seconds % 60));
}

QUrl playlistUrl(const QString &text)
{
    return text.startsWith(QLatin1Char('/')) ? QUrl::fromLocalFile(text) : QUrl(text);
}
