// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class KelvoPlaylist;

/// One playlist of this process as an object on the bus. Keeps no copy of the items: they are read from the playlist when they are asked for.
class ExportedPlaylist : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Name READ name)
    Q_PROPERTY(uint ItemCount READ itemCount)
    Q_PROPERTY(uint Revision READ revision)
    Q_PROPERTY(bool Writable READ isWritable)
public:
    /// @param playlist  not owned; may go first, the list is empty then
    ExportedPlaylist(KelvoPlaylist *playlist, const QString &path, QObject *parent = nullptr);

    QString path() const { return m_path; }
    QString id() const { return m_id; }
    QString name() const;
    uint itemCount() const;
    uint revision() const { return m_revision; }
    bool isWritable() const { return false; }

    /// All properties, as the object manager announces them.
    SharedInterfaces interfaces() const;

    /// One item, its texts cut to what others take.
    SharedItem itemAt(uint index) const;
    /// The items of a page, clamped to what one reply may hold.
    SharedItems page(uint start, uint count) const;

Q_SIGNALS:
    /// The signal of the bus interface; changes in quick succession give one.
    void Changed(uint revision);

private:
    void noteChange();

    QPointer<KelvoPlaylist> m_playlist;
    const QString m_path;
    const QString m_id;
    uint m_revision = 1;
    QTimer m_announcing;
};
