// SPDX-License-Identifier: MIT
#include "DialogHand.h"

#include <QCoreApplication>
#include <QDialog>
#include <QEvent>
#include <QPointer>
#include <QTimer>

#include <utility>

DialogHand::DialogHand()
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool DialogHand::eventFilter(QObject *watched, QEvent *event)
{
    auto *dialog = qobject_cast<QDialog *>(watched);
    if (event->type() == QEvent::Show && dialog && dialog->isModal()) {
        // From its own event loop.
        QTimer::singleShot(0, dialog, [this, dialog] { attendTo(dialog); });
    }
    return QObject::eventFilter(watched, event);
}

void DialogHand::attendTo(QDialog *dialog)
{
    ++m_seen;
    const QPointer<QDialog> guarded = dialog;
    if (const Plan plan = std::exchange(m_plan, {}))
        plan(dialog);
    if (guarded && guarded->isVisible())
        guarded->reject();
}
