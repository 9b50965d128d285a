// SPDX-License-Identifier: MIT
#include "ListeningPost.h"

#include "ClockedMedium.h"
#include "Output.h"
#include "Session.h"
#include "SoundTrial.h"

namespace {
constexpr std::chrono::milliseconds answerTime = std::chrono::seconds(10);
constexpr int mostTime = 60'000; // milliseconds
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

bool ListeningPost::makeMedia(QString *error)
{
    for (const int item : {1, 2}) {
        const QString name = ClockedMedium::fileName(item, QStringLiteral("wav"));
        const ClockedMedium medium{item, QStringLiteral("wav"), SoundTrial::Media::Seconds, name};
        QProcess process;
        process.start(ClockedMedium::program(), medium.arguments() + QStringList{m_folder.filePath(name)});
        const bool ended = process.waitForFinished(mostTime);
        if (!ended || process.exitStatus() != QProcess::NormalExit
            || process.exitCode() != ClockedMedium::Made) {
            *error = QStringLiteral("media with a clock cannot be made: ")
                + QString::fromUtf8(process.readAllStandardError()).trimmed();
            return false;
        }
    }
    return true;
}

QList<SoundRow> ListeningPost::compare(Session &session, const QString &uuid)
{
    QString error;
    if (!makeMedia(&error)) {
        Output::complain(error);
        return {};
    }
    const auto find = [&] {
        return session.registry()->findRendererByUuid(uuid);
    };
    if (!session.waitUntil([&find] { return find() != nullptr; }, answerTime)) {
        Output::complain(QStringLiteral("%1 has gone: it was not listened to").arg(uuid));
        return {};
    }
    const auto urlOf = [this](int item) {
        return QUrl::fromLocalFile(m_folder.filePath(ClockedMedium::fileName(item, QStringLiteral("wav"))));
    };
    SoundTrial trial(find(), &m_ear, {urlOf(1), urlOf(2)});
    QObject context;
    QObject::connect(&session, &Session::interrupted, &context, [&trial] { trial.stop(); });
    QObject::connect(&m_ear, &Ear::heard, &context,
        [&session, uuid](const Hearing &hearing) { session.noteHeard(uuid, hearing); });
    return trial.run();
}
