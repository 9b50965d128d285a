// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QTest>

/// The automatic audio output, which on a machine without a sound card is a silent clock.
class GstNoDeviceTest : public GstTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init() { GstTestCase::init(); }

    void playsInRealTime()
    {
        QElapsedTimer time;
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        TRY_STATE(Playing);
        time.start();
        QVERIFY(!heard().metadata(QStringLiteral("audio-output")).toString().isEmpty());
        QTRY_COMPARE(heard().completed(), 1);
        QVERIFY(time.elapsed() > 850);
        QCOMPARE(heard().errors(), QList<int>());
    }

    void brokenOutputFallsBack()
    {
        // A device that cannot exist.
        qputenv("KELVO_AUDIO_SINK", "alsasink device=hw:77,77");
        cleanup();
        QVERIFY(loadRenderer());
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().errors(), QList<int>{KelvoError::AudioOutputFailed});
    }

    void unknownOutputFallsBack()
    {
        qputenv("KELVO_AUDIO_SINK", "nosuchelement");
        cleanup();
        QVERIFY(loadRenderer());
        QTest::ignoreMessage(QtWarningMsg,
            QRegularExpression(QStringLiteral("The audio output \"nosuchelement\" cannot be used")));
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().errors(), QList<int>());
    }
};

KELVO_TEST(GstNoDeviceTest)
#include "GstNoDeviceTest.moc"
