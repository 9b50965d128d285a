// SPDX-License-Identifier: MIT
#include "UpnpText.h"

#include <QHash>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {
constexpr double longestTime = 366 * 86400.0;

double fractionOf(const QString &digits, const QString &divisor)
{
    if (divisor.isEmpty())
        return (QStringLiteral("0.") + digits).toDouble();
    const double parts = divisor.toDouble();
    return parts > 0 ? digits.toDouble() / parts : 0;
}
} // namespace

std::optional<double> UpnpText::parseTime(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*\+?(\d{1,9}):(\d{1,2}):(\d{1,2})(?:\.(\d+)(?:/(\d+))?)?\s*$)"));
    if (text.size() > 64)
        return {};
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return {};
    const double minutes = match.captured(2).toDouble();
    const double seconds = match.captured(3).toDouble();
    if (minutes >= 60 || seconds >= 60)
        return {};
    const double time = match.captured(1).toDouble() * 3600 + minutes * 60 + seconds
        + fractionOf(match.captured(4), match.captured(5));
    return time <= longestTime ? std::optional(time) : std::nullopt;
}

QString UpnpText::formatTime(double seconds)
{
    const qint64 milliseconds = std::llround(std::clamp(seconds, 0.0, longestTime) * 1000);
    const qint64 whole = milliseconds / 1000;
    QString text = QStringLiteral("%1:%2:%3")
                       .arg(whole / 3600)
                       .arg(whole / 60 % 60, 2, 10, QLatin1Char('0'))
                       .arg(whole % 60, 2, 10, QLatin1Char('0'));
    if (const qint64 rest = milliseconds % 1000)
        text += QStringLiteral(".%1").arg(rest, 3, 10, QLatin1Char('0'));
    return text;
}

QSet<QString> UpnpText::parseActions(const QString &text)
{
    static const QRegularExpression comma(QStringLiteral(R"((?<!\\),)"));
    QSet<QString> actions;
    for (const QString &entry : text.split(comma, Qt::SkipEmptyParts)) {
        const QString action = entry.trimmed().toLower();
        if (!action.isEmpty())
            actions.insert(action);
    }
    return actions;
}

std::optional<double> UpnpText::parseSpeed(const QString &text)
{
    const QStringList parts = text.trimmed().split(QLatin1Char('/'));
    if (parts.size() > 2)
        return {};
    bool isNumber = false;
    double speed = parts.at(0).toDouble(&isNumber);
    if (isNumber && parts.size() == 2)
        speed /= parts.at(1).toDouble(&isNumber);
    if (!isNumber || !std::isfinite(speed) || speed == 0)
        return {};
    return speed;
}

QString UpnpText::nearestSpeed(const QStringList &allowed, double rate)
{
    QString nearest = QStringLiteral("1");
    double distance = rate > 0 ? std::abs(rate - 1) : HUGE_VAL;
    for (const QString &text : allowed) {
        const std::optional<double> speed = parseSpeed(text);
        if (!speed || (*speed > 0) != (rate > 0) || std::abs(*speed - rate) >= distance)
            continue;
        distance = std::abs(*speed - rate);
        nearest = text.trimmed();
    }
    return nearest;
}

std::optional<KelvoRenderer::State> UpnpText::parseState(const QString &text)
{
    const QString state = text.trimmed().toUpper();
    if (state == QLatin1String("STOPPED") || state == QLatin1String("NO_MEDIA_PRESENT"))
        return KelvoRenderer::Stopped;
    if (state == QLatin1String("PLAYING") || state == QLatin1String("RECORDING"))
        return KelvoRenderer::Playing;
    if (state == QLatin1String("PAUSED_PLAYBACK") || state == QLatin1String("PAUSED_RECORDING"))
        return KelvoRenderer::Paused;
    if (state == QLatin1String("TRANSITIONING"))
        return KelvoRenderer::Transitioning;
    return {};
}

int UpnpText::toDeviceVolume(int volume, int lowest, int highest)
{
    if (highest <= lowest)
        return lowest;
    return lowest + int(std::lround(std::clamp(volume, 0, 99) * (double(highest) - lowest) / 99));
}

int UpnpText::fromDeviceVolume(int deviceVolume, int lowest, int highest)
{
    if (highest <= lowest)
        return 0;
    const double part = (double(deviceVolume) - lowest) / (double(highest) - lowest);
    return int(std::lround(std::clamp(part, 0.0, 1.0) * 99));
}

bool UpnpText::isSameUri(const QString &one, const QString &other)
{
    return one == other
        || QUrl::fromPercentEncoding(one.toUtf8()) == QUrl::fromPercentEncoding(other.toUtf8());
}

QString UpnpText::refusalText(int code, const QString &message)
{
    static const QHash<int, QString> texts = {{401, QStringLiteral("Invalid Action")},
        {402, QStringLiteral("Invalid Args")}, {404, QStringLiteral("Invalid Var")},
        {501, QStringLiteral("Action Failed")}, {600, QStringLiteral("Argument Value Invalid")},
        {601, QStringLiteral("Argument Value Out of Range")},
        {602, QStringLiteral("Optional Action Not Implemented")}, {603, QStringLiteral("Out of Memory")},
        {604, QStringLiteral("Human Intervention Required")},
        {605, QStringLiteral("String Argument Too Long")}, {606, QStringLiteral("Action not authorized")},
        {701, QStringLiteral("Transition not available")}, {702, QStringLiteral("No contents")},
        {703, QStringLiteral("Read error")}, {704, QStringLiteral("Format not supported for playback")},
        {705, QStringLiteral("Transport is locked")}, {706, QStringLiteral("Write error")},
        {707, QStringLiteral("Media is protected or not writable")},
        {710, QStringLiteral("Seek mode not supported")}, {711, QStringLiteral("Illegal seek target")},
        {712, QStringLiteral("Play mode not supported")}, {714, QStringLiteral("Illegal MIME-type")},
        {715, QStringLiteral("Content busy")}, {716, QStringLiteral("Resource not found")},
        {717, QStringLiteral("Play speed not supported")}, {718, QStringLiteral("Invalid InstanceID")}};
    // In place of a description that is missing GUPnP gives what HTTP calls every error of an action.
    const QString own = message.trimmed();
    const bool isNone
        = own.isEmpty() || own.compare(QLatin1String("Internal Server Error"), Qt::CaseInsensitive) == 0;
    const QString text = isNone ? texts.value(code, QStringLiteral("it gave no reason")) : own;
    return code > 0 ? QStringLiteral("%1 %2").arg(code).arg(text) : text;
}

QString UpnpText::cleaned(const QString &text, qsizetype longest)
{
    QString clean;
    clean.reserve(std::min(text.size(), longest));
    for (qsizetype i = 0; i < text.size() && clean.size() < longest; ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            clean += c;
            clean += text.at(++i);
        } else if (!c.isSurrogate() && c.unicode() < 0xfffe && (c.unicode() >= 0x20 || c.isSpace())) {
            clean += c.unicode() < 0x20 ? QLatin1Char(' ') : c;
        }
    }
    return clean.trimmed();
}
