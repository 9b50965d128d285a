// SPDX-License-Identifier: MIT
#include "RemoteRenderer.h"

namespace {
/// What fails earlier than this did not play, whatever state the player passed through. Milliseconds.
constexpr qint64 FalseStart = 1000;
} // namespace

/// Whether the item has really played.
bool RemoteRenderer::hasProgressed() const
{
    return m_playingSince.isValid() && m_playingSince.elapsed() >= FalseStart;
}

/// What falls back before it has played for a while did not play yet.
void RemoteRenderer::forgetFalseStart()
{
    if (!hasProgressed())
        m_playingSince.invalidate();
}

/// Whether there was anything to play. Many players tell of no errors: what they cannot open just stops, as at an end.
bool RemoteRenderer::hasLived() const
{
    const bool hasNoTime = m_item.mimeType().startsWith(QLatin1String("image/"));
    // One that never tells where it is must be believed when it has played for a while.
    const bool isBelieved = !m_positionTold && hasProgressed();
    return m_inPlay == InPlay::OfAnother || hasNoTime || m_duration > 0 || m_moved || isBelieved;
}

/// Whether the player has to be asked so that an end can be told from a failure.
bool RemoteRenderer::isLifeUnknown() const
{
    return m_epoch != 0 && m_playingSince.isValid() && m_duration <= 0 && !m_moved;
}

void RemoteRenderer::failUnplayed()
{
    itemFailed(KelvoError::ReadFailed,
        QStringLiteral("%1: %2 was given up without a reason").arg(m_name, m_item.url().toDisplayString()));
}
