// SPDX-License-Identifier: MIT
#include "card/Card.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
Result result(const QString &id, Verdict verdict, const QList<Ability> &needs = {})
{
    Result made;
    made.id = id;
    made.sentence = id;
    made.verdict = verdict;
    made.needs = needs;
    return made;
}
} // namespace

class CardTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void countsByGroup();
    void emptyClaimsAreTold();
    void oneDeedIsEnoughForAClaim();
    void whatCannotBeRefusedIsNoClaim();
    void whatIsNeverAllowedIsNoEmptyClaim();
    void refusalsAreNoFaults();
};

void CardTest::countsByGroup()
{
    const Card card({},
        {result("state.a", Verdict::Holds), result("seek.a", Verdict::Holds),
            result("state.b", Verdict::DoesNotHold)});
    QCOMPARE(card.groups(), (QStringList{"state", "seek"}));
    QCOMPARE(card.count(Verdict::Holds), 2);
    QCOMPARE(card.count(Verdict::Holds, "state"), 1);
    QCOMPARE(card.count(Verdict::DoesNotHold, "state"), 1);
    QCOMPARE(card.count(Verdict::DoesNotHold, "seek"), 0);
    QCOMPARE(card.resultsOf("state").size(), 2);
    QVERIFY(!card.isClean());
}

void CardTest::emptyClaimsAreTold()
{
    const Card card({},
        {result("seek.a", Verdict::DoesNotHold, {Ability::Seek}),
            result("seek.b", Verdict::DoesNotHold, {Ability::Seek, Ability::Pause}),
            result("state.a", Verdict::Holds, {Ability::Pause}), result("state.b", Verdict::DoesNotHold)});
    QCOMPARE(card.results().at(0).verdict, Verdict::Overclaimed);
    QCOMPARE(card.results().at(1).verdict, Verdict::Overclaimed);
    QCOMPARE(card.results().at(3).verdict, Verdict::DoesNotHold);
    QVERIFY(!card.isClean());
}

void CardTest::oneDeedIsEnoughForAClaim()
{
    const Card card({},
        {result("seek.a", Verdict::DoesNotHold, {Ability::Seek}),
            result("seek.b", Verdict::Holds, {Ability::Seek})});
    QCOMPARE(card.results().at(0).verdict, Verdict::DoesNotHold);
}

void CardTest::whatCannotBeRefusedIsNoClaim()
{
    const Card card({}, {result("playlist.a", Verdict::DoesNotHold, {Ability::Metadata})});
    QCOMPARE(card.results().at(0).verdict, Verdict::DoesNotHold);
}

void CardTest::whatIsNeverAllowedIsNoEmptyClaim()
{
    Result violating = result("seek.a", Verdict::DoesNotHold, {Ability::Seek});
    violating.evidence.violations.append("reported inside a command");
    QCOMPARE(Card({}, {violating}).results().at(0).verdict, Verdict::DoesNotHold);
}

void CardTest::refusalsAreNoFaults()
{
    const Card card({},
        {result("seek.a", Verdict::Refused, {Ability::Seek}), result("state.a", Verdict::NotTried),
            result("state.b", Verdict::Holds)});
    QVERIFY(card.isClean());
    QVERIFY(Card({}, {}).isClean());
}

KELVO_TEST(CardTest)
#include "CardTest.moc"
