// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns SIGTERM, SIGINT and SIGHUP into closeRequested(), from the event loop. What was ignored when the program was
/// started stays ignored (as nohup asks). One in a process; GUI thread.
class TerminationSignals : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

    /// Closes all windows as a user would: first the dialogs that are open, the innermost first, so that everybody who
    /// waits for one has gone on before the windows go. May return before that.
    static void closeWindows();

Q_SIGNALS:
    void closeRequested();

private:
    void read();

    QSocketNotifier m_notifier;
};
