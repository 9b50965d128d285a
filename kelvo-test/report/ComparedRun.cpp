// SPDX-License-Identifier: MIT
#include "ComparedRun.h"

#include "KelvoWords.h"
#include "RecordedRun.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

namespace {
constexpr qsizetype mostIds = 100000;

/// Properties that say where on the screen a window is.
bool isOfWindow(const QString &property)
{
    return property == QLatin1String("xid") || property == QLatin1String("render-rectangle");
}

bool isLevel(const RecordedEvent &event)
{
    return event.name == QLatin1String("bufferingInfo") || event.name == QLatin1String("scanningInfo");
}

/// Whether the first argument says what the report is about, and the others what there is to say.
bool hasSubject(const RecordedEvent &event)
{
    return event.name == QLatin1String("stateChanged") || event.name == QLatin1String("mediaChanged")
        || event.name == QLatin1String("metadataChanged")
        || event.name == QLatin1String("kelvoPropertyChanged");
}
} // namespace

ComparedRun::ComparedRun(const RecordedRun &run)
{
    run.forEach([this](qint64 index, const RecordedEvent &event) { add(index, event); });
}

void ComparedRun::add(qint64 index, const RecordedEvent &event)
{
    if (!m_begin)
        m_begin = event.time;
    const bool isCommand = event.kind == KelvoWords::command;
    if (event.kind == KelvoWords::appears && event.name == QLatin1String("renderer"))
        objectOf(event.uuid).name = event.arguments.at(0).toString();
    if ((!isCommand && event.kind != KelvoWords::report) || (isCommand && KelvoWords::isQuestion(event.name)))
        return;
    if (m_events == MostEvents) {
        m_isCut = true;
        return;
    }
    ++m_events;
    Object &object = objectOf(event.uuid);
    Event compared{event.time, index, isCommand, {}, {}};
    if (!isCommand) {
        addReport(&object, compared, event);
        return;
    }
    object.isCommanded = true;
    object.levels.clear();
    const QString first = event.arguments.at(0).toString();
    const bool isAboutWindow = event.name == QLatin1String("setKelvoProperty") && isOfWindow(first);
    compared.key
        = QStringLiteral("%1(%2)").arg(event.name, isAboutWindow ? first : plainRest(event.arguments, 0));
    object.events.append(compared);
}

void ComparedRun::addReport(Object *object, Event event, const RecordedEvent &recorded)
{
    const QJsonValue first = recorded.arguments.at(0);
    QString subject;
    if (isLevel(recorded)) {
        subject = first.toDouble() < 1 ? QStringLiteral("below 1") : QStringLiteral("1");
    } else if (recorded.name == QLatin1String("error")) {
        subject = QString::number(first[QLatin1String("code")].toInt());
        event.value = plain(first[QLatin1String("message")]);
    } else if (hasSubject(recorded)) {
        subject = plain(first);
        if (!isOfWindow(subject))
            event.value = plainRest(recorded.arguments, 1);
    } else {
        event.value = plainRest(recorded.arguments, 0);
    }
    event.key = QStringLiteral("%1(%2)").arg(recorded.name, subject);
    // One filling is one, however often its level is told.
    if (isLevel(recorded) && std::exchange(object->levels[recorded.name], event.key) == event.key)
        return;
    object->events.append(event);
}

ComparedRun::Object &ComparedRun::objectOf(const QString &uuid)
{
    const auto known = m_indexes.constFind(uuid);
    if (known != m_indexes.constEnd())
        return m_objects[*known];
    m_indexes.insert(uuid, m_objects.size());
    Object object;
    object.uuid = uuid;
    m_objects.append(object);
    return m_objects.last();
}

QList<ComparedRun::Object> ComparedRun::objects() const
{
    QList<Object> objects = m_objects;
    const auto firstCommand = [](const Object &object) {
        const auto found = std::find_if(
            object.events.begin(), object.events.end(), [](const Event &event) { return event.isCommand; });
        return found == object.events.end() ? std::numeric_limits<qint64>::max() : found->event;
    };
    std::stable_sort(objects.begin(), objects.end(),
        [&](const Object &one, const Object &other) { return firstCommand(one) < firstCommand(other); });
    return objects;
}

QString ComparedRun::plainRest(const QJsonArray &arguments, qsizetype from)
{
    QStringList texts;
    for (qsizetype i = from; i < arguments.size(); ++i)
        texts.append(plain(arguments.at(i)));
    return texts.join(QLatin1String(", "));
}

QString ComparedRun::plain(const QJsonValue &value)
{
    if (value.isString())
        return plainText(value.toString());
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return plainText(QString::fromUtf8(json.sliced(1, json.size() - 2)));
}

/// Random ids by the order in which they came; servers of a test have another port in each run.
QString ComparedRun::plainText(const QString &text)
{
    static const QRegularExpression id(
        QStringLiteral("[0-9a-fA-F]{8}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{12}"));
    static const QRegularExpression port(QStringLiteral("(https?://[^/:\\s\"]+):\\d+"));
    QString result = text;
    for (QRegularExpressionMatch match = id.match(result); match.hasMatch(); match = id.match(result)) {
        const QString number = QStringLiteral("id%1").arg(m_ids.size() + 1);
        const QString known = m_ids.value(match.captured());
        if (known.isEmpty() && m_ids.size() < mostIds)
            m_ids.insert(match.captured(), number);
        result.replace(match.capturedStart(), match.capturedLength(), known.isEmpty() ? number : known);
    }
    return result.replace(port, QStringLiteral("\\1"));
}
