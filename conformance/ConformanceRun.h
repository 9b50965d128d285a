// SPDX-License-Identifier: MIT
#pragma once

#include "Statement.h"
#include "card/Card.h"

#include <QObject>

class Subject;

/// Holds one renderer to statements of the contract, one after the other. GUI thread; runs the event loop meanwhile.
class ConformanceRun : public QObject
{
    Q_OBJECT
public:
    explicit ConformanceRun(
        Subject &subject, QList<Statement> statements = contractStatements(), QObject *parent = nullptr);

    /// Returns when all have been tried or the run was stopped: a result for each statement.
    QList<Result> run();
    /// The trial under way is broken off, those after it are not begun.
    void stop(const QString &reason);

Q_SIGNALS:
    /// A trial begins; its number, from 0.
    void began(qsizetype number, const Statement &statement);
    void ended(const Result &result);

private:
    Result resultOf(const Statement &statement);
    void judge(Result &result, const Finding &finding);

    Subject &m_subject;
    const QList<Statement> m_statements;
    QString m_stopped; ///< why nothing more is tried
    int m_missing = 0; ///< trials in a row that the renderer did not come to
};
