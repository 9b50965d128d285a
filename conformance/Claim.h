// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What a renderer may be unable to do, for want of its engine or protocol.
enum class Ability {
    Pause,
    Seek,
    FastForward,
    Rewind,
    TellUnseekable, ///< error NotSeekable instead of a refused command
    PauseAt,
    Volume,
    VideoProperties, ///< xid, autopaint, render-rectangle, current-frame-on-pause
    RefuseValues, ///< error InvalidValue
    Metadata,
    FailItems, ///< an item that cannot be played is noticed
};

/// In plain words, for people who read a card.
QString nameOf(Ability ability);
/// Whether a renderer without the ability can say so, by an error or by not having a property: what it does not refuse
/// it then claims to do.
bool canBeRefused(Ability ability);

/// What is known of an ability before anything that needs it is tried.
struct Claim
{
    enum Kind {
        Made, ///< nothing speaks against trying it
        Refused, ///< the renderer says that it cannot do it
        Untriable, ///< there is nothing to try it with
    };
    Kind kind = Made;
    QString reason; ///< empty when made
};
