// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

class KelvoRenderer;

/// The clock of a simulated renderer in hand: a trial takes as long as its events, not as its media. GUI thread.
class SimulatedTime
{
public:
    /// Takes over the clock of this renderer. Must live as long as it.
    void takeOver(KelvoRenderer &renderer);
    /// Moves it a little, and runs the event loop until it has arrived. The renderer may be null, and may vanish
    /// meanwhile.
    void pass(KelvoRenderer *renderer);
    /// Milliseconds that have passed.
    qint64 now() const { return m_time; }

private:
    qint64 m_time = 0;
    bool m_arrived = false;
};
