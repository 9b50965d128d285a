// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// How one thing that was tried went.
struct TestResult
{
    enum Outcome {
        Held,
        Failed,
        Skipped, ///< the subject says that it cannot
        CouldNotRun, ///< something else was in the way
    };

    /// "held", "failed", "skipped", "could not run".
    QString outcomeText() const
    {
        static constexpr const char *texts[] = {"held", "failed", "skipped", "could not run"};
        return QString::fromLatin1(texts[outcome]);
    }

    Outcome outcome = Held;
    QString group; ///< of what: the renderer
    QString name;
    QString file; ///< where it is written, if anywhere
    int line = 0;
    double seconds = 0;
    QString message; ///< one line: what was expected and what came, or why it could not be tried
    QString details; ///< further lines
};
