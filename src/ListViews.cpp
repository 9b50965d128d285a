// SPDX-License-Identifier: MIT
#include "ListViews.h"

#include <QListView>
#include <QTextCursor>
#include <QTextEdit>

void ListViews::setModel(QListView *view, QAbstractItemModel *model)
{
    QItemSelectionModel *const old = view->selectionModel();
    view->setModel(model);
    if (old != view->selectionModel())
        delete old;
    view->setModelColumn(ShownColumn);
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
    if (!field->document()->isEmpty())
        cursor.insertBlock();
    cursor.insertText(line);
}

void ListViews::appendLine(QTextEdit *field, const QString &key, const QString &value)
{
    appendLine(field, QStringLiteral("%1: %2").arg(key, value));
}
