// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "KelvoTestCase.h"
#include "MinimalObjects.h"
#include "TestGroup.h"

#include <QSet>
#include <QTest>
#include <QUuid>

namespace {
/// Has items and nothing else: what a back end's own playlist starts with.
class ListOfUuids : public MinimalPlaylist
{
public:
    explicit ListOfUuids(const QStringList &uuids)
        : MinimalPlaylist("id", "name")
        , m_uuids(uuids)
    {
    }
    int count() const override { return int(m_uuids.size()); }
    KelvoMediaInfo mediaInfoAt(uint index) const override
    {
        return KelvoMediaInfo(m_uuids.value(int(index)), QUrl("file:///x"));
    }

private:
    QStringList m_uuids;
};
} // namespace

class PlaylistTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void newIdsAreUuidsAndDiffer()
    {
        QSet<QString> ids;
        for (int i = 0; i < 1000; ++i) {
            const QString id = KelvoPlaylist::getNewPlaylistId();
            QCOMPARE(id.size(), 36);
            QVERIFY(!QUuid(id).isNull());
            QCOMPARE(QUuid(id).variant(), QUuid::DCE);
            ids.insert(id);
        }
        QCOMPARE(ids.size(), 1000);
    }

    // The console and the framework exchange plain numbers and texts.
    void numbersAndTextsAreFixed()
    {
        QCOMPARE(int(KelvoPlaylist::RepeatAll), 0);
        QCOMPARE(int(KelvoPlaylist::RepeatOff), 1);
        QCOMPARE(int(KelvoPlaylist::RepeatOne), 2);
        QCOMPARE(int(KelvoPlaylist::TitleAscending), 0);
        QCOMPARE(int(KelvoPlaylist::TitleDescending), 1);
        QCOMPARE(int(KelvoPlaylist::DurationAscending), 4);
        QCOMPARE(int(KelvoPlaylist::DurationDescending), 5);
        QCOMPARE(QString(KelvoPlaylist::SortKeyTitle), "title");
        QCOMPARE(QString(KelvoPlaylist::SortKeyDuration), "duration");
        QCOMPARE(int(KelvoPlaylist::TitleColumn), 1);
    }

    void findsItemsByTheirUuid()
    {
        const ListOfUuids list({"u1", "u2", "", "u3"});
        QCOMPARE(list.indexOf("u1"), 0);
        QCOMPARE(list.indexOf("u3"), 3);
        QCOMPARE(list.indexOf("u4"), -1);
        QCOMPARE(list.indexOf(QString()), -1);
        QCOMPARE(ListOfUuids({}).indexOf("u1"), -1);
    }
};

KELVO_TEST(PlaylistTest)
#include "PlaylistTest.moc"
