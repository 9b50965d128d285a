// SPDX-License-Identifier: MIT
#include "ExpectCheck.h"

#include "Event.h"

namespace {
double secondsOf(std::chrono::milliseconds time)
{
    return double(time.count()) / 1000;
}
} // namespace

ExpectCheck::ExpectCheck(const ExpectStep *step, double now)
    : m_step(step)
    , m_begin(now)
{
}

void ExpectCheck::takeEarlier(const EventLog &log)
{
    for (const Event &event : log)
        take(event);
}

void ExpectCheck::take(const Event &event)
{
    if (m_step->kind == ExpectStep::Count && m_step->conditions.constFirst().isToldBy(event))
        ++m_count;
    if (m_step->kind == ExpectStep::Order && m_reached < m_step->conditions.size()
        && m_step->conditions.at(m_reached).isToldBy(event))
        ++m_reached;
}

ExpectCheck::Outcome ExpectCheck::look(const Observation &observed, double now)
{
    switch (m_step->kind) {
    case ExpectStep::Once:
        return lookOnce(observed, now);
    case ExpectStep::Order:
        if (m_reached == m_step->conditions.size())
            return Held;
        break;
    case ExpectStep::Count:
        return lookCount(now);
    }
    return now >= deadline() ? Failed : Open;
}

ExpectCheck::Outcome ExpectCheck::lookOnce(const Observation &observed, double now)
{
    if (!m_step->conditions.constFirst().holds(observed)) {
        if (m_holdsSince)
            m_brokeAt = now;
        return m_holdsSince || now >= m_begin + secondsOf(m_step->within) ? Failed : Open;
    }
    if (!m_holdsSince)
        m_holdsSince = now;
    return now >= *m_holdsSince + secondsOf(m_step->lasting) ? Held : Open;
}

ExpectCheck::Outcome ExpectCheck::lookCount(double now) const
{
    if (m_step->most && m_count > *m_step->most)
        return Failed;
    const bool isEnough = m_count >= m_step->least;
    if (now >= deadline())
        return isEnough ? Held : Failed;
    return isEnough && !m_step->most ? Held : Open;
}

double ExpectCheck::deadline() const
{
    if (m_holdsSince)
        return *m_holdsSince + secondsOf(m_step->lasting);
    return m_begin + secondsOf(m_step->within);
}

bool ExpectCheck::needsPosition() const
{
    return m_step->conditions.constFirst().position.has_value();
}

bool ExpectCheck::isMeasured() const
{
    const Condition &condition = m_step->conditions.constFirst();
    return condition.needsEar() || condition.needsEye();
}

QString ExpectCheck::unmeasured(const Observation &observed) const
{
    return m_step->conditions.constFirst().unmeasured(observed);
}

QString ExpectCheck::measured(const Observation &observed) const
{
    return m_step->conditions.constFirst().measured(observed);
}

QStringList ExpectCheck::properties() const
{
    return m_step->kind == ExpectStep::Once ? m_step->conditions.constFirst().properties.keys()
                                            : QStringList();
}

QString ExpectCheck::wanted() const
{
    QStringList texts;
    for (const Condition &condition : m_step->conditions)
        texts.append(condition.text());
    QString text = texts.join(QStringLiteral(", then "));
    if (m_step->kind == ExpectStep::Count) {
        if (m_step->most && *m_step->most == m_step->least)
            text += QStringLiteral(" %1 times").arg(m_step->least);
        else if (m_step->most)
            text += QStringLiteral(" %1 to %2 times").arg(m_step->least).arg(*m_step->most);
        else
            text += QStringLiteral(" at least %1 times").arg(m_step->least);
    }
    text += QStringLiteral(" within ") + Quantities::text(m_step->within);
    if (m_step->lasting.count() > 0)
        text += QStringLiteral(" and for ") + Quantities::text(m_step->lasting);
    return text;
}

QString ExpectCheck::came() const
{
    if (m_step->kind == ExpectStep::Count)
        return QStringLiteral("it came %1 times").arg(m_count);
    if (m_step->kind == ExpectStep::Order)
        return QStringLiteral("the first %1 of %2 came").arg(m_reached).arg(m_step->conditions.size());
    if (m_brokeAt)
        return QStringLiteral("it held from %1 s to %2 s only").arg(*m_holdsSince).arg(*m_brokeAt);
    return {};
}
