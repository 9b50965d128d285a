// SPDX-License-Identifier: MIT
#include "KelvoError.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QSet>
#include <QTest>

class ErrorTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void keepsCodeAndMessage()
    {
        const KelvoError error(KelvoError::Stalled, "no data for 20 s");
        QCOMPARE(error.code(), KelvoError::Stalled);
        QCOMPARE(error.message(), "no data for 20 s");
        QCOMPARE(KelvoError().code(), KelvoError::NoError);
    }

    // Testers write the numbers into their reports.
    void numbersAreFixed()
    {
        QCOMPARE(int(KelvoError::NoError), 0);
        QCOMPARE(int(KelvoError::UnknownError), 1);
        QCOMPARE(int(KelvoError::NotFound), 100);
        QCOMPARE(int(KelvoError::PartlyPlayable), 109);
        QCOMPARE(int(KelvoError::OnAnotherMachine), 110);
        QCOMPARE(int(KelvoError::NetworkFailed), 200);
        QCOMPARE(int(KelvoError::DeviceGone), 204);
        QCOMPARE(int(KelvoError::InvalidUrl), 300);
        QCOMPARE(int(KelvoError::CommandRefused), 310);
        QCOMPARE(int(KelvoError::AudioOutputFailed), 400);
        QCOMPARE(int(KelvoError::EngineFailed), 402);
    }

    void describesEveryCodeButTheTwoGeneralOnes()
    {
        QSet<QString> texts;
        int described = 0;
        for (int code = 0; code < 1000; ++code) {
            const QString text = KelvoError::codeToString(KelvoError::Code(code));
            if (text.isEmpty())
                continue;
            QVERIFY2(code >= 100, qPrintable(QString::number(code)));
            texts.insert(text);
            ++described;
        }
        QCOMPARE(described, 30);
        QCOMPARE(texts.size(), described);
    }

    void hasNoDescriptionForOthers()
    {
        QCOMPARE(KelvoError::codeToString(KelvoError::NoError), QString());
        QCOMPARE(KelvoError::codeToString(KelvoError::UnknownError), QString());
        QCOMPARE(KelvoError::codeToString(KelvoError::Code(99)), QString());
        QCOMPARE(KelvoError::codeToString(KelvoError::Code(-5)), QString());
    }
};

KELVO_TEST(ErrorTest)
#include "ErrorTest.moc"
