// SPDX-License-Identifier: MIT
#include "ListeningPost.h"

#include "Calibration.h"
#include "Session.h"
#include "SoundTrial.h"
#include "TrialMedia.h"

namespace {
constexpr std::chrono::milliseconds answerTime = std::chrono::seconds(10);
constexpr std::chrono::milliseconds soundCalibrationTime = std::chrono::seconds(20);

/// Sound that was moved here from another sink begins up to two seconds late, for which its player is not to blame.
void doubtBeginnings(QList<SenseRow> *rows)
{
    for (SenseRow &row : *rows) {
        if (row.id != QLatin1String("ear.start") && row.id != QLatin1String("ear.next"))
            continue;
        row.cameOut.reset();
        row.doubt
            = QStringLiteral("it began at another sink and was moved here: name the sink that it plays to");
    }
}
} // namespace

bool ListeningPost::prepare(const QString &device, QString *error)
{
    m_device = device;
    if (device != QLatin1String("auto"))
        return true;
    m_device = m_sink.monitor();
    if (m_sink.make(error))
        return true;
    *error = QStringLiteral("no sink can be made to listen to: ") + *error;
    return false;
}

bool ListeningPost::listen(Session &session, QString *error)
{
    m_ear.listen(m_device);
    session.waitUntil([this] { return m_ear.isReady() || !m_ear.problem().isEmpty(); }, answerTime);
    if (m_ear.isReady() || session.isInterrupted())
        return true;
    *error = QStringLiteral("nothing can be heard at \"%1\": %2")
                 .arg(m_device,
                     m_ear.problem().isEmpty() ? QStringLiteral("it gives no sound") : m_ear.problem());
    return false;
}

SenseRow ListeningPost::calibrate(Session &session, const QUrl &medium)
{
    const auto monitor = QStringLiteral(".monitor");
    if (!m_device.endsWith(monitor))
        return Calibration::notPossible(
            QStringLiteral("ear"), QStringLiteral("\"%1\" is not the monitor of a sink").arg(m_device));
    const QString sink = m_device.chopped(monitor.size());
    const auto calibration = Calibration::ofEar(&m_ear, sink, medium.toLocalFile());
    session.waitUntil([&calibration] { return calibration->isDone(); }, soundCalibrationTime);
    m_ear.setClockError(calibration->error().value_or(Ear::ClockError));
    return calibration->row();
}

QList<SenseRow> ListeningPost::compare(Session &session, const QString &uuid)
{
    TrialMedia media;
    KelvoRenderer *const renderer = TrialMedia::prepareTrial(session, uuid, QStringLiteral("wav"), &media);
    if (!renderer)
        return {};
    const SenseRow calibration = calibrate(session, media.items().first);
    SoundTrial trial(renderer, &m_ear, media.items());
    QObject context;
    QObject::connect(&session, &Session::interrupted, &context, [&trial] { trial.stop(); });
    QObject::connect(&m_ear, &Ear::heard, &context,
        [&session, uuid](const Hearing &hearing) { session.noteHeard(uuid, hearing); });
    QList<SenseRow> rows = trial.run();
    if (m_sink.movedStreams() > 0)
        doubtBeginnings(&rows);
    return QList<SenseRow>{calibration} + rows;
}
