// SPDX-License-Identifier: MIT
#include "FormTable.h"
#include "KelvoQueryPropertiesDialog.h"
#include "KelvoSearchDialog.h"
#include "KelvoSourceDialog.h"
#include "KelvoSourcePropertiesDialog.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingContext.h"
#include "RecordingSource.h"
#include "TestGroup.h"
#include "platform/QInputContext.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

namespace {
const FormCell searchForm[] = {
    {"label", "QLabel", "Search for:", 0, 0, 0, 1, 1},
    {"m_searchTermEdit", "QLineEdit", nullptr, 0, 0, 1, 2, 2},
    {"label_2", "QLabel", "(case-sensitive)", 0, 1, 0, 1, 1},
    {"m_searchChoiseCombo", "QComboBox", nullptr, 0, 2, 0, 1, 3},
    {"m_executeButton", "QPushButton", "Execute", 0, 3, 0, 1, 1},
    {"m_cancelButton", "QPushButton", "Cancel", 0, 3, 2, 1, 1},
};

const FormCell selectSourcesForm[] = {
    {"m_doneButton", "QPushButton", "Done", 0, 1, 0, 1, 1},
    {"label", "QLabel", "Note that Cancel \ncloses the dialog and \nresets the selection", 0, 1, 2, 1, 1},
    {"m_cancelButton", "QPushButton", "Cancel", 0, 1, 3, 1, 1},
};

using Sources = std::vector<std::unique_ptr<RecordingSource>>;

Sources makeSources(int count)
{
    Sources sources;
    for (int i = 0; i < count; ++i)
        sources.push_back(std::make_unique<RecordingSource>(
            QStringLiteral("s%1").arg(i), QStringLiteral("source %1").arg(i)));
    return sources;
}

QList<KelvoSource *> list(const Sources &sources)
{
    QList<KelvoSource *> pointers;
    for (const auto &source : sources)
        pointers.append(source.get());
    return pointers;
}

/// "1,0" for the second row's first column.
QStringList cells(const QDialog &dialog)
{
    const auto *box = dialog.findChild<QGroupBox *>("m_groupBox");
    const auto *grid = qobject_cast<QGridLayout *>(box->layout());
    QStringList places;
    for (const QCheckBox *check : dialog.findChildren<QCheckBox *>()) {
        int row = -1, column = -1, rowSpan = -1, columnSpan = -1;
        grid->getItemPosition(grid->indexOf(check), &row, &column, &rowSpan, &columnSpan);
        places.append(QStringLiteral("%1:%2,%3").arg(check->text()).arg(row).arg(column));
    }
    return places;
}

QStringList classesIn(const QDialog &dialog, const char *layout)
{
    QStringList names;
    const auto *box = dialog.findChild<QBoxLayout *>(QLatin1String(layout));
    for (int i = 0; box && i < box->count(); ++i) {
        QLayoutItem *item = box->itemAt(i);
        names.append(item->widget() ? item->widget()->objectName() : item->layout()->objectName());
    }
    return names;
}
} // namespace

/// The dialogs of the Query menu, each for itself.
class ContentDialogsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void searchDialogForm()
    {
        const KelvoSearchDialog dialog(nullptr, nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("SearchDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Search"));
        compareForm(dialog, searchForm);
        const auto *combo = dialog.findChild<QComboBox *>("m_searchChoiseCombo");
        QStringList items;
        for (int i = 0; i < combo->count(); ++i)
            items.append(combo->itemText(i));
        QCOMPARE(items,
            QStringList(
                {"Album", "Artist", "Filename", "Music piece", "Video", "Free text search (YouTube)"}));
        QVERIFY(!combo->isEditable());
    }

    void searchDialogServesItsLineEdit()
    {
        RecordingContext context;
        const KelvoSearchDialog dialog(&context, nullptr);
        QCOMPARE(context.attached, QWidgetList({dialog.findChild<QLineEdit *>("m_searchTermEdit")}));
    }

    void searchDialogLogs()
    {
        LogRecorder log;
        {
            KelvoSearchDialog dialog(nullptr, nullptr);
            dialog.clear();
            dialog.searchTerm();
            dialog.searchItem();
        }
        QCOMPARE(log.lines(),
            QStringList({"KelvoSearchDialog::KelvoSearchDialog", "KelvoSearchDialog::clear",
                "KelvoSearchDialog::searchTerm", "KelvoSearchDialog::searchItem",
                "KelvoSearchDialog::~KelvoSearchDialog"}));
    }

    void searchDialogProposesAnArtistAmongFileNames()
    {
        KelvoSearchDialog dialog(nullptr, nullptr);
        dialog.clear();
        const QString proposed = dialog.searchTerm();
        QVERIFY(!proposed.isEmpty());
        QCOMPARE(dialog.searchItem(), 2);
        dialog.findChild<QLineEdit *>("m_searchTermEdit")->setText("other");
        dialog.findChild<QComboBox *>("m_searchChoiseCombo")->setCurrentIndex(5);
        QCOMPARE(dialog.searchTerm(), QStringLiteral("other"));
        QCOMPARE(dialog.searchItem(), 5);
        dialog.reject();
        dialog.clear();
        QCOMPARE(dialog.searchTerm(), proposed);
        QCOMPARE(dialog.searchItem(), 2);
    }

    void searchDialogAnswers()
    {
        KelvoSearchDialog dialog(nullptr, nullptr);
        QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.findChild<QPushButton *>("m_executeButton")->click();
        dialog.findChild<QPushButton *>("m_cancelButton")->click();
        QCOMPARE(finished, QList<QVariantList>({{int(QDialog::Accepted)}, {int(QDialog::Rejected)}}));
    }

    void sourceDialogForm()
    {
        const KelvoSourceDialog dialog(nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("SelectSourcesDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
        compareForm(dialog, selectSourcesForm);
        const auto *box = dialog.findChild<QGroupBox *>("m_groupBox");
        QCOMPARE(box->title(), QStringLiteral("Select sources for query"));
        int row = -1, column = -1, rowSpan = -1, columnSpan = -1;
        const auto *grid = qobject_cast<QGridLayout *>(dialog.layout());
        grid->getItemPosition(grid->indexOf(box), &row, &column, &rowSpan, &columnSpan);
        QCOMPARE(QList<int>({row, column, rowSpan, columnSpan}), QList<int>({0, 0, 1, 4}));
    }

    void sourceDialogLogs()
    {
        LogRecorder log;
        {
            KelvoSourceDialog dialog(nullptr);
            dialog.setSources({}, {});
            dialog.selectedSources();
        }
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceDialog::KelvoSourceDialog", "KelvoSourceDialog::setSources",
                "KelvoSourceDialog::selectedSources", "KelvoSourceDialog::~KelvoSourceDialog"}));
    }

    void fiveSourcesFillTwoColumns()
    {
        const Sources sources = makeSources(5);
        KelvoSourceDialog dialog(nullptr);
        dialog.setSources(list(sources), {false, true, false, false, true});
        QCOMPARE(cells(dialog),
            QStringList({"source 0:0,0", "source 1:0,1", "source 2:1,0", "source 3:1,1", "source 4:2,0"}));
        QCOMPARE(dialog.selectedSources(), QList<bool>({false, true, false, false, true}));
        const auto *grid = qobject_cast<QGridLayout *>(dialog.findChild<QGroupBox *>("m_groupBox")->layout());
        QCOMPARE(grid->horizontalSpacing(), 20);
        QCOMPARE(grid->verticalSpacing(), 20);
        dialog.findChildren<QCheckBox *>().first()->click();
        QCOMPARE(dialog.selectedSources(), QList<bool>({true, true, false, false, true}));
        QCOMPARE(dialog.selectedSourceNames(), QStringList({"source 0", "source 1", "source 4"}));
    }

    void newSourcesReplaceTheEarlierOnes()
    {
        const Sources sources = makeSources(5);
        KelvoSourceDialog dialog(nullptr);
        dialog.setSources(list(sources), QList<bool>(5, true));
        const Sources others = makeSources(2);
        dialog.setSources(list(others), {false, true});
        QCOMPARE(cells(dialog), QStringList({"source 0:0,0", "source 1:0,1"}));
        QCOMPARE(dialog.findChild<QGroupBox *>("m_groupBox")->layout()->count(), 2);
        QCOMPARE(dialog.selectedSources(), QList<bool>({false, true}));
    }

    void noSourcesLeaveTheBoxEmpty()
    {
        const Sources sources = makeSources(3);
        KelvoSourceDialog dialog(nullptr);
        dialog.setSources(list(sources), QList<bool>(3, true));
        QCOMPARE(dialog.findChildren<QCheckBox *>().size(), 3);
        dialog.setSources({}, {});
        QCOMPARE(dialog.findChildren<QCheckBox *>().size(), 0);
        QCOMPARE(dialog.findChild<QGroupBox *>("m_groupBox")->layout()->count(), 0);
        QCOMPARE(dialog.selectedSources(), QList<bool>());
        QCOMPARE(dialog.selectedSourceNames(), QStringList());
    }

    void sourceDialogAnswers()
    {
        KelvoSourceDialog dialog(nullptr);
        QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.findChild<QPushButton *>("m_doneButton")->click();
        dialog.findChild<QPushButton *>("m_cancelButton")->click();
        QCOMPARE(finished, QList<QVariantList>({{int(QDialog::Accepted)}, {int(QDialog::Rejected)}}));
    }

    void sourcePropertiesDialogForm()
    {
        const KelvoSourcePropertiesDialog dialog(nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("SourcePropertiesDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Source properties"));
        QCOMPARE(dialog.layout()->objectName(), QStringLiteral("horizontalLayout"));
        QVERIFY(qobject_cast<QHBoxLayout *>(dialog.layout()));
        QCOMPARE(classesIn(dialog, "horizontalLayout"), QStringList({"verticalLayout", "verticalLayout_2"}));
        QCOMPARE(classesIn(dialog, "verticalLayout"),
            QStringList({"m_sourceCombo", "label", "m_propertiesField"}));
        QCOMPARE(classesIn(dialog, "verticalLayout_2"),
            QStringList({"m_signInButton", "m_signOutButton", "m_doneButton"}));
        QCOMPARE(dialog.findChild<QLabel *>("label")->text(), QStringLiteral("Properties:"));
        QVERIFY(dialog.findChild<QTextEdit *>("m_propertiesField")->isReadOnly());
        QCOMPARE(dialog.findChild<QPushButton *>("m_signInButton")->text(), QStringLiteral("SignIn"));
        QCOMPARE(dialog.findChild<QPushButton *>("m_signOutButton")->text(), QStringLiteral("SignOut"));
        QCOMPARE(dialog.findChild<QToolButton *>("m_doneButton")->text(), QStringLiteral("Done"));
        QVERIFY(!dialog.findChild<QComboBox *>("m_sourceCombo")->accessibleName().isEmpty());
        QVERIFY(!dialog.findChild<QTextEdit *>("m_propertiesField")->accessibleName().isEmpty());
    }

    void sourcePropertiesDialogSignals()
    {
        KelvoSourcePropertiesDialog dialog(nullptr);
        QStringList names;
        const QMetaObject *meta = dialog.metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            names.append(QString::fromLatin1(meta->method(i).methodSignature()));
        QCOMPARE(names, QStringList({"getProperties(QString)", "signIn()", "signOut()"}));
        QSignalSpy in(&dialog, SIGNAL(signIn()));
        QSignalSpy out(&dialog, SIGNAL(signOut()));
        QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.findChild<QPushButton *>("m_signInButton")->click();
        QCOMPARE(QList<int>({int(in.count()), int(out.count())}), QList<int>({1, 0}));
        dialog.findChild<QPushButton *>("m_signOutButton")->click();
        QCOMPARE(QList<int>({int(in.count()), int(out.count())}), QList<int>({1, 1}));
        dialog.findChild<QToolButton *>("m_doneButton")->click();
        QCOMPARE(finished, QList<QVariantList>({{int(QDialog::Accepted)}}));
    }

    void listingSourcesAsksForTheFirst()
    {
        const Sources sources = makeSources(3);
        KelvoSourcePropertiesDialog dialog(nullptr);
        QSignalSpy asked(&dialog, SIGNAL(getProperties(QString)));
        dialog.setSources(list(sources));
        QCOMPARE(asked, QList<QVariantList>({{"source 0"}}));
        QCOMPARE(dialog.findChild<QComboBox *>("m_sourceCombo")->count(), 3);
        dialog.setSources({});
        QCOMPARE(dialog.findChild<QComboBox *>("m_sourceCombo")->count(), 0);
    }

    void anotherSourceClearsThePropertiesBeforeItIsAsked()
    {
        const Sources sources = makeSources(2);
        KelvoSourcePropertiesDialog dialog(nullptr);
        dialog.setSources(list(sources));
        dialog.addProperty("modelName", "X");
        dialog.addProperty("signedIn", "true");
        const auto *field = dialog.findChild<QTextEdit *>("m_propertiesField");
        QCOMPARE(field->toPlainText(), QStringLiteral("modelName: X\nsignedIn: true"));
        QString seen("not asked");
        connect(&dialog, &KelvoSourcePropertiesDialog::getProperties, this,
            [&](const QString &) { seen = field->toPlainText(); });
        dialog.findChild<QComboBox *>("m_sourceCombo")->setCurrentIndex(1);
        QCOMPARE(seen, QString());
    }

    void sourcePropertiesDialogLogs()
    {
        LogRecorder log;
        {
            KelvoSourcePropertiesDialog dialog(nullptr);
            dialog.setSources({});
            dialog.addProperty("a", "b");
        }
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourcePropertiesDialog::KelvoSourcePropertiesDialog",
                "KelvoSourcePropertiesDialog::setSources", "KelvoSourcePropertiesDialog::addProperty",
                "KelvoSourcePropertiesDialog::~KelvoSourcePropertiesDialog"}));
    }

    void enterDoesNotSignIn()
    {
        KelvoSourcePropertiesDialog dialog(nullptr);
        QSignalSpy in(&dialog, SIGNAL(signIn()));
        dialog.show();
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(in.count(), 0);
    }

    void queryPropertiesDialogForm()
    {
        const KelvoQueryPropertiesDialog dialog(nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("QueryPropertiesDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
        QCOMPARE(dialog.findChild<QWidget *>("layoutWidget")->layout()->objectName(),
            QStringLiteral("verticalLayout"));
        QCOMPARE(classesIn(dialog, "verticalLayout"),
            QStringList({"horizontalLayout", "horizontalLayout_2", "m_buttonBox"}));
        QCOMPARE(classesIn(dialog, "horizontalLayout"), QStringList({"label", "m_firstBlockSizeSpinBox"}));
        QCOMPARE(
            classesIn(dialog, "horizontalLayout_2"), QStringList({"label_2", "m_streamBlockSizeSpinBox"}));
        QCOMPARE(dialog.findChild<QLabel *>("label")->text(), QStringLiteral("First block size"));
        QCOMPARE(dialog.findChild<QLabel *>("label_2")->text(), QStringLiteral("Streaming block size"));
        for (const QSpinBox *box : dialog.findChildren<QSpinBox *>()) {
            QCOMPARE(QList<int>({box->minimum(), box->maximum(), box->value()}), QList<int>({0, 99999, 0}));
            QVERIFY(!box->accessibleName().isEmpty());
        }
        const auto *buttons = dialog.findChild<QDialogButtonBox *>("m_buttonBox");
        QCOMPARE(buttons->orientation(), Qt::Horizontal);
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        QCOMPARE(buttons->font().pointSize(), 48);
    }

    void okAcceptsTwice()
    {
        KelvoQueryPropertiesDialog dialog(nullptr);
        dialog.findChild<QSpinBox *>("m_firstBlockSizeSpinBox")->setValue(12);
        dialog.findChild<QSpinBox *>("m_streamBlockSizeSpinBox")->setValue(345);
        QSignalSpy changed(&dialog, SIGNAL(queryPropertiesChanged(int, int)));
        QSignalSpy accepted(&dialog, &QDialog::accepted);
        LogRecorder log;
        dialog.findChild<QDialogButtonBox *>("m_buttonBox")->button(QDialogButtonBox::Ok)->click();
        QCOMPARE(changed, QList<QVariantList>({{12, 345}, {12, 345}}));
        QCOMPARE(accepted.count(), 2);
        const QString line("virtual void KelvoQueryPropertiesDialog::accept() 12 345");
        QCOMPARE(log.lines(), QStringList({line, line}));
    }

    void theDialogIsClosedBeforeTheChangeIsTold()
    {
        KelvoQueryPropertiesDialog dialog(nullptr);
        dialog.show();
        bool visible = true;
        connect(&dialog, &KelvoQueryPropertiesDialog::queryPropertiesChanged, this,
            [&] { visible = dialog.isVisible(); });
        dialog.accept();
        QVERIFY(!visible);
    }

    void cancelTellsNothingAndKeepsTheValues()
    {
        KelvoQueryPropertiesDialog dialog(nullptr);
        auto *box = dialog.findChild<QSpinBox *>("m_firstBlockSizeSpinBox");
        box->setValue(12);
        QSignalSpy changed(&dialog, SIGNAL(queryPropertiesChanged(int, int)));
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        dialog.findChild<QDialogButtonBox *>("m_buttonBox")->button(QDialogButtonBox::Cancel)->click();
        QCOMPARE(changed.count(), 0);
        QCOMPARE(rejected.count(), 1);
        QCOMPARE(box->value(), 12);
    }
};

KELVO_WIDGET_TEST(ContentDialogsTest)
#include "ContentDialogsTest.moc"
