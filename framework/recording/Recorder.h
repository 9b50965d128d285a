// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariantList>

#include <atomic>
#include <memory>
#include <string>

class KelvoRegistry;

/// Records what happens at the boundary: what comes and goes, what it is told and what it reports.
///
/// The last 20,000 events are kept in memory, in at most 8 MiB, and are saved as evidence when the process crashes and
/// for whoever asks for them (EvidenceService). All of them go into a file, too, where one is given.
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
    /// @param file  written to as RecordingFile says; empty: none
    static std::unique_ptr<Recorder> start(
        KelvoRegistry *registry, const Program &program, const QString &file = fileOfEnvironment());
    /// The file that KELVO_RECORD names; empty: none.
    static QString fileOfEnvironment();
    /// Ends the recording, and waits for the disk as long as that takes some of it within two seconds.
    ~Recorder();
    Q_DISABLE_COPY_MOVE(Recorder)

    /// Writes down what somebody else has heard of a renderer, whatever that says itself.
    /// @param what  "begins", "goes", ...
    void noteHeard(const QString &uuid, const QString &what, const QVariantList &arguments);
    /// The same of what was seen.
    void noteSeen(const QString &uuid, const QString &what, const QVariantList &arguments);
    /// A recording of what is in memory: its header, its events and a note of the time, a line each.
    std::string recording() const;
    /// For a process that is about to end without its destructors: waits half a second at most until what the recorder
    /// has heard is in the file. Any thread; nothing without a recorder.
    static void flush();

private:
    Recorder(KelvoRegistry *registry, const Program &program, const QString &file);

    static void endService();

    static std::atomic<Recorder *> s_recorder; ///< the one that started last

    struct Private;
    std::unique_ptr<Private> d;
};
