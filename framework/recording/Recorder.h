// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <atomic>
#include <memory>
#include <string>

class KelvoRegistry;

/// Records what happens at the boundary: what comes and goes, what it is told and what it reports.
///
/// The last 20,000 events are kept in memory, in at most 8 MiB, and are saved as evidence when the process crashes and
/// for whoever asks for them (EvidenceService). With KELVO_RECORD=FILE all of them go into that file, too.
/// One in a process. GUI thread; what it hears of may come from any thread.
class Recorder
{
public:
    /// What the process says of itself.
    struct Program
    {
        QString name;
        QString version;
        QString revision; ///< of the build
    };

    /// Records from now on, until the recorder is destroyed. After the application object is made, before whoever else
    /// listens to the registry. The registry must outlive it.
    static std::unique_ptr<Recorder> start(KelvoRegistry *registry, const Program &program);
    /// Ends the recording, and waits for the disk as long as that takes some of it within two seconds.
    ~Recorder();
    Q_DISABLE_COPY_MOVE(Recorder)

    /// A recording of what is in memory: its header and its events, a line each.
    std::string recording() const;
    /// For a process that is about to end without its destructors: waits half a second at most until what the recorder
    /// has heard is in the file. Any thread; nothing without a recorder.
    static void flush();

private:
    Recorder(KelvoRegistry *registry, const Program &program);

    static void endService();

    static std::atomic<Recorder *> s_recorder; ///< the one that started last

    struct Private;
    std::unique_ptr<Private> d;
};
