// SPDX-License-Identifier: MIT
#pragma once

#include "Lane.h"

#include <QByteArray>

/// Draws the lanes of a time line as SVG. The horizontal unit is a second from the run's beginning, so that the part of
/// it that is shown is chosen by the picture's viewBox alone.
class LanePicture
{
public:
    enum class Style {
        Ticks, ///< a line at each mark's beginning
        States, ///< a bar for each mark; its colour and height say which state
        Fill, ///< a bar for each mark, as high as its value of 0 to 1
        Curve, ///< a line through the values, 0 at the bottom, the greatest at the top
    };

    /// Height of a lane, in its own units.
    static constexpr int Height = 24;

    /// Draws what lies between two times. Each mark leads to the element of the page with the id "e" and the number of
    /// its event, unless that lies before `firstLinked`.
    LanePicture(double begin, double end, qint64 firstLinked);

    /// The name is told to those who do not see the picture.
    QByteArray of(const QList<Mark> &marks, Style style, const QByteArray &name) const;

    /// The times below the lanes, at round numbers of seconds.
    QByteArray axis() const;

private:
    QByteArray linked(const Mark &mark, const QByteArray &shape) const;
    QByteArray tick(const Mark &mark) const;
    QByteArray state(const Mark &mark) const;
    QByteArray fill(const Mark &mark) const;
    QByteArray curve(const QList<Mark> &marks) const;
    QByteArray bar(const Mark &mark, double share, const char *kind) const;

    const double m_begin;
    const double m_end;
    const qint64 m_firstLinked;
};
