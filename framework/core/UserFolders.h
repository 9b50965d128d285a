// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QString>

/// Where the programs keep what is the user's: in a folder of one name, "kelvo", below each base folder that the XDG Base
/// Directory Specification has. Naming a folder does not make it. Any thread.
namespace UserFolders {

/// What cannot be made anew: $XDG_DATA_HOME/kelvo/<what>, ~/.local/share/kelvo/<what>.
KELVO_CORE_EXPORT QString data(const QString &what);
/// What may be deleted at any time: $XDG_CACHE_HOME/kelvo/<what>, ~/.cache/kelvo/<what>.
KELVO_CORE_EXPORT QString cache(const QString &what);
/// What tells of earlier runs: $XDG_STATE_HOME/kelvo/<what>, ~/.local/state/kelvo/<what>.
KELVO_CORE_EXPORT QString state(const QString &what);

/// Makes the folder, with those above it, and closes it to everybody but the user: what was played, and what is in his
/// library, is nobody else's business. One that is open to others is closed, too, when it is his. Whether it is there.
KELVO_CORE_EXPORT bool makePrivate(const QString &folder);

/// Moves what earlier versions kept under other names, in one step each, so that programs which start at once or run
/// already do not disturb one another: who has a file open keeps it. What is there already is never replaced, and
/// nothing is copied: what cannot be moved stays, with a line in the log. Called when a program starts.
KELVO_CORE_EXPORT void takeOverOld();

} // namespace UserFolders
