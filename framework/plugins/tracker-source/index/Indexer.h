// SPDX-License-Identifier: MIT
#pragma once

#include "FolderTree.h"
#include "FolderWatch.h"
#include "IndexRun.h"
#include "IndexSettings.h"
#include "KelvoTrackerStore.h"
#include "MediaReader.h"
#include "StoreWriter.h"
#include "store/StoreIndexing.h"
#include "store/StoreSession.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

/// Keeps a store up to date with the folders of its settings, or with the desktop's own index.
///
/// It looks through everything once, then follows what changes. A pass compares folders with what the store
/// holds, reads what is new or changed, and writes it in batches, so that songs appear while a long pass runs.
class Indexer : public StoreIndexer
{
public:
    using Report = StoreIndexing::Report;

    /// `report` is called on the indexer's thread after each pass. Begins when `previous` has ended.
    static std::shared_ptr<Indexer> start(std::shared_ptr<StoreSession> session, IndexSettings settings,
        Report report, std::shared_ptr<StoreIndexer> previous);

    void stop() override;
    bool isRunning() const override;
    void waitForEnd() override;

private:
    Indexer(std::shared_ptr<StoreSession> session, IndexSettings settings, Report report);

    void run();
    void follow(StoreWriter &writer);
    bool wantsFullPass(const FolderWatch::Changes &changes);
    QSet<QByteArray> missingRoots() const;
    bool loadKnown(StoreWriter &writer);
    void fullPass(StoreWriter &writer);
    void partPass(StoreWriter &writer, const QSet<QByteArray> &folders);
    void apply(StoreWriter &writer, FolderTree::Difference &difference, KelvoIndexReport *report);
    bool applyMissing(StoreWriter &writer, FolderTree::Difference &difference, KelvoIndexReport *report);
    bool applyFound(StoreWriter &writer, std::vector<FolderTree::Found> &files, KelvoIndexReport *report);
    bool replaceOfOtherKind(StoreWriter &writer, const FolderTree::Found &found, MediaItem *item);
    MediaItem read(const FolderTree::Found &found);
    bool isDownloaded(const QByteArray &path) const;
    bool fail(const StoreError &error);

    IndexRun m_run;
    const IndexSettings m_settings;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_ended = false;

    FolderWatch m_watch;
    FolderTree m_tree;
    MediaReader m_reader;
    bool m_reload = true; // the tree has to be read from the store again
    QSet<QByteArray> m_missingRoots; // when everything was looked through the last time
};
