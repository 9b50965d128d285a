// SPDX-License-Identifier: MIT
#pragma once

#include "EarCondition.h"
#include "EyeCondition.h"
#include "KelvoError.h"
#include "KelvoRenderer.h"
#include "Quantities.h"

#include <QMap>
#include <QString>

#include <optional>

struct Event;
struct Observation;

/// What may be so of a renderer. Everything that is given must be so.
struct Condition
{
    std::optional<KelvoRenderer::State> state; ///< reported last
    std::optional<QString> item; ///< name of the medium, or address, that was announced last
    std::optional<int> index; ///< in the playlist; -1: belongs to none
    std::optional<Tolerance> position; ///< seconds
    QMap<QString, QString> properties; ///< values as text, or numbers with a tolerance ("40 ± 1")
    QMap<QString, QString> metadata; ///< the same
    std::optional<int> error; ///< code that came since the last command; AnyError: whatever it is
    bool completed = false; ///< playback has completed since the last command
    std::optional<bool> there; ///< whether the renderer is in the registry
    EarCondition heard; ///< what comes out, whatever it says
    EyeCondition seen; ///< the same of the picture
    int renderer = 0; ///< which of the scenario's

    static constexpr int AnyError = -1;

    /// Whether a report can tell it by itself: exactly one thing, and neither the position nor what is heard or seen.
    bool isReport() const;
    bool holds(const Observation &observed) const;
    bool needsEar() const { return !heard.isEmpty() || seen.sync; }
    bool needsEye() const { return !seen.isEmpty(); }
    /// What was measured of what is heard and seen, for people; empty: nothing was to be.
    QString measured(const Observation &observed) const;
    /// Why what should be heard or seen could not be measured, and nothing else is in the way; empty: it could be, or something is.
    QString unmeasured(const Observation &observed) const;
    /// Whether the event tells just that.
    bool isToldBy(const Event &event) const;
    /// For people: "state Playing, position 3 s ± 250 ms".
    QString text() const;

private:
    /// The same of what the renderer says.
    bool isTold(const Observation &observed) const;
};
