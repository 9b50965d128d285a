// SPDX-License-Identifier: MIT
#pragma once

#include "Hearing.h"
#include "MuteWatch.h"
#include "SenseProgram.h"

#include <QObject>

/// Listens to a sound device by a program of its own, so that whoever wants to know what is heard need not load what hears.
/// GUI thread.
class Ear : public QObject
{
    Q_OBJECT
public:
    explicit Ear(QObject *parent = nullptr);

    /// Listens from now on; ready() or failed() comes from the event loop.
    /// @param device  a source of the sound server: "NAME.monitor" is what NAME plays
    void listen(const QString &device);
    bool isReady() const { return m_program.isReady(); }
    /// Why nothing can be heard; empty: all is well.
    QString problem() const { return m_program.problem(); }

    /// How far off the times of all that is heard may be together, against the clock of this process: two periods of the
    /// sound server, whose monitors have a sound when it is rendered, which is before it plays. Seconds.
    static constexpr double ClockError = 0.02;
    /// The same, where it was measured on this machine (Calibration); ClockError where not.
    double clockError() const { return m_clockError; }
    void setClockError(double seconds) { m_clockError = seconds; }
    /// What is heard is told later by that at most, on a machine that is not overloaded. Seconds.
    static constexpr double Lateness = 0.5;
    /// Of the clock that the times of what is heard are of: the steady one.
    static double now() { return SenseProgram::now(); }

Q_SIGNALS:
    /// The first sound has come from the device, be it silence.
    void ready();
    /// Nothing is heard from now on; problem() tells why.
    void failed();
    void heard(const Hearing &hearing);

private:
    void takeMute(bool muted);
    void tellFailure(const QString &doubt);

    SenseProgram m_program;
    double m_clockError = ClockError;
    MuteWatch m_mute;
    bool m_isMuted = false; ///< what is heard means nothing
};
