// SPDX-License-Identifier: MIT
#include "SimulatedMedium.h"

#include <QUrlQuery>

#include <algorithm>

namespace {
// More would only slow down the tester's machine.
constexpr int MaximumEntries = 10'000;

QString text(const QUrlQuery &query, const char *key)
{
    return query.queryItemValue(QLatin1String(key), QUrl::FullyDecoded);
}

QString firstNonEmpty(std::initializer_list<QString> texts)
{
    for (const QString &candidate : texts) {
        if (!candidate.isEmpty())
            return candidate;
    }
    return QStringLiteral("Untitled");
}

int durationOf(const KelvoMediaInfo &item, const QUrlQuery &query, int defaultDuration)
{
    bool ok = false;
    const int told = text(query, "duration").toInt(&ok);
    const int duration = ok ? told : (item.duration() > 0 ? item.duration() : defaultDuration);
    return duration > 0 ? duration : -1;
}

SimulatedMedium mediumOf(
    const KelvoMediaInfo &item, const QUrlQuery &query, const QString &suffix, int duration)
{
    const QUrl url = item.url();
    SimulatedMedium medium;
    const QString title
        = firstNonEmpty({text(query, "title"), item.title(), url.fileName(), url.toDisplayString()});
    medium.info = KelvoMediaInfo(item.uuid(), url, title + suffix, durationOf(item, query, duration));
    medium.info.setArtist(
        query.hasQueryItem(QStringLiteral("artist")) ? text(query, "artist") : item.artist());
    medium.info.setAlbum(query.hasQueryItem(QStringLiteral("album")) ? text(query, "album") : item.album());
    medium.info.setMimeType(item.mimeType());
    medium.failure = KelvoError::Code(text(query, "fail").toInt());
    medium.seekable = text(query, "seekable") != QLatin1String("0") && medium.info.duration() > 0;
    if (!url.isValid() || url.isEmpty())
        medium.failure = KelvoError::InvalidUrl;
    return medium;
}
} // namespace

QList<SimulatedMedium> SimulatedMedium::entriesOf(const KelvoMediaInfo &item, int defaultDuration)
{
    const QUrlQuery query(item.url());
    if (!query.hasQueryItem(QStringLiteral("entries")))
        return {mediumOf(item, query, {}, defaultDuration)};
    const int count = std::min(text(query, "entries").toInt(), MaximumEntries);
    QList<SimulatedMedium> entries;
    for (int i = 1; i <= count; ++i)
        entries.append(mediumOf(item, query, QStringLiteral(" %1").arg(i), defaultDuration));
    if (entries.isEmpty()) {
        entries.append(mediumOf(item, query, {}, defaultDuration));
        entries.first().failure = KelvoError::EmptyPlaylist;
    }
    return entries;
}
