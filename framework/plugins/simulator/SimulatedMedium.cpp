// SPDX-License-Identifier: MIT
#include "SimulatedMedium.h"

#include <QUrlQuery>

#include <algorithm>

namespace {
// More would only slow down the tester's machine.
constexpr int maximumEntries = 10'000;

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

bool isList(const QUrlQuery &query)
{
    return query.hasQueryItem(QStringLiteral("entries"));
}

/// Nothing for one that is no list.
QString entryText(const QUrlQuery &query, int entry)
{
    return isList(query) ? QStringLiteral(" %1").arg(entry + 1) : QString();
}
} // namespace

int SimulatedMedium::countOf(const QUrl &url)
{
    const QUrlQuery query(url);
    return isList(query) ? std::min(text(query, "entries").toInt(), maximumEntries) : 1;
}

SimulatedMedium SimulatedMedium::of(const KelvoMediaInfo &item, int entry, int defaultDuration)
{
    const QUrl url = item.url();
    const QUrlQuery query(url);
    SimulatedMedium medium;
    const QString title
        = firstNonEmpty({text(query, "title"), item.title(), url.fileName(), url.toDisplayString()});
    medium.info = KelvoMediaInfo(
        item.uuid(), url, title + entryText(query, entry), durationOf(item, query, defaultDuration));
    medium.info.setArtist(
        query.hasQueryItem(QStringLiteral("artist")) ? text(query, "artist") : item.artist());
    medium.info.setAlbum(query.hasQueryItem(QStringLiteral("album")) ? text(query, "album") : item.album());
    medium.info.setMimeType(item.mimeType());
    medium.failure = KelvoError::Code(text(query, "fail").toInt());
    medium.seekable = text(query, "seekable") != QLatin1String("0") && medium.info.duration() > 0;
    if (!url.isValid() || url.isEmpty())
        medium.failure = KelvoError::InvalidUrl;
    else if (countOf(url) < 1)
        medium.failure = KelvoError::EmptyPlaylist;
    return medium;
}
