// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSocketNotifier>

class ChaosRun;
class Journal;

/// Makes the steps of a console that is told by another program, line by line on standard input:
///
///     step NUMBER   makes that step
///     playlists     answers what knownPlaylists() says
///     wait          does nothing
///     end           ends
///
/// Each line is answered by one that begins with answerMark.
///
/// Steps are made outside of events, as the first console makes its own.
class Follower : public QObject
{
public:
    Follower(ChaosRun *run, Journal *journal);

    /// Waits for events; does what has been told until then. False when it is over.
    bool goOn();

    static constexpr const char *answerMark = "answer: ";
    /// Of this process: ids and how many items they have.
    static QByteArray knownPlaylists();

private:
    void read();
    void obey(const QByteArray &line);

    ChaosRun *const m_run;
    Journal *const m_journal;
    QSocketNotifier m_input;
    QByteArray m_pending;
    bool m_isOver = false;
};
