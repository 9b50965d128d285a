// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"
#include "RowCursor.h"
#include "StoreError.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class StoreConnection;

/// Calls off what runs with it: a query that sorts or scans stops within milliseconds. Any thread.
class KELVO_TRACKER_EXPORT StoreCancellation
{
public:
    StoreCancellation();
    ~StoreCancellation();
    Q_DISABLE_COPY_MOVE(StoreCancellation)
    void cancel();

private:
    friend class StoreConnection;
    friend class StoreCursor;
    struct Private;
    std::unique_ptr<Private> d;
};

/// A running query. One thread at a time; keeps the state of the store from when it began and never blocks writers.
class KELVO_TRACKER_EXPORT StoreCursor : public RowCursor
{
public:
    StoreCursor();
    StoreCursor(StoreCursor &&other) noexcept;
    StoreCursor &operator=(StoreCursor &&other) noexcept;
    ~StoreCursor() override;

    explicit operator bool() const;
    bool next(StoreError *error) override;
    int columnCount() const override;
    Type type(int column) const override;
    const char *text(int column) const override;
    qint64 integer(int column) const override;
    /// As the library tells it; generated text for what is no variable.
    QByteArray name(int column) const override;

private:
    friend class StoreConnection;
    struct Private;
    std::unique_ptr<Private> d;
};

/// A connection to a store, usable from any thread. Updates run one after the other.
class KELVO_TRACKER_EXPORT StoreConnection
{
public:
    using Bindings = std::vector<std::pair<QByteArray, QByteArray>>;

    /// Opens the store in the folder; makes it when there is none and readOnly is false. Takes from 20 ms to
    /// seconds (when the last owner did not close it). Null on failure.
    static std::shared_ptr<StoreConnection> open(const QString &folder, bool readOnly, StoreError *error);
    /// The desktop's own index, when it runs. Cannot be written.
    static std::shared_ptr<StoreConnection> openDesktopIndex(StoreError *error);
    ~StoreConnection();
    Q_DISABLE_COPY_MOVE(StoreConnection)

    /// Begins a SELECT; `bindings` are texts for its "~name" places. The cancellation must outlive the cursor.
    StoreCursor select(const QByteArray &text, const Bindings &bindings,
        const StoreCancellation *cancellation, StoreError *error) const;
    /// The first column of the first row as text; empty when there is none.
    QByteArray selectOne(const QByteArray &text, StoreError *error) const;

    /// All updates together or, on failure, none.
    bool update(const std::vector<QByteArray> &texts, StoreError *error);

private:
    struct Private;
    StoreConnection(std::unique_ptr<Private> data, bool readOnly);

    std::unique_ptr<Private> d;
    std::mutex m_updates;
    const bool m_readOnly;
};
