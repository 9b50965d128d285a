// SPDX-License-Identifier: MIT
#include "SenseText.h"

#include <cmath>

namespace {
constexpr double thousand = 1000;

QString number(double value, const QString &unit)
{
    if (unit.isEmpty())
        return QString::number(value);
    const int digits = unit == QLatin1String("s") ? 3 : 1;
    return QString::number(value, 'f', digits) + QLatin1Char(' ') + unit;
}

/// Small against what it is about: in milliseconds where that is in seconds.
QString small(double value, const QString &unit)
{
    return unit == QLatin1String("s") ? QString::number(value * thousand, 'f', 1) + QStringLiteral(" ms")
                                      : number(value, unit);
}
} // namespace

QString SenseText::said(const SenseRow &row)
{
    return row.said ? number(*row.said, row.unit) : QString();
}

QString SenseText::cameOut(const SenseRow &row)
{
    if (!row.cameOut)
        return QStringLiteral("not measured: ") + row.doubt;
    const QString value = number(*row.cameOut, row.unit);
    return row.error > 0 ? value + QStringLiteral(" ± ") + small(row.error, row.unit) : value;
}

QString SenseText::difference(const SenseRow &row)
{
    const std::optional<double> difference = row.difference();
    if (!difference)
        return {};
    return (*difference < 0 ? QString() : QStringLiteral("+")) + small(*difference, row.unit);
}

QString SenseText::verdict(const SenseRow &row)
{
    if (!row.difference())
        return QStringLiteral("not known");
    return row.isOff() ? QStringLiteral("is off") : QStringLiteral("agrees");
}
