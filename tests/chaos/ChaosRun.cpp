// SPDX-License-Identifier: MIT
#include "ChaosRun.h"

#include "Warnings.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>

#include <algorithm>
#include <numeric>
#include <unistd.h>

namespace {
/// A question may be unanswered for so long, in milliseconds.
constexpr double longestQuestion = 5000;
/// The event loop may find something to do for so long.
constexpr double longestSettling = 300;
/// The position is asked for once a second.
constexpr double longestPlay = 1300;
/// Seconds after which a step is given up.
constexpr unsigned longestStep = 120;
/// The GUI thread may be kept from its events for so long by its own work, in milliseconds.
constexpr double longestWork = 100;
/// And so long by waiting, too: what it waits for may in turn wait for the processor.
constexpr double longestStop = 1000;
} // namespace

ChaosRun::ChaosRun(const Stage &stage, quint64 seed)
    : m_stage(stage)
    , m_seed(seed)
    , m_questions(stage.meter)
    , m_onlooker(stage, &m_questions)
    , m_invariants(stage, m_onlooker)
{
}

void ChaosRun::add(std::unique_ptr<Family> family)
{
    m_deeds += family->deeds();
    m_families.push_back(std::move(family));
}

void ChaosRun::run(int steps)
{
    for (int number = 1; number <= steps && !m_stage.journal.hasFailed(); ++number)
        step(number);
}

void ChaosRun::step(int number)
{
    m_stage.journal.beginStep(number);
    ::alarm(longestStep); // ends the program
    m_stage.meter.takeRecent(); // a console that is told its steps may have been frozen since the last one
    Dice dice(m_seed, quint64(number));
    if (dice.chance(15))
        letTimePass(dice);
    else
        perform(dice, false);
    settle();
    check();
    ::alarm(0);
}

void ChaosRun::letTimePass(Dice &dice)
{
    if (dice.chance(25)) {
        m_stage.say(QStringLiteral("until a position is told"));
        waitUntil([this, before = m_questions.positions()] { return m_questions.positions() != before; },
            longestPlay);
        return;
    }
    const int milliseconds = dice.between(50, 600);
    m_stage.say(QStringLiteral("until something is reported, %1 ms at most").arg(milliseconds));
    waitUntil([this, before = m_onlooker.reports()] { return m_onlooker.reports() != before; }, milliseconds);
}

void ChaosRun::perform(Dice &dice, bool elsewhere)
{
    QList<Deed> choice = m_deeds;
    if (elsewhere)
        choice.removeIf([](const Deed &deed) { return deed.place != Deed::Elsewhere; });
    const int all = std::accumulate(
        choice.cbegin(), choice.cend(), 0, [](int sum, const Deed &deed) { return sum + deed.weight; });
    int number = dice.below(all);
    const auto chosen = std::find_if(choice.cbegin(), choice.cend(), [&number](const Deed &deed) {
        number -= deed.weight;
        return number < 0;
    });
    m_stage.meter.forget();
    chosen->act(dice);
    m_stage.meter.mark(QStringLiteral("the step itself"));
}

void ChaosRun::meanwhile(Dice &dice)
{
    perform(dice, true);
}

bool ChaosRun::waitUntil(const std::function<bool()> &condition, double milliseconds)
{
    const double end = m_stage.meter.now() + milliseconds;
    while (!condition()) {
        const double rest = end - m_stage.meter.now();
        if (rest <= 0)
            return false;
        // Wakes up in any case, as the condition may depend on nothing but time.
        const int timer = m_onlooker.startTimer(int(rest) + 1);
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        m_onlooker.killTimer(timer);
    }
    return true;
}

void ChaosRun::settle()
{
    const double end = m_stage.meter.now() + longestSettling;
    auto *loop = QAbstractEventDispatcher::instance();
    do {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (loop->processEvents(QEventLoop::AllEvents) && m_stage.meter.now() < end);
}

void ChaosRun::check()
{
    for (const QString &fault : m_invariants.faults() + m_questions.olderThan(longestQuestion))
        m_stage.journal.fail(fault);
    for (const auto &family : m_families) {
        for (const QString &fault : family->faults())
            m_stage.journal.fail(fault);
    }
    for (const QString &warning : Warnings::takeUnexpected())
        m_stage.journal.fail(QStringLiteral("warning: ") + warning);
    checkStall();
    m_stage.meter.forget(); // all this was the tester's work
}

void ChaosRun::checkStall()
{
    const StallMeter::Stall stall = m_stage.meter.takeRecent();
    if (stall.busy <= longestWork && stall.stopped <= longestStop)
        return;
    const QString text = QStringLiteral("the window was busy for %1 ms (%2), stood still for %3 ms (%4)")
                             .arg(QString::number(stall.busy), stall.busyWith, QString::number(stall.stopped),
                                 stall.stoppedBy);
#ifdef KELVO_CHAOS_SANITIZED
    m_stage.say(text); // not judged: the sanitizers take several times as long
#else
    m_stage.journal.fail(text);
#endif
}

void ChaosRun::forgetStall()
{
    m_stage.meter.forget();
    m_stage.meter.takeRecent();
}

void ChaosRun::finish()
{
    ::alarm(longestStep);
    m_stage.say(QStringLiteral("the end"));
    if (!m_stage.journal.hasFailed()) {
        waitUntil([this] { return m_questions.pending() == 0; }, longestQuestion);
        for (const QString &fault : m_questions.olderThan(0))
            m_stage.journal.fail(fault);
        check();
    }
    for (const auto &family : m_families)
        family->end();
    m_families.clear();
    settle();
    ::alarm(0);
}
