// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FatalCall.h"
#include "KelvoFullScreenVideoWidget.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

namespace {
/// Enters full screen, which nothing in the program does.
class FullScreenWindow : public KelvoMainWindow
{
public:
    FullScreenWindow()
        : KelvoMainWindow(nullptr, nullptr)
    {
    }
    void enterFullScreen()
    {
        m_videoFullScreen = true;
        setUpdatesEnabled(false);
        surface()->setVisible(true);
    }
    static QWidget *surface()
    {
        const QWidgetList widgets = QApplication::topLevelWidgets();
        for (QWidget *widget : widgets) {
            if (qobject_cast<KelvoFullScreenVideoWidget *>(widget))
                return widget;
        }
        return nullptr;
    }
};
} // namespace

/// The window's video label and the full-screen widget.
class VideoDisplayTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_window = new FullScreenWindow;
        m_window->resize(1000, 600);
        m_window->show();
        m_tabs = m_window->findChild<QTabWidget *>("m_tabs");
        m_label = m_window->findChild<QLabel *>("m_video_videoLabel");
    }
    void cleanup() { delete m_window; }

    void colorKey_data()
    {
        QTest::addColumn<uint>("key");
        QTest::addColumn<QString>("color"); // empty: the application's palette
        QTest::addColumn<bool>("illegal");
        QTest::newRow("none") << 0U << QString() << false;
        QTest::newRow("padded") << 0x10U << "#000010" << false;
        QTest::newRow("six digits") << 0xabcdefU << "#abcdef" << false;
        QTest::newRow("largest") << 0xffffffU << "#ffffff" << false;
        QTest::newRow("seven digits") << 0x1000000U << QString() << true;
        QTest::newRow("eight digits") << 0xffffffffU << QString() << true;
    }

    void colorKey()
    {
        QFETCH(uint, key);
        QFETCH(QString, color);
        QFETCH(bool, illegal);
        m_window->setVideoLabelColorKey(0x123456);
        LogRecorder log;
        m_window->setVideoLabelColorKey(key);
        QCOMPARE(log.warnings(),
            illegal ? QStringList(QStringLiteral("Illegal colorkey value: %1").arg(key)) : QStringList());
        const QColor expected
            = color.isEmpty() ? QApplication::palette().color(QPalette::Window) : QColor(color);
        QCOMPARE(m_label->palette().color(QPalette::Window), expected);
        if (!color.isEmpty())
            QVERIFY(m_label->autoFillBackground());
    }

    void rectangleIsTheLabelsPlaceInItsPage()
    {
        m_tabs->setCurrentIndex(1);
        QCoreApplication::processEvents();
        QCOMPARE(m_window->getVideoRectangle(), m_label->geometry());
        QVERIFY(m_window->getVideoRectangle().width() > 300);
    }

    void xidIsThePagesWindow()
    {
        QCOMPARE(m_window->getVideoXID(), uint(m_window->findChild<QWidget *>("tab_video")->winId()));
        QVERIFY(m_window->getVideoXID() != uint(m_window->winId()));
    }

    void changesOfTheRectangleCanBeWatched()
    {
        struct Filter : QObject
        {
            int resized = 0;
            bool eventFilter(QObject *, QEvent *event) override
            {
                resized += event->type() == QEvent::Resize;
                return false;
            }
        } filter;
        m_tabs->setCurrentIndex(1);
        QCoreApplication::processEvents();
        m_window->watchVideoRectangle(&filter);
        m_window->resize(1100, 700);
        QTRY_VERIFY(filter.resized > 0);
    }

    void tapOnTheVideoStaysWithoutEffect()
    {
        m_tabs->setCurrentIndex(1);
        QCoreApplication::processEvents();
        LogRecorder log;
        QSignalSpy xid(m_window, SIGNAL(videoScreenXIDChanged(uint)));
        QTest::mouseClick(m_label, Qt::LeftButton);
        QVERIFY(log.contains("KelvoMainWindow::mousePressEvent"));
        QCOMPARE(xid.count(), 0);
        QVERIFY(m_window->isVisible());
    }

    void tapElsewhereIsNotLogged()
    {
        LogRecorder log;
        QTest::mouseClick(m_window->findChild<QLabel *>("m_music_durationLabel"), Qt::LeftButton);
        QVERIFY(!log.contains("KelvoMainWindow::mousePressEvent"));
    }

    void tapLeavesFullScreen()
    {
        m_window->enterFullScreen();
        QCOMPARE(m_window->getVideoXID(), uint(FullScreenWindow::surface()->winId()));
        QSignalSpy xid(m_window, SIGNAL(videoScreenXIDChanged(uint)));
        QTest::mousePress(FullScreenWindow::surface(), Qt::LeftButton);
        QCOMPARE(xid.count(), 1);
        QCOMPARE(xid.first().first().toUInt(), uint(m_label->winId()));
        QVERIFY(!FullScreenWindow::surface()->isVisible());
        QVERIFY(m_window->updatesEnabled());
        QCOMPARE(m_window->getVideoXID(), uint(m_window->findChild<QWidget *>("tab_video")->winId()));
    }

    void leavingFullScreenOutsideOfItIsFatal()
    {
        const QString message
            = fatalMessage([this] { QMetaObject::invokeMethod(m_window, "hideFullScreenVideo"); });
        QVERIFY2(isAssertion(message, "m_videoFullScreen", "src/KelvoMainWindow"), qPrintable(message));
    }

    void fullScreenWidgetIsBlackAndBare()
    {
        const KelvoFullScreenVideoWidget widget(nullptr);
        QCOMPARE(widget.palette().color(QPalette::Window), QColor(0, 0, 0, 255));
        QVERIFY(!widget.autoFillBackground());
        QVERIFY(widget.testAttribute(Qt::WA_OpaquePaintEvent));
        QVERIFY(
            widget.windowFlags().testFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint));
        QCOMPARE(widget.cursor().shape(), Qt::BlankCursor);
        QVERIFY(!widget.isVisible());
    }

    void fullScreenWidgetPaintsOnScreenWhileVisible()
    {
        KelvoFullScreenVideoWidget widget(nullptr);
        widget.setVisible(true);
        QVERIFY(widget.testAttribute(Qt::WA_PaintOnScreen));
        QVERIFY(widget.isVisible());
        widget.setVisible(false);
        QVERIFY(!widget.testAttribute(Qt::WA_PaintOnScreen));
        QVERIFY(!widget.isVisible());
    }

    void everyPressOnTheFullScreenWidgetIsOneTap()
    {
        KelvoFullScreenVideoWidget widget(nullptr);
        QSignalSpy tapped(&widget, SIGNAL(screenTapped()));
        QTest::mousePress(&widget, Qt::LeftButton);
        QTest::mouseRelease(&widget, Qt::LeftButton);
        QTest::mousePress(&widget, Qt::RightButton, {}, QPoint(1, 1));
        QCOMPARE(tapped.count(), 2);
    }

private:
    FullScreenWindow *m_window = nullptr;
    QTabWidget *m_tabs = nullptr;
    QLabel *m_label = nullptr;
};

KELVO_WIDGET_TEST(VideoDisplayTest)
#include "VideoDisplayTest.moc"
