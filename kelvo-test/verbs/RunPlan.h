// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"
#include "TestResult.h"

#include <QList>
#include <QStringList>

#include <optional>

class KelvoRenderer;

/// A part of all runs: those whose place, counted from 1, leaves this remainder.
struct Shard
{
    int index = 1;
    int count = 1;

    /// "2/8".
    static std::optional<Shard> read(const QString &text);
};

/// A scenario that is to be run on these renderers.
struct PlannedRun
{
    const Scenario *scenario = nullptr;
    QStringList
        renderers; ///< uuids: one may go and come back. Fewer than the scenario names: it cannot be run
    int repetition = 1;
};

/// Which scenarios run on which renderers, in which order.
namespace RunPlan {
/// The scenario files that these files and folders stand for, each folder's sorted by name. False, with the reason,
/// where one is not there or a folder holds none.
bool collectFiles(const QStringList &paths, QStringList *files, QString *error);
/// Those with one renderer run on each, the others once, on as many as they name. A scenario is named by place, so that
/// every machine that is given the same words makes the same plan.
QList<PlannedRun> make(const QList<Scenario> &scenarios, const QList<KelvoRenderer *> &renderers,
    int repetitions, const Shard &shard);
/// The exit code that these results mean.
int exitCodeOf(const QList<TestResult> &results);
} // namespace RunPlan
