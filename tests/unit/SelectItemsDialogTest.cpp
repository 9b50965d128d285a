// SPDX-License-Identifier: MIT
#include "KelvoSelectItemsDialog.h"
#include "KelvoTestCase.h"
#include "ListTexts.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>
#include <QWindow>

namespace {
QListWidgetItem *makeItem(const QString &fileName)
{
    auto *item = new QListWidgetItem(fileName);
    item->setData(Qt::UserRole, fileName);
    return item;
}

QList<QListWidgetItem *> makeItems(const QStringList &fileNames)
{
    QList<QListWidgetItem *> items;
    for (const QString &fileName : fileNames)
        items.append(makeItem(fileName));
    return items;
}

struct Cell
{
    const char *name;
    const char *kind;
    const char *text; // null: has none
    int points, row, column, rowSpan;
    QSize minimumSize;
};

const Cell form[] = {
    {"m_availableItemsList", "QListWidget", nullptr, 20, 0, 0, 4, {250, 300}},
    {"m_loadButton", "QPushButton", "Load", 16, 0, 1, 1, {80, 80}},
    {"m_selectedItemsList", "QListWidget", nullptr, 20, 0, 2, 4, {250, 300}},
    {"m_unloadButton", "QPushButton", "Unload", 16, 1, 1, 1, {80, 80}},
    {"m_doneButton", "QPushButton", "Done", 16, 3, 1, 1, {80, 80}},
};
} // namespace

class SelectItemsDialogTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_dialog = std::make_unique<KelvoSelectItemsDialog>(QStringLiteral("Load plugins"), nullptr);
        m_available = m_dialog->findChild<QListWidget *>("m_availableItemsList");
        m_selected = m_dialog->findChild<QListWidget *>("m_selectedItemsList");
    }
    void cleanup() { m_dialog.reset(); }

    void controlsAreAsInTheForm()
    {
        auto *grid = m_dialog->findChild<QGridLayout *>("gridLayout");
        QCOMPARE(grid, m_dialog->layout());
        for (const Cell &cell : form) {
            auto *widget = m_dialog->findChild<QWidget *>(QLatin1String(cell.name));
            QVERIFY2(widget, cell.name);
            QCOMPARE(widget->metaObject()->className(), cell.kind);
            int row = -1, column = -1, rowSpan = -1, columnSpan = -1;
            grid->getItemPosition(grid->indexOf(widget), &row, &column, &rowSpan, &columnSpan);
            QCOMPARE(QList<int>({row, column, rowSpan, columnSpan}),
                QList<int>({cell.row, cell.column, cell.rowSpan, 1}));
            QCOMPARE(widget->font().pointSize(), cell.points);
            QCOMPARE(widget->font().family(), QStringLiteral("Sans Serif"));
            QCOMPARE(widget->minimumSize(), cell.minimumSize);
            if (cell.text)
                QCOMPARE(widget->property("text").toString(), QString::fromLatin1(cell.text));
        }
        QCOMPARE(m_available->spacing(), 2);
        QCOMPARE(m_selected->spacing(), 2);
        QCOMPARE(grid->itemAtPosition(2, 1)->sizeHint(), QSize(20, 21));
    }

    void dialogIsAsInTheForm()
    {
        QCOMPARE(m_dialog->objectName(), QStringLiteral("LoadPluginsDialog"));
        QCOMPARE(m_dialog->font().family(), QStringLiteral("Serif"));
        QCOMPARE(m_dialog->size(), QSize(644, 318));
        QVERIFY(!m_dialog->isSizeGripEnabled());
    }

    void formTakesTheTitleAway()
    {
        QCOMPARE(m_dialog->windowTitle(), QString());
        m_dialog->show();
        QCOMPARE(m_dialog->windowTitle(), QString());
        QCOMPARE(m_dialog->windowHandle()->title().trimmed(), QString());
    }

    void logsItsLife()
    {
        LogRecorder log;
        std::make_unique<KelvoSelectItemsDialog>(QString(), nullptr).reset();
        QCOMPARE(log.lines(),
            QStringList({"KelvoSelectItemsDialog::KelvoSelectItemsDialog",
                "KelvoSelectItemsDialog::~KelvoSelectItemsDialog"}));
    }

    void shownNames_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("shown");
        QTest::newRow("path") << "/usr/lib/kelvo/libfoo.so"
                              << "libfoo";
        QTest::newRow("two dots") << "plugins/a.b.so"
                                  << "a";
        QTest::newRow("neither slash nor dot") << "x"
                                               << "x";
        QTest::newRow("dots in folders") << "/opt/v1.2/foo"
                                         << "foo";
        QTest::newRow("folder") << "/usr/lib/"
                                << "";
        QTest::newRow("double slash") << "//foo.so"
                                      << "foo";
        QTest::newRow("hidden") << "/usr/.hidden"
                                << "";
        QTest::newRow("empty") << ""
                               << "";
    }
    void shownNames()
    {
        QFETCH(const QString, fileName);
        LogRecorder log;
        QTEST(KelvoSelectItemsDialog::getItemNameFromFilename(fileName), "shown");
        QCOMPARE(log.lines(), QStringList({"KelvoSelectItemsDialog::getItemNameFromFilename"}));
    }

    void itemsAreShownInOrder()
    {
        m_dialog->setSelectedItems(makeItems({"b.so", "a.so"}), true);
        m_dialog->setAvailableItems(makeItems({"/z/d.so", "/z/c.so"}), true);
        QCOMPARE(texts(m_selected), QStringList({"b", "a"}));
        QCOMPARE(texts(m_available), QStringList({"d", "c"}));
        QCOMPARE(m_available->item(0)->data(Qt::UserRole).toString(), QStringLiteral("/z/d.so"));
    }

    void textsStayWithoutItemNames()
    {
        m_dialog->setSelectedItems(makeItems({"/z/b.so"}), false);
        m_dialog->setAvailableItems(makeItems({"/z/c.so"}), false);
        QCOMPARE(texts(m_selected), QStringList({"/z/b.so"}));
        QCOMPARE(texts(m_available), QStringList({"/z/c.so"}));
    }

    void fillingReplacesWhatWasThere()
    {
        m_dialog->setSelectedItems(makeItems({"a", "b"}), true);
        m_dialog->setAvailableItems(makeItems({"c", "d"}), true);
        m_dialog->setSelectedItems(makeItems({"e"}), true);
        m_dialog->setAvailableItems(makeItems({"f"}), true);
        QCOMPARE(texts(m_selected), QStringList({"e"}));
        QCOMPARE(texts(m_available), QStringList({"f"}));
    }

    void operationsAreLogged()
    {
        LogRecorder log;
        m_dialog->setSelectedItems(makeItems({"a"}), true);
        m_dialog->setAvailableItems(makeItems({"b"}), false);
        m_dialog->selectItem(m_available->item(0));
        m_dialog->loadItem();
        m_dialog->deSelectItem(m_selected->item(0));
        m_dialog->unloadItem();
        m_dialog->selectedItems();
        QCOMPARE(log.lines(),
            QStringList({"KelvoSelectItemsDialog::setSelectedItems",
                "KelvoSelectItemsDialog::getItemNameFromFilename", "__PRETTY_FUNCTION__",
                "KelvoSelectItemsDialog::selectItem", "KelvoSelectItemsDialog::loadItem",
                "KelvoSelectItemsDialog::deSelectItem", "KelvoSelectItemsDialog::unloadItems",
                "KelvoSelectItemsDialog::selectedItems"}));
    }

    void loadedItemsAreNotAvailable()
    {
        m_dialog->setSelectedItems(makeItems({"foo.so"}), true);
        m_dialog->setAvailableItems(makeItems({"bar.so", "foo.so", "foo.so"}), true);
        QCOMPARE(texts(m_available), QStringList({"bar"}));
    }

    void itemsThatOnlyContainALoadedNameStayAvailable()
    {
        m_dialog->setSelectedItems(makeItems({"foo.so"}), true);
        m_dialog->setAvailableItems(makeItems({"foo2.so", "/other/foo.so", "barfoo.so", "foo.so"}), true);
        QCOMPARE(texts(m_available), QStringList({"foo2", "foo", "barfoo"}));
    }

    void clicksChooseTheCurrentItem()
    {
        m_dialog->setAvailableItems(makeItems({"a", "b"}), true);
        m_dialog->setSelectedItems(makeItems({"c", "d"}), true);
        Q_EMIT m_available->itemClicked(m_available->item(1));
        Q_EMIT m_selected->itemClicked(m_selected->item(1));
        QCOMPARE(m_available->currentRow(), 1);
        QCOMPARE(m_selected->currentRow(), 1);
    }

    void buttonsMoveTheCurrentItemToTheEnd()
    {
        m_dialog->setAvailableItems(makeItems({"a", "b", "c"}), true);
        m_dialog->setSelectedItems(makeItems({"d"}), true);
        m_available->setCurrentRow(1);
        click("m_loadButton");
        QCOMPARE(texts(m_available), QStringList({"a", "c"}));
        QCOMPARE(texts(m_selected), QStringList({"d", "b"}));
        m_selected->setCurrentRow(0);
        click("m_unloadButton");
        QCOMPARE(texts(m_available), QStringList({"a", "c", "d"}));
        QCOMPARE(texts(m_selected), QStringList({"b"}));
    }

    void buttonsWithoutACurrentItemDoNothing()
    {
        click("m_loadButton");
        click("m_unloadButton");
        m_dialog->setAvailableItems(makeItems({"a"}), true);
        m_available->setCurrentRow(-1);
        click("m_loadButton");
        QCOMPARE(texts(m_available), QStringList({"a"}));
        QCOMPARE(m_selected->count(), 0);
    }

    void itemsKeepTheirIdentity()
    {
        const QList<QListWidgetItem *> available = makeItems({"a"});
        const QList<QListWidgetItem *> selected = makeItems({"b"});
        m_dialog->setSelectedItems(selected, true);
        m_dialog->setAvailableItems(available, true);
        m_available->setCurrentRow(0);
        click("m_loadButton");
        QCOMPARE(m_dialog->selectedItems(), selected + available);
    }

    void doneAccepts()
    {
        const QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
        click("m_doneButton");
        QCOMPARE(accepted.count(), 1);
    }

    void closingRejects()
    {
        const QSignalSpy rejected(m_dialog.get(), &QDialog::rejected);
        m_dialog->show();
        m_dialog->close();
        QCOMPARE(rejected.count(), 1);
    }

private:
    void click(const char *name) const { m_dialog->findChild<QPushButton *>(QLatin1String(name))->click(); }

    std::unique_ptr<KelvoSelectItemsDialog> m_dialog;
    QListWidget *m_available = nullptr;
    QListWidget *m_selected = nullptr;
};

KELVO_WIDGET_TEST(SelectItemsDialogTest)
#include "SelectItemsDialogTest.moc"
