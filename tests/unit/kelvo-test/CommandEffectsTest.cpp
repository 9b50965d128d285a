// SPDX-License-Identifier: MIT
#include "CommandEffects.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <numeric>

/// How long effects took.
class CommandEffectsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void eachCommandHasItsEffect_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("report");
        QTest::addColumn<QString>("row");
        const QString none;
        const QString playing = "report stateChanged [\"Playing\"]";
        const QString paused = "report stateChanged [\"Paused\"]";
        const QString stopped = "report stateChanged [\"Stopped\"]";
        QTest::newRow("play") << none << "play []" << playing << "play stateChanged(Playing) 0.5";
        QTest::newRow("playUri") << none << "playUri [\"u\"]" << playing
                                 << "playUri stateChanged(Playing) 0.5";
        QTest::newRow("with type") << none << "playUriWithType [\"u\",\"t\"]" << playing
                                   << "playUriWithType stateChanged(Playing) 0.5";
        QTest::newRow("another state is no effect")
            << none << "play []" << paused << "play stateChanged(Playing) without 1";
        QTest::newRow("pause") << playing << "pause []" << paused << "pause stateChanged(Paused) 0.5";
        QTest::newRow("pause while Paused") << paused << "pause []" << paused << "";
        QTest::newRow("pause while Stopped") << stopped << "pause []" << paused << "";
        QTest::newRow("resume") << paused << "resume []" << playing << "resume stateChanged(Playing) 0.5";
        QTest::newRow("resume while Playing") << playing << "resume []" << playing << "";
        QTest::newRow("stop") << playing << "stop []" << stopped << "stop stateChanged(Stopped) 0.5";
        QTest::newRow("stop while Stopped") << stopped << "stop []" << stopped << "";
        QTest::newRow("next") << none << "next []"
                              << "report mediaChanged [1,{}]"
                              << "next mediaChanged 0.5";
        QTest::newRow("previous") << none << "previous []"
                                  << "report mediaChanged [1,{}]"
                                  << "previous mediaChanged 0.5";
        QTest::newRow("gotoIndex") << none << "gotoIndex [4]"
                                   << "report mediaChanged [1,{}]"
                                   << "gotoIndex mediaChanged 0.5";
        QTest::newRow("property") << none << "setKelvoProperty [\"volume\",5]"
                                  << "report kelvoPropertyChanged [\"volume\",5]"
                                  << "setKelvoProperty(volume) kelvoPropertyChanged 0.5";
        QTest::newRow("another property") << none << "setKelvoProperty [\"volume\",5]"
                                          << "report kelvoPropertyChanged [\"mute\",5]"
                                          << "setKelvoProperty(volume) kelvoPropertyChanged without 1";
        QTest::newRow("seek") << none << "setPosition [20,0]"
                              << "answer getPosition [21]"
                              << "setPosition getPosition 0.5";
        QTest::newRow("seek back") << none << "setPosition [20,0]"
                                   << "answer kelvoProperty [\"position\",19.0]"
                                   << "setPosition getPosition 0.5";
        QTest::newRow("seek elsewhere") << none << "setPosition [20,0]"
                                        << "answer getPosition [22]"
                                        << "setPosition getPosition without 1";
        QTest::newRow("relative seek") << none << "setPosition [0,1]"
                                       << "answer getPosition [0]"
                                       << "";
        QTest::newRow("error") << none << "play []"
                               << "report error [{\"code\":305}]"
                               << "play stateChanged(Playing) without 1";
        QTest::newRow("nothing to see") << none << "pauseAt [3]" << paused << "";
    }

    void eachCommandHasItsEffect()
    {
        QFETCH(QString, before);
        QFETCH(QString, command);
        QFETCH(QString, report);
        QFETCH(QString, row);
        QString text = QStringLiteral("1 r command %1\n1.5 r %2\n9 r %2\n").arg(command, report);
        if (!before.isEmpty())
            text.prepend(QStringLiteral("0 r %1\n").arg(before));
        QCOMPARE(rows(text), row.isEmpty() ? QStringList() : QStringList(row));
    }

    void aCommandThatTakesThePlaceOfAnotherEndsItsWaiting()
    {
        QCOMPARE(
            rows("0 r command play []\n1 r command playUri [\"u\"]\n2 r report stateChanged [\"Playing\"]\n"
                 "3 r command stop []\n4 r report stateChanged [\"Stopped\"]"),
            QStringList({"play stateChanged(Playing) without 1", "playUri stateChanged(Playing) 1",
                "stop stateChanged(Stopped) 1"}));
    }

    void anErrorEndsTheWaitingForGood()
    {
        QCOMPARE(rows("0 r command play []\n1 r report error [{\"code\":102}]\n2 r report stateChanged "
                      "[\"Playing\"]"),
            QStringList("play stateChanged(Playing) without 1"));
    }

    void renderersAreApart()
    {
        QCOMPARE(rows("0 r command play []\n1 q report stateChanged [\"Playing\"]\n"
                      "2 q command play []\n3 r report stateChanged [\"Playing\"]\n5 q report stateChanged "
                      "[\"Playing\"]"),
            QStringList({"play stateChanged(Playing) 3", "play stateChanged(Playing) 3"}));
    }

    void theSlowestIsNamed()
    {
        CommandEffects effects;
        HandWritten::give(HandWritten::events("0 r command play []\n1 r report stateChanged [\"Playing\"]\n"
                                              "2 r command play []\n5 r report stateChanged [\"Playing\"]\n"
                                              "6 r command play []\n7 r report stateChanged [\"Playing\"]\n"),
            &effects);
        effects.finish();
        const CommandEffects::Row row = effects.rows().constFirst();
        QCOMPARE(row.slowest, 2);
        QCOMPARE(row.times.count, 3);
        QCOMPARE(row.times.median, 1.0);
        QCOMPARE(row.times.maximum, 3.0);
    }

    void eachIsHeardOfOnce()
    {
        CommandEffects effects;
        QStringList heard;
        effects.setListener([&heard](const CommandEffects::Effect &effect) {
            heard.append(
                QStringLiteral("%1 %2").arg(effect.commandEvent).arg(effect.effectTime.value_or(-1)));
        });
        HandWritten::give(
            HandWritten::events(
                "0 r command play []\n1 r report stateChanged [\"Playing\"]\n2 r command stop []"),
            &effects);
        QCOMPARE(heard, QStringList("0 1"));
        effects.finish();
        effects.finish();
        QCOMPARE(heard, QStringList({"0 1", "2 -1"}));
    }

    void floodsAreBounded()
    {
        CommandEffects effects;
        RecordedEvent event;
        event.kind = "command";
        event.name = "setKelvoProperty";
        event.arguments = {"volume", 1};
        int ended = 0;
        effects.setListener([&ended](const CommandEffects::Effect &) { ++ended; });
        for (int i = 0; i < 1000; ++i)
            effects.add(i, event);
        QCOMPARE(ended, 1000 - 256);
    }

    void statistics_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<double>("median");
        QTest::addColumn<double>("p95");
        QTest::newRow("none") << 0 << 0.0 << 0.0;
        QTest::newRow("one") << 1 << 1.0 << 1.0;
        QTest::newRow("two") << 2 << 1.5 << 2.0;
        QTest::newRow("three") << 3 << 2.0 << 3.0;
        QTest::newRow("19") << 19 << 10.0 << 19.0;
        QTest::newRow("20") << 20 << 10.5 << 19.0;
        QTest::newRow("100") << 100 << 50.5 << 95.0;
        QTest::newRow("101") << 101 << 51.0 << 96.0;
    }

    void statistics()
    {
        QFETCH(int, count);
        QFETCH(double, median);
        QFETCH(double, p95);
        QList<double> times(count);
        std::iota(times.rbegin(), times.rend(), 1.0);
        const TimeStatistics statistics = TimeStatistics::of(times);
        QCOMPARE(statistics.count, count);
        QCOMPARE(statistics.median, median);
        QCOMPARE(statistics.p95, p95);
        QCOMPARE(statistics.maximum, double(count));
    }

private:
    /// "command effect median" or "command effect without count" of each row.
    static QStringList rows(const QString &text)
    {
        CommandEffects effects;
        HandWritten::give(HandWritten::events(text), &effects);
        effects.finish();
        QStringList result;
        for (const CommandEffects::Row &row : effects.rows()) {
            const QString times = QString::number(row.times.median);
            const QString without = QStringLiteral("without %1").arg(row.without);
            result.append(QStringList({row.command, row.effect, row.without ? without : times}).join(' '));
        }
        return result;
    }
};

KELVO_TEST(CommandEffectsTest)
#include "CommandEffectsTest.moc"
