// SPDX-License-Identifier: MIT
#include "ContractSuite.h"

#include "ContractPart.h"
#include "Subject.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTest>

#include <cstdio>
#include <vector>

namespace {
// Which group a process tries; without it, all of them.
constexpr char partVariable[] = "KELVO_CONTRACT_PART";

std::unique_ptr<QProcess> startPart(const QString &group)
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(partVariable), group);
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->start(QCoreApplication::applicationFilePath(), QCoreApplication::arguments().mid(1));
    return process;
}

/// True when the part passed. Its report comes in one piece.
bool finishPart(QProcess &process)
{
    process.waitForFinished(-1);
    const QByteArray report = process.readAll();
    std::fwrite(report.constData(), 1, size_t(report.size()), stdout);
    std::fflush(stdout);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

int runInProcesses(const QList<StatementGroup> &groups, size_t atOnce)
{
    std::vector<std::unique_ptr<QProcess>> running;
    int failures = 0;
    for (const StatementGroup &group : groups) {
        if (running.size() == atOnce) {
            failures += !finishPart(*running.front());
            running.erase(running.begin());
        }
        running.push_back(startPart(group.name));
    }
    for (const auto &process : running)
        failures += !finishPart(*process);
    return failures;
}
} // namespace

int runRendererContract(Subject &subject, int argc, char **argv, size_t groupsAtOnce)
{
    QGuiApplication application(argc, argv);
    const QList<StatementGroup> groups = contractGroups();
    const QString chosen = qEnvironmentVariable(partVariable);
    if (chosen.isEmpty() && subject.inRealTime())
        return runInProcesses(groups, groupsAtOnce) ? 1 : 0;
    int failures = 0;
    for (const StatementGroup &group : groups) {
        if (!chosen.isEmpty() && chosen != group.name)
            continue;
        ContractPart part(subject, group);
        failures += QTest::qExec(&part, argc, argv);
    }
    return failures ? 1 : 0;
}
