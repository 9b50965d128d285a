// SPDX-License-Identifier: MIT
#include "Quantities.h"

#include <QRegularExpression>

#include <cmath>

namespace {
constexpr double day = 24 * 60 * 60;

double factorOf(const QString &unit)
{
    if (unit == QLatin1String("ms"))
        return 0.001;
    return unit == QLatin1String("min") ? 60 : 1;
}

/// Seconds.
std::optional<double> seconds(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("^\\s*(\\d{1,9}(?:\\.\\d{1,9})?)\\s*(ms|s|min)?\\s*$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const double time = match.captured(1).toDouble() * factorOf(match.captured(2));
    return time <= day ? std::optional(time) : std::nullopt;
}

std::optional<double> number(const QString &text)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    return ok && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

template <typename Read> std::optional<Tolerance> withTolerance(const QString &text, Read read)
{
    static const QRegularExpression sign(QStringLiteral("±|\\+-"));
    const QStringList parts = text.split(sign);
    if (parts.size() > 2)
        return std::nullopt;
    const std::optional<double> value = read(parts.at(0));
    const std::optional<double> deviation = parts.size() == 2 ? read(parts.at(1)) : 0.0;
    if (!value || !deviation || *deviation < 0)
        return std::nullopt;
    return Tolerance{*value, *deviation};
}
} // namespace

std::optional<std::chrono::milliseconds> Quantities::time(const QString &text)
{
    const std::optional<double> time = seconds(text);
    if (!time)
        return std::nullopt;
    return std::chrono::milliseconds(std::llround(*time * 1000));
}

std::optional<Tolerance> Quantities::timeWithTolerance(const QString &text)
{
    return withTolerance(text, seconds);
}

std::optional<Tolerance> Quantities::numberWithTolerance(const QString &text)
{
    return withTolerance(text, number);
}

QString Quantities::text(std::chrono::milliseconds time)
{
    constexpr int second = 1000;
    if (time.count() < second && time.count() > 0)
        return QStringLiteral("%1 ms").arg(time.count());
    return QStringLiteral("%1 s").arg(double(time.count()) / second);
}

QString Quantities::text(const Tolerance &seconds)
{
    const auto part = [](double time) {
        return text(std::chrono::milliseconds(std::llround(time * 1000)));
    };
    return seconds.deviation > 0 ? part(seconds.value) + QStringLiteral(" ± ") + part(seconds.deviation)
                                 : part(seconds.value);
}
