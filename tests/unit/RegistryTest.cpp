// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

namespace {
/// The registry's operations for one kind of object, so that each test runs for all three.
template <typename Object, auto add, auto remove, auto find, auto list, auto added, auto removed> struct Kind
{
    static constexpr auto addOne = add;
    static constexpr auto removeOne = remove;
    static constexpr auto findOne = find;
    static constexpr auto all = list;
    static constexpr auto addedSignal = added;
    static constexpr auto removedSignal = removed;
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
    QObject::connect(&registry, K::addedSignal, &registry,
        [&](const QString &uuid) { foundWhenAdded = (registry.*K::findOne)(uuid) != nullptr; });
    QObject::connect(&registry, K::removedSignal, &registry, [&](const QString &uuid) {
        goneWhenRemoved = !(registry.*K::findOne)(uuid) && (registry.*K::all)().size() == 1;
    });
    QSignalSpy added(&registry, K::addedSignal);
    QSignalSpy removed(&registry, K::removedSignal);
    QVERIFY((registry.*K::addOne)(&one));
    QVERIFY((registry.*K::addOne)(&two));
    QVERIFY(foundWhenAdded);
    QCOMPARE(added.size(), 2);
    QCOMPARE(added.first(), firstReport);
    QCOMPARE((registry.*K::all)().size(), 2);
    QCOMPARE((registry.*K::all)().first(), &one);
    QCOMPARE((registry.*K::findOne)("u2"), &two);
    one.rename("Uno");
    QVERIFY((registry.*K::removeOne)(&one));
    QVERIFY(goneWhenRemoved);
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.first(), (QVariantList{"u1", "Uno"})); // the name it has now
    QCOMPARE((registry.*K::all)().first(), &two);
}

template <typename K> void refusals()
{
    KelvoRegistry registry;
    typename K::Type one("u1", "One");
    typename K::Type same("u1", "Same");
    typename K::Type unnamed("", "No uuid");
    LogRecorder log;
    QSignalSpy added(&registry, K::addedSignal);
    QSignalSpy removed(&registry, K::removedSignal);
    QVERIFY((registry.*K::addOne)(&one));
    QVERIFY(!(registry.*K::addOne)(&same));
    QVERIFY(!(registry.*K::addOne)(&one));
    QVERIFY(!(registry.*K::addOne)(&unnamed));
    QVERIFY(!(registry.*K::addOne)(nullptr));
    QVERIFY(!(registry.*K::removeOne)(&same));
    QVERIFY(!(registry.*K::removeOne)(nullptr));
    QCOMPARE(log.warnings().size(), 6);
    QCOMPARE(added.size(), 1);
    QCOMPARE(removed.size(), 0);
    QCOMPARE((registry.*K::findOne)("u1"), &one);
    QVERIFY(!(registry.*K::findOne)(""));
    QVERIFY(!(registry.*K::findOne)(QString()));
}

template <typename K> void takenOutByDestruction()
{
    KelvoRegistry registry;
    QSignalSpy removed(&registry, K::removedSignal);
    {
        typename K::Type one("u1", "One");
        QVERIFY((registry.*K::addOne)(&one));
    }
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.first(), firstReport);
    QVERIFY((registry.*K::all)().isEmpty());
    QVERIFY(!(registry.*K::findOne)("u1"));
}

template <typename K> void removedAndDeleted()
{
    KelvoRegistry registry;
    QSignalSpy removed(&registry, K::removedSignal);
    auto one = std::make_unique<typename K::Type>("u1", "One");
    QVERIFY((registry.*K::addOne)(one.get()));
    QVERIFY((registry.*K::removeOne)(one.get()));
    one.reset();
    QCOMPARE(removed.size(), 1);
    typename K::Type again("u1", "Again");
    QVERIFY((registry.*K::addOne)(&again));
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
        std::vector<std::unique_ptr<MinimalRenderer>> all;
        for (int i = 0; i < 10'000; ++i) {
            all.push_back(std::make_unique<MinimalRenderer>(QString::number(i), "r"));
            registry.addRenderer(all.back().get());
        }
        for (size_t i = 0; i < all.size(); i += 2)
            registry.removeRenderer(all[i].get());
        const auto left = registry.renderers();
        QCOMPARE(left.size(), 5'000);
        for (int i = 0; i < left.size(); ++i)
            QCOMPARE(left.at(i)->uuid(), QString::number(2 * i + 1));
    }
};

KELVO_TEST(RegistryTest)
#include "RegistryTest.moc"
