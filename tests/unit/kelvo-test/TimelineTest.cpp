// SPDX-License-Identifier: MIT
#include "Timeline.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
/// "from-to text" of each mark.
QStringList texts(const Lane &lane)
{
    QStringList result;
    for (const Mark &mark : lane.marks())
        result.append(QStringLiteral("%1-%2 %3").arg(mark.from).arg(mark.to).arg(mark.text));
    return result;
}

Timeline timelineOf(const QString &text)
{
    Timeline timeline;
    HandWritten::give(HandWritten::events(text), &timeline);
    timeline.finish();
    return timeline;
}
} // namespace

/// What is shown over time.
class TimelineTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void eachRendererHasItsLanes()
    {
        const Timeline timeline = timelineOf(R"(
            0.5 r appears renderer ["Speaker"]
            0.5 s appears source ["Store"]
            1 r command playUri ["u:a"]
            1.25 r report stateChanged ["Transitioning"]
            1.5 r report bufferingInfo [0.4]
            2 r report bufferingInfo [1]
            2.5 r report stateChanged ["Playing"]
            3 q command stop []
            4 r answer getPosition [1]
            5 r answer kelvoProperty ["position",2.5]
            5 r answer kelvoProperty ["volume",60]
            6 r report error [{"code":202,"message":"no data"}]
            7  note ended []
            )");
        QCOMPARE(timeline.begin(), 0.5);
        QCOMPARE(timeline.end(), 7);
        QCOMPARE(timeline.renderers().size(), 2);
        const Timeline::Renderer &renderer = timeline.renderers().at(0);
        QCOMPARE(renderer.uuid, "r");
        QCOMPARE(renderer.name, "Speaker");
        QCOMPARE(texts(renderer.commands), QStringList("1-1 playUri(u:a)"));
        QCOMPARE(texts(renderer.states), QStringList({"1.25-2.5 Transitioning", "2.5-7 Playing"}));
        QCOMPARE(texts(renderer.buffering), QStringList("1.5-2 40 %"));
        QCOMPARE(renderer.buffering.marks().at(0).high, 0.4);
        QCOMPARE(texts(renderer.position), QStringList({"4-4 1.000 s", "5-5 2.500 s"}));
        QCOMPARE(renderer.position.marks().at(1).low, 2.5);
        QCOMPARE(texts(renderer.errors), QStringList("6-6 error 202: no data"));
        QCOMPARE(renderer.errors.marks().at(0).event, 11);
        QCOMPARE(renderer.errorReports.at(0).code, 202);
        QCOMPARE(renderer.stateTimes.value("Transitioning"), qMakePair(1.25, qint64(1)));
        QCOMPARE(renderer.stateTimes.value("Playing"), qMakePair(4.5, qint64(1)));
        QVERIFY(renderer.others.isEmpty());
        QCOMPARE(timeline.renderers().at(1).uuid, "q");
        QCOMPARE(timeline.notes().size(), 1);
        QCOMPARE(timeline.notes().at(0).name, "ended");
    }

    void whatIsHeardStandsUnderWhatIsSaid()
    {
        const Timeline timeline = timelineOf(R"(
            0 r appears renderer ["Speaker"]
            2 r heard begins [0.5,3,0.25,1,-18,""]
            2.5 r heard goes [0,3,1.25,1,-18,""]
            3 r answer getPosition [1.5]
            3.1 r heard goes [0,3,1.8,1,-18,""]
            4 r answer getPosition [2]
            4.5 r heard goes [0,3,3.2,1,-18,""]
            5 r heard jumps [0.25,4,0,1,null,"it clips"]
            6 r heard ends [0.5,4,0.75,1,null,""]
            8 r heard begins [0,0,null,1,null,"no code"]
            9 r heard begins ["x"]
            9.5 r heard
            )");
        const Timeline::Renderer &renderer = timeline.renderers().at(0);
        QCOMPARE(texts(renderer.heard),
            QStringList({"1.5-3.1 item 3 at 0.250 s", "3.1-4.75 item 3 at 1.800 s, 200 ms from what it says",
                "4.75-5.5 item 4 at 0.000 s (it clips)", "8-9 a sound (no code)", "9-9 a sound"}));
        QCOMPARE(renderer.heard.marks().at(0).high, 1);
        QVERIFY(renderer.heard.marks().at(2).high < 1);
        QVERIFY(renderer.others.isEmpty());
    }

    void whatIsSeenHasALaneOfItsOwn()
    {
        const Timeline timeline = timelineOf(R"(
            0 r appears renderer ["Screen"]
            2 r seen begins [0.5,3,0.24,1,0,""]
            2.5 r seen goes [0,3,1.24,1,0,""]
            3 r seen goes [0,3,1.76,1,2,""]
            4 r heard begins [0.5,3,2.25,1,-18,""]
            4 r seen rests [0.5,3,2.24,1,0,""]
            5 r answer getPosition [2]
            5.1 r seen jumps [0,4,2.5,1,0,""]
            6 r seen ends [0,0,null,1,0,"the window is covered"]
            7 r seen begins [0,4,0,1,0,""]
            )");
        const Timeline::Renderer &renderer = timeline.renderers().at(0);
        QCOMPARE(texts(renderer.seen),
            QStringList({"1.5-3 item 3 at 0.240 s", "3-3.5 item 3 at 1.760 s, 2 pictures left out",
                "3.5-5.1 item 3 at 2.240 s, which rests", "5.1-6 item 4 at 2.500 s, 400 ms from what it says",
                "7-7 item 4 at 0.000 s"}));
        QCOMPARE(renderer.heard.marks().size(), 1);
        QVERIFY(renderer.others.isEmpty());
    }

    void whatSourcesAndPlaylistsAreToldHasNoLane()
    {
        const Timeline timeline = timelineOf(R"(
            0 p command shuffle []
            0 p command removeItem [3]
            1 s appears source ["Store"]
            2 s command setKelvoProperty ["signIn",true]
            3 s command kelvoProperty ["modelName"]
            4 r command play []
            5 r command getPosition []
            )");
        QCOMPARE(timeline.renderers().size(), 1);
        QCOMPARE(timeline.renderers().at(0).uuid, "r");
        // Who asks tells it nothing.
        QCOMPARE(texts(timeline.renderers().at(0).commands), QStringList("4-4 play()"));
    }

    void whatGoesOnEndsWithTheRendererOrTheRun()
    {
        const Timeline timeline = timelineOf(R"(
            0 r report stateChanged ["Playing"]
            0 q report stateChanged ["Paused"]
            0 q report bufferingInfo [0.2]
            2 r vanishes renderer ["Speaker"]
            3 q command play []
            )");
        QCOMPARE(texts(timeline.renderers().at(0).states), QStringList("0-2 Playing"));
        QCOMPARE(texts(timeline.renderers().at(1).states), QStringList("0-3 Paused"));
        QCOMPARE(texts(timeline.renderers().at(1).buffering), QStringList("0-3 20 %"));
    }

    void kindsOfLaterProgramsAreShown()
    {
        const Timeline timeline = timelineOf(R"(
            0 r report stateChanged ["Playing"]
            1 r felt level [-3]
            )");
        QCOMPARE(texts(timeline.renderers().at(0).others), QStringList("1-1 felt level(-3)"));
    }

    void valuesOfAnyTypeAreTaken()
    {
        const Timeline timeline = timelineOf(R"(
            0 r report stateChanged [7]
            0 r report stateChanged []
            1 r report bufferingInfo ["much"]
            1 r report bufferingInfo [-4]
            1 r answer getPosition ["soon"]
            1 r answer getPosition []
            2 r report error ["broken"]
            2 r appears renderer [null]
            )");
        const Timeline::Renderer &renderer = timeline.renderers().at(0);
        QCOMPARE(renderer.errors.marks().size(), 1);
        QVERIFY(renderer.position.isEmpty());
        QCOMPARE(renderer.buffering.marks().constLast().low, 0.0);
    }

    void manyMarksBecomeFew()
    {
        Lane lane;
        constexpr int added = 100000;
        for (int i = 0; i < added; ++i)
            lane.add({i * 0.01, i * 0.01, i, i % 2 ? "odd" : "even", double(i), double(i), 1});
        QVERIFY(lane.marks().size() <= 2 * Lane::MostMarks);
        QVERIFY(lane.marks().size() > Lane::MostMarks / 4);
        qint64 count = 0;
        for (const Mark &mark : lane.marks()) {
            // Each tells how many it stands for, and the first of them.
            QCOMPARE(mark.event, count);
            QCOMPARE(mark.low, double(count));
            QCOMPARE(mark.high, double(count + mark.count - 1));
            QCOMPARE(mark.text.isEmpty(), mark.count > 1);
            count += mark.count;
        }
        QCOMPARE(count, added);
    }

    void fewMarksStayAsTheyAre()
    {
        Lane lane;
        for (int i = 0; i < 2 * Lane::MostMarks; ++i)
            lane.add({0, 0, i, "x", 0, 0, 1}); // all at one moment
        QCOMPARE(lane.marks().size(), 2 * Lane::MostMarks);
        lane.add({0, 0, 0, "last", 0, 0, 1});
        QCOMPARE(lane.marks().size(), 2);
        QCOMPARE(lane.marks().constLast().text, "last");
        lane.endLast(5);
        QCOMPARE(lane.marks().constLast().to, 5.0);
        lane.endLast(4); // time does not go back
        QCOMPARE(lane.marks().constLast().to, 5.0);
    }

    void anyNumberOfMarksCanBeAskedFor()
    {
        Lane lane;
        for (int i = 0; i < 1000; ++i)
            lane.add({i * 1.0, i + 0.5, i, "x", 0, 0, 1});
        QCOMPARE(lane.atMost(1000).size(), 1000);
        for (const int most : {999, 500, 100, 2}) {
            const QList<Mark> marks = lane.atMost(most);
            QVERIFY2(
                marks.size() <= most && marks.size() >= most / 4, qPrintable(QString::number(marks.size())));
            QCOMPARE(marks.constFirst().from, 0.0);
            QCOMPARE(marks.constLast().to, 999.5);
        }
        QCOMPARE(lane.marks().size(), 1000);
    }

    /// Names, errors and notes without number are bounded, too.
    void floodsAreBounded()
    {
        Timeline timeline;
        RecordedEvent event;
        event.kind = "report";
        event.name = "error";
        for (int i = 0; i < 3000; ++i) {
            event.uuid = QString::number(i % 100);
            timeline.add(i, event);
        }
        QCOMPARE(timeline.renderers().size(), Timeline::MostRenderers);
        QCOMPARE(timeline.eventsLeftOut(), 3000 - 30 * Timeline::MostRenderers);
        event.uuid = "0";
        for (int i = 0; i < 3000; ++i)
            timeline.add(i, event);
        QCOMPARE(timeline.renderers().at(0).errorReports.size(), Timeline::MostErrors);
        QCOMPARE(timeline.renderers().at(0).errorCount, 3030);
    }
};

KELVO_TEST(TimelineTest)
#include "TimelineTest.moc"
