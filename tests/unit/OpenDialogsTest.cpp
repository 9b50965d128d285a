// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingRenderer.h"
#include "RecordingSource.h"
#include "TestGroup.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

namespace {
/// Whatever a dialog lets the user enter, choose or read.
QStringList contentOf(const QWidget *dialog)
{
    QStringList content;
    const QWidgetList widgets = dialog->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        for (const char *property : {"text", "value", "checked", "currentText", "plainText"}) {
            const QVariant value = widget->property(property);
            if (value.isValid())
                content.append(
                    widget->objectName() + u' ' + QLatin1String(property) + u' ' + value.toString());
        }
        if (const auto *list = qobject_cast<const QListWidget *>(widget)) {
            for (int row = 0; row < list->count(); ++row)
                content.append(list->objectName() + u' ' + list->item(row)->text());
        }
    }
    return content;
}

/// Leaves something in every control.
void changeControls(const QWidget *dialog)
{
    for (auto *edit : dialog->findChildren<QLineEdit *>(QString(), Qt::FindDirectChildrenOnly))
        edit->setText("typed by the user");
    for (auto *slider : dialog->findChildren<QSlider *>())
        slider->setValue(slider->value() + 1);
    for (auto *box : dialog->findChildren<QCheckBox *>())
        box->toggle();
    for (auto *box : dialog->findChildren<QSpinBox *>())
        box->setValue(box->value() + 1);
    for (auto *combo : dialog->findChildren<QComboBox *>())
        combo->setCurrentIndex(combo->count() - 1);
    if (auto *available = dialog->findChild<QListWidget *>("m_availableItemsList")) {
        available->setCurrentRow(0);
        dialog->findChild<QPushButton *>("m_loadButton")->click();
    }
}
} // namespace

/// Dialogs that are made once and kept. Assistive technology reaches menu entries behind an open dialog, so each can be
/// asked for once more: that does nothing.
class OpenDialogsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_renderer = std::make_unique<RecordingRenderer>("r1", "one");
        m_sources.push_back(std::make_unique<RecordingSource>("s1", "source one"));
        m_sources.push_back(std::make_unique<RecordingSource>("s2", "source two"));
        KelvoRegistry::instance()->addRenderer(m_renderer.get());
        for (const auto &source : m_sources)
            KelvoRegistry::instance()->addSource(source.get());
        m_console = std::make_unique<ConsoleFixture>();
    }

    void cleanup()
    {
        m_console.reset();
        m_renderer.reset();
        m_sources.clear();
    }

    void secondOpeningDoesNothing_data() { addActions(); }
    void secondOpeningDoesNothing()
    {
        QFETCH(QByteArray, action);
        auto *entry = m_console->find<QAction>(action);
        ModalCloser closer(ModalCloser::Reject);
        QStringList before({"not opened"});
        QStringList after;
        QStringList warnings;
        closer.whenOpen = [&](const QWidget *dialog) {
            changeControls(dialog);
            before = contentOf(dialog);
            m_renderer->takeCalls();
            const LogRecorder log;
            entry->trigger();
            warnings = log.warnings();
            after = contentOf(dialog);
            QVERIFY(dialog->isVisible());
        };
        entry->trigger();
        QCOMPARE(after, before);
        QCOMPARE(warnings, QStringList());
        QCOMPARE(closer.seen().size(), 1);
        QCOMPARE(m_renderer->calls(), QStringList());
        entry->trigger(); // opens anew when it was closed
        QCOMPARE(closer.seen().size(), 2);
    }

    void windowThatGoesTakesItsOpenDialogAlong_data() { addActions(); }
    void windowThatGoesTakesItsOpenDialogAlong()
    {
        QFETCH(QByteArray, action);
        const QPointer<KelvoMainWindow> window = m_console->window();
        auto *entry = m_console->find<QAction>(action);
        QTimer::singleShot(0, window, [this] { m_console->find<QAction>("m_actionExit")->trigger(); });
        entry->trigger(); // returns when the dialog has gone
        QTRY_VERIFY(!window);
    }

    void choiceOfSourcesIsThatOfTheOpenDialog()
    {
        auto *entry = m_console->find<QAction>("m_actionSelectSources");
        ModalCloser closer(ModalCloser::Accept);
        closer.whenOpen = [&](const QWidget *dialog) {
            for (auto *box : dialog->findChildren<QCheckBox *>())
                box->setChecked(box->text() == "source two");
            entry->trigger();
        };
        entry->trigger();
        QCOMPARE(m_console->window()->getSelectedSources(), QStringList("source two"));
    }

    void dialogForPlaylistsIsTheTwinOfThatForPlugins()
    {
        ModalCloser closer(ModalCloser::Accept);
        const QWidget *shown = nullptr;
        closer.whenOpen = [&](const QWidget *dialog) {
            shown = dialog;
            changeControls(dialog); // moves the first one
            auto *another = new QListWidgetItem("another");
            QCOMPARE(m_console->window()->showSelectPlaylistsDialog({}, {another}), {another});
            delete another; // which was not taken over
        };
        LogRecorder log;
        const QList<QListWidgetItem *> available(
            {new QListWidgetItem("a.m3u"), new QListWidgetItem("b.m3u")});
        const QList<QListWidgetItem *> selected({new QListWidgetItem("c.m3u")});
        const auto result = m_console->window()->showSelectPlaylistsDialog(available, selected);
        QCOMPARE(result, QList<QListWidgetItem *>({selected.first(), available.first()}));
        QCOMPARE(log.count("KelvoMainWindow::showSelectPlaylistsDialog"), 2);
        // The second of the two, which no menu entry opens.
        const auto dialogs = m_console->window()->findChildren<QDialog *>("LoadPluginsDialog");
        QCOMPARE(dialogs.size(), 2);
        QCOMPARE(shown, dialogs.last());
        QVERIFY(!log.contains("KelvoMainWindow::showSelectItemsDialog"));
    }

    void uriDialogKeepsItsListWhileItIsOpen()
    {
        auto *entry = m_console->find<QAction>("m_actionPlayUri");
        entry->trigger();
        auto *dialog = m_console->find<QDialog>("PlayUriDialog");
        auto *list = dialog->findChild<QListWidget *>("m_playlistView");
        list->addItem("file:///a.ogg");
        entry->trigger();
        QVERIFY(dialog->isVisible());
        QCOMPARE(list->count(), 1);
        dialog->reject();
        entry->trigger();
        QCOMPARE(list->count(), 0);
        dialog->reject();
    }

private:
    static void addActions()
    {
        QTest::addColumn<QByteArray>("action");
        for (const char *action : {"m_actionPlugins", "m_actionHelp", "m_actionVolume", "m_actionCreateNew",
                 "m_actionSelectSources", "m_actionSearch", "m_actionSourceProperties",
                 "m_actionQuery_properties"})
            QTest::newRow(action) << QByteArray(action);
    }

    std::unique_ptr<RecordingRenderer> m_renderer;
    std::vector<std::unique_ptr<RecordingSource>> m_sources;
    std::unique_ptr<ConsoleFixture> m_console;
};

KELVO_WIDGET_TEST(OpenDialogsTest)
#include "OpenDialogsTest.moc"
