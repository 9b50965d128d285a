// SPDX-License-Identifier: MIT
// Who is found, and who stays, of those whose announcements do not arrive.
#include "SearchListener.h"
#include "TestGroup.h"
#include "UpnpCase.h"

#include <QElapsedTimer>

namespace {
// Milliseconds. A search is repeated as soon as the library has done with the first one, then each half minute.
constexpr int soon = 15'000;
constexpr int halfMinute = 45'000;

class UpnpSearchTest : public UpnpCase
{
    Q_OBJECT
private Q_SLOTS:
    void searchesAreRepeated();
    void staysBeyondItsAgeWhileItAnswers();
    void staysWithoutAnsweringSearches();
    void goesWithItsByebyeWithoutAnsweringSearches();
    void goesWhenItIsSilentBeyondItsAge();

private:
    int searches() const
    {
        return qMin(m_searches->count("MediaRenderer"), m_searches->count("MediaServer"));
    }
    bool isSearched(int atLeast, int within)
    {
        return QTest::qWaitFor([this, atLeast] { return searches() >= atLeast; }, within);
    }

    /// Those that are silent are dropped by the library some seconds after a search; they answer when they are asked.
    bool isDropped(FakeUpnpDevice &device)
    {
        if (!appears(device) || !isSearched(6, 2 * soon))
            return false;
        const int asked = device.actions("GetTransportInfo");
        return QTest::qWaitFor([&] { return device.actions("GetTransportInfo") >= asked + 3; }, 2 * soon);
    }

    std::unique_ptr<SearchListener> m_searches;

protected Q_SLOTS:
    void init()
    {
        m_searches = std::make_unique<SearchListener>();
        UpnpCase::init();
    }
    void cleanup()
    {
        UpnpCase::cleanup();
        m_searches.reset();
    }
};

void UpnpSearchTest::searchesAreRepeated()
{
    QVERIFY(isSearched(3, soon));
    // Devices that nobody hears of by themselves.
    FakeUpnpDevice early("uuid:early");
    early.answerSearches();
    QVERIFY(isSearched(4, soon));
    QTRY_COMPARE_WITH_TIMEOUT(m_comings, QStringList{"+uuid:early"}, soon);
    QVERIFY(isSearched(6, soon));
    FakeUpnpDevice late("uuid:late");
    late.type = "MediaServer";
    late.answerSearches();
    QElapsedTimer sinceSearch;
    sinceSearch.start();
    QVERIFY(isSearched(7, halfMinute));
    // The network is not flooded either.
    QVERIFY2(sinceSearch.elapsed() > 20'000, qPrintable(QString::number(sinceSearch.elapsed())));
    QTRY_COMPARE_WITH_TIMEOUT(m_comings, (QStringList{"+uuid:early", "+uuid:late"}), soon);
}

void UpnpSearchTest::staysBeyondItsAgeWhileItAnswers()
{
    FakeUpnpDevice device("uuid:brief");
    device.maxAge = 2;
    device.answerSearches();
    QVERIFY(appears(device));
    const KelvoRenderer *renderer = find(device.udn);
    // When it is forgotten by all who go by its age, it has been asked several times and found again by a search.
    const int asked = device.actions("GetTransportInfo");
    QTRY_VERIFY_WITH_TIMEOUT(device.actions("GetTransportInfo") >= asked + 3, 2 * soon);
    QVERIFY(isSearched(4, soon));
    const int askedThen = device.actions("GetTransportInfo");
    QTRY_VERIFY_WITH_TIMEOUT(device.actions("GetTransportInfo") > askedThen + 1, soon);
    QCOMPARE(m_comings, QStringList{"+uuid:brief"});
    QCOMPARE(find(device.udn), renderer);
    QCOMPARE(device.subscriptions(), 1);
}

void UpnpSearchTest::staysWithoutAnsweringSearches()
{
    FakeUpnpDevice device("uuid:deaf");
    QVERIFY(isDropped(device));
    QCOMPARE(m_comings, QStringList{"+uuid:deaf"});
    // It is listened to all the same.
    device.moveTo("/other.xml");
    device.name = "Moved";
    device.announce();
    QTRY_COMPARE(find(device.udn)->name(), QStringLiteral("Moved"));
    device.announce("byebye");
    QTRY_COMPARE(m_comings, (QStringList{"+uuid:deaf", "-uuid:deaf"}));
}

void UpnpSearchTest::goesWithItsByebyeWithoutAnsweringSearches()
{
    FakeUpnpDevice device("uuid:deaf");
    QVERIFY(isDropped(device));
    QCOMPARE(m_comings, QStringList{"+uuid:deaf"});
    // It still answers when it is asked: only what it says itself tells that it goes.
    device.announce("byebye");
    QTRY_COMPARE(m_comings, (QStringList{"+uuid:deaf", "-uuid:deaf"}));
}

void UpnpSearchTest::goesWhenItIsSilentBeyondItsAge()
{
    auto device = std::make_unique<FakeUpnpDevice>("uuid:brief");
    device->maxAge = 2;
    QVERIFY(appears(*device));
    device.reset();
    QTRY_COMPARE_WITH_TIMEOUT(m_comings, (QStringList{"+uuid:brief", "-uuid:brief"}), 2 * soon);
}
} // namespace

KELVO_TEST(UpnpSearchTest)
#include "UpnpSearchTest.moc"
