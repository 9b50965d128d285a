// SPDX-License-Identifier: MIT
#include "TrackerSourcePlugin.h"

#include "KelvoPlayCounter.h"
#include "KelvoRegistry.h"
#include "KelvoTrackerStore.h"
#include "TrackerSource.h"
#include "index/MediaIndexing.h"

TrackerSourcePlugin::TrackerSourcePlugin() = default;

TrackerSourcePlugin::~TrackerSourcePlugin()
{
    stop();
}

bool TrackerSourcePlugin::start(KelvoRegistry *registry, QString *error)
{
    auto source = std::make_unique<TrackerSource>();
    if (!registry->addSource(source.get())) {
        *error = QStringLiteral("there is a tracker source already");
        return false;
    }
    m_registry = registry;
    m_source = std::move(source);
    KelvoTrackerStore *store = KelvoTrackerStore::instance();
    m_counter = std::make_unique<KelvoPlayCounter>(registry);
    connect(m_counter.get(), &KelvoPlayCounter::played, store, &KelvoTrackerStore::countPlay);
    connect(m_counter.get(), &KelvoPlayCounter::lengthTold, store, &KelvoTrackerStore::correctLength);
    // A store that cannot be opened is said so by the log and by each query; the source stays, so that it can be
    // asked what it is.
    store->hold(this);
    store->startIndexing(std::make_shared<MediaIndexing>());
    return true;
}

void TrackerSourcePlugin::stop()
{
    if (!m_source)
        return;
    m_counter.reset();
    KelvoTrackerStore::instance()->stopIndexing();
    KelvoTrackerStore::instance()->release(this);
    if (m_registry)
        m_registry->removeSource(m_source.get());
    m_source.reset();
}
