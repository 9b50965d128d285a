// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// One thing that kelvo-test does, named by the first word of its command line.
class Verb
{
public:
    /// What the end of the program tells the script that started it.
    enum ExitCode : int {
        Held = 0, ///< everything that was looked at is as it should be
        Failed = 1, ///< something is not
        CouldNotRun = 2, ///< wrong arguments, a file or a renderer that is missing
        NothingToRun = 77, ///< nothing was there to be tried; test runners know this number as "skipped"
    };

    virtual ~Verb() = default;

    virtual QString name() const = 0;
    /// One line for the list of all verbs.
    virtual QString summary() const = 0;
    /// What "--help" shows: usage, options, and an example at least.
    virtual QString help() const = 0;

    /// Does it, in event loops of its own, and returns when it is done: an ExitCode. Results go to the standard output,
    /// what is wrong with the call to the standard error.
    /// @param arguments  what follows the verb on the command line
    virtual int run(const QStringList &arguments) = 0;
};
