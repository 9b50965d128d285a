// SPDX-License-Identifier: MIT
#include "Mailbox.h"

#include "HandOver.h"

#include <QObject>

#include <utility>

Mailbox::Mailbox(QObject *receiver)
    : m_receiver(receiver)
    , m_generation(std::make_shared<Generation>(0))
{
}

Mailbox::~Mailbox() = default;

bool Mailbox::post(std::function<void()> call)
{
    // Held meanwhile, so that the receiver cannot go.
    const std::scoped_lock lock(m_mutex);
    if (!m_receiver)
        return false;
    HandedCall guarded([current = m_generation, generation = m_generation->load(), call = std::move(call)] {
        if (generation == *current)
            call();
    });
    QMetaObject::invokeMethod(m_receiver, std::move(guarded), Qt::QueuedConnection);
    return true;
}

void Mailbox::close()
{
    const std::scoped_lock lock(m_mutex);
    m_receiver = nullptr;
}
