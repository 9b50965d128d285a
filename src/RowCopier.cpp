// SPDX-License-Identifier: MIT
#include "RowCopier.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QStandardItemModel>

#include <algorithm>
#include <limits>
#include <utility>

namespace {
// Half of what a window may stand still between two pictures; the view that follows needs its part.
constexpr int pieceTime = 8; // milliseconds
constexpr int rowsBetweenLooks = 64;

QList<QStandardItem *> copiedRow(const QAbstractItemModel &model, int row)
{
    QList<QStandardItem *> items;
    for (int column = 0; column < model.columnCount(); ++column)
        items.append(new QStandardItem(model.data(model.index(row, column), Qt::DisplayRole).toString()));
    return items;
}
} // namespace

RowCopier::RowCopier(QObject *parent)
    : QObject(parent)
{
}

RowCopier::~RowCopier() = default;

void RowCopier::copy(const QAbstractItemModel &source, int from, int to, QStandardItemModel *target)
{
    finish();
    m_source = &source;
    m_target = target;
    m_next = from;
    m_end = to + 1;
    appendUntil(std::min(m_end, from + FirstRows), std::numeric_limits<int>::max());
    if (m_next < m_end) {
        followSource();
        goOn();
    }
}

void RowCopier::finish()
{
    if (m_next < m_end)
        appendUntil(m_end, std::numeric_limits<int>::max());
}

void RowCopier::followSource()
{
    const auto finishBefore = [this](auto signal) {
        connect(m_source, signal, this, &RowCopier::finish, Qt::UniqueConnection);
    };
    finishBefore(&QAbstractItemModel::modelAboutToBeReset);
    finishBefore(&QAbstractItemModel::rowsAboutToBeRemoved);
    finishBefore(&QAbstractItemModel::rowsAboutToBeMoved);
    finishBefore(&QAbstractItemModel::columnsAboutToBeInserted);
    finishBefore(&QAbstractItemModel::columnsAboutToBeRemoved);
    finishBefore(&QAbstractItemModel::columnsAboutToBeMoved);
    finishBefore(&QAbstractItemModel::layoutAboutToBeChanged);
    // Rows that a query adds behind those being copied do not matter.
    connect(
        m_source, &QAbstractItemModel::rowsAboutToBeInserted, this, [this](const QModelIndex &, int first) {
            if (first < m_end)
                finish();
        });
}

void RowCopier::goOn()
{
    if (std::exchange(m_scheduled, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_scheduled = false;
            if (m_next >= m_end)
                return;
            appendUntil(m_end, pieceTime);
            if (m_next < m_end)
                goOn();
        },
        Qt::QueuedConnection);
}

void RowCopier::appendUntil(int end, int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    Q_EMIT aboutToAppend();
    while (m_next < end && m_source && m_target) {
        // Counted first: who hears of the row may ask for the rest at once.
        m_target->appendRow(copiedRow(*m_source, m_next++));
        if (m_next % rowsBetweenLooks == 0 && timer.elapsed() >= milliseconds)
            break;
    }
    Q_EMIT appended();
    if (!m_source && m_target)
        qWarning() << m_end - m_next << "rows were not appended: the result they belong to is gone";
    if (!m_source || !m_target)
        m_next = m_end;
    if (m_next >= m_end && m_source)
        disconnect(m_source, nullptr, this, nullptr);
}
