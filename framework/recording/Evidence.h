// SPDX-License-Identifier: MIT
#pragma once

#include "RecordingHeader.h"

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QList>
#include <QString>

#include <string>

class KelvoRegistry;

/// What is known of a process at one moment, and the folder that it is saved in: an evidence bundle.
struct Evidence
{
    QString folder; ///< not there yet
    std::string recording;
    std::string log;
    QByteArray about; ///< JSON
    std::string environment;
    QList<QImage> windows;

    /// What the files of a bundle are called.
    static constexpr char RecordingName[] = "recording.jsonl";
    static constexpr char LogName[] = "log.txt";
    static constexpr char AboutName[] = "about.json";
    static constexpr char EnvironmentName[] = "environment.txt";

    /// The folder that bundles are made in: KELVO_EVIDENCE_DIR, else kelvo/evidence in the folder of the user's state
    /// (XDG Base Directory Specification).
    static QString home();
    /// The path of a bundle of that time; other processes and other times have others.
    static QString folderOf(const RecordingHeader &header, const QDateTime &time);
    /// Program and versions of what it stands on, as JSON. With a registry its plug-ins with their state, too, whose
    /// files are looked at, and what else it has. GUI thread.
    static QByteArray describe(const RecordingHeader &header, const KelvoRegistry *registry);
    /// Those variables of the environment that change what the program does, one a line, sorted. The user's name and
    /// home are left out of their values, and values of variables that are named like secrets altogether.
    static std::string describeEnvironment();
    /// A picture of each window of the program that is shown. GUI thread.
    static QList<QImage> pictureWindows();

    /// Makes the folder and its files. Any thread.
    /// @return why that did not work; empty when it did
    QString save() const;
};
