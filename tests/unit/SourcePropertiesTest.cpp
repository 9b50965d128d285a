// SPDX-License-Identifier: MIT
#include "SourceControllerCase.h"
#include "TestGroup.h"

#include <QPushButton>

namespace {
QStringList requests(const QStringList &keys)
{
    QStringList calls;
    for (const QString &key : keys)
        calls.append("kelvoProperty(" + key + ')');
    return calls;
}
} // namespace

// The properties of sources, one by one.
class SourcePropertiesTest : public SourceControllerCase
{
    Q_OBJECT
private Q_SLOTS:
    void propertiesAreAskedInTheirOrderOneByOne()
    {
        enter("second", m_controller);
        QStringList lines;
        for (const QString &key : PropertyKeys) {
            QCOMPARE(m_second->takeCalls(), requests({key}));
            QVERIFY(m_second->answer(key + " value"));
            lines.append(key + ": " + key + " value");
            QTRY_COMPARE(propertiesText(), lines.join('\n'));
        }
        QCOMPARE(m_second->takeCalls(), QStringList());
    }

    void refusedPropertiesAreSkipped()
    {
        LogRecorder log;
        enter("first", m_controller);
        QCOMPARE(m_first->takeCalls(), requests(PropertyKeys.mid(0, 3)));
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::invokeGetProperties",
                "KelvoSourceController::getNextSourceProperty 0",
                "KelvoSourceController::getNextSourceProperty 1",
                "KelvoSourceController::getNextSourceProperty 2"}));
        QVERIFY(m_first->answer("box"));
        QTRY_COMPARE(propertiesText(), QStringLiteral("deviceType: box"));
        QCOMPARE(m_first->takeCalls(), requests(PropertyKeys.mid(3)));
        QVERIFY(m_first->answer(true));
        QTRY_COMPARE(propertiesText(), QStringLiteral("deviceType: box\nsupportQuery: true"));
        QCOMPARE(log.count("KelvoSourceController::getNextSourceProperty 14"), 0);
    }

    void valuesShowAsTheirTexts_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("text") << QVariant("X") << "deviceType: X";
        QTest::newRow("true") << QVariant(true) << "deviceType: true";
        QTest::newRow("false") << QVariant(false) << "deviceType: false";
        QTest::newRow("number") << QVariant(17) << "deviceType: 17";
        QTest::newRow("no text") << QVariant(QVariantMap{{"a", 1}}) << "deviceType: ";
        QTest::newRow("none") << QVariant() << "deviceType: ";
        QTest::newRow("placeholders") << QVariant("%1 %2") << "deviceType: %1 %2";
        QTest::newRow("markup") << QVariant("<b>x</b>") << "deviceType: <b>x</b>";
    }

    void valuesShowAsTheirTexts()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        enter("first", m_controller);
        QVERIFY(m_first->answer(value));
        QTRY_COMPARE(propertiesText(), text);
    }

    void propertiesOfAnUnknownNameStopSilently_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("none") << "unknown";
        QTest::newRow("other case") << "First";
        QTest::newRow("empty") << "";
    }

    void propertiesOfAnUnknownNameStopSilently()
    {
        QFETCH(QString, name);
        enter("first", m_controller);
        m_first->takeCalls();
        LogRecorder log;
        enter(name, m_controller);
        QCOMPARE(log.lines(), QStringList("KelvoSourceController::invokeGetProperties"));
        QCOMPARE(m_first->takeCalls(), QStringList());
        m_controller->invokeSignIn();
        QCOMPARE(m_first->takeCalls(), QStringList());
    }

    void theFirstSourceOfANameIsAsked()
    {
        RecordingSource twin("s4", "second");
        KelvoRegistry::instance()->addSource(&twin);
        enter("second", m_controller);
        QCOMPARE(m_second->takeCalls(), requests({"signIn"}));
        QCOMPARE(twin.takeCalls(), QStringList());
    }

    void aNewWalkSharesItsPlaceWithTheAnswersOfTheOld()
    {
        enter("second", m_controller);
        enter("second", m_controller);
        QCOMPARE(m_second->takeCalls(), requests({"signIn", "signIn"}));
        QVERIFY(m_second->answer(false));
        QVERIFY(m_second->answer(false));
        QTRY_COMPARE(propertiesText(), QStringLiteral("signIn: false\nsignIn: false"));
        QCOMPARE(m_second->takeCalls(), requests({"signedIn", "deviceType"}));
    }

    void aSourceThatVanishesEndsTheWalk()
    {
        enter("second", m_controller);
        QVERIFY(m_second->answer("x"));
        m_second.reset();
        QTRY_COMPARE(propertiesText(), QStringLiteral("signIn: x"));
        m_controller->invokeSignIn();
        m_controller->getNextSourceProperty();
    }

    void signInAndOut()
    {
        enter("third", m_controller);
        m_third->takeCalls();
        LogRecorder log;
        m_controller->invokeSignIn();
        m_controller->invokeSignOut();
        QCOMPARE(m_third->takeCalls(),
            QStringList({"setKelvoProperty(signIn,bool,true)", "setKelvoProperty(signIn,bool,false)"}));
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::invokeSignIn", "KelvoSourceController::invokeSignOut"}));
    }

    void signInWithoutAChosenSourceDoesNothing()
    {
        m_controller->invokeSignIn();
        m_controller->invokeSignOut();
        QCOMPARE(m_first->takeCalls() + m_second->takeCalls() + m_third->takeCalls(), QStringList());
    }

    void thePropertiesDialogAsksAtOnce()
    {
        ModalCloser closer;
        closer.whenOpen = [this](QWidget *dialog) {
            QCOMPARE(m_first->takeCalls(), requests(PropertyKeys.mid(0, 3)));
            auto *combo = dialog->findChild<QComboBox *>("m_sourceCombo");
            QCOMPARE(combo->count(), 3);
            QVERIFY(m_first->answer("box"));
            QTRY_COMPARE(propertiesText(), QStringLiteral("deviceType: box"));
            combo->setCurrentIndex(1);
            QCOMPARE(propertiesText(), QString());
            QCOMPARE(m_second->takeCalls(), requests({"signIn"}));
            dialog->findChild<QPushButton *>("m_signInButton")->click();
            dialog->findChild<QPushButton *>("m_signOutButton")->click();
            QCOMPARE(m_second->takeCalls(),
                QStringList({"setKelvoProperty(signIn,bool,true)", "setKelvoProperty(signIn,bool,false)"}));
        };
        find<QAction>("m_actionSourceProperties")->trigger();
        QCOMPARE(closer.seen(), QStringList("Source properties"));
    }

    void thePropertiesDialogIsConnectedOnceHoweverOftenItOpens()
    {
        ModalCloser closer;
        for (int i = 0; i < 3; ++i)
            m_controller->showSourceProperties();
        LogRecorder log;
        closer.whenOpen = [](QWidget *dialog) {
            dialog->findChild<QComboBox *>("m_sourceCombo")->setCurrentIndex(2);
            dialog->findChild<QPushButton *>("m_signInButton")->click();
            dialog->findChild<QPushButton *>("m_signOutButton")->click();
        };
        m_third->takeCalls();
        m_controller->showSourceProperties();
        QCOMPARE(m_third->takeCalls(),
            requests(PropertyKeys)
                + QStringList({"setKelvoProperty(signIn,bool,true)", "setKelvoProperty(signIn,bool,false)"}));
        // The emptied list, its new first entry and the choice above.
        QCOMPARE(log.count("KelvoSourceController::invokeGetProperties"), 3);
    }
};

KELVO_WIDGET_TEST(SourcePropertiesTest)
#include "SourcePropertiesTest.moc"
