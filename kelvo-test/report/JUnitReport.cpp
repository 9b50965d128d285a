// SPDX-License-Identifier: MIT
#include "JUnitReport.h"

#include <QIODevice>
#include <QSysInfo>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {
QString timeText(double seconds)
{
    return QString::number(seconds, 'f', 3);
}

/// XML has no way at all to write some characters.
QString legal(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        const bool isPair
            = character.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair) {
            ++i;
            continue;
        }
        const bool isControl
            = character < u' ' && character != u'\n' && character != u'\t' && character != u'\r';
        if (isControl || character.isSurrogate() || character >= QChar(0xfffe))
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

class Writer
{
public:
    explicit Writer(QIODevice &device)
        : m_xml(&device)
    {
        m_xml.setAutoFormatting(true);
    }

    bool write(const QString &name, const QDateTime &began, const QList<TestResult> &results)
    {
        m_xml.writeStartDocument();
        m_xml.writeStartElement(QStringLiteral("testsuites"));
        attribute("name", name);
        writeCounts(results, false);
        QStringList groups;
        for (const TestResult &result : results) {
            if (!groups.contains(result.group))
                groups.append(result.group);
        }
        for (const QString &group : groups)
            writeSuite(group, began, results);
        m_xml.writeEndDocument();
        return !m_xml.hasError();
    }

private:
    void attribute(const char *name, const QString &value)
    {
        m_xml.writeAttribute(QLatin1String(name), legal(value));
    }

    void writeCounts(const QList<TestResult> &results, bool withSkipped)
    {
        const auto count = [&results](TestResult::Outcome outcome) {
            return QString::number(std::count_if(results.cbegin(), results.cend(),
                [outcome](const TestResult &result) { return result.outcome == outcome; }));
        };
        double seconds = 0;
        for (const TestResult &result : results)
            seconds += result.seconds;
        attribute("tests", QString::number(results.size()));
        attribute("failures", count(TestResult::Failed));
        attribute("errors", count(TestResult::CouldNotRun));
        if (withSkipped)
            attribute("skipped", count(TestResult::Skipped));
        attribute("time", timeText(seconds));
    }

    void writeSuite(const QString &group, const QDateTime &began, const QList<TestResult> &all)
    {
        QList<TestResult> results;
        std::copy_if(all.cbegin(), all.cend(), std::back_inserter(results),
            [&group](const TestResult &result) { return result.group == group; });
        m_xml.writeStartElement(QStringLiteral("testsuite"));
        attribute("name", group);
        writeCounts(results, true);
        attribute("timestamp", began.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")));
        attribute("hostname", QSysInfo::machineHostName());
        for (const TestResult &result : results)
            writeCase(result);
        m_xml.writeEndElement();
    }

    void writeCase(const TestResult &result)
    {
        m_xml.writeStartElement(QStringLiteral("testcase"));
        attribute("name", result.name);
        attribute("classname", result.group);
        attribute("time", timeText(result.seconds));
        if (!result.file.isEmpty()) {
            attribute("file", result.file);
            attribute("line", QString::number(result.line));
        }
        static constexpr const char *elements[] = {nullptr, "failure", "skipped", "error"};
        if (const char *element = elements[result.outcome]) {
            m_xml.writeStartElement(QLatin1String(element));
            attribute("message", result.message);
            if (result.outcome != TestResult::Skipped) {
                attribute("type", QLatin1String(element));
                m_xml.writeCharacters(legal(result.details));
            }
            m_xml.writeEndElement();
        }
        m_xml.writeEndElement();
    }

    QXmlStreamWriter m_xml;
};
} // namespace

bool JUnitReport::write(
    QIODevice &device, const QString &name, const QDateTime &began, const QList<TestResult> &results)
{
    return Writer(device).write(name, began, results);
}
