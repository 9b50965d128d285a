// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteLimits.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

/// Asks a SPARQL endpoint by HTTP (SPARQL 1.1 Protocol, query by GET) and hands on what it answers while it comes.
///
/// It only reads: there is no operation that could change anything. One thread asks; any thread may cancel. Connections
/// are kept from one question to the next. Certificates are judged by those of the system; names and passwords come from
/// the user's netrc file, for the host that is named there alone.
class HttpQuery
{
public:
    HttpQuery(const QUrl &endpoint, const RemoteLimits &limits);
    ~HttpQuery();
    Q_DISABLE_COPY_MOVE(HttpQuery)

    /// Called on the asking thread. What they return is an error, fit to be shown, which ends the question; empty:
    /// none.
    struct Listener
    {
        /// The head of a good answer is there.
        std::function<QString(const QByteArray &mediaType)> begun;
        std::function<QString(const QByteArray &bytes)> came;
    };

    /// Blocks until the answer has come. Why it has not, fit to be shown; empty when it has or was cancelled.
    QString ask(const QByteArray &query, const Listener &listener);
    /// The asking thread: a row has come or was waited for by somebody else; the time for the next one begins.
    void restartClock();
    /// Ends what is asked, and every later question, at once.
    void cancel();
    bool isCancelled() const;

private:
    struct Private;
    QString m_problem; ///< why nothing can be asked
    std::unique_ptr<Private> d; ///< null: nothing can
};
