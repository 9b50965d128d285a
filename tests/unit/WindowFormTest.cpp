// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAction>
#include <QMenuBar>
#include <QTest>

namespace {
QString blanks(int count)
{
    return QString(count, QLatin1Char(' '));
}

/// Object names of a menu's entries in order; "-" is a separator, a submenu appears with its own object name.
QStringList entries(const QMenu *menu)
{
    QStringList names;
    const QList<QAction *> actions = menu->actions();
    for (const QAction *action : actions) {
        if (action->isSeparator())
            names.append(QStringLiteral("-"));
        else
            names.append(action->menu() ? action->menu()->objectName() : action->objectName());
    }
    return names;
}

const char *const actionTable[][3] = {
    {"m_actionSelectSources", "Select sources...", ""},
    {"m_actionExit", "Exit", ""},
    {"m_actionVolume", "Volume...", ""},
    {"m_actionMute", "Mute", "checkable"},
    {"m_actionCreateNew", "Create new...", ""},
    {"m_actionDelete", "Delete", ""},
    {"m_actionClear", "Clear", ""},
    {"m_actionShuffle", "Shuffle", "checkable"},
    {"m_actionShowAllMetadata", "Show all metadata...", ""},
    {"m_actionRemoveCurrent", "Remove current", ""},
    {"m_actionSearch", "Search...", ""},
    {"m_actionHelp", "Help", ""},
    {"m_actionPlayUri", "Play uri...", ""},
    {"m_actionPlugins", "Plugins", ""},
    {"m_actionRepeat", "Repeat all", ""},
    {"m_actionSave", "Save", ""},
    {"m_actionLoad", "Load...", ""},
    {"m_actionDeletePersistent", "Delete from tracker", ""},
    {"m_actionSourceProperties", "Source properties...", ""},
    {"m_actionRepeatOne", "Repeat one", ""},
    {"m_actionShowPauseFrame", "Pause frame", "checkable"},
    {"m_actionAtoZ", "A-Z", ""},
    {"m_actionZtoA", "Z-A", ""},
    {"m_actionShortToLong", "Duration short -> long", ""},
    {"m_actionLongToShort", "Duration long -> short", ""},
    {"m_action0_sec", "0 sec", ""},
    {"m_action1_sec", "1 sec", ""},
    {"action2_sec", "2 sec", ""},
    {"m_action3_sec", "3 sec", ""},
    {"m_action6_sec", "6 sec", ""},
    {"m_action10_sec", "10 sec", ""},
    {"m_actionForceAspectRatio", "Force Aspect", "checkable"},
    {"m_actionAutoAdvance", "Auto Advance", "checkable checked"},
    {"m_actionLaunchBrowser", "Launch browser", ""},
    {"m_actionRemoveSeveralSelected", "Remove several selected", ""},
    {"actionStream_block_size", "Stream block size", ""},
    {"m_actionQuery_properties", "Query properties", ""},
};
} // namespace

/// The window itself, its actions and its menus.
class WindowFormTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void window()
    {
        const KelvoMainWindow *window = m_console.window();
        QCOMPARE(window->objectName(), QStringLiteral("MainWindow"));
        QCOMPARE(window->windowTitle(), QStringLiteral("KELVO test-GUI"));
        QCOMPARE(window->font().pointSize(), 14);
        QVERIFY(!window->acceptDrops());
        QVERIFY(window->testAttribute(Qt::WA_DeleteOnClose));
        QVERIFY(window->isVisible());
        QCOMPARE(window->parent(), nullptr);
        QCOMPARE(window->centralWidget()->objectName(), QStringLiteral("centralwidget"));
        QCOMPARE(window->menuBar()->objectName(), QStringLiteral("menubar"));
    }

    void actionsInOrderOfCreation()
    {
        QStringList expected;
        for (const auto &row : actionTable)
            expected.append(QLatin1String(row[0]));
        QStringList names;
        const auto actions
            = m_console.window()->findChildren<QAction *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QAction *action : actions)
            names.append(action->objectName());
        QCOMPARE(names, expected);
    }

    void action_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kind");
        for (const auto &row : actionTable)
            QTest::newRow(row[0]) << QString::fromLatin1(row[1]) << QString::fromLatin1(row[2]);
    }

    void action()
    {
        QFETCH(QString, text);
        QFETCH(QString, kind);
        const auto *action = m_console.find<QAction>(QTest::currentDataTag());
        QVERIFY(action);
        QCOMPARE(action->text(), text);
        QCOMPARE(action->font().pointSize(), 18);
        QCOMPARE(action->isCheckable(), kind.contains(QLatin1String("checkable")));
        QCOMPARE(action->isChecked(), kind.contains(QLatin1String("checked")));
        QVERIFY(action->isEnabled());
    }

    void menu_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("content");
        QTest::newRow("menuMain") << QString(QStringLiteral("Main") + blanks(14))
                                  << "m_actionPlugins - m_actionHelp - m_actionExit";
        QTest::newRow("menuRenderers")
            << QString(QStringLiteral("Renderers") + blanks(11))
            << "m_actionVolume m_actionShowPauseFrame - m_actionAutoAdvance - m_menuPause_At";
        QTest::newRow("menuPlaylists")
            << QString(QStringLiteral("Playlists") + blanks(15))
            << "m_actionCreateNew m_actionLoad m_actionSave m_actionDelete m_actionDeletePersistent "
               "m_actionClear "
               "m_actionRemoveCurrent m_actionRemoveSeveralSelected - m_actionPlayUri m_actionShuffle "
               "m_actionRepeat m_actionSortBy";
        QTest::newRow("menuQuery")
            << QString(QStringLiteral("Query") + blanks(15))
            << "m_actionSelectSources m_actionSearch - m_actionSourceProperties - "
               "m_actionShowAllMetadata m_actionLaunchBrowser m_actionQuery_properties";
        QTest::newRow("m_actionSortBy")
            << "Sort by..."
            << "m_actionAtoZ m_actionZtoA - m_actionShortToLong m_actionLongToShort";
        // There is no entry for 2 seconds.
        QTest::newRow("m_menuPause_At")
            << "Pause At..."
            << "m_action0_sec m_action1_sec m_action3_sec m_action6_sec m_action10_sec";
    }

    void menu()
    {
        QFETCH(QString, title);
        QFETCH(QString, content);
        const auto *menu = m_console.find<QMenu>(QTest::currentDataTag());
        QVERIFY(menu);
        QCOMPARE(menu->title(), title);
        QCOMPARE(entries(menu).join(QLatin1Char(' ')), content);
        QCOMPARE(menu->font().pointSize(), 18);
    }

    void menusFromLeftToRight()
    {
        QStringList names;
        const QList<QAction *> actions = m_console.window()->menuBar()->actions();
        for (const QAction *action : actions)
            names.append(action->menu()->objectName());
        QCOMPARE(names, QStringList({"menuMain", "menuRenderers", "menuPlaylists", "menuQuery"}));
    }

    void separatorsOfTheMainMenuDoNotCollapse()
    {
        QVERIFY(!m_console.find<QMenu>("menuMain")->separatorsCollapsible());
    }

    void actionsInNoMenuAreKept()
    {
        for (const char *name : {"m_actionMute", "action2_sec", "m_actionRepeatOne",
                 "m_actionForceAspectRatio", "actionStream_block_size"}) {
            const auto *action = m_console.find<QAction>(name);
            QVERIFY2(action, name);
            QVERIFY2(action->associatedObjects().isEmpty(), name);
        }
    }

    void pauseAtActionsCarryTheirSecond_data()
    {
        QTest::addColumn<QVariant>("second");
        QTest::newRow("m_action0_sec") << QVariant(0);
        QTest::newRow("m_action1_sec") << QVariant(1);
        QTest::newRow("action2_sec") << QVariant();
        QTest::newRow("m_action3_sec") << QVariant(3);
        QTest::newRow("m_action6_sec") << QVariant(6);
        QTest::newRow("m_action10_sec") << QVariant(10);
    }

    void pauseAtActionsCarryTheirSecond()
    {
        QFETCH(QVariant, second);
        const QVariant property = m_console.find<QAction>(QTest::currentDataTag())->property("pause-at");
        QCOMPARE(property, second);
        QCOMPARE(property.typeId(), second.typeId());
    }

private:
    ConsoleFixture m_console;
};

KELVO_WIDGET_TEST(WindowFormTest)
#include "WindowFormTest.moc"
