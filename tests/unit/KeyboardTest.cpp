// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "KelvoPlayUriDialog.h"
#include "KelvoRegistry.h"
#include "KelvoSelectItemsDialog.h"
#include "KelvoSourceDialog.h"
#include "KelvoTestCase.h"
#include "KelvoVolumeDialog.h"
#include "RecordingRenderer.h"
#include "RecordingSource.h"
#include "TestGroup.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

namespace {
const char *const positionSliders[] = {"m_music_durationSlider", "m_video_durationSlider"};

void addSliderRows()
{
    QTest::addColumn<QByteArray>("slider");
    for (const QByteArray slider : positionSliders)
        QTest::newRow(slider) << slider;
}

/// Names of what the Tab key goes to, from where the focus is until it comes round.
QStringList tabOrder(const QWidget *window)
{
    QStringList names;
    const QWidget *start = window->focusWidget();
    const QWidget *at = start;
    do {
        names.append(at ? at->objectName() : QString());
        QTest::keyClick(window->windowHandle(), Qt::Key_Tab);
        at = window->focusWidget();
    } while (at != start && names.size() < 50);
    return names;
}
} // namespace

/// What is done without a mouse.
class KeyboardTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_renderer = std::make_unique<RecordingRenderer>("r1", "one");
        m_playlist = std::make_unique<FakePlaylist>("p1", "list one", QStringList{"a", "b", "c"});
        KelvoRegistry::instance()->addRenderer(m_renderer.get());
        KelvoRegistry::instance()->addPlaylist(m_playlist.get());
        m_console = std::make_unique<ConsoleFixture>();
        m_console->window()->show();
        QVERIFY(QTest::qWaitForWindowActive(m_console->window()));
        m_renderer->takeCalls();
    }

    void cleanup()
    {
        m_console.reset();
        m_renderer.reset();
        m_playlist.reset();
    }

    void keysMoveAPositionSlider_data()
    {
        QTest::addColumn<QByteArray>("slider");
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<int>("position");
        const std::tuple<const char *, Qt::Key, int> keys[]
            = {{"Right", Qt::Key_Right, 31}, {"Left", Qt::Key_Left, 29}, {"Up", Qt::Key_Up, 31},
                {"Down", Qt::Key_Down, 29}, {"PageUp", Qt::Key_PageUp, 40},
                {"PageDown", Qt::Key_PageDown, 20}, {"Home", Qt::Key_Home, 0}, {"End", Qt::Key_End, 236}};
        for (const QByteArray slider : positionSliders) {
            for (const auto &[name, key, position] : keys)
                QTest::addRow("%s %s", slider.constData(), name) << slider << key << position;
        }
    }

    void keysMoveAPositionSlider()
    {
        QFETCH(QByteArray, slider);
        QFETCH(Qt::Key, key);
        QFETCH(int, position);
        QSlider *shown = showSliderAt(slider, 30);
        QSignalSpy pressed(shown, &QSlider::sliderPressed);
        QTest::keyClick(shown, key);
        QCOMPARE(shown->value(), position);
        QCOMPARE(pressed.count(), 1);
        QVERIFY(!shown->isSliderDown());
        // As for the mouse.
        const QString call = QStringLiteral("setPosition(%1,0)").arg(position);
        QCOMPARE(takeSeeks(), QStringList({call, call}));
    }

    void heldKeySeeksWhenItIsReleased_data() { addSliderRows(); }
    void heldKeySeeksWhenItIsReleased()
    {
        QFETCH(QByteArray, slider);
        QSlider *shown = showSliderAt(slider, 30);
        QTest::keyPress(shown, Qt::Key_Right);
        for (int repetition = 0; repetition < 3; ++repetition) {
            QKeyEvent up(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier, {}, true);
            QCoreApplication::sendEvent(shown, &up);
            QKeyEvent down(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier, {}, true);
            QCoreApplication::sendEvent(shown, &down);
        }
        m_console->window()->showPosition(3); // what plays on must not take it out of the user's hand
        QCOMPARE(shown->value(), 34);
        QCOMPARE(takeSeeks(), QStringList());
        QTest::keyRelease(shown, Qt::Key_Right);
        QCOMPARE(takeSeeks(), QStringList({"setPosition(34,0)", "setPosition(34,0)"}));
        m_console->window()->showPosition(5);
        QCOMPARE(shown->value(), 5);
    }

    void sliderThatLosesTheFocusIsReleased()
    {
        QSlider *slider = showSliderAt("m_music_durationSlider", 30);
        QTest::keyPress(slider, Qt::Key_Right);
        m_console->find<QToolButton>("m_music_playButton")->setFocus();
        QVERIFY(!slider->isSliderDown());
        QCOMPARE(takeSeeks(), QStringList({"setPosition(31,0)", "setPosition(31,0)"}));
        QTest::keyRelease(slider, Qt::Key_Right);
        QCOMPARE(takeSeeks(), QStringList());
    }

    void keysLeaveTheMousesGripAlone()
    {
        QSlider *slider = showSliderAt("m_music_durationSlider", 30);
        slider->setSliderDown(true);
        QTest::keyClick(slider, Qt::Key_Right);
        QVERIFY(slider->isSliderDown());
        QCOMPARE(takeSeeks(), QStringList());
    }

    void otherKeysDoNotSeek()
    {
        QSlider *slider = showSliderAt("m_music_durationSlider", 30);
        QTest::keyClick(slider, Qt::Key_A);
        QTest::keyClick(slider, Qt::Key_Space);
        QCOMPARE(takeSeeks(), QStringList());
    }

    void assistiveTechnologySeeks_data() { addSliderRows(); }
    void assistiveTechnologySeeks()
    {
        QFETCH(QByteArray, slider);
        QSlider *shown = showSliderAt(slider, 30);
        QAccessibleInterface *seen = QAccessible::queryAccessibleInterface(shown);
        QCOMPARE(seen->role(), QAccessible::Slider);
        QAccessibleValueInterface *value = seen->valueInterface();
        QCOMPARE(value->minimumValue().toInt(), 0);
        QCOMPARE(value->maximumValue().toInt(), 236);
        QCOMPARE(value->minimumStepSize().toInt(), 1);
        QCOMPARE(value->currentValue().toInt(), 30);
        value->setCurrentValue(77);
        QCOMPARE(shown->value(), 77);
        QVERIFY(!shown->isSliderDown());
        QCOMPARE(takeSeeks(), QStringList({"setPosition(77,0)", "setPosition(77,0)"}));
        shown->setSliderDown(true); // somebody holds it by the mouse
        value->setCurrentValue(78);
        QVERIFY(shown->isSliderDown());
        QCOMPARE(takeSeeks(), QStringList());
    }

    void returnPlaysTheHighlightedItem_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<QStringList>("calls");
        const QStringList plays("gotoIndex(1)");
        QTest::newRow("Return") << Qt::Key_Return << Qt::KeyboardModifiers() << plays;
        QTest::newRow("Enter") << Qt::Key_Enter << Qt::KeyboardModifiers(Qt::KeypadModifier) << plays;
        QTest::newRow("Alt+Return") << Qt::Key_Return << Qt::KeyboardModifiers(Qt::AltModifier)
                                    << QStringList();
        QTest::newRow("Space") << Qt::Key_Space << Qt::KeyboardModifiers() << QStringList();
    }

    void returnPlaysTheHighlightedItem()
    {
        QFETCH(Qt::Key, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(QStringList, calls);
        auto *view = m_console->find<QListView>("m_music_playlistView");
        view->setFocus(Qt::TabFocusReason);
        QTest::keyClick(view, key, modifiers);
        QCOMPARE(m_renderer->takeCalls(), QStringList()); // nothing is highlighted
        QTest::keyClick(view, Qt::Key_Down);
        QTest::keyClick(view, Qt::Key_Down);
        QSignalSpy chosen(m_console->window(), SIGNAL(itemDoubleClicked(uint)));
        QTest::keyClick(view, key, modifiers);
        QCOMPARE(chosen.count(), calls.size());
        QCOMPARE(m_renderer->takeCalls(), calls);
    }

    void returnThatIsHeldPlaysOnce()
    {
        auto *view = m_console->find<QListView>("m_music_playlistView");
        view->setFocus(Qt::TabFocusReason);
        QTest::keyClick(view, Qt::Key_Down);
        QTest::keyPress(view, Qt::Key_Return);
        QKeyEvent again(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, {}, true);
        QCoreApplication::sendEvent(view, &again);
        QTest::keyRelease(view, Qt::Key_Return);
        QCOMPARE(m_renderer->takeCalls(), QStringList("gotoIndex(0)"));
    }

    void f10OpensTheFirstMenuFromAnywhere()
    {
        auto *menu = m_console->find<QMenu>("menuMain");
        auto *tabs = m_console->find<QTabWidget>("m_tabs");
        for (int tab = 0; tab < tabs->count(); ++tab) {
            tabs->setCurrentIndex(tab);
            QTest::keyClick(m_console->window()->windowHandle(), Qt::Key_F10);
            QVERIFY(menu->isVisible());
            QCOMPARE(menu->activeAction(), m_console->find<QAction>("m_actionPlugins"));
            QTest::keyClick(menu, Qt::Key_Escape);
            QVERIFY(!menu->isVisible());
            QTest::keyClick(m_console->window()->windowHandle(), Qt::Key_Escape); // leaves the menu bar
        }
    }

    void arrowKeysReachEveryEntryOfTheMenus()
    {
        QTest::keyClick(m_console->window()->windowHandle(), Qt::Key_F10);
        QSet<QAction *> reached;
        for (int menu = 0; menu < 4; ++menu) {
            walkMenu(&reached);
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Right);
        }
        const QList<QMenu *> menus = m_console->find<QMenuBar>("menubar")->findChildren<QMenu *>();
        int entries = 0;
        for (const QMenu *menu : menus) {
            for (QAction *action : menu->actions()) {
                if (action->isSeparator())
                    continue;
                ++entries;
                QVERIFY2(reached.contains(action), qPrintable(action->text()));
            }
        }
        QCOMPARE(entries, 34);
    }

    void volumeDialogStartsAtItsSlider()
    {
        KelvoVolumeDialog dialog(nullptr);
        for (int time = 0; time < 2; ++time) {
            dialog.setVolume(50, m_renderer.get());
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            QVERIFY(dialog.testAttribute(Qt::WA_KeyboardFocusChange)); // the focus shows
            QCOMPARE(tabOrder(&dialog),
                QStringList({"m_volumeSlider", "m_upButton", "m_downButton", "m_doneButton"}));
            m_renderer->takeCalls();
            QTest::keyClick(dialog.windowHandle(), Qt::Key_Up);
            QCOMPARE(m_renderer->takeCalls(), QStringList("setKelvoProperty(volume,int,51)"));
            dialog.findChild<QPushButton *>("m_upButton")->setFocus(); // where it was left does not count
            QTest::keyClick(dialog.windowHandle(), Qt::Key_Escape);
            QVERIFY(!dialog.isVisible());
        }
    }

    void playUriDialogStartsAtTheKnownUris()
    {
        KelvoPlayUriDialog dialog(nullptr);
        for (int time = 0; time < 2; ++time) {
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            QCOMPARE(tabOrder(&dialog),
                QStringList({"m_selectUriComboBox", "m_enterUriButton", "m_playlistView",
                    "m_isPlaylistCheckBox", "m_playButton", "m_cancelButton"}));
            dialog.findChild<QPushButton *>("m_playButton")->setFocus();
            dialog.hide();
        }
    }

    void sourceDialogStartsAtItsSources()
    {
        RecordingSource one("s1", "one");
        RecordingSource two("s2", "two");
        KelvoSourceDialog dialog(nullptr);
        for (int time = 0; time < 2; ++time) {
            dialog.setSources({&one, &two}, {false, false});
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            QCOMPARE(tabOrder(&dialog), QStringList({"", "", "m_doneButton", "m_cancelButton"}));
            type(&dialog, {Qt::Key_Tab, Qt::Key_Space});
            QCOMPARE(dialog.selectedSources(), QList<bool>({false, true}));
            dialog.findChild<QPushButton *>("m_cancelButton")->setFocus();
            type(&dialog, {Qt::Key_Escape});
        }
    }

    void playUriDialogIsUsedByKeysAlone()
    {
        KelvoPlayUriDialog dialog(nullptr);
        dialog.findChild<QComboBox *>("m_selectUriComboBox")->addItems({"file:///a", "file:///b"});
        const QSignalSpy accepted(&dialog, &QDialog::accepted);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        // The second known URI, into the list; there it is the only one.
        type(&dialog, {Qt::Key_Down, Qt::Key_Tab, Qt::Key_Space, Qt::Key_Tab, Qt::Key_Down});
        QCOMPARE(dialog.uri(), QStringLiteral("file:///b"));
        type(&dialog, {Qt::Key_Tab, Qt::Key_Space});
        QVERIFY(dialog.isPlaylist());
        QCOMPARE(accepted.count(), 0);
        type(&dialog, {Qt::Key_Backtab, Qt::Key_Return});
        QCOMPARE(accepted.count(), 1);
    }

    void moveToTheSameRowIsNoClick()
    {
        KelvoPlayUriDialog dialog(nullptr);
        auto *list = dialog.findChild<QListWidget *>("m_playlistView");
        list->addItems({"file:///a", "file:///b"});
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        list->setFocus(Qt::TabFocusReason);
        const QSignalSpy clicked(list, &QListWidget::itemClicked);
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Down, Qt::Key_Down, Qt::Key_End})
            QTest::keyClick(list, key);
        QCOMPARE(clicked.count(), 2);
        QCOMPARE(dialog.uri(), QStringLiteral("file:///b"));
    }

    void uriChosenByAssistiveTechnologyIsPlayed()
    {
        KelvoPlayUriDialog dialog(nullptr);
        auto *list = dialog.findChild<QListWidget *>("m_playlistView");
        list->addItems({"file:///a", "file:///b"});
        dialog.show();
        auto *cell = QAccessible::queryAccessibleInterface(list)->tableInterface()->cellAt(0, 0);
        QVERIFY(cell);
        list->selectionModel()->select(list->model()->index(1, 0), QItemSelectionModel::ClearAndSelect);
        QTRY_COMPARE(dialog.uri(), QStringLiteral("file:///b"));
    }

    void listOfOneRowIsChosenByAnArrowKey_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Down") << Qt::Key_Down;
        QTest::newRow("Up") << Qt::Key_Up;
    }

    void listOfOneRowIsChosenByAnArrowKey()
    {
        QFETCH(Qt::Key, key);
        KelvoSelectItemsDialog dialog("Load plugins", nullptr);
        auto *available = dialog.findChild<QListWidget *>("m_availableItemsList");
        auto *selected = dialog.findChild<QListWidget *>("m_selectedItemsList");
        available->addItem("only");
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QCOMPARE(dialog.focusWidget(), available);
        QCOMPARE(available->currentRow(), -1);
        QTest::keyClick(available, key);
        QCOMPARE(available->currentRow(), 0);
        QVERIFY(available->item(0)->isSelected());
        type(&dialog, {Qt::Key_Tab, Qt::Key_Space});
        QCOMPARE(selected->count(), 1);
        QCOMPARE(available->count(), 0);
        // And back again: it is neither current nor highlighted in the list that it came into.
        QCOMPARE(selected->currentRow(), -1);
        type(&dialog, {Qt::Key_Tab, key, Qt::Key_Tab, Qt::Key_Space});
        QCOMPARE(available->count(), 1);
    }

    void browseResultsAreChosenFromTheirPage()
    {
        QStandardItemModel model(3, 2);
        m_console->find<QTabWidget>("m_tabs")->setCurrentIndex(3);
        auto *view = m_console->find<QListView>("m_browse_resultsView");
        QWindow *window = m_console->window()->windowHandle();
        m_console->find<QToolButton>("m_browse_clearButton")->setFocus();
        const QSignalSpy clicked(view, &QListView::clicked);
        QTest::keyClick(window, Qt::Key_Down, Qt::AltModifier); // there is nothing
        m_console->window()->showBrowseResults(&model);
        QList<int> rows;
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Up}) {
            QTest::keyClick(window, key, Qt::AltModifier);
            rows.append(m_console->window()->selectedBrowseResultItemIndex());
        }
        QCOMPARE(rows, QList<int>({0, 1, 2, 2, 1}));
        QCOMPARE(clicked.count(), 4); // the last row stays where it is
        QVERIFY(!view->hasFocus());
        m_console->window()->clearBrowseResults();
    }

private:
    /// The slider on its page, focused, of an item of 236 s.
    QSlider *showSliderAt(const QByteArray &name, uint position)
    {
        m_console->find<QTabWidget>("m_tabs")->setCurrentIndex(name.startsWith("m_video") ? 1 : 0);
        m_console->window()->showDuration(236);
        m_console->window()->showPosition(position);
        auto *slider = m_console->find<QSlider>(name.constData());
        slider->setFocus(Qt::TabFocusReason);
        return slider;
    }

    QStringList takeSeeks() { return m_renderer->takeCalls().filter(QStringLiteral("setPosition")); }

    static void type(const QWidget *window, const QList<Qt::Key> &keys)
    {
        for (const Qt::Key key : keys)
            QTest::keyClick(
                window->windowHandle(), key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
    }

    /// Down through the menu that is open, and into its submenus.
    static void walkMenu(QSet<QAction *> *reached)
    {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        while (menu->activeAction() && !reached->contains(menu->activeAction())) {
            reached->insert(menu->activeAction());
            if (menu->activeAction()->menu()) {
                QTest::keyClick(menu, Qt::Key_Right);
                walkMenu(reached);
                QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Left);
            }
            QTest::keyClick(menu, Qt::Key_Down);
        }
        while (menu->activeAction() != firstEntry(menu)) // a submenu would take the arrow to the right
            QTest::keyClick(menu, Qt::Key_Down);
    }

    static QAction *firstEntry(const QMenu *menu) { return menu->actions().constFirst(); }

    std::unique_ptr<RecordingRenderer> m_renderer;
    std::unique_ptr<FakePlaylist> m_playlist;
    std::unique_ptr<ConsoleFixture> m_console;
};

KELVO_WIDGET_TEST(KeyboardTest)
#include "KeyboardTest.moc"
