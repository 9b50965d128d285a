// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "PlaylistFixture.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

namespace {
using Changes = QList<ContentsChange>;
}

/// Which columns the items are read from, and which itemModel() shows.
class PlaylistColumnsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void readsColumnsByTheirHeaders_data()
    {
        QTest::addColumn<QStringList>("headers");
        const QString rest = "mimeType";
        QTest::newRow("plain") << QStringList({"duration", "url", "album", "title", "id", "artist", rest});
        QTest::newRow("other case") << QStringList(
            {"DURATION", "Url", "Album", "TITLE", "Id", "Artist", "MIMETYPE"});
        QTest::newRow("uri") << QStringList({"duration", "uri", "album", "title", "id", "artist", rest});
        QTest::newRow("blanks") << QStringList({" duration", "uri ", "album", "title", "id", "artist", rest});
        QTest::newRow("query result")
            << QStringList({"songLength", "songUri", "albumName", "songTitle", "songId", "artistName", rest});
    }
    void readsColumnsByTheirHeaders()
    {
        QFETCH(QStringList, headers);
        QStandardItemModel model;
        model.setHorizontalHeaderLabels(headers);
        model.appendRow(
            texts({"61", "http://host/x", "The Album", "The Title", "17", "The Artist", "audio/ogg"}));
        PlaylistFixture list(&model);
        const KelvoMediaInfo info = list->mediaInfoAt(0);
        QCOMPARE(info.title(), "The Title");
        QCOMPARE(info.url(), QUrl("http://host/x"));
        QCOMPARE(info.duration(), 61);
        QCOMPARE(info.artist(), "The Artist");
        QCOMPARE(info.album(), "The Album");
        QCOMPARE(info.mimeType(), "audio/ogg");
        QCOMPARE(list.cell(0, KelvoPlaylist::IdColumn), "17");
        QCOMPARE(list.cell(0, KelvoPlaylist::TitleColumn), "The Title");
        QCOMPARE(list.cell(0, KelvoPlaylist::UriColumn), "http://host/x");
        QCOMPARE(list.cell(0, KelvoPlaylist::DurationColumn), "1:01");
    }

    void readsColumnsByPositionWithoutHeaders()
    {
        QStandardItemModel model;
        model.appendRow(texts({"17", "The Title", "http://host/x", "61", "more"}));
        PlaylistFixture list(&model);
        QCOMPARE(list->mediaInfoAt(0).title(), "The Title");
        QCOMPARE(list->mediaInfoAt(0).url(), QUrl("http://host/x"));
        QCOMPARE(list->mediaInfoAt(0).duration(), 61);
        QCOMPARE(list->mediaInfoAt(0).artist(), QString());
        QCOMPARE(list.cell(0, 0), "17");
        QCOMPARE(list.cell(0, 4), "more");
    }

    // A video query names its columns by the expressions it selects.
    void readsColumnsByPositionUnderOtherHeaders()
    {
        QStandardItemModel model;
        model.setHorizontalHeaderLabels({"video", "fileName", "nie:url(?video)", "length", "fileSize"});
        model.appendRow(texts({"urn:1", "clip.ogv", "file:///clip.ogv", "12", "1000"}));
        PlaylistFixture list(&model);
        QCOMPARE(list->mediaInfoAt(0).title(), "clip.ogv");
        QCOMPARE(list->mediaInfoAt(0).url(), QUrl("file:///clip.ogv"));
        QCOMPARE(list->mediaInfoAt(0).duration(), 12);
    }

    // A year in the usual place of the duration is none.
    void doesNotReadOtherColumnsOfAModelWithHeaders()
    {
        QStandardItemModel model;
        model.setHorizontalHeaderLabels({"title", "url", "genre", "year"});
        model.appendRow(texts({"The Title", "http://host/x", "Rock", "1999"}));
        PlaylistFixture list(&model);
        QCOMPARE(list->mediaInfoAt(0).duration(), -1);
        QCOMPARE(list.cell(0, 0), "");
        QCOMPARE(list.headers(), QStringList({"id", "title", "url", "duration", "genre", "year"}));
        QCOMPARE(list.cell(0, 5), "1999");
    }

    void modelsWithFewColumnsWork_data()
    {
        QTest::addColumn<int>("columns");
        for (int columns = 0; columns <= 3; ++columns)
            QTest::addRow("%d", columns) << columns;
    }
    void modelsWithFewColumnsWork()
    {
        QFETCH(int, columns);
        QStandardItemModel model(2, columns);
        PlaylistFixture list(&model);
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->itemModel()->columnCount(), 4);
        QCOMPARE(list->mediaInfoAt(0).title(), "");
        QVERIFY(list->mediaInfoAt(0).url().isEmpty());
        QVERIFY(!list->mediaInfoAt(0).isNull());
        QCOMPARE(list->mediaInfoAt(1).duration(), -1);
        list->sort("title", 0);
        list->sort("duration", 4);
        list->removeItem(0);
        model.sort(0);
        QCOMPARE(list->count(), 1);
    }

    // Rows copied from a result have all numbers as texts; the model of a new playlist has no columns at
    // first.
    void columnsComeWithTheFirstRow()
    {
        QStandardItemModel model;
        PlaylistFixture list(&model);
        QSignalSpy columns(list->itemModel(), &QAbstractItemModel::columnsInserted);
        model.appendRow(texts({"17", "The Title", "http://host/x", "61", "a", "b"}));
        QCOMPARE(list.takeChanges(), Changes({{0, 0, 1}}));
        QCOMPARE(list->mediaInfoAt(0).duration(), 61);
        QCOMPARE(list->itemModel()->columnCount(), 6);
        QCOMPARE(columns.count(), 1);
        model.appendRow(texts({"18", "Short"}));
        QCOMPARE(list.titles(), QStringList({"The Title", "Short"}));
    }

    void headersMayComeLate()
    {
        QStandardItemModel model;
        model.appendRow(texts({"http://host/x", "61", "The Title", "x"}));
        PlaylistFixture list(&model);
        list.markAll();
        const QStringList uuids = list.uuids();
        QCOMPARE(list->mediaInfoAt(0).title(), "61");
        model.setHorizontalHeaderLabels({"url", "duration", "title", "artist"});
        QCOMPARE(list->mediaInfoAt(0).title(), "The Title");
        QCOMPARE(list->mediaInfoAt(0).url(), QUrl("http://host/x"));
        QCOMPARE(list->mediaInfoAt(0).duration(), 61);
        QCOMPARE(list->mediaInfoAt(0).artist(), "x");
        QVERIFY(!list.takeChanges().isEmpty());
        QCOMPARE(list.uuids(), uuids);
        list.checkMarks();
    }

    void otherHeadersChangeNoItem()
    {
        const auto model = songs({"a"});
        PlaylistFixture list(model.get());
        QSignalSpy changed(list->itemModel(), &QAbstractItemModel::headerDataChanged);
        model->setHorizontalHeaderItem(5, new QStandardItem("decade"));
        model->setVerticalHeaderLabels({"first"});
        QCOMPARE(changed.count(), 1);
        QCOMPARE(list.headers().last(), "decade");
        QCOMPARE(list.takeChanges(), Changes());
    }

    void columnsComeAndGo()
    {
        const auto model = songs({"a:1", "b:2"});
        PlaylistFixture list(model.get());
        list.markAll();
        model->insertColumn(0);
        QCOMPARE(list.titles(), QStringList({"a", "b"}));
        QCOMPARE(list->itemModel()->columnCount(), 7);
        model->removeColumns(0, 3); // The new one, id and title.
        QCOMPARE(list.titles(), QStringList({"a.ogg", "b.ogg"}));
        QCOMPARE(list->itemModel()->columnCount(), 6);
        QCOMPARE(list.headers(), QStringList({"id", "title", "url", "duration", "artist", "year"}));
        QCOMPARE(list.takeChanges(), Changes({{0, 2, 2}}));
        model->removeColumns(0, model->columnCount());
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->itemModel()->columnCount(), 4);
        list.checkMarks();
    }

    void showsTheOtherColumnsAfterItsOwn()
    {
        QStandardItemModel model;
        model.setHorizontalHeaderLabels({"year", "title", "album", "url", "genre", "artist"});
        model.appendRow(texts({"1999", "The Title", "The Album", "file:///x", "Rock", "The Artist"}));
        model.item(0, 4)->setData("raw", Qt::UserRole);
        PlaylistFixture list(&model);
        QCOMPARE(list.headers(),
            QStringList({"id", "title", "url", "duration", "artist", "album", "year", "genre"}));
        QCOMPARE(list.cell(0, 4), "The Artist");
        QCOMPARE(list.cell(0, 5), "The Album");
        QCOMPARE(list.cell(0, 6), "1999");
        QCOMPARE(list.cell(0, 7), "Rock");
        QCOMPARE(list.cell(0, 7, Qt::UserRole), "raw");
        QCOMPARE(list->itemModel()->headerData(0, Qt::Vertical), QVariant(1));
        QCOMPARE(list->itemModel()->headerData(99, Qt::Horizontal), QVariant());
        QCOMPARE(list->itemModel()->headerData(-1, Qt::Horizontal), QVariant());
    }

    void aPlaylistsItemModelCanFeedAnother()
    {
        const auto model = songs({"b:100", "a:3700"});
        PlaylistFixture first(model.get());
        first->sort("title", 0);
        PlaylistFixture second(first->itemModel());
        QCOMPARE(second.titles(), QStringList({"a", "b"}));
        QCOMPARE(second->mediaInfoAt(0).duration(), 3700);
        first->sort("title", 1);
        QCOMPARE(second.titles(), QStringList({"b", "a"}));
        first->removeItem(0);
        QCOMPARE(second.titles(), QStringList({"a"}));
    }

    void takesTheFileNameForAMissingTitle_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("shown");
        QTest::newRow("title") << "The Title"
                               << "file:///music/song.ogg"
                               << "The Title";
        QTest::newRow("file") << ""
                              << "file:///music/song%20one.ogg"
                              << "song one.ogg";
        QTest::newRow("blank") << "  "
                               << "http://host/dir/clip.ogv?x=1"
                               << "clip.ogv";
        QTest::newRow("path") << ""
                              << "/music/100% song.ogg"
                              << "100% song.ogg";
        QTest::newRow("no file name") << ""
                                      << "http://host/"
                                      << "http://host/";
        QTest::newRow("nothing") << ""
                                 << ""
                                 << "";
    }
    void takesTheFileNameForAMissingTitle()
    {
        QFETCH(QString, title);
        QFETCH(QString, url);
        QFETCH(QString, shown);
        QStandardItemModel model;
        model.appendRow(texts({"1", title, url, ""}));
        PlaylistFixture list(&model);
        QCOMPARE(list->mediaInfoAt(0).title(), shown);
        QCOMPARE(list.cell(0, KelvoPlaylist::TitleColumn), shown);
    }

    void readsUrls_data()
    {
        QTest::addColumn<QVariant>("cell");
        QTest::addColumn<QUrl>("url");
        QTest::newRow("text") << QVariant("http://host/a%20b") << QUrl("http://host/a%20b");
        QTest::newRow("blank") << QVariant("file:///a b.ogg") << QUrl("file:///a%20b.ogg");
        QTest::newRow("path") << QVariant("/music/50%25 #1.ogg")
                              << QUrl::fromLocalFile("/music/50%25 #1.ogg");
        QTest::newRow("url") << QVariant(QUrl("http://host/a%20b?q=%26")) << QUrl("http://host/a%20b?q=%26");
        QTest::newRow("none") << QVariant() << QUrl();
    }
    void readsUrls()
    {
        QFETCH(QVariant, cell);
        QFETCH(QUrl, url);
        QStandardItemModel model(1, 4);
        model.setData(model.index(0, 2), cell);
        PlaylistFixture list(&model);
        QCOMPARE(list->mediaInfoAt(0).url(), url);
    }

    void readsAndShowsDurations_data()
    {
        QTest::addColumn<QVariant>("cell");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("shown");
        QTest::newRow("int") << QVariant(215) << 215 << "3:35";
        QTest::newRow("text") << QVariant("215") << 215 << "3:35";
        QTest::newRow("blanks") << QVariant(" 215 ") << 215 << "3:35";
        QTest::newRow("double") << QVariant(59.9) << 59 << "0:59";
        QTest::newRow("text with fraction") << QVariant("61.5") << 61 << "1:01";
        QTest::newRow("an hour") << QVariant(3600) << 3600 << "1:00:00";
        QTest::newRow("shown text") << QVariant("1:02:03") << 3723 << "1:02:03";
        QTest::newRow("shown minutes") << QVariant("3:07") << 187 << "3:07";
        QTest::newRow("zero") << QVariant(0) << 0 << "0:00";
        QTest::newRow("long") << QVariant(qint64(2147483647)) << 2147483647 << "596523:14:07";
        QTest::newRow("too long") << QVariant(qint64(2147483648)) << -1 << "";
        QTest::newRow("too long text") << QVariant("99999999999999999999") << -1 << "";
        QTest::newRow("too long shown text") << QVariant("4294967295:00:00") << -1 << "";
        QTest::newRow("negative") << QVariant(-7) << -1 << "";
        QTest::newRow("not a number") << QVariant("nan") << -1 << "";
        QTest::newRow("infinite") << QVariant("inf") << -1 << "";
        QTest::newRow("words") << QVariant("long") << -1 << "";
        QTest::newRow("colons") << QVariant("::") << -1 << "";
        QTest::newRow("too many parts") << QVariant("1:2:3:4") << -1 << "";
        QTest::newRow("empty") << QVariant("") << -1 << "";
        QTest::newRow("none") << QVariant() << -1 << "";
    }
    void readsAndShowsDurations()
    {
        QFETCH(QVariant, cell);
        QFETCH(int, seconds);
        QFETCH(QString, shown);
        QStandardItemModel model(1, 4);
        model.setData(model.index(0, 3), cell);
        PlaylistFixture list(&model);
        const QModelIndex index = list->itemModel()->index(0, KelvoPlaylist::DurationColumn);
        QCOMPARE(list->mediaInfoAt(0).duration(), seconds);
        QCOMPARE(index.data(), QVariant(shown));
        QCOMPARE(index.data(Qt::EditRole), QVariant(seconds));
        QCOMPARE(index.data(Qt::UserRole), QVariant(seconds));
        QCOMPARE(index.data(Qt::DecorationRole), QVariant());
    }
};

KELVO_TEST(PlaylistColumnsTest)
#include "PlaylistColumnsTest.moc"
