// SPDX-License-Identifier: MIT
#include "FocusKeys.h"

#include <QEvent>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>

namespace {
class StartFilter : public QObject
{
public:
    explicit StartFilter(QWidget *first)
        : QObject(first->window())
        , m_first(first)
    {
        first->window()->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && !event->spontaneous()) {
            m_first->setFocus(Qt::TabFocusReason);
            // Otherwise nothing shows where it is.
            m_first->window()->setAttribute(Qt::WA_KeyboardFocusChange);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget *m_first;
};
} // namespace

void FocusKeys::openMenuByF10(QMenuBar *bar)
{
    auto *shortcut = new QShortcut(Qt::Key_F10, bar->window());
    QObject::connect(shortcut, &QShortcut::activated, bar, [bar] {
        QAction *first = bar->actions().constFirst();
        bar->setActiveAction(first);
        first->menu()->setActiveAction(first->menu()->actions().constFirst());
    });
}

void FocusKeys::startAt(QWidget *widget)
{
    new StartFilter(widget);
}
