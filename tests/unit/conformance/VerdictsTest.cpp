// SPDX-License-Identifier: MIT
// What the contract says of renderers that are wrong on purpose.
#include "ConformanceRun.h"
#include "DiscoveredSubject.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>

namespace {
QList<Statement> statementsOf(const QString &beginning)
{
    QList<Statement> chosen;
    for (const Statement &statement : contractStatements()) {
        if (statement.id.startsWith(beginning))
            chosen.append(statement);
    }
    return chosen;
}

Result resultOf(const QList<Result> &results, const QString &id)
{
    const auto found = std::find_if(
        results.cbegin(), results.cend(), [&id](const Result &result) { return result.id == id; });
    return found == results.cend() ? Result() : *found;
}
} // namespace

class VerdictsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup();
    void holdsOfTheSimulatorBelowTheFault();
    void evidenceSaysWhatCameInstead();
    void whatIsNeverAllowedIsToldFirstHand();
    void refusalIsHonest();
    void emptyClaimIsTold();
    void faultInOneStatementIsNoEmptyClaim();
    void whatDoesNotEndIsBounded();
    void absentRendererIsNotTried();
    void stopsWhenTold();
    void stopsInTheMiddleOfATrial();
    void findsOutWhatItIs();
    void tellsWhichBackEndBroughtARenderer();

private:
    /// All statements whose ids begin like this, on the renderer with this fault.
    QList<Result> resultsWith(const char *fault, const QString &beginning);
};

void VerdictsTest::cleanup()
{
    qunsetenv("KELVO_WRONG");
}

QList<Result> VerdictsTest::resultsWith(const char *fault, const QString &beginning)
{
    DiscoveredSubject subject(QStringLiteral("wrong-renderer.so"), QStringLiteral("wrong-renderer"), {});
    if (!subject.meet())
        return {};
    qputenv("KELVO_WRONG", fault);
    return Card({}, ConformanceRun(subject, statementsOf(beginning)).run()).results();
}

void VerdictsTest::holdsOfTheSimulatorBelowTheFault()
{
    const QList<Result> results = resultsWith("", QStringLiteral("seek."));
    QVERIFY(results.size() > 10);
    for (const Result &result : results)
        QVERIFY2(result.verdict == Verdict::Holds,
            qPrintable(result.id + QLatin1Char('\n') + textOf(result.evidence)));
}

void VerdictsTest::evidenceSaysWhatCameInstead()
{
    const QList<Result> results = resultsWith("relative-is-absolute", QStringLiteral("seek.relative"));
    const Result result = resultOf(results, QStringLiteral("seek.relative-back"));
    QCOMPARE(result.verdict, Verdict::DoesNotHold);
    QCOMPARE(result.evidence.expected, QStringLiteral("position() == to"));
    QVERIFY2(result.evidence.came.startsWith(QLatin1String("not within 2.5 s; the last position was ")),
        qPrintable(result.evidence.came));
    QVERIFY2(result.evidence.where.contains(QLatin1String("SeekStatements.cpp:")),
        qPrintable(result.evidence.where));
    QVERIFY(!result.evidence.events.isEmpty());
    QVERIFY(result.evidence.lastEvents().size() <= 10);
    qint64 last = 0;
    bool plays = false;
    for (const HeardEvent &event : result.evidence.events) {
        QVERIFY(event.time >= last);
        last = event.time;
        plays = plays || event.text == QLatin1String("Playing");
    }
    QVERIFY(plays);
    QVERIFY(last > 0);
    QVERIFY(textOf(result.evidence).contains(QLatin1String("came: not within 2.5 s")));
}

void VerdictsTest::whatIsNeverAllowedIsToldFirstHand()
{
    const QList<Result> results
        = resultsWith("reports-inside-commands", QStringLiteral("state.pause-and-resume"));
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.constFirst().verdict, Verdict::DoesNotHold);
    QVERIFY2(results.constFirst().evidence.violations.contains(
                 QStringLiteral("volume = 50 was reported inside a command")),
        qPrintable(results.constFirst().evidence.violations.join(QLatin1Char('\n'))));
    QVERIFY(results.constFirst().evidence.expected.startsWith(QLatin1String("nothing that no renderer")));
}

void VerdictsTest::refusalIsHonest()
{
    const QList<Result> results = resultsWith("refuses-to-seek", QStringLiteral("seek.absolute"));
    QCOMPARE(results.size(), 4);
    for (const Result &result : results) {
        QCOMPARE(result.verdict, Verdict::Refused);
        QCOMPARE(result.reason, QStringLiteral("error 307 (no way but forward)"));
    }
}

void VerdictsTest::emptyClaimIsTold()
{
    const QList<Result> results = resultsWith("ignores-seeks", QStringLiteral("seek.absolute"));
    QCOMPARE(results.size(), 4);
    for (const Result &result : results)
        QCOMPARE(result.verdict, Verdict::Overclaimed);
    QVERIFY(!Card({}, results).isClean());
}

void VerdictsTest::faultInOneStatementIsNoEmptyClaim()
{
    const QList<Result> results = resultsWith("relative-is-absolute", QStringLiteral("seek."));
    QCOMPARE(resultOf(results, QStringLiteral("seek.absolute-forward")).verdict, Verdict::Holds);
    QCOMPARE(resultOf(results, QStringLiteral("seek.relative-add-up")).verdict, Verdict::DoesNotHold);
}

void VerdictsTest::whatDoesNotEndIsBounded()
{
    const QList<Result> results = resultsWith("does-not-stop", QStringLiteral("state.stop-keeps-item"));
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.constFirst().verdict, Verdict::DoesNotHold);
    QCOMPARE(results.constFirst().evidence.expected, QStringLiteral("heard().state() == Stopped"));
}

void VerdictsTest::absentRendererIsNotTried()
{
    DiscoveredSubject subject(QStringLiteral("no-such-plugin.so"), QStringLiteral("nobody"), {});
    QVERIFY(!subject.meet());
    QVERIFY2(!subject.problem().isEmpty(), "a reason");
    const QList<Result> results
        = ConformanceRun(subject, statementsOf(QStringLiteral("seek.absolute-f"))).run();
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.constFirst().verdict, Verdict::NotTried);
    QCOMPARE(results.constFirst().reason, subject.problem());
}

void VerdictsTest::stopsWhenTold()
{
    DiscoveredSubject subject(QStringLiteral("simulator.so"), QStringLiteral("KelvoSimulatorA"), {});
    QVERIFY2(subject.meet(), qPrintable(subject.problem()));
    ConformanceRun run(subject, statementsOf(QStringLiteral("seek.absolute")));
    connect(
        &run, &ConformanceRun::ended, &run, [&run] { run.stop(QStringLiteral("the tester had enough")); });
    const QList<Result> results = run.run();
    QCOMPARE(results.size(), 4);
    QCOMPARE(results.at(0).verdict, Verdict::Holds);
    for (int i : {1, 2, 3}) {
        QCOMPARE(results.at(i).verdict, Verdict::NotTried);
        QCOMPARE(results.at(i).reason, QStringLiteral("the tester had enough"));
    }
}

void VerdictsTest::stopsInTheMiddleOfATrial()
{
    DiscoveredSubject subject(QStringLiteral("wrong-renderer.so"), QStringLiteral("wrong-renderer"), {});
    QVERIFY2(subject.meet(), qPrintable(subject.problem()));
    // It would wait for its end.
    qputenv("KELVO_WRONG", "does-not-stop");
    ConformanceRun run(subject, statementsOf(QStringLiteral("state.stop-keeps-item")));
    QTimer::singleShot(0, &run, [&run] { run.stop(QStringLiteral("the tester had enough")); });
    const QList<Result> results = run.run();
    QCOMPARE(results.constFirst().verdict, Verdict::NotTried);
    QCOMPARE(results.constFirst().reason, QStringLiteral("the tester had enough"));
}

void VerdictsTest::findsOutWhatItIs()
{
    DiscoveredSubject subject(QStringLiteral("wrong-renderer.so"), QStringLiteral("wrong-renderer"), {});
    QVERIFY2(subject.meet(), qPrintable(subject.problem()));
    QCOMPARE(subject.name(), QStringLiteral("Wrong <renderer>"));
    QVERIFY(!subject.inRealTime());
    QCOMPARE(subject.roundTrip(), 0);
    QCOMPARE(subject.claim(Ability::Seek).kind, Claim::Made);
    QCOMPARE(subject.claim(Ability::TellUnseekable).kind, Claim::Made);
}

void VerdictsTest::tellsWhichBackEndBroughtARenderer()
{
    KelvoRegistry registry;
    QSignalSpy loaded(registry.pluginLoader(), &KelvoPluginLoader::pluginLoaded);
    registry.loadPlugin(QStringLiteral("simulator.so"));
    registry.loadPlugin(QStringLiteral("wrong-renderer.so"));
    QTRY_COMPARE(loaded.size(), 2);
    const QHash<QString, QString> origins = DiscoveredSubject::originsOf(registry);
    QCOMPARE(origins.value(QStringLiteral("wrong-renderer")), QStringLiteral("wrong-renderer.so"));
    QCOMPARE(origins.value(QStringLiteral("KelvoSimulatorUnnamed")), QStringLiteral("simulator.so"));
    QCOMPARE(origins.size(), 4);
    QVERIFY(registry.renderers().isEmpty());
}

KELVO_TEST(VerdictsTest)
#include "VerdictsTest.moc"
