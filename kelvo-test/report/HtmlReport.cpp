// SPDX-License-Identifier: MIT
#include "HtmlReport.h"

#include "EventTable.h"
#include "HtmlText.h"
#include "KelvoWords.h"
#include "LanePicture.h"

#include <QCryptographicHash>
#include <QFile>
#include <QIODevice>

#include <algorithm>

/// Not in a namespace, as the macro wants it: what a static library has of resources must be asked for.
static void initReportResources()
{
    Q_INIT_RESOURCE(report);
}

namespace {
/// Marks in all lanes together: a browser draws so many at once.
constexpr qsizetype mostMarks = 20000;
constexpr qsizetype mostErrorRows = 1000;

QByteArray resource(const QString &name)
{
    QFile file(QStringLiteral(":/kelvo-test/report/%1").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray secondsOf(double seconds)
{
    return KelvoWords::seconds(seconds).toUtf8();
}

/// A table with a heading; nothing without rows.
QByteArray section(
    const QByteArray &id, const QByteArray &title, const QByteArray &columns, const QByteArray &rows)
{
    if (rows.isEmpty())
        return {};
    return "<section id=" + id + "><h2>" + title + "</h2><div class=wide tabindex=0><table><thead><tr>"
        + columns + "<tbody>\n" + rows + "</table></div></section>\n";
}

/// A line that opens to show further ones.
QByteArray withDetails(const QString &line, const QString &details)
{
    if (details.isEmpty())
        return HtmlText::of(line);
    QByteArray html = "<details><summary>" + HtmlText::of(line) + "</summary><pre>";
    for (const QString &detail : details.split(u'\n'))
        html += HtmlText::of(detail) + '\n';
    return html + "</pre></details>";
}

struct LaneOfReport
{
    const char *title;
    const Lane Timeline::Renderer::*lane;
    LanePicture::Style style;
    const char *kind;
};

constexpr LaneOfReport lanesOfReport[] = {
    {"Commands", &Timeline::Renderer::commands, LanePicture::Style::Ticks, "commands"},
    {"State", &Timeline::Renderer::states, LanePicture::Style::States, "states"},
    {"Buffering", &Timeline::Renderer::buffering, LanePicture::Style::Fill, "buffering"},
    {"Position", &Timeline::Renderer::position, LanePicture::Style::Curve, "position"},
    {"Heard", &Timeline::Renderer::heard, LanePicture::Style::Fill, "heard"},
    {"Seen", &Timeline::Renderer::seen, LanePicture::Style::Fill, "seen"},
    {"Errors", &Timeline::Renderer::errors, LanePicture::Style::Ticks, "errors"},
    {"Others", &Timeline::Renderer::others, LanePicture::Style::Ticks, "others"},
};

qsizetype lanesInUse(const QList<Timeline::Renderer> &renderers)
{
    qsizetype lanes = 0;
    for (const Timeline::Renderer &renderer : renderers) {
        lanes += std::count_if(std::begin(lanesOfReport), std::end(lanesOfReport),
            [&renderer](const LaneOfReport &lane) { return !(renderer.*lane.lane).isEmpty(); });
    }
    return lanes;
}
} // namespace

HtmlReport::HtmlReport(const RecordedRun &run, QList<TestResult> results)
    : m_run(run)
    , m_results(std::move(results))
{
    initReportResources();
    m_run.forEach([this](qint64 index, const RecordedEvent &event) {
        m_timeline.add(index, event);
        m_effects.add(index, event);
    });
    m_timeline.finish();
    m_effects.finish();
}

bool HtmlReport::write(QIODevice *device) const
{
    const QByteArray top = head() + facts() + notices() + results() + lanes() + effects() + states()
        + errors() + "<section id=events><h2>Events</h2>\n" + resource(QStringLiteral("event-kinds.html"));
    bool isWritten = device->write(top) == top.size();
    EventTable table(device, m_run.events() - firstRow());
    m_run.forEach([this, &table](qint64 index, const RecordedEvent &event) {
        if (index >= firstRow())
            table.add(index, event);
    });
    isWritten = table.finish() && isWritten;
    const QByteArray bottom = "</section></main>\n" + resource(QStringLiteral("event-details.html"))
        + "<script>" + resource(QStringLiteral("report.js")) + "</script></body></html>\n";
    return device->write(bottom) == bottom.size() && isWritten;
}

/// What the browser itself is told to forbid: anything from elsewhere, and every script but ours.
QByteArray HtmlReport::head() const
{
    const QByteArray script
        = QCryptographicHash::hash(resource(QStringLiteral("report.js")), QCryptographicHash::Sha256)
              .toBase64();
    return "<!DOCTYPE html>\n<html lang=en><head><meta charset=utf-8>\n"
           "<meta http-equiv=Content-Security-Policy content=\"default-src 'none'; style-src "
           "'unsafe-inline'; "
           "script-src 'sha256-"
        + script
        + "'; base-uri 'none'; form-action 'none'\">\n"
          "<meta name=viewport content=\"width=device-width, initial-scale=1\">\n"
          "<meta name=color-scheme content=\"light dark\">\n<title>"
        + HtmlText::of(m_run.header().value(QLatin1String("program")).toString(QStringLiteral("Recording")))
        + ' ' + HtmlText::of(m_run.header().value(QLatin1String("started")).toString()) + "</title>\n<style>"
        + resource(QStringLiteral("report.css")) + "</style></head>\n<body><main>\n";
}

QByteArray HtmlReport::facts() const
{
    QByteArray html = "<h1>What a renderer was told, and what it told</h1>\n<dl class=facts>";
    const QJsonObject header = m_run.header();
    for (auto fact = header.begin(); fact != header.end(); ++fact) {
        if (fact.key() == QLatin1String("kelvo-recording"))
            continue;
        html += "<dt>" + HtmlText::of(fact.key()) + "<dd>"
            + (fact.value().isString() ? HtmlText::of(fact.value().toString())
                                       : HtmlText::ofJson(fact.value()));
    }
    return html + "<dt>events<dd>" + QByteArray::number(m_run.events()) + "<dt>duration<dd>"
        + secondsOf(m_timeline.end() - m_timeline.begin()) + "</dl>\n";
}

/// Whatever a reader must know before trusting the rest.
QByteArray HtmlReport::notices() const
{
    QList<QByteArray> notices;
    if (m_run.runs() > 1) {
        notices.append("The recording has " + QByteArray::number(m_run.runs()) + " runs; this is number "
            + QByteArray::number(m_run.run() + 1) + '.');
    }
    if (m_run.skippedLines() > 0)
        notices.append(
            QByteArray::number(m_run.skippedLines()) + " lines of the recording could not be understood.");
    if (!m_run.trouble().isEmpty())
        notices.append("The recording ends early: " + HtmlText::of(m_run.trouble()) + '.');
    if (firstRow() > 0) {
        notices.append("The table has the last " + QByteArray::number(MostRows) + " of "
            + QByteArray::number(m_run.events()) + " events; the time line shows all.");
    }
    if (m_timeline.eventsLeftOut() > 0)
        notices.append(
            QByteArray::number(m_timeline.eventsLeftOut()) + " events of further renderers have no lane.");
    for (const RecordedEvent &note : m_timeline.notes()) {
        if (note.name != QLatin1String("ended") && note.name != QLatin1String("saved"))
            notices.append("At " + secondsOf(note.time) + ": " + HtmlText::of(KelvoWords::call(note)));
    }
    QByteArray html;
    for (const QByteArray &notice : notices)
        html += "<li>" + notice + '\n';
    return html.isEmpty() ? html : "<ul class=notices>" + html + "</ul>\n";
}

QByteArray HtmlReport::results() const
{
    // Never a text of others.
    static constexpr const char *looks[] = {"held", "error", "other", "error"};
    QByteArray rows;
    for (const TestResult &result : m_results) {
        rows += "<tr class=" + QByteArray(looks[result.outcome]) + "><td>"
            + HtmlText::of(result.outcomeText()) + "<td>" + HtmlText::of(result.name) + "<td>"
            + HtmlText::of(result.group) + "<td>" + secondsOf(result.seconds) + "<td>"
            + withDetails(result.message, result.details) + '\n';
    }
    return section("results", "Results",
        "<th scope=col>Result<th scope=col>Of<th scope=col>Renderer<th scope=col>Time<th scope=col>What came",
        rows);
}

QByteArray HtmlReport::lanes() const
{
    const qsizetype share
        = std::max(mostMarks / std::max(lanesInUse(m_timeline.renderers()), qsizetype(1)), qsizetype(50));
    QByteArray html = "<section id=lanes data-begin=\"" + QByteArray::number(m_timeline.begin(), 'f', 6)
        + "\" data-seconds=\""
        + QByteArray::number(std::max(m_timeline.end() - m_timeline.begin(), 0.001), 'f', 6)
        + "\"><h2>Time line</h2>\n" + resource(QStringLiteral("lane-controls.html"));
    for (const Timeline::Renderer &renderer : m_timeline.renderers())
        html += lanesOf(renderer, share);
    if (m_timeline.renderers().isEmpty())
        html += "<p>No renderer was told anything, and none told anything.\n";
    return html + "</section>\n";
}

QByteArray HtmlReport::lanesOf(const Timeline::Renderer &renderer, qsizetype share) const
{
    const LanePicture picture(m_timeline.begin(), m_timeline.end(), firstRow());
    const QByteArray name = nameOf(renderer.uuid);
    QByteArray html
        = "<div class=renderer role=group tabindex=0 aria-label=\"" + name + "\"><h3>" + name + "</h3>\n";
    for (const LaneOfReport &lane : lanesOfReport) {
        const Lane &marks = renderer.*lane.lane;
        if (marks.isEmpty())
            continue;
        html += "<div class=\"lane " + QByteArray(lane.kind) + "\"><span>" + lane.title + "</span>"
            + picture.of(marks.atMost(share), lane.style, QByteArray(lane.title) + " of " + name)
            + "</div>\n";
    }
    return html + "<div class=\"lane axis\"><span>Seconds</span>"
        + picture.axis()
        // Tells what the keys have chosen.
        + "</div><output class=hint></output></div>\n";
}

QByteArray HtmlReport::effects() const
{
    QByteArray rows;
    for (const CommandEffects::Row &row : m_effects.rows()) {
        rows += "<tr><td>" + nameOf(row.uuid) + "<td>" + HtmlText::of(row.command) + "<td>"
            + HtmlText::of(row.effect) + "<td>" + QByteArray::number(row.times.count) + "<td>"
            + QByteArray::number(row.without);
        if (row.times.count > 0) {
            rows += "<td>" + secondsOf(row.times.median) + "<td>" + secondsOf(row.times.p95) + "<td>"
                + link(row.slowest, secondsOf(row.times.maximum));
        } else {
            rows += "<td>-<td>-<td>-";
        }
        rows += '\n';
    }
    return section("effects", "From command to effect",
        "<th scope=col>Renderer<th scope=col>Command<th scope=col>Effect<th scope=col>Came<th scope=col>Did "
        "not come"
        "<th scope=col>Median<th scope=col>95 % within<th scope=col>Longest",
        rows);
}

QByteArray HtmlReport::states() const
{
    QByteArray rows;
    for (const Timeline::Renderer &renderer : m_timeline.renderers()) {
        for (auto state = renderer.stateTimes.cbegin(); state != renderer.stateTimes.cend(); ++state) {
            rows += "<tr><td>" + nameOf(renderer.uuid) + "<td>" + HtmlText::of(state.key()) + "<td>"
                + QByteArray::number(state->second) + "<td>" + secondsOf(state->first) + '\n';
        }
    }
    return section("states", "States",
        "<th scope=col>Renderer<th scope=col>State<th scope=col>Times<th scope=col>Altogether", rows);
}

QByteArray HtmlReport::errors() const
{
    QByteArray rows;
    qint64 all = 0;
    qint64 shown = 0;
    for (const Timeline::Renderer &renderer : m_timeline.renderers()) {
        all += renderer.errorCount;
        for (const Timeline::ErrorReport &error : renderer.errorReports) {
            if (shown == mostErrorRows)
                break;
            ++shown;
            rows += "<tr class=error><td>" + link(error.event, secondsOf(error.time)) + "<td>"
                + nameOf(renderer.uuid) + "<td>" + QByteArray::number(error.code) + "<td>"
                + HtmlText::of(error.message) + '\n';
        }
    }
    if (shown < all)
        rows += "<tr><td colspan=4>and " + QByteArray::number(all - shown) + " more\n";
    return section("errors", "Errors",
        "<th scope=col>At<th scope=col>Renderer<th scope=col>Code<th scope=col>Message", rows);
}

QByteArray HtmlReport::nameOf(const QString &uuid) const
{
    const QList<Timeline::Renderer> &renderers = m_timeline.renderers();
    const auto found = std::find_if(renderers.begin(), renderers.end(),
        [&uuid](const Timeline::Renderer &renderer) { return renderer.uuid == uuid; });
    return HtmlText::of(found == renderers.end() || found->name.isEmpty() ? uuid : found->name);
}

/// The text, leading to the row of an event where the table has one.
QByteArray HtmlReport::link(qint64 event, const QByteArray &text) const
{
    return event < firstRow() ? text : "<a href=\"#e" + QByteArray::number(event) + "\">" + text + "</a>";
}

qint64 HtmlReport::firstRow() const
{
    return std::max(m_run.events() - MostRows, qint64(0));
}
