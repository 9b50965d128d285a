// SPDX-License-Identifier: MIT
#include "Calibration.h"
#include "ClockedMedium.h"
#include "Ear.h"
#include "Eye.h"
#include "KelvoTestCase.h"
#include "MinimalObjects.h"
#include "SoundServer.h"
#include "SoundWatch.h"
#include "TestGroup.h"
#include "XServer.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {
constexpr int calibrationTime = 30'000; // milliseconds
const auto playedSink = QStringLiteral("silence");
} // namespace

/// What comes out of a pipeline that does nothing else is set beside its position, on a real sound server and X server.
class CalibrationTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void earOnTheSinkItself();
    void earBehindASlowDevice();
    void earElsewhere();
    void nothingToPlay();
    void eyeOnTheWindowItself();
    void eyeElsewhere();

private:
    /// Item 1, for long enough.
    QString makeMedium(const QString &format) const;
    static void listen(Ear *ear, const QString &device);

    QTemporaryDir m_folder;
    QString m_song;
    QString m_video;
};

#define VERIFY_DONE(calibration) QTRY_VERIFY_WITH_TIMEOUT((calibration)->isDone(), calibrationTime)

void CalibrationTest::initTestCase()
{
    m_song = makeMedium(QStringLiteral("wav"));
    m_video = makeMedium(QStringLiteral("mp4"));
    QVERIFY(QFile::exists(m_song) && QFile::exists(m_video));
}

QString CalibrationTest::makeMedium(const QString &format) const
{
    QString path = m_folder.filePath(QStringLiteral("item.") + format);
    const ClockedMedium medium{1, format, 12, QStringLiteral("item")};
    QProcess::execute(ClockedMedium::program(), medium.arguments() + QStringList{path});
    return path;
}

void CalibrationTest::listen(Ear *ear, const QString &device)
{
    ear->listen(device);
    QTRY_VERIFY_WITH_TIMEOUT(ear->isReady(), calibrationTime);
}

void CalibrationTest::earOnTheSinkItself()
{
    const SoundServer server;
    Ear ear;
    listen(&ear, QStringLiteral("silence.monitor"));
    const auto calibration = Calibration::ofEar(&ear, playedSink, m_song);
    VERIFY_DONE(calibration);
    const SenseRow row = calibration->row();
    QCOMPARE(row.doubt, QString());
    QCOMPARE(row.id, QStringLiteral("ear.bare"));
    QVERIFY(!row.isOff() && row.error > 0);
    QVERIFY(std::abs(*calibration->error() - std::abs(*row.cameOut) - row.error) < 1e-9);
    // Of a renderer that is silent nothing is heard then.
    int heard = 0;
    connect(&ear, &Ear::heard, this, [&heard] { ++heard; });
    MinimalRenderer renderer(QStringLiteral("mute"), QStringLiteral("Mute"));
    SoundWatch watch(&renderer, &ear);
    watch.wait(2 * Ear::Lateness);
    QCOMPARE(heard, 0);
    QVERIFY(!watch.position());
}

/// A sound that has half a second more to go, of which the sink that is played to knows nothing.
void CalibrationTest::earBehindASlowDevice()
{
    const SoundServer server;
    SoundServer::mixer(
        {QStringLiteral("load-module"), QStringLiteral("module-null-sink"), QStringLiteral("sink_name=far")});
    SoundServer::mixer({QStringLiteral("load-module"), QStringLiteral("module-loopback"),
        QStringLiteral("source=silence.monitor"), QStringLiteral("sink=far"),
        QStringLiteral("latency_msec=500")});
    Ear ear;
    listen(&ear, QStringLiteral("far.monitor"));
    const auto calibration = Calibration::ofEar(&ear, playedSink, m_song);
    VERIFY_DONE(calibration);
    const SenseRow row = calibration->row();
    QVERIFY2(calibration->error() > 0.3, qPrintable(row.doubt));
    QVERIFY2(row.doubt.startsWith(QLatin1String("what is played here comes out -")), qPrintable(row.doubt));
    QVERIFY(!row.cameOut);
}

void CalibrationTest::earElsewhere()
{
    const SoundServer server;
    SoundServer::mixer({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
        QStringLiteral("sink_name=other")});
    Ear ear;
    listen(&ear, QStringLiteral("other.monitor"));
    const auto calibration = Calibration::ofEar(&ear, playedSink, m_song);
    VERIFY_DONE(calibration);
    QCOMPARE(calibration->row().doubt, QStringLiteral("what it plays does not come out here"));
    QVERIFY(!calibration->error());
}

void CalibrationTest::nothingToPlay()
{
    const SoundServer server;
    Ear ear;
    const auto calibration = Calibration::ofEar(&ear, playedSink, QStringLiteral("/nonexistent.wav"));
    VERIFY_DONE(calibration);
    QVERIFY2(
        calibration->row().doubt.contains(QLatin1String("not found")), qPrintable(calibration->row().doubt));
    QVERIFY(!calibration->error());
}

void CalibrationTest::eyeOnTheWindowItself()
{
    const XServer screen;
    QVERIFY(screen.isRunning());
    Eye eye;
    eye.look(QStringLiteral("auto"));
    QTRY_VERIFY_WITH_TIMEOUT(eye.isReady(), calibrationTime);
    const auto calibration = Calibration::ofEye(&eye, eye.window(), m_video);
    VERIFY_DONE(calibration);
    const SenseRow row = calibration->row();
    QCOMPARE(row.doubt, QString());
    QCOMPARE(row.id, QStringLiteral("eye.bare"));
    QVERIFY(!row.isOff() && row.error > 0);
}

void CalibrationTest::eyeElsewhere()
{
    XServer screen;
    QVERIFY(screen.isRunning());
    const uint window = screen.addWindow({500, 440, 64, 36}, Qt::black);
    Eye eye;
    eye.look(QStringLiteral("auto"));
    QTRY_VERIFY_WITH_TIMEOUT(eye.isReady(), calibrationTime);
    const auto calibration = Calibration::ofEye(&eye, window, m_video);
    VERIFY_DONE(calibration);
    QCOMPARE(calibration->row().doubt, QStringLiteral("what it plays does not come out here"));
}

KELVO_TEST(CalibrationTest)
#include "CalibrationTest.moc"
