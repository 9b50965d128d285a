// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QProgressBar>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QTest>
#include <QTextEdit>
#include <QToolButton>

namespace {
const char *const playlistCombos[]
    = {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"};
const char *const playbackButtons[]
    = {"m_music_playButton", "m_music_stopButton", "m_music_prevButton", "m_music_nextButton",
        "m_music_seekBackButton", "m_music_seekForwButton", "m_video_playButton", "m_video_stopButton",
        "m_video_prevButton", "m_video_nextButton", "m_video_seekBackButton", "m_video_seekForwButton"};

void fill(QStandardItemModel &model, int rows)
{
    for (int row = 0; row < rows; ++row)
        model.appendRow(
            {new QStandardItem(QString::number(row)), new QStandardItem(QStringLiteral("t%1").arg(row))});
}
} // namespace

/// The display operations of the music and video tabs, each for itself.
class PlaybackDisplayTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_window = new KelvoMainWindow(nullptr, nullptr);
    }
    void cleanup() { delete m_window; }

    void namedOperationsLogTheirNames()
    {
        QStandardItemModel model(1, 2);
        LogRecorder log;
        m_window->showPlaylist(&model);
        m_window->clearPlaylist();
        m_window->showPlaylistName("u", "n", true);
        m_window->updateCurrentPlaylist("u");
        m_window->updateCurrentPlaylistIndex(3);
        m_window->getCurrentPlaylistIndex();
        m_window->firstSelectedPlaylistIndex();
        m_window->lastSelectedPlaylistIndex();
        m_window->showRendererName("name", "uuid", true);
        m_window->changeRendererName("uuid", "other");
        m_window->clearMetadata();
        m_window->showDuration(5);
        m_window->getVideoXID();
        m_window->setVideoLabelColorKey(0);
        QCOMPARE(log.lines(),
            QStringList({"KelvoMainWindow::showPlaylist", "KelvoMainWindow::clearPlaylist",
                "KelvoMainWindow::showPlaylistName", "KelvoMainWindow::updateCurrentPlaylist",
                "KelvoMainWindow::updateCurrentPlaylistIndex (index= 3 )",
                "KelvoMainWindow::int getCurrentPlaylistIndex", "KelvoMainWindow::firstSelectedPlaylistIndex",
                "KelvoMainWindow::lastSelectedPlaylistIndex",
                "KelvoMainWindow::showRendererName, \"name\" \"uuid\" true",
                "KelvoMainWindow::changeRendererName, uuid = \"uuid\" newName = \"other\"",
                "KelvoMainWindow::clearMetadata", "KelvoMainWindow::showDuration 5",
                "KelvoMainWindow::getVideoXID", "void KelvoMainWindow::setVideoLabelColorKey(uint)"}));
    }

    void smallSettersAndFrequentDisplaysLogNothing()
    {
        LogRecorder log;
        m_window->showPosition(3);
        m_window->showBufferingInfo("x", 0.5F);
        m_window->showMetadata("k", "v");
        m_window->showPlayButton();
        m_window->showPauseButton();
        m_window->showResumeButton();
        m_window->showPolicyOverride(true);
        m_window->showMuted(true);
        m_window->showShowPauseFrame(true);
        m_window->showShuffled(true);
        m_window->showRepeated("x");
        QCOMPARE(log.lines(), QStringList());
    }

    void playlistIsShownByItsTitles()
    {
        QStandardItemModel model;
        fill(model, 3);
        m_window->showPlaylist(&model);
        QCOMPARE(find<QListView>("m_music_playlistView")->model(), &model);
        QCOMPARE(find<QListView>("m_music_playlistView")->modelColumn(), 1);
    }

    void nullPlaylistModelIsIgnored()
    {
        QStandardItemModel model(1, 2);
        m_window->showPlaylist(&model);
        m_window->showPlaylist(nullptr);
        QCOMPARE(find<QListView>("m_music_playlistView")->model(), &model);
    }

    void clearPlaylistTakesTheModelOut()
    {
        QStandardItemModel model(1, 2);
        m_window->showPlaylist(&model);
        m_window->clearPlaylist();
        QCOMPARE(find<QListView>("m_music_playlistView")->model(), nullptr);
    }

    void refreshingDoesNotCollectSelectionModels()
    {
        QStandardItemModel model(1, 2);
        auto *view = find<QListView>("m_music_playlistView");
        for (int i = 0; i < 100; ++i) {
            m_window->clearPlaylist();
            m_window->showPlaylist(&model);
        }
        QVERIFY(view->findChildren<QItemSelectionModel *>().size() <= 1);
    }

    void playlistNamesStandInAllThreeBoxes()
    {
        m_window->showPlaylistName("u1", "one", true);
        m_window->showPlaylistName("u2", "two", true);
        for (const char *name : playlistCombos) {
            const auto *combo = find<QComboBox>(name);
            QCOMPARE(combo->count(), 2);
            QCOMPARE(combo->itemText(1), QStringLiteral("two"));
            QCOMPARE(combo->itemData(1, Qt::UserRole).toString(), QStringLiteral("u2"));
        }
    }

    void playlistRemovalComparesTheUuidExactly()
    {
        m_window->showPlaylistName("Uuid", "one", true);
        m_window->showPlaylistName("uuid", "two", true);
        m_window->showPlaylistName("UUID", "one", false);
        QCOMPARE(find<QComboBox>("m_query_playlistCombo")->count(), 2);
        m_window->showPlaylistName("uuid", "any name", false);
        for (const char *name : playlistCombos) {
            QCOMPARE(find<QComboBox>(name)->count(), 1);
            QCOMPARE(find<QComboBox>(name)->itemText(0), QStringLiteral("one"));
        }
    }

    void updateCurrentPlaylistSelectsItsEntry()
    {
        m_window->showPlaylistName("u1", "one", true);
        m_window->showPlaylistName("u2", "two", true);
        m_window->updateCurrentPlaylist("u2");
        QCOMPARE(find<QComboBox>("m_music_playlistCombo")->currentIndex(), 1);
    }

    void unknownPlaylistLeavesTheSelection()
    {
        m_window->showPlaylistName("u1", "one", true);
        m_window->updateCurrentPlaylist("unknown");
        QCOMPARE(find<QComboBox>("m_music_playlistCombo")->currentIndex(), 0);
        m_window->showPlaylistName("unknown", "x", false);
        QCOMPARE(find<QComboBox>("m_music_playlistCombo")->count(), 1);
    }

    void currentIndexOfThePlaylistView()
    {
        QStandardItemModel model;
        fill(model, 5);
        QCOMPARE(m_window->getCurrentPlaylistIndex(), -1);
        m_window->updateCurrentPlaylistIndex(2); // no model yet
        QCOMPARE(m_window->getCurrentPlaylistIndex(), -1);
        m_window->showPlaylist(&model);
        m_window->updateCurrentPlaylistIndex(2);
        QCOMPARE(m_window->getCurrentPlaylistIndex(), 2);
        QCOMPARE(find<QListView>("m_music_playlistView")->currentIndex().column(), 1);
        m_window->updateCurrentPlaylistIndex(-1);
        QVERIFY(find<QListView>("m_music_playlistView")->selectionModel()->selection().isEmpty());
        QCOMPARE(m_window->getCurrentPlaylistIndex(), -1);
    }

    void selectedRowsWhateverTheOrderOfSelection()
    {
        QStandardItemModel model;
        fill(model, 8);
        QCOMPARE(m_window->firstSelectedPlaylistIndex(), -1);
        QCOMPARE(m_window->lastSelectedPlaylistIndex(), -1);
        m_window->showPlaylist(&model);
        QCOMPARE(m_window->firstSelectedPlaylistIndex(), -1);
        auto *selection = find<QListView>("m_music_playlistView")->selectionModel();
        for (int row : {5, 2, 4})
            selection->select(model.index(row, 1), QItemSelectionModel::Select);
        QCOMPARE(m_window->firstSelectedPlaylistIndex(), 2);
        QCOMPARE(m_window->lastSelectedPlaylistIndex(), 5);
    }

    void renderersAreListedOnce()
    {
        const auto *combo = find<QComboBox>("m_music_rendererCombo");
        m_window->showRendererName("one", "u1", true);
        m_window->showRendererName("again", "u1", true);
        m_window->showRendererName("other", "U1", true);
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->itemText(0), QStringLiteral("one"));
        QCOMPARE(combo->itemData(1).toString(), QStringLiteral("U1"));
        m_window->showRendererName("whatever", "u1", false);
        m_window->showRendererName("whatever", "unknown", false);
        QCOMPARE(combo->count(), 1);
        QCOMPARE(combo->itemText(0), QStringLiteral("other"));
    }

    void rendererNamesChange()
    {
        const auto *combo = find<QComboBox>("m_music_rendererCombo");
        m_window->showRendererName("one", "u1", true);
        m_window->showRendererName("two", "u2", true);
        m_window->changeRendererName("u2", "second");
        m_window->changeRendererName("unknown", "nobody");
        QCOMPARE(combo->itemText(0), QStringLiteral("one"));
        QCOMPARE(combo->itemText(1), QStringLiteral("second"));
    }

    void metadataInBothFields()
    {
        m_window->showMetadata("title", "A song");
        m_window->showMetadata("artist", "<b>Someone</b> & %1");
        for (const char *name : {"m_music_metadataField", "m_video_metadataField"})
            QCOMPARE(find<QTextEdit>(name)->toPlainText(),
                QStringLiteral("title: A song\nartist: <b>Someone</b> & %1"));
        m_window->clearMetadata();
        for (const char *name : {"m_music_metadataField", "m_video_metadataField"})
            QCOMPARE(find<QTextEdit>(name)->toPlainText(), QString());
    }

    void metadataIsShownFromItsFirstLine_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<int>("tab");
        QTest::newRow("music") << QByteArray("m_music_metadataField") << 0;
        QTest::newRow("video") << QByteArray("m_video_metadataField") << 1;
    }

    void metadataIsShownFromItsFirstLine()
    {
        QFETCH(QByteArray, field);
        QFETCH(int, tab);
        for (const int lines : {30, 40}) { // the second time for another item
            m_window->clearMetadata();
            for (int line = 0; line < lines; ++line)
                m_window->showMetadata("key", "value");
            find<QTabWidget>("m_tabs")->setCurrentIndex(tab);
            m_window->show();
            QVERIFY(QTest::qWaitForWindowExposed(m_window));
            QVERIFY(!find<QTextEdit>(field)->textCursor().hasSelection());
            const QScrollBar *bar = find<QTextEdit>(field)->verticalScrollBar();
            QVERIFY(bar->maximum() > 0);
            QCOMPARE(bar->value(), 0);
        }
    }

    void metadataThatIsReadStaysWhereItIs()
    {
        m_window->show();
        for (int line = 0; line < 100; ++line)
            m_window->showMetadata("key", "value");
        auto *field = find<QTextEdit>("m_music_metadataField");
        QVERIFY(field->verticalScrollBar()->maximum() > 20);
        field->verticalScrollBar()->setValue(20);
        m_window->showMetadata("another", "line");
        QCOMPARE(field->verticalScrollBar()->value(), 20);
    }

    void tenThousandMetadataLines()
    {
        for (int i = 0; i < 10000; ++i)
            m_window->showMetadata(QStringLiteral("key"), QString::number(i));
        const QString text = find<QTextEdit>("m_music_metadataField")->toPlainText();
        QCOMPARE(text.count(QLatin1Char('\n')), 9999);
        QVERIFY(text.endsWith(QLatin1String("key: 9999")));
    }

    void duration_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("maximum");
        QTest::newRow("zero has a range of ten") << 0 << "0:00 /\n0:00" << 10;
        QTest::newRow("unknown") << -1 << "0:00 /\n0:00" << 10;
        QTest::newRow("seconds") << 7 << "0:00 /\n0:07" << 7;
        QTest::newRow("minutes") << 236 << "0:00 /\n3:56" << 236;
        QTest::newRow("hours stay minutes") << 6000 << "0:00 /\n100:00" << 6000;
    }

    void duration()
    {
        QFETCH(int, seconds);
        QFETCH(QString, text);
        QFETCH(int, maximum);
        m_window->showDuration(236);
        m_window->showPosition(3);
        m_window->showDuration(seconds);
        for (const char *name : {"m_music_durationLabel", "m_video_durationLabel"})
            QCOMPARE(find<QLabel>(name)->text(), text);
        for (const char *name : {"m_music_durationSlider", "m_video_durationSlider"}) {
            QCOMPARE(find<QSlider>(name)->minimum(), 0);
            QCOMPARE(find<QSlider>(name)->maximum(), maximum);
            QCOMPARE(find<QSlider>(name)->value(), 0);
        }
    }

    void positionKeepsTheDuration()
    {
        m_window->showDuration(236);
        m_window->showBufferingInfo(QString(), 0.5F);
        m_window->showPosition(65);
        for (const char *name : {"m_music_durationLabel", "m_video_durationLabel"})
            QCOMPARE(find<QLabel>(name)->text(), QStringLiteral("1:05 /\n3:56"));
        for (const char *name : {"m_music_durationSlider", "m_video_durationSlider"})
            QCOMPARE(find<QSlider>(name)->value(), 65);
        for (const char *name : {"m_music_progressStack", "m_video_progressStack"})
            QCOMPARE(find<QStackedWidget>(name)->currentIndex(), 0);
    }

    void heldSliderIsLeftAloneUntilItIsReleased()
    {
        m_window->showDuration(100);
        auto *held = find<QSlider>("m_music_durationSlider");
        held->setSliderDown(true);
        held->setSliderPosition(70);
        m_window->showPosition(20);
        QCOMPARE(held->value(), 70);
        QCOMPARE(find<QSlider>("m_video_durationSlider")->value(), 20);
        held->setSliderDown(false);
        m_window->showPosition(21);
        QCOMPARE(held->value(), 21);
    }

    void videoLabelAlwaysReceivesTheMusicLabelsText()
    {
        m_window->showDuration(236);
        find<QLabel>("m_video_durationLabel")->setText(QStringLiteral("something else"));
        m_window->showPosition(65);
        QCOMPARE(find<QLabel>("m_video_durationLabel")->text(), QStringLiteral("1:05 /\n3:56"));
    }

    void buffering_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("fraction");
        QTest::addColumn<int>("percent");
        QTest::addColumn<QString>("musicText");
        QTest::addColumn<QString>("videoText");
        QTest::newRow("without a text the labels stay") << QString() << 0.5F << 50 << "0:00 /\n1:40"
                                                        << "0:00 /\n1:40";
        QTest::newRow("truncated") << QString() << 0.999F << 99 << "0:00 /\n1:40"
                                   << "0:00 /\n1:40";
        QTest::newRow("full") << QString() << 1.0F << 100 << "0:00 /\n1:40"
                              << "0:00 /\n1:40";
        QTest::newRow("scanning") << "Scanning" << 0.25F << 25 << "Scan\n..."
                                  << "Scanning";
        QTest::newRow("longer") << "Scanning disk" << 0.25F << 25 << "Scan\n..."
                                << "Scanning";
        QTest::newRow("shorter") << "ab" << 0.0F << 0 << "ab\n..."
                                 << "ab";
    }

    void buffering()
    {
        QFETCH(QString, text);
        QFETCH(float, fraction);
        QFETCH(int, percent);
        QFETCH(QString, musicText);
        QFETCH(QString, videoText);
        m_window->showDuration(100);
        m_window->showBufferingInfo(text, fraction);
        for (const char *name : {"m_music_progressStack", "m_video_progressStack"})
            QCOMPARE(find<QStackedWidget>(name)->currentIndex(), 1);
        for (const char *name : {"m_music_rendererProgress", "m_video_rendererProgress"})
            QCOMPARE(find<QProgressBar>(name)->value(), percent);
        QCOMPARE(find<QLabel>("m_music_durationLabel")->text(), musicText);
        QCOMPARE(find<QLabel>("m_video_durationLabel")->text(), videoText);
    }

    void playCaptions()
    {
        const auto captions = [this] {
            return QStringList({find<QToolButton>("m_music_playButton")->text(),
                find<QToolButton>("m_video_playButton")->text()});
        };
        auto *pauseAt = find<QMenu>("m_menuPause_At");
        m_window->showPauseButton();
        QCOMPARE(captions(), QStringList({"Pause", "Pause"}));
        QVERIFY(!pauseAt->isEnabled());
        m_window->showResumeButton();
        QCOMPARE(captions(), QStringList({"Resume", "Resume"}));
        QVERIFY(!pauseAt->isEnabled());
        m_window->showPlayButton();
        QCOMPARE(captions(), QStringList({"Play", "Play"}));
        QVERIFY(pauseAt->isEnabled());
        m_window->showResumeButton();
        QVERIFY(pauseAt->isEnabled());
    }

    void policyOverrideColoursTheTwelveButtons()
    {
        for (const bool overridden : {true, false}) {
            m_window->showPolicyOverride(overridden);
            for (const char *name : playbackButtons)
                QCOMPARE(find<QToolButton>(name)->palette().color(QPalette::ButtonText),
                    QColor(overridden ? Qt::red : Qt::black));
        }
    }

    void checkMarks()
    {
        for (const bool on : {true, false}) {
            m_window->showMuted(on);
            m_window->showShowPauseFrame(on);
            m_window->showShuffled(on);
            QCOMPARE(find<QAction>("m_actionMute")->isChecked(), on);
            QCOMPARE(find<QAction>("m_actionShowPauseFrame")->isChecked(), on);
            QCOMPARE(find<QAction>("m_actionShuffle")->isChecked(), on);
        }
        m_window->showRepeated(QStringLiteral("Repeat off"));
        QCOMPARE(find<QAction>("m_actionRepeat")->text(), QStringLiteral("Repeat off"));
    }

private:
    template <typename T> T *find(const char *name) const
    {
        return m_window->findChild<T *>(QLatin1String(name));
    }
    KelvoMainWindow *m_window = nullptr;
};

KELVO_WIDGET_TEST(PlaybackDisplayTest)
#include "PlaybackDisplayTest.moc"
