// SPDX-License-Identifier: MIT
#include "Program.h"

#include "CompareVerb.h"
#include "ConformVerb.h"
#include "ListVerb.h"
#include "MediaVerb.h"
#include "Output.h"
#include "PlayVerb.h"
#include "ReportVerb.h"
#include "ScenarioVerb.h"
#include "ScenarioVerbs.h"
#include "Spelling.h"
#include "WhyVerb.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

namespace {
bool asksForHelp(const QString &word)
{
    return word == QLatin1String("--help") || word == QLatin1String("-h");
}

void print(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
}
} // namespace

Program::Program(Verbs verbs)
    : m_verbs(std::move(verbs))
{
}

Program Program::complete()
{
    Verbs verbs;
    verbs.push_back(std::make_unique<ListVerb>());
    verbs.push_back(std::make_unique<PlayVerb>());
    ScenarioVerbs::addTo(verbs);
    verbs.push_back(std::make_unique<ConformVerb>());
    verbs.push_back(std::make_unique<CompareVerb>());
    verbs.push_back(std::make_unique<ReportVerb>());
    verbs.push_back(std::make_unique<WhyVerb>());
    verbs.push_back(std::make_unique<ScenarioVerb>());
    verbs.push_back(std::make_unique<MediaVerb>());
    return Program(std::move(verbs));
}

int Program::run(const QStringList &arguments)
{
    const QString first = arguments.value(0);
    if (first.isEmpty()) {
        std::fputs(overview().toUtf8().constData(), stderr);
        return Verb::CouldNotRun;
    }
    if (asksForHelp(first) || first == QLatin1String("help"))
        return showHelp(arguments.value(1));
    if (first == QLatin1String("--version")) {
        print(QStringLiteral("kelvo-test %1\n").arg(QCoreApplication::applicationVersion()));
        return Verb::Held;
    }
    Verb *verb = verbNamed(first);
    if (!verb)
        return showHelp(first);
    const QStringList rest = arguments.mid(1);
    if (std::any_of(rest.cbegin(), rest.cend(), asksForHelp))
        return showHelp(first);
    return verb->run(rest);
}

Verb *Program::verbNamed(const QString &name) const
{
    const auto found = std::find_if(
        m_verbs.cbegin(), m_verbs.cend(), [&name](const auto &verb) { return verb->name() == name; });
    return found == m_verbs.cend() ? nullptr : found->get();
}

QString Program::overview() const
{
    QString text
        = QStringLiteral("Usage: kelvo-test VERB [options]\n\n"
                         "Drives the renderers of the Kelvo media framework without a window.\n\nVerbs:\n");
    for (const auto &verb : m_verbs)
        text += QStringLiteral("  %1  %2\n").arg(verb->name(), -9).arg(verb->summary());
    return text
        + QStringLiteral("\n\"kelvo-test VERB --help\" tells more of each.\n"
                         "Exit codes: 0 all held, 1 something failed, 2 could not run, 77 nothing to run.\n");
}

int Program::showHelp(const QString &name) const
{
    Verb *verb = verbNamed(name);
    if (verb || name.isEmpty()) {
        print(verb ? verb->help() : overview());
        return Verb::Held;
    }
    QStringList names;
    for (const auto &known : m_verbs)
        names.append(known->name());
    Output::complain(
        QStringLiteral("there is no verb \"%1\"%2").arg(name, Spelling::suggestion(name, names)));
    return Verb::CouldNotRun;
}
