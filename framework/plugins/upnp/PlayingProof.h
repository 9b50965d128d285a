// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QTimer>

/// Looks whether what a device says that it plays does play: soon and again, since events come late or not at all and short
/// items are over before anybody else wants to know the position; and once more when the position ought to have moved.
class PlayingProof : public QObject
{
    Q_OBJECT
public:
    /// @param progress  milliseconds until the position of what plays must have moved on
    explicit PlayingProof(int progress);

    void begin();
    void end();
    /// Right at the start many do not know how far they are.
    void askLater();
    /// It does not play now.
    void waitForProgress() { m_progress.start(); }
    void endProgress() { m_progress.stop(); }

Q_SIGNALS:
    void due();
    void progressDue();

private:
    QTimer m_proof;
    int m_delay = 0;
    QTimer m_progress;
};
