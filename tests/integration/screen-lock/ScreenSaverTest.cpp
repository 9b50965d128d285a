// SPDX-License-Identifier: MIT
#include "ScreenSaver.h"
#include "FakeScreenSaver.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "PrivateBus.h"
#include "RecordingRenderer.h"
#include "ScreenLock.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>

namespace {
const auto asks = QStringLiteral("Inhibit(org.kelvo.TestGui)");
const auto givesBack = QStringLiteral("UnInhibit(1)");

/// Long enough for what would come by the bus, were it sent.
void letEverythingArrive()
{
    QTest::qWait(200);
}
} // namespace

class ScreenSaverTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void asksAndGivesBack()
    {
        const FakeScreenSaver service(QStringLiteral("service"));
        ScreenSaver saver;
        saver.setInhibited(true);
        QTRY_COMPARE(service.held(), QList<uint>{1});
        saver.setInhibited(true);
        letEverythingArrive();
        QCOMPARE(service.asked(), QStringList(asks));
        saver.setInhibited(false);
        QTRY_COMPARE(service.asked(), QStringList({asks, givesBack}));
        saver.setInhibited(true);
        QTRY_COMPARE(service.held(), QList<uint>{2});
    }

    void aShortVideoIsNotAskedFor()
    {
        const FakeScreenSaver service(QStringLiteral("service"));
        ScreenSaver saver;
        saver.setInhibited(true);
        saver.setInhibited(false); // before it is on the bus
        letEverythingArrive();
        QCOMPARE(service.asked(), QStringList());
        saver.setInhibited(true);
        QTRY_COMPARE(service.held(), QList<uint>{1});
    }

    void aCookieThatComesTooLateIsGivenBack()
    {
        FakeScreenSaver service(QStringLiteral("service"), FakeScreenSaver::AnswersWhenTold);
        ScreenSaver saver;
        saver.setInhibited(true);
        QTRY_COMPARE(service.asked(), QStringList(asks));
        saver.setInhibited(false);
        letEverythingArrive();
        QCOMPARE(service.asked(), QStringList(asks));
        service.answer();
        QTRY_COMPARE(service.asked(), QStringList({asks, givesBack}));
    }

    void aCookieThatIsWantedAgainIsKept()
    {
        FakeScreenSaver service(QStringLiteral("service"), FakeScreenSaver::AnswersWhenTold);
        ScreenSaver saver;
        saver.setInhibited(true);
        QTRY_COMPARE(service.asked(), QStringList(asks));
        saver.setInhibited(false);
        saver.setInhibited(true);
        service.answer();
        letEverythingArrive();
        QCOMPARE(service.asked(), QStringList(asks));
        saver.setInhibited(false);
        QTRY_COMPARE(service.asked(), QStringList({asks, givesBack}));
    }

    void aRefusalHoldsUntilTheNextVideo()
    {
        const FakeScreenSaver service(QStringLiteral("service"), FakeScreenSaver::Refuses);
        ScreenSaver saver;
        saver.setInhibited(true);
        QTRY_COMPARE(service.asked(), QStringList(asks));
        letEverythingArrive();
        saver.setInhibited(false);
        saver.setInhibited(true);
        QTRY_COMPARE(service.asked(), QStringList({asks, asks}));
    }

    void aServiceThatComesLaterIsAsked()
    {
        ScreenSaver saver;
        saver.setInhibited(true);
        letEverythingArrive();
        const FakeScreenSaver service(QStringLiteral("service"));
        QTRY_COMPARE(service.held(), QList<uint>{1});
    }

    void aServiceThatIsStartedAnewIsAskedAgain_data()
    {
        QTest::addColumn<FakeScreenSaver::Manner>("first");
        QTest::newRow("after its answer") << FakeScreenSaver::Answers;
        QTest::newRow("before its answer") << FakeScreenSaver::AnswersWhenTold;
    }
    void aServiceThatIsStartedAnewIsAskedAgain()
    {
        QFETCH(FakeScreenSaver::Manner, first);
        ScreenSaver saver;
        saver.setInhibited(true);
        {
            const FakeScreenSaver service(QStringLiteral("first"), first);
            QTRY_COMPARE(service.asked(), QStringList(asks));
            letEverythingArrive();
        }
        const FakeScreenSaver service(QStringLiteral("second"));
        QTRY_COMPARE(service.held(), QList<uint>{1});
        letEverythingArrive();
        QCOMPARE(service.asked(), QStringList(asks));
        saver.setInhibited(false);
        QTRY_COMPARE(service.asked(), QStringList({asks, givesBack}));
    }

    void whatTheFirstServiceGaveIsNotGivenBackToTheSecond()
    {
        ScreenSaver saver;
        {
            const FakeScreenSaver service(QStringLiteral("first"));
            saver.setInhibited(true);
            QTRY_COMPARE(service.held(), QList<uint>{1});
        }
        const FakeScreenSaver service(QStringLiteral("second"), FakeScreenSaver::Refuses);
        QTRY_COMPARE(service.asked(), QStringList(asks));
        saver.setInhibited(false);
        letEverythingArrive();
        QCOMPARE(service.asked(), QStringList(asks));
    }

    void givesBackAtItsEnd()
    {
        const FakeScreenSaver service(QStringLiteral("service"));
        {
            ScreenSaver saver;
            saver.setInhibited(true);
            QTRY_COMPARE(service.held(), QList<uint>{1});
            letEverythingArrive();
        }
        QTRY_COMPARE(service.asked(), QStringList({asks, givesBack}));
    }

    void itsEndIsNoMatterWhenTheAnswerIsAwaited()
    {
        FakeScreenSaver service(QStringLiteral("service"), FakeScreenSaver::AnswersWhenTold);
        {
            ScreenSaver saver;
            saver.setInhibited(true);
            QTRY_COMPARE(service.asked(), QStringList(asks));
        }
        service.answer();
        letEverythingArrive();
    }

    void withoutABusNothingHappens()
    {
        const QByteArray bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
        ScreenSaver saver;
        saver.setInhibited(true);
        saver.setInhibited(false);
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
        // The next video finds one.
        const FakeScreenSaver service(QStringLiteral("service"));
        saver.setInhibited(true);
        QTRY_COMPARE(service.held(), QList<uint>{1});
    }

    void aBusThatGoesIsLeftAndTheNextOneTaken()
    {
        const QByteArray before = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        ScreenSaver saver;
        {
            PrivateBus bus;
            const FakeScreenSaver service(QStringLiteral("first"));
            saver.setInhibited(true);
            QTRY_COMPARE(service.held(), QList<uint>{1});
            bus.kill();
            letEverythingArrive();
        }
        qputenv("DBUS_SESSION_BUS_ADDRESS", before);
        const FakeScreenSaver service(QStringLiteral("second"));
        saver.setInhibited(false);
        saver.setInhibited(true);
        QTRY_COMPARE(service.held(), QList<uint>{1});
    }

    void aBusThatHangsIsNotWaitedFor()
    {
        const QByteArray before = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        PrivateBus bus;
        ::kill(pid_t(bus.pid()), SIGSTOP);
        QElapsedTimer clock;
        clock.start();
        {
            ScreenSaver saver;
            saver.setInhibited(true);
            saver.setInhibited(false);
            saver.setInhibited(true);
        }
        QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
        ::kill(pid_t(bus.pid()), SIGCONT);
        qputenv("DBUS_SESSION_BUS_ADDRESS", before);
    }

    void theLockFollowsTheRenderers()
    {
        const FakeScreenSaver service(QStringLiteral("service"));
        KelvoRegistry registry;
        RecordingRenderer renderer(QStringLiteral("renderer"));
        const ScreenLock lock(&registry);
        registry.addRenderer(&renderer);
        Q_EMIT renderer.kelvoPropertyChanged(KelvoRenderer::PropertyXid, 7U);
        Q_EMIT renderer.metadataChanged(QStringLiteral("video-output"), {QStringLiteral("ximagesink")});
        letEverythingArrive();
        QCOMPARE(service.asked(), QStringList());
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        QTRY_COMPARE(service.held(), QList<uint>{1});
        Q_EMIT renderer.stateChanged(KelvoRenderer::Paused);
        QTRY_COMPARE(service.asked(), QStringList({asks, givesBack}));
    }
};

KELVO_TEST(ScreenSaverTest)
#include "ScreenSaverTest.moc"
