// SPDX-License-Identifier: MIT
// The console itself, recorded.
#include "KelvoTestCase.h"
#include "RecordedLines.h"

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

namespace {
class RecordedProgramTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void fromStartToEnd();
    void savesEvidenceOnASignal();
    void savesEvidenceOfACrash();
    void saysNothingOfIt();

private:
    void start();
    QByteArray recording() const { return RecordedLines::contentsOf(m_folder->filePath("run.jsonl")); }
    void send(int signal) { ::kill(pid_t(m_program.processId()), signal); }
    QStringList bundles() const
    {
        return QDir(m_folder->filePath("evidence")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    }
    QString pathOf(const QString &name) const
    {
        return m_folder->filePath("evidence/" + bundles().value(0) + u'/' + name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
    QProcess m_program;
    QByteArray m_log;
};

void RecordedProgramTest::init()
{
    KelvoTestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    m_log.clear();
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert("KELVO_PLUGINS", "simulator");
    m_environment.insert("KELVO_RECORD", m_folder->filePath("run.jsonl"));
    m_environment.insert("KELVO_EVIDENCE_DIR", m_folder->filePath("evidence"));
}

void RecordedProgramTest::cleanup()
{
    m_program.kill();
    m_program.waitForFinished();
}

/// Returns when the renderer that the window shows has answered.
void RecordedProgramTest::start()
{
    m_program.setProcessChannelMode(QProcess::MergedChannels);
    m_program.setProcessEnvironment(m_environment);
    m_program.start(KELVO_TEST_PROGRAM, QStringList());
    QVERIFY(m_program.waitForStarted());
    if (m_environment.contains("KELVO_RECORD"))
        QTRY_VERIFY_WITH_TIMEOUT(
            recording().contains("\"answer\",\"name\":\"kelvoProperty\",\"arguments\":[\"volume\""), 20'000);
}

void RecordedProgramTest::fromStartToEnd()
{
    start();
    send(SIGTERM);
    QVERIFY(m_program.waitForFinished());
    QCOMPARE(m_program.exitCode(), 0);
    const QStringList lines = RecordedLines::of(recording());
    QCOMPARE(lines.first(), "header kelvo-test-gui");
    QVERIFY(lines.contains(R"( report pluginLoaded ["simulator.so"])"));
    const QStringList come = lines.filter(" appears renderer [");
    QCOMPARE(come.size(), 3);
    // What the window does with a renderer comes behind its appearance, what it asks behind what it does.
    const QString uuid = come.first().section(u' ', 0, 0);
    const qsizetype appeared = lines.indexOf(come.first());
    const qsizetype asked = lines.indexOf(uuid + R"( command kelvoProperty ["volume"])");
    const qsizetype answered = lines.indexOf(uuid + R"( answer kelvoProperty ["volume",70])");
    QVERIFY2(0 < appeared && appeared < asked && asked < answered, qPrintable(lines.join('\n')));
    // The back ends stop while it still records.
    QCOMPARE(lines.filter(" vanishes renderer [").size(), 3);
    QCOMPARE(lines.last(), " note ended []");
}

void RecordedProgramTest::savesEvidenceOnASignal()
{
    start();
    send(SIGUSR1);
    QTRY_VERIFY_WITH_TIMEOUT(m_log.append(m_program.readAll()).contains("Evidence is saved in "), 20'000);
    QCOMPARE(bundles().size(), 1);
    QVERIFY(RecordedLines::contentsOf(pathOf("recording.jsonl")).contains("\"appears\""));
    QVERIFY(RecordedLines::contentsOf(pathOf("log.txt")).contains("KelvoGUIMain::KelvoGUIMain"));
    QVERIFY(QImage(pathOf("window-1.png")).width() > 300);
    send(SIGTERM);
    QVERIFY(m_program.waitForFinished());
    QCOMPARE(m_program.exitCode(), 0);
}

void RecordedProgramTest::savesEvidenceOfACrash()
{
    start();
    send(SIGSEGV);
    QVERIFY(m_program.waitForFinished());
    QCOMPARE(bundles().size(), 1);
    for (const QByteArray &lines : {recording(), RecordedLines::contentsOf(pathOf("recording.jsonl"))}) {
        QVERIFY(lines.contains("\"answer\",\"name\":\"kelvoProperty\""));
        QCOMPARE(RecordedLines::of(lines).last(), R"( note crashed ["SIGSEGV"])");
    }
    QVERIFY(RecordedLines::contentsOf(pathOf("log.txt")).contains("KelvoGUIMain::KelvoGUIMain"));
    QVERIFY(RecordedLines::contentsOf(pathOf("environment.txt")).contains("KELVO_PLUGINS=simulator\n"));
}

void RecordedProgramTest::saysNothingOfIt()
{
    m_environment.remove("KELVO_RECORD");
    start();
    QTRY_VERIFY_WITH_TIMEOUT(m_log.append(m_program.readAll()).contains("initTracking success"), 20'000);
    send(SIGTERM);
    QVERIFY(m_program.waitForFinished());
    m_log += m_program.readAll();
    QVERIFY2(!m_log.toLower().contains("record") && !m_log.contains("vidence"), m_log.constData());
    QVERIFY(!QDir(m_folder->filePath("evidence")).exists());
}
} // namespace

QTEST_GUILESS_MAIN(RecordedProgramTest)
#include "RecordedProgramTest.moc"
