// SPDX-License-Identifier: MIT
#include "ListeningPost.h"

#include "Session.h"
#include "SoundTrial.h"
#include "TrialMedia.h"

namespace {
constexpr std::chrono::milliseconds answerTime = std::chrono::seconds(10);
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

QList<SenseRow> ListeningPost::compare(Session &session, const QString &uuid)
{
    TrialMedia media;
    KelvoRenderer *const renderer = TrialMedia::prepareTrial(session, uuid, QStringLiteral("wav"), &media);
    if (!renderer)
        return {};
    SoundTrial trial(renderer, &m_ear, media.items());
    QObject context;
    QObject::connect(&session, &Session::interrupted, &context, [&trial] { trial.stop(); });
    QObject::connect(&m_ear, &Ear::heard, &context,
        [&session, uuid](const Hearing &hearing) { session.noteHeard(uuid, hearing); });
    return trial.run();
}
