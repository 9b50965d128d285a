// SPDX-License-Identifier: MIT
#include "MprisPings.h"

#include <QDBusError>
#include <QDBusPendingCall>

namespace {
// In time-outs of a question.
constexpr int pingEvery = 2;
constexpr int silentFor = 5;
} // namespace

MprisPings::MprisPings(MprisAddress address, QObject *parent)
    : QObject(parent)
    , m_address(std::move(address))
{
    m_lastLife.start();
    m_lastPing.start();
}

bool MprisPings::isDue() const
{
    return m_lastPing.elapsed() >= pingEvery * m_address.timeout;
}

bool MprisPings::isSilent() const
{
    return m_lastLife.elapsed() > silentFor * m_address.timeout;
}

void MprisPings::ping()
{
    if (m_isUnderWay)
        return;
    m_isUnderWay = true;
    m_lastPing.start();
    auto *watcher = new QDBusPendingCallWatcher(
        m_address.connection.asyncCall(
            m_address.call(Mpris::peerInterface, QStringLiteral("Ping")), m_address.timeout),
        this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_isUnderWay = false;
        if (watcher->isError() && Mpris::isSilence(watcher->error()))
            return;
        noteLife();
        Q_EMIT answered();
    });
}
