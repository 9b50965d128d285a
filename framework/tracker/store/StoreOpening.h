// SPDX-License-Identifier: MIT
#pragma once

#include "StoreConnection.h"
#include "StoreFolder.h"

/// A store that was opened.
struct OpenedStore
{
    std::shared_ptr<StoreConnection> connection; ///< null: it failed
    std::unique_ptr<StoreFolder::Lock> lock; ///< null: another process owns the store, it is read only
    QString notice; ///< what became of a damaged store; empty mostly
};

/// Opens the store in the folder, whatever state it is in: makes a missing one, moves a damaged one or one of
/// another version aside and makes a new one, opens one that another process owns for reading. A disk that fails is no
/// damage: what cannot be read or written just now stays where it is. Worker thread.
OpenedStore openStore(const QString &folder, StoreError *error);

/// Moves the store aside, unless it is the disk that fails, and returns a text that says what was done; for a store
/// whose damage showed while it was open.
QString discardStore(const QString &folder, const StoreError &why);
