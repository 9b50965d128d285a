// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// Whose item a device has, and at whose it is: what it says while it goes from one item to the next belongs to the item whose
/// address it names as that of its track.
class ItemInDevice
{
public:
    bool isOurs(const QString &uri) const;
    bool isForeign(const QString &uri) const { return uri == m_foreignUri; }

    /// The device has accepted this one of ours.
    void accept(const QString &uri);
    /// The device has this one of somebody else's.
    void setForeign(const QString &uri) { m_foreignUri = uri; }
    void forgetItemsBefore() { m_before.clear(); }

    /// It has begun with ours.
    void begin() { m_isTrackOurs = true; }
    /// An address that the device names as that of its track, or empty. False: it is known to be of an item before ours.
    bool hearTrack(const QString &uri);
    /// What it named last.
    const QString &trackUri() const { return m_trackUri; }
    /// The address is of our item, or may be.
    void setTrackOurs(bool isOurs) { m_isTrackOurs = isOurs; }
    /// Whether the device may be at an item before. Some say that they play while that is still the item before. Others never
    /// name the track that they are at.
    bool isTrackDoubtful() const;

    /// Some devices forget the address of an item at its end.
    void setAddressGone(bool isGone) { m_isAddressGone = isGone; }
    bool isAddressGone() const { return m_isAddressGone; }

private:
    QString m_uri; // what of ours the device accepted last
    QString m_foreignUri; // what of somebody else's is in the device
    QString m_trackUri; // what the device named last as that of its track
    QStringList m_before; // of items that the device may still be busy with
    bool m_isTrackOurs = false; // and not that of an item before
    bool m_isAddressGone = false;
};
