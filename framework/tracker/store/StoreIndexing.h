// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

class QUrl;
class StoreSession;
struct KelvoIndexReport;

/// Keeps a store up to date with the media folders, on a thread of its own, until it is stopped or the store's session
/// is closed.
class StoreIndexer
{
public:
    virtual ~StoreIndexer() = default;
    /// Any thread; returns at once.
    virtual void stop() = 0;
    /// Any thread. Neither stopped nor ended.
    virtual bool isRunning() const = 0;
    /// A worker thread other than its own.
    virtual void waitForEnd() = 0;
};

/// What the store asks of whoever can read media files, which it cannot itself: see
/// KelvoTrackerStore::startIndexing().
class StoreIndexing
{
public:
    using Report = std::function<void(const KelvoIndexReport &)>;

    virtual ~StoreIndexing() = default;
    /// GUI thread; never null. The indexer calls `report` on its own thread after each pass, and begins when `previous`
    /// (null: there is none) has ended.
    virtual std::shared_ptr<StoreIndexer> start(std::shared_ptr<StoreSession> session, Report report,
        std::shared_ptr<StoreIndexer> previous) const = 0;
    /// Worker thread, for as long as it takes to read the file. True where the file's headers only let guess, so that its
    /// length was counted by going through it: who plays such a file guesses from what has been played so far.
    virtual bool isLengthCounted(const QUrl &url) const = 0;
};
