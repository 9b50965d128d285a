// SPDX-License-Identifier: MIT
#include "CheckFrames.h"
#include "Contrast.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QApplication>
#include <QCheckBox>
#include <QStyleOptionButton>
#include <QTest>

namespace {
/// The best contrast that a pixel of the indicator has with the window.
double bestContrast(const QWidget *window, const QCheckBox *box)
{
    QStyleOptionButton option;
    option.initFrom(box);
    const QRect place = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box);
    const QImage image = const_cast<QWidget *>(window)->grab(place.translated(box->pos())).toImage();
    double best = 1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            best = qMax(
                best, Contrast::ratio(image.pixelColor(x, y), window->palette().color(QPalette::Window)));
    }
    return best;
}
} // namespace

class CheckFramesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void aFrameIsSeenInEachWindow_data()
    {
        QTest::addColumn<QColor>("window");
        QTest::addColumn<QColor>("inside");
        QTest::addColumn<bool>("isPainted");
        QTest::newRow("light") << QColor(0xef, 0xef, 0xef) << QColor(Qt::white) << false;
        QTest::newRow("dark") << QColor(0x31, 0x36, 0x3b) << QColor(0x23, 0x26, 0x29) << true;
        QTest::newRow("black") << QColor(Qt::black) << QColor(Qt::black) << true;
        QTest::newRow("black, white inside") << QColor(Qt::black) << QColor(Qt::white) << false;
    }

    void aFrameIsSeenInEachWindow()
    {
        QFETCH(QColor, window);
        QFETCH(QColor, inside);
        QFETCH(bool, isPainted);
        QApplication::setStyle(QStringLiteral("Fusion"));
        QWidget around;
        around.resize(200, 60);
        QCheckBox box(QStringLiteral("Is Playlist"), &around);
        box.setGeometry(10, 10, 180, 40);
        QPalette palette(window);
        palette.setColor(QPalette::Base, inside);
        around.setPalette(palette);
        const QImage before = around.grab().toImage();
        CheckFrames::makeVisible(&box);
        QVERIFY(bestContrast(&around, &box) >= 1.5);
        QCOMPARE(around.grab().toImage() != before, isPainted);
    }

    void aWindowThatBecomesDarkKeepsItsFrames()
    {
        QWidget around;
        QCheckBox box(&around);
        around.setPalette(QPalette(Qt::white));
        CheckFrames::makeVisible(&box);
        around.grab();
        around.setPalette(QPalette(Qt::black));
        QVERIFY(bestContrast(&around, &box) >= 1.5);
    }
};

KELVO_WIDGET_TEST(CheckFramesTest)
#include "CheckFramesTest.moc"
