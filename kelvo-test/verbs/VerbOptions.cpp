// SPDX-License-Identifier: MIT
#include "VerbOptions.h"

#include "Quantities.h"

#include <algorithm>

VerbOptions::VerbOptions(QString verb, QString arguments, QString purpose)
    : m_verb(std::move(verb))
    , m_arguments(std::move(arguments))
    , m_purpose(std::move(purpose))
    , m_parser(std::make_unique<QCommandLineParser>())
{
    add(QStringLiteral("help"), {}, QStringLiteral("Shows this text."));
}

void VerbOptions::add(
    const QString &name, const QString &valueName, const QString &description, const QString &defaultValue)
{
    const QCommandLineOption option(name, description, valueName, defaultValue);
    m_options.append(option);
    m_parser->addOption(option);
}

void VerbOptions::addExample(const QString &commandLine, const QString &meaning)
{
    m_examples.append({commandLine, meaning});
}

QString VerbOptions::help() const
{
    QString text = QStringLiteral("Usage: kelvo-test %1 [options] %2").arg(m_verb, m_arguments).trimmed();
    text += QStringLiteral("\n\n%1\n\nOptions:\n").arg(m_purpose);
    QStringList names;
    for (const QCommandLineOption &option : m_options) {
        const QString value = option.valueName().isEmpty() ? QString() : u' ' + option.valueName();
        const QString &name = option.names().constFirst();
        const auto dashes = name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--");
        names.append(dashes + name + value);
    }
    const auto longest = std::max_element(names.cbegin(), names.cend(),
        [](const QString &one, const QString &other) { return one.size() < other.size(); });
    for (qsizetype i = 0; i < names.size(); ++i)
        text += QStringLiteral("  %1  %2\n")
                    .arg(names.at(i), -int(longest->size()))
                    .arg(m_options.at(i).description());
    text += m_examples.size() == 1 ? QStringLiteral("\nExample:\n") : QStringLiteral("\nExamples:\n");
    for (const Example &example : m_examples)
        text += QStringLiteral("  %1\n      %2\n").arg(example.commandLine, example.meaning);
    return text;
}

bool VerbOptions::parse(const QStringList &arguments)
{
    const bool right = m_parser->parse(QStringList{m_verb} + arguments);
    if (!right)
        m_problem = m_parser->errorText();
    return right;
}

std::optional<std::chrono::milliseconds> VerbOptions::time(const QString &name)
{
    const auto time = Quantities::time(value(name));
    if (!time)
        m_problem = refuse(name, QStringLiteral("a time such as 5s or 250ms"));
    return time;
}

std::optional<int> VerbOptions::number(const QString &name, int least, int most)
{
    bool ok = false;
    const int number = value(name).toInt(&ok);
    if (ok && number >= least && number <= most)
        return number;
    m_problem = refuse(name, QStringLiteral("a number from %1 to %2").arg(least).arg(most));
    return std::nullopt;
}

QString VerbOptions::refuse(const QString &name, const QString &wanted)
{
    return QStringLiteral("--%1 takes %2, not \"%3\"").arg(name, wanted, value(name));
}
