// SPDX-License-Identifier: MIT
#include "ConformanceRun.h"

#include "Subject.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace {
// A renderer that did not come so often in a row is gone; each time it is waited for.
constexpr int missingAtMost = 3;

/// Why the statement is not tried, in the subject's words; made when it is.
Claim claimFor(const Statement &statement, const Subject &subject)
{
    for (Ability ability : statement.needs) {
        Claim claim = subject.claim(ability);
        if (claim.kind != Claim::Made)
            return claim;
    }
    return {};
}

/// Whether an error that refuses a command excuses what follows from it.
bool isExcusable(const Result &result, const Finding &finding)
{
    return !finding.refusals.isEmpty() && finding.evidence.violations.isEmpty()
        && std::any_of(result.needs.cbegin(), result.needs.cend(), canBeRefused);
}
} // namespace

ConformanceRun::ConformanceRun(Subject &subject, QList<Statement> statements, QObject *parent)
    : QObject(parent)
    , m_subject(subject)
    , m_statements(std::move(statements))
{
}

QList<Result> ConformanceRun::run()
{
    QList<Result> results;
    for (const Statement &statement : m_statements) {
        Q_EMIT began(results.size(), statement);
        results.append(resultOf(statement));
        Q_EMIT ended(results.constLast());
    }
    return results;
}

void ConformanceRun::stop(const QString &reason)
{
    m_stopped = reason;
    m_subject.interrupt();
}

Result ConformanceRun::resultOf(const Statement &statement)
{
    Result result;
    result.id = statement.id;
    result.sentence = statement.sentence;
    result.needs = statement.needs;
    const Claim claim = claimFor(statement, m_subject);
    if (claim.kind != Claim::Made) {
        result.verdict = claim.kind == Claim::Refused ? Verdict::Refused : Verdict::NotTried;
        result.reason = claim.reason;
    } else if (!m_stopped.isEmpty()) {
        result.reason = m_stopped;
    } else {
        QElapsedTimer timer;
        timer.start();
        const Finding finding = statement.tryOn(m_subject);
        result.milliseconds = timer.elapsed();
        if (m_stopped.isEmpty() || finding.kind == Finding::Held)
            judge(result, finding);
        else
            result.reason = m_stopped;
    }
    return result;
}

void ConformanceRun::judge(Result &result, const Finding &finding)
{
    const bool isMissing = finding.kind == Finding::NotTried;
    m_missing = isMissing ? m_missing + 1 : 0;
    if (m_missing == missingAtMost && m_stopped.isEmpty())
        stop(QStringLiteral("the renderer does not come back"));
    if (isMissing) {
        result.reason = finding.reason;
    } else if (finding.kind == Finding::Held) {
        result.verdict = Verdict::Holds;
    } else if (isExcusable(result, finding)) {
        result.verdict = Verdict::Refused;
        result.reason = finding.refusals.constFirst();
    } else {
        result.verdict = Verdict::DoesNotHold;
        result.evidence = finding.evidence;
    }
}
