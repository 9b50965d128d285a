// SPDX-License-Identifier: MIT
#include "RunPlan.h"

#include "KelvoRenderer.h"
#include "Verb.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

std::optional<Shard> Shard::read(const QString &text)
{
    bool isIndex = false;
    bool isCount = false;
    const int index = text.section(u'/', 0, 0).toInt(&isIndex);
    const int count = text.section(u'/', 1).toInt(&isCount);
    if (!isIndex || !isCount || index < 1 || index > count)
        return std::nullopt;
    return Shard{index, count};
}

bool RunPlan::collectFiles(const QStringList &paths, QStringList *files, QString *error)
{
    for (const QString &path : paths) {
        if (!QFileInfo(path).isDir()) {
            files->append(path);
            continue;
        }
        const QDir folder(path);
        const QStringList found = folder.entryList({QStringLiteral("*.yaml")}, QDir::Files, QDir::Name);
        for (const QString &name : found)
            files->append(folder.filePath(name));
        if (found.isEmpty()) {
            *error = QStringLiteral("there are no scenarios (*.yaml) in %1").arg(path);
            return false;
        }
    }
    return true;
}

QList<PlannedRun> RunPlan::make(const QList<Scenario> &scenarios, const QList<KelvoRenderer *> &renderers,
    int repetitions, const Shard &shard)
{
    QList<PlannedRun> all;
    for (int repetition = 1; repetition <= repetitions; ++repetition) {
        for (const Scenario &scenario : scenarios) {
            if (scenario.renderers.size() > 1) {
                all.append({&scenario, {}, repetition});
                for (const KelvoRenderer *renderer : renderers.mid(0, scenario.renderers.size()))
                    all.last().renderers.append(renderer->uuid());
                continue;
            }
            for (const KelvoRenderer *renderer : renderers)
                all.append({&scenario, {renderer->uuid()}, repetition});
        }
    }
    QList<PlannedRun> ours;
    for (qsizetype i = shard.index - 1; i < all.size(); i += shard.count)
        ours.append(all.at(i));
    return ours;
}

int RunPlan::exitCodeOf(const QList<TestResult> &results)
{
    const auto has = [&results](TestResult::Outcome outcome) {
        return std::any_of(results.cbegin(), results.cend(),
            [outcome](const TestResult &result) { return result.outcome == outcome; });
    };
    if (has(TestResult::Failed))
        return Verb::Failed;
    if (has(TestResult::CouldNotRun))
        return Verb::CouldNotRun;
    return has(TestResult::Held) ? Verb::Held : Verb::NothingToRun;
}
