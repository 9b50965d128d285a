// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"
#include "StoreError.h"

#include <QByteArray>

/// The rows of a running query, one after the other. One thread at a time.
class KELVO_TRACKER_EXPORT RowCursor
{
public:
    /// As the store's library tells them, with "unbound" for what has no value.
    enum Type { Unbound, Uri, String, Integer, Double, DateTime, BlankNode, Boolean };

    virtual ~RowCursor() = default;

    /// Goes to the next (at first: the first) row. False at the end and on failure.
    virtual bool next(StoreError *error) = 0;
    virtual int columnCount() const = 0;
    virtual Type type(int column) const = 0;
    /// UTF-8, valid until next(); null for what has no value.
    virtual const char *text(int column) const = 0;
    /// Of a resource that the query asks the number of: that number.
    virtual qint64 integer(int column) const = 0;
    /// The variable's name.
    virtual QByteArray name(int column) const = 0;
    /// next() would wait for somebody else, who may take long: what is there is better shown before.
    virtual bool wouldWait() const { return false; }

protected:
    RowCursor() = default;
    RowCursor(const RowCursor &) = default;
    RowCursor &operator=(const RowCursor &) = default;
};
