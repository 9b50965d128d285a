// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Records every message of the process, in order, for as long as it lives; they are passed on as well, so that
/// QTest still sees them. One at a time; any thread may log.
class LogRecorder
{
public:
    LogRecorder();
    ~LogRecorder();
    Q_DISABLE_COPY_MOVE(LogRecorder)

    /// All lines so far, without category or level.
    QStringList lines() const;
    QStringList warnings() const;
    bool contains(const QString &line) const { return lines().contains(line); }
    int count(const QString &line) const { return int(lines().count(line)); }
    /// True when all of `expected` appear in this order, others in between allowed.
    bool containsInOrder(const QStringList &expected) const;
    void clear();

private:
    QtMessageHandler m_previous;
};
