// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QPointer>

class QAbstractItemModel;
class QStandardItemModel;

/// Appends rows of one model to another as display texts, so that the window stays responsive: a large copy is
/// done in pieces from the event loop. What is copied are the rows as they were at the call: before the source
/// changes them, the copy is brought to its end. GUI thread.
class RowCopier : public QObject
{
    Q_OBJECT
public:
    /// Rows that are copied before copy() returns.
    static constexpr int FirstRows = 2000;

    explicit RowCopier(QObject *parent = nullptr);
    ~RowCopier() override;

    /// Appends the rows from..to with all columns. Rows that the source does not have become empty texts. An
    /// earlier copy is finished first. Neither model is owned. Whoever deletes the source calls finish() before;
    /// a target that is deleted ends its copy.
    void copy(const QAbstractItemModel &source, int from, int to, QStandardItemModel *target);

    /// Does at once what is left to do.
    void finish();

Q_SIGNALS:
    void aboutToAppend();
    void appended();

private:
    void followSource();
    void goOn();
    void appendUntil(int end, int milliseconds);

    QPointer<const QAbstractItemModel> m_source;
    QPointer<QStandardItemModel> m_target;
    int m_next = 0;
    int m_end = 0; ///< the row behind the last one
    bool m_scheduled = false;
};
