// SPDX-License-Identifier: MIT
// What is left of a process that crashes.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "MinimalObjects.h"
#include "RecordedLines.h"
#include "Recorder.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace {
constexpr int reports = 1000;

int recurse(volatile int *depth)
{
    volatile int pages[4096];
    pages[0] = *depth + 1;
    return pages[0] < 0 ? 0 : recurse(pages) + pages[0];
}

void crashInBothThreads(volatile int *nowhere)
{
    std::thread([nowhere] { *nowhere = 1; }).detach();
    *nowhere = 1;
}

void crash(const QByteArray &how)
{
    volatile int *nowhere = nullptr;
    int depth = 0;
    if (how == "reads nothing")
        *nowhere = 1;
    else if (how == "aborts")
        std::abort();
    else if (how == "asserts")
        qFatal("the last words");
    else if (how == "traps")
        ::raise(SIGTRAP);
    else if (how == "recurses")
        recurse(&depth);
    else if (how == "is sent it")
        ::kill(::getpid(), SIGSEGV);
    else if (how == "another thread")
        std::thread([nowhere] { *nowhere = 1; }).join();
    else if (how == "both threads")
        crashInBothThreads(nowhere);
    else if (how == "ends")
        return;
    for (;;)
        ::pause();
}

/// The program.
int runProgram(int argc, char *argv[], const QByteArray &how)
{
    const rlimit noCore{};
    ::setrlimit(RLIMIT_CORE, &noCore);
    std::unique_ptr<Recorder> recorder;
    QCoreApplication application(argc, argv);
    MinimalRenderer renderer("r", "Renderer");
    recorder = Recorder::start(KelvoRegistry::instance(), {"victim", "1", "r"});
    KelvoRegistry::instance()->addRenderer(&renderer);
    // The file is open from here on.
    Recorder::flush();
    qDebug("a line of the log");
    for (int i = 0; i < reports; ++i)
        Q_EMIT renderer.bufferingInfo(float(i));
    crash(how);
    return 0;
}

class CrashTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void leavesEverything_data();
    void leavesEverything();
    void withoutAFileToRecordIn();
    void whereNothingCanBeSaved();
    void nothingIsLeftOfAGoodEnd();

private:
    void run(const QString &how);
    QString bundle() const;
    QByteArray contentsOf(const char *name) const
    {
        return RecordedLines::contentsOf(bundle() + u'/' + name);
    }
    static QStringList expected(const QString &last)
    {
        QStringList lines{"header victim", R"(r appears renderer ["Renderer"])"};
        for (int i = 0; i < reports; ++i)
            lines.append(QStringLiteral("r report bufferingInfo [%1]").arg(i));
        lines.append(last);
        return lines;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcess m_program;
    QProcessEnvironment m_environment;
    QByteArray m_output;
};

void CrashTest::init()
{
    KelvoTestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert("KELVO_EVIDENCE_DIR", m_folder->filePath("some/where"));
    m_environment.insert("KELVO_RECORD", m_folder->filePath("file.jsonl"));
    m_environment.insert("KELVO_TEST_SECRET_WORD", "hidden");
}

void CrashTest::run(const QString &how)
{
    m_program.setProcessEnvironment(m_environment);
    m_program.setProcessChannelMode(QProcess::MergedChannels);
    m_program.start(QCoreApplication::applicationFilePath(), {"--crash", how});
    const bool ended = m_program.waitForFinished(30'000);
    m_program.kill();
    m_program.waitForFinished();
    m_output = m_program.readAll();
    QVERIFY2(ended, m_output.constData());
}

/// The path of the only one.
QString CrashTest::bundle() const
{
    const QDir folder(m_folder->filePath("some/where"));
    const QStringList found = folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return found.size() == 1 ? folder.filePath(found.first())
                             : QStringLiteral("%1 bundles").arg(found.size());
}

void CrashTest::leavesEverything_data()
{
    QTest::addColumn<QString>("signal");
    QTest::newRow("reads nothing") << "SIGSEGV";
    QTest::newRow("aborts") << "SIGABRT";
    QTest::newRow("asserts") << "SIGABRT";
    QTest::newRow("traps") << "SIGTRAP";
    QTest::newRow("recurses") << "SIGSEGV";
    QTest::newRow("is sent it") << "SIGSEGV";
    QTest::newRow("another thread") << "SIGSEGV";
    QTest::newRow("both threads") << "SIGSEGV";
}

void CrashTest::leavesEverything()
{
    QFETCH(QString, signal);
    run(QTest::currentDataTag());
    // Whoever is there for crashes has had his turn: the system, or a sanitizer.
    QVERIFY2(m_program.exitStatus() == QProcess::CrashExit || m_output.contains("AddressSanitizer"),
        m_output.constData());
    const QStringList all = expected(QStringLiteral(" note crashed [\"%1\"]").arg(signal));
    QCOMPARE(RecordedLines::of(RecordedLines::contentsOf(m_folder->filePath("file.jsonl"))), all);
    QCOMPARE(RecordedLines::of(contentsOf("recording.jsonl")), all);
    const auto times = RecordedLines::timesOf(contentsOf("recording.jsonl"));
    QVERIFY(std::is_sorted(times.begin(), times.end()));
    QVERIFY2(contentsOf("log.txt").contains(" a line of the log\n"), contentsOf("log.txt").constData());
    QCOMPARE(
        QJsonDocument::fromJson(contentsOf("about.json")).object().value("program").toString(), "victim");
    QVERIFY(contentsOf("environment.txt").contains("KELVO_TEST_SECRET_WORD=(left out)\n"));
    const QString farewell
        = QStringLiteral("%1: victim has crashed, what is known of it is in %2\n").arg(signal, bundle());
    QVERIFY2(m_output.contains(farewell.toUtf8()), m_output.constData());
}

void CrashTest::withoutAFileToRecordIn()
{
    m_environment.remove("KELVO_RECORD");
    run("reads nothing");
    QCOMPARE(RecordedLines::of(contentsOf("recording.jsonl")), expected(" note crashed [\"SIGSEGV\"]"));
}

void CrashTest::whereNothingCanBeSaved()
{
    m_environment.insert("KELVO_EVIDENCE_DIR", "/proc/nowhere");
    m_environment.insert("KELVO_RECORD", "/proc/nowhere/file");
    run("aborts");
    QCOMPARE(m_program.exitStatus(), QProcess::CrashExit);
    QVERIFY(m_output.contains("SIGABRT: victim has crashed"));
}

void CrashTest::nothingIsLeftOfAGoodEnd()
{
    run("ends");
    QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
    QVERIFY(!QDir(m_folder->filePath("some")).exists());
    QStringList all = expected(R"(r vanishes renderer ["Renderer"])");
    all.append(" note ended []");
    QCOMPARE(RecordedLines::of(RecordedLines::contentsOf(m_folder->filePath("file.jsonl"))), all);
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc > 2 && QByteArray(argv[1]) == "--crash")
        return runProgram(argc, argv, argv[2]);
    QCoreApplication application(argc, argv);
    CrashTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "CrashTest.moc"
