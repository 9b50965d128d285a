// SPDX-License-Identifier: MIT
#pragma once

#include "GstHandles.h"

#include <QString>

/// Where the sound goes.
namespace AudioOutput {
/// From a pipeline description, or automatic when that is empty or cannot be used (which is logged). Without
/// an audio device the automatic output is a silent clock, so that playback still advances in real time.
GstHandles::Element make(const QString &description);
/// The silent clock itself.
GstHandles::Element makeSilent();
/// What sounds, as text for a tester: the name of the output, or "none (silent clock)".
QString describe(GstElement *output);
/// Whether it only keeps the time.
bool isSilent(GstElement *output);
} // namespace AudioOutput
