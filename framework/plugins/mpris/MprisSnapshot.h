// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"

#include <QUrl>
#include <QVariantMap>

#include <optional>

/// What a player says about the track that is current.
struct MprisTrack
{
    QString id; ///< object path; empty when there is none or it stands for "no track"
    QUrl url;
    QString title;
    QString artist;
    QString album;
    QString genre;
    QString cover; ///< URL of a picture
    double length = -1; ///< seconds; -1: not known

    bool isPresent() const { return !id.isEmpty() || !url.isEmpty() || !title.isEmpty(); }
    /// Told apart by the URLs where both have one, else by the ids.
    bool isSameAs(const MprisTrack &other) const;

    static MprisTrack of(const QVariantMap &metadata);
    /// Of which nothing but the address is known.
    static MprisTrack at(const QUrl &url) { return {{}, url, {}, {}, {}, {}, {}, -1}; }
    /// Players write the same address in different ways.
    static bool isSameAddress(const QUrl &one, const QUrl &other);
};

/// The properties of a player at one moment. No property is taken for granted, nor its type: what is missing or makes no
/// sense is left out.
struct MprisSnapshot
{
    KelvoRenderer::State playbackStatus = KelvoRenderer::Stopped;
    MprisTrack track;
    bool isEmptied = false; ///< it says that nothing is left of what it was given
    std::optional<double> position; ///< seconds, not below 0
    std::optional<double> rate;
    double minimumRate = 1;
    double maximumRate = 1;
    std::optional<int> volume; ///< 0..99
    bool canSeek = true;
    bool canPause = true;
    bool canControl = true;

    static MprisSnapshot of(const QVariantMap &properties);
    /// Whether the position has moved on, which says more than what a player says about itself.
    bool hasAdvancedSince(const MprisSnapshot &before) const;
};

/// Conversions between what crosses the bus and what the boundary has.
namespace MprisValues {
constexpr int maximumVolume = 99;

/// Numbers of any type, also as text: players differ in the types that they use.
std::optional<double> number(const QVariant &value);
/// Microseconds as seconds.
std::optional<double> seconds(const QVariant &value);
qlonglong microseconds(double seconds);
/// A text, or the texts of a list in one, cut to a sensible length.
QString text(const QVariant &value);
/// a{sv}; empty for anything else.
QVariantMap map(const QVariant &value);
/// A volume of 0..99 as the one of MPRIS, 0 to 1, and the other way round: there and back is the same. Players take theirs
/// for the place of their own slider, which has a mixer's curve already: that of 0..99.
double shareOfVolume(int volume);
int volumeOfShare(double share);
} // namespace MprisValues
