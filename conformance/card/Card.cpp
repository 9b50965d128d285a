// SPDX-License-Identifier: MIT
#include "Card.h"

#include <QSet>

#include <algorithm>
#include <utility>

Card::Card(CardHead head, QList<Result> results)
    : m_head(std::move(head))
    , m_results(std::move(results))
{
    weighClaims();
}

QStringList Card::groups() const
{
    QStringList names;
    for (const Result &result : m_results) {
        if (!names.contains(result.group()))
            names.append(result.group());
    }
    return names;
}

QList<Result> Card::resultsOf(const QString &group) const
{
    QList<Result> results;
    std::copy_if(m_results.cbegin(), m_results.cend(), std::back_inserter(results),
        [&group](const Result &result) { return result.group() == group; });
    return results;
}

int Card::count(Verdict verdict) const
{
    return int(std::count_if(m_results.cbegin(), m_results.cend(),
        [verdict](const Result &result) { return result.verdict == verdict; }));
}

int Card::count(Verdict verdict, const QString &group) const
{
    return int(std::count_if(m_results.cbegin(), m_results.cend(),
        [&](const Result &result) { return result.verdict == verdict && result.group() == group; }));
}

bool Card::isClean() const
{
    const bool isOff = std::any_of(
        m_senseRows.cbegin(), m_senseRows.cend(), [](const SenseRow &row) { return row.isOff(); });
    return !isOff && count(Verdict::DoesNotHold) == 0 && count(Verdict::Overclaimed) == 0;
}

/// A renderer claims what it could refuse and does not. Where nothing that needs an ability holds, the claim is empty.
void Card::weighClaims()
{
    QSet<int> done;
    for (const Result &result : std::as_const(m_results)) {
        if (result.verdict != Verdict::Holds)
            continue;
        for (Ability ability : result.needs)
            done.insert(int(ability));
    }
    for (Result &result : m_results) {
        const bool isEmpty = std::any_of(result.needs.cbegin(), result.needs.cend(),
            [&done](Ability ability) { return canBeRefused(ability) && !done.contains(int(ability)); });
        // What no renderer may ever do is a fault whatever it claims.
        if (result.verdict == Verdict::DoesNotHold && isEmpty && result.evidence.violations.isEmpty())
            result.verdict = Verdict::Overclaimed;
    }
}

QString textOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Holds:
        return QStringLiteral("holds");
    case Verdict::DoesNotHold:
        return QStringLiteral("does not hold");
    case Verdict::Refused:
        return QStringLiteral("honestly refused");
    case Verdict::Overclaimed:
        return QStringLiteral("claims more than it does");
    case Verdict::NotTried:
        return QStringLiteral("could not be tried");
    }
    return {};
}

QString keyOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Holds:
        return QStringLiteral("holds");
    case Verdict::DoesNotHold:
        return QStringLiteral("does-not-hold");
    case Verdict::Refused:
        return QStringLiteral("refused");
    case Verdict::Overclaimed:
        return QStringLiteral("overclaimed");
    case Verdict::NotTried:
        return QStringLiteral("not-tried");
    }
    return {};
}

QList<Verdict> allVerdicts()
{
    return {Verdict::Holds, Verdict::DoesNotHold, Verdict::Overclaimed, Verdict::Refused, Verdict::NotTried};
}
