// SPDX-License-Identifier: MIT
#include "TrackerIndexCase.h"

#include "index/MediaIndexing.h"
#include "index/StoreWriter.h"
#include "store/StoreSession.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>

void TrackerIndexCase::startIndexing()
{
    KelvoTrackerStore::instance()->startIndexing(std::make_shared<MediaIndexing>());
}

void TrackerIndexCase::indexAnew()
{
    KelvoTrackerStore::instance()->stopIndexing();
    startIndexing();
}

bool TrackerIndexCase::index()
{
    QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
    startIndexing();
    return openStore() && (indexed.count() > 0 || indexed.wait(Patience));
}

bool TrackerIndexCase::writeSongs(const std::vector<MediaItem> &items)
{
    StoreError error;
    const StoreSession::Entry entry = store().session()->enter([] {}, &error);
    if (!entry)
        return false;
    StoreWriter writer(entry.connection());
    std::vector<bool> written;
    return writer.write(items, &written, &error)
        && std::find(written.begin(), written.end(), false) == written.end();
}

MediaItem TrackerIndexCase::song(int number)
{
    MediaItem item;
    item.kind = MediaKind::Song;
    item.number = quint64(number) + 1;
    item.path = "/music/" + QByteArray::number(number) + ".mp3";
    item.uri = "file://" + item.path;
    item.stamp = {item.number, 1000 + number, 5};
    item.title = QStringLiteral("Song %1").arg(number, 6, 10, QLatin1Char('0'));
    item.tags.artists = QStringList(QStringLiteral("Artist %1").arg(number % 7));
    item.tags.album = QStringLiteral("Album %1").arg(number % 3);
    item.tags.albumArtist = QStringLiteral("Various");
    item.tags.genre = QStringLiteral("Rock");
    item.tags.year = 1990;
    item.tags.track = number + 1;
    item.seconds = 100 + number;
    return item;
}
