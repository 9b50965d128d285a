// SPDX-License-Identifier: MIT
#include "MediaFolder.h"

#include <QEventLoop>
#include <QFile>
#include <QProcess>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>
#include <unistd.h>

namespace {
QString inFolder(const QString &path)
{
    QDir().mkpath(path);
    return path + QStringLiteral("/.kelvo-media-XXXXXX");
}

/// In the child, before it becomes the maker: Ctrl-C is for this program, which then ends it; and without this program
/// it has nothing to do.
void detachFromTerminal()
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

QString described(const ClockedMedium &medium)
{
    return QStringLiteral("%1: begins at %2:00:00:00, %3 s")
        .arg(ClockedMedium::fileName(medium.item, medium.format))
        .arg(medium.item, 2, 10, QLatin1Char('0'))
        .arg(medium.seconds);
}
} // namespace

MediaFolder::MediaFolder(const QString &path)
    : m_folder(path)
    , m_unfinished(inFolder(path))
{
}

bool MediaFolder::make(const QList<ClockedMedium> &media)
{
    if (!m_unfinished.isValid()) {
        Output::complain(QStringLiteral("nothing can be written in %1: %2")
                             .arg(m_folder.path(), m_unfinished.errorString()));
        return false;
    }
    qsizetype made = 0;
    for (const ClockedMedium &medium : media) {
        const Outcome outcome = makeOne(medium);
        if (outcome == Outcome::Ended)
            break;
        made += outcome == Outcome::Made ? 1 : 0;
    }
    m_output.line(
        QStringLiteral("%1 of %2 media made in %3").arg(made).arg(media.size()).arg(m_folder.path()));
    return made == media.size();
}

MediaFolder::Outcome MediaFolder::makeOne(const ClockedMedium &medium)
{
    const QString unfinished = m_unfinished.filePath(QStringLiteral("medium.") + medium.format);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setChildProcessModifier(detachFromTerminal);
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QObject::connect(&m_interruption, &Interruption::requested, &loop, &QEventLoop::quit);
    m_output.progress(QStringLiteral("making ") + ClockedMedium::fileName(medium.item, medium.format));
    process.start(ClockedMedium::program(), medium.arguments() + QStringList{unfinished});
    if (!m_interruption.isRequested() && process.state() != QProcess::NotRunning)
        loop.exec();
    if (m_interruption.isRequested()) {
        process.kill();
        process.waitForFinished();
        return refuse(medium, QStringLiteral("interrupted"), Outcome::Ended);
    }
    if (process.error() == QProcess::FailedToStart)
        return refuse(medium, QStringLiteral("%1: %2").arg(ClockedMedium::program(), process.errorString()),
            Outcome::Ended);
    const QString words = QString::fromUtf8(process.readAll()).trimmed();
    const bool hasEnded = process.exitStatus() == QProcess::NormalExit;
    return judge(medium, hasEnded ? process.exitCode() : int(ClockedMedium::CannotBeMade),
        hasEnded ? words : process.errorString());
}

MediaFolder::Outcome MediaFolder::judge(const ClockedMedium &medium, int code, const QString &words)
{
    if (code != ClockedMedium::Made)
        return refuse(
            medium, words, code == ClockedMedium::CannotBeWritten ? Outcome::Ended : Outcome::LeftOut);
    // Unlike Qt's own, it takes the place of what has that name.
    const QString path = m_folder.filePath(ClockedMedium::fileName(medium.item, medium.format));
    const QString unfinished = m_unfinished.filePath(QStringLiteral("medium.") + medium.format);
    if (std::rename(QFile::encodeName(unfinished).constData(), QFile::encodeName(path).constData()) != 0)
        return refuse(medium, qt_error_string(), Outcome::Ended);
    m_output.line(described(medium));
    return Outcome::Made;
}

MediaFolder::Outcome MediaFolder::refuse(const ClockedMedium &medium, const QString &reason, Outcome outcome)
{
    Output::complain(QStringLiteral("%1 was not made: %2")
                         .arg(ClockedMedium::fileName(medium.item, medium.format), reason));
    return outcome;
}
