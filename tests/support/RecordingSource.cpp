// SPDX-License-Identifier: MIT
#include "RecordingSource.h"

#include <utility>

RecordingSource::RecordingSource(QString uuid, QString name, QStringList knownKeys)
    : m_uuid(std::move(uuid))
    , m_name(std::move(name))
    , m_knownKeys(std::move(knownKeys))
{
}

QStringList RecordingSource::takeCalls()
{
    return std::exchange(m_calls, {});
}

bool RecordingSource::answer(const QVariant &value)
{
    if (m_answers.isEmpty())
        return false;
    const auto [key, pending] = m_answers.takeFirst();
    pending.deliver({key, value});
    return true;
}

QString RecordingSource::uuid() const
{
    return m_uuid;
}

QString RecordingSource::name() const
{
    return m_name;
}

void RecordingSource::setKelvoProperty(const QString &key, const QVariant &value)
{
    m_calls.append(QStringLiteral("setKelvoProperty(%1,%2,%3)")
                       .arg(key, QString::fromLatin1(value.typeName()), value.toString()));
}

bool RecordingSource::kelvoProperty(const QString &key, QObject *receiver, const char *slot)
{
    m_calls.append(QStringLiteral("kelvoProperty(%1)").arg(key));
    if (!m_knownKeys.contains(key))
        return false;
    m_answers.append({key, KelvoAnswer(receiver, slot)});
    return true;
}
