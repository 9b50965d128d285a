// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// What a format is made with.
struct Recipe
{
    /// The pipeline between appsrc name=sound, videotestsrc name=picture and filesink name=file, as gst-launch-1.0 takes it.
    QString pipeline;
    /// Samples that the codec puts in front of the sound and nobody takes away: so many are left out of the beginning,
    /// so that what is heard at second t is what belongs there. The first of them are silent.
    int delay = 0;

    /// Nothing for a format that is not known.
    static std::optional<Recipe> of(const QString &format);

    /// What this machine lacks to make it, in words; empty: nothing.
    QString missing() const;
};
