// SPDX-License-Identifier: MIT
#pragma once

#include "ForeignItemModel.h"
#include "ItemLoader.h"
#include "KelvoCommandListener.h"
#include "KelvoPlaylist.h"

/// What another process says of one of its playlists.
struct PlaylistDescription
{
    QString id;
    QString name;
    uint itemCount = 0;
    uint revision = 0;
};

/// A playlist of another process, for reading. Its items are fetched once somebody asks for them and then
/// follow the original; count() is the number of items that have arrived, so everything in it can be played.
/// The editing operations change nothing and warn.
class ForeignPlaylist : public KelvoPlaylist
{
    Q_OBJECT
public:
    /// @param calls   to that process, shared by all its playlists
    /// @param origin  what tells the tester whose playlist it is; shown behind the name
    ForeignPlaylist(PeerCalls *calls, const QString &path, const PlaylistDescription &description,
        const QString &origin, QObject *parent = nullptr);

    QString uuid() const override { return m_description.id; }
    QString name() const override { return m_name; }
    QAbstractItemModel *itemModel() override;
    int count() const override;
    KelvoMediaInfo mediaInfoAt(uint index) const override;
    int indexOf(const QString &mediaUuid) const override;
    bool isWritable() const override { return false; }

    bool isShuffled() const override { return false; }
    void shuffle() override { refuse("shuffle"); }
    void unshuffle() override { refuse("unshuffle"); }
    int repeatMode() const override { return RepeatOff; }
    void setRepeatMode(int mode) override;
    void sort(const QString &key, int order) override;
    void removeItem(uint index) override;
    void removeItems(uint from, uint to) override;
    void clear() override { refuse("clear"); }

    /// The owner says that its list has changed.
    void noteRevision(uint revision) { m_loader->noteRevision(revision); }
    void rename(const QString &name);

Q_SIGNALS:
    /// See ItemLoader.
    void complaint(const QString &text);
    void broken(const QString &reason);

private:
    template <typename... Arguments> void refuse(const char *operation, const Arguments &...arguments) const
    {
        KelvoCommandListener::noteCommand(*this, operation, arguments...);
        warnOf(operation);
    }
    void warnOf(const char *operation) const;
    void announce(const ForeignItemModel::Change &change);
    void checkCount(uint revision, qsizetype items);

    PlaylistDescription m_description;
    const QString m_origin;
    QString m_name;
    ForeignItemModel m_model;
    ItemLoader *m_loader;
};
