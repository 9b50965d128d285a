// SPDX-License-Identifier: MIT
#pragma once

#include "PortableQuery.h"
#include "RemoteFetch.h"
#include "RemoteLibraries.h"
#include "RemoteLimits.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

/// What the libraries on other machines answer to one query. Each is asked by a worker thread for its first rows; one
/// thread takes the rows and has the rest asked for when it has come to its end.
///
/// All rows of a library come together, in the order of the query; the library that answers first is the first one. So
/// that of servers which sort by different rules each keeps its own order, and a slow one keeps nobody waiting.
/// No more than a few hundred KiB of each wait to be taken.
class RemoteAnswers : public std::enable_shared_from_this<RemoteAnswers>
{
public:
    /// @param interrupted  called, by another thread, when the program ends: who takes the rows is to stop waiting for
    ///                     anything
    RemoteAnswers(const RemoteLibraries &libraries, const PortableQuery &query, int firstRows,
        const RemoteLimits &limits, std::function<void()> interrupted);

    /// Any thread. Asks all of them.
    void start();
    /// Any thread. Ends every request; nothing comes afterwards.
    void cancel();
    /// Cancels all that there are. The program ends.
    static void cancelAll();

    // The thread that takes the rows:
    struct Rows
    {
        QUrl endpoint;
        std::vector<RemoteRow> rows;
    };
    /// Waits for rows. Empty at the end and when cancelled.
    Rows take();
    bool isCancelled();
    /// take() would wait.
    bool wouldWait();
    /// After the end: what went wrong; fit to be shown.
    QString failures();
    const std::vector<PortableQuery::Column> &columns() const { return m_query.columns(); }

private:
    enum class Stage { Asking, HasMore, Ended, Taken };
    struct Part
    {
        QUrl endpoint;
        std::unique_ptr<RemoteFetch> fetch; ///< null when nothing is left to ask for
        std::deque<std::vector<RemoteRow>> rows;
        Stage stage = Stage::Asking;
    };

    bool put(Part &part, std::vector<RemoteRow> rows);
    void ask(Part &part, std::function<RemoteFetch::End(RemoteFetch &)> question);
    void end(Part &part, const RemoteFetch::End &end);
    Part *choose();
    bool isAtEnd() const;

    const PortableQuery m_query;
    const int m_firstRows;
    const std::function<void()> m_interrupted;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Part> m_parts; ///< none comes or goes; their stages and rows are under the lock
    Part *m_current = nullptr;
    QStringList m_failures;
    bool m_cancelled = false;
};
