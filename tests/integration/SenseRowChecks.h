// SPDX-License-Identifier: MIT
#pragma once

#include "card/SenseRow.h"

#include <QList>
#include <QStringList>

namespace SenseRowChecks {
/// "pause" of "ear.pause".
inline QStringList names(const QList<SenseRow> &rows)
{
    QStringList names;
    for (const SenseRow &row : rows)
        names.append(row.id.section(u'.', 1));
    return names;
}

/// Those that agree with what was said, or were not measured.
inline QStringList notOff(const QList<SenseRow> &rows)
{
    QStringList texts;
    for (const SenseRow &row : rows) {
        if (!row.isOff())
            texts.append(QStringLiteral("%1: said %2, came out %3 ± %4 %5")
                             .arg(row.id)
                             .arg(row.said.value_or(-99))
                             .arg(row.cameOut.value_or(-99))
                             .arg(row.error)
                             .arg(row.doubt));
    }
    return texts;
}

/// Those that tell something although nothing came out, or do not tell why they do not.
inline QStringList guessed(const QList<SenseRow> &rows)
{
    QStringList ids;
    for (const SenseRow &row : rows) {
        if (row.isOff() || row.cameOut || row.doubt.isEmpty())
            ids.append(row.id);
    }
    return ids;
}
} // namespace SenseRowChecks
