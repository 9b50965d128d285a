// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "QSparqlQuery.h"
#include "TestGroup.h"

#include <QTest>

class SparqlQueryTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void namesColumnsByTheSelectList_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("names");
        const auto row = [](const char *title, const char *text, const QStringList &names) {
            QTest::newRow(title) << text << names;
        };
        row("video query",
            "SELECT ?video nfo:fileName(?video) nie:url(?video) ?length nfo:fileSize(?video)WHERE {    "
            "?video a "
            "nmm:Video .    OPTIONAL    {      ?video nfo:duration ?length .    } } ORDER BY "
            "nfo:fileName(?video)",
            {"video", "fileName", "url", "length", "fileSize"});
        row("aliases", "SELECT (COUNT(?a) AS ?count) (nie:url(?x) as $url) { ?a ?b ?x }", {"count", "url"});
        row("nested call", "select nie:title(nmm:musicAlbum(?s)) ?s where { ?s a nmm:MusicPiece }",
            {"title", "s"});
        row("distinct", "SELECT DISTINCT ?a ?b FROM <urn:g> WHERE { ?a a ?b }", {"a", "b"});
        row("other expression", "SELECT COUNT(?a) { ?a a ?b }", {"COUNT(?a)"});
        row("prologue", "PREFIX select: <http://x/SELECT#> # SELECT ?no\nSELECT ?yes { ?yes a ?b }", {"yes"});
        row("string with brackets", "SELECT (CONCAT(?a, \")} WHERE \\\"\") AS ?b) ?c { ?a ?b ?c }",
            {"b", "c"});
        row("sub-select", "SELECT ?a { { SELECT ?b { ?b ?c ?a } } }", {"a"});
        row("all", "SELECT * { ?a ?b ?c }", {});
        row("no select", "ASK { ?a ?b ?c }", {});
        row("unfinished", "SELECT nie:url(?a", {"url"});
        // As long as the memory of the list, so that a look behind its end is one into foreign memory.
        row("bracket that stays open", "SELECT (?a", {"(?a"});
        row("call that stays open", "SELECT COUNT(?a ?b", {"COUNT(?a ?b"});
        row("empty", "", {});
    }

    void namesColumnsByTheSelectList()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, names);
        QCOMPARE(QSparqlQuery(text, QSparqlQuery::SelectStatement).columnNames(), names);
    }

    void keepsItsText()
    {
        const QSparqlQuery query("SELECT ?a  { ?a ?b ?c }", QSparqlQuery::SelectStatement);
        QCOMPARE(query.query(), "SELECT ?a  { ?a ?b ?c }");
        QCOMPARE(query.type(), QSparqlQuery::SelectStatement);
        QCOMPARE(QSparqlQuery().query(), QString());
    }
};

KELVO_TEST(SparqlQueryTest)
#include "SparqlQueryTest.moc"
