// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {
/// A pipe into which nothing goes any more.
class FullPipe
{
public:
    FullPipe()
    {
        if (::pipe2(m_ends, O_CLOEXEC) != 0)
            qFatal("no pipe");
        // Filled by whole pages: one that holds less than that has no room for another one.
        const int size = ::fcntl(m_ends[1], F_GETPIPE_SZ);
        const QByteArray padding(size, '.');
        if (::write(m_ends[1], padding.constData(), size_t(size)) != size)
            qFatal("the pipe takes less than it says");
    }
    ~FullPipe()
    {
        closeReadEnd();
        closeWriteEnd();
    }
    Q_DISABLE_COPY_MOVE(FullPipe)

    int writeEnd() const { return m_ends[1]; }
    void closeReadEnd() { close(m_ends[0]); }
    void closeWriteEnd() { close(m_ends[1]); }

    /// Until everybody has closed the other end.
    QByteArray readAll() const
    {
        QByteArray all;
        char buffer[4096];
        for (ssize_t size = 0; (size = ::read(m_ends[0], buffer, sizeof buffer)) > 0;)
            all.append(buffer, size);
        return all;
    }

private:
    static void close(int &end)
    {
        if (end >= 0)
            ::close(std::exchange(end, -1));
    }

    int m_ends[2];
};
} // namespace

/// The real program, started without a display server of its own.
class ProgramTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void argumentLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("line"); // behind the number and the program
        QTest::addColumn<QString>("found"); // empty: no URL
        QTest::addColumn<bool>("plays");
        QTest::newRow("none") << QStringList() << "  " << QString() << false;
        QTest::newRow("url") << QStringList("file:///a.pls") << " file:///a.pls "
                             << "file:///a.pls" << true;
        QTest::newRow("only the last one counts")
            << QStringList({"http://h/one", "http://h/two", "http://h/three"}) << " http://h/one http://h/two"
            << "http://h/three" << true;
        QTest::newRow("two") << QStringList({"one", "http://h/two"}) << " one http://h/two"
                             << "http://h/two" << true;
        QTest::newRow("not a URL") << QStringList("http://[") << " http://[ "
                                   << "" << false;
        QTest::newRow("empty") << QStringList("") << "  "
                               << "" << false;
    }

    void argumentLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, line);
        QFETCH(QString, found);
        QFETCH(bool, plays);
        QProcess program;
        const QStringList log = logOfStart(program, arguments);
        const QString expected = QStringLiteral("%1 %2%3").arg(arguments.size() + 1).arg(path(), line);
        QVERIFY2(log.contains(expected), qPrintable(log.join('\n')));
        const QStringList foundLines = log.filter("Found URL:");
        if (arguments.isEmpty())
            QCOMPARE(foundLines, QStringList());
        else
            QCOMPARE(foundLines, QStringList(QStringLiteral("Found URL: QUrl(\"%1\")").arg(found)));
        QCOMPARE(log.contains("void KelvoGUIMain::playPlaylist(const QUrl&, const QString&)"), plays);
        QCOMPARE(log.filter("ERROR: ").size(), 0); // of the sanitizers
    }

    void nameOfAFileIsAsGoodAsItsUrl_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("url"); // behind that of the folder
        QTest::newRow("file") << "list.pls"
                              << "list.pls";
        QTest::newRow("what means something in URLs") << "a#b?c%41 d.mp3"
                                                      << "a%23b%3Fc%2541 d.mp3";
        QTest::newRow("not ASCII") << QStringLiteral("Tür.mp3") << QStringLiteral("Tür.mp3");
        QTest::newRow("what looks like a scheme") << "http:list.pls"
                                                  << "http:list.pls";
        QTest::newRow("option that is a file") << "--help.pls"
                                               << "--help.pls";
        QTest::newRow("in a folder") << "sub/../sub/list.pls"
                                     << "sub/list.pls";
        QTest::newRow("folder") << "sub"
                                << "sub";
    }

    void nameOfAFileIsAsGoodAsItsUrl()
    {
        QFETCH(QString, name);
        QFETCH(QString, url);
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir("sub"));
        const QString path = QDir::cleanPath(folder.filePath(name));
        if (!QFileInfo::exists(path)) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        const QString found = QStringLiteral("Found URL: QUrl(\"file://%1/%2\")").arg(folder.path(), url);
        for (const QString &argument : {name, folder.filePath(name)}) {
            QProcess program;
            program.setWorkingDirectory(folder.path());
            const QStringList log = logOfStart(program, {argument});
            QCOMPARE(log.filter("Found URL:"), QStringList(found));
            QVERIFY(log.contains("void KelvoGUIMain::playPlaylist(const QUrl&, const QString&)"));
        }
    }

    void nameOfNoFileIsTakenAsAUrl()
    {
        const QTemporaryDir folder;
        QProcess program;
        program.setWorkingDirectory(folder.path());
        QCOMPARE(logOfStart(program, {"absent.pls"}).filter("Found URL:"),
            QStringList("Found URL: QUrl(\"absent.pls\")"));
    }

    void helpAndVersionAsTheOnlyArgument_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QString>("answer"); // how it begins
        QTest::newRow("help") << "--help"
                              << "Usage: kelvo-test-gui ";
        QTest::newRow("version") << "--version"
                                 << "kelvo-test-gui " KELVO_TEST_VERSION "\n";
    }

    void helpAndVersionAsTheOnlyArgument()
    {
        QFETCH(QString, argument);
        QFETCH(QString, answer);
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "HOME"})
            environment.remove(name);
        program.setProcessEnvironment(environment);
        program.start(path(), {argument});
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QCOMPARE(program.readAllStandardError(), QByteArray());
        const QString output = QString::fromUtf8(program.readAllStandardOutput());
        QVERIFY2(output.startsWith(answer), qPrintable(output));
        for (const QString &line : output.split('\n'))
            QVERIFY2(line.size() <= 80, qPrintable(line));
    }

    void anAnswerThatCannotBeWrittenIsAFailure()
    {
        QProcess program;
        program.setStandardOutputFile("/dev/full");
        program.start(path(), {"--help"});
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 1);
    }

    void helpAndVersionBesideOthersAreNothingSpecial_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("help last") << QStringList({"http://h/list.pls", "--help"});
        QTest::newRow("version last") << QStringList({"--help", "--version"});
        QTest::newRow("help first") << QStringList({"--help", "http://h/list.pls"});
        QTest::newRow("other spelling") << QStringList({"-help"});
    }

    void helpAndVersionBesideOthersAreNothingSpecial()
    {
        QFETCH(QStringList, arguments);
        QProcess program;
        QCOMPARE(logOfStart(program, arguments).filter("Found URL:"),
            QStringList(QStringLiteral("Found URL: QUrl(\"%1\")").arg(arguments.constLast())));
    }

    void theArgumentIsPlayedAsAPlaylistWhateverItNames_data()
    {
        QTest::addColumn<QString>("url");
        QTest::newRow("playlist") << "http://h/list.pls";
        QTest::newRow("another kind of playlist") << "http://h/list.m3u";
        QTest::newRow("song") << "file:///music/song.ogg";
    }

    void theArgumentIsPlayedAsAPlaylistWhateverItNames()
    {
        QFETCH(QString, url);
        QProcess program;
        program.setProcessEnvironment(startRenderer());
        const QStringList log = logOfStart(program, {url});
        QCOMPARE(log.filter("start renderer plays"),
            QStringList(QStringLiteral("start renderer plays %1 as audio/x-scpls").arg(url)));
    }

    void backEndsAreStoppedAtTheEnd()
    {
        QProcess program;
        QProcessEnvironment environment = startRenderer();
        environment.insert("KELVO_TEST_PLUGIN", "quits");
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(path(), {"http://h/list.pls"});
        QVERIFY(program.waitForFinished());
        const QStringList log = QString::fromLocal8Bit(program.readAll()).split('\n');
        QCOMPARE(program.exitCode(), 0);
        // While the application still stands.
        QCOMPARE(log.count("start renderer stops"), 1);
        QVERIFY(log.indexOf("start renderer stops") < log.indexOf("KelvoGUIMain::~KelvoGUIMain"));
    }

    void readOnlyHomeDoesNotMatter()
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name :
            {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            environment.insert(name, "/proc/self/nothing");
        program.setProcessEnvironment(environment);
        QVERIFY(logOfStart(program, {}).contains("initTracking success was false"));
    }

    void terminationSignalsCloseTheWindow_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void terminationSignalsCloseTheWindow()
    {
        QFETCH(int, signal);
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(path(), QStringList());
        QByteArray output;
        QVERIFY(readUntil(program, "\n1 ", &output));
        ::kill(pid_t(program.processId()), signal);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        output += program.readAll();
        qsizetype at = 0;
        for (const char *name : {"KelvoMainWindow", "KelvoGUIMain", "KelvoPlaylistController",
                 "KelvoRendererController", "KelvoSourceController", "KelvoPluginController"}) {
            at = output.indexOf(QByteArray("\n") + name + "::~" + name + "\n", at);
            QVERIFY2(at >= 0, output + "\nwithout " + name);
        }
    }

    void signalsThatWereIgnoredStayIgnored()
    {
        // As nohup starts programs.
        QProcess program;
        program.setChildProcessModifier([] { ::signal(SIGHUP, SIG_IGN); });
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(path(), QStringList());
        QByteArray output;
        QVERIFY(readUntil(program, "\n1 ", &output));
        QFile status(QStringLiteral("/proc/%1/status").arg(program.processId()));
        QVERIFY(status.open(QIODevice::ReadOnly));
        const QByteArray ignored = valueOf(status.readAll(), "SigIgn:");
        QVERIFY2(ignored.toULongLong(nullptr, 16) & (1ULL << (SIGHUP - 1)), ignored);
        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 0);
    }

    /// What is linked is looked at by tests/architecture; this is all that the program has loaded, Qt's own plug-ins
    /// included, when its window is there and no back end has been asked for.
    void librariesOfBackEndsAreNotLoadedWithoutOne()
    {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(path(), QStringList());
        QByteArray output;
        QVERIFY(readUntil(program, "\n1 ", &output));
        QFile maps(QStringLiteral("/proc/%1/maps").arg(program.processId()));
        QVERIFY(maps.open(QIODevice::ReadOnly));
        const QByteArray loaded = maps.readAll();
        QVERIFY(loaded.contains("/libkelvo-tracker.so"));
        for (const char *library :
            {"/libgst", "/libtag.so", "/libtotem-plparser", "/libuchardet", "/libgupnp", "/libgssdp"})
            QVERIFY2(!loaded.contains(library), library);
        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 0);
    }

    void standardErrorThatNobodyReadsStopsNothing()
    {
        FullPipe pipe;
        QProcess program;
        program.setChildProcessModifier([&] { ::dup2(pipe.writeEnd(), STDERR_FILENO); });
        program.start(path(), QStringList());
        QVERIFY(program.waitForStarted());
        // Ends as a console in use does, although not one line of it was read.
        QVERIFY(waitForHandlerOf(SIGTERM, program.processId()));
        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    void standardErrorThatIsReadLateIsComplete()
    {
        FullPipe pipe;
        QProcess program;
        program.setChildProcessModifier([&] { ::dup2(pipe.writeEnd(), STDERR_FILENO); });
        program.start(path(), QStringList());
        QVERIFY(program.waitForStarted());
        QVERIFY(waitForHandlerOf(SIGTERM, program.processId()));
        program.terminate();
        pipe.closeWriteEnd();
        const QByteArray log = pipe.readAll();
        QVERIFY(program.waitForFinished());
        qsizetype at = 0;
        for (const char *line : {"KelvoGUIMain::KelvoGUIMain", "KelvoMainWindow::KelvoMainWindow()",
                 "KelvoSourceController::KelvoSourceController", "KelvoMainWindow::~KelvoMainWindow",
                 "KelvoGUIMain::~KelvoGUIMain", "KelvoPluginController::~KelvoPluginController"}) {
            at = log.indexOf(line, at);
            QVERIFY2(at >= 0, log.mid(log.lastIndexOf("..")) + "\nwithout " + line);
        }
    }

    void standardErrorWhoseReaderIsGoneStopsNothing()
    {
        FullPipe pipe;
        QProcess program;
        program.setChildProcessModifier([&] { ::dup2(pipe.writeEnd(), STDERR_FILENO); });
        program.start(path(), QStringList());
        QVERIFY(program.waitForStarted());
        pipe.closeReadEnd();
        QVERIFY(waitForHandlerOf(SIGTERM, program.processId()));
        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    void aWaylandSessionWithoutX11NamesTheRemedy_data()
    {
        QTest::addColumn<QString>("display");
        QTest::newRow("dead display") << ":4242";
        QTest::newRow("no display") << QString();
    }

    void aWaylandSessionWithoutX11NamesTheRemedy()
    {
        QFETCH(QString, display);
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("QT_QPA_PLATFORM");
        environment.insert("WAYLAND_DISPLAY", "wayland-nowhere");
        environment.remove("DISPLAY");
        if (!display.isEmpty())
            environment.insert("DISPLAY", display);
        program.setProcessEnvironment(environment);
        program.start(path(), QStringList());
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 1);
        const QByteArray message = program.readAllStandardError();
        QVERIFY2(message.startsWith("kelvo-test-gui: No display: "), message.constData());
        QVERIFY2(message.contains("DISPLAY") && message.contains("wayland-nowhere"), message.constData());
        QCOMPARE(message.count('\n'), 1);
    }

    void displayOfTheCommandLineIsTaken_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("one dash") << "-display";
        QTest::newRow("two dashes") << "--display";
    }

    void displayOfTheCommandLineIsTaken()
    {
        QFETCH(QString, option);
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("WAYLAND_DISPLAY");
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("DISPLAY", ":4141");
        program.setProcessEnvironment(environment);
        program.start(path(), {option, ":4242"});
        QVERIFY(program.waitForFinished());
        const QByteArray message = program.readAllStandardError();
        QVERIFY2(message.startsWith("kelvo-test-gui: No display: ") && message.contains("\":4242\""),
            message.constData());
    }

    void noDisplayIsSaid_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("platform");
        QTest::addColumn<QString>("display");
        QTest::newRow("nothing set") << QStringList() << QString() << QString();
        QTest::newRow("asked for X11") << QStringList() << "xcb" << QString();
        QTest::newRow("asked for X11 by argument")
            << QStringList({"-platform", "xcb"}) << QString() << QString();
        QTest::newRow("no such server") << QStringList() << QString() << ":4242";
    }

    void noDisplayIsSaid()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, platform);
        QFETCH(QString, display);
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("WAYLAND_DISPLAY");
        environment.remove("QT_QPA_PLATFORM");
        environment.remove("DISPLAY");
        if (!platform.isEmpty())
            environment.insert("QT_QPA_PLATFORM", platform);
        if (!display.isEmpty())
            environment.insert("DISPLAY", display);
        program.setProcessEnvironment(environment);
        program.start(path(), arguments);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 1);
        const QByteArray message = program.readAllStandardError();
        QVERIFY2(message.startsWith("kelvo-test-gui: No display: "), message.constData());
        QCOMPARE(message.count('\n'), 1);
    }

private:
    static QString path() { return QStringLiteral(KELVO_TEST_PROGRAM); }

    static bool readUntil(QProcess &program, const QByteArray &mark, QByteArray *output)
    {
        while (!output->contains(mark) && program.waitForReadyRead(20000))
            *output += program.readAll();
        return output->contains(mark);
    }

    /// What a line of a status file says.
    static QByteArray valueOf(const QByteArray &status, const QByteArray &name)
    {
        const qsizetype at = status.indexOf('\n' + name);
        return at < 0 ? QByteArray() : status.mid(at + 1 + name.size()).split('\n').first().trimmed();
    }

    /// Waits until the process, which has been started, catches the signal.
    static bool waitForHandlerOf(int signal, qint64 process)
    {
        return QTest::qWaitFor(
            [&] {
                QFile status(QStringLiteral("/proc/%1/status").arg(process));
                return status.open(QIODevice::ReadOnly)
                    && valueOf(status.readAll(), "SigCgt:").toULongLong(nullptr, 16) & (1ULL << (signal - 1));
            },
            20'000);
    }

    /// With the renderer that tells what it is to play.
    static QProcessEnvironment startRenderer()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("KELVO_PLUGIN_PATH", environment.value("KELVO_TEST_PLUGIN_DIR"));
        environment.insert("KELVO_PLUGINS", "start-renderer");
        return environment;
    }

    /// All lines until the event loop runs; the program is ended then.
    static QStringList logOfStart(QProcess &program, const QStringList &arguments)
    {
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(path(), arguments);
        QByteArray output;
        const QByteArray mark = arguments.isEmpty() ? QByteArray("\n1 ") : QByteArray("\nFound URL:");
        // The lines behind the mark are written before the program first waits for events.
        while (!(output.contains(mark) && output.endsWith('\n')) && program.waitForReadyRead(20000))
            output += program.readAll();
        while (program.waitForReadyRead(300))
            output += program.readAll();
        program.terminate();
        program.waitForFinished();
        return QString::fromLocal8Bit(output + program.readAll()).split('\n');
    }
};

KELVO_WIDGET_TEST(ProgramTest)
#include "ProgramTest.moc"
