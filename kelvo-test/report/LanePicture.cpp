// SPDX-License-Identifier: MIT
#include "LanePicture.h"

#include "HtmlText.h"
#include "KelvoWords.h"

#include <algorithm>
#include <cmath>

namespace {
/// A curve is not drawn on where nothing was answered for so many seconds.
constexpr double curveGap = 5;

/// Times below the lanes that have room on a narrow page.
constexpr int mostTicks = 8;

/// A number as short as it can be written.
QByteArray number(double value)
{
    QByteArray text = QByteArray::number(value, 'f', 6);
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.'))
        text.chop(1);
    return text;
}

QString described(const Mark &mark)
{
    if (mark.count > 1) {
        return QStringLiteral("%1 events from %2 to %3")
            .arg(mark.count)
            .arg(KelvoWords::seconds(mark.from), KelvoWords::seconds(mark.to));
    }
    const QString time = KelvoWords::seconds(mark.from);
    if (mark.to > mark.from)
        return QStringLiteral("%1 to %2: %3").arg(time, KelvoWords::seconds(mark.to), mark.text);
    return QStringLiteral("%1: %2").arg(time, mark.text);
}

/// The shortest of 1, 2, 5, 10, ... seconds, or a part of them, that divides the time into few enough parts.
double stepOf(double seconds)
{
    const double least = seconds / mostTicks;
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1, 2, 5}) {
        if (factor * power >= least)
            return factor * power;
    }
    return 10 * power;
}

struct StateLook
{
    QLatin1String state;
    const char *kind;
    /// Of the lane's height: so that states are told apart in print as well.
    double share;
};

constexpr StateLook stateLooks[] = {{KelvoWords::playing, "playing", 1}, {KelvoWords::paused, "paused", 0.6},
    {KelvoWords::transitioning, "transitioning", 0.35}, {KelvoWords::stopped, "stopped", 0.1}};
} // namespace

LanePicture::LanePicture(double begin, double end, qint64 firstLinked)
    : m_begin(begin)
    // A run of a single moment has a width, too.
    , m_end(std::max(end, begin + 0.001))
    , m_firstLinked(firstLinked)
{
}

QByteArray LanePicture::of(const QList<Mark> &marks, Style style, const QByteArray &name) const
{
    QByteArray svg = "<svg role=\"img\" aria-label=\"" + name + "\" viewBox=\"0 0 " + number(m_end - m_begin)
        + ' ' + QByteArray::number(Height) + "\" preserveAspectRatio=\"none\">";
    if (style == Style::Curve)
        svg += curve(marks);
    for (const Mark &mark : marks) {
        if (style == Style::Ticks)
            svg += tick(mark);
        else if (style == Style::States)
            svg += state(mark);
        else if (style == Style::Fill)
            svg += fill(mark);
    }
    return svg + "</svg>";
}

QByteArray LanePicture::axis() const
{
    const double span = m_end - m_begin;
    const double step = stepOf(span);
    QByteArray html = "<div class=ticks>";
    const double first = std::ceil(m_begin / step);
    // Counted, as numbers may be so large that one more makes no difference.
    for (int i = 0; i <= mostTicks && (first + i) * step <= m_end; ++i) {
        const double time = (first + i) * step;
        html += "<span style=\"left:" + number((time - m_begin) / span * 100) + "%\">" + number(time)
            + "</span>";
    }
    return html + "</div>";
}

QByteArray LanePicture::linked(const Mark &mark, const QByteArray &shape) const
{
    const QByteArray title = "<title>" + HtmlText::of(described(mark)) + "</title>";
    if (mark.event < m_firstLinked)
        return "<g>" + title + shape + "</g>";
    // Reached by the arrow keys: a stop of the tabulator at each of thousands would be in the way.
    return "<a tabindex=\"-1\" href=\"#e" + QByteArray::number(mark.event) + "\">" + title + shape + "</a>";
}

QByteArray LanePicture::tick(const Mark &mark) const
{
    return linked(
        mark, "<path d=\"M" + number(mark.from - m_begin) + " 2v" + QByteArray::number(Height - 4) + "\"/>");
}

QByteArray LanePicture::bar(const Mark &mark, double share, const char *kind) const
{
    const double high = Height * share;
    return linked(mark,
        "<rect class=\"" + QByteArray(kind) + "\" x=\"" + number(mark.from - m_begin) + "\" y=\""
            + number(Height - high) + "\" width=\"" + number(std::max(mark.to - mark.from, 0.0))
            + "\" height=\"" + number(high) + "\"/>");
}

QByteArray LanePicture::state(const Mark &mark) const
{
    const auto look = std::find_if(std::begin(stateLooks), std::end(stateLooks),
        [&mark](const StateLook &one) { return one.state == mark.text; });
    return look == std::end(stateLooks) ? bar(mark, 0.8, "other") : bar(mark, look->share, look->kind);
}

QByteArray LanePicture::fill(const Mark &mark) const
{
    // What is empty is seen, too.
    return bar(mark, std::max(mark.high, 0.08), "filling");
}

QByteArray LanePicture::curve(const QList<Mark> &marks) const
{
    double greatest = 1e-3;
    for (const Mark &mark : marks)
        greatest = std::max(greatest, mark.high);
    const auto point = [greatest, this](double time, double value) {
        return number(time - m_begin) + ' '
            + number(Height - 1 - (Height - 2) * std::max(value, 0.0) / greatest);
    };
    QByteArray path;
    for (qsizetype i = 0; i < marks.size(); ++i) {
        const Mark &mark = marks.at(i);
        const bool isNew = i == 0 || mark.from - marks.at(i - 1).to > curveGap;
        // A line without length is a dot: a single answer is seen, too.
        path += isNew ? 'M' + point(mark.from, mark.low) + "h0" : 'L' + point(mark.from, mark.low);
        if (mark.count > 1)
            path += 'L' + point(mark.to, mark.high);
    }
    return "<path class=\"curve\" d=\"" + path + "\"/>";
}
