// SPDX-License-Identifier: MIT
// The item in play as what is played one after the other.
#include "ItemEntries.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
const QUrl listUrl("http://media/list.pls");

KelvoMediaInfo listItem()
{
    KelvoMediaInfo item(QStringLiteral("uuid"), listUrl);
    item.setMimeType(QStringLiteral("audio/x-scpls"));
    return item;
}

QList<QUrl> urls(int count)
{
    QList<QUrl> urls;
    for (int i = 0; i < count; ++i)
        urls.append(QUrl(QStringLiteral("http://media/%1").arg(i)));
    return urls;
}

KelvoError failure(const char *words)
{
    return {KelvoError::CorruptMedia, QString::fromLatin1(words)};
}

class ItemEntriesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void contentOfAnEntry_data();
    void contentOfAnEntry();
    void goesFromEntryToEntry_data();
    void goesFromEntryToEntry();
    void isLookedIntoOnce();
    void holdsTheFailureItIsLookedIntoFor();
    void tellsThosePassedOverInOnePiece();
    void beginsAnew();
};

void ItemEntriesTest::contentOfAnEntry_data()
{
    QTest::addColumn<QList<QUrl>>("entries");
    QTest::addColumn<int>("entry");
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QString>("mimeType");
    QTest::newRow("medium") << QList<QUrl>() << 0 << listUrl << "audio/x-scpls";
    QTest::newRow("list of one") << urls(1) << 0 << urls(1).at(0) << "";
    QTest::newRow("last of a list") << urls(3) << 2 << urls(3).at(2) << "";
}

void ItemEntriesTest::contentOfAnEntry()
{
    QFETCH(QList<QUrl>, entries);
    QFETCH(int, entry);
    QFETCH(QUrl, url);
    QFETCH(QString, mimeType);
    ItemEntries item;
    item.begin(listItem(), entries);
    item.goTo(entry);
    QCOMPARE(item.isList(), !entries.isEmpty());
    QCOMPARE(item.uri(), url);
    QCOMPARE(item.content().url, url);
    QCOMPARE(item.content().uuid, QStringLiteral("uuid"));
    QCOMPARE(item.content().mimeType, mimeType);
    QCOMPARE(item.item().url(), listUrl);
}

void ItemEntriesTest::goesFromEntryToEntry_data()
{
    QTest::addColumn<int>("count"); // 0: a medium
    QTest::addColumn<int>("entry");
    QTest::addColumn<bool>("hasNext");
    QTest::newRow("medium") << 0 << 0 << false;
    QTest::newRow("list of one") << 1 << 0 << false;
    QTest::newRow("first of two") << 2 << 0 << true;
    QTest::newRow("last of two") << 2 << 1 << false;
}

void ItemEntriesTest::goesFromEntryToEntry()
{
    QFETCH(int, count);
    QFETCH(int, entry);
    QFETCH(bool, hasNext);
    ItemEntries item;
    item.begin(listItem());
    if (count > 0)
        item.becomeList(urls(count));
    item.goTo(entry);
    QCOMPARE(item.entry(), entry);
    QCOMPARE(item.hasNext(), hasNext);
}

void ItemEntriesTest::isLookedIntoOnce()
{
    ItemEntries item;
    item.begin(listItem());
    QVERIFY(item.mayBeList());
    item.lookInto();
    QVERIFY(!item.mayBeList());
    item.begin(listItem());
    QVERIFY(item.mayBeList());
    // Its entries are media.
    item.becomeList(urls(2));
    QVERIFY(!item.mayBeList());
}

void ItemEntriesTest::holdsTheFailureItIsLookedIntoFor()
{
    ItemEntries item;
    item.begin(listItem());
    item.lookInto(failure("no decoder"));
    QCOMPARE(item.takeHeldFailure().message(), QStringLiteral("no decoder"));
    QCOMPARE(item.takeHeldFailure().code(), KelvoError::NoError);
    item.lookInto();
    QCOMPARE(item.takeHeldFailure().code(), KelvoError::NoError);
}

void ItemEntriesTest::tellsThosePassedOverInOnePiece()
{
    ItemEntries item;
    item.begin(listItem(), urls(4));
    QVERIFY(!item.takePassedOver());
    QCOMPARE(item.passOver(failure("first words")), 0.25F);
    item.goTo(1);
    QCOMPARE(item.passOver(failure("other words")), 0.5F);
    const std::optional<KelvoError> told = item.takePassedOver();
    QVERIFY(told);
    QCOMPARE(told->code(), KelvoError::CorruptMedia);
    QCOMPARE(
        told->message(), QStringLiteral("2 of 4 entries of http://media/list.pls do not play: first words"));
    QVERIFY(!item.takePassedOver());
}

void ItemEntriesTest::beginsAnew()
{
    ItemEntries item;
    item.begin(listItem(), urls(3));
    item.goTo(2);
    item.passOver(failure("words"));
    item.lookInto(failure("words"));
    item.notePlaying();
    QVERIFY(item.hasPlayed());
    item.begin(listItem());
    QCOMPARE(item.entry(), 0);
    QVERIFY(!item.isList() && !item.hasNext() && !item.hasPlayed() && item.mayBeList());
    QVERIFY(!item.takePassedOver());
    QCOMPARE(item.takeHeldFailure().code(), KelvoError::NoError);
}
} // namespace

KELVO_TEST(ItemEntriesTest)
#include "ItemEntriesTest.moc"
