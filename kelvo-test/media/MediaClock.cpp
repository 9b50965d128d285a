// SPDX-License-Identifier: MIT
#include "MediaClock.h"

#include <cmath>

namespace {
/// "KEL" before the number of the item: user bits of others say something else, or nothing.
constexpr quint32 ours = 0x4b454c00;
constexpr quint32 itemBits = 0xff;

constexpr int frameBits = 24;

bool isItem(qint64 number)
{
    return number >= 1 && number <= MediaClock::mostItems;
}
} // namespace

MediaClock::Code MediaClock::codeOf(const Moment &moment)
{
    return {(moment.item * framesPerHour + moment.frame) % framesPerDay, ours | quint32(moment.item)};
}

MediaClock::Moment MediaClock::momentOf(const Code &code)
{
    const int item = int(code.userBits & itemBits);
    if ((code.userBits & ~itemBits) != ours || !isItem(item))
        return {};
    return {item, (code.frameOfDay + framesPerDay - item * framesPerHour) % framesPerDay};
}

quint64 MediaClock::markOf(const Moment &moment)
{
    return quint64(moment.item) << frameBits | (quint64(moment.frame) & ((1 << frameBits) - 1));
}

MediaClock::Moment MediaClock::momentOfMark(quint64 mark)
{
    const quint64 item = mark >> frameBits;
    if (item > mostItems || !isItem(qint64(item)))
        return {};
    return {int(item), qint64(mark & ((1 << frameBits) - 1))};
}

double MediaClock::amplitudeOf(double decibels)
{
    return std::pow(10, decibels / 20);
}
