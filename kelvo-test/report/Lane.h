// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

/// Something on a time line: at one moment, or from one to another.
struct Mark
{
    /// Seconds since the run's beginning.
    double from = 0;
    double to = 0;
    /// The number of the event within the run.
    qint64 event = 0;
    /// What is shown beside it: "Playing", "pauseAt(3)".
    QString text;
    /// The least and the greatest of what was measured, where something was.
    double low = 0;
    double high = 0;
    /// More than 1: so many that came so close together that they are shown as one, the first of them by its number.
    qint64 count = 1;
};

/// One row of a time line. Keeps a bounded number of marks: where more come, those that are close together become one.
class Lane
{
public:
    static constexpr qsizetype MostMarks = 2000;

    /// Marks are added in the order of their time.
    void add(const Mark &mark);
    /// Ends the last mark, which went on until now.
    void endLast(double time);

    const QList<Mark> &marks() const { return m_marks; }
    /// The same with at most so many marks (at least two), those that are close together joined.
    QList<Mark> atMost(qsizetype count) const;
    bool isEmpty() const { return m_marks.isEmpty(); }

private:
    QList<Mark> m_marks;
};
