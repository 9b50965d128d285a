// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaObject>
#include <QMutex>
#include <QObject>

/// Lets worker threads call back to an object of the GUI thread that may be destroyed at any time.
///
/// The object closes the mailbox in its destructor; what is posted later is dropped, and Qt drops what was posted
/// before and has not been delivered.
class GuiMailbox
{
public:
    explicit GuiMailbox(QObject *receiver)
        : m_receiver(receiver)
    {
    }
    Q_DISABLE_COPY_MOVE(GuiMailbox)

    /// Any thread. False when nobody is there to receive.
    template <class Function> bool post(Function function)
    {
        QMutexLocker lock(&m_mutex);
        if (m_receiver)
            QMetaObject::invokeMethod(m_receiver, std::move(function), Qt::QueuedConnection);
        return m_receiver;
    }
    void close()
    {
        QMutexLocker lock(&m_mutex);
        m_receiver = nullptr;
    }

private:
    QMutex m_mutex;
    QObject *m_receiver;
};
