// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCommandListener.h"

#include <QHash>
#include <QMutex>
#include <QSet>
#include <QStringList>

class StallMeter;

/// The questions that renderers were asked and have not answered yet. Renderers that are made for the test and note
/// nothing are not in it.
class Questions : public KelvoCommandListener
{
public:
    /// The clock.
    explicit Questions(const StallMeter &meter);
    ~Questions() override;

    void commandGiven(const QString &uuid, const char *name, const QVariantList &arguments) override;
    void answerGiven(const QString &uuid, const char *name, const QVariantList &arguments) override;
    /// Nobody answers for it any more.
    void forget(const QString &uuid);

    /// How many positions were told.
    int positions() const { return m_positionsTold; }
    /// Whether the renderer has ever said that it is at this second.
    bool hasBeenAt(const QString &uuid, int second) const;
    int asked() const { return m_asked; }
    int pending() const;
    /// Those that wait for longer, in words.
    QStringList olderThan(double milliseconds) const;

private:
    const StallMeter &m_meter;
    mutable QMutex m_mutex;
    QHash<QString, QHash<QString, QList<double>>>
        m_pending; ///< of renderers: questions, when they were asked
    QHash<QString, QSet<uint>> m_positions; ///< of renderers: all that they told
    int m_positionsTold = 0;
    int m_asked = 0;
};
