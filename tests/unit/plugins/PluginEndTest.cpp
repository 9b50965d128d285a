// SPDX-License-Identifier: MIT
// The end of a program whose plug-in does not come back from being loaded.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "PluginFolder.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSocketNotifier>
#include <QTest>

#include <unistd.h>

namespace {
constexpr int exitCode = 7;

/// The program: starts to load the plug-ins, and ends when it is told to.
int runProgram(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    KelvoRegistry::instance()->loadPlugin("hanging.so");
    KelvoRegistry::instance()->loadPlugin("good.so"); // waits for the other one for ever
    QSocketNotifier told(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&told, &QSocketNotifier::activated, [] { QCoreApplication::exit(exitCode); });
    return QCoreApplication::exec();
}
} // namespace

class PluginEndTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void aLibraryThatHangsDoesNotKeepTheProgramFromEnding()
    {
        const PluginFolder folder;
        QVERIFY(folder.add("hanging.so"));
        QVERIFY(folder.add("good.so"));
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QCoreApplication::applicationFilePath(), {"--load-and-leave"});
        QByteArray output;
        while (!output.contains("the library hangs") && program.waitForReadyRead(20'000))
            output += program.readAll();
        program.write("leave\n");
        const bool ended = program.waitForFinished(20'000);
        output += program.readAll();
        program.kill();
        program.waitForFinished();
        QVERIFY2(ended, output.constData());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), exitCode);
        QCOMPARE(output.count("Work does not end and is left alone: kelvo-plugin-loader"), 1);
    }
};

int main(int argc, char *argv[])
{
    if (argc > 1 && QByteArray(argv[1]) == "--load-and-leave")
        return runProgram(argc, argv);
    QCoreApplication application(argc, argv);
    PluginEndTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "PluginEndTest.moc"
