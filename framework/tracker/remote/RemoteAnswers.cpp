// SPDX-License-Identifier: MIT
#include "RemoteAnswers.h"

#include "../store/TrackerThreads.h"
#include "KelvoMessageHandler.h"

#include <algorithm>

namespace {
// Pieces as they come from the network, of 16 KiB at most.
constexpr size_t piecesWaiting = 16;

struct Running
{
    std::mutex mutex;
    std::vector<std::weak_ptr<RemoteAnswers>> all;
};

Running &running()
{
    static Running answers;
    return answers;
}
} // namespace

RemoteAnswers::RemoteAnswers(const RemoteLibraries &libraries, const PortableQuery &query, int firstRows,
    const RemoteLimits &limits, std::function<void()> interrupted)
    : m_query(query)
    , m_firstRows(firstRows)
    , m_interrupted(std::move(interrupted))
    , m_failures(libraries.errors)
{
    for (const QUrl &library : libraries.endpoints) {
        Part &part = m_parts.emplace_back();
        part.endpoint = library;
        part.fetch = std::make_unique<RemoteFetch>(library, query, limits,
            [this, &part](std::vector<RemoteRow> rows) { return put(part, std::move(rows)); });
    }
}

void RemoteAnswers::start()
{
    {
        const std::lock_guard lock(running().mutex);
        auto &all = running().all;
        all.erase(
            std::remove_if(all.begin(), all.end(), [](const auto &one) { return one.expired(); }), all.end());
        all.push_back(weak_from_this());
    }
    for (Part &part : m_parts)
        ask(part, [rows = m_firstRows](RemoteFetch &fetch) { return fetch.askFirst(rows); });
}

void RemoteAnswers::cancel()
{
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    for (Part &part : m_parts) {
        if (part.fetch)
            part.fetch->cancel();
    }
    m_changed.notify_all();
}

void RemoteAnswers::cancelAll()
{
    std::vector<std::weak_ptr<RemoteAnswers>> all;
    {
        const std::lock_guard lock(running().mutex);
        all = std::exchange(running().all, {});
    }
    for (const auto &one : all) {
        if (const auto answers = one.lock()) {
            answers->cancel();
            answers->m_interrupted();
        }
    }
}

void RemoteAnswers::ask(Part &part, std::function<RemoteFetch::End(RemoteFetch &)> question)
{
    TrackerThreads::run([self = shared_from_this(), &part, question = std::move(question)] {
        self->end(part, question(*part.fetch));
    });
}

void RemoteAnswers::end(Part &part, const RemoteFetch::End &end)
{
    QString failure;
    if (!end.error.isEmpty()) {
        const QString address = part.endpoint.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery);
        failure = QStringLiteral("The library %1 failed: %2").arg(address, end.error);
        qCWarning(lcKelvo).noquote() << failure;
    }
    std::unique_ptr<RemoteFetch> finished; // ends its connection without the lock
    const std::lock_guard lock(m_mutex);
    part.stage = end.isMore ? Stage::HasMore : Stage::Ended;
    if (!end.isMore)
        finished = std::move(part.fetch);
    if (!failure.isEmpty())
        m_failures.append(failure);
    m_changed.notify_all();
}

bool RemoteAnswers::put(Part &part, std::vector<RemoteRow> rows)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_cancelled || part.rows.size() < piecesWaiting; });
    part.rows.push_back(std::move(rows));
    m_changed.notify_all();
    return !m_cancelled;
}

RemoteAnswers::Rows RemoteAnswers::take()
{
    std::unique_lock lock(m_mutex);
    while (!m_cancelled && !isAtEnd()) {
        m_current = choose();
        if (m_current && !m_current->rows.empty()) {
            Rows taken{m_current->endpoint, std::move(m_current->rows.front())};
            m_current->rows.pop_front();
            m_changed.notify_all();
            return taken;
        }
        if (m_current && m_current->stage == Stage::Ended) {
            m_current->stage = Stage::Taken;
        } else if (m_current && m_current->stage == Stage::HasMore) {
            m_current->stage = Stage::Asking;
            ask(*m_current, [](RemoteFetch &fetch) { return fetch.askRest(); });
        } else {
            m_changed.wait(lock);
        }
    }
    return {};
}

// The library whose rows are being taken, or the next one that has answered.
RemoteAnswers::Part *RemoteAnswers::choose()
{
    if (m_current && m_current->stage != Stage::Taken)
        return m_current;
    const auto found = std::find_if(m_parts.begin(), m_parts.end(), [](const Part &part) {
        return part.stage != Stage::Taken && (!part.rows.empty() || part.stage != Stage::Asking);
    });
    return found == m_parts.end() ? nullptr : &*found;
}

bool RemoteAnswers::isAtEnd() const
{
    return std::all_of(
        m_parts.begin(), m_parts.end(), [](const Part &part) { return part.stage == Stage::Taken; });
}

bool RemoteAnswers::isCancelled()
{
    const std::lock_guard lock(m_mutex);
    return m_cancelled;
}

bool RemoteAnswers::wouldWait()
{
    const std::lock_guard lock(m_mutex);
    return !m_cancelled && m_current && m_current->rows.empty();
}

QString RemoteAnswers::failures()
{
    const std::lock_guard lock(m_mutex);
    return m_failures.join(QStringLiteral("; "));
}
