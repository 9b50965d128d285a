// SPDX-License-Identifier: MIT
#include "PictureTrial.h"
#include "CodePlayer.h"
#include "Ear.h"
#include "Eye.h"
#include "KelvoTestCase.h"
#include "MarkPainter.h"
#include "SenseRowChecks.h"
#include "SoundServer.h"
#include "TestGroup.h"
#include "WrongRenderer.h"

#include <QTest>

#include <memory>

namespace {
constexpr int patience = 20'000; // milliseconds

/// Draws into a window, leaves pictures out, and plays the sound behind them.
class PaintingRenderer : public WrongRenderer
{
public:
    PaintingRenderer(XServer *server, uint window)
        : m_server(server)
        , m_window(window)
    {
        connect(&m_tick, &QTimer::timeout, this, &PaintingRenderer::paint);
    }

protected:
    void begin(int, double) override
    {
        m_player.reset();
        m_tick.setTimerType(Qt::PreciseTimer);
        m_tick.start(5);
    }
    void cease() override
    {
        m_tick.stop();
        m_player.reset();
    }

private:
    void paint()
    {
        if (place() >= SenseTrial::Media::Seconds) {
            cease();
            goOn();
            return;
        }
        if (!m_player)
            m_player = std::make_unique<CodePlayer>(item(), place() + Misplaced, 14);
        const auto frame = qint64(place() * MediaClock::framesPerSecond);
        constexpr int leftOut = 8; // each eighth
        if (frame != std::exchange(m_frame, frame) && frame % leftOut != 0)
            paintMark(m_server, m_window, {item(), frame}, 12);
    }

    XServer *const m_server;
    const uint m_window;
    QTimer m_tick;
    qint64 m_frame = -1;
    std::unique_ptr<QProcess> m_player;
};
} // namespace

/// A renderer whose words are all wrong is caught in each of them, by what is on the screen of a real X server.
class PictureTrialTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void eachWrongWordIsCaught()
    {
        const SoundServer sound;
        XServer screen;
        QVERIFY(sound.isRunning() && screen.isRunning());
        const uint window = screen.addWindow({30, 40, 500, 120}, Qt::black);
        Ear ear;
        Eye eye;
        ear.listen(QStringLiteral("silence.monitor"));
        eye.look(QString::number(window));
        QTRY_VERIFY_WITH_TIMEOUT(ear.isReady() && eye.isReady(), patience);
        PaintingRenderer renderer(&screen, window);
        const QList<SenseRow> rows
            = PictureTrial(&renderer, &eye, &ear, {WrongRenderer::First, WrongRenderer::Second}).run();
        const QStringList wanted{QStringLiteral("start"), QStringLiteral("item"), QStringLiteral("position"),
            QStringLiteral("left-out"), QStringLiteral("sync"), QStringLiteral("pause"),
            QStringLiteral("pause-position"), QStringLiteral("pause-at"), QStringLiteral("seek"),
            QStringLiteral("next"), QStringLiteral("stop")};
        QCOMPARE(SenseRowChecks::notOff(rows), QStringList());
        QCOMPARE(SenseRowChecks::names(rows), wanted);
    }

    void whatIsNotSeenIsNoFault()
    {
        Eye eye; // to which nothing is told
        MinimalRenderer renderer(QStringLiteral("blind"), QStringLiteral("Blind"));
        PictureTrial trial(&renderer, &eye, nullptr, {WrongRenderer::First, WrongRenderer::Second});
        QTimer::singleShot(0, &eye, [&trial] { trial.stop(); });
        const QList<SenseRow> rows = trial.run();
        QCOMPARE(rows.size(), 10);
        QCOMPARE(SenseRowChecks::guessed(rows), QStringList());
    }
};

KELVO_TEST(PictureTrialTest)
#include "PictureTrialTest.moc"
