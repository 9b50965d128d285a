// SPDX-License-Identifier: MIT
#include "EyeCondition.h"

#include "HeardSound.h"
#include "SeenPicture.h"

#include <QStringList>

namespace {
bool isIn(const std::optional<Measured> &measured, const Tolerance &wanted)
{
    return measured && wanted.takes(measured->value, measured->error);
}

QString inMilliseconds(double seconds)
{
    constexpr double thousand = 1000;
    return QStringLiteral("%1 ms").arg(seconds * thousand, 0, 'f', 1);
}

/// A number of pictures has no unit.
QString pictures(const Tolerance &range)
{
    const QString number = QString::number(range.value);
    return range.deviation > 0 ? number + QStringLiteral(" ± %1").arg(range.deviation) : number;
}
} // namespace

std::optional<Measured> EyeCondition::lead(const SeenPicture &seen, const HeardSound &heard)
{
    const std::optional<Measured> picture = seen.goes() ? seen.position() : std::nullopt;
    const std::optional<Measured> sound = heard.sounds() ? heard.position() : std::nullopt;
    if (!picture || !sound || seen.item() != heard.item())
        return std::nullopt;
    return Measured{picture->value - sound->value, picture->error + sound->error};
}

bool EyeCondition::holds(const SeenPicture &seen, const HeardSound &heard, bool isStill) const
{
    if (isOfPlace() && isStill && !seen.rests())
        return false;
    return (!item || *item == seen.item()) && (!frame || isIn(seen.frame(), *frame))
        && (!position || isIn(seen.position(), *position)) && (!sync || isIn(lead(seen, heard), *sync));
}

QString EyeCondition::unmeasured(const SeenPicture &seen, const HeardSound &heard) const
{
    if (isEmpty())
        return {};
    if (!seen.isLooking() || !seen.isThere())
        return seen.doubt();
    if (isOfPlace() && !seen.position())
        return QStringLiteral("nothing was told of the picture for too long");
    if (!sync || lead(seen, heard))
        return {};
    if (!heard.isListening() || !heard.doubt().isEmpty())
        return heard.doubt();
    if (!heard.sounds())
        return QStringLiteral("nothing is heard");
    if (heard.item() == 0)
        return QStringLiteral("what is heard has no time code");
    if (!seen.goes())
        return QStringLiteral("the picture rests");
    // Picture and sound of two items are never in time.
    return {};
}

QString EyeCondition::measured(const SeenPicture &seen, const HeardSound &heard) const
{
    QStringList words;
    if (item)
        words.append(QStringLiteral("item %1").arg(seen.item()));
    if (const std::optional<Measured> number = seen.frame(); frame && number)
        words.append(
            QStringLiteral("picture %1 (± %2)").arg(number->value, 0, 'f', 1).arg(number->error, 0, 'f', 1));
    if (const std::optional<Measured> place = seen.position(); position && place)
        words.append(QStringLiteral("position %1 s (± %2)")
                         .arg(place->value, 0, 'f', 3)
                         .arg(inMilliseconds(place->error)));
    if (const std::optional<Measured> ahead = sync ? lead(seen, heard) : std::nullopt; ahead)
        words.append(QStringLiteral("picture against sound %1 (± %2)")
                         .arg(inMilliseconds(ahead->value), inMilliseconds(ahead->error)));
    return words.join(QStringLiteral(", "));
}

QString EyeCondition::text() const
{
    QStringList words;
    if (item)
        words.append(QStringLiteral("item %1 seen").arg(*item));
    if (frame)
        words.append(QStringLiteral("picture seen ") + pictures(*frame));
    if (position)
        words.append(QStringLiteral("position seen ") + Quantities::text(*position));
    if (sync)
        words.append(QStringLiteral("picture against sound ") + Quantities::text(*sync));
    return words.join(QStringLiteral(", "));
}
