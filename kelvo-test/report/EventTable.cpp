// SPDX-License-Identifier: MIT
#include "EventTable.h"

#include "HtmlText.h"
#include "KelvoWords.h"

#include <QIODevice>

namespace {
/// Names of more objects than this are not kept.
constexpr qsizetype mostNames = 1000;

/// How the row of an event looks; never a text of the recording.
const char *lookOf(const RecordedEvent &event)
{
    if (event.kind == KelvoWords::command)
        return "command";
    if (event.kind == KelvoWords::answer)
        return "answer";
    if (event.kind == KelvoWords::report)
        return event.name == QLatin1String("error") ? "report error" : "report";
    return "other";
}
} // namespace

EventTable::EventTable(QIODevice *device, qint64 events)
    : m_device(device)
    , m_isOpen(events <= MostRowsOpen)
{
}

void EventTable::add(qint64 index, const RecordedEvent &event)
{
    if (m_rows % RowsOfTable == 0) {
        endTable();
        beginTable(event.time);
    }
    ++m_rows;
    m_lastTime = event.time;
    // Without the ends of rows and cells, which HTML does not need: they would be a quarter of the page.
    write("<tr id=e" + QByteArray::number(index) + " class=\"" + lookOf(event) + "\"><td>"
        + QByteArray::number(event.time, 'f', 6) + "<td>" + nameOf(event) + "<td>" + HtmlText::of(event.kind)
        + "<td>" + HtmlText::of(event.name) + "<td>" + HtmlText::ofJson(event.arguments) + '\n');
}

bool EventTable::finish()
{
    endTable();
    return m_isWritten;
}

void EventTable::beginTable(double time)
{
    write("<details" + QByteArray(m_isOpen ? " open" : "") + "><summary>Events from "
        + KelvoWords::seconds(time).toUtf8()
        + "</summary><div class=wide tabindex=0><table><thead><tr><th scope=col>Seconds<th scope=col>Of<th "
          "scope=col>Kind"
          "<th scope=col>Name<th scope=col>Arguments<tbody>\n");
}

void EventTable::endTable()
{
    if (m_rows > 0)
        write("</table></div><p class=until>to " + KelvoWords::seconds(m_lastTime).toUtf8()
            + "</p></details>\n");
}

/// The name of what the event is about, once that is known, else its uuid.
QByteArray EventTable::nameOf(const RecordedEvent &event)
{
    if (event.kind == KelvoWords::appears && m_names.size() < mostNames) {
        const QString name = event.arguments.at(0).toString();
        if (!name.isEmpty())
            m_names.insert(event.uuid, HtmlText::of(name));
    }
    const auto name = m_names.constFind(event.uuid);
    return name == m_names.constEnd() ? HtmlText::of(event.uuid) : *name;
}

void EventTable::write(const QByteArray &html)
{
    m_isWritten = m_isWritten && m_device->write(html) == html.size();
}
