// SPDX-License-Identifier: MIT
#include "Subject.h"

#include "KelvoRegistry.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>

KelvoRenderer *Subject::findIn(const KelvoRegistry &registry) const
{
    return registry.renderers().value(0);
}

void Subject::letTimePass(KelvoRenderer *)
{
    wait(5);
}

qint64 Subject::time() const
{
    static QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return timer.elapsed();
}

void Subject::wait(int milliseconds)
{
    const QDeadlineTimer end(milliseconds, Qt::PreciseTimer);
    do {
        QCoreApplication::processEvents(QEventLoop::AllEvents, int(end.remainingTime()));
        // No event loop is left for them here, which is where they are deleted otherwise.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QThread::msleep(std::clamp<qint64>(end.remainingTime(), 0, 10));
    } while (!end.hasExpired());
}

void Subject::refuses(Ability ability, const QString &reason)
{
    m_claims.insert(ability, {Claim::Refused, reason});
}

void Subject::cannotTry(Ability ability, const QString &reason)
{
    m_claims.insert(ability, {Claim::Untriable, reason});
}
