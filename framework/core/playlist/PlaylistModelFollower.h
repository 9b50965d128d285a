// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractItemModel>
#include <QPersistentModelIndex>
#include <QPointer>

#include <memory>
#include <vector>

class PlaylistContents;

/// Carries what happens in a playlist's underlying model over into the playlist's contents.
class PlaylistModelFollower
{
public:
    /// The contents must outlive this object.
    explicit PlaylistModelFollower(PlaylistContents &contents);
    ~PlaylistModelFollower();
    Q_DISABLE_COPY_MOVE(PlaylistModelFollower)

    /// Loads the contents from this model, and follows it from now on. Null: an empty list. Not owned; once it is
    /// destroyed the contents stay as they are.
    void follow(QAbstractItemModel *model);
    QAbstractItemModel *model() const { return m_model; }

private:
    void connectRows();
    void connectColumns();
    void load();
    bool isInStep(int growth);
    void rowsInserted(int first, int last);
    void rowsRemoved(int first, int last);
    void rowsMoved(int first, int last, int destination);
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles);
    void headersChanged();
    void columnsChanged();
    void rememberLayout();
    void restoreLayout();
    void modelDestroyed();
    void rereadAll();

    PlaylistContents &m_contents;
    QPointer<QAbstractItemModel> m_model;
    std::unique_ptr<QObject> m_connections; // Context of those to the model.
    std::vector<QPersistentModelIndex> m_layoutMarks;
};
