// SPDX-License-Identifier: MIT
#include "RunComparison.h"
#include "CommonSequence.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <ctime>

namespace {
ComparedRun runOf(const QString &events)
{
    ComparedRun run;
    HandWritten::give(HandWritten::events(events), &run);
    return run;
}

QStringList differences(const QString &first, const QString &second)
{
    const RunComparison comparison(runOf(first), runOf(second));
    QStringList sentences;
    for (const RunComparison::Difference &difference : comparison.differences())
        sentences.append(difference.sentence);
    return sentences;
}

const QString start = "0 r appears renderer [\"Speaker\"]\n1 r command playUri [\"http://h:4711/a\"]\n";
const QString played
    = start + "1.1 r report stateChanged [\"Transitioning\"]\n1.5 r report stateChanged [\"Playing\"]\n";
const QString begun = "0.1 - report pluginLoaded [\"simulator.so\"]\n";
} // namespace

/// What is different between two runs.
class RunComparisonTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void differencesAreNamed_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QStringList>("sentences");
        QTest::newRow("the same") << played << played << QStringList();
        QTest::newRow("nothing") << ""
                                 << "" << QStringList();
        QTest::newRow("jitter") << played
                                << start
                + "1.3 r report stateChanged [\"Transitioning\"]\n1.74 r report stateChanged [\"Playing\"]\n"
                                << QStringList();
        QTest::newRow("all later by the command")
            << played
            << "7 r command playUri [\"http://h:4711/a\"]\n7.1 r report stateChanged [\"Transitioning\"]\n"
               "7.5 r report stateChanged [\"Playing\"]\n"
            << QStringList();
        QTest::newRow("later") << played
                               << start
                + "1.1 r report stateChanged [\"Transitioning\"]\n1.8 r report stateChanged [\"Playing\"]\n"
                               << QStringList(
                                      "Speaker: stateChanged(Playing) came 0.300 s later: 0.500 s after "
                                      "playUri(http://h/a), in the second run 0.800 s.");
        QTest::newRow("earlier") << start
                + "1.1 r report stateChanged [\"Transitioning\"]\n2.8 r report stateChanged [\"Playing\"]\n"
                                 << played
                                 << QStringList("Speaker: stateChanged(Playing) came 1.300 s earlier: 1.800 "
                                                "s after playUri(http://h/a), in the "
                                                "second run 0.500 s.");
        QTest::newRow("a part of a long time") << start + "101 r report playbackCompleted []\n"
                                               << start + "110 r report playbackCompleted []\n"
                                               << QStringList();
        QTest::newRow("missing")
            << played << start + "1.1 r report stateChanged [\"Transitioning\"]\n"
            << QStringList("Speaker: stateChanged(Playing) did not come in the second run: 0.500 s after "
                           "playUri(http://h/a) in the first.");
        QTest::newRow("additional") << played
                                    << played + "1.6 r report error [{\"code\":202,\"message\":\"x\"}]\n"
                                    << QStringList(
                                           "Speaker: error(202) came only in the second run: 0.600 s after "
                                           "playUri(http://h/a).");
        QTest::newRow("once more")
            << played << played + "1.6 r report stateChanged [\"Playing\"]\n"
            << QStringList("Speaker: stateChanged(Playing) came only in the second run: 0.600 s after "
                           "playUri(http://h/a).");
        QTest::newRow("before the first command")
            << played << begun + "0.5 r report nameChanged [\"Speaker\"]\n" + played
            << QStringList(
                   "Speaker: nameChanged() came only in the second run: 0.400 s after the beginning.");
        QTest::newRow("after a slow start of the program")
            << begun + "0.2 r report nameChanged [\"Speaker\"]\n" + played
            << "0.8 - report pluginLoaded [\"simulator.so\"]\n0.9 r report nameChanged [\"Speaker\"]\n"
                + played
            << QStringList();
        QTest::newRow("later than the first event")
            << begun + "0.2 r report nameChanged [\"Speaker\"]\n" + played
            << begun + "0.6 r report nameChanged [\"Speaker\"]\n" + played
            << QStringList(
                   "Speaker: nameChanged() came 0.400 s later: 0.100 s after the beginning, in the second "
                   "run 0.500 s.");
        QTest::newRow("before the first command, then after it")
            << begun + "0.5 r report nameChanged [\"Speaker\"]\n" + played
            << begun + played + "1.6 r report nameChanged [\"Speaker\"]\n"
            << QStringList("Speaker: nameChanged() came before the first command, in the second run after "
                           "playUri(http://h/a).");
        QTest::newRow("other order")
            << start + "1.1 r report mediaChanged [0,{}]\n1.2 r report stateChanged [\"Playing\"]\n"
            << start + "1.1 r report stateChanged [\"Playing\"]\n1.2 r report mediaChanged [0,{}]\n"
            << QStringList("Speaker: mediaChanged(0) came before stateChanged(Playing) in the first run, "
                           "after in the second.");
        QTest::newRow("other order within the tolerance")
            << start + "1.1 r report mediaChanged [0,{}]\n1.14 r report stateChanged [\"Playing\"]\n"
            << start + "1.1 r report stateChanged [\"Playing\"]\n1.2 r report mediaChanged [0,{}]\n"
            << QStringList();
        QTest::newRow("other order and later")
            << start
                + "1.1 r report mediaChanged [0,{}]\n1.2 r report stateChanged [\"Playing\"]\n1.3 r report "
                  "scanningInfo [1]\n"
            << start
                + "1.2 r report stateChanged [\"Playing\"]\n1.3 r report scanningInfo [1]\n5 r report "
                  "mediaChanged [0,{}]\n"
            << QStringList("Speaker: mediaChanged(0) came before stateChanged(Playing) in the first run, "
                           "after in the second.");
        QTest::newRow("other value")
            << start + "2 r report metadataChanged [\"title\",[\"One\"]]\n"
            << start + "2 r report metadataChanged [\"title\",[\"Two\"]]\n"
            << QStringList(
                   "Speaker: metadataChanged(title) told \"[\"One\"]\", in the second run \"[\"Two\"]\".");
        QTest::newRow("other words of an error")
            << start + "2 r report error [{\"code\":102,\"message\":\"a\"}]\n"
            << start + "2 r report error [{\"code\":102,\"message\":\"b\"}]\n"
            << QStringList("Speaker: error(102) told \"a\", in the second run \"b\".");
        QTest::newRow("after another command")
            << played + "3 r command next []\n3.1 r report mediaChanged [1,{}]\n5 r command stop []\n"
            << played + "3 r command next []\n5 r command stop []\n5.1 r report mediaChanged [1,{}]\n"
            << QStringList("Speaker: mediaChanged(1) came after next(), in the second run after stop().");
        QTest::newRow("a command less")
            << played + "3 r command next []\n3.1 r report mediaChanged [1,{}]\n5 r command stop []\n"
            << played + "5 r command stop []\n"
            << QStringList({"Speaker: command next() was given only in the first run.",
                   "Speaker: mediaChanged(1) did not come in the second run: 0.100 s after next() in the "
                   "first."});
        QTest::newRow("a command more")
            << played << played + "3 r command next []\n"
            << QStringList("Speaker: command next() was given only in the second run.");
        QTest::newRow("another port") << played << QString(played).replace("4711", "8080") << QStringList();
        QTest::newRow("another host")
            << start << QString(start).replace("h:", "i:")
            << QStringList({"Speaker: command playUri(http://h/a) was given only in the first run.",
                   "Speaker: command playUri(http://i/a) was given only in the second run."});
        const QString playlist = "1 r command assignPlaylist [\"%1\"]\n2 r report playlistChanged [\"%2\"]\n";
        const QString one = "123e4567-e89b-12d3-a456-426614174000";
        const QString two = "00112233-4455-6677-8899-aabbccddeeff";
        QTest::newRow("random ids") << playlist.arg(one, one) << playlist.arg(two, two) << QStringList();
        QTest::newRow("another of the ids")
            << playlist.arg(one, one) << playlist.arg(one, two)
            << QStringList("r: playlistChanged() told \"id1\", in the second run \"id2\".");
        QTest::newRow("questions") << played
                                   << played + "2 r command getPosition []\n3 r answer getPosition [1]\n"
                                   << QStringList();
        QTest::newRow("levels") << start
                + "2 r report bufferingInfo [0.1]\n3 r report bufferingInfo [0.7]\n4 r report bufferingInfo "
                  "[1]\n" << start + "2 r report bufferingInfo [0.2]\n4 r report bufferingInfo [1]\n"
                                << QStringList();
        QTest::newRow("filled twice")
            << start + "2 r report bufferingInfo [0.1]\n2 r report bufferingInfo [1]\n"
            << start
                + "2 r report bufferingInfo [0.1]\n2 r report bufferingInfo [1]\n3 r report bufferingInfo "
                  "[0.1]\n"
            << QStringList("Speaker: bufferingInfo(below 1) came only in the second run: 2.000 s after "
                           "playUri(http://h/a).");
        QTest::newRow("filled again after a command")
            << start
                + "2 r report bufferingInfo [0.1]\n3 r command next []\n3.5 r report bufferingInfo [0.1]\n"
            << start + "2 r report bufferingInfo [0.1]\n3 r command next []\n"
            << QStringList("Speaker: bufferingInfo(below 1) did not come in the second run: 0.500 s after "
                           "next() in the first.");
        QTest::newRow("windows")
            << "1 r command setKelvoProperty [\"xid\",77]\n1 r report kelvoPropertyChanged [\"xid\",77]\n"
            << "1 r command setKelvoProperty [\"xid\",78]\n1 r report kelvoPropertyChanged [\"xid\",78]\n"
            << QStringList();
        QTest::newRow("another renderer") << played << QString(played).replace(" r ", " q ") << QStringList();
        QTest::newRow("others that were told nothing") << played + "2 x report nameChanged [\"a\"]\n"
                                                       << played + "2 y report nameChanged [\"b\"]\n"
                                                       << QStringList();
        QTest::newRow("a renderer less")
            << "1 q command play []\n" + played << "1 q command play []\n"
            << QStringList({"Speaker: command playUri(http://h/a) was given only in the first run.",
                   "Speaker: stateChanged(Transitioning) did not come in the second run: 0.100 s "
                   "after playUri(http://h/a) in the first.",
                   "Speaker: stateChanged(Playing) did not come in the second run: 0.500 s after "
                   "playUri(http://h/a) in the first."});
        QTest::newRow("two renderers change places")
            << "1 a command play []\n2 b command stop []\n1.5 a report stateChanged [\"Playing\"]\n"
            << "1 c command play []\n2 d command stop []\n1.5 c report stateChanged [\"Playing\"]\n"
            << QStringList();
    }

    void differencesAreNamed()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QStringList, sentences);
        QCOMPARE(differences(first, second), sentences);
    }

    void bothSidesArePointedAt()
    {
        const RunComparison comparison(runOf(played),
            runOf(start
                + "1.1 r report stateChanged [\"Transitioning\"]\n9 r report stateChanged [\"Playing\"]\n9 r "
                  "report error [{}]"));
        QCOMPARE(comparison.count(), 2);
        const RunComparison::Difference later = comparison.differences().at(0);
        QCOMPARE(later.kind, RunComparison::Kind::Later);
        QCOMPARE(later.firstTime, 1.5);
        QCOMPARE(later.secondTime, 9.0);
        QCOMPARE(later.firstEvent, 3);
        QCOMPARE(later.secondEvent, 3);
        const RunComparison::Difference additional = comparison.differences().at(1);
        QCOMPARE(additional.kind, RunComparison::Kind::Additional);
        QVERIFY(!additional.firstTime);
        QCOMPARE(additional.firstEvent, -1);
        QCOMPARE(additional.secondEvent, 4);
    }

    void toleranceIsTheCallers()
    {
        const QString later = start
            + "1.2 r report stateChanged [\"Transitioning\"]\n1.5 r report stateChanged [\"Playing\"]\n";
        QCOMPARE(RunComparison(runOf(played), runOf(later), {0.05, 0, 0}).count(), 1);
        QCOMPARE(RunComparison(runOf(played), runOf(later), {0.11, 0, 0}).count(), 0);
    }

    void floodsAreBounded()
    {
        ComparedRun first;
        ComparedRun second;
        RecordedEvent event;
        event.uuid = "r";
        event.kind = "command";
        for (int i = 0; i < 5000; ++i) {
            event.time = i;
            event.name = QStringLiteral("one%1").arg(i);
            first.add(i, event);
            event.name = QStringLiteral("two%1").arg(i);
            second.add(i, event);
        }
        const RunComparison comparison(first, second);
        QCOMPARE(comparison.count(), 10000);
        QCOMPARE(comparison.differences().size(), RunComparison::MostDifferences);
    }

    /// The time goes by the number of reports, not by its square. Of the processor: the machine may be busy.
    void floodsTakeNoTime()
    {
        ComparedRun first = runOf("0 r command play []");
        ComparedRun second = first;
        RecordedEvent event;
        event.uuid = "r";
        event.kind = "report";
        constexpr int many = 200000;
        for (int i = 1; i <= many; ++i) {
            event.time = i * 1e-6;
            event.name = i % 2 ? "nameChanged" : "playlistChanged";
            second.add(i, event);
        }
        const std::clock_t begin = std::clock();
        QCOMPARE(RunComparison(first, second).count(), many);
        const double seconds = double(std::clock() - begin) / CLOCKS_PER_SEC;
        QVERIFY2(seconds < 20, qPrintable(QString::number(seconds)));
    }

    void commonSequences_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QString>("common");
        QTest::newRow("none") << "abc"
                              << "xyz"
                              << "";
        QTest::newRow("empty") << ""
                               << "abc"
                               << "";
        QTest::newRow("same") << "abc"
                              << "abc"
                              << "0-0 1-1 2-2";
        QTest::newRow("begin and end") << "abxcd"
                                       << "abyzcd"
                                       << "0-0 1-1 3-4 4-5";
        QTest::newRow("one less") << "aba"
                                  << "aa"
                                  << "0-0 2-1";
        QTest::newRow("repeated") << "aaa"
                                  << "a"
                                  << "0-0";
        QTest::newRow("moved") << "abcdef"
                               << "dabcef"
                               << "0-1 1-2 2-3 4-4 5-5";
    }

    void commonSequences()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QString, common);
        QStringList pairs;
        for (const auto &[one, other] :
            CommonSequence::of(first.split("", Qt::SkipEmptyParts), second.split("", Qt::SkipEmptyParts)))
            pairs.append(QStringLiteral("%1-%2").arg(one).arg(other));
        QCOMPARE(pairs.join(' '), common);
    }

    void longListsHaveACommonSequenceToo()
    {
        QStringList first;
        QStringList second;
        for (int i = 0; i < 5000; ++i) {
            first.append({QString::number(i * 2), QString::number(i * 2)}); // of each pair one is left over
            second.append(QString::number(i * 3));
        }
        // What both have is every sixth number, and nothing is at the begin or the end alike but the first.
        const auto pairs = CommonSequence::of(first, second);
        QCOMPARE(pairs.size(), 1667);
        for (const auto &[one, other] : pairs)
            QCOMPARE(first.at(one), second.at(other));
    }

    void risingParts()
    {
        QCOMPARE(CommonSequence::longestRising({}), QList<qsizetype>());
        QCOMPARE(CommonSequence::longestRising({3}), QList<qsizetype>({0}));
        QCOMPARE(CommonSequence::longestRising({1, 2, 3}), QList<qsizetype>({0, 1, 2}));
        QCOMPARE(CommonSequence::longestRising({3, 2, 1}).size(), 1);
        QCOMPARE(CommonSequence::longestRising({9, 1, 5, 2, 3}), QList<qsizetype>({1, 3, 4}));
    }
};

KELVO_TEST(RunComparisonTest)
#include "RunComparisonTest.moc"
