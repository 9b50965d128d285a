// SPDX-License-Identifier: MIT
#include "SilenceReason.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
const QString appears = "0 r appears renderer [\"Speaker\"]\n0 r report stateChanged [\"Stopped\"]\n";
const QString told = appears + "1 r command playUri [\"http://h/a\"]\n";
const QString transitioning = told + "1.25 r report stateChanged [\"Transitioning\"]\n";
const QString playing = transitioning + "2 r report stateChanged [\"Playing\"]\n";
const QString end = "10  note ended []\n";

QString sentenceOf(const QString &events, const QString &uuid = {})
{
    SilenceReason reason;
    HandWritten::give(HandWritten::events(events), &reason);
    return reason.verdict(uuid).sentence;
}
} // namespace

/// Why nothing is heard.
class SilenceReasonTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void oneSentenceSaysWhy_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<QString>("sentence");
        // The numbers of the events that show it.
        QTest::addColumn<QList<int>>("evidence");
        QTest::newRow("no renderer") << end << "No renderer is there." << QList<int>{};
        QTest::newRow("vanished") << playing + "5 r vanishes renderer [\"Speaker\"]\n" + end
                                  << "Speaker vanished at 5.000 s." << QList<int>{4, 5};
        QTest::newRow("came back") << playing
                + "5 r vanishes renderer [\"S\"]\n6 r appears renderer [\"S\"]\n"
                  "6 r report stateChanged [\"Stopped\"]\n7 r command stop []\n"
                + end << "S was stopped by stop() at 7.000 s."
                                   << QList<int>{7, 8};
        QTest::newRow("no command") << appears + end << "No command to play arrived at Speaker."
                                    << QList<int>{0, 1};
        QTest::newRow("no command to play")
            << appears + "2 r command setKelvoProperty [\"volume\",5]\n3 r command stop []\n" + end
            << "No command to play arrived at Speaker." << QList<int>{0, 1, 3};
        QTest::newRow("a command to another")
            << appears
                + "0 q appears renderer [\"Other\"]\n1 q command play []\n2 q report stateChanged "
                  "[\"Playing\"]\n"
            << "Nothing keeps Other silent as far as can be seen: it is Playing since 2.000 s."
            << QList<int>{3, 4};
        QTest::newRow("nothing to play")
            << appears + "1 r command play []\n1.1 r report error [{\"code\":305,\"message\":\"\"}]\n" + end
            << "Speaker has nothing to play: error 305 at 1.100 s." << QList<int>{1, 2, 3};
        QTest::newRow("empty playlist")
            << transitioning
                + "2 r report error [{\"code\":301,\"message\":\"none\"}]\n2 r report stateChanged "
                  "[\"Stopped\"]\n"
            << "Speaker has nothing to play: error 301: none at 2.000 s." << QList<int>{2, 4, 5};
        QTest::newRow("nothing playable")
            << transitioning + "2 r report error [{\"code\":304}]\n2 r report stateChanged [\"Stopped\"]\n"
            << "Speaker has nothing to play: error 304 at 2.000 s." << QList<int>{2, 4, 5};
        QTest::newRow("media") << transitioning
                + "2 r report error [{\"code\":104,\"message\":\"text/plain\"}]\n2 r report stateChanged "
                  "[\"Stopped\"]\n"
                               << "Speaker could not play: error 104: text/plain at 2.000 s."
                               << QList<int>{2, 4, 5};
        QTest::newRow("an error that was overcome")
            << transitioning + "2 r report error [{\"code\":104}]\n2 r report mediaChanged [1,{}]\n" + end
            << "Told to play at 1.000 s, Speaker is still Transitioning since 1.250 s, for 8.750 s."
            << QList<int>{2, 3};
        QTest::newRow("an error before the command")
            << appears
                + "0.5 r report error [{\"code\":104}]\n1 r command play []\n2 r report stateChanged "
                  "[\"Transitioning\"]\n"
            << "Told to play at 1.000 s, Speaker is still Transitioning since 2.000 s, for 0.000 s."
            << QList<int>{3, 4};
        QTest::newRow("time out") << transitioning
                + "4 r report error [{\"code\":203,\"message\":\"no answer in 3 s\"}]\n"
                                  << "Speaker does not answer: error 203: no answer in 3 s at 4.000 s."
                                  << QList<int>{2, 3, 4};
        QTest::newRow("device gone") << transitioning + "4 r report error [{\"code\":204}]\n"
                                     << "Speaker does not answer: error 204 at 4.000 s."
                                     << QList<int>{2, 3, 4};
        QTest::newRow("no report") << told
                + end << "Speaker does not answer: told to play at 1.000 s, it said nothing for 9.000 s."
                                   << QList<int>{2};
        QTest::newRow("no report of an unknown one")
            << "1 r command play []\n4  note ended []\n"
            << "r does not answer: told to play at 1.000 s, it said nothing for 3.000 s." << QList<int>{0};
        QTest::newRow("not yet") << "1 r command play []\n3.9  note ended []\n"
                                 << "Told to play at 1.000 s, r has not told a state yet, for 2.900 s."
                                 << QList<int>{0};
        QTest::newRow("told again what it does")
            << playing + "5 r command play []\n" + end
            << "Nothing keeps Speaker silent as far as can be seen: it is Playing since 2.000 s."
            << QList<int>{4, 5};
        QTest::newRow("no answer to questions")
            << playing + "3 r command getPosition []\n4 r command getPosition []\n" + end
            << "Speaker does not answer: getPosition() was asked at 3.000 s, and nothing came for 7.000 s."
            << QList<int>{2, 4, 5};
        QTest::newRow("answers come") << playing
                + "3 r command getPosition []\n4 r answer getPosition [2]\n"
                  "9 r command getPosition []\n"
                + end << "Nothing keeps Speaker silent as far as can be seen: it is Playing since 2.000 s."
                                      << QList<int>{2, 4, 6};
        QTest::newRow("policy pauses") << playing
                + "5 r report kelvoPropertyChanged [\"policy-override\",true]\n5 r report stateChanged "
                  "[\"Paused\"]\n"
                + end << "Speaker is paused by a policy outside of the program since 5.000 s."
                                       << QList<int>{5, 6};
        QTest::newRow("policy overrides")
            << playing + "5 r report kelvoPropertyChanged [\"policy-override\",true]\n" + end
            << "Speaker is overridden by a policy outside of the program since 5.000 s." << QList<int>{4, 5};
        QTest::newRow("policy told again")
            << playing
                + "5 r report kelvoPropertyChanged [\"policy-override\",true]\n"
                  "6 r report kelvoPropertyChanged [\"policy-override\",true]\n"
            << "Speaker is overridden by a policy outside of the program since 5.000 s." << QList<int>{4, 5};
        QTest::newRow("policy no longer")
            << playing
                + "5 r report kelvoPropertyChanged [\"policy-override\",true]\n5 r report stateChanged "
                  "[\"Paused\"]\n"
                  "6 r report kelvoPropertyChanged [\"policy-override\",false]\n"
            << "Speaker is Paused since 5.000 s, and no command asked for that." << QList<int>{2, 6};
        QTest::newRow("paused") << playing + "5 r command pause []\n5.5 r report stateChanged [\"Paused\"]\n"
                + end << "Speaker is Paused since 5.500 s, as pause() at 5.000 s told it."
                                << QList<int>{5, 6};
        QTest::newRow("paused at") << told
                + "1 r command pauseAt [3]\n2 r report stateChanged [\"Playing\"]\n"
                  "5 r report stateChanged [\"Paused\"]\n"
                + end << "Speaker is Paused since 5.000 s, as pauseAt(3) at 1.000 s told it."
                                   << QList<int>{3, 5};
        QTest::newRow("paused at, which was dropped")
            << playing
                + "2 r command pauseAt [3]\n3 r command next []\n5 r report stateChanged [\"Paused\"]\n" + end
            << "Speaker is Paused since 5.000 s, and no command asked for that." << QList<int>{2, 7};
        QTest::newRow("paused once and again") << playing
                + "5 r command pause []\n5 r report stateChanged [\"Paused\"]\n6 r command resume []\n"
                  "6 r report stateChanged [\"Playing\"]\n7 r report stateChanged [\"Paused\"]\n"
                + end << "Speaker is Paused since 7.000 s, and no command asked for that."
                                               << QList<int>{7, 9};
        QTest::newRow("stopped") << playing + "5 r command stop []\n6 r report stateChanged [\"Stopped\"]\n"
                + end << "Speaker was stopped by stop() at 5.000 s."
                                 << QList<int>{5, 6};
        QTest::newRow("completed") << playing
                + "5 r report stateChanged [\"Stopped\"]\n5 r report playbackCompleted []\n" + end
                                   << "Speaker has played all there was, until 5.000 s."
                                   << QList<int>{2, 5, 6};
        QTest::newRow("stopped by nobody")
            << playing + "5 r report stateChanged [\"Stopped\"]\n" + end
            << "Told to play at 1.000 s, Speaker is Stopped since 5.000 s without an error."
            << QList<int>{2, 5};
        QTest::newRow("transitioning")
            << transitioning + end
            << "Told to play at 1.000 s, Speaker is still Transitioning since 1.250 s, for 8.750 s."
            << QList<int>{2, 3};
        QTest::newRow("transitioning by itself")
            << "1 r report stateChanged [\"Transitioning\"]\n" + end
            << "r is still Transitioning since 1.000 s, for 9.000 s." << QList<int>{0};
        QTest::newRow("buffering") << transitioning
                + "1.5 r report bufferingInfo [0.1]\n2 r report bufferingInfo [0.4]\n" + end
                                   << "Speaker is buffering at 40 % for 8.000 s." << QList<int>{2, 3, 5};
        QTest::newRow("buffering while Playing")
            << playing + "3 r report bufferingInfo [0]\n" + end << "Speaker is buffering at 0 % for 7.000 s."
            << QList<int>{2, 4, 5};
        QTest::newRow("buffered") << transitioning
                + "1.5 r report bufferingInfo [0.1]\n2 r report bufferingInfo [1]\n"
                + end << "Told to play at 1.000 s, Speaker is still Transitioning since 1.250 s, for 8.750 s."
                                  << QList<int>{2, 3};
        QTest::newRow("clock stands")
            << playing
                + "3 r answer getPosition [1]\n4 r answer getPosition [2]\n5 r answer getPosition [2]\n7 r "
                  "answer getPosition [2]\n"
            << "Speaker says Playing, but its clock stands at 2.000 s since 4.000 s." << QList<int>{4, 6, 8};
        QTest::newRow("clock goes slowly")
            << playing
                + "3 r answer getPosition [1]\n4 r answer getPosition [2]\n5 r answer getPosition [2]\n6.9 r "
                  "answer getPosition [2]\n"
            << "Nothing keeps Speaker silent as far as can be seen: it is Playing since 2.000 s."
            << QList<int>{2, 4, 8};
        QTest::newRow("asked too seldom")
            << playing + "3 r answer getPosition [1]\n9 r answer getPosition [1]\n"
            << "Nothing keeps Speaker silent as far as can be seen: it is Playing since 2.000 s."
            << QList<int>{2, 4, 6};
        QTest::newRow("after a seek to the same place")
            << playing
                + "3 r answer getPosition [1]\n4 r answer getPosition [1]\n5 r command setPosition [1,0]\n6 "
                  "r answer getPosition [1]\n"
            << "Nothing keeps Speaker silent as far as can be seen: it is Playing since 2.000 s."
            << QList<int>{2, 4, 8};
        QTest::newRow("volume 0") << playing + "3 r report kelvoPropertyChanged [\"volume\",0]\n" + end
                                  << "Speaker plays, but its volume is 0 since 3.000 s." << QList<int>{4, 5};
        QTest::newRow("volume 0 as answered")
            << playing + "3 r answer kelvoProperty [\"volume\",0]\n" + end
            << "Speaker plays, but its volume is 0 since 3.000 s." << QList<int>{4, 5};
        QTest::newRow("louder again")
            << playing
                + "3 r report kelvoPropertyChanged [\"volume\",0]\n4 r report kelvoPropertyChanged "
                  "[\"volume\",1]\n"
            << "Nothing keeps Speaker silent as far as can be seen: it is Playing since 2.000 s."
            << QList<int>{2, 4};
        QTest::newRow("volume unknown")
            << playing + "3 r answer kelvoProperty [\"volume\",null]\n"
            << "Nothing keeps Speaker silent as far as can be seen: it is Playing since 2.000 s."
            << QList<int>{2, 4};
        QTest::newRow("muted") << playing + "3 r report kelvoPropertyChanged [\"mute\",true]\n" + end
                               << "Speaker plays, but is muted since 3.000 s." << QList<int>{4, 5};
        QTest::newRow("name changed") << appears + "1 r report nameChanged [\"Other\"]\n" + end
                                      << "No command to play arrived at Other." << QList<int>{0, 1};
    }

    void oneSentenceSaysWhy()
    {
        QFETCH(QString, events);
        QFETCH(QString, sentence);
        QFETCH(QList<int>, evidence);
        SilenceReason reason;
        HandWritten::give(HandWritten::events(events), &reason);
        const SilenceReason::Verdict verdict = reason.verdict();
        QCOMPARE(verdict.sentence, sentence);
        QList<int> shown;
        for (const PlaybackFacts::Moment &moment : verdict.evidence)
            shown.append(int(moment.event));
        QCOMPARE(shown, evidence);
    }

    void aRendererCanBeChosen()
    {
        const QString events = playing + "3 q appears renderer [\"Other\"]\n3 s appears source [\"Store\"]\n";
        QCOMPARE(sentenceOf(events, "q"), "No command to play arrived at Other.");
        QCOMPARE(sentenceOf(events, "s"), "No renderer s is there.");
        QCOMPARE(sentenceOf(events, "none"), "No renderer none is there.");
        QVERIFY(sentenceOf(events).startsWith("Nothing keeps Speaker silent"));
    }

    void renderersAreNamed()
    {
        SilenceReason reason;
        HandWritten::give(HandWritten::events("0 p command clear []\n" + appears
                              + "1 q command play []\n1 s appears source [\"Store\"]\n2 s command "
                                "setKelvoProperty [\"a\",1]\n"),
            &reason);
        QStringList names;
        for (const SilenceReason::Name &name : reason.renderers())
            names.append(name.uuid + '=' + name.name);
        QCOMPARE(names, QStringList({"r=Speaker", "q="}));
    }

    void theOneThatWasToldToPlayLastIsChosen()
    {
        QVERIFY(
            sentenceOf(playing + "3 q command play []\n7  note ended []").startsWith("q does not answer"));
        QVERIFY(sentenceOf("0 q command play []\n" + playing).startsWith("Nothing keeps Speaker"));
        QVERIFY(sentenceOf("0 q report stateChanged [\"Stopped\"]\n" + appears).contains("at q."));
    }

    void timeGoesOnWithoutEvents()
    {
        SilenceReason reason;
        HandWritten::give(HandWritten::events(told), &reason);
        QVERIFY(reason.verdict().sentence.contains("is Stopped since"));
        reason.setTime(20);
        QCOMPARE(reason.verdict().sentence,
            "Speaker does not answer: told to play at 1.000 s, it said nothing for 19.000 s.");
    }

    void valuesOfAnyTypeAreTaken()
    {
        for (const char *const arguments :
            {"", "[]", "[null]", "[{}]", "[[]]", "[1e300,\"x\"]", "[\"x\",[]]"}) {
            for (const char *const name : {"stateChanged", "error", "bufferingInfo", "kelvoPropertyChanged",
                     "mediaChanged", "nameChanged", "getPosition", "kelvoProperty"}) {
                for (const char *const kind :
                    {"report", "answer", "command", "appears", "vanishes", "note"}) {
                    QVERIFY(!sentenceOf(playing + QStringLiteral("3 r %1 %2 %3").arg(kind, name, arguments))
                                 .isEmpty());
                }
            }
        }
    }
};

KELVO_TEST(SilenceReasonTest)
#include "SilenceReasonTest.moc"
