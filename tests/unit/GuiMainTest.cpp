// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoPlaylistController.h"
#include "KelvoRegistry.h"
#include "KelvoRendererController.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"

#include <QCheckBox>
#include <QDialog>
#include <QListView>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

namespace {
/// A browser that writes its process id and its argument into a file and then waits to be ended.
QString writeBrowser(const QTemporaryDir &folder)
{
    QFile script(folder.filePath("browser.sh"));
    if (!script.open(QIODevice::WriteOnly))
        return {};
    script.write(
        "#!/bin/sh\necho \"$$ $#:$1\" >> " + folder.filePath("started").toLocal8Bit() + "\nexec sleep 600\n");
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return script.fileName();
}

QStringList started(const QTemporaryDir &folder)
{
    QFile file(folder.filePath("started"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLocal8Bit(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

/// Who was made, and whose signals the window connected when, as the log says; without the window's dialogs.
QStringList constructions(const QStringList &lines)
{
    static const QRegularExpression made(
        R"(^(Kelvo(?!\w*Dialog)\w+)::\1\b|^KelvoMainWindow::(connect(?!Plugin)\w+Signals)$|^initTracking )");
    QStringList names;
    for (const QString &line : lines) {
        const QRegularExpressionMatch match = made.match(line);
        if (match.hasMatch())
            names.append(!match.captured(1).isEmpty() ? match.captured(1)
                    : !match.captured(2).isEmpty()    ? match.captured(2)
                                                      : QStringLiteral("tracking"));
    }
    return names;
}

/// Gives away a private member: an explicit instantiation may name it.
template <auto Member> struct Opened
{
    friend QProcess &browserOf(KelvoGUIMain &application) { return application.*Member; }
};
QProcess &browserOf(KelvoGUIMain &application);
template struct Opened<&KelvoGUIMain::m_browserProcess>;

bool runs(const QString &startedLine)
{
    return QFileInfo::exists(QStringLiteral("/proc/%1").arg(startedLine.section(' ', 0, 0)));
}
} // namespace

/// The application object: what it makes, in which order, and its services.
class GuiMainTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { qunsetenv("KELVO_BROWSER"); }

    void constructionOrder()
    {
        LogRecorder log;
        const ConsoleFixture console;
        QCOMPARE(log.lines().first(), QStringLiteral("KelvoGUIMain::KelvoGUIMain"));
        QCOMPARE(constructions(log.lines()),
            QStringList({"KelvoGUIMain", "KelvoMainWindow", "tracking", "KelvoRendererController",
                "connectRendererSignals", "KelvoPlaylistController", "connectPlaylistSignals",
                "KelvoSourceController", "KelvoQueryController", "KelvoBrowseController",
                "KelvoThumbnailDownloader", "connectSourceSignals", "KelvoPluginController"}));
    }

    void windowIsShown()
    {
        const ConsoleFixture console;
        QVERIFY(console.window()->isVisible());
        QVERIFY(!console.window()->parentWidget());
    }

    void accessorsLogAndReturn()
    {
        const ConsoleFixture console;
        LogRecorder log;
        QVERIFY(console.application()->playlists());
        QVERIFY(console.application()->renderers());
        QVERIFY(console.application()->sources());
        QCOMPARE(log.lines(),
            QStringList({"KelvoGUIMain::playlists", "KelvoGUIMain::renderers", "KelvoGUIMain::sources"}));
    }

    void isAPlainObject() { QCOMPARE(KelvoGUIMain::staticMetaObject.className(), "QObject"); }

    void destructionOrder()
    {
        auto console = std::make_unique<ConsoleFixture>();
        LogRecorder log;
        console.reset();
        QVERIFY(log.containsInOrder({"KelvoMainWindow::~KelvoMainWindow", "KelvoGUIMain::~KelvoGUIMain",
            "KelvoPlaylistController::~KelvoPlaylistController",
            "KelvoRendererController::~KelvoRendererController",
            "KelvoSourceController::~KelvoSourceController", "KelvoQueryController::~KelvoQueryController",
            "KelvoThumbnailDownloader::~KelvoThumbnailDownloader",
            "KelvoPluginController::~KelvoPluginController"}));
    }

    void closingTheWindowDeletesIt()
    {
        const ConsoleFixture console;
        QPointer<KelvoMainWindow> window = console.window();
        window->close();
        QTRY_VERIFY(!window);
    }

    void playPlaylistStartsTheNextKelvoGstRenderer()
    {
        const ConsoleFixture console;
        LogRecorder log;
        console.application()->playPlaylist(QUrl("http://host/list.pls"), "audio/x-scpls");
        QVERIFY(log.contains("void KelvoGUIMain::playPlaylist(const QUrl&, const QString&)"));
        RecordingRenderer renderer("gst", "KelvoGstRenderer");
        KelvoRegistry::instance()->addRenderer(&renderer);
        QVERIFY(renderer.calls().contains("playUriWithType(http://host/list.pls,audio/x-scpls)"));
    }

    void browserGetsOneArgument()
    {
        QTemporaryDir folder;
        qputenv("KELVO_BROWSER", writeBrowser(folder).toLocal8Bit());
        const ConsoleFixture console;
        console.application()->startBrowser("http://host/page");
        QTRY_COMPARE(started(folder).size(), 1);
        QVERIFY(started(folder).first().endsWith(" 1:http://host/page"));
    }

    void secondBrowserEndsTheFirst()
    {
        QTemporaryDir folder;
        qputenv("KELVO_BROWSER", writeBrowser(folder).toLocal8Bit());
        const ConsoleFixture console;
        console.application()->startBrowser("first");
        QTRY_COMPARE(started(folder).size(), 1);
        console.application()->startBrowser("second");
        QVERIFY(!runs(started(folder).first()));
        QTRY_COMPARE(started(folder).size(), 2);
        QVERIFY(runs(started(folder).last()));
    }

    void browserEndsWithTheApplication()
    {
        QTemporaryDir folder;
        qputenv("KELVO_BROWSER", writeBrowser(folder).toLocal8Bit());
        {
            const ConsoleFixture console;
            console.application()->startBrowser("page");
            QTRY_COMPARE(started(folder).size(), 1);
        }
        QVERIFY(!runs(started(folder).first()));
    }

    void anEmptyNameOfTheBrowserIsNone()
    {
        QTemporaryDir folder;
        qputenv("KELVO_BROWSER", "");
        const ConsoleFixture console;
        // Without a launcher in front of it the argument would become the program.
        console.application()->startBrowser(writeBrowser(folder));
        QProcess after;
        after.start(writeBrowser(folder), {"after"});
        QTRY_COMPARE(started(folder).size(), 1);
        QVERIFY(started(folder).first().endsWith(" 1:after"));
        after.kill();
        QVERIFY(after.waitForFinished());
    }

    void browserThatCannotStartIsNotReported()
    {
        qputenv("KELVO_BROWSER", "/nonexistent/browser");
        const ConsoleFixture console;
        const QProcess &browser = browserOf(*console.application());
        QSignalSpy failures(&browser, &QProcess::errorOccurred);
        LogRecorder log;
        const ModalCloser closer;
        console.application()->startBrowser("page");
        QTRY_COMPARE(failures.count(), 1);
        console.application()->startBrowser("page");
        QTRY_COMPARE(failures.count(), 2);
        QCOMPARE(browser.error(), QProcess::FailedToStart);
        QCoreApplication::processEvents(); // what was queued by the failure
        QCOMPARE(log.lines(), QStringList({"KelvoGUIMain::startBrowser", "KelvoGUIMain::startBrowser"}));
        QCOMPARE(closer.seen(), QStringList());
        for (const QDialog *dialog : console.window()->findChildren<QDialog *>())
            QVERIFY2(!dialog->isVisible(), qPrintable(dialog->objectName()));
    }

    void withoutAChoiceTheBrowserIsTheOneOfTheDevice()
    {
        qunsetenv("KELVO_BROWSER");
        const ConsoleFixture console;
        console.application()->startBrowser("http://host/a page");
        const QProcess &browser = browserOf(*console.application());
        QCOMPARE(browser.program(), QStringLiteral("/usr/lib/fennec/fennec.sh"));
        QCOMPARE(browser.arguments(), QStringList({"http://host/a", "page"})); // as it was given, unquoted
    }

    void launchBrowserNeedsASelection_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("view"); // empty: nothing happens on this tab
        QTest::newRow("music") << 0 << QString();
        QTest::newRow("video") << 1 << QString();
        QTest::newRow("images") << 2 << QString();
        QTest::newRow("browse") << 3 << "m_browse_resultsView";
        QTest::newRow("query") << 4 << "m_query_resultsView";
    }

    void launchBrowserNeedsASelection()
    {
        QFETCH(int, tab);
        QFETCH(QString, view);
        QTemporaryDir folder;
        qputenv("KELVO_BROWSER", writeBrowser(folder).toLocal8Bit());
        QStandardItemModel model(2, 2);
        const ConsoleFixture console;
        console.find<QTabWidget>("m_tabs")->setCurrentIndex(tab);
        console.window()->showQueryResults(&model);
        console.window()->showBrowseResults(&model);
        LogRecorder log;
        console.find<QAction>("m_actionLaunchBrowser")->trigger();
        QCOMPARE(log.lines().first(), QStringLiteral("KelvoMainWindow::launchBrowser"));
        QCOMPARE(log.contains("Please select item to launch!"), !view.isEmpty());
        if (view.isEmpty()) {
            QCOMPARE(log.lines().size(), 1);
            return;
        }
        console.window()->findChild<QListView *>(view)->setCurrentIndex(model.index(0, 1));
        console.find<QAction>("m_actionLaunchBrowser")->trigger();
        QCOMPARE(log.lines().filter("KelvoSourceController::launchBrowser launch \"https://").size(), 1);
        QTRY_COMPARE(started(folder).size(), 1);
    }

    void acceptedUriIsPlayed_data()
    {
        QTest::addColumn<QString>("uri");
        QTest::addColumn<bool>("playlist");
        QTest::addColumn<QUrl>("url");
        QTest::newRow("media") << "http://h/a%20b.ogg" << false << QUrl::fromEncoded("http://h/a%20b.ogg");
        QTest::newRow("playlist") << "http://h/a.pls" << true << QUrl("http://h/a.pls");
    }

    void acceptedUriIsPlayed()
    {
        QFETCH(QString, uri);
        QFETCH(bool, playlist);
        QFETCH(QUrl, url);
        const ConsoleFixture console;
        auto *dialog = console.find<QDialog>("PlayUriDialog");
        QSignalSpy play(console.window(), SIGNAL(playUri(QUrl, QString)));
        console.find<QAction>("m_actionPlayUri")->trigger();
        dialog->accept(); // nothing clicked yet
        QCOMPARE(play.count(), 0);

        console.window()->addUriToPlayUriDialog(uri);
        auto *list = dialog->findChild<QListWidget *>("m_playlistView");
        Q_EMIT list->itemClicked(list->item(0));
        dialog->findChild<QCheckBox *>("m_isPlaylistCheckBox")->setChecked(playlist);
        dialog->findChild<QPushButton *>("m_playButton")->click();
        QCOMPARE(play, QList<QVariantList>({{url, playlist ? QStringLiteral("audio/x-scpls") : QString()}}));

        console.find<QAction>("m_actionPlayUri")->trigger();
        QCOMPARE(list->count(), 0);
        dialog->findChild<QPushButton *>("m_playButton")->click(); // the URI clicked last
        QCOMPARE(play.count(), 2);
    }
};

KELVO_WIDGET_TEST(GuiMainTest)
#include "GuiMainTest.moc"
