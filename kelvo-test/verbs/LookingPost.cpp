// SPDX-License-Identifier: MIT
#include "LookingPost.h"

#include "Calibration.h"
#include "KelvoRegistry.h"
#include "MediaClock.h"
#include "PictureTrial.h"
#include "Session.h"
#include "TrialMedia.h"

namespace {
constexpr std::chrono::milliseconds openingTime = std::chrono::seconds(10);
constexpr std::chrono::milliseconds pictureCalibrationTime = std::chrono::seconds(20);

QString wholePicture()
{
    return QStringLiteral("0,0,%1,%2").arg(MediaClock::pictureWidth).arg(MediaClock::pictureHeight);
}
} // namespace

bool LookingPost::look(const QString &place, Session &session, QString *error)
{
    m_eye.look(place);
    session.waitUntil([this] { return m_eye.isReady() || !m_eye.problem().isEmpty(); }, openingTime);
    if (m_eye.isReady() || session.isInterrupted())
        return true;
    *error = QStringLiteral("nothing can be seen at \"%1\": %2")
                 .arg(place,
                     m_eye.problem().isEmpty() ? QStringLiteral("the X server does not answer")
                                               : m_eye.problem());
    return false;
}

SenseRow LookingPost::calibrate(Session &session, const QUrl &medium)
{
    if (m_eye.window() == 0)
        return Calibration::notPossible(
            QStringLiteral("eye"), QStringLiteral("only into a window that the eye makes can be played"));
    const auto calibration = Calibration::ofEye(&m_eye, m_eye.window(), medium.toLocalFile());
    session.waitUntil([&calibration] { return calibration->isDone(); }, pictureCalibrationTime);
    m_eye.setClockError(calibration->error().value_or(Eye::ClockError));
    return calibration->row();
}

QList<SenseRow> LookingPost::compare(Session &session, const QString &uuid, const Ear *ear)
{
    TrialMedia media;
    KelvoRenderer *const renderer = TrialMedia::prepareTrial(session, uuid, QStringLiteral("mp4"), &media);
    if (!renderer)
        return {};
    const SenseRow calibration = calibrate(session, media.items().first);
    lendWindow(m_eye, renderer);
    PictureTrial trial(renderer, &m_eye, ear, media.items());
    QObject context;
    QObject::connect(&session, &Session::interrupted, &context, [&trial] { trial.stop(); });
    QObject::connect(&m_eye, &Eye::seen, &context,
        [&session, uuid](const Sighting &sighting) { session.noteSeen(uuid, sighting); });
    QList<SenseRow> rows = QList<SenseRow>{calibration} + trial.run();
    takeWindowBack(m_eye, session.registry()->findRendererByUuid(uuid));
    return rows;
}

void LookingPost::lendWindow(const Eye &eye, KelvoRenderer *renderer)
{
    if (!renderer || eye.window() == 0)
        return;
    renderer->setKelvoProperty(KelvoRenderer::PropertyXid, eye.window());
    renderer->setKelvoProperty(KelvoRenderer::PropertyRenderRectangle, wholePicture());
}

void LookingPost::takeWindowBack(const Eye &eye, KelvoRenderer *renderer)
{
    if (renderer && eye.window() > 0)
        renderer->setKelvoProperty(KelvoRenderer::PropertyXid, 0U);
}
