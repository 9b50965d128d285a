// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"

#include <QDebug>
#include <QList>
#include <QString>
#include <QStringList>

/// Something that a renderer reported, in words.
struct HeardEvent
{
    qint64 time; ///< milliseconds of the subject's time since the trial began
    QString text;
};

/// What shows that a statement does not hold.
struct Counterexample
{
    /// How many events a reader is shown.
    static constexpr qsizetype Shown = 10;

    QString expected; ///< the check that failed, as it is written
    QString came; ///< what was found instead
    QString where; ///< file and line of the check
    QStringList violations; ///< what no renderer may ever do, and was done
    QList<HeardEvent> events; ///< all that was reported, in order

    QList<HeardEvent> lastEvents() const { return events.mid(std::max<qsizetype>(0, events.size() - Shown)); }
};

/// What came of one trial of a statement.
struct Finding
{
    enum Kind {
        Held,
        Failed,
        NotTried, ///< the renderer did not appear
    };
    Kind kind = Held;
    Counterexample evidence; ///< of what failed
    QString reason; ///< of what was not tried
    QStringList refusals; ///< errors by which the renderer said that it cannot do what it was told
};

/// The evidence in one line after another, for logs.
QString textOf(const Counterexample &evidence);

// Values in the words of evidence.
QString valueText(KelvoRenderer::State state);
QString valueText(const QList<KelvoRenderer::State> &states);
template <typename Value> QString valueText(const Value &value)
{
    QString text;
    QDebug(&text).nospace() << value;
    return text;
}
