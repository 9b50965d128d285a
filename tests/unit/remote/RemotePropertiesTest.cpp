// SPDX-License-Identifier: MIT
// A player's abilities and the renderer's properties.
#include "RemoteCase.h"
#include "TestGroup.h"

namespace {
class RemotePropertiesTest : public RemoteCase
{
    Q_OBJECT
private Q_SLOTS:
    void tellsWhatThePlayerCannot_data();
    void tellsWhatThePlayerCannot();
    void pauseAtIsJudgedWhenItActs_data();
    void pauseAtIsJudgedWhenItActs();
    void pauseIsJudgedOnceThePlayerHasTheItem();
    void refusesASpeedThatThePlayerHasNot();
    void takesNoNoticeOfTheWindow_data();
    void takesNoNoticeOfTheWindow();
    void hasNoPolicyOverride();
    void reportsTheVolumeItWasGiven();
    void reportsTheSameVolumeToo();
    void reportsVolumeSetElsewhere();
    void takesTheSpeedAlong();
    void refusedCommandsAreErrors();
    void renamesItself();
};

void RemotePropertiesTest::tellsWhatThePlayerCannot_data()
{
    QTest::addColumn<int>("what");
    QTest::addColumn<int>("code");
    QTest::newRow("pause") << 0 << int(KelvoError::NotSupported);
    QTest::newRow("pauseAt") << 1 << int(KelvoError::NotSupported);
    QTest::newRow("seek") << 2 << int(KelvoError::NotSeekable);
    QTest::newRow("volume") << 3 << int(KelvoError::NotSupported);
}

void RemotePropertiesTest::tellsWhatThePlayerCannot()
{
    QFETCH(int, what);
    QFETCH(int, code);
    playing();
    m_transport->can = {false, false, false, 1.0, 1.0};
    if (what == 0)
        m_renderer->pause();
    else if (what == 1)
        m_renderer->pauseAt(3);
    else if (what == 2)
        m_renderer->setPosition(3, KelvoRenderer::SeekAbsolute);
    else
        m_renderer->setKelvoProperty("volume", 3);
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(int(m_heard->errors.constFirst().code()), code);
    QVERIFY(!m_heard->errors.constFirst().message().isEmpty());
    QCOMPARE(m_transport->calls, QStringList());
    QCOMPARE(m_heard->states, States());
}

void RemotePropertiesTest::pauseAtIsJudgedWhenItActs_data()
{
    QTest::addColumn<bool>("canPauseThen");
    QTest::newRow("can") << true;
    QTest::newRow("cannot") << false;
}

// Of a player that is stopped nobody knows yet whether it can pause what it will play.
void RemotePropertiesTest::pauseAtIsJudgedWhenItActs()
{
    QFETCH(bool, canPauseThen);
    m_transport->can.pause = false;
    m_renderer->pauseAt(3);
    flush();
    QCOMPARE(m_heard->errors.size(), 0);
    playing();
    m_transport->can.pause = canPauseThen;
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 2);
    QCOMPARE(m_heard->errors.size(), 0);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 3);
    flush();
    QCOMPARE(m_transport->calls, canPauseThen ? QStringList{"pause"} : QStringList());
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), canPauseThen ? 0 : 1);
    // Once: it plays on.
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 4);
    flush();
    QCOMPARE(m_heard->errors.size(), canPauseThen ? 0 : 1);
    QCOMPARE(m_heard->states, States());
}

void RemotePropertiesTest::pauseIsJudgedOnceThePlayerHasTheItem()
{
    m_transport->can.pause = false;
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->pause();
    flush();
    QCOMPARE(m_heard->errors.size(), 0);
    say(Playing);
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), 1);
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    m_renderer->playUri(QUrl("http://media/other"));
    m_renderer->pause();
    m_transport->can.pause = true;
    say(Playing);
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("pause"));
}

void RemotePropertiesTest::refusesASpeedThatThePlayerHasNot()
{
    playing();
    m_renderer->setKelvoProperty("playback-speed", 8.0);
    m_renderer->setKelvoProperty("playback-speed", -1.0);
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), 2);
    QVERIFY(m_heard->errors.constFirst().message().contains(QLatin1String("0.5 to 2")));
    m_renderer->setKelvoProperty("playback-speed", 2.0);
    QCOMPARE(m_transport->calls, QStringList{"rate 2"});
    Q_EMIT m_transport->rateReported(2.0);
    flush();
    QCOMPARE(m_heard->property("playback-speed"), QVariant(2.0));
}

void RemotePropertiesTest::takesNoNoticeOfTheWindow_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("errors");
    QTest::newRow("xid") << "xid" << QVariant(1U) << 0;
    QTest::newRow("autopaint") << "autopaint" << QVariant(true) << 0;
    QTest::newRow("render-rectangle") << "render-rectangle" << QVariant(QStringLiteral("0,0,1,1")) << 0;
    QTest::newRow("current-frame-on-pause") << "current-frame-on-pause" << QVariant(true) << 1;
}

// The console offers its window to every renderer that is chosen; a frame is only asked for by a tester.
void RemotePropertiesTest::takesNoNoticeOfTheWindow()
{
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    QFETCH(int, errors);
    // But that it was chosen, it takes from it.
    m_heard->expectSameState();
    m_renderer->setKelvoProperty(name, value);
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), errors);
    QCOMPARE(m_heard->errors.size(), errors);
}

void RemotePropertiesTest::hasNoPolicyOverride()
{
    m_renderer->kelvoProperty("policy-override", m_heard.get(), "propertyAnswer(QString,QVariant)");
    m_renderer->setKelvoProperty("policy-override", true);
    flush();
    QTRY_COMPARE(m_heard->propertyAnswers.size(), 1);
    QVERIFY(!m_heard->propertyAnswers.constFirst().second.isValid());
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), 1);
}

void RemotePropertiesTest::reportsTheVolumeItWasGiven()
{
    m_renderer->setKelvoProperty("volume", 42);
    flush();
    QCOMPARE(m_heard->properties.size(), 0);
    Q_EMIT m_transport->volumeReported(42);
    Q_EMIT m_transport->volumeReported(42);
    flush();
    QCOMPARE(m_heard->properties.size(), 1);
    QCOMPARE(m_heard->property("volume"), QVariant(42U));
}

void RemotePropertiesTest::reportsTheSameVolumeToo()
{
    Q_EMIT m_transport->volumeReported(42);
    flush();
    m_heard->clear();
    m_renderer->setKelvoProperty("volume", 42);
    flush();
    QCOMPARE(m_heard->property("volume"), QVariant(42U));
}

void RemotePropertiesTest::reportsVolumeSetElsewhere()
{
    Q_EMIT m_transport->volumeReported(42);
    Q_EMIT m_transport->volumeReported(43);
    flush();
    QCOMPARE(m_heard->properties.size(), 2);
    QCOMPARE(m_heard->property("volume"), QVariant(43U));
}

void RemotePropertiesTest::takesTheSpeedAlong()
{
    m_renderer->setKelvoProperty("playback-speed", 1.5);
    QCOMPARE(m_transport->calls, QStringList());
    m_renderer->playUri(QUrl("http://media/song"));
    QCOMPARE(m_transport->items.constFirst().rate, 1.5);
    m_transport->can = {true, true, true, 1.0, 1.0};
    m_renderer->playUri(QUrl("http://media/other"));
    flush();
    QCOMPARE(m_transport->items.constLast().rate, 1.0);
    QCOMPARE(m_heard->property("playback-speed"), QVariant(1.0));
}

void RemotePropertiesTest::refusedCommandsAreErrors()
{
    playing();
    m_renderer->setKelvoProperty("volume", 3);
    Q_EMIT m_transport->troubled(KelvoError::Timeout, QStringLiteral("Volume of Player: no answer"));
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::Timeout), 1);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("Volume of Player: no answer"));
    QCOMPARE(m_heard->states, States());
    QCOMPARE(m_heard->properties.size(), 0);
}

void RemotePropertiesTest::renamesItself()
{
    QStringList names;
    connect(m_renderer.get(), &KelvoRenderer::nameChanged, this, [&](const QString &name) { names << name; });
    Q_EMIT m_transport->nameReported(QStringLiteral("Player"));
    Q_EMIT m_transport->nameReported(QStringLiteral("Kitchen"));
    QCOMPARE(names, QStringList());
    flush();
    QCOMPARE(names, QStringList{"Kitchen"});
    QCOMPARE(m_renderer->name(), QStringLiteral("Kitchen"));
}
} // namespace

KELVO_TEST(RemotePropertiesTest)
#include "RemotePropertiesTest.moc"
