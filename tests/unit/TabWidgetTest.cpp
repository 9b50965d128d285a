// SPDX-License-Identifier: MIT
// The tab widget is painted anew only when something in it wants another size.
#include "KelvoTabWidget.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QLabel>
#include <QPaintEvent>
#include <QTabBar>
#include <QTest>
#include <QVBoxLayout>

namespace {
class Paints : public QObject
{
public:
    explicit Paints(QWidget *widget) { widget->installEventFilter(this); }
    int count = 0;

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
};
} // namespace

class TabWidgetTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_window = std::make_unique<QWidget>();
        m_tabs = new KelvoTabWidget;
        m_position = new QLabel(QStringLiteral("0:01 / 1:00"));
        auto *page = new QWidget;
        (new QVBoxLayout(page))->addWidget(m_position);
        m_tabs->addTab(page, QStringLiteral("Play   "));
        (new QVBoxLayout(m_window.get()))->addWidget(m_tabs);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        settle();
    }

    void textOfTheSameSizePaintsItselfOnly()
    {
        const Paints tabBar(m_tabs->tabBar());
        const Paints label(m_position);
        // The same characters, so the same width in any font.
        m_position->setText(QStringLiteral("0:10 / 1:00"));
        QTRY_COMPARE(label.count, 1);
        settle();
        QCOMPARE(tabBar.count, 0);
    }

    void longerTextGetsItsRoom()
    {
        const int before = m_window->minimumSizeHint().width();
        m_position->setText(QString(100, QLatin1Char('0')));
        QTRY_VERIFY(m_window->minimumSizeHint().width() > before);
        QTRY_VERIFY(m_position->width() >= m_position->minimumSizeHint().width());
    }

    void longerTabGetsItsRoom()
    {
        const int before = m_tabs->tabBar()->width();
        m_tabs->setTabText(0, QStringLiteral("Play something"));
        QTRY_VERIFY(m_tabs->tabBar()->width() > before);
    }

    void higherTabBarMovesThePage()
    {
        m_window->resize(600, 400);
        settle();
        const int before = m_position->mapTo(m_window.get(), QPoint()).y();
        QFont large = m_tabs->tabBar()->font();
        large.setPointSize(3 * large.pointSize());
        m_tabs->tabBar()->setFont(large);
        QTRY_VERIFY(m_position->mapTo(m_window.get(), QPoint()).y() > before);
    }

private:
    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    std::unique_ptr<QWidget> m_window;
    KelvoTabWidget *m_tabs = nullptr;
    QLabel *m_position = nullptr;
};

KELVO_WIDGET_TEST(TabWidgetTest)
#include "TabWidgetTest.moc"
