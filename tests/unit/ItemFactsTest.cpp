// SPDX-License-Identifier: MIT
#include "KelvoItemFacts.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
KelvoContent item(const char *uuid, const char *url = "file:///song")
{
    return {QLatin1String(uuid), QUrl(QLatin1String(url)), {}};
}

QStringList told(const KelvoItemFacts &facts)
{
    QStringList lines;
    for (const KelvoItemFacts::Fact &fact : facts.told())
        lines.append(fact.key + QLatin1Char('=') + fact.values.constFirst().toString());
    return lines;
}
} // namespace

/// Which facts are news.
class ItemFactsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void sameTextIsNoNews()
    {
        KelvoItemFacts facts;
        facts.announce(item("a"), true);
        QVERIFY(facts.take("title", {"One"}));
        QVERIFY(!facts.take("title", {"One"}));
        QVERIFY(facts.take("artist", {"One"})); // another key
        QVERIFY(!facts.take("title", {"One", "and more that is not shown"}));
        QVERIFY(!facts.take("album", {})); // nothing to tell
        QCOMPARE(told(facts), QStringList({"title=One", "artist=One"}));
    }

    void anotherTextIsNewsInItsPlace()
    {
        KelvoItemFacts facts;
        facts.announce(item("radio"), false);
        QVERIFY(facts.take("title", {"First"}));
        QVERIFY(facts.take("duration", {60}));
        QVERIFY(facts.take("title", {"Second"}));
        QVERIFY(facts.take("title", {"First"})); // it comes again
        QVERIFY(!facts.take("duration", {"60"})); // the text is what is shown
        QCOMPARE(told(facts), QStringList({"title=First", "duration=60"}));
    }

    void sameItemGoesOnAndAnotherBeginsAnew()
    {
        KelvoItemFacts facts;
        facts.announce(item("a"), true);
        QVERIFY(facts.take("title", {"One"}));
        facts.announce(item("a"), true);
        QCOMPARE(told(facts), QStringList("title=One"));
        QVERIFY(!facts.take("title", {"One"}));
        facts.announce(item("b"), true);
        QCOMPARE(told(facts), QStringList());
        QVERIFY(facts.take("title", {"One"}));
        facts.announce(item("a"), true);
        QVERIFY(facts.take("title", {"One"}));
    }

    void whatBelongsToNoPlaylistAlwaysBeginsAnew()
    {
        KelvoItemFacts facts;
        facts.announce(item(""), false);
        QVERIFY(facts.take("title", {"One"}));
        facts.announce(item(""), false);
        QVERIFY(facts.take("title", {"One"}));
    }

    void eachEntryOfAListIsAnotherMedium()
    {
        KelvoItemFacts facts;
        const auto start = [&facts] {
            facts.announce(item("list", "file:///list.m3u"), true);
            facts.announce(item("list", "file:///1"), true);
        };
        start();
        QVERIFY(facts.take("artist", {"Same"}));
        start(); // stopped and played again
        QVERIFY(!facts.take("artist", {"Same"}));
        facts.announce(item("list", "file:///2"), true);
        QCOMPARE(told(facts), QStringList()); // nothing of this one yet
        QVERIFY(facts.take("artist", {"Same"}));
        start();
        QVERIFY(facts.take("artist", {"Same"}));
    }

    void nothingCountsAsToldToSomebodyNew()
    {
        KelvoItemFacts facts;
        facts.announce(item("a"), true);
        QVERIFY(facts.take("title", {"One"}));
        facts.clear();
        QVERIFY(facts.take("title", {"One"}));
    }
};

KELVO_TEST(ItemFactsTest)
#include "ItemFactsTest.moc"
