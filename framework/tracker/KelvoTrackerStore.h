// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class StoreIndexing;
class StoreSession;

/// What one pass of the indexer found.
struct KelvoIndexReport
{
    int added = 0;
    int changed = 0;
    int moved = 0;
    int removed = 0;
    int failed
        = 0; ///< files that could not be read as what their name says; they are there, by their file name
    int files = 0; ///< media files and playlists that are known now
    int milliseconds = 0;
    bool complete = false; ///< the whole of all folders was looked through, not only what had changed
};
Q_DECLARE_METATYPE(KelvoIndexReport)

/// The tracker store of this process: its opening and closing, and what is written into it.
///
/// A database in $XDG_DATA_HOME/kelvo/tracker, in the Nepomuk ontology. It is open for as long as someone holds it.
/// One process owns it; in a second one it is read only and nothing is indexed. A damaged store is moved
/// aside ("tracker.damaged-<time>"), which is said in the log and by the next query's error, and made anew.
/// GUI thread; everything slow happens on other threads, so no operation here blocks.
class KELVO_TRACKER_EXPORT KelvoTrackerStore : public QObject
{
    Q_OBJECT
public:
    enum State { Closed, Opening, Open, Failed };
    Q_ENUM(State)

    static KelvoTrackerStore *instance();

    /// Keeps the store open until release() or the user's end. Answers with opened(), also when it is open already.
    void hold(QObject *user);
    void release(QObject *user);

    State state() const;
    /// Why the last opening failed.
    QString errorText() const;
    bool isReadOnly() const;
    /// Where the store lies (or would lie).
    QString folder() const;

    /// Keeps the store up to date by this means, from now until stopIndexing(). Nothing is indexed while the store is
    /// read only.
    void startIndexing(std::shared_ptr<const StoreIndexing> indexing);
    void stopIndexing();

    /// Counts one playing of the song with this URL and notes the time. Ends with playCounted(), when it is a song
    /// of the store.
    void countPlay(const QUrl &url);
    /// Corrects the length of the song or video with this URL, as playing it has shown it; until the file changes. Ends
    /// with lengthCorrected(), when the store had another one that who indexes it does not know for sure.
    void correctLength(const QUrl &url, int seconds);
    /// Adds the song to the favourites or takes it out; files keep their mark when they are moved or changed.
    /// (The entries of a playlist file named "Favorites" or "Favourites" are favourites too.)
    void setFavorite(const QUrl &url, bool favorite);
    /// Marks the song as downloaded, or not. The indexer marks what lies in the user's download folder or in a folder
    /// named "Downloads", and files with the extended attribute "user.xdg.origin.url".
    void setDownloaded(const QUrl &url, bool downloaded);

    /// What queries run on. Never null.
    std::shared_ptr<StoreSession> session() const;

Q_SIGNALS:
    /// The end of an opening, or the answer to hold() when nothing was left to do.
    void opened(bool ok);
    /// The store's files are closed and free for another process.
    void closed();
    /// A pass of the indexer has ended.
    void indexed(const KelvoIndexReport &report);
    void playCounted(const QUrl &url, int count);
    void lengthCorrected(const QUrl &url, int seconds);
    /// A mark was set or taken away.
    void marked(const QUrl &url);
    /// The store had to be rebuilt; a text for the user.
    void rebuilt(const QString &reason);

private:
    KelvoTrackerStore();
    ~KelvoTrackerStore() override;

    void open();
    void close();
    void finishOpening(quint64 attempt, int state, const QString &text, bool readOnly);
    void rebuild(quint64 attempt, const struct StoreError &why);
    void updateIndexer();
    void mark(const QUrl &url, const char *tag, bool on);
    void update(std::function<void(class StoreConnection &, struct StoreError *)> change);
    void planNextTry();
    void shutDown();

    struct Private;
    std::unique_ptr<Private> d;
};
