// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoBuild.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

/// What the window's constructor and destructor do beyond the form.
class WindowStartTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void logsRevisionAndBuildTimeFirst()
    {
        LogRecorder log;
        ConsoleFixture console;
        const QStringList expected = {
            QStringLiteral("kelvo-test-gui revision: ") + QLatin1String(KelvoBuild::revision()),
            QStringLiteral("kelvo-test-gui builtime: ") + QLatin1String(KelvoBuild::time()),
            QStringLiteral("KelvoMainWindow::KelvoMainWindow()"),
            QStringLiteral("KelvoHelpDialog::KelvoHelpDialog"),
            QStringLiteral("KelvoPlaylistDialog::KelvoPlaylistDialog"),
            QStringLiteral("KelvoPlayUriDialog::KelvoPlayUriDialog"),
            QStringLiteral("KelvoRendererErrorLogDialog::KelvoRendererErrorLogDialog"),
            QStringLiteral("KelvoSearchDialog::KelvoSearchDialog"),
            QStringLiteral("KelvoSourceDialog::KelvoSourceDialog"),
            QStringLiteral("KelvoSourcePropertiesDialog::KelvoSourcePropertiesDialog"),
            QStringLiteral("KelvoVolumeDialog::KelvoVolumeDialog"),
            QStringLiteral("KelvoSelectItemsDialog::KelvoSelectItemsDialog"),
            QStringLiteral("KelvoSelectItemsDialog::KelvoSelectItemsDialog"),
            QStringLiteral("KelvoMainWindow::showDuration 0"),
        };
        QVERIFY(log.containsInOrder(expected));
    }

    void buildTimeIsADate()
    {
        // For instance "Sat Nov 21 03:36:57 UTC 2026"; words differ by locale.
        const QRegularExpression date(
            QStringLiteral("\\d{1,2}:\\d\\d:\\d\\d.*\\b20\\d\\d\\b|\\b20\\d\\d\\b.*\\d{1,2}:\\d\\d:\\d\\d"));
        QVERIFY2(date.match(QLatin1String(KelvoBuild::time())).hasMatch(), KelvoBuild::time());
        QVERIFY(qstrlen(KelvoBuild::revision()) > 0);
    }

    void startsOnTheMusicTabWithZeroDuration()
    {
        ConsoleFixture console;
        QCOMPARE(console.find<QTabWidget>("m_tabs")->currentIndex(), 0);
        for (const char *name : {"m_music_durationLabel", "m_video_durationLabel"})
            QCOMPARE(console.find<QLabel>(name)->text(), QStringLiteral("0:00 /\n0:00"));
        for (const char *name : {"m_music_durationSlider", "m_video_durationSlider"})
            QCOMPARE(console.find<QSlider>(name)->maximum(), 10);
    }

    void videoLabelHidesThePointer()
    {
        ConsoleFixture console;
        QCOMPARE(console.find<QLabel>("m_video_videoLabel")->cursor().shape(), Qt::BlankCursor);
    }

    void videoPageHasAWindowOfItsOwn()
    {
        ConsoleFixture console;
        const auto *page = console.find<QWidget>("tab_video");
        QVERIFY(page->testAttribute(Qt::WA_NativeWindow));
        QVERIFY(page->testAttribute(Qt::WA_DontCreateNativeAncestors));
        QCOMPARE(console.find<QLabel>("m_video_videoLabel")->nativeParentWidget(), page);
        QVERIFY(!console.find<QTabWidget>("m_tabs")->testAttribute(Qt::WA_NativeWindow));
    }

    void dialogsAreChildrenOfTheWindow()
    {
        ConsoleFixture console;
        QStringList dialogs;
        const auto children
            = console.window()->findChildren<QDialog *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QDialog *dialog : children) {
            dialogs.append(dialog->objectName());
            QVERIFY(!dialog->isVisible());
        }
        QVERIFY(dialogs.contains(QStringLiteral("CreatePlaylistDialog")));
        QVERIFY(dialogs.contains(QStringLiteral("PlayUriDialog")));
        QVERIFY(dialogs.contains(QStringLiteral("RendererErrorLogDialog")));
        QVERIFY(dialogs.contains(QStringLiteral("SearchDialog")));
        QVERIFY(dialogs.contains(QStringLiteral("SelectSourcesDialog")));
        QVERIFY(dialogs.contains(QStringLiteral("SourcePropertiesDialog")));
        QVERIFY(dialogs.contains(QStringLiteral("VolumeDialog")));
        QVERIFY(dialogs.contains(QStringLiteral("HelpDialog")));
        QCOMPARE(dialogs.count(QStringLiteral("LoadPluginsDialog")), 2);
    }

    void destructorDeletesTheFullScreenWidgetAndLogs()
    {
        const qsizetype before = QApplication::topLevelWidgets().size();
        {
            ConsoleFixture console;
            LogRecorder log;
            delete console.window();
            QVERIFY(log.contains(QStringLiteral("KelvoMainWindow::~KelvoMainWindow")));
        }
        QCOMPARE(QApplication::topLevelWidgets().size(), before);
    }

    void signalsInOrderOfDeclaration()
    {
        QStringList names;
        const QMetaObject &meta = KelvoMainWindow::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            if (method.methodType() != QMetaMethod::Signal)
                continue;
            const QByteArrayList parameters = method.parameterNames();
            names.append(QString::fromLatin1(method.methodSignature() + ' ' + parameters.join(',')));
        }
        QCOMPARE(names,
            QStringList({"play() ", "playUri(QUrl,QString) ,contentType", "playUri(QUrl) ", "pause() ",
                "resume() ", "seek(int) position", "videoScreenXIDChanged(uint) xid",
                "itemDoubleClicked(uint) index", "queryResultsAvailable() ", "browseResultsAvailable() ",
                "currentPlaylistChanged(QString) uuid", "currentRendererChanged(QString) uuid",
                "immediateSeek(uint) position"}));
    }

    void slotsInOrderOfDeclaration()
    {
        QStringList names;
        const QMetaObject &meta = KelvoMainWindow::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).methodType() == QMetaMethod::Slot)
                names.append(QString::fromLatin1(meta.method(i).methodSignature()));
        }
        QCOMPARE(names,
            QStringList({"showMuted(bool)", "showShowPauseFrame(bool)", "showShuffled(bool)",
                "showRepeated(QString)", "showPlayButton()", "showPauseButton()", "showResumeButton()",
                "showFetchRestButton()", "setQueryButtonsEnabled(bool)", "showHelpDialog()",
                "showQueryPropertiesDialog()", "showPlayUriDialog()", "showPlaybackCompletedDialog()",
                "playUriDialogAccepted()", "syncPlaylists(int)", "emitIndex(QModelIndex)", "emitPosition()",
                "hideFullScreenVideo()", "startQueryDebugTimer()", "stopQueryDebugTimer()",
                "updateQueryResultLabel()", "updateBrowseResultLabel()", "currentRendererChanged(int)",
                "immediateSeekRequest()", "launchBrowser()"}));
    }

    void nothingIsCut_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("handset") << QSize(800, 480);
        QTest::newRow("desktop") << QSize(1280, 800);
    }

    void nothingIsCut()
    {
        QFETCH(QSize, size);
        ConsoleFixture console;
        console.window()->resize(size);
        QCOMPARE(console.window()->size(), size);
        auto *tabs = console.find<QTabWidget>("m_tabs");
        for (int i = 0; i < tabs->count(); ++i) {
            tabs->setCurrentIndex(i);
            QCoreApplication::processEvents();
            const auto buttons = tabs->currentWidget()->findChildren<QToolButton *>();
            for (const QToolButton *button : buttons) {
                QVERIFY2(button->width() >= button->sizeHint().width()
                        && button->height() >= button->sizeHint().height(),
                    qPrintable(button->objectName()));
                QVERIFY2(tabs->currentWidget()->rect().contains(button->geometry()),
                    qPrintable(button->objectName()));
            }
        }
    }

    void tabsOfANarrowWindowGiveUpTheirBlanksOnly()
    {
        ConsoleFixture console;
        console.window()->resize(800, 480);
        const QTabBar *bar = console.find<QTabWidget>("m_tabs")->tabBar();
        QVERIFY(bar->isVisible());
        for (int i = 0; i < bar->count(); ++i) {
            QVERIFY(bar->rect().contains(bar->tabRect(i)));
            QVERIFY(
                bar->tabRect(i).width() > bar->fontMetrics().horizontalAdvance(bar->tabText(i).trimmed()));
        }
    }

    void everyMenuFitsTheBar()
    {
        ConsoleFixture console;
        console.window()->resize(800, 480);
        const QMenuBar *bar = console.window()->menuBar();
        const QList<QAction *> actions = bar->actions();
        for (QAction *action : actions)
            QVERIFY2(bar->rect().contains(bar->actionGeometry(action)), qPrintable(action->text()));
    }
};

KELVO_WIDGET_TEST(WindowStartTest)
#include "WindowStartTest.moc"
