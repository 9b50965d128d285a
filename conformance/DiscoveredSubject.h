// SPDX-License-Identifier: MIT
#pragma once

#include "Media.h"
#include "SimulatedTime.h"
#include "Subject.h"

#include <QHash>

/// Any renderer of any back end: what there is to know of it is found out by trying.
class DiscoveredSubject : public Subject
{
public:
    /// The media are tried in this order; the first that the renderer plays are those it is held to the contract with.
    /// A simulated renderer needs none.
    DiscoveredSubject(QString pluginFile, QString uuid, QList<Media> media);

    /// Loads the renderer, finds media that it plays, how long its reports take and what it says it cannot do. False
    /// when it does not come or plays none of the media: problem() says so. Takes seconds, in which the event loop runs.
    bool meet();
    QString problem() const { return m_problem; }
    QString name() const { return m_name; }
    QString uuid() const { return m_uuid; }
    const Media &media() const { return m_media; }

    /// Unloads the back ends of the registry, one after the other, and tells which of them each renderer came from: its
    /// uuid and the file name of the plug-in.
    static QHash<QString, QString> originsOf(KelvoRegistry &registry);

    QString pluginFile() const override { return m_pluginFile; }
    KelvoRenderer *findIn(const KelvoRegistry &registry) const override;
    void prepare(KelvoRenderer &renderer) override;
    void finish(KelvoRenderer &renderer) override;
    QList<QUrl> shortItems() const override { return m_media.shortItems; }
    QUrl longItem() const override { return m_media.longItem; }
    int longSeconds() const override { return m_media.longSeconds; }
    QUrl failingItem() const override { return m_media.failingItem; }
    QUrl unseekableItem() const override { return m_media.unseekableItem; }
    void letTimePass(KelvoRenderer *renderer) override;
    qint64 time() const override { return m_isSimulated ? m_time.now() : Subject::time(); }
    bool inRealTime() const override { return !m_isSimulated; }
    int quietTime() const override;
    qint64 patience() const override;
    qint64 roundTrip() const override { return m_isSimulated ? 0 : m_roundTrip; }

private:
    /// Brings a player that goes on without us to rest.
    void silence(KelvoRenderer &renderer);

    const QString m_pluginFile;
    const QString m_uuid;
    const QList<Media> m_offered;
    Media m_media;
    QString m_name;
    QString m_problem;
    qint64 m_roundTrip = 0; ///< milliseconds
    bool m_isSimulated = false;
    SimulatedTime m_time;
};
