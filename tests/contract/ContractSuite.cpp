// SPDX-License-Identifier: MIT
#include "ContractSuite.h"

#include "RendererSubject.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTest>

#include <cstdio>
#include <vector>

namespace {
// Which part a process runs; without it, all of them.
constexpr char partVariable[] = "KELVO_CONTRACT_PART";

std::vector<std::unique_ptr<QObject>> makeParts(RendererSubject &subject)
{
    std::vector<std::unique_ptr<QObject>> parts;
    for (const auto &make : {makeStateContract, makePauseAtContract, makePlaylistContract, makeSeekContract,
             makePlaylistEditContract, makeErrorContract, makePropertyContract, makeLifetimeContract,
             makeTellingContract})
        parts.push_back(make(subject));
    return parts;
}

std::unique_ptr<QProcess> startPart(const QByteArray &name)
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(partVariable), QString::fromLatin1(name));
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

int runInProcesses(const std::vector<std::unique_ptr<QObject>> &parts, size_t atOnce)
{
    std::vector<std::unique_ptr<QProcess>> running;
    int failures = 0;
    for (const auto &part : parts) {
        if (running.size() == atOnce) {
            failures += !finishPart(*running.front());
            running.erase(running.begin());
        }
        running.push_back(startPart(part->metaObject()->className()));
    }
    for (const auto &process : running)
        failures += !finishPart(*process);
    return failures;
}
} // namespace

int runRendererContract(RendererSubject &subject, int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    const std::vector<std::unique_ptr<QObject>> parts = makeParts(subject);
    const QByteArray chosen = qgetenv(partVariable);
    if (chosen.isEmpty() && subject.inRealTime())
        return runInProcesses(parts, subject.partsAtOnce()) ? 1 : 0;
    int failures = 0;
    for (const auto &part : parts) {
        if (chosen.isEmpty() || chosen == part->metaObject()->className())
            failures += QTest::qExec(part.get(), argc, argv);
    }
    return failures ? 1 : 0;
}
