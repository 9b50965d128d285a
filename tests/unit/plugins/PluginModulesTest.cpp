// SPDX-License-Identifier: MIT
// A library that opens modules while it is being loaded, and other threads that do so at the same time. Runs itself as
// the program that loads it: what goes wrong leaves threads that wait for each other for ever, and the dynamic linker's
// lock taken.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "PluginFolder.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <gmodule.h>
#include <semaphore>
#include <thread>
#include <unistd.h>

namespace {
/// The program: loads the plug-in, whose constructors tell the other thread when to open a module; ends with 0 once the
/// plug-in runs.
int runProgram(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    int start[2];
    if (pipe(start) != 0)
        return 2;
    std::binary_semaphore isReady(0);
    std::thread other([&start, &isReady] {
        qputenv("KELVO_TEST_OTHER_START", QByteArray::number(start[1]));
        qputenv("KELVO_TEST_OTHER_THREAD", QByteArray::number(gettid()));
        isReady.release();
        char told = 0;
        if (read(start[0], &told, 1) == 1)
            g_module_close(g_module_open(nullptr, GModuleFlags(0)));
    });
    isReady.acquire();
    KelvoRegistry *registry = KelvoRegistry::instance();
    QObject::connect(registry->pluginLoader(), &KelvoPluginLoader::pluginLoaded, &application,
        [] { QCoreApplication::exit(0); });
    QObject::connect(registry->pluginLoader(), &KelvoPluginLoader::pluginFailed, &application,
        [] { QCoreApplication::exit(1); });
    registry->loadPlugin("opens-modules.so");
    const int code = QCoreApplication::exec();
    other.join();
    return code;
}
} // namespace

class PluginModulesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void doesNotWaitForAThreadThatWaitsForIt()
    {
        const PluginFolder folder;
        QVERIFY(folder.add("opens-modules.so"));
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QCoreApplication::applicationFilePath(), {"--load"});
        const bool ended = program.waitForFinished(20'000);
        const QByteArray output = program.readAll();
        program.kill();
        program.waitForFinished();
        QVERIFY2(ended, output.constData());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QVERIFY2(program.exitCode() == 0, output.constData());
    }
};

int main(int argc, char *argv[])
{
    if (argc > 1 && QByteArray(argv[1]) == "--load")
        return runProgram(argc, argv);
    QCoreApplication application(argc, argv);
    PluginModulesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "PluginModulesTest.moc"
