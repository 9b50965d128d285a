// SPDX-License-Identifier: MIT
#pragma once

#include "../store/RowCursor.h"
#include "RemoteAnswers.h"

/// The rows of all libraries on other machines, one after the other. One thread at a time.
class RemoteCursor : public RowCursor
{
public:
    explicit RemoteCursor(std::shared_ptr<RemoteAnswers> answers);

    /// What a library fails with ends its own rows only; see RemoteAnswers::failures(). The error is of kind Cancelled.
    bool next(StoreError *error) override;
    int columnCount() const override;
    Type type(int column) const override;
    const char *text(int column) const override;
    qint64 integer(int column) const override;
    QByteArray name(int column) const override;
    bool wouldWait() const override;

private:
    const QByteArray &value(int column) const { return m_rows.rows[m_row][size_t(column)]; }

    const std::shared_ptr<RemoteAnswers> m_answers;
    RemoteAnswers::Rows m_rows;
    size_t m_row = 0;
};
