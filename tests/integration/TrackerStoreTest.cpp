// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "TrackerIndexCase.h"
#include "index/MediaIndexing.h"
#include "store/StoreIndexing.h"
#include "store/StoreSession.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QSocketNotifier>
#include <QTest>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#include <csignal>
#include <thread>
#include <unistd.h>

namespace {
void say(const QString &text)
{
    QTextStream(stdout) << text << Qt::endl;
}

/// Whoever would index, if the store asked for it.
class UnusedIndexing : public StoreIndexing
{
public:
    std::shared_ptr<StoreIndexer> start(
        std::shared_ptr<StoreSession>, Report, std::shared_ptr<StoreIndexer> previous) const override
    {
        ++starts;
        return previous;
    }
    bool isLengthCounted(const QUrl &) const override { return false; }

    mutable int starts = 0;
};

/// Another process: opens the store, indexes when told to, and says what happens until it is ended.
int runOther(bool indexing)
{
    QObject user;
    KelvoTrackerStore *store = KelvoTrackerStore::instance();
    QObject::connect(store, &KelvoTrackerStore::opened, &user,
        [store](bool ok) { say(ok ? "open" : "failed: " + store->errorText()); });
    QObject::connect(store, &KelvoTrackerStore::indexed, &user,
        [](const KelvoIndexReport &report) { say("indexed " + QString::number(report.files)); });
    if (indexing)
        store->startIndexing(std::make_shared<MediaIndexing>());
    store->hold(&user);
    return QCoreApplication::exec();
}

/// Another process, with work in the store that does not come back. Ends as it would otherwise.
int runHanging()
{
    QObject user;
    KelvoTrackerStore *store = KelvoTrackerStore::instance();
    QObject::connect(store, &KelvoTrackerStore::opened, &user, [store] {
        std::thread([session = store->session()] {
            StoreError error;
            const StoreSession::Entry entry = session->enter([] {}, &error);
            say("hangs");
            for (;;)
                ::pause();
        }).detach();
    });
    store->hold(&user);
    const QSocketNotifier told(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&told, &QSocketNotifier::activated, [] { QCoreApplication::exit(7); });
    return QCoreApplication::exec();
}

/// Runs runOther() in a process of its own, if need be behind a shell command.
class Other : public QProcess
{
public:
    explicit Other(const QString &mode, const QString &before = {}, const QStringList &wrapper = {})
    {
        setProcessChannelMode(MergedChannels);
        const QString self = QCoreApplication::applicationFilePath();
        // The helper is killed: its leaks are none.
        if (before.isEmpty())
            start("env", QStringList{"ASAN_OPTIONS=detect_leaks=0"} + wrapper + QStringList{self, mode});
        else
            start("unshare",
                {"-rm", "sh", "-c", before + " && exec env ASAN_OPTIONS=detect_leaks=0 \"$0\" \"$1\"", self,
                    mode});
    }
    ~Other() override
    {
        kill();
        waitForFinished();
    }

    bool waitFor(const QString &text)
    {
        while (!m_heard.contains(text.toUtf8())) {
            if (!waitForReadyRead(30'000))
                return false;
            m_heard += readAll();
        }
        return true;
    }
    QString heard() const { return QString::fromUtf8(m_heard); }

private:
    QByteArray m_heard;
};

bool canMount()
{
    return QProcess::execute("unshare", {"-rm", "mount", "-t", "tmpfs", "tmpfs", "/mnt"}) == 0;
}
} // namespace

class TrackerStoreTest : public TrackerIndexCase
{
    Q_OBJECT

    QString databaseFile() const { return store().folder() + "/meta.db"; }
    QString musicFile() const { return store().folder() + "/urn%3Akelvo%3Amusic.db"; }

    QStringList movedAside() const
    {
        const QDir data(QFileInfo(store().folder()).path());
        return data.entryList({"tracker.damaged-*"}, QDir::Dirs);
    }

    /// Before a command whose process is not to read everything, as the first user may.
    QStringList asUser() const
    {
        if (::geteuid() != 0 || QProcess::execute("chown", {"-R", "nobody", folder()}) != 0)
            return {};
        return {"setpriv", "--reuid=nobody", "--clear-groups"};
    }

    bool fillAndClose(int count = 200)
    {
        std::vector<MediaItem> items;
        for (int i = 0; i < count; ++i)
            items.push_back(song(i));
        if (!openStore() || !writeSongs(items))
            return false;
        closeStore();
        return true;
    }

private Q_SLOTS:
    void liesInTheDataFolderOfTheUser()
    {
        QVERIFY(QDir(folder() + "/data").removeRecursively());
        QCOMPARE(store().folder(), folder() + "/data/kelvo/tracker");
        QVERIFY(openStore());
        QVERIFY(QFile::exists(databaseFile()));
        constexpr auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
            | QFile::WriteOther | QFile::ExeOther;
        QVERIFY(!(QFile::permissions(store().folder()) & others));
        QVERIFY(!store().isReadOnly());
    }

    void keepsWhatItHolds()
    {
        QVERIFY(fillAndClose(3));
        QVERIFY(openStore());
        QCOMPARE(titles(Type::AllSongs).size(), 3);
    }

    void opensAndClosesAgainAndAgain()
    {
        for (int round = 0; round < 20; ++round) {
            QVERIFY(openStore());
            if (round % 2)
                startIndexing();
            closeStore();
        }
        // Users that come and go in one turn of the event loop leave nothing behind.
        for (int round = 0; round < 20; ++round) {
            QObject user;
            store().hold(&user);
        }
        QSignalSpy closed(&store(), &KelvoTrackerStore::closed);
        QVERIFY(closed.wait());
        QCOMPARE(store().state(), KelvoTrackerStore::Closed);
    }

    void openingsThatAreNoLongerWantedAreSkipped()
    {
        QElapsedTimer time;
        time.start();
        for (int round = 0; round < 500; ++round) {
            QObject user;
            store().hold(&user);
            store().countPlay(QUrl("file:///song.mp3")); // waits for the opening
            store().release(&user);
            QCoreApplication::processEvents();
        }
        QVERIFY(openStore());
        QVERIFY2(time.elapsed() < 5000, qPrintable(QString::number(time.elapsed())));
        closeStore();
    }

    void isReadWhileAnotherProcessOwnsIt()
    {
        QVERIFY(fillAndClose(3));
        {
            Other other("--hold");
            QVERIFY(other.waitFor("open"));
            LogRecorder log;
            QVERIFY(openStore());
            QVERIFY(store().isReadOnly());
            QCOMPARE(log.warnings().filter("in use by another process").size(), 1);
            QCOMPARE(titles(Type::AllSongs).size(), 3);
            const auto indexing = std::make_shared<UnusedIndexing>();
            store().startIndexing(indexing);
            QCOMPARE(indexing->starts, 0);
            QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
            store().countPlay(QUrl(QString::fromLatin1(song(0).uri)));
            QTRY_COMPARE(log.warnings().filter("belongs to another process").size(), 1);
            QCOMPARE(counted.count(), 0);
            closeStore();
        }
        QVERIFY(openStore());
        QVERIFY(!store().isReadOnly());
    }

    void isReadWhileAnotherProcessMakesIt()
    {
        Other other("--index");
        QVERIFY(openStore());
        QCOMPARE(titles(Type::AllSongs), QStringList());
    }

    void goesOnWhereAKilledProcessStopped()
    {
        for (int i = 0; i < 1200; ++i)
            QVERIFY(QFile::link(generated("short.mp3"), place(QString::number(i) + ".mp3")));
        {
            Other other("--index");
            QVERIFY(other.waitFor("open"));
            // In the middle: when it has written some, but not all.
            QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(musicFile() + "-wal").size() > 400'000, 20000);
            QVERIFY(!other.heard().contains("indexed"));
            ::kill(pid_t(other.processId()), SIGKILL);
        }
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(songs->rowCount(), 1200);
        QStringList uris = texts(*songs, "songUri");
        QCOMPARE(uris.removeDuplicates(), 0);
    }

    // Whoever made it ended before it was complete: that is no damage to speak of.
    void isMadeAnewWhenItsMakerWasKilled()
    {
        QVERIFY(QDir(store().folder()).removeRecursively());
        QVERIFY(QDir().mkpath(store().folder()));
        const QDir files(store().folder());
        for (const char *name :
            {"meta.db", "meta.db-wal", ".meta.isrunning", "urn%3Akelvo%3Amusic.db", "unfinished"}) {
            QFile file(files.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("no database");
        }
        QSignalSpy rebuilt(&store(), &KelvoTrackerStore::rebuilt);
        QVERIFY(openStore());
        QVERIFY(!QFile::exists(files.filePath("unfinished")));
        closeStore();
        QVERIFY(fillAndClose(3));
        QVERIFY(openStore());
        QCOMPARE(titles(Type::AllSongs).size(), 3);
        QCOMPARE(rebuilt.size(), 0);
        QCOMPARE(movedAside(), QStringList());
    }

    void endsWithItsProcess()
    {
        for (int i = 0; i < 200; ++i)
            QVERIFY(QFile::link(generated("short.mp3"), place(QString::number(i) + ".mp3")));
        for (const char *moment : {"", "open"}) {
            Other other("--index-and-leave");
            if (*moment)
                QVERIFY(other.waitFor(moment));
            other.write("leave\n");
            QVERIFY(other.waitForFinished(30'000));
            QCOMPARE(other.exitStatus(), QProcess::NormalExit);
            QCOMPARE(other.exitCode(), 0);
        }
    }

    void workThatHangsDoesNotKeepItsProcessFromEnding()
    {
        Other other("--hang");
        QVERIFY(other.waitFor("hangs"));
        other.write("leave\n");
        QVERIFY(other.waitFor("Work does not end and is left alone: kelvo-tracker-store"));
        QVERIFY(other.waitForFinished(20'000));
        QCOMPARE(other.exitStatus(), QProcess::NormalExit);
        QCOMPARE(other.exitCode(), 7);
    }

    void isRebuiltWhenDamaged_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("reason");
        for (const auto &[damage, reason] :
            std::initializer_list<std::pair<const char *, const char *>>{{"truncated", "cut off"},
                {"random", "no database"}, {"empty", "is empty"}, {"version", "has version 11, not 27"},
                {"first pages", "damaged"}, {"all but the header", "damaged"}, {"music truncated", "cut off"},
                {"music random", "no database"}, {"music missing", "damaged"},
                {"music all but the header", "damaged"}})
            QTest::newRow(damage) << damage << reason;
    }

    void isRebuiltWhenDamaged()
    {
        QFETCH(QString, damage);
        QFETCH(QString, reason);
        QVERIFY(fillAndClose());
        const bool music = damage.startsWith("music ");
        QFile file(music ? musicFile() : databaseFile());
        QVERIFY(file.open(QIODevice::ReadWrite));
        damage.remove("music ");
        const qint64 size = file.size();
        const auto spoil = [&file](qint64 from, qint64 count) {
            QByteArray noise(count, '\x5a');
            for (qsizetype i = 0; i < noise.size(); ++i)
                noise[i] = char(i * 7919 >> 3);
            file.seek(from);
            file.write(noise);
        };
        if (damage == "truncated")
            file.resize(size / 2 - 100);
        else if (damage == "random")
            spoil(0, size);
        else if (damage == "missing")
            file.remove();
        else if (damage == "empty")
            file.resize(0);
        else if (damage == "version")
            file.seek(60), file.write(QByteArray("\0\0\0\x0b", 4));
        else if (damage == "first pages")
            spoil(100, 40000);
        else
            spoil(4096, size - 4096);
        file.close();

        LogRecorder log;
        QSignalSpy rebuilt(&store(), &KelvoTrackerStore::rebuilt);
        QVERIFY(openStore());
        // Damage that the opening does not meet shows with the first query.
        if (rebuilt.isEmpty()) {
            startIndexing();
            QVERIFY(rebuilt.wait(10000));
        }
        const QString text = rebuilt.first().first().toString();
        QVERIFY2(text.contains(reason), qPrintable(text));
        QCOMPARE(log.warnings().filter(text).size(), 1);
        QCOMPARE(movedAside().size(), 1);
        QVERIFY(text.contains(movedAside().first()));
        QVERIFY(QFile::exists(store().folder() + "/../" + movedAside().first() + "/meta.db"));
        // The next query says it, once, and has its rows all the same.
        KelvoTrackerModelFactory factory("A", "B", 10);
        for (const int expected : {1, 0}) {
            const std::unique_ptr<KelvoTrackerModel> model(factory.getModel(Type::AllSongs, 0, 0));
            QSignalSpy completed(model.get(), &KelvoTrackerModel::completed);
            QSignalSpy failed(model.get(), &KelvoTrackerModel::error);
            QVERIFY(completed.wait(10000));
            QCOMPARE(failed.count(), expected);
            if (expected)
                QCOMPARE(failed.first().first().toString(), text);
        }
    }

    void isFilledAgainWhenDeletedWhileOpen()
    {
        addSong("a.mp3", {"A"});
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs), QStringList("A"));
        LogRecorder log;
        QSignalSpy rebuilt(&store(), &KelvoTrackerStore::rebuilt);
        QVERIFY(QDir(store().folder()).removeRecursively());
        QVERIFY(rebuilt.wait(10000));
        QVERIFY(rebuilt.first().first().toString().contains("deleted"));
        QVERIFY(waitForFiles(1));
        KelvoTrackerModelFactory factory("A", "B", 10);
        const std::unique_ptr<KelvoTrackerModel> told(factory.getModel(Type::AllSongs, 0, 0));
        QSignalSpy failed(told.get(), &KelvoTrackerModel::error);
        QVERIFY(failed.wait());
        QCOMPARE(titles(Type::AllSongs), QStringList("A"));
        QCOMPARE(movedAside(), QStringList());
    }

    void failsClearlyWithoutAFolder()
    {
        QVERIFY(QDir(folder() + "/data").removeRecursively());
        QFile file(folder() + "/data");
        QVERIFY(file.open(QIODevice::WriteOnly));
        LogRecorder log;
        QVERIFY(!openStore());
        QCOMPARE(store().state(), KelvoTrackerStore::Failed);
        QVERIFY(store().errorText().contains("cannot be made"));
        QCOMPARE(log.warnings().filter("cannot be made").size(), 1);
        KelvoTrackerModelFactory factory("A", "B", 10);
        QSignalSpy initialised(&factory, &KelvoTrackerModelFactory::initCompleted);
        factory.init();
        QVERIFY(initialised.wait());
        QCOMPARE(initialised.first().first().toBool(), false);
        const std::unique_ptr<KelvoTrackerModel> model(factory.getModel(Type::AllSongs, 0, 0));
        QSignalSpy failed(model.get(), &KelvoTrackerModel::error);
        QVERIFY(failed.wait());
        QCOMPARE(failed.first().first().toString(), store().errorText());
        // Once there is a place it opens.
        QVERIFY(file.remove());
        factory.init();
        QVERIFY(initialised.wait(10000));
        QCOMPARE(initialised.last().first().toBool(), true);
    }

    void saysWhatMayNotBeRead()
    {
        addSong("open.mp3", {"Open"});
        addSong("closed.mp3", {"Closed"});
        addSong("closed/inside.mp3", {"Inside"});
        QVERIFY(QFile::setPermissions(place("closed.mp3"), {}));
        QVERIFY(QFile::setPermissions(mediaFolder() + "/closed", {}));
        Other other("--index", {}, asUser());
        QVERIFY2(other.waitFor("indexed 2"), qPrintable(other.heard()));
        QCOMPARE(other.heard().count("Cannot look into the folder"), 1);
    }

    void keepsWhatMayNotBeReadForNow()
    {
        addSong("open.mp3", {"Open"});
        addSong("closed/inside.mp3", {"Inside"});
        addSong("closed/deep/below.mp3", {"Below"});
        const QStringList wrapper = asUser();
        {
            Other first("--index", {}, wrapper);
            QVERIFY2(first.waitFor("indexed 3"), qPrintable(first.heard()));
        }
        QVERIFY(QFile::setPermissions(mediaFolder() + "/closed", {}));
        Other second("--index", {}, wrapper);
        QVERIFY2(second.waitFor("indexed 3"), qPrintable(second.heard()));
        QCOMPARE(second.heard().count("Cannot look into the folder"), 1);
    }

    /// Otherwise a new one would be begun there, and what is in the folder be taken for its unfinished files.
    void whatCannotBeLookedAtIsAStore()
    {
        QVERIFY(QDir(store().folder()).removeRecursively());
        QVERIFY(!StoreFolder::hasStore(store().folder()));
        QVERIFY(QDir().mkpath(store().folder()));
        QVERIFY(!StoreFolder::hasStore(store().folder()));
        QVERIFY(QFile::link("meta.db", databaseFile())); // leads to itself
        QVERIFY(StoreFolder::hasStore(store().folder()));
    }

    void failsClearlyOnAReadOnlyDisk()
    {
        if (!canMount())
            QSKIP("no mounts here");
        QVERIFY(QDir().mkpath(store().folder()));
        const QString data = folder() + "/data";
        Other other("--hold", QString("mount --bind %1 %1 && mount -o remount,bind,ro %1").arg(data));
        QVERIFY(other.waitFor("failed: "));
        QVERIFY(other.waitFor("ead-only file system"));
    }

    void failsClearlyOnAFullDisk()
    {
        if (!canMount())
            QSKIP("no mounts here");
        QVERIFY(QDir().mkpath(folder() + "/data"));
        Other other("--hold", QString("mount -t tmpfs -o size=4m tmpfs %1/data").arg(folder()));
        QVERIFY(other.waitFor("failed: The disk of the tracker store is full"));
    }

    void survivesADiskThatFillsUp()
    {
        if (!canMount())
            QSKIP("no mounts here");
        QVERIFY(QDir().mkpath(folder() + "/data"));
        for (int i = 0; i < 4000; ++i)
            QVERIFY(
                QFile::link(generated("short.mp3"), place(QString(200, 'x') + QString::number(i) + ".mp3")));
        Other other("--index", QString("mount -t tmpfs -o size=11m tmpfs %1/data").arg(folder()));
        QVERIFY2(other.waitFor("The index of media files is not up to date"), qPrintable(other.heard()));
        QVERIFY(other.state() == QProcess::Running);
        QVERIFY2(!other.heard().contains("moved to"), qPrintable(other.heard()));
    }

    /// The next change of any folder makes good for all that was not written.
    void catchesUpOnceTheDiskHasRoom()
    {
        if (!canMount())
            QSKIP("no mounts here");
        QVERIFY(QDir().mkpath(folder() + "/data"));
        constexpr int count = 4000;
        for (int i = 0; i < count; ++i)
            QVERIFY(QFile::link(generated("short.mp3"),
                place(QString::number(i % 40) + '/' + QString(200, 'x') + QString::number(i) + ".mp3")));
        Other other("--index", QString("mount -t tmpfs -o size=11m tmpfs %1/data").arg(folder()));
        QVERIFY2(other.waitFor("The index of media files is not up to date"), qPrintable(other.heard()));
        QVERIFY2(other.waitFor("indexed "), qPrintable(other.heard()));
        QCOMPARE(QProcess::execute("nsenter",
                     {"--target", QString::number(other.processId()), "--user", "--mount",
                         "--preserve-credentials", "mount", "-o", "remount,size=64m", folder() + "/data"}),
            0);
        QVERIFY(QFile::link(generated("short.mp3"), place("0/new.mp3")));
        QVERIFY2(other.waitFor("indexed " + QString::number(count + 1)), qPrintable(other.heard()));
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QByteArray mode = argc > 1 ? argv[1] : "";
    if (mode == "--hold")
        return runOther(false);
    if (mode == "--hang")
        return runHanging();
    if (mode == "--index")
        return runOther(true);
    if (mode == "--index-and-leave") {
        // Leaves in the middle of its work, as a program does that is closed right after its start.
        QTimer::singleShot(0, [] {
            QThread *reader = QThread::create([] {
                getchar();
                QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit);
            });
            QObject::connect(reader, &QThread::finished, reader, &QObject::deleteLater);
            reader->start();
        });
        return runOther(true);
    }
    TrackerStoreTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "TrackerStoreTest.moc"
