// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Why an operation on the store failed; the message is fit to be shown.
struct StoreError
{
    enum Kind {
        None,
        Cancelled,
        Closed, ///< the store was closed while, or before, the operation ran
        ReadOnly, ///< another process owns the store, so nothing can be written
        NoAccess, ///< the folder, or a file in it, cannot be made, read or written: it is forbidden, or the disk fails
        NoSpace, ///< the disk is full
        Damaged,
        OtherVersion, ///< written by another version of the store's library
        Gone, ///< the store's files were deleted while it was open
        Query, ///< the text of a query or update is wrong
        Other,
    };

    Kind kind = None;
    QString message;

    explicit operator bool() const { return kind != None; }
    /// Such a store is moved aside and made anew.
    bool needsRebuilding() const { return kind == Damaged || kind == OtherVersion || kind == Gone; }
    /// It can be tried again, once the disk has room or works.
    bool mayPass() const { return kind == NoSpace || kind == NoAccess; }
};
