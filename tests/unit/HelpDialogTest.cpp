// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoHelpDialog.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QAction>
#include <QFontInfo>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>
#include <QVBoxLayout>

namespace {
QTextEdit *page(const QDialog &dialog)
{
    return dialog.findChild<QTextEdit *>("m_helpTextEdit");
}
} // namespace

class HelpDialogTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void form()
    {
        const KelvoHelpDialog dialog(nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("HelpDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Help"));
        auto *layout = dialog.findChild<QVBoxLayout *>("verticalLayout");
        QCOMPARE(layout, dialog.layout());
        auto *button = dialog.findChild<QPushButton *>("m_closeButton");
        QCOMPARE(layout->count(), 2);
        QCOMPARE(layout->itemAt(0)->widget(), page(dialog));
        QCOMPARE(layout->itemAt(1)->widget(), button);
        QVERIFY(page(dialog)->isReadOnly());
        QCOMPARE(button->text(), QStringLiteral("Close"));
        QCOMPARE(button->font().pointSize(), 16);
    }

    void logsItsLife()
    {
        LogRecorder log;
        std::make_unique<KelvoHelpDialog>(nullptr).reset();
        QCOMPARE(log.lines(),
            QStringList({"KelvoHelpDialog::KelvoHelpDialog", "KelvoHelpDialog::~KelvoHelpDialog"}));
    }

    void closeAccepts()
    {
        KelvoHelpDialog dialog(nullptr);
        const QSignalSpy accepted(&dialog, &QDialog::accepted);
        dialog.findChild<QPushButton *>("m_closeButton")->click();
        QCOMPARE(accepted.count(), 1);
    }

    void textIsReadable()
    {
        const KelvoHelpDialog dialog(nullptr);
        for (QTextBlock block = page(dialog)->document()->begin(); block.isValid(); block = block.next()) {
            const QFont font = block.begin().fragment().charFormat().font();
            QCOMPARE(font.pointSize(), 14);
            QVERIFY2(
                font.families().join(' ').contains("sans", Qt::CaseInsensitive), qPrintable(block.text()));
        }
    }

    void headingsAreBoldParagraphs()
    {
        const KelvoHelpDialog dialog(nullptr);
        QStringList headings;
        for (QTextBlock block = page(dialog)->document()->begin(); block.isValid(); block = block.next()) {
            if (block.begin().fragment().charFormat().fontWeight() == QFont::Bold)
                headings.append(block.text());
        }
        QCOMPARE(headings, QStringList({"What and where?", "NOTE", "How?", "Play", "Query", "Playlists"}));
    }

    void saysInOrder()
    {
        const KelvoHelpDialog dialog(nullptr);
        const QString text = page(dialog)->toPlainText().simplified();
        qsizetype from = 0;
        for (const char *part : {"short help", "wiki", "\"Play music\"", "left combo box", "\"Play video\"",
                 "\"Query\"", "upper combo box", "\"Select sources...\"", "\"Query properties\"", "Red texts",
                 "policy", "any Play button", "seeking is not implemented", "double click", "full screen",
                 "only the tracker source", "\"Fetch rest\"", "\"Extend query\"", "\"Search...\"",
                 "\"Create new...\"", "\"Create new playlist from result set\"", "deleted and cleared",
                 "\"Remove current...\" and \"Shuffle\" are not implemented"}) {
            const qsizetype at = text.indexOf(QLatin1String(part), from, Qt::CaseInsensitive);
            QVERIFY2(at >= 0, part);
            from = at;
        }
    }

    void menuEntryOpensItModally()
    {
        const ConsoleFixture console;
        ModalCloser closer;
        LogRecorder log;
        console.find<QAction>("m_actionHelp")->trigger();
        QCOMPARE(closer.seen(), QStringList({"Help"}));
        QCOMPARE(log.count("KelvoMainWindow::showHelpDialog"), 1);
    }
};

KELVO_WIDGET_TEST(HelpDialogTest)
#include "HelpDialogTest.moc"
