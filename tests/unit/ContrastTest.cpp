// SPDX-License-Identifier: MIT
#include "Contrast.h"
#include "EveryWindow.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QTabBar>
#include <QTest>
#include <QTextEdit>
#include <QToolButton>

namespace {
QPalette darkPalette()
{
    const QColor window(53, 53, 53);
    const QColor base(35, 35, 35);
    const QColor blue(42, 130, 218);
    QPalette palette(window);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, Qt::white);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::Highlight, blue);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

QPalette withoutTexts(QPalette palette)
{
    for (const QPalette::ColorRole role :
        {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(role, Qt::transparent);
    return palette;
}

QImage picture(QWidget *widget)
{
    return widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// Of a text on the screen: the most that any pixel of it differs from what is there without the text. Strokes have
/// softer edges; their middle shows the colour of the text.
double contrastSeen(QWidget *widget, const QRect &area)
{
    auto *view = qobject_cast<QListView *>(widget);
    QWidget *shown = view ? view->viewport() : widget;
    const QPalette own = widget->palette();
    const QImage with = picture(shown);
    widget->setPalette(withoutTexts(own));
    const QImage without = picture(shown);
    widget->setPalette(own);
    double most = 1;
    const QRect looked = area & with.rect();
    for (int y = looked.top(); y <= looked.bottom(); ++y) {
        for (int x = looked.left(); x <= looked.right(); ++x) {
            if (with.pixel(x, y) != without.pixel(x, y))
                most = qMax(most, Contrast::ratio(with.pixelColor(x, y), without.pixelColor(x, y)));
        }
    }
    return most;
}

/// How many pixels became other than they were, and stand out from that ground.
int pixelsStandingOut(const QImage &now, const QImage &before, const QColor &ground)
{
    constexpr double leastOfFrames = 3; // WCAG 2.1, 1.4.11
    int pixels = 0;
    for (int y = 0; y < now.height(); ++y) {
        for (int x = 0; x < now.width(); ++x) {
            const bool other = now.pixel(x, y) != before.pixel(x, y);
            pixels += int(other && Contrast::ratio(now.pixelColor(x, y), ground) >= leastOfFrames);
        }
    }
    return pixels;
}

bool showsText(const QWidget *widget)
{
    if (!widget->isVisible() || !widget->isEnabled()
        || widget->objectName().startsWith(QLatin1String("qt_spinbox")))
        return false;
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return !label->text().isEmpty();
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return !button->text().isEmpty();
    if (const auto *field = qobject_cast<const QTextEdit *>(widget))
        return !field->toPlainText().isEmpty();
    return qobject_cast<const QComboBox *>(widget) || qobject_cast<const QLineEdit *>(widget)
        || qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QGroupBox *>(widget)
        || qobject_cast<const QTabBar *>(widget) || qobject_cast<const QMenuBar *>(widget);
}

void addThemeRows()
{
    QTest::addColumn<QPalette>("theme");
    QTest::newRow("light") << QApplication::palette();
    QTest::newRow("dark") << darkPalette();
}
} // namespace

/// Every text can be read by those who see little, in light and dark surroundings.
class ContrastTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { m_theme = QApplication::palette(); }
    void cleanup() { QApplication::setPalette(m_theme); }

    void ratios()
    {
        QCOMPARE(Contrast::ratio(Qt::black, Qt::white), 21.0);
        QCOMPARE(Contrast::ratio(Qt::white, Qt::black), 21.0);
        QCOMPARE(Contrast::ratio(Qt::red, Qt::red), 1.0);
        // Known to the second decimal.
        QCOMPARE(qRound(100 * Contrast::ratio(Qt::red, Qt::white)), 400);
        QCOMPARE(qRound(100 * Contrast::ratio(Qt::red, Qt::black)), 525);
        QCOMPARE(qRound(100 * Contrast::ratio(QColor("#767676"), Qt::white)), 454);
        QCOMPARE(qRound(100 * Contrast::ratio(QColor("#050505"), Qt::black)), 103);
    }

    void groundStaysWhereATextCanBeRead()
    {
        QCOMPARE(Contrast::groundFor(Qt::black, QColor("#efefef")), QColor("#efefef"));
        QCOMPARE(Contrast::groundFor(Qt::red, QColor("#efefef")), QColor(Qt::black));
        QCOMPARE(Contrast::groundFor(Qt::black, QColor("#353535")), QColor(Qt::white));
        QCOMPARE(Contrast::groundFor(Qt::red, QColor("#101010")), QColor("#101010"));
    }

    void highlightIsMended_data()
    {
        QTest::addColumn<QColor>("text");
        QTest::addColumn<QColor>("ground");
        QTest::addColumn<bool>("stays");
        QTest::newRow("white on blue") << QColor(Qt::white) << QColor(48, 140, 198) << false;
        QTest::newRow("black on blue") << QColor(Qt::black) << QColor(20, 40, 110) << false;
        QTest::newRow("black on black") << QColor(Qt::black) << QColor(Qt::black) << false;
        QTest::newRow("white on navy") << QColor(Qt::white) << QColor(0, 0, 128) << true;
    }

    void highlightIsMended()
    {
        QFETCH(QColor, text);
        QFETCH(QColor, ground);
        QFETCH(bool, stays);
        QPalette palette;
        palette.setColor(QPalette::HighlightedText, text);
        palette.setColor(QPalette::Highlight, ground);
        const QPalette mended = Contrast::withReadableHighlight(palette);
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            const QColor now = mended.color(group, QPalette::Highlight);
            QVERIFY(Contrast::ratio(text, now) >= Contrast::least);
            QCOMPARE(now == ground, stays);
        }
        QCOMPARE(mended.color(QPalette::HighlightedText), text);
    }

    void textsOfEveryWindow_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QPalette>("theme");
        for (const char *window : {"music", "video", "images", "browse", "query", "help", "create playlist",
                 "play uri", "error log", "search", "sources", "source properties", "query properties",
                 "volume", "plug-ins", "playback completed"}) {
            QTest::addRow("%s, light", window) << QString::fromLatin1(window) << m_theme;
            QTest::addRow("%s, dark", window) << QString::fromLatin1(window) << darkPalette();
        }
    }

    void textsOfEveryWindow()
    {
        QFETCH(QString, window);
        QFETCH(QPalette, theme);
        QApplication::setPalette(Contrast::withReadableHighlight(theme));
        const std::unique_ptr<QWidget> shown = m_windows.show(window);
        QStringList faint;
        int texts = 0;
        for (QWidget *widget : shown->findChildren<QWidget *>()) {
            if (showsText(widget)) {
                ++texts;
                look(widget, widget->rect(), widget->objectName(), &faint);
            } else if (auto *view = qobject_cast<QListView *>(widget); view && view->isVisible()) {
                texts += lookAtRows(view, &faint);
            }
        }
        QVERIFY2(faint.isEmpty(), qPrintable(faint.join(QStringLiteral("; "))));
        QVERIFY(texts >= 2);
    }

    void captionsOfAPolicy_data()
    {
        QTest::addColumn<QPalette>("theme");
        QTest::addColumn<bool>("overridden");
        for (const bool overridden : {true, false}) {
            const char *colour = overridden ? "red" : "black";
            QTest::addRow("%s, light", colour) << m_theme << overridden;
            QTest::addRow("%s, dark", colour) << darkPalette() << overridden;
        }
    }

    void captionsOfAPolicy()
    {
        QFETCH(QPalette, theme);
        QFETCH(bool, overridden);
        QApplication::setPalette(theme);
        for (const char *tab : {"music", "video"}) {
            const std::unique_ptr<QWidget> shown = m_windows.show(QString::fromLatin1(tab));
            static_cast<KelvoMainWindow *>(shown.get())->showPolicyOverride(overridden);
            QStringList faint;
            int buttons = 0;
            for (auto *button : shown->findChildren<QToolButton *>(QRegularExpression("^m_(music|video)_"))) {
                if (!button->isVisible())
                    continue;
                ++buttons;
                QCOMPARE(
                    button->palette().color(QPalette::ButtonText), QColor(overridden ? Qt::red : Qt::black));
                look(button, button->rect(), button->objectName(), &faint);
            }
            QVERIFY2(faint.isEmpty(), qPrintable(faint.join(QStringLiteral("; "))));
            QCOMPARE(buttons, 6);
        }
    }

    void focusIsSeenOnTheCaptionsOfAPolicy_data() { captionsOfAPolicy_data(); }
    void focusIsSeenOnTheCaptionsOfAPolicy()
    {
        QFETCH(QPalette, theme);
        QFETCH(bool, overridden);
        QApplication::setPalette(Contrast::withReadableHighlight(theme));
        const std::unique_ptr<QWidget> shown = m_windows.show("music");
        static_cast<KelvoMainWindow *>(shown.get())->showPolicyOverride(overridden);
        auto *button = shown->findChild<QToolButton *>("m_music_stopButton");
        shown->setAttribute(Qt::WA_KeyboardFocusChange); // as the first Tab does
        shown->findChild<QWidget *>("m_music_playButton")->setFocus(Qt::TabFocusReason);
        const QImage without = picture(button);
        button->setFocus(Qt::TabFocusReason);
        const QColor ground = button->palette().color(QPalette::Button);
        const int frame = pixelsStandingOut(picture(button), without, ground);
        constexpr int corners = 16; // are round
        QVERIFY2(
            frame >= 2 * (button->width() + button->height()) - corners, qPrintable(QString::number(frame)));
        QStringList faint;
        look(button, button->rect(), button->objectName(), &faint);
        QVERIFY2(faint.isEmpty(), qPrintable(faint.join(QStringLiteral("; "))));
    }

    void captionsGetTheirOwnGroundBack()
    {
        const std::unique_ptr<QWidget> shown = m_windows.show("music");
        auto *window = static_cast<KelvoMainWindow *>(shown.get());
        auto *button = shown->findChild<QToolButton *>("m_music_playButton");
        const QColor own = button->palette().color(QPalette::Button);
        window->showPolicyOverride(true);
        QVERIFY(button->palette().color(QPalette::Button) != own);
        window->showPolicyOverride(false);
        QCOMPARE(button->palette().color(QPalette::Button), own);
    }

    void entriesOfMenus_data() { addThemeRows(); }
    void entriesOfMenus()
    {
        QFETCH(QPalette, theme);
        QApplication::setPalette(Contrast::withReadableHighlight(theme));
        const std::unique_ptr<QWidget> shown = m_windows.show("music");
        QStringList faint;
        for (auto *menu : shown->findChild<QMenuBar *>("menubar")->findChildren<QMenu *>()) {
            menu->popup(QPoint(10, 10));
            QVERIFY(QTest::qWaitForWindowExposed(menu));
            QAction *first = menu->actions().constFirst();
            menu->setActiveAction(first);
            for (QAction *action : menu->actions()) {
                if (!action->isSeparator() && action->isEnabled())
                    look(menu, menu->actionGeometry(action), action->text(), &faint);
            }
            menu->close();
        }
        QVERIFY2(faint.isEmpty(), qPrintable(faint.join(QStringLiteral("; "))));
    }

private:
    static void look(QWidget *widget, const QRect &area, const QString &name, QStringList *faint)
    {
        const double seen = contrastSeen(widget, area);
        if (seen < Contrast::least)
            faint->append(QStringLiteral("%1: %2").arg(name).arg(seen, 0, 'f', 2));
    }

    /// Of the first two rows, of which one is highlighted.
    static int lookAtRows(QListView *view, QStringList *faint)
    {
        const QAbstractItemModel *model = view->model();
        if (!model || model->rowCount() < 2)
            return 0;
        int highlighted = 0;
        for (int row = 0; row < 2; ++row) {
            const QModelIndex index = model->index(row, view->modelColumn());
            highlighted += int(view->selectionModel()->isSelected(index));
            look(view, view->visualRect(index), QStringLiteral("%1, row %2").arg(view->objectName()).arg(row),
                faint);
        }
        if (highlighted != 1)
            faint->append(view->objectName() + QStringLiteral(": no row is highlighted"));
        return 2;
    }

    QPalette m_theme;
    EveryWindow m_windows;
};

KELVO_WIDGET_TEST(ContrastTest)
#include "ContrastTest.moc"
