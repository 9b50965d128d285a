// SPDX-License-Identifier: MIT
#include "Recorder.h"

#include "CommandTap.h"
#include "CrashHandler.h"
#include "EventLine.h"
#include "EventRing.h"
#include "EventWriter.h"
#include "Evidence.h"
#include "EvidenceService.h"
#include "KelvoRegistry.h"
#include "LogTail.h"
#include "RecordingFile.h"
#include "RecordingHeader.h"
#include "RegistryTap.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>

using namespace std::chrono_literals;

namespace {
constexpr EventRing::Limits kept{20'000, quint64(8) * 1024 * 1024};
constexpr auto longestFlush = 500ms;
} // namespace

struct Recorder::Private
{
    Private(KelvoRegistry *theRegistry, const Program &program, const QString &path)
        : registry(theRegistry)
        , begin(EventWriter::Clock::now())
        , header{program.name, program.version, program.revision, QDateTime::currentDateTimeUtc(), {},
              QCoreApplication::applicationPid()}
        , file(openFile(path))
        , crashes(planOfCrash(), file ? &file->progress() : nullptr)
        , writer(*ring, begin, [this] { wakeFile(); })
        , commands(writer)
        , reports(registry, writer)
    {
    }

    RecordingHeader headerOfNow() const
    {
        RecordingHeader now = header;
        now.plugins = registry->loadedPlugins();
        return now;
    }

    std::unique_ptr<RecordingFile> openFile(const QString &path) const
    {
        if (path.isEmpty())
            return nullptr;
        return std::make_unique<RecordingFile>(path, headerOfNow().line(), ring, begin);
    }

    CrashHandler::Plan planOfCrash() const
    {
        const QString folder = Evidence::folderOf(header, header.started) + QStringLiteral("-crash");
        const auto path = [&folder](const char *name) {
            return QFile::encodeName(folder + u'/' + QString::fromLatin1(name)).toStdString();
        };
        CrashHandler::Plan plan;
        for (qsizetype end = folder.indexOf(u'/', 1); end > 0; end = folder.indexOf(u'/', end + 1))
            plan.folders.push_back(QFile::encodeName(folder.first(end)).toStdString());
        plan.folders.push_back(QFile::encodeName(folder).toStdString());
        plan.texts = {{path(Evidence::AboutName), Evidence::describe(header, nullptr).toStdString()},
            {path(Evidence::EnvironmentName), Evidence::describeEnvironment()}};
        plan.recordingPath = path(Evidence::RecordingName);
        plan.recordingHeader = header.line();
        plan.logPath = path(Evidence::LogName);
        plan.farewell = QStringLiteral(": %1 has crashed, what is known of it is in %2\n")
                            .arg(header.program, folder)
                            .toStdString();
        plan.events = ring;
        plan.log = &LogTail::lines();
        plan.begin = begin;
        return plan;
    }

    /// All that is in memory, and until when that is all that happened.
    std::string linesOfNow() const
    {
        std::string lines = ring->lines();
        EventLine last(EventWriter::Clock::now() - begin, {}, "note", "saved");
        lines += last.finish();
        return lines;
    }

    /// No two bundles have the same, which is in their names.
    QDateTime timeOfEvidence()
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        lastEvidence = lastEvidence.isValid() ? std::max(now, lastEvidence.addMSecs(1)) : now;
        return lastEvidence;
    }

    Evidence collectEvidence()
    {
        const RecordingHeader described = headerOfNow();
        return {Evidence::folderOf(header, timeOfEvidence()), described.line() + linesOfNow(),
            LogTail::lines().lines(), Evidence::describe(described, registry),
            Evidence::describeEnvironment(), Evidence::pictureWindows()};
    }

    void wakeFile() const
    {
        if (file)
            file->wake();
    }

    KelvoRegistry *const registry;
    const std::shared_ptr<EventRing> ring = std::make_shared<EventRing>(kept);
    const EventWriter::Clock::time_point begin;
    const RecordingHeader header;
    const std::unique_ptr<RecordingFile> file;
    const CrashHandler crashes;
    const EventWriter writer;
    QDateTime lastEvidence;
    CommandTap commands;
    RegistryTap reports;
    std::unique_ptr<EvidenceService> service; ///< while there is an application object
};

std::atomic<Recorder *> Recorder::s_recorder = nullptr;

std::unique_ptr<Recorder> Recorder::start(
    KelvoRegistry *registry, const Program &program, const QString &file)
{
    LogTail::install(EventWriter::Clock::now());
    return std::unique_ptr<Recorder>(new Recorder(registry, program, file));
}

QString Recorder::fileOfEnvironment()
{
    return qEnvironmentVariable("KELVO_RECORD");
}

Recorder::Recorder(KelvoRegistry *registry, const Program &program, const QString &file)
    : d(std::make_unique<Private>(registry, program, file))
{
    s_recorder = this;
    d->service = std::make_unique<EvidenceService>([this] { return d->collectEvidence(); });
    qAddPostRoutine(endService);
}

void Recorder::endService()
{
    if (const Recorder *recorder = s_recorder)
        recorder->d->service.reset();
}

Recorder::~Recorder()
{
    Recorder *self = this;
    s_recorder.compare_exchange_strong(self, nullptr);
    d->writer.note({}, "note", "ended");
}

void Recorder::noteHeard(const QString &uuid, const QString &what, const QVariantList &arguments)
{
    d->writer.note(uuid, "heard", what.toStdString(), arguments);
}

void Recorder::noteSeen(const QString &uuid, const QString &what, const QVariantList &arguments)
{
    d->writer.note(uuid, "seen", what.toStdString(), arguments);
}

std::string Recorder::recording() const
{
    return d->headerOfNow().line() + d->linesOfNow();
}

void Recorder::flush()
{
    if (const Recorder *recorder = s_recorder; recorder && recorder->d->file)
        recorder->d->file->flush(longestFlush);
}
