// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlaylistBase.h"

#include <memory>

/// The model-backed playlist that the console builds.
class KELVO_CORE_EXPORT KelvoGeneralSourcePlaylist : public KelvoPlaylistBase
{
    Q_OBJECT
public:
    /// @param id          from KelvoPlaylist::getNewPlaylistId()
    /// @param sourceUuid  uuid of the source that the items come from
    KelvoGeneralSourcePlaylist(
        const QString &id, const QString &name, const QString &sourceUuid, QObject *parent = nullptr);
    ~KelvoGeneralSourcePlaylist() override;

    QString uuid() const override;
    QString name() const override;
    /// As it was given to the constructor.
    QString sourceUuid() const;
    QAbstractItemModel *itemModel() override;
    int count() const override;
    KelvoMediaInfo mediaInfoAt(uint index) const override;
    int indexOf(const QString &mediaUuid) const override;
    bool isShuffled() const override;
    void shuffle() override;
    void unshuffle() override;
    int repeatMode() const override;
    void setRepeatMode(int mode) override;
    void sort(const QString &key, int order) override;
    void removeItem(uint index) override;
    void removeItems(uint from, uint to) override;
    void clear() override;
    void setUnderlyingModel(QAbstractItemModel *model) override;
    QAbstractItemModel *underlyingModel() const override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
