// SPDX-License-Identifier: MIT
#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>

/// The options and arguments of one verb: read from the command line, and described in its help.
class VerbOptions
{
public:
    /// @param verb  its name
    /// @param arguments  what else it takes, in words: "SCENARIO..."; may be empty
    /// @param purpose  what it is for, some sentences
    VerbOptions(QString verb, QString arguments, QString purpose);

    /// An option that takes a value where it names one ("seconds"); those of one verb are shown in this order.
    void add(const QString &name, const QString &valueName, const QString &description,
        const QString &defaultValue = {});
    void addExample(const QString &commandLine, const QString &meaning);

    QString help() const;

    /// False where the words are no options of this verb: problem() tells which.
    bool parse(const QStringList &arguments);
    QString problem() const { return m_problem; }

    bool isSet(const QString &name) const { return m_parser->isSet(name); }
    QString value(const QString &name) const { return m_parser->value(name); }
    QStringList values(const QString &name) const { return m_parser->values(name); }
    QStringList positional() const { return m_parser->positionalArguments(); }

    /// A time such as "5s" or "250 ms"; sets problem() where it is none.
    std::optional<std::chrono::milliseconds> time(const QString &name);
    /// A whole number within these bounds; sets problem() where it is none.
    std::optional<int> number(const QString &name, int least, int most);

private:
    struct Example
    {
        QString commandLine;
        QString meaning;
    };
    QString refuse(const QString &name, const QString &wanted);

    QString m_verb;
    QString m_arguments;
    QString m_purpose;
    QList<QCommandLineOption> m_options;
    QList<Example> m_examples;
    std::unique_ptr<QCommandLineParser> m_parser; ///< never null
    QString m_problem;
};
