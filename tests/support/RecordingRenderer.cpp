// SPDX-License-Identifier: MIT
#include "RecordingRenderer.h"

#include "KelvoPlaylist.h"

#include <utility>

RecordingRenderer::RecordingRenderer(QString uuid, QString name)
    : m_uuid(std::move(uuid))
    , m_name(std::move(name))
{
}

QStringList RecordingRenderer::takeCalls()
{
    return std::exchange(m_calls, {});
}

bool RecordingRenderer::answerStatus(
    const QString &playlistId, uint index, int state, const QString &objectId)
{
    if (m_statusAnswers.isEmpty())
        return false;
    m_statusAnswers.takeFirst().deliver({playlistId, index, state, objectId});
    return true;
}

bool RecordingRenderer::answerPosition(uint seconds)
{
    if (m_positionAnswers.isEmpty())
        return false;
    m_positionAnswers.takeFirst().deliver({seconds});
    return true;
}

bool RecordingRenderer::answerProperty(const QString &name, const QVariant &value)
{
    for (qsizetype i = 0; i < m_propertyAnswers.size(); ++i) {
        if (m_propertyAnswers.at(i).first == name) {
            m_propertyAnswers.takeAt(i).second.deliver({name, value});
            return true;
        }
    }
    return false;
}

void RecordingRenderer::rename(const QString &name)
{
    m_name = name;
    Q_EMIT nameChanged(name);
}

void RecordingRenderer::record(const QString &command, const QStringList &arguments)
{
    m_calls.append(command + QLatin1Char('(') + arguments.join(QLatin1Char(',')) + QLatin1Char(')'));
    if (onCall)
        onCall();
}

QString RecordingRenderer::uuid() const
{
    return m_uuid;
}

QString RecordingRenderer::name() const
{
    return m_name;
}

void RecordingRenderer::play()
{
    record(QStringLiteral("play"));
}

void RecordingRenderer::playUri(const QUrl &uri)
{
    record(QStringLiteral("playUri"), {uri.toString()});
}

void RecordingRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    record(QStringLiteral("playUriWithType"), {uri.toString(), contentType});
}

void RecordingRenderer::stop()
{
    record(QStringLiteral("stop"));
}

void RecordingRenderer::pause()
{
    record(QStringLiteral("pause"));
}

void RecordingRenderer::resume()
{
    record(QStringLiteral("resume"));
}

void RecordingRenderer::next()
{
    record(QStringLiteral("next"));
}

void RecordingRenderer::previous()
{
    record(QStringLiteral("previous"));
}

void RecordingRenderer::pauseAt(uint seconds)
{
    record(QStringLiteral("pauseAt"), {QString::number(seconds)});
}

void RecordingRenderer::gotoIndex(uint index)
{
    record(QStringLiteral("gotoIndex"), {QString::number(index)});
}

void RecordingRenderer::setPosition(int seconds, int mode)
{
    record(QStringLiteral("setPosition"), {QString::number(seconds), QString::number(mode)});
}

void RecordingRenderer::getStatus(QObject *receiver, const char *slot)
{
    record(QStringLiteral("getStatus"));
    m_statusAnswers.append(KelvoAnswer(receiver, slot));
}

void RecordingRenderer::getPosition(QObject *receiver, const char *slot)
{
    record(QStringLiteral("getPosition"));
    m_positionAnswers.append(KelvoAnswer(receiver, slot));
}

void RecordingRenderer::assignPlaylist(KelvoPlaylist *playlist)
{
    m_assigned = playlist;
    record(QStringLiteral("assignPlaylist"), {playlist ? playlist->uuid() : QString()});
}

void RecordingRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
    record(
        QStringLiteral("setKelvoProperty"), {name, QString::fromLatin1(value.typeName()), value.toString()});
}

void RecordingRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    record(QStringLiteral("kelvoProperty"), {name});
    m_propertyAnswers.append({name, KelvoAnswer(receiver, slot)});
}
