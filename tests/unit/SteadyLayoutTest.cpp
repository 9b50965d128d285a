// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAbstractButton>
#include <QHelpEvent>
#include <QListView>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTest>
#include <QTextDocumentFragment>
#include <QToolTip>

#include <functional>

namespace {
using ShowCaption = std::function<void(KelvoMainWindow *)>;

/// Where everything on the page is.
QMap<QString, QRect> placesOn(const QWidget *page)
{
    QMap<QString, QRect> places;
    const QWidgetList widgets = page->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget *widget : widgets)
        places.insert(widget->objectName(), widget->geometry());
    return places;
}

void settleLayout(KelvoMainWindow *window)
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCoreApplication::processEvents();
    window->grab();
}

/// What the tool tip shows when the pointer rests on that row; empty when there is none.
QString toolTipOf(QListView *view, int row)
{
    QToolTip::hideText();
    const QPoint place = view->visualRect(view->model()->index(row, 1)).topLeft() + QPoint(5, 5);
    QHelpEvent event(QEvent::ToolTip, place, view->viewport()->mapToGlobal(place));
    QCoreApplication::sendEvent(view->viewport(), &event);
    const QString text = QToolTip::isVisible() ? QToolTip::text() : QString();
    return Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
}
} // namespace
Q_DECLARE_METATYPE(QList<ShowCaption>)

/// Nothing on the screen moves while the program only says what state it is in, and what does not fit can be read.
class SteadyLayoutTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_window = new KelvoMainWindow(nullptr, nullptr);
    }
    void cleanup() { delete m_window; }

    void captionsMoveNothing_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<QList<ShowCaption>>("shows");
        QTest::addColumn<QSize>("size");
        const QList<ShowCaption> playback({&KelvoMainWindow::showPlayButton,
            &KelvoMainWindow::showPauseButton, &KelvoMainWindow::showResumeButton});
        const QList<ShowCaption> query({&KelvoMainWindow::showExecuteQueryButton,
            &KelvoMainWindow::showQueryCancelButton, &KelvoMainWindow::showFetchRestButton});
        const QList<ShowCaption> browse(
            {&KelvoMainWindow::showBrowseButton, &KelvoMainWindow::showBrowseCancelButton});
        for (const QSize size : {QSize(1, 1), QSize(800, 480), QSize(1200, 700)}) {
            QTest::addRow("music %d", size.width()) << QByteArray("tab_music") << playback << size;
            QTest::addRow("video %d", size.width()) << QByteArray("tab_video") << playback << size;
            QTest::addRow("query %d", size.width()) << QByteArray("tab_query") << query << size;
            QTest::addRow("browse %d", size.width()) << QByteArray("tab_browse") << browse << size;
        }
    }

    void captionsMoveNothing()
    {
        QFETCH(QByteArray, page);
        QFETCH(QList<ShowCaption>, shows);
        QFETCH(QSize, size);
        auto *widget = m_window->findChild<QWidget *>(QString::fromLatin1(page));
        m_window->findChild<QTabWidget *>("m_tabs")->setCurrentWidget(widget);
        m_window->resize(size);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        settleLayout(m_window);
        const QMap<QString, QRect> before = placesOn(widget);
        const QSize outer = m_window->size();
        for (const ShowCaption &show : shows + shows) {
            show(m_window);
            settleLayout(m_window);
            QCOMPARE(placesOn(widget), before);
            QCOMPARE(m_window->size(), outer);
        }
    }

    void captionsStillFitInAnotherFont()
    {
        QFont font = m_window->font();
        font.setPointSize(28);
        for (const char *name : {"m_music_playButton", "m_video_playButton"})
            m_window->findChild<QWidget *>(QLatin1String(name))->setFont(font);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        settleLayout(m_window);
        auto *page = m_window->findChild<QWidget *>("tab_music");
        const QMap<QString, QRect> before = placesOn(page);
        m_window->showResumeButton();
        settleLayout(m_window);
        QCOMPARE(placesOn(page), before);
    }

    void theWindowStillFitsTheSmallScreen()
    {
        m_window->show();
        QVERIFY(m_window->minimumSizeHint().width() <= 800);
        QVERIFY(m_window->minimumSizeHint().height() <= 480);
    }

    void elidedRowsHaveTheirTextAsToolTip_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<int>("tab");
        QTest::addColumn<int>("longRow"); // the first row may widen the others
        for (const int row : {0, 1, 2}) {
            QTest::addRow("query %d", row) << QByteArray("m_query_resultsView") << 4 << row;
            QTest::addRow("browse %d", row) << QByteArray("m_browse_resultsView") << 3 << row;
            QTest::addRow("playlist %d", row) << QByteArray("m_music_playlistView") << 0 << row;
        }
    }

    void elidedRowsHaveTheirTextAsToolTip()
    {
        QFETCH(QByteArray, list);
        QFETCH(int, tab);
        QFETCH(int, longRow);
        const QString longText = QStringLiteral("A <b>title</b> & more ") + QString(300, u'w');
        QStandardItemModel model;
        for (const char *text : {"short", "", "another"})
            model.appendRow({new QStandardItem, new QStandardItem(QString::fromLatin1(text))});
        model.item(longRow, 1)->setText(longText);
        m_window->showQueryResults(&model);
        m_window->showBrowseResults(&model);
        m_window->showPlaylist(&model);
        m_window->findChild<QTabWidget *>("m_tabs")->setCurrentIndex(tab);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        auto *view = m_window->findChild<QListView *>(QString::fromLatin1(list));
        for (const int row : {(longRow + 1) % 3, (longRow + 2) % 3})
            QCOMPARE(toolTipOf(view, row), QString());
        QCOMPARE(toolTipOf(view, longRow), longText); // last, as a tool tip takes its time to go
    }

private:
    KelvoMainWindow *m_window = nullptr;
};

KELVO_WIDGET_TEST(SteadyLayoutTest)
#include "SteadyLayoutTest.moc"
