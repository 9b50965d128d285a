// SPDX-License-Identifier: MIT
#include "Statement.h"

#include "statements/StatementGroups.h"

QList<StatementGroup> contractGroups()
{
    return {
        {QStringLiteral("state"), stateStatements()},
        {QStringLiteral("pause-at"), pauseAtStatements()},
        {QStringLiteral("playlist"), playlistStatements()},
        {QStringLiteral("seek"), seekStatements()},
        {QStringLiteral("edit"), playlistEditStatements()},
        {QStringLiteral("error"), errorStatements()},
        {QStringLiteral("property"), propertyStatements()},
        {QStringLiteral("lifetime"), lifetimeStatements()},
        {QStringLiteral("telling"), tellingStatements()},
    };
}

QList<Statement> contractStatements()
{
    QList<Statement> all;
    for (const StatementGroup &group : contractGroups())
        all += group.statements;
    return all;
}

QByteArray contractAsMarkdown()
{
    QString text
        = QStringLiteral("# What every renderer does\n\n"
                         "The statements of the contract, one line each: its id, what holds, and what a "
                         "renderer must be able to do\nfor it to be tried. Written by the test "
                         "`unit-conformance-statements`.\n");
    for (const StatementGroup &group : contractGroups()) {
        text += QStringLiteral("\n## %1\n\n| id | statement | needs |\n|---|---|---|\n").arg(group.name);
        for (const Statement &statement : group.statements) {
            QStringList needs;
            for (Ability ability : statement.needs)
                needs.append(nameOf(ability));
            text += QStringLiteral("| `%1` | %2 | %3 |\n")
                        .arg(statement.id, statement.sentence, needs.join(QLatin1String(", ")));
        }
    }
    return text.toUtf8();
}
