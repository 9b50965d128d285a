// SPDX-License-Identifier: MIT
#include "EveryWindow.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSlider>
#include <QTabBar>
#include <QTest>
#include <QTextEdit>

namespace {
/// What somebody can do something with, or reads.
bool isControl(const QAccessibleInterface *seen)
{
    switch (seen->role()) {
    case QAccessible::Button:
    case QAccessible::CheckBox:
    case QAccessible::ComboBox:
    case QAccessible::EditableText:
    case QAccessible::List:
    case QAccessible::ListItem:
    case QAccessible::MenuItem:
    case QAccessible::PageTab:
    case QAccessible::ProgressBar:
    case QAccessible::Slider:
    case QAccessible::SpinBox:
    case QAccessible::StaticText:
        return true;
    default:
        return false;
    }
}

bool isSeen(const QAccessibleInterface *seen)
{
    const auto *widget = qobject_cast<const QWidget *>(seen->object());
    return !seen->state().invisible && (!widget || widget->isVisible());
}

QString told(const QAccessibleInterface *seen)
{
    return QStringLiteral("role %1, name '%2', description '%3', %4")
        .arg(int(seen->role()))
        .arg(seen->text(QAccessible::Name), seen->text(QAccessible::Description),
            seen->object() ? seen->object()->objectName() : QString());
}

void walk(QAccessibleInterface *seen, const std::function<void(QAccessibleInterface *)> &visit)
{
    visit(seen);
    for (int i = 0; i < seen->childCount(); ++i) {
        QAccessibleInterface *child = seen->child(i);
        if (child && isSeen(child))
            walk(child, visit);
    }
}

/// Names of the widgets that Tab comes to.
QStringList reachedByTab(const QWidget *window)
{
    QStringList reached;
    for (int presses = 0; presses < 60; ++presses) {
        QTest::keyClick(window->windowHandle(), Qt::Key_Tab);
        const QWidget *at = window->focusWidget();
        const QString name = at ? at->objectName() : QString();
        if (!reached.contains(name))
            reached.append(name);
    }
    return reached;
}

bool isOperated(const QWidget *widget)
{
    const bool operated = qobject_cast<const QAbstractButton *>(widget)
        || qobject_cast<const QComboBox *>(widget) || qobject_cast<const QListView *>(widget)
        || qobject_cast<const QTextEdit *>(widget) || qobject_cast<const QSlider *>(widget)
        || qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QLineEdit *>(widget)
        || qobject_cast<const QTabBar *>(widget);
    const bool isPart = widget->objectName().startsWith(QLatin1String("qt_spinbox"))
        || qobject_cast<const QTabBar *>(widget->parentWidget());
    return operated && !isPart && widget->isVisible() && widget->isEnabled();
}
} // namespace

/// Every control of the window and its dialogs can be found and understood without seeing it, and reached without a mouse.
class AccessibleControlsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void controlsHaveARoleAndAName_data() { EveryWindow::addRows(); }
    void controlsHaveARoleAndAName()
    {
        QFETCH(QString, window);
        const std::unique_ptr<QWidget> shown = m_windows.show(window);
        int controls = 0;
        QStringList nameless;
        walk(QAccessible::queryAccessibleInterface(shown.get()), [&](QAccessibleInterface *seen) {
            if (seen->role() == QAccessible::NoRole)
                nameless.append(told(seen));
            if (!isControl(seen))
                return;
            ++controls;
            if (seen->text(QAccessible::Name).isEmpty() && seen->text(QAccessible::Description).isEmpty())
                nameless.append(told(seen));
        });
        QVERIFY2(nameless.isEmpty(), qPrintable(nameless.join(QStringLiteral("; "))));
        QVERIFY(controls >= 2);
    }

    /// The toolkit gives the text of the chosen entry out as the name of a combo box.
    void comboBoxesSayWhatIsChosenInThem_data() { EveryWindow::addRows(); }
    void comboBoxesSayWhatIsChosenInThem()
    {
        QFETCH(QString, window);
        const std::unique_ptr<QWidget> shown = m_windows.show(window);
        for (auto *combo : shown->findChildren<QComboBox *>()) {
            if (!combo->isVisible())
                continue;
            QVERIFY2(combo->count() > 0, qPrintable(combo->objectName()));
            const QAccessibleInterface *seen = QAccessible::queryAccessibleInterface(combo);
            QCOMPARE(seen->text(QAccessible::Name), combo->currentText());
            const auto labels = seen->relations(QAccessible::Label);
            QVERIFY2(labels.size() == 1, qPrintable(combo->objectName()));
            QVERIFY(!combo->accessibleName().isEmpty());
            QCOMPARE(labels.constFirst().first->text(QAccessible::Name),
                QStringLiteral("%1: %2").arg(combo->accessibleName(), combo->currentText()));
            QVERIFY(labels.constFirst().first->state().invisible);
        }
    }

    void controlsAreReachedByTab_data() { EveryWindow::addRows(); }
    void controlsAreReachedByTab()
    {
        QFETCH(QString, window);
        const std::unique_ptr<QWidget> shown = m_windows.show(window);
        const QStringList reached = reachedByTab(shown.get());
        QStringList missed;
        for (const QWidget *widget : shown->findChildren<QWidget *>()) {
            if (isOperated(widget) && !reached.contains(widget->objectName()))
                missed.append(widget->objectName());
        }
        // The list takes no focus; Alt with an arrow moves in it (KeyboardTest).
        QCOMPARE(
            missed, window == QLatin1String("browse") ? QStringList("m_browse_resultsView") : QStringList());
    }

private:
    EveryWindow m_windows;
};

KELVO_WIDGET_TEST(AccessibleControlsTest)
#include "AccessibleControlsTest.moc"
