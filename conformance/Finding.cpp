// SPDX-License-Identifier: MIT
#include "Finding.h"

#include <QMetaEnum>

QString textOf(const Counterexample &evidence)
{
    QStringList lines;
    if (!evidence.expected.isEmpty()) {
        lines.append(QLatin1String("expected: ") + evidence.expected);
        lines.append(QLatin1String("came: ") + evidence.came);
    }
    if (!evidence.where.isEmpty())
        lines.append(QLatin1String("checked at: ") + evidence.where);
    for (const QString &violation : evidence.violations)
        lines.append(QLatin1String("never allowed: ") + violation);
    if (evidence.events.size() > Counterexample::Shown)
        lines.append(
            QStringLiteral("%1 events before these").arg(evidence.events.size() - Counterexample::Shown));
    for (const HeardEvent &event : evidence.lastEvents())
        lines.append(QStringLiteral("%1 s  %2").arg(double(event.time) / 1000, 8, 'f', 3).arg(event.text));
    return lines.join(QLatin1Char('\n'));
}

QString valueText(KelvoRenderer::State state)
{
    const char *name = QMetaEnum::fromType<KelvoRenderer::State>().valueToKey(state);
    return name ? QString::fromLatin1(name) : QStringLiteral("state %1").arg(int(state));
}

QString valueText(const QList<KelvoRenderer::State> &states)
{
    QStringList names;
    for (KelvoRenderer::State state : states)
        names.append(valueText(state));
    return QLatin1Char('(') + names.join(QLatin1String(", ")) + QLatin1Char(')');
}
