// SPDX-License-Identifier: MIT
#include "UserFolders.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <sys/stat.h>
#include <thread>
#include <vector>

class UserFoldersTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        for (const char *name : m_names)
            m_before.push_back(qgetenv(name));
        qputenv("XDG_DATA_HOME", QFile::encodeName(path("data")));
        qputenv("XDG_CACHE_HOME", QFile::encodeName(path("cache")));
        qputenv("XDG_STATE_HOME", QFile::encodeName(path("state")));
    }

    void cleanup()
    {
        for (size_t i = 0; i < m_before.size(); ++i)
            qputenv(m_names[i], m_before[i]);
        m_before.clear();
        m_folder.reset();
    }

    void allHaveOneName()
    {
        QCOMPARE(UserFolders::data("a"), path("data/kelvo/a"));
        QCOMPARE(UserFolders::cache("b"), path("cache/kelvo/b"));
        QCOMPARE(UserFolders::state("c"), path("state/kelvo/c"));
    }

    void relativePlacesCountForNothing()
    {
        for (const char *name : m_names)
            qputenv(name, "relative");
        QCOMPARE(UserFolders::data("a"), QDir::homePath() + "/.local/share/kelvo/a");
        QCOMPARE(UserFolders::cache("a"), QDir::homePath() + "/.cache/kelvo/a");
        QCOMPARE(UserFolders::state("a"), QDir::homePath() + "/.local/state/kelvo/a");
    }

    void privateOnesAreClosedToOthers()
    {
        const QString made = path("data/kelvo/new");
        QVERIFY(UserFolders::makePrivate(made));
        QCOMPARE(modeOf(made), 0700u);
        QVERIFY(UserFolders::makePrivate(made));
        // As earlier versions left it.
        QCOMPARE(::chmod(QFile::encodeName(made).constData(), 0755), 0);
        QVERIFY(UserFolders::makePrivate(made));
        QCOMPARE(modeOf(made), 0700u);
        QFile file(path("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!UserFolders::makePrivate(path("file/below")));
        qInfo("reliability: exposure-modes: folders 0700");
    }

    void withoutOldOnesNothingHappens()
    {
        LogRecorder log;
        UserFolders::takeOverOld();
        QCOMPARE(log.lines(), QStringList());
        QVERIFY(!QFile::exists(path("cache")));
    }

    void oldOnesMove()
    {
        write(m_oldFrame, "picture");
        write("cache/kelvo-test/media/tone.wav", "tone");
        UserFolders::takeOverOld();
        QCOMPARE(read(m_newFrame), QByteArray("picture"));
        QCOMPARE(read("cache/kelvo/media/tone.wav"), QByteArray("tone"));
        QVERIFY(!QFile::exists(path("cache/kelvo-test-gui")));
        QVERIFY(!QFile::exists(path("cache/kelvo-test")));
        // And stay where they are.
        LogRecorder log;
        UserFolders::takeOverOld();
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(read(m_newFrame), QByteArray("picture"));
    }

    void whatElseIsInTheOldFolderStays()
    {
        write(m_oldFrame, "picture");
        write("cache/kelvo-test-gui/notes.txt", "somebody's");
        UserFolders::takeOverOld();
        QCOMPARE(read(m_newFrame), QByteArray("picture"));
        QCOMPARE(read("cache/kelvo-test-gui/notes.txt"), QByteArray("somebody's"));
    }

    void ofTwoEachStaysAsItIs()
    {
        write(m_oldFrame, "old");
        write(m_newFrame, "new");
        LogRecorder log;
        UserFolders::takeOverOld();
        QCOMPARE(read(m_oldFrame), QByteArray("old"));
        QCOMPARE(read(m_newFrame), QByteArray("new"));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().contains(path("cache/kelvo-test-gui/pause-frames")));
    }

    void anEmptyNewOneIsNoHindrance()
    {
        write(m_oldFrame, "old");
        QVERIFY(QDir().mkpath(path("cache/kelvo/pause-frames")));
        UserFolders::takeOverOld();
        QCOMPARE(read(m_newFrame), QByteArray("old"));
    }

    void whatIsInTheWayIsNotReplaced_data()
    {
        QTest::addColumn<QString>("obstacle");
        QTest::addColumn<bool>("isLink");
        QTest::newRow("a file of the new name") << "cache/kelvo/pause-frames" << false;
        QTest::newRow("a link to nowhere") << "cache/kelvo/pause-frames" << true;
        // What a folder is that nobody may write to, also for the superuser.
        QTest::newRow("no folder can be made") << "cache/kelvo" << false;
    }

    void whatIsInTheWayIsNotReplaced()
    {
        QFETCH(QString, obstacle);
        QFETCH(bool, isLink);
        for (const bool oldIsLink : {false, true}) {
            QVERIFY(QDir(m_folder->path()).mkpath("elsewhere"));
            if (oldIsLink) {
                QVERIFY(QDir(path("cache/kelvo-test-gui")).removeRecursively());
                QVERIFY(QDir().mkpath(path("cache/kelvo-test-gui")));
                write("elsewhere/pause-1.png", "old");
                QVERIFY(QFile::link(path("elsewhere"), path("cache/kelvo-test-gui/pause-frames")));
            } else {
                write(m_oldFrame, "old");
                if (isLink) {
                    QVERIFY(QDir().mkpath(path("cache/kelvo")));
                    QVERIFY(QFile::link(path("nowhere"), path(obstacle)));
                } else {
                    write(obstacle, "mine");
                }
            }
            LogRecorder log;
            UserFolders::takeOverOld();
            QCOMPARE(log.warnings().size(), 1);
            QCOMPARE(read(m_oldFrame), QByteArray("old"));
            if (isLink)
                QCOMPARE(QFile::symLinkTarget(path(obstacle)), path("nowhere"));
            else
                QCOMPARE(read(obstacle), QByteArray("mine"));
        }
    }

    void aLinkMovesAsALink()
    {
        write("elsewhere/pause-1.png", "picture");
        QVERIFY(QDir().mkpath(path("cache/kelvo-test-gui")));
        QVERIFY(QFile::link("../../elsewhere", path("cache/kelvo-test-gui/pause-frames")));
        UserFolders::takeOverOld();
        QCOMPARE(read(m_newFrame), QByteArray("picture"));
        QVERIFY(QFileInfo(path("cache/kelvo/pause-frames")).isSymLink());
        QCOMPARE(read("elsewhere/pause-1.png"), QByteArray("picture"));
    }

    void whatIsBehindALinkOnAnotherDiskStays()
    {
        const QTemporaryDir other("/dev/shm/kelvo-XXXXXX");
        struct stat here = {};
        struct stat there = {};
        if (!other.isValid() || ::stat(qPrintable(m_folder->path()), &here) != 0
            || ::stat(qPrintable(other.path()), &there) != 0 || here.st_dev == there.st_dev)
            QSKIP("There is no second disk to be seen.");
        QVERIFY(QDir(other.path()).mkpath("pause-frames"));
        QVERIFY(QDir().mkpath(path("cache")));
        QVERIFY(QFile::link(other.path(), path("cache/kelvo-test-gui")));
        LogRecorder log;
        UserFolders::takeOverOld();
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(QFile::exists(other.filePath("pause-frames")));
        QVERIFY(!QFile::exists(path("cache/kelvo/pause-frames")));
    }

    void aFileOfTheOldNameIsNoneOfOurs()
    {
        write("cache/kelvo-test-gui/pause-frames", "somebody's");
        LogRecorder log;
        UserFolders::takeOverOld();
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(read("cache/kelvo-test-gui/pause-frames"), QByteArray("somebody's"));
    }

    void aProgramThatHasItOpenKeepsIt()
    {
        write(m_oldFrame, "begin");
        QFile open(path(m_oldFrame));
        QVERIFY(open.open(QIODevice::Append));
        UserFolders::takeOverOld();
        open.write(", end");
        open.close();
        QCOMPARE(read(m_newFrame), QByteArray("begin, end"));
        // An earlier version that still runs makes its folder anew: nothing of either is lost.
        write(m_oldFrame, "later");
        UserFolders::takeOverOld();
        QCOMPARE(read(m_newFrame), QByteArray("begin, end"));
        QCOMPARE(read(m_oldFrame), QByteArray("later"));
    }

    void programsThatStartAtOnceMoveItOnce()
    {
        for (int round = 0; round < 20; ++round) {
            write(m_oldFrame, "picture");
            LogRecorder log;
            std::vector<std::thread> programs;
            for (int i = 0; i < 4; ++i)
                programs.emplace_back([] { UserFolders::takeOverOld(); });
            for (std::thread &program : programs)
                program.join();
            QCOMPARE(log.warnings(), QStringList());
            QCOMPARE(log.lines().size(), 1);
            QCOMPARE(read(m_newFrame), QByteArray("picture"));
            QVERIFY(QDir(path("cache/kelvo")).removeRecursively());
        }
    }

private:
    static uint modeOf(const QString &path)
    {
        struct stat status = {};
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777u : 0;
    }
    QString path(const QString &relative) const { return m_folder->filePath(relative); }

    void write(const QString &relative, const QByteArray &content) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(path(relative)).path()));
        QFile file(path(relative));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    QByteArray read(const QString &relative) const
    {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    const std::vector<const char *> m_names{"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"};
    const QString m_oldFrame = "cache/kelvo-test-gui/pause-frames/pause-1.png";
    const QString m_newFrame = "cache/kelvo/pause-frames/pause-1.png";
    std::vector<QByteArray> m_before;
    std::unique_ptr<QTemporaryDir> m_folder;
};

KELVO_TEST(UserFoldersTest)
#include "UserFoldersTest.moc"
