// SPDX-License-Identifier: MIT
#include "Addresses.h"

namespace {
constexpr const char *files[]
    = {"blip.mp3", "blip.ogg", "blip.wav", "tone.flac", "tone.ogg", "clip.webm", "clip.mp4", "covered.mp3",
        "short.mp3", "truncated.ogg", "garbage.mp3", "empty.mp3", "unknown-codec.mka", "not there.mp3"};
constexpr const char *nonsense[]
    = {"", " ", "http://127.0.0.1:1/refused", "http://[::bad/", "file:///", "javascript:1",
        "data:text/plain,x", "///", "sim:", "file:///etc/passwd", "mailto:a@b", "%ff%fe", "http://a b/"};

QString simulated(Dice &dice)
{
    static int number = 0;
    switch (dice.below(8)) {
    case 0:
        return QStringLiteral("sim:broken%1?fail=%2").arg(++number).arg(dice.between(100, 109));
    case 1:
        return QStringLiteral("sim:live%1?duration=0").arg(++number);
    case 2:
        return QStringLiteral("sim:fixed%1?seekable=0&duration=%2").arg(++number).arg(dice.between(1, 20));
    case 3:
        return QStringLiteral("sim:short%1?duration=1").arg(++number);
    default:
        return QStringLiteral("sim:song%1?title=Song%20%1&duration=%2")
            .arg(++number)
            .arg(dice.chance(60) ? dice.between(2, 9) : dice.between(10, 400));
    }
}
} // namespace

QString Addresses::any(Dice &dice)
{
    if (dice.chance(65))
        return simulated(dice);
    if (dice.chance(80))
        return QStringLiteral("file://" KELVO_TEST_MEDIA "/") + QLatin1String(dice.oneOf(files));
    return QLatin1String(dice.oneOf(nonsense));
}

QString Addresses::list(Dice &dice)
{
    return QStringLiteral("sim:list?entries=%1&duration=%2").arg(dice.below(12)).arg(dice.between(1, 9));
}
