// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

/// The lines of a recording as a test compares them.
namespace RecordedLines {
inline QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// One event as "uuid kind name [arguments]", a header as "header program"; what is wrong with it otherwise.
inline QString wordsOf(const QByteArray &line)
{
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(line, &error).object();
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("not JSON: ") + QString::fromUtf8(line);
    if (object.contains(QLatin1String("kelvo-recording")))
        return QStringLiteral("header ") + object.value(QLatin1String("program")).toString();
    const QJsonArray arguments = object.value(QLatin1String("arguments")).toArray();
    return QStringList{object.value(QLatin1String("uuid")).toString(),
        object.value(QLatin1String("kind")).toString(), object.value(QLatin1String("name")).toString(),
        QString::fromUtf8(QJsonDocument(arguments).toJson(QJsonDocument::Compact))}
        .join(u' ');
}

inline QStringList of(const QByteArray &recording)
{
    QStringList words;
    QList<QByteArray> lines = recording.split('\n');
    if (lines.takeLast().size() > 0)
        words.append(QStringLiteral("a line without its end"));
    for (const QByteArray &line : lines)
        words.append(wordsOf(line));
    return words;
}

/// Seconds, of those lines that are events.
inline QList<double> timesOf(const QByteArray &recording)
{
    QList<double> times;
    for (const QByteArray &line : recording.split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.contains(QLatin1String("time")))
            times.append(object.value(QLatin1String("time")).toDouble());
    }
    return times;
}
} // namespace RecordedLines
