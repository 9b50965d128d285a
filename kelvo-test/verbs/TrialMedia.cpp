// SPDX-License-Identifier: MIT
#include "TrialMedia.h"

#include "ClockedMedium.h"
#include "KelvoRegistry.h"
#include "Output.h"
#include "Session.h"

#include <QProcess>

namespace {
constexpr std::chrono::milliseconds comingBackTime = std::chrono::seconds(10);
constexpr int mostTime = 60'000; // milliseconds, for one item
} // namespace

bool TrialMedia::make(const QString &format, QString *error)
{
    for (const int item : {1, 2}) {
        const QString name = ClockedMedium::fileName(item, format);
        const QString path = m_folder.filePath(name);
        const ClockedMedium medium{item, format, SenseTrial::Media::Seconds, name};
        QProcess process;
        process.start(ClockedMedium::program(), medium.arguments() + QStringList{path});
        const bool ended = process.waitForFinished(mostTime);
        if (!ended || process.exitStatus() != QProcess::NormalExit
            || process.exitCode() != ClockedMedium::Made) {
            *error = QStringLiteral("media with a clock cannot be made: ")
                + QString::fromUtf8(process.readAllStandardError()).trimmed();
            return false;
        }
        (item == 1 ? m_items.first : m_items.second) = QUrl::fromLocalFile(path);
    }
    return true;
}

KelvoRenderer *TrialMedia::prepareTrial(
    Session &session, const QString &uuid, const QString &format, TrialMedia *media)
{
    QString error;
    if (!media->make(format, &error)) {
        Output::complain(error);
        return nullptr;
    }
    KelvoRenderer *renderer = nullptr;
    session.waitUntil(
        [&] {
            renderer = session.registry()->findRendererByUuid(uuid);
            return renderer != nullptr;
        },
        comingBackTime);
    if (!renderer)
        Output::complain(QStringLiteral("%1 has gone before its trial").arg(uuid));
    return renderer;
}
