// SPDX-License-Identifier: MIT
#include "CommonSequence.h"

#include <QHash>

#include <algorithm>

namespace {
using Pairs = QList<QPair<qsizetype, qsizetype>>;

/// Of a table with more fields the memory and time would be felt.
constexpr qsizetype mostFields = 4000000;

/// The textbook's table: field (i, j) is the length for what follows i and j.
void appendByTable(const QStringList &first, const QStringList &second, qsizetype begin, Pairs *pairs)
{
    const qsizetype width = second.size() + 1;
    QList<int> lengths((first.size() + 1) * width, 0);
    const auto at = [&](qsizetype i, qsizetype j) -> int & {
        return lengths[i * width + j];
    };
    for (qsizetype i = first.size() - 1; i >= 0; --i) {
        for (qsizetype j = second.size() - 1; j >= 0; --j)
            at(i, j)
                = first.at(i) == second.at(j) ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
    }
    for (qsizetype i = 0, j = 0; i < first.size() && j < second.size();) {
        if (first.at(i) == second.at(j))
            pairs->append({begin + i++, begin + j++});
        else if (at(i + 1, j) >= at(i, j + 1))
            ++i;
        else
            ++j;
    }
}

/// Each with the nearest that follows.
void appendByNearest(const QStringList &first, const QStringList &second, qsizetype begin, Pairs *pairs)
{
    QHash<QString, QList<qsizetype>> places;
    for (qsizetype j = 0; j < second.size(); ++j)
        places[second.at(j)].append(j);
    qsizetype next = 0;
    for (qsizetype i = 0; i < first.size(); ++i) {
        const QList<qsizetype> known = places.value(first.at(i));
        const auto place = std::lower_bound(known.begin(), known.end(), next);
        if (place == known.end())
            continue;
        pairs->append({begin + i, begin + *place});
        next = *place + 1;
    }
}
} // namespace

Pairs CommonSequence::of(const QStringList &first, const QStringList &second)
{
    // Two runs of one scenario begin and end alike: what is between is short.
    const qsizetype shorter = std::min(first.size(), second.size());
    qsizetype begin = 0;
    while (begin < shorter && first.at(begin) == second.at(begin))
        ++begin;
    qsizetype end = 0;
    while (end < shorter - begin && first.at(first.size() - 1 - end) == second.at(second.size() - 1 - end))
        ++end;
    Pairs pairs;
    for (qsizetype i = 0; i < begin; ++i)
        pairs.append({i, i});
    const QStringList firstRest = first.sliced(begin, first.size() - end - begin);
    const QStringList secondRest = second.sliced(begin, second.size() - end - begin);
    if ((firstRest.size() + 1) * (secondRest.size() + 1) <= mostFields)
        appendByTable(firstRest, secondRest, begin, &pairs);
    else
        appendByNearest(firstRest, secondRest, begin, &pairs);
    for (qsizetype i = end; i > 0; --i)
        pairs.append({first.size() - i, second.size() - i});
    return pairs;
}

/// By the last number of the best sequence of each length (patience sorting).
QList<qsizetype> CommonSequence::longestRising(const QList<qint64> &numbers)
{
    QList<qsizetype> ends;
    QList<qsizetype> before(numbers.size(), -1);
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        const auto place = std::lower_bound(ends.begin(), ends.end(), numbers.at(i),
            [&numbers](qsizetype index, qint64 number) { return numbers.at(index) < number; });
        const qsizetype length = place - ends.begin();
        before[i] = length > 0 ? ends.at(length - 1) : -1;
        if (place == ends.end())
            ends.append(i);
        else
            *place = i;
    }
    QList<qsizetype> rising;
    for (qsizetype i = ends.isEmpty() ? -1 : ends.constLast(); i >= 0; i = before.at(i))
        rising.prepend(i);
    return rising;
}
