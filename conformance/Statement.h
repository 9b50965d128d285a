// SPDX-License-Identifier: MIT
#pragma once

#include "Claim.h"
#include "Finding.h"

#include <QList>
#include <QString>

#include <functional>

class Subject;

/// One statement of the contract that every renderer is held to.
struct Statement
{
    QString id; ///< stable, "group.what": "seek.relative-add-up"
    QString sentence; ///< what holds, in plain words
    QList<Ability> needs; ///< a renderer that cannot do one of these is excused
    /// Tries it on the renderer of the subject, loaded anew; takes as long as the subject's time needs. On the GUI
    /// thread, runs the event loop.
    std::function<Finding(Subject &)> tryOn;

    /// The first part of the id.
    QString group() const { return id.section(QLatin1Char('.'), 0, 0); }
};

/// A group of statements that belong together: "state", "seek" and so on.
struct StatementGroup
{
    QString name;
    QList<Statement> statements;
};

/// The whole contract, in the order in which a renderer is best tried.
QList<StatementGroup> contractGroups();
QList<Statement> contractStatements();
/// The list of all statements as docs/conformance/statements.md holds it.
QByteArray contractAsMarkdown();
