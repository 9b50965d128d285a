// SPDX-License-Identifier: MIT
#include "platform/StandstillLog.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <thread>

using namespace std::chrono_literals;

namespace {
/// Counts how often what is looked at is woken up by its timer.
class TickCounter : public QObject
{
public:
    explicit TickCounter(QObject *timed) { timed->installEventFilter(this); }
    int ticks() const { return m_ticks; }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_ticks += event->type() == QEvent::Timer;
        return false;
    }

private:
    int m_ticks = 0;
};

/// An event loop without an event until this much time has passed.
void beIdle(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

QString standstill(const LogRecorder &log)
{
    const QStringList warnings = log.warnings();
    const auto isOne = [](const QString &line) {
        return line.startsWith(QLatin1String("The window stood still for "));
    };
    const auto found = std::find_if(warnings.begin(), warnings.end(), isOne);
    return found == warnings.end() ? QString() : *found;
}
} // namespace

/// What the log says of a window that answered nobody, and that a window that nobody asks is left in peace.
class StandstillLogTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void whereNothingHappensItDoesNotWakeUp()
    {
        StandstillLog standstills;
        const TickCounter counter(&standstills);
        beIdle(4500ms);
        // The first hears of the beginning, the second of nothing.
        QVERIFY2(counter.ticks() <= 2, qPrintable(QString::number(counter.ticks())));
    }

    void aStandstillAfterALongRestIsTold()
    {
        const LogRecorder log;
        const StandstillLog standstills;
        beIdle(2500ms);
        QTimer::singleShot(0, qApp, [] { std::this_thread::sleep_for(2500ms); });
        QTRY_VERIFY_WITH_TIMEOUT(!standstill(log).isEmpty(), 5000);
        QVERIFY2(standstill(log).contains(QLatin1String(" of work, the rest waiting")),
            qPrintable(standstill(log)));
    }

    void shortWorkIsNotTold()
    {
        const LogRecorder log;
        const StandstillLog standstills;
        for (int i = 0; i < 15; ++i) {
            QTimer::singleShot(0, qApp, [] { std::this_thread::sleep_for(150ms); });
            QTest::qWait(1);
        }
        QCOMPARE(standstill(log), QString());
    }
};

KELVO_WIDGET_TEST(StandstillLogTest)
#include "StandstillLogTest.moc"
