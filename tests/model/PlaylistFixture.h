// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGeneralSourcePlaylist.h"

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <QStandardItemModel>
#include <QStringList>

#include <memory>

/// One signal contentsChanged().
struct ContentsChange
{
    uint from;
    uint removed;
    uint added;
    bool operator==(const ContentsChange &) const = default;
};
char *toString(const QList<ContentsChange> &changes);

inline QStringList sortedCopy(QStringList list)
{
    list.sort();
    return list;
}

/// A playlist with an item model tester attached, that holds every contentsChanged() against the list of
/// before: nothing outside the reported range may differ, the counts have to add up, and itemModel() has to
/// agree with the items already. Persistent indexes set with mark() are held against the item they were set
/// on.
class PlaylistFixture
{
public:
    PlaylistFixture();
    explicit PlaylistFixture(QAbstractItemModel *model);

    KelvoGeneralSourcePlaylist &operator*() { return *playlist; }
    KelvoGeneralSourcePlaylist *operator->() { return playlist.get(); }

    QStringList titles();
    QStringList uuids();
    QString cell(int row, int column, int role = Qt::DisplayRole);
    QStringList headers();
    /// The changes since the last call.
    QList<ContentsChange> takeChanges() { return std::exchange(m_changes, {}); }
    void markAll();
    /// Fails the running test when a mark is not at its item.
    void checkMarks();
    void checkAgreement();

    std::unique_ptr<KelvoGeneralSourcePlaylist> playlist;

private:
    void check(uint from, uint removed, uint added);

    QAbstractItemModelTester m_tester;
    QStringList m_known;
    QList<ContentsChange> m_changes;
    QHash<QString, QPersistentModelIndex> m_marks;
};

/// Headers "id", "title", "url", "duration", "artist", "year" and one row per title, "a" with id "id-a" and
/// URL "file:///a.ogg"; a duration may follow the title after a colon.
std::unique_ptr<QStandardItemModel> songs(const QStringList &titles);
QList<QStandardItem *> song(const QString &titleAndDuration);
/// One row of texts, as rows copied from a result arrive.
QList<QStandardItem *> texts(const QStringList &cells);
