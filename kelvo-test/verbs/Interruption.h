// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns the first SIGINT, SIGTERM or SIGHUP into requested(), from the event loop; the second one ends the program as
/// it would have without this. What was ignored when the program was started stays ignored. One at a time in a process;
/// GUI thread.
class Interruption : public QObject
{
    Q_OBJECT
public:
    explicit Interruption(QObject *parent = nullptr);
    ~Interruption() override;

    bool isRequested() const { return m_isRequested; }

Q_SIGNALS:
    void requested();

private:
    void read();

    QSocketNotifier m_notifier;
    bool m_isRequested = false;
};
