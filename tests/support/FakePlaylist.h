// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlaylist.h"

#include <QStandardItemModel>
#include <QStringList>

/// A playlist of given titles that writes down the editing operations and only flips its modes: items stay as
/// they are, so that a test sees what was asked for and nothing else. Item uuids are "item-0", "item-1" ...
class FakePlaylist : public KelvoPlaylist
{
    Q_OBJECT
public:
    FakePlaylist(QString uuid, QString name, const QStringList &titles = {});

    /// For instance "removeItems(2,5)", "sort(title,0)"; cleared when taken.
    QStringList takeCalls();

    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_name; }
    QAbstractItemModel *itemModel() override { return &m_model; }
    int count() const override { return m_model.rowCount(); }
    KelvoMediaInfo mediaInfoAt(uint index) const override;
    bool isShuffled() const override { return m_shuffled; }
    void shuffle() override;
    void unshuffle() override;
    int repeatMode() const override { return m_repeatMode; }
    void setRepeatMode(int mode) override;
    void sort(const QString &key, int order) override;
    void removeItem(uint index) override;
    void removeItems(uint from, uint to) override;
    void clear() override;

private:
    QString m_uuid;
    QString m_name;
    QStandardItemModel m_model;
    QStringList m_calls;
    bool m_shuffled = false;
    int m_repeatMode = RepeatOff;
};
