// SPDX-License-Identifier: MIT
#pragma once

#include "Claim.h"
#include "Finding.h"
#include "SenseRow.h"

#include <QDateTime>
#include <QList>
#include <QString>

/// What a renderer is told to its face, for one statement.
enum class Verdict {
    Holds,
    DoesNotHold,
    Refused, ///< it says, by an error or beforehand, that it cannot do this
    Overclaimed, ///< it refuses nothing, and yet none of what needs the ability holds
    NotTried, ///< for want of media, of the renderer, or of time
};

/// What came of one statement.
struct Result
{
    QString id;
    QString sentence;
    QList<Ability> needs;
    Verdict verdict = Verdict::NotTried;
    Counterexample evidence; ///< of what does not hold
    QString reason; ///< of what was refused or not tried
    qint64 milliseconds = 0; ///< that the trial took, by the wall clock

    QString group() const { return id.section(QLatin1Char('.'), 0, 0); }
};

/// Who was held to the contract, by whom and when.
struct CardHead
{
    QString renderer; ///< display name
    QString uuid;
    QString backEnd; ///< file name of the plug-in
    QString program; ///< name, version and revision
    QString media; ///< what it was given to play
    QDateTime when;
    qint64 roundTrip = 0; ///< milliseconds from a command to its report
};

/// The results of the contract for one renderer, its claims weighed against its deeds.
class Card
{
public:
    Card(CardHead head, QList<Result> results);

    const CardHead &head() const { return m_head; }
    /// In the order in which they were tried.
    const QList<Result> &results() const { return m_results; }
    /// What was heard and seen of it beside what it says; none where nobody listened or looked.
    void setSenseRows(const QList<SenseRow> &rows) { m_senseRows = rows; }
    const QList<SenseRow> &senseRows() const { return m_senseRows; }
    /// Names of the groups, in the order of their first statements.
    QStringList groups() const;
    QList<Result> resultsOf(const QString &group) const;
    int count(Verdict verdict) const;
    /// Of one group.
    int count(Verdict verdict, const QString &group) const;
    /// Nothing was found that it should not be: what was refused or not tried is no fault, nor what was not heard.
    bool isClean() const;

private:
    void weighClaims();

    CardHead m_head;
    QList<Result> m_results;
    QList<SenseRow> m_senseRows;
};

/// "holds", "does not hold" and so on.
QString textOf(Verdict verdict);
/// The same for programs: "holds", "does-not-hold" and so on.
QString keyOf(Verdict verdict);
/// All of them, in the order in which they are shown.
QList<Verdict> allVerdicts();
