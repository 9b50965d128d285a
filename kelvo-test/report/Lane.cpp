// SPDX-License-Identifier: MIT
#include "Lane.h"

#include <algorithm>
#include <cmath>

namespace {
void join(Mark *mark, const Mark &next)
{
    mark->to = std::max(mark->to, next.to);
    mark->low = std::min(mark->low, next.low);
    mark->high = std::max(mark->high, next.high);
    mark->count += next.count;
    if (mark->text != next.text)
        mark->text.clear();
}

/// Joins what begins within the same `width` seconds.
QList<Mark> joined(const QList<Mark> &marks, double width)
{
    QList<Mark> result;
    for (const Mark &mark : marks) {
        if (!result.isEmpty() && std::floor(result.constLast().from / width) == std::floor(mark.from / width))
            join(&result.last(), mark);
        else
            result.append(mark);
    }
    return result;
}
} // namespace

void Lane::add(const Mark &mark)
{
    m_marks.append(mark);
    if (m_marks.size() > 2 * MostMarks)
        m_marks = atMost(MostMarks);
}

void Lane::endLast(double time)
{
    if (!m_marks.isEmpty())
        m_marks.last().to = std::max(m_marks.constLast().to, time);
}

QList<Mark> Lane::atMost(qsizetype count) const
{
    if (m_marks.size() <= count)
        return m_marks;
    QList<Mark> marks = m_marks;
    const double span = marks.constLast().from - marks.constFirst().from;
    // The last mark may go on, so it stays by itself.
    const Mark last = marks.takeLast();
    for (double width = std::max(span, 1e-6) / double(4 * count); marks.size() >= count; width *= 2)
        marks = joined(marks, width);
    marks.append(last);
    return marks;
}
