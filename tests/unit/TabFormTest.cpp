// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QSlider>
#include <QStackedWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTextEdit>
#include <QToolButton>

namespace {
struct Cell
{
    const char *page;
    const char *name;
    const char *kind;
    int row, column, rowSpan, columnSpan;
    const char *text; // null: has none of its own
};

const Cell cells[] = {
    {"tab_music", "m_music_rendererCombo", "QComboBox", 0, 0, 1, 4, nullptr},
    {"tab_music", "m_music_playlistCombo", "QComboBox", 0, 4, 1, 1, nullptr},
    {"tab_music", "m_music_playButton", "QToolButton", 1, 0, 1, 1, "Play"},
    {"tab_music", "m_music_stopButton", "QToolButton", 1, 1, 1, 1, "Stop"},
    {"tab_music", "m_music_prevButton", "QToolButton", 2, 0, 1, 1, "Prev"},
    {"tab_music", "m_music_nextButton", "QToolButton", 2, 1, 1, 1, "Next"},
    {"tab_music", "m_music_seekBackButton", "QToolButton", 3, 0, 1, 1, "< Seek"},
    {"tab_music", "m_music_seekForwButton", "QToolButton", 3, 1, 1, 1, "Seek >"},
    {"tab_music", "m_music_metadataField", "QTextEdit", 1, 2, 2, 2, nullptr},
    {"tab_music", "m_music_playlistView", "QListView", 1, 4, 3, 1, nullptr},
    {"tab_music", "m_music_progressStack", "QStackedWidget", 3, 2, 1, 1, nullptr},
    {"tab_music", "m_music_durationLabel", "QLabel", 3, 3, 1, 1, "0:31 /\n3:56"},

    {"tab_video", "m_video_playButton", "QToolButton", 0, 0, 1, 1, "Play"},
    {"tab_video", "m_video_stopButton", "QToolButton", 0, 1, 1, 1, "Stop"},
    // The seek buttons stand the other way round than on the music tab.
    {"tab_video", "m_video_seekForwButton", "QToolButton", 0, 2, 1, 1, "Seek >"},
    {"tab_video", "m_video_videoLabel", "QLabel", 0, 3, 3, 2, nullptr},
    {"tab_video", "m_video_prevButton", "QToolButton", 1, 0, 1, 1, "Prev"},
    {"tab_video", "m_video_nextButton", "QToolButton", 1, 1, 1, 1, "Next"},
    {"tab_video", "m_video_seekBackButton", "QToolButton", 1, 2, 1, 1, "< Seek"},
    {"tab_video", "m_video_progressStack", "QStackedWidget", 3, 0, 1, 3, nullptr},
    {"tab_video", "m_video_durationLabel", "QLabel", 3, 3, 1, 1, "1:45 / 2:50"},
    {"tab_video", "m_video_metadataField", "QTextEdit", 3, 4, 1, 1, nullptr},

    {"tab_browse", "label_2", "QLabel", 0, 0, 1, 1, "Browse:"},
    {"tab_browse", "m_browse_resultsLabel", "QLabel", 0, 1, 1, 1, "%n results"},
    {"tab_browse", "m_browse_errorLabel", "QLabel", 0, 3, 1, 4, ""},
    {"tab_browse", "m_browse_resultsView", "QListView", 1, 0, 3, 3, nullptr},
    {"tab_browse", "m_browse_playlistCombo", "QComboBox", 1, 3, 1, 4, nullptr},
    {"tab_browse", "m_browse_executeButton", "QToolButton", 2, 3, 1, 1, "Browse"},
    {"tab_browse", "m_browse_clearButton", "QToolButton", 2, 4, 1, 1, "Clear"},
    {"tab_browse", "m_browse_addButton", "QToolButton", 2, 5, 1, 1, "Append\nitem(s) to\nplaylist"},
    {"tab_browse", "m_browse_metadataButton", "QToolButton", 2, 6, 1, 1, "Show all\n metadata"},
    {"tab_browse", "m_browse_metadataField", "QTextEdit", 3, 3, 1, 2, nullptr},
    {"tab_browse", "m_browse_pictureField", "QLabel", 3, 5, 1, 2, ""},

    {"tab_query", "label_5", "QLabel", 0, 0, 1, 1, "Query:"},
    {"tab_query", "m_query_resultsLabel", "QLabel", 0, 1, 1, 1, "%n results"},
    {"tab_query", "m_query_errorLabel", "QLabel", 0, 3, 1, 4, ""},
    {"tab_query", "m_query_resultsView", "QListView", 1, 0, 3, 3, nullptr},
    {"tab_query", "m_query_playlistCombo", "QComboBox", 1, 3, 1, 4, nullptr},
    {"tab_query", "m_query_createPlaylistButton", "QToolButton", 2, 3, 1, 1,
        "Create new\n playlist from\n result set"},
    {"tab_query", "m_query_addButton", "QToolButton", 2, 4, 1, 1, "Append\n item(s) to\n playlist"},
    {"tab_query", "m_query_extendButton", "QToolButton", 2, 5, 1, 1, "Extend\nquery"},
    {"tab_query", "m_query_executeButton", "QToolButton", 2, 6, 1, 1, "Execute\nquery"},
    {"tab_query", "m_query_queryCombo", "QComboBox", 3, 3, 1, 4, nullptr},
};

QString trimmedRight(QString text)
{
    while (text.endsWith(QLatin1Char(' ')))
        text.chop(1);
    return text;
}
} // namespace

/// The tabs as the form describes them, before the window has shown anything on them.
class TabFormTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { m_form.setupUi(&m_window); }

    void tabs()
    {
        const QTabWidget *tabs = m_form.m_tabs;
        QCOMPARE(m_form.verticalLayout->count(), 1);
        QCOMPARE(m_form.verticalLayout->itemAt(0)->widget(), tabs);
        QCOMPARE(tabs->tabShape(), QTabWidget::Rounded);
        QCOMPARE(tabs->elideMode(), Qt::ElideNone);
        QVERIFY(!tabs->usesScrollButtons());
        QCOMPARE(tabs->font().pointSize(), 14);
        QCOMPARE(tabs->currentIndex(), 4);
        QCOMPARE(tabs->count(), 5);
    }

    void tab_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("trailingBlanks");
        QTest::addColumn<QString>("layout");
        QTest::newRow("tab_music") << 0 << "Play music" << 12 << "gridLayout";
        QTest::newRow("tab_video") << 1 << "Play video" << 12 << "gridLayout_2";
        QTest::newRow("tab_image") << 2 << "Show images" << 0 << "";
        QTest::newRow("tab_browse") << 3 << "Browse content" << 5 << "gridLayout_3";
        QTest::newRow("tab_query") << 4 << "Query" << 14 << "gridLayout_4";
    }

    void tab()
    {
        QFETCH(int, index);
        QFETCH(QString, title);
        QFETCH(int, trailingBlanks);
        QFETCH(QString, layout);
        const QWidget *page = m_form.m_tabs->widget(index);
        QCOMPARE(page->objectName(), QString::fromLatin1(QTest::currentDataTag()));
        const QString text = m_form.m_tabs->tabText(index);
        QCOMPARE(trimmedRight(text), title);
        QCOMPARE(int(text.size() - title.size()), trailingBlanks);
        QCOMPARE(page->layout() ? page->layout()->objectName() : QString(), layout);
        if (layout.isEmpty())
            QVERIFY(page->children().isEmpty());
    }

    void cell_data()
    {
        QTest::addColumn<const Cell *>("cell");
        for (const Cell &cell : cells)
            QTest::newRow(cell.name) << &cell;
    }

    void cell()
    {
        QFETCH(const Cell *, cell);
        auto *widget = m_window.findChild<QWidget *>(QLatin1String(cell->name));
        QVERIFY(widget);
        QCOMPARE(widget->metaObject()->className(), cell->kind);
        QCOMPARE(widget->parentWidget()->objectName(), QLatin1String(cell->page));
        const auto *grid = qobject_cast<QGridLayout *>(widget->parentWidget()->layout());
        int row = -1, column = -1, rowSpan = -1, columnSpan = -1;
        grid->getItemPosition(grid->indexOf(widget), &row, &column, &rowSpan, &columnSpan);
        QCOMPARE(QList<int>({row, column, rowSpan, columnSpan}),
            QList<int>({cell->row, cell->column, cell->rowSpan, cell->columnSpan}));
        if (cell->text)
            QCOMPARE(widget->property("text").toString(), QString::fromLatin1(cell->text));
    }

    void spacers_data()
    {
        QTest::addColumn<QString>("grid");
        QTest::addColumn<QList<int>>("columns");
        QTest::addColumn<int>("row");
        QTest::newRow("video") << "gridLayout_2" << QList<int>{0, 1, 2} << 2;
        QTest::newRow("browse") << "gridLayout_3" << QList<int>{2} << 0;
        QTest::newRow("query") << "gridLayout_4" << QList<int>{2} << 0;
    }

    void spacers()
    {
        QFETCH(QString, grid);
        QFETCH(QList<int>, columns);
        QFETCH(int, row);
        const auto *layout = m_window.findChild<QGridLayout *>(grid);
        for (int column : columns)
            QVERIFY(layout->itemAtPosition(row, column)->spacerItem());
    }

    void fonts_data()
    {
        QTest::addColumn<int>("points");
        for (const char *name : {"m_tabs", "m_music_durationLabel", "m_music_metadataField"})
            QTest::newRow(name) << 14;
        for (const char *name : {"m_music_rendererCombo", "m_music_playlistCombo", "m_browse_resultsView",
                 "m_browse_playlistCombo", "m_query_resultsView", "m_query_playlistCombo",
                 "m_query_queryCombo"})
            QTest::newRow(name) << 20;
    }

    void fonts()
    {
        QFETCH(int, points);
        QCOMPARE(m_window.findChild<QWidget *>(QLatin1String(QTest::currentDataTag()))->font().pointSize(),
            points);
    }

    void fieldsAreReadOnly()
    {
        for (const QTextEdit *field :
            {m_form.m_music_metadataField, m_form.m_video_metadataField, m_form.m_browse_metadataField}) {
            QVERIFY(field->isReadOnly());
            QVERIFY(field->toPlainText().isEmpty());
        }
    }

    void listViews()
    {
        QCOMPARE(m_form.m_music_playlistView->selectionMode(), QAbstractItemView::ContiguousSelection);
        QCOMPARE(m_form.m_music_playlistView->spacing(), 8);
        QCOMPARE(m_form.m_browse_resultsView->focusPolicy(), Qt::NoFocus);
        QCOMPARE(m_form.m_browse_resultsView->spacing(), 5);
        QCOMPARE(m_form.m_query_resultsView->autoScrollMargin(), 16);
        QCOMPARE(m_form.m_query_resultsView->spacing(), 5);
        QCOMPARE(m_form.m_query_resultsView->batchSize(), 100);
    }

    void progressStacks()
    {
        QCOMPARE(m_form.m_music_progressStack->widget(0)->objectName(), QStringLiteral("duration"));
        QCOMPARE(m_form.m_music_progressStack->widget(1)->objectName(), QStringLiteral("progress"));
        QCOMPARE(m_form.m_video_progressStack->widget(0)->objectName(), QStringLiteral("duration_2"));
        QCOMPARE(m_form.m_video_progressStack->widget(1)->objectName(), QStringLiteral("progress_2"));
        for (const QStackedWidget *stack : {m_form.m_music_progressStack, m_form.m_video_progressStack}) {
            QCOMPARE(stack->count(), 2);
            QCOMPARE(stack->currentIndex(), 0);
            QCOMPARE(stack->widget(0)->findChild<QSlider *>()->orientation(), Qt::Horizontal);
            const auto *bar = stack->widget(1)->findChild<QProgressBar *>();
            QCOMPARE(bar->value(), 24);
            QVERIFY(!bar->isTextVisible());
        }
        QVERIFY(m_form.duration->isAncestorOf(m_form.m_music_durationSlider));
        QVERIFY(m_form.progress->isAncestorOf(m_form.m_music_rendererProgress));
        QVERIFY(m_form.duration_2->isAncestorOf(m_form.m_video_durationSlider));
        QVERIFY(m_form.progress_2->isAncestorOf(m_form.m_video_rendererProgress));
    }

    void framedLabels()
    {
        for (const QLabel *label : {m_form.m_video_videoLabel, m_form.m_browse_pictureField}) {
            QCOMPARE(label->frameShape(), QFrame::Box);
            QCOMPARE(label->frameShadow(), QFrame::Sunken);
            QCOMPARE(label->lineWidth(), 3);
        }
    }

    void builtInQueries()
    {
        QStringList queries;
        for (int i = 0; i < m_form.m_query_queryCombo->count(); ++i)
            queries.append(m_form.m_query_queryCombo->itemText(i));
        QCOMPARE(queries,
            QStringList({"All songs", "Recently added songs", "Recently played songs", "Most played songs",
                "All albums", "All artists", "All playlists", "Favorite songs", "Never played songs",
                "Downloaded songs", "All videos (blocking query)"}));
    }

    void controlsWithoutTextHaveAccessibleNames()
    {
        QStringList names;
        const QList<QWidget *> widgets = m_form.m_tabs->findChildren<QWidget *>(QRegularExpression("^m_.*_"));
        for (const QWidget *widget : widgets) {
            const bool textless = qobject_cast<const QComboBox *>(widget)
                || qobject_cast<const QTextEdit *>(widget) || qobject_cast<const QListView *>(widget)
                || qobject_cast<const QSlider *>(widget) || qobject_cast<const QProgressBar *>(widget);
            if (textless) {
                QVERIFY2(!widget->accessibleName().isEmpty(), qPrintable(widget->objectName()));
                names.append(widget->accessibleName());
            }
        }
        QCOMPARE(names.size(), 15);
        QCOMPARE(names.removeDuplicates(), 0);
        QCOMPARE(m_form.m_video_videoLabel->accessibleName(), QStringLiteral("Video"));
    }

private:
    QMainWindow m_window;
    Ui::MainWindow m_form;
};

KELVO_WIDGET_TEST(TabFormTest)
#include "TabFormTest.moc"
