// SPDX-License-Identifier: MIT
#include "KelvoWords.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace {
QString textOf(const QJsonValue &value)
{
    if (value.isString())
        return value.toString();
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}
} // namespace

bool KelvoWords::isReport(const RecordedEvent &event, QLatin1String name)
{
    return event.kind == report && event.name == name;
}

bool KelvoWords::isQuestion(const QString &name)
{
    return name == QLatin1String("getStatus") || name == QLatin1String("getPosition")
        || name == QLatin1String("kelvoProperty");
}

bool KelvoWords::isOfRenderer(const RecordedEvent &event)
{
    static const QStringList signalsOfRenderers{QStringLiteral("stateChanged"),
        QStringLiteral("mediaChanged"), QStringLiteral("playbackCompleted"),
        QStringLiteral("playlistChanged"), QStringLiteral("metadataChanged"),
        QStringLiteral("kelvoPropertyChanged"), QStringLiteral("bufferingInfo"),
        QStringLiteral("scanningInfo"), QStringLiteral("error")};
    static const QStringList operationsOfRenderers{QStringLiteral("play"), QStringLiteral("playUri"),
        QStringLiteral("playUriWithType"), QStringLiteral("stop"), QStringLiteral("pause"),
        QStringLiteral("resume"), QStringLiteral("next"), QStringLiteral("previous"),
        QStringLiteral("pauseAt"), QStringLiteral("gotoIndex"), QStringLiteral("setPosition"),
        QStringLiteral("getStatus"), QStringLiteral("getPosition"), QStringLiteral("assignPlaylist")};
    if (event.uuid.isEmpty())
        return false;
    if (event.kind == appears)
        return event.name == QLatin1String("renderer");
    if (event.kind == report)
        return signalsOfRenderers.contains(event.name);
    return event.kind == command ? operationsOfRenderers.contains(event.name)
                                 : answeredPosition(event).has_value();
}

std::optional<double> KelvoWords::answeredPosition(const RecordedEvent &event)
{
    if (event.kind != answer)
        return {};
    const bool isProperty
        = event.name == QLatin1String("kelvoProperty") && event.arguments.at(0) == QLatin1String("position");
    if (!isProperty && event.name != QLatin1String("getPosition"))
        return {};
    const QJsonValue value = event.arguments.at(isProperty ? 1 : 0);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<KelvoWords::Sensed> KelvoWords::sensedBy(const RecordedEvent &event)
{
    if (event.kind != heard && event.kind != seen)
        return {};
    Sensed what;
    what.ago = std::max(event.arguments.at(0).toDouble(), 0.0);
    what.item = event.arguments.at(1).toInt();
    const QJsonValue position = event.arguments.at(2);
    if (position.isDouble())
        what.position = position.toDouble();
    if (event.kind == seen)
        what.leftOut = event.arguments.at(4).toInt();
    what.doubt = event.arguments.at(5).toString();
    return what;
}

QString KelvoWords::errorText(const QJsonValue &error)
{
    const QJsonObject object = error.toObject();
    const QString message = object.value(QLatin1String("message")).toString();
    const QString code = QStringLiteral("error %1").arg(object.value(QLatin1String("code")).toInt());
    return message.isEmpty() ? code : QStringLiteral("%1: %2").arg(code, message);
}

QString KelvoWords::call(const RecordedEvent &event, qsizetype longest)
{
    QStringList arguments;
    for (const QJsonValueConstRef argument : event.arguments)
        arguments.append(textOf(argument));
    const QString text = QStringLiteral("%1(%2)").arg(event.name, arguments.join(QLatin1String(", ")));
    return text.size() > longest ? text.left(longest - 1) + QChar(0x2026) : text;
}

QString KelvoWords::seconds(double seconds)
{
    return QStringLiteral("%1 s").arg(seconds, 0, 'f', 3);
}
