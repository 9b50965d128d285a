// SPDX-License-Identifier: MIT
#include "ScenarioWriter.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"
#include "YamlText.h"

#include <QTest>

namespace {
QByteArray scenarioOf(const QString &events)
{
    ScenarioWriter writer;
    HandWritten::give(HandWritten::events(events), &writer);
    return writer.yaml("a title");
}

/// The lines of the steps, without what stands before each.
QList<QByteArray> stepsOf(const QString &events)
{
    const QByteArray yaml = scenarioOf(events);
    QList<QByteArray> steps;
    for (const QByteArray &line : yaml.mid(yaml.indexOf("steps:\n") + 7).split('\n')) {
        if (!line.isEmpty())
            steps.append(line.mid(4));
    }
    return steps;
}
} // namespace

/// Scenarios that are made of recordings.
class ScenarioWriterTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void aRunBecomesAScenario()
    {
        const QByteArray yaml = scenarioOf(R"(
            0 r appears renderer ["Speaker"]
            0 r report stateChanged ["Stopped"]
            1 r command playUri ["u:a"]
            1 r command setKelvoProperty ["volume",40]
            1.1 r report stateChanged ["Transitioning"]
            1.1 r report playlistChanged [null]
            1.1 r report mediaChanged [-1,{"url":"u:a"}]
            1.2 r report kelvoPropertyChanged ["volume",40]
            1.3 r report bufferingInfo [0.5]
            1.5 r report stateChanged ["Playing"]
            1.6 r report metadataChanged ["title",["One"]]
            1.7 r command pauseAt [3]
            2.5 r command getPosition []
            2.6 r answer getPosition [1]
            4.5 r report stateChanged ["Paused"]
            4.6 r answer kelvoProperty ["position",3.04]
            4.7 r answer kelvoProperty ["position",3.04]
            )");
        QCOMPARE(yaml, QByteArray(R"(title: "a title"
needs: [pauseAt]
media:
  medium1: {url: "u:a"}
steps:
  - playUri: $medium1
  - setKelvoProperty: {"volume": 40}
  - expect: {item: $medium1, within: 3 s}
  - expect: {property: {"volume": 40}, within: 3 s}
  - expect: {state: Playing, within: 3 s}
  - pauseAt: 3
  - expect: {state: Paused, within: 7 s, position: 3 s ± 250 ms}
  - never: {error: any}
)"));
    }

    // A scenario with such a medium would be refused as a whole.
    void whatIsNoAddressIsNoMedium()
    {
        const QByteArray yaml = scenarioOf(R"(
            0 r command playUri [""]
            0.1 r command playUri ["song.mp3"]
            0.2 r command playUriWithType ["a b","audio/mpeg"]
            0.3 r report mediaChanged [-1,{"url":"song.mp3"}]
            0.4 r command assignPlaylist ["p"]
            0.5 r report mediaChanged [0,{"url":"song.mp3"}]
            0.6 r command playUri ["u:a"]
            )");
        QCOMPARE(yaml, QByteArray(R"(title: "a title"
media:
  medium1: {url: "u:a"}
playlists:
  # What is in it was not recorded.
  list1: []
steps:
  - assignPlaylist: $list1
  - expect: {index: 0, within: 3 s}
  - playUri: $medium1
  - never: {error: any}
)"));
    }

    void whatSourcesAndPlaylistsAreToldIsNoStep()
    {
        QCOMPARE(stepsOf(R"(
            0 s appears source ["Store"]
            0 p command shuffle []
            0 s command setKelvoProperty ["signIn",true]
            0.1 r command setKelvoProperty ["volume",40]
            0.2 p command removeItem [0]
            0.2 r command play []
            )"),
            QList<QByteArray>({R"(setKelvoProperty: {"volume": 40})", "play:", "never: {error: any}"}));
    }

    // A console tells whom it has chosen where the picture is to go. What that one then does, nobody told it to do.
    void whoWasToldOfTheScreenAloneHasNoPart()
    {
        const QString told = R"(
            0 r command setKelvoProperty ["xid",7]
            0.1 r command playUri [""]
            0.2 r report stateChanged ["Playing"]
            0.3 r report error [{"code":404,"message":"gone"}]
            )";
        ScenarioWriter writer;
        HandWritten::give(HandWritten::events(told), &writer);
        QVERIFY(writer.isEmpty());
        const QByteArray yaml = scenarioOf(told + "1 other command play []\n");
        QCOMPARE(yaml, QByteArray("title: \"a title\"\nsteps:\n  - play:\n  - never: {error: any}\n"));
    }

    void everyCommandIsAStep_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QByteArray>("step");
        for (const char *const name : {"play", "stop", "pause", "resume", "next", "previous"})
            QTest::newRow(name) << QString(name) + " []" << QByteArray(name) + ":";
        QTest::newRow("playUri") << "playUri [\"u:a\"]" << QByteArray("playUri: $medium1");
        QTest::newRow("type") << "playUriWithType [\"u:a\",\"audio/\\\"x\"]"
                              << QByteArray("playUriWithType: {uri: $medium1, type: \"audio/\\\"x\"}");
        QTest::newRow("pauseAt") << "pauseAt [3]" << QByteArray("pauseAt: 3");
        QTest::newRow("gotoIndex") << "gotoIndex [0]" << QByteArray("gotoIndex: 0");
        QTest::newRow("seek") << "setPosition [20,0]" << QByteArray("setPosition: 20");
        QTest::newRow("relative seek")
            << "setPosition [-5,1]" << QByteArray("setPosition: {seconds: -5, mode: relative}");
        QTest::newRow("playlist") << "assignPlaylist [\"some-uuid\"]" << QByteArray("assignPlaylist: $list1");
        QTest::newRow("no playlist") << "assignPlaylist [null]" << QByteArray("assignPlaylist: none");
        QTest::newRow("bool") << "setKelvoProperty [\"auto-advance\",false]"
                              << QByteArray("setKelvoProperty: {\"auto-advance\": false}");
        QTest::newRow("double") << "setKelvoProperty [\"playback-speed\",-1.5]"
                                << QByteArray("setKelvoProperty: {\"playback-speed\": -1.5}");
        QTest::newRow("text") << "setKelvoProperty [\"sim-error\",\"a: b\"]"
                              << QByteArray("setKelvoProperty: {\"sim-error\": \"a: b\"}");
        for (const char *const none :
            {"setKelvoProperty [\"xid\",77]", "setKelvoProperty [\"autopaint\",true]",
                "setKelvoProperty [\"render-rectangle\",\"0,0,1,1\"]", "setKelvoProperty [\"cover\",{}]",
                "getStatus []", "getPosition []", "kelvoProperty [\"volume\"]", "later [1]"})
            QTest::newRow(none) << none << QByteArray();
    }

    void everyCommandIsAStep()
    {
        QFETCH(QString, command);
        QFETCH(QByteArray, step);
        QList<QByteArray> wanted{"play:", step, "never: {error: any}"};
        wanted.removeAll(QByteArray());
        QCOMPARE(stepsOf("1 r command play []\n1.4 r command " + command), wanted);
    }

    void timesBecomeWaits()
    {
        QCOMPARE(
            stepsOf("7 r command play []\n7.3 r report stateChanged [\"Playing\"]\n7.7 r command next []\n"
                    "10 r command next []\n10.49 r command next []"),
            QList<QByteArray>({"play:", "expect: {state: Playing, within: 3 s}", "next:", "wait: 2.3 s",
                "next:", "next:", "never: {error: any}"}));
    }

    void timesFollowWhatWasMeasured()
    {
        QCOMPARE(stepsOf("0 r command play []\n30 r report playbackCompleted []\n"),
            QList<QByteArray>({"play:", "expect: {completed: true, within: 47 s}", "never: {error: any}"}));
        QCOMPARE(stepsOf("5 r command play []\n1 r report playbackCompleted []\n1e300 r report "
                         "playbackCompleted []\n"),
            QList<QByteArray>({"play:", "expect: {completed: true, within: 2 s}",
                "expect: {completed: true, within: 60002 s}", "never: {error: any}"}));
    }

    void whatNeedNotComeIsNotExpected()
    {
        QCOMPARE(
            stepsOf("0 q report stateChanged [\"Playing\"]\n0 r command play []\n0 r report stateChanged "
                    "[\"Playing\"]\n"
                    "1 r report stateChanged [\"Playing\"]\n1 r report kelvoPropertyChanged [\"volume\",3]\n"
                    "1 r report scanningInfo [1]\n1 r report nameChanged [\"x\"]\n1 q report error "
                    "[{\"code\":1}]\n"),
            QList<QByteArray>({"play:", "expect: {state: Playing, within: 2 s}", "never: {error: any}"}));
    }

    void errorsAreExpected()
    {
        QCOMPARE(stepsOf("0 r command play []\n1 r report error [{\"code\":305,\"message\":\"x\"}]\n"),
            QList<QByteArray>({"play:", "expect: {error: 305, within: 4 s}"}));
    }

    void aPositionOfWholeSecondsIsTakenForOne()
    {
        QCOMPARE(
            stepsOf("0 r command pause []\n0 r report stateChanged [\"Paused\"]\n1 r answer getPosition [3]"),
            QList<QByteArray>({"pause:", "expect: {state: Paused, within: 2 s, position: 3 s ± 1 s}",
                "never: {error: any}"}));
    }

    void aPositionAfterTheNextCommandIsNoneOfThatPause()
    {
        QCOMPARE(stepsOf("0 r command pause []\n0 r report stateChanged [\"Paused\"]\n0 r command resume "
                         "[]\n1 r answer getPosition [3]"),
            QList<QByteArray>(
                {"pause:", "expect: {state: Paused, within: 2 s}", "resume:", "never: {error: any}"}));
    }

    void playlistsAreFilledByWhatWasPlayed()
    {
        const QByteArray yaml = scenarioOf(
            "0 r command assignPlaylist [\"p\"]\n1 r command play []\n"
            "2 r report mediaChanged [0,{\"url\":\"u:a\"}]\n3 p report repeatModeChanged [2]\n"
            "4 r report mediaChanged [2,{\"url\":\"u:c\"}]\n5 r command assignPlaylist [\"q\"]\n");
        QVERIFY2(yaml.contains("media:\n  medium1: {url: \"u:a\"}\n  medium2: {url: \"u:c\"}\n"
                               "playlists:\n"
                               "  # Not recorded, so filled up: 1.\n"
                               "  list1: [$medium1, $medium1, $medium2]\n"
                               "  # What is in it was not recorded.\n"
                               "  list2: []\n"
                               "steps:\n  - assignPlaylist: $list1\n"),
            yaml);
        QVERIFY2(yaml.contains("  - setRepeatMode: {list: $list1, mode: one}\n"), yaml);
        QVERIFY2(yaml.contains("  - expect: {index: 2, within: 4 s}\n"), yaml);
    }

    void renderersThatComeAndGo()
    {
        QCOMPARE(stepsOf("0 r command play []\n2 r vanishes renderer [\"S\"]\n4 r appears renderer [\"S\"]"),
            QList<QByteArray>({"play:", "expect: {there: false, within: 5 s}",
                "expect: {there: true, within: 5 s}", "never: {error: any}"}));
    }

    void severalRenderers()
    {
        const QByteArray yaml
            = scenarioOf("0 r command play []\n0 q command stop []\n0 q report stateChanged [\"Stopped\"]");
        QVERIFY2(yaml.contains("renderers: [renderer1, renderer2]\n"), yaml);
        QVERIFY2(yaml.endsWith("steps:\n  - play:\n  - stop:\n    on: renderer2\n"
                               "  - expect: {state: Stopped, within: 2 s}\n    on: renderer2\n"
                               "  - never: {error: any}\n  - never: {error: any}\n    on: renderer2\n"),
            yaml);
    }

    void nothingIsToldOfNothing()
    {
        ScenarioWriter writer;
        HandWritten::give(HandWritten::events("0 r report stateChanged [\"Playing\"]"), &writer);
        QVERIFY(writer.isEmpty());
        writer.add(0, HandWritten::events("0 r command play []").constFirst());
        QVERIFY(!writer.isEmpty());
    }

    void aScenarioIsBounded()
    {
        ScenarioWriter writer;
        RecordedEvent event = HandWritten::events("0 r command play []").constFirst();
        for (int i = 0; i < 20000; ++i)
            writer.add(i, event);
        QVERIFY(writer.isCut());
        const QByteArray yaml = writer.yaml("t");
        QCOMPARE(yaml.count("- play:"), ScenarioWriter::MostSteps);
        QVERIFY(yaml.endsWith("this is as long as a scenario may be.\n"));
    }

    void textsOfOthersStayTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("quoted");
        QTest::newRow("quote") << "a\"b" << QByteArray("\"a\\\"b\"");
        QTest::newRow("backslash") << "a\\" << QByteArray("\"a\\\\\"");
        QTest::newRow("line end") << "a\nsteps: []" << QByteArray("\"a\\u000asteps: []\"");
        QTest::newRow("colon, hash") << "a: b # c" << QByteArray("\"a: b # c\"");
        QTest::newRow("mark") << QString(QChar(0x202e)) << QByteArray("\"\\u202e\"");
        QTest::newRow("umlaut") << QString::fromUtf8("ä") << QByteArray("\"ä\"");
        QTest::newRow("empty") << "" << QByteArray("\"\"");
    }

    void textsOfOthersStayTexts()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, quoted);
        QCOMPARE(YamlText::quoted(text), quoted);
    }
};

KELVO_TEST(ScenarioWriterTest)
#include "ScenarioWriterTest.moc"
