// SPDX-License-Identifier: MIT
#include "LayoutJudge.h"

#include "Contrast.h"
#include "LowComboBox.h"

#include <QtWidgets>

namespace {
QString nameOf(const QWidget *widget)
{
    const QString type = QString::fromLatin1(widget->metaObject()->className());
    return widget->objectName().isEmpty() ? type : type + u' ' + widget->objectName();
}

QString text(const QSize &size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

/// What a user sees as one thing: its insides are the toolkit's.
bool isControl(const QWidget *widget)
{
    return qobject_cast<const QAbstractButton *>(widget) || qobject_cast<const QLabel *>(widget)
        || qobject_cast<const QComboBox *>(widget) || qobject_cast<const QAbstractSlider *>(widget)
        || qobject_cast<const QProgressBar *>(widget) || qobject_cast<const QLineEdit *>(widget)
        || qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QAbstractScrollArea *>(widget)
        || qobject_cast<const QTabBar *>(widget) || qobject_cast<const QMenuBar *>(widget);
}

/// Controls that show, in the window; what is around them in `boxes`.
void collect(const QWidget *around, QList<const QWidget *> *controls, QList<const QWidget *> *boxes)
{
    const QWidgetList children = around->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget *child : children) {
        if (child->isWindow() || !child->isVisible())
            continue;
        if (isControl(child)) {
            controls->append(child);
        } else {
            boxes->append(child);
            collect(child, controls, boxes);
        }
    }
}

QRect placeIn(const QWidget *window, const QWidget *widget)
{
    return {widget->mapTo(window, QPoint()), widget->size()};
}

QStringList faultsOfPlace(const QWidget *widget)
{
    const QRect room = widget->parentWidget()->rect();
    if (room.contains(widget->geometry()) && !widget->size().isEmpty())
        return {};
    return {QStringLiteral("%1 is cut by %2").arg(nameOf(widget), nameOf(widget->parentWidget()))};
}

QStringList faultsOfOverlap(const QWidget *window, const QList<const QWidget *> &controls)
{
    QStringList faults;
    for (qsizetype i = 0; i < controls.size(); ++i) {
        for (qsizetype j = i + 1; j < controls.size(); ++j) {
            if (placeIn(window, controls.at(i)).intersects(placeIn(window, controls.at(j))))
                faults += QStringLiteral("%1 and %2 cover one another")
                              .arg(nameOf(controls.at(i)), nameOf(controls.at(j)));
        }
    }
    return faults;
}

QStringList faultsOfRoom(const QWidget *widget, const QString &caption, const QSize &room)
{
    const QSize needed = widget->fontMetrics().size(Qt::TextShowMnemonic, caption);
    if (needed.width() <= room.width() && needed.height() <= room.height())
        return {};
    return {QStringLiteral("\"%1\" of %2 needs %3 and has %4")
                .arg(caption, nameOf(widget), text(needed), text(room))};
}

QSize roomOf(const QPushButton *button)
{
    QStyleOptionButton option;
    option.initFrom(button);
    return button->style()->subElementRect(QStyle::SE_PushButtonContents, &option, button).size();
}

QSize roomOf(const QToolButton *button)
{
    QStyleOptionToolButton option;
    option.initFrom(button);
    const int frame = button->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, button);
    return button->size() - QSize(2 * frame, 2 * frame);
}

QSize roomOf(const QAbstractButton *button, QStyle::SubElement element)
{
    QStyleOptionButton option;
    option.initFrom(button);
    return button->style()->subElementRect(element, &option, button).size();
}

QStringList faultsOfButton(const QAbstractButton *button)
{
    QSize room = button->size();
    if (const auto *push = qobject_cast<const QPushButton *>(button))
        room = roomOf(push);
    else if (const auto *tool = qobject_cast<const QToolButton *>(button))
        room = roomOf(tool);
    else if (qobject_cast<const QCheckBox *>(button))
        room = roomOf(button, QStyle::SE_CheckBoxContents);
    else if (qobject_cast<const QRadioButton *>(button))
        room = roomOf(button, QStyle::SE_RadioButtonContents);
    return faultsOfRoom(button, button->text(), room);
}

QStringList faultsOfLabel(const QLabel *label)
{
    if (!label->toolTip().isEmpty())
        return {};
    const QMargins margins = label->contentsMargins();
    const int around = 2 * label->margin();
    const QSize room = label->size().shrunkBy(margins)
        - QSize(2 * label->frameWidth() + around, 2 * label->frameWidth() + around);
    if (!label->wordWrap())
        return faultsOfRoom(label, label->text(), room);
    if (label->heightForWidth(label->width()) <= label->height())
        return {};
    return {QStringLiteral("\"%1\" of %2 is cut").arg(label->text(), nameOf(label))};
}

QRect fieldOf(const QComboBox *box)
{
    QStyleOptionComboBox option;
    option.initFrom(box);
    option.editable = box->isEditable();
    return box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
}

/// A line of the font may be higher than the box; what counts is what is drawn of it.
QStringList faultsOfCombo(const QComboBox *box)
{
    const auto *low = dynamic_cast<const LowComboBox *>(box);
    const QRect area = low ? low->textArea() : fieldOf(box);
    const QRect seen = low ? box->rect() : area;
    const QFontMetrics metrics = box->fontMetrics();
    const QString shown = box->currentText();
    QRect ink = metrics.tightBoundingRect(shown);
    ink.translate(0, area.top() + (area.height() - metrics.height()) / 2 + metrics.ascent());
    if (ink.top() < seen.top() || ink.bottom() > seen.bottom())
        return {QStringLiteral("\"%1\" of %2 is cut").arg(shown, nameOf(box))};
    return faultsOfRoom(box, shown, {area.width(), QWIDGETSIZE_MAX});
}

/// Blanks behind a text only widen its tab or its entry.
QString withoutBlanks(QString caption)
{
    while (caption.endsWith(u' '))
        caption.chop(1);
    return caption;
}

QStringList faultsOfTabs(const QTabBar *bar)
{
    QStringList faults;
    for (int i = 0; i < bar->count(); ++i) {
        const QRect place = bar->tabRect(i);
        const QString caption = withoutBlanks(bar->tabText(i));
        if (!bar->rect().contains(place))
            faults += QStringLiteral("tab \"%1\" is cut").arg(caption);
        QStyleOptionTab option;
        option.initFrom(bar);
        option.rect = place;
        option.shape = bar->shape();
        option.text = bar->tabText(i);
        faults += faultsOfRoom(
            bar, caption, bar->style()->subElementRect(QStyle::SE_TabBarTabText, &option, bar).size());
    }
    return faults;
}

QStringList faultsOfMenus(const QMenuBar *bar)
{
    QStringList faults;
    const QList<QAction *> actions = bar->actions();
    for (const QAction *action : actions) {
        const QRect place = bar->actionGeometry(const_cast<QAction *>(action));
        if (place.isEmpty() || !bar->rect().contains(place))
            faults += QStringLiteral("menu \"%1\" is cut").arg(action->text());
        faults += faultsOfRoom(bar, withoutBlanks(action->text()), place.size());
    }
    return faults;
}

QStringList faultsOfText(const QWidget *control)
{
    if (const auto *button = qobject_cast<const QAbstractButton *>(control))
        return faultsOfButton(button);
    if (const auto *label = qobject_cast<const QLabel *>(control))
        return faultsOfLabel(label);
    if (const auto *box = qobject_cast<const QComboBox *>(control))
        return faultsOfCombo(box);
    if (const auto *tabs = qobject_cast<const QTabBar *>(control))
        return faultsOfTabs(tabs);
    if (const auto *menus = qobject_cast<const QMenuBar *>(control))
        return faultsOfMenus(menus);
    return {};
}

QStringList faultsOfColor(const QWidget *control)
{
    if (!control->isEnabled())
        return {};
    const QWidget *inside = control;
    if (const auto *area = qobject_cast<const QAbstractScrollArea *>(control))
        inside = area->viewport();
    const QPalette palette = inside->palette();
    const bool isView = inside != control || qobject_cast<const QLineEdit *>(control);
    const QPalette::ColorRole ink = isView ? QPalette::Text : inside->foregroundRole();
    const QPalette::ColorRole ground = isView ? QPalette::Base : inside->backgroundRole();
    if (Contrast::ratio(palette.color(ink), palette.color(ground)) >= Contrast::least)
        return {};
    return {QStringLiteral("%1 is %2 on %3")
                .arg(nameOf(control), palette.color(ink).name(), palette.color(ground).name())};
}

/// Where a box is empty, its frame is all that there is to be seen of it.
QStringList faultsOfIndicator(const QCheckBox *box, const QWidget *window)
{
    constexpr double visible = 1.5;
    QStyleOptionButton option;
    option.initFrom(box);
    const QRect place = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box);
    const QRect inWindow(box->mapTo(window, place.topLeft()), place.size());
    const QImage image = const_cast<QWidget *>(window)->grab(inWindow).toImage();
    const QColor ground = window->palette().color(QPalette::Window);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (Contrast::ratio(image.pixelColor(x, y), ground) >= visible)
                return {};
        }
    }
    return {QStringLiteral("%1 shows no box").arg(nameOf(box))};
}
} // namespace

QStringList LayoutJudge::faults(const QWidget *window)
{
    QList<const QWidget *> controls;
    QList<const QWidget *> boxes;
    collect(window, &controls, &boxes);
    QStringList faults;
    for (const QWidget *box : std::as_const(boxes))
        faults += faultsOfPlace(box);
    for (const QWidget *control : std::as_const(controls)) {
        faults += faultsOfPlace(control) + faultsOfText(control) + faultsOfColor(control);
        if (const auto *box = qobject_cast<const QCheckBox *>(control))
            faults += faultsOfIndicator(box, window);
    }
    if (controls.isEmpty())
        faults += QStringLiteral("%1 shows nothing").arg(nameOf(window));
    return faults + faultsOfOverlap(window, controls);
}
