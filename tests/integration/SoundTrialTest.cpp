// SPDX-License-Identifier: MIT
#include "SoundTrial.h"
#include "CodePlayer.h"
#include "Ear.h"
#include "KelvoTestCase.h"
#include "SenseRowChecks.h"
#include "SoundServer.h"
#include "TestGroup.h"
#include "WrongRenderer.h"

#include <QTest>

#include <memory>

namespace {
/// Plays through a real sink by another program.
class SoundingRenderer : public WrongRenderer
{
public:
    void setKelvoProperty(const QString &name, const QVariant &value) override
    {
        m_volume = value.toInt();
        Q_EMIT kelvoPropertyChanged(name, value);
        proceed(item(), place());
    }

protected:
    void begin(int item, double from) override
    {
        const double length = std::min(15.0, SenseTrial::Media::Seconds - from);
        m_player = std::make_unique<CodePlayer>(item, from, length, m_volume / 99.0); // no curve
        connect(m_player.get(), &QProcess::finished, this, [this] { goOn(); });
    }
    void cease() override { m_player.reset(); }

private:
    int m_volume = 99;
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
        SoundingRenderer renderer;
        const QList<SenseRow> rows
            = SoundTrial(&renderer, &ear, {WrongRenderer::First, WrongRenderer::Second}).run();
        const QStringList wanted{QStringLiteral("start"), QStringLiteral("item"), QStringLiteral("position"),
            QStringLiteral("level-50"), QStringLiteral("level-25"), QStringLiteral("pause"),
            QStringLiteral("pause-position"), QStringLiteral("pause-at"), QStringLiteral("seek"),
            QStringLiteral("next"), QStringLiteral("stop")};
        QCOMPARE(SenseRowChecks::notOff(rows), QStringList());
        QCOMPARE(SenseRowChecks::names(rows), wanted);
    }

    void aRendererMayGoMeanwhile()
    {
        Ear ear; // to which nothing is told
        auto renderer = std::make_unique<MinimalRenderer>(QStringLiteral("brief"), QStringLiteral("Brief"));
        SoundTrial trial(renderer.get(), &ear, {WrongRenderer::First, WrongRenderer::Second});
        QTimer::singleShot(100, &ear, [&renderer] { renderer.reset(); });
        const QList<SenseRow> rows = trial.run();
        QCOMPARE(rows.size(), 11);
        QCOMPARE(SenseRowChecks::guessed(rows), QStringList());
        QCOMPARE(rows.constLast().doubt, QStringLiteral("the renderer has gone"));
    }

    void whatIsNotHeardIsNoFault()
    {
        Ear ear; // to which nothing is told
        MinimalRenderer renderer(QStringLiteral("mute"), QStringLiteral("Mute"));
        SoundTrial trial(&renderer, &ear, {WrongRenderer::First, WrongRenderer::Second});
        QTimer::singleShot(0, &ear, [&trial] { trial.stop(); });
        const QList<SenseRow> rows = trial.run();
        QCOMPARE(rows.size(), 11);
        QCOMPARE(SenseRowChecks::guessed(rows), QStringList());
    }
};

KELVO_TEST(SoundTrialTest)
#include "SoundTrialTest.moc"
