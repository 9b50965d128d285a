// SPDX-License-Identifier: MIT
#include "PageServer.h"

#include "ExportedPlaylist.h"
#include "PackedItems.h"

#include <algorithm>

namespace {
// An orderly reader has one request under way for each playlist that it shows.
constexpr qsizetype maxRequestsOfCaller = 64;
constexpr size_t maxRequests = 2048;
} // namespace

PageServer::PageServer(const QDBusConnection &connection, QObject *parent)
    : QObject(parent)
    , m_connection(connection)
{
    connect(&m_turn, &QTimer::timeout, this, &PageServer::serveNext);
}

void PageServer::enqueue(ExportedPlaylist *playlist, const QDBusMessage &request, uint start, uint count)
{
    const auto waiting = std::count_if(m_requests.begin(), m_requests.end(),
        [&request](const Request &other) { return other.message.service() == request.service(); });
    if (waiting >= maxRequestsOfCaller || m_requests.size() >= maxRequests) {
        m_connection.send(request.createErrorReply(
            QDBusError::LimitsExceeded, QStringLiteral("Too many requests under way")));
        return;
    }
    m_requests.push_back({playlist, request, start, count});
    m_turn.start(0);
}

void PageServer::serveNext()
{
    const Request request = std::move(m_requests.front());
    m_requests.pop_front();
    if (m_requests.empty())
        m_turn.stop();
    if (!request.playlist) {
        m_connection.send(request.message.createErrorReply(
            QDBusError::UnknownObject, QStringLiteral("The playlist was withdrawn")));
        return;
    }
    QDBusMessage reply = request.message.createReply();
    const SharedItems items = request.playlist->page(request.start, request.count);
    const bool packed = request.message.member() == u"GetPackedItems";
    reply << (packed ? QVariant(PackedItems::pack(items)) : QVariant::fromValue(items))
          << request.playlist->revision();
    m_connection.send(reply);
}
