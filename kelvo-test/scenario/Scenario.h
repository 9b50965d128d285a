// SPDX-License-Identifier: MIT
#pragma once

#include "Condition.h"
#include "Medium.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <optional>
#include <variant>

struct Command;

/// Where in a file something is written; both count from 1.
struct Place
{
    QString file;
    int line = 0;
    int column = 0;

    QString text() const { return QStringLiteral("%1:%2:%3").arg(file).arg(line).arg(column); }
};

/// An operation of the boundary, or one on a playlist or a back end.
struct CommandStep
{
    const Command *command = nullptr; ///< of the table in Commands.h
    QVariantMap arguments; ///< by the parameters' names
};

struct WaitStep
{
    std::chrono::milliseconds time{0};
};

/// Something must come within a time.
struct ExpectStep
{
    enum Kind { Once, Order, Count };

    Kind kind = Once;
    QList<Condition> conditions; ///< one, but of Order: several reports, one after the other
    std::chrono::milliseconds within{0};
    std::chrono::milliseconds lasting{0}; ///< of Once: holds for so long
    int least = 0; ///< of Count
    std::optional<int> most = {}; ///< of Count: known only when `within` is over
};

/// A report that must not come: in the whole run, or for a time, or until something else is so.
struct NeverStep
{
    Condition condition;
    std::chrono::milliseconds lasting{0};
    std::optional<Condition> until;
    std::chrono::milliseconds within{0}; ///< for `until`

    bool isOfWholeRun() const { return lasting.count() == 0 && !until; }
};

/// From now on the server treats a medium so; also where it is being sent.
struct FaultStep
{
    QString medium;
    MediaFault fault;
};

struct Step
{
    std::variant<CommandStep, WaitStep, ExpectStep, NeverStep, FaultStep> what;
    int renderer = 0; ///< which of the scenario's
    QString text; ///< for people
    Place place;
};

struct NamedPlaylist
{
    QString name;
    QStringList media;
};

/// What a tester wants to see of one or several renderers, as a file tells it (docs/scenarios.md).
struct Scenario
{
    static constexpr int MaximumSteps = 10'000;

    QString file;
    QString title;
    QStringList needs; ///< operations, properties, "media"
    QStringList renderers; ///< what the steps call them; at least one
    QList<Medium> media;
    QList<NamedPlaylist> playlists;
    QList<Step> steps;
};
