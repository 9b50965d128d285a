// SPDX-License-Identifier: MIT
#include "Questions.h"

#include "KelvoRegistry.h"
#include "StallMeter.h"

namespace {
/// Empty for what is no question.
QString questionOf(const char *name, const QVariantList &arguments)
{
    const QLatin1String command(name);
    if (command == QLatin1String("getPosition") || command == QLatin1String("getStatus"))
        return command;
    if (command == QLatin1String("kelvoProperty"))
        return command + u' ' + arguments.value(0).toString();
    return {};
}
} // namespace

Questions::Questions(const StallMeter &meter)
    : m_meter(meter)
{
    install(this);
}

Questions::~Questions() = default;

void Questions::commandGiven(const QString &uuid, const char *name, const QVariantList &arguments)
{
    const QString question = questionOf(name, arguments);
    if (question.isEmpty() || !KelvoRegistry::instance()->findRendererByUuid(uuid))
        return;
    const QMutexLocker lock(&m_mutex);
    m_pending[uuid][question].append(m_meter.now());
    ++m_asked;
}

void Questions::answerGiven(const QString &uuid, const char *name, const QVariantList &arguments)
{
    const QMutexLocker lock(&m_mutex);
    QList<double> &times = m_pending[uuid][questionOf(name, arguments)];
    if (!times.isEmpty())
        times.removeFirst();
    if (QLatin1String(name) != QLatin1String("getPosition"))
        return;
    m_positions[uuid].insert(arguments.value(0).toUInt());
    ++m_positionsTold;
}

bool Questions::hasBeenAt(const QString &uuid, int second) const
{
    const QMutexLocker lock(&m_mutex);
    return m_positions.value(uuid).contains(uint(second));
}

void Questions::forget(const QString &uuid)
{
    const QMutexLocker lock(&m_mutex);
    m_pending.remove(uuid);
}

int Questions::pending() const
{
    const QMutexLocker lock(&m_mutex);
    int count = 0;
    for (const auto &questions : m_pending) {
        for (const QList<double> &times : questions)
            count += int(times.size());
    }
    return count;
}

QStringList Questions::olderThan(double milliseconds) const
{
    const QMutexLocker lock(&m_mutex);
    QStringList texts;
    const double latest = m_meter.now() - milliseconds;
    for (auto renderer = m_pending.cbegin(); renderer != m_pending.cend(); ++renderer) {
        for (auto question = renderer->cbegin(); question != renderer->cend(); ++question) {
            if (!question->isEmpty() && question->constFirst() < latest)
                texts.append(QStringLiteral("%1 does not answer %2").arg(renderer.key(), question.key()));
        }
    }
    return texts;
}
