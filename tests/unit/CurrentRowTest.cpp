// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "KelvoPlayUriDialog.h"
#include "KelvoRegistry.h"
#include "KelvoSelectItemsDialog.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAccessible>
#include <QAction>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTest>

namespace {
/// One of the program's lists with five rows, shown in an active window.
class ShownList
{
public:
    explicit ShownList(const QByteArray &name)
        : m_top(makeTop(name))
        , m_view(m_top->findChild<QListView *>(QString::fromLatin1(name)))
    {
        for (int row = 0; row < 5; ++row)
            m_model.appendRow({new QStandardItem, new QStandardItem(QStringLiteral("row %1").arg(row))});
        if (auto *list = qobject_cast<QListWidget *>(m_view))
            list->addItems({"row 0", "row 1", "row 2", "row 3", "row 4"});
        else
            showModel(name);
        m_top->show();
        m_top->activateWindow();
    }
    ~ShownList() { delete m_top; }
    Q_DISABLE_COPY_MOVE(ShownList)

    QListView *view() const { return m_view; }
    QWidget *top() const { return m_top; }
    QAbstractItemModel *model() const { return m_view->model(); }
    QModelIndex index(int row) const { return model()->index(row, m_view->modelColumn()); }

    /// What is highlighted; that this is also what is current is checked on the way.
    QList<int> highlighted() const
    {
        QList<int> rows;
        for (int row = 0; row < model()->rowCount(); ++row) {
            if (m_view->selectionModel()->isSelected(index(row)))
                rows.append(row);
        }
        const int current = m_view->currentIndex().row();
        return rows.contains(current) || (rows.isEmpty() && current < 0) ? rows : QList<int>({-99, current});
    }

private:
    static QWidget *makeTop(const QByteArray &name)
    {
        if (name == "m_availableItemsList" || name == "m_selectedItemsList")
            return new KelvoSelectItemsDialog("Load plugins", nullptr);
        if (name == "m_playlistView")
            return new KelvoPlayUriDialog(nullptr);
        return new KelvoMainWindow(nullptr, nullptr);
    }

    void showModel(const QByteArray &name)
    {
        auto *window = qobject_cast<KelvoMainWindow *>(m_top);
        auto *tabs = window->findChild<QTabWidget *>("m_tabs");
        if (name.startsWith("m_music"))
            window->showPlaylist(&m_model);
        else if (name.startsWith("m_browse"))
            window->showBrowseResults(&m_model);
        else
            window->showQueryResults(&m_model);
        tabs->setCurrentIndex(name.startsWith("m_music") ? 0 : name.startsWith("m_browse") ? 3 : 4);
    }

    QStandardItemModel m_model;
    QWidget *m_top;
    QListView *m_view;
};

void addListRows()
{
    QTest::addColumn<QByteArray>("list");
    for (const char *name : {"m_music_playlistView", "m_query_resultsView", "m_browse_resultsView",
             "m_availableItemsList", "m_selectedItemsList", "m_playlistView"})
        QTest::newRow(name) << QByteArray(name);
}

void clickInto(const QListView *view, const QPoint &place, Qt::KeyboardModifiers modifiers = {})
{
    QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, place);
}
} // namespace

/// In every list, what is current is what is highlighted: the operations work on the current row, and testers go by
/// what they see.
class CurrentRowTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void focusMakesNoRowCurrent_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<Qt::FocusReason>("reason");
        const std::pair<const char *, Qt::FocusReason> reasons[] = {{"by Tab", Qt::TabFocusReason},
            {"by Shift+Tab", Qt::BacktabFocusReason}, {"with the window", Qt::ActiveWindowFocusReason},
            {"otherwise", Qt::OtherFocusReason}, {"by the mouse", Qt::MouseFocusReason}};
        for (const char *name : {"m_music_playlistView", "m_query_resultsView", "m_browse_resultsView",
                 "m_availableItemsList", "m_selectedItemsList", "m_playlistView"}) {
            for (const auto &[way, reason] : reasons)
                QTest::addRow("%s %s", name, way) << QByteArray(name) << reason;
        }
    }

    void focusMakesNoRowCurrent()
    {
        QFETCH(QByteArray, list);
        QFETCH(Qt::FocusReason, reason);
        const ShownList shown(list);
        QVERIFY(QTest::qWaitForWindowActive(shown.top()));
        const QSignalSpy heard(shown.view()->selectionModel(), &QItemSelectionModel::currentChanged);
        for (int time = 0; time < 2; ++time) {
            shown.view()->clearFocus();
            shown.view()->setFocus(reason);
            QTRY_VERIFY(shown.view()->hasFocus());
            QCOMPARE(shown.view()->currentIndex(), QModelIndex());
            QCOMPARE(shown.highlighted(), QList<int>());
        }
        QCOMPARE(heard.size(), 0); // nor does assistive technology hear of one
    }

    void focusLeavesTheCurrentRow_data() { addListRows(); }
    void focusLeavesTheCurrentRow()
    {
        QFETCH(QByteArray, list);
        const ShownList shown(list);
        QVERIFY(QTest::qWaitForWindowActive(shown.top()));
        shown.view()->setCurrentIndex(shown.index(3));
        shown.view()->clearFocus();
        shown.view()->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(shown.view()->hasFocus());
        QCOMPARE(shown.highlighted(), QList<int>({3}));
    }

    void firstArrowKeyHighlightsTheFirstRow_data() { addListRows(); }
    void firstArrowKeyHighlightsTheFirstRow()
    {
        QFETCH(QByteArray, list);
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up}) {
            const ShownList shown(list);
            QVERIFY(QTest::qWaitForWindowActive(shown.top()));
            shown.view()->setFocus(Qt::TabFocusReason);
            QTest::keyClick(shown.view(), key);
            QCOMPARE(shown.highlighted(), QList<int>({0}));
            QTest::keyClick(shown.view(), Qt::Key_Down);
            QCOMPARE(shown.highlighted(), QList<int>({1}));
        }
    }

    void clearedHighlightLeavesNoneCurrent_data() { addListRows(); }
    void clearedHighlightLeavesNoneCurrent()
    {
        QFETCH(QByteArray, list);
        const ShownList shown(list);
        shown.view()->setCurrentIndex(shown.index(2));
        QCOMPARE(shown.highlighted(), QList<int>({2}));
        shown.view()->clearSelection();
        QCOMPARE(shown.view()->currentIndex(), QModelIndex());
    }

    void highlightTakenAwayByHand_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<bool>("beside");
        using Keys = Qt::KeyboardModifiers;
        QTest::newRow("click below the rows") << QByteArray("m_music_playlistView") << Keys() << true;
        for (const char *name : {"m_query_resultsView", "m_browse_resultsView"})
            QTest::addRow("%s by Ctrl and click", name)
                << QByteArray(name) << Keys(Qt::ControlModifier) << false;
    }

    void highlightTakenAwayByHand()
    {
        QFETCH(QByteArray, list);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(bool, beside);
        const ShownList shown(list);
        QVERIFY(QTest::qWaitForWindowActive(shown.top()));
        clickInto(shown.view(), shown.view()->visualRect(shown.index(1)).center());
        QCOMPARE(shown.highlighted(), QList<int>({1}));
        const QRect last = shown.view()->visualRect(shown.index(4));
        clickInto(shown.view(),
            beside ? last.center() + QPoint(0, 2 * last.height())
                   : shown.view()->visualRect(shown.index(1)).center(),
            modifiers);
        QCOMPARE(shown.highlighted(), QList<int>());
        QCOMPARE(shown.view()->currentIndex(), QModelIndex());
    }

    void clicksAndDragsHighlight_data() { addListRows(); }
    void clicksAndDragsHighlight()
    {
        QFETCH(QByteArray, list);
        const ShownList shown(list);
        QVERIFY(QTest::qWaitForWindowActive(shown.top()));
        for (const int row : {2, 0, 4}) {
            clickInto(shown.view(), shown.view()->visualRect(shown.index(row)).center());
            QCOMPARE(shown.highlighted(), QList<int>({row}));
        }
    }

    void severalRowsOfThePlaylist()
    {
        const ShownList shown("m_music_playlistView");
        QVERIFY(QTest::qWaitForWindowActive(shown.top()));
        clickInto(shown.view(), shown.view()->visualRect(shown.index(1)).center());
        clickInto(shown.view(), shown.view()->visualRect(shown.index(3)).center(), Qt::ShiftModifier);
        QCOMPARE(shown.highlighted(), QList<int>({1, 2, 3}));
        QTest::keyClick(shown.view(), Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(shown.highlighted(), QList<int>({1, 2}));
        clickInto(shown.view(), shown.view()->visualRect(shown.index(0)).center());
        QCOMPARE(shown.highlighted(), QList<int>({0}));
    }

    void rowSelectedFromOutsideIsCurrent_data() { addListRows(); }
    void rowSelectedFromOutsideIsCurrent()
    {
        QFETCH(QByteArray, list);
        const ShownList shown(list);
        QVERIFY(QTest::qWaitForWindowActive(shown.top()));
        if (shown.view()->selectionMode() == QAbstractItemView::SingleSelection)
            clickInto(shown.view(), shown.view()->visualRect(shown.index(1)).center());
        auto *cell = QAccessible::queryAccessibleInterface(shown.view())
                         ->tableInterface()
                         ->cellAt(3, shown.view()->modelColumn());
        cell->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
        QTRY_COMPARE(shown.view()->currentIndex().row(), 3);
        QVERIFY(shown.view()->selectionModel()->isSelected(shown.index(3)));
    }

    void rowThatIsRemovedHandsItsHighlightOn_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("next");
        for (const char *name : {"m_music_playlistView", "m_query_resultsView", "m_availableItemsList"}) {
            QTest::addRow("%s first", name) << QByteArray(name) << 0 << "row 1";
            // Where several rows can be selected, the toolkit goes up instead.
            const bool several = QByteArray(name).startsWith("m_music");
            QTest::addRow("%s middle", name) << QByteArray(name) << 2 << (several ? "row 1" : "row 3");
            QTest::addRow("%s last", name) << QByteArray(name) << 4 << "row 3";
        }
    }

    void rowThatIsRemovedHandsItsHighlightOn()
    {
        QFETCH(QByteArray, list);
        QFETCH(int, row);
        QFETCH(QString, next);
        const ShownList shown(list);
        shown.view()->setCurrentIndex(shown.index(row));
        shown.model()->removeRow(row);
        QCOMPARE(shown.highlighted().size(), 1);
        QCOMPARE(shown.view()->currentIndex().data().toString(), next);
        QVERIFY(shown.view()->selectionModel()->isSelected(shown.view()->currentIndex()));
    }

    void lastRowsRemovedLeaveNoneCurrent_data() { addListRows(); }
    void lastRowsRemovedLeaveNoneCurrent()
    {
        QFETCH(QByteArray, list);
        const ShownList shown(list);
        shown.view()->setCurrentIndex(shown.index(2));
        shown.model()->removeRows(0, shown.model()->rowCount());
        QCOMPARE(shown.view()->currentIndex(), QModelIndex());
    }

    void removeCurrentAfterFocusRemovesNothing()
    {
        FakePlaylist playlist("p1", "list one", {"a", "b", "c"});
        KelvoRegistry::instance()->addPlaylist(&playlist);
        const ConsoleFixture console;
        console.window()->show();
        QVERIFY(QTest::qWaitForWindowActive(console.window()));
        auto *view = console.find<QListView>("m_music_playlistView");
        view->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(view->hasFocus());
        playlist.takeCalls();
        console.find<QAction>("m_actionRemoveCurrent")->trigger();
        QCOMPARE(playlist.takeCalls(), QStringList("removeItem(-1)")); // no row
    }

    void loadAfterFocusMovesNothing()
    {
        const ShownList shown("m_availableItemsList");
        QVERIFY(QTest::qWaitForWindowActive(shown.top()));
        shown.view()->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(shown.view()->hasFocus());
        shown.top()->findChild<QPushButton *>("m_loadButton")->click();
        QCOMPARE(shown.model()->rowCount(), 5);
    }
};

KELVO_WIDGET_TEST(CurrentRowTest)
#include "CurrentRowTest.moc"
