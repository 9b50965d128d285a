// SPDX-License-Identifier: MIT
#pragma once

#include "SenseProgram.h"
#include "Sighting.h"

#include <QObject>

/// Looks at a place of the screen by a program of its own, so that whoever wants to know what is seen need not load what
/// sees. GUI thread.
class Eye : public QObject
{
    Q_OBJECT
public:
    explicit Eye(QObject *parent = nullptr);

    /// Looks from now on; ready() or failed() comes from the event loop.
    /// @param place  an X window by its number, a part of the screen as "x,y,width,height", or "auto": a window that is made
    void look(const QString &place) { m_program.start({place}); }
    bool isReady() const { return m_program.isReady(); }
    /// Why nothing can be seen; empty: all is well.
    QString problem() const { return m_program.problem(); }
    /// That was made; 0: none. It is there while this is.
    uint window() const { return m_window; }
    /// What was seen last: it is so until something else is told.
    const std::optional<Sighting> &last() const { return m_last; }

    /// How far off the times of all that is seen may be together, against the clock of this process: what an X server was
    /// told to show is seen before a screen shows it. Seconds.
    static constexpr double ClockError = 0.02;
    /// The same, where it was measured on this machine (Calibration); ClockError where not.
    double clockError() const { return m_clockError; }
    void setClockError(double seconds) { m_clockError = seconds; }
    /// What is seen is told later by that at most, on a machine that is not overloaded. Seconds.
    static constexpr double Lateness = 0.5;
    /// Of the clock that the times of what is seen are of: the steady one, as the ear's.
    static double now() { return SenseProgram::now(); }

Q_SIGNALS:
    /// It has looked for the first time, whatever was there.
    void ready();
    /// Nothing is seen from now on; problem() tells why.
    void failed();
    void seen(const Sighting &sighting);

private:
    void tell(const Sighting &sighting);

    SenseProgram m_program;
    double m_clockError = ClockError;
    uint m_window = 0;
    std::optional<Sighting> m_last;
};
