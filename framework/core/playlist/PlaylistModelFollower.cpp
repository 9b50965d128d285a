// SPDX-License-Identifier: MIT
#include "PlaylistModelFollower.h"

#include "PlaylistContents.h"

#include <algorithm>
#include <utility>

PlaylistModelFollower::PlaylistModelFollower(PlaylistContents &contents)
    : m_contents(contents)
{
}

PlaylistModelFollower::~PlaylistModelFollower() = default;

void PlaylistModelFollower::follow(QAbstractItemModel *model)
{
    m_connections.reset();
    m_layoutMarks.clear();
    m_model = model;
    m_contents.itemModel().setUnderlyingModel(model);
    if (model) {
        m_connections = std::make_unique<QObject>();
        connectRows();
        connectColumns();
        QObject::connect(model, &QObject::destroyed, m_connections.get(), [this] { modelDestroyed(); });
    }
    load();
}

void PlaylistModelFollower::load()
{
    m_contents.load(m_model);
}

void PlaylistModelFollower::connectRows()
{
    using Model = QAbstractItemModel;
    // Playlists are flat: rows below other rows are no items.
    const auto atTop = [this](auto function) {
        return [this, function](const QModelIndex &parent, int first, int last) {
            if (!parent.isValid())
                (this->*function)(first, last);
        };
    };
    QObject *context = m_connections.get();
    QObject::connect(m_model, &Model::rowsInserted, context, atTop(&PlaylistModelFollower::rowsInserted));
    QObject::connect(m_model, &Model::rowsRemoved, context, atTop(&PlaylistModelFollower::rowsRemoved));
    QObject::connect(m_model, &Model::rowsMoved, context,
        [this](const QModelIndex &from, int first, int last, const QModelIndex &to, int destination) {
            if (!from.isValid() && !to.isValid())
                rowsMoved(first, last, destination);
            else if (!from.isValid())
                rowsRemoved(first, last);
            else if (!to.isValid())
                rowsInserted(destination, destination + last - first);
        });
    QObject::connect(m_model, &Model::modelReset, context, [this] { load(); });
    QObject::connect(m_model, &Model::layoutAboutToBeChanged, context, [this] { rememberLayout(); });
    QObject::connect(m_model, &Model::layoutChanged, context, [this] { restoreLayout(); });
}

void PlaylistModelFollower::connectColumns()
{
    using Model = QAbstractItemModel;
    QObject *context = m_connections.get();
    const auto changed = [this](const QModelIndex &parent) {
        if (!parent.isValid())
            columnsChanged();
    };
    QObject::connect(m_model, &Model::columnsInserted, context, changed);
    QObject::connect(m_model, &Model::columnsRemoved, context, changed);
    QObject::connect(m_model, &Model::columnsMoved, context, changed);
    QObject::connect(m_model, &Model::headerDataChanged, context, [this](Qt::Orientation orientation) {
        if (orientation == Qt::Horizontal)
            headersChanged();
    });
    QObject::connect(m_model, &Model::dataChanged, context,
        [this](const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles) {
            dataChanged(topLeft, bottomRight, roles);
        });
}

// Signals of a model arrive out of turn when one of its receivers changes it again, and some models miss one.
// Rows that no longer fit are read anew rather than mixed up.
bool PlaylistModelFollower::isInStep(int growth)
{
    const QAbstractItemModel *model = m_model;
    if (model && int(m_contents.rows().size()) + growth == model->rowCount())
        return true;
    load();
    return false;
}

void PlaylistModelFollower::rowsInserted(int first, int last)
{
    if (isInStep(last - first + 1))
        m_contents.insertRows(*m_model, first, last);
}

void PlaylistModelFollower::rowsRemoved(int first, int last)
{
    if (isInStep(first - last - 1))
        m_contents.removeRows(first, last);
}

void PlaylistModelFollower::rowsMoved(int first, int last, int destination)
{
    if (!isInStep(0))
        return;
    auto rows = m_contents.rows();
    const auto begin = rows.begin();
    if (destination > last)
        std::rotate(begin + first, begin + last + 1, begin + destination);
    else
        std::rotate(begin + destination, begin + first, begin + last + 1);
    m_contents.reorderRows(std::move(rows));
}

void PlaylistModelFollower::dataChanged(
    const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles)
{
    if (!topLeft.isValid() || topLeft.parent().isValid())
        return;
    if (!roles.isEmpty() && !roles.contains(Qt::DisplayRole) && !roles.contains(Qt::EditRole))
        return;
    m_contents.rereadRows(*m_model, topLeft.row(), bottomRight.row());
}

void PlaylistModelFollower::headersChanged()
{
    const auto before = m_contents.columns().byRole;
    m_contents.setColumns(PlaylistColumns::of(*m_model));
    if (m_contents.columns().byRole != before)
        rereadAll();
}

void PlaylistModelFollower::columnsChanged()
{
    m_contents.setColumns(PlaylistColumns::of(*m_model));
    rereadAll();
}

void PlaylistModelFollower::rereadAll()
{
    m_contents.rereadRows(*m_model, 0, int(m_contents.rows().size()) - 1);
}

void PlaylistModelFollower::rememberLayout()
{
    m_layoutMarks.clear();
    m_layoutMarks.reserve(m_contents.rows().size());
    for (int row = 0; row < int(m_contents.rows().size()); ++row)
        m_layoutMarks.emplace_back(m_model->index(row, 0));
}

void PlaylistModelFollower::restoreLayout()
{
    const auto marks = std::exchange(m_layoutMarks, {});
    if (m_model->columnCount() == 0)
        return;
    const auto &rows = m_contents.rows();
    const bool complete = marks.size() == rows.size() && m_model->rowCount() == int(rows.size())
        && std::all_of(marks.begin(), marks.end(), [](const auto &mark) { return mark.isValid(); });
    if (!complete) {
        load(); // Rows came or went without a word: nothing of before holds.
        return;
    }
    PlaylistContents::Slots moved(marks.size(), PlaylistOrder::NoSlot);
    for (size_t row = 0; row < marks.size(); ++row)
        moved[size_t(marks[row].row())] = rows[row];
    m_contents.reorderRows(std::move(moved));
}

void PlaylistModelFollower::modelDestroyed()
{
    m_layoutMarks.clear();
    m_contents.detach();
}
