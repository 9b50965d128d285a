// SPDX-License-Identifier: MIT
// The trouble that testers can make with the simulator.
#include "SimulatorCase.h"
#include "TestGroup.h"

namespace {
class SimulatorTroubleTest : public SimulatorCase
{
    Q_OBJECT
private Q_SLOTS:
    void latencyHoldsCommandsBack();
    void latencyKeepsTheOrder();
    void nextItemsFail();
    void failureCanBeTakenBack();
    void errorWithWords();
    void errorEndsTheItem();
    void bufferFillsBeforeTheItem();
    void bufferFillsInMidPlay();
    void pauseWhileTheBufferFills();
    void stopEndsTheBuffering();
    void stallsAndGoesOn();
    void anotherControllerPauses();
    void anotherControllerStops();
    void anotherControllerPlays();
    void reportsAPolicyOverride();
    void reportsAColorKey();
    void vanishesAndComesBack();
    void vanishesForGood();
    void unloadedWhileVanished();
};

void SimulatorTroubleTest::latencyHoldsCommandsBack()
{
    set("sim-latency", 300);
    advance(0);
    renderer()->playUri(QUrl("sim:x"));
    advance(299);
    QCOMPARE(heard().states, States());
    advance(1);
    QCOMPARE(heard().states, States{Transitioning});
    renderer()->getPosition(m_probe.get(), "positionAnswer(uint)");
    renderer()->setKelvoProperty("volume", 5);
    advance(299);
    QCOMPARE(heard().states.constLast(), Playing);
    QCOMPARE(heard().positionAnswers.size(), 0);
    QVERIFY(!heard().property("volume").isValid());
    advance(1);
    QTRY_COMPARE(heard().positionAnswers.size(), 1);
    QCOMPARE(heard().property("volume"), QVariant(5U));
}

void SimulatorTroubleTest::latencyKeepsTheOrder()
{
    set("sim-latency", 500);
    advance(0);
    renderer()->playUri(QUrl("sim:first"));
    set("sim-latency", 0);
    advance(0);
    renderer()->playUri(QUrl("sim:second"));
    advance(100);
    QCOMPARE(heard().media.size(), 0);
    advance(400);
    QCOMPARE(heard().media.size(), 2);
    QCOMPARE(heard().media.constLast().content.url, QUrl("sim:second"));
}

void SimulatorTroubleTest::nextItemsFail()
{
    set("sim-failure", QStringLiteral("105,2"));
    QVERIFY(!start(QUrl("sim:x")));
    QVERIFY(!start(QUrl("sim:x")));
    QVERIFY(start(QUrl("sim:x")));
    QCOMPARE(heard().errors.size(), 2);
    QCOMPARE(heard().errorsOf(KelvoError::CodecMissing), 2);
    set("sim-failure", 200);
    QVERIFY(!start(QUrl("sim:x")));
    QCOMPARE(heard().errorsOf(KelvoError::NetworkFailed), 1);
    QVERIFY(start(QUrl("sim:x")));
}

void SimulatorTroubleTest::failureCanBeTakenBack()
{
    set("sim-failure", 106);
    set("sim-failure", 0);
    QVERIFY(start(QUrl("sim:x")));
    QCOMPARE(heard().errors.size(), 0);
}

void SimulatorTroubleTest::errorWithWords()
{
    set("sim-error", QStringLiteral("1,out of tape, again"));
    advance(0);
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::UnknownError);
    QCOMPARE(heard().errors.constFirst().message(), QString("out of tape, again"));
    QCOMPARE(heard().states, States());
}

void SimulatorTroubleTest::errorEndsTheItem()
{
    QVERIFY(start(QUrl("sim:x")));
    set("sim-error", 102);
    advance(100);
    QCOMPARE(heard().errorsOf(KelvoError::ReadFailed), 1);
    QCOMPARE(heard().state(), Stopped);
    QCOMPARE(heard().completed, 0);
}

void SimulatorTroubleTest::bufferFillsBeforeTheItem()
{
    QSignalSpy buffering(renderer(), &KelvoRenderer::bufferingInfo);
    set("sim-buffering", 1000);
    QVERIFY(!start(QUrl("sim:x")));
    QCOMPARE(heard().states, States{Transitioning});
    QCOMPARE(buffering.size(), 1);
    QCOMPARE(buffering.constFirst().at(0).toFloat(), 0.0F);
    advance(500);
    QCOMPARE(buffering.constLast().at(0).toFloat(), 0.5F);
    QCOMPARE(heard().states, States{Transitioning});
    advance(500);
    QCOMPARE(buffering.constLast().at(0).toFloat(), 1.0F);
    QCOMPARE(buffering.size(), 11);
    QCOMPARE(heard().states, (States{Transitioning, Playing}));
    QCOMPARE(position(), 0.0);
}

void SimulatorTroubleTest::bufferFillsInMidPlay()
{
    QVERIFY(start(QUrl("sim:x")));
    advance(3000);
    set("sim-buffering", 2000);
    advance(1000);
    QCOMPARE(heard().state(), Transitioning);
    QCOMPARE(position(), 3.0);
    advance(1000);
    QCOMPARE(heard().state(), Playing);
    advance(500);
    QCOMPARE(position(), 3.5);
}

void SimulatorTroubleTest::pauseWhileTheBufferFills()
{
    set("sim-buffering", 1000);
    QVERIFY(!start(QUrl("sim:x")));
    renderer()->pause();
    advance(200);
    QCOMPARE(heard().states, (States{Transitioning, Paused}));
    renderer()->resume();
    advance(200);
    QCOMPARE(heard().states, (States{Transitioning, Paused, Transitioning}));
    renderer()->pause();
    // The user's wish holds when the buffer is full.
    advance(5000);
    QCOMPARE(heard().states, (States{Transitioning, Paused, Transitioning, Paused}));
    QCOMPARE(position(), 0.0);
    renderer()->resume();
    advance(1000);
    QCOMPARE(heard().state(), Playing);
    QCOMPARE(position(), 1.0);
}

void SimulatorTroubleTest::stopEndsTheBuffering()
{
    QSignalSpy buffering(renderer(), &KelvoRenderer::bufferingInfo);
    set("sim-buffering", 1000);
    QVERIFY(!start(QUrl("sim:x")));
    advance(300);
    renderer()->stop();
    advance(0);
    QCOMPARE(buffering.constLast().at(0).toFloat(), 1.0F);
    const qsizetype reports = buffering.size();
    advance(5000);
    QCOMPARE(buffering.size(), reports);
    QCOMPARE(heard().state(), Stopped);
}

void SimulatorTroubleTest::stallsAndGoesOn()
{
    QVERIFY(start(QUrl("sim:x?duration=10")));
    advance(2000);
    set("sim-stall", true);
    advance(60'000);
    QCOMPARE(heard().state(), Playing);
    QCOMPARE(position(), 2.0);
    set("sim-stall", false);
    advance(1000);
    QCOMPARE(position(), 3.0);
    advance(7000);
    QCOMPARE(heard().completed, 1);
}

void SimulatorTroubleTest::anotherControllerPauses()
{
    QVERIFY(start(QUrl("sim:x")));
    set("sim-foreign", "pause");
    advance(1000);
    QCOMPARE(heard().state(), Paused);
    QCOMPARE(position(), 0.0);
    // Ours resumes what the other one has paused.
    renderer()->resume();
    advance(1000);
    QCOMPARE(heard().state(), Playing);
    QCOMPARE(position(), 1.0);
    renderer()->pause();
    advance(0);
    set("sim-foreign", "resume");
    advance(1000);
    QCOMPARE(heard().states, (States{Transitioning, Playing, Paused, Playing, Paused, Playing}));
    QCOMPARE(position(), 2.0);
}

void SimulatorTroubleTest::anotherControllerStops()
{
    set("sim-foreign", "stop");
    set("sim-foreign", "pause");
    advance(0);
    QCOMPARE(heard().states, States());
    QVERIFY(start(QUrl("sim:x")));
    set("sim-foreign", "stop");
    advance(60'000);
    QCOMPARE(heard().states, (States{Transitioning, Playing, Stopped}));
    QCOMPARE(heard().completed, 0);
    renderer()->play();
    advance(20);
    QCOMPARE(heard().state(), Playing);
}

void SimulatorTroubleTest::anotherControllerPlays()
{
    QVERIFY(start(QUrl("sim:ours")));
    set("sim-foreign", "sim:theirs?title=Theirs&duration=3");
    advance(1020);
    QCOMPARE(heard().media.size(), 2);
    QCOMPARE(heard().media.constLast().index, -1);
    QCOMPARE(heard().media.constLast().content.url, QUrl("sim:theirs?title=Theirs&duration=3"));
    QCOMPARE(heard().states, (States{Transitioning, Playing, Transitioning, Playing}));
    QCOMPARE(position(), 1.0);
    // Its end is none of ours.
    advance(3000);
    QCOMPARE(heard().state(), Stopped);
    QCOMPARE(heard().completed, 0);
    // Where nothing plays, too; and ours takes over again.
    set("sim-foreign", "sim:theirs");
    advance(20);
    QCOMPARE(heard().state(), Playing);
    QVERIFY(start(QUrl("sim:ours")));
    QCOMPARE(heard().media.constLast().content.url, QUrl("sim:ours"));
}

void SimulatorTroubleTest::reportsAPolicyOverride()
{
    set("policy-override", true);
    advance(0);
    QCOMPARE(heard().property("policy-override"), QVariant(true));
    QCOMPARE(heard().property("policy-override").typeId(), int(QMetaType::Bool));
    set("policy-override", QStringLiteral("false"));
    advance(0);
    QCOMPARE(heard().property("policy-override"), QVariant(false));
    QCOMPARE(heard().property("policy-override").typeId(), int(QMetaType::Bool));
}

void SimulatorTroubleTest::reportsAColorKey()
{
    set("colorkey", 0x123456);
    advance(0);
    QCOMPARE(heard().property("colorkey"), QVariant(0x123456U));
    QCOMPARE(heard().property("colorkey").typeId(), int(QMetaType::UInt));
}

void SimulatorTroubleTest::vanishesAndComesBack()
{
    QSignalSpy added(m_registry.get(), &KelvoRegistry::rendererAdded);
    QSignalSpy removed(m_registry.get(), &KelvoRegistry::rendererRemoved);
    QVERIFY(start(QUrl("sim:x")));
    set("volume", 3);
    set("sim-name", QStringLiteral("Renamed"));
    const QPointer<KelvoRenderer> old(renderer());
    set("sim-vanish", 5000);
    QTRY_VERIFY(!old);
    QVERIFY(!renderer());
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.constFirst(), (QVariantList{RendererA, QString("Renamed")}));
    QCOMPARE(m_registry->renderers().size(), 2);
    advance(4999);
    QVERIFY(!renderer());
    advance(1);
    QVERIFY(renderer());
    QCOMPARE(added.size(), 1);
    QCOMPARE(added.constFirst(), (QVariantList{RendererA, QString("Simulator A")}));
    const QStringList violations = heard().violations;
    watch();
    heard().violations = violations;
    QCOMPARE(ask("volume"), QVariant(70U));
    QVERIFY(start(QUrl("sim:x")));
}

void SimulatorTroubleTest::vanishesForGood()
{
    set("sim-vanish", -1);
    QTRY_VERIFY(!renderer());
    advance(10'000'000);
    QVERIFY(!renderer());
    QCOMPARE(m_registry->renderers().size(), 2);
    m_registry->unloadPlugin(Plugin);
    QVERIFY(load());
    QVERIFY(renderer());
}

void SimulatorTroubleTest::unloadedWhileVanished()
{
    QSignalSpy added(m_registry.get(), &KelvoRegistry::rendererAdded);
    set("sim-vanish", 1000);
    QTRY_VERIFY(!renderer());
    m_registry->unloadPlugin(Plugin);
    QCOMPARE(m_registry->renderers().size(), 0);
    QCOMPARE(added.size(), 0);
    QVERIFY(load());
    QCOMPARE(added.size(), 3);
}
} // namespace

KELVO_TEST(SimulatorTroubleTest)
#include "SimulatorTroubleTest.moc"
