// SPDX-License-Identifier: MIT
#include "PageLoader.h"

#include "PackedItems.h"

#include <QDBusMessage>
#include <QDBusPendingCall>

#include <algorithm>
#include <limits>

using namespace PlaylistProtocol;

namespace {
// Milliseconds between the end of one pass and the next one.
constexpr int shortestPause = 20;
constexpr int longestPause = 3000;
} // namespace

PageLoader::PageLoader(PlaylistAddress address, PageTurns *turns, uint revision, QObject *parent)
    : QObject(parent)
    , m_address(std::move(address))
    , m_turns(turns)
    , m_newestRevision(revision)
{
    m_nextPass.setSingleShot(true);
    connect(&m_nextPass, &QTimer::timeout, this, &PageLoader::startPass);
}

PageLoader::~PageLoader()
{
    endTurn();
}

void PageLoader::use()
{
    if (m_state == State::Unused || m_state == State::Stalled)
        startPass();
}

void PageLoader::noteRevision(uint revision)
{
    if (m_state == State::Broken || !checkRevision(revision))
        return;
    // While a pass runs, its own pages tell that they are of another revision.
    const bool behind = m_state == State::Settled && revision != m_passRevision;
    if (behind || m_state == State::Stalled)
        schedulePass();
}

void PageLoader::schedulePass()
{
    m_state = State::Waiting;
    m_nextPass.start(std::clamp(m_pause, shortestPause, longestPause));
}

/// Each pass that came to nothing doubles the pause, so that a list in motion costs little.
void PageLoader::restartLater()
{
    m_pause = std::clamp(m_pause * 2, shortestPause, longestPause);
    schedulePass();
}

void PageLoader::startPass()
{
    m_nextPass.stop();
    m_state = State::Reading;
    // What an unfinished first pass has handed on stays in view until a whole list can take its place.
    if (m_received > 0)
        m_firstPass = false;
    m_received = 0;
    m_characters = 0;
    m_staged.clear();
    m_ids.clear();
    m_attempt = 1;
    m_passClock.start();
    requestPage();
}

void PageLoader::requestPage()
{
    if (m_turns)
        m_turns->take(this, [this] { sendRequest(); });
}

void PageLoader::endTurn()
{
    if (std::exchange(m_hasTurn, false) && m_turns)
        m_turns->giveBack();
}

void PageLoader::sendRequest()
{
    m_hasTurn = true;
    if (m_state != State::Reading) { // What its owner did meanwhile has ended that.
        endTurn();
        return;
    }
    const uint asked = m_received == 0 ? FirstPageItems : NextPageItems;
    auto request = QDBusMessage::createMethodCall(m_address.owner, m_address.path, Interface,
        m_packed ? QStringLiteral("GetPackedItems") : QStringLiteral("GetItems"));
    request << uint(m_received) << asked;
    request.setAutoStartService(false);
    auto *watcher
        = new QDBusPendingCallWatcher(m_address.connection.asyncCall(request, m_address.timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, asked] {
        watcher->deleteLater();
        endTurn();
        handleReply(*watcher, asked);
    });
}

void PageLoader::handleReply(const QDBusPendingCallWatcher &call, uint asked)
{
    if (m_state != State::Reading)
        return;
    const QDBusMessage reply = call.reply();
    if (!isAnswerOf(reply, m_address.owner)) {
        handleSilence();
        return;
    }
    if (reply.type() == QDBusMessage::ErrorMessage) {
        handleError(call.error());
        return;
    }
    if (reply.signature() != (m_packed ? u"ayu" : u"a(ssssx)u"))
        breakOff(QStringLiteral("its items are of the type \"%1\"").arg(reply.signature()));
    else if (m_packed)
        handlePackedItems(reply.arguments(), asked);
    else
        handleItems(reply.arguments(), asked);
}

void PageLoader::handlePackedItems(const QVariantList &answer, uint asked)
{
    std::optional<SharedItems> items = PackedItems::unpack(answer.at(0).toByteArray(), asked);
    if (items)
        handlePage(*std::move(items), answer.at(1).toUInt());
    else
        breakOff(QStringLiteral("its packed items are not what it was asked for"));
}

void PageLoader::handleItems(const QVariantList &answer, uint asked)
{
    bool more = false;
    SharedItems items = readItems(answer.at(0).value<QDBusArgument>(), asked, &more);
    if (more)
        breakOff(QStringLiteral("it gave more items than it was asked for"));
    else
        handlePage(std::move(items), answer.at(1).toUInt());
}

void PageLoader::handleError(const QDBusError &error)
{
    switch (error.type()) {
    case QDBusError::UnknownMethod:
        if (std::exchange(m_packed, false))
            requestPage();
        else
            giveUp(QStringLiteral("its process cannot give its items"));
        break;
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownObject:
    case QDBusError::Disconnected:
        // It is just going; the news of that is on its way.
        m_state = State::Stalled;
        break;
    case QDBusError::LimitsExceeded:
        // Many of its lists are being read at once.
        restartLater();
        break;
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        handleSilence();
        break;
    default:
        giveUp(QStringLiteral("its process answers: ") + error.message().left(MaxTextCharacters));
    }
}

void PageLoader::handleSilence()
{
    if (m_attempt++ < MaxAttempts) {
        requestPage();
        return;
    }
    giveUp(QStringLiteral("its process does not answer"));
    m_nextPass.start(RestInTimeouts * m_address.timeout);
}

void PageLoader::handlePage(SharedItems items, uint revision)
{
    m_attempt = 1;
    if (!checkRevision(revision))
        return;
    if (m_received == 0) {
        m_passRevision = revision;
    } else if (revision != m_passRevision) {
        restartLater();
        return;
    }
    if (items.isEmpty()) {
        finishPass();
        Q_EMIT completed(m_passRevision, m_received);
        return;
    }
    const bool goesOn = withinBounds(items);
    m_received += items.size();
    if (goesOn)
        requestPage(); // Before the items are shown: the owner reads the next page meanwhile.
    repair(items);
    take(items);
    if (!goesOn)
        finishPass();
}

bool PageLoader::checkRevision(uint revision)
{
    if (revision < m_newestRevision) {
        breakOff(QStringLiteral("its revision went back from %1 to %2").arg(m_newestRevision).arg(revision));
        return false;
    }
    m_newestRevision = revision;
    return true;
}

bool PageLoader::withinBounds(SharedItems &items)
{
    auto end = items.cbegin();
    const auto most = items.cbegin() + std::min(items.size(), MaxItems - m_received);
    for (; end != most && m_characters <= MaxCharacters; ++end)
        m_characters += end->characters();
    const bool all = end == items.cend() && m_characters <= MaxCharacters;
    items.erase(end, items.cend());
    if (!all)
        Q_EMIT complaint(QStringLiteral("it is too long, only the first %1 items are shown")
                             .arg(m_received + items.size()));
    return all;
}

/// Renderers find their place in the list by the items' ids.
void PageLoader::repair(SharedItems &items)
{
    qsizetype row = m_received - items.size();
    for (SharedItem &item : items) {
        while (item.id.isEmpty() || m_ids.contains(item.id))
            item.id += QStringLiteral("#%1").arg(row);
        m_ids.insert(item.id);
        item.title.truncate(MaxTextCharacters);
        item.duration = std::clamp<qlonglong>(item.duration, -1, std::numeric_limits<int>::max());
        ++row;
    }
}

void PageLoader::take(const SharedItems &items)
{
    if (m_firstPass)
        Q_EMIT itemsArrived(items);
    else
        m_staged += items;
}

void PageLoader::finishPass()
{
    m_state = State::Settled;
    m_saidStalled = false;
    m_ids.clear();
    const SharedItems staged = std::exchange(m_staged, {});
    // Half of the time at most is spent on a list that changes all the time.
    m_pause = int(std::min<qint64>(m_passClock.elapsed(), longestPause));
    if (m_newestRevision != m_passRevision)
        schedulePass();
    if (!std::exchange(m_firstPass, false))
        Q_EMIT itemsReplaced(staged);
}

void PageLoader::giveUp(const QString &why)
{
    m_state = State::Stalled;
    if (!std::exchange(m_saidStalled, true))
        Q_EMIT complaint(why + QStringLiteral(", what is shown of it may be out of date"));
}

void PageLoader::breakOff(const QString &reason)
{
    m_state = State::Broken;
    m_nextPass.stop();
    Q_EMIT broken(reason);
}
