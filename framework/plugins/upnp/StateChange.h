// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

/// A change of state that a device has accepted to make, until it has made it.
class StateChange : public QObject
{
    Q_OBJECT
public:
    using State = KelvoRenderer::State;
    static constexpr int MostTries = 3;

    /// In milliseconds: after how long the device is told again what it has lost, and how long it may take.
    StateChange(int retry, int longest);

    /// Told once more, it is the same change.
    void expect(State state);
    void end();
    const std::optional<State> &expected() const { return m_expected; }

    /// Since it was accepted last, also when it has ended.
    bool hasTaken(int milliseconds) const { return m_since.hasExpired(milliseconds); }
    bool isOverdue() const { return hasTaken(m_longest); }
    /// Whether the device is to be told now what it seems to have lost.
    bool takeRetry();
    bool isRetryDue(int tries) const { return tries < MostTries && hasTaken(tries * m_retry); }
    /// It is worth asking again in a while, longer each time.
    void checkLater();
    /// As long as before.
    void checkAgain() { m_check.start(m_delay); }

    /// We have told the device to stop, and it has not yet.
    bool isStopping() const { return m_isStopping; }
    void setStopping(bool isStopping) { m_isStopping = isStopping; }

Q_SIGNALS:
    /// The state is to be asked for.
    void checkDue();

private:
    const int m_retry;
    const int m_longest;
    std::optional<State> m_expected;
    QElapsedTimer m_since;
    int m_delay = 0;
    int m_tries = 0;
    QTimer m_check;
    bool m_isStopping = false;
};
