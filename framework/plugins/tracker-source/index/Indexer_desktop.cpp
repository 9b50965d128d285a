// SPDX-License-Identifier: MIT
#include "Indexer.h"

#include "KelvoMessageHandler.h"
#include "PlaylistReader.h"

#include <QElapsedTimer>
#include <QHash>
#include <QRandomGenerator>

namespace {
// The desktop's index tells of changes, but not which: reading all of it again takes milliseconds.
constexpr int desktopInterval = 10'000;
} // namespace

// False when there is no such index: then the folders are looked through.
bool Indexer::followDesktop(StoreWriter &writer)
{
    StoreError error;
    auto connection = StoreConnection::openDesktopIndex(&error);
    if (!connection) {
        qCWarning(lcKelvo).noquote() << "The desktop's index does not run, media folders are looked through:"
                                     << error.message;
        return false;
    }
    const DesktopIndex desktop(std::move(connection));
    while (!m_stopped) {
        desktopPass(writer, desktop);
        m_watch.wait(desktopInterval);
        if (const StoreError gone = m_session->checkFiles()) {
            m_session->report(gone);
            break;
        }
    }
    return true;
}

void Indexer::desktopPass(StoreWriter &writer, const DesktopIndex &desktop)
{
    QElapsedTimer timer;
    timer.start();
    StoreError error;
    KelvoIndexReport report;
    report.complete = true;
    std::vector<MediaItem> items = desktop.read(m_cancellation, &error);
    if (m_stopped)
        return;
    if (error) {
        qCWarning(lcKelvo).noquote() << "The desktop's index cannot be read:" << error.message;
        return;
    }
    report.files = int(items.size());
    if (!applyDesktop(writer, std::move(items), &report))
        return;
    const bool changes = report.added + report.changed + report.removed > 0;
    if (changes && !writer.tidyUp(&error))
        fail(error);
    report.milliseconds = int(timer.elapsed());
    m_report(report);
}

bool Indexer::applyDesktop(StoreWriter &writer, std::vector<MediaItem> items, KelvoIndexReport *report)
{
    StoreError error;
    QHash<QByteArray, KnownFile> known;
    for (auto &[path, file] : writer.readKnown(&error))
        known.insert(path, file);
    if (error)
        return fail(error);
    std::vector<MediaItem> batch;
    for (MediaItem &item : items) {
        const KnownFile before = known.take(item.path);
        if (before.number && before.kind == item.kind && before.stamp.sameContent(item.stamp))
            continue;
        item.isNew = before.number == 0 || before.kind != item.kind;
        if (item.isNew && before.number && !writer.remove({before}, &error))
            return fail(error);
        item.number = item.isNew ? QRandomGenerator::global()->generate64() : before.number;
        if (item.kind == MediaKind::Playlist)
            readPlaylist(&item);
        batch.push_back(std::move(item));
        if (batch.size() >= ItemsPerBatch && !flush(writer, &batch, report))
            return false;
    }
    const auto gone = known.values();
    report->removed = int(gone.size());
    return flush(writer, &batch, report)
        && (writer.remove({gone.begin(), gone.end()}, &error) || fail(error));
}
