// SPDX-License-Identifier: MIT
// The end of a program one of whose threads does not end.
#include "KelvoTestCase.h"
#include "WorkerThread.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <cstdio>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {
constexpr int exitCode = 7;

/// What the thread may use.
class StaticObject
{
public:
    ~StaticObject() { std::fputs("a static object is destroyed\n", stderr); }
};

/// The program: ends while its thread works, or hangs.
int runProgram(int argc, char *argv[], bool hangs)
{
    static const StaticObject object;
    QCoreApplication application(argc, argv);
    WorkerThread thread(std::make_unique<QObject>(), QStringLiteral("test-thread"));
    thread.setLongestEnd(hangs ? 100ms : 10s);
    thread.post([hangs] {
        if (hangs) {
            for (;;)
                ::pause();
        }
    });
    return exitCode;
}
} // namespace

class ThreadEndTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void endsWithoutWhatHangs_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<bool>("hangs");
        QTest::newRow("ends") << "--end" << false;
        QTest::newRow("hangs") << "--hang" << true;
    }

    void endsWithoutWhatHangs()
    {
        QFETCH(QString, argument);
        QFETCH(bool, hangs);
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QCoreApplication::applicationFilePath(), {argument});
        const bool ended = program.waitForFinished(20'000);
        const QByteArray output = program.readAll();
        program.kill();
        program.waitForFinished();
        QVERIFY2(ended, output.constData());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), exitCode);
        QCOMPARE(output.count("Work does not end and is left alone: test-thread"), hangs ? 1 : 0);
        QCOMPARE(output.count("a static object is destroyed"), hangs ? 0 : 1);
    }
};

int main(int argc, char *argv[])
{
    const QByteArray argument = argc > 1 ? argv[1] : "";
    if (argument == "--end" || argument == "--hang")
        return runProgram(argc, argv, argument == "--hang");
    QCoreApplication application(argc, argv);
    ThreadEndTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "ThreadEndTest.moc"
