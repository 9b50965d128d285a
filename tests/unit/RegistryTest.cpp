// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

namespace {
/// The registry's operations for one kind of object, so that each test runs for All three.
template <typename Object, auto add, auto remove, auto find, auto list, auto added, auto removed> struct Kind
{
    static constexpr auto AddOne = add;
    static constexpr auto RemoveOne = remove;
    static constexpr auto FindOne = find;
    static constexpr auto All = list;
    static constexpr auto AddedSignal = added;
    static constexpr auto RemovedSignal = removed;
    using Type = Object;
};

using R = KelvoRegistry;
using Renderers = Kind<MinimalRenderer, &R::addRenderer, &R::removeRenderer, &R::findRendererByUuid,
    &R::renderers, &R::rendererAdded, &R::rendererRemoved>;
using Sources = Kind<MinimalSource, &R::addSource, &R::removeSource, &R::findSourceByUuid, &R::sources,
    &R::sourceAdded, &R::sourceRemoved>;
using Playlists = Kind<MinimalPlaylist, &R::addPlaylist, &R::removePlaylist, &R::findPlaylistByUuid,
    &R::allPlaylists, &R::playlistAdded, &R::playlistRemoved>;

const QVariantList firstReport{QString("u1"), QString("One")};

template <typename K> void addAndRemove()
{
    KelvoRegistry registry;
    typename K::Type one("u1", "One");
    typename K::Type two("u2", "Two");
    bool foundWhenAdded = false;
    bool goneWhenRemoved = false;
    QObject::connect(&registry, K::AddedSignal, &registry,
        [&](const QString &uuid) { foundWhenAdded = (registry.*K::FindOne)(uuid) != nullptr; });
    QObject::connect(&registry, K::RemovedSignal, &registry, [&](const QString &uuid) {
        goneWhenRemoved = !(registry.*K::FindOne)(uuid) && (registry.*K::All)().size() == 1;
    });
    QSignalSpy added(&registry, K::AddedSignal);
    QSignalSpy removed(&registry, K::RemovedSignal);
    QVERIFY((registry.*K::AddOne)(&one));
    QVERIFY((registry.*K::AddOne)(&two));
    QVERIFY(foundWhenAdded);
    QCOMPARE(added.size(), 2);
    QCOMPARE(added.first(), firstReport);
    QCOMPARE((registry.*K::All)().size(), 2);
    QCOMPARE((registry.*K::All)().first(), &one);
    QCOMPARE((registry.*K::FindOne)("u2"), &two);
    one.rename("Uno");
    QVERIFY((registry.*K::RemoveOne)(&one));
    QVERIFY(goneWhenRemoved);
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.first(), (QVariantList{"u1", "Uno"})); // the name it has now
    QCOMPARE((registry.*K::All)().first(), &two);
}

template <typename K> void refusals()
{
    KelvoRegistry registry;
    typename K::Type one("u1", "One");
    typename K::Type same("u1", "Same");
    typename K::Type unnamed("", "No uuid");
    LogRecorder log;
    QSignalSpy added(&registry, K::AddedSignal);
    QSignalSpy removed(&registry, K::RemovedSignal);
    QVERIFY((registry.*K::AddOne)(&one));
    QVERIFY(!(registry.*K::AddOne)(&same));
    QVERIFY(!(registry.*K::AddOne)(&one));
    QVERIFY(!(registry.*K::AddOne)(&unnamed));
    QVERIFY(!(registry.*K::AddOne)(nullptr));
    QVERIFY(!(registry.*K::RemoveOne)(&same));
    QVERIFY(!(registry.*K::RemoveOne)(nullptr));
    QCOMPARE(log.warnings().size(), 6);
    QCOMPARE(added.size(), 1);
    QCOMPARE(removed.size(), 0);
    QCOMPARE((registry.*K::FindOne)("u1"), &one);
    QVERIFY(!(registry.*K::FindOne)(""));
    QVERIFY(!(registry.*K::FindOne)(QString()));
}

template <typename K> void takenOutByDestruction()
{
    KelvoRegistry registry;
    QSignalSpy removed(&registry, K::RemovedSignal);
    {
        typename K::Type one("u1", "One");
        QVERIFY((registry.*K::AddOne)(&one));
    }
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.first(), firstReport);
    QVERIFY((registry.*K::All)().isEmpty());
    QVERIFY(!(registry.*K::FindOne)("u1"));
}

template <typename K> void removedAndDeleted()
{
    KelvoRegistry registry;
    QSignalSpy removed(&registry, K::RemovedSignal);
    auto one = std::make_unique<typename K::Type>("u1", "One");
    QVERIFY((registry.*K::AddOne)(one.get()));
    QVERIFY((registry.*K::RemoveOne)(one.get()));
    one.reset();
    QCOMPARE(removed.size(), 1);
    typename K::Type again("u1", "Again");
    QVERIFY((registry.*K::AddOne)(&again));
}
} // namespace

class RegistryTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void isOne() { QCOMPARE(KelvoRegistry::instance(), KelvoRegistry::instance()); }

    void addsAndRemovesRenderers() { addAndRemove<Renderers>(); }
    void addsAndRemovesSources() { addAndRemove<Sources>(); }
    void addsAndRemovesPlaylists() { addAndRemove<Playlists>(); }

    void refusesWrongRenderers() { refusals<Renderers>(); }
    void refusesWrongSources() { refusals<Sources>(); }
    void refusesWrongPlaylists() { refusals<Playlists>(); }

    void takesOutDestroyedRenderers() { takenOutByDestruction<Renderers>(); }
    void takesOutDestroyedSources() { takenOutByDestruction<Sources>(); }
    void takesOutDestroyedPlaylists() { takenOutByDestruction<Playlists>(); }

    void reportsARendererRemovedAndDeletedOnce() { removedAndDeleted<Renderers>(); }
    void reportsASourceRemovedAndDeletedOnce() { removedAndDeleted<Sources>(); }
    void reportsAPlaylistRemovedAndDeletedOnce() { removedAndDeleted<Playlists>(); }

    void keepsPointersValidWhileRemovalIsReported()
    {
        KelvoRegistry registry;
        MinimalRenderer renderer("u1", "One");
        registry.addRenderer(&renderer);
        QString seen;
        connect(&registry, &KelvoRegistry::rendererRemoved, this, [&] { seen = renderer.name(); });
        registry.removeRenderer(&renderer);
        QCOMPARE(seen, "One");
    }

    void takesTheSameUuidForDifferentKinds()
    {
        KelvoRegistry registry;
        MinimalRenderer renderer("u1", "One");
        MinimalSource source("u1", "One");
        MinimalPlaylist playlist("u1", "One");
        QVERIFY(registry.addRenderer(&renderer));
        QVERIFY(registry.addSource(&source));
        QVERIFY(registry.addPlaylist(&playlist));
    }

    void goesBeforeItsObjects()
    {
        MinimalRenderer renderer("u1", "One");
        {
            KelvoRegistry registry;
            registry.addRenderer(&renderer);
        }
        QCOMPARE(renderer.uuid(), "u1"); // and its destructor reaches no registry
    }

    void keepsTenThousandInOrder()
    {
        KelvoRegistry registry;
        std::vector<std::unique_ptr<MinimalRenderer>> All;
        for (int i = 0; i < 10'000; ++i) {
            All.push_back(std::make_unique<MinimalRenderer>(QString::number(i), "r"));
            registry.addRenderer(All.back().get());
        }
        for (size_t i = 0; i < All.size(); i += 2)
            registry.removeRenderer(All[i].get());
        const auto left = registry.renderers();
        QCOMPARE(left.size(), 5'000);
        for (int i = 0; i < left.size(); ++i)
            QCOMPARE(left.at(i)->uuid(), QString::number(2 * i + 1));
    }
};

KELVO_TEST(RegistryTest)
#include "RegistryTest.moc"
