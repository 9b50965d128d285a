// SPDX-License-Identifier: MIT
#include "SoundTrial.h"
#include "CodePlayer.h"
#include "Ear.h"
#include "KelvoTestCase.h"
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
        QStringList ids;
        for (const SenseRow &row : rows) {
            ids.append(row.id.section(u'.', 1));
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
        SoundTrial trial(&renderer, &ear, {WrongRenderer::First, WrongRenderer::Second});
        QTimer::singleShot(0, &ear, [&trial] { trial.stop(); });
        const QList<SenseRow> rows = trial.run();
        QCOMPARE(rows.size(), 11);
        for (const SenseRow &row : rows)
            QVERIFY2(!row.isOff() && !row.cameOut && !row.doubt.isEmpty(), qPrintable(row.id));
    }
};

KELVO_TEST(SoundTrialTest)
#include "SoundTrialTest.moc"
