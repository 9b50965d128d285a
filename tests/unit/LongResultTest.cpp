// SPDX-License-Identifier: MIT
#include "RowCopier.h"
#include "SourceControllerCase.h"
#include "TestGroup.h"

/// The source controller with a result that is too long to be appended to a playlist at once.
class LongResultTest : public SourceControllerCase
{
    Q_OBJECT

    static constexpr int LongCount = RowCopier::FirstRows + 500;

private Q_SLOTS:
    void initTestCase()
    {
        SourceControllerCase::initTestCase();
        std::vector<MediaItem> items;
        for (int i = SongCount; i < LongCount; ++i)
            items.push_back(song(i));
        QVERIFY(writeSongs(items));
    }

    // Extending deletes the result that is still being copied.
    void extendingFinishesTheAppendingFirst()
    {
        m_controller->setNewQueryProperties(0, 0);
        QTRY_VERIFY(find<QToolButton>("m_query_executeButton")->isEnabled());
        execute(AllSongs);
        QCOMPARE(shown()->rowCount(), LongCount);
        KelvoPlaylist *playlist = makePlaylist();
        m_controller->addQueryToPlaylist();
        QCOMPARE(playlist->count(), int(RowCopier::FirstRows)); // the rest would come from the event loop
        select(0);
        LogRecorder log;
        m_controller->extendQuery();
        QCOMPARE(playlist->count(), LongCount);
        QCOMPARE(log.warnings().filter("not appended"), QStringList());
        const QAbstractItemModel *items = playlist->itemModel();
        for (int row = 0; row < LongCount; ++row)
            QCOMPARE(items->index(row, 1).data().toString(), song(row).title);
        m_models.append(m_controller->queryModel());
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
    }

    // The last function: the store has other songs then.
    void aResultThatIsQueriedAnewIsShownAnew()
    {
        m_controller->setNewQueryProperties(200, 2000);
        QTRY_VERIFY(find<QToolButton>("m_query_executeButton")->isEnabled());
        choose(AllSongs);
        click("m_query_executeButton");
        m_models.append(m_controller->queryModel());
        QTRY_COMPARE(caption(), QStringLiteral("Fetch\nrest"));
        QVERIFY(replaceStore());
        QVERIFY(writeSongs({song(1), song(2), song(3)}));
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("200 results"));
        QCOMPARE(caption(), QStringLiteral("Fetch\nrest"));
        click("m_query_executeButton");
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
        QTRY_VERIFY(!find<QLabel>("m_query_errorLabel")->text().isEmpty());
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("3 results"));
        QCOMPARE(shown()->index(0, 1).data().toString(), song(1).title);
        // A query of its own, and nothing more of the earlier one.
        click("m_query_executeButton");
        m_models.append(m_controller->queryModel());
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("3 results"));
    }
};

KELVO_WIDGET_TEST(LongResultTest)
#include "LongResultTest.moc"
