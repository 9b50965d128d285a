// SPDX-License-Identifier: MIT
#include "KelvoTrackerModelFactory.h"

#include "KelvoTrackerStore.h"
#include "store/OpeningGate.h"

KelvoTrackerModelFactory::KelvoTrackerModelFactory(const QString &unknownAlbum, const QString &unknownArtist,
    int streamingBlockSize, QObject *parent, std::chrono::milliseconds idleTime)
    : QObject(parent)
    , m_unknownAlbum(unknownAlbum)
    , m_unknownArtist(unknownArtist)
    , m_streamingBlockSize(streamingBlockSize)
    , m_idleTime(idleTime)
{
    connect(KelvoTrackerStore::instance(), &KelvoTrackerStore::opened, this, [this](bool ok) {
        if (std::exchange(m_waiting, false))
            Q_EMIT initCompleted(ok);
    });
}

KelvoTrackerModelFactory::~KelvoTrackerModelFactory()
{
    KelvoTrackerStore::instance()->release(this);
}

void KelvoTrackerModelFactory::holdBack(bool isHeldBack)
{
    if (isHeldBack)
        OpeningGate::instance().close();
    else
        OpeningGate::instance().open();
}

void KelvoTrackerModelFactory::init()
{
    m_waiting = true;
    KelvoTrackerStore::instance()->hold(this);
}

QString KelvoTrackerModelFactory::errorText() const
{
    return KelvoTrackerStore::instance()->errorText();
}

KelvoTrackerModel *KelvoTrackerModelFactory::getModel(
    KelvoTrackerModel::QueryType type, int firstBlockSize, int id)
{
    return new KelvoTrackerModel(
        type, firstBlockSize, m_streamingBlockSize, id, m_unknownAlbum, m_unknownArtist, m_idleTime);
}
