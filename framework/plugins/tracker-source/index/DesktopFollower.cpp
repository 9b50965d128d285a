// SPDX-License-Identifier: MIT
#include "DesktopFollower.h"

#include "ItemBatch.h"
#include "KelvoMessageHandler.h"
#include "PlaylistReader.h"

#include <QElapsedTimer>
#include <QHash>
#include <QRandomGenerator>

namespace {
// The desktop's index tells of changes, but not which: reading all of it again takes milliseconds.
constexpr int interval = 10'000;
} // namespace

DesktopFollower::DesktopFollower(IndexRun &run, FolderWatch &pause)
    : m_run(run)
    , m_pause(pause)
{
}

bool DesktopFollower::follow(StoreWriter &writer)
{
    StoreError error;
    auto connection = StoreConnection::openDesktopIndex(&error);
    if (!connection) {
        qCWarning(lcKelvo).noquote() << "The desktop's index does not run, media folders are looked through:"
                                     << error.message;
        return false;
    }
    const DesktopIndex desktop(std::move(connection));
    while (!m_run.isStopped()) {
        pass(writer, desktop);
        m_pause.wait(interval);
        if (!m_run.hasItsStore())
            break;
    }
    return true;
}

void DesktopFollower::pass(StoreWriter &writer, const DesktopIndex &desktop)
{
    QElapsedTimer timer;
    timer.start();
    StoreError error;
    KelvoIndexReport report;
    report.complete = true;
    std::vector<MediaItem> items = desktop.read(m_run.cancellation(), &error);
    if (m_run.isStopped())
        return;
    if (error) {
        qCWarning(lcKelvo).noquote() << "The desktop's index cannot be read:" << error.message;
        return;
    }
    report.files = int(items.size());
    if (!apply(writer, std::move(items), &report))
        return;
    const bool changes = writer.isUntidy(&error);
    if (error || (changes && !writer.tidyUp(&error)))
        m_run.fail(error);
    report.milliseconds = int(timer.elapsed());
    m_run.report(report);
}

bool DesktopFollower::apply(StoreWriter &writer, std::vector<MediaItem> items, KelvoIndexReport *report)
{
    StoreError error;
    QHash<QByteArray, KnownFile> known;
    for (auto &[path, file] : writer.readKnown(&error))
        known.insert(path, file);
    if (error)
        return m_run.fail(error);
    ItemBatch batch(writer, *report);
    for (MediaItem &item : items) {
        const KnownFile before = known.take(item.path);
        if (before.number && before.kind == item.kind && before.stamp.sameContent(item.stamp))
            continue;
        item.isNew = before.number == 0 || before.kind != item.kind;
        if (item.isNew && before.number && !writer.remove({before}, &error))
            return m_run.fail(error);
        item.number = item.isNew ? QRandomGenerator::global()->generate64() : before.number;
        if (item.kind == MediaKind::Playlist)
            readPlaylist(&item);
        batch.add(std::move(item));
        if (batch.isFull() && !batch.write(&error))
            return m_run.fail(error);
    }
    const auto gone = known.values();
    report->removed = int(gone.size());
    return (batch.write(&error) && writer.remove({gone.begin(), gone.end()}, &error)) || m_run.fail(error);
}
