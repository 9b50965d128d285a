// SPDX-License-Identifier: MIT
#include "SoundTrial.h"
#include "Ear.h"
#include "KelvoAnswer.h"
#include "KelvoContent.h"
#include "KelvoTestCase.h"
#include "MediaClock.h"
#include "MinimalObjects.h"
#include "SoundServer.h"
#include "TestGroup.h"
#include "TimeCodeWave.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <memory>

namespace {
const QUrl first(QStringLiteral("test:1"));
const QUrl second(QStringLiteral("test:2"));
constexpr int late = 300; // milliseconds: more than is let pass
constexpr double misplaced = 1; // seconds
constexpr int longGap = 2200; // milliseconds

/// Plays through a real sink by another program, and says of it what is not so.
class WrongRenderer : public MinimalRenderer
{
public:
    WrongRenderer()
        : MinimalRenderer(QStringLiteral("wrong"), QStringLiteral("Wrong"))
    {
    }

    void playUri(const QUrl &) override
    {
        // The other one.
        Q_EMIT mediaChanged(-1, KelvoContent{{}, second, {}});
        Q_EMIT stateChanged(Playing);
        later(late, [this] { sound(1, 0); });
    }
    void stop() override
    {
        Q_EMIT stateChanged(Stopped);
        endLater();
    }
    void pause() override
    {
        Q_EMIT stateChanged(Paused);
        endLater();
    }
    void resume() override
    {
        Q_EMIT stateChanged(Playing);
        sound(m_item, place());
    }
    void pauseAt(uint seconds) override
    {
        later(int((seconds - place()) * 1000), [this] { pause(); });
    }
    void gotoIndex(uint) override
    {
        Q_EMIT mediaChanged(0, KelvoContent{{}, first, {}});
        sound(1, 0);
    }
    void setPosition(int seconds, int) override { sound(m_item, seconds + misplaced); }
    void setKelvoProperty(const QString &name, const QVariant &value) override
    {
        m_volume = value.toInt();
        Q_EMIT kelvoPropertyChanged(name, value);
        sound(m_item, place());
    }
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override
    {
        const QVariant value = name == PropertyPosition ? QVariant(place() + misplaced) : QVariant();
        KelvoAnswer(receiver, slot).deliver({name, value});
    }

private:
    double place() const { return m_player ? m_from + double(m_since.elapsed()) / 1000 : m_from; }
    /// Unless another command comes before.
    void later(int milliseconds, const std::function<void()> &act)
    {
        QTimer::singleShot(milliseconds, this, [this, act, command = ++m_command] {
            if (command == m_command)
                act();
        });
    }
    void endLater()
    {
        later(late, [this] {
            m_from = place();
            m_player.reset();
        });
    }
    void sound(int item, double from)
    {
        ++m_command;
        m_item = item;
        m_from = from;
        m_player = std::make_unique<QProcess>();
        connect(m_player.get(), &QProcess::finished, this, [this] { goOn(); });
        // So much lies with the server that a busy machine leaves no gaps; it is dropped with the player.
        m_player->start(QStringLiteral("pacat"),
            {QStringLiteral("--raw"), QStringLiteral("--rate=48000"), QStringLiteral("--channels=2"),
                QStringLiteral("--format=s16le"), QStringLiteral("--latency-msec=1000")});
        const double length = std::min(15.0, SoundTrial::Media::Seconds - from);
        TimeCodeWave wave(item, std::llround(from * MediaClock::sampleRate));
        std::vector<qint16> samples = wave.read(std::llround(length * MediaClock::sampleRate));
        for (qint16 &sample : samples)
            sample = qint16(sample * m_volume / 99); // no curve
        m_player->write(
            reinterpret_cast<const char *>(samples.data()), qint64(samples.size() * sizeof(qint16)));
        m_player->closeWriteChannel();
        m_since.start();
    }
    void goOn()
    {
        Q_EMIT mediaChanged(1, KelvoContent{{}, second, {}});
        later(longGap, [this] { sound(2, 0); });
    }

    int m_item = 1;
    double m_from = 0; ///< where the sound began
    QElapsedTimer m_since;
    int m_volume = 99;
    int m_command = 0;
    std::unique_ptr<QProcess> m_player;
};
} // namespace

/// A renderer whose words are all wrong is caught in each of them, through a real sound server.
class SoundTrialTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void eachWrongWordIsCaught()
    {
        const SoundServer server;
        QVERIFY(server.isRunning());
        Ear ear;
        ear.listen(QStringLiteral("silence.monitor"));
        QTRY_VERIFY_WITH_TIMEOUT(ear.isReady(), 20'000);
        WrongRenderer renderer;
        const QList<SoundRow> rows = SoundTrial(&renderer, &ear, {first, second}).run();
        const QStringList wanted{QStringLiteral("start"), QStringLiteral("item"), QStringLiteral("position"),
            QStringLiteral("level-50"), QStringLiteral("level-25"), QStringLiteral("pause"),
            QStringLiteral("pause-position"), QStringLiteral("pause-at"), QStringLiteral("seek"),
            QStringLiteral("next"), QStringLiteral("stop")};
        QStringList ids;
        for (const SoundRow &row : rows) {
            ids.append(row.id);
            const QString text = QStringLiteral("%1: said %2, came out %3 ± %4 %5")
                                     .arg(row.id)
                                     .arg(row.said.value_or(-99))
                                     .arg(row.cameOut.value_or(-99))
                                     .arg(row.error)
                                     .arg(row.doubt);
            QVERIFY2(row.isOff(), qPrintable(text));
        }
        QCOMPARE(ids, wanted);
    }

    void whatIsNotHeardIsNoFault()
    {
        Ear ear; // to which nothing is told
        MinimalRenderer renderer(QStringLiteral("mute"), QStringLiteral("Mute"));
        SoundTrial trial(&renderer, &ear, {first, second});
        QTimer::singleShot(0, &ear, [&trial] { trial.stop(); });
        const QList<SoundRow> rows = trial.run();
        QCOMPARE(rows.size(), 11);
        for (const SoundRow &row : rows)
            QVERIFY2(!row.isOff() && !row.cameOut && !row.doubt.isEmpty(), qPrintable(row.id));
    }
};

KELVO_TEST(SoundTrialTest)
#include "SoundTrialTest.moc"
