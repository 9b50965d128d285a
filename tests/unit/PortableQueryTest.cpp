// SPDX-License-Identifier: MIT
#include "remote/PortableQuery.h"
#include "KelvoTestCase.h"
#include "KelvoTrackerModel.h"
#include "TestGroup.h"
#include "index/IndexSettings.h"
#include "query/QueryCatalog.h"
#include "remote/RemoteIds.h"
#include "remote/RemoteLibraries.h"

#include <QMetaEnum>
#include <QTest>

/// The built-in queries for servers that know nothing of the store's library, and what those are told apart by.
class PortableQueryTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { qunsetenv("KELVO_TRACKER"); }

    void everyBuiltInQuery_data()
    {
        QTest::addColumn<int>("type");
        const auto types = QMetaEnum::fromType<KelvoTrackerModel::QueryType>();
        for (int i = 0; i < types.keyCount(); ++i)
            QTest::newRow(types.key(i)) << types.value(i);
    }

    void everyBuiltInQuery()
    {
        QFETCH(int, type);
        const CatalogQuery entry = CatalogQuery::find(type);
        const PortableQuery query(entry.text, "urn:x y");
        const QByteArray text = query.page(0, 0);
        QVERIFY2(!text.contains("tracker:") && !text.contains('~'), text.constData());
        QCOMPARE(text.contains("<urn:x%20y>"), entry.hasSubject);
        // One column for each of the catalogue, in its order; numbers of resources where it has ids.
        QCOMPARE(query.columns().size(), entry.columns.size());
        for (size_t i = 0; i < entry.columns.size(); ++i)
            QCOMPARE(query.columns()[i].isResource, QByteArray(entry.columns[i].key).endsWith("Id"));
    }

    void textsAreSharedByAllResults()
    {
        const CatalogQuery first = CatalogQuery::find(KelvoTrackerModel::SongsOfAlbum);
        const CatalogQuery second = CatalogQuery::find(KelvoTrackerModel::SongsOfAlbum);
        QVERIFY(!first.text.isEmpty() && !first.shortcut.isEmpty());
        QVERIFY(first.text.isSharedWith(second.text));
        QVERIFY(first.shortcut.isSharedWith(second.shortcut));
    }

    void groups()
    {
        const PortableQuery query(CatalogQuery::read("all-albums"));
        QVERIFY(query.page(0, 0).contains("GROUP BY ?album ?title ?artist ?artistName\n"));
        QVERIFY(
            query.page(0, 0).contains("SELECT ?album ?title ?artist ?artistName (COUNT(?song) AS ?tracks)"));
    }

    void pages()
    {
        const PortableQuery all(CatalogQuery::read("all-songs"));
        QCOMPARE(all.limit(), 0);
        QVERIFY(all.page(0, 0).endsWith("ORDER BY ?title"));
        QVERIFY(all.page(0, 5).endsWith("ORDER BY ?title\nLIMIT 5"));
        QVERIFY(all.page(10, 5).endsWith("ORDER BY ?title\nLIMIT 5\nOFFSET 10"));
        const PortableQuery some(CatalogQuery::read("most-played-songs"));
        QCOMPARE(some.limit(), 500);
        QVERIFY(some.page(0, 0).endsWith("?title\nLIMIT 500"));
        QVERIFY(some.page(0, 600).endsWith("?title\nLIMIT 500"));
        QVERIFY(some.page(450, 100).endsWith("?title\nLIMIT 50\nOFFSET 450"));
    }

    void idsStayAndAreApart()
    {
        const QUrl here("http://a/sparql");
        const QUrl there("http://b/sparql");
        const int id = RemoteIds::idOf(here, "urn:x");
        QVERIFY(RemoteIds::isRemote(id));
        QVERIFY(!RemoteIds::isRemote(100'000));
        QCOMPARE(RemoteIds::idOf(here, "urn:x"), id);
        QVERIFY(RemoteIds::idOf(there, "urn:x") != id);
        QVERIFY(RemoteIds::idOf(here, "urn:y") != id);
        QCOMPARE(RemoteIds::find(id)->library, here);
        QCOMPARE(RemoteIds::find(id)->iri, QByteArray("urn:x"));
        for (const int other : {0, -1, 17, RemoteIds::first - 1, std::numeric_limits<int>::max(),
                 std::numeric_limits<int>::min()})
            QVERIFY(!RemoteIds::find(other));
    }

    void theDesktopsIndexIsAWordAmongThem()
    {
        const std::pair<const char *, bool> values[] = {{"bus", true}, {"http://a/s  bus", true},
            {"bus\thttp://a/s", true}, {"http://a/bus", false}, {"", false}};
        for (const auto &[value, isMeant] : values) {
            qputenv("KELVO_TRACKER", value);
            QCOMPARE(IndexSettings::fromEnvironment().useDesktopIndex, isMeant);
        }
    }

    void librariesOfTheEnvironment_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("endpoints");
        QTest::addColumn<QString>("error");
        QTest::newRow("none") << ""
                              << ""
                              << "";
        QTest::newRow("the desktop's index") << "bus"
                                             << ""
                                             << "";
        QTest::newRow("several") << " http://a/sparql  bus\thttps://b:8890/x?y=z "
                                 << "http://a/sparql https://b:8890/x?y=z"
                                 << "";
        QTest::newRow("twice") << "http://a/sparql http://a/sparql"
                               << "http://a/sparql"
                               << "";
        QTest::newRow("another scheme") << "ftp://a/"
                                        << ""
                                        << "KELVO_TRACKER: \"ftp://a/\" is no http address of a library";
        QTest::newRow("no address") << "kitchen http://a/s"
                                    << "http://a/s"
                                    << "KELVO_TRACKER: \"kitchen\" is no http address of a library";
        QTest::newRow("a password")
            << "http://me:secret@a/s"
            << ""
            << "KELVO_TRACKER: names and passwords belong into ~/.netrc, not into the "
               "address of a library";
    }

    void librariesOfTheEnvironment()
    {
        QFETCH(QString, value);
        QFETCH(QString, endpoints);
        QFETCH(QString, error);
        qputenv("KELVO_TRACKER", value.toUtf8());
        const RemoteLibraries libraries = RemoteLibraries::fromEnvironment();
        QCOMPARE(QUrl::toStringList(libraries.endpoints).join(' '), endpoints);
        QCOMPARE(libraries.errors.join(' '), error);
    }
};

KELVO_TEST(PortableQueryTest)
#include "PortableQueryTest.moc"
