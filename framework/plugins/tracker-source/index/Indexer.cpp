// SPDX-License-Identifier: MIT
#include "Indexer.h"

#include "DesktopFollower.h"
#include "ItemBatch.h"
#include "MediaTypes.h"
#include "PlaylistReader.h"
#include "TextRepair.h"
#include "store/FileUri.h"
#include "store/TrackerThreads.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <map>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <tuple>

namespace {
// Changes are gathered until nothing more came for the first time, at most for the second.
constexpr int quietMilliseconds = 300;
constexpr int gatherMilliseconds = 2000;
// How often it is seen to that missing folders have come and that the store's files are still there.
constexpr int tickMilliseconds = 2000;
// How often everything is looked through when not everything can be watched, and after a failure.
constexpr int repeatMilliseconds = 60'000;
constexpr int batchMilliseconds = 1000;

bool isFolder(const QByteArray &path)
{
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool liesIn(const QByteArray &path, const QByteArray &folder)
{
    return !folder.isEmpty() && path.startsWith(folder) && path.mid(folder.size()).startsWith('/');
}

QByteArray pathOf(const FolderTree::Found &found)
{
    return (found.folder == "/" ? found.folder : found.folder + '/') + found.file.name;
}

// The same file before and after a move.
using Identity = std::tuple<quint64, qint64, qint64>;
Identity identityOf(const KnownFile &file)
{
    return {file.stamp.inode, file.stamp.size, file.stamp.modified};
}
} // namespace

Indexer::Indexer(std::shared_ptr<StoreSession> session, IndexSettings settings, Report report)
    : m_run(std::move(session), std::move(report))
    , m_settings(std::move(settings))
    , m_tree([this] { return m_run.isStopped(); }, [this](const QByteArray &folder) { m_watch.add(folder); })
{
}

std::shared_ptr<Indexer> Indexer::start(std::shared_ptr<StoreSession> session, IndexSettings settings,
    Report report, std::shared_ptr<StoreIndexer> previous)
{
    std::shared_ptr<Indexer> indexer(new Indexer(std::move(session), std::move(settings), std::move(report)));
    TrackerThreads::run([indexer, previous = std::move(previous)]() mutable {
        if (previous)
            previous->waitForEnd();
        previous.reset();
        indexer->run();
    });
    return indexer;
}

void Indexer::stop()
{
    m_run.stop();
    m_reader.interrupt();
    m_watch.wake();
}

bool Indexer::isRunning() const
{
    return !m_run.isStopped();
}

void Indexer::waitForEnd()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_ended; });
}

void Indexer::run()
{
    StoreError error;
    if (StoreSession::Entry entry = m_run.session().enter([this] { stop(); }, &error)) {
        StoreWriter writer(entry.connection(), [this] { return m_run.isStopped(); });
        if (!m_settings.useDesktopIndex || !DesktopFollower(m_run, m_watch).follow(writer)) {
            fullPass(writer);
            follow(writer);
        }
    }
    m_run.stop();
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

void Indexer::follow(StoreWriter &writer)
{
    QSet<QByteArray> folders;
    QElapsedTimer sinceFirst;
    QElapsedTimer sinceFull;
    sinceFull.start();
    while (!m_run.isStopped()) {
        const FolderWatch::Changes changes
            = m_watch.wait(folders.isEmpty() ? tickMilliseconds : quietMilliseconds);
        if (m_run.isStopped())
            return;
        if (!m_run.hasItsStore())
            return;
        const bool again = (!m_watch.isComplete() || m_reload || m_tree.hasGaps())
            && sinceFull.hasExpired(repeatMilliseconds);
        if (wantsFullPass(changes) || again) {
            folders.clear();
            fullPass(writer);
            sinceFull.start();
            continue;
        }
        if (folders.isEmpty())
            sinceFirst.start();
        const bool quiet = changes.folders.isEmpty();
        folders.unite(changes.folders);
        if (folders.isEmpty() || (!quiet && !sinceFirst.hasExpired(gatherMilliseconds)))
            continue;
        partPass(writer, std::exchange(folders, {}));
    }
}

bool Indexer::wantsFullPass(const FolderWatch::Changes &changes)
{
    return changes.overflow || missingRoots() != m_missingRoots;
}

QSet<QByteArray> Indexer::missingRoots() const
{
    QSet<QByteArray> missing;
    for (const QByteArray &root : m_settings.folders) {
        if (!isFolder(root))
            missing.insert(root);
    }
    return missing;
}

bool Indexer::loadKnown(StoreWriter &writer)
{
    StoreError error;
    const auto files = writer.readKnown(&error);
    if (error)
        return fail(error);
    m_tree.load(files);
    m_reload = false;
    return true;
}

void Indexer::fullPass(StoreWriter &writer)
{
    QElapsedTimer timer;
    timer.start();
    KelvoIndexReport report;
    report.complete = true;
    if (m_reload && !loadKnown(writer))
        return;
    m_missingRoots = missingRoots(); // before the walk, so that one that comes meanwhile is noticed
    FolderTree::Difference difference;
    m_tree.compareAll(m_settings.folders, &difference);
    apply(writer, difference, &report);
    report.milliseconds = int(timer.elapsed());
    if (!m_run.isStopped())
        m_run.report(report);
}

void Indexer::partPass(StoreWriter &writer, const QSet<QByteArray> &folders)
{
    if (m_reload) {
        fullPass(writer);
        return;
    }
    QElapsedTimer timer;
    timer.start();
    KelvoIndexReport report;
    FolderTree::Difference difference;
    m_tree.compare(folders, &difference);
    if (difference.added.empty() && difference.changed.empty() && difference.missing.empty())
        return;
    apply(writer, difference, &report);
    report.milliseconds = int(timer.elapsed());
    if (!m_run.isStopped())
        m_run.report(report);
}

void Indexer::apply(StoreWriter &writer, FolderTree::Difference &difference, KelvoIndexReport *report)
{
    StoreError error;
    // Playlists last: what they name should be there by then. Videos take long, songs should not wait for them.
    const auto order = [](const FolderTree::Found &found) {
        return found.file.kind == MediaKind::Playlist ? 2 : found.file.kind == MediaKind::Video ? 1 : 0;
    };
    bool changes = !difference.added.empty() || !difference.changed.empty() || !difference.missing.empty();
    if (!applyMissing(writer, difference, report))
        return;
    std::vector<FolderTree::Found> files = std::move(difference.changed);
    files.insert(files.end(), std::make_move_iterator(difference.added.begin()),
        std::make_move_iterator(difference.added.end()));
    std::stable_sort(
        files.begin(), files.end(), [&order](const auto &a, const auto &b) { return order(a) < order(b); });
    if (!applyFound(writer, files, report))
        return;
    changes = changes || writer.isUntidy(&error);
    if (error || (changes && !m_run.isStopped() && !writer.tidyUp(&error)))
        fail(error);
    report->changed -= report->moved; // these were written like changed ones
    report->files = m_tree.fileCount();
}

// Tells files that moved from files that went, and takes the latter out of the store.
bool Indexer::applyMissing(StoreWriter &writer, FolderTree::Difference &difference, KelvoIndexReport *report)
{
    StoreError error;
    std::multimap<Identity, FolderTree::Found *> arrivals;
    for (FolderTree::Found &found : difference.added)
        arrivals.emplace(identityOf(found.file), &found);
    std::vector<StoreWriter::Move> moved;
    std::vector<KnownFile> gone;
    for (const FolderTree::Missing &missing : difference.missing) {
        const auto arrival = arrivals.find(identityOf(missing.file));
        if (arrival == arrivals.end()) {
            gone.push_back(missing.file);
            continue;
        }
        arrival->second->file.number = missing.file.number;
        arrival->second->file.kind = missing.file.kind;
        moved.push_back({missing.file, pathOf(*arrival->second)});
        arrivals.erase(arrival);
    }
    if (!writer.remove(gone, &error) || !writer.move(moved, &error))
        return fail(error);
    report->removed = int(gone.size());
    report->moved = int(moved.size());
    return true;
}

bool Indexer::applyFound(StoreWriter &writer, std::vector<FolderTree::Found> &files, KelvoIndexReport *report)
{
    StoreError error;
    ItemBatch batch(writer, *report, [this](const MediaItem &item) {
        m_tree.insert(item.path, {{}, item.stamp, item.number, item.kind});
    });
    QElapsedTimer sinceWritten;
    sinceWritten.start();
    for (const FolderTree::Found &found : files) {
        if (m_run.isStopped())
            break;
        if (!replaceOfOtherKind(writer, found, &batch.add(read(found))))
            return false;
        if (!batch.isFull() && !sinceWritten.hasExpired(batchMilliseconds))
            continue;
        if (!batch.write(&error))
            return fail(error);
        sinceWritten.start();
    }
    // Also what was read before a stop is kept.
    return batch.write(&error) || fail(error);
}

// A file whose new content is of another kind becomes another resource.
bool Indexer::replaceOfOtherKind(StoreWriter &writer, const FolderTree::Found &found, MediaItem *item)
{
    StoreError error;
    if (item->isNew || item->kind == found.file.kind)
        return true;
    if (!writer.remove({found.file}, &error))
        return fail(error);
    item->isNew = true;
    return true;
}

MediaItem Indexer::read(const FolderTree::Found &found)
{
    MediaItem item;
    item.kind = found.file.kind;
    item.isNew = found.file.number == 0;
    item.number = item.isNew ? QRandomGenerator::global()->generate64() : found.file.number;
    item.stamp = found.file.stamp;
    item.path = pathOf(found);
    item.uri = FileUri::fromPath(item.path);
    item.title = TextRepair::fileName(item.uri);
    item.mimeType = MediaTypes::mimeType(found.file.name);
    item.isDownloaded = isDownloaded(item.path);
    item.isReadable = item.kind == MediaKind::Playlist ? readPlaylist(&item) : m_reader.read(&item);
    return item;
}

bool Indexer::isDownloaded(const QByteArray &path) const
{
    // Browsers and download tools note there where a file came from.
    return liesIn(path, m_settings.downloadFolder) || path.contains("/Downloads/")
        || ::getxattr(path.constData(), "user.xdg.origin.url", nullptr, 0) >= 0;
}

bool Indexer::fail(const StoreError &error)
{
    m_reload = true; // what is known is what the store holds, not what should have been written
    return m_run.fail(error);
}
