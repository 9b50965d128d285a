// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "ListTexts.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace {
QListWidget *list(const QWidget *dialog, const char *name)
{
    return dialog->findChild<QListWidget *>(QLatin1String(name));
}

/// Moves the entry as a tester does: a click on it, and one on the button.
void move(const QWidget *dialog, const char *listName, const QString &text, const char *button)
{
    QListWidget *from = list(dialog, listName);
    const QList<QListWidgetItem *> found = from->findItems(text, Qt::MatchExactly);
    QCOMPARE(found.size(), 1);
    from->setCurrentItem(found.first());
    dialog->findChild<QPushButton *>(QLatin1String(button))->click();
}

void load(const QWidget *dialog, const QString &text)
{
    move(dialog, "m_availableItemsList", text, "m_loadButton");
}

void unload(const QWidget *dialog, const QString &text)
{
    move(dialog, "m_selectedItemsList", text, "m_unloadButton");
}
} // namespace

/// The real dialog of the window on real plug-ins. The folder holds the simulator under two names.
class PluginControllerTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        const QString built = qEnvironmentVariable("KELVO_PLUGIN_PATH");
        if (m_built.isEmpty())
            m_built = built;
        m_folder = std::make_unique<QTemporaryDir>();
        for (const char *name : {"one.so", "two.so"})
            QVERIFY(QFile::copy(m_built + "/simulator.so", m_folder->filePath(name)));
        qputenv("KELVO_PLUGIN_PATH", QFile::encodeName(m_folder->path()));
        m_console = std::make_unique<ConsoleFixture>();
    }

    void cleanup()
    {
        m_console.reset();
        const QStringList loaded = registry()->loadedPlugins();
        for (const QString &fileName : loaded)
            registry()->unloadPlugin(fileName);
    }

    void listsWhatThereIs()
    {
        bringIn("one.so");
        QStringList available;
        QStringList selected;
        openAnd(ModalCloser::Accept, [&](const QWidget *dialog) {
            available = texts(list(dialog, "m_availableItemsList"));
            selected = texts(list(dialog, "m_selectedItemsList"));
        });
        QVERIFY(available.contains("two"));
        QVERIFY(!available.contains("one"));
        QCOMPARE(selected, QStringList({"one"}));
    }

    void doneWithoutAMoveChangesNothing()
    {
        bringIn("one.so");
        LogRecorder log;
        openAnd(ModalCloser::Accept, [](const QWidget *) {});
        QCOMPARE(registry()->loadedPlugins(), QStringList({"one.so"}));
        QVERIFY(!log.lines().join('\n').contains("Plug-in"));
        QVERIFY(log.containsInOrder(
            {"KelvoPluginController::showPluginsDialog", "KelvoMainWindow::showSelectItemsDialog",
                "KelvoSelectItemsDialog::setSelectedItems", "__PRETTY_FUNCTION__",
                "KelvoSelectItemsDialog::selectedItems", "KelvoPluginController::showPluginsDialog ends"}));
    }

    void movingThereAndBackChangesNothing()
    {
        bringIn("one.so");
        LogRecorder log;
        openAnd(ModalCloser::Accept, [](const QWidget *dialog) {
            unload(dialog, "one");
            load(dialog, "one");
            load(dialog, "two");
            unload(dialog, "two");
        });
        QCOMPARE(registry()->loadedPlugins(), QStringList({"one.so"}));
        QVERIFY(!log.lines().join('\n').contains("Plug-in"));
    }

    void loadsWhatWasAdded()
    {
        const QComboBox *renderers = m_console->find<QComboBox>("m_music_rendererCombo");
        QCOMPARE(renderers->count(), 0);
        openAnd(ModalCloser::Accept, [](const QWidget *dialog) { load(dialog, "one"); });
        QTRY_COMPARE(registry()->loadedPlugins(), QStringList({"one.so"}));
        QTRY_VERIFY(renderers->count() > 0);
    }

    void unloadsWhatWasTakenOut()
    {
        const QComboBox *renderers = m_console->find<QComboBox>("m_music_rendererCombo");
        bringIn("one.so");
        QTRY_VERIFY(renderers->count() > 0);
        openAnd(ModalCloser::Accept, [](const QWidget *dialog) { unload(dialog, "one"); });
        QTRY_COMPARE(registry()->loadedPlugins(), QStringList());
        QTRY_COMPARE(renderers->count(), 0);
    }

    void cancelChangesNothing()
    {
        bringIn("one.so");
        LogRecorder log;
        openAnd(ModalCloser::Reject, [](const QWidget *dialog) {
            unload(dialog, "one");
            load(dialog, "two");
        });
        QCOMPARE(registry()->loadedPlugins(), QStringList({"one.so"}));
        QVERIFY(!log.lines().join('\n').contains("Plug-in"));
    }

    void nextOpeningStartsAfresh()
    {
        openAnd(ModalCloser::Reject, [](const QWidget *dialog) { load(dialog, "one"); });
        QStringList selected({"not seen"});
        openAnd(ModalCloser::Reject,
            [&](const QWidget *dialog) { selected = texts(list(dialog, "m_selectedItemsList")); });
        QCOMPARE(selected, QStringList());
    }

    /// A plug-in whose file is gone fails at once, which shows the order.
    void loadsBeforeItUnloads()
    {
        bringIn("one.so");
        LogRecorder log;
        openAnd(ModalCloser::Accept, [this](const QWidget *dialog) {
            unload(dialog, "one");
            load(dialog, "two");
            QFile::remove(m_folder->filePath("two.so"));
        });
        QVERIFY(log.containsInOrder({"Plug-in two.so cannot be used: there is no such file",
            "Plug-in \"one.so\" is unloaded", "KelvoPluginController::showPluginsDialog ends"}));
    }

    void folderThatVanishesWhileTheDialogIsOpen()
    {
        bringIn("one.so");
        LogRecorder log;
        openAnd(ModalCloser::Accept, [this](const QWidget *dialog) {
            load(dialog, "two");
            QVERIFY(QDir(m_folder->path()).removeRecursively());
        });
        QVERIFY(log.warnings().join('\n').contains("there is no such file"));
        QCOMPARE(registry()->loadedPlugins(), QStringList({"one.so"}));
        openAnd(ModalCloser::Accept, [](const QWidget *dialog) { unload(dialog, "one"); });
        QCOMPARE(registry()->loadedPlugins(), QStringList());
    }

    void pluginsThatFailLeaveTheDialogUsable_data()
    {
        QTest::addColumn<QByteArray>("start");
        QTest::newRow("start is refused") << QByteArray("refuses");
        QTest::newRow("start throws") << QByteArray("throws");
        QTest::newRow("cannot be made") << QByteArray("throws when made");
    }
    void pluginsThatFailLeaveTheDialogUsable()
    {
        QFETCH(QByteArray, start);
        const QStringList failing = addPluginsThatFail();
        QCOMPARE(failing.size(), 10);
        qputenv("KELVO_TEST_PLUGIN", start);
        LogRecorder log;
        openAnd(ModalCloser::Accept, [&failing](const QWidget *dialog) {
            for (const QString &name : failing)
                load(dialog, name);
            load(dialog, "one");
        });
        for (const QString &name : failing) {
            QTRY_VERIFY2(!log.warnings().filter(name + ".so cannot be used: ").isEmpty(), qPrintable(name));
        }
        QTRY_COMPARE(registry()->loadedPlugins(), QStringList("one.so"));
        qunsetenv("KELVO_TEST_PLUGIN");
        QStringList available;
        openAnd(ModalCloser::Accept, [&available](const QWidget *dialog) {
            available = texts(list(dialog, "m_availableItemsList"));
            unload(dialog, "one");
        });
        QCOMPARE(available.filter(QRegularExpression("^(bad-|one$|two$)")), failing + QStringList("two"));
        QCOMPARE(registry()->loadedPlugins(), QStringList());
        QCOMPARE(registry()->renderers().size(), 0);
    }

    /// What could not be loaded says why where one tries again, until it is loaded.
    void failureIsToldAtTheEntry()
    {
        QFile broken(m_folder->filePath("unreadable.so"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("not a library") > 0);
        broken.close();
        QCOMPARE(told("m_availableItemsList", "unreadable"), QStringList({"", ""}));
        LogRecorder log;
        registry()->loadPlugin("unreadable.so");
        const QString warning = "Plug-in unreadable.so cannot be used: ";
        QTRY_VERIFY(!log.warnings().filter(warning).isEmpty());
        const QString reason = log.warnings().filter(warning).constFirst().section(warning, 1);
        QVERIFY(!reason.isEmpty());
        QCOMPARE(told("m_availableItemsList", "unreadable"),
            QStringList({"Cannot be used: " + reason, "Cannot be used: " + reason}));
        QCOMPARE(told("m_availableItemsList", "one"), QStringList({"", ""}));
        QVERIFY(
            QFile::remove(broken.fileName()) && QFile::copy(m_built + "/simulator.so", broken.fileName()));
        bringIn("unreadable.so");
        QCOMPARE(told("m_selectedItemsList", "unreadable"), QStringList({"", ""}));
    }

    void fileReplacedWhileLoaded()
    {
        bringIn("one.so");
        QVERIFY(QFile::remove(m_folder->filePath("one.so")));
        QVERIFY(QFile::copy(m_folder->filePath("two.so"), m_folder->filePath("one.so")));
        openAnd(ModalCloser::Accept, [](const QWidget *dialog) { unload(dialog, "one"); });
        QCOMPARE(registry()->loadedPlugins(), QStringList());
        openAnd(ModalCloser::Accept, [](const QWidget *dialog) { load(dialog, "one"); });
        QTRY_COMPARE(registry()->loadedPlugins(), QStringList({"one.so"}));
    }

private:
    static KelvoRegistry *registry() { return KelvoRegistry::instance(); }

    /// Returns their names as they are listed.
    QStringList addPluginsThatFail()
    {
        const QDir made(qEnvironmentVariable("KELVO_TEST_PLUGIN_DIR"));
        for (const char *name :
            {"no-interface", "old-interface", "other-root", "missing-library", "missing-function"})
            QFile::copy(made.filePath(name + QStringLiteral(".so")), badFile(name));
        QFile::copy(made.filePath("good.so"), badFile("start"));
        QFile good(made.filePath("good.so"));
        const QByteArray bytes = good.open(QIODevice::ReadOnly) ? good.readAll() : QByteArray();
        const std::pair<const char *, QByteArray> contents[] = {{"empty", {}}, {"header", bytes.left(64)},
            {"text", "not a library"}, {"zeros", bytes.left(20) + QByteArray(bytes.size() - 20, '\0')}};
        for (const auto &[name, content] : contents) {
            QFile file(badFile(name));
            if (file.open(QIODevice::WriteOnly))
                file.write(content);
        }
        QStringList names = QDir(m_folder->path()).entryList({"bad-*"});
        return names.replaceInStrings(".so", "");
    }

    QString badFile(const char *name) const
    {
        return m_folder->filePath(QStringLiteral("bad-%1.so").arg(QLatin1String(name)));
    }

    /// Tool tip and accessible description of an entry.
    QStringList told(const char *listName, const QString &text)
    {
        QStringList told;
        openAnd(ModalCloser::Reject, [&](const QWidget *dialog) {
            const QList<QListWidgetItem *> found = list(dialog, listName)->findItems(text, Qt::MatchExactly);
            QCOMPARE(found.size(), 1);
            told = {found.first()->toolTip(), found.first()->data(Qt::AccessibleDescriptionRole).toString()};
        });
        return told;
    }

    void bringIn(const QString &fileName)
    {
        registry()->loadPlugin(fileName);
        QTRY_VERIFY(registry()->loadedPlugins().contains(fileName));
    }

    void openAnd(ModalCloser::Answer answer, const std::function<void(QWidget *)> &act)
    {
        ModalCloser closer(answer);
        closer.whenOpen = act;
        m_console->find<QAction>("m_actionPlugins")->trigger();
        QCOMPARE(closer.seen(), QStringList({""}));
    }

    QString m_built;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ConsoleFixture> m_console;
};

KELVO_WIDGET_TEST(PluginControllerTest)
#include "PluginControllerTest.moc"
