// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

#include <memory>
#include <vector>

/// The program: chooses the verb that the first word names.
class Program
{
public:
    using Verbs = std::vector<std::unique_ptr<Verb>>;

    explicit Program(Verbs verbs);
    /// With all verbs of this build.
    static Program complete();

    /// @param arguments  the command line, without the program's name
    /// @return an exit code
    int run(const QStringList &arguments);

private:
    Verb *verbNamed(const QString &name) const;
    QString overview() const;
    int showHelp(const QString &verb) const;

    Verbs m_verbs;
};
