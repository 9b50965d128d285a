// SPDX-License-Identifier: MIT
#include "ByteRange.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace {
/// None when it is no number; one that is larger than all files is as large as the largest.
std::optional<qint64> numberOf(const QByteArray &text)
{
    if (text.isEmpty()
        || !std::all_of(text.cbegin(), text.cend(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    bool isSmall = false;
    const qint64 number = text.toLongLong(&isSmall);
    return isSmall ? number : std::numeric_limits<qint64>::max();
}
} // namespace

ByteRange ByteRange::of(const QByteArray &range, qint64 size)
{
    const ByteRange whole{Whole, 0, size};
    const ByteRange beyond{Beyond, 0, 0};
    constexpr char unit[] = "bytes=";
    if (range.left(qsizetype(sizeof unit) - 1).toLower() != unit)
        return whole;
    const QByteArray set = range.mid(sizeof unit - 1).trimmed();
    const qsizetype dash = set.indexOf('-');
    if (dash < 0)
        return whole;
    const QByteArray last = set.mid(dash + 1);
    const std::optional<qint64> to = numberOf(last);
    if (dash == 0) {
        if (!to)
            return whole;
        const qint64 length = std::min(*to, size);
        return length > 0 ? ByteRange{Part, size - length, length} : beyond;
    }
    const std::optional<qint64> from = numberOf(set.left(dash));
    if (!from || (!to && !last.isEmpty()) || (to && *to < *from))
        return whole;
    if (*from >= size)
        return beyond;
    return {Part, *from, to ? std::min(*to, size - 1) - *from + 1 : size - *from};
}
