// SPDX-License-Identifier: MIT
// The file that KELVO_RECORD names, and what becomes of it where it cannot be written.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "RecordedLines.h"
#include "Recorder.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// As long as it lives no file can grow beyond so many bytes.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        // Told by the write itself.
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit m_before{};
};

class RecordingFileTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void wholeRecording();
    void isWrittenWhileItRuns();
    void everyEventOfAFlood();
    void goesOnBehindWhatIsThere();
    void isForItsOwnerAlone();
    void cutLineIsEnded();
    void cannotBeOpened_data();
    void cannotBeOpened();
    void anotherProcessRecordsInIt();
    void fullDevice();
    void fullDiskThatHasSpaceAgain();
    void lossOnAFullDiskIsTold();
    void nobodyReadsThePipe();
    void nothingIsRecordedWithoutAName();

private:
    void start()
    {
        qputenv("KELVO_RECORD", QFile::encodeName(m_path));
        m_recorder = Recorder::start(&m_registry, {"tester", "1", "r"});
    }
    void tell(int from, int to)
    {
        for (int i = from; i < to; ++i)
            Q_EMIT m_renderer.bufferingInfo(float(i));
    }
    static QStringList told(int from, int to)
    {
        QStringList lines;
        for (int i = from; i < to; ++i)
            lines.append(QStringLiteral("r report bufferingInfo [%1]").arg(i));
        return lines;
    }
    QStringList written() const { return RecordedLines::of(RecordedLines::contentsOf(m_path)); }
    QStringList warningsOf(LogRecorder &log) const { return log.warnings().filter("Nothing is recorded in"); }

    QTemporaryDir m_folder;
    QString m_path;
    KelvoRegistry m_registry;
    MinimalRenderer m_renderer{"r", "Renderer"};
    std::unique_ptr<Recorder> m_recorder;
};

const QString appears = R"(r appears renderer ["Renderer"])";
const QString ended = " note ended []";

void RecordingFileTest::init()
{
    KelvoTestCase::init();
    static int number = 0;
    m_path = m_folder.filePath(QStringLiteral("%1.jsonl").arg(number++));
    m_registry.addRenderer(&m_renderer);
}

void RecordingFileTest::cleanup()
{
    m_recorder.reset();
    m_registry.removeRenderer(&m_renderer);
    qunsetenv("KELVO_RECORD");
}

void RecordingFileTest::isForItsOwnerAlone()
{
    const mode_t usual = ::umask(0);
    start();
    m_recorder.reset();
    ::umask(usual);
    constexpr auto owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    QCOMPARE(QFile::permissions(m_path), QFile::Permissions(owner));
    // Whoever opened it to others wants that.
    constexpr auto shared = owner | QFile::ReadGroup;
    QVERIFY(QFile::setPermissions(m_path, shared));
    start();
    m_recorder.reset();
    QCOMPARE(QFile::permissions(m_path), QFile::Permissions(shared));
}

void RecordingFileTest::wholeRecording()
{
    start();
    tell(0, 3);
    m_recorder.reset();
    QCOMPARE(written(), QStringList({"header tester", appears}) + told(0, 3) + QStringList(ended));
}

void RecordingFileTest::isWrittenWhileItRuns()
{
    start();
    for (int i = 0; i < 3; ++i) {
        tell(i, i + 1);
        QTRY_COMPARE(written(), QStringList({"header tester", appears}) + told(0, i + 1));
    }
    tell(3, 500);
    Recorder::flush();
    QTRY_COMPARE(written(), QStringList({"header tester", appears}) + told(0, 500));
}

void RecordingFileTest::everyEventOfAFlood()
{
    start();
    // More than the ring keeps.
    for (int i = 0; i < 60; ++i) {
        tell(i * 1000, (i + 1) * 1000);
        QTest::qSleep(1);
    }
    m_recorder.reset();
    QCOMPARE(written().mid(2), told(0, 60'000) + QStringList(ended));
}

void RecordingFileTest::goesOnBehindWhatIsThere()
{
    start();
    m_recorder.reset();
    start();
    tell(0, 1);
    m_recorder.reset();
    QCOMPARE(written(),
        QStringList({"header tester", appears, ended, "header tester", appears}) + told(0, 1)
            + QStringList(ended));
}

void RecordingFileTest::cutLineIsEnded()
{
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("{\"time\":1.0") > 0);
    file.close();
    start();
    m_recorder.reset();
    QCOMPARE(written(), QStringList({"not JSON: {\"time\":1.0", "header tester", appears, ended}));
}

void RecordingFileTest::cannotBeOpened_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    QTest::newRow("folder that cannot be written to") << "/proc/recording.jsonl"
                                                      << "No such file or directory";
    QTest::newRow("no such folder") << "/nowhere/recording.jsonl"
                                    << "No such file or directory";
    QTest::newRow("a folder") << "/tmp"
                              << "Is a directory";
    QTest::newRow("name that is too long") << "/tmp/" + QString(300, u'x') << "File name too long";
}

void RecordingFileTest::cannotBeOpened()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    m_path = path;
    LogRecorder log;
    start();
    tell(0, 10);
    QTRY_COMPARE(warningsOf(log).size(), 1);
    tell(10, 20);
    // Memory has all of it.
    const QByteArray kept = QByteArray::fromStdString(m_recorder->recording());
    QCOMPARE(RecordedLines::of(kept).mid(2), told(0, 20) + QStringList(" note saved []"));
    m_recorder.reset();
    QCOMPARE(warningsOf(log), QStringList(QStringLiteral("Nothing is recorded in %1: %2").arg(path, reason)));
}

void RecordingFileTest::anotherProcessRecordsInIt()
{
    start();
    QTRY_VERIFY(!written().isEmpty());
    LogRecorder log;
    // A lock belongs to the file as it was opened, so a second recorder stands for a second process.
    auto other = Recorder::start(&m_registry, {"other", "1", "r"});
    QTRY_COMPARE(warningsOf(log),
        QStringList(QStringLiteral("Nothing is recorded in %1: another process records in it").arg(m_path)));
    tell(0, 5);
    other.reset();
    m_recorder.reset();
    QCOMPARE(written(), QStringList({"header tester", appears}) + told(0, 5) + QStringList(ended));
    QCOMPARE(warningsOf(log).size(), 1);
}

void RecordingFileTest::fullDevice()
{
    m_path = "/dev/full";
    LogRecorder log;
    start();
    tell(0, 10);
    QTRY_COMPARE(warningsOf(log), QStringList("Nothing is recorded in /dev/full: No space left on device"));
    tell(10, 20);
    QElapsedTimer timer;
    timer.start();
    m_recorder.reset();
    QVERIFY(timer.elapsed() < 1000);
    QCOMPARE(warningsOf(log).size(), 1);
}

void RecordingFileTest::fullDiskThatHasSpaceAgain()
{
    LogRecorder log;
    {
        const FullDisk disk(4096);
        start();
        tell(0, 200);
        QTRY_COMPARE(warningsOf(log),
            QStringList(QStringLiteral("Nothing is recorded in %1: File too large").arg(m_path)));
        // Nothing of what did not fit.
        const QStringList lines = written();
        QVERIFY(lines.size() < 202);
        QCOMPARE(lines, (QStringList({"header tester", appears}) + told(0, 200)).mid(0, lines.size()));
    }
    QTRY_COMPARE(written(), QStringList({"header tester", appears}) + told(0, 200));
    QCOMPARE(warningsOf(log).size(), 1);
}

void RecordingFileTest::lossOnAFullDiskIsTold()
{
    constexpr int all = 3000;
    const QString filling(4000, u'x');
    {
        const FullDisk disk(4096);
        start();
        for (int i = 0; i < all; ++i)
            Q_EMIT m_renderer.nameChanged(filling + QString::number(i));
    }
    Recorder::flush();
    m_recorder.reset();
    const QStringList lines = written();
    QCOMPARE(lines.first(), "header tester");
    QCOMPARE(lines.filter(" note lost [").size(), 1);
    const QString loss = lines.filter(" note lost [").first();
    const int lost = loss.mid(loss.indexOf('[') + 1).chopped(1).toInt();
    QVERIFY2(lost > 500 && lost < all, qPrintable(loss));
    // Each of the others once, up to the last.
    QCOMPARE(lines.filter("nameChanged").size() + lines.filter(appears).size() + lost, all + 1);
    QVERIFY(lines.filter("nameChanged").last().endsWith(QStringLiteral("%1\"]").arg(all - 1)));
    QCOMPARE(lines.last(), ended);
}

void RecordingFileTest::nobodyReadsThePipe()
{
    QCOMPARE(::mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
    const int reader = ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    LogRecorder log;
    start();
    char byte = 0;
    QTRY_COMPARE(::read(reader, &byte, 1), ssize_t(1));
    ::close(reader);
    tell(0, 10);
    // What opens a pipe for reading and writing would read it itself.
    QTRY_COMPARE(
        warningsOf(log), QStringList(QStringLiteral("Nothing is recorded in %1: Broken pipe").arg(m_path)));
}

void RecordingFileTest::nothingIsRecordedWithoutAName()
{
    LogRecorder log;
    m_path.clear();
    start();
    tell(0, 1);
    Recorder::flush();
    m_recorder.reset();
    QCOMPARE(log.lines(), QStringList());
}
} // namespace

KELVO_TEST(RecordingFileTest)
#include "RecordingFileTest.moc"
