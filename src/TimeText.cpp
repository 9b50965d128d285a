// SPDX-License-Identifier: MIT
#include "TimeText.h"

#include <QRegularExpression>

namespace {
QString twoDigits(uint number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}
} // namespace

QString TimeText::duration(int seconds)
{
    const uint whole = uint(qMax(seconds, 0));
    return QStringLiteral("%1:%2 /\n%3:%4")
        .arg(0)
        .arg(twoDigits(0))
        .arg(whole / 60)
        .arg(twoDigits(whole % 60));
}

QString TimeText::withPosition(const QString &durationText, uint seconds)
{
    static const QRegularExpression position(QStringLiteral("\\d\\d{0,2}:\\d\\d /"));
    const QString replacement = QStringLiteral("%1:%2 /").arg(seconds / 60).arg(twoDigits(seconds % 60));
    return QString(durationText).replace(position, replacement);
}
