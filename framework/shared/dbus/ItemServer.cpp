// SPDX-License-Identifier: MIT
#include "ItemServer.h"

#include "ExportedPlaylist.h"

#include <QDBusPendingCallWatcher>

#include <algorithm>
#include <numeric>

using namespace PlaylistProtocol;

namespace {
// An orderly reader has one request under way for each playlist that it shows.
constexpr qsizetype maxRequestsOfCaller = 64;
constexpr size_t maxRequests = 2048;
// Some ten full pages.
constexpr qsizetype maxSent = 4 * 1024 * 1024; // characters
constexpr int patienceWithBus = 5000; // milliseconds
} // namespace

ItemServer::ItemServer(const QDBusConnection &connection, QObject *parent)
    : QObject(parent)
    , m_connection(connection)
{
    connect(&m_turn, &QTimer::timeout, this, &ItemServer::serveNext);
}

void ItemServer::enqueue(ExportedPlaylist *playlist, const QDBusMessage &message)
{
    const Request request{playlist, message};
    const auto waiting = std::count_if(m_requests.begin(), m_requests.end(),
        [&message](const Request &other) { return other.message.service() == message.service(); });
    if (waiting >= maxRequestsOfCaller || m_requests.size() >= maxRequests) {
        refuse(request, QDBusError::LimitsExceeded, QStringLiteral("Too many requests under way"));
        return;
    }
    m_requests.push_back(request);
    if (!m_isWaitingForBus)
        m_turn.start(0);
}

/// The bus answers in order: its answer means that it has taken what was sent before.
void ItemServer::waitForBus()
{
    m_isWaitingForBus = true;
    m_turn.stop();
    const auto question = QDBusMessage::createMethodCall(
        busService, busPath, QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(question, patienceWithBus), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher->error().type() == QDBusError::NoReply) {
            waitForBus();
            return;
        }
        m_isWaitingForBus = false;
        m_sent = 0;
        if (!m_requests.empty())
            m_turn.start(0);
    });
}

void ItemServer::serveNext()
{
    if (m_sent >= maxSent) {
        waitForBus();
        return;
    }
    // Pages are soon made, and somebody waits for the first rows of a list.
    auto next = std::find_if(m_requests.begin(), m_requests.end(),
        [](const Request &request) { return request.message.member() != openItems; });
    if (next == m_requests.end())
        next = m_requests.begin();
    bool answered = true;
    if (!next->playlist)
        refuse(*next, QDBusError::UnknownObject, QStringLiteral("The playlist was withdrawn"));
    else if (next->message.member() == openItems)
        answered = giveFile(*next);
    else
        givePage(*next);
    if (answered)
        m_requests.erase(next);
    if (m_requests.empty())
        m_turn.stop();
}

void ItemServer::givePage(const Request &request)
{
    const QVariantList range = request.message.arguments();
    const SharedItems items = request.playlist->page(range.at(0).toUInt(), range.at(1).toUInt());
    m_connection.send(
        request.message.createReply({QVariant::fromValue(items), request.playlist->revision()}));
    m_sent += std::accumulate(items.cbegin(), items.cend(), qsizetype(0),
        [](qsizetype sum, const SharedItem &item) { return sum + item.characters(); });
}

/// False while there is more to pack.
bool ItemServer::giveFile(const Request &request)
{
    if (!m_connection.connectionCapabilities().testFlag(QDBusConnection::UnixFileDescriptorPassing)) {
        refuse(request, QDBusError::NotSupported, QStringLiteral("The bus passes no files"));
        return true;
    }
    if (!m_packer || !m_packer->isOf(request.playlist))
        m_packer = std::make_unique<ItemPacker>(request.playlist);
    switch (m_packer->goOn()) {
    case ItemPacker::State::Going:
        return false;
    case ItemPacker::State::Done:
        m_connection.send(request.message.createReply(
            {QVariant::fromValue(m_packer->file()), m_packer->count(), m_packer->revision()}));
        return true;
    case ItemPacker::State::Changed:
        m_connection.send(
            request.message.createErrorReply(changedError, QStringLiteral("The list changed meanwhile")));
        break;
    case ItemPacker::State::TooLong:
        refuse(request, QDBusError::NotSupported, QStringLiteral("The list is too long for a file"));
        break;
    case ItemPacker::State::Failed:
        refuse(request, QDBusError::NotSupported, QStringLiteral("There is no room for a file"));
        break;
    }
    m_packer.reset();
    return true;
}

void ItemServer::refuse(const Request &request, QDBusError::ErrorType type, const QString &text)
{
    m_connection.send(request.message.createErrorReply(type, text));
}
