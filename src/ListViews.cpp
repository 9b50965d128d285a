// SPDX-License-Identifier: MIT
#include "ListViews.h"

#include <QHelpEvent>
#include <QListView>
#include <QStyledItemDelegate>
#include <QTextCursor>
#include <QTextEdit>
#include <QToolTip>

namespace {
/// Handles the focus itself and takes back what that made current.
class FocusFilter : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *view = qobject_cast<QListView *>(watched);
        if (event->type() != QEvent::FocusIn || !view || !view->model() || view->currentIndex().isValid())
            return QObject::eventFilter(watched, event);
        const QSignalBlocker blocker(
            view->selectionModel()); // nobody need hear of a row that is current for a moment
        watched->event(event);
        view->selectionModel()->clearCurrentIndex();
        return true;
    }
};

/// Laying out a text of megabytes, of which a line's width shows, would stop the window for many seconds.
class RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant &value, const QLocale &locale) const override
    {
        constexpr qsizetype longest = 2000;
        return QStyledItemDelegate::displayText(value, locale).left(longest);
    }

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
        const QModelIndex &index) override
    {
        // Cut by an ellipsis, or by the edge of a view that can be scrolled sideways.
        const QRect seen = option.rect & view->viewport()->rect();
        const bool cut = index.isValid() && sizeHint(option, index).width() > seen.width();
        if (event->type() != QEvent::ToolTip || !cut)
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        // As rich text it is broken into lines; its own markup is shown, not followed.
        const QString text = Qt::convertFromPlainText(displayText(index.data(), option.locale));
        QToolTip::showText(event->globalPos(), text, view, option.rect);
        return true;
    }
};

void keepOneThing(QListView *view, const QItemSelection &unhighlighted)
{
    QItemSelectionModel *selection = view->selectionModel();
    const QModelIndex current = selection->currentIndex();
    if (!current.isValid() || !selection->selection().isEmpty())
        return;
    if (unhighlighted.contains(current))
        selection->clearCurrentIndex();
    else // The highlighted row is being removed; the toolkit has made its neighbour current.
        selection->select(current, QItemSelectionModel::Select);
}

/// Assistive technology selects a row without making it current. It means a click.
void makeSelectedCurrent(QListView *view)
{
    QItemSelectionModel *selection = view->selectionModel();
    const QItemSelection selected = selection ? selection->selection() : QItemSelection();
    if (selected.size() != 1 || selected.first().topLeft() != selected.first().bottomRight())
        return;
    if (selection->currentIndex() == selected.first().topLeft())
        return;
    selection->setCurrentIndex(selected.first().topLeft(), QItemSelectionModel::NoUpdate);
    Q_EMIT view->clicked(selection->currentIndex());
}

void followSelection(QListView *view)
{
    if (view->selectionModel())
        QObject::connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, view,
            [view](const QItemSelection &, const QItemSelection &gone) {
                keepOneThing(view, gone);
                // Not at once: who selects a row by hand is just making it current too.
                QMetaObject::invokeMethod(
                    view, [view] { makeSelectedCurrent(view); }, Qt::QueuedConnection);
            });
}
} // namespace

void ListViews::setModel(QListView *view, QAbstractItemModel *model)
{
    QItemSelectionModel *const old = view->selectionModel();
    view->setModel(model);
    if (old != view->selectionModel()) {
        delete old;
        followSelection(view);
    }
    view->setModelColumn(shownColumn);
}

void ListViews::keepCurrentHighlighted(QListView *view)
{
    view->installEventFilter(new FocusFilter(view));
    followSelection(view);
}

void ListViews::showElidedAsToolTip(QListView *view)
{
    view->setItemDelegate(new RowDelegate(view));
}

void ListViews::clearHighlight(QListView *view)
{
    if (view->selectionModel())
        view->selectionModel()->clear();
}

int ListViews::rowCount(const QListView *view)
{
    return view->model() ? view->model()->rowCount() : 0;
}

int ListViews::currentRow(const QListView *view)
{
    const QModelIndex current = view->currentIndex();
    return current.isValid() ? current.row() : -1;
}

ListViews::Rows ListViews::selectedRows(const QListView *view)
{
    Rows rows;
    if (!view->selectionModel())
        return rows;
    const QItemSelection selection = view->selectionModel()->selection();
    for (const QItemSelectionRange &range : selection) {
        rows.first = rows.first < 0 ? range.top() : qMin(rows.first, range.top());
        rows.last = qMax(rows.last, range.bottom());
    }
    return rows;
}

void ListViews::appendLine(QTextEdit *field, const QString &line)
{
    QTextCursor cursor(field->document());
    cursor.movePosition(QTextCursor::End);
    const bool first = field->document()->isEmpty();
    if (!first)
        cursor.insertBlock();
    cursor.insertText(line);
    // The field's own cursor stood where that was inserted and went to the end with it; a field is first shown there.
    if (first)
        field->moveCursor(QTextCursor::Start);
}

void ListViews::appendLine(QTextEdit *field, const QString &key, const QString &value)
{
    appendLine(field, QStringLiteral("%1: %2").arg(key, value));
}
