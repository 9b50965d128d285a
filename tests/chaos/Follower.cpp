// SPDX-License-Identifier: MIT
#include "Follower.h"

#include "ChaosRun.h"
#include "KelvoPlaylist.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

Follower::Follower(ChaosRun *run, Journal *journal)
    : m_run(run)
    , m_journal(journal)
    , m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_input, &QSocketNotifier::activated, this, &Follower::read);
}

QByteArray Follower::knownPlaylists()
{
    QList<QByteArray> texts;
    for (const KelvoPlaylist *playlist : KelvoRegistry::instance()->allPlaylists())
        texts.append(playlist->uuid().toUtf8() + '=' + QByteArray::number(playlist->count()));
    std::sort(texts.begin(), texts.end());
    return texts.isEmpty() ? QByteArray("none") : texts.join('|');
}

void Follower::read()
{
    char bytes[256];
    const auto count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count > 0) {
        m_pending.append(bytes, qsizetype(count));
        return;
    }
    // Whoever started this has ended.
    m_input.setEnabled(false);
    m_isOver = true;
}

bool Follower::goOn()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    for (qsizetype end = m_pending.indexOf('\n'); end >= 0 && !m_isOver; end = m_pending.indexOf('\n')) {
        const QByteArray line = m_pending.left(end);
        m_pending.remove(0, end + 1);
        obey(line);
    }
    return !m_isOver;
}

void Follower::obey(const QByteArray &line)
{
    QByteArray answer = "done";
    if (line.startsWith("step "))
        m_run->step(line.mid(5).toInt());
    else if (line == "go on")
        m_run->forgetStall(); // it was made to stand still
    else if (line == "playlists")
        answer = knownPlaylists();
    else if (line == "end")
        m_isOver = true;
    if (m_journal->hasFailed())
        answer = "failed";
    std::printf("%s%s\n", answerMark, answer.constData());
    std::fflush(stdout);
}
