// SPDX-License-Identifier: MIT
#include "ListKeys.h"

#include "ListViews.h"

#include <QKeyEvent>
#include <QListView>
#include <QShortcut>

namespace {
class ReturnFilter : public QObject
{
public:
    explicit ReturnFilter(QListView *view)
        : QObject(view)
        , m_view(view)
    {
        view->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress || !isReturn(static_cast<QKeyEvent *>(event))
            || !m_view->currentIndex().isValid())
            return QObject::eventFilter(watched, event);
        if (!static_cast<QKeyEvent *>(event)->isAutoRepeat())
            Q_EMIT m_view->doubleClicked(m_view->currentIndex());
        return true;
    }

private:
    static bool isReturn(const QKeyEvent *event)
    {
        return (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    }

    QListView *m_view;
};

class MoveFilter : public QObject
{
public:
    explicit MoveFilter(QListView *view)
        : QObject(view)
        , m_view(view)
    {
        view->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress)
            return QObject::eventFilter(watched, event);
        const QPersistentModelIndex before = m_view->currentIndex();
        watched->event(event);
        if (m_view->currentIndex().isValid() && m_view->currentIndex() != before)
            Q_EMIT m_view->clicked(m_view->currentIndex());
        return true;
    }

private:
    QListView *m_view;
};

void moveBy(QListView *view, int rows)
{
    const int count = ListViews::rowCount(view);
    if (count == 0)
        return;
    const int current = ListViews::currentRow(view);
    const int row = current < 0 ? 0 : qBound(0, current + rows, count - 1);
    if (row == current)
        return;
    view->setCurrentIndex(view->model()->index(row, view->modelColumn()));
    Q_EMIT view->clicked(view->currentIndex());
}
} // namespace

void ListKeys::doubleClickByReturn(QListView *view)
{
    new ReturnFilter(view);
}

void ListKeys::clickByMoving(QListView *view)
{
    new MoveFilter(view);
}

void ListKeys::moveFromPage(QWidget *page, QListView *view)
{
    for (const auto &[key, rows] : {std::pair(Qt::Key_Up, -1), std::pair(Qt::Key_Down, 1)}) {
        auto *shortcut = new QShortcut(QKeySequence(Qt::ALT | key), page);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        QObject::connect(shortcut, &QShortcut::activated, view, [view, rows = rows] { moveBy(view, rows); });
    }
}
