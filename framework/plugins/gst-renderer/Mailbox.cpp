// SPDX-License-Identifier: MIT
#include "Mailbox.h"

#include <QObject>

Mailbox::Mailbox(QObject *receiver)
    : m_receiver(receiver)
{
}

void Mailbox::post(std::function<void()> call)
{
    const QMutexLocker lock(&m_mutex);
    if (!m_receiver)
        return;
    // Once the receiver is destroyed the queued call is dropped, so that `this` is still there when it runs:
    // the receiver owns a reference.
    const auto guarded = [this, generation = m_generation.load(), call = std::move(call)] {
        if (generation == m_generation)
            call();
    };
    QMetaObject::invokeMethod(m_receiver, guarded, Qt::QueuedConnection);
}

void Mailbox::close()
{
    const QMutexLocker lock(&m_mutex);
    m_receiver = nullptr;
}
