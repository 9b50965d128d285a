// SPDX-License-Identifier: MIT
#include "MprisTransport.h"

MprisTransport::MprisTransport(
    MprisAddress address, const QVariantMap &properties, bool hasTrackList, QObject *parent)
    : RemoteTransport(parent)
    , m_address(std::move(address))
    , m_hasTrackList(hasTrackList)
    , m_last(MprisSnapshot::of(properties))
{
    m_nextQuestion.setSingleShot(true);
    connect(&m_nextQuestion, &QTimer::timeout, this, &MprisTransport::refresh);
    // Whoever made this wants to listen first.
    QMetaObject::invokeMethod(
        this, [this] { take(MprisSnapshot(m_last)); }, Qt::QueuedConnection);
}

RemoteTransport::Abilities MprisTransport::abilities() const
{
    const bool seek = m_last.canSeek && m_last.canControl;
    const bool pause = m_last.canPause && m_last.canControl;
    const bool volume = m_last.volume && m_last.canControl;
    return {seek, pause, volume, m_last.slowestRate, m_last.fastestRate};
}

void MprisTransport::rename(const QString &name)
{
    if (std::exchange(m_address.label, name) != name)
        Q_EMIT nameReported(name);
}

void MprisTransport::noteChange()
{
    m_looks = 0;
    // Several signals in a row lead to one question.
    refreshIn(5);
}

void MprisTransport::noteSeek(const QVariant &microseconds)
{
    const auto seconds = MprisValues::seconds(microseconds);
    if (!seconds || m_phase != Phase::Following)
        return;
    if (m_epoch != 0 && isLoss(*seconds)) {
        notePositionLost(std::max(0.0, *seconds), true);
        return;
    }
    m_sinceSeek.invalidate();
    m_sinceLoss.invalidate();
    m_toldPosition = std::max(0.0, *seconds);
    m_position.moveTo(m_toldPosition);
    Q_EMIT positionReported(m_epoch, m_toldPosition);
}
