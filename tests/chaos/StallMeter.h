// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QScopedValueRollback>
#include <QStack>

struct _GPollFD;

/// How long the GUI thread is kept from its event loop, from one turn of the loop to the next: for how long it works, and
/// for how long it does that or waits for a disk, a lock or an answer. The time for which it could have run and others had
/// the processor counts in neither, so that a busy machine makes no stall.
class StallMeter
{
public:
    struct Stall
    {
        double busy = 0; ///< milliseconds of work
        double stopped = 0; ///< milliseconds of work and waiting
        QString busyWith;
        QString stoppedBy;
    };

    StallMeter();
    ~StallMeter();
    Q_DISABLE_COPY_MOVE(StallMeter)

    /// Waiting for events is no stall. The main loop must be that of GLib.
    void watchEventLoop();
    void eventBegins(const QObject *receiver, const QEvent *event);
    void eventEnds();

    /// What came before is the tester's own work.
    void forget();
    /// The same of this call alone.
    template <typename Call> void leaveOut(Call call)
    {
        const QScopedValueRollback leftOut(m_isLeftOut, true);
        const Time before = time();
        call();
        const Time after = time();
        m_last.busy += after.busy - before.busy;
        m_last.all += after.all - before.all;
        m_last.waits += after.waits - before.waits;
    }
    /// Begins anew.
    void reset();
    /// Ends a stretch of work outside of events.
    void mark(const QString &what);

    /// Milliseconds for which this thread had the processor or had to wait for something else.
    double now() const { return time().all; }
    const Stall &longest() const { return m_longest; }
    /// The longest since this was called last.
    Stall takeRecent() { return std::exchange(m_recent, {}); }

private:
    struct Time
    {
        double busy;
        double all;
        long waits; ///< how often the thread has given up the processor
    };
    struct Event
    {
        int loopLevel;
        bool isTurn; ///< not sent by another event
    };
    Time time() const;
    double delayed() const;
    static void note(Stall &stall, const Time &span, const QString &what);
    static int pollWatched(_GPollFD *files, unsigned count, int timeout);

    int m_file;
    Time m_last{};
    Stall m_longest;
    Stall m_recent;
    QStack<Event> m_events;
    bool m_isLeftOut = false;
    QString m_what;
};

/// Tells the meter of each event.
class MeteredApplication : public QApplication
{
public:
    MeteredApplication(int &argc, char **argv, StallMeter *meter)
        : QApplication(argc, argv)
        , m_meter(meter)
    {
    }
    bool notify(QObject *receiver, QEvent *event) override;

private:
    StallMeter *const m_meter;
};
