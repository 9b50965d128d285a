// SPDX-License-Identifier: MIT
// The texts of devices, and what is made of careless and broken ones.
#include "UpnpText.h"
#include "DeviceHealth.h"
#include "GlibLog.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QLoggingCategory>
#include <QTest>

#include <libxml/xmlerror.h>

namespace {
using State = KelvoRenderer::State;

class UpnpTextTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void readsTimes_data();
    void readsTimes();
    void writesTimes();
    void readsActionsWithEscapedCommas();
    void readsSpeeds();
    void choosesTheNearestSpeed();
    void readsStates();
    void mapsVolumes();
    void knowsTheSameAddress();
    void cleansTexts();
    void cutsWhatIsSaidOfBrokenXml();
    void healthHidesASilentDevice();
    void healthForgivesOneLostAnswer();
};

void UpnpTextTest::readsTimes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("seconds"); // below 0: none
    const QList<QPair<const char *, double>> rows = {{"0:00:05", 5}, {"1:02:03", 3723}, {"01:02:03", 3723},
        {"0:00:01.500", 1.5}, {"0:00:01.5", 1.5}, {"0:00:10.1/2", 10.5}, {" 0:00:05 ", 5}, {"+0:00:05", 5},
        {"0:0:7", 7}, {"100:00:00", 360000}, {"8784:00:00", 31'622'400}, {"8784:00:01", -1}, {"", -1},
        {"NOT_IMPLEMENTED", -1}, {"2147483647", -1}, {"-0:00:05", -1}, {"0:61:00", -1}, {"0:00:60", -1},
        {"596523:14:07", -1}, {"99999999999:00:00", -1}, {"0:00:01.5/0", 1}, {"1:2", -1}, {"0:00:05x", -1},
        {"\x01", -1}, {"::", -1}};
    for (const auto &[text, seconds] : rows)
        QTest::addRow("'%s'", text) << QString::fromLatin1(text) << seconds;
    QTest::addRow("long") << QStringLiteral("0:00:0") + QString(100'000, QLatin1Char('0')) << -1.0;
}

void UpnpTextTest::readsTimes()
{
    QFETCH(QString, text);
    QFETCH(double, seconds);
    QCOMPARE(UpnpText::parseTime(text).value_or(-1), seconds);
}

void UpnpTextTest::writesTimes()
{
    QCOMPARE(UpnpText::formatTime(0), QStringLiteral("0:00:00"));
    QCOMPARE(UpnpText::formatTime(3723), QStringLiteral("1:02:03"));
    QCOMPARE(UpnpText::formatTime(1.5), QStringLiteral("0:00:01.500"));
    QCOMPARE(UpnpText::formatTime(59.9999), QStringLiteral("0:01:00"));
    QCOMPARE(UpnpText::formatTime(-3), QStringLiteral("0:00:00"));
    QCOMPARE(UpnpText::formatTime(1e12), QStringLiteral("8784:00:00")); // A year, the longest.
}

void UpnpTextTest::readsActionsWithEscapedCommas()
{
    QCOMPARE(
        UpnpText::parseActions(QStringLiteral("PAUSE,STOP,SEEK")), (QSet<QString>{"pause", "stop", "seek"}));
    QCOMPARE(UpnpText::parseActions(QStringLiteral(R"(Stop, Pause,Seek,X_DLNA_PS=1/16\,1/8,)")),
        (QSet<QString>{"pause", "stop", "seek", R"(x_dlna_ps=1/16\,1/8)"}));
    QVERIFY(UpnpText::parseActions({}).isEmpty());
}

void UpnpTextTest::readsSpeeds()
{
    QCOMPARE(UpnpText::parseSpeed(QStringLiteral("1")).value(), 1.0);
    QCOMPARE(UpnpText::parseSpeed(QStringLiteral("-1/2")).value(), -0.5);
    QCOMPARE(UpnpText::parseSpeed(QStringLiteral("2.0")).value(), 2.0);
    for (const char *text : {"", "0", "fast", "1/0", "1/2/3", "nan", "inf"})
        QVERIFY2(!UpnpText::parseSpeed(QString::fromLatin1(text)), text);
}

void UpnpTextTest::choosesTheNearestSpeed()
{
    const QStringList allowed = {"1/2", "1", "2", "-1", "nonsense"};
    QCOMPARE(UpnpText::nearestSpeed(allowed, 1.9), QStringLiteral("2"));
    QCOMPARE(UpnpText::nearestSpeed(allowed, 0.6), QStringLiteral("1/2"));
    QCOMPARE(UpnpText::nearestSpeed(allowed, -2), QStringLiteral("-1"));
    QCOMPARE(UpnpText::nearestSpeed({}, 2), QStringLiteral("1"));
}

void UpnpTextTest::readsStates()
{
    const QList<QPair<const char *, State>> rows
        = {{"STOPPED", State::Stopped}, {"NO_MEDIA_PRESENT", State::Stopped}, {"PLAYING", State::Playing},
            {"Paused_Playback", State::Paused}, {"TRANSITIONING", State::Transitioning}};
    for (const auto &[text, state] : rows)
        QCOMPARE(UpnpText::parseState(QString::fromLatin1(text)).value(), state);
    QVERIFY(!UpnpText::parseState(QStringLiteral("X_BUFFERING")));
    QVERIFY(!UpnpText::parseState({}));
}

void UpnpTextTest::mapsVolumes()
{
    QCOMPARE(UpnpText::toDeviceVolume(0, 0, 100), 0);
    QCOMPARE(UpnpText::toDeviceVolume(99, 0, 100), 100);
    QCOMPARE(UpnpText::toDeviceVolume(500, 0, 100), 100);
    QCOMPARE(UpnpText::toDeviceVolume(99, 3, 20), 20);
    QCOMPARE(UpnpText::fromDeviceVolume(150, 0, 100), 99);
    QCOMPARE(UpnpText::fromDeviceVolume(-5, 0, 100), 0);
    QCOMPARE(UpnpText::fromDeviceVolume(5, 7, 7), 0);
    for (int volume = 0; volume <= 99; ++volume)
        QCOMPARE(UpnpText::fromDeviceVolume(UpnpText::toDeviceVolume(volume, 0, 100), 0, 100), volume);
}

void UpnpTextTest::knowsTheSameAddress()
{
    QVERIFY(UpnpText::isSameUri("http://h/a%20b", "http://h/a b"));
    QVERIFY(UpnpText::isSameUri("http://h/%C3%BC", QStringLiteral("http://h/\u00fc")));
    QVERIFY(!UpnpText::isSameUri("http://h/a", "http://h/b"));
}

void UpnpTextTest::cleansTexts()
{
    QCOMPARE(UpnpText::cleaned(QStringLiteral("a\u0001b\tc")), QStringLiteral("ab c"));
    QCOMPARE(UpnpText::cleaned(QString(QChar(0xd800)) + QLatin1Char('x')), QStringLiteral("x"));
    QCOMPARE(UpnpText::cleaned(QStringLiteral("\U0001F3B5")), QStringLiteral("\U0001F3B5"));
    QCOMPARE(UpnpText::cleaned(QString(1'000'000, QLatin1Char('x'))).size(), 4000);
}

void UpnpTextTest::cutsWhatIsSaidOfBrokenXml()
{
    QLoggingCategory::setFilterRules(QStringLiteral("kelvo.debug=true"));
    GlibLog::catchXmlErrors();
    const LogRecorder log;
    xmlGenericError(xmlGenericErrorContext, "%s", "short");
    xmlGenericError(xmlGenericErrorContext, "%s", QByteArray(5000, 'x').constData());
    QCOMPARE(log.lines(),
        QStringList({"XML of a device: short", "XML of a device: " + QString(499, QLatin1Char('x'))}));
}

void UpnpTextTest::healthHidesASilentDevice()
{
    DeviceHealth health(0);
    QVERIFY(health.isShown(0));
    QVERIFY(health.isPollDue(1000));
    health.answered(1000);
    QVERIFY(!health.isPollDue(4000));
    QVERIFY(health.isPollDue(5000));
    health.failed(5000);
    QCOMPARE(health.state(), DeviceHealth::Responding);
    QVERIFY(health.isPollDue(6000));
    health.failed(6000);
    QCOMPARE(health.state(), DeviceHealth::NotResponding);
    QVERIFY(health.isShown(10'999));
    QVERIFY(!health.isShown(11'000));
    QVERIFY(health.isPollDue(11'000));
    health.answered(12'000);
    QCOMPARE(health.state(), DeviceHealth::Responding);
    QVERIFY(health.isShown(12'000));
}

void UpnpTextTest::healthForgivesOneLostAnswer()
{
    DeviceHealth health(0);
    health.answered(1000);
    health.failed(5000);
    health.answered(6000);
    health.failed(10'000);
    QVERIFY(health.isShown(60'000));
}
} // namespace

KELVO_TEST(UpnpTextTest)
#include "UpnpTextTest.moc"
