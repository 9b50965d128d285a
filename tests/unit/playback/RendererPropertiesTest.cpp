// SPDX-License-Identifier: MIT
// What values the properties of a renderer take.
#include "RendererProperties.h"
#include "KelvoRenderer.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <limits>

namespace {
const QVariant refused;

class RendererPropertiesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void table_data();
    void table();
    void accepts_data();
    void accepts();
    void takesTextsWhereAsked_data();
    void takesTextsWhereAsked();
    void engineMakesSettable();
    void wantsWhatIsAwaited();
};

void RendererPropertiesTest::table_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("initial");
    QTest::addColumn<bool>("isSettable");
    QTest::addColumn<bool>("isOfWindow");
    QTest::newRow("auto-advance") << "auto-advance" << QVariant(true) << true << false;
    QTest::newRow("policy-override") << "policy-override" << QVariant(false) << false << false;
    QTest::newRow("xid") << "xid" << QVariant(0U) << true << true;
    QTest::newRow("autopaint") << "autopaint" << QVariant(true) << true << true;
    QTest::newRow("render-rectangle") << "render-rectangle" << QVariant(QString()) << true << true;
    QTest::newRow("colorkey") << "colorkey" << QVariant(0U) << false << false;
    QTest::newRow("current-frame-on-pause") << "current-frame-on-pause" << QVariant(false) << true << false;
    QTest::newRow("playback-speed") << "playback-speed" << QVariant(1.0) << true << false;
    QTest::newRow("volume") << "volume" << QVariant(99U) << true << false;
    QTest::newRow("position") << "position" << QVariant() << false << false;
    QTest::newRow("unknown") << "no such property" << QVariant() << false << false;
    QTest::newRow("empty") << "" << QVariant() << false << false;
}

void RendererPropertiesTest::table()
{
    QFETCH(QString, name);
    QFETCH(QVariant, initial);
    QFETCH(bool, isSettable);
    QFETCH(bool, isOfWindow);
    const RendererProperties properties;
    QCOMPARE(properties.value(name), initial);
    QCOMPARE(properties.value(name).typeId(), initial.typeId());
    QCOMPARE(properties.wanted(name), initial);
    QCOMPARE(properties.isSettable(name), isSettable);
    QCOMPARE(RendererProperties::isOfWindow(name), isOfWindow);
}

void RendererPropertiesTest::accepts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("accepted");
    const QString rectangle = QStringLiteral("517,84,320,240");
    const QList<std::tuple<const char *, QVariant, QVariant>> values{
        {"volume", 0, 0U},
        {"volume", 99U, 99U},
        {"volume", 42.0, 42U},
        {"volume", qlonglong(7), 7U},
        {"volume", 100, refused},
        {"volume", -1, refused},
        {"volume", 41.5, refused},
        {"volume", qQNaN(), refused},
        {"volume", true, refused},
        {"volume", "42", refused},
        {"volume", QVariant(), refused},
        {"playback-speed", 1.0, 1.0},
        {"playback-speed", 2, 2.0},
        {"playback-speed", -64.0, -64.0},
        {"playback-speed", 64.0, 64.0},
        {"playback-speed", 0.001, 0.001},
        {"playback-speed", 0.0, refused},
        {"playback-speed", 64.1, refused},
        {"playback-speed", -65, refused},
        {"playback-speed", qInf(), refused},
        {"playback-speed", qQNaN(), refused},
        {"playback-speed", true, refused},
        {"playback-speed", "2", refused},
        {"auto-advance", true, true},
        {"auto-advance", false, false},
        {"auto-advance", 1, refused},
        {"auto-advance", "true", refused},
        {"autopaint", false, false},
        {"current-frame-on-pause", true, true},
        {"current-frame-on-pause", QVariantList(), refused},
        {"policy-override", true, true},
        {"policy-override", 1, refused},
        {"xid", 0U, 0U},
        {"xid", 4294967295U, 4294967295U},
        {"xid", qlonglong(4294967296), refused},
        {"xid", -1, refused},
        {"xid", "window", refused},
        {"colorkey", 0x123456, 0x123456U},
        {"colorkey", -1, refused},
        {"colorkey", "red", refused},
        {"render-rectangle", rectangle, rectangle},
        {"render-rectangle", QStringLiteral("-5,-6,0,0"), QStringLiteral("-5,-6,0,0")},
        {"render-rectangle", QStringLiteral("1,2,3"), refused},
        {"render-rectangle", QStringLiteral("1,2,-3,4"), refused},
        {"render-rectangle", QStringLiteral("1,2,3,4\n"), refused},
        {"render-rectangle", QStringLiteral("1, 2,3,4"), refused},
        {"render-rectangle", QStringLiteral("x1,2,3,4"), refused},
        {"render-rectangle", QStringLiteral("1,2,3,1234567"), refused},
        {"render-rectangle", QString(), refused},
        {"render-rectangle", 1234, refused},
        {"position", 3.0, refused},
        {"no such property", 1, refused},
    };
    for (const auto &[name, value, accepted] : values) {
        QTest::addRow("%s = %s (%s)", name, qPrintable(value.toString()), value.typeName())
            << QString(name) << value << accepted;
    }
}

void RendererPropertiesTest::accepts()
{
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    QFETCH(QVariant, accepted);
    const std::optional<QVariant> taken = RendererProperties().accepted(name, value);
    QCOMPARE(taken.has_value(), accepted.isValid());
    QCOMPARE(taken.value_or(QVariant()), accepted);
    QCOMPARE(taken.value_or(QVariant()).typeId(), accepted.typeId());
}

void RendererPropertiesTest::takesTextsWhereAsked_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("accepted");
    QTest::newRow("number") << "volume"
                            << "42" << QVariant(42U);
    QTest::newRow("out of range") << "volume"
                                  << "100" << refused;
    QTest::newRow("no number") << "volume"
                               << "loud" << refused;
    QTest::newRow("flag for a number") << "volume"
                                       << "true" << refused;
    QTest::newRow("fraction") << "playback-speed"
                              << "-1.5" << QVariant(-1.5);
    QTest::newRow("on") << "policy-override"
                        << "true" << QVariant(true);
    QTest::newRow("off") << "auto-advance"
                         << "false" << QVariant(false);
    QTest::newRow("number for a flag") << "auto-advance"
                                       << "1" << refused;
    QTest::newRow("window") << "xid"
                            << "12345" << QVariant(12345U);
    QTest::newRow("rectangle") << "render-rectangle"
                               << "1,2,3,4" << QVariant(QStringLiteral("1,2,3,4"));
    QTest::newRow("number for a rectangle") << "render-rectangle"
                                            << "12" << refused;
}

void RendererPropertiesTest::takesTextsWhereAsked()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QVariant, accepted);
    RendererProperties properties;
    properties.takeTexts();
    const std::optional<QVariant> taken = properties.accepted(name, text);
    QCOMPARE(taken.value_or(QVariant()), accepted);
    QCOMPARE(taken.value_or(QVariant()).typeId(), accepted.typeId());
}

void RendererPropertiesTest::engineMakesSettable()
{
    RendererProperties properties;
    properties.makeSettable(QStringLiteral("policy-override"));
    QVERIFY(properties.isSettable(QStringLiteral("policy-override")));
    QVERIFY(!properties.isSettable(QStringLiteral("colorkey")));
    properties.setInitial(QStringLiteral("volume"), {});
    QVERIFY(!properties.value(QStringLiteral("volume")).isValid());
}

void RendererPropertiesTest::wantsWhatIsAwaited()
{
    const QString speed = KelvoRenderer::PropertyPlaybackSpeed;
    RendererProperties properties;
    properties.await(speed, 2.0);
    QCOMPARE(properties.value(speed), QVariant(1.0));
    QCOMPARE(properties.wanted(speed), QVariant(2.0));
    properties.set(speed, 1.5);
    QCOMPARE(properties.wanted(speed), QVariant(1.5));
    properties.await(speed, 4.0);
    properties.awaitNothing();
    QCOMPARE(properties.wanted(speed), QVariant(1.5));
}
} // namespace

KELVO_TEST(RendererPropertiesTest)
#include "RendererPropertiesTest.moc"
