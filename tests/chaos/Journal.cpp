// SPDX-License-Identifier: MIT
#include "Journal.h"

#include <cstdio>

namespace {
constexpr int stepsKept = 20;
constexpr int linesOfAStep = 10; // at most, on average

void print(const QString &line)
{
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}
} // namespace

Journal::Journal(QString who)
    : m_who(std::move(who))
{
}

void Journal::beginStep(int step)
{
    m_step = step;
}

QString Journal::line(const QString &text) const
{
    return QStringLiteral("%1step %2: %3").arg(m_who, QString::number(m_step), text);
}

void Journal::say(const QString &text)
{
    m_lines.append(line(text));
    if (m_lines.size() > stepsKept * linesOfAStep)
        m_lines.removeFirst();
    print(m_lines.constLast());
}

void Journal::fail(const QString &text)
{
    m_failures.append(line(text));
    say(QStringLiteral("WRONG: ") + text);
}

QStringList Journal::lastLines() const
{
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        const int step = m_lines.at(i).section(QStringLiteral("step "), 1, 1).section(u':', 0, 0).toInt();
        if (step > m_step - stepsKept)
            return m_lines.mid(i);
    }
    return {};
}
