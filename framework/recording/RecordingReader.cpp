// SPDX-License-Identifier: MIT
#include "RecordingReader.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

namespace {
constexpr QLatin1String headerKey("kelvo-recording");

/// The object that a line is, or that it ends with: a program that died in the middle of a line leaves no line end,
/// so that the header of the next run follows on the same line.
QJsonObject objectOf(const QByteArray &line)
{
    QJsonObject object = QJsonDocument::fromJson(line).object();
    if (!object.isEmpty())
        return object;
    const qsizetype header = line.lastIndexOf("{\"kelvo-recording\"");
    return header > 0 ? QJsonDocument::fromJson(line.mid(header)).object() : QJsonObject();
}

std::optional<RecordedEvent> eventOf(const QJsonObject &object)
{
    const QJsonValue time = object.value(QLatin1String("time"));
    const QJsonValue kind = object.value(QLatin1String("kind"));
    if (!time.isDouble() || !kind.isString())
        return {};
    RecordedEvent event;
    event.time = time.toDouble();
    event.uuid = object.value(QLatin1String("uuid")).toString();
    event.kind = kind.toString();
    event.name = object.value(QLatin1String("name")).toString();
    event.arguments = object.value(QLatin1String("arguments")).toArray();
    event.all = object;
    return event;
}
} // namespace

bool RecordingReader::open(const QString &path, QString *error)
{
    m_file.close();
    m_header = {};
    m_error.clear();
    m_runs = 0;
    m_skipped = 0;
    m_file.setFileName(path);
    if (QFileInfo(path).isDir()) {
        fail(QStringLiteral("is a folder"));
    } else if (!m_file.open(QIODevice::ReadOnly)) {
        fail(QStringLiteral("cannot be read: %1").arg(m_file.errorString()));
    } else if (const std::optional<QByteArray> line = nextLine(); !line) {
        if (m_error.isEmpty())
            fail(QStringLiteral("is empty"));
    } else if (const QJsonObject header = QJsonDocument::fromJson(*line).object();
               !header.contains(headerKey)) {
        fail(QStringLiteral("is no recording: its first line has no \"kelvo-recording\""));
    } else {
        takeHeader(header);
    }
    *error = m_error;
    return m_error.isEmpty();
}

std::optional<RecordedEvent> RecordingReader::next()
{
    while (m_error.isEmpty()) {
        const std::optional<QByteArray> line = nextLine();
        if (!line)
            return {};
        const QJsonObject object = objectOf(*line);
        if (object.contains(headerKey)) {
            if (!takeHeader(object))
                return {};
        } else if (std::optional<RecordedEvent> event = eventOf(object)) {
            event->run = m_runs - 1;
            return event;
        } else {
            ++m_skipped;
        }
    }
    return {};
}

/// The next line that is not empty; nothing at the end of the file.
std::optional<QByteArray> RecordingReader::nextLine()
{
    while (true) {
        QByteArray line = nextPart();
        if (line.isEmpty()) {
            if (m_file.error() != QFileDevice::NoError)
                fail(QStringLiteral("cannot be read any further: %1").arg(m_file.errorString()));
            return {};
        }
        if (line.size() == LongestLine && !line.endsWith('\n')) {
            ++m_skipped;
            while (!line.isEmpty() && !line.endsWith('\n'))
                line = nextPart();
        } else if (const QByteArray text = line.trimmed(); !text.isEmpty()) {
            return text;
        }
    }
}

/// A line with its end, or as much of it as is read at once; nothing at the end of the file.
QByteArray RecordingReader::nextPart()
{
    m_part.resize(LongestLine + 1);
    const qint64 length = m_file.readLine(m_part.data(), m_part.size());
    return {m_part.constData(), std::max(length, qint64(0))};
}

bool RecordingReader::takeHeader(const QJsonObject &header)
{
    const QJsonValue number = header.value(headerKey);
    if (number.toDouble(-1) != Version) {
        const QString told
            = QString::fromUtf8(QJsonDocument(QJsonArray{number}).toJson(QJsonDocument::Compact));
        fail(QStringLiteral("is of version %1, this program reads version %2")
                 .arg(told.mid(1, told.size() - 2))
                 .arg(Version));
        return false;
    }
    m_header = header;
    ++m_runs;
    return true;
}

void RecordingReader::fail(const QString &reason)
{
    m_error = QStringLiteral("%1 %2").arg(m_file.fileName(), reason);
}
