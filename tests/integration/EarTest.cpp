// SPDX-License-Identifier: MIT
#include "Ear.h"
#include "CodePlayer.h"
#include "EarSink.h"
#include "KelvoTestCase.h"
#include "MediaClock.h"
#include "SoundServer.h"
#include "TestGroup.h"
#include "TimeCodeWave.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <memory>

namespace {
constexpr auto patience = 20'000; // milliseconds

bool isNear(double value, double wanted, double deviation)
{
    return std::abs(value - wanted) <= deviation;
}
} // namespace

#define VERIFY_HEARD(condition) QVERIFY2((condition), text().constData())

/// Listening to what a real sound server plays.
class EarTest : public KelvoTestCase
{
    Q_OBJECT
private:
    std::unique_ptr<SoundServer> m_server;
    std::unique_ptr<Ear> m_ear;
    QList<Hearing> m_heard;

    void listen(const QString &device = QStringLiteral("silence.monitor"))
    {
        m_ear = std::make_unique<Ear>();
        connect(m_ear.get(), &Ear::heard, this, [this](const Hearing &hearing) { m_heard.append(hearing); });
        m_ear->listen(device);
    }

    /// Plays a part of an item with another program.
    static bool play(int item, double from, double seconds)
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("sound")));
        TimeCodeWave wave(item, std::llround(from * MediaClock::sampleRate));
        const std::vector<qint16> sound = wave.read(std::llround(seconds * MediaClock::sampleRate));
        const auto size = qint64(sound.size()) * qint64(sizeof(qint16));
        if (!file.open(QIODevice::WriteOnly)
            || file.write(reinterpret_cast<const char *>(sound.data()), size) != size)
            return false;
        file.close();
        QProcess player;
        // All of it is with the server before it begins: a busy machine would leave gaps, which are heard.
        player.start(QStringLiteral("pacat"),
            {QStringLiteral("--raw"), QStringLiteral("--rate=48000"), QStringLiteral("--channels=2"),
                QStringLiteral("--format=s16le"), QStringLiteral("--latency-msec=2000"), file.fileName()});
        return player.waitForFinished(patience) && player.exitCode() == 0;
    }

    bool hasHeard(Hearing::Kind kind) const
    {
        return std::any_of(m_heard.cbegin(), m_heard.cend(),
            [kind](const Hearing &hearing) { return hearing.kind == kind; });
    }

    QByteArray text() const
    {
        QByteArray text("\n");
        for (const Hearing &hearing : m_heard)
            text += hearing.line();
        return text;
    }

private Q_SLOTS:
    void init()
    {
        m_heard.clear();
        m_server = std::make_unique<SoundServer>();
        QVERIFY(m_server->isRunning());
    }
    void cleanup()
    {
        m_ear.reset();
        m_server.reset();
    }

    void whatIsPlayedIsHeard()
    {
        listen();
        QTRY_VERIFY_WITH_TIMEOUT(m_ear->isReady(), patience);
        const double before = Ear::now();
        QVERIFY(play(3, 5, 1.5));
        const double after = Ear::now();
        QTRY_VERIFY2_WITH_TIMEOUT(hasHeard(Hearing::Ends), text().constData(), patience);
        const Hearing &first = m_heard.constFirst();
        VERIFY_HEARD(first.kind == Hearing::Begins && first.item == 3 && first.doubt.isEmpty());
        VERIFY_HEARD(first.at > before - Ear::ClockError && first.at < after);
        const Hearing &last = m_heard.constLast();
        VERIFY_HEARD(last.kind == Hearing::Ends && isNear(*last.position, 6.5, 0.001));
        VERIFY_HEARD(last.at > before && last.at < after + Ear::ClockError);
        VERIFY_HEARD(isNear(last.at - first.at, *last.position - *first.position, 0.002));
        QVERIFY(hasHeard(Hearing::Goes));
        for (const Hearing &hearing : std::as_const(m_heard)) {
            VERIFY_HEARD(hearing.kind != Hearing::Goes
                || isNear(*hearing.level, MediaClock::toneLevel, Hearing::LevelError));
            VERIFY_HEARD(hearing.kind != Hearing::Goes || isNear(hearing.speed, 1, 0.001));
        }
    }

    void theMixersVolumeIsHeard()
    {
        listen();
        QTRY_VERIFY_WITH_TIMEOUT(m_ear->isReady(), patience);
        SoundServer::mixer(
            {QStringLiteral("set-sink-volume"), QStringLiteral("silence"), QStringLiteral("50%")});
        QVERIFY(play(3, 0, 1));
        QTRY_VERIFY2_WITH_TIMEOUT(hasHeard(Hearing::Goes), text().constData(), patience);
        // The mixer's scale is cubic.
        const double wanted = MediaClock::toneLevel + 60 * std::log10(0.5);
        for (const Hearing &hearing : std::as_const(m_heard))
            VERIFY_HEARD(hearing.kind != Hearing::Goes || isNear(*hearing.level, wanted, 0.2));
    }

    /// Its silence is none of what plays.
    void aSourceThatIsMutedIsSaid()
    {
        listen();
        QTRY_VERIFY_WITH_TIMEOUT(m_ear->isReady(), patience);
        const auto mute = [](const QString &how) {
            SoundServer::mixer({QStringLiteral("set-source-mute"), QStringLiteral("silence.monitor"), how});
        };
        mute(QStringLiteral("1"));
        QTRY_VERIFY2_WITH_TIMEOUT(hasHeard(Hearing::Fails), text().constData(), patience);
        VERIFY_HEARD(m_heard.constLast().doubt.contains(QLatin1String("muted")));
        mute(QStringLiteral("0"));
        QTest::qWait(500);
        QVERIFY(play(3, 0, 0.5));
        QTRY_VERIFY2_WITH_TIMEOUT(hasHeard(Hearing::Ends), text().constData(), patience);
    }

    void whereNothingIsToBeHeardItSaysSo_data()
    {
        QTest::addColumn<bool>("hasServer");
        QTest::newRow("no such device") << true;
        QTest::newRow("no sound server") << false;
    }

    void whereNothingIsToBeHeardItSaysSo()
    {
        QFETCH(bool, hasServer);
        if (!hasServer)
            m_server->end();
        listen(QStringLiteral("nobody"));
        QTRY_VERIFY_WITH_TIMEOUT(!m_ear->problem().isEmpty(), patience);
        QVERIFY(!m_ear->isReady());
        QVERIFY(m_heard.size() == 1 && m_heard.constFirst().doubt == m_ear->problem());
    }

    void whatBeganElsewhereIsMovedAndCounted()
    {
        EarSink sink;
        QString problem;
        QVERIFY2(sink.make(&problem), qPrintable(problem));
        const CodePlayer here(1, 0, 10);
        QTRY_VERIFY_WITH_TIMEOUT(SoundServer::streams().contains(QLatin1String("Sink Input")), patience);
        qputenv("PULSE_SINK", "silence");
        const CodePlayer elsewhere(2, 0, 10);
        QTRY_VERIFY_WITH_TIMEOUT(sink.movedStreams() > 0, patience);
        qunsetenv("PULSE_SINK");
        QCOMPARE(sink.movedStreams(), 1);
    }

    void aServerThatEndsIsSaid()
    {
        listen();
        QTRY_VERIFY_WITH_TIMEOUT(m_ear->isReady(), patience);
        m_server->end();
        QTRY_VERIFY_WITH_TIMEOUT(!m_ear->problem().isEmpty(), patience);
        QVERIFY(hasHeard(Hearing::Fails));
    }
};

KELVO_TEST(EarTest)
#include "EarTest.moc"
