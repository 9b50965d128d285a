// SPDX-License-Identifier: MIT
#pragma once

#include "RecordingFile.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

class EventRing;

/// Saves what is known when the process crashes (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP), and then lets whoever
/// handled that before do so: the system writes its core file, a sanitizer its report.
///
/// In the handler nothing is done but what a handler may do (signal-safety(7)): all texts and names are made before,
/// and what is written lies in memory that does not move.
class CrashHandler
{
public:
    struct Text
    {
        std::string path;
        std::string contents;
    };
    /// What is saved.
    struct Plan
    {
        std::vector<std::string> folders; ///< to be made where they are not there, the outermost first
        std::vector<Text> texts; ///< files, besides those of the rings
        std::string recordingPath;
        std::string recordingHeader;
        std::string logPath;
        std::string farewell; ///< what is said on standard error, after the name of the signal
        std::shared_ptr<const EventRing> events;
        const EventRing *log = nullptr; ///< lives until the process ends
        std::chrono::steady_clock::time_point begin; ///< time 0 of the events
    };

    /// Handles crashes from now on, until it is destroyed. One in a process. GUI thread.
    /// @param file  written to the end as well; may be null, not owned
    CrashHandler(Plan plan, RecordingFile::Progress *file);
    ~CrashHandler();
    Q_DISABLE_COPY_MOVE(CrashHandler)

private:
    struct Installed;
    const std::unique_ptr<Installed> m_installed;
};
