// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedRun.h"

#include <QString>

#include <optional>

class VerbOptions;

/// What the verbs that read recordings have in common.
namespace RecordingOptions {
/// The option "--run", which chooses one of the runs of a recording.
void add(VerbOptions *options);

/// Opens a recording as the options say. Nothing, after a complaint, where that fails. What is wrong with a recording
/// that can be read is complained of, too.
std::optional<RecordedRun> open(VerbOptions *options, const QString &path);
} // namespace RecordingOptions
