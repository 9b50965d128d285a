// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// What was done in which step, written to standard output before it is done, so that a crash has its last line there;
/// and what was found wrong.
class Journal
{
public:
    explicit Journal(QString who);

    void beginStep(int step);
    int step() const { return m_step; }
    void say(const QString &text);
    /// Something that must not be.
    void fail(const QString &text);
    bool hasFailed() const { return !m_failures.isEmpty(); }
    QStringList failures() const { return m_failures; }
    /// Of the last 20 steps.
    QStringList lastLines() const;

private:
    QString line(const QString &text) const;

    const QString m_who;
    int m_step = 0;
    QStringList m_lines;
    QStringList m_failures;
};
